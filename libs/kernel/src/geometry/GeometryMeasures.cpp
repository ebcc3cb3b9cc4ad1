#include "geometry/GeometryMeasures.h"

#include "geometry/GeometryInternal.h"

#include <BRepAdaptor_Curve.hxx>
#include <BRepAdaptor_Surface.hxx>
#include <BRepBndLib.hxx>
#include <BRepBuilderAPI_MakeVertex.hxx>
#include <BRepClass3d_SolidClassifier.hxx>
#include <BRepExtrema_DistShapeShape.hxx>
#include <BRepGProp.hxx>
#include <BRepLProp_SLProps.hxx>
#include <BRep_Tool.hxx>
#include <Bnd_OBB.hxx>
#include <GCPnts_AbscissaPoint.hxx>
#include <GProp_GProps.hxx>
#include <GeomAPI_ProjectPointOnSurf.hxx>
#include <GeomLib_IsPlanarSurface.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <gp_Circ.hxx>
#include <gp_Elips.hxx>

#include <algorithm>
#include <cmath>
#include <set>

namespace tarvo::kernel {

namespace {

// Points closer than this count as on an entity.
constexpr double kContainmentTolerance = 1e-6;

// Outward normal of a face at the point nearest `near`.
bool face_normal(const TopoDS_Face& face, const gp_Pnt& near, gp_Dir& normal) {
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
    return true;
}

// The face of a solid that IsSame as `face`, with the solid's orientation; null when none.
TopoDS_Face face_in(const TopoDS_Shape& solid, const TopoDS_Shape& face) {
    if (solid.IsNull())
        return {};
    for (TopExp_Explorer ex(solid, TopAbs_FACE); ex.More(); ex.Next())
        if (ex.Current().IsSame(face))
            return TopoDS::Face(ex.Current());
    return {};
}

// The exterior angle of `solid` at `edge` (see exterior_angle() on the model).
double exterior_angle_at(const TopoDS_Shape& edge, const TopoDS_Shape& solid) {
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
    for (std::size_t i = 0; i < 2; ++i) {
        if (!face_normal(faces[i], p, normal[i]))
            return 0;
        TopAbs_Orientation o = TopAbs_FORWARD;
        for (TopExp_Explorer ee(faces[i], TopAbs_EDGE); ee.More(); ee.Next())
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
    const double angle = inward[0].Angle(inward[1]) * 180.0 / M_PI;
    const bool convex = inward[1].Dot(gp_Vec(normal[0])) < 1e-12;
    return convex ? angle : 360.0 - angle;
}

BoxNumbers box_numbers(const Bnd_Box& box) {
    BoxNumbers out{};
    if (box.IsVoid())
        return out;
    double x0, y0, z0, x1, y1, z1;
    box.Get(x0, y0, z0, x1, y1, z1);
    out = {x0, x1, x1 - x0, y0, y1, y1 - y0, z0, z1, z1 - z0, 0};
    out[9] = std::sqrt(out[2] * out[2] + out[5] * out[5] + out[8] * out[8]);
    return out;
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

// ---- Types -------------------------------------------------------------------------------------

std::string curve_type_name(const TopoDS_Shape& edge) {
    switch (BRepAdaptor_Curve(TopoDS::Edge(edge)).GetType()) {
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

std::string surface_type_name(const TopoDS_Shape& face) {
    switch (BRepAdaptor_Surface(TopoDS::Face(face)).GetType()) {
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

bool is_periodic(const TopoDS_Shape& shape, GeomKind kind) {
    if (kind == GeomKind::Surface) {
        BRepAdaptor_Surface a(TopoDS::Face(shape));
        return a.IsUPeriodic() || a.IsVPeriodic();
    }
    if (kind == GeomKind::Curve)
        return BRepAdaptor_Curve(TopoDS::Edge(shape)).IsPeriodic();
    return false;
}

bool is_planar(const TopoDS_Shape& face) {
    Handle(Geom_Surface) surf = BRep_Tool::Surface(TopoDS::Face(face));
    return GeomLib_IsPlanarSurface(surf, 1e-7).IsPlanar();
}

// ---- Boxes -------------------------------------------------------------------------------------

BoxNumbers bounding_box_numbers(const GeometryModel& model, GeomKind kind, int id) {
    return box_numbers(model.bounding_box(kind, id));
}

BoxNumbers total_box_numbers(const GeometryModel& model, GeomKind kind,
                             const std::vector<int>& ids) {
    Bnd_Box total;
    for (int id : ids) {
        const Bnd_Box b = model.bounding_box(kind, id);
        if (!b.IsVoid())
            total.Add(b);
    }
    return box_numbers(total);
}

gp_Pnt box_center(const GeometryModel& model, GeomKind kind, int id) {
    const BoxNumbers b = bounding_box_numbers(model, kind, id);
    return gp_Pnt((b[0] + b[1]) / 2, (b[3] + b[4]) / 2, (b[6] + b[7]) / 2);
}

std::array<double, 15> tight_box(const GeometryModel& model, GeomKind kind,
                                 const std::vector<int>& ids) {
    std::array<double, 15> out{};
    std::vector<TopoDS_Shape> shapes;
    for (int id : ids)
        if (model.exists(kind, id))
            shapes.push_back(model.shape(kind, id));
    if (shapes.empty())
        return out;
    Bnd_OBB obb;
    BRepBndLib::AddOBB(geometry_detail::make_compound(shapes), obb, false, true, false);
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
}

// ---- Measures from the memo --------------------------------------------------------------------

double total_volume(const GeometryModel& model, const std::vector<int>& volume_ids) {
    double total = 0;
    std::set<int> seen;
    for (int id : volume_ids)
        if (model.exists(GeomKind::Volume, id) && seen.insert(id).second)
            total += model.volume_measure(GeomKind::Volume, id);
    return total;
}

double surface_hydraulic_radius(const GeometryModel& model, int surface_id) {
    // The curves of a surface are its edges but the degenerate ones.
    double perimeter = 0;
    for (int c : model.relatives(GeomKind::Surface, surface_id, GeomKind::Curve))
        perimeter += model.curve_length(c);
    const double area = model.area_measure(GeomKind::Surface, surface_id)[0];
    return perimeter > 0 ? 2 * area / perimeter : 0.0;
}

double volume_hydraulic_radius(const GeometryModel& model, int volume_id) {
    const double area = model.area_measure(GeomKind::Volume, volume_id)[0];
    return area > 0 ? 3 * model.volume_measure(GeomKind::Volume, volume_id) / area : 0.0;
}

// ---- Surfaces ----------------------------------------------------------------------------------

std::optional<gp_Dir> outward_normal(const GeometryModel& model, int surface_id) {
    const TopoDS_Shape face = model.shape(GeomKind::Surface, surface_id);
    const auto vols = model.relatives(GeomKind::Surface, surface_id, GeomKind::Volume);
    TopoDS_Face used;
    if (!vols.empty())
        used = face_in(model.shape(GeomKind::Volume, vols.front()), face);
    if (used.IsNull())
        used = TopoDS::Face(face);
    GProp_GProps p;
    BRepGProp::SurfaceProperties(used, p);
    gp_Dir n;
    if (!face_normal(used, p.CentreOfMass(), n))
        return std::nullopt;
    return n;
}

FaceSense face_sense(const GeometryModel& model, int surface_id) {
    const TopoDS_Shape face = model.shape(GeomKind::Surface, surface_id);
    std::set<TopAbs_Orientation> senses;
    for (int v : model.relatives(GeomKind::Surface, surface_id, GeomKind::Volume)) {
        const TopoDS_Face f = face_in(model.shape(GeomKind::Volume, v), face);
        if (!f.IsNull())
            senses.insert(f.Orientation() == face.Orientation() ? TopAbs_FORWARD : TopAbs_REVERSED);
    }
    if (senses.size() > 1)
        return FaceSense::Both;
    if (!senses.empty() && *senses.begin() == TopAbs_REVERSED)
        return FaceSense::Reverse;
    return FaceSense::Forward;
}

// ---- Curves ------------------------------------------------------------------------------------

double exterior_angle(const GeometryModel& model, int curve_id, int volume_id) {
    if (!model.exists(GeomKind::Curve, curve_id) || !model.exists(GeomKind::Volume, volume_id))
        return 0;
    return exterior_angle_at(model.shape(GeomKind::Curve, curve_id),
                             model.shape(GeomKind::Volume, volume_id));
}

std::vector<int> curves_with_angle_below(const GeometryModel& model, const std::vector<int>& curves,
                                         double test_angle) {
    std::vector<int> out;
    for (int c : curves)
        for (int v : model.relatives(GeomKind::Curve, c, GeomKind::Volume)) {
            const double a = exterior_angle(model, c, v);
            if (a > 0 && a < test_angle) {
                out.push_back(c);
                break;
            }
        }
    return out;
}

double distance_from_start(const TopoDS_Shape& edge, const gp_Pnt& point) {
    const TopoDS_Vertex v = BRepBuilderAPI_MakeVertex(point).Vertex();
    BRepExtrema_DistShapeShape dist(v, edge);
    if (!dist.IsDone() || dist.NbSolution() < 1)
        return 0.0;
    BRepAdaptor_Curve c(TopoDS::Edge(edge));
    double t = 0;
    if (dist.SupportTypeShape2(1) == BRepExtrema_IsOnEdge) {
        dist.ParOnEdgeS2(1, t);
    } else {
        // Nearest to an end vertex.
        const gp_Pnt q = dist.PointOnShape2(1);
        t = q.Distance(c.Value(c.FirstParameter())) < q.Distance(c.Value(c.LastParameter()))
                ? c.FirstParameter()
                : c.LastParameter();
    }
    return std::abs(GCPnts_AbscissaPoint::Length(c, c.FirstParameter(), t));
}

double curve_radius(const TopoDS_Shape& edge) {
    BRepAdaptor_Curve c(TopoDS::Edge(edge));
    return c.GetType() == GeomAbs_Circle ? c.Circle().Radius() : 0.0;
}

gp_Pnt curve_center(const TopoDS_Shape& edge) {
    BRepAdaptor_Curve c(TopoDS::Edge(edge));
    if (c.GetType() == GeomAbs_Circle)
        return c.Circle().Location();
    if (c.GetType() == GeomAbs_Ellipse)
        return c.Ellipse().Location();
    GProp_GProps props;
    BRepGProp::LinearProperties(edge, props);
    return props.CentreOfMass();
}

// ---- Points ------------------------------------------------------------------------------------

double vertex_distance(const TopoDS_Shape& vertex_a, const TopoDS_Shape& vertex_b) {
    return BRep_Tool::Pnt(TopoDS::Vertex(vertex_a))
        .Distance(BRep_Tool::Pnt(TopoDS::Vertex(vertex_b)));
}

PointPlace point_place(const GeometryModel& model, GeomKind kind, int id, const gp_Pnt& point) {
    if (!model.exists(kind, id))
        return PointPlace::Unknown;
    const TopoDS_Shape shape = model.shape(kind, id);
    const double tol = kContainmentTolerance;
    if (kind == GeomKind::Body && model.body(id)->volumes.empty())
        return PointPlace::Unknown;
    if (kind == GeomKind::Volume || kind == GeomKind::Body) {
        for (const TopoDS_Shape& solid : GeometryModel::explore(shape, GeomKind::Volume)) {
            BRepClass3d_SolidClassifier cls(solid, point, tol);
            if (cls.State() == TopAbs_IN)
                return PointPlace::Inside;
            if (cls.State() == TopAbs_ON)
                return PointPlace::Boundary;
        }
        return PointPlace::Outside;
    }
    const TopoDS_Vertex v = BRepBuilderAPI_MakeVertex(point).Vertex();
    BRepExtrema_DistShapeShape dist(v, shape);
    if (!dist.IsDone())
        return PointPlace::Unknown;
    if (dist.Value() > tol)
        return PointPlace::Outside;
    if (kind == GeomKind::Vertex)
        return PointPlace::Inside;
    // On the entity: on its boundary when it touches a lower-dimensional piece.
    const GeomKind boundary = kind == GeomKind::Surface ? GeomKind::Curve : GeomKind::Vertex;
    for (const TopoDS_Shape& b : GeometryModel::explore(shape, boundary)) {
        BRepExtrema_DistShapeShape d2(v, b);
        if (d2.IsDone() && d2.Value() <= tol)
            return PointPlace::Boundary;
    }
    return PointPlace::Inside;
}

// ---- Colours -----------------------------------------------------------------------------------

std::array<double, 4> display_color(const GeometryModel& model, GeomKind kind, int id) {
    if (const auto* a = model.attributes(kind, id); a && a->has_color)
        return a->color;
    if (kind != GeomKind::Volume && kind != GeomKind::Body) {
        const auto vols = model.relatives(kind, id, GeomKind::Volume);
        if (!vols.empty())
            return display_color(model, GeomKind::Volume, vols.front());
    }
    const auto& p = palette()[static_cast<std::size_t>((id - 1) % 16)];
    return {p[0], p[1], p[2], 1.0};
}

int nearest_palette_index(const std::array<double, 4>& rgba) {
    int best = 0;
    double best_d = 1e300;
    for (std::size_t i = 0; i < palette().size(); ++i) {
        double d = 0;
        for (std::size_t j = 0; j < 3; ++j)
            d += (palette()[i][j] - rgba[j]) * (palette()[i][j] - rgba[j]);
        if (d < best_d) {
            best_d = d;
            best = static_cast<int>(i);
        }
    }
    return best;
}

// ---- Relations ---------------------------------------------------------------------------------

int first_common_relative(const GeometryModel& model, GeomKind source, int a, int b,
                          GeomKind target) {
    const auto of_a = model.relatives(source, a, target);
    const auto of_b = model.relatives(source, b, target);
    for (int id : of_a)
        if (std::binary_search(of_b.begin(), of_b.end(), id))
            return id;
    return 0;
}

std::vector<int> adjacent(const GeometryModel& model, GeomKind kind, int id, GeomKind target) {
    const bool has_lower =
        kind == GeomKind::Volume || kind == GeomKind::Surface || kind == GeomKind::Curve;
    if (kind != target || !has_lower)
        return model.relatives(kind, id, target);
    const auto through = static_cast<GeomKind>(static_cast<int>(kind) + 1);
    std::set<int> out;
    for (int piece : model.relatives(kind, id, through))
        for (int other : model.relatives(through, piece, kind))
            if (other != id)
                out.insert(other);
    return {out.begin(), out.end()};
}

int volume_of_name(const GeometryModel& model, const std::string& name) {
    for (GeomKind kind :
         {GeomKind::Volume, GeomKind::Body, GeomKind::Surface, GeomKind::Curve, GeomKind::Vertex})
        for (int id : model.ids(kind))
            if (model.name_of(kind, id) == name) {
                const auto vols = model.relatives(kind, id, GeomKind::Volume);
                return vols.empty() ? 0 : vols.front();
            }
    return 0;
}

} // namespace tarvo::kernel
