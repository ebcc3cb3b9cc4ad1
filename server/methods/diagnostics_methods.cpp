// Geometry diagnostics and repair solutions: one row per method, in table order.
//
// Several finders take some inputs after their outputs, and some get constants that a client
// cannot set; the adapters below put the arguments in the kernel's order. get_small_loops is the
// kernel's get_close_loops.

#include "methods/MethodTable.h"

namespace tarvo::methods {

namespace TI = TarvoInterface;

namespace {
// Inputs in the order of the method's parameters, outputs after them; then the kernel's order.
namespace in_row_order {

std::vector<std::vector<std::string>>
get_solutions_for_forced_sweepability(int volume_id, double small_curve_size,
                                      std::vector<int>& source_surface_id_list,
                                      std::vector<int>& target_surface_id_list) {
    return TI::get_solutions_for_forced_sweepability(volume_id, source_surface_id_list,
                                                     target_surface_id_list, small_curve_size);
}

void get_sharp_surface_angles(const std::vector<int>& target_volume_ids, double upper_bound,
                              double lower_bound, std::vector<int>& returned_large_surface_angles,
                              std::vector<int>& returned_small_surface_angles,
                              std::vector<double>& returned_large_angles,
                              std::vector<double>& returned_small_angles) {
    TI::get_sharp_surface_angles(target_volume_ids, returned_large_surface_angles,
                                 returned_small_surface_angles, returned_large_angles,
                                 returned_small_angles, upper_bound, lower_bound);
}

void get_sharp_curve_angles(const std::vector<int>& target_volume_ids, double upper_bound,
                            double lower_bound, std::vector<int>& returned_large_curve_angles,
                            std::vector<int>& returned_small_curve_angles,
                            std::vector<double>& returned_large_angles,
                            std::vector<double>& returned_small_angles) {
    TI::get_sharp_curve_angles(target_volume_ids, returned_large_curve_angles,
                               returned_small_curve_angles, returned_large_angles,
                               returned_small_angles, upper_bound, lower_bound);
}

void get_overlapping_surfaces_in_volumes(const std::vector<int>& target_volume_ids,
                                         bool filter_slivers, bool filter_volume_overlaps,
                                         std::vector<int>& returned_surface_list_1,
                                         std::vector<int>& returned_surface_list_2,
                                         std::vector<double>& returned_distance_list,
                                         std::vector<double>& returned_overlap_area_list) {
    TI::get_overlapping_surfaces_in_volumes(
        target_volume_ids, returned_surface_list_1, returned_surface_list_2, returned_distance_list,
        returned_overlap_area_list, filter_slivers, filter_volume_overlaps, 0);
}

void get_overlapping_surfaces(const std::vector<int>& target_surface_ids, bool filter_slivers,
                              bool filter_volume_overlaps,
                              std::vector<int>& returned_surface_list_1,
                              std::vector<int>& returned_surface_list_2,
                              std::vector<double>& returned_distance_list,
                              std::vector<double>& returned_overlap_area_list) {
    TI::get_overlapping_surfaces(target_surface_ids, returned_surface_list_1,
                                 returned_surface_list_2, returned_distance_list,
                                 returned_overlap_area_list, filter_slivers, filter_volume_overlaps,
                                 0);
}

void get_volume_gaps(const std::vector<int>& target_volume_ids, double maximum_gap_tolerance,
                     double maximum_gap_angle, std::vector<int>& returned_surface_list_1,
                     std::vector<int>& returned_surface_list_2,
                     std::vector<double>& returned_distance_list,
                     std::vector<double>& returned_overlap_area_list) {
    TI::get_volume_gaps(target_volume_ids, returned_surface_list_1, returned_surface_list_2,
                        returned_distance_list, returned_overlap_area_list, maximum_gap_tolerance,
                        maximum_gap_angle, 0);
}

void get_mergeable_entities(const std::vector<int>& target_volume_ids,
                            std::vector<std::vector<int>>& returned_surface_list,
                            std::vector<std::vector<int>>& returned_curve_list,
                            std::vector<std::vector<int>>& returned_vertex_list) {
    TI::get_mergeable_entities(target_volume_ids, returned_surface_list, returned_curve_list,
                               returned_vertex_list, -1.0);
}

double estimate_merge_tolerance(const std::vector<int>& target_volume_ids, bool accurate_in,
                                bool report_in, double low_value_in, double high_value_in,
                                int number_calculations_in, bool return_calculations_in,
                                std::vector<double>& merge_tolerance_list,
                                std::vector<int>& number_of_proximities_list) {
    return TI::estimate_merge_tolerance(target_volume_ids, accurate_in, report_in, low_value_in,
                                        high_value_in, number_calculations_in,
                                        return_calculations_in, &merge_tolerance_list,
                                        &number_of_proximities_list);
}

void get_coincident_entity_pairs(
    const std::vector<int>& target_volume_ids, double low_value, double high_value,
    bool do_vertex_vertex, bool do_vertex_curve, bool do_vertex_surf, bool filter_same_volume_cases,
    std::vector<int>& returned_v_v_vertex_list, std::vector<int>& returned_v_c_vertex_list,
    std::vector<int>& returned_v_c_curve_list, std::vector<int>& returned_v_s_vertex_list,
    std::vector<int>& returned_v_s_surf_list, std::vector<double>& returned_vertex_distance_list,
    std::vector<double>& returned_curve_distance_list,
    std::vector<double>& returned_surf_distance_list) {
    TI::get_coincident_entity_pairs(
        target_volume_ids, returned_v_v_vertex_list, returned_v_c_vertex_list,
        returned_v_c_curve_list, returned_v_s_vertex_list, returned_v_s_surf_list,
        returned_vertex_distance_list, returned_curve_distance_list, returned_surf_distance_list,
        low_value, high_value, do_vertex_vertex, do_vertex_curve, do_vertex_surf,
        filter_same_volume_cases);
}

void get_coincident_vertex_vertex_pairs(const std::vector<int>& target_volume_ids, double low_value,
                                        double threshold_value, bool filter_same_volume_cases,
                                        std::vector<int>& returned_vertex_pair_list,
                                        std::vector<double>& returned_distance_list) {
    TI::get_coincident_vertex_vertex_pairs(target_volume_ids, returned_vertex_pair_list,
                                           returned_distance_list, low_value, threshold_value,
                                           filter_same_volume_cases);
}

void get_coincident_vertex_curve_pairs(const std::vector<int>& target_volume_ids, double low_value,
                                       double threshold_value, bool filter_same_volume_cases,
                                       std::vector<int>& returned_vertex_list,
                                       std::vector<int>& returned_curve_list,
                                       std::vector<double>& returned_distance_list) {
    TI::get_coincident_vertex_curve_pairs(target_volume_ids, returned_vertex_list,
                                          returned_curve_list, returned_distance_list, low_value,
                                          threshold_value, filter_same_volume_cases);
}

void get_coincident_vertex_surface_pairs(const std::vector<int>& target_volume_ids,
                                         double low_value, double threshold_value,
                                         bool filter_same_volume_cases,
                                         std::vector<int>& returned_vertex_list,
                                         std::vector<int>& returned_surface_list,
                                         std::vector<double>& returned_distance_list) {
    TI::get_coincident_vertex_surface_pairs(target_volume_ids, returned_vertex_list,
                                            returned_surface_list, returned_distance_list,
                                            low_value, threshold_value, filter_same_volume_cases);
}

} // namespace in_row_order
} // namespace

void add_diagnostics_methods(MethodRows& rows) {
    // clang-format off
    rows.insert(rows.end(), {
        row("get_overlap_max_gap", &TI::get_overlap_max_gap, {}),
        row("set_overlap_max_gap", &TI::set_overlap_max_gap, {param("maximum_gap")}),
        row("get_overlap_max_angle", &TI::get_overlap_max_angle, {}),
        row("set_overlap_max_angle", &TI::set_overlap_max_angle, {param("maximum_angle")}),
        row("get_small_surfaces_hydraulic_radius", &TI::get_small_surfaces_hydraulic_radius, {param("target_volume_ids"), param("mesh_size"), out("returned_small_surfaces"), out("returned_small_radius")}),
        row("get_small_volumes_hydraulic_radius", &TI::get_small_volumes_hydraulic_radius, {param("target_volume_ids"), param("mesh_size"), out("returned_small_volumes"), out("returned_small_radius")}),
        row("get_small_curves", &TI::get_small_curves, {param("target_volume_ids"), param("mesh_size")}),
        row("get_smallest_curves", &TI::get_smallest_curves, {param("target_volume_ids"), param("number_to_return")}),
        row("get_small_surfaces", &TI::get_small_surfaces, {param("target_volume_ids"), param("mesh_size")}),
        row("get_narrow_surfaces", &TI::get_narrow_surfaces, {param("target_volume_ids"), param("mesh_size")}),
        row("get_small_and_narrow_surfaces", &TI::get_small_and_narrow_surfaces, {param("target_ids"), param("small_area"), param("small_curve_size")}),
        row("get_closed_narrow_surfaces", &TI::get_closed_narrow_surfaces, {param("target_ids"), param("narrow_size")}),
        row("get_surfs_with_narrow_regions", &TI::get_surfs_with_narrow_regions, {param("target_ids"), param("narrow_size")}),
        row("get_narrow_regions", &TI::get_narrow_regions, {param("target_ids"), param("narrow_size")}),
        row("get_small_volumes", &TI::get_small_volumes, {param("target_volume_ids"), param("mesh_size")}),
        row("get_blend_surfaces", &TI::get_blend_surfaces, {param("target_volume_ids")}),
        row("get_small_loops", &TI::get_close_loops, {param("target_volume_ids"), param("mesh_size")}),
        row("get_tangential_intersections", &TI::get_tangential_intersections, {param("target_volume_ids"), param("upper_bound"), param("lower_bound")}),
        row("get_coincident_vertices", &TI::get_coincident_vertices, {param("target_volume_ids"), param("high_tolerance")}),
        row("get_solutions_for_near_coincident_vertices", &TI::get_solutions_for_near_coincident_vertices, {param("vertex_id_1"), param("vertex_id_2")}),
        row("get_solutions_for_overlapping_volumes", &TI::get_solutions_for_overlapping_volumes, {param("volume_id_1"), param("volume_id_2"), param("maximum_gap_tolerance"), param("maximum_gap_angle")}),
        row("get_volume_gap_solutions", &TI::get_volume_gap_solutions, {param("surface_id_1"), param("surface_id_2")}),
        row("get_solutions_for_near_coincident_vertex_and_curve", &TI::get_solutions_for_near_coincident_vertex_and_curve, {param("vertex_id"), param("curve_id")}),
        row("get_solutions_for_near_coincident_vertex_and_surface", &TI::get_solutions_for_near_coincident_vertex_and_surface, {param("vertex_id"), param("surface_id")}),
        row("get_solutions_for_imprint_merge", &TI::get_solutions_for_imprint_merge, {param("surface_id1"), param("surface_id2")}),
        row("get_solutions_for_forced_sweepability", &in_row_order::get_solutions_for_forced_sweepability, {param("volume_id"), optional_param("small_curve_size", -1.0), out("source_surface_id_list"), out("target_surface_id_list")}),
        row("get_solutions_for_small_surfaces", &TI::get_solutions_for_small_surfaces, {param("surface_id"), param("small_curve_size"), param("mesh_size")}),
        row("get_solutions_for_small_curves", &TI::get_solutions_for_small_curves, {param("curve_id"), param("small_curve_size"), param("mesh_size")}),
        row("get_solutions_for_surfaces_with_narrow_regions", &TI::get_solutions_for_surfaces_with_narrow_regions, {param("surface_id"), param("small_curve_size"), param("mesh_size")}),
        row("get_solutions_for_source_target", &TI::get_solutions_for_source_target, {param("volume_id"), out("feasible_source_surface_id_list"), out("feasible_target_surface_id_list"), out("infeasible_source_surface_id_list"), out("infeasible_target_surface_id_list")}),
        row("get_sharp_surface_angles", &in_row_order::get_sharp_surface_angles, {param("target_volume_ids"), param("upper_bound"), param("lower_bound"), out("returned_large_surface_angles"), out("returned_small_surface_angles"), out("returned_large_angles"), out("returned_small_angles")}),
        row("get_sharp_curve_angles", &in_row_order::get_sharp_curve_angles, {param("target_volume_ids"), param("upper_bound"), param("lower_bound"), out("returned_large_curve_angles"), out("returned_small_curve_angles"), out("returned_large_angles"), out("returned_small_angles")}),
        row("get_bad_geometry", &TI::get_bad_geometry, {param("target_volume_ids"), out("returned_body_list"), out("returned_volume_list"), out("returned_surface_list"), out("returned_curve_list")}),
        row("get_overlapping_surfaces_in_volumes", &in_row_order::get_overlapping_surfaces_in_volumes, {param("target_volume_ids"), optional_param("filter_slivers", false), optional_param("filter_volume_overlaps", false), out("returned_surface_list_1"), out("returned_surface_list_2"), out("returned_distance_list"), out("returned_overlap_area_list")}),
        row("get_overlapping_surfaces", &in_row_order::get_overlapping_surfaces, {param("target_surface_ids"), optional_param("filter_slivers", false), optional_param("filter_volume_overlaps", false), out("returned_surface_list_1"), out("returned_surface_list_2"), out("returned_distance_list"), out("returned_overlap_area_list")}),
        row("get_volume_gaps", &in_row_order::get_volume_gaps, {param("target_volume_ids"), param("maximum_gap_tolerance"), param("maximum_gap_angle"), out("returned_surface_list_1"), out("returned_surface_list_2"), out("returned_distance_list"), out("returned_overlap_area_list")}),
        row("get_overlapping_volumes", &TI::get_overlapping_volumes, {param("target_volume_ids")}),
        row("get_mergeable_entities", &in_row_order::get_mergeable_entities, {param("target_volume_ids"), out("returned_surface_list"), out("returned_curve_list"), out("returned_vertex_list")}),
        row("get_mergeable_vertices", &TI::get_mergeable_vertices, {param("target_volume_ids")}),
        row("get_mergeable_curves", &TI::get_mergeable_curves, {param("target_volume_ids")}),
        row("get_mergeable_surfaces", &TI::get_mergeable_surfaces, {param("target_volume_ids")}),
        row("get_closest_vertex_curve_pairs", &TI::get_closest_vertex_curve_pairs, {param("target_ids"), out("returned_number_to_return"), out("returned_vertex_ids"), out("returned_curve_ids"), out("returned_distances")}),
        row("get_smallest_features", &TI::get_smallest_features, {param("target_ids"), out("returned_number_to_return"), out("returned_type_1_list"), out("returned_type_2_list"), out("returned_id_1_list"), out("returned_id_2_list"), out("returned_distance_list")}),
        row("estimate_merge_tolerance", &in_row_order::estimate_merge_tolerance, {param("target_volume_ids"), optional_param("accurate_in", false), optional_param("report_in", false), optional_param("low_value_in", -1.0), optional_param("high_value_in", -1.0), optional_param("number_calculations_in", 10), optional_param("return_calculations_in", false), out("merge_tolerance_list"), out("number_of_proximities_list")}),
        row("find_floating_volumes", &TI::find_floating_volumes, {param("target_volume_ids"), out("returned_floating_id_list")}),
        row("find_nonmanifold_curves", &TI::find_nonmanifold_curves, {param("target_volume_ids"), out("returned_curve_list")}),
        row("find_nonmanifold_vertices", &TI::find_nonmanifold_vertices, {param("target_volume_ids"), out("returned_vertex_list")}),
        row("get_coincident_entity_pairs", &in_row_order::get_coincident_entity_pairs, {param("target_volume_ids"), param("low_value"), param("high_value"), optional_param("do_vertex_vertex", true), optional_param("do_vertex_curve", true), optional_param("do_vertex_surf", true), optional_param("filter_same_volume_cases", false), out("returned_v_v_vertex_list"), out("returned_v_c_vertex_list"), out("returned_v_c_curve_list"), out("returned_v_s_vertex_list"), out("returned_v_s_surf_list"), out("returned_vertex_distance_list"), out("returned_curve_distance_list"), out("returned_surf_distance_list")}),
        row("get_coincident_vertex_vertex_pairs", &in_row_order::get_coincident_vertex_vertex_pairs, {param("target_volume_ids"), param("low_value"), param("threshold_value"), optional_param("filter_same_volume_cases", false), out("returned_vertex_pair_list"), out("returned_distance_list")}),
        row("get_coincident_vertex_curve_pairs", &in_row_order::get_coincident_vertex_curve_pairs, {param("target_volume_ids"), param("low_value"), param("threshold_value"), optional_param("filter_same_volume_cases", false), out("returned_vertex_list"), out("returned_curve_list"), out("returned_distance_list")}),
        row("get_coincident_vertex_surface_pairs", &in_row_order::get_coincident_vertex_surface_pairs, {param("target_volume_ids"), param("low_value"), param("threshold_value"), optional_param("filter_same_volume_cases", false), out("returned_vertex_list"), out("returned_surface_list"), out("returned_distance_list")}),
        row("get_solutions_for_decomposition", &TI::get_solutions_for_decomposition, {param("volume_list"), param("exterior_angle"), param("do_imprint_merge"), param("tolerant_imprint")}),
        row("get_solutions_for_blends", &TI::get_solutions_for_blends, {param("surface_id")}),
        row("get_blend_chains", &TI::get_blend_chains, {param("surface_id")}),
        row("get_merge_tolerance", &TI::get_merge_tolerance, {}),
    });
    // clang-format on
}

} // namespace tarvo::methods
