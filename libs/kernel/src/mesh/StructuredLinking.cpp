// The linking surfaces of a sweep as structured quad bands: linking_surfaces_fit (before
// anything is meshed) and map_linking_surface (from the surface's meshed curves).
//
// Gmsh's transfinite surfaces need exactly four curves; a band only needs its two sides (the
// curves it shares with the source and with the target) to hold equal node counts. The sides
// may be split into several curves, and a periodic band (a cylinder's side, a hole's wall) has
// one seam curve met twice, which serves as both of its linking curves.
#include "geometry/GeometryModule.h"
#include "mesh/MeshModule.h"
#include "mesh/Sizing.h"
#include "mesh/Structured.h"
#include "mesh/StructuredCommon.h"

#include <BRepTools.hxx>
#include <BRep_Tool.hxx>
#include <GeomAPI_ProjectPointOnSurf.hxx>
#include <Geom_Surface.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Face.hxx>
#include <gp_Pnt.hxx>
#include <gp_Vec.hxx>

#include <set>
#include <unordered_map>

namespace tarvo::kernel::mesh {

namespace {

std::string surface_name(int id) {
    return "surface " + std::to_string(id);
}

// A linking surface's curves sorted by where they lie: on the source, on the target, or running
// from one to the other.
struct Sides {
    std::vector<int> source, target, linking;
};

Sides sides_of(const MeshModule& module, int source, int target, int surface) {
    const std::vector<int> on_source = module.boundary(2, source),
                           on_target = module.boundary(2, target);
    Sides sides;
    for (int c : module.boundary(2, surface)) {
        if (std::count(on_source.begin(), on_source.end(), c))
            sides.source.push_back(c);
        else if (std::count(on_target.begin(), on_target.end(), c))
            sides.target.push_back(c);
        else
            sides.linking.push_back(c);
    }
    return sides;
}

// Intervals of a curve: its edges when it is meshed already (that mesh is kept), else what the
// sizing plans for it.
int intervals_of(const MeshModule& module, int curve) {
    if (const MeshPiece* p = module.state().piece({1, curve}))
        return p->count(ElemKind::Edge);
    return curve_plan(curve).intervals;
}

// The node id of a vertex's piece, 0 when the vertex is unmeshed.
int vertex_node(const MeshModule& module, int vertex) {
    const MeshPiece* p = module.state().piece({0, vertex});
    return p && p->node_count() == 1 ? p->first_node : 0;
}

// Walks the edges of `curves` from node `start` as one path: to a node with no unused edge (an
// open side), or back to `start` (a closed side, whose path then ends with `start` again). `ok`
// is false when a curve is unmeshed, the edges branch, or some are left unwalked.
std::vector<int> walk(const MeshModule& module, const std::vector<int>& curves, int start,
                      bool& ok) {
    std::vector<std::pair<int, int>> edges;
    std::unordered_map<int, std::vector<std::size_t>> at_node;
    ok = true;
    for (int c : curves) {
        const MeshPiece* p = module.state().piece({1, c});
        if (!p) {
            ok = false;
            return {};
        }
        for (const ElemBlock& b : p->blocks)
            for (std::size_t e = 0; b.kind == ElemKind::Edge && e + 1 < b.conn.size(); e += 2) {
                at_node[b.conn[e]].push_back(edges.size());
                at_node[b.conn[e + 1]].push_back(edges.size());
                edges.push_back({b.conn[e], b.conn[e + 1]});
            }
    }
    std::vector<bool> used(edges.size(), false);
    std::vector<int> path{start};
    while (path.size() <= edges.size()) {
        const std::vector<std::size_t>& around = at_node[path.back()];
        if (around.size() > 2) {
            ok = false;
            return path;
        }
        // At a closed side's start both edges are free: either will do, the caller decides the
        // sense.
        const auto free =
            std::find_if(around.begin(), around.end(), [&](std::size_t e) { return !used[e]; });
        if (free == around.end())
            break;
        used[*free] = true;
        const auto [a, b] = edges[*free];
        path.push_back(a == path.back() ? b : a);
        if (path.back() == start)
            break;
    }
    ok = path.size() == edges.size() + 1;
    return path;
}

// Projection onto one face, set up once: the projector's search structures are built by Init,
// not per point (for a B-spline face that set-up is most of the cost), and the search stays in
// the face's parameter range.
class FaceProjector {
public:
    explicit FaceProjector(const TopoDS_Face& face)
        : surface_(BRep_Tool::Surface(face)),
          sense_(face.Orientation() == TopAbs_REVERSED ? -1 : 1) {
        double u0 = 0, u1 = 0, v0 = 0, v1 = 0;
        BRepTools::UVBounds(face, u0, u1, v0, v1);
        projector_.Init(surface_, u0, u1, v0, v1);
    }
    // The point of the face nearest to p, and the face's normal there as the face is used (p and
    // no normal when the projection fails).
    std::pair<Point3, Point3> operator()(const Point3& p) {
        projector_.Perform(gp_Pnt(p[0], p[1], p[2]));
        if (!projector_.IsDone() || projector_.NbPoints() == 0)
            return {p, {0, 0, 0}};
        double u = 0, v = 0;
        projector_.LowerDistanceParameters(u, v);
        gp_Pnt at;
        gp_Vec du, dv;
        surface_->D1(u, v, at, du, dv);
        const gp_Vec n = du.Crossed(dv) * sense_;
        return {{at.X(), at.Y(), at.Z()}, {n.X(), n.Y(), n.Z()}};
    }

private:
    Handle(Geom_Surface) surface_;
    double sense_;
    GeomAPI_ProjectPointOnSurf projector_;
};

// Normalised arc length at each point of a polyline.
std::vector<double> arc_fractions(const std::vector<Point3>& line) {
    std::vector<double> s(line.size(), 0.0);
    for (std::size_t k = 1; k < line.size(); ++k)
        s[k] = s[k - 1] + norm(line[k] - line[k - 1]);
    for (std::size_t k = 0; k < line.size(); ++k)
        s[k] =
            s.back() > 0 ? s[k] / s.back() : double(k) / std::max<std::size_t>(line.size() - 1, 1);
    return s;
}

} // namespace

bool linking_surfaces_fit(const MeshModule& module, int volume_id, int source, int target,
                          std::string& why) {
    const std::string vol = "volume " + std::to_string(volume_id);
    int layers = 0, first_linking = 0;
    for (int f : module.boundary(3, volume_id)) {
        if (f == source || f == target)
            continue;
        const Sides sides = sides_of(module, source, target, f);
        const std::string name = "the linking " + surface_name(f) + " of " + vol;
        if (sides.linking.empty() || sides.linking.size() > 2 || sides.source.empty() ||
            sides.target.empty()) {
            why = name + " is not a band from the source to the target: it has " +
                  std::to_string(sides.linking.size()) + " curves running between them";
            return false;
        }
        for (int c : sides.linking) {
            const int n = intervals_of(module, c);
            if (layers == 0) {
                layers = n;
                first_linking = c;
            } else if (n != layers) {
                why = "the linking curves of " + vol + " have different interval counts: curve " +
                      std::to_string(first_linking) + " has " + std::to_string(layers) +
                      ", curve " + std::to_string(c) + " has " + std::to_string(n);
                return false;
            }
        }
        int on_source = 0, on_target = 0;
        for (int c : sides.source)
            on_source += intervals_of(module, c);
        for (int c : sides.target)
            on_target += intervals_of(module, c);
        if (on_source != on_target) {
            why = name + " has " + std::to_string(on_source) + " intervals on the source and " +
                  std::to_string(on_target) + " on the target";
            return false;
        }
    }
    return true;
}

bool map_linking_surface(const MeshModule& module, int volume_id, int source, int target,
                         int surface, NewMesh& out, std::string& why) {
    const MeshState& state = module.state();
    const std::string name =
        "linking " + surface_name(surface) + " of volume " + std::to_string(volume_id);
    const Sides sides = sides_of(module, source, target, surface);
    if (sides.linking.empty() || sides.linking.size() > 2 || sides.source.empty() ||
        sides.target.empty()) {
        why = "the " + name + " is not a band from the source to the target";
        return false;
    }
    for (const auto* list : {&sides.source, &sides.target, &sides.linking})
        for (int c : *list)
            if (!state.meshed({1, c})) {
                why = "curve " + std::to_string(c) + " of the " + name + " is not meshed";
                return false;
            }
    const std::vector<int> on_source = module.boundary(2, source);
    // Each linking curve's nodes from its source end to its target end.
    std::vector<std::vector<int>> links;
    for (int c : sides.linking) {
        int start = 0;
        for (int v : module.boundary(1, c))
            for (int s : on_source)
                for (int sv : module.boundary(1, s))
                    if (sv == v)
                        start = vertex_node(module, v);
        bool ok = start != 0;
        std::vector<int> nodes = ok ? walk(module, {c}, start, ok) : std::vector<int>{};
        if (!ok || nodes.front() == nodes.back()) {
            why = "curve " + std::to_string(c) + " of the " + name +
                  " does not run from the source to the target";
            return false;
        }
        links.push_back(std::move(nodes));
    }
    const bool periodic = links.size() == 1;
    if (!periodic && links[0].size() != links[1].size()) {
        why = "the " + name + " cannot be a structured band: its linking curves have " +
              std::to_string(links[0].size()) + " and " + std::to_string(links[1].size()) +
              " nodes";
        return false;
    }
    // The band's sides: open from the first linking curve to the second, or closed from the
    // seam round to it again.
    bool ok_source = false, ok_target = false;
    std::vector<int> bottom = walk(module, sides.source, links[0].front(), ok_source);
    std::vector<int> top = walk(module, sides.target, links[0].back(), ok_target);
    const bool bottom_closed = bottom.size() > 1 && bottom.back() == bottom.front();
    const bool top_closed = top.size() > 1 && top.back() == top.front();
    if (!ok_source || !ok_target || bottom_closed != periodic || top_closed != periodic ||
        (!periodic && (bottom.back() != links[1].front() || top.back() != links[1].back()))) {
        why = "the " + name + " is not a band: its curves on the source and target do not " +
              (periodic ? "close around its seam" : "join its two linking curves");
        return false;
    }
    if (bottom.size() != top.size()) {
        why = "the " + name + " cannot be a structured band: it has " +
              std::to_string(bottom.size() - (periodic ? 1 : 0)) + " nodes on the source and " +
              std::to_string(top.size() - (periodic ? 1 : 0)) + " on the target";
        return false;
    }
    auto position = [&](int id) { return *state.node_position(id); };
    if (periodic) {
        // Both sides start at the seam; the target side runs the same way round as the source
        // side when their steps agree.
        double with = 0, against = 0;
        const std::size_t n = bottom.size();
        for (std::size_t j = 0; j + 1 < n; ++j) {
            const Point3 step = position(bottom[j + 1]) - position(bottom[j]);
            with += dot(step, position(top[j + 1]) - position(top[j]));
            against += dot(step, position(top[n - 2 - j]) - position(top[n - 1 - j]));
        }
        if (against > with)
            std::reverse(top.begin(), top.end());
    }
    const std::vector<int>& first = links.front();
    const std::vector<int>& last = links.back();
    const int ni = static_cast<int>(first.size()), nj = static_cast<int>(bottom.size());

    std::vector<Point3> bottom_at, top_at, first_at, last_at;
    for (int id : bottom)
        bottom_at.push_back(position(id));
    for (int id : top)
        top_at.push_back(position(id));
    for (int id : first)
        first_at.push_back(position(id));
    for (int id : last)
        last_at.push_back(position(id));
    const std::vector<double> u_first = arc_fractions(first_at), u_last = arc_fractions(last_at);
    const std::vector<double> s_bottom = arc_fractions(bottom_at), s_top = arc_fractions(top_at);

    FaceProjector project(
        TopoDS::Face(geometry_module()->model().shape(GeomKind::Surface, surface)));
    out = NewMesh{};
    Grid grid{ni, nj, std::vector<int>(static_cast<std::size_t>(ni) * nj, 0)};
    auto set = [&](int i, int j, int id) { grid.ids[static_cast<std::size_t>(i) * nj + j] = id; };
    for (int j = 0; j < nj; ++j) {
        set(0, j, bottom[j]);
        set(ni - 1, j, top[j]);
    }
    for (int i = 0; i < ni; ++i) {
        set(i, 0, first[i]);
        set(i, nj - 1, last[i]);
    }
    // Coons patch over node indices: the straight line between the column's source and target
    // nodes, plus each linking curve's departure from its own chord, blended across the band.
    for (int j = 1; j + 1 < nj; ++j) {
        const double s = 0.5 * (s_bottom[j] + s_top[j]);
        for (int i = 1; i + 1 < ni; ++i) {
            const double u = (1 - s) * u_first[i] + s * u_last[i];
            const Point3 chord_first = (1 - u) * first_at.front() + u * first_at.back();
            const Point3 chord_last = (1 - u) * last_at.front() + u * last_at.back();
            const Point3 p = (1 - u) * bottom_at[j] + u * top_at[j] +
                             (1 - s) * (first_at[i] - chord_first) + s * (last_at[i] - chord_last);
            set(i, j, NewMesh::local(static_cast<int>(out.nodes.size())));
            out.nodes.push_back(project(p).first);
        }
    }
    auto at = [&](int entry) { return entry > 0 ? position(entry) : out.nodes[-entry]; };
    std::vector<int>& quads = out.block(ElemKind::Quad).conn;
    for (int i = 0; i + 1 < ni; ++i)
        for (int j = 0; j + 1 < nj; ++j)
            quads.insert(quads.end(), {grid.at(i, j), grid.at(i, j + 1), grid.at(i + 1, j + 1),
                                       grid.at(i + 1, j)});
    // Quads face the way the face's normal points (its orientation in the model included),
    // judged on a quad in the middle of the band, away from any seam.
    const std::size_t mid = 4 * (static_cast<std::size_t>((ni - 1) / 2) * (nj - 1) + (nj - 1) / 2);
    Point3 centre{0, 0, 0};
    for (int c = 0; c < 4; ++c)
        centre = centre + 0.25 * at(quads[mid + c]);
    const Point3 n =
        cross(at(quads[mid + 2]) - at(quads[mid]), at(quads[mid + 3]) - at(quads[mid + 1]));
    if (dot(n, project(centre).second) < 0)
        for (std::size_t e = 0; e < quads.size(); e += 4)
            std::swap(quads[e + 1], quads[e + 3]);
    return true;
}

} // namespace tarvo::kernel::mesh
