// Public functions of the view, drawing, selection and label families: they answer from, and
// change, the one ViewState of the session. Without a session they print one error and answer
// their failure value. No exception leaves them.

#include "core/Guard.h"
#include "core/Session.h"
#include "tarvo/TarvoInterface.h"
#include "view/ViewState.h"

#include <vtkVersionMacros.h>

#include <utility>

using tarvo::kernel::PickedEntity;
using tarvo::kernel::ViewState;

namespace {

// Runs `body` on the live state; `fallback` when there is no session or something throws.
template <class T, class Body> T with_view(const char* name, T fallback, Body body) {
    ViewState* v = tarvo::kernel::view_state();
    if (!v) {
        tarvo::kernel::error(std::string(name) + ": the kernel is not initialized");
        return fallback;
    }
    return tarvo::kernel::guarded(name, std::move(fallback), [&] { return body(*v); });
}

// The functions that answer nothing are the ones that change the state (or print it): views are
// told afterwards, as commands tell them by ending.
template <class Body> void with_view(const char* name, Body body, bool redraw = false) {
    with_view(name, 0, [&](ViewState& v) {
        body(v);
        return 0;
    });
    if (tarvo::kernel::view_state())
        tarvo::kernel::view_functions_ran(redraw);
}

} // namespace

namespace TarvoInterface {

// ---- Camera ------------------------------------------------------------------------------------

double get_view_distance() {
    return with_view("get_view_distance", 0.0, [](ViewState& v) { return v.camera.distance(); });
}

std::array<double, 3> get_view_at() {
    return with_view("get_view_at", std::array<double, 3>{},
                     [](ViewState& v) { return v.camera.at; });
}

std::array<double, 3> get_view_from() {
    return with_view("get_view_from", std::array<double, 3>{},
                     [](ViewState& v) { return v.camera.from; });
}

std::array<double, 3> get_view_up() {
    return with_view("get_view_up", std::array<double, 3>{},
                     [](ViewState& v) { return v.camera.up; });
}

void reset_camera() {
    with_view("reset_camera", [](ViewState& v) { v.reset_camera(); });
}

void flush_graphics() {
    with_view(
        "flush_graphics", [](ViewState&) {}, true);
}

// ---- Drawing -----------------------------------------------------------------------------------

void clear_drawing_set(const std::string& set_name) {
    with_view("clear_drawing_set", [&](ViewState& v) { v.drawing_sets.erase(set_name); });
}

void clear_preview() {
    with_view("clear_preview", [](ViewState& v) { v.preview.clear(); });
}

// ---- Switches and modes
// --------------------------------------------------------------------------

int get_rubberband_shape() {
    return with_view("get_rubberband_shape", 0, [](ViewState& v) { return v.rubberband_shape; });
}

bool is_perspective_on() {
    return with_view("is_perspective_on", false, [](ViewState& v) { return v.perspective; });
}

bool is_occlusion_on() {
    return with_view("is_occlusion_on", false, [](ViewState& v) { return v.occlusion; });
}

bool is_scale_visibility_on() {
    return with_view("is_scale_visibility_on", false,
                     [](ViewState& v) { return v.scale_visibility; });
}

bool is_mesh_visibility_on() {
    return with_view("is_mesh_visibility_on", false,
                     [](ViewState& v) { return v.mesh_visibility; });
}

bool is_geometry_visibility_on() {
    return with_view("is_geometry_visibility_on", false,
                     [](ViewState& v) { return v.geometry_visibility; });
}

bool is_select_partial_on() {
    return with_view("is_select_partial_on", false, [](ViewState& v) { return v.select_partial; });
}

int get_rendering_mode() {
    return with_view("get_rendering_mode", 0, [](ViewState& v) { return v.render_mode(); });
}

void set_rendering_mode(int mode) {
    with_view("set_rendering_mode", [&](ViewState& v) { v.set_render_mode(mode); });
}

// ---- Pick type and filter ----------------------------------------------------------------------

std::string get_pick_type() {
    return with_view("get_pick_type", std::string(), [](ViewState& v) { return v.pick_type(); });
}

void set_pick_type(const std::string& pick_type, bool silent) {
    with_view("set_pick_type", [&](ViewState& v) { v.set_pick_type(pick_type, silent); });
}

void set_filter_types(int filter_count, const std::vector<std::string>& filter_list) {
    with_view("set_filter_types", [&](ViewState& v) { v.set_filter(filter_count, filter_list); });
}

void add_filter_type(const std::string& filter_type) {
    with_view("add_filter_type", [&](ViewState& v) { v.add_filter(filter_type); });
}

void remove_filter_type(const std::string& filter_type) {
    with_view("remove_filter_type", [&](ViewState& v) { v.remove_filter(filter_type); });
}

bool is_type_filtered(const std::string& filter_type) {
    return with_view("is_type_filtered", false,
                     [&](ViewState& v) { return v.is_filtered(filter_type); });
}

std::vector<std::string> get_pick_filters() {
    return with_view("get_pick_filters", std::vector<std::string>{},
                     [](ViewState& v) { return v.pick_filter(); });
}

// ---- Selection ---------------------------------------------------------------------------------

void clear_picked_list() {
    with_view("clear_picked_list", [](ViewState& v) { v.clear_selection(); });
}

void step_next_possible_selection() {
    with_view("step_next_possible_selection", [](ViewState& v) { v.step(1); });
}

void step_previous_possible_selection() {
    with_view("step_previous_possible_selection", [](ViewState& v) { v.step(-1); });
}

void print_current_selections() {
    with_view("print_current_selections",
              [](ViewState& v) { tarvo::kernel::print("Selected: " + v.describe_selection()); });
}

void print_currently_selected_entity() {
    with_view("print_currently_selected_entity", [](ViewState& v) {
        tarvo::kernel::print("Current selection: " + v.describe_current());
    });
}

int current_selection_count() {
    return with_view("current_selection_count", 0,
                     [](ViewState& v) { return static_cast<int>(v.selection().size()); });
}

std::vector<int> get_selected_ids() {
    return with_view("get_selected_ids", std::vector<int>{}, [](ViewState& v) {
        std::vector<int> ids;
        for (const PickedEntity& e : v.selection()) {
            ids.push_back(e.second);
        }
        return ids;
    });
}

int get_selected_id(int index) {
    return with_view("get_selected_id", 0, [&](ViewState& v) {
        const auto& s = v.selection();
        return index >= 0 && index < static_cast<int>(s.size())
                   ? s[static_cast<size_t>(index)].second
                   : 0;
    });
}

std::string get_selected_type(int index) {
    return with_view("get_selected_type", std::string(), [&](ViewState& v) {
        const auto& s = v.selection();
        return index >= 0 && index < static_cast<int>(s.size())
                   ? s[static_cast<size_t>(index)].first
                   : std::string();
    });
}

void highlight(const std::string& entity_type, int entity_id) {
    with_view("highlight", [&](ViewState& v) { v.highlight(entity_type, entity_id); });
}

void unselect_entity(const std::string& entity_type, int entity_id) {
    with_view("unselect_entity", [&](ViewState& v) { v.unselect(entity_type, entity_id); });
}

// ---- Labels ------------------------------------------------------------------------------------

void set_label_type(const std::string& entity_type, int label_flag) {
    with_view("set_label_type", [&](ViewState& v) { v.set_label(entity_type, label_flag); });
}

int get_label_type(const std::string& entity_type) {
    return with_view("get_label_type", 0, [&](ViewState& v) { return v.label_of(entity_type); });
}

// ---- Graphics library ------------------------------------------------------------------------

// The views of this state are drawn with VTK; the version is the one built against.
std::string get_graphics_version() {
    return "VTK " VTK_VERSION;
}

} // namespace TarvoInterface
