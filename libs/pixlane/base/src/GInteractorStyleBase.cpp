#include <pixlane/GInteractorStyleBase.h>
#include <pixlane/GView.h>

#include <vtkCamera.h>
#include <vtkMath.h>
#include <vtkObjectFactory.h>
#include <vtkRenderWindowInteractor.h>
#include <vtkRenderer.h>
#include <vtkTransform.h>

#include <algorithm>
#include <cmath>

vtkStandardNewMacro(GInteractorStyleBase);

namespace {

using Map = std::array<std::array<PXUtil::MouseFunc, 4>, 3>; // [button - 1][modifiers]

struct Maps {
    std::array<Map, 2> map; // [modeless]
    bool modeless = false;
};

Maps defaults() {
    using namespace PXUtil;
    Maps m;
    for (Map& map : m.map)
        for (auto& row : map)
            row.fill(DoNothing);
    Map& modal = m.map[0];
    modal[Left - 1] = {Rotate, AddSelect, Select, Rotate};
    modal[Middle - 1] = {Pan, Pan, Pan, Pan};
    modal[Right - 1] = {Zoom, SelectBox, ZoomBox, Zoom};
    Map& modeless = m.map[1];
    modeless[Left - 1] = {Select, AddSelect, SelectBox, Select};
    modeless[Middle - 1] = {Rotate, Pan, Rotate, Rotate};
    modeless[Right - 1] = {Zoom, Zoom, Zoom, Zoom};
    return m;
}

Maps& maps() {
    static Maps m = defaults();
    return m;
}

int button_index(PXUtil::Button button) {
    return std::clamp(static_cast<int>(button), 1, 3) - 1;
}

bool is_area_pick(int f) {
    return f == PXUtil::SelectBox || f == PXUtil::SelectCircle || f == PXUtil::SelectPolygon;
}

constexpr int kClickSlop = 4;
constexpr double kWheelStep = 1.2;

} // namespace

GInteractorStyleBase::GInteractorStyleBase() = default;
GInteractorStyleBase::~GInteractorStyleBase() = default;

void GInteractorStyleBase::assign_mouse_function(bool modeless, PXUtil::MouseFunc function,
                                                 PXUtil::Button button, int modifiers) {
    if (function < 0 || function >= PXUtil::kMouseFuncCount)
        function = PXUtil::Rotate;
    maps().map[modeless ? 1 : 0][static_cast<std::size_t>(button_index(button))]
              [static_cast<std::size_t>(modifiers & 3)] = function;
}

PXUtil::MouseFunc GInteractorStyleBase::mouse_function(bool modeless, PXUtil::Button button,
                                                       int modifiers) {
    return maps().map[modeless ? 1 : 0][static_cast<std::size_t>(button_index(button))]
                     [static_cast<std::size_t>(modifiers & 3)];
}

void GInteractorStyleBase::set_modeless(bool modeless) {
    maps().modeless = modeless;
}

bool GInteractorStyleBase::is_modeless() {
    return maps().modeless;
}

void GInteractorStyleBase::reset_mouse_functions() {
    maps() = defaults();
}

void GInteractorStyleBase::set_popup_function(std::function<void(int, int)> function) {
    popup_ = std::move(function);
}

void GInteractorStyleBase::set_donepick_function(std::function<void()> function) {
    donepick_ = std::move(function);
}

// ---- Hooks: the base knows no scene ------------------------------------------------------------

bool GInteractorStyleBase::pick_point(int, int, bool) {
    return false;
}
bool GInteractorStyleBase::pick_area(const std::vector<std::array<double, 2>>&, bool) {
    return false;
}
void GInteractorStyleBase::preselect(int, int) {}
bool GInteractorStyleBase::surface_point(int, int, double[3]) {
    return false;
}
void GInteractorStyleBase::echo_selection() {}

// ---- Events ------------------------------------------------------------------------------------

void GInteractorStyleBase::OnLeftButtonDown() {
    press(PXUtil::Left);
}
void GInteractorStyleBase::OnLeftButtonUp() {
    release(PXUtil::Left);
}
void GInteractorStyleBase::OnMiddleButtonDown() {
    press(PXUtil::Middle);
}
void GInteractorStyleBase::OnMiddleButtonUp() {
    release(PXUtil::Middle);
}
void GInteractorStyleBase::OnRightButtonDown() {
    press(PXUtil::Right);
}
void GInteractorStyleBase::OnRightButtonUp() {
    release(PXUtil::Right);
}

void GInteractorStyleBase::OnMouseWheelForward() {
    if (!CurrentRenderer)
        return;
    dolly(kWheelStep);
}

void GInteractorStyleBase::OnMouseWheelBackward() {
    if (!CurrentRenderer)
        return;
    dolly(1.0 / kWheelStep);
}

void GInteractorStyleBase::OnLeave() {
    if (active_ < 0)
        preselect(-1, -1);
}

void GInteractorStyleBase::OnChar() {
    // VTK's own keys would quit the application ('q', 'e') or switch styles: only the camera
    // reset is kept.
    const char key = Interactor ? Interactor->GetKeyCode() : 0;
    if ((key == 'r' || key == 'R') && view_)
        view_->reset_camera();
}

void GInteractorStyleBase::OnLeftButtonDoubleClick() {
    if (!Interactor)
        return;
    const int* pos = Interactor->GetEventPosition();
    if (!CurrentRenderer)
        FindPokedRenderer(pos[0], pos[1]);
    double p[3];
    if (CurrentRenderer && surface_point(pos[0], pos[1], p))
        center_on(p);
}

void GInteractorStyleBase::center_on(const double point[3]) {
    vtkCamera* camera = CurrentRenderer->GetActiveCamera();
    double focal[3], pos[3];
    camera->GetFocalPoint(focal);
    camera->GetPosition(pos);
    for (int i = 0; i < 3; ++i)
        pos[i] += point[i] - focal[i];
    camera->SetFocalPoint(point);
    camera->SetPosition(pos);
    camera_changed();
}

void GInteractorStyleBase::OnMouseMove() {
    if (!Interactor)
        return;
    const int* pos = Interactor->GetEventPosition();
    if (active_ < 0) {
        preselect(pos[0], pos[1]);
        return;
    }
    drag(pos[0], pos[1]);
}

void GInteractorStyleBase::press(PXUtil::Button button) {
    if (!Interactor || active_ >= 0)
        return;
    const int* pos = Interactor->GetEventPosition();
    if (!CurrentRenderer)
        FindPokedRenderer(pos[0], pos[1]);
    if (!CurrentRenderer)
        return;
    const int modifiers = (Interactor->GetShiftKey() ? PXUtil::kShift : 0) |
                          (Interactor->GetControlKey() ? PXUtil::kControl : 0);
    button_ = button;
    active_ = mouse_function(is_modeless(), button, modifiers);
    start_ = last_ = {pos[0], pos[1]};
    dragged_ = false;
    path_ = {{double(pos[0]), double(pos[1])}};
    if (active_ == PXUtil::RotateAboutMouseCursor && !surface_point(pos[0], pos[1], pivot_))
        CurrentRenderer->GetActiveCamera()->GetFocalPoint(pivot_);
    // The candidate drawn while hovering would stay behind a drag.
    preselect(-1, -1);
}

void GInteractorStyleBase::release(PXUtil::Button button) {
    if (!Interactor || active_ < 0 || button != button_)
        return;
    const int* pos = Interactor->GetEventPosition();
    if (std::abs(pos[0] - start_[0]) > kClickSlop || std::abs(pos[1] - start_[1]) > kClickSlop)
        dragged_ = true;
    if (dragged_ && (is_area_pick(active_) || active_ == PXUtil::ZoomBox))
        finish_area(pos[0], pos[1]);
    else if (!dragged_)
        finish_click(pos[0], pos[1]);
    const bool popup = !dragged_ && button == PXUtil::Right;
    active_ = -1;
    if (popup && popup_) {
        const int* size = Interactor->GetSize();
        popup_(start_[0], size[1] - 1 - start_[1]);
    }
}

void GInteractorStyleBase::drag(int x, int y) {
    if (std::abs(x - start_[0]) > kClickSlop || std::abs(y - start_[1]) > kClickSlop)
        dragged_ = true;
    const int dx = x - last_[0], dy = y - last_[1];
    switch (active_) {
    case PXUtil::Rotate:
    case PXUtil::RotateXY:
        rotate(dx, dy);
        break;
    case PXUtil::RotateAboutMouseCursor:
        rotate_about(pivot_, dx, dy);
        break;
    case PXUtil::RotateZ:
        spin(x, y);
        break;
    case PXUtil::RotateCamera: {
        vtkCamera* camera = CurrentRenderer->GetActiveCamera();
        const int* size = Interactor->GetSize();
        camera->Yaw(-dx * kRotateDegreesPerView / std::max(size[0], 1));
        camera->Pitch(dy * kRotateDegreesPerView / std::max(size[1], 1));
        camera->OrthogonalizeViewUp();
        camera_changed();
        break;
    }
    case PXUtil::Zoom: {
        const int* size = Interactor->GetSize();
        dolly(std::pow(1.1, 20.0 * dy / std::max(size[1], 1)));
        break;
    }
    case PXUtil::ZoomTelephoto: {
        const int* size = Interactor->GetSize();
        vtkCamera* camera = CurrentRenderer->GetActiveCamera();
        const double factor = std::pow(1.1, 20.0 * dy / std::max(size[1], 1));
        if (camera->GetParallelProjection())
            camera->SetParallelScale(camera->GetParallelScale() / factor);
        else
            camera->Zoom(factor);
        camera_changed();
        break;
    }
    case PXUtil::ZoomNavigate: {
        // Walks camera and focal point together along the line of sight.
        const int* size = Interactor->GetSize();
        vtkCamera* camera = CurrentRenderer->GetActiveCamera();
        double dir[3], pos[3], focal[3];
        camera->GetDirectionOfProjection(dir);
        camera->GetPosition(pos);
        camera->GetFocalPoint(focal);
        const double step = camera->GetDistance() * 2.0 * dy / std::max(size[1], 1);
        for (int i = 0; i < 3; ++i) {
            pos[i] += dir[i] * step;
            focal[i] += dir[i] * step;
        }
        camera->SetPosition(pos);
        camera->SetFocalPoint(focal);
        camera_changed();
        break;
    }
    case PXUtil::Pan:
        pan(x, y);
        break;
    case PXUtil::SelectPolygon:
    case PXUtil::SelectCircle:
    case PXUtil::SelectBox:
    case PXUtil::ZoomBox:
        path_.push_back({double(x), double(y)});
        break;
    default:
        break;
    }
    last_ = {x, y};
}

void GInteractorStyleBase::finish_click(int x, int y) {
    bool picked = true;
    switch (active_) {
    case PXUtil::Select:
    case PXUtil::SelectBox:
    case PXUtil::SelectCircle:
    case PXUtil::SelectPolygon:
        pick_point(x, y, false);
        break;
    case PXUtil::AddSelect:
        pick_point(x, y, true);
        break;
    case PXUtil::SelectAndEcho:
        pick_point(x, y, false);
        echo_selection();
        break;
    case PXUtil::EchoSelection:
        echo_selection();
        break;
    case PXUtil::CenterOnClick: {
        double p[3];
        if (surface_point(x, y, p) || focal_plane_point(x, y, p))
            center_on(p);
        picked = false;
        break;
    }
    case PXUtil::ZoomInClick:
        dolly(2.0);
        picked = false;
        break;
    case PXUtil::ZoomOutClick:
        dolly(0.5);
        picked = false;
        break;
    default:
        picked = false;
        break;
    }
    if (picked && donepick_)
        donepick_();
}

void GInteractorStyleBase::finish_area(int x, int y) {
    if (active_ == PXUtil::ZoomBox) {
        zoom_to_box(start_[0], start_[1], x, y);
        return;
    }
    std::vector<std::array<double, 2>> outline;
    const double x0 = start_[0], y0 = start_[1];
    if (active_ == PXUtil::SelectBox) {
        outline = {{x0, y0}, {double(x), y0}, {double(x), double(y)}, {x0, double(y)}};
    } else if (active_ == PXUtil::SelectCircle) {
        // The press is the centre, the release a point of the circle.
        const double r = std::hypot(x - x0, y - y0);
        constexpr int kSides = 48;
        for (int i = 0; i < kSides; ++i) {
            const double a = 2 * vtkMath::Pi() * i / kSides;
            outline.push_back({x0 + r * std::cos(a), y0 + r * std::sin(a)});
        }
    } else {
        path_.push_back({double(x), double(y)});
        outline = path_;
    }
    pick_area(outline, Interactor->GetShiftKey() != 0);
    if (donepick_)
        donepick_();
}

// ---- Camera ------------------------------------------------------------------------------------

void GInteractorStyleBase::camera_changed() {
    if (CurrentRenderer) {
        if (AutoAdjustCameraClippingRange)
            CurrentRenderer->ResetCameraClippingRange();
    }
    if (view_) {
        view_->camera_moved();
        view_->request_render();
    }
}

void GInteractorStyleBase::rotate(int dx, int dy) {
    vtkCamera* camera = CurrentRenderer->GetActiveCamera();
    const int* size = Interactor->GetSize();
    // The model turns with the cursor: the camera goes the other way round the focal point.
    camera->Azimuth(-dx * kRotateDegreesPerView / std::max(size[0], 1));
    camera->Elevation(-dy * kRotateDegreesPerView / std::max(size[1], 1));
    camera->OrthogonalizeViewUp();
    camera_changed();
}

void GInteractorStyleBase::rotate_about(const double pivot[3], int dx, int dy) {
    vtkCamera* camera = CurrentRenderer->GetActiveCamera();
    const int* size = Interactor->GetSize();
    double up[3], right[3], dir[3];
    camera->GetViewUp(up);
    camera->GetDirectionOfProjection(dir);
    vtkMath::Cross(dir, up, right);
    vtkNew<vtkTransform> t;
    t->Translate(pivot[0], pivot[1], pivot[2]);
    t->RotateWXYZ(-dx * kRotateDegreesPerView / std::max(size[0], 1), up);
    t->RotateWXYZ(dy * kRotateDegreesPerView / std::max(size[1], 1), right);
    t->Translate(-pivot[0], -pivot[1], -pivot[2]);
    double pos[3], focal[3];
    camera->GetPosition(pos);
    camera->GetFocalPoint(focal);
    t->TransformPoint(pos, pos);
    t->TransformPoint(focal, focal);
    t->TransformVector(up, up);
    camera->SetPosition(pos);
    camera->SetFocalPoint(focal);
    camera->SetViewUp(up);
    camera->OrthogonalizeViewUp();
    camera_changed();
}

void GInteractorStyleBase::spin(int x, int y) {
    const int* size = Interactor->GetSize();
    const double cx = size[0] / 2.0, cy = size[1] / 2.0;
    const double now = std::atan2(y - cy, x - cx),
                 before = std::atan2(last_[1] - cy, last_[0] - cx);
    CurrentRenderer->GetActiveCamera()->Roll(vtkMath::DegreesFromRadians(now - before));
    camera_changed();
}

bool GInteractorStyleBase::focal_plane_point(int x, int y, double point[3]) {
    vtkCamera* camera = CurrentRenderer->GetActiveCamera();
    double focal[3], display[3], world[4];
    camera->GetFocalPoint(focal);
    ComputeWorldToDisplay(focal[0], focal[1], focal[2], display);
    ComputeDisplayToWorld(x, y, display[2], world);
    std::copy(world, world + 3, point);
    return true;
}

void GInteractorStyleBase::pan(int x, int y) {
    vtkCamera* camera = CurrentRenderer->GetActiveCamera();
    double now[3], before[3], focal[3], pos[3];
    focal_plane_point(x, y, now);
    focal_plane_point(last_[0], last_[1], before);
    camera->GetFocalPoint(focal);
    camera->GetPosition(pos);
    for (int i = 0; i < 3; ++i) {
        focal[i] += before[i] - now[i];
        pos[i] += before[i] - now[i];
    }
    camera->SetFocalPoint(focal);
    camera->SetPosition(pos);
    camera_changed();
}

void GInteractorStyleBase::dolly(double factor) {
    if (factor <= 0)
        return;
    vtkCamera* camera = CurrentRenderer->GetActiveCamera();
    if (camera->GetParallelProjection())
        camera->SetParallelScale(camera->GetParallelScale() / factor);
    else
        camera->Dolly(factor);
    camera_changed();
}

void GInteractorStyleBase::zoom_to_box(int x0, int y0, int x1, int y1) {
    const int* size = Interactor->GetSize();
    const double bw = std::abs(x1 - x0), bh = std::abs(y1 - y0);
    if (bw < 1 || bh < 1)
        return;
    // Move the box centre to the middle of the view, then fill the view with the box.
    vtkCamera* camera = CurrentRenderer->GetActiveCamera();
    double centre[3], focal[3], pos[3];
    focal_plane_point((x0 + x1) / 2, (y0 + y1) / 2, centre);
    camera->GetFocalPoint(focal);
    camera->GetPosition(pos);
    for (int i = 0; i < 3; ++i)
        pos[i] += centre[i] - focal[i];
    camera->SetFocalPoint(centre);
    camera->SetPosition(pos);
    dolly(std::min(size[0] / bw, size[1] / bh));
}
