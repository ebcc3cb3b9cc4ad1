#pragma once
// Public functions of the kernel: labels, comparison, sculpt defaults and boundary layers. The
// conventions of the whole API are in tarvo/TarvoInterface.h, which includes every family.

#include "tarvo/TarvoTypes.h"

#include <string>
#include <vector>

namespace TarvoInterface {

// ---- Labels, comparison, sculpt defaults and boundary layers ------------------------------------

// Label setting of the entity type (0 off, 1 id, 2 name, 3 both).
void set_label_type(const std::string& entity_type, int label_flag);
// Label setting of the entity type (0 off, 1 id, 2 name, 3 both).
int get_label_type(const std::string& entity_type);
// Ids of all coordinate systems, ascending.
std::vector<int> get_coordinate_systems_id_list();
// Matches volumes with mesh within `tolerance`; groups of full and partial matches and of
// unmatched curves.
void compare_geometry_and_mesh(const std::vector<int>& volume_ids,
                               const std::vector<int>& block_ids, const std::vector<int>& hex_ids,
                               const std::vector<int>& tet_ids, double tolerance,
                               int& returned_unmatched_volumes_count,
                               int& returned_unmatched_elements_count,
                               std::vector<int>& returned_full_matches_group_ids_list,
                               std::vector<int>& returned_partial_matches_group_ids_list,
                               int& returned_volume_curves_group_id);
// Default of the named sculpt setting, as a number.
double get_dbl_sculpt_default(const std::string& variable);
// Default of the named sculpt setting, as an int.
int get_int_sculpt_default(const std::string& variable);
// Default of the named sculpt setting, as a bool.
bool get_bool_sculpt_default(const std::string& variable);
// Default of the named sculpt setting, as text.
std::string get_string_sculpt_default(const std::string& variable);
// Id that the next new boundary layer will get.
int get_next_boundary_layer_id();
// Whether no boundary layer uses that id.
bool is_boundary_layer_id_available(int boundary_layer_id);
// Algorithm of the layer: "uniform", "aspect first" or "aspect last".
std::string get_boundary_layer_algorithm(int boundary_layer_id);
// Parameters of a uniform layer; false when the layer is not uniform.
bool get_boundary_layer_uniform_parameters(int boundary_layer_id, double& returned_first_row_height,
                                           double& returned_growth_factor,
                                           int& returned_number_rows);
// Parameters of an aspect-first layer; false when it is not one.
bool get_boundary_layer_aspect_first_parameters(int boundary_layer_id,
                                                double& returned_first_row_aspect,
                                                double& returned_growth_factor,
                                                int& returned_number_rows);
// Parameters of an aspect-last layer; false when it is not one.
bool get_boundary_layer_aspect_last_parameters(int boundary_layer_id,
                                               double& returned_first_row_height,
                                               int& returned_number_rows,
                                               double& returned_last_row_aspect);
// The (curve, surface) pairs the layer grows from, as parallel lists.
bool get_boundary_layer_curve_surface_pairs(int boundary_layer_id,
                                            std::vector<int>& returned_curve_list,
                                            std::vector<int>& returned_surface_list);
// The (surface, volume) pairs the layer grows from, as parallel lists.
bool get_boundary_layer_surface_volume_pairs(int boundary_layer_id,
                                             std::vector<int>& returned_surface_list,
                                             std::vector<int>& returned_volume_list);
// Intersection type of each (vertex, surface) of all layers.
bool get_boundary_layer_vertex_intersection_types(std::vector<int>& returned_vertex_list,
                                                  std::vector<int>& returned_surface_list,
                                                  std::vector<std::string>& returned_types);
// Intersection type of each (curve, volume) of all layers.
bool get_boundary_layer_curve_intersection_types(std::vector<int>& returned_curve_list,
                                                 std::vector<int>& returned_volume_list,
                                                 std::vector<std::string>& returned_types);
// Whether rows continue across internal boundaries.
bool get_boundary_layer_continuity(int boundary_layer_id);
// Ids of all boundary layers, ascending.
std::vector<int> get_boundary_layer_id_list();

} // namespace TarvoInterface
