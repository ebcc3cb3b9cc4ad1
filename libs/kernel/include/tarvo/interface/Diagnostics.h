#pragma once
// Public functions of the kernel: geometry diagnostics and repair solutions. The conventions of the
// whole API are in tarvo/TarvoInterface.h, which includes every family.

#include "tarvo/TarvoTypes.h"

#include <string>
#include <vector>

namespace TarvoInterface {

// ---- Geometry diagnostics and repair solutions --------------------------------------------------

// Gap tolerance of overlap searches.
double get_overlap_max_gap();
// Sets the overlap max gap.
void set_overlap_max_gap(double maximum_gap);
// Angle tolerance of overlap searches, degrees.
double get_overlap_max_angle();
// Sets the overlap max angle.
void set_overlap_max_angle(double maximum_angle);
// Surfaces of the volumes whose hydraulic radius is below `mesh_size`, with that radius.
void get_small_surfaces_hydraulic_radius(const std::vector<int>& target_volume_ids,
                                         double mesh_size,
                                         std::vector<int>& returned_small_surfaces,
                                         std::vector<double>& returned_small_radius);
// Volumes whose hydraulic radius is below `mesh_size`, with that radius.
void get_small_volumes_hydraulic_radius(const std::vector<int>& target_volume_ids, double mesh_size,
                                        std::vector<int>& returned_small_volumes,
                                        std::vector<double>& returned_small_radius);
// Small curves of the given volumes.
std::vector<int> get_small_curves(const std::vector<int>& target_volume_ids, double mesh_size);
// Smallest curves of the given volumes.
std::vector<int> get_smallest_curves(const std::vector<int>& target_volume_ids,
                                     int number_to_return);
// Small surfaces of the given volumes.
std::vector<int> get_small_surfaces(const std::vector<int>& target_volume_ids, double mesh_size);
// Narrow surfaces of the given volumes.
std::vector<int> get_narrow_surfaces(const std::vector<int>& target_volume_ids, double mesh_size);
// Small and narrow surfaces of the given entities.
std::vector<int> get_small_and_narrow_surfaces(const std::vector<int>& target_ids,
                                               double small_area, double small_curve_size);
// Closed narrow surfaces of the given entities.
std::vector<int> get_closed_narrow_surfaces(const std::vector<int>& target_ids, double narrow_size);
// Surfs with narrow regions of the given entities.
std::vector<int> get_surfs_with_narrow_regions(const std::vector<int>& target_ids,
                                               double narrow_size);
// Narrow regions of the given entities.
std::vector<int> get_narrow_regions(const std::vector<int>& target_ids, double narrow_size);
// Small volumes of the given volumes.
std::vector<int> get_small_volumes(const std::vector<int>& target_volume_ids, double mesh_size);
// Blend surfaces in the given volumes.
std::vector<int> get_blend_surfaces(const std::vector<int>& target_volume_ids);
// Surfaces with loops closer together than `mesh_size`.
std::vector<int> get_close_loops(const std::vector<int>& target_volume_ids, double mesh_size);
// Vertices where surfaces meet at an angle outside [lower_bound, upper_bound] degrees.
std::vector<int> get_tangential_intersections(const std::vector<int>& target_volume_ids,
                                              double upper_bound, double lower_bound);
// Coincident vertices of the given volumes.
std::vector<int> get_coincident_vertices(const std::vector<int>& target_volume_ids,
                                         double high_tolerance);
// Ways to fix near coincident vertices: each a runnable command line, then a description.
std::vector<std::vector<std::string>> get_solutions_for_near_coincident_vertices(int vertex_id_1,
                                                                                 int vertex_id_2);
// Ways to fix overlapping volumes: each a runnable command line, then a description.
std::vector<std::vector<std::string>>
get_solutions_for_overlapping_volumes(int volume_id_1, int volume_id_2,
                                      double maximum_gap_tolerance, double maximum_gap_angle);
// Ways to close the gap between two surfaces: each a runnable command line, then a description.
std::vector<std::vector<std::string>> get_volume_gap_solutions(int surface_id_1, int surface_id_2);
// Ways to fix near coincident vertex and curve: each a runnable command line, then a description.
std::vector<std::vector<std::string>>
get_solutions_for_near_coincident_vertex_and_curve(int vertex_id, int curve_id);
// Ways to fix near coincident vertex and surface: each a runnable command line, then a
// description.
std::vector<std::vector<std::string>>
get_solutions_for_near_coincident_vertex_and_surface(int vertex_id, int surface_id);
// Ways to fix imprint merge: each a runnable command line, then a description.
std::vector<std::vector<std::string>> get_solutions_for_imprint_merge(int surface_id1,
                                                                      int surface_id2);
// Commands that would make the volume sweepable, and the source and target surfaces they assume.
// Inputs after the outputs: small_curve_size.
std::vector<std::vector<std::string>>
get_solutions_for_forced_sweepability(int volume_id, std::vector<int>& source_surface_id_list,
                                      std::vector<int>& target_surface_id_list,
                                      double small_curve_size);
// Ways to fix small surfaces: each a runnable command line, then a description.
std::vector<std::vector<std::string>>
get_solutions_for_small_surfaces(int surface_id, double small_curve_size, double mesh_size);
// Ways to fix small curves: each a runnable command line, then a description.
std::vector<std::vector<std::string>>
get_solutions_for_small_curves(int curve_id, double small_curve_size, double mesh_size);
// Ways to fix surfaces with narrow regions: each a runnable command line, then a description.
std::vector<std::vector<std::string>>
get_solutions_for_surfaces_with_narrow_regions(int surface_id, double small_curve_size,
                                               double mesh_size);
// Feasible and infeasible source/target surface sets for sweeping the volume.
bool get_solutions_for_source_target(
    int volume_id, std::vector<std::vector<int>>& feasible_source_surface_id_list,
    std::vector<std::vector<int>>& feasible_target_surface_id_list,
    std::vector<std::vector<int>>& infeasible_source_surface_id_list,
    std::vector<std::vector<int>>& infeasible_target_surface_id_list);
// Sharp surface angles of the given volumes. Inputs after the outputs: upper_bound, lower_bound.
void get_sharp_surface_angles(const std::vector<int>& target_volume_ids,
                              std::vector<int>& returned_large_surface_angles,
                              std::vector<int>& returned_small_surface_angles,
                              std::vector<double>& returned_large_angles,
                              std::vector<double>& returned_small_angles, double upper_bound,
                              double lower_bound);
// Sharp curve angles of the given volumes. Inputs after the outputs: upper_bound, lower_bound.
void get_sharp_curve_angles(const std::vector<int>& target_volume_ids,
                            std::vector<int>& returned_large_curve_angles,
                            std::vector<int>& returned_small_curve_angles,
                            std::vector<double>& returned_large_angles,
                            std::vector<double>& returned_small_angles, double upper_bound,
                            double lower_bound);
// Bodies, volumes, surfaces and curves that fail the geometry check.
void get_bad_geometry(const std::vector<int>& target_volume_ids,
                      std::vector<int>& returned_body_list, std::vector<int>& returned_volume_list,
                      std::vector<int>& returned_surface_list,
                      std::vector<int>& returned_curve_list);
// Pairs of overlapping surfaces (parallel lists), at most `max_results` pairs (0: all). Inputs
// after the outputs: filter_slivers, filter_volume_overlaps, max_results.
void get_overlapping_surfaces_in_volumes(const std::vector<int>& target_volume_ids,
                                         std::vector<int>& returned_surface_list_1,
                                         std::vector<int>& returned_surface_list_2,
                                         std::vector<double>& returned_distance_list,
                                         std::vector<double>& returned_overlap_area_list,
                                         bool filter_slivers, bool filter_volume_overlaps,
                                         int max_results);
// Pairs of overlapping surfaces among the given ones, at most `max_results` pairs (0: all). Inputs
// after the outputs: filter_slivers, filter_volume_overlaps, max_results.
void get_overlapping_surfaces(const std::vector<int>& target_surface_ids,
                              std::vector<int>& returned_surface_list_1,
                              std::vector<int>& returned_surface_list_2,
                              std::vector<double>& returned_distance_list,
                              std::vector<double>& returned_overlap_area_list, bool filter_slivers,
                              bool filter_volume_overlaps, int max_results);
// Pairs of surfaces facing each other across a gap, at most `max_results` pairs (0: all). Inputs
// after the outputs: maximum_gap_tolerance, maximum_gap_angle, max_results.
void get_volume_gaps(const std::vector<int>& target_volume_ids,
                     std::vector<int>& returned_surface_list_1,
                     std::vector<int>& returned_surface_list_2,
                     std::vector<double>& returned_distance_list,
                     std::vector<double>& returned_overlap_area_list, double maximum_gap_tolerance,
                     double maximum_gap_angle, int max_results);
// Overlapping volumes of the given volumes.
std::vector<int> get_overlapping_volumes(const std::vector<int>& target_volume_ids);
// Groups of surfaces, curves and vertices that would merge at `merge_tolerance` (negative: the
// model's). Inputs after the outputs: merge_tolerance.
void get_mergeable_entities(const std::vector<int>& target_volume_ids,
                            std::vector<std::vector<int>>& returned_surface_list,
                            std::vector<std::vector<int>>& returned_curve_list,
                            std::vector<std::vector<int>>& returned_vertex_list,
                            double merge_tolerance);
// Mergeable vertices of the given volumes.
std::vector<std::vector<int>> get_mergeable_vertices(const std::vector<int>& target_volume_ids);
// Mergeable curves of the given volumes.
std::vector<std::vector<int>> get_mergeable_curves(const std::vector<int>& target_volume_ids);
// Mergeable surfaces of the given volumes.
std::vector<std::vector<int>> get_mergeable_surfaces(const std::vector<int>& target_volume_ids);
// Closest vertex-curve pairs, nearest first.
void get_closest_vertex_curve_pairs(const std::vector<int>& target_ids,
                                    int& returned_number_to_return,
                                    std::vector<int>& returned_vertex_ids,
                                    std::vector<int>& returned_curve_ids,
                                    std::vector<double>& returned_distances);
// Smallest features (pairs of entities with their type codes and distance), smallest first.
void get_smallest_features(const std::vector<int>& target_ids, int& returned_number_to_return,
                           std::vector<int>& returned_type_1_list,
                           std::vector<int>& returned_type_2_list,
                           std::vector<int>& returned_id_1_list,
                           std::vector<int>& returned_id_2_list,
                           std::vector<double>& returned_distance_list);
// Suggested merge tolerance; the lists, when given, receive the tolerances tried and the
// proximities found at each.
double estimate_merge_tolerance(const std::vector<int>& target_volume_ids, bool accurate_in,
                                bool report_in, double low_value_in, double high_value_in,
                                int number_calculations_in, bool return_calculations_in,
                                std::vector<double>* merge_tolerance_list,
                                std::vector<int>* number_of_proximities_list);
// Volumes that touch no other volume.
void find_floating_volumes(const std::vector<int>& target_volume_ids,
                           std::vector<int>& returned_floating_id_list);
// Curves shared by more than two surfaces of a volume.
void find_nonmanifold_curves(const std::vector<int>& target_volume_ids,
                             std::vector<int>& returned_curve_list);
// Vertices where the volumes meet non-manifoldly.
void find_nonmanifold_vertices(const std::vector<int>& target_volume_ids,
                               std::vector<int>& returned_vertex_list);
// Vertex-vertex, vertex-curve and vertex-surface pairs closer than [low_value, high_value]. Inputs
// after the outputs: low_value, high_value, do_vertex_vertex, do_vertex_curve, do_vertex_surf,
// filter_same_volume_cases.
void get_coincident_entity_pairs(const std::vector<int>& target_volume_ids,
                                 std::vector<int>& returned_v_v_vertex_list,
                                 std::vector<int>& returned_v_c_vertex_list,
                                 std::vector<int>& returned_v_c_curve_list,
                                 std::vector<int>& returned_v_s_vertex_list,
                                 std::vector<int>& returned_v_s_surf_list,
                                 std::vector<double>& returned_vertex_distance_list,
                                 std::vector<double>& returned_curve_distance_list,
                                 std::vector<double>& returned_surf_distance_list, double low_value,
                                 double high_value, bool do_vertex_vertex, bool do_vertex_curve,
                                 bool do_vertex_surf, bool filter_same_volume_cases);
// Coincident vertex vertex pairs of the given volumes. Inputs after the outputs: low_value,
// threshold_value, filter_same_volume_cases.
void get_coincident_vertex_vertex_pairs(const std::vector<int>& target_volume_ids,
                                        std::vector<int>& returned_vertex_pair_list,
                                        std::vector<double>& returned_distance_list,
                                        double low_value, double threshold_value,
                                        bool filter_same_volume_cases);
// Coincident vertex curve pairs of the given volumes. Inputs after the outputs: low_value,
// threshold_value, filter_same_volume_cases.
void get_coincident_vertex_curve_pairs(const std::vector<int>& target_volume_ids,
                                       std::vector<int>& returned_vertex_list,
                                       std::vector<int>& returned_curve_list,
                                       std::vector<double>& returned_distance_list,
                                       double low_value, double threshold_value,
                                       bool filter_same_volume_cases);
// Coincident vertex surface pairs of the given volumes. Inputs after the outputs: low_value,
// threshold_value, filter_same_volume_cases.
void get_coincident_vertex_surface_pairs(const std::vector<int>& target_volume_ids,
                                         std::vector<int>& returned_vertex_list,
                                         std::vector<int>& returned_surface_list,
                                         std::vector<double>& returned_distance_list,
                                         double low_value, double threshold_value,
                                         bool filter_same_volume_cases);
// Ways to fix decomposition: each a runnable command line, then a description.
std::vector<std::vector<std::string>>
get_solutions_for_decomposition(const std::vector<int>& volume_list, double exterior_angle,
                                bool do_imprint_merge, bool tolerant_imprint);
// Ways to fix blends: each a runnable command line, then a description.
std::vector<std::vector<std::string>> get_solutions_for_blends(int surface_id);
// Chains of blend surfaces through the surface.
std::vector<std::vector<int>> get_blend_chains(int surface_id);
// Merge tolerance of the model.
double get_merge_tolerance();

} // namespace TarvoInterface
