// Public geometry queries: read-only answers from the live GeometryModel.
//
// Conventions (see also docs in the kernel README):
// - An unknown type or id answers the failure value (false, 0, empty, zeros) without an error
//   line: monitors ask about entities that may just have been deleted.
// - Exceptions of the geometry engine are caught here, printed and counted.
// - Types of curves and surfaces use the names that Gmsh gives them (one table each, below).
// - get_center_point is the centre of the entity's bounding box (a vertex: its point).
// - evaluate_exterior_angle_at_curve is the angle between the two surfaces at the curve,
//   measured through the material of the volume: 90 at a convex box edge, 270 at a re-entrant
//   one.
#include "core/EntityCatalog.h"
#include "core/EntityList.h"
#include "core/Guard.h"
#include "core/Session.h"
#include "geometry/GeometryInternal.h"
#include "geometry/GeometryModule.h"
#include "tarvo/TarvoInterface.h"

#include <BRepAdaptor_Curve.hxx>
#include <BRepAdaptor_Surface.hxx>
#include <BRepBndLib.hxx>
#include <BRepBuilderAPI_MakeVertex.hxx>
#include <BRepClass3d_SolidClassifier.hxx>
#include <BRepExtrema_DistShapeShape.hxx>
#include <BRepGProp.hxx>
#include <BRepLProp_SLProps.hxx>
#include <BRep_Tool.hxx>
#include <Bnd_Box.hxx>
#include <Bnd_OBB.hxx>
#include <GCPnts_AbscissaPoint.hxx>
#include <GProp_GProps.hxx>
#include <GeomAPI_ProjectPointOnSurf.hxx>
#include <GeomLib_IsPlanarSurface.hxx>
#include <TopExp.hxx>
#include <TopExp_Explorer.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS.hxx>
#include <gp_Circ.hxx>
#include <gp_Elips.hxx>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <map>
#include <optional>
#include <set>
#include <sstream>

using tarvo::kernel::EntityKey;
using tarvo::kernel::GeometryModel;
using tarvo::kernel::GeomKind;

namespace {

const GeometryModel* model() {
    auto* m = tarvo::kernel::geometry_module();
    return m ? &m->model() : nullptr;
}

// Runs a query through the kernel's guard: an exception becomes one error line and `fail`.
template <class T, class F> T query(const char* name, T fail, F&& body) {
    return tarvo::kernel::guarded(name, std::move(fail), std::forward<F>(body));
}

// The shape of (type, id), or a null shape.
TopoDS_Shape shape_of(const std::string& type, int id, GeomKind* kind_out = nullptr) {
    const GeometryModel* m = model();
    auto kind = tarvo::kernel::parse_kind(type);
    if (!m || !kind || !m->exists(*kind, id))
        return {};
    if (kind_out)
        *kind_out = *kind;
    return m->shape(*kind, id);
}

// The kind of (type, id) when that entity exists.
std::optional<GeomKind> existing_kind(const std::string& type, int id) {
    const GeometryModel* m = model();
    auto kind = tarvo::kernel::parse_kind(type);
    if (!m || !kind || !m->exists(*kind, id))
        return std::nullopt;
    return kind;
}

// Boxes and measures come from the model, which keeps them per body: monitors ask for them
// after every task.
Bnd_Box box_of(const std::string& type, int id) {
    auto kind = existing_kind(type, id);
    return kind ? model()->bounding_box(*kind, id) : Bnd_Box();
}

TopoDS_Shape shape_of(GeomKind kind, int id) {
    const GeometryModel* m = model();
    if (!m || !m->exists(kind, id))
        return {};
    return m->shape(kind, id);
}

std::string curve_type_name(GeomAbs_CurveType t) {
    switch (t) {
    case GeomAbs_Line:
        return "Line";
    case GeomAbs_Circle:
        return "Circle";
    case GeomAbs_Ellipse:
        return "Ellipse";
    case GeomAbs_Hyperbola:
        return "Hyperbola";
    case GeomAbs_Parabola:
        return "Parabola";
    case GeomAbs_BezierCurve:
        return "Bezier";
    case GeomAbs_BSplineCurve:
        return "BSpline";
    case GeomAbs_OffsetCurve:
        return "OffsetCurve";
    case GeomAbs_OtherCurve:
        break;
    }
    return "Unknown";
}

std::string surface_type_name(GeomAbs_SurfaceType t) {
    switch (t) {
    case GeomAbs_Plane:
        return "Plane";
    case GeomAbs_Cylinder:
        return "Cylinder";
    case GeomAbs_Cone:
        return "Cone";
    case GeomAbs_Sphere:
        return "Sphere";
    case GeomAbs_Torus:
        return "Torus";
    case GeomAbs_BezierSurface:
        return "Bezier surface";
    case GeomAbs_BSplineSurface:
        return "BSpline surface";
    case GeomAbs_SurfaceOfRevolution:
        return "Surface of Revolution";
    case GeomAbs_SurfaceOfExtrusion:
        return "Surface of Extrusion";
    case GeomAbs_OffsetSurface:
        return "Offset surface";
    case GeomAbs_OtherSurface:
        break;
    }
    return "Unknown";
}

std::array<double, 10> box_numbers(const Bnd_Box& box) {
    std::array<double, 10> out{};
    if (box.IsVoid())
        return out;
    double x0, y0, z0, x1, y1, z1;
    box.Get(x0, y0, z0, x1, y1, z1);
    out = {x0, x1, x1 - x0, y0, y1, y1 - y0, z0, z1, z1 - z0, 0};
    out[9] = std::sqrt(out[2] * out[2] + out[5] * out[5] + out[8] * out[8]);
    return out;
}

std::vector<int> rel(GeomKind source, int id, GeomKind target) {
    const GeometryModel* m = model();
    return m ? m->relatives(source, id, target) : std::vector<int>{};
}

// Outward normal of a face at the point nearest `near`.
bool face_normal(const TopoDS_Face& face, const gp_Pnt& near, gp_Dir& normal, gp_Pnt& at) {
    Handle(Geom_Surface) surf = BRep_Tool::Surface(face);
    GeomAPI_ProjectPointOnSurf proj(near, surf);
    double u, v;
    if (proj.NbPoints() > 0) {
        proj.LowerDistanceParameters(u, v);
    } else {
        BRepAdaptor_Surface a(face);
        u = (a.FirstUParameter() + a.LastUParameter()) / 2;
        v = (a.FirstVParameter() + a.LastVParameter()) / 2;
    }
    BRepAdaptor_Surface adaptor(face);
    BRepLProp_SLProps props(adaptor, u, v, 1, 1e-9);
    if (!props.IsNormalDefined())
        return false;
    normal = props.Normal();
    if (face.Orientation() == TopAbs_REVERSED)
        normal.Reverse();
    at = props.Value();
    return true;
}

// The face of a solid that IsSame as `face`, with the solid's orientation.
TopoDS_Face face_in(const TopoDS_Shape& solid, const TopoDS_Shape& face) {
    for (TopExp_Explorer ex(solid, TopAbs_FACE); ex.More(); ex.Next())
        if (ex.Current().IsSame(face))
            return TopoDS::Face(ex.Current());
    return {};
}

double exterior_angle(int curve_id, int volume_id) {
    TopoDS_Shape edge = shape_of(GeomKind::Curve, curve_id);
    TopoDS_Shape solid = shape_of(GeomKind::Volume, volume_id);
    if (edge.IsNull() || solid.IsNull())
        return 0;
    std::vector<TopoDS_Face> faces;
    for (TopExp_Explorer ex(solid, TopAbs_FACE); ex.More(); ex.Next()) {
        for (TopExp_Explorer ee(ex.Current(), TopAbs_EDGE); ee.More(); ee.Next())
            if (ee.Current().IsSame(edge)) {
                faces.push_back(TopoDS::Face(ex.Current()));
                break;
            }
    }
    if (faces.size() != 2)
        return 0;
    BRepAdaptor_Curve curve(TopoDS::Edge(edge));
    const double mid = (curve.FirstParameter() + curve.LastParameter()) / 2;
    gp_Pnt p;
    gp_Vec tangent;
    curve.D1(mid, p, tangent);
    if (tangent.Magnitude() < 1e-12)
        return 0;
    gp_Vec inward[2];
    gp_Dir normal[2];
    for (int i = 0; i < 2; ++i) {
        gp_Pnt at;
        if (!face_normal(faces[static_cast<std::size_t>(i)], p, normal[i], at))
            return 0;
        TopAbs_Orientation o = TopAbs_FORWARD;
        for (TopExp_Explorer ee(faces[static_cast<std::size_t>(i)], TopAbs_EDGE); ee.More();
             ee.Next())
            if (ee.Current().IsSame(edge)) {
                o = ee.Current().Orientation();
                break;
            }
        gp_Vec t = tangent.Normalized();
        if (o == TopAbs_REVERSED)
            t.Reverse();
        // The face lies to the left of its boundary seen from outside: n x t points into it.
        inward[i] = gp_Vec(normal[i]).Crossed(t);
    }
    double angle = inward[0].Angle(inward[1]) * 180.0 / M_PI;
    const bool convex = inward[1].Dot(gp_Vec(normal[0])) < 1e-12;
    return convex ? angle : 360.0 - angle;
}

const std::array<std::array<double, 3>, 16>& palette() {
    static const std::array<std::array<double, 3>, 16> table = {{
        {0.0, 0.6, 1.0},
        {1.0, 0.5, 0.0},
        {0.2, 0.8, 0.2},
        {0.9, 0.1, 0.1},
        {0.6, 0.4, 0.8},
        {0.6, 0.4, 0.2},
        {1.0, 0.6, 0.8},
        {0.5, 0.5, 0.5},
        {0.8, 0.8, 0.1},
        {0.1, 0.8, 0.8},
        {0.0, 0.0, 0.6},
        {0.0, 0.4, 0.0},
        {0.6, 0.0, 0.0},
        {1.0, 0.84, 0.0},
        {0.75, 0.75, 0.75},
        {1.0, 1.0, 1.0},
    }};
    return table;
}

} // namespace

namespace TarvoInterface {

bool is_visible(const std::string& geometry_type, int entity_id) {
    return query("is_visible", false, [&] {
        GeomKind kind;
        if (shape_of(geometry_type, entity_id, &kind).IsNull())
            return false;
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
    return query("get_common_curve_id", 0, [&] {
        auto a = rel(GeomKind::Surface, surface_1_id, GeomKind::Curve);
        auto b = rel(GeomKind::Surface, surface_2_id, GeomKind::Curve);
        for (int c : a)
            if (std::binary_search(b.begin(), b.end(), c))
                return c;
        return 0;
    });
}

int get_common_vertex_id(int curve_1_id, int curve_2_id) {
    return query("get_common_vertex_id", 0, [&] {
        auto a = rel(GeomKind::Curve, curve_1_id, GeomKind::Vertex);
        auto b = rel(GeomKind::Curve, curve_2_id, GeomKind::Vertex);
        for (int v : a)
            if (std::binary_search(b.begin(), b.end(), v))
                return v;
        return 0;
    });
}

std::string get_merge_setting(const std::string& geometry_type, int entity_id) {
    return shape_of(geometry_type, entity_id).IsNull() ? std::string() : std::string("auto");
}

std::string get_curve_type(int curve_id) {
    return query("get_curve_type", std::string(), [&] {
        TopoDS_Shape s = shape_of(GeomKind::Curve, curve_id);
        if (s.IsNull())
            return std::string();
        return curve_type_name(BRepAdaptor_Curve(TopoDS::Edge(s)).GetType());
    });
}

std::string get_surface_type(int surface_id) {
    return query("get_surface_type", std::string(), [&] {
        TopoDS_Shape s = shape_of(GeomKind::Surface, surface_id);
        if (s.IsNull())
            return std::string();
        return surface_type_name(BRepAdaptor_Surface(TopoDS::Face(s)).GetType());
    });
}

std::array<double, 3> get_surface_centroid(int surface_id) {
    return query("get_surface_centroid", std::array<double, 3>{}, [&] {
        if (!model() || !model()->exists(GeomKind::Surface, surface_id))
            return std::array<double, 3>{};
        const auto a = model()->area_measure(GeomKind::Surface, surface_id);
        return std::array<double, 3>{a[1], a[2], a[3]};
    });
}

std::array<double, 3> get_surface_normal(int surface_id) {
    return query("get_surface_normal", std::array<double, 3>{}, [&] {
        TopoDS_Shape s = shape_of(GeomKind::Surface, surface_id);
        if (s.IsNull())
            return std::array<double, 3>{};
        // Orientation as the surface is used by its (first) volume, so the normal points out.
        TopoDS_Face face = TopoDS::Face(s);
        auto vols = rel(GeomKind::Surface, surface_id, GeomKind::Volume);
        if (!vols.empty()) {
            TopoDS_Face f = face_in(shape_of(GeomKind::Volume, vols.front()), s);
            if (!f.IsNull())
                face = f;
        }
        GProp_GProps p;
        BRepGProp::SurfaceProperties(face, p);
        gp_Dir n;
        gp_Pnt at;
        if (!face_normal(face, p.CentreOfMass(), n, at))
            return std::array<double, 3>{};
        return std::array<double, 3>{n.X(), n.Y(), n.Z()};
    });
}

std::string get_surface_sense(int surface_id) {
    return query("get_surface_sense", std::string(), [&] {
        TopoDS_Shape s = shape_of(GeomKind::Surface, surface_id);
        if (s.IsNull())
            return std::string();
        std::set<TopAbs_Orientation> senses;
        for (int v : rel(GeomKind::Surface, surface_id, GeomKind::Volume)) {
            TopoDS_Face f = face_in(shape_of(GeomKind::Volume, v), s);
            if (!f.IsNull())
                senses.insert(f.Orientation() == s.Orientation() ? TopAbs_FORWARD
                                                                 : TopAbs_REVERSED);
        }
        if (senses.size() > 1)
            return std::string("both");
        if (!senses.empty() && *senses.begin() == TopAbs_REVERSED)
            return std::string("reverse");
        return std::string("forward");
    });
}

std::vector<std::string> get_entity_modeler_engine(const std::string& geometry_type,
                                                   int entity_id) {
    if (shape_of(geometry_type, entity_id).IsNull())
        return {};
    return {"OpenCASCADE"};
}

std::string get_default_geometry_engine() {
    return "OpenCASCADE";
}

std::array<double, 10> get_bounding_box(const std::string& geometry_type, int entity_id) {
    return query("get_bounding_box", std::array<double, 10>{},
                 [&] { return box_numbers(box_of(geometry_type, entity_id)); });
}

std::array<double, 10> get_total_bounding_box(const std::string& geometry_type,
                                              const std::vector<int>& entity_list) {
    return query("get_total_bounding_box", std::array<double, 10>{}, [&] {
        Bnd_Box total;
        for (int id : entity_list) {
            Bnd_Box b = box_of(geometry_type, id);
            if (!b.IsVoid())
                total.Add(b);
        }
        return box_numbers(total);
    });
}

std::array<double, 15> get_tight_bounding_box(const std::string& geometry_type,
                                              const std::vector<int>& entity_list) {
    return query("get_tight_bounding_box", std::array<double, 15>{}, [&] {
        std::array<double, 15> out{};
        std::vector<TopoDS_Shape> shapes;
        for (int id : entity_list) {
            TopoDS_Shape s = shape_of(geometry_type, id);
            if (!s.IsNull())
                shapes.push_back(s);
        }
        if (shapes.empty())
            return out;
        Bnd_OBB obb;
        BRepBndLib::AddOBB(tarvo::kernel::geometry_detail::make_compound(shapes), obb, false, true,
                           false);
        if (obb.IsVoid())
            return out;
        const gp_XYZ ctr = obb.Center();
        const gp_XYZ ax[3] = {obb.XDirection(), obb.YDirection(), obb.ZDirection()};
        out[0] = ctr.X();
        out[1] = ctr.Y();
        out[2] = ctr.Z();
        for (int i = 0; i < 3; ++i)
            for (int j = 0; j < 3; ++j)
                out[static_cast<std::size_t>(3 + 3 * i + j)] = ax[i].Coord(j + 1);
        out[12] = obb.XHSize();
        out[13] = obb.YHSize();
        out[14] = obb.ZHSize();
        return out;
    });
}

double get_total_volume(const std::vector<int>& volume_list) {
    return query("get_total_volume", 0.0, [&] {
        double total = 0;
        std::set<int> seen;
        for (int id : volume_list) {
            if (model() && model()->exists(GeomKind::Volume, id) && seen.insert(id).second)
                total += model()->volume_measure(GeomKind::Volume, id);
        }
        return total;
    });
}

std::string get_entity_name(const std::string& entity_type, int entity_id, bool name_only) {
    return query("get_entity_name", std::string(), [&] {
        auto kind = tarvo::kernel::parse_kind(entity_type);
        if (!kind || !model() || !model()->exists(*kind, entity_id))
            return std::string();
        std::string name = model()->name_of(*kind, entity_id);
        if (name.empty() && !name_only) {
            name = tarvo::kernel::kind_name(*kind);
            name[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(name[0])));
            name += " " + std::to_string(entity_id);
        }
        return name;
    });
}

bool set_entity_name(const std::string& entity_type, int entity_id, const std::string& new_name) {
    return query("set_entity_name", false, [&] {
        auto* m = tarvo::kernel::geometry_module();
        auto kind = tarvo::kernel::parse_kind(entity_type);
        if (!m || !kind || !m->model().exists(*kind, entity_id))
            return false;
        if (new_name.empty() || new_name.find_first_of(" \t*?") != std::string::npos)
            return false;
        return m->set_name({{*kind, entity_id}}, new_name);
    });
}

std::array<double, 4> get_entity_color(const std::string& entity_type, int entity_id) {
    return query("get_entity_color", std::array<double, 4>{}, [&] {
        auto kind = tarvo::kernel::parse_kind(entity_type);
        if (!kind || !model() || !model()->exists(*kind, entity_id))
            return std::array<double, 4>{};
        if (const auto* a = model()->attributes(*kind, entity_id); a && a->has_color)
            return a->color;
        // A surface, curve or vertex without its own colour shows its volume's.
        if (*kind != GeomKind::Volume && *kind != GeomKind::Body) {
            auto vols = model()->relatives(*kind, entity_id, GeomKind::Volume);
            if (!vols.empty())
                return get_entity_color("volume", vols.front());
        }
        const auto& p = palette()[static_cast<std::size_t>((entity_id - 1) % 16)];
        return std::array<double, 4>{p[0], p[1], p[2], 1.0};
    });
}

int get_entity_color_index(const std::string& entity_type, int entity_id) {
    return query("get_entity_color_index", -1, [&] {
        auto kind = tarvo::kernel::parse_kind(entity_type);
        if (!kind || !model() || !model()->exists(*kind, entity_id))
            return -1;
        std::array<double, 4> c = get_entity_color(entity_type, entity_id);
        int best = 0;
        double best_d = 1e300;
        for (std::size_t i = 0; i < palette().size(); ++i) {
            double d = 0;
            for (std::size_t j = 0; j < 3; ++j)
                d += (palette()[i][j] - c[j]) * (palette()[i][j] - c[j]);
            if (d < best_d) {
                best_d = d;
                best = static_cast<int>(i);
            }
        }
        return best;
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
    return query("is_periodic", false, [&] {
        GeomKind kind = GeomKind::Body;
        TopoDS_Shape s = shape_of(geometry_type, entity_id, &kind);
        if (s.IsNull())
            return false;
        if (kind == GeomKind::Surface) {
            BRepAdaptor_Surface a(TopoDS::Face(s));
            return static_cast<bool>(a.IsUPeriodic() || a.IsVPeriodic());
        }
        if (kind == GeomKind::Curve) {
            BRepAdaptor_Curve a(TopoDS::Edge(s));
            return static_cast<bool>(a.IsPeriodic());
        }
        return false;
    });
}

bool is_surface_planar(int surface_id) {
    return query("is_surface_planar", false, [&] {
        TopoDS_Shape s = shape_of(GeomKind::Surface, surface_id);
        if (s.IsNull())
            return false;
        Handle(Geom_Surface) surf = BRep_Tool::Surface(TopoDS::Face(s));
        return static_cast<bool>(GeomLib_IsPlanarSurface(surf, 1e-7).IsPlanar());
    });
}

bool is_surface_planer(int surface_id) {
    return is_surface_planar(surface_id);
}

bool is_merged(const std::string& geometry_type, int entity_id) {
    GeomKind kind = GeomKind::Body;
    if (shape_of(geometry_type, entity_id, &kind).IsNull() || kind == GeomKind::Body ||
        kind == GeomKind::Volume)
        return false;
    return rel(kind, entity_id, GeomKind::Volume).size() > 1;
}

std::vector<int> get_relatives(const std::string& source_geometry_type, int source_id,
                               const std::string& target_geom_type) {
    return query("get_relatives", std::vector<int>{}, [&] {
        auto s = tarvo::kernel::parse_kind(source_geometry_type);
        auto t = tarvo::kernel::parse_kind(target_geom_type);
        if (!s || !t || !model())
            return std::vector<int>{};
        return model()->relatives(*s, source_id, *t);
    });
}

std::vector<int> get_adjacent_surfaces(const std::string& geometry_type, int entity_id) {
    return query("get_adjacent_surfaces", std::vector<int>{}, [&] {
        GeomKind kind = GeomKind::Body;
        if (shape_of(geometry_type, entity_id, &kind).IsNull())
            return std::vector<int>{};
        if (kind != GeomKind::Surface)
            return rel(kind, entity_id, GeomKind::Surface);
        // Surfaces that share a curve with this one.
        std::set<int> out;
        for (int c : rel(GeomKind::Surface, entity_id, GeomKind::Curve))
            for (int s : rel(GeomKind::Curve, c, GeomKind::Surface))
                if (s != entity_id)
                    out.insert(s);
        return std::vector<int>(out.begin(), out.end());
    });
}

std::vector<int> get_adjacent_volumes(const std::string& geometry_type, int entity_id) {
    return query("get_adjacent_volumes", std::vector<int>{}, [&] {
        GeomKind kind = GeomKind::Body;
        if (shape_of(geometry_type, entity_id, &kind).IsNull())
            return std::vector<int>{};
        if (kind != GeomKind::Volume)
            return rel(kind, entity_id, GeomKind::Volume);
        // Volumes that share a surface with this one (merged neighbours).
        std::set<int> out;
        for (int s : rel(GeomKind::Volume, entity_id, GeomKind::Surface))
            for (int v : rel(GeomKind::Surface, s, GeomKind::Volume))
                if (v != entity_id)
                    out.insert(v);
        return std::vector<int>(out.begin(), out.end());
    });
}

std::vector<int> get_entities(const std::string& entity_type) {
    return query("get_entities", std::vector<int>{}, [&] {
        auto kind = tarvo::kernel::parse_kind(entity_type);
        if (kind && model())
            return model()->ids(*kind);
        std::string canonical = tarvo::kernel::canonical_entity_type(entity_type);
        if (auto* catalog = tarvo::kernel::catalog_for(canonical))
            return catalog->all_ids(canonical);
        return std::vector<int>{};
    });
}

std::vector<int> get_list_of_free_ref_entities(const std::string& geometry_type) {
    return query("get_list_of_free_ref_entities", std::vector<int>{}, [&] {
        auto kind = tarvo::kernel::parse_kind(geometry_type);
        if (!kind || !model())
            return std::vector<int>{};
        return model()->ids_outside_volumes(*kind);
    });
}

int get_owning_body(const std::string& geometry_type, int entity_id) {
    return query("get_owning_body", 0, [&] {
        GeomKind kind = GeomKind::Body;
        auto k = tarvo::kernel::parse_kind(geometry_type);
        if (!k || !model() || !model()->exists(*k, entity_id))
            return 0;
        kind = *k;
        auto bodies = model()->bodies_of(kind, entity_id);
        return bodies.empty() ? 0 : bodies.front();
    });
}

int get_owning_volume(const std::string& geometry_type, int entity_id) {
    return query("get_owning_volume", 0, [&] {
        GeomKind kind = GeomKind::Body;
        if (shape_of(geometry_type, entity_id, &kind).IsNull() || kind == GeomKind::Body)
            return 0;
        auto vols = rel(kind, entity_id, GeomKind::Volume);
        return vols.empty() ? 0 : vols.front();
    });
}

int get_owning_volume_by_name(const std::string& entity_name) {
    return query("get_owning_volume_by_name", 0, [&] {
        const GeometryModel* m = model();
        if (!m)
            return 0;
        for (GeomKind kind : {GeomKind::Volume, GeomKind::Body, GeomKind::Surface, GeomKind::Curve,
                              GeomKind::Vertex})
            for (int id : m->ids(kind))
                if (m->name_of(kind, id) == entity_name) {
                    auto vols = m->relatives(kind, id, GeomKind::Volume);
                    return vols.empty() ? 0 : vols.front();
                }
        return 0;
    });
}

double get_curve_length(int curve_id) {
    return query("get_curve_length", 0.0,
                 [&] { return model() ? model()->curve_length(curve_id) : 0.0; });
}

double get_arc_length(int curve_id) {
    return get_curve_length(curve_id);
}

double get_distance_from_curve_start(double x_coordinate, double y_coordinate, double z_coordinate,
                                     int curve_id) {
    return query("get_distance_from_curve_start", 0.0, [&] {
        TopoDS_Shape s = shape_of(GeomKind::Curve, curve_id);
        if (s.IsNull())
            return 0.0;
        TopoDS_Vertex v =
            BRepBuilderAPI_MakeVertex(gp_Pnt(x_coordinate, y_coordinate, z_coordinate)).Vertex();
        BRepExtrema_DistShapeShape dist(v, s);
        if (!dist.IsDone() || dist.NbSolution() < 1)
            return 0.0;
        double t = 0;
        if (dist.SupportTypeShape2(1) == BRepExtrema_IsOnEdge) {
            dist.ParOnEdgeS2(1, t);
        } else {
            // Nearest to an end vertex.
            BRepAdaptor_Curve c(TopoDS::Edge(s));
            gp_Pnt q = dist.PointOnShape2(1);
            t = q.Distance(c.Value(c.FirstParameter())) < q.Distance(c.Value(c.LastParameter()))
                    ? c.FirstParameter()
                    : c.LastParameter();
        }
        BRepAdaptor_Curve c(TopoDS::Edge(s));
        return std::abs(GCPnts_AbscissaPoint::Length(c, c.FirstParameter(), t));
    });
}

double get_curve_radius(int curve_id) {
    return query("get_curve_radius", 0.0, [&] {
        TopoDS_Shape s = shape_of(GeomKind::Curve, curve_id);
        if (s.IsNull())
            return 0.0;
        BRepAdaptor_Curve c(TopoDS::Edge(s));
        return c.GetType() == GeomAbs_Circle ? c.Circle().Radius() : 0.0;
    });
}

std::array<double, 3> get_curve_center(int curve_id) {
    return query("get_curve_center", std::array<double, 3>{}, [&] {
        TopoDS_Shape s = shape_of(GeomKind::Curve, curve_id);
        if (s.IsNull())
            return std::array<double, 3>{};
        BRepAdaptor_Curve c(TopoDS::Edge(s));
        gp_Pnt p;
        if (c.GetType() == GeomAbs_Circle) {
            p = c.Circle().Location();
        } else if (c.GetType() == GeomAbs_Ellipse) {
            p = c.Ellipse().Location();
        } else {
            GProp_GProps props;
            BRepGProp::LinearProperties(s, props);
            p = props.CentreOfMass();
        }
        return std::array<double, 3>{p.X(), p.Y(), p.Z()};
    });
}

double get_surface_area(int surface_id) {
    return query("get_surface_area", 0.0, [&] {
        return model() ? model()->area_measure(GeomKind::Surface, surface_id)[0] : 0.0;
    });
}

double get_volume_area(int volume_id) {
    return query("get_volume_area", 0.0, [&] {
        return model() ? model()->volume_measure(GeomKind::Volume, volume_id) : 0.0;
    });
}

double get_hydraulic_radius_surface_area(int surface_id) {
    return query("get_hydraulic_radius_surface_area", 0.0, [&] {
        if (!model() || !model()->exists(GeomKind::Surface, surface_id))
            return 0.0;
        // The curves of a surface are its edges but the degenerate ones.
        double perimeter = 0;
        for (int c : rel(GeomKind::Surface, surface_id, GeomKind::Curve))
            perimeter += model()->curve_length(c);
        const double area = model()->area_measure(GeomKind::Surface, surface_id)[0];
        return perimeter > 0 ? 2 * area / perimeter : 0.0;
    });
}

double get_hydraulic_radius_volume_area(int volume_id) {
    return query("get_hydraulic_radius_volume_area", 0.0, [&] {
        if (!model() || !model()->exists(GeomKind::Volume, volume_id))
            return 0.0;
        const double a = model()->area_measure(GeomKind::Volume, volume_id)[0];
        return a > 0 ? 3 * model()->volume_measure(GeomKind::Volume, volume_id) / a : 0.0;
    });
}

std::array<double, 3> get_center_point(const std::string& entity_type, int entity_id) {
    return query("get_center_point", std::array<double, 3>{}, [&] {
        const auto kind = existing_kind(entity_type, entity_id);
        if (!kind)
            return std::array<double, 3>{};
        const auto b = box_numbers(model()->bounding_box(*kind, entity_id));
        return std::array<double, 3>{(b[0] + b[1]) / 2, (b[3] + b[4]) / 2, (b[6] + b[7]) / 2};
    });
}

int get_valence(int vertex_id) {
    return static_cast<int>(rel(GeomKind::Vertex, vertex_id, GeomKind::Curve).size());
}

double get_distance_between(int vertex_id_1, int vertex_id_2) {
    return query("get_distance_between", 0.0, [&] {
        TopoDS_Shape a = shape_of(GeomKind::Vertex, vertex_id_1);
        TopoDS_Shape b = shape_of(GeomKind::Vertex, vertex_id_2);
        if (a.IsNull() || b.IsNull())
            return 0.0;
        return BRep_Tool::Pnt(TopoDS::Vertex(a)).Distance(BRep_Tool::Pnt(TopoDS::Vertex(b)));
    });
}

int is_point_contained(const std::string& geometry_type, int entity_id,
                       const std::array<double, 3>& xyz_point) {
    return query("is_point_contained", -1, [&] {
        GeomKind kind = GeomKind::Body;
        TopoDS_Shape s = shape_of(geometry_type, entity_id, &kind);
        if (s.IsNull())
            return -1;
        gp_Pnt p(xyz_point[0], xyz_point[1], xyz_point[2]);
        const double tol = 1e-6;
        if (kind == GeomKind::Volume || kind == GeomKind::Body) {
            if (kind == GeomKind::Body && model()->body(entity_id)->volumes.empty())
                return -1;
            for (const TopoDS_Shape& solid : GeometryModel::explore(s, GeomKind::Volume)) {
                BRepClass3d_SolidClassifier cls(solid, p, tol);
                if (cls.State() == TopAbs_IN)
                    return 1;
                if (cls.State() == TopAbs_ON)
                    return 2;
            }
            return 0;
        }
        TopoDS_Vertex v = BRepBuilderAPI_MakeVertex(p).Vertex();
        BRepExtrema_DistShapeShape dist(v, s);
        if (!dist.IsDone())
            return -1;
        if (dist.Value() > tol)
            return 0;
        if (kind == GeomKind::Vertex)
            return 1;
        // On the entity: on its boundary when it touches a lower-dimensional piece.
        GeomKind boundary = kind == GeomKind::Surface ? GeomKind::Curve : GeomKind::Vertex;
        for (const TopoDS_Shape& b : GeometryModel::explore(s, boundary)) {
            BRepExtrema_DistShapeShape d2(v, b);
            if (d2.IsDone() && d2.Value() <= tol)
                return 2;
        }
        return 1;
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
        tarvo::kernel::print(out.str());
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
        tarvo::kernel::print(out.str());
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
    return query("evaluate_exterior_angle_at_curve", 0.0,
                 [&] { return exterior_angle(curve_id, volume_id); });
}

std::vector<int> evaluate_exterior_angle(const std::vector<int>& curve_list, double test_angle) {
    return query("evaluate_exterior_angle", std::vector<int>{}, [&] {
        std::vector<int> out;
        for (int c : curve_list) {
            for (int v : rel(GeomKind::Curve, c, GeomKind::Volume)) {
                double a = exterior_angle(c, v);
                if (a > 0 && a < test_angle) {
                    out.push_back(c);
                    break;
                }
            }
        }
        return out;
    });
}

} // namespace TarvoInterface
