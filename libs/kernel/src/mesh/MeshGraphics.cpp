// Drawable mesh for the graphics library (tarvo/KernelGraphics.h): a volume's outer element
// faces, a surface's tris and quads, and the element edges along them.
//
// Threading: kernel thread only.
#include "core/Guard.h"
#include "mesh/MeshModule.h"
#include "tarvo/KernelGraphics.h"

#include <algorithm>
#include <map>
#include <set>
#include <unordered_map>

namespace tarvo::graphics {

namespace {

using kernel::mesh::ElemKind;
using kernel::mesh::MeshPiece;
using kernel::mesh::Owner;

std::optional<Owner> owner_of(const std::string& type, int id) {
    if (type == "volume")
        return Owner{3, id};
    if (type == "surface")
        return Owner{2, id};
    return std::nullopt;
}

const MeshPiece* piece_of(const std::string& type, int id) {
    auto* module = kernel::mesh::mesh_module();
    const auto owner = owner_of(type, id);
    return module && owner ? module->state().piece(*owner) : nullptr;
}

// Collects faces given by node ids, renumbering the nodes densely as they are met.
class Collector {
public:
    explicit Collector(MeshDrawing& out)
        : out_(out), lookup_(kernel::mesh::mesh_module()->state()) {}

    void face(const std::vector<int>& nodes) {
        out_.faces.push_back(static_cast<int>(nodes.size()));
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            out_.faces.push_back(local(nodes[i]));
            const int a = nodes[i], b = nodes[(i + 1) % nodes.size()];
            if (edges_.insert({std::min(a, b), std::max(a, b)}).second)
                out_.edges.insert(out_.edges.end(), {local(a), local(b)});
        }
    }

private:
    int local(int node) {
        const auto [it, added] = index_.try_emplace(node, static_cast<int>(index_.size()));
        if (added) {
            const auto* p = lookup_(node);
            for (int c = 0; c < 3; ++c)
                out_.xyz.push_back(p ? static_cast<float>((*p)[c]) : 0.0f);
        }
        return it->second;
    }

    MeshDrawing& out_;
    kernel::mesh::NodeLookup lookup_;
    std::unordered_map<int, int> index_;
    std::set<std::pair<int, int>> edges_;
};

// The sides of a volume's elements that no other element of it shares, in the elements' own
// order (outward for a valid element).
std::vector<std::vector<int>> outer_sides(const MeshPiece& piece) {
    std::map<std::vector<int>, std::vector<int>> once;
    for (const auto& block : piece.blocks) {
        const auto& info = kernel::mesh::info(block.kind);
        if (info.dim != 3)
            continue;
        const auto& sides = kernel::mesh::topology(block.kind).faces;
        for (int e = 0; e < block.count(); ++e) {
            const int* corners = block.conn.data() + e * info.nodes;
            for (const auto& side : sides) {
                std::vector<int> nodes;
                for (int k : side)
                    nodes.push_back(corners[k]);
                std::vector<int> key = nodes;
                std::sort(key.begin(), key.end());
                if (const auto it = once.find(key); it != once.end())
                    once.erase(it);
                else
                    once.emplace(std::move(key), std::move(nodes));
            }
        }
    }
    std::vector<std::vector<int>> out;
    out.reserve(once.size());
    for (auto& [key, nodes] : once)
        out.push_back(std::move(nodes));
    return out;
}

} // namespace

bool mesh_outer_faces(const std::string& type, int id, MeshDrawing& out) {
    return kernel::guarded("mesh_outer_faces", false, [&] {
        const MeshPiece* piece = piece_of(type, id);
        if (!piece)
            return false;
        MeshDrawing drawing;
        Collector collect(drawing);
        if (type == "volume") {
            for (const auto& side : outer_sides(*piece))
                collect.face(side);
        } else {
            for (const auto& block : piece->blocks) {
                if (block.kind != ElemKind::Tri && block.kind != ElemKind::Quad)
                    continue;
                const int n = kernel::mesh::info(block.kind).nodes;
                for (int e = 0; e < block.count(); ++e)
                    collect.face({block.conn.begin() + e * n, block.conn.begin() + (e + 1) * n});
            }
        }
        if (drawing.faces.empty())
            return false;
        out = std::move(drawing);
        return true;
    });
}

std::uintptr_t mesh_stamp(const std::string& type, int id) {
    const MeshPiece* piece = piece_of(type, id);
    if (!piece)
        return 0;
    // The address alone could come back for a later piece; its first ids never do, since ids
    // only grow (and undo brings back the very pieces it saved).
    std::uintptr_t stamp = reinterpret_cast<std::uintptr_t>(piece);
    stamp ^= static_cast<std::uintptr_t>(piece->first_node) * 0x9e3779b97f4a7c15ull;
    if (!piece->blocks.empty())
        stamp ^= static_cast<std::uintptr_t>(piece->blocks.front().first_id) << 17;
    return stamp ? stamp : 1;
}

} // namespace tarvo::graphics
