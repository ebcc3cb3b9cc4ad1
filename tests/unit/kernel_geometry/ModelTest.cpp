// Ids, topology and the rule that a failed command changes nothing.
#include "GeometryTestSupport.h"

#include <cmath>
#include <set>

using namespace geometry_test;
using namespace TarvoInterface;

namespace {

using GeometryModelTest = GeometryTest;

TEST_F(GeometryModelTest, BoxHasTheTopologyOfACube) {
    run("create box 10 20 30 at 1 2 3");
    EXPECT_EQ(get_body_count(), 1);
    EXPECT_EQ(get_surface_count(), 6);
    EXPECT_EQ(get_curve_count(), 12);
    EXPECT_EQ(get_vertex_count(), 8);
    // Every surface of a box has four curves and four vertices; every curve bounds two surfaces
    // and has two vertices; every vertex is on three curves.
    for (int s : get_entities("surface")) {
        EXPECT_EQ(get_relatives("surface", s, "curve").size(), 4u) << "surface " << s;
        EXPECT_EQ(get_relatives("surface", s, "vertex").size(), 4u) << "surface " << s;
        EXPECT_EQ(get_adjacent_surfaces("surface", s).size(), 4u) << "surface " << s;
    }
    for (int c : get_entities("curve")) {
        EXPECT_EQ(get_relatives("curve", c, "surface").size(), 2u) << "curve " << c;
        EXPECT_EQ(get_relatives("curve", c, "vertex").size(), 2u) << "curve " << c;
        EXPECT_DOUBLE_EQ(evaluate_exterior_angle_at_curve(c, 1), 90.0) << "curve " << c;
    }
    for (int v : get_entities("vertex"))
        EXPECT_EQ(get_valence(v), 3) << "vertex " << v;
    EXPECT_EQ(get_owning_body("surface", 3), 1);
    EXPECT_EQ(get_owning_volume("vertex", 5), 1);
    EXPECT_NEAR(get_volume_area(1), 6000, 1e-6);
    EXPECT_NEAR(get_bounding_box("volume", 1)[9], std::sqrt(1400.0), 1e-9);
}

TEST_F(GeometryModelTest, NewIdsContinueAfterTheHighestEverUsed) {
    run("create box 1");
    run("create box 1 at 5 0 0");
    run("create box 1 at 10 0 0");
    run("delete volume 3");
    run("create box 1 at 20 0 0");
    EXPECT_EQ(get_entities("volume"), (std::vector<int>{1, 2, 4}));
    EXPECT_EQ(get_entities("body"), (std::vector<int>{1, 2, 4}));
    // The deleted box's 6 surfaces are gone; the new one got 19..24.
    std::vector<int> surfaces = get_entities("surface");
    EXPECT_EQ(surfaces.size(), 18u);
    EXPECT_EQ(surfaces.back(), 24);
    EXPECT_EQ(std::count(surfaces.begin(), surfaces.end(), 13), 0);
}

TEST_F(GeometryModelTest, CompressIdsRenumbersDenselyWithEvents) {
    run("create box 1");
    run("create box 1 at 5 0 0");
    run("create box 1 at 10 0 0");
    run("volume 3 name 'last'");
    run("delete volume 2");
    recorder.events.clear();
    run("compress ids");
    EXPECT_EQ(get_entities("volume"), (std::vector<int>{1, 2}));
    EXPECT_EQ(get_entities("surface").back(), 12);
    EXPECT_EQ(get_entity_name("volume", 2, true), "last");
    auto compressed = std::find(recorder.events.begin(), recorder.events.end(), "ids_compressed");
    auto changed =
        std::find(recorder.events.begin(), recorder.events.end(), "id_changed volume 3 2");
    ASSERT_NE(compressed, recorder.events.end());
    ASSERT_NE(changed, recorder.events.end());
    EXPECT_LT(compressed, changed);
    EXPECT_EQ(recorder.count("id_changed body 3 2"), 1u);
    EXPECT_EQ(recorder.count("id_changed surface 13 7"), 1u);
    EXPECT_TRUE(recorder.starting("volume_created").empty());
    // The next new id follows the compressed ones.
    run("create box 1");
    EXPECT_EQ(get_entities("volume").back(), 3);
}

TEST_F(GeometryModelTest, UndoRestoresShapesAndIds) {
    run("undo on");
    run("create box 10");
    run("create cylinder radius 2 height 20");
    const std::string two = fingerprint();
    run("subtract volume 2 from volume 1");
    EXPECT_EQ(get_volume_count(), 1);
    recorder.events.clear();
    run("undo");
    EXPECT_EQ(fingerprint(), two);
    EXPECT_EQ(recorder.count("volume_created 2"), 1u);
    EXPECT_EQ(recorder.count("volume_updated 1"), 1u);
    // The id counters went back too: the next volume is 3, as before the subtract.
    run("create box 1 at 20 0 0");
    EXPECT_EQ(get_entities("volume"), (std::vector<int>{1, 2, 3}));
}

// Which lists the free entities land in is followed by the cached-query tests; here: the ids and
// bodies that free entities get.
TEST_F(GeometryModelTest, FreeEntitiesAndSheetBodies) {
    run("create vertex 0 0 0");
    run("create vertex 3 4 0");
    run("create curve vertex 1 2");
    // The vertices are now the ends of the curve and keep their ids.
    EXPECT_EQ(get_entities("vertex"), (std::vector<int>{1, 2}));
    EXPECT_EQ(get_relatives("curve", 1, "vertex"), (std::vector<int>{1, 2}));
    EXPECT_EQ(get_body_count(), 1);
    EXPECT_DOUBLE_EQ(get_curve_length(1), 5.0);
    run("create surface rectangle width 4 height 2");
    EXPECT_EQ(get_volume_count(), 0);
    EXPECT_TRUE(is_sheet_body(get_owning_body("surface", 1)));
    EXPECT_FALSE(is_sheet_body(get_owning_body("curve", 1)));
    run("create surface circle radius 1 axis x");
    EXPECT_NEAR(get_surface_area(2), M_PI, 1e-9);
    EXPECT_NEAR(std::abs(get_surface_normal(2)[0]), 1.0, 1e-9);
}

} // namespace
