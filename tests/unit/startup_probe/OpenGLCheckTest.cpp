#include "startup/OpenGLCheck.h"

#include <pixlane/EglDisplay.h>

#include <EGL/egl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <functional>
#include <optional>
#include <string>

namespace {

using GDetectGL::Reason;

struct DecisionRow {
    std::optional<std::string> setting; // TARVO_OPENGL_FALLBACK; none: unset
    bool remote;                        // SSH_CONNECTION set
    bool for_supported;                 // answer for reason 0
    bool for_not_usable;                // answer for reason 4
};

const DecisionRow decision_rows[] = {
    {std::nullopt, false, false, true},
    {std::nullopt, true, false, true},
    {"1", false, true, true},
    {"2", false, true, true},
    {"1abc", false, true, true},
    {"0", false, false, false},
    {"0remote", true, false, false},
    {"-1", false, false, true},
    {"  -1", false, false, true},
    {"4294967295", false, false, true}, // -1 once taken as 32 bits
    {"remote", true, true, true},
    {"use-remote-x", true, true, true},
    {"Remote", true, false, true},
    {"remote", false, false, true},
    {"", true, false, true},
    {"abc", false, false, true},
};

void set_or_unset(const char* name, const std::optional<std::string>& value) {
    if (value)
        setenv(name, value->c_str(), 1);
    else
        unsetenv(name);
}

TEST(OpenGLFallbackDecision, FollowsTheTableAndNeverFallsBackWithoutDisplay) {
    for (const DecisionRow& row : decision_rows) {
        set_or_unset("TARVO_OPENGL_FALLBACK", row.setting);
        set_or_unset("SSH_CONNECTION", row.remote
                                           ? std::optional<std::string>("10.0.0.1 5 10.0.0.2 22")
                                           : std::nullopt);
        SCOPED_TRACE("TARVO_OPENGL_FALLBACK=" + row.setting.value_or("<unset>") +
                     (row.remote ? ", remote" : ", local"));
        EXPECT_EQ(use_opengl_fallback(Reason::supported), row.for_supported);
        EXPECT_EQ(use_opengl_fallback(Reason::not_usable), row.for_not_usable);
        EXPECT_FALSE(use_opengl_fallback(Reason::no_display));
    }
    unsetenv("TARVO_OPENGL_FALLBACK");
    unsetenv("SSH_CONNECTION");
}

// OpenGL driver libraries mapped into this process (GLVND's vendors and Mesa's drivers).
std::string loaded_drivers() {
    std::ifstream maps("/proc/self/maps");
    std::string line, found;
    for (const char* name :
         {"libEGL_mesa", "libEGL_nvidia", "libGLX_mesa", "libGLX_nvidia", "libgallium", "_dri.so"})
        for (maps.clear(), maps.seekg(0); std::getline(maps, line);)
            if (line.find(name) != std::string::npos) {
                found += std::string(found.empty() ? "" : " ") + name;
                break;
            }
    return found;
}

std::string env_or_unset(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "<unset>";
}

// Runs body in a fresh child, so that no OpenGL driver of this or an earlier test is loaded;
// answers what the body reported, or how the child ended.
std::string in_child(const std::function<std::string()>& body) {
    int pipe_ends[2];
    if (pipe(pipe_ends) != 0)
        return "pipe failed";
    const pid_t pid = fork();
    if (pid == 0) {
        close(pipe_ends[0]);
        const std::string report = body();
        ssize_t written = write(pipe_ends[1], report.data(), report.size());
        _exit(written == static_cast<ssize_t>(report.size()) ? 0 : 1);
    }
    close(pipe_ends[1]);
    std::string report;
    char buffer[512];
    for (ssize_t n; (n = read(pipe_ends[0], buffer, sizeof buffer)) > 0;)
        report.append(buffer, static_cast<std::size_t>(n));
    close(pipe_ends[0]);
    int status = 0;
    waitpid(pid, &status, 0);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        return report + " [child ended with status " + std::to_string(status) + "]";
    return report;
}

TEST(OpenGLFallback, ForcedSetsMesaSoftwareBeforeAnyDriverIsLoaded) {
    const std::string report = in_child([] {
        setenv("TARVO_OPENGL_FALLBACK", "1", 1);
        for (const char* name : {"LIBGL_ALWAYS_SOFTWARE", "GALLIUM_DRIVER",
                                 "MESA_GL_VERSION_OVERRIDE", "__EGL_VENDOR_LIBRARY_FILENAMES"})
            unsetenv(name);
        if (!loaded_drivers().empty())
            return "drivers loaded before the check: " + loaded_drivers();
        run_opengl_check();
        std::string out = "drivers=" + loaded_drivers() +
                          " LIBGL_ALWAYS_SOFTWARE=" + env_or_unset("LIBGL_ALWAYS_SOFTWARE") +
                          " GALLIUM_DRIVER=" + env_or_unset("GALLIUM_DRIVER") +
                          " MESA_GL_VERSION_OVERRIDE=" + env_or_unset("MESA_GL_VERSION_OVERRIDE");

        // What views get afterwards: Mesa's llvmpipe, at version 3.2, whatever GPU there is.
        EglDisplayChoice choice = open_egl_display(false);
        if (choice.display == EGL_NO_DISPLAY)
            return out + " no display: " + choice.description;
        const EGLint pbuffer_attributes[] = {EGL_WIDTH, 1, EGL_HEIGHT, 1, EGL_NONE};
        EGLSurface surface =
            eglCreatePbufferSurface(choice.display, choice.config, pbuffer_attributes);
        EGLContext context = eglCreateContext(choice.display, choice.config, EGL_NO_CONTEXT,
                                              egl_view_context_attributes);
        if (!eglMakeCurrent(choice.display, surface, surface, context))
            return out + " no current context";
        using GetString = const unsigned char* (*)(unsigned);
        const auto get_string = reinterpret_cast<GetString>(eglGetProcAddress("glGetString"));
        const auto text = [&](unsigned name) {
            const unsigned char* s = get_string ? get_string(name) : nullptr;
            return s ? std::string(reinterpret_cast<const char*>(s)) : std::string("?");
        };
        const std::string renderer = text(0x1F01); // GL_RENDERER
        const std::string version = text(0x1F02);  // GL_VERSION
        return out +
               " llvmpipe=" + (renderer.find("llvmpipe") != std::string::npos ? "yes" : renderer) +
               " version=" + version.substr(0, 3);
    });
    const std::string settings = "drivers= LIBGL_ALWAYS_SOFTWARE=1 GALLIUM_DRIVER=llvmpipe "
                                 "MESA_GL_VERSION_OVERRIDE=3.2";
    ASSERT_EQ(report.substr(0, settings.size()), settings) << report;
    if (access("/usr/share/glvnd/egl_vendor.d/50_mesa.json", R_OK) != 0 &&
        access("/etc/glvnd/egl_vendor.d/50_mesa.json", R_OK) != 0)
        GTEST_SKIP() << "Mesa's EGL is not installed, so nothing can be selected: " << report;
    EXPECT_EQ(report.substr(settings.size()), " llvmpipe=yes version=3.2");
}

// The counterpart: switched off, the check probes the system's OpenGL, which loads its drivers,
// and selects nothing. Shows that the test above can see a loaded driver.
TEST(OpenGLFallback, SwitchedOffProbesAndSelectsNothing) {
    const std::string report = in_child([] {
        setenv("TARVO_OPENGL_FALLBACK", "0", 1);
        unsetenv("LIBGL_ALWAYS_SOFTWARE");
        unsetenv("MESA_GL_VERSION_OVERRIDE");
        run_opengl_check();
        return std::string(loaded_drivers().empty() ? "no driver" : "driver") +
               " LIBGL_ALWAYS_SOFTWARE=" + env_or_unset("LIBGL_ALWAYS_SOFTWARE") +
               " MESA_GL_VERSION_OVERRIDE=" + env_or_unset("MESA_GL_VERSION_OVERRIDE");
    });
    EXPECT_EQ(report, "driver LIBGL_ALWAYS_SOFTWARE=<unset> MESA_GL_VERSION_OVERRIDE=<unset>");
}

} // namespace
