// The exact observer events of geometry commands.
#include "GeometryTestSupport.h"

using namespace geometry_test;
using namespace TarvoInterface;

namespace {

using GeometryEventsTest = GeometryTest;

std::vector<std::string> numbered(const std::string& name, int from, int to) {
    std::vector<std::string> out;
    for (int i = from; i <= to; ++i)
        out.push_back(name + " " + std::to_string(i));
    return out;
}

std::vector<std::string> concat(std::initializer_list<std::vector<std::string>> parts) {
    std::vector<std::string> out;
    for (const auto& p : parts)
        out.insert(out.end(), p.begin(), p.end());
    return out;
}

TEST_F(GeometryEventsTest, CreateAndDeleteABox) {
    run("create box 2");
    EXPECT_EQ(recorder.events, concat({{"command_start", "body_created 1", "volume_created 1"},
                                       numbered("surface_created", 1, 6),
                                       numbered("curve_created", 1, 12),
                                       numbered("vertex_created", 1, 8),
                                       {"command_complete"}}));
    recorder.events.clear();
    run("delete volume 1");
    EXPECT_EQ(recorder.events, concat({{"command_start", "body_deleted 1", "volume_deleted 1"},
                                       numbered("surface_deleted", 1, 6),
                                       numbered("curve_deleted", 1, 12),
                                       numbered("vertex_deleted", 1, 8),
                                       {"command_complete"}}));
}

TEST_F(GeometryEventsTest, FreeEntitiesUseTheFreeAndSheetEvents) {
    run("create surface rectangle width 2");
    EXPECT_EQ(recorder.events,
              concat({{"command_start", "sheet_body_created 1", "free_surface_created 1"},
                      numbered("curve_created", 1, 4),
                      numbered("vertex_created", 1, 4),
                      {"command_complete"}}));
    recorder.events.clear();
    run("create vertex 5 5 5");
    EXPECT_EQ(recorder.events,
              (std::vector<std::string>{"command_start", "body_created 2", "free_vertex_created 5",
                                        "command_complete"}));
    run("create vertex 6 5 5");
    recorder.events.clear();
    run("create curve vertex 5 6");
    // The two lone vertices' bodies go; the curve's body comes; the vertices stay.
    EXPECT_EQ(recorder.events, (std::vector<std::string>{
                                   "command_start", "body_deleted 2", "body_deleted 3",
                                   "body_created 4", "free_curve_created 5", "command_complete"}));
    recorder.events.clear();
    run("delete surface 1");
    EXPECT_EQ(recorder.events,
              concat({{"command_start", "sheet_body_deleted 1", "free_surface_deleted 1"},
                      numbered("curve_deleted", 1, 4),
                      numbered("vertex_deleted", 1, 4),
                      {"command_complete"}}));
}

TEST_F(GeometryEventsTest, AttributesReportNameAndVisibility) {
    run("create box 2");
    recorder.events.clear();
    run("volume 1 name 'block'");
    run("hide volume 1");
    run("hide volume 1"); // already hidden: no event
    run("show surface 2");
    run("color volume 1 rgb 1 0 0");
    // Five commands; only the first two change a name or a visibility.
    EXPECT_EQ(recorder.count("command_complete"), 5u);
    EXPECT_EQ(recorder.events.size(), 12u);
    EXPECT_EQ(recorder.events[1], "entity_name_changed volume 1");
    EXPECT_EQ(recorder.events[4], "entity_visibility_changed volume 1");
    EXPECT_FALSE(is_visible("volume", 1));
    EXPECT_TRUE(is_visible("surface", 2));
    EXPECT_EQ(get_entity_color("volume", 1), (std::array<double, 4>{1, 0, 0, 1}));
}

TEST_F(GeometryEventsTest, ImportReportsCompletionAndTheTree) {
    const std::string path = cad_file("red_cube_blue_cylinder.step");
    run("import step '" + path + "'");
    EXPECT_EQ(recorder.count("import_complete " + path + " 1"), 1u);
    EXPECT_EQ(recorder.count("assembly_tree_modified"), 1u);
    EXPECT_EQ(recorder.starting("volume_created").size(), 2u);
    recorder.events.clear();
    EXPECT_FALSE(cmd("import step 'nowhere.step'"));
    EXPECT_EQ(recorder.count("import_complete nowhere.step 0"), 1u);
    run("export step 'out.step'");
    EXPECT_EQ(recorder.count("export_complete out.step 1"), 1u);
}

} // namespace
