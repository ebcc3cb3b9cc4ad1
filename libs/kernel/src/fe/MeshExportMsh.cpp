// The Gmsh .msh 4.1 writer of `export mesh`, through Gmsh's own writer: the export arrays become
// a discrete Gmsh model of its own (one entity per block, one per side set), which Gmsh writes
// and which is then removed, leaving the model the mesher uses as it was.
//
// What the file holds: every block as a physical group (its id, its name) of one discrete
// entity, elements numbered by their global ids and nodes by their kernel ids; every side set
// as a physical group of dimension one lower holding the element sides as faces (tris and
// quads, numbered after the elements). Node sets have no place in the format (a physical group
// holds entities, not nodes) and are left out with a warning.

#include "core/Session.h"
#include "fe/MeshExport.h"
#include "mesh/MeshTypes.h"

#include <gmsh.h>

#include <filesystem>
#include <stdexcept>

namespace tarvo::kernel::fe {

namespace {

// Gmsh element type codes for the linear kinds; the corner order of each is the Exodus one.
int gmsh_type(ElemKind kind) {
    switch (kind) {
    case ElemKind::Edge:
        return 1;
    case ElemKind::Tri:
        return 2;
    case ElemKind::Quad:
        return 3;
    case ElemKind::Tet:
        return 4;
    case ElemKind::Hex:
        return 5;
    case ElemKind::Wedge:
        return 6;
    case ElemKind::Pyramid:
        return 7;
    case ElemKind::Sphere:
        break;
    }
    return 15; // a point element
}

// Makes a model of its own current for the writer and puts the previous one back, whatever
// happens.
class ScratchModel {
public:
    ScratchModel() {
        gmsh::model::getCurrent(previous_);
        gmsh::model::add("tarvo-export");
    }
    ~ScratchModel() {
        try {
            gmsh::model::remove();
            if (!previous_.empty())
                gmsh::model::setCurrent(previous_);
        } catch (...) {
        }
    }
    ScratchModel(const ScratchModel&) = delete;
    ScratchModel& operator=(const ScratchModel&) = delete;

private:
    std::string previous_;
};

// Restores a Gmsh option when it goes out of scope.
class OptionScope {
public:
    OptionScope(const char* name, double value) : name_(name) {
        gmsh::option::getNumber(name_, before_);
        gmsh::option::setNumber(name_, value);
    }
    ~OptionScope() {
        try {
            gmsh::option::setNumber(name_, before_);
        } catch (...) {
        }
    }

private:
    std::string name_;
    double before_ = 0;
};

// Gmsh's type code of a higher-order type and the Exodus slot of each Gmsh node (Gmsh lists a
// hex's edges by their first corner and a tet's last two edges the other way round).
struct GmshHigher {
    std::string_view type;
    int code;
    std::vector<int> from_exodus;
};
const GmshHigher* gmsh_higher(const std::string& type) {
    static const std::vector<GmshHigher> table{
        {"HEX20", 17, {0, 1, 2, 3, 4, 5, 6, 7, 8, 11, 12, 9, 13, 10, 14, 15, 16, 19, 17, 18}},
        {"HEX27", 12, {0,  1,  2,  3,  4,  5,  6,  7,  8,  11, 12, 9,  13, 10,
                       14, 15, 16, 19, 17, 18, 21, 25, 23, 24, 26, 22, 20}},
        {"TET10", 11, {0, 1, 2, 3, 4, 5, 6, 7, 9, 8}},
    };
    for (const auto& t : table)
        if (t.type == type)
            return &t;
    return nullptr;
}

} // namespace

bool msh_writes(const std::string& type) {
    const ElementType* t = find_element_type(type);
    return !t || t->mids.empty() || gmsh_higher(type);
}

void write_msh(const ExportData& data, const std::string& path) {
    if (!data.nodesets.empty())
        warning("Gmsh files hold no node sets: " + std::to_string(data.nodesets.size()) +
                " nodesets are left out");
    ScratchModel scratch;
    OptionScope version("Mesh.MshFileVersion", 4.1);
    OptionScope binary("Mesh.Binary", 0);
    OptionScope save_all("Mesh.SaveAll", 0);
    OptionScope abort("General.AbortOnError", 0);

    const Layout& layout = data.layout;
    // Each node goes on the entity of the first block that uses it; nodes only node sets use go
    // on the first block's entity, so that every node is written.
    std::vector<char> placed(data.node_ids.size(), 0);
    std::vector<int> entity(layout.blocks.size());
    // Elements of a block and the kind/offset of each global id, for the side sets.
    std::vector<std::pair<size_t, int>> where(layout.element_count + 1);
    std::size_t next_element = 1;
    for (size_t i = 0; i < layout.blocks.size(); ++i) {
        const auto& b = layout.blocks[i];
        const int dim = mesh::info(b.kind).dim;
        entity[i] = gmsh::model::addDiscreteEntity(dim);
        const int group = gmsh::model::addPhysicalGroup(dim, {entity[i]}, b.block->id);
        if (!b.block->name.empty())
            gmsh::model::setPhysicalName(dim, group, b.block->name);
        std::vector<std::size_t> node_tags;
        std::vector<double> xyz;
        const auto place = [&](int file_node) {
            if (placed[file_node - 1])
                return;
            placed[file_node - 1] = 1;
            node_tags.push_back(static_cast<std::size_t>(data.node_ids[file_node - 1]));
            xyz.insert(xyz.end(),
                       {data.x[file_node - 1], data.y[file_node - 1], data.z[file_node - 1]});
        };
        for (int n : data.conn[i])
            place(n);
        if (i == 0)
            for (size_t n = 1; n <= data.node_ids.size(); ++n)
                if (!placed[n - 1])
                    place(static_cast<int>(n));
        gmsh::model::mesh::addNodes(dim, entity[i], node_tags, xyz);

        std::vector<std::size_t> tags, conn;
        tags.reserve(b.elements.size());
        conn.reserve(data.conn[i].size());
        for (size_t e = 0; e < b.elements.size(); ++e) {
            where[next_element] = {i, static_cast<int>(e)};
            tags.push_back(next_element++);
        }
        const GmshHigher* higher = gmsh_higher(b.type);
        for (size_t e = 0; e < b.elements.size(); ++e)
            for (int k = 0; k < b.nodes; ++k) {
                const int slot = higher ? higher->from_exodus[k] : k;
                const int n = data.conn[i][e * b.nodes + slot];
                conn.push_back(static_cast<std::size_t>(data.node_ids[n - 1]));
            }
        if (!tags.empty())
            gmsh::model::mesh::addElementsByType(
                entity[i], higher ? higher->code : gmsh_type(b.kind), tags, conn);
    }

    for (const auto& [set, elems, sides] : data.sidesets) {
        // Sides of 3D elements are faces, of 2D elements the element itself.
        std::vector<std::size_t> tris, tri_tags, quads, quad_tags;
        int dim = 2;
        for (size_t k = 0; k < elems.size(); ++k) {
            const auto [block, index] = where[elems[k]];
            const ElemKind kind = layout.blocks[block].kind;
            dim = std::max(0, mesh::info(kind).dim - 1);
            const int n = layout.blocks[block].nodes; // corners first
            const int* corners = data.conn[block].data() + static_cast<size_t>(index) * n;
            const auto& face = mesh::topology(kind).faces.at(sides[k] - 1);
            auto& out = face.size() == 3 ? tris : quads;
            (face.size() == 3 ? tri_tags : quad_tags).push_back(next_element++);
            for (int c : face)
                out.push_back(static_cast<std::size_t>(data.node_ids[corners[c] - 1]));
        }
        const int tag = gmsh::model::addDiscreteEntity(dim);
        const int group = gmsh::model::addPhysicalGroup(dim, {tag}, set->id);
        if (!set->name.empty())
            gmsh::model::setPhysicalName(dim, group, set->name);
        if (!tri_tags.empty())
            gmsh::model::mesh::addElementsByType(tag, 2, tri_tags, tris);
        if (!quad_tags.empty())
            gmsh::model::mesh::addElementsByType(tag, 3, quad_tags, quads);
    }

    std::error_code ec;
    std::filesystem::remove(path, ec);
    gmsh::write(path);
    if (std::filesystem::file_size(path, ec) == 0 || ec)
        throw std::runtime_error("Gmsh could not write '" + path + "'");
}

} // namespace tarvo::kernel::fe
