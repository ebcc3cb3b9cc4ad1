// Mesh sizing, schemes and quality: one row per method, in table order.
//
// get_quality_stats passes make_group (optional, false) after its outputs.

#include "methods/MethodTable.h"

namespace tarvo::methods {

namespace TI = TarvoInterface;

namespace {
// Inputs in the order of the method's parameters, outputs after them; then the kernel's order.
namespace in_row_order {

void get_quality_stats(const std::string& entity_type, const std::vector<int>& id_list,
                       const std::string& metric_name, double single_threshold,
                       bool use_low_threshold, double low_threshold, double high_threshold,
                       bool make_group, double& min_value, double& max_value, double& mean_value,
                       double& std_value, int& min_element_id, int& max_element_id,
                       std::vector<int>& mesh_list, std::string& element_type, int& bad_group_id) {
    TI::get_quality_stats(entity_type, id_list, metric_name, single_threshold, use_low_threshold,
                          low_threshold, high_threshold, min_value, max_value, mean_value,
                          std_value, min_element_id, max_element_id, mesh_list, element_type,
                          bad_group_id, make_group);
}

} // namespace in_row_order
} // namespace

void add_mesh_sizing_methods(MethodRows& rows) {
    // clang-format off
    rows.insert(rows.end(), {
        row("get_mesh_edge_length", &TI::get_mesh_edge_length, {param("edge_id")}),
        row("get_meshed_volume_or_area", &TI::get_meshed_volume_or_area, {param("geometry_type"), param("entity_ids")}),
        row("get_mesh_intervals", &TI::get_mesh_intervals, {param("geometry_type"), param("entity_id")}),
        row("get_mesh_size", &TI::get_mesh_size, {param("geometry_type"), param("entity_id")}),
        row("get_requested_mesh_size", &TI::get_requested_mesh_size, {param("geometry_type"), param("id")}),
        row("has_valid_size", &TI::has_valid_size, {param("geometry_type"), param("entity_id")}),
        row("auto_size_needs_to_be_calculated", &TI::auto_size_needs_to_be_calculated, {}),
        row("get_default_auto_size", &TI::get_default_auto_size, {}),
        row("get_requested_mesh_intervals", &TI::get_requested_mesh_intervals, {param("geometry_type"), param("entity_id")}),
        row("get_auto_size", &TI::get_auto_size, {param("geometry_type"), param("entity_id_list"), param("size")}),
        row("get_element_budget", &TI::get_element_budget, {param("element_type"), param("entity_id_list"), param("auto_factor")}),
        row("get_exodus_sizing_function_variable_name", &TI::get_exodus_sizing_function_variable_name, {}),
        row("get_exodus_sizing_function_file_name", &TI::get_exodus_sizing_function_file_name, {}),
        row("get_sizing_function_name", &TI::get_sizing_function_name, {param("entity_type"), param("surface_id")}),
        row("exodus_sizing_function_file_exists", &TI::exodus_sizing_function_file_exists, {}),
        row("get_vol_sphere_params", &TI::get_vol_sphere_params, {param("sphere_id_list"), out("rad_intervals"), out("az_intervals"), out("bias"), out("fract"), out("max_smooth_iterations")}),
        row("get_curve_bias_type", &TI::get_curve_bias_type, {param("curve_id")}),
        row("get_curve_bias_geometric_factor", &TI::get_curve_bias_geometric_factor, {param("curve_id")}),
        row("get_curve_bias_geometric_factor2", &TI::get_curve_bias_geometric_factor2, {param("curve_id")}),
        row("get_curve_bias_first_interval_length", &TI::get_curve_bias_first_interval_length, {param("curve_id")}),
        row("get_curve_bias_first_interval_fraction", &TI::get_curve_bias_first_interval_fraction, {param("curve_id")}),
        row("get_curve_bias_fine_size", &TI::get_curve_bias_fine_size, {param("curve_id")}),
        row("get_curve_bias_coarse_size", &TI::get_curve_bias_coarse_size, {param("curve_id")}),
        row("get_curve_bias_first_last_ratio1", &TI::get_curve_bias_first_last_ratio1, {param("curve_id")}),
        row("get_curve_bias_first_last_ratio2", &TI::get_curve_bias_first_last_ratio2, {param("curve_id")}),
        row("get_curve_bias_last_first_ratio1", &TI::get_curve_bias_last_first_ratio1, {param("curve_id")}),
        row("get_curve_bias_last_first_ratio2", &TI::get_curve_bias_last_first_ratio2, {param("curve_id")}),
        row("get_curve_bias_from_start", &TI::get_curve_bias_from_start, {param("curve_id"), out("value")}),
        row("get_curve_bias_from_start_set", &TI::get_curve_bias_from_start_set, {param("curve_id")}),
        row("get_curve_bias_start_vertex_id", &TI::get_curve_bias_start_vertex_id, {param("curve_id")}),
        row("get_curve_mesh_scheme_curvature", &TI::get_curve_mesh_scheme_curvature, {param("curve_id")}),
        row("get_curve_mesh_scheme_stretch_values", &TI::get_curve_mesh_scheme_stretch_values, {param("curve_id"), out("first_size"), out("factor"), out("last_size"), out("start"), out("vertex_id")}),
        row("get_curve_mesh_scheme_pinpoint_locations", &TI::get_curve_mesh_scheme_pinpoint_locations, {param("curve_id")}),
        row("get_quality_stats", &in_row_order::get_quality_stats, {param("entity_type"), param("id_list"), param("metric_name"), param("single_threshold"), param("use_low_threshold"), param("low_threshold"), param("high_threshold"), optional_param("make_group", false), out("min_value"), out("max_value"), out("mean_value"), out("std_value"), out("min_element_id"), out("max_element_id"), out("mesh_list"), out("element_type"), out("bad_group_id")}),
        row("get_quality_value", &TI::get_quality_value, {param("mesh_type"), param("mesh_id"), param("metric_name")}),
        row("get_mesh_scheme", &TI::get_mesh_scheme, {param("geometry_type"), param("entity_id")}),
        row("get_mesh_scheme_firmness", &TI::get_mesh_scheme_firmness, {param("geometry_type"), param("entity_id")}),
        row("get_mesh_interval_firmness", &TI::get_mesh_interval_firmness, {param("geometry_type"), param("entity_id")}),
        row("get_requested_mesh_interval_firmness", &TI::get_requested_mesh_interval_firmness, {param("geometry_type"), param("entity_id")}),
        row("get_mesh_size_type", &TI::get_mesh_size_type, {param("geometry_type"), param("entity_id")}),
        row("get_requested_mesh_size_type", &TI::get_requested_mesh_size_type, {param("geometry_type"), param("entity_id")}),
        row("get_tetmesh_proximity_flag", &TI::get_tetmesh_proximity_flag, {param("volume_id")}),
        row("get_tetmesh_proximity_layers", &TI::get_tetmesh_proximity_layers, {param("volume_id")}),
        row("get_mesh_geometry_approximation_angle", &TI::get_mesh_geometry_approximation_angle, {param("geometry_type"), param("entity_id")}),
        row("get_trimesh_surface_gradation", &TI::get_trimesh_surface_gradation, {}),
        row("get_trimesh_volume_gradation", &TI::get_trimesh_volume_gradation, {}),
        row("get_tetmesh_growth_factor", &TI::get_tetmesh_growth_factor, {param("volume_id")}),
        row("is_meshed", &TI::is_meshed, {param("geometry_type"), param("entity_id")}),
        row("is_merged", &TI::is_merged, {param("geometry_type"), param("entity_id")}),
        row("get_smooth_scheme", &TI::get_smooth_scheme, {param("geometry_type"), param("entity_id")}),
        row("get_hex_count", &TI::get_hex_count, {}),
        row("get_pyramid_count", &TI::get_pyramid_count, {}),
        row("get_tet_count", &TI::get_tet_count, {}),
        row("get_quad_count", &TI::get_quad_count, {}),
        row("get_tri_count", &TI::get_tri_count, {}),
        row("get_edge_count", &TI::get_edge_count, {}),
        row("get_sphere_count", &TI::get_sphere_count, {}),
        row("get_node_count", &TI::get_node_count, {}),
        row("get_element_count", &TI::get_element_count, {}),
        row("get_volume_element_count", &TI::get_volume_element_count, {param("volume_id")}),
        row("get_surface_element_count", &TI::get_surface_element_count, {param("surface_id")}),
        row("volume_contains_tets", &TI::volume_contains_tets, {param("volume_id")}),
        row("get_hex_sheet", &TI::get_hex_sheet, {param("node_id_1"), param("node_id_2")}),
        row("get_default_element_type", &TI::get_default_element_type, {}),
    });
    // clang-format on
}

} // namespace tarvo::methods
