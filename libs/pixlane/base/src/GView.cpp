#include <pixlane/GView.h>

#include <algorithm>
#include <set>

#include <vtkCamera.h>
#include <vtkCommand.h>
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

GView::GView() : renderer_(vtkSmartPointer<vtkRenderer>::New()) {}

GView::~GView() {
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
    request_render();
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
