// Sweeping: find_sweep_pair, sweep_target, sweep_volume.
//
// The linking surfaces' quads say which boundary node of the source goes where: every source
// boundary node starts a chain of nodes, one per layer, that climbs the linking quads to the
// target boundary. Those chains are the only link between source and target; geometry serves
// to place the nodes inside (a rigid motion fitted to the chain ends, corrected by how far the
// boundary strays from it) and to put the target nodes onto the target surface.
#include "geometry/GeometryModule.h"
#include "mesh/MeshModule.h"
#include "mesh/Structured.h"
#include "mesh/StructuredCommon.h"

#include <BRep_Tool.hxx>
#include <GeomAPI_ProjectPointOnSurf.hxx>
#include <Geom_Surface.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Face.hxx>
#include <gp_Pnt.hxx>
#include <gp_Vec.hxx>
#include <math_Jacobi.hxx>
#include <math_Matrix.hxx>

#include <algorithm>
#include <set>
#include <unordered_map>
#include <unordered_set>

namespace tarvo::kernel::mesh {

namespace {

std::string surface_name(int id) {
    return "surface " + std::to_string(id);
}

// A rigid motion as a screw: rotation by `angle` about the line through `centre` along `axis`,
// then `slide` along the axis. at(f, x) moves x by the fraction f of the whole motion, which is
// what the layers between source and target need (a translation or a rotation alike).
struct Screw {
    Point3 axis{0, 0, 1}, centre{0, 0, 0}, shift{0, 0, 0};
    double angle = 0, slide = 0;

    Point3 at(double f, const Point3& x) const {
        if (angle == 0)
            return x + f * shift;
        const double c = std::cos(f * angle), s = std::sin(f * angle);
        const Point3 r = x - centre;
        const Point3 rotated = c * r + s * cross(axis, r) + (1 - c) * dot(axis, r) * axis;
        return centre + rotated + f * slide * axis;
    }
};

// Least-squares rigid fit of `from` onto `to` (Horn's quaternion method), as a screw.
Screw fit_screw(const std::vector<Point3>& from, const std::vector<Point3>& to) {
    const double n = static_cast<double>(from.size());
    Point3 cf{0, 0, 0}, ct{0, 0, 0};
    for (std::size_t i = 0; i < from.size(); ++i) {
        cf = cf + (1 / n) * from[i];
        ct = ct + (1 / n) * to[i];
    }
    double S[3][3] = {};
    for (std::size_t i = 0; i < from.size(); ++i) {
        const Point3 a = from[i] - cf, b = to[i] - ct;
        for (int r = 0; r < 3; ++r)
            for (int c = 0; c < 3; ++c)
                S[r][c] += a[r] * b[c];
    }
    math_Matrix N(1, 4, 1, 4);
    const double xx = S[0][0], xy = S[0][1], xz = S[0][2], yx = S[1][0], yy = S[1][1], yz = S[1][2],
                 zx = S[2][0], zy = S[2][1], zz = S[2][2];
    const double rows[4][4] = {{xx + yy + zz, yz - zy, zx - xz, xy - yx},
                               {yz - zy, xx - yy - zz, xy + yx, zx + xz},
                               {zx - xz, xy + yx, -xx + yy - zz, yz + zy},
                               {xy - yx, zx + xz, yz + zy, -xx - yy + zz}};
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c)
            N(r + 1, c + 1) = rows[r][c];
    Screw screw;
    const Point3 shift = ct - cf;
    screw.shift = shift;
    math_Jacobi jacobi(N);
    if (!jacobi.IsDone())
        return screw;
    int best = 1;
    for (int i = 2; i <= 4; ++i)
        if (jacobi.Values()(i) > jacobi.Values()(best))
            best = i;
    double w = jacobi.Vectors()(1, best);
    Point3 q{jacobi.Vectors()(2, best), jacobi.Vectors()(3, best), jacobi.Vectors()(4, best)};
    if (w < 0) {
        w = -w;
        q = -1 * q;
    }
    const double half_sin = norm(q);
    const double angle = 2 * std::atan2(half_sin, w);
    if (angle < 1e-9)
        return screw;
    screw.angle = angle;
    screw.axis = (1 / half_sin) * q;
    // The whole motion maps x to R x + t with t = ct - R cf; its axis point c solves
    // (I - R) c = t across the axis.
    Screw rotation_only = screw;
    rotation_only.centre = {0, 0, 0};
    const Point3 t = ct - rotation_only.at(1, cf);
    screw.slide = dot(t, screw.axis);
    const Point3 across = t - screw.slide * screw.axis;
    screw.centre = 0.5 * (across + (1 / std::tan(angle / 2)) * cross(screw.axis, across));
    return screw;
}

// The nodes on the boundary of a surface: those of its curves' and vertices' pieces. False when
// one of those curves is unmeshed.
bool boundary_nodes(const MeshModule& module, int surface, std::unordered_set<int>& out) {
    for (int curve : module.boundary(2, surface)) {
        const MeshPiece* p = module.state().piece({1, curve});
        if (!p)
            return false;
        for (int i = 0; i < p->node_count(); ++i)
            out.insert(p->first_node + i);
        for (int v : module.boundary(1, curve))
            if (const MeshPiece* pv = module.state().piece({0, v}))
                for (int i = 0; i < pv->node_count(); ++i)
                    out.insert(pv->first_node + i);
    }
    return true;
}

// Everything both sweep steps need: the chains up the linking surfaces and the fitted motion.
struct Sweep {
    const MeshPiece* source = nullptr;
    std::vector<std::vector<int>> chains;       // per source boundary node: its node at each layer
    std::vector<Point3> starts;                 // per chain: its source node's position
    std::vector<double> layer_fraction;         // per layer: mean arc-length fraction of chains
    std::vector<std::vector<Point3>> departure; // per layer, per chain: node - motion(start)
    Screw motion;
    int layers = 0; // element layers; chains hold layers + 1 nodes
};

bool prepare(const MeshModule& module, int volume_id, int source, int target, Sweep& sw,
             std::string& why) {
    const MeshState& state = module.state();
    const std::string vol = "volume " + std::to_string(volume_id);
    sw.source = state.piece({2, source});
    if (!sw.source || sw.source->element_count() == 0) {
        why = "the source " + surface_name(source) + " of " + vol + " is not meshed";
        return false;
    }
    std::unordered_set<int> src_nodes, tgt_nodes;
    if (!boundary_nodes(module, source, src_nodes) || !boundary_nodes(module, target, tgt_nodes)) {
        why = "the curves of the source and target of " + vol + " are not all meshed";
        return false;
    }
    std::unordered_map<int, std::vector<int>> neighbours;
    for (int face : module.boundary(3, volume_id)) {
        if (face == source || face == target)
            continue;
        const MeshPiece* p = state.piece({2, face});
        if (!p || p->count(ElemKind::Quad) != p->element_count()) {
            why = "the linking " + surface_name(face) + " of " + vol +
                  (p ? " is not meshed with quads only" : " is not meshed");
            return false;
        }
        for (const ElemBlock& b : p->blocks)
            for (int e = 0; e < b.count(); ++e)
                for (int c = 0; c < 4; ++c) {
                    const int a = b.conn[4 * e + c], d = b.conn[4 * e + (c + 1) % 4];
                    auto add = [&](int x, int y) {
                        auto& list = neighbours[x];
                        if (std::find(list.begin(), list.end(), y) == list.end())
                            list.push_back(y);
                    };
                    add(a, d);
                    add(d, a);
                }
    }
    // Climb layer by layer: a node's next is its one linking neighbour in neither its own layer
    // nor the one below.
    std::vector<int> layer(src_nodes.begin(), src_nodes.end());
    std::sort(layer.begin(), layer.end());
    for (int n : layer)
        sw.chains.push_back({n});
    std::unordered_set<int> below, current(src_nodes);
    const std::string not_swept = vol + " cannot be swept from " + surface_name(source) + " to " +
                                  surface_name(target) + ": ";
    while (true) {
        std::unordered_set<int> next;
        for (auto& chain : sw.chains) {
            int up = 0, found = 0;
            for (int m : neighbours[chain.back()])
                if (!current.count(m) && !below.count(m)) {
                    up = m;
                    ++found;
                }
            if (found != 1) {
                why = not_swept + "the linking surfaces are not structured quad grids from the "
                                  "source to the target";
                return false;
            }
            chain.push_back(up);
            next.insert(up);
        }
        std::size_t reached = 0;
        for (int n : next)
            reached += tgt_nodes.count(n);
        if (next.size() != sw.chains.size() || (reached != 0 && reached != next.size())) {
            why = not_swept + "the linking surfaces do not have the same number of layers "
                              "everywhere";
            return false;
        }
        if (reached != 0)
            break;
        if (sw.chains.front().size() > static_cast<std::size_t>(state.node_count())) {
            why = not_swept + "the linking surfaces never reach the target";
            return false;
        }
        below = std::move(current);
        current = std::move(next);
    }
    if (sw.chains.size() != tgt_nodes.size()) {
        why = not_swept + "the source and target boundaries have different node counts";
        return false;
    }
    sw.layers = static_cast<int>(sw.chains.front().size()) - 1;
    std::vector<Point3> from, to;
    sw.layer_fraction.assign(sw.layers + 1, 0.0);
    for (const auto& chain : sw.chains) {
        std::vector<double> s(chain.size(), 0.0);
        Point3 prev = *state.node_position(chain[0]);
        for (std::size_t k = 1; k < chain.size(); ++k) {
            const Point3 p = *state.node_position(chain[k]);
            s[k] = s[k - 1] + norm(p - prev);
            prev = p;
        }
        for (std::size_t k = 0; k < chain.size(); ++k) {
            s[k] = s.back() > 0 ? s[k] / s.back() : double(k) / sw.layers;
            sw.layer_fraction[k] += s[k] / sw.chains.size();
        }
        from.push_back(*state.node_position(chain.front()));
        to.push_back(prev);
    }
    sw.motion = fit_screw(from, to);
    sw.starts = from;
    sw.departure.assign(sw.layers + 1, {});
    for (int k = 0; k <= sw.layers; ++k)
        for (std::size_t b = 0; b < sw.chains.size(); ++b)
            sw.departure[k].push_back(*state.node_position(sw.chains[b][k]) -
                                      sw.motion.at(sw.layer_fraction[k], from[b]));
    return true;
}

// Where a source node inside the source lands at layer k: the fitted motion's share for that
// layer, plus the boundary's departure from the motion there, averaged with weights that fall
// off with the square of the distance to each boundary node.
Point3 carried(const Sweep& sw, const Point3& p, int k, std::vector<double>& weights) {
    if (weights.empty()) {
        double total = 0;
        for (const Point3& start : sw.starts) {
            const Point3 d = start - p;
            weights.push_back(1 / std::max(dot(d, d), 1e-300));
            total += weights.back();
        }
        for (double& w : weights)
            w /= total;
    }
    const double f = sw.layer_fraction[k];
    Point3 out = sw.motion.at(f, p);
    for (std::size_t b = 0; b < weights.size(); ++b)
        out = out + weights[b] * sw.departure[k][b];
    return out;
}

// The normal of the face at the point of it nearest to p, turned as the face is used.
Point3 face_normal(const TopoDS_Face& face, const Point3& p) {
    const Handle(Geom_Surface) surface = BRep_Tool::Surface(face);
    GeomAPI_ProjectPointOnSurf proj(gp_Pnt(p[0], p[1], p[2]), surface);
    if (proj.NbPoints() == 0)
        return {0, 0, 0};
    double u = 0, v = 0;
    proj.LowerDistanceParameters(u, v);
    gp_Pnt at;
    gp_Vec du, dv;
    surface->D1(u, v, at, du, dv);
    const gp_Vec n = du.Crossed(dv);
    const double s = face.Orientation() == TopAbs_REVERSED ? -1 : 1;
    return {s * n.X(), s * n.Y(), s * n.Z()};
}

// How the first element of a surface mesh turns relative to the face: +1 with, -1 against.
double element_turn(const TopoDS_Face& face, const std::vector<Point3>& corners) {
    Point3 centre{0, 0, 0};
    for (const Point3& c : corners)
        centre = centre + (1.0 / corners.size()) * c;
    const Point3 n = corners.size() == 4 ? cross(corners[2] - corners[0], corners[3] - corners[1])
                                         : cross(corners[1] - corners[0], corners[2] - corners[0]);
    return dot(n, face_normal(face, centre)) < 0 ? -1 : 1;
}

TopoDS_Face face_of(int surface) {
    return TopoDS::Face(geometry_module()->model().shape(GeomKind::Surface, surface));
}

} // namespace

bool sweepable_pair(const VolumeTopology& topo, int s, int t) {
    auto curves_of = [&](int f) -> const std::vector<int>& {
        static const std::vector<int> none;
        const auto it = topo.curves.find(f);
        return it == topo.curves.end() ? none : it->second;
    };
    auto has = [](const std::vector<int>& list, int x) {
        return std::find(list.begin(), list.end(), x) != list.end();
    };
    auto meets = [&](int a, int b) {
        for (int c : curves_of(a))
            if (has(curves_of(b), c))
                return true;
        return false;
    };
    auto touches = [&](int f, int v) {
        for (int c : curves_of(f)) {
            const auto it = topo.ends.find(c);
            if (it != topo.ends.end() && has(it->second, v))
                return true;
        }
        return false;
    };
    if (s == t || topo.faces.size() <= 2 || meets(s, t))
        return false;
    // Every other face joins s and t, and each of its curves lies on s or t or runs from one to
    // the other.
    for (int f : topo.faces) {
        if (f == s || f == t)
            continue;
        if (!meets(f, s) || !meets(f, t))
            return false;
        for (int c : curves_of(f)) {
            if (has(curves_of(s), c) || has(curves_of(t), c))
                continue;
            const auto it = topo.ends.find(c);
            bool on_s = false, on_t = false;
            if (it != topo.ends.end())
                for (int v : it->second) {
                    on_s = on_s || touches(s, v);
                    on_t = on_t || touches(t, v);
                }
            if (!on_s || !on_t)
                return false;
        }
    }
    return true;
}

bool find_sweep_pair(const MeshModule& module, int volume_id, int& source, int& target,
                     std::string& why) {
    VolumeTopology topo;
    topo.faces = module.boundary(3, volume_id);
    const std::vector<int>& faces = topo.faces;
    for (int f : faces)
        for (int c : topo.curves[f] = module.boundary(2, f))
            topo.ends[c] = module.boundary(1, c);
    auto sweepable = [&](int s, int t) { return sweepable_pair(topo, s, t); };
    const std::string vol = "volume " + std::to_string(volume_id);
    for (int given : {source, target})
        if (given != 0 && !std::count(faces.begin(), faces.end(), given)) {
            why = surface_name(given) + " is not a surface of " + vol;
            return false;
        }
    for (int s : faces)
        for (int t : faces) {
            if ((source != 0 && s != source) || (target != 0 && t != target))
                continue;
            if (source == 0 && target == 0 && s > t)
                continue;
            if (sweepable(s, t)) {
                source = s;
                target = t;
                return true;
            }
        }
    why = vol + " cannot be swept: ";
    if (source != 0 && target != 0)
        why += "not every other surface joins " + surface_name(source) + " to " +
               surface_name(target) + " with curves from one to the other";
    else
        why += "no two of its surfaces are joined by all the others";
    return false;
}

bool sweep_target(const MeshModule& module, int volume_id, int source, int target, NewMesh& out,
                  std::string& why) {
    Sweep sw;
    if (!prepare(module, volume_id, source, target, sw, why))
        return false;
    const MeshState& state = module.state();
    const MeshPiece& src = *sw.source;
    const TopoDS_Face face = face_of(target);
    const Handle(Geom_Surface) surface = BRep_Tool::Surface(face);
    out = NewMesh{};
    std::unordered_map<int, int> image; // source node id -> target connectivity entry
    for (const auto& chain : sw.chains)
        image[chain.front()] = chain.back();
    for (int i = 0; i < src.node_count(); ++i) {
        std::vector<double> weights;
        Point3 p = carried(sw, src.nodes[i], sw.layers, weights);
        GeomAPI_ProjectPointOnSurf proj(gp_Pnt(p[0], p[1], p[2]), surface);
        if (proj.NbPoints() > 0) {
            const gp_Pnt q = proj.NearestPoint();
            p = {q.X(), q.Y(), q.Z()};
        }
        image[src.first_node + i] = NewMesh::local(i);
        out.nodes.push_back(p);
    }
    auto position = [&](int entry) {
        return entry > 0 ? *state.node_position(entry) : out.nodes[-entry];
    };
    bool turned = false;
    for (const ElemBlock& b : src.blocks) {
        const int n = info(b.kind).nodes;
        NewMesh::Block& dst = out.block(b.kind);
        for (std::size_t c = 0; c < b.conn.size(); ++c) {
            const auto it = image.find(b.conn[c]);
            if (it == image.end()) {
                why = "the mesh of source " + surface_name(source) + " uses nodes off its boundary";
                return false;
            }
            dst.conn.push_back(it->second);
        }
        // Keep the source's way round relative to its face, whatever the target face's sense.
        if (!turned && b.count() > 0) {
            std::vector<Point3> from, to;
            for (int c = 0; c < n; ++c) {
                from.push_back(*state.node_position(b.conn[c]));
                to.push_back(position(dst.conn[c]));
            }
            turned = element_turn(face_of(source), from) != element_turn(face, to);
        }
    }
    if (turned)
        for (NewMesh::Block& b : out.blocks) {
            const int n = info(b.kind).nodes;
            for (std::size_t e = 0; e < b.conn.size(); e += n)
                std::reverse(b.conn.begin() + e + 1, b.conn.begin() + e + n);
        }
    return true;
}

bool sweep_volume(const MeshModule& module, int volume_id, int source, int target, NewMesh& out,
                  std::string& why) {
    Sweep sw;
    if (!prepare(module, volume_id, source, target, sw, why))
        return false;
    const MeshState& state = module.state();
    const MeshPiece& src = *sw.source;
    const MeshPiece* tgt = state.piece({2, target});
    const int L = sw.layers;
    // Node ids per layer for every source node: chains on the boundary; inside, the source node,
    // new nodes, and the target node of the same index (sweep_target keeps the order).
    std::unordered_map<int, std::vector<int>> column;
    for (const auto& chain : sw.chains)
        column[chain.front()] = chain;
    const std::string differs = "the mesh of target " + surface_name(target) +
                                " is not the source mesh carried over; delete it and mesh again";
    if (!tgt || tgt->node_count() != src.node_count() || tgt->blocks.size() != src.blocks.size()) {
        why = differs;
        return false;
    }
    out = NewMesh{};
    std::vector<Point3> layer_pos; // positions of new nodes, to orient the elements
    for (int i = 0; i < src.node_count(); ++i) {
        std::vector<int>& ids = column[src.first_node + i];
        ids.push_back(src.first_node + i);
        std::vector<double> weights;
        for (int k = 1; k < L; ++k) {
            ids.push_back(NewMesh::local(static_cast<int>(out.nodes.size())));
            out.nodes.push_back(carried(sw, src.nodes[i], k, weights));
        }
        ids.push_back(tgt->first_node + i);
    }
    // The target's elements must be the source's, node for node through the columns.
    for (std::size_t bi = 0; bi < src.blocks.size(); ++bi) {
        const ElemBlock &sb = src.blocks[bi], &tb = tgt->blocks[bi];
        const int n = info(sb.kind).nodes;
        if (tb.kind != sb.kind || tb.conn.size() != sb.conn.size()) {
            why = differs;
            return false;
        }
        for (std::size_t e = 0; e < sb.conn.size(); e += n) {
            std::vector<int> a, b(tb.conn.begin() + e, tb.conn.begin() + e + n);
            for (int c = 0; c < n; ++c) {
                const auto it = column.find(sb.conn[e + c]);
                if (it == column.end()) {
                    why = "the mesh of source " + surface_name(source) +
                          " uses nodes off its boundary";
                    return false;
                }
                a.push_back(it->second.back());
            }
            std::sort(a.begin(), a.end());
            std::sort(b.begin(), b.end());
            if (a != b) {
                why = differs;
                return false;
            }
        }
    }
    auto position = [&](int entry) {
        return entry > 0 ? *state.node_position(entry) : out.nodes[-entry];
    };
    double signed_volume = 0;
    for (const ElemBlock& sb : src.blocks) {
        if (sb.kind != ElemKind::Quad && sb.kind != ElemKind::Tri)
            continue;
        const int n = info(sb.kind).nodes;
        NewMesh::Block& dst =
            out.block(sb.kind == ElemKind::Quad ? ElemKind::Hex : ElemKind::Wedge);
        for (std::size_t e = 0; e < sb.conn.size(); e += n)
            for (int k = 0; k < L; ++k) {
                for (int level : {k, k + 1})
                    for (int c = 0; c < n; ++c)
                        dst.conn.push_back(column[sb.conn[e + c]][level]);
                if (k != 0)
                    continue;
                const int* h = &dst.conn[dst.conn.size() - 2 * n];
                const Point3 p0 = position(h[0]);
                signed_volume +=
                    triple(position(h[1]) - p0, position(h[n - 1]) - p0, position(h[n]) - p0);
            }
    }
    // Source elements turn one way relative to the sweep direction; all hexes and wedges are
    // turned together so that their volumes come out positive.
    if (signed_volume < 0)
        for (NewMesh::Block& b : out.blocks)
            reverse_bases(b.conn, info(b.kind).nodes / 2);
    return true;
}

} // namespace tarvo::kernel::mesh
