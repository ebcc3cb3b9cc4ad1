// The Abaqus .inp writer of `export mesh`, written by hand (no library we use writes it).
//
// What the file holds: *NODE with the kernel's node ids; one *ELEMENT section per block, with
// ELSET named after the block (its name, or Block<id>) and the global element ids; *NSET per
// node set (its name, or Nodeset<id>) with node ids; per side set, one *ELSET per Abaqus face
// (<name>_S1 ..) and a *SURFACE of TYPE=ELEMENT naming them. Abaqus numbers faces otherwise than
// Exodus; the table below maps one to the other for each kind.

#include "fe/MeshExport.h"
#include "mesh/MeshTypes.h"

#include <cctype>
#include <cstdio>
#include <fstream>
#include <map>
#include <stdexcept>

namespace tarvo::kernel::fe {

namespace {

// The Abaqus element type for a block's element type; 3D kinds are continuum elements, 2D ones
// shells, lines trusses.
const char* abaqus_type(const std::string& exodus_type, ElemKind kind) {
    if (exodus_type == "QUAD4" || exodus_type == "SHELL4")
        return "S4";
    if (exodus_type == "TRI3" || exodus_type == "TRISHELL3")
        return "S3";
    switch (kind) {
    case ElemKind::Hex:
        return "C3D8";
    case ElemKind::Tet:
        return "C3D4";
    case ElemKind::Wedge:
        return "C3D6";
    case ElemKind::Pyramid:
        return "C3D5";
    case ElemKind::Edge:
        return "T3D2";
    case ElemKind::Sphere:
        return "MASS";
    case ElemKind::Tri:
        return "S3";
    case ElemKind::Quad:
        break;
    }
    return "S4";
}

// Abaqus face number (1-based) of each Exodus side (index side - 1), by matching the corner sets
// of the two numberings; for a shell its positive face.
int abaqus_face(ElemKind kind, int side) {
    static const std::map<ElemKind, std::vector<int>> faces{
        {ElemKind::Hex, {3, 4, 5, 6, 1, 2}},
        {ElemKind::Tet, {2, 3, 4, 1}},
        {ElemKind::Wedge, {3, 4, 5, 1, 2}},
        {ElemKind::Pyramid, {2, 3, 4, 5, 1}},
    };
    const auto it = faces.find(kind);
    if (it == faces.end() || side < 1 || side > static_cast<int>(it->second.size()))
        return 0; // SPOS
    return it->second[side - 1];
}

// Abaqus names: letters, digits and underscores, starting with a letter, at most 80.
std::string abaqus_name(const std::string& name, const char* fallback, int id) {
    std::string out;
    for (char c : name)
        out += std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
    if (out.empty() || !std::isalpha(static_cast<unsigned char>(out[0])))
        out = fallback + std::to_string(id) + (out.empty() ? "" : "_" + out);
    return out.substr(0, 80);
}

// Writes ids sixteen to a line, as Abaqus wants for data lines of sets.
void write_ids(std::ostream& out, const std::vector<int>& ids) {
    for (size_t i = 0; i < ids.size(); ++i)
        out << ids[i] << (i + 1 == ids.size() || i % 16 == 15 ? "\n" : ", ");
}

// Abaqus continuum elements of the higher-order types it has, with the Exodus slot of each
// Abaqus node (C3D10 is in the Exodus order; C3D20 and C3D15 put the vertical edges last).
struct InpHigher {
    std::string_view type;
    const char* abaqus;
    std::vector<int> from_exodus;
};
const InpHigher* inp_higher(const std::string& type) {
    static const std::vector<InpHigher> table{
        {"HEX20", "C3D20", {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 16, 17, 18, 19, 12, 13, 14, 15}},
        {"TET10", "C3D10", {}},
        {"WEDGE15", "C3D15", {0, 1, 2, 3, 4, 5, 6, 7, 8, 12, 13, 14, 9, 10, 11}},
    };
    for (const auto& t : table)
        if (t.type == type)
            return &t;
    return nullptr;
}

} // namespace

bool inp_writes(const std::string& type) {
    const ElementType* t = find_element_type(type);
    return !t || t->mids.empty() || inp_higher(type);
}

void write_inp(const ExportData& data, const std::string& path) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    if (!out)
        throw std::runtime_error("cannot create '" + path + "'");
    out << "*HEADING\nMesh exported by tarvo_server\n*NODE\n";
    char line[128];
    for (size_t i = 0; i < data.node_ids.size(); ++i) {
        const int n = std::snprintf(line, sizeof line, "%d, %.17g, %.17g, %.17g\n",
                                    data.node_ids[i], data.x[i], data.y[i], data.z[i]);
        out.write(line, n);
    }
    int global = 0;
    std::vector<ElemKind> kind_of(data.layout.element_count + 1);
    for (size_t i = 0; i < data.layout.blocks.size(); ++i) {
        const auto& b = data.layout.blocks[i];
        if (b.elements.empty())
            continue;
        const int n = b.nodes;
        const InpHigher* higher = inp_higher(b.type);
        out << "*ELEMENT, TYPE=" << (higher ? higher->abaqus : abaqus_type(b.type, b.kind))
            << ", ELSET=" << abaqus_name(b.block->name, "Block", b.block->id) << "\n";
        for (size_t e = 0; e < b.elements.size(); ++e) {
            kind_of[++global] = b.kind;
            out << global;
            // Abaqus data lines hold at most 16 entries: a 20-node element goes on two.
            for (int k = 0; k < n; ++k) {
                const int slot =
                    higher && !higher->from_exodus.empty() ? higher->from_exodus[k] : k;
                out << (k == 15 ? ",\n" : ", ") << data.node_ids[data.conn[i][e * n + slot] - 1];
            }
            out << "\n";
        }
    }
    for (const auto& [set, nodes] : data.nodesets) {
        std::vector<int> ids;
        ids.reserve(nodes.size());
        for (int n : nodes)
            ids.push_back(data.node_ids[n - 1]);
        out << "*NSET, NSET=" << abaqus_name(set->name, "Nodeset", set->id) << "\n";
        write_ids(out, ids);
    }
    for (const auto& [set, elems, sides] : data.sidesets) {
        const std::string name = abaqus_name(set->name, "Sideset", set->id);
        std::map<int, std::vector<int>> by_face; // 0: shells' positive side
        for (size_t k = 0; k < elems.size(); ++k)
            by_face[abaqus_face(kind_of[elems[k]], sides[k])].push_back(elems[k]);
        for (const auto& [face, ids] : by_face) {
            out << "*ELSET, ELSET=" << name << "_" << (face ? "S" + std::to_string(face) : "SPOS")
                << "\n";
            write_ids(out, ids);
        }
        out << "*SURFACE, TYPE=ELEMENT, NAME=" << name << "\n";
        for (const auto& [face, ids] : by_face) {
            const std::string label = face ? "S" + std::to_string(face) : "SPOS";
            out << name << "_" << label << ", " << label << "\n";
        }
    }
    out.flush();
    if (!out)
        throw std::runtime_error("could not write '" + path + "'");
}

} // namespace tarvo::kernel::fe
