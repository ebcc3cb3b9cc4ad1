// glewInit shim, compiled into each executable that renders (CMake target pixlane_glew_shim).
//
// Debian's GLEW is built for GLX. After it has loaded every GL entry point (through glvnd, whose
// dispatch also serves our EGL contexts), it goes on to load the GLX extensions, finds no X
// display and answers GLEW_ERROR_NO_GLX_DISPLAY; VTK then refuses the context. The GL part did
// succeed, so that one answer is turned into GLEW_OK here. This must be defined in the executable
// and exported (-rdynamic): only a definition that comes first in the global lookup order replaces
// the one libvtkRenderingOpenGL2 would bind to, and dlsym(RTLD_NEXT) then finds libGLEW's.
#include <dlfcn.h>

#include <GL/glew.h>

extern "C" GLenum GLEWAPIENTRY glewInit(void) {
    using GlewInit = GLenum (*)(void);
    static const auto real = reinterpret_cast<GlewInit>(dlsym(RTLD_NEXT, "glewInit"));
    if (!real)
        return GLEW_ERROR_NO_GL_VERSION;
    const GLenum result = real();
    return result == GLEW_ERROR_NO_GLX_DISPLAY ? GLEW_OK : result;
}
