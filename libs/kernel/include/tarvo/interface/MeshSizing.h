#pragma once
// Public functions of the kernel: mesh sizing, schemes and quality. The conventions of the whole
// API are in tarvo/TarvoInterface.h, which includes every family.

#include "tarvo/TarvoTypes.h"

#include <string>
#include <vector>

namespace TarvoInterface {

// ---- Mesh sizing, schemes and quality -----------------------------------------------------------

// Length of mesh edge `edge_id`.
double get_mesh_edge_length(int edge_id);
// Sum of the volumes (or areas) of the mesh elements of the given entities.
double get_meshed_volume_or_area(const std::string& geometry_type,
                                 const std::vector<int>& entity_ids);
// Interval count of the entity (for a curve: its number of mesh edges).
int get_mesh_intervals(const std::string& geometry_type, int entity_id);
// Mesh size in effect for the entity (requested or derived).
double get_mesh_size(const std::string& geometry_type, int entity_id);
// Mesh size the user set, or the auto size if none was set.
double get_requested_mesh_size(const std::string& geometry_type, int id);
// 1 if a size applies to the entity, 0 otherwise.
int has_valid_size(const std::string& geometry_type, int entity_id);
// Whether the auto size is stale and will be computed on demand.
bool auto_size_needs_to_be_calculated();
// Auto size of the whole model at the default factor.
double get_default_auto_size();
// Requested mesh intervals of the entity.
int get_requested_mesh_intervals(const std::string& geometry_type, int entity_id);
// Auto size of the given entities at factor `size` (1 fine ... 10 coarse).
double get_auto_size(const std::string& geometry_type, const std::vector<int>& entity_id_list,
                     double size);
// Estimated element count of the entities at `auto_factor`.
int get_element_budget(const std::string& element_type, const std::vector<int>& entity_id_list,
                       int auto_factor);
// Exodus sizing function variable name.
std::string get_exodus_sizing_function_variable_name();
// Exodus sizing function file name.
std::string get_exodus_sizing_function_file_name();
// Sizing function name of the entity.
std::string get_sizing_function_name(const std::string& entity_type, int surface_id);
// Whether the Exodus file of the sizing function exists.
bool exodus_sizing_function_file_exists();
// Sphere-meshing parameters of the volumes; false when they have none.
bool get_vol_sphere_params(const std::vector<int>& sphere_id_list, int& rad_intervals,
                           int& az_intervals, double& bias, double& fract,
                           int& max_smooth_iterations);
// Bias type of the curve ("bias", "dualbias", "" for none).
std::string get_curve_bias_type(int curve_id);
// Bias geometric factor of the curve.
double get_curve_bias_geometric_factor(int curve_id);
// Bias geometric factor2 of the curve.
double get_curve_bias_geometric_factor2(int curve_id);
// Bias first interval length of the curve.
double get_curve_bias_first_interval_length(int curve_id);
// Bias first interval fraction of the curve.
double get_curve_bias_first_interval_fraction(int curve_id);
// Bias fine size of the curve.
double get_curve_bias_fine_size(int curve_id);
// Bias coarse size of the curve.
double get_curve_bias_coarse_size(int curve_id);
// Bias first last ratio1 of the curve.
double get_curve_bias_first_last_ratio1(int curve_id);
// Bias first last ratio2 of the curve.
double get_curve_bias_first_last_ratio2(int curve_id);
// Bias last first ratio1 of the curve.
double get_curve_bias_last_first_ratio1(int curve_id);
// Bias last first ratio2 of the curve.
double get_curve_bias_last_first_ratio2(int curve_id);
// Whether the bias grows from the curve's start; false when the curve has no bias.
bool get_curve_bias_from_start(int curve_id, bool& value);
// Bias from start set of the curve.
bool get_curve_bias_from_start_set(int curve_id);
// Bias start vertex id of the curve.
int get_curve_bias_start_vertex_id(int curve_id);
// Mesh scheme curvature of the curve.
double get_curve_mesh_scheme_curvature(int curve_id);
// Stretch scheme values of the curve; false when its scheme is not stretch.
bool get_curve_mesh_scheme_stretch_values(int curve_id, double& first_size, double& factor,
                                          double& last_size, bool& start, int& vertex_id);
// Parameter locations of a pinpoint scheme, in order.
std::vector<double> get_curve_mesh_scheme_pinpoint_locations(int curve_id);
// Quality of the elements of the entities by `metric_name`: min, max, mean, std dev, worst ids,
// the elements beyond the thresholds (mesh_list), their element type, and with `make_group` a
// group holding them (bad_group_id, else 0). Inputs after the outputs: make_group.
void get_quality_stats(const std::string& entity_type, const std::vector<int>& id_list,
                       const std::string& metric_name, double single_threshold,
                       bool use_low_threshold, double low_threshold, double high_threshold,
                       double& min_value, double& max_value, double& mean_value, double& std_value,
                       int& min_element_id, int& max_element_id, std::vector<int>& mesh_list,
                       std::string& element_type, int& bad_group_id, bool make_group);
// Value of quality metric `metric_name` for one mesh element.
double get_quality_value(const std::string& mesh_type, int mesh_id, const std::string& metric_name);
// Mesh scheme of the entity ("map", "sweep", "tetmesh", ...).
std::string get_mesh_scheme(const std::string& geometry_type, int entity_id);
// Firmness of the scheme: "HARD", "SOFT" or "LIMP".
std::string get_mesh_scheme_firmness(const std::string& geometry_type, int entity_id);
// Firmness of the interval count in effect: "HARD", "SOFT" or "LIMP".
std::string get_mesh_interval_firmness(const std::string& geometry_type, int entity_id);
// Firmness of the interval count the user requested.
std::string get_requested_mesh_interval_firmness(const std::string& geometry_type, int entity_id);
// How the size in effect came about: "USER_SET", "CALCULATED" or "NOT_SET".
std::string get_mesh_size_type(const std::string& geometry_type, int entity_id);
// How the requested size came about: "USER_SET", "CALCULATED" or "NOT_SET".
std::string get_requested_mesh_size_type(const std::string& geometry_type, int entity_id);
// Tetmesh proximity flag of the volume.
bool get_tetmesh_proximity_flag(int volume_id);
// Tetmesh proximity layers of the volume.
int get_tetmesh_proximity_layers(int volume_id);
// Mesh geometry approximation angle of the entity.
double get_mesh_geometry_approximation_angle(const std::string& geometry_type, int entity_id);
// Trimesh surface gradation.
double get_trimesh_surface_gradation();
// Trimesh volume gradation.
double get_trimesh_volume_gradation();
// Tetmesh growth factor of the volume.
double get_tetmesh_growth_factor(int volume_id);
// Whether the entity is meshed.
bool is_meshed(const std::string& geometry_type, int entity_id);
// Whether the entity is merged.
bool is_merged(const std::string& geometry_type, int entity_id);
// Smooth scheme of the entity.
std::string get_smooth_scheme(const std::string& geometry_type, int entity_id);
// Number of hexes in the model.
int get_hex_count();
// Number of pyramids in the model.
int get_pyramid_count();
// Number of tets in the model.
int get_tet_count();
// Number of quads in the model.
int get_quad_count();
// Number of tris in the model.
int get_tri_count();
// Number of edges in the model.
int get_edge_count();
// Number of spheres in the model.
int get_sphere_count();
// Number of nodes in the model.
int get_node_count();
// Number of elements in the model.
int get_element_count();
// Number of mesh elements in the volume.
int get_volume_element_count(int volume_id);
// Number of mesh elements on the surface.
int get_surface_element_count(int surface_id);
// Volume contains tets.
bool volume_contains_tets(int volume_id);
// Hexes of the sheet through the mesh edge between the two nodes.
std::vector<int> get_hex_sheet(int node_id_1, int node_id_2);
// Element type that meshing uses by default ("HEX8", "TET4", ...).
std::string get_default_element_type();

} // namespace TarvoInterface
