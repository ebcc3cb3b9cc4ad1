#include <pixlane/GInteractorStyleBase.h>
#include <pixlane/GModelSet.h>
#include <pixlane/GView.h>

#include <algorithm>
#include <set>

#include <vtkCamera.h>
#include <vtkCommand.h>
#include <vtkGenericRenderWindowInteractor.h>
#include <vtkInteractorStyle.h>
#include <vtkNew.h>
#include <vtkRenderWindow.h>
#include <vtkRenderer.h>
#include <vtkUnsignedCharArray.h>

namespace {

std::vector<std::shared_ptr<GView>>& global_list() {
    static std::vector<std::shared_ptr<GView>> views;
    return views;
}

} // namespace

GView::GView(AppUtil* app) : app_(app), renderer_(vtkSmartPointer<vtkRenderer>::New()) {
    // The interactor makes a default style that, without VTK's InteractionStyle module, can only
    // warn that it is missing; the view's own style replaces it.
    const int warnings = vtkObject::GetGlobalWarningDisplay();
    vtkObject::GlobalWarningDisplayOff();
    interactor_ = vtkSmartPointer<vtkGenericRenderWindowInteractor>::New();
    vtkObject::SetGlobalWarningDisplay(warnings);
    interactor_->SetInteractorStyle(nullptr);
    // The style asks the view for renders; the interactor must never draw on its own.
    interactor_->EnableRenderOff();
}

GView::~GView() {
    set_model_set(nullptr);
    set_style(nullptr);
    set_render_window(nullptr);
}

int32_t GView::get_available_id(int32_t start) {
    std::set<int32_t> taken;
    for (const auto& view : global_list())
        taken.insert(view->view_id());
    int32_t id = start;
    while (taken.count(id))
        ++id;
    return id;
}

bool GView::add_global_view(const std::shared_ptr<GView>& view) {
    auto& views = global_list();
    if (!view || std::find(views.begin(), views.end(), view) != views.end())
        return false;
    if (view->id_ == 0)
        view->id_ = get_available_id(1);
    else if (find_global_view(view->id_))
        return false;
    views.push_back(view);
    return true;
}

void GView::remove_global_view(const std::shared_ptr<GView>& view) {
    auto& views = global_list();
    views.erase(std::remove(views.begin(), views.end(), view), views.end());
}

std::shared_ptr<GView> GView::find_global_view(int32_t id) {
    for (const auto& view : global_list())
        if (view->id_ == id)
            return view;
    return nullptr;
}

std::vector<std::shared_ptr<GView>> GView::global_views() {
    return global_list();
}

vtkRenderer* GView::renderer() const {
    return renderer_;
}

void GView::set_render_window(vtkRenderWindow* window) {
    if (window_ == window)
        return;
    if (window_) {
        // The scene's GL objects are released from the old window's own context.
        window_->MakeCurrent();
        window_->RemoveRenderer(renderer_);
    }
    window_ = window;
    if (window_)
        window_->AddRenderer(renderer_);
    // The interactor finds the renderer under the cursor through the window; it is given the
    // window without the window being told of it, so that the window never drives it.
    interactor_->SetRenderWindow(window_);
    if (window_)
        window_->SetInteractor(nullptr);
}

vtkRenderWindow* GView::render_window() const {
    return window_;
}

void GView::render() {
    if (!window_)
        return;
    if (start_callback_)
        start_callback_(vtkCommand::StartEvent);
    window_->Render();
    if (end_callback_)
        end_callback_(vtkCommand::EndEvent);
}

void GView::request_render() {
    if (render_enabled_)
        render();
    else if (end_callback_)
        end_callback_(vtkCommand::RenderEvent);
}

void GView::enable_render(bool enabled, bool render_now) {
    render_enabled_ = enabled;
    if (enabled && render_now)
        render();
}

void GView::set_start_render_callback(RenderCallback callback) {
    start_callback_ = std::move(callback);
}

void GView::set_end_render_callback(RenderCallback callback) {
    end_callback_ = std::move(callback);
}

void GView::get_size(int& width, int& height) const {
    width = height = 0;
    if (!window_)
        return;
    const int* size = window_->GetSize();
    width = size[0];
    height = size[1];
}

bool GView::get_rgba_pixels(int width, int height, unsigned char* out) const {
    int w = 0, h = 0;
    get_size(w, h);
    if (!window_ || width != w || height != h || w <= 0 || h <= 0)
        return false;
    const std::size_t bytes = static_cast<std::size_t>(w) * static_cast<std::size_t>(h) * 4;
    // VTK reads bottom row first, as GL stores it, in R,G,B,A order, straight into `out`.
    vtkNew<vtkUnsignedCharArray> wrapped;
    wrapped->SetNumberOfComponents(4);
    wrapped->SetArray(out, static_cast<vtkIdType>(bytes), 1);
    if (!window_->GetRGBACharPixelData(0, 0, w - 1, h - 1, 0, wrapped))
        return false;
    for (std::size_t i = 0; i < bytes; i += 4)
        std::swap(out[i], out[i + 2]);
    return true;
}

void GView::reset_camera() {
    renderer_->ResetCamera();
    camera_moved();
    request_render();
}

void GView::camera_moved() {
    if (model_set_)
        model_set_->camera_moved(this);
}

void GView::set_model_set(GModelSet* model_set) {
    if (model_set_ == model_set)
        return;
    GModelSet* old = model_set_;
    model_set_ = nullptr;
    if (old)
        old->detach_view(this);
    model_set_ = model_set;
    if (model_set_)
        model_set_->attach_view(this);
}

void GView::set_style(vtkInteractorStyle* style) {
    if (style_ == style)
        return;
    if (auto* old = GInteractorStyleBase::SafeDownCast(style_))
        old->set_view(nullptr);
    if (style_)
        style_->SetInteractor(nullptr);
    style_ = style;
    if (!style_)
        return;
    if (auto* base = GInteractorStyleBase::SafeDownCast(style_))
        base->set_view(this);
    // vtkInteractorObserver::SetInteractor observes the interactor's input events: this is how
    // the invoke_* events reach the style's handlers.
    style_->SetInteractor(interactor_);
    style_->SetCurrentRenderer(renderer_);
}

vtkInteractorStyle* GView::get_style() const {
    return style_;
}

bool GView::prepare_event(int x, int y, int modifiers, char key_code, int count,
                          const char* key_sym) {
    if (!window_ || !style_)
        return false;
    int width = 0, height = 0;
    get_size(width, height);
    interactor_->SetSize(width, height);
    interactor_->SetEventInformation(x, height - 1 - y, (modifiers & PXUtil::kControl) ? 1 : 0,
                                     (modifiers & PXUtil::kShift) ? 1 : 0, key_code, count,
                                     key_sym);
    interactor_->SetAltKey(0);
    return true;
}

void GView::fire(unsigned long event) {
    interactor_->InvokeEvent(event, nullptr);
}

void GView::invoke_keypress(int modifiers, char key_code, int count, const char* key_sym) {
    const int* last = interactor_->GetEventPosition();
    int width = 0, height = 0;
    get_size(width, height);
    if (!prepare_event(last[0], height - 1 - last[1], modifiers, key_code, count, key_sym))
        return;
    fire(vtkCommand::KeyPressEvent);
    fire(vtkCommand::CharEvent);
}

void GView::invoke_keyrelease(int modifiers, char key_code, int count, const char* key_sym) {
    const int* last = interactor_->GetEventPosition();
    int width = 0, height = 0;
    get_size(width, height);
    if (!prepare_event(last[0], height - 1 - last[1], modifiers, key_code, count, key_sym))
        return;
    fire(vtkCommand::KeyReleaseEvent);
}

void GView::invoke_mouse_press(int x, int y, int modifiers, PXUtil::Button button) {
    if (!prepare_event(x, y, modifiers))
        return;
    fire(button == PXUtil::Right    ? vtkCommand::RightButtonPressEvent
         : button == PXUtil::Middle ? vtkCommand::MiddleButtonPressEvent
                                    : vtkCommand::LeftButtonPressEvent);
}

void GView::invoke_mouse_release(int x, int y, int modifiers, PXUtil::Button button) {
    if (!prepare_event(x, y, modifiers))
        return;
    fire(button == PXUtil::Right    ? vtkCommand::RightButtonReleaseEvent
         : button == PXUtil::Middle ? vtkCommand::MiddleButtonReleaseEvent
                                    : vtkCommand::LeftButtonReleaseEvent);
}

void GView::invoke_mouse_move(int x, int y, int modifiers) {
    if (prepare_event(x, y, modifiers))
        fire(vtkCommand::MouseMoveEvent);
}

void GView::invoke_mouse_wheel(bool forward, int x, int y, int modifiers) {
    if (prepare_event(x, y, modifiers))
        fire(forward ? vtkCommand::MouseWheelForwardEvent : vtkCommand::MouseWheelBackwardEvent);
}

void GView::invoke_enter() {
    if (window_ && style_)
        fire(vtkCommand::EnterEvent);
}

void GView::invoke_leave() {
    if (window_ && style_)
        fire(vtkCommand::LeaveEvent);
}

void GView::invoke_double_click(int x, int y) {
    if (!prepare_event(x, y, 0))
        return;
    // VTK reports a double click as a press with a repeat count of one.
    interactor_->SetRepeatCount(1);
    fire(vtkCommand::LeftButtonDoubleClickEvent);
    interactor_->SetRepeatCount(0);
}

std::array<double, 3> GView::get_focal_point() const {
    std::array<double, 3> p{};
    renderer_->GetActiveCamera()->GetFocalPoint(p.data());
    return p;
}

std::array<double, 3> GView::get_position() const {
    std::array<double, 3> p{};
    renderer_->GetActiveCamera()->GetPosition(p.data());
    return p;
}

std::array<double, 3> GView::get_view_up() const {
    std::array<double, 3> p{};
    renderer_->GetActiveCamera()->GetViewUp(p.data());
    return p;
}

void GView::set_focal_point(const std::array<double, 3>& point) {
    renderer_->GetActiveCamera()->SetFocalPoint(point.data());
    renderer_->ResetCameraClippingRange();
    request_render();
}

void GView::set_position(const std::array<double, 3>& point) {
    renderer_->GetActiveCamera()->SetPosition(point.data());
    renderer_->ResetCameraClippingRange();
    request_render();
}

void GView::set_view_up(const std::array<double, 3>& direction) {
    renderer_->GetActiveCamera()->SetViewUp(direction.data());
    request_render();
}
