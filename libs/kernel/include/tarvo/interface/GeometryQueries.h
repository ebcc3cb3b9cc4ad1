#pragma once
// Public functions of the kernel: geometry queries. The conventions of the whole API
// are in tarvo/TarvoInterface.h, which includes every family.

#include "tarvo/TarvoTypes.h"

#include <array>
#include <string>
#include <vector>

namespace TarvoInterface {

// ---- Geometry queries ---------------------------------------------------------------------------

// Whether the entity is visible.
bool is_visible(const std::string& geometry_type, int entity_id);
// Whether the entity is virtual.
bool is_virtual(const std::string& geometry_type, int entity_id);
// Contains virtual.
bool contains_virtual(const std::string& geometry_type, int entity_id);
// Source surfaces of the sweep scheme of the volume.
std::vector<int> get_source_surfaces(int volume_id);
// Target surfaces of the sweep scheme of the volume.
std::vector<int> get_target_surfaces(int volume_id);
// Curve shared by the two surfaces, or 0.
int get_common_curve_id(int surface_1_id, int surface_2_id);
// Vertex shared by the two curves, or 0.
int get_common_vertex_id(int curve_1_id, int curve_2_id);
// Maps points of the unit square of quad `quad_id` (corners node00, node10) onto the surface.
std::vector<std::vector<double>> project_unit_square(const std::vector<std::vector<double>>& pts,
                                                     int surface_id, int quad_id, int node00_id,
                                                     int node10_id);
// Merge setting of the entity: "on", "off" or "auto".
std::string get_merge_setting(const std::string& geometry_type, int entity_id);
// Type of the curve.
std::string get_curve_type(int curve_id);
// Type of the surface.
std::string get_surface_type(int surface_id);
// Normal of the surface.
std::array<double, 3> get_surface_normal(int surface_id);
// Centroid of the surface.
std::array<double, 3> get_surface_centroid(int surface_id);
// Sense of the surface relative to its volume: "forward", "reverse" or "both".
std::string get_surface_sense(int surface_id);
// Geometry engines that own the entity.
std::vector<std::string> get_entity_modeler_engine(const std::string& geometry_type, int entity_id);
// Default geometry engine.
std::string get_default_geometry_engine();
// Box of the entity: xmin, xmax, xrange, ymin, ymax, yrange, zmin, zmax, zrange, diagonal.
std::array<double, 10> get_bounding_box(const std::string& geometry_type, int entity_id);
// Box enclosing all the given entities, laid out as get_bounding_box.
std::array<double, 10> get_total_bounding_box(const std::string& geometry_type,
                                              const std::vector<int>& entity_list);
// Oriented box: centre (3), three unit axes (9), half-extents along them (3).
std::array<double, 15> get_tight_bounding_box(const std::string& geometry_type,
                                              const std::vector<int>& entity_list);
// Sum of the volumes of the given volumes.
double get_total_volume(const std::vector<int>& volume_list);
// Name of the entity; with `name_only` false, a generated default ("Volume 3") when it has none.
std::string get_entity_name(const std::string& entity_type, int entity_id, bool name_only);
// Names the entity. False when the name is taken or invalid.
bool set_entity_name(const std::string& entity_type, int entity_id, const std::string& new_name);
// Colour of the entity: red, green, blue, alpha, each 0..1.
std::array<double, 4> get_entity_color(const std::string& entity_type, int entity_id);
// Index of the entity's colour in the kernel's colour table.
int get_entity_color_index(const std::string& entity_type, int entity_id);
// Whether the body is multi volume.
bool is_multi_volume(int body_id);
// Whether the volume is sheet body.
bool is_sheet_body(int volume_id);
// Whether the surface is interval count odd.
bool is_interval_count_odd(int surface_id);
// Whether the entity is periodic.
bool is_periodic(const std::string& geometry_type, int entity_id);
// Whether the surface is planar (older spelling, kept for clients).
bool is_surface_planer(int surface_id);
// Whether the surface is surface planar.
bool is_surface_planar(int surface_id);
// Periodic setting of the entity: interval, its firmness, and the lower bound and upper-bound
// text.
void get_periodic_data(const std::string& geometry_type, int entity_id, double& returned_interval,
                       std::string& returned_firmness, int& returned_lower_bound,
                       std::string& returned_upper_bound);
// Undo enabled.
bool get_undo_enabled();
// Number of commands that undo can take back.
int number_undo_commands();
// Names of the command-language variables.
std::vector<std::string> get_valfold_vars();
// Valfold value as string of the variable.
std::string get_valfold_value_as_string(const std::string& variable_name);
// Value of a variable: type 0 number in `returned_double_val`, 1 string in `returned_string_val`;
// false when unknown.
bool get_valfold_value(const std::string& variable_name, int& returned_variable_type,
                       double& returned_double_val, std::string& returned_string_val);
// Valfold numeric value of the variable.
double get_valfold_numeric_value(const std::string& variable_name);
// Whether new mesh nodes are constrained to the geometry.
bool get_node_constraint();
// Node constraint mode: 0 off, 1 on, 2 smart.
int get_node_constraint_value();
// Role of the vertex for meshing the surface ("end", "side", "corner", "reversal").
std::string get_vertex_type(int surface_id, int vertex_id);
// Ids of the entities of `target_geom_type` related to the source (owners or children).
std::vector<int> get_relatives(const std::string& source_geometry_type, int source_id,
                               const std::string& target_geom_type);
// Adjacent surfaces of the entity.
std::vector<int> get_adjacent_surfaces(const std::string& geometry_type, int entity_id);
// Adjacent volumes of the entity.
std::vector<int> get_adjacent_volumes(const std::string& geometry_type, int entity_id);
// Ids of all entities of `entity_type`, ascending.
std::vector<int> get_entities(const std::string& entity_type);
// Ids of the entities of that type that belong to no volume.
std::vector<int> get_list_of_free_ref_entities(const std::string& geometry_type);
// Body that owns the entity, or 0.
int get_owning_body(const std::string& geometry_type, int entity_id);
// Volume that owns the entity, or 0.
int get_owning_volume(const std::string& geometry_type, int entity_id);
// Id of the volume that owns the entity named `entity_name`, or 0.
int get_owning_volume_by_name(const std::string& entity_name);
// Length of the curve.
double get_curve_length(int curve_id);
// Arc length of the curve.
double get_arc_length(int curve_id);
// Arc length from the start of the curve to the point nearest (x, y, z).
double get_distance_from_curve_start(double x_coordinate, double y_coordinate, double z_coordinate,
                                     int curve_id);
// Radius of a circular curve, 0 otherwise.
double get_curve_radius(int curve_id);
// Center of the curve.
std::array<double, 3> get_curve_center(int curve_id);
// Area of the surface.
double get_surface_area(int surface_id);
// Volume (measure) of the volume.
double get_volume_area(int volume_id);
// Hydraulic radius of the surface (2 * area / perimeter).
double get_hydraulic_radius_surface_area(int surface_id);
// Hydraulic radius of the volume (3 * volume / surface area).
double get_hydraulic_radius_volume_area(int volume_id);
// Center point of the entity.
std::array<double, 3> get_center_point(const std::string& entity_type, int entity_id);
// Number of curves at the vertex.
int get_valence(int vertex_id);
// Distance between two vertices.
double get_distance_between(int vertex_id_1, int vertex_id_2);
// Whether the point lies in the entity: 1 inside, 0 outside, 2 on the boundary, -1 unknown.
int is_point_contained(const std::string& geometry_type, int entity_id,
                       const std::array<double, 3>& xyz_point);
// Prints the surface summary stats through the message channel.
void print_surface_summary_stats();
// Prints the volume summary stats through the message channel.
void print_volume_summary_stats();
// Number of blocks in the model.
int get_block_count();
// Number of sidesets in the model.
int get_sideset_count();
// Number of nodesets in the model.
int get_nodeset_count();
// Number of volumes in the model.
int get_volume_count();
// Number of bodies in the model.
int get_body_count();
// Number of surfaces in the model.
int get_surface_count();
// Number of vertices in the model.
int get_vertex_count();
// Number of curves in the model.
int get_curve_count();
// Number of curves in the given volumes.
int get_curve_count_in_volumes(const std::vector<int>& target_volume_ids);
// Whether catia engine is available.
bool is_catia_engine_available();
// Whether acis engine is available.
bool is_acis_engine_available();
// Whether opencascade engine is available.
bool is_opencascade_engine_available();
// Curves among `curve_list` whose exterior angle is below `test_angle` degrees.
std::vector<int> evaluate_exterior_angle(const std::vector<int>& curve_list, double test_angle);
// Exterior angle in degrees at the curve, measured in the volume.
double evaluate_exterior_angle_at_curve(int curve_id, int volume_id);

} // namespace TarvoInterface
