#pragma once

#include <pixlane/GWindowFactory.h>

// Factories whose windows belong to a client-side toolkit: the toolkit owns the visible window
// and its event loop, and the view only borrows the window to render into. Interactor styles ask
// whether the installed factory is one of these (a dynamic cast) because such windows deliver
// their own input. There is no such toolkit on a headless server, so the library ships only this
// base; the server never makes one.
//
// Threads: as GWindowFactory.
class CLWindowFactory : public GWindowFactory {
public:
    ~CLWindowFactory() override = default;
};
