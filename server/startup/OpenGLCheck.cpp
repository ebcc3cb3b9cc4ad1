#include "OpenGLCheck.h"

#include <pixlane/EglDisplay.h>
#include <tarvo_util/TarvoAppLogger.h>

#include <EGL/egl.h>

#include <dlfcn.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>

// The documented hints by which a dual-GPU machine's NVIDIA and AMD drivers run the process on
// the high-performance GPU, so that the probe and the views get the same adapter. Nothing here
// reads them; the link exports them from the executable.
extern "C" {
__attribute__((visibility("default"), used)) std::int32_t NvOptimusEnablement = 1;
__attribute__((visibility("default"), used)) std::int32_t AmdPowerXpressRequestHighPerformance = 1;
}

namespace {

bool remote_session() {
    return std::getenv("SSH_CONNECTION") != nullptr;
}

// GLVND loads the vendors' libraries at the first EGL or GLX call that needs one; after that,
// which vendors exist is settled, though Mesa still reads its own settings per display.
bool opengl_driver_loaded() {
    for (const char* name :
         {"libEGL_mesa.so.0", "libEGL_nvidia.so.0", "libGLX_mesa.so.0", "libGLX_nvidia.so.0"}) {
        if (void* handle = dlopen(name, RTLD_LAZY | RTLD_NOLOAD)) {
            dlclose(handle);
            return true;
        }
    }
    return false;
}

// Where GLVND looks for EGL vendor files, in its own order; Mesa's is 50_mesa.json.
const char* mesa_egl_vendor_file() {
    for (const char* path :
         {"/etc/glvnd/egl_vendor.d/50_mesa.json", "/usr/share/glvnd/egl_vendor.d/50_mesa.json"})
        if (access(path, R_OK) == 0)
            return path;
    return nullptr;
}

// Releases what the probe acquired, in reverse order, however it ends.
struct ProbeResources {
    EGLDisplay display = EGL_NO_DISPLAY;
    EGLSurface surface = EGL_NO_SURFACE;
    EGLContext context = EGL_NO_CONTEXT;
    bool current = false;

    ~ProbeResources() {
        if (current)
            eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
        if (context != EGL_NO_CONTEXT)
            eglDestroyContext(display, context);
        if (surface != EGL_NO_SURFACE)
            eglDestroySurface(display, surface);
        if (display != EGL_NO_DISPLAY)
            eglTerminate(display);
    }
};

GDetectGL::Reason fail(GDetectGL::Reason reason, const std::string& message) {
    TarvoAppLogger::app_log_error("OpenGL check: " + message);
    return reason;
}

} // namespace

GDetectGL::Reason GDetectGL::opengl_supported() {
    EglDisplayChoice choice = open_egl_display(true);
    if (!choice.any_display)
        return fail(Reason::no_display, choice.description);
    if (choice.display == EGL_NO_DISPLAY)
        return fail(Reason::not_usable, choice.description);

    ProbeResources held;
    held.display = choice.display;
    const EGLint pbuffer_attributes[] = {EGL_WIDTH, 1, EGL_HEIGHT, 1, EGL_NONE};
    held.surface = eglCreatePbufferSurface(held.display, choice.config, pbuffer_attributes);
    if (held.surface == EGL_NO_SURFACE)
        return fail(Reason::not_usable,
                    "could not create a 1 by 1 pbuffer on " + choice.description);
    if (!eglBindAPI(EGL_OPENGL_API))
        return fail(Reason::not_usable, "eglBindAPI(EGL_OPENGL_API) failed");
    held.context =
        eglCreateContext(held.display, choice.config, EGL_NO_CONTEXT, egl_view_context_attributes);
    if (held.context == EGL_NO_CONTEXT)
        return fail(Reason::not_usable,
                    "could not create an OpenGL 3.2 core context on " + choice.description);
    held.current = eglMakeCurrent(held.display, held.surface, held.surface, held.context);
    if (!held.current)
        return fail(Reason::not_usable, "eglMakeCurrent failed on " + choice.description);
    return Reason::supported;
}

bool use_opengl_fallback(GDetectGL::Reason reason) {
    if (reason == GDetectGL::Reason::no_display) {
        TarvoAppLogger::app_log_error("No display found, not falling back");
        return false;
    }
    const bool probe_failed = reason != GDetectGL::Reason::supported;
    const char* text = std::getenv("TARVO_OPENGL_FALLBACK");
    if (!text)
        return probe_failed;
    char* end = nullptr;
    const auto value = static_cast<std::int32_t>(std::strtol(text, &end, 10));
    if (end == text)
        return (std::strstr(text, "remote") && remote_session()) || probe_failed;
    if (value == -1)
        return probe_failed;
    return value != 0;
}

void load_opengl_fallback() {
    if (opengl_driver_loaded())
        TarvoAppLogger::app_log_info(
            "OpenGL drivers are loaded already: the software fallback applies to the displays "
            "opened from now on");
    setenv("LIBGL_ALWAYS_SOFTWARE", "1", 1);
    setenv("GALLIUM_DRIVER", "llvmpipe", 1);
    setenv("__GLX_VENDOR_LIBRARY_NAME", "mesa", 1);
    // Only Mesa's EGL vendor, so that no GPU device is offered to the views; without its file
    // GLVND would find no vendor at all, so then the GPU devices stay and are skipped on failure.
    if (const char* vendor_file = mesa_egl_vendor_file())
        setenv("__EGL_VENDOR_LIBRARY_FILENAMES", vendor_file, 1);
    setenv("MESA_GL_VERSION_OVERRIDE", "3.2", 1);
    TarvoAppLogger::app_log_info("Loading fallback opengl library");
}

void run_opengl_check() {
    // A forced fallback never touches the system's driver.
    if (use_opengl_fallback(GDetectGL::Reason::supported)) {
        load_opengl_fallback();
        return;
    }
    if (use_opengl_fallback(GDetectGL::opengl_supported()))
        load_opengl_fallback();
}
