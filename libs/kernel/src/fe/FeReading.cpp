// Reading the containers from the live mesh: what a block, nodeset or sideset holds when it is
// queried or exported, and the blocks' layout in the exported file.

#include "fe/FeInternal.h"
#include "fe/FeModule.h"

#include <algorithm>
#include <map>
#include <set>

namespace tarvo::kernel::fe {

using namespace internal;

// ---- Reading
// -------------------------------------------------------------------------------------

int FeModule::dimension(const Block& block) {
    if (!block.members.empty())
        return member_dim(block.members.front());
    if (const ElementType* t = find_element_type(block.element_type))
        return t->dim;
    return -1;
}

std::map<ElemKind, std::vector<int>> FeModule::elements(const Block& block) {
    std::map<ElemKind, std::vector<int>> out;
    const mesh::MeshState& s = mesh_state();
    for (const Member& m : block.members) {
        if (m.type != Member::Type::Geometry)
            continue;
        const mesh::MeshPiece* piece = s.piece({m.dim, m.id});
        if (!piece || !model().exists(mesh::kind_of_dim(m.dim), m.id))
            continue;
        for (const auto& b : piece->blocks)
            if (mesh::info(b.kind).dim == m.dim)
                append_ids(*piece, b.kind, out[b.kind]);
    }
    for (const Member& m : block.members)
        if (m.type == Member::Type::Element && s.find_element(m.kind, m.id))
            out[m.kind].push_back(m.id);
    for (auto it = out.begin(); it != out.end();)
        it = it->second.empty() ? out.erase(it) : std::next(it);
    return out;
}

std::string FeModule::type_of(const Block& block) {
    if (!block.element_type.empty())
        return block.element_type;
    const auto elems = elements(block);
    if (!elems.empty())
        return std::string(default_type_name(elems.begin()->first));
    const int dim = dimension(block);
    for (const auto& t : element_types())
        if (t.dim == dim)
            return std::string(t.name);
    return {};
}

std::vector<int> FeModule::nodes(const NodeSet& set, bool inclusive) {
    std::set<int> out;
    const mesh::MeshState& s = mesh_state();
    for (const Member& m : set.members) {
        if (m.type == Member::Type::Node) {
            if (s.find_node(m.id))
                out.insert(m.id);
        } else if (inclusive && m.type == Member::Type::Geometry &&
                   model().exists(mesh::kind_of_dim(m.dim), m.id)) {
            for (const mesh::MeshPiece* p : mesh::mesh_module()->closure({m.dim, m.id})) {
                for (int i = 0; i < p->node_count(); ++i)
                    out.insert(p->first_node + i);
                if (const mesh::MeshPiece* mids = s.mid_piece(p->owner))
                    for (int i = 0; i < mids->node_count(); ++i)
                        out.insert(mids->first_node + i);
            }
        }
    }
    return {out.begin(), out.end()};
}

std::vector<Side> FeModule::sides(const SideSet& set) {
    std::vector<Side> out;
    const mesh::MeshState& s = mesh_state();
    using Key = std::array<int, 4>; // sorted corners, a triangle's padded with 0
    const auto key_of = [](const int* corners, const std::vector<int>& local, int n) {
        Key key{0, 0, 0, 0};
        for (int i = 0; i < n; ++i)
            key[i] = corners[local.empty() ? i : local[i]];
        // Insertion sort: at most four corners (std::sort over a run of unknown length trips
        // GCC's array-bounds analysis).
        for (int i = 1; i < n; ++i)
            for (int j = i; j > 0 && key[j - 1] > key[j]; --j)
                std::swap(key[j - 1], key[j]);
        return key;
    };
    for (const auto& [surface, wrt] : set.surfaces) {
        const mesh::MeshPiece* face_piece = s.piece({2, surface});
        if (!face_piece || !model().exists(GeomKind::Surface, surface))
            continue;
        // The surface's faces by their sorted corners, and its nodes, so that an element side
        // is looked up only when its first corner is on the surface.
        std::set<Key> faces;
        std::set<int> on_surface;
        for (const auto& b : face_piece->blocks) {
            const int n = mesh::info(b.kind).nodes;
            for (int e = 0; e < b.count(); ++e) {
                faces.insert(key_of(b.conn.data() + e * n, {}, n));
                on_surface.insert(b.conn.begin() + e * n, b.conn.begin() + (e + 1) * n);
            }
        }
        const int lowest = on_surface.empty() ? 0 : *on_surface.begin();
        std::vector<bool> marked(on_surface.empty() ? 0 : *on_surface.rbegin() - lowest + 1);
        for (int node : on_surface)
            marked[node - lowest] = true;
        const auto on = [&](int node) {
            return node >= lowest && node - lowest < static_cast<int>(marked.size()) &&
                   marked[node - lowest];
        };
        const std::vector<int> volumes =
            wrt ? std::vector<int>{wrt}
                : model().relatives(GeomKind::Surface, surface, GeomKind::Volume);
        for (int v : volumes) {
            const mesh::MeshPiece* vp = s.piece({3, v});
            if (!vp)
                continue;
            for (const auto& b : vp->blocks) {
                const int n = mesh::info(b.kind).nodes;
                const auto& topo = mesh::topology(b.kind);
                for (int e = 0; e < b.count(); ++e) {
                    const int* corners = b.conn.data() + e * n;
                    for (size_t side = 0; side < topo.faces.size(); ++side) {
                        const auto& local = topo.faces[side];
                        if (!std::all_of(local.begin(), local.end(),
                                         [&](int l) { return on(corners[l]); }))
                            continue;
                        if (faces.count(key_of(corners, local, static_cast<int>(local.size()))))
                            out.push_back({b.kind, b.first_id + e, static_cast<int>(side)});
                    }
                }
            }
        }
    }
    return out;
}

bool FeModule::layout(Layout& out, std::string& why) const {
    out = {};
    // Per kind, a flag per element id: a million elements are checked without a tree.
    std::array<std::vector<bool>, mesh::kElemKindCount> seen;
    for (const auto& [id, block] : state_.blocks) {
        const auto elems = elements(*block);
        LaidOutBlock laid{block.get(), type_of(*block), ElemKind::Hex, 8, {}};
        if (const ElementType* t = find_element_type(laid.type)) {
            laid.kind = t->kind;
            laid.nodes = t->nodes;
        }
        for (const auto& [kind, ids] : elems) {
            if (kind != laid.kind) {
                why = "block " + std::to_string(id) + " is " + laid.type + " but holds " +
                      std::to_string(ids.size()) + " " + std::string(mesh::info(kind).word) +
                      " elements: an Exodus block holds one element type, so put them in a "
                      "block of their own";
                return false;
            }
            auto& flags = seen[static_cast<int>(kind)];
            for (int e : ids) {
                if (e >= static_cast<int>(flags.size()))
                    flags.resize(std::max<size_t>(e + 1, flags.size() * 2));
                if (flags[e]) {
                    why = std::string(mesh::info(kind).word) + " " + std::to_string(e) +
                          " is in two blocks";
                    return false;
                }
                flags[e] = true;
            }
            laid.elements = ids;
        }
        out.element_count += static_cast<int>(laid.elements.size());
        out.blocks.push_back(std::move(laid));
    }
    return true;
}

} // namespace tarvo::kernel::fe
