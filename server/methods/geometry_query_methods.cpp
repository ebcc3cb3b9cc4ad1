// Geometry queries: one row per method, in table order.
//
// get_curve_count chooses between two kernel functions (see its wrapper); get_entity_name asks
// the kernel for the name with the default form allowed (constant false).

#include "methods/HandWrittenWrappers.h"
#include "methods/MethodTable.h"

namespace tarvo::methods {

namespace TI = TarvoInterface;

bool wrap_get_curve_count::process_params(const QJsonValue& params) {
    if (!params.isObject())
        return false;
    const QJsonObject object = params.toObject();
    has_target_volume_ids = object.contains("target_volume_ids");
    return !has_target_volume_ids ||
           json_rpc::from_json(object["target_volume_ids"], target_volume_ids);
}

QJsonValue wrap_get_curve_count::invoke() {
    const int count = has_target_volume_ids ? TI::get_curve_count_in_volumes(target_volume_ids)
                                            : TI::get_curve_count();
    return json_rpc::to_json(count);
}

void add_geometry_query_methods(MethodRows& rows) {
    // clang-format off
    rows.insert(rows.end(), {
        row("is_visible", &TI::is_visible, {param("geometry_type"), param("entity_id")}),
        row("is_virtual", &TI::is_virtual, {param("geometry_type"), param("entity_id")}),
        row("contains_virtual", &TI::contains_virtual, {param("geometry_type"), param("entity_id")}),
        row("get_source_surfaces", &TI::get_source_surfaces, {param("volume_id")}),
        row("get_target_surfaces", &TI::get_target_surfaces, {param("volume_id")}),
        row("get_common_curve_id", &TI::get_common_curve_id, {param("surface_1_id"), param("surface_2_id")}),
        row("get_common_vertex_id", &TI::get_common_vertex_id, {param("curve_1_id"), param("curve_2_id")}),
        row("project_unit_square", &TI::project_unit_square, {param("pts"), param("surface_id"), param("quad_id"), param("node00_id"), param("node10_id")}),
        row("get_merge_setting", &TI::get_merge_setting, {param("geometry_type"), param("entity_id")}),
        row("get_curve_type", &TI::get_curve_type, {param("curve_id")}),
        row("get_surface_type", &TI::get_surface_type, {param("surface_id")}),
        row("get_surface_normal", &TI::get_surface_normal, {param("surface_id")}),
        row("get_surface_centroid", &TI::get_surface_centroid, {param("surface_id")}),
        row("get_surface_sense", &TI::get_surface_sense, {param("surface_id")}),
        row("get_entity_modeler_engine", &TI::get_entity_modeler_engine, {param("geometry_type"), param("entity_id")}),
        row("get_default_geometry_engine", &TI::get_default_geometry_engine, {}),
        row("get_bounding_box", &TI::get_bounding_box, {param("geometry_type"), param("entity_id")}),
        row("get_total_bounding_box", &TI::get_total_bounding_box, {param("geometry_type"), param("entity_list")}),
        row("get_tight_bounding_box", &TI::get_tight_bounding_box, {param("geometry_type"), param("entity_list")}),
        row("get_total_volume", &TI::get_total_volume, {param("volume_list")}),
        row("get_entity_name", [](const std::string& entity_type, int entity_id) { return TI::get_entity_name(entity_type, entity_id, false); }, {param("entity_type"), param("entity_id")}),
        row("set_entity_name", &TI::set_entity_name, {param("entity_type"), param("entity_id"), param("new_name")}),
        row("get_entity_color", &TI::get_entity_color, {param("entity_type"), param("entity_id")}),
        row("get_entity_color_index", &TI::get_entity_color_index, {param("entity_type"), param("entity_id")}),
        row("is_multi_volume", &TI::is_multi_volume, {param("body_id")}),
        row("is_sheet_body", &TI::is_sheet_body, {param("volume_id")}),
        row("is_interval_count_odd", &TI::is_interval_count_odd, {param("surface_id")}),
        row("is_periodic", &TI::is_periodic, {param("geometry_type"), param("entity_id")}),
        row("is_surface_planer", &TI::is_surface_planer, {param("surface_id")}),
        row("is_surface_planar", &TI::is_surface_planar, {param("surface_id")}),
        row("get_periodic_data", &TI::get_periodic_data, {param("geometry_type"), param("entity_id"), out("returned_interval"), out("returned_firmness"), out("returned_lower_bound"), out("returned_upper_bound")}),
        row("get_undo_enabled", &TI::get_undo_enabled, {}),
        row("number_undo_commands", &TI::number_undo_commands, {}),
        row("get_valfold_vars", &TI::get_valfold_vars, {}),
        row("get_valfold_value_as_string", &TI::get_valfold_value_as_string, {param("variable_name")}),
        row("get_valfold_value", &TI::get_valfold_value, {param("variable_name"), out("returned_variable_type"), out("returned_double_val"), out("returned_string_val")}),
        row("get_valfold_numeric_value", &TI::get_valfold_numeric_value, {param("variable_name")}),
        row("get_node_constraint", &TI::get_node_constraint, {}),
        row("get_node_constraint_value", &TI::get_node_constraint_value, {}),
        row("get_vertex_type", &TI::get_vertex_type, {param("surface_id"), param("vertex_id")}),
        row("get_relatives", &TI::get_relatives, {param("source_geometry_type"), param("source_id"), param("target_geom_type")}),
        row("get_adjacent_surfaces", &TI::get_adjacent_surfaces, {param("geometry_type"), param("entity_id")}),
        row("get_adjacent_volumes", &TI::get_adjacent_volumes, {param("geometry_type"), param("entity_id")}),
        row("get_entities", &TI::get_entities, {param("entity_type")}),
        row("get_list_of_free_ref_entities", &TI::get_list_of_free_ref_entities, {param("geometry_type")}),
        row("get_owning_body", &TI::get_owning_body, {param("geometry_type"), param("entity_id")}),
        row("get_owning_volume", &TI::get_owning_volume, {param("geometry_type"), param("entity_id")}),
        row("get_owning_volume_by_name", &TI::get_owning_volume_by_name, {param("entity_name")}),
        row("get_curve_length", &TI::get_curve_length, {param("curve_id")}),
        row("get_arc_length", &TI::get_arc_length, {param("curve_id")}),
        row("get_distance_from_curve_start", &TI::get_distance_from_curve_start, {param("x_coordinate"), param("y_coordinate"), param("z_coordinate"), param("curve_id")}),
        row("get_curve_radius", &TI::get_curve_radius, {param("curve_id")}),
        row("get_curve_center", &TI::get_curve_center, {param("curve_id")}),
        row("get_surface_area", &TI::get_surface_area, {param("surface_id")}),
        row("get_volume_area", &TI::get_volume_area, {param("volume_id")}),
        row("get_hydraulic_radius_surface_area", &TI::get_hydraulic_radius_surface_area, {param("surface_id")}),
        row("get_hydraulic_radius_volume_area", &TI::get_hydraulic_radius_volume_area, {param("volume_id")}),
        row("get_center_point", &TI::get_center_point, {param("entity_type"), param("entity_id")}),
        row("get_valence", &TI::get_valence, {param("vertex_id")}),
        row("get_distance_between", &TI::get_distance_between, {param("vertex_id_1"), param("vertex_id_2")}),
        row("is_point_contained", &TI::is_point_contained, {param("geometry_type"), param("entity_id"), param("xyz_point")}),
        row("print_surface_summary_stats", &TI::print_surface_summary_stats, {}),
        row("print_volume_summary_stats", &TI::print_volume_summary_stats, {}),
        row("get_block_count", &TI::get_block_count, {}),
        row("get_sideset_count", &TI::get_sideset_count, {}),
        row("get_nodeset_count", &TI::get_nodeset_count, {}),
        row("get_volume_count", &TI::get_volume_count, {}),
        row("get_body_count", &TI::get_body_count, {}),
        row("get_surface_count", &TI::get_surface_count, {}),
        row("get_vertex_count", &TI::get_vertex_count, {}),
        hand<wrap_get_curve_count>("get_curve_count"),
        row("is_catia_engine_available", &TI::is_catia_engine_available, {}),
        row("is_acis_engine_available", &TI::is_acis_engine_available, {}),
        row("is_opencascade_engine_available", &TI::is_opencascade_engine_available, {}),
        row("evaluate_exterior_angle", &TI::evaluate_exterior_angle, {param("curve_list"), param("test_angle")}),
        row("evaluate_exterior_angle_at_curve", &TI::evaluate_exterior_angle_at_curve, {param("curve_id"), param("volume_id")}),
    });
    // clang-format on
}

} // namespace tarvo::methods
