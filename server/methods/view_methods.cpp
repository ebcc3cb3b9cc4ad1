// View, drawing and selection: one row per method, in table order.
//
// set_filter_types has a lenient count (see its wrapper); is_filtered is the kernel's
// is_type_filtered.

#include "methods/HandWrittenWrappers.h"
#include "methods/MethodTable.h"

namespace tarvo::methods {

namespace TI = TarvoInterface;

bool wrap_set_filter_types::process_params(const QJsonValue& params) {
    if (!params.isObject())
        return false;
    const QJsonObject object = params.toObject();
    if (!object.contains("filter_list") || !json_rpc::from_json(object["filter_list"], filter_list))
        return false;
    filter_count = object["filter_count"].toInt(0);
    return true;
}

QJsonValue wrap_set_filter_types::invoke() {
    TI::set_filter_types(filter_count, std::vector<std::string>(filter_list));
    return QJsonValue(QJsonValue::Null);
}

void add_view_methods(MethodRows& rows) {
    // clang-format off
    rows.insert(rows.end(), {
        row("get_view_distance", &TI::get_view_distance, {}),
        row("get_view_at", &TI::get_view_at, {}),
        row("get_view_from", &TI::get_view_from, {}),
        row("get_view_up", &TI::get_view_up, {}),
        row("reset_camera", &TI::reset_camera, {}),
        row("flush_graphics", &TI::flush_graphics, {}),
        row("clear_drawing_set", &TI::clear_drawing_set, {param("set_name")}),
        row("unselect_entity", &TI::unselect_entity, {param("entity_type"), param("entity_id")}),
        row("get_rubberband_shape", &TI::get_rubberband_shape, {}),
        row("is_perspective_on", &TI::is_perspective_on, {}),
        row("is_occlusion_on", &TI::is_occlusion_on, {}),
        row("is_scale_visibility_on", &TI::is_scale_visibility_on, {}),
        row("is_mesh_visibility_on", &TI::is_mesh_visibility_on, {}),
        row("is_geometry_visibility_on", &TI::is_geometry_visibility_on, {}),
        row("is_select_partial_on", &TI::is_select_partial_on, {}),
        row("get_rendering_mode", &TI::get_rendering_mode, {}),
        row("set_rendering_mode", &TI::set_rendering_mode, {param("mode")}),
        row("clear_preview", &TI::clear_preview, {}),
        row("get_pick_type", &TI::get_pick_type, {}),
        row("set_pick_type", &TI::set_pick_type, {param("pick_type"), param("silent")}),
        hand<wrap_set_filter_types>("set_filter_types"),
        row("add_filter_type", &TI::add_filter_type, {param("filter_type")}),
        row("remove_filter_type", &TI::remove_filter_type, {param("filter_type")}),
        row("is_filtered", &TI::is_type_filtered, {param("filter_type")}),
        row("clear_picked_list", &TI::clear_picked_list, {}),
        row("get_pick_filters", &TI::get_pick_filters, {}),
        row("step_next_possible_selection", &TI::step_next_possible_selection, {}),
        row("step_previous_possible_selection", &TI::step_previous_possible_selection, {}),
        row("print_current_selections", &TI::print_current_selections, {}),
        row("print_currently_selected_entity", &TI::print_currently_selected_entity, {}),
        row("current_selection_count", &TI::current_selection_count, {}),
        row("get_selected_ids", &TI::get_selected_ids, {}),
        row("get_selected_id", &TI::get_selected_id, {param("index")}),
        row("get_selected_type", &TI::get_selected_type, {param("index")}),
        row("highlight", &TI::highlight, {param("entity_type"), param("entity_id")}),
    });
    // clang-format on
}

} // namespace tarvo::methods
