// `smooth <list> [scheme laplacian|condition]`: moves the nodes inside meshed surfaces and
// volumes toward the centre of their neighbours. Nodes on vertices and curves never move, nodes
// inside a surface stay on it (projected onto the OpenCASCADE face), and a move is kept only if
// no element around the node inverts; `condition` keeps a move only if the worst scaled Jacobian
// around the node does not get worse. The ids stay; the smoothed piece replaces the old one, so
// undo brings the old positions back.
//
// Threading: kernel thread only.

#include "core/Command.h"
#include "core/Session.h"
#include "geometry/GeometryModule.h"
#include "mesh/MeshModule.h"
#include "mesh/Quality.h"

#include <BRep_Tool.hxx>
#include <GeomAPI_ProjectPointOnSurf.hxx>
#include <Geom_Surface.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Face.hxx>

#include <algorithm>
#include <set>
#include <unordered_map>

namespace tarvo::kernel::mesh {

namespace {

constexpr int kSweeps = 5;

class Smoother {
public:
    // `above`: meshed volumes that a smoothed surface bounds; their elements at a moved node are
    // checked as well.
    Smoother(const MeshState& state, const MeshPiece& piece, bool guard_quality,
             std::vector<const MeshPiece*> above = {})
        : state(state), piece(piece), guard(guard_quality), above(std::move(above)) {}

    // The piece with its nodes moved; counts the nodes that moved.
    std::shared_ptr<MeshPiece> run(const TopoDS_Face* face, int& moved) {
        auto out = std::make_shared<MeshPiece>(piece);
        own = &out->nodes;
        for (const ElemBlock& b : piece.blocks) {
            const int n = info(b.kind).nodes;
            for (int e = 0; e < b.count(); ++e) {
                const int* c = b.conn.data() + e * n;
                for (const auto& [i, j] : topology(b.kind).edges) {
                    neighbours[c[i]].insert(c[j]);
                    neighbours[c[j]].insert(c[i]);
                }
                for (int k = 0; k < n; ++k)
                    if (is_own(c[k]))
                        around[c[k]].push_back({&b, e});
            }
        }
        for (const MeshPiece* p : above)
            for (const ElemBlock& b : p->blocks) {
                const int n = info(b.kind).nodes;
                for (int e = 0; e < b.count(); ++e)
                    for (int k = 0; k < n; ++k)
                        if (is_own(b.conn[e * n + k]))
                            around[b.conn[e * n + k]].push_back({&b, e});
            }
        Handle(Geom_Surface) surface = face ? BRep_Tool::Surface(*face) : nullptr;
        std::set<int> changed;
        for (int sweep = 0; sweep < kSweeps; ++sweep) {
            for (int i = 0; i < out->node_count(); ++i) {
                const int id = piece.first_node + i;
                const auto& near = neighbours[id];
                if (near.empty())
                    continue;
                Point3 target{0, 0, 0};
                for (int n : near) {
                    const Point3 p = position(n);
                    for (int k = 0; k < 3; ++k)
                        target[k] += p[k] / near.size();
                }
                if (surface) {
                    GeomAPI_ProjectPointOnSurf project(gp_Pnt(target[0], target[1], target[2]),
                                                       surface);
                    if (project.NbPoints() == 0)
                        continue;
                    const gp_Pnt p = project.NearestPoint();
                    target = {p.X(), p.Y(), p.Z()};
                }
                const Point3 old = (*own)[i];
                const double before = worst(id);
                (*own)[i] = target;
                const double after = worst(id);
                if (after <= 0 || (guard && after < before)) {
                    (*own)[i] = old;
                } else if (old != target) {
                    changed.insert(id);
                }
            }
        }
        moved = static_cast<int>(changed.size());
        return out;
    }

private:
    bool is_own(int id) const {
        return id >= piece.first_node && id < piece.first_node + piece.node_count();
    }
    Point3 position(int id) const {
        return is_own(id) ? (*own)[id - piece.first_node] : *state.node_position(id);
    }
    // The worst scaled Jacobian of the elements around a node (solids and faces alike; for faces
    // only its sign and size matter here, as a fold shows as a drop).
    double worst(int id) const {
        double w = 1e300;
        const auto it = around.find(id);
        if (it == around.end())
            return w;
        for (const auto& [block, e] : it->second) {
            const int n = info(block->kind).nodes;
            std::vector<Point3> corners(n);
            for (int k = 0; k < n; ++k)
                corners[k] = position(block->conn[e * n + k]);
            if (auto q = quality_value(block->kind, "Scaled Jacobian", corners.data()))
                w = std::min(w, *q);
        }
        return w;
    }

    const MeshState& state;
    const MeshPiece& piece;
    bool guard;
    std::vector<const MeshPiece*> above;
    std::vector<Point3>* own = nullptr;
    std::unordered_map<int, std::set<int>> neighbours;
    std::unordered_map<int, std::vector<std::pair<const ElemBlock*, int>>> around;
};

bool smooth_command(Cursor& c) {
    EntityList list;
    if (!c.entity_list(list))
        return c.fail("expected an entity list");
    int scheme = 0;
    if (c.keyword("scheme") && !c.choice({"laplacian", "condition"}, scheme))
        return false;
    if (!c.expect_end())
        return false;
    MeshModule& m = *mesh_module();
    GeometryModel& model = geometry_module()->model();
    std::vector<Owner> owners;
    for (const auto& group : list.groups) {
        const auto kind = parse_kind(group.type);
        const int dim = kind ? dim_of_kind(*kind) : -1;
        if (kind == GeomKind::Body) {
            for (int id : group.ids)
                for (int v : model.relatives(GeomKind::Body, id, GeomKind::Volume))
                    owners.push_back({3, v});
        } else if (dim == 2 || dim == 3) {
            for (int id : group.ids)
                owners.push_back({dim, id});
        } else {
            return c.fail("'" + group.type +
                          "' cannot be smoothed: list surfaces, volumes or bodies");
        }
    }
    int total = 0;
    for (const Owner& o : owners) {
        const MeshPiece* piece = m.state().piece(o);
        if (!piece)
            return c.fail(std::string(owner_word(o.dim)) + " " + std::to_string(o.id) +
                          " is not meshed");
        TopoDS_Face face;
        if (o.dim == 2)
            face = TopoDS::Face(model.shape(GeomKind::Surface, o.id));
        int moved = 0;
        std::vector<const MeshPiece*> above;
        if (o.dim == 2)
            for (int v : m.cobounds(2, o.id))
                if (const MeshPiece* p = m.state().piece({3, v}))
                    above.push_back(p);
        auto smoothed = Smoother(m.state(), *piece, scheme == 1, above)
                            .run(o.dim == 2 ? &face : nullptr, moved);
        m.state().put(std::move(smoothed));
        total += moved;
    }
    print("Smoothed " + std::to_string(owners.size()) +
          (owners.size() == 1 ? " entity" : " entities") + " (" +
          (scheme == 1 ? "condition" : "laplacian") + "): " + std::to_string(total) +
          " nodes moved");
    return true;
}

} // namespace

void register_smooth_commands() {
    register_command(
        {"smooth", smooth_command, true, "smooth <list> [scheme laplacian|condition]"});
}

} // namespace tarvo::kernel::mesh
