#pragma once
// What `export mesh` writes, gathered once from the finite-element model and the live mesh, and
// the writers of each file format. Every writer takes the same arrays, so the formats cannot
// disagree about what the model holds; the driver (MeshExport.cpp) checks the target, gathers,
// lets a writer fill a temporary file beside the target and renames it over the target.
//
// Contract: a writer throws std::runtime_error (or Gmsh's std::string) with the reason when it
// cannot write; the driver then removes the temporary file.
// Threading: kernel thread only (the Gmsh writer uses Gmsh's global model list).

#include "fe/FeModule.h"

#include <optional>
#include <string>
#include <vector>

namespace tarvo::kernel::fe {

enum class MeshFormat { Exodus, Gmsh, Vtu, Abaqus }; // declared in FeModule.h

// The format named by `word` ("exodus", "gmsh", "vtu", "abaqus"; any case), or chosen by the
// file's extension (.msh, .vtu, .inp; anything else is Exodus). Nothing for an unknown word.
std::optional<MeshFormat> mesh_format(const std::string& word, const std::string& path);
const char* format_name(MeshFormat format);

struct ExportData {
    Layout layout;
    // Nodes the blocks' elements and the node sets use, ascending kernel id; node i + 1 of the
    // file is node_ids[i].
    std::vector<int> node_ids;
    std::vector<double> x, y, z;
    // Per laid-out block: its `nodes` file node numbers (1-based) per element, in the Exodus
    // order (corners, then mid-nodes).
    std::vector<std::vector<int>> conn;
    struct Nodes {
        const NodeSet* set;
        std::vector<int> nodes; // file node numbers
    };
    std::vector<Nodes> nodesets;
    struct Sides {
        const SideSet* set;
        std::vector<int> elements; // global element ids (1-based)
        std::vector<int> sides;    // Exodus side numbers (1-based)
    };
    std::vector<Sides> sidesets;
};

// Whether a block of `type` can go into a .msh / .vtu / .inp file (the linear types and the
// higher-order ones the format has a cell for).
bool msh_writes(const std::string& type);
bool vtu_writes(const std::string& type);
bool inp_writes(const std::string& type);

void write_exodus(const ExportData& data, const std::string& path);
void write_msh(const ExportData& data, const std::string& path);
void write_vtu(const ExportData& data, const std::string& path);
void write_inp(const ExportData& data, const std::string& path);

} // namespace tarvo::kernel::fe
