// Blocks, node sets and side sets through the command language and the public queries: what a
// 2 x 2 x 2 hex block puts in them (counts worked out by hand), bad input refused with the model
// unchanged, undo, a block made before meshing, global element ids and the export's file rules.

#include "tarvo/TarvoInterface.h"

#include "../support/KernelTest.h"

#include <gtest/gtest.h>

#include <exodusII.h>

#include <filesystem>
#include <fstream>
#include <set>

namespace TI = TarvoInterface;

namespace {

class FeTest : public test_support::KernelTest {
protected:
    FeTest() : KernelTest("fe", {"genesis_entity_modified"}) {}
    // A 10-unit box meshed 2 x 2 x 2: 8 hexes, 27 nodes, 4 quads and 9 nodes a side.
    void meshed_box() {
        run("create box 10");
        run("volume 1 interval 2");
        run("mesh volume 1");
    }
    // Everything the queries say about the containers, to compare before and after.
    static std::string dump() {
        std::string out;
        for (int b : TI::get_block_id_list())
            out += "block " + std::to_string(b) + " " + TI::get_block_element_type(b) + " " +
                   TI::get_exodus_entity_name("block", b) + " v" +
                   std::to_string(TI::get_block_volumes(b).size()) + " c" +
                   std::to_string(TI::get_block_curves(b).size()) + " a" +
                   std::to_string(TI::get_block_attribute_count(b)) + ";";
        for (int n : TI::get_nodeset_id_list())
            out += "nodeset " + std::to_string(n) + " " +
                   std::to_string(TI::get_nodeset_node_count(n)) + ";";
        for (int s : TI::get_sideset_id_list())
            out += "sideset " + std::to_string(s) + " " +
                   std::to_string(TI::get_exodus_element_count(s, "sideset")) + ";";
        return out;
    }
};

TEST_F(FeTest, ContainersAnswerFromTheMesh) {
    meshed_box();
    run("block 1 add volume 1");
    run("block 1 name 'steel'");
    run("block 1 attribute count 2");
    run("block 1 attribute index 2 value 3.5 name 'thickness'");
    run("nodeset 4 add surface 1");
    run("sideset 7 add surface 1");
    run("sideset 7 name 'top'");

    EXPECT_EQ(TI::get_block_id_list(), std::vector<int>{1});
    EXPECT_EQ(TI::get_next_block_id(), 2);
    EXPECT_EQ(TI::get_next_nodeset_id(), 5);
    EXPECT_EQ(TI::get_block_element_type(1), "HEX8");
    EXPECT_EQ(TI::get_block_hexes(1).size(), 8u);
    EXPECT_TRUE(TI::get_block_tets(1).empty());
    EXPECT_EQ(TI::get_block_nodes(1).size(), 27u);
    EXPECT_EQ(TI::get_block_volumes(1), std::vector<int>{1});
    EXPECT_EQ(TI::get_block_id("volume", 1), 1);
    EXPECT_EQ(TI::get_block_id("hex", TI::get_block_hexes(1)[3]), 1);
    EXPECT_EQ(TI::get_exodus_element_count(1, "block"), 8);
    EXPECT_EQ(TI::get_block_attribute_value(1, 1), 3.5);
    EXPECT_EQ(TI::get_block_attribute_name(1, 1), "thickness");
    EXPECT_EQ(TI::get_block_attribute_value(1, 0), 0.0);
    EXPECT_EQ(TI::get_valid_block_element_types(1),
              (std::vector<std::string>{"HEX8", "HEX20", "HEX27", "TET4", "TET10", "WEDGE6",
                                        "WEDGE15", "PYRAMID5", "PYRAMID13"}));
    EXPECT_EQ(TI::get_nodeset_surfaces(4), std::vector<int>{1});
    EXPECT_EQ(TI::get_nodeset_nodes_inclusive(4).size(), 9u);
    EXPECT_TRUE(TI::get_nodeset_nodes(4).empty()); // no nodes listed one by one
    EXPECT_EQ(TI::get_exodus_element_count(7, "sideset"), 4);
    EXPECT_EQ(TI::get_sideset_quads(7).size(), 4u);
    EXPECT_EQ(TI::get_sideset_element_type(7), "QUAD4");
    EXPECT_EQ(TI::get_id_from_name("top"), 7);
    EXPECT_EQ(TI::get_exodus_entity_name("block", 1), "steel");
    // The entity-list grammar reaches into containers.
    EXPECT_EQ(TI::parse_tarvo_list("hex", "in block 1").size(), 8u);
    EXPECT_EQ(TI::parse_tarvo_list("node", "in nodeset 4").size(), 9u);

    // Global ids run 1..8 over the block, and back.
    std::vector<int> globals;
    for (int h : TI::get_block_hexes(1))
        globals.push_back(TI::get_hex_global_element_id(h));
    std::sort(globals.begin(), globals.end());
    EXPECT_EQ(globals, (std::vector<int>{1, 2, 3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(TI::get_element_block(8), 1);
    EXPECT_FALSE(TI::get_element_exists(9));
    EXPECT_EQ(recorder.count("genesis_entity_modified block 1 created"), 1u);
}

TEST_F(FeTest, BadInputIsRefusedAndChangesNothing) {
    meshed_box();
    run("create box 1");
    run("block 1 add volume 1");
    run("block 1 attribute count 1");
    run("sideset 1 add surface 1");
    const std::string before = dump();
    expect_refused(
        {
            {"block 0 add volume 2", "positive"},
            {"block 1 add curve 1", "3D"},
            {"block 2 add volume 1", "in block 1 already"},
            {"block 1 element type QUAD4", "2D"},
            {"block 1 element type BRICK", "unknown element type"},
            {"block 3 name 'x'", "does not exist"},
            {"block 1 attribute index 2 value 1", "index 2"},
            {"block 1 attribute count -1", "0 to 1000"},
            {"sideset 2 add curve 1", "holds surfaces"},
            {"sideset 1 add surface 1 wrt volume 2", "not on volume 2"},
            {"nodeset 1 add hex 1", "geometry or nodes"},
            {"export mesh 'no/such/dir/out.e'", "does not exist"},
        },
        dump);
    const std::string long_name(81, 'n');
    EXPECT_NE(rejected("block 1 name '" + long_name + "'").find("80"), std::string::npos);
    EXPECT_EQ(dump(), before);
}

TEST_F(FeTest, UndoAndDeleteAndBlocksBeforeMeshing) {
    run("create box 10");
    run("volume 1 interval 2");
    run("block 1 add volume 1"); // before meshing: the block takes the elements later
    EXPECT_EQ(TI::get_block_element_type(1), "HEX8");
    EXPECT_TRUE(TI::get_block_hexes(1).empty());
    run("volume 1 scheme tetmesh");
    run("mesh volume 1");
    EXPECT_EQ(TI::get_block_element_type(1), "TET4");
    EXPECT_EQ(TI::get_exodus_element_count(1, "block"), TI::get_tet_count());

    run("nodeset 2 add vertex 1");
    run("delete block 1");
    EXPECT_TRUE(TI::get_block_id_list().empty());
    run("undo");
    EXPECT_EQ(TI::get_block_id_list(), std::vector<int>{1});
    run("undo");
    EXPECT_TRUE(TI::get_nodeset_id_list().empty());
    EXPECT_EQ(recorder.count("genesis_entity_modified nodeset 2 deleted"), 1u);
    run("reset");
    EXPECT_TRUE(TI::get_block_id_list().empty());
}

// A deleted volume leaves its block, so that `compress ids` giving its id to another volume
// does not put that one in; renumbered entities are followed.
TEST_F(FeTest, ContainersFollowDeletedAndRenumberedGeometry) {
    run("create box 1");
    run("create box 1");
    run("block 1 add volume 1");
    run("block 2 add volume 2");
    run("sideset 3 add surface 7 wrt volume 2");
    run("delete volume 1");
    run("compress ids");
    EXPECT_TRUE(TI::get_block_volumes(1).empty());
    EXPECT_EQ(TI::get_block_volumes(2), std::vector<int>{1});
    EXPECT_EQ(TI::get_sideset_surfaces(3), std::vector<int>{1});
    EXPECT_EQ(TI::get_wrt_entity("surface", 1, 3), "volume 1");
}

TEST_F(FeTest, ExportFileRules) {
    meshed_box();
    EXPECT_NE(rejected("export mesh 'a.e'").find("no blocks"), std::string::npos);
    run("block 1 add volume 1");
    run("export mesh 'a.e'");
    EXPECT_NE(rejected("export mesh 'a.e'").find("overwrite"), std::string::npos);
    run("block 1 name 'renamed'");
    run("export mesh 'a.e' overwrite");
    EXPECT_EQ(TI::get_block_ids("a.e"), std::vector<int>{1});
    // Files the library cannot take are refused by us, whatever the length of their names (the
    // library's own message overruns its buffer on a long one).
    const std::string long_name(250, 'x');
    EXPECT_NE(rejected("export mesh '" + long_name + "'").find("cannot create"), std::string::npos);
    std::ofstream("text.e") << "not exodus";
    EXPECT_TRUE(TI::get_block_ids("text.e").empty());
    EXPECT_TRUE(TI::get_block_ids(long_name).empty());
    std::filesystem::remove("text.e");
    // Only the finished file is left beside it.
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(session.dir()))
        files += entry.is_regular_file();
    EXPECT_EQ(files, 1);

    // An element in two blocks, or a block whose type does not fit its elements, is refused
    // and leaves nothing.
    run("block 3 add hex 1");
    EXPECT_NE(rejected("export mesh 'b.e'").find("two blocks"), std::string::npos);
    run("delete block 3");
    run("block 2 add quad in surface 1");
    run("block 2 element type TRI3");
    EXPECT_NE(rejected("export mesh 'b.e'").find("TRI3"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists("b.e"));
}

// What containers hold and how entities are known in the file: children, descriptions, the
// sense of a merged surface taken from one side or both, element types and ids by global id.
TEST_F(FeTest, ChildrenSenseAndExportIds) {
    run("create box 10");
    run("create box 10");
    run("move volume 2 by 10 0 0");
    run("merge all");
    run("volume all interval 2");
    run("mesh volume all");
    const auto in1 = TI::parse_tarvo_list("surface", "in volume 1");
    const auto in2 = TI::parse_tarvo_list("surface", "in volume 2");
    int shared = 0;
    for (int s : in1)
        if (std::find(in2.begin(), in2.end(), s) != in2.end())
            shared = s;
    ASSERT_GT(shared, 0);
    run("block 1 add volume 1");
    run("block 2 add volume 2");
    run("block 2 description 'the right box'");
    run("nodeset 5 add vertex 1 node 3");
    run("sideset 1 add surface " + std::to_string(shared));
    run("sideset 2 add surface " + std::to_string(shared) + " wrt volume 1");
    run("sideset 3 add surface " + std::to_string(shared) + " wrt volume 2");

    std::vector<int> groups{9}, nodes, spheres, edges, tris, faces, pyramids, tets, hexes, wedges,
        volumes, surfaces, curves, vertices;
    TI::get_block_children(2, groups, nodes, spheres, edges, tris, faces, pyramids, tets, hexes,
                           wedges, volumes, surfaces, curves, vertices);
    EXPECT_TRUE(groups.empty());
    EXPECT_EQ(hexes, TI::get_block_hexes(2));
    EXPECT_EQ(hexes.size(), 8u);
    EXPECT_EQ(nodes.size(), 27u);
    EXPECT_EQ(volumes, std::vector<int>{2});
    TI::get_nodeset_children(5, nodes, volumes, surfaces, curves, vertices);
    EXPECT_EQ(nodes, std::vector<int>{3});
    EXPECT_EQ(vertices, std::vector<int>{1});
    TI::get_sideset_children(1, faces, surfaces, curves);
    EXPECT_EQ(faces.size(), 4u);
    EXPECT_EQ(surfaces, std::vector<int>{shared});

    EXPECT_EQ(TI::get_exodus_entity_description("block", 2), "the right box");
    EXPECT_EQ(TI::get_exodus_entity_type("block", 2), "HEX8");
    EXPECT_EQ(TI::get_exodus_entity_type("sideset", 1), "QUAD4");
    EXPECT_EQ(TI::get_exodus_entity_type("block", 9), "");
    EXPECT_EQ(TI::get_block_count(), 2);
    EXPECT_EQ(TI::get_exodus_element_count(1, "sideset"), 8); // both sides of 4 quads

    EXPECT_EQ(TI::get_entity_sense("surface", shared, 1), "both");
    const std::string one = TI::get_entity_sense("surface", shared, 2);
    const std::string other = TI::get_entity_sense("surface", shared, 3);
    EXPECT_TRUE(one == "forward" || one == "reverse") << one;
    EXPECT_TRUE(other == "forward" || other == "reverse") << other;
    EXPECT_NE(one, other);
    EXPECT_EQ(TI::get_entity_sense("surface", in1[0] == shared ? in1[1] : in1[0], 1), "");

    // Global ids 9..16 are block 2's hexes; nodes are written under their own ids.
    const int hex = TI::get_block_hexes(2)[0];
    const int global = TI::get_exodus_id("hex", hex);
    EXPECT_GE(global, 9);
    EXPECT_EQ(TI::get_element_block(global), 2);
    EXPECT_EQ(TI::get_element_type(global), "HEX8");
    EXPECT_EQ(TI::get_element_type_id(global), TI::get_element_type_id(1));
    EXPECT_EQ(TI::get_element_type(17), "");
    EXPECT_EQ(TI::get_exodus_id("sideset", 3), 3);
    EXPECT_EQ(TI::get_exodus_id("nodeset", 4), 0);
    int node = 0; // a node of block 2 that nodeset 5 does not hold
    for (int n : TI::get_connectivity("hex", hex))
        if (!node && n != 3 && n != TI::get_vertex_node(1))
            node = n;
    EXPECT_EQ(TI::get_node_global_id(node), node);
    run("delete block 1 2");
    EXPECT_EQ(TI::get_node_global_id(node), 0);
    EXPECT_EQ(TI::get_node_global_id(3), 3); // still in nodeset 5
}

TEST_F(FeTest, LastIdsAndSignatures) {
    meshed_box();
    run("create box 1");
    run("block 4 add volume 2");
    run("block 4 name 'small'");
    const struct {
        const char* type;
        int last;
    } cases[] = {{"volume", 2}, {"surface", 12}, {"hex", 8},     {"node", 27},
                 {"block", 4},  {"group", 0},    {"sideset", 0}, {"wombat", 0}};
    for (const auto& c : cases)
        EXPECT_EQ(TI::get_last_id(c.type), c.last) << c.type;
    EXPECT_EQ(TI::get_idless_signature("volume", 2), "volume at 0 0 0");
    EXPECT_EQ(TI::get_idless_signature("block", 4), "block with name 'small'");
    EXPECT_EQ(TI::get_idless_signatures("volume", {1, 3}), "volume at 0 0 0; ");
    // Hexes by their centres: eight different ones, at +-2.5.
    std::set<std::string> hexes;
    for (int h = 1; h <= 8; ++h) {
        hexes.insert(TI::get_idless_signature("hex", h));
        EXPECT_EQ(TI::get_idless_signature("hex", h).rfind("hex at 2.5 ", 0) == 0 ||
                      TI::get_idless_signature("hex", h).rfind("hex at -2.5 ", 0) == 0,
                  true)
            << TI::get_idless_signature("hex", h);
    }
    EXPECT_EQ(hexes.size(), 8u);
}

// The times and variable names of a result file, written here as a solver would.
TEST_F(FeTest, ResultFileTimesAndVariables) {
    int cpu = 8, io = 8;
    const int exo = ex_create("result.e", EX_CLOBBER, &cpu, &io);
    ASSERT_GE(exo, 0);
    ex_set_max_name_length(exo, 80);
    ASSERT_GE(ex_put_init(exo, "result", 3, 1, 0, 0, 0, 0), 0);
    const std::string long_name = "displacement_magnitude_of_a_name_longer_than_thirty_two";
    std::vector<std::string> nodal{"temperature", long_name};
    char* nodal_names[] = {nodal[0].data(), nodal[1].data()};
    std::string energy = "energy";
    char* global_names[] = {energy.data()};
    ASSERT_GE(ex_put_variable_param(exo, EX_NODAL, 2), 0);
    ASSERT_GE(ex_put_variable_names(exo, EX_NODAL, 2, nodal_names), 0);
    ASSERT_GE(ex_put_variable_param(exo, EX_GLOBAL, 1), 0);
    ASSERT_GE(ex_put_variable_names(exo, EX_GLOBAL, 1, global_names), 0);
    for (int step = 1; step <= 3; ++step) {
        const double t = 0.25 * step;
        ASSERT_GE(ex_put_time(exo, step, &t), 0);
    }
    ex_close(exo);

    EXPECT_EQ(TI::get_all_exodus_times("result.e"), (std::vector<double>{0.25, 0.5, 0.75}));
    EXPECT_EQ(TI::get_all_exodus_variable_names("result.e", "node"), nodal);
    EXPECT_EQ(TI::get_all_exodus_variable_names("result.e", "Global"),
              std::vector<std::string>{"energy"});
    EXPECT_TRUE(TI::get_all_exodus_variable_names("result.e", "element").empty());
    EXPECT_TRUE(TI::get_all_exodus_variable_names("result.e", "bogus").empty());
    std::ofstream("text.e") << "not exodus";
    for (const char* file : {"text.e", "missing.e"})
        EXPECT_TRUE(TI::get_all_exodus_times(file).empty()) << file;
}

// The copy settings decide what a geometry copy does to the containers of what it copies: the
// copies join the original's block (use_original), get a nodeset of their own (on), or stay out
// of the sidesets (off); one undo takes back copy and containers.
TEST_F(FeTest, CopySettingsDecideTheContainersOfCopies) {
    EXPECT_EQ(TI::get_copy_block_on_geometry_copy_setting(), "OFF");
    run("create box 10");
    run("block 1 add volume 1");
    run("block 1 element type hex20");
    run("nodeset 3 add surface 1");
    run("sideset 1 add surface 1 wrt volume 1");
    run("set copy block on geometry copy use_original");
    run("set copy nodeset on geometry copy on");
    EXPECT_EQ(TI::get_copy_block_on_geometry_copy_setting(), "USE_ORIGINAL");
    EXPECT_EQ(TI::get_copy_nodeset_on_geometry_copy_setting(), "ON");
    EXPECT_EQ(TI::get_copy_sideset_on_geometry_copy_setting(), "OFF");
    EXPECT_NE(rejected("set copy nodeset on geometry copy maybe").find("use_original"),
              std::string::npos);
    const std::string before = dump();

    run("copy volume 1 move 20 0 0");
    EXPECT_EQ(TI::get_block_volumes(1), (std::vector<int>{1, 2}));
    EXPECT_EQ(TI::get_block_element_type(1), "HEX20");
    EXPECT_EQ(TI::get_nodeset_id_list(), (std::vector<int>{3, 4}));
    const std::vector<int> copied_surface = TI::get_nodeset_surfaces(4);
    ASSERT_EQ(copied_surface.size(), 1u);
    // The copy's surface is the one 20 along x from surface 1, not any other of the copy's.
    const auto centre = [](int s) { return TI::get_surface_centroid(s); };
    EXPECT_NEAR(centre(copied_surface[0])[0], centre(1)[0] + 20, 1e-9);
    EXPECT_NEAR(centre(copied_surface[0])[1], centre(1)[1], 1e-9);
    EXPECT_NEAR(centre(copied_surface[0])[2], centre(1)[2], 1e-9);
    EXPECT_EQ(TI::get_nodeset_surfaces(3), (std::vector<int>{1}));
    EXPECT_EQ(TI::get_sideset_id_list(), (std::vector<int>{1}));

    run("undo");
    EXPECT_EQ(dump(), before);
    run("reset");
    EXPECT_EQ(TI::get_copy_block_on_geometry_copy_setting(), "OFF");
}

} // namespace
