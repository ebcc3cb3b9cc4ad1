// Public geometry queries: read-only answers from the live GeometryModel.
//
// Conventions (see also docs in the kernel README):
// - An unknown type or id answers the failure value (false, 0, empty, zeros) without an error
//   line: monitors ask about entities that may just have been deleted.
// - Each function looks the entity up in the model, runs through the kernel's guard (an
//   exception of the geometry engine becomes one error line and the failure value), and leaves
//   the geometry to the module's measures (GeometryMeasures.h), which also say what each answer
//   means; what is left here is the shape of the public answer.
//
// Threading: kernel thread only, like the model.
#include "core/EntityCatalog.h"
#include "core/EntityList.h"
#include "core/Guard.h"
#include "core/Session.h"
#include "geometry/GeometryMeasures.h"
#include "geometry/GeometryModule.h"
#include "tarvo/TarvoInterface.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <optional>
#include <set>
#include <sstream>

namespace tk = tarvo::kernel;
using tk::GeometryModel;
using tk::GeomKind;

namespace {

const GeometryModel* model() {
    auto* m = tk::geometry_module();
    return m ? &m->model() : nullptr;
}

// Runs a query through the kernel's guard: an exception becomes one error line and `fail`.
template <class T, class F> T query(const char* name, T fail, F&& body) {
    return tk::guarded(name, std::move(fail), std::forward<F>(body));
}

// The kind of (type, id) when that entity exists.
std::optional<GeomKind> existing_kind(const std::string& type, int id) {
    const GeometryModel* m = model();
    auto kind = tk::parse_kind(type);
    if (!m || !kind || !m->exists(*kind, id))
        return std::nullopt;
    return kind;
}

TopoDS_Shape shape_of(GeomKind kind, int id) {
    const GeometryModel* m = model();
    if (!m || !m->exists(kind, id))
        return {};
    return m->shape(kind, id);
}

// Through the guard: `answer(model)` while the geometry module runs, else `fail`.
template <class T, class F> T on_model(const char* name, T fail, F&& answer) {
    return query(name, fail, [&]() -> T {
        const GeometryModel* m = model();
        return m ? T(answer(*m)) : fail;
    });
}

// Through the guard: `answer(kind)` for an entity (type, id) that exists, else `fail`.
template <class T, class F>
T on_entity(const char* name, const std::string& type, int id, T fail, F&& answer) {
    return query(name, fail, [&]() -> T {
        const auto kind = existing_kind(type, id);
        return kind ? T(answer(*kind)) : fail;
    });
}

// Through the guard: `answer(shape)` for an entity (kind, id) that exists, else `fail`.
template <class T, class F>
T on_shape(const char* name, GeomKind kind, int id, T fail, F&& answer) {
    return query(name, fail, [&]() -> T {
        const TopoDS_Shape s = shape_of(kind, id);
        return s.IsNull() ? fail : T(answer(s));
    });
}

std::vector<int> rel(GeomKind source, int id, GeomKind target) {
    const GeometryModel* m = model();
    return m ? m->relatives(source, id, target) : std::vector<int>{};
}

std::array<double, 3> xyz(const gp_Pnt& p) {
    return {p.X(), p.Y(), p.Z()};
}

} // namespace

namespace TarvoInterface {

bool is_visible(const std::string& geometry_type, int entity_id) {
    return on_entity("is_visible", geometry_type, entity_id, false, [&](GeomKind kind) {
        const auto* a = model()->attributes(kind, entity_id);
        return a ? a->visible : true;
    });
}

bool is_virtual(const std::string&, int) {
    return false;
}
bool contains_virtual(const std::string&, int) {
    return false;
}

int get_common_curve_id(int surface_1_id, int surface_2_id) {
    return on_model("get_common_curve_id", 0, [&](const GeometryModel& m) {
        return tk::first_common_relative(m, GeomKind::Surface, surface_1_id, surface_2_id,
                                         GeomKind::Curve);
    });
}

int get_common_vertex_id(int curve_1_id, int curve_2_id) {
    return on_model("get_common_vertex_id", 0, [&](const GeometryModel& m) {
        return tk::first_common_relative(m, GeomKind::Curve, curve_1_id, curve_2_id,
                                         GeomKind::Vertex);
    });
}

std::string get_merge_setting(const std::string& geometry_type, int entity_id) {
    return existing_kind(geometry_type, entity_id) ? std::string("auto") : std::string();
}

std::string get_curve_type(int curve_id) {
    return on_shape("get_curve_type", GeomKind::Curve, curve_id, std::string(),
                    tk::curve_type_name);
}

std::string get_surface_type(int surface_id) {
    return on_shape("get_surface_type", GeomKind::Surface, surface_id, std::string(),
                    tk::surface_type_name);
}

std::array<double, 3> get_surface_centroid(int surface_id) {
    return on_shape("get_surface_centroid", GeomKind::Surface, surface_id, std::array<double, 3>{},
                    [&](const TopoDS_Shape&) {
                        const auto a = model()->area_measure(GeomKind::Surface, surface_id);
                        return std::array<double, 3>{a[1], a[2], a[3]};
                    });
}

std::array<double, 3> get_surface_normal(int surface_id) {
    return on_shape(
        "get_surface_normal", GeomKind::Surface, surface_id, std::array<double, 3>{},
        [&](const TopoDS_Shape&) {
            const auto n = tk::outward_normal(*model(), surface_id);
            return n ? std::array<double, 3>{n->X(), n->Y(), n->Z()} : std::array<double, 3>{};
        });
}

std::string get_surface_sense(int surface_id) {
    return on_shape("get_surface_sense", GeomKind::Surface, surface_id, std::string(),
                    [&](const TopoDS_Shape&) {
                        switch (tk::face_sense(*model(), surface_id)) {
                        case tk::FaceSense::Both:
                            return "both";
                        case tk::FaceSense::Reverse:
                            return "reverse";
                        case tk::FaceSense::Forward:
                            break;
                        }
                        return "forward";
                    });
}

std::vector<std::string> get_entity_modeler_engine(const std::string& geometry_type,
                                                   int entity_id) {
    if (!existing_kind(geometry_type, entity_id))
        return {};
    return {"OpenCASCADE"};
}

std::string get_default_geometry_engine() {
    return "OpenCASCADE";
}

std::array<double, 10> get_bounding_box(const std::string& geometry_type, int entity_id) {
    return on_entity(
        "get_bounding_box", geometry_type, entity_id, tk::BoxNumbers{},
        [&](GeomKind kind) { return tk::bounding_box_numbers(*model(), kind, entity_id); });
}

std::array<double, 10> get_total_bounding_box(const std::string& geometry_type,
                                              const std::vector<int>& entity_list) {
    return query("get_total_bounding_box", std::array<double, 10>{}, [&] {
        const auto kind = tk::parse_kind(geometry_type);
        if (!kind || !model())
            return std::array<double, 10>{};
        return tk::total_box_numbers(*model(), *kind, entity_list);
    });
}

std::array<double, 15> get_tight_bounding_box(const std::string& geometry_type,
                                              const std::vector<int>& entity_list) {
    return on_model(
        "get_tight_bounding_box", std::array<double, 15>{}, [&](const GeometryModel& m) {
            const auto kind = tk::parse_kind(geometry_type);
            return kind ? tk::tight_box(m, *kind, entity_list) : std::array<double, 15>{};
        });
}

double get_total_volume(const std::vector<int>& volume_list) {
    return on_model("get_total_volume", 0.0,
                    [&](const GeometryModel& m) { return tk::total_volume(m, volume_list); });
}

std::string get_entity_name(const std::string& entity_type, int entity_id, bool name_only) {
    // Containers (groups, blocks, sets) are named by the module that owns them.
    if (!tk::parse_kind(entity_type)) {
        return query("get_entity_name", std::string(), [&] {
            const std::string type = tk::canonical_entity_type(entity_type);
            const tk::EntityCatalog* c = tk::catalog_for(type);
            if (!c || !c->exists(type, entity_id))
                return std::string();
            std::string name = c->name_of(type, entity_id);
            if (name.empty() && !name_only)
                name = static_cast<char>(std::toupper(static_cast<unsigned char>(type[0]))) +
                       type.substr(1) + " " + std::to_string(entity_id);
            return name;
        });
    }
    return on_entity("get_entity_name", entity_type, entity_id, std::string(), [&](GeomKind kind) {
        std::string name = model()->name_of(kind, entity_id);
        if (name.empty() && !name_only) {
            name = tk::kind_name(kind);
            name[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(name[0])));
            name += " " + std::to_string(entity_id);
        }
        return name;
    });
}

bool set_entity_name(const std::string& entity_type, int entity_id, const std::string& new_name) {
    return query("set_entity_name", false, [&] {
        auto* m = tk::geometry_module();
        auto kind = tk::parse_kind(entity_type);
        if (!m || !kind || !m->model().exists(*kind, entity_id))
            return false;
        if (new_name.empty() || new_name.find_first_of(" \t*?") != std::string::npos)
            return false;
        return m->set_name({{*kind, entity_id}}, new_name);
    });
}

std::array<double, 4> get_entity_color(const std::string& entity_type, int entity_id) {
    return on_entity("get_entity_color", entity_type, entity_id, std::array<double, 4>{},
                     [&](GeomKind kind) { return tk::display_color(*model(), kind, entity_id); });
}

int get_entity_color_index(const std::string& entity_type, int entity_id) {
    return on_entity("get_entity_color_index", entity_type, entity_id, -1, [&](GeomKind) {
        return tk::nearest_palette_index(get_entity_color(entity_type, entity_id));
    });
}

bool is_multi_volume(int body_id) {
    const GeometryModel* m = model();
    if (!m || !m->exists(GeomKind::Body, body_id))
        return false;
    return m->body(body_id)->volumes.size() > 1;
}

bool is_sheet_body(int volume_id) {
    // Volumes are solids here, so a volume is never a sheet. A sheet body has no volume: asked
    // with the id of a body, the answer says whether that body is a sheet.
    const GeometryModel* m = model();
    if (!m || m->exists(GeomKind::Volume, volume_id))
        return false;
    return m->exists(GeomKind::Body, volume_id) && m->body(volume_id)->is_sheet();
}

bool is_periodic(const std::string& geometry_type, int entity_id) {
    return on_entity("is_periodic", geometry_type, entity_id, false, [&](GeomKind kind) {
        return tk::is_periodic(model()->shape(kind, entity_id), kind);
    });
}

bool is_surface_planar(int surface_id) {
    return on_shape("is_surface_planar", GeomKind::Surface, surface_id, false, tk::is_planar);
}

bool is_surface_planer(int surface_id) {
    return is_surface_planar(surface_id);
}

bool is_merged(const std::string& geometry_type, int entity_id) {
    const auto kind = existing_kind(geometry_type, entity_id);
    if (!kind || *kind == GeomKind::Body || *kind == GeomKind::Volume)
        return false;
    return rel(*kind, entity_id, GeomKind::Volume).size() > 1;
}

std::vector<int> get_relatives(const std::string& source_geometry_type, int source_id,
                               const std::string& target_geom_type) {
    return query("get_relatives", std::vector<int>{}, [&] {
        auto s = tk::parse_kind(source_geometry_type);
        auto t = tk::parse_kind(target_geom_type);
        if (!s || !t || !model())
            return std::vector<int>{};
        return model()->relatives(*s, source_id, *t);
    });
}

std::vector<int> get_adjacent_surfaces(const std::string& geometry_type, int entity_id) {
    return on_entity(
        "get_adjacent_surfaces", geometry_type, entity_id, std::vector<int>{},
        [&](GeomKind kind) { return tk::adjacent(*model(), kind, entity_id, GeomKind::Surface); });
}

std::vector<int> get_adjacent_volumes(const std::string& geometry_type, int entity_id) {
    return on_entity(
        "get_adjacent_volumes", geometry_type, entity_id, std::vector<int>{},
        [&](GeomKind kind) { return tk::adjacent(*model(), kind, entity_id, GeomKind::Volume); });
}

std::vector<int> get_entities(const std::string& entity_type) {
    return query("get_entities", std::vector<int>{}, [&] {
        auto kind = tk::parse_kind(entity_type);
        if (kind && model())
            return model()->ids(*kind);
        std::string canonical = tk::canonical_entity_type(entity_type);
        if (auto* catalog = tk::catalog_for(canonical))
            return catalog->all_ids(canonical);
        return std::vector<int>{};
    });
}

std::vector<int> get_list_of_free_ref_entities(const std::string& geometry_type) {
    return query("get_list_of_free_ref_entities", std::vector<int>{}, [&] {
        auto kind = tk::parse_kind(geometry_type);
        if (!kind || !model())
            return std::vector<int>{};
        return model()->ids_outside_volumes(*kind);
    });
}

int get_owning_body(const std::string& geometry_type, int entity_id) {
    return on_entity("get_owning_body", geometry_type, entity_id, 0, [&](GeomKind kind) {
        const auto bodies = model()->bodies_of(kind, entity_id);
        return bodies.empty() ? 0 : bodies.front();
    });
}

int get_owning_volume(const std::string& geometry_type, int entity_id) {
    return on_entity("get_owning_volume", geometry_type, entity_id, 0, [&](GeomKind kind) {
        if (kind == GeomKind::Body)
            return 0;
        const auto vols = rel(kind, entity_id, GeomKind::Volume);
        return vols.empty() ? 0 : vols.front();
    });
}

int get_owning_volume_by_name(const std::string& entity_name) {
    return on_model("get_owning_volume_by_name", 0,
                    [&](const GeometryModel& m) { return tk::volume_of_name(m, entity_name); });
}

double get_curve_length(int curve_id) {
    return on_model("get_curve_length", 0.0,
                    [&](const GeometryModel& m) { return m.curve_length(curve_id); });
}

double get_arc_length(int curve_id) {
    return get_curve_length(curve_id);
}

double get_distance_from_curve_start(double x_coordinate, double y_coordinate, double z_coordinate,
                                     int curve_id) {
    return on_shape("get_distance_from_curve_start", GeomKind::Curve, curve_id, 0.0,
                    [&](const TopoDS_Shape& edge) {
                        return tk::distance_from_start(
                            edge, gp_Pnt(x_coordinate, y_coordinate, z_coordinate));
                    });
}

double get_curve_radius(int curve_id) {
    return on_shape("get_curve_radius", GeomKind::Curve, curve_id, 0.0, tk::curve_radius);
}

std::array<double, 3> get_curve_center(int curve_id) {
    return on_shape("get_curve_center", GeomKind::Curve, curve_id, std::array<double, 3>{},
                    [](const TopoDS_Shape& edge) { return xyz(tk::curve_center(edge)); });
}

double get_surface_area(int surface_id) {
    return on_model("get_surface_area", 0.0, [&](const GeometryModel& m) {
        return m.area_measure(GeomKind::Surface, surface_id)[0];
    });
}

double get_volume_area(int volume_id) {
    return on_model("get_volume_area", 0.0, [&](const GeometryModel& m) {
        return m.volume_measure(GeomKind::Volume, volume_id);
    });
}

double get_hydraulic_radius_surface_area(int surface_id) {
    return on_shape(
        "get_hydraulic_radius_surface_area", GeomKind::Surface, surface_id, 0.0,
        [&](const TopoDS_Shape&) { return tk::surface_hydraulic_radius(*model(), surface_id); });
}

double get_hydraulic_radius_volume_area(int volume_id) {
    return on_shape(
        "get_hydraulic_radius_volume_area", GeomKind::Volume, volume_id, 0.0,
        [&](const TopoDS_Shape&) { return tk::volume_hydraulic_radius(*model(), volume_id); });
}

std::array<double, 3> get_center_point(const std::string& entity_type, int entity_id) {
    return on_entity("get_center_point", entity_type, entity_id, std::array<double, 3>{},
                     [&](GeomKind kind) { return xyz(tk::box_center(*model(), kind, entity_id)); });
}

int get_valence(int vertex_id) {
    return static_cast<int>(rel(GeomKind::Vertex, vertex_id, GeomKind::Curve).size());
}

double get_distance_between(int vertex_id_1, int vertex_id_2) {
    return query("get_distance_between", 0.0, [&] {
        const TopoDS_Shape a = shape_of(GeomKind::Vertex, vertex_id_1);
        const TopoDS_Shape b = shape_of(GeomKind::Vertex, vertex_id_2);
        return a.IsNull() || b.IsNull() ? 0.0 : tk::vertex_distance(a, b);
    });
}

int is_point_contained(const std::string& geometry_type, int entity_id,
                       const std::array<double, 3>& xyz_point) {
    return on_entity("is_point_contained", geometry_type, entity_id, -1, [&](GeomKind kind) {
        const gp_Pnt p(xyz_point[0], xyz_point[1], xyz_point[2]);
        return static_cast<int>(tk::point_place(*model(), kind, entity_id, p));
    });
}

void print_surface_summary_stats() {
    query("print_surface_summary_stats", 0, [&] {
        const GeometryModel* m = model();
        if (!m)
            return 0;
        auto ids = m->ids(GeomKind::Surface);
        double total = 0, lo = 1e300, hi = 0;
        std::map<std::string, int> types;
        for (int id : ids) {
            double a = get_surface_area(id);
            total += a;
            lo = std::min(lo, a);
            hi = std::max(hi, a);
            ++types[get_surface_type(id)];
        }
        std::ostringstream out;
        out << "Surfaces: " << ids.size();
        if (!ids.empty())
            out << ", area total " << total << ", min " << lo << ", max " << hi;
        for (auto& [t, n] : types)
            out << "\n  " << t << ": " << n;
        tk::print(out.str());
        return 0;
    });
}

void print_volume_summary_stats() {
    query("print_volume_summary_stats", 0, [&] {
        const GeometryModel* m = model();
        if (!m)
            return 0;
        auto ids = m->ids(GeomKind::Volume);
        double total = 0, lo = 1e300, hi = 0;
        for (int id : ids) {
            double v = get_volume_area(id);
            total += v;
            lo = std::min(lo, v);
            hi = std::max(hi, v);
        }
        std::ostringstream out;
        out << "Volumes: " << ids.size() << " in " << m->count(GeomKind::Body) << " bodies";
        if (!ids.empty())
            out << ", volume total " << total << ", min " << lo << ", max " << hi;
        tk::print(out.str());
        return 0;
    });
}

int get_volume_count() {
    return model() ? static_cast<int>(model()->count(GeomKind::Volume)) : 0;
}
int get_body_count() {
    return model() ? static_cast<int>(model()->count(GeomKind::Body)) : 0;
}
int get_surface_count() {
    return model() ? static_cast<int>(model()->count(GeomKind::Surface)) : 0;
}
int get_vertex_count() {
    return model() ? static_cast<int>(model()->count(GeomKind::Vertex)) : 0;
}
int get_curve_count() {
    return model() ? static_cast<int>(model()->count(GeomKind::Curve)) : 0;
}

int get_curve_count_in_volumes(const std::vector<int>& target_volume_ids) {
    std::set<int> curves;
    for (int v : target_volume_ids)
        for (int c : rel(GeomKind::Volume, v, GeomKind::Curve))
            curves.insert(c);
    return static_cast<int>(curves.size());
}

bool is_catia_engine_available() {
    return false;
}
bool is_acis_engine_available() {
    return false;
}
bool is_opencascade_engine_available() {
    return true;
}

double evaluate_exterior_angle_at_curve(int curve_id, int volume_id) {
    return on_model("evaluate_exterior_angle_at_curve", 0.0, [&](const GeometryModel& m) {
        return tk::exterior_angle(m, curve_id, volume_id);
    });
}

std::vector<int> evaluate_exterior_angle(const std::vector<int>& curve_list, double test_angle) {
    return on_model("evaluate_exterior_angle", std::vector<int>{}, [&](const GeometryModel& m) {
        return tk::curves_with_angle_below(m, curve_list, test_angle);
    });
}

} // namespace TarvoInterface
