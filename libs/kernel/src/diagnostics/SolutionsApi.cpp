// Public functions of repair advice: for one problem found by a finder, the commands of our own
// language that remove it, each with a short description (Solutions.h); and the sweep advice.
//
// Threading: kernel thread only.

#include "diagnostics/ApiSupport.h"

using namespace tarvo::kernel::diagnostics::api;

namespace TarvoInterface {

std::vector<std::vector<std::string>> get_solutions_for_near_coincident_vertices(int vertex_id_1,
                                                                                 int vertex_id_2) {
    const char* what = "get_solutions_for_near_coincident_vertices";
    return run(what, Solutions{}, [&] {
        if (!exists(GeomKind::Vertex, vertex_id_1, what) ||
            !exists(GeomKind::Vertex, vertex_id_2, what))
            return Solutions{};
        return dg::near_vertices_solutions(vertex_id_1, vertex_id_2);
    });
}

std::vector<std::vector<std::string>>
get_solutions_for_overlapping_volumes(int volume_id_1, int volume_id_2,
                                      double maximum_gap_tolerance, double maximum_gap_angle) {
    const char* what = "get_solutions_for_overlapping_volumes";
    return run(what, Solutions{}, [&] {
        if (!exists(GeomKind::Volume, volume_id_1, what) ||
            !exists(GeomKind::Volume, volume_id_2, what) ||
            !dg::positive_value(maximum_gap_tolerance, what, "the gap tolerance") ||
            !dg::positive_value(maximum_gap_angle, what, "the gap angle"))
            return Solutions{};
        return dg::overlapping_volumes_solutions(volume_id_1, volume_id_2);
    });
}

std::vector<std::vector<std::string>> get_volume_gap_solutions(int surface_id_1, int surface_id_2) {
    const char* what = "get_volume_gap_solutions";
    return run(what, Solutions{}, [&] {
        if (!exists(GeomKind::Surface, surface_id_1, what) ||
            !exists(GeomKind::Surface, surface_id_2, what))
            return Solutions{};
        return dg::close_entities_solutions("surface", surface_id_1, "surface", surface_id_2);
    });
}

std::vector<std::vector<std::string>>
get_solutions_for_near_coincident_vertex_and_curve(int vertex_id, int curve_id) {
    const char* what = "get_solutions_for_near_coincident_vertex_and_curve";
    return run(what, Solutions{}, [&] {
        if (!exists(GeomKind::Vertex, vertex_id, what) || !exists(GeomKind::Curve, curve_id, what))
            return Solutions{};
        return dg::close_entities_solutions("vertex", vertex_id, "curve", curve_id);
    });
}

std::vector<std::vector<std::string>>
get_solutions_for_near_coincident_vertex_and_surface(int vertex_id, int surface_id) {
    const char* what = "get_solutions_for_near_coincident_vertex_and_surface";
    return run(what, Solutions{}, [&] {
        if (!exists(GeomKind::Vertex, vertex_id, what) ||
            !exists(GeomKind::Surface, surface_id, what))
            return Solutions{};
        return dg::close_entities_solutions("vertex", vertex_id, "surface", surface_id);
    });
}

std::vector<std::vector<std::string>> get_solutions_for_imprint_merge(int surface_id1,
                                                                      int surface_id2) {
    const char* what = "get_solutions_for_imprint_merge";
    return run(what, Solutions{}, [&] {
        if (!exists(GeomKind::Surface, surface_id1, what) ||
            !exists(GeomKind::Surface, surface_id2, what))
            return Solutions{};
        return dg::imprint_merge_solutions(surface_id1, surface_id2);
    });
}

std::vector<std::vector<std::string>>
get_solutions_for_forced_sweepability(int volume_id, std::vector<int>& source_surface_id_list,
                                      std::vector<int>& target_surface_id_list,
                                      double /*small_curve_size*/) {
    const char* what = "get_solutions_for_forced_sweepability";
    source_surface_id_list.clear();
    target_surface_id_list.clear();
    return run(what, Solutions{}, [&] {
        if (!exists(GeomKind::Volume, volume_id, what))
            return Solutions{};
        return dg::sweep_solutions(volume_id, source_surface_id_list, target_surface_id_list);
    });
}

} // namespace TarvoInterface

namespace {

// The advice for one small feature: the entity must exist and both sizes be positive.
Solutions small_feature_solutions(const char* what, GeomKind kind, int id, double small_curve_size,
                                  double mesh_size, Solutions (*advise)(int, double)) {
    return run(what, Solutions{}, [&] {
        if (!exists(kind, id, what) ||
            !dg::positive_value(small_curve_size, what, "the small curve size") ||
            !dg::positive_value(mesh_size, what, "the mesh size"))
            return Solutions{};
        return advise(id, small_curve_size);
    });
}

} // namespace

namespace TarvoInterface {

std::vector<std::vector<std::string>>
get_solutions_for_small_surfaces(int surface_id, double small_curve_size, double mesh_size) {
    return small_feature_solutions("get_solutions_for_small_surfaces", GeomKind::Surface,
                                   surface_id, small_curve_size, mesh_size,
                                   &dg::small_surface_solutions);
}

std::vector<std::vector<std::string>>
get_solutions_for_small_curves(int curve_id, double small_curve_size, double mesh_size) {
    return small_feature_solutions("get_solutions_for_small_curves", GeomKind::Curve, curve_id,
                                   small_curve_size, mesh_size, &dg::small_curve_solutions);
}

// A narrow region is removed as a small surface is.
std::vector<std::vector<std::string>>
get_solutions_for_surfaces_with_narrow_regions(int surface_id, double small_curve_size,
                                               double mesh_size) {
    return small_feature_solutions("get_solutions_for_surfaces_with_narrow_regions",
                                   GeomKind::Surface, surface_id, small_curve_size, mesh_size,
                                   &dg::small_surface_solutions);
}

bool get_solutions_for_source_target(
    int volume_id, std::vector<std::vector<int>>& feasible_source_surface_id_list,
    std::vector<std::vector<int>>& feasible_target_surface_id_list,
    std::vector<std::vector<int>>& infeasible_source_surface_id_list,
    std::vector<std::vector<int>>& infeasible_target_surface_id_list) {
    const char* what = "get_solutions_for_source_target";
    feasible_source_surface_id_list.clear();
    feasible_target_surface_id_list.clear();
    infeasible_source_surface_id_list.clear();
    infeasible_target_surface_id_list.clear();
    return run(what, false, [&] {
        if (!exists(GeomKind::Volume, volume_id, what))
            return false;
        return dg::source_target_pairs(
            volume_id, feasible_source_surface_id_list, feasible_target_surface_id_list,
            infeasible_source_surface_id_list, infeasible_target_surface_id_list);
    });
}

std::vector<std::vector<std::string>>
get_solutions_for_decomposition(const std::vector<int>& volume_list, double exterior_angle,
                                bool do_imprint_merge, bool tolerant_imprint) {
    const char* what = "get_solutions_for_decomposition";
    return run(what, Solutions{}, [&] {
        const auto volumes = dg::volume_scope(volume_list, what);
        if (!volumes || !dg::positive_value(exterior_angle, what, "the exterior angle"))
            return Solutions{};
        return dg::decomposition_solutions(*volumes, exterior_angle, do_imprint_merge,
                                           tolerant_imprint);
    });
}

std::vector<std::vector<std::string>> get_solutions_for_blends(int surface_id) {
    const char* what = "get_solutions_for_blends";
    return run(what, Solutions{}, [&] {
        if (!exists(GeomKind::Surface, surface_id, what))
            return Solutions{};
        return dg::blend_solutions(surface_id);
    });
}

std::vector<std::vector<int>> get_blend_chains(int surface_id) {
    const char* what = "get_blend_chains";
    return run(what, std::vector<std::vector<int>>{}, [&] {
        if (!exists(GeomKind::Surface, surface_id, what))
            return std::vector<std::vector<int>>{};
        if (dg::blend_surfaces({surface_id}).empty())
            return std::vector<std::vector<int>>{};
        return dg::blend_chains(surface_id);
    });
}

} // namespace TarvoInterface
