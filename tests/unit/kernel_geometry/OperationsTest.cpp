// Primitives, transforms, booleans and cutting, checked against values computed by hand.
#include "GeometryTestSupport.h"

#include <cmath>

using namespace geometry_test;
using namespace TarvoInterface;

namespace {

using GeometryOperationsTest = GeometryTest;

TEST_F(GeometryOperationsTest, PrimitivesHaveTheirTextbookMeasures) {
    run("create cylinder radius 2 height 5");
    run("create sphere radius 3 at 10 0 0");
    run("create sphere radius 3 inner radius 1 at 20 0 0");
    run("create cone radius 2 top radius 1 height 3 at 30 0 0");
    run("create cone radius 2 top radius 0 height 3 at 40 0 0");
    run("create torus major radius 5 minor radius 1 at 50 0 0 axis x");
    EXPECT_NEAR(get_volume_area(1), M_PI * 4 * 5, 1e-6);
    EXPECT_NEAR(get_volume_area(2), 4.0 / 3 * M_PI * 27, 1e-6);
    EXPECT_NEAR(get_volume_area(3), 4.0 / 3 * M_PI * (27 - 1), 1e-6);
    EXPECT_NEAR(get_volume_area(4), M_PI * 3 / 3 * (4 + 2 + 1), 1e-6);
    EXPECT_NEAR(get_volume_area(5), M_PI * 4 * 3 / 3, 1e-6);
    EXPECT_NEAR(get_volume_area(6), 2 * M_PI * M_PI * 5 * 1, 1e-6);
    // Cylinder centred on the origin along z.
    auto box = get_bounding_box("volume", 1);
    EXPECT_NEAR(box[6], -2.5, 1e-9);
    EXPECT_NEAR(box[7], 2.5, 1e-9);
    // Torus axis x: thin along x.
    box = get_bounding_box("volume", 6);
    EXPECT_NEAR(box[2], 2, 1e-6);
    EXPECT_NEAR(box[5], 12, 1e-6);
}

TEST_F(GeometryOperationsTest, BoxMinusCylinderKeepsTheBoxId) {
    run("create box 10");
    run("create cylinder radius 2 height 20");
    recorder.events.clear();
    run("subtract volume 2 from volume 1");
    EXPECT_EQ(get_entities("volume"), std::vector<int>{1});
    EXPECT_EQ(get_entities("body"), std::vector<int>{1});
    EXPECT_NEAR(get_total_volume({1, 2}), 1000 - M_PI * 4 * 10, 1e-6);
    // The four side faces of the box were not touched and kept their ids.
    int kept = 0;
    for (int s = 1; s <= 6; ++s)
        if (get_relatives("surface", s, "volume") == std::vector<int>{1} &&
            std::abs(get_surface_area(s) - 100) < 1e-9)
            ++kept;
    EXPECT_EQ(kept, 4);
    EXPECT_EQ(recorder.count("boolean_operation_complete"), 1u);
    EXPECT_EQ(recorder.count("volume_updated 1"), 1u);
    EXPECT_EQ(recorder.count("body_deleted 2"), 1u);
}

TEST_F(GeometryOperationsTest, SubtractKeepLeavesTheTool) {
    run("create box 10");
    run("create box 10 at 5 0 0");
    run("subtract volume 2 from volume 1 keep");
    EXPECT_EQ(get_entities("volume"), (std::vector<int>{1, 2}));
    EXPECT_NEAR(get_volume_area(1), 500, 1e-6);
    EXPECT_NEAR(get_volume_area(2), 1000, 1e-6);
}

TEST_F(GeometryOperationsTest, UniteAndIntersectOfOverlappingBoxes) {
    run("create box 10");
    run("create box 10 at 5 0 0");
    run("create box 10 at 20 0 0");
    run("create box 10 at 25 0 0");
    run("unite volume 1 2");
    EXPECT_EQ(get_entities("volume"), (std::vector<int>{1, 3, 4}));
    EXPECT_NEAR(get_volume_area(1), 1500, 1e-6);
    run("intersect volume 3 4");
    EXPECT_EQ(get_entities("volume"), (std::vector<int>{1, 3}));
    EXPECT_NEAR(get_volume_area(3), 500, 1e-6);
    auto box = get_bounding_box("volume", 3);
    EXPECT_NEAR(box[0], 20, 1e-9);
    EXPECT_NEAR(box[1], 25, 1e-9);
}

TEST_F(GeometryOperationsTest, WebcutSplitsAndKeepsTheLargerPieceId) {
    run("create box 10");
    recorder.events.clear();
    run("webcut volume 1 plane x offset 2");
    EXPECT_EQ(get_entities("volume"), (std::vector<int>{1, 2}));
    EXPECT_NEAR(get_volume_area(1), 700, 1e-6);
    EXPECT_NEAR(get_volume_area(2), 300, 1e-6);
    EXPECT_EQ(recorder.count("webcut_completed"), 1u);
    EXPECT_EQ(recorder.count("volume_created 2"), 1u);
    EXPECT_EQ(recorder.count("volume_updated 1"), 1u);
    run("webcut volume all plane normal 0 1 1 point 0 0 0");
    EXPECT_EQ(get_volume_count(), 4);
    EXPECT_NEAR(get_total_volume(get_entities("volume")), 1000, 1e-6);
}

TEST_F(GeometryOperationsTest, TransformsMoveShapesAndKeepIds) {
    run("create box 2 4 6");
    const auto surfaces = get_entities("surface");
    run("move volume 1 to 10 0 0");
    EXPECT_NEAR(get_center_point("volume", 1)[0], 10, 1e-9);
    run("rotate volume 1 angle 90 about z origin 10 0 0");
    auto box = get_bounding_box("volume", 1);
    EXPECT_NEAR(box[2], 4, 1e-7); // x range was 2, y range 4: swapped
    EXPECT_NEAR(box[5], 2, 1e-7);
    run("reflect volume 1 normal 1 0 0");
    EXPECT_NEAR(get_center_point("volume", 1)[0], -10, 1e-7);
    EXPECT_NEAR(get_volume_area(1), 48, 1e-6);
    EXPECT_EQ(get_entities("surface"), surfaces);
    run("copy volume 1 move 0 0 100");
    EXPECT_EQ(get_entities("volume"), (std::vector<int>{1, 2}));
    EXPECT_NEAR(get_center_point("volume", 2)[2], 100, 1e-7);
    EXPECT_EQ(get_surface_count(), 12);
}

TEST_F(GeometryOperationsTest, MergeOfTouchingBoxesSharesOneSurface) {
    run("create box 10");
    run("create box 10 at 10 0 0");
    recorder.events.clear();
    run("merge all");
    EXPECT_EQ(get_surface_count(), 11);
    EXPECT_EQ(get_curve_count(), 20);
    EXPECT_EQ(get_vertex_count(), 12);
    EXPECT_EQ(get_adjacent_volumes("volume", 1), std::vector<int>{2});
    for (int s : get_entities("surface")) {
        if (is_merged("surface", s)) {
            EXPECT_EQ(get_surface_sense(s), "both");
        }
    }
    EXPECT_EQ(recorder.starting("merge surface").size(), 1u);
    EXPECT_EQ(recorder.starting("merge curve").size(), 4u);
    EXPECT_EQ(recorder.starting("merge vertex").size(), 4u);
    EXPECT_EQ(recorder.count("merge_completed"), 1u);
    // Unmerge gives the second box its own copy again.
    run("unmerge all");
    EXPECT_EQ(get_surface_count(), 12);
    EXPECT_TRUE(get_adjacent_volumes("volume", 1).empty());
}

TEST_F(GeometryOperationsTest, ImprintThenMergeOfOffsetBoxes) {
    // The small box sits on top of the big one: imprinting splits the big box's top face.
    run("create box 10");
    run("create box 4 at 0 0 7");
    EXPECT_EQ(get_surface_count(), 12);
    run("imprint all");
    EXPECT_EQ(get_surface_count(), 13); // the big top face is split in two
    for (int s : get_entities("surface"))
        EXPECT_FALSE(is_merged("surface", s));
    run("merge all");
    EXPECT_EQ(get_surface_count(), 12);
    EXPECT_NEAR(get_volume_area(1) + get_volume_area(2), 1000 + 64, 1e-6);
}

TEST_F(GeometryOperationsTest, UniteLeavesNoSeamsAndKeepsIdsByHistory) {
    struct Case {
        std::vector<std::string> setup;
        double volume;
    };
    const Case cases[] = {
        {{"create box 10", "create box 10 at 5 0 0"}, 1500},
        {{"create box 10", "webcut volume 1 plane x offset 2"}, 1000},
        {{"create box 10", "create box 10 at 10 0 0", "create box 10 at 10 10 0"}, 3000},
    };
    for (const Case& c : cases) {
        run("reset");
        for (const std::string& line : c.setup)
            run(line);
        const auto surfaces = get_entities("surface");
        const auto curves = get_entities("curve");
        run("unite volume all");
        SCOPED_TRACE(c.setup.back());
        EXPECT_EQ(get_entities("volume"), std::vector<int>{1});
        EXPECT_NEAR(get_volume_area(1), c.volume, 1e-6);
        // A block of boxes: the L of three boxes has 8 faces, the others 6.
        const int faces = c.volume == 3000 ? 8 : 6;
        EXPECT_EQ(get_surface_count(), faces);
        EXPECT_EQ(get_curve_count(), 3 * faces - 6);
        EXPECT_EQ(get_vertex_count(), 2 * faces - 4);
        // Unified faces and curves keep an id they had: nothing is numbered anew.
        for (int s : get_entities("surface"))
            EXPECT_TRUE(std::count(surfaces.begin(), surfaces.end(), s)) << "surface " << s;
        for (int e : get_entities("curve"))
            EXPECT_TRUE(std::count(curves.begin(), curves.end(), e)) << "curve " << e;
    }
}

TEST_F(GeometryOperationsTest, UniteKeepsAMergeWithABodyOutsideIt) {
    // Box 3 sits on the side y = 5 of box 2, merged to it; box 1 continues that side.
    run("create box 10");
    run("create box 10 at 10 0 0");
    run("create box 4 at 12 7 0");
    run("imprint volume 2 3");
    run("merge volume 2 3");
    run("unite volume 1 2");
    int shared = 0;
    for (int s : get_entities("surface"))
        if (is_merged("surface", s)) {
            ++shared;
            EXPECT_EQ(get_relatives("surface", s, "volume"), (std::vector<int>{1, 3}));
            EXPECT_NEAR(get_surface_area(s), 16, 1e-9);
        }
    EXPECT_EQ(shared, 1);
    EXPECT_NEAR(get_volume_area(1), 2000, 1e-6);
}

TEST_F(GeometryOperationsTest, HealingAHealthyBodyChangesNothing) {
    run("create box 10");
    run("create cylinder radius 2 height 5 at 20 0 0");
    run("webcut volume 1 plane x");
    const std::string before = fingerprint();
    recorder.events.clear();
    run("heal volume all");
    EXPECT_EQ(fingerprint(), before);
    EXPECT_EQ(recorder.events,
              (std::vector<std::string>{"command_start", "healer_complete", "command_complete"}));
}

TEST_F(GeometryOperationsTest, SubtractOfAToolThatMissesWarns) {
    run("create box 10");
    run("create box 2 at 20 0 0");
    run("create box 2 at 5 5 5"); // touches a corner region of volume 1
    output->take();
    run("subtract volume 2 3 from volume 1");
    const auto warnings = output->starting("WARNING: ");
    ASSERT_EQ(warnings.size(), 1u) << output->all();
    EXPECT_NE(warnings[0].find("volume 2 did not touch volume 1"), std::string::npos)
        << warnings[0];
    EXPECT_NEAR(get_volume_area(1), 1000 - 1, 1e-6);
    EXPECT_EQ(get_entities("volume"), std::vector<int>{1});
}

TEST_F(GeometryOperationsTest, OverlappingBodiesAreRefusedByImprintAndMerge) {
    run("create box 10");
    run("create box 10 at 5 0 0");
    run("create box 10 at 40 0 0");
    const std::string before = fingerprint();
    for (const char* line : {"imprint all", "merge all"}) {
        const std::string error = rejected(line);
        EXPECT_NE(error.find("volumes 1 and 2 overlap"), std::string::npos) << error;
        EXPECT_EQ(fingerprint(), before);
    }
}

TEST_F(GeometryOperationsTest, WebcutKeepsAMergeItDoesNotCut) {
    run("create box 10");
    run("create box 10 at 10 0 0");
    run("merge all");
    int shared = 0;
    for (int s : get_entities("surface"))
        if (is_merged("surface", s))
            shared = s;
    ASSERT_NE(shared, 0);
    // The plane misses the shared face: the merge stays.
    output->take();
    run("webcut volume 1 plane x offset -2");
    EXPECT_TRUE(output->starting("WARNING: ").empty()) << output->all();
    EXPECT_TRUE(is_merged("surface", shared));
    EXPECT_EQ(get_relatives("surface", shared, "volume"), (std::vector<int>{1, 2}));
    EXPECT_EQ(get_relatives("volume", 2, "surface").size(), 6u);
    // A plane through the shared face splits it on the cut side only: the faces part.
    output->take();
    run("webcut volume 1 plane z");
    EXPECT_EQ(output->starting("WARNING: ").size(), 1u) << output->all();
    EXPECT_FALSE(is_merged("surface", shared));
    EXPECT_EQ(get_relatives("surface", shared, "volume"), std::vector<int>{2});
}

} // namespace
