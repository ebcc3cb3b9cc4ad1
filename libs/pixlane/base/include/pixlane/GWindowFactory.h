#pragma once

#include <memory>

class GView;

// Gives views the hidden window and GL context they render into. One factory is installed at a
// time, globally; the server installs a ServerWindowFactory when it has graphics.
//
// Threads: the installed factory and every call on it belong to the thread that renders (the
// server's worker thread), the same one that owns the views.
class GWindowFactory {
public:
    virtual ~GWindowFactory() = default;

    static GWindowFactory* get_window_factory();
    // Takes ownership; an empty pointer uninstalls (and destroys) the installed factory.
    static void set_window_factory(std::unique_ptr<GWindowFactory> factory);

    // Gives the view its window and context; answers false, with the reason logged, if it can't.
    virtual bool core_initialize_window(const std::shared_ptr<GView>& view) = 0;
    // Takes them away again, releasing the GL resources of the view's scene; a view without a
    // window is left as it is.
    virtual void core_de_initialize_window(const std::shared_ptr<GView>& view) = 0;
    // Resizes the view's window; sizes below 1 are taken as 1. Renders nothing.
    virtual void resize(GView* view, int width, int height) = 0;
};
