// Labels, comparison, sculpt defaults and boundary layers: one row per method, in table order.

#include "methods/MethodTable.h"

namespace tarvo::methods {

namespace TI = TarvoInterface;

void add_label_bl_methods(MethodRows& rows) {
    // clang-format off
    rows.insert(rows.end(), {
        row("set_label_type", &TI::set_label_type, {param("entity_type"), param("label_flag")}),
        row("get_label_type", &TI::get_label_type, {param("entity_type")}),
        row("get_coordinate_systems_id_list", &TI::get_coordinate_systems_id_list, {}),
        row("compare_geometry_and_mesh", &TI::compare_geometry_and_mesh, {param("volume_ids"), param("block_ids"), param("hex_ids"), param("tet_ids"), param("tolerance"), out("returned_unmatched_volumes_count"), out("returned_unmatched_elements_count"), out("returned_full_matches_group_ids_list"), out("returned_partial_matches_group_ids_list"), out("returned_volume_curves_group_id")}),
        row("get_dbl_sculpt_default", &TI::get_dbl_sculpt_default, {param("variable")}),
        row("get_int_sculpt_default", &TI::get_int_sculpt_default, {param("variable")}),
        row("get_bool_sculpt_default", &TI::get_bool_sculpt_default, {param("variable")}),
        row("get_string_sculpt_default", &TI::get_string_sculpt_default, {param("variable")}),
        row("get_next_boundary_layer_id", &TI::get_next_boundary_layer_id, {}),
        row("is_boundary_layer_id_available", &TI::is_boundary_layer_id_available, {param("boundary_layer_id")}),
        row("get_boundary_layer_algorithm", &TI::get_boundary_layer_algorithm, {param("boundary_layer_id")}),
        row("get_boundary_layer_uniform_parameters", &TI::get_boundary_layer_uniform_parameters, {param("boundary_layer_id"), out("returned_first_row_height"), out("returned_growth_factor"), out("returned_number_rows")}),
        row("get_boundary_layer_aspect_first_parameters", &TI::get_boundary_layer_aspect_first_parameters, {param("boundary_layer_id"), out("returned_first_row_aspect"), out("returned_growth_factor"), out("returned_number_rows")}),
        row("get_boundary_layer_aspect_last_parameters", &TI::get_boundary_layer_aspect_last_parameters, {param("boundary_layer_id"), out("returned_first_row_height"), out("returned_number_rows"), out("returned_last_row_aspect")}),
        row("get_boundary_layer_curve_surface_pairs", &TI::get_boundary_layer_curve_surface_pairs, {param("boundary_layer_id"), out("returned_curve_list"), out("returned_surface_list")}),
        row("get_boundary_layer_surface_volume_pairs", &TI::get_boundary_layer_surface_volume_pairs, {param("boundary_layer_id"), out("returned_surface_list"), out("returned_volume_list")}),
        row("get_boundary_layer_vertex_intersection_types", &TI::get_boundary_layer_vertex_intersection_types, {out("returned_vertex_list"), out("returned_surface_list"), out("returned_types")}),
        row("get_boundary_layer_curve_intersection_types", &TI::get_boundary_layer_curve_intersection_types, {out("returned_curve_list"), out("returned_volume_list"), out("returned_types")}),
        row("get_boundary_layer_continuity", &TI::get_boundary_layer_continuity, {param("boundary_layer_id")}),
        row("get_boundary_layer_id_list", &TI::get_boundary_layer_id_list, {}),
    });
    // clang-format on
}

} // namespace tarvo::methods
