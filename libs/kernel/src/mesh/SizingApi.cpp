// Public queries of sizes, intervals, biases and schemes: look the entity up, run through the
// kernel's guard, and answer from the resolution in SizingSettings.h.
//
// Conventions: an unknown type or id answers the failure value without an error line (monitors
// ask about entities that may just have gone). Sizes, intervals and schemes answer for volumes,
// surfaces and curves; the bias family for curves. Settings this kernel does not have (sizing
// functions, curve stretch, pinpoint and curvature schemes, sphere parameters, tet proximity
// layers, an approximation angle) answer "none": empty, false or 0, for an entity that exists
// as for one that does not.
//
// Threading: kernel thread only.

#include "core/Guard.h"
#include "geometry/GeometryModule.h"
#include "mesh/MeshModule.h"
#include "mesh/SizingSettings.h"
#include "tarvo/TarvoInterface.h"

#include <algorithm>
#include <cctype>
#include <climits>
#include <cmath>

namespace tk = tarvo::kernel;
namespace ms = tarvo::kernel::mesh;
using tk::EntityKey;
using tk::GeomKind;

namespace {

const tk::GeometryModel* model() {
    tk::GeometryModule* g = tk::geometry_module();
    return g ? &g->model() : nullptr;
}

bool is_sized(GeomKind kind) {
    return kind == GeomKind::Volume || kind == GeomKind::Surface || kind == GeomKind::Curve;
}

// Through the guard: `answer(resolved)` for a volume, surface or curve that exists, else `fail`.
template <class T, class F>
T on_resolved(const char* name, const std::string& type, int id, bool requested, T fail,
              F&& answer) {
    return tk::guarded(name, fail, [&]() -> T {
        const auto kind = tk::parse_kind(type);
        if (!kind)
            return fail;
        const auto r = requested ? ms::resolve_requested(*kind, id) : ms::resolve(*kind, id);
        return r ? T(answer(*r)) : fail;
    });
}

// Through the guard: `answer(kind)` for a volume, surface or curve that exists, else `fail`.
template <class T, class F>
T on_sized(const char* name, const std::string& type, int id, T fail, F&& answer) {
    return tk::guarded(name, fail, [&]() -> T {
        const auto kind = tk::parse_kind(type);
        const tk::GeometryModel* m = model();
        if (!kind || !m || !is_sized(*kind) || !m->exists(*kind, id))
            return fail;
        return T(answer(*kind));
    });
}

bool curve_exists(int id) {
    const tk::GeometryModel* m = model();
    return m && m->exists(GeomKind::Curve, id);
}

// Through the guard: `answer(lengths)` of the intervals of a curve that exists, from the vertex
// its bias starts at; else `fail`.
template <class T, class F> T on_intervals(const char* name, int curve_id, T fail, F&& answer) {
    return tk::guarded(name, fail, [&]() -> T {
        const std::vector<double> l = ms::interval_lengths(curve_id);
        return l.empty() ? fail : T(answer(l));
    });
}

const ms::SizingRecord* curve_record(int curve_id) {
    return ms::record_of(GeomKind::Curve, curve_id);
}

ms::BiasType bias_of(int curve_id) {
    const ms::SizingRecord* r = curve_record(curve_id);
    return r ? r->bias : ms::BiasType::None;
}

// The first and last interval of the progression that starts at the curve's start (`second`:
// the one that ends at its end, for a dual bias; a single progression is both).
double ratio(const std::vector<double>& l, int curve_id, bool second, bool last_over_first) {
    std::size_t from = 0, to = l.size() - 1;
    if (bias_of(curve_id) == ms::BiasType::DualBias) {
        const std::size_t middle = (l.size() - 1) / 2;
        from = second ? l.size() - 1 - middle : 0;
        to = second ? l.size() - 1 : middle;
    } else if (second) {
        return 1.0;
    }
    if (l[from] <= 0 || l[to] <= 0)
        return 0.0;
    return last_over_first ? l[to] / l[from] : l[from] / l[to];
}

std::vector<EntityKey> keys_of(GeomKind kind, const std::vector<int>& ids) {
    std::vector<EntityKey> keys;
    for (int id : ids)
        keys.push_back({kind, id});
    return keys;
}

int clamp_count(double n) {
    if (!(n > 0))
        return 0;
    return n >= INT_MAX ? INT_MAX : std::max(1, static_cast<int>(std::lround(n)));
}

} // namespace

namespace TarvoInterface {

// ---- Sizes and intervals ------------------------------------------------------------------------

// A meshed curve answers the edges it has (the mesher may have added one so a surface could be
// paved); anything else the interval count the sizing resolves.
int get_mesh_intervals(const std::string& geometry_type, int entity_id) {
    if (tk::parse_kind(geometry_type) == GeomKind::Curve)
        if (const auto* m = tarvo::kernel::mesh::mesh_module())
            if (const auto* piece = m->state().piece({1, entity_id}))
                return piece->count(tarvo::kernel::mesh::ElemKind::Edge);
    return on_resolved("get_mesh_intervals", geometry_type, entity_id, false, 0,
                       [](const ms::Resolved& r) { return r.intervals; });
}

double get_mesh_size(const std::string& geometry_type, int entity_id) {
    return on_resolved("get_mesh_size", geometry_type, entity_id, false, 0.0,
                       [](const ms::Resolved& r) { return r.size; });
}

double get_requested_mesh_size(const std::string& geometry_type, int id) {
    return on_resolved("get_requested_mesh_size", geometry_type, id, true, 0.0,
                       [](const ms::Resolved& r) { return r.size; });
}

int get_requested_mesh_intervals(const std::string& geometry_type, int entity_id) {
    return on_resolved("get_requested_mesh_intervals", geometry_type, entity_id, true, 0,
                       [](const ms::Resolved& r) { return r.intervals; });
}

int has_valid_size(const std::string& geometry_type, int entity_id) {
    return on_resolved("has_valid_size", geometry_type, entity_id, false, 0,
                       [](const ms::Resolved& r) { return r.size_type != ms::SizeType::NotSet; });
}

std::string get_mesh_interval_firmness(const std::string& geometry_type, int entity_id) {
    return on_resolved(
        "get_mesh_interval_firmness", geometry_type, entity_id, false, std::string(),
        [](const ms::Resolved& r) { return ms::firmness_word(r.interval_firmness); });
}

std::string get_requested_mesh_interval_firmness(const std::string& geometry_type, int entity_id) {
    return on_resolved(
        "get_requested_mesh_interval_firmness", geometry_type, entity_id, true, std::string(),
        [](const ms::Resolved& r) { return ms::firmness_word(r.interval_firmness); });
}

std::string get_mesh_size_type(const std::string& geometry_type, int entity_id) {
    return on_resolved("get_mesh_size_type", geometry_type, entity_id, false, std::string(),
                       [](const ms::Resolved& r) { return ms::size_type_word(r.size_type); });
}

std::string get_requested_mesh_size_type(const std::string& geometry_type, int entity_id) {
    return on_resolved("get_requested_mesh_size_type", geometry_type, entity_id, true,
                       std::string(),
                       [](const ms::Resolved& r) { return ms::size_type_word(r.size_type); });
}

// The automatic size is computed from the live model whenever it is asked, so it is never stale.
bool auto_size_needs_to_be_calculated() {
    return false;
}

double get_default_auto_size() {
    return tk::guarded("get_default_auto_size", 0.0, [] { return ms::model_auto_size(); });
}

double get_auto_size(const std::string& geometry_type, const std::vector<int>& entity_id_list,
                     double size) {
    return tk::guarded("get_auto_size", 0.0, [&]() -> double {
        const auto kind = tk::parse_kind(geometry_type);
        if (!kind || !(size >= 1 && size <= 10))
            return 0.0;
        return ms::auto_size(keys_of(*kind, entity_id_list), size);
    });
}

// Elements of one kind that the listed volumes (hex, tet) or surfaces (quad, tri) would get at
// the automatic size of `auto_factor`: their measure over that of one element of that size.
int get_element_budget(const std::string& element_type, const std::vector<int>& entity_id_list,
                       int auto_factor) {
    return tk::guarded("get_element_budget", 0, [&]() -> int {
        std::string type;
        for (char ch : element_type)
            if (std::isalpha(static_cast<unsigned char>(ch)))
                type += static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
        const tk::GeometryModel* m = model();
        const bool solid = type == "hex" || type == "tet";
        if (!m || !(solid || type == "quad" || type == "tri") || auto_factor < 1 ||
            auto_factor > 10)
            return 0;
        const GeomKind kind = solid ? GeomKind::Volume : GeomKind::Surface;
        double measure = 0;
        for (int id : entity_id_list)
            if (m->exists(kind, id))
                measure += solid ? m->volume_measure(kind, id) : m->area_measure(kind, id)[0];
        const double h = ms::auto_size(keys_of(kind, entity_id_list), auto_factor);
        if (!(h > 0))
            return 0;
        // Equilateral elements of edge h.
        const double element = type == "hex"    ? h * h * h
                               : type == "tet"  ? h * h * h / (6 * std::sqrt(2.0))
                               : type == "quad" ? h * h
                                                : h * h * std::sqrt(3.0) / 4;
        return clamp_count(measure / element);
    });
}

// ---- Sizing functions: this kernel has none
// ------------------------------------------------------

std::string get_exodus_sizing_function_variable_name() {
    return {};
}
std::string get_exodus_sizing_function_file_name() {
    return {};
}
std::string get_sizing_function_name(const std::string&, int) {
    return {};
}
bool exodus_sizing_function_file_exists() {
    return false;
}
bool get_vol_sphere_params(const std::vector<int>&, int&, int&, double&, double&, int&) {
    return false;
}

// ---- Curve bias ---------------------------------------------------------------------------------

std::string get_curve_bias_type(int curve_id) {
    return tk::guarded("get_curve_bias_type", std::string(),
                       [&] { return std::string(ms::bias_type_word(bias_of(curve_id))); });
}

double get_curve_bias_geometric_factor(int curve_id) {
    return tk::guarded("get_curve_bias_geometric_factor", 0.0, [&] {
        const ms::SizingRecord* r = curve_record(curve_id);
        return r ? r->bias_factor : curve_exists(curve_id) ? 1.0 : 0.0;
    });
}

// The factor of the second half of a dual bias, which shrinks towards the curve's end; 1 for a
// single progression.
double get_curve_bias_geometric_factor2(int curve_id) {
    return tk::guarded("get_curve_bias_geometric_factor2", 0.0, [&] {
        const ms::SizingRecord* r = curve_record(curve_id);
        if (!r)
            return curve_exists(curve_id) ? 1.0 : 0.0;
        return r->bias == ms::BiasType::DualBias ? 1.0 / r->bias_factor : 1.0;
    });
}

double get_curve_bias_first_interval_length(int curve_id) {
    return on_intervals("get_curve_bias_first_interval_length", curve_id, 0.0,
                        [](const std::vector<double>& l) { return l.front(); });
}

double get_curve_bias_first_interval_fraction(int curve_id) {
    return on_intervals("get_curve_bias_first_interval_fraction", curve_id, 0.0,
                        [](const std::vector<double>& l) {
                            double sum = 0;
                            for (double x : l)
                                sum += x;
                            return sum > 0 ? l.front() / sum : 0.0;
                        });
}

double get_curve_bias_fine_size(int curve_id) {
    return on_intervals(
        "get_curve_bias_fine_size", curve_id, 0.0,
        [](const std::vector<double>& l) { return *std::min_element(l.begin(), l.end()); });
}

double get_curve_bias_coarse_size(int curve_id) {
    return on_intervals(
        "get_curve_bias_coarse_size", curve_id, 0.0,
        [](const std::vector<double>& l) { return *std::max_element(l.begin(), l.end()); });
}

double get_curve_bias_first_last_ratio1(int curve_id) {
    return on_intervals(
        "get_curve_bias_first_last_ratio1", curve_id, 0.0,
        [&](const std::vector<double>& l) { return ratio(l, curve_id, false, false); });
}

double get_curve_bias_first_last_ratio2(int curve_id) {
    return on_intervals(
        "get_curve_bias_first_last_ratio2", curve_id, 0.0,
        [&](const std::vector<double>& l) { return ratio(l, curve_id, true, false); });
}

double get_curve_bias_last_first_ratio1(int curve_id) {
    return on_intervals(
        "get_curve_bias_last_first_ratio1", curve_id, 0.0,
        [&](const std::vector<double>& l) { return ratio(l, curve_id, false, true); });
}

double get_curve_bias_last_first_ratio2(int curve_id) {
    return on_intervals(
        "get_curve_bias_last_first_ratio2", curve_id, 0.0,
        [&](const std::vector<double>& l) { return ratio(l, curve_id, true, true); });
}

bool get_curve_bias_from_start(int curve_id, bool& value) {
    return tk::guarded("get_curve_bias_from_start", false, [&] {
        if (bias_of(curve_id) == ms::BiasType::None)
            return false;
        value = !ms::curve_plan(curve_id).from_end;
        return true;
    });
}

bool get_curve_bias_from_start_set(int curve_id) {
    const ms::SizingRecord* r = curve_record(curve_id);
    return r && r->bias == ms::BiasType::Bias && r->bias_start_vertex != 0;
}

// The vertex the bias grows from: the one given, else the curve's first; 0 without a bias.
int get_curve_bias_start_vertex_id(int curve_id) {
    return tk::guarded("get_curve_bias_start_vertex_id", -1, [&] {
        int first = 0, last = 0;
        if (!ms::curve_ends(curve_id, first, last))
            return -1;
        const ms::SizingRecord* r = curve_record(curve_id);
        if (!r || r->bias == ms::BiasType::None)
            return 0;
        return r->bias_start_vertex != 0 ? r->bias_start_vertex : first;
    });
}

double get_curve_mesh_scheme_curvature(int) {
    return 0.0;
}
bool get_curve_mesh_scheme_stretch_values(int, double&, double&, double&, bool&, int&) {
    return false;
}
std::vector<double> get_curve_mesh_scheme_pinpoint_locations(int) {
    return {};
}

// ---- Schemes ------------------------------------------------------------------------------------

// A curve's scheme is how its intervals are spaced: "equal", "bias" or "dualbias".
std::string get_mesh_scheme(const std::string& geometry_type, int entity_id) {
    return on_sized("get_mesh_scheme", geometry_type, entity_id, std::string(),
                    [&](GeomKind kind) -> std::string {
                        if (kind != GeomKind::Curve)
                            return ms::scheme_word(ms::scheme_of(kind, entity_id));
                        const ms::BiasType b = bias_of(entity_id);
                        return b == ms::BiasType::None ? "equal" : ms::bias_type_word(b);
                    });
}

std::string get_mesh_scheme_firmness(const std::string& geometry_type, int entity_id) {
    return on_sized(
        "get_mesh_scheme_firmness", geometry_type, entity_id, std::string(), [&](GeomKind kind) {
            const bool given = kind == GeomKind::Curve
                                   ? bias_of(entity_id) != ms::BiasType::None
                                   : ms::scheme_of(kind, entity_id) != ms::Scheme::Default;
            return ms::firmness_word(given ? ms::Firmness::Hard : ms::Firmness::Limp);
        });
}

// Smoothing has one scheme unless `smooth` is told another.
std::string get_smooth_scheme(const std::string& geometry_type, int entity_id) {
    return on_sized("get_smooth_scheme", geometry_type, entity_id, std::string(),
                    [](GeomKind kind) {
                        return kind == GeomKind::Curve ? std::string() : std::string("laplacian");
                    });
}

// ---- Mesher settings ----------------------------------------------------------------------------

bool get_tetmesh_proximity_flag(int) {
    return false;
}
int get_tetmesh_proximity_layers(int) {
    return 0;
}
double get_mesh_geometry_approximation_angle(const std::string&, int) {
    return 0.0;
}

double get_trimesh_surface_gradation() {
    return ms::trimesh_gradation();
}
// One gradation governs the triangles of surfaces and of volume boundaries.
double get_trimesh_volume_gradation() {
    return ms::trimesh_gradation();
}

double get_tetmesh_growth_factor(int volume_id) {
    const tk::GeometryModel* m = model();
    return m && m->exists(GeomKind::Volume, volume_id) ? ms::tetmesh_growth() : 0.0;
}

} // namespace TarvoInterface
