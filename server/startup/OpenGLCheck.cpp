#include "OpenGLCheck.h"

void run_opengl_check() {
    // Not built yet: the driver probe and the switch to a software OpenGL (decided by the
    // TARVO_OPENGL_FALLBACK environment variable) belong here. Until then the process uses
    // whatever OpenGL the system offers.
}
