// Higher-order blocks on a cylinder (radius 5, axis z, swept hexes or tets): the mid-nodes the
// type adds (one per edge, and per face and element for HEX27), where they lie (on the
// cylinder when they belong to its side or its circles, else the mean of their corners), the
// Exodus file read back with the Exodus C API (type, nodes per element, every mid-node at the
// place its slot in the Exodus node order calls for), a side set on the end face, the .vtu
// read by VTK and the .msh by Gmsh (every higher-order node where its corners put it in their
// own node orders), the .inp's node order, the
// native file, a type set back to linear and undo.

#include "tarvo/TarvoInterface.h"

#include "../support/KernelTest.h"
#include "mesh/MeshTypes.h"

#include <gtest/gtest.h>

#include <exodusII.h>
#include <gmsh.h>
#include <vtkCell.h>
#include <vtkCellType.h>
#include <vtkCompositeDataIterator.h>
#include <vtkCompositeDataSet.h>
#include <vtkExodusIIReader.h>
#include <vtkNew.h>
#include <vtkSmartPointer.h>
#include <vtkUnstructuredGrid.h>
#include <vtkXMLUnstructuredGridReader.h>

#include <array>
#include <cmath>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

namespace TI = TarvoInterface;
namespace km = tarvo::kernel::mesh;

namespace {

using Corners = std::vector<std::vector<int>>;
using P = std::array<double, 3>;

// The Exodus node order of each type beyond its corners, written out from the Exodus element
// pictures (independently of the kernel's table).
const Corners kHex20{{0, 1}, {1, 2}, {2, 3}, {3, 0}, {0, 4}, {1, 5},
                     {2, 6}, {3, 7}, {4, 5}, {5, 6}, {6, 7}, {7, 4}};
const Corners kHex27Extra{{0, 1, 2, 3, 4, 5, 6, 7},
                          {0, 1, 2, 3},
                          {4, 5, 6, 7},
                          {0, 3, 4, 7},
                          {1, 2, 5, 6},
                          {0, 1, 4, 5},
                          {2, 3, 6, 7}};
const Corners kTet10{{0, 1}, {1, 2}, {0, 2}, {0, 3}, {1, 3}, {2, 3}};

struct Case {
    const char* type;
    const char* scheme;
    const char* word; // element word
    int nodes;
    Corners slots;
    bool faces_and_centres; // HEX27: a node per distinct face and per element too
    int vtk_cell;
    const char* abaqus;            // Abaqus element, or null when the .inp refuses the type
    std::vector<int> abaqus_slots; // the Exodus slot of each Abaqus node
};

std::vector<int> iota(int n) {
    std::vector<int> out(n);
    for (int i = 0; i < n; ++i)
        out[i] = i;
    return out;
}

const Case kCases[] = {
    {"HEX20", "sweep", "hex", 20, kHex20, false, VTK_QUADRATIC_HEXAHEDRON, "C3D20", {0,  1,  2,
                                                                                     3,  4,  5,
                                                                                     6,  7,  8,
                                                                                     9,  10, 11,
                                                                                     16, 17, 18,
                                                                                     19, 12, 13,
                                                                                     14, 15}},
    {"HEX27",
     "sweep",
     "hex",
     27,
     [] {
         Corners c = kHex20;
         c.insert(c.end(), kHex27Extra.begin(), kHex27Extra.end());
         return c;
     }(),
     true,
     VTK_TRIQUADRATIC_HEXAHEDRON,
     nullptr,
     {}},
    {"TET10", "tetmesh", "tet", 10, kTet10, false, VTK_QUADRATIC_TETRA, "C3D10", iota(10)},
};

// How far `mid` is from the mean of `corners`, or from that mean moved radially onto the
// cylinder when `mid` lies on it.
double miss(const P& mid, const std::vector<P>& corners) {
    P mean{0, 0, 0};
    for (const P& c : corners)
        for (int d = 0; d < 3; ++d)
            mean[d] += c[d] / static_cast<double>(corners.size());
    double out = std::hypot(mid[0] - mean[0], mid[1] - mean[1], mid[2] - mean[2]);
    const double r = std::hypot(mean[0], mean[1]);
    if (std::abs(std::hypot(mid[0], mid[1]) - 5) < 1e-6 && r > 0)
        out = std::min(
            out, std::hypot(mid[0] - mean[0] * 5 / r, mid[1] - mean[1] * 5 / r, mid[2] - mean[2]));
    return out;
}

class HigherOrderTest : public test_support::KernelTest {
protected:
    HigherOrderTest() : KernelTest("fe_higher") {}
};

TEST_F(HigherOrderTest, MidNodesOnTheGeometryInExodusOrder) {
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.type);
        run("reset");
        run("create cylinder radius 5 height 4");
        run(std::string("volume 1 scheme ") + c.scheme);
        run("volume 1 size 2");
        run("mesh volume 1");
        const km::ElemKind kind = *km::elem_kind_from_word(c.word);
        const auto elements =
            TI::get_volume_hexes(1).empty() ? TI::get_volume_tets(1) : TI::get_volume_hexes(1);
        ASSERT_FALSE(elements.empty());
        std::set<std::vector<int>> edges, faces;
        for (int e : elements) {
            const auto n = TI::get_connectivity(c.word, e);
            for (const auto& [a, b] : km::topology(kind).edges)
                edges.insert({std::min(n[a], n[b]), std::max(n[a], n[b])});
            for (const auto& f : km::topology(kind).faces) {
                std::vector<int> key;
                for (int l : f)
                    key.push_back(n[l]);
                std::sort(key.begin(), key.end());
                faces.insert(key);
            }
        }
        const int linear = TI::get_node_count();
        int top = 0; // the flat end face at z = 2
        std::vector<std::string> curved;
        for (int s : TI::get_entities("surface")) {
            if (TI::get_surface_type(s) == "Plane" && TI::get_center_point("surface", s)[2] > 1)
                top = s;
            if (TI::get_surface_type(s) != "Plane") {
                curved.push_back("surface " + std::to_string(s));
                for (int cv : TI::get_relatives("surface", s, "curve"))
                    curved.push_back("curve " + std::to_string(cv));
            }
        }
        ASSERT_GT(top, 0);
        run("block 1 add volume 1");
        run("sideset 1 add surface " + std::to_string(top));
        run(std::string("block 1 element type ") + c.type);

        const int mids =
            static_cast<int>(edges.size()) +
            (c.faces_and_centres ? static_cast<int>(faces.size() + elements.size()) : 0);
        EXPECT_EQ(TI::get_node_count(), linear + mids);
        EXPECT_EQ(static_cast<int>(TI::get_block_nodes(1).size()), linear + mids);
        const auto expanded = TI::get_expanded_connectivity(c.word, elements.front());
        ASSERT_EQ(static_cast<int>(expanded.size()), c.nodes);

        run("export mesh 'ho.e' overwrite");
        int cpu = 8, io = 0;
        float version = 0;
        const int exo = ex_open("ho.e", EX_READ, &cpu, &io, &version);
        ASSERT_GE(exo, 0);
        char type[MAX_STR_LENGTH + 1] = {};
        int count = 0, per = 0, edges_per = 0, faces_per = 0, attrs = 0; // 32-bit API
        ASSERT_GE(
            ex_get_block(exo, EX_ELEM_BLOCK, 1, type, &count, &per, &edges_per, &faces_per, &attrs),
            0);
        EXPECT_STREQ(type, c.type);
        EXPECT_EQ(per, c.nodes);
        ASSERT_EQ(count, static_cast<int>(elements.size()));
        ex_init_params init{};
        ASSERT_GE(ex_get_init_ext(exo, &init), 0);
        EXPECT_EQ(init.num_nodes, linear + mids);
        std::vector<double> x(init.num_nodes), y(init.num_nodes), z(init.num_nodes);
        std::vector<int> conn(static_cast<size_t>(count) * per), ids(init.num_nodes);
        ASSERT_GE(ex_get_coord(exo, x.data(), y.data(), z.data()), 0);
        ASSERT_GE(ex_get_conn(exo, EX_ELEM_BLOCK, 1, conn.data(), nullptr, nullptr), 0);
        ASSERT_GE(ex_get_id_map(exo, EX_NODE_MAP, ids.data()), 0);
        int sides = 0, factors = 0;
        ASSERT_GE(ex_get_set_param(exo, EX_SIDE_SET, 1, &sides, &factors), 0);
        EXPECT_EQ(sides,
                  static_cast<int>(kind == km::ElemKind::Hex ? TI::get_surface_quads(top).size()
                                                             : TI::get_surface_tris(top).size()));
        ex_close(exo);

        // Every slot holds the mean of its corners, moved onto the cylinder (radially, at the
        // same height) when its node belongs to the side or its circles.
        int on_cylinder = 0, worst_slot = -1;
        double worst = 0;
        for (int e = 0; e < count; ++e) {
            const int* n = conn.data() + e * per;
            for (size_t k = 0; k < c.slots.size(); ++k) {
                P mean{0, 0, 0};
                for (int l : c.slots[k]) {
                    const int f = n[l] - 1;
                    mean = {mean[0] + x[f], mean[1] + y[f], mean[2] + z[f]};
                }
                for (double& v : mean)
                    v /= static_cast<double>(c.slots[k].size());
                const int f = n[km::info(kind).nodes + static_cast<int>(k)] - 1;
                const std::string owner = TI::get_geometry_owner("node", ids[f]);
                if (std::find(curved.begin(), curved.end(), owner) != curved.end()) {
                    const double r = std::hypot(mean[0], mean[1]);
                    mean[0] *= 5 / r;
                    mean[1] *= 5 / r;
                    ++on_cylinder;
                    EXPECT_NEAR(std::hypot(x[f], y[f]), 5.0, 1e-6);
                }
                const double d = std::hypot(x[f] - mean[0], y[f] - mean[1], z[f] - mean[2]);
                if (d > worst) {
                    worst = d;
                    worst_slot = static_cast<int>(k);
                }
            }
        }
        EXPECT_LT(worst, 1e-6) << "slot " << worst_slot;
        EXPECT_GT(on_cylinder, 0);

        // VTK reads the .vtu's cells by its own node order: each of their quadratic edges has
        // its middle node where the Exodus check above put it. The .inp lists Abaqus' order.
        run("export mesh 'ho.vtu' overwrite");
        vtkNew<vtkXMLUnstructuredGridReader> reader;
        reader->SetFileName("ho.vtu");
        reader->Update();
        vtkUnstructuredGrid* grid = reader->GetOutput();
        ASSERT_EQ(grid->GetNumberOfCells(), count);
        EXPECT_EQ(grid->GetCellType(0), c.vtk_cell);
        double worst_edge = 0;
        for (vtkIdType cell = 0; cell < grid->GetNumberOfCells(); ++cell) {
            vtkCell* cc = grid->GetCell(cell);
            for (int k = 0; k < cc->GetNumberOfEdges(); ++k) {
                vtkCell* edge = cc->GetEdge(k);
                ASSERT_EQ(edge->GetNumberOfPoints(), 3);
                P a, b, mid;
                grid->GetPoint(edge->GetPointId(0), a.data());
                grid->GetPoint(edge->GetPointId(1), b.data());
                grid->GetPoint(edge->GetPointId(2), mid.data());
                const double d = miss(mid, {a, b});
                worst_edge = std::max(worst_edge, d);
            }
        }
        EXPECT_LT(worst_edge, 1e-6);
        // Gmsh places each node of its element by local coordinates: a higher-order node is
        // the middle of the corners that share its coordinates (a hex's) or of the pair whose
        // mean it is (a tet's).
        run("export mesh 'ho.msh' overwrite");
        std::string kernel_model;
        gmsh::model::getCurrent(kernel_model);
        gmsh::model::add("read-back");
        gmsh::merge("ho.msh");
        std::vector<std::size_t> tags;
        std::vector<double> xyz, params;
        gmsh::model::mesh::getNodes(tags, xyz, params);
        std::map<std::size_t, P> at;
        for (size_t i = 0; i < tags.size(); ++i)
            at[tags[i]] = {xyz[3 * i], xyz[3 * i + 1], xyz[3 * i + 2]};
        std::vector<int> types;
        std::vector<std::vector<std::size_t>> elem_tags, elem_nodes;
        gmsh::model::mesh::getElements(types, elem_tags, elem_nodes, 3);
        ASSERT_EQ(types.size(), 1u);
        std::string name;
        int dim = 0, order = 0, per_element = 0, primary = 0;
        std::vector<double> local;
        gmsh::model::mesh::getElementProperties(types[0], name, dim, order, per_element, local,
                                                primary);
        EXPECT_EQ(per_element, c.nodes) << name;
        double worst_msh = 0;
        for (size_t e = 0; e < elem_tags[0].size(); ++e) {
            const std::size_t* n = elem_nodes[0].data() + e * per_element;
            for (int k = primary; k < per_element; ++k) {
                const double* m = &local[3 * k];
                std::vector<P> corners;
                for (int i = 0; i < primary && kind == km::ElemKind::Hex; ++i)
                    if ((m[0] == 0 || local[3 * i] == m[0]) &&
                        (m[1] == 0 || local[3 * i + 1] == m[1]) &&
                        (m[2] == 0 || local[3 * i + 2] == m[2]))
                        corners.push_back(at[n[i]]);
                for (int i = 0; i < primary && kind != km::ElemKind::Hex; ++i)
                    for (int j = i + 1; j < primary; ++j)
                        if (std::hypot(local[3 * i] + local[3 * j] - 2 * m[0],
                                       local[3 * i + 1] + local[3 * j + 1] - 2 * m[1],
                                       local[3 * i + 2] + local[3 * j + 2] - 2 * m[2]) < 1e-12)
                            corners.insert(corners.end(), {at[n[i]], at[n[j]]});
                ASSERT_FALSE(corners.empty());
                worst_msh = std::max(worst_msh, miss(at[n[k]], corners));
            }
        }
        EXPECT_LT(worst_msh, 1e-6);
        gmsh::model::remove();
        gmsh::model::setCurrent(kernel_model);

        if (c.abaqus) {
            run("export mesh 'ho.inp' overwrite");
            std::ifstream inp("ho.inp");
            std::string line;
            while (std::getline(inp, line) && line.find("*ELEMENT") != 0) {
            }
            EXPECT_NE(line.find(c.abaqus), std::string::npos) << line;
            std::vector<int> listed;
            while (static_cast<int>(listed.size()) < c.nodes + 1 && std::getline(inp, line)) {
                std::stringstream fields(line);
                std::string field;
                while (std::getline(fields, field, ','))
                    if (field.find_first_not_of(' ') != std::string::npos)
                        listed.push_back(std::stoi(field));
            }
            std::vector<int> expected{1};
            for (int slot : c.abaqus_slots)
                expected.push_back(expanded[slot]);
            EXPECT_EQ(listed, expected);
        }

        // The native file keeps them with their ids; back to linear drops them, undo brings
        // them back.
        run("save as 'ho.tvo' overwrite");
        run("reset");
        run("open 'ho.tvo'");
        EXPECT_EQ(TI::get_node_count(), linear + mids);
        EXPECT_EQ(TI::get_expanded_connectivity(c.word, elements.front()), expanded);
        run(std::string("block 1 element type ") + (c.nodes == 10 ? "TET4" : "HEX8"));
        EXPECT_EQ(TI::get_node_count(), linear);
        EXPECT_EQ(TI::get_expanded_connectivity(c.word, elements.front()).size(),
                  static_cast<size_t>(km::info(kind).nodes));
        run("undo");
        EXPECT_EQ(TI::get_node_count(), linear + mids);
        EXPECT_EQ(TI::get_expanded_connectivity(c.word, elements.front()), expanded);
    }
}

// Two blocks that meet at a merged surface share the mid-nodes on it; deleting the mesh of
// one volume keeps those the other still needs.
TEST_F(HigherOrderTest, NeighbouringBlocksShareMidNodes) {
    run("create box 2 1 1");
    run("create box 2 1 1 at 2 0 0");
    run("merge all");
    run("volume all interval 1");
    run("mesh volume all");
    ASSERT_EQ(TI::get_hex_count(), 2);
    ASSERT_EQ(TI::get_node_count(), 12);
    run("block 1 add volume 1");
    run("block 2 add volume 2");
    run("block 1 element type HEX20");
    EXPECT_EQ(TI::get_node_count(), 12 + 12);
    run("block 2 element type HEX20");
    EXPECT_EQ(TI::get_node_count(), 12 + 20); // 12 edges each, 4 shared
    run("delete mesh volume 2");
    EXPECT_EQ(TI::get_node_count(), 12 + 12);
}

// The wedge, surface and curve types, on the flat faces and straight edges of a box, read back by
// VTK's Exodus reader, which turns each Exodus type into its VTK cell by its own knowledge of the
// Exodus node order: every quadratic edge then has its middle node halfway between its ends
// (and a nine-node quad its centre node at the mean of its corners), or the order is wrong.
TEST_F(HigherOrderTest, WedgeSurfaceAndCurveTypesInTheExodusOrderVtkReads) {
    const struct {
        const char* type;
        const char* mesh; // the commands after `create box 2`
        const char* block;
        int vtk_cell;
    } cases[] = {
        {"QUAD8", "mesh surface 1", "surface 1", VTK_QUADRATIC_QUAD},
        {"QUAD9", "mesh surface 1", "surface 1", VTK_BIQUADRATIC_QUAD},
        {"SHELL8", "mesh surface 1", "surface 1", VTK_QUADRATIC_QUAD},
        // Not SHELL9: it shares QUAD9's order, and VTK's reader makes eight-node quads of
        // nine-node shells, whose edges then come out wrong.
        {"TRI6", "surface 1 scheme trimesh\nmesh surface 1", "surface 1", VTK_QUADRATIC_TRIANGLE},
        {"TRISHELL6", "surface 1 scheme trimesh\nmesh surface 1", "surface 1",
         VTK_QUADRATIC_TRIANGLE},
        {"BAR3", "mesh curve 1", "curve 1", VTK_QUADRATIC_EDGE},
        {"WEDGE15",
         "surface 1 scheme trimesh\nvolume 1 scheme sweep source surface 1 target surface 2\n"
         "mesh volume 1",
         "volume 1", VTK_QUADRATIC_WEDGE},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.type);
        run("reset");
        run("create box 2");
        run("volume 1 interval 2");
        std::stringstream lines(c.mesh);
        for (std::string line; std::getline(lines, line);)
            run(line);
        run(std::string("block 1 add ") + c.block);
        run(std::string("block 1 element type ") + c.type);
        run("export mesh 'flat.e' overwrite");

        vtkNew<vtkExodusIIReader> reader;
        reader->SetFileName("flat.e");
        reader->UpdateInformation();
        reader->SetAllArrayStatus(vtkExodusIIReader::ELEM_BLOCK, 1);
        reader->Update();
        auto* tree = vtkCompositeDataSet::SafeDownCast(reader->GetOutputDataObject(0));
        ASSERT_TRUE(tree);
        vtkSmartPointer<vtkCompositeDataIterator> it;
        it.TakeReference(tree->NewIterator());
        int cells = 0;
        double worst = 0;
        for (it->InitTraversal(); !it->IsDoneWithTraversal(); it->GoToNextItem()) {
            auto* grid = vtkUnstructuredGrid::SafeDownCast(it->GetCurrentDataObject());
            ASSERT_TRUE(grid);
            for (vtkIdType id = 0; id < grid->GetNumberOfCells(); ++id, ++cells) {
                vtkCell* cell = grid->GetCell(id);
                ASSERT_EQ(cell->GetCellType(), c.vtk_cell);
                const auto at = [&](vtkCell* from, int k) {
                    P p;
                    grid->GetPoint(from->GetPointId(k), p.data());
                    return p;
                };
                // GetEdge reuses one object: each edge is checked before the next is asked for.
                // A quadratic edge is its own edge.
                const int edges = std::max(cell->GetNumberOfEdges(), 1);
                for (int k = 0; k < edges; ++k) {
                    vtkCell* edge = cell->GetNumberOfEdges() > 0 ? cell->GetEdge(k) : cell;
                    ASSERT_EQ(edge->GetNumberOfPoints(), 3);
                    worst = std::max(worst, miss(at(edge, 2), {at(edge, 0), at(edge, 1)}));
                }
                if (c.vtk_cell == VTK_BIQUADRATIC_QUAD)
                    worst = std::max(worst, miss(at(cell, 8), {at(cell, 0), at(cell, 1),
                                                               at(cell, 2), at(cell, 3)}));
            }
        }
        EXPECT_GT(cells, 0);
        EXPECT_LT(worst, 1e-6); // a wrong order misses by half an element (0.25 here)
    }
}

} // namespace
