// Kernel functions of this family that are not written yet: geometry diagnostics and repair
// solutions.
//
// Each STUB line defines one function of tarvo/TarvoInterface.h that prints
// "ERROR: <name> is not available in this kernel yet." and answers its failure value, and lists
// it in TarvoInterface::not_built_functions(). Delete the STUB line when you define the function
// (a forgotten line shows up as a multiple-definition error at link time).

#include "placeholders/Stub.h"

namespace TarvoInterface {

STUB(get_overlap_max_gap, (), double)
STUB_VOID(set_overlap_max_gap, (double))
STUB(get_overlap_max_angle, (), double)
STUB_VOID(set_overlap_max_angle, (double))
STUB_VOID(get_small_surfaces_hydraulic_radius,
          (const std::vector<int>&, double, std::vector<int>&, std::vector<double>&))
STUB_VOID(get_small_volumes_hydraulic_radius,
          (const std::vector<int>&, double, std::vector<int>&, std::vector<double>&))
STUB(get_small_curves, (const std::vector<int>&, double), std::vector<int>)
STUB(get_smallest_curves, (const std::vector<int>&, int), std::vector<int>)
STUB(get_small_surfaces, (const std::vector<int>&, double), std::vector<int>)
STUB(get_narrow_surfaces, (const std::vector<int>&, double), std::vector<int>)
STUB(get_small_and_narrow_surfaces, (const std::vector<int>&, double, double), std::vector<int>)
STUB(get_closed_narrow_surfaces, (const std::vector<int>&, double), std::vector<int>)
STUB(get_surfs_with_narrow_regions, (const std::vector<int>&, double), std::vector<int>)
STUB(get_narrow_regions, (const std::vector<int>&, double), std::vector<int>)
STUB(get_small_volumes, (const std::vector<int>&, double), std::vector<int>)
STUB(get_blend_surfaces, (const std::vector<int>&), std::vector<int>)
STUB(get_close_loops, (const std::vector<int>&, double), std::vector<int>)
STUB(get_tangential_intersections, (const std::vector<int>&, double, double), std::vector<int>)
STUB(get_coincident_vertices, (const std::vector<int>&, double), std::vector<int>)
STUB(get_solutions_for_near_coincident_vertices, (int, int), std::vector<std::vector<std::string>>)
STUB(get_solutions_for_overlapping_volumes, (int, int, double, double),
     std::vector<std::vector<std::string>>)
STUB(get_volume_gap_solutions, (int, int), std::vector<std::vector<std::string>>)
STUB(get_solutions_for_near_coincident_vertex_and_curve, (int, int),
     std::vector<std::vector<std::string>>)
STUB(get_solutions_for_near_coincident_vertex_and_surface, (int, int),
     std::vector<std::vector<std::string>>)
STUB(get_solutions_for_imprint_merge, (int, int), std::vector<std::vector<std::string>>)
STUB(get_solutions_for_forced_sweepability, (int, std::vector<int>&, std::vector<int>&, double),
     std::vector<std::vector<std::string>>)
STUB(get_solutions_for_small_surfaces, (int, double, double), std::vector<std::vector<std::string>>)
STUB(get_solutions_for_small_curves, (int, double, double), std::vector<std::vector<std::string>>)
STUB(get_solutions_for_surfaces_with_narrow_regions, (int, double, double),
     std::vector<std::vector<std::string>>)
STUB(get_solutions_for_source_target,
     (int, std::vector<std::vector<int>>&, std::vector<std::vector<int>>&,
      std::vector<std::vector<int>>&, std::vector<std::vector<int>>&),
     bool)
STUB_VOID(get_sharp_surface_angles, (const std::vector<int>&, std::vector<int>&, std::vector<int>&,
                                     std::vector<double>&, std::vector<double>&, double, double))
STUB_VOID(get_sharp_curve_angles, (const std::vector<int>&, std::vector<int>&, std::vector<int>&,
                                   std::vector<double>&, std::vector<double>&, double, double))
STUB_VOID(get_bad_geometry, (const std::vector<int>&, std::vector<int>&, std::vector<int>&,
                             std::vector<int>&, std::vector<int>&))
STUB_VOID(get_overlapping_surfaces_in_volumes,
          (const std::vector<int>&, std::vector<int>&, std::vector<int>&, std::vector<double>&,
           std::vector<double>&, bool, bool, int))
STUB_VOID(get_overlapping_surfaces, (const std::vector<int>&, std::vector<int>&, std::vector<int>&,
                                     std::vector<double>&, std::vector<double>&, bool, bool, int))
STUB_VOID(get_volume_gaps, (const std::vector<int>&, std::vector<int>&, std::vector<int>&,
                            std::vector<double>&, std::vector<double>&, double, double, int))
STUB(get_overlapping_volumes, (const std::vector<int>&), std::vector<int>)
STUB_VOID(get_mergeable_entities,
          (const std::vector<int>&, std::vector<std::vector<int>>&, std::vector<std::vector<int>>&,
           std::vector<std::vector<int>>&, double))
STUB(get_mergeable_vertices, (const std::vector<int>&), std::vector<std::vector<int>>)
STUB(get_mergeable_curves, (const std::vector<int>&), std::vector<std::vector<int>>)
STUB(get_mergeable_surfaces, (const std::vector<int>&), std::vector<std::vector<int>>)
STUB_VOID(get_closest_vertex_curve_pairs, (const std::vector<int>&, int&, std::vector<int>&,
                                           std::vector<int>&, std::vector<double>&))
STUB_VOID(get_smallest_features,
          (const std::vector<int>&, int&, std::vector<int>&, std::vector<int>&, std::vector<int>&,
           std::vector<int>&, std::vector<double>&))
STUB(estimate_merge_tolerance,
     (const std::vector<int>&, bool, bool, double, double, int, bool, std::vector<double>*,
      std::vector<int>*),
     double)
STUB_VOID(find_floating_volumes, (const std::vector<int>&, std::vector<int>&))
STUB_VOID(find_nonmanifold_curves, (const std::vector<int>&, std::vector<int>&))
STUB_VOID(find_nonmanifold_vertices, (const std::vector<int>&, std::vector<int>&))
STUB_VOID(get_coincident_entity_pairs,
          (const std::vector<int>&, std::vector<int>&, std::vector<int>&, std::vector<int>&,
           std::vector<int>&, std::vector<int>&, std::vector<double>&, std::vector<double>&,
           std::vector<double>&, double, double, bool, bool, bool, bool))
STUB_VOID(get_coincident_vertex_vertex_pairs,
          (const std::vector<int>&, std::vector<int>&, std::vector<double>&, double, double, bool))
STUB_VOID(get_coincident_vertex_curve_pairs,
          (const std::vector<int>&, std::vector<int>&, std::vector<int>&, std::vector<double>&,
           double, double, bool))
STUB_VOID(get_coincident_vertex_surface_pairs,
          (const std::vector<int>&, std::vector<int>&, std::vector<int>&, std::vector<double>&,
           double, double, bool))
STUB(get_solutions_for_decomposition, (const std::vector<int>&, double, bool, bool),
     std::vector<std::vector<std::string>>)
STUB(get_solutions_for_blends, (int), std::vector<std::vector<std::string>>)
STUB(get_blend_chains, (int), std::vector<std::vector<int>>)
STUB(get_merge_tolerance, (), double)

} // namespace TarvoInterface
