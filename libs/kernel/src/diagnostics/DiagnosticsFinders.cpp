// The finders: measures of single entities (small, narrow, hydraulic radius, angles, blends),
// proximities between entities (coincident, facing, mergeable, floating) and topology checks
// (non-manifold, invalid shapes), all on OpenCASCADE.
//
// Proximity searches first compare bounding boxes grown by the tolerance, so that the exact
// distance (BRepExtrema_DistShapeShape) runs only for pairs that can be close.

#include "core/Session.h"
#include "diagnostics/Diagnostics.h"
#include "geometry/GeometryInternal.h"

#include <BRepAdaptor_Curve.hxx>
#include <BRepAdaptor_Curve2d.hxx>
#include <BRepAdaptor_Surface.hxx>
#include <BRepAlgoAPI_BuilderAlgo.hxx>
#include <BRepAlgoAPI_Common.hxx>
#include <BRepBndLib.hxx>
#include <BRepBuilderAPI_MakeVertex.hxx>
#include <BRepBuilderAPI_Transform.hxx>
#include <BRepCheck_Analyzer.hxx>
#include <BRepCheck_ListOfStatus.hxx>
#include <BRepCheck_Result.hxx>
#include <BRepExtrema_DistShapeShape.hxx>
#include <BRepGProp.hxx>
#include <BRepLProp_SLProps.hxx>
#include <BRepTools.hxx>
#include <BRep_Tool.hxx>
#include <GProp_GProps.hxx>
#include <TopExp.hxx>
#include <TopExp_Explorer.hxx>
#include <TopTools_DataMapOfShapeInteger.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Vertex.hxx>
#include <TopoDS_Wire.hxx>
#include <gp_Lin.hxx>
#include <gp_Trsf.hxx>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <numeric>
#include <set>
#include <tuple>

namespace tarvo::kernel::diagnostics {

namespace {

constexpr double kPi = 3.14159265358979323846;

double degrees_between(const gp_Vec& a, const gp_Vec& b) {
    if (a.Magnitude() < 1e-300 || b.Magnitude() < 1e-300)
        return 0;
    return a.Angle(b) * 180.0 / kPi;
}

Bnd_Box grown(Bnd_Box box, double by) {
    box.Enlarge(by);
    return box;
}

// Exact distance between two shapes, or a negative value when OpenCASCADE finds none.
double distance(const TopoDS_Shape& a, const TopoDS_Shape& b) {
    BRepExtrema_DistShapeShape d(a, b);
    return d.IsDone() && d.NbSolution() > 0 ? d.Value() : -1.0;
}

TopoDS_Vertex middle_of(const TopoDS_Edge& edge) {
    BRepAdaptor_Curve c(edge);
    return BRepBuilderAPI_MakeVertex(c.Value(0.5 * (c.FirstParameter() + c.LastParameter())))
        .Vertex();
}

gp_Pnt point_of(int vertex) {
    return BRep_Tool::Pnt(TopoDS::Vertex(model().shape(GeomKind::Vertex, vertex)));
}

bool share_volume(GeomKind ka, int a, GeomKind kb, int b) {
    const std::vector<int> va = volumes_holding(ka, a), vb = volumes_holding(kb, b);
    for (int v : va)
        if (std::count(vb.begin(), vb.end(), v))
            return true;
    return false;
}

bool share_body(GeomKind ka, int a, GeomKind kb, int b) {
    const std::vector<int> ba = model().bodies_of(ka, a), bb = model().bodies_of(kb, b);
    for (int x : ba)
        if (std::count(bb.begin(), bb.end(), x))
            return true;
    return false;
}

bool share_surface(int volume_a, int volume_b) {
    for (int s : model().relatives(GeomKind::Volume, volume_a, GeomKind::Surface)) {
        const std::vector<int> holders = model().relatives(GeomKind::Surface, s, GeomKind::Volume);
        if (std::count(holders.begin(), holders.end(), volume_b))
            return true;
    }
    return false;
}

std::vector<int> sub_ids(GeomKind kind, int id, GeomKind sub) {
    return model().relatives(kind, id, sub);
}

// The edge as it is oriented in the face (the face's own use of it).
TopoDS_Edge edge_in(const TopoDS_Face& face, const TopoDS_Shape& edge) {
    for (TopExp_Explorer ex(face, TopAbs_EDGE); ex.More(); ex.Next())
        if (ex.Current().IsSame(edge))
            return TopoDS::Edge(ex.Current());
    return {};
}

// Outward normal of the face at the point of the edge at parameter t, and the direction from
// the edge into the face there (material of the face lies on the left of its oriented edges
// seen from the outward normal).
bool frame_at(const TopoDS_Face& face, const TopoDS_Edge& edge, double t, gp_Vec& normal,
              gp_Vec& inward) {
    BRepAdaptor_Curve2d c2d(edge, face);
    BRepAdaptor_Surface surf(face);
    const gp_Pnt2d uv = c2d.Value(t);
    gp_Pnt p;
    gp_Vec du, dv;
    surf.D1(uv.X(), uv.Y(), p, du, dv);
    normal = du.Crossed(dv);
    if (normal.Magnitude() < 1e-12)
        return false;
    normal.Normalize();
    if (face.Orientation() == TopAbs_REVERSED)
        normal.Reverse();
    BRepAdaptor_Curve c3d(edge);
    gp_Pnt q;
    gp_Vec tangent;
    c3d.D1(t, q, tangent);
    if (tangent.Magnitude() < 1e-12)
        return false;
    if (edge.Orientation() == TopAbs_REVERSED)
        tangent.Reverse();
    inward = normal.Crossed(tangent);
    return inward.Magnitude() > 1e-12;
}

// Angle inside the material between two faces at the middle of their common edge, degrees.
std::optional<double> dihedral(const TopoDS_Shape& edge, const TopoDS_Face& f1,
                               const TopoDS_Face& f2) {
    const TopoDS_Edge e1 = edge_in(f1, edge), e2 = edge_in(f2, edge);
    if (e1.IsNull() || e2.IsNull())
        return std::nullopt;
    double first = 0, last = 0;
    BRep_Tool::Range(TopoDS::Edge(edge), first, last);
    const double t = 0.5 * (first + last);
    gp_Vec n1, d1, n2, d2;
    if (!frame_at(f1, e1, t, n1, d1) || !frame_at(f2, e2, t, n2, d2))
        return std::nullopt;
    const double open = degrees_between(d1, d2);
    // The second face turns away from the first one's outward side: a convex edge.
    return d2.Dot(n1) <= 0 ? open : 360.0 - open;
}

// Faces of the volume that hold the edge.
std::vector<TopoDS_Face> faces_at(int volume, const TopoDS_Shape& edge) {
    std::vector<TopoDS_Face> out;
    const TopoDS_Shape solid = model().shape(GeomKind::Volume, volume);
    TopTools_IndexedMapOfShape seen;
    for (TopExp_Explorer ex(solid, TopAbs_FACE); ex.More(); ex.Next()) {
        if (seen.Contains(ex.Current()))
            continue;
        for (TopExp_Explorer ee(ex.Current(), TopAbs_EDGE); ee.More(); ee.Next())
            if (ee.Current().IsSame(edge)) {
                seen.Add(ex.Current());
                out.push_back(TopoDS::Face(ex.Current()));
                break;
            }
    }
    return out;
}

} // namespace

// ---- Entity measures ------------------------------------------------------------------------

std::vector<Measured> small_curves(const std::vector<int>& volumes, double size) {
    std::vector<Measured> out;
    const std::vector<int> curves = entities_of(volumes, GeomKind::Curve);
    Scan scan("Small curves", static_cast<long>(curves.size()));
    for (int c : curves) {
        scan.step();
        const double length = model().curve_length(c);
        if (length < size)
            out.push_back({c, length});
    }
    return out;
}

std::vector<Measured> smallest_curves(const std::vector<int>& volumes, int count) {
    std::vector<Measured> all = small_curves(volumes, std::numeric_limits<double>::infinity());
    std::stable_sort(all.begin(), all.end(),
                     [](const Measured& a, const Measured& b) { return a.value < b.value; });
    if (static_cast<int>(all.size()) > count)
        all.resize(count);
    return all;
}

std::vector<Measured> small_surfaces(const std::vector<int>& surfaces, double size) {
    std::vector<Measured> out;
    Scan scan("Small surfaces", static_cast<long>(surfaces.size()));
    for (int s : surfaces) {
        scan.step();
        const double area = model().area_measure(GeomKind::Surface, s)[0];
        if (area < size * size)
            out.push_back({s, area});
    }
    return out;
}

double edge_pair_width(const TopoDS_Face& face, double limit) {
    TopTools_IndexedMapOfShape edges;
    TopExp::MapShapes(face, TopAbs_EDGE, edges);
    double best = std::numeric_limits<double>::infinity();
    for (int i = 1; i <= edges.Extent(); ++i) {
        const TopoDS_Edge& a = TopoDS::Edge(edges(i));
        if (BRep_Tool::Degenerated(a))
            continue;
        TopoDS_Vertex a1, a2;
        TopExp::Vertices(a, a1, a2);
        Bnd_Box ba;
        BRepBndLib::Add(a, ba);
        for (int j = i + 1; j <= edges.Extent(); ++j) {
            const TopoDS_Edge& b = TopoDS::Edge(edges(j));
            if (BRep_Tool::Degenerated(b))
                continue;
            TopoDS_Vertex b1, b2;
            TopExp::Vertices(b, b1, b2);
            if (a1.IsSame(b1) || a1.IsSame(b2) || a2.IsSame(b1) || a2.IsSame(b2))
                continue;
            Bnd_Box bb;
            BRepBndLib::Add(b, bb);
            if (grown(ba, std::min(limit, best)).IsOut(bb))
                continue;
            const double d = distance(a, b);
            if (d < 0 || d >= std::min(limit, best))
                continue;
            // Two curves that only come close where a short curve joins them are a small
            // curve, not a narrow surface: the width is measured from the middle of each.
            const double width = std::min(distance(middle_of(a), b), distance(middle_of(b), a));
            if (width >= 0 && width < best)
                best = width;
        }
    }
    return best;
}

std::vector<Measured> narrow_surfaces(const std::vector<int>& surfaces, double size) {
    std::vector<Measured> out;
    Scan scan("Narrow surfaces", static_cast<long>(surfaces.size()));
    for (int s : surfaces) {
        scan.step();
        const double width =
            edge_pair_width(TopoDS::Face(model().shape(GeomKind::Surface, s)), size);
        if (width < size)
            out.push_back({s, width});
    }
    return out;
}

std::vector<Measured> closed_narrow_surfaces(const std::vector<int>& surfaces, double size) {
    std::vector<Measured> out;
    for (const Measured& m : narrow_surfaces(surfaces, size)) {
        const TopoDS_Face face = TopoDS::Face(model().shape(GeomKind::Surface, m.id));
        bool closed = false;
        for (TopExp_Explorer ex(face, TopAbs_EDGE); ex.More() && !closed; ex.Next())
            closed = BRep_Tool::IsClosed(TopoDS::Edge(ex.Current()), face);
        if (closed)
            out.push_back(m);
    }
    return out;
}

std::vector<Measured> small_volumes(const std::vector<int>& volumes, double size) {
    std::vector<Measured> out;
    for (int v : volumes) {
        const double volume = model().volume_measure(GeomKind::Volume, v);
        if (volume < size * size * size)
            out.push_back({v, volume});
    }
    return out;
}

std::vector<Measured> surface_hydraulic_radius(const std::vector<int>& surfaces, double size) {
    std::vector<Measured> out;
    Scan scan("Hydraulic radius", static_cast<long>(surfaces.size()));
    for (int s : surfaces) {
        scan.step();
        double perimeter = 0;
        for (int c : sub_ids(GeomKind::Surface, s, GeomKind::Curve))
            perimeter += model().curve_length(c);
        if (perimeter <= 0)
            continue;
        const double r = 2.0 * model().area_measure(GeomKind::Surface, s)[0] / perimeter;
        if (r < size)
            out.push_back({s, r});
    }
    return out;
}

std::vector<Measured> volume_hydraulic_radius(const std::vector<int>& volumes, double size) {
    std::vector<Measured> out;
    for (int v : volumes) {
        const double area = model().area_measure(GeomKind::Volume, v)[0];
        if (area <= 0)
            continue;
        const double r = 3.0 * model().volume_measure(GeomKind::Volume, v) / area;
        if (r < size)
            out.push_back({v, r});
    }
    return out;
}

std::vector<Measured> close_loops(const std::vector<int>& surfaces, double size) {
    std::vector<Measured> out;
    Scan scan("Close loops", static_cast<long>(surfaces.size()));
    for (int s : surfaces) {
        scan.step();
        std::vector<TopoDS_Shape> wires;
        for (TopExp_Explorer ex(model().shape(GeomKind::Surface, s), TopAbs_WIRE); ex.More();
             ex.Next())
            wires.push_back(ex.Current());
        double best = std::numeric_limits<double>::infinity();
        for (std::size_t i = 0; i < wires.size(); ++i)
            for (std::size_t j = i + 1; j < wires.size(); ++j) {
                const double d = distance(wires[i], wires[j]);
                if (d >= 0)
                    best = std::min(best, d);
            }
        if (best < size)
            out.push_back({s, best});
    }
    return out;
}

std::vector<CurveAngle> curve_angles(const std::vector<int>& volumes) {
    std::vector<CurveAngle> out;
    Scan scan("Curve angles", static_cast<long>(volumes.size()));
    for (int v : volumes) {
        scan.step();
        for (int c : sub_ids(GeomKind::Volume, v, GeomKind::Curve)) {
            const TopoDS_Shape edge = model().shape(GeomKind::Curve, c);
            const std::vector<TopoDS_Face> faces = faces_at(v, edge);
            if (faces.size() != 2)
                continue;
            if (const auto angle = dihedral(edge, faces[0], faces[1]))
                out.push_back({c, v, *angle});
        }
    }
    return out;
}

std::vector<CornerAngle> corner_angles(const std::vector<int>& volumes) {
    std::vector<CornerAngle> out;
    for (int s : entities_of(volumes, GeomKind::Surface)) {
        const TopoDS_Face face = TopoDS::Face(model().shape(GeomKind::Surface, s));
        for (int vid : sub_ids(GeomKind::Surface, s, GeomKind::Vertex)) {
            const TopoDS_Shape vertex = model().shape(GeomKind::Vertex, vid);
            // The two oriented edges of the face at the vertex: one arrives, one leaves.
            std::vector<gp_Vec> away;
            for (TopExp_Explorer ex(face, TopAbs_EDGE); ex.More(); ex.Next()) {
                const TopoDS_Edge e = TopoDS::Edge(ex.Current());
                if (BRep_Tool::Degenerated(e) || BRep_Tool::IsClosed(e, face))
                    continue;
                TopoDS_Vertex v1, v2;
                TopExp::Vertices(e, v1, v2);
                if (!v1.IsSame(vertex) && !v2.IsSame(vertex))
                    continue;
                BRepAdaptor_Curve c(e);
                const bool at_start = v1.IsSame(vertex);
                gp_Pnt p;
                gp_Vec d;
                c.D1(at_start ? c.FirstParameter() : c.LastParameter(), p, d);
                away.push_back(at_start ? d : d.Reversed());
            }
            if (away.size() == 2)
                out.push_back({s, vid, degrees_between(away[0], away[1])});
        }
    }
    return out;
}

namespace {

bool curved(const TopoDS_Face& face) {
    return BRepAdaptor_Surface(face).GetType() != GeomAbs_Plane;
}

// Largest principal curvature of the face at the middle of the edge; nullopt where undefined.
std::optional<double> curvature_at(const TopoDS_Shape& edge, const TopoDS_Face& face) {
    const TopoDS_Edge e = edge_in(face, edge);
    if (e.IsNull())
        return std::nullopt;
    double first = 0, last = 0;
    BRep_Tool::Range(e, first, last);
    const gp_Pnt2d uv = BRepAdaptor_Curve2d(e, face).Value(0.5 * (first + last));
    BRepLProp_SLProps props(BRepAdaptor_Surface(face), uv.X(), uv.Y(), 2, 1e-9);
    if (!props.IsCurvatureDefined())
        return std::nullopt;
    return std::max(std::abs(props.MaxCurvature()), std::abs(props.MinCurvature()));
}

// A blend ends where the curvature changes; a surface that goes on with the same curvature
// across the edge (one cylinder in two pieces) is the same feature.
bool curvature_jumps(const TopoDS_Shape& edge, const TopoDS_Face& a, const TopoDS_Face& b) {
    const auto ka = curvature_at(edge, a), kb = curvature_at(edge, b);
    if (!ka || !kb)
        return true;
    return std::abs(*ka - *kb) > 1e-3 * std::max(*ka, *kb) + 1e-9;
}

// Neighbours of a face across its edges that meet it tangentially (within 1 degree of flat).
std::vector<int> tangent_neighbours(int surface) {
    std::vector<int> out;
    const TopoDS_Face face = TopoDS::Face(model().shape(GeomKind::Surface, surface));
    for (int v : volumes_holding(GeomKind::Surface, surface))
        for (int c : sub_ids(GeomKind::Surface, surface, GeomKind::Curve)) {
            const TopoDS_Shape edge = model().shape(GeomKind::Curve, c);
            if (BRep_Tool::IsClosed(TopoDS::Edge(edge), face))
                continue;
            for (const TopoDS_Face& other : faces_at(v, edge)) {
                // A piece of the same surface (a cylinder split in halves) is no blend's
                // neighbour.
                if (other.IsSame(face) || same_domain(face, other))
                    continue;
                const auto angle = dihedral(edge, face, other);
                if (angle && std::abs(*angle - 180.0) < 1.0 && curvature_jumps(edge, face, other)) {
                    const int id = model().id_of(GeomKind::Surface, other);
                    if (id && !std::count(out.begin(), out.end(), id))
                        out.push_back(id);
                }
            }
        }
    return out;
}

} // namespace

std::vector<int> blend_surfaces(const std::vector<int>& surfaces) {
    std::vector<int> out;
    Scan scan("Blend surfaces", static_cast<long>(surfaces.size()));
    for (int s : surfaces) {
        scan.step();
        if (curved(TopoDS::Face(model().shape(GeomKind::Surface, s))) &&
            tangent_neighbours(s).size() >= 2)
            out.push_back(s);
    }
    return out;
}

std::vector<std::vector<int>> blend_chains(int surface) {
    std::set<int> chain{surface};
    std::vector<int> todo{surface};
    while (!todo.empty()) {
        const int s = todo.back();
        todo.pop_back();
        for (int n : tangent_neighbours(s))
            if (!chain.count(n) && !blend_surfaces({n}).empty()) {
                chain.insert(n);
                todo.push_back(n);
            }
    }
    return {std::vector<int>(chain.begin(), chain.end())};
}

// ---- Proximities ----------------------------------------------------------------------------

std::vector<Pair> vertex_vertex_pairs(const std::vector<int>& volumes, double low, double high,
                                      bool other_volume) {
    std::vector<std::pair<gp_Pnt, int>> points;
    for (int v : entities_of(volumes, GeomKind::Vertex))
        points.push_back({point_of(v), v});
    std::sort(points.begin(), points.end(),
              [](const auto& a, const auto& b) { return a.first.X() < b.first.X(); });
    std::vector<Pair> out;
    Scan scan("Coincident vertices", static_cast<long>(points.size()));
    for (std::size_t i = 0; i < points.size(); ++i) {
        scan.step();
        for (std::size_t j = i + 1;
             j < points.size() && points[j].first.X() - points[i].first.X() <= high; ++j) {
            const double d = points[i].first.Distance(points[j].first);
            if (d < low || d > high)
                continue;
            const int a = std::min(points[i].second, points[j].second);
            const int b = std::max(points[i].second, points[j].second);
            if (other_volume && share_volume(GeomKind::Vertex, a, GeomKind::Vertex, b))
                continue;
            out.push_back({a, b, d});
        }
    }
    std::sort(out.begin(), out.end(),
              [](const Pair& x, const Pair& y) { return std::tie(x.a, x.b) < std::tie(y.a, y.b); });
    return out;
}

namespace {

std::vector<Pair> vertex_entity_pairs(const std::vector<int>& volumes, GeomKind kind, double low,
                                      double high, bool other_volume, const char* title) {
    const std::vector<int> vertices = entities_of(volumes, GeomKind::Vertex);
    const std::vector<int> targets = entities_of(volumes, kind);
    std::vector<Bnd_Box> boxes;
    for (int t : targets)
        boxes.push_back(grown(model().bounding_box(kind, t), high));
    std::vector<Pair> out;
    Scan scan(title, static_cast<long>(vertices.size()));
    for (int v : vertices) {
        scan.step();
        const gp_Pnt p = point_of(v);
        const std::vector<int> own = model().relatives(GeomKind::Vertex, v, kind);
        for (std::size_t i = 0; i < targets.size(); ++i) {
            if (boxes[i].IsOut(p) || std::count(own.begin(), own.end(), targets[i]))
                continue;
            if (other_volume && share_volume(GeomKind::Vertex, v, kind, targets[i]))
                continue;
            const double d =
                distance(model().shape(GeomKind::Vertex, v), model().shape(kind, targets[i]));
            if (d >= 0 && d >= low && d <= high)
                out.push_back({v, targets[i], d});
        }
    }
    return out;
}

} // namespace

std::vector<Pair> vertex_curve_pairs(const std::vector<int>& volumes, double low, double high,
                                     bool other_volume) {
    return vertex_entity_pairs(volumes, GeomKind::Curve, low, high, other_volume,
                               "Vertices near curves");
}

std::vector<Pair> vertex_surface_pairs(const std::vector<int>& volumes, double low, double high,
                                       bool other_volume) {
    return vertex_entity_pairs(volumes, GeomKind::Surface, low, high, other_volume,
                               "Vertices near surfaces");
}

std::vector<Pair> closest_vertex_curve_pairs(const std::vector<int>& volumes, int count) {
    // Candidates in the order of their boxes' distance, a lower bound of the real one: once
    // that bound passes the count-th best real distance, no later pair can enter.
    struct Candidate {
        double bound;
        int vertex, curve;
    };
    std::vector<Candidate> candidates;
    const std::vector<int> curves = entities_of(volumes, GeomKind::Curve);
    for (int v : entities_of(volumes, GeomKind::Vertex)) {
        const gp_Pnt p = point_of(v);
        const std::vector<int> own = model().relatives(GeomKind::Vertex, v, GeomKind::Curve);
        for (int c : curves) {
            if (std::count(own.begin(), own.end(), c))
                continue;
            const Bnd_Box box = model().bounding_box(GeomKind::Curve, c);
            double xmin, ymin, zmin, xmax, ymax, zmax;
            box.Get(xmin, ymin, zmin, xmax, ymax, zmax);
            const double dx = std::max({xmin - p.X(), 0.0, p.X() - xmax});
            const double dy = std::max({ymin - p.Y(), 0.0, p.Y() - ymax});
            const double dz = std::max({zmin - p.Z(), 0.0, p.Z() - zmax});
            candidates.push_back({std::sqrt(dx * dx + dy * dy + dz * dz), v, c});
        }
    }
    std::sort(candidates.begin(), candidates.end(),
              [](const Candidate& a, const Candidate& b) { return a.bound < b.bound; });
    std::vector<Pair> best;
    Scan scan("Closest vertex-curve pairs", static_cast<long>(candidates.size()));
    for (const Candidate& c : candidates) {
        scan.step();
        if (static_cast<int>(best.size()) >= count && c.bound > best.back().distance)
            break;
        const double d = distance(model().shape(GeomKind::Vertex, c.vertex),
                                  model().shape(GeomKind::Curve, c.curve));
        if (d < 0)
            continue;
        best.push_back({c.vertex, c.curve, d});
        std::stable_sort(best.begin(), best.end(),
                         [](const Pair& a, const Pair& b) { return a.distance < b.distance; });
        if (static_cast<int>(best.size()) > count)
            best.pop_back();
    }
    return best;
}

namespace {

// Outward normal of a face at the point of it nearest to `p`.
gp_Vec normal_near(const TopoDS_Face& face, const gp_Pnt& p) {
    BRepExtrema_DistShapeShape d(BRepBuilderAPI_MakeVertex(p).Vertex(), face);
    double u = 0, v = 0;
    if (d.IsDone() && d.NbSolution() > 0 && d.SupportTypeShape2(1) == BRepExtrema_IsInFace)
        d.ParOnFaceS2(1, u, v);
    else {
        BRepAdaptor_Surface s(face);
        u = 0.5 * (s.FirstUParameter() + s.LastUParameter());
        v = 0.5 * (s.FirstVParameter() + s.LastVParameter());
    }
    BRepAdaptor_Surface s(face);
    gp_Pnt q;
    gp_Vec du, dv;
    s.D1(u, v, q, du, dv);
    gp_Vec n = du.Crossed(dv);
    if (face.Orientation() == TopAbs_REVERSED)
        n.Reverse();
    return n;
}

// Cheap test before the exact distance: planes and cylinders can face each other over an area
// only when they are parallel (coaxial) and close; a plane and a cylinder touch along a line at
// most.
bool may_face(const TopoDS_Face& a, const TopoDS_Face& b, double max_gap, double max_angle) {
    BRepAdaptor_Surface sa(a), sb(b);
    const GeomAbs_SurfaceType ta = sa.GetType(), tb = sb.GetType();
    const double angle = max_angle * kPi / 180.0;
    if (ta == GeomAbs_Plane && tb == GeomAbs_Plane) {
        gp_Dir na = sa.Plane().Axis().Direction(), nb = sb.Plane().Axis().Direction();
        if (a.Orientation() == TopAbs_REVERSED)
            na.Reverse();
        if (b.Orientation() == TopAbs_REVERSED)
            nb.Reverse();
        return na.Angle(nb.Reversed()) <= angle &&
               sa.Plane().Distance(sb.Plane().Location()) <= max_gap + 1e-7;
    }
    if (ta == GeomAbs_Cylinder && tb == GeomAbs_Cylinder) {
        const gp_Cylinder ca = sa.Cylinder(), cb = sb.Cylinder();
        return ca.Axis().IsParallel(cb.Axis(), angle) &&
               std::abs(ca.Radius() - cb.Radius()) <= max_gap + 1e-7 &&
               gp_Lin(ca.Axis()).Distance(cb.Location()) <= max_gap + 1e-7;
    }
    // Two analytic surfaces of different kinds (a plane and a cylinder, a cone and a sphere)
    // meet along curves at most; free-form surfaces may be anything.
    auto analytic = [](GeomAbs_SurfaceType t) {
        return t == GeomAbs_Plane || t == GeomAbs_Cylinder || t == GeomAbs_Cone ||
               t == GeomAbs_Sphere || t == GeomAbs_Torus;
    };
    return !(analytic(ta) && analytic(tb) && ta != tb);
}

double common_area(const TopoDS_Shape& a, const TopoDS_Shape& b, double fuzzy) {
    BRepAlgoAPI_Common common;
    TopTools_ListOfShape args, tools;
    args.Append(a);
    tools.Append(b);
    common.SetArguments(args);
    common.SetTools(tools);
    common.SetFuzzyValue(fuzzy);
    common.Build();
    if (!common.IsDone())
        return 0;
    GProp_GProps props;
    BRepGProp::SurfaceProperties(common.Shape(), props);
    return props.Mass();
}

} // namespace

std::vector<FacingPair> facing_surfaces(const std::vector<int>& surfaces, double max_gap,
                                        double max_angle, bool only_gaps, bool filter_slivers,
                                        bool filter_volume_overlaps, int max_results) {
    const double touching = 1e-6;
    std::vector<Bnd_Box> boxes;
    std::vector<std::vector<int>> holders;
    std::vector<TopoDS_Face> faces;
    std::vector<std::vector<int>> curves;
    for (int s : surfaces) {
        boxes.push_back(grown(model().bounding_box(GeomKind::Surface, s), max_gap));
        holders.push_back(volumes_holding(GeomKind::Surface, s));
        faces.push_back(TopoDS::Face(model().shape(GeomKind::Surface, s)));
        curves.push_back(sub_ids(GeomKind::Surface, s, GeomKind::Curve));
    }
    // Faces that share a curve are the two sides of it after an imprint and merge: they meet
    // along the curve, not over an area.
    auto share_curve = [&](std::size_t i, std::size_t j) {
        for (int c : curves[i])
            if (std::binary_search(curves[j].begin(), curves[j].end(), c))
                return true;
        return false;
    };
    auto same_volume = [&](std::size_t i, std::size_t j) {
        for (int v : holders[i])
            if (std::count(holders[j].begin(), holders[j].end(), v))
                return true;
        return false;
    };
    std::vector<FacingPair> out;
    Scan scan(only_gaps ? "Volume gaps" : "Overlapping surfaces",
              static_cast<long>(surfaces.size()));
    for (std::size_t i = 0; i < surfaces.size(); ++i) {
        scan.step();
        for (std::size_t j = i + 1; j < surfaces.size(); ++j) {
            if (max_results > 0 && static_cast<int>(out.size()) >= max_results)
                return out;
            const int a = surfaces[i], b = surfaces[j];
            if (boxes[i].IsOut(boxes[j]) || same_volume(i, j))
                continue;
            const TopoDS_Face& fa = faces[i];
            const TopoDS_Face& fb = faces[j];
            if (!may_face(fa, fb, max_gap, max_angle) || share_curve(i, j))
                continue;
            double gap = 0;
            gp_Vec shift;
            BRepAdaptor_Surface sa(fa, false), sb(fb, false);
            if (sa.GetType() == GeomAbs_Plane && sb.GetType() == GeomAbs_Plane) {
                // Parallel planes (may_face checked): the gap is the distance between them.
                const gp_Dir na = sa.Plane().Axis().Direction();
                const double signed_gap =
                    gp_Vec(sa.Plane().Location(), sb.Plane().Location()).Dot(gp_Vec(na));
                gap = std::abs(signed_gap);
                shift = gp_Vec(na) * -signed_gap;
            } else {
                BRepExtrema_DistShapeShape d(fa, fb);
                if (!d.IsDone() || d.NbSolution() == 0)
                    continue;
                gap = d.Value();
                const gp_Pnt pa = d.PointOnShape1(1), pb = d.PointOnShape2(1);
                if (180.0 - degrees_between(normal_near(fa, pa), normal_near(fb, pb)) > max_angle)
                    continue;
                shift = gp_Vec(pb, pa);
            }
            if (gap > max_gap || (only_gaps ? gap <= touching : gap > touching))
                continue;
            TopoDS_Shape moved = fb;
            if (gap > touching) {
                gp_Trsf move;
                move.SetTranslation(shift);
                moved = BRepBuilderAPI_Transform(fb, move, true).Shape();
            }
            const double area = common_area(fa, moved, std::max(touching, 1e-3 * max_gap));
            if (area <= touching * touching)
                continue;
            if (filter_slivers) {
                const double smaller = std::min(model().area_measure(GeomKind::Surface, a)[0],
                                                model().area_measure(GeomKind::Surface, b)[0]);
                if (area < 0.01 * smaller)
                    continue;
            }
            if (filter_volume_overlaps) {
                bool overlap = false;
                for (int va : volumes_holding(GeomKind::Surface, a))
                    for (int vb : volumes_holding(GeomKind::Surface, b))
                        overlap = overlap || !overlapping_volumes({va, vb}).empty();
                if (overlap)
                    continue;
            }
            out.push_back({std::min(a, b), std::max(a, b), gap, area});
        }
    }
    return out;
}

std::vector<Pair> overlapping_volumes(const std::vector<int>& volumes) {
    // Only volumes whose boxes meet another's can overlap; one general fuse of those splits
    // them where they meet, and a piece that is an image of two volumes is their common part.
    // Volumes that share a surface were merged, and merge refuses volumes that overlap.
    std::vector<int> near;
    for (std::size_t i = 0; i < volumes.size(); ++i) {
        const Bnd_Box bi = model().bounding_box(GeomKind::Volume, volumes[i]);
        for (std::size_t j = 0; j < volumes.size(); ++j)
            if (i != j && !bi.IsOut(model().bounding_box(GeomKind::Volume, volumes[j])) &&
                !share_surface(volumes[i], volumes[j])) {
                near.push_back(volumes[i]);
                break;
            }
    }
    std::vector<Pair> out;
    if (near.size() < 2)
        return out;
    Progress progress("Overlapping volumes", "", true);
    BRepAlgoAPI_BuilderAlgo gf;
    TopTools_ListOfShape args;
    for (int v : near)
        args.Append(model().shape(GeomKind::Volume, v));
    gf.SetArguments(args);
    gf.SetNonDestructive(true);
    gf.SetRunParallel(true);
    gf.SetUseOBB(true);
    Handle(geometry_detail::OccProgress) pi = new geometry_detail::OccProgress(&progress);
    gf.Build(pi->Start());
    if (interrupted())
        throw Interrupted();
    if (!gf.IsDone() || gf.HasErrors())
        throw std::runtime_error("the geometry engine could not intersect the volumes");
    std::map<std::pair<int, int>, double> common;
    TopTools_DataMapOfShapeInteger owner;
    for (int v : near) {
        const TopoDS_Shape solid = model().shape(GeomKind::Volume, v);
        std::vector<TopoDS_Shape> images;
        if (gf.IsDeleted(solid))
            continue;
        const TopTools_ListOfShape& modified = gf.Modified(solid);
        if (modified.IsEmpty())
            images.push_back(solid);
        for (const TopoDS_Shape& m : modified)
            images.push_back(m);
        for (const TopoDS_Shape& image : images) {
            if (const int* other = owner.Seek(image)) {
                GProp_GProps props;
                BRepGProp::VolumeProperties(image, props);
                common[{std::min(*other, v), std::max(*other, v)}] += std::abs(props.Mass());
            } else {
                owner.Bind(image, v);
            }
        }
    }
    for (const auto& [pair, amount] : common)
        out.push_back({pair.first, pair.second, amount});
    return out;
}

std::vector<std::vector<int>> mergeable(const std::vector<int>& volumes, GeomKind kind,
                                        double tolerance) {
    const std::vector<int> ids = entities_of(volumes, kind);
    std::vector<Bnd_Box> boxes;
    for (int id : ids)
        boxes.push_back(grown(model().bounding_box(kind, id), tolerance));
    std::vector<std::vector<int>> out;
    Scan scan("Mergeable entities", static_cast<long>(ids.size()));
    for (std::size_t i = 0; i < ids.size(); ++i) {
        scan.step();
        for (std::size_t j = i + 1; j < ids.size(); ++j) {
            const int a = ids[i], b = ids[j];
            if (boxes[i].IsOut(boxes[j]) || share_body(kind, a, kind, b))
                continue;
            const TopoDS_Shape sa = model().shape(kind, a), sb = model().shape(kind, b);
            bool same = false;
            if (kind == GeomKind::Vertex) {
                same = point_of(a).Distance(point_of(b)) <= tolerance;
            } else {
                // Same size, and every vertex of each lies on the other.
                const double ma = kind == GeomKind::Curve ? model().curve_length(a)
                                                          : model().area_measure(kind, a)[0];
                const double mb = kind == GeomKind::Curve ? model().curve_length(b)
                                                          : model().area_measure(kind, b)[0];
                const double scale = kind == GeomKind::Curve ? 1.0 : std::sqrt(std::max(ma, mb));
                same = std::abs(ma - mb) <= 4 * tolerance * std::max(1.0, scale);
                for (const auto& [from, to] : {std::pair{sa, sb}, std::pair{sb, sa}})
                    for (TopExp_Explorer ex(from, TopAbs_VERTEX); ex.More() && same; ex.Next()) {
                        const double d = distance(ex.Current(), to);
                        same = d >= 0 && d <= tolerance;
                    }
                if (same) {
                    // The middles coincide too (two arcs through the same ends do not).
                    const auto ca = kind == GeomKind::Curve ? std::array<double, 4>{}
                                                            : model().area_measure(kind, a);
                    const auto cb = kind == GeomKind::Curve ? std::array<double, 4>{}
                                                            : model().area_measure(kind, b);
                    if (kind == GeomKind::Curve) {
                        BRepAdaptor_Curve c(TopoDS::Edge(sa));
                        const gp_Pnt mid = c.Value(0.5 * (c.FirstParameter() + c.LastParameter()));
                        const double d = distance(BRepBuilderAPI_MakeVertex(mid).Vertex(), sb);
                        same = d >= 0 && d <= tolerance;
                    } else {
                        same = gp_Pnt(ca[1], ca[2], ca[3]).Distance(gp_Pnt(cb[1], cb[2], cb[3])) <=
                               tolerance * 4;
                    }
                }
            }
            if (same)
                out.push_back({a, b});
        }
    }
    return out;
}

std::vector<int> floating_volumes(const std::vector<int>& volumes) {
    const std::vector<int> all = model().ids(GeomKind::Volume);
    std::vector<int> out;
    if (all.size() < 2)
        return out;
    const double tol = settings().merge_tolerance;
    Scan scan("Floating volumes", static_cast<long>(volumes.size()));
    for (int v : volumes) {
        scan.step();
        const Bnd_Box box = grown(model().bounding_box(GeomKind::Volume, v), tol);
        // A volume merged with another shares a vertex with it; only the others need a distance.
        bool touches = false;
        for (int vertex : sub_ids(GeomKind::Volume, v, GeomKind::Vertex))
            if (volumes_holding(GeomKind::Vertex, vertex).size() > 1) {
                touches = true;
                break;
            }
        for (int other : all) {
            if (touches)
                break;
            if (other == v || box.IsOut(model().bounding_box(GeomKind::Volume, other)))
                continue;
            const double d = distance(model().shape(GeomKind::Volume, v),
                                      model().shape(GeomKind::Volume, other));
            if (d >= 0 && d <= tol) {
                touches = true;
                break;
            }
        }
        if (!touches)
            out.push_back(v);
    }
    return out;
}

std::vector<int> nonmanifold_curves(const std::vector<int>& volumes) {
    std::set<int> out;
    for (int v : volumes)
        for (int c : sub_ids(GeomKind::Volume, v, GeomKind::Curve))
            if (faces_at(v, model().shape(GeomKind::Curve, c)).size() > 2)
                out.insert(c);
    return {out.begin(), out.end()};
}

std::vector<int> nonmanifold_vertices(const std::vector<int>& volumes) {
    // At a manifold vertex the surfaces around it form one fan: each joined to the next by a
    // curve through the vertex. Two fans (two volumes touching at a point, or one volume
    // touching itself) make it non-manifold.
    std::vector<int> out;
    const std::set<int> scope(volumes.begin(), volumes.end());
    for (int vid : entities_of(volumes, GeomKind::Vertex)) {
        std::vector<int> faces;
        for (int s : model().relatives(GeomKind::Vertex, vid, GeomKind::Surface)) {
            bool in_scope = false;
            for (int v : volumes_holding(GeomKind::Surface, s))
                in_scope = in_scope || scope.count(v);
            if (in_scope)
                faces.push_back(s);
        }
        if (faces.size() < 2)
            continue;
        std::vector<int> parent(faces.size());
        std::iota(parent.begin(), parent.end(), 0);
        std::function<int(int)> root = [&](int i) {
            return parent[i] == i ? i : parent[i] = root(parent[i]);
        };
        const std::vector<int> curves = model().relatives(GeomKind::Vertex, vid, GeomKind::Curve);
        for (std::size_t i = 0; i < faces.size(); ++i)
            for (std::size_t j = i + 1; j < faces.size(); ++j) {
                const std::vector<int> ci = sub_ids(GeomKind::Surface, faces[i], GeomKind::Curve);
                const std::vector<int> cj = sub_ids(GeomKind::Surface, faces[j], GeomKind::Curve);
                for (int c : curves)
                    if (std::count(ci.begin(), ci.end(), c) && std::count(cj.begin(), cj.end(), c))
                        parent[root(static_cast<int>(i))] = root(static_cast<int>(j));
            }
        std::set<int> roots;
        for (std::size_t i = 0; i < faces.size(); ++i)
            roots.insert(root(static_cast<int>(i)));
        if (roots.size() > 1)
            out.push_back(vid);
    }
    return out;
}

BadGeometry bad_geometry(const std::vector<int>& volumes) {
    BadGeometry out;
    std::set<int> bodies, surfaces, curves;
    for (int v : volumes) {
        const TopoDS_Shape solid = model().shape(GeomKind::Volume, v);
        BRepCheck_Analyzer check(solid);
        if (check.IsValid())
            continue;
        out.volumes.push_back(v);
        for (int b : model().bodies_of(GeomKind::Volume, v))
            bodies.insert(b);
        auto bad = [&](const TopoDS_Shape& s) {
            const Handle(BRepCheck_Result) r = check.Result(s);
            if (r.IsNull())
                return false;
            for (BRepCheck_ListIteratorOfListOfStatus it(r->Status()); it.More(); it.Next())
                if (it.Value() != BRepCheck_NoError)
                    return true;
            return false;
        };
        for (int s : sub_ids(GeomKind::Volume, v, GeomKind::Surface))
            if (bad(model().shape(GeomKind::Surface, s)))
                surfaces.insert(s);
        for (int c : sub_ids(GeomKind::Volume, v, GeomKind::Curve))
            if (bad(model().shape(GeomKind::Curve, c)))
                curves.insert(c);
    }
    out.bodies.assign(bodies.begin(), bodies.end());
    out.surfaces.assign(surfaces.begin(), surfaces.end());
    out.curves.assign(curves.begin(), curves.end());
    return out;
}

bool same_domain(const TopoDS_Face& a, const TopoDS_Face& b) {
    BRepAdaptor_Surface sa(a), sb(b);
    if (sa.GetType() != sb.GetType())
        return false;
    if (sa.GetType() == GeomAbs_Plane)
        return sa.Plane().Position().Direction().IsParallel(sb.Plane().Position().Direction(),
                                                            1e-9) &&
               sa.Plane().Distance(sb.Plane().Location()) < 1e-7;
    if (sa.GetType() == GeomAbs_Cylinder)
        return std::abs(sa.Cylinder().Radius() - sb.Cylinder().Radius()) < 1e-7 &&
               sa.Cylinder().Axis().IsCoaxial(sb.Cylinder().Axis(), 1e-9, 1e-7);
    return BRep_Tool::Surface(a) == BRep_Tool::Surface(b);
}

} // namespace tarvo::kernel::diagnostics
