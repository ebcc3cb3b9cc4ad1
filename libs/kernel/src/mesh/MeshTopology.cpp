// Queries across elements: the stored sub-elements of an element (its nodes, the curve edges on
// its edges, the surface tris and quads on its sides) and the sheet of hexes through a mesh edge.
//
// Threading: kernel thread only.

#include "core/EntityList.h"
#include "core/Guard.h"
#include "mesh/MeshModule.h"
#include "tarvo/TarvoInterface.h"

#include <algorithm>
#include <map>
#include <set>

namespace km = tarvo::kernel::mesh;
using km::ElemKind;

namespace {

// Stored elements of `kinds` whose corners are exactly `corners` (in any order).
std::vector<int> stored_with_corners(const km::MeshState& s, std::vector<int> corners,
                                     std::initializer_list<ElemKind> kinds) {
    std::vector<int> found;
    std::sort(corners.begin(), corners.end());
    const auto ref = s.find_node(corners.front());
    if (!ref)
        return found;
    for (const auto& [owner, piece] : s.pieces()) {
        if (owner.dim < ref->piece->owner.dim)
            continue;
        for (const km::ElemBlock& b : piece->blocks) {
            if (std::find(kinds.begin(), kinds.end(), b.kind) == kinds.end())
                continue;
            const int n = km::info(b.kind).nodes;
            if (n != static_cast<int>(corners.size()))
                continue;
            for (int e = 0; e < b.count(); ++e) {
                std::vector<int> c(b.conn.begin() + e * n, b.conn.begin() + (e + 1) * n);
                std::sort(c.begin(), c.end());
                if (c == corners)
                    found.push_back(b.first_id + e);
            }
        }
    }
    return found;
}

} // namespace

namespace TarvoInterface {

std::vector<int> get_sub_elements(const std::string& entity_type, int entity_id, int dimension) {
    return tarvo::kernel::guarded("get_sub_elements", std::vector<int>{}, [&] {
        std::vector<int> out;
        const km::MeshModule* m = km::mesh_module();
        const auto kind =
            km::elem_kind_from_word(tarvo::kernel::canonical_entity_type(entity_type));
        const auto ref = m && kind ? m->state().find_element(*kind, entity_id) : std::nullopt;
        if (!ref || dimension < 0 || dimension >= km::info(*kind).dim)
            return out;
        const int* c = ref->nodes();
        if (dimension == 0)
            return std::vector<int>(c, c + km::info(*kind).nodes);
        const auto& topo = km::topology(*kind);
        if (dimension == 1)
            for (const auto& [a, b] : topo.edges)
                for (int id : stored_with_corners(m->state(), {c[a], c[b]}, {ElemKind::Edge}))
                    out.push_back(id);
        if (dimension == 2)
            for (const auto& face : topo.faces) {
                std::vector<int> corners;
                for (int k : face)
                    corners.push_back(c[k]);
                for (int id :
                     stored_with_corners(m->state(), corners, {ElemKind::Tri, ElemKind::Quad}))
                    out.push_back(id);
            }
        return out;
    });
}

// Hexes whose edges are parallel, through the hexes, to the edge between the two nodes: from
// each hex the three other edges of the edge's direction lead on to the next hexes.
std::vector<int> get_hex_sheet(int node_id_1, int node_id_2) {
    return tarvo::kernel::guarded("get_hex_sheet", std::vector<int>{}, [&] {
        std::set<int> sheet;
        const km::MeshModule* m = km::mesh_module();
        if (!m)
            return std::vector<int>{};
        // Edge (sorted node pair) -> hexes that have it, with the edge's direction in each.
        std::map<std::pair<int, int>, std::vector<std::pair<const int*, int>>> by_edge;
        std::map<const int*, int> id_of;
        static const int directions[12] = {0, 1, 0, 1, 0, 1, 0, 1, 2, 2, 2, 2};
        for (const auto& [owner, piece] : m->state().pieces())
            for (const km::ElemBlock& b : piece->blocks) {
                if (b.kind != ElemKind::Hex)
                    continue;
                for (int e = 0; e < b.count(); ++e) {
                    const int* c = b.conn.data() + 8 * e;
                    id_of[c] = b.first_id + e;
                    const auto& edges = km::topology(ElemKind::Hex).edges;
                    for (size_t k = 0; k < edges.size(); ++k)
                        by_edge[std::minmax(c[edges[k].first], c[edges[k].second])].push_back(
                            {c, directions[k]});
                }
            }
        std::vector<std::pair<int, int>> todo{std::minmax(node_id_1, node_id_2)};
        std::set<std::pair<int, int>> seen(todo.begin(), todo.end());
        while (!todo.empty()) {
            const auto edge = todo.back();
            todo.pop_back();
            for (const auto& [c, direction] : by_edge[edge]) {
                sheet.insert(id_of[c]);
                const auto& edges = km::topology(ElemKind::Hex).edges;
                for (size_t k = 0; k < edges.size(); ++k) {
                    if (directions[k] != direction)
                        continue;
                    const auto next = std::minmax(c[edges[k].first], c[edges[k].second]);
                    if (seen.insert(next).second)
                        todo.push_back(next);
                }
            }
        }
        return std::vector<int>(sheet.begin(), sheet.end());
    });
}

} // namespace TarvoInterface
