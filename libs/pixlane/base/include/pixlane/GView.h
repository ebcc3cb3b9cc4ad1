#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include <vtkSmartPointer.h>

#include <pixlane/PXUtil.h>

class AppUtil;
class GModelSet;
class vtkGenericRenderWindowInteractor;
class vtkInteractorStyle;
class vtkRenderer;
class vtkRenderWindow;

// One render view: a VTK renderer drawn into a hidden window that a GWindowFactory gives it. The
// library keeps a global list of views, each with an id that is unique among the listed views.
//
// Rendering. render() draws synchronously when the view has a window: the start callback gets
// vtkCommand::StartEvent (3), the end callback vtkCommand::EndEvent (4) once the frame is done.
// Whatever changes the picture (the camera setters, and later the scene and interaction layers)
// calls request_render(). With rendering enabled (the default) that renders at once; after
// enable_render(false, ...) the view draws nothing of its own accord and calls the end callback
// with vtkCommand::RenderEvent (5) instead, leaving the owner to call render() when it suits it.
//
// Pixels. get_rgba_pixels copies the last frame, bottom row first, four bytes per pixel in the
// order blue, green, red, alpha: the server exchanges red and blue once more before it encodes,
// so clients receive true RGB(A).
//
// Input. The invoke_* operations deliver keyboard and mouse events to the view's interactor style
// as VTK interactor events, through an interactor that never runs an event loop and never renders
// by itself: the style changes the camera or the selection and asks for a render through
// request_render. Positions are pixels of the view with y down from the top row, as in the
// images the server delivers; the view turns them into VTK's bottom-up convention. Without a
// window or a style, input is ignored. Modifiers: 1 shift, 2 control, 3 both.
//
// Threads: a view, its window and the global list belong to the one thread that renders (the
// server's worker thread); nothing here is locked. Not copyable.
class GView {
public:
    using RenderCallback = std::function<void(unsigned long event_id)>;

    // `app` is the application object of the model set the view will show (not owned; may be
    // null for a view of a scene without one).
    explicit GView(AppUtil* app = nullptr);
    ~GView();
    GView(const GView&) = delete;
    GView& operator=(const GView&) = delete;

    // The smallest id >= start that no view in the global list has.
    static int32_t get_available_id(int32_t start);
    // Enters the view; a view whose id is 0 is given get_available_id(1) first. A view already in
    // the list, or whose id another listed view has, is not entered again (answers false).
    static bool add_global_view(const std::shared_ptr<GView>& view);
    static void remove_global_view(const std::shared_ptr<GView>& view);
    static std::shared_ptr<GView> find_global_view(int32_t id);
    static std::vector<std::shared_ptr<GView>> global_views();

    int32_t view_id() const { return id_; }
    void set_view_id(int32_t id) { id_ = id; }

    // The renderer that the scene is added to; it lives as long as the view.
    vtkRenderer* renderer() const;
    // Set by the window factory: the window the renderer draws into, or null to detach it.
    void set_render_window(vtkRenderWindow* window);
    vtkRenderWindow* render_window() const;

    void render();
    void request_render();
    // Rendering of its own accord on or off; when switched on with render_now, renders once.
    void enable_render(bool enabled, bool render_now);
    bool render_enabled() const { return render_enabled_; }
    void set_start_render_callback(RenderCallback callback);
    void set_end_render_callback(RenderCallback callback);

    AppUtil* app_util() const { return app_; }

    // Binds the scene (not owned): the old one is detached, the new one attached; null unbinds.
    // A model set must outlive its binding; the destructor unbinds.
    void set_model_set(GModelSet* model_set);
    GModelSet* model_set() const { return model_set_; }

    // The interactor style that input goes to; the view holds a reference. A
    // GInteractorStyleBase is also given this view.
    void set_style(vtkInteractorStyle* style);
    vtkInteractorStyle* get_style() const;

    void invoke_keypress(int modifiers, char key_code, int count, const char* key_sym);
    void invoke_keyrelease(int modifiers, char key_code, int count, const char* key_sym);
    void invoke_mouse_press(int x, int y, int modifiers, PXUtil::Button button);
    void invoke_mouse_release(int x, int y, int modifiers, PXUtil::Button button);
    void invoke_mouse_move(int x, int y, int modifiers);
    void invoke_mouse_wheel(bool forward, int x, int y, int modifiers);
    void invoke_enter();
    void invoke_leave();
    void invoke_double_click(int x, int y);

    // The camera was moved (by input or reset_camera): tells the model set.
    void camera_moved();

    // Size of the window in pixels; 0 x 0 without one.
    void get_size(int& width, int& height) const;
    // Fills width * height * 4 bytes (layout above). Answers false, filling nothing, when there
    // is no window or the size isn't the window's.
    bool get_rgba_pixels(int width, int height, unsigned char* out) const;

    // Fits the camera to everything visible, tells the model set, then requests a render.
    void reset_camera();
    std::array<double, 3> get_focal_point() const;
    std::array<double, 3> get_position() const;
    std::array<double, 3> get_view_up() const;
    // Each setter requests a render.
    void set_focal_point(const std::array<double, 3>& point);
    void set_position(const std::array<double, 3>& point);
    void set_view_up(const std::array<double, 3>& direction);

private:
    // Readies the interactor for an event at (x, y) (top-down); false when input is ignored.
    bool prepare_event(int x, int y, int modifiers, char key_code = 0, int count = 0,
                       const char* key_sym = nullptr);
    void fire(unsigned long event);

    int32_t id_ = 0;
    AppUtil* app_ = nullptr;
    GModelSet* model_set_ = nullptr;
    vtkSmartPointer<vtkInteractorStyle> style_;
    vtkSmartPointer<vtkGenericRenderWindowInteractor> interactor_;
    bool render_enabled_ = true;
    vtkSmartPointer<vtkRenderer> renderer_;
    vtkSmartPointer<vtkRenderWindow> window_;
    RenderCallback start_callback_;
    RenderCallback end_callback_;
};
