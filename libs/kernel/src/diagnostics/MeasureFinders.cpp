// Finders that measure single entities: small and narrow curves, surfaces and volumes,
// hydraulic radius, close loops, curve and corner angles, blends. All on OpenCASCADE.

#include "diagnostics/FinderSupport.h"

namespace tarvo::kernel::diagnostics {

using namespace detail;

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

} // namespace tarvo::kernel::diagnostics
