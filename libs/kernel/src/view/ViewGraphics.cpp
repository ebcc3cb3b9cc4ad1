// The drawing sets, selection and camera for the graphics library (tarvo/KernelGraphics.h).
// Views read the drawing sets and the camera before every render: the `draw` and `view`
// commands emit no event of their own.
//
// Threading: kernel thread only.
#include "tarvo/KernelGraphics.h"
#include "view/ViewState.h"

#include <map>

namespace {

std::map<const void*, std::function<void(bool)>>& view_listeners() {
    static std::map<const void*, std::function<void(bool)>> listeners;
    return listeners;
}

} // namespace

namespace tarvo::kernel {

void view_functions_ran(bool redraw) {
    for (const auto& [owner, listener] : view_listeners())
        listener(redraw);
}

} // namespace tarvo::kernel

namespace tarvo::graphics {

void set_view_listener(const void* owner, std::function<void(bool redraw)> listener) {
    if (listener)
        view_listeners()[owner] = std::move(listener);
    else
        view_listeners().erase(owner);
}

std::vector<std::pair<std::string, int>> drawing_set(const std::string& name) {
    kernel::ViewState* view = kernel::view_state();
    if (!view)
        return {};
    const auto it = view->drawing_sets.find(name);
    return it == view->drawing_sets.end() ? std::vector<std::pair<std::string, int>>{} : it->second;
}

const std::vector<std::string>& pickable_types() {
    return kernel::pickable_types();
}

bool select_entities(const std::vector<std::pair<std::string, int>>& entities, int mode) {
    kernel::ViewState* view = kernel::view_state();
    if (!view)
        return false;
    if (mode == 0 && entities.empty()) {
        view->clear_selection();
        return true;
    }
    return view->select(entities, mode);
}

bool get_camera(ViewCamera& camera) {
    kernel::ViewState* view = kernel::view_state();
    if (!view)
        return false;
    camera.at = view->camera.at;
    camera.from = view->camera.from;
    camera.up = view->camera.up;
    return true;
}

void set_camera(const ViewCamera& camera) {
    if (kernel::ViewState* view = kernel::view_state()) {
        view->camera.at = camera.at;
        view->camera.from = camera.from;
        view->camera.up = camera.up;
    }
}

} // namespace tarvo::graphics
