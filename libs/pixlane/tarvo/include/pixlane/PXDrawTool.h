#pragma once

#include <pixlane/PXUtil.h>

class GTarvoModelSet;

// The kernel's drawing: the one GTarvoModelSet of the process, made on first request while a
// kernel session is live, and the kernel's render mode.
//
// Threads: the kernel's thread (the server's worker thread).
class PXDrawTool {
public:
    // The model set, or null when there is no live kernel session (no graphics to draw).
    static GTarvoModelSet* tarvo_model_set();
    // Destroys the model set; call before the kernel session ends. Views must have let go of it.
    static void release_model_set();
    static PXUtil::RenderMode get_render_mode();
};
