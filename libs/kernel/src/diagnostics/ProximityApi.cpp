// Public functions of diagnostics about what lies close together: merge tolerance estimates,
// coincident entity pairs, floating volumes and non-manifold topology. Arguments are checked as
// in DiagnosticsApi.cpp.
//
// Threading: kernel thread only.

#include "diagnostics/ApiSupport.h"

using namespace tarvo::kernel::diagnostics::api;

namespace TarvoInterface {

double estimate_merge_tolerance(const std::vector<int>& target_volume_ids, bool accurate_in,
                                bool report_in, double low_value_in, double high_value_in,
                                int number_calculations_in, bool return_calculations_in,
                                std::vector<double>* merge_tolerance_list,
                                std::vector<int>* number_of_proximities_list) {
    const char* what = "estimate_merge_tolerance";
    return run(what, -1.0, [&] {
        const auto scope = dg::volume_scope(target_volume_ids, what);
        if (!scope)
            return -1.0;
        const double low = low_value_in > 0 ? low_value_in : 1e-6;
        const double high = high_value_in > 0 ? high_value_in : 1e-2;
        const int n = number_calculations_in > 0 ? number_calculations_in : 10;
        if (!(high > low) || n < 2) {
            tk::error(std::string(what) +
                      ": the high value must exceed the low value, with at least 2 calculations");
            return -1.0;
        }
        // Distances between entities of different volumes that are close but not one entity.
        std::vector<double> distances;
        for (const auto& p : dg::vertex_vertex_pairs(*scope, 0, high, true))
            distances.push_back(p.distance);
        if (accurate_in)
            for (const auto& p : dg::vertex_curve_pairs(*scope, 0, high, true))
                distances.push_back(p.distance);
        std::vector<double> tolerances;
        std::vector<int> counts;
        for (int i = 0; i < n; ++i) {
            const double t = low * std::pow(high / low, static_cast<double>(i) / (n - 1));
            tolerances.push_back(t);
            counts.push_back(static_cast<int>(std::count_if(distances.begin(), distances.end(),
                                                            [&](double d) { return d <= t; })));
        }
        if (return_calculations_in) {
            if (merge_tolerance_list)
                *merge_tolerance_list = tolerances;
            if (number_of_proximities_list)
                *number_of_proximities_list = counts;
        }
        if (report_in)
            for (int i = 0; i < n; ++i) {
                char line[96];
                std::snprintf(line, sizeof line, "  tolerance %.3g: %d proximities", tolerances[i],
                              counts[i]);
                tk::print(line);
            }
        // The smallest tolerance that already catches every proximity up to the high value:
        // beyond it nothing more merges, below it some near-coincident entities stay apart.
        if (counts.back() == 0) {
            tk::print("No proximities between " + std::to_string(low) + " and " +
                      std::to_string(high) + "; the default merge tolerance applies");
            return dg::settings().merge_tolerance;
        }
        for (int i = 0; i < n; ++i)
            if (counts[i] == counts.back())
                return tolerances[i];
        return tolerances.back();
    });
}

void find_floating_volumes(const std::vector<int>& target_volume_ids,
                           std::vector<int>& returned_floating_id_list) {
    const char* what = "find_floating_volumes";
    returned_floating_id_list.clear();
    run(what, false, [&] {
        const auto scope = dg::volume_scope(target_volume_ids, what);
        if (scope)
            returned_floating_id_list = dg::floating_volumes(*scope);
        return true;
    });
}

void find_nonmanifold_curves(const std::vector<int>& target_volume_ids,
                             std::vector<int>& returned_curve_list) {
    const char* what = "find_nonmanifold_curves";
    returned_curve_list.clear();
    run(what, false, [&] {
        const auto scope = dg::volume_scope(target_volume_ids, what);
        if (scope)
            returned_curve_list = dg::nonmanifold_curves(*scope);
        return true;
    });
}

void find_nonmanifold_vertices(const std::vector<int>& target_volume_ids,
                               std::vector<int>& returned_vertex_list) {
    const char* what = "find_nonmanifold_vertices";
    returned_vertex_list.clear();
    run(what, false, [&] {
        const auto scope = dg::volume_scope(target_volume_ids, what);
        if (scope)
            returned_vertex_list = dg::nonmanifold_vertices(*scope);
        return true;
    });
}

namespace {

bool range_ok(const char* what, double low, double high) {
    if (std::isfinite(low) && std::isfinite(high) && low >= 0 && high > 0 && high >= low)
        return true;
    return tk::error(std::string(what) + ": need 0 <= low value <= high value, high value > 0");
}

} // namespace

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
                                 bool do_vertex_surf, bool filter_same_volume_cases) {
    const char* what = "get_coincident_entity_pairs";
    for (auto* l : {&returned_v_v_vertex_list, &returned_v_c_vertex_list, &returned_v_c_curve_list,
                    &returned_v_s_vertex_list, &returned_v_s_surf_list})
        l->clear();
    for (auto* l : {&returned_vertex_distance_list, &returned_curve_distance_list,
                    &returned_surf_distance_list})
        l->clear();
    run(what, false, [&] {
        const auto scope = dg::volume_scope(target_volume_ids, what);
        if (!scope || !range_ok(what, low_value, high_value))
            return false;
        if (do_vertex_vertex)
            for (const auto& p :
                 dg::vertex_vertex_pairs(*scope, low_value, high_value, filter_same_volume_cases)) {
                returned_v_v_vertex_list.push_back(p.a);
                returned_v_v_vertex_list.push_back(p.b);
                returned_vertex_distance_list.push_back(p.distance);
            }
        if (do_vertex_curve)
            for (const auto& p :
                 dg::vertex_curve_pairs(*scope, low_value, high_value, filter_same_volume_cases)) {
                returned_v_c_vertex_list.push_back(p.a);
                returned_v_c_curve_list.push_back(p.b);
                returned_curve_distance_list.push_back(p.distance);
            }
        if (do_vertex_surf)
            for (const auto& p : dg::vertex_surface_pairs(*scope, low_value, high_value,
                                                          filter_same_volume_cases)) {
                returned_v_s_vertex_list.push_back(p.a);
                returned_v_s_surf_list.push_back(p.b);
                returned_surf_distance_list.push_back(p.distance);
            }
        return true;
    });
}

void get_coincident_vertex_vertex_pairs(const std::vector<int>& target_volume_ids,
                                        std::vector<int>& returned_vertex_pair_list,
                                        std::vector<double>& returned_distance_list,
                                        double low_value, double threshold_value,
                                        bool filter_same_volume_cases) {
    const char* what = "get_coincident_vertex_vertex_pairs";
    returned_vertex_pair_list.clear();
    returned_distance_list.clear();
    run(what, false, [&] {
        const auto scope = dg::volume_scope(target_volume_ids, what);
        if (!scope || !range_ok(what, low_value, threshold_value))
            return false;
        for (const auto& p : dg::vertex_vertex_pairs(*scope, low_value, threshold_value,
                                                     filter_same_volume_cases)) {
            returned_vertex_pair_list.push_back(p.a);
            returned_vertex_pair_list.push_back(p.b);
            returned_distance_list.push_back(p.distance);
        }
        return true;
    });
}

namespace {

void vertex_pairs(const char* what, const std::vector<int>& target_volume_ids,
                  std::vector<int>& vertices, std::vector<int>& others,
                  std::vector<double>& distances, double low, double high, bool filter,
                  std::vector<dg::Pair> (*finder)(const std::vector<int>&, double, double, bool)) {
    vertices.clear();
    others.clear();
    distances.clear();
    run(what, false, [&] {
        const auto scope = dg::volume_scope(target_volume_ids, what);
        if (!scope || !range_ok(what, low, high))
            return false;
        for (const auto& p : finder(*scope, low, high, filter)) {
            vertices.push_back(p.a);
            others.push_back(p.b);
            distances.push_back(p.distance);
        }
        return true;
    });
}

} // namespace

void get_coincident_vertex_curve_pairs(const std::vector<int>& target_volume_ids,
                                       std::vector<int>& returned_vertex_list,
                                       std::vector<int>& returned_curve_list,
                                       std::vector<double>& returned_distance_list,
                                       double low_value, double threshold_value,
                                       bool filter_same_volume_cases) {
    vertex_pairs("get_coincident_vertex_curve_pairs", target_volume_ids, returned_vertex_list,
                 returned_curve_list, returned_distance_list, low_value, threshold_value,
                 filter_same_volume_cases, &dg::vertex_curve_pairs);
}

void get_coincident_vertex_surface_pairs(const std::vector<int>& target_volume_ids,
                                         std::vector<int>& returned_vertex_list,
                                         std::vector<int>& returned_surface_list,
                                         std::vector<double>& returned_distance_list,
                                         double low_value, double threshold_value,
                                         bool filter_same_volume_cases) {
    vertex_pairs("get_coincident_vertex_surface_pairs", target_volume_ids, returned_vertex_list,
                 returned_surface_list, returned_distance_list, low_value, threshold_value,
                 filter_same_volume_cases, &dg::vertex_surface_pairs);
}

} // namespace TarvoInterface
