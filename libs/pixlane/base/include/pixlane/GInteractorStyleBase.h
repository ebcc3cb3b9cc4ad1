#pragma once

#include <array>
#include <functional>
#include <vector>

#include <vtkInteractorStyle.h>

#include <pixlane/PXUtil.h>

class GView;

// The interactor style of a view: a real vtkInteractorStyle that GView's input operations drive
// through VTK's interactor events. What a button does is looked up when it is pressed, by button
// and modifiers, in one of two process-wide maps (modal and modeless; set_modeless chooses which
// one is in force for every view). Camera gestures (rotate, pan, zoom, zoom box, spin) are done
// here; selection gestures (click, box, circle, polygon, hover) are handed to the virtual hooks
// below, which a style that knows the scene overrides.
//
// Coordinates in the hooks are VTK display pixels: x to the right, y up from the bottom row.
// A press and release less than 4 pixels apart is a click. A right-button click calls the popup
// function (if set) with the position in GView's input convention (y down from the top row),
// whatever the right button is mapped to; a finished selection gesture calls the done-pick
// function.
//
// Defaults, modal: left rotate, middle pan, right zoom, control-left select, shift-left
// add_select, control-right zoom_box, shift-right select_box. Modeless: left select, shift-left
// add_select, control-left select_box, middle rotate, shift-middle pan, right zoom.
//
// Threads: the rendering thread, like the view; the maps are static and unlocked for that
// reason.
class GInteractorStyleBase : public vtkInteractorStyle {
public:
    static GInteractorStyleBase* New();
    vtkTypeMacro(GInteractorStyleBase, vtkInteractorStyle);

    static void assign_mouse_function(bool modeless, PXUtil::MouseFunc function,
                                      PXUtil::Button button, int modifiers);
    static PXUtil::MouseFunc mouse_function(bool modeless, PXUtil::Button button, int modifiers);
    static void set_modeless(bool modeless);
    static bool is_modeless();
    // Back to the defaults above, both maps, modal mode.
    static void reset_mouse_functions();

    void set_popup_function(std::function<void(int x, int y)> function);
    void set_donepick_function(std::function<void()> function);

    // The view whose camera and renders this style drives (not owned; GView::set_style sets it).
    void set_view(GView* view) { view_ = view; }
    GView* view() const { return view_; }
    // Set when the installed window factory is a CLWindowFactory, whose windows deliver their
    // own input; this style then leaves renders to the window.
    void set_client_window(bool on) { client_window_ = on; }
    bool client_window() const { return client_window_; }

    // The gesture under way, or -1.
    int active_function() const { return active_; }
    // Degrees per pixel of a rotate drag: a drag across the view's full width (height) turns
    // 180 degrees about the screen's vertical (horizontal) axis through the focal point.
    static constexpr double kRotateDegreesPerView = 180.0;

    void OnMouseMove() override;
    void OnLeftButtonDown() override;
    void OnLeftButtonUp() override;
    void OnMiddleButtonDown() override;
    void OnMiddleButtonUp() override;
    void OnRightButtonDown() override;
    void OnRightButtonUp() override;
    void OnMouseWheelForward() override;
    void OnMouseWheelBackward() override;
    void OnLeave() override;
    void OnChar() override;
    // A double click with the left button centres the view on the model point under the cursor
    // (nothing when the cursor is off the model), whatever the button is mapped to.
    void OnLeftButtonDoubleClick() override;

protected:
    GInteractorStyleBase();
    ~GInteractorStyleBase() override;

    // Selection hooks; the base picks nothing. `add` keeps the selection and adds to it.
    // Answers whether the selection changed.
    virtual bool pick_point(int x, int y, bool add);
    // A closed outline in display pixels (a box is its four corners).
    virtual bool pick_area(const std::vector<std::array<double, 2>>& outline, bool add);
    // The cursor rests at (x, y) with no button down: show what a click would pick; (-1, -1)
    // when it left the view.
    virtual void preselect(int x, int y);
    // The world point under the cursor (the scene's surface there); false when there is none.
    virtual bool surface_point(int x, int y, double point[3]);
    // Prints the current selection.
    virtual void echo_selection();

    // Asks the view for a render and tells it that its camera moved.
    void camera_changed();

private:
    void press(PXUtil::Button button);
    void release(PXUtil::Button button);
    void drag(int x, int y);
    void finish_click(int x, int y);
    void finish_area(int x, int y);
    void rotate(int dx, int dy);
    void rotate_about(const double pivot[3], int dx, int dy);
    void spin(int x, int y);
    void pan(int x, int y);
    void dolly(double factor);
    void zoom_to_box(int x0, int y0, int x1, int y1);
    bool focal_plane_point(int x, int y, double point[3]);
    void center_on(const double point[3]);

    GView* view_ = nullptr;
    bool client_window_ = false;
    std::function<void(int, int)> popup_;
    std::function<void()> donepick_;
    int active_ = -1;
    PXUtil::Button button_ = PXUtil::Left;
    std::array<int, 2> start_{0, 0};
    std::array<int, 2> last_{0, 0};
    bool dragged_ = false;
    double pivot_[3] = {0, 0, 0};
    std::vector<std::array<double, 2>> path_;
};
