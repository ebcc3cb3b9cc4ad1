// Drawable mesh for the graphics library (tarvo/KernelGraphics.h): a volume's outer element
// faces, a surface's tris and quads, and the element edges along them.
//
// Threading: kernel thread only.
#include "core/Guard.h"
#include "mesh/MeshModule.h"
#include "tarvo/KernelGraphics.h"

#include <algorithm>
#include <map>
#include <optional>
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
            edge(nodes[i], nodes[(i + 1) % nodes.size()]);
        }
    }

    void edge(int a, int b) {
        if (edges_.insert({std::min(a, b), std::max(a, b)}).second)
            out_.edges.insert(out_.edges.end(), {local(a), local(b)});
    }

    int local(int node) {
        const auto [it, added] = index_.try_emplace(node, static_cast<int>(index_.size()));
        if (added) {
            const auto* p = lookup_(node);
            for (int c = 0; c < 3; ++c)
                out_.xyz.push_back(p ? static_cast<float>((*p)[c]) : 0.0f);
            out_.nodes.push_back(node);
        }
        return it->second;
    }

private:
    MeshDrawing& out_;
    kernel::mesh::NodeLookup lookup_;
    std::unordered_map<int, int> index_;
    std::set<std::pair<int, int>> edges_;
};

// Sides of solids met once: a side that two of the solids added share is inside and drops out.
// Each side keeps its corners in its element's order (outward for a valid element) and what the
// caller attached to it.
template <class Tag> class OnceSides {
public:
    void add(ElemKind kind, const int* corners, Tag tag) {
        for (const auto& side : kernel::mesh::topology(kind).faces) {
            std::vector<int> nodes;
            for (int k : side)
                nodes.push_back(corners[k]);
            std::vector<int> key = nodes;
            std::sort(key.begin(), key.end());
            if (const auto it = once_.find(key); it != once_.end())
                once_.erase(it);
            else
                once_.emplace(std::move(key), std::make_pair(std::move(nodes), tag));
        }
    }
    const std::map<std::vector<int>, std::pair<std::vector<int>, Tag>>& sides() const {
        return once_;
    }

private:
    std::map<std::vector<int>, std::pair<std::vector<int>, Tag>> once_;
};

// The sides of a volume's elements that no other element of it shares.
std::vector<std::vector<int>> outer_sides(const MeshPiece& piece) {
    OnceSides<bool> once;
    for (const auto& block : piece.blocks) {
        const auto& info = kernel::mesh::info(block.kind);
        if (info.dim != 3)
            continue;
        for (int e = 0; e < block.count(); ++e)
            once.add(block.kind, block.conn.data() + e * info.nodes, true);
    }
    std::vector<std::vector<int>> out;
    out.reserve(once.sides().size());
    for (const auto& [key, side] : once.sides())
        out.push_back(side.first);
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

std::vector<MeshEntity> mesh_entities_under(const std::vector<int>& corners, int volume_id) {
    return kernel::guarded("mesh_entities_under", std::vector<MeshEntity>{}, [&] {
        std::vector<MeshEntity> out;
        auto* module = kernel::mesh::mesh_module();
        if (!module || corners.size() < 2)
            return out;
        std::vector<int> key = corners;
        std::sort(key.begin(), key.end());
        const auto matches = [&](const int* nodes, const std::vector<int>& local) {
            if (local.size() != key.size())
                return false;
            std::vector<int> sorted;
            for (int k : local)
                sorted.push_back(nodes[k]);
            std::sort(sorted.begin(), sorted.end());
            return sorted == key;
        };
        // Found by a scan: a pick is one cell, and a scan costs less than an index kept up to date
        // for every mesh.
        const auto scan = [&](int dim, auto&& sides) {
            for (const auto& [owner, piece] : module->state().pieces()) {
                if (owner.dim != dim || (dim == 3 && volume_id != 0 && owner.id != volume_id))
                    continue;
                for (const auto& block : piece->blocks) {
                    const auto& info = kernel::mesh::info(block.kind);
                    if (info.dim != dim)
                        continue;
                    for (int e = 0; e < block.count(); ++e)
                        for (const std::vector<int>& side : sides(block.kind))
                            if (matches(block.conn.data() + e * info.nodes, side)) {
                                out.push_back({std::string(info.word), block.first_id + e});
                                return owner.id;
                            }
                }
            }
            return 0;
        };
        const auto whole = [](ElemKind kind) {
            std::vector<int> all(static_cast<std::size_t>(kernel::mesh::info(kind).nodes));
            for (std::size_t k = 0; k < all.size(); ++k)
                all[k] = static_cast<int>(k);
            return std::vector<std::vector<int>>{all};
        };
        if (key.size() == 2) {
            scan(1, whole);
            return out;
        }
        const int surface = scan(2, whole);
        scan(3, [](ElemKind kind) { return kernel::mesh::topology(kind).faces; });
        if (surface)
            out.push_back({"surface", surface});
        return out;
    });
}

bool mesh_entity_drawing(const std::string& type, int id, MeshDrawing& out) {
    return kernel::guarded("mesh_entity_drawing", false, [&] {
        auto* module = kernel::mesh::mesh_module();
        if (!module)
            return false;
        MeshDrawing drawing;
        Collector collect(drawing);
        if (type == "node") {
            if (!module->state().find_node(id))
                return false;
            collect.local(id);
        } else {
            const auto kind = kernel::mesh::elem_kind_from_word(type);
            const auto element = kind ? module->state().find_element(*kind, id) : std::nullopt;
            if (!element)
                return false;
            const int* corners = element->nodes();
            const auto& info = kernel::mesh::info(*kind);
            const auto corner_list = [&](const std::vector<int>& local) {
                std::vector<int> nodes;
                for (int k : local)
                    nodes.push_back(corners[k]);
                return nodes;
            };
            if (info.dim == 3) {
                for (const auto& side : kernel::mesh::topology(*kind).faces)
                    collect.face(corner_list(side));
            } else if (info.dim == 2) {
                collect.face({corners, corners + info.nodes});
            } else if (info.dim == 1) {
                collect.edge(corners[0], corners[1]);
            } else {
                collect.local(corners[0]);
            }
        }
        out = std::move(drawing);
        return true;
    });
}

bool mesh_entity_corners(const std::string& owner_type, int owner_id, const std::string& type,
                         MeshEntityCorners& out) {
    return kernel::guarded("mesh_entity_corners", false, [&] {
        auto* module = kernel::mesh::mesh_module();
        const auto owner = owner_type == "curve" ? std::optional<Owner>(Owner{1, owner_id})
                                                 : owner_of(owner_type, owner_id);
        const auto kind = kernel::mesh::elem_kind_from_word(type);
        if (!module || !owner || !module->state().meshed(*owner) || (!kind && type != "node"))
            return false;
        MeshEntityCorners found;
        kernel::mesh::NodeLookup lookup(module->state());
        const auto add = [&](int node) {
            const auto* p = lookup(node);
            for (int c = 0; c < 3; ++c)
                found.xyz.push_back(p ? static_cast<float>((*p)[c]) : 0.0f);
        };
        for (const MeshPiece* piece : module->closure(*owner)) {
            if (!kind) {
                for (int i = 0; i < piece->node_count(); ++i) {
                    found.ids.push_back(piece->first_node + i);
                    found.corners.push_back(static_cast<int>(found.xyz.size() / 3));
                    add(piece->first_node + i);
                }
                continue;
            }
            for (const auto& block : piece->blocks) {
                if (block.kind != *kind)
                    continue;
                const int n = kernel::mesh::info(block.kind).nodes;
                for (int e = 0; e < block.count(); ++e) {
                    found.ids.push_back(block.first_id + e);
                    found.corners.push_back(static_cast<int>(found.xyz.size() / 3));
                    for (int k = 0; k < n; ++k)
                        add(block.conn[static_cast<std::size_t>(e * n + k)]);
                }
            }
        }
        out = std::move(found);
        return true;
    });
}

bool quality_drawing(QualityDrawing& out) {
    return kernel::guarded("quality_drawing", false, [&] {
        auto* module = kernel::mesh::mesh_module();
        if (!module || module->drawn_quality().elements.empty())
            return false;
        const auto& drawn = module->drawn_quality();
        QualityDrawing drawing;
        drawing.metric = drawn.metric;
        drawing.low_is_bad = drawn.low_is_bad;
        Collector collect(drawing.mesh);
        OnceSides<double> sides;
        std::vector<int> edge_elements;
        bool first = true;
        for (std::size_t i = 0; i < drawn.elements.size(); ++i) {
            const auto& [kind, id] = drawn.elements[i];
            const auto element = module->state().find_element(kind, id);
            if (!element)
                continue;
            const double value = drawn.values[i];
            drawing.min = first ? value : std::min(drawing.min, value);
            drawing.max = first ? value : std::max(drawing.max, value);
            first = false;
            const int* corners = element->nodes();
            const auto& info = kernel::mesh::info(kind);
            if (info.dim == 3) {
                sides.add(kind, corners, value);
            } else if (info.dim == 2) {
                collect.face({corners, corners + info.nodes});
                drawing.face_values.push_back(static_cast<float>(value));
            } else if (info.dim == 1) {
                edge_elements.insert(edge_elements.end(),
                                     {collect.local(corners[0]), collect.local(corners[1])});
                drawing.edge_values.push_back(static_cast<float>(value));
            }
        }
        for (const auto& [key, side] : sides.sides()) {
            collect.face(side.first);
            drawing.face_values.push_back(static_cast<float>(side.second));
        }
        if (first)
            return false;
        // The faces' own edges are the mesh's to draw; only edge elements are coloured lines.
        drawing.mesh.edges = std::move(edge_elements);
        out = std::move(drawing);
        return true;
    });
}

std::uint64_t quality_drawing_stamp() {
    auto* module = kernel::mesh::mesh_module();
    return module ? module->drawn_quality().stamp : 0;
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
