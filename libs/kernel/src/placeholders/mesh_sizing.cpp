// Kernel functions of this family that are not written yet: mesh sizing, schemes and quality.
//
// Each STUB line defines one function of tarvo/TarvoInterface.h that prints
// "ERROR: <name> is not available in this kernel yet." and answers its failure value, and lists
// it in TarvoInterface::not_built_functions(). Delete the STUB line when you define the function
// (a forgotten line shows up as a multiple-definition error at link time).

#include "placeholders/Stub.h"

namespace TarvoInterface {

STUB(get_mesh_edge_length, (int), double)
STUB(get_meshed_volume_or_area, (const std::string&, const std::vector<int>&), double)
STUB(get_mesh_intervals, (const std::string&, int), int)
STUB(get_mesh_size, (const std::string&, int), double)
STUB(get_requested_mesh_size, (const std::string&, int), double)
STUB(has_valid_size, (const std::string&, int), int)
STUB(auto_size_needs_to_be_calculated, (), bool)
STUB(get_default_auto_size, (), double)
STUB(get_requested_mesh_intervals, (const std::string&, int), int)
STUB(get_auto_size, (const std::string&, const std::vector<int>&, double), double)
STUB(get_element_budget, (const std::string&, const std::vector<int>&, int), int)
STUB(get_exodus_sizing_function_variable_name, (), std::string)
STUB(get_exodus_sizing_function_file_name, (), std::string)
STUB(get_sizing_function_name, (const std::string&, int), std::string)
STUB(exodus_sizing_function_file_exists, (), bool)
STUB(get_vol_sphere_params, (const std::vector<int>&, int&, int&, double&, double&, int&), bool)
STUB(get_curve_bias_type, (int), std::string)
STUB(get_curve_bias_geometric_factor, (int), double)
STUB(get_curve_bias_geometric_factor2, (int), double)
STUB(get_curve_bias_first_interval_length, (int), double)
STUB(get_curve_bias_first_interval_fraction, (int), double)
STUB(get_curve_bias_fine_size, (int), double)
STUB(get_curve_bias_coarse_size, (int), double)
STUB(get_curve_bias_first_last_ratio1, (int), double)
STUB(get_curve_bias_first_last_ratio2, (int), double)
STUB(get_curve_bias_last_first_ratio1, (int), double)
STUB(get_curve_bias_last_first_ratio2, (int), double)
STUB(get_curve_bias_from_start, (int, bool&), bool)
STUB(get_curve_bias_from_start_set, (int), bool)
STUB_ID(get_curve_bias_start_vertex_id, (int))
STUB(get_curve_mesh_scheme_curvature, (int), double)
STUB(get_curve_mesh_scheme_stretch_values, (int, double&, double&, double&, bool&, int&), bool)
STUB(get_curve_mesh_scheme_pinpoint_locations, (int), std::vector<double>)
STUB_VOID(get_quality_stats, (const std::string&, const std::vector<int>&, const std::string&,
                              double, bool, double, double, double&, double&, double&, double&,
                              int&, int&, std::vector<int>&, std::string&, int&, bool))
STUB(get_quality_value, (const std::string&, int, const std::string&), double)
STUB(get_mesh_scheme, (const std::string&, int), std::string)
STUB(get_mesh_scheme_firmness, (const std::string&, int), std::string)
STUB(get_mesh_interval_firmness, (const std::string&, int), std::string)
STUB(get_requested_mesh_interval_firmness, (const std::string&, int), std::string)
STUB(get_mesh_size_type, (const std::string&, int), std::string)
STUB(get_requested_mesh_size_type, (const std::string&, int), std::string)
STUB(get_tetmesh_proximity_flag, (int), bool)
STUB(get_tetmesh_proximity_layers, (int), int)
STUB(get_mesh_geometry_approximation_angle, (const std::string&, int), double)
STUB(get_trimesh_surface_gradation, (), double)
STUB(get_trimesh_volume_gradation, (), double)
STUB(get_tetmesh_growth_factor, (int), double)
STUB(is_meshed, (const std::string&, int), bool)
STUB(get_smooth_scheme, (const std::string&, int), std::string)
STUB(get_hex_count, (), int)
STUB(get_pyramid_count, (), int)
STUB(get_tet_count, (), int)
STUB(get_quad_count, (), int)
STUB(get_tri_count, (), int)
STUB(get_edge_count, (), int)
STUB(get_sphere_count, (), int)
STUB(get_node_count, (), int)
STUB(get_element_count, (), int)
STUB(get_volume_element_count, (int), int)
STUB(get_surface_element_count, (int), int)
STUB(volume_contains_tets, (int), bool)
STUB(get_hex_sheet, (int, int), std::vector<int>)
STUB(get_default_element_type, (), std::string)

} // namespace TarvoInterface
