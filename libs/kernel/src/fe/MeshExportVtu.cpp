// The VTK .vtu writer of `export mesh`, through VTK's XML writer (vtkXMLUnstructuredGridWriter,
// appended binary data).
//
// What the file holds: the nodes with their kernel ids (point array "node_id"), every block's
// elements in global id order with cell arrays "block_id" and "global_id"; node sets and side
// sets as field data, one int array per set ("nodeset_<id>": node numbers, 0-based points;
// "sideset_<id>": pairs of 0-based cell and 1-based Exodus side), since the format has no sets.

#include "fe/MeshExport.h"
#include "mesh/MeshTypes.h"

#include <vtkCellArray.h>
#include <vtkCellData.h>
#include <vtkCellType.h>
#include <vtkDoubleArray.h>
#include <vtkFieldData.h>
#include <vtkIdTypeArray.h>
#include <vtkIntArray.h>
#include <vtkNew.h>
#include <vtkPointData.h>
#include <vtkPoints.h>
#include <vtkUnsignedCharArray.h>
#include <vtkUnstructuredGrid.h>
#include <vtkXMLUnstructuredGridWriter.h>

#include <stdexcept>

namespace tarvo::kernel::fe {

namespace {

// VTK cell types of the linear kinds; their corner order is the Exodus one.
unsigned char vtk_type(ElemKind kind) {
    switch (kind) {
    case ElemKind::Edge:
        return VTK_LINE;
    case ElemKind::Tri:
        return VTK_TRIANGLE;
    case ElemKind::Quad:
        return VTK_QUAD;
    case ElemKind::Tet:
        return VTK_TETRA;
    case ElemKind::Hex:
        return VTK_HEXAHEDRON;
    case ElemKind::Wedge:
        return VTK_WEDGE;
    case ElemKind::Pyramid:
        return VTK_PYRAMID;
    case ElemKind::Sphere:
        break;
    }
    return VTK_VERTEX;
}

// A higher-order type's VTK cell and the Exodus slot of each VTK node (identity when empty);
// VTK_EMPTY_CELL for a type VTK has no cell for.
struct VtkHigher {
    std::string_view type;
    unsigned char cell;
    std::vector<int> from_exodus;
};
const VtkHigher* vtk_higher(const std::string& type) {
    static const std::vector<VtkHigher> table{
        {"HEX20", VTK_QUADRATIC_HEXAHEDRON, {0,  1,  2,  3,  4,  5,  6,  7,  8,  9,
                                             10, 11, 16, 17, 18, 19, 12, 13, 14, 15}},
        {"HEX27", VTK_TRIQUADRATIC_HEXAHEDRON, {0,  1,  2,  3,  4,  5,  6,  7,  8,
                                                9,  10, 11, 16, 17, 18, 19, 12, 13,
                                                14, 15, 23, 24, 25, 26, 21, 22, 20}},
        {"TET10", VTK_QUADRATIC_TETRA, {}},
        {"WEDGE15", VTK_QUADRATIC_WEDGE, {0, 1, 2, 3, 4, 5, 6, 7, 8, 12, 13, 14, 9, 10, 11}},
        {"PYRAMID13", VTK_QUADRATIC_PYRAMID, {}},
        {"QUAD8", VTK_QUADRATIC_QUAD, {}},
        {"SHELL8", VTK_QUADRATIC_QUAD, {}},
        {"QUAD9", VTK_BIQUADRATIC_QUAD, {}},
        {"SHELL9", VTK_BIQUADRATIC_QUAD, {}},
        {"TRI6", VTK_QUADRATIC_TRIANGLE, {}},
        {"TRISHELL6", VTK_QUADRATIC_TRIANGLE, {}},
        {"BAR3", VTK_QUADRATIC_EDGE, {}},
        {"BEAM3", VTK_QUADRATIC_EDGE, {}},
        {"TRUSS3", VTK_QUADRATIC_EDGE, {}},
    };
    for (const auto& t : table)
        if (t.type == type)
            return &t;
    return nullptr;
}

} // namespace

bool vtu_writes(const std::string& type) {
    const ElementType* t = find_element_type(type);
    return !t || t->mids.empty() || vtk_higher(type);
}

void write_vtu(const ExportData& data, const std::string& path) {
    const vtkIdType node_count = static_cast<vtkIdType>(data.node_ids.size());
    vtkNew<vtkDoubleArray> xyz;
    xyz->SetNumberOfComponents(3);
    xyz->SetNumberOfTuples(node_count);
    vtkNew<vtkIntArray> node_id;
    node_id->SetName("node_id");
    node_id->SetNumberOfTuples(node_count);
    for (vtkIdType i = 0; i < node_count; ++i) {
        const double p[3] = {data.x[i], data.y[i], data.z[i]};
        xyz->SetTypedTuple(i, p);
        node_id->SetValue(i, data.node_ids[i]);
    }
    vtkNew<vtkPoints> points;
    points->SetData(xyz);

    const vtkIdType cell_count = data.layout.element_count;
    vtkNew<vtkIdTypeArray> offsets, connectivity;
    offsets->SetNumberOfTuples(cell_count + 1);
    vtkNew<vtkUnsignedCharArray> types;
    types->SetNumberOfTuples(cell_count);
    vtkNew<vtkIntArray> block_id, global_id;
    block_id->SetName("block_id");
    block_id->SetNumberOfTuples(cell_count);
    global_id->SetName("global_id");
    global_id->SetNumberOfTuples(cell_count);
    vtkIdType size = 0;
    for (const auto& conn : data.conn)
        size += static_cast<vtkIdType>(conn.size());
    connectivity->SetNumberOfTuples(size);
    vtkIdType cell = 0, at = 0;
    for (size_t i = 0; i < data.layout.blocks.size(); ++i) {
        const auto& b = data.layout.blocks[i];
        const int n = b.nodes;
        const VtkHigher* higher = vtk_higher(b.type);
        for (size_t e = 0; e < b.elements.size(); ++e, ++cell) {
            offsets->SetValue(cell, at);
            types->SetValue(cell, higher ? higher->cell : vtk_type(b.kind));
            block_id->SetValue(cell, b.block->id);
            global_id->SetValue(cell, static_cast<int>(cell + 1));
            for (int k = 0; k < n; ++k) {
                const int slot =
                    higher && !higher->from_exodus.empty() ? higher->from_exodus[k] : k;
                connectivity->SetValue(at++, data.conn[i][e * n + slot] - 1);
            }
        }
    }
    offsets->SetValue(cell_count, at);
    vtkNew<vtkCellArray> cells;
    cells->SetData(offsets, connectivity);

    vtkNew<vtkUnstructuredGrid> grid;
    grid->SetPoints(points);
    grid->SetCells(types, cells);
    grid->GetPointData()->AddArray(node_id);
    grid->GetCellData()->AddArray(block_id);
    grid->GetCellData()->AddArray(global_id);
    for (const auto& [set, nodes] : data.nodesets) {
        vtkNew<vtkIntArray> array;
        array->SetName(("nodeset_" + std::to_string(set->id)).c_str());
        array->SetNumberOfTuples(static_cast<vtkIdType>(nodes.size()));
        for (size_t k = 0; k < nodes.size(); ++k)
            array->SetValue(static_cast<vtkIdType>(k), nodes[k] - 1);
        grid->GetFieldData()->AddArray(array);
    }
    for (const auto& [set, elems, sides] : data.sidesets) {
        vtkNew<vtkIntArray> array;
        array->SetName(("sideset_" + std::to_string(set->id)).c_str());
        array->SetNumberOfComponents(2);
        array->SetNumberOfTuples(static_cast<vtkIdType>(elems.size()));
        for (size_t k = 0; k < elems.size(); ++k) {
            const int pair[2] = {elems[k] - 1, sides[k]};
            array->SetTypedTuple(static_cast<vtkIdType>(k), pair);
        }
        grid->GetFieldData()->AddArray(array);
    }

    vtkNew<vtkXMLUnstructuredGridWriter> writer;
    writer->SetFileName(path.c_str());
    writer->SetInputData(grid);
    writer->SetDataModeToAppended();
    writer->EncodeAppendedDataOff();
    if (writer->Write() != 1)
        throw std::runtime_error("VTK could not write '" + path + "'");
}

} // namespace tarvo::kernel::fe
