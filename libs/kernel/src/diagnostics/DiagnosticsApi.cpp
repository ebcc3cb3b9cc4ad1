// Public functions of geometry diagnostics: the finders of small, narrow, sharp, bad and
// overlapping geometry. Each checks its arguments (an empty list, an unknown id or a tolerance
// <= 0 is one error line and the empty answer, with nothing changed), runs the module's finder
// through the kernel's guard, and shapes the answer.
//
// Threading: kernel thread only.

#include "diagnostics/ApiSupport.h"

using namespace tarvo::kernel::diagnostics::api;

namespace TarvoInterface {

double get_overlap_max_gap() {
    return dg::settings().overlap_max_gap;
}

void set_overlap_max_gap(double maximum_gap) {
    if (dg::positive_value(maximum_gap, "set_overlap_max_gap", "the gap"))
        dg::settings().overlap_max_gap = maximum_gap;
}

double get_overlap_max_angle() {
    return dg::settings().overlap_max_angle;
}

void set_overlap_max_angle(double maximum_angle) {
    if (!(maximum_angle > 0 && maximum_angle <= 90))
        tk::error("set_overlap_max_angle: the angle must be above 0 and at most 90 degrees");
    else
        dg::settings().overlap_max_angle = maximum_angle;
}

double get_merge_tolerance() {
    return dg::settings().merge_tolerance;
}

void get_small_surfaces_hydraulic_radius(const std::vector<int>& target_volume_ids,
                                         double mesh_size,
                                         std::vector<int>& returned_small_surfaces,
                                         std::vector<double>& returned_small_radius) {
    const char* what = "get_small_surfaces_hydraulic_radius";
    run(what, false, [&] {
        const auto scope = dg::volume_scope(target_volume_ids, what);
        if (!scope || !dg::positive_value(mesh_size, what, "the mesh size"))
            return false;
        split(dg::surface_hydraulic_radius(surfaces_in(*scope), mesh_size), returned_small_surfaces,
              returned_small_radius);
        return true;
    });
}

void get_small_volumes_hydraulic_radius(const std::vector<int>& target_volume_ids, double mesh_size,
                                        std::vector<int>& returned_small_volumes,
                                        std::vector<double>& returned_small_radius) {
    const char* what = "get_small_volumes_hydraulic_radius";
    run(what, false, [&] {
        const auto scope = dg::volume_scope(target_volume_ids, what);
        if (!scope || !dg::positive_value(mesh_size, what, "the mesh size"))
            return false;
        split(dg::volume_hydraulic_radius(*scope, mesh_size), returned_small_volumes,
              returned_small_radius);
        return true;
    });
}

std::vector<int> get_small_curves(const std::vector<int>& target_volume_ids, double mesh_size) {
    const char* what = "get_small_curves";
    return run(what, std::vector<int>{}, [&] {
        const auto scope = dg::volume_scope(target_volume_ids, what);
        if (!scope || !dg::positive_value(mesh_size, what, "the mesh size"))
            return std::vector<int>{};
        return ids_of(dg::small_curves(*scope, mesh_size));
    });
}

std::vector<int> get_smallest_curves(const std::vector<int>& target_volume_ids,
                                     int number_to_return) {
    const char* what = "get_smallest_curves";
    return run(what, std::vector<int>{}, [&] {
        const auto scope = dg::volume_scope(target_volume_ids, what);
        if (!scope)
            return std::vector<int>{};
        if (number_to_return <= 0) {
            tk::error(std::string(what) + ": the number to return must be at least 1");
            return std::vector<int>{};
        }
        return ids_of(dg::smallest_curves(*scope, number_to_return));
    });
}

std::vector<int> get_small_surfaces(const std::vector<int>& target_volume_ids, double mesh_size) {
    const char* what = "get_small_surfaces";
    return run(what, std::vector<int>{}, [&] {
        const auto scope = dg::volume_scope(target_volume_ids, what);
        if (!scope || !dg::positive_value(mesh_size, what, "the mesh size"))
            return std::vector<int>{};
        return ids_of(dg::small_surfaces(surfaces_in(*scope), mesh_size));
    });
}

std::vector<int> get_narrow_surfaces(const std::vector<int>& target_volume_ids, double mesh_size) {
    const char* what = "get_narrow_surfaces";
    return run(what, std::vector<int>{}, [&] {
        const auto scope = dg::volume_scope(target_volume_ids, what);
        if (!scope || !dg::positive_value(mesh_size, what, "the mesh size"))
            return std::vector<int>{};
        return ids_of(dg::narrow_surfaces(surfaces_in(*scope), mesh_size));
    });
}

std::vector<int> get_small_and_narrow_surfaces(const std::vector<int>& target_ids,
                                               double small_area, double small_curve_size) {
    const char* what = "get_small_and_narrow_surfaces";
    return run(what, std::vector<int>{}, [&] {
        const auto scope = surface_targets(target_ids, what);
        if (!scope || !dg::positive_value(small_area, what, "the small area") ||
            !dg::positive_value(small_curve_size, what, "the small curve size"))
            return std::vector<int>{};
        std::set<int> out;
        for (const auto& m : dg::small_surfaces(*scope, std::sqrt(small_area)))
            out.insert(m.id);
        for (const auto& m : dg::narrow_surfaces(*scope, small_curve_size))
            out.insert(m.id);
        return std::vector<int>(out.begin(), out.end());
    });
}

std::vector<int> get_closed_narrow_surfaces(const std::vector<int>& target_ids,
                                            double narrow_size) {
    return measured_surfaces(target_ids, narrow_size, "get_closed_narrow_surfaces",
                             &dg::closed_narrow_surfaces);
}

std::vector<int> get_surfs_with_narrow_regions(const std::vector<int>& target_ids,
                                               double narrow_size) {
    return measured_surfaces(target_ids, narrow_size, "get_surfs_with_narrow_regions",
                             &dg::narrow_surfaces);
}

std::vector<int> get_narrow_regions(const std::vector<int>& target_ids, double narrow_size) {
    return measured_surfaces(target_ids, narrow_size, "get_narrow_regions", &dg::narrow_surfaces);
}

std::vector<int> get_small_volumes(const std::vector<int>& target_volume_ids, double mesh_size) {
    const char* what = "get_small_volumes";
    return run(what, std::vector<int>{}, [&] {
        const auto scope = dg::volume_scope(target_volume_ids, what);
        if (!scope || !dg::positive_value(mesh_size, what, "the mesh size"))
            return std::vector<int>{};
        return ids_of(dg::small_volumes(*scope, mesh_size));
    });
}

std::vector<int> get_blend_surfaces(const std::vector<int>& target_volume_ids) {
    const char* what = "get_blend_surfaces";
    return run(what, std::vector<int>{}, [&] {
        const auto scope = dg::volume_scope(target_volume_ids, what);
        return scope ? dg::blend_surfaces(surfaces_in(*scope)) : std::vector<int>{};
    });
}

std::vector<int> get_close_loops(const std::vector<int>& target_volume_ids, double mesh_size) {
    const char* what = "get_close_loops";
    return run(what, std::vector<int>{}, [&] {
        const auto scope = dg::volume_scope(target_volume_ids, what);
        if (!scope || !dg::positive_value(mesh_size, what, "the mesh size"))
            return std::vector<int>{};
        return ids_of(dg::close_loops(surfaces_in(*scope), mesh_size));
    });
}

std::vector<int> get_tangential_intersections(const std::vector<int>& target_volume_ids,
                                              double upper_bound, double lower_bound) {
    const char* what = "get_tangential_intersections";
    return run(what, std::vector<int>{}, [&] {
        const auto scope = dg::volume_scope(target_volume_ids, what);
        if (!scope)
            return std::vector<int>{};
        if (!(lower_bound >= 0 && upper_bound > lower_bound && upper_bound <= 360)) {
            tk::error(std::string(what) + ": the bounds must satisfy 0 <= lower < upper <= 360");
            return std::vector<int>{};
        }
        std::set<int> out;
        for (const auto& a : dg::curve_angles(*scope))
            if (a.degrees < lower_bound || a.degrees > upper_bound)
                for (int v : dg::model().relatives(GeomKind::Curve, a.curve, GeomKind::Vertex))
                    out.insert(v);
        return std::vector<int>(out.begin(), out.end());
    });
}

std::vector<int> get_coincident_vertices(const std::vector<int>& target_volume_ids,
                                         double high_tolerance) {
    const char* what = "get_coincident_vertices";
    return run(what, std::vector<int>{}, [&] {
        const auto scope = dg::volume_scope(target_volume_ids, what);
        if (!scope || !dg::positive_value(high_tolerance, what, "the tolerance"))
            return std::vector<int>{};
        std::set<int> out;
        for (const auto& p : dg::vertex_vertex_pairs(*scope, 0, high_tolerance, false)) {
            out.insert(p.a);
            out.insert(p.b);
        }
        return std::vector<int>(out.begin(), out.end());
    });
}

namespace {

void sharp(const char* what, const std::vector<int>& target_volume_ids, std::vector<int>& large_ids,
           std::vector<int>& small_ids, std::vector<double>& large_angles,
           std::vector<double>& small_angles, double upper_bound, double lower_bound,
           bool corners) {
    large_ids.clear();
    small_ids.clear();
    large_angles.clear();
    small_angles.clear();
    run(what, false, [&] {
        const auto scope = dg::volume_scope(target_volume_ids, what);
        if (!scope)
            return false;
        if (!(lower_bound >= 0 && upper_bound > lower_bound && upper_bound <= 360))
            return tk::error(std::string(what) +
                             ": the bounds must satisfy 0 <= lower < upper <= 360");
        auto add = [&](int id, double angle) {
            if (angle > upper_bound) {
                large_ids.push_back(id);
                large_angles.push_back(angle);
            } else if (angle < lower_bound) {
                small_ids.push_back(id);
                small_angles.push_back(angle);
            }
        };
        if (corners)
            for (const auto& a : dg::corner_angles(*scope))
                add(a.surface, a.degrees);
        else
            for (const auto& a : dg::curve_angles(*scope))
                add(a.curve, a.degrees);
        return true;
    });
}

} // namespace

void get_sharp_surface_angles(const std::vector<int>& target_volume_ids,
                              std::vector<int>& returned_large_surface_angles,
                              std::vector<int>& returned_small_surface_angles,
                              std::vector<double>& returned_large_angles,
                              std::vector<double>& returned_small_angles, double upper_bound,
                              double lower_bound) {
    sharp("get_sharp_surface_angles", target_volume_ids, returned_large_surface_angles,
          returned_small_surface_angles, returned_large_angles, returned_small_angles, upper_bound,
          lower_bound, true);
}

void get_sharp_curve_angles(const std::vector<int>& target_volume_ids,
                            std::vector<int>& returned_large_curve_angles,
                            std::vector<int>& returned_small_curve_angles,
                            std::vector<double>& returned_large_angles,
                            std::vector<double>& returned_small_angles, double upper_bound,
                            double lower_bound) {
    sharp("get_sharp_curve_angles", target_volume_ids, returned_large_curve_angles,
          returned_small_curve_angles, returned_large_angles, returned_small_angles, upper_bound,
          lower_bound, false);
}

void get_bad_geometry(const std::vector<int>& target_volume_ids,
                      std::vector<int>& returned_body_list, std::vector<int>& returned_volume_list,
                      std::vector<int>& returned_surface_list,
                      std::vector<int>& returned_curve_list) {
    const char* what = "get_bad_geometry";
    run(what, false, [&] {
        const auto scope = dg::volume_scope(target_volume_ids, what);
        if (!scope)
            return false;
        dg::BadGeometry bad = dg::bad_geometry(*scope);
        returned_body_list = bad.bodies;
        returned_volume_list = bad.volumes;
        returned_surface_list = bad.surfaces;
        returned_curve_list = bad.curves;
        return true;
    });
}

namespace {

void facing(const char* what, const std::optional<std::vector<int>>& surfaces, double gap,
            double angle, bool only_gaps, bool filter_slivers, bool filter_volume_overlaps,
            int max_results, std::vector<int>& list_1, std::vector<int>& list_2,
            std::vector<double>& distances, std::vector<double>& areas) {
    list_1.clear();
    list_2.clear();
    distances.clear();
    areas.clear();
    if (!surfaces)
        return;
    for (const auto& p : dg::facing_surfaces(*surfaces, gap, angle, only_gaps, filter_slivers,
                                             filter_volume_overlaps, std::max(0, max_results))) {
        list_1.push_back(p.a);
        list_2.push_back(p.b);
        distances.push_back(p.distance);
        areas.push_back(p.area);
    }
    (void)what;
}

} // namespace

void get_overlapping_surfaces_in_volumes(const std::vector<int>& target_volume_ids,
                                         std::vector<int>& returned_surface_list_1,
                                         std::vector<int>& returned_surface_list_2,
                                         std::vector<double>& returned_distance_list,
                                         std::vector<double>& returned_overlap_area_list,
                                         bool filter_slivers, bool filter_volume_overlaps,
                                         int max_results) {
    const char* what = "get_overlapping_surfaces_in_volumes";
    run(what, false, [&] {
        const auto scope = dg::volume_scope(target_volume_ids, what);
        facing(what, scope ? std::optional(surfaces_in(*scope)) : std::nullopt,
               dg::settings().overlap_max_gap, dg::settings().overlap_max_angle, false,
               filter_slivers, filter_volume_overlaps, max_results, returned_surface_list_1,
               returned_surface_list_2, returned_distance_list, returned_overlap_area_list);
        return true;
    });
}

void get_overlapping_surfaces(const std::vector<int>& target_surface_ids,
                              std::vector<int>& returned_surface_list_1,
                              std::vector<int>& returned_surface_list_2,
                              std::vector<double>& returned_distance_list,
                              std::vector<double>& returned_overlap_area_list, bool filter_slivers,
                              bool filter_volume_overlaps, int max_results) {
    const char* what = "get_overlapping_surfaces";
    run(what, false, [&] {
        facing(what, dg::surface_scope(target_surface_ids, what), dg::settings().overlap_max_gap,
               dg::settings().overlap_max_angle, false, filter_slivers, filter_volume_overlaps,
               max_results, returned_surface_list_1, returned_surface_list_2,
               returned_distance_list, returned_overlap_area_list);
        return true;
    });
}

void get_volume_gaps(const std::vector<int>& target_volume_ids,
                     std::vector<int>& returned_surface_list_1,
                     std::vector<int>& returned_surface_list_2,
                     std::vector<double>& returned_distance_list,
                     std::vector<double>& returned_overlap_area_list, double maximum_gap_tolerance,
                     double maximum_gap_angle, int max_results) {
    const char* what = "get_volume_gaps";
    run(what, false, [&] {
        auto scope = dg::volume_scope(target_volume_ids, what);
        if (scope && (!dg::positive_value(maximum_gap_tolerance, what, "the gap tolerance") ||
                      !dg::positive_value(maximum_gap_angle, what, "the gap angle")))
            scope.reset();
        facing(what, scope ? std::optional(surfaces_in(*scope)) : std::nullopt,
               maximum_gap_tolerance, maximum_gap_angle, true, false, false, max_results,
               returned_surface_list_1, returned_surface_list_2, returned_distance_list,
               returned_overlap_area_list);
        return true;
    });
}

std::vector<int> get_overlapping_volumes(const std::vector<int>& target_volume_ids) {
    const char* what = "get_overlapping_volumes";
    return run(what, std::vector<int>{}, [&] {
        const auto scope = dg::volume_scope(target_volume_ids, what);
        std::vector<int> out;
        if (scope)
            for (const auto& p : dg::overlapping_volumes(*scope)) {
                out.push_back(p.a);
                out.push_back(p.b);
            }
        return out;
    });
}

void get_mergeable_entities(const std::vector<int>& target_volume_ids,
                            std::vector<std::vector<int>>& returned_surface_list,
                            std::vector<std::vector<int>>& returned_curve_list,
                            std::vector<std::vector<int>>& returned_vertex_list,
                            double merge_tolerance) {
    const char* what = "get_mergeable_entities";
    run(what, false, [&] {
        const auto scope = dg::volume_scope(target_volume_ids, what);
        if (!scope)
            return false;
        const double tol = merge_tolerance > 0 ? merge_tolerance : dg::settings().merge_tolerance;
        returned_surface_list = dg::mergeable(*scope, GeomKind::Surface, tol);
        returned_curve_list = dg::mergeable(*scope, GeomKind::Curve, tol);
        returned_vertex_list = dg::mergeable(*scope, GeomKind::Vertex, tol);
        return true;
    });
}

namespace {

std::vector<std::vector<int>> mergeable_of(const char* what, const std::vector<int>& volumes,
                                           GeomKind kind) {
    return run(what, std::vector<std::vector<int>>{}, [&] {
        const auto scope = dg::volume_scope(volumes, what);
        return scope ? dg::mergeable(*scope, kind, dg::settings().merge_tolerance)
                     : std::vector<std::vector<int>>{};
    });
}

} // namespace

std::vector<std::vector<int>> get_mergeable_vertices(const std::vector<int>& target_volume_ids) {
    return mergeable_of("get_mergeable_vertices", target_volume_ids, GeomKind::Vertex);
}

std::vector<std::vector<int>> get_mergeable_curves(const std::vector<int>& target_volume_ids) {
    return mergeable_of("get_mergeable_curves", target_volume_ids, GeomKind::Curve);
}

std::vector<std::vector<int>> get_mergeable_surfaces(const std::vector<int>& target_volume_ids) {
    return mergeable_of("get_mergeable_surfaces", target_volume_ids, GeomKind::Surface);
}

void get_closest_vertex_curve_pairs(const std::vector<int>& target_ids,
                                    int& returned_number_to_return,
                                    std::vector<int>& returned_vertex_ids,
                                    std::vector<int>& returned_curve_ids,
                                    std::vector<double>& returned_distances) {
    const char* what = "get_closest_vertex_curve_pairs";
    returned_number_to_return = 0;
    returned_vertex_ids.clear();
    returned_curve_ids.clear();
    returned_distances.clear();
    run(what, false, [&] {
        const auto scope = dg::volume_scope(target_ids, what);
        if (!scope)
            return false;
        for (const auto& p : dg::closest_vertex_curve_pairs(*scope, 10)) {
            returned_vertex_ids.push_back(p.a);
            returned_curve_ids.push_back(p.b);
            returned_distances.push_back(p.distance);
        }
        returned_number_to_return = static_cast<int>(returned_vertex_ids.size());
        return true;
    });
}

void get_smallest_features(const std::vector<int>& target_ids, int& returned_number_to_return,
                           std::vector<int>& returned_type_1_list,
                           std::vector<int>& returned_type_2_list,
                           std::vector<int>& returned_id_1_list,
                           std::vector<int>& returned_id_2_list,
                           std::vector<double>& returned_distance_list) {
    const char* what = "get_smallest_features";
    returned_number_to_return = 0;
    for (auto* list :
         {&returned_type_1_list, &returned_type_2_list, &returned_id_1_list, &returned_id_2_list})
        list->clear();
    returned_distance_list.clear();
    run(what, false, [&] {
        const auto scope = dg::volume_scope(target_ids, what);
        if (!scope)
            return false;
        // A short curve (its length) and a vertex near a curve it is not on (their distance),
        // whichever are smallest; types are the entity kinds' codes (curve 3, vertex 4).
        struct Feature {
            int t1, t2, id1, id2;
            double d;
        };
        std::vector<Feature> all;
        for (const auto& m : dg::smallest_curves(*scope, 10))
            all.push_back({3, 3, m.id, m.id, m.value});
        for (const auto& p : dg::closest_vertex_curve_pairs(*scope, 10))
            all.push_back({4, 3, p.a, p.b, p.distance});
        std::stable_sort(all.begin(), all.end(),
                         [](const Feature& a, const Feature& b) { return a.d < b.d; });
        if (all.size() > 10)
            all.resize(10);
        for (const auto& f : all) {
            returned_type_1_list.push_back(f.t1);
            returned_type_2_list.push_back(f.t2);
            returned_id_1_list.push_back(f.id1);
            returned_id_2_list.push_back(f.id2);
            returned_distance_list.push_back(f.d);
        }
        returned_number_to_return = static_cast<int>(all.size());
        return true;
    });
}

} // namespace TarvoInterface
