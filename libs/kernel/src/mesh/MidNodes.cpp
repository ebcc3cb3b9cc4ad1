// Mid-nodes of higher-order elements: which entity keeps each one, and where it lies on the
// geometry (MeshModule::sync_mid_nodes).

#include "mesh/MeshModule.h"

#include <BRepTools.hxx>
#include <BRep_Tool.hxx>
#include <GeomAPI_ProjectPointOnCurve.hxx>
#include <GeomAPI_ProjectPointOnSurf.hxx>
#include <Geom_Curve.hxx>
#include <Geom_Surface.hxx>
#include <Standard_Failure.hxx>
#include <TopoDS.hxx>

#include <algorithm>
#include <set>

namespace tarvo::kernel::mesh {

namespace {

// The point of the owner's geometry nearest to `p` (the owner's own bounds); `p` itself when
// the projection fails or the owner is a volume.
Point3 onto(const TopoDS_Shape& shape, int dim, const Point3& p) {
    if (shape.IsNull() || dim < 1 || dim > 2)
        return p;
    const gp_Pnt q(p[0], p[1], p[2]);
    try {
        if (dim == 1 && shape.ShapeType() == TopAbs_EDGE) {
            double first = 0, last = 0;
            const Handle(Geom_Curve) curve = BRep_Tool::Curve(TopoDS::Edge(shape), first, last);
            if (curve.IsNull())
                return p;
            GeomAPI_ProjectPointOnCurve proj(q, curve, first, last);
            if (proj.NbPoints() > 0) {
                const gp_Pnt r = proj.NearestPoint();
                return {r.X(), r.Y(), r.Z()};
            }
        } else if (dim == 2 && shape.ShapeType() == TopAbs_FACE) {
            const TopoDS_Face& face = TopoDS::Face(shape);
            const Handle(Geom_Surface) surface = BRep_Tool::Surface(face);
            if (surface.IsNull())
                return p;
            double u1 = 0, u2 = 0, v1 = 0, v2 = 0;
            BRepTools::UVBounds(face, u1, u2, v1, v2);
            GeomAPI_ProjectPointOnSurf proj(q, surface, u1, u2, v1, v2);
            if (proj.NbPoints() > 0) {
                const gp_Pnt r = proj.NearestPoint();
                return {r.X(), r.Y(), r.Z()};
            }
        }
    } catch (const Standard_Failure&) {
    }
    return p;
}

int key_size(const MidKey& key) {
    return static_cast<int>(std::find(key.begin(), key.end(), 0) - key.begin());
}

} // namespace

int MeshModule::sync_mid_nodes(const std::map<Owner, std::vector<MidKey>>& wanted) {
    if (wanted.empty() && state_.mid_pieces().empty())
        return 0;
    std::map<Owner, std::set<MidKey>> keep;
    for (const auto& [owner, keys] : wanted) {
        // Edges and faces of the boundary's meshes, lowest dimension first so a curve keeps the
        // edges its surfaces also have.
        std::map<MidKey, Owner> lower;
        auto pieces = closure(owner);
        std::sort(pieces.begin(), pieces.end(),
                  [](const MeshPiece* a, const MeshPiece* b) { return a->owner < b->owner; });
        for (const MeshPiece* p : pieces) {
            if (p->owner.dim < 1 || p->owner.dim >= owner.dim)
                continue;
            for (const ElemBlock& b : p->blocks) {
                const int n = info(b.kind).nodes;
                const auto& topo = topology(b.kind);
                std::vector<int> all(n);
                for (int i = 0; i < n; ++i)
                    all[i] = i;
                for (int e = 0; e < b.count(); ++e) {
                    const int* c = b.conn.data() + e * n;
                    for (const auto& [i, j] : topo.edges)
                        lower.emplace(mid_key(c, {i, j}), p->owner);
                    if (info(b.kind).dim == 2)
                        lower.emplace(mid_key(c, all), p->owner);
                }
            }
        }
        for (const MidKey& key : keys) {
            const auto it = lower.find(key);
            keep[it == lower.end() ? owner : it->second].insert(key);
        }
    }

    std::vector<Owner> gone;
    for (const auto& [owner, piece] : state_.mid_pieces())
        if (!keep.count(owner))
            gone.push_back(owner);
    for (const Owner& o : gone)
        state_.remove_mids(o);

    int made = 0;
    for (const auto& [owner, keys] : keep) {
        std::vector<MidKey> sorted(keys.begin(), keys.end());
        if (const MeshPiece* old = state_.mid_piece(owner); old && old->mid_keys == sorted)
            continue;
        auto piece = std::make_shared<MeshPiece>();
        piece->owner = owner;
        piece->scheme = "mid-nodes";
        piece->nodes.reserve(sorted.size());
        const auto shape = shapes_.find(owner);
        NodeLookup lookup(state_);
        for (const MidKey& key : sorted) {
            const int n = key_size(key);
            Point3 mean{0, 0, 0};
            for (int i = 0; i < n; ++i) {
                const Point3* p = lookup(key[i]);
                if (!p)
                    throw std::runtime_error("mid-node of missing node " + std::to_string(key[i]));
                for (int k = 0; k < 3; ++k)
                    mean[k] += (*p)[k] / n;
            }
            piece->nodes.push_back(shape == shapes_.end() ? mean
                                                          : onto(shape->second, owner.dim, mean));
        }
        piece->mid_keys = std::move(sorted);
        piece->first_node = state_.reserve_nodes(piece->node_count());
        made += piece->node_count();
        state_.put_mids(std::move(piece));
    }
    return made;
}

} // namespace tarvo::kernel::mesh
