#include <pixlane/ServerWindowFactory.h>

#include <pixlane/EglDisplay.h>
#include <pixlane/GView.h>
#include <tarvo_util/TarvoAppLogger.h>

#include <EGL/egl.h>
#include <EGL/eglext.h>

#include <algorithm>
#include <atomic>
#include <utility>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

#include <vtkAutoInit.h>
#include <vtkCallbackCommand.h>
#include <vtkCommand.h>
#include <vtkGenericOpenGLRenderWindow.h>
#include <vtkNew.h>
#include <vtkSmartPointer.h>

// Without the OpenGL factories vtkRenderer::New makes the abstract renderer, which draws nothing.
VTK_MODULE_INIT(vtkRenderingOpenGL2);

namespace {

std::atomic<int> live_context_count{0};

// A small pbuffer only gives the context something to be current on: VTK renders into its own
// framebuffer objects of the window's size and reads pixels back from those.
constexpr EGLint pbuffer_side = 16;

} // namespace

struct ServerWindowFactory::Display {
    EGLDisplay display = EGL_NO_DISPLAY;
    EGLConfig config = nullptr;
    std::string description;

    void open() {
        EglDisplayChoice choice = open_egl_display(false);
        display = choice.display;
        config = choice.config;
        description = std::move(choice.description);
    }
};

struct ServerWindowFactory::Window {
    EGLDisplay display = EGL_NO_DISPLAY;
    EGLContext context = EGL_NO_CONTEXT;
    EGLSurface surface = EGL_NO_SURFACE;
    std::weak_ptr<GView> view;
    vtkSmartPointer<vtkGenericOpenGLRenderWindow> render_window;
    vtkNew<vtkCallbackCommand> callback;

    void make_current() const {
        eglBindAPI(EGL_OPENGL_API);
        eglMakeCurrent(display, surface, surface, context);
    }

    // vtkGenericOpenGLRenderWindow asks its owner, through events, to do what a platform window
    // would do itself.
    static void on_event(vtkObject*, unsigned long event, void* client_data, void* call_data) {
        const auto* self = static_cast<const Window*>(client_data);
        switch (event) {
        case vtkCommand::WindowMakeCurrentEvent:
            self->make_current();
            break;
        case vtkCommand::WindowIsCurrentEvent:
            *static_cast<bool*>(call_data) = eglGetCurrentContext() == self->context;
            break;
        case vtkCommand::WindowSupportsOpenGLEvent:
        case vtkCommand::WindowIsDirectEvent:
            *static_cast<int*>(call_data) = 1;
            break;
        default: // WindowFrameEvent: a pbuffer has nothing to swap
            break;
        }
    }
};

ServerWindowFactory::ServerWindowFactory() : display_(std::make_unique<Display>()) {
    display_->open();
    if (ok())
        TarvoAppLogger::app_log_info("Graphics: " + display_->description);
    else
        TarvoAppLogger::app_log_error("Graphics: " + display_->description);
}

ServerWindowFactory::~ServerWindowFactory() {
    while (!windows_.empty())
        destroy(windows_.begin()->first, *windows_.begin()->second);
    if (display_->display != EGL_NO_DISPLAY) {
        eglMakeCurrent(display_->display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
        eglTerminate(display_->display);
    }
}

bool ServerWindowFactory::ok() const {
    return display_->display != EGL_NO_DISPLAY;
}

const std::string& ServerWindowFactory::description() const {
    return display_->description;
}

int ServerWindowFactory::live_contexts() {
    return live_context_count.load();
}

void ServerWindowFactory::keep_frame_memory() {
#if defined(__GLIBC__)
    mallopt(M_MMAP_THRESHOLD, 32 << 20); // glibc's ceiling
    mallopt(M_TRIM_THRESHOLD, 64 << 20);
#endif
}

bool ServerWindowFactory::core_initialize_window(const std::shared_ptr<GView>& view) {
    if (!view || !ok())
        return false;
    if (auto it = windows_.find(view.get()); it != windows_.end()) {
        // A view that was dropped without giving its window back may have left its address behind.
        if (it->second->view.lock() == view)
            return true;
        destroy(it->first, *it->second);
    }

    auto window = std::make_unique<Window>();
    window->display = display_->display;
    window->view = view;
    eglBindAPI(EGL_OPENGL_API);
    window->context = eglCreateContext(display_->display, display_->config, EGL_NO_CONTEXT,
                                       egl_view_context_attributes);
    if (window->context == EGL_NO_CONTEXT) {
        TarvoAppLogger::app_log_error("Graphics: eglCreateContext failed for view " +
                                      std::to_string(view->view_id()));
        return false;
    }
    ++live_context_count;
    const EGLint pbuffer_attributes[] = {EGL_WIDTH, pbuffer_side, EGL_HEIGHT, pbuffer_side,
                                         EGL_NONE};
    window->surface =
        eglCreatePbufferSurface(display_->display, display_->config, pbuffer_attributes);

    auto& render_window = window->render_window;
    render_window = vtkSmartPointer<vtkGenericOpenGLRenderWindow>::New();
    window->callback->SetCallback(&Window::on_event);
    window->callback->SetClientData(window.get());
    for (const unsigned long event :
         {vtkCommand::WindowMakeCurrentEvent, vtkCommand::WindowIsCurrentEvent,
          vtkCommand::WindowSupportsOpenGLEvent, vtkCommand::WindowIsDirectEvent,
          vtkCommand::WindowFrameEvent})
        render_window->AddObserver(event, window->callback);
    // Multisampled framebuffers can't be read back directly.
    render_window->SetMultiSamples(0);
    // Frames are read back from VTK's display framebuffer; copying each to the pbuffer, which
    // nobody reads, cost a fifth of the render thread's time on llvmpipe.
    render_window->SetFrameBlitModeToNoBlit();
    render_window->SetSize(300, 300);

    GView* key = view.get();
    Window& stored = *windows_.emplace(key, std::move(window)).first->second;
    if (stored.surface == EGL_NO_SURFACE ||
        !eglMakeCurrent(stored.display, stored.surface, stored.surface, stored.context) ||
        !render_window->InitializeFromCurrentContext()) {
        TarvoAppLogger::app_log_error("Graphics: no usable OpenGL context for view " +
                                      std::to_string(view->view_id()) +
                                      " (is pixlane_glew_shim linked into the executable?)");
        destroy(key, stored);
        return false;
    }
    view->set_render_window(render_window);
    return true;
}

void ServerWindowFactory::core_de_initialize_window(const std::shared_ptr<GView>& view) {
    if (!view)
        return;
    if (auto it = windows_.find(view.get()); it != windows_.end())
        destroy(it->first, *it->second);
}

void ServerWindowFactory::destroy(GView* key, Window& window) {
    // VTK releases its GL objects on the way out; they must go from this view's context, never
    // from whichever one happens to be current.
    window.make_current();
    if (auto view = window.view.lock(); view && view->render_window() == window.render_window)
        view->set_render_window(nullptr);
    window.render_window->Finalize();
    window.render_window->RemoveObserver(window.callback);
    window.render_window = nullptr;
    eglMakeCurrent(window.display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    if (window.surface != EGL_NO_SURFACE)
        eglDestroySurface(window.display, window.surface);
    eglDestroyContext(window.display, window.context);
    --live_context_count;
    windows_.erase(key);
}

void ServerWindowFactory::resize(GView* view, int width, int height) {
    if (!view || !view->render_window())
        return;
    view->render_window()->SetSize(std::max(width, 1), std::max(height, 1));
}
