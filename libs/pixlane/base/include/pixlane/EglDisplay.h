#pragma once

#include <EGL/egl.h>

#include <string>

// The EGL display that views render on, chosen the same way wherever it is needed (the view
// factory, and the OpenGL probe at start-up): a GPU's EGL device first, then Mesa's surfaceless
// platform. A display counts only when it has an RGBA8, depth 24, pbuffer-capable OpenGL config
// and makes an OpenGL 3.2 core context with it.
struct EglDisplayChoice {
    EGLDisplay display = EGL_NO_DISPLAY; // initialised; the caller terminates it. None: unusable
    EGLConfig config = nullptr;
    bool any_display = false; // some EGL display could be initialised, suitable or not
    bool accelerated = false; // the display is a GPU's own EGL device, not a software one
    std::string description;  // what was chosen, or why nothing was
};

// Attributes of the context every view gets: OpenGL 3.2 core.
extern const EGLint egl_view_context_attributes[];

// Finds and initialises the display. With accelerated_only, Mesa's surfaceless platform is only
// initialised to learn that a display exists (it may be llvmpipe), never chosen.
// Threads: any, but EGL's current context is per thread; call it where the display will be used.
EglDisplayChoice open_egl_display(bool accelerated_only);
