#pragma once
// Start-up step that makes sure views will get a usable OpenGL before any OpenGL driver is
// loaded: asks whether the software fallback is wanted outright, otherwise probes the system's
// OpenGL on EGL and asks again with the probe's answer; a yes selects Mesa's software rasteriser
// through its environment settings. Runs first thing in main, before any Qt object exists and
// before any other thread; uses nothing of Qt. Messages go through TarvoAppLogger.
//
// TARVO_OPENGL_FALLBACK decides (the probe's reason in the columns):
//   not set                                      reason 0: no   reason 4: yes
//   starts with an integer other than 0 and -1   yes            yes
//   starts with 0                                no             no
//   starts with -1                               no             yes
//   no integer, has "remote", remote session     yes            yes
//   no integer, anything else (also empty)       no             yes
// and for reason 1 (no display) the answer is always no. "Starts with an integer" is what
// strtol with base 10 accepts (leading blanks and a sign, trailing text ignored); a remote
// session is one with SSH_CONNECTION set.

namespace GDetectGL {

// The numbers are what the decision tests; no other value occurs.
enum class Reason : int {
    supported = 0,  // an accelerated OpenGL 3.2 core context can be made
    no_display = 1, // no EGL display can be initialised at all
    not_usable = 4, // a display exists, but no accelerated RGBA8, depth 24, 3.2 core context
};

// Makes a 1 by 1 pbuffer and an OpenGL 3.2 core context on a GPU's EGL device, then lets
// everything go again. Logs one error line for each failure.
Reason opengl_supported();

} // namespace GDetectGL

// Reads TARVO_OPENGL_FALLBACK (and SSH_CONNECTION) now and answers by the table above.
bool use_opengl_fallback(GDetectGL::Reason reason);

// Selects Mesa's software rasteriser for every OpenGL display opened from now on
// (LIBGL_ALWAYS_SOFTWARE, GALLIUM_DRIVER, the GLVND vendor settings) and sets
// MESA_GL_VERSION_OVERRIDE=3.2, since llvmpipe may offer less by default.
void load_opengl_fallback();

// The whole step: the decision without a probe, then the probe and the decision again.
void run_opengl_check();
