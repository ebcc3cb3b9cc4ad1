// The mesh formats, each read back by a reader that is not ours: Gmsh reads the .msh, VTK the
// .vtu and the Exodus file (whose definitions are written before its bulk data), and a small
// Abaqus reader below the .inp. The same model (two hex
// blocks, a nodeset and a sideset on one surface) must come back with the same counts, and the
// .inp's sideset faces, looked up in Abaqus' own face table, must lie on the surface.

#include "tarvo/TarvoInterface.h"

#include "../support/KernelTest.h"

#include <gtest/gtest.h>

#include <gmsh.h>
#include <vtkCellData.h>
#include <vtkExodusIIReader.h>
#include <vtkFieldData.h>
#include <vtkIntArray.h>
#include <vtkNew.h>
#include <vtkUnstructuredGrid.h>
#include <vtkXMLUnstructuredGridReader.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

namespace TI = TarvoInterface;

namespace {

// What an Abaqus input file declares: nodes, elements (id -> nodes) per ELSET of *ELEMENT,
// node sets, element sets and surfaces (name -> (elset, face label)).
struct Inp {
    std::map<int, std::array<double, 3>> nodes;
    std::map<int, std::vector<int>> elements;
    std::map<std::string, std::vector<int>> element_blocks, nsets, elsets;
    std::map<std::string, std::vector<std::pair<std::string, std::string>>> surfaces;
};

std::map<std::string, std::string> keyword_options(const std::string& line) {
    std::map<std::string, std::string> out;
    std::stringstream in(line);
    std::string item;
    std::getline(in, item, ','); // the keyword
    while (std::getline(in, item, ',')) {
        item.erase(0, item.find_first_not_of(' '));
        const auto eq = item.find('=');
        out[item.substr(0, eq)] = eq == std::string::npos ? "" : item.substr(eq + 1);
    }
    return out;
}

std::vector<std::string> fields(const std::string& line) {
    std::vector<std::string> out;
    std::stringstream in(line);
    std::string item;
    while (std::getline(in, item, ',')) {
        item.erase(0, item.find_first_not_of(' '));
        if (!item.empty())
            out.push_back(item);
    }
    return out;
}

Inp read_inp(const std::string& path) {
    Inp inp;
    std::ifstream in(path);
    std::string line, section, name;
    while (std::getline(in, line)) {
        if (line.rfind("**", 0) == 0 || line.empty())
            continue;
        if (line[0] == '*') {
            section = line.substr(1, line.find(',') - 1);
            const auto options = keyword_options(line);
            for (const char* key : {"ELSET", "NSET", "NAME"})
                if (options.count(key))
                    name = options.at(key);
            continue;
        }
        const auto f = fields(line);
        if (section == "NODE") {
            inp.nodes[std::stoi(f[0])] = {std::stod(f[1]), std::stod(f[2]), std::stod(f[3])};
        } else if (section == "ELEMENT") {
            std::vector<int>& e = inp.elements[std::stoi(f[0])];
            for (size_t i = 1; i < f.size(); ++i)
                e.push_back(std::stoi(f[i]));
            inp.element_blocks[name].push_back(std::stoi(f[0]));
        } else if (section == "NSET" || section == "ELSET") {
            for (const auto& id : f)
                (section == "NSET" ? inp.nsets : inp.elsets)[name].push_back(std::stoi(id));
        } else if (section == "SURFACE") {
            inp.surfaces[name].emplace_back(f[0], f[1]);
        }
    }
    return inp;
}

class ExportFormatsTest : public test_support::KernelTest {
protected:
    ExportFormatsTest() : KernelTest("fe_formats") {}
};

TEST_F(ExportFormatsTest, ReadBackWithTheSameCounts) {
    run("create box 10");
    run("create box 10");
    run("move volume 2 by 20 0 0");
    run("volume 1 interval 2");
    run("volume 2 interval 1");
    run("mesh volume all");
    run("block 1 add volume 1");
    run("block 2 add volume 2");
    run("block 2 name 'right'");
    run("nodeset 3 add surface 1");
    run("sideset 4 add surface 1");
    const size_t nodes = 27 + 8, hexes = 8 + 1, set_nodes = 9, sides = 4;
    ASSERT_EQ(TI::get_nodeset_node_count(3), static_cast<int>(set_nodes));
    run("export mesh 'm.msh'");
    run("export mesh 'm.vtu'");
    run("export mesh 'm.inp'");
    run("export mesh 'm.data' format VTU");
    run("export mesh 'm.e'");
    EXPECT_NE(rejected("export mesh 'm.e' format stl").find("stl"), std::string::npos);

    // Abaqus, with the faces of C3D8 as Abaqus numbers them (1-based corners).
    const Inp inp = read_inp("m.inp");
    EXPECT_EQ(inp.nodes.size(), nodes);
    EXPECT_EQ(inp.elements.size(), hexes);
    EXPECT_EQ(inp.element_blocks.at("Block1").size(), 8u);
    EXPECT_EQ(inp.element_blocks.at("right").size(), 1u);
    const std::vector<int>& on_surface = inp.nsets.at("Nodeset3");
    ASSERT_EQ(on_surface.size(), set_nodes);
    const std::map<std::string, std::vector<int>> c3d8_faces{
        {"S1", {1, 2, 3, 4}}, {"S2", {5, 8, 7, 6}}, {"S3", {1, 5, 6, 2}},
        {"S4", {2, 6, 7, 3}}, {"S5", {3, 7, 8, 4}}, {"S6", {4, 8, 5, 1}}};
    size_t faces = 0;
    for (const auto& [elset, label] : inp.surfaces.at("Sideset4"))
        for (int e : inp.elsets.at(elset)) {
            ++faces;
            for (int corner : c3d8_faces.at(label)) {
                const int node = inp.elements.at(e).at(corner - 1);
                EXPECT_NE(std::find(on_surface.begin(), on_surface.end(), node), on_surface.end())
                    << "element " << e << " face " << label;
            }
        }
    EXPECT_EQ(faces, sides);

    // VTK, whatever the extension was.
    for (const char* file : {"m.vtu", "m.data"}) {
        vtkNew<vtkXMLUnstructuredGridReader> reader;
        reader->SetFileName(file);
        reader->Update();
        vtkUnstructuredGrid* grid = reader->GetOutput();
        EXPECT_EQ(grid->GetNumberOfPoints(), static_cast<vtkIdType>(nodes)) << file;
        EXPECT_EQ(grid->GetNumberOfCells(), static_cast<vtkIdType>(hexes)) << file;
        EXPECT_EQ(grid->GetCellType(0), VTK_HEXAHEDRON);
        auto* blocks = vtkIntArray::SafeDownCast(grid->GetCellData()->GetArray("block_id"));
        ASSERT_NE(blocks, nullptr);
        EXPECT_EQ(blocks->GetValue(8), 2);
        auto* set = grid->GetFieldData()->GetArray("nodeset_3");
        ASSERT_NE(set, nullptr);
        EXPECT_EQ(set->GetNumberOfTuples(), static_cast<vtkIdType>(set_nodes));
        ASSERT_NE(grid->GetFieldData()->GetArray("sideset_4"), nullptr);
        EXPECT_EQ(grid->GetFieldData()->GetArray("sideset_4")->GetNumberOfTuples(),
                  static_cast<vtkIdType>(sides));
    }

    // Exodus II through VTK's reader.
    vtkNew<vtkExodusIIReader> exodus;
    exodus->SetFileName("m.e");
    exodus->UpdateInformation();
    EXPECT_EQ(exodus->GetNumberOfObjects(vtkExodusIIReader::ELEM_BLOCK), 2);
    EXPECT_EQ(exodus->GetNumberOfObjects(vtkExodusIIReader::NODE_SET), 1);
    EXPECT_EQ(exodus->GetNumberOfObjects(vtkExodusIIReader::SIDE_SET), 1);
    EXPECT_NE(std::string(exodus->GetObjectName(vtkExodusIIReader::ELEM_BLOCK, 1)).find("right"),
              std::string::npos);
    EXPECT_EQ(exodus->GetNumberOfEntriesInObject(vtkExodusIIReader::ELEM_BLOCK, 0), 8);
    EXPECT_EQ(exodus->GetNumberOfEntriesInObject(vtkExodusIIReader::NODE_SET, 0),
              static_cast<int>(set_nodes));
    EXPECT_EQ(exodus->GetNumberOfEntriesInObject(vtkExodusIIReader::SIDE_SET, 0),
              static_cast<int>(sides));
    EXPECT_EQ(exodus->GetNumberOfNodesInFile(), static_cast<int>(nodes));

    // Gmsh, in a model of its own so the kernel's stays as it was.
    std::string kernel_model;
    gmsh::model::getCurrent(kernel_model);
    gmsh::model::add("read-back");
    gmsh::merge("m.msh");
    std::vector<std::size_t> tags;
    std::vector<double> xyz, params;
    gmsh::model::mesh::getNodes(tags, xyz, params);
    EXPECT_EQ(tags.size(), nodes);
    std::vector<int> types;
    std::vector<std::vector<std::size_t>> elem_tags, elem_nodes;
    gmsh::model::mesh::getElements(types, elem_tags, elem_nodes, 3);
    ASSERT_EQ(types, std::vector<int>{5});
    EXPECT_EQ(elem_tags[0].size(), hexes);
    gmsh::vectorpair groups;
    gmsh::model::getPhysicalGroups(groups, 3);
    EXPECT_EQ(groups, (gmsh::vectorpair{{3, 1}, {3, 2}}));
    std::string name;
    gmsh::model::getPhysicalName(3, 2, name);
    EXPECT_EQ(name, "right");
    std::vector<int> entities;
    gmsh::model::getEntitiesForPhysicalGroup(2, 4, entities);
    ASSERT_EQ(entities.size(), 1u);
    gmsh::model::mesh::getElements(types, elem_tags, elem_nodes, 2, entities[0]);
    ASSERT_EQ(types, std::vector<int>{3});
    EXPECT_EQ(elem_tags[0].size(), sides);
    gmsh::model::remove();
    gmsh::model::setCurrent(kernel_model);
}

} // namespace
