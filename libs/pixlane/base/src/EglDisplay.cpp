#include <pixlane/EglDisplay.h>

#include <EGL/eglext.h>

#include <cstring>

const EGLint egl_view_context_attributes[] = {EGL_CONTEXT_MAJOR_VERSION,
                                              3,
                                              EGL_CONTEXT_MINOR_VERSION,
                                              2,
                                              EGL_CONTEXT_OPENGL_PROFILE_MASK,
                                              EGL_CONTEXT_OPENGL_CORE_PROFILE_BIT,
                                              EGL_NONE};

namespace {

bool has_extension(const char* list, const char* name) {
    if (!list)
        return false;
    const std::size_t length = std::strlen(name);
    for (const char* p = std::strstr(list, name); p; p = std::strstr(p + 1, name))
        if ((p == list || p[-1] == ' ') && (p[length] == ' ' || p[length] == '\0'))
            return true;
    return false;
}

const EGLint config_attributes[] = {EGL_SURFACE_TYPE,
                                    EGL_PBUFFER_BIT,
                                    EGL_RENDERABLE_TYPE,
                                    EGL_OPENGL_BIT,
                                    EGL_RED_SIZE,
                                    8,
                                    EGL_GREEN_SIZE,
                                    8,
                                    EGL_BLUE_SIZE,
                                    8,
                                    EGL_ALPHA_SIZE,
                                    8,
                                    EGL_DEPTH_SIZE,
                                    24,
                                    EGL_NONE};

// Initialises the candidate and keeps it when it has our config and makes our context; a
// display that is not kept is terminated again. only_check_exists initialises and lets go.
bool try_display(EglDisplayChoice& choice, EGLDisplay candidate, bool only_check_exists) {
    if (candidate == EGL_NO_DISPLAY || !eglInitialize(candidate, nullptr, nullptr))
        return false;
    choice.any_display = true;
    if (!only_check_exists) {
        EGLint count = 0;
        EGLConfig found = nullptr;
        if (eglBindAPI(EGL_OPENGL_API) &&
            eglChooseConfig(candidate, config_attributes, &found, 1, &count) && count == 1) {
            EGLContext probe =
                eglCreateContext(candidate, found, EGL_NO_CONTEXT, egl_view_context_attributes);
            if (probe != EGL_NO_CONTEXT) {
                eglDestroyContext(candidate, probe);
                choice.display = candidate;
                choice.config = found;
                return true;
            }
        }
    }
    eglTerminate(candidate);
    return false;
}

} // namespace

EglDisplayChoice open_egl_display(bool accelerated_only) {
    EglDisplayChoice choice;
    const auto get_platform_display = reinterpret_cast<PFNEGLGETPLATFORMDISPLAYEXTPROC>(
        eglGetProcAddress("eglGetPlatformDisplayEXT"));
    if (!get_platform_display) {
        choice.description = "EGL has no eglGetPlatformDisplayEXT";
        return choice;
    }
    // A GPU's own EGL device first; Mesa also lists its software rasteriser as a device, which
    // the surfaceless platform below gives us anyway.
    const auto query_devices =
        reinterpret_cast<PFNEGLQUERYDEVICESEXTPROC>(eglGetProcAddress("eglQueryDevicesEXT"));
    const auto query_device_string = reinterpret_cast<PFNEGLQUERYDEVICESTRINGEXTPROC>(
        eglGetProcAddress("eglQueryDeviceStringEXT"));
    EGLDeviceEXT devices[16];
    EGLint device_count = 0;
    if (query_devices && query_device_string && query_devices(16, devices, &device_count)) {
        for (EGLint i = 0; i < device_count; ++i) {
            const char* extensions = query_device_string(devices[i], EGL_EXTENSIONS);
            if (has_extension(extensions, "EGL_MESA_device_software"))
                continue;
            if (try_display(choice,
                            get_platform_display(EGL_PLATFORM_DEVICE_EXT, devices[i], nullptr),
                            false)) {
                const char* vendor = eglQueryString(choice.display, EGL_VENDOR);
                choice.description =
                    std::string("EGL device of ") + (vendor ? vendor : "unknown vendor");
                choice.accelerated = true;
                return choice;
            }
        }
    }
    if (try_display(
            choice,
            get_platform_display(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr),
            accelerated_only)) {
        choice.description = "Mesa surfaceless";
        return choice;
    }
    choice.description = std::string("no EGL display with an ") +
                         (accelerated_only ? "accelerated " : "") +
                         "RGBA8, depth 24, OpenGL 3.2 core pbuffer config";
    if (!choice.any_display)
        choice.description = "no EGL display at all";
    return choice;
}
