// The kernel keeps measures, boxes, relations and free-entity lists between queries (monitors ask
// again after every task). These tests fill all of that, change the model, and check that every
// answer follows the change: operations, undo, compress ids, reset, and ids that come back.
#include "GeometryTestSupport.h"

#include <cmath>
#include <numeric>

using namespace geometry_test;
using namespace TarvoInterface;

namespace {

using QueryCacheTest = GeometryTest;

constexpr double kTol = 1e-9;

// Asks every query that the kernel may keep an answer for, about every entity, so that whatever
// it keeps is filled before the change under test.
void ask_everything() {
    const char* types[] = {"body", "volume", "surface", "curve", "vertex"};
    for (const char* type : types) {
        for (int id : get_entities(type)) {
            get_center_point(type, id);
            get_bounding_box(type, id);
            for (const char* other : types)
                get_relatives(type, id, other);
        }
    }
    for (int id : get_entities("volume"))
        get_volume_area(id);
    for (int id : get_entities("surface")) {
        get_surface_area(id);
        get_surface_centroid(id);
    }
    for (int id : get_entities("curve"))
        get_curve_length(id);
    for (const char* type : {"surface", "curve", "vertex"})
        get_list_of_free_ref_entities(type);
}

void expect_point(const std::array<double, 3>& p, double x, double y, double z) {
    EXPECT_NEAR(p[0], x, kTol);
    EXPECT_NEAR(p[1], y, kTol);
    EXPECT_NEAR(p[2], z, kTol);
}

// Sum of the areas and of the lengths of the surfaces and curves of a volume.
double total_area(int volume) {
    double sum = 0;
    for (int s : get_relatives("volume", volume, "surface"))
        sum += get_surface_area(s);
    return sum;
}
double total_length(int volume) {
    double sum = 0;
    for (int c : get_relatives("volume", volume, "curve"))
        sum += get_curve_length(c);
    return sum;
}

TEST_F(QueryCacheTest, MeasuresFollowTransformsAndUndo) {
    run("undo on");
    run("create box 2");
    ask_everything();
    EXPECT_NEAR(get_volume_area(1), 8, kTol);
    expect_point(get_center_point("volume", 1), 0, 0, 0);

    run("move volume 1 by 5 0 0");
    expect_point(get_center_point("volume", 1), 5, 0, 0);
    expect_point(get_center_point("body", 1), 5, 0, 0);
    EXPECT_NEAR(get_bounding_box("volume", 1)[0], 4, kTol);
    EXPECT_NEAR(get_bounding_box("volume", 1)[1], 6, kTol);
    double centroid_x = 0;
    for (int s : get_relatives("volume", 1, "surface"))
        centroid_x += get_surface_centroid(s)[0];
    EXPECT_NEAR(centroid_x, 6 * 5, kTol);
    for (int v : get_relatives("volume", 1, "vertex")) {
        const double x = get_center_point("vertex", v)[0];
        EXPECT_TRUE(std::abs(x - 4) < kTol || std::abs(x - 6) < kTol) << x;
    }
    EXPECT_NEAR(get_volume_area(1), 8, kTol);

    run("scale volume 1 factor 2");
    EXPECT_NEAR(get_volume_area(1), 64, kTol);
    EXPECT_NEAR(total_area(1), 6 * 16, kTol);
    EXPECT_NEAR(total_length(1), 12 * 4, kTol);
    EXPECT_NEAR(get_hydraulic_radius_volume_area(1), 3 * 64 / 96.0, kTol);

    run("undo");
    EXPECT_NEAR(get_volume_area(1), 8, kTol);
    EXPECT_NEAR(total_area(1), 6 * 4, kTol);
    EXPECT_NEAR(total_length(1), 12 * 2, kTol);
    expect_point(get_center_point("volume", 1), 5, 0, 0);
    run("undo");
    expect_point(get_center_point("volume", 1), 0, 0, 0);
    EXPECT_NEAR(get_bounding_box("body", 1)[0], -1, kTol);
}

TEST_F(QueryCacheTest, BooleansAndTheirUndoChangeMeasuresAndRelations) {
    run("undo on");
    run("create box 10");
    run("create cylinder radius 1 height 20");
    ask_everything();
    const std::vector<int> box_surfaces = get_relatives("volume", 1, "surface");
    ASSERT_EQ(box_surfaces.size(), 6u);
    const double cylinder = get_volume_area(2);
    EXPECT_NEAR(cylinder, M_PI * 20, 1e-6);

    run("subtract volume 2 from volume 1");
    EXPECT_NEAR(get_volume_area(1), 1000 - M_PI * 10, 1e-6);
    EXPECT_EQ(get_volume_area(2), 0);
    expect_point(get_center_point("volume", 2), 0, 0, 0); // gone: the failure value
    // The hole's wall is a new surface of volume 1, and the pierced faces are new faces.
    const std::vector<int> with_hole = get_relatives("volume", 1, "surface");
    EXPECT_EQ(with_hole.size(), 7u);
    int cylindrical = 0;
    for (int s : with_hole)
        if (get_surface_type(s) == "Cylinder") {
            ++cylindrical;
            EXPECT_NEAR(get_surface_area(s), 2 * M_PI * 10, 1e-6);
            EXPECT_EQ(get_relatives("surface", s, "volume"), (std::vector<int>{1}));
        }
    EXPECT_EQ(cylindrical, 1);
    EXPECT_NEAR(total_area(1), 600 - 2 * M_PI + 2 * M_PI * 10, 1e-6);

    run("undo");
    EXPECT_NEAR(get_volume_area(1), 1000, 1e-6);
    EXPECT_NEAR(get_volume_area(2), cylinder, 1e-9);
    EXPECT_EQ(get_relatives("volume", 1, "surface"), box_surfaces);
    EXPECT_NEAR(total_area(1), 600, 1e-6);
    EXPECT_NEAR(total_length(2), 2 * (2 * M_PI) + 20, 1e-6); // two circles and the seam
}

TEST_F(QueryCacheTest, CompressedIdsAnswerForTheEntityThatNowHasThem) {
    run("undo on");
    run("create box 1");
    run("create box 2 at 10 0 0");
    run("create box 3 at 20 0 0");
    ask_everything();
    EXPECT_NEAR(get_volume_area(3), 27, kTol);
    run("delete volume 2");
    run("compress ids");
    ASSERT_EQ(get_entities("volume"), (std::vector<int>{1, 2}));
    // Volume 2 is now the cube of side 3: everything about id 2 describes it.
    EXPECT_NEAR(get_volume_area(2), 27, kTol);
    expect_point(get_center_point("volume", 2), 20, 0, 0);
    expect_point(get_center_point("body", 2), 20, 0, 0);
    const std::vector<int> surfaces = get_relatives("volume", 2, "surface");
    EXPECT_EQ(surfaces, (std::vector<int>{7, 8, 9, 10, 11, 12}));
    for (int s : surfaces) {
        EXPECT_NEAR(get_surface_area(s), 9, kTol);
        EXPECT_EQ(get_relatives("surface", s, "volume"), (std::vector<int>{2}));
        EXPECT_EQ(get_relatives("surface", s, "body"), (std::vector<int>{2}));
    }
    for (int c : get_relatives("volume", 2, "curve"))
        EXPECT_NEAR(get_curve_length(c), 3, kTol);
    EXPECT_NEAR(total_length(1), 12, kTol);
    for (int v : get_relatives("volume", 2, "vertex"))
        EXPECT_NEAR(std::abs(get_center_point("vertex", v)[0] - 20), 1.5, kTol);

    // Undo gives the old ids back, with their old answers.
    run("undo");
    EXPECT_EQ(get_entities("volume"), (std::vector<int>{1, 3}));
    EXPECT_NEAR(get_volume_area(3), 27, kTol);
    EXPECT_EQ(get_volume_area(2), 0);
    EXPECT_EQ(get_relatives("volume", 2, "surface"), std::vector<int>{});
    EXPECT_EQ(get_relatives("volume", 3, "surface").size(), 6u);
}

TEST_F(QueryCacheTest, IdsUsedAgainDoNotInheritOldAnswers) {
    // After a reset, and after an undone creation, the next box gets id 1 again.
    run("undo on");
    run("create box 1");
    ask_everything();
    run("reset");
    EXPECT_EQ(get_volume_area(1), 0);
    expect_point(get_center_point("volume", 1), 0, 0, 0);
    EXPECT_EQ(get_relatives("volume", 1, "surface"), std::vector<int>{});
    EXPECT_EQ(get_bounding_box("body", 1)[9], 0);

    run("undo on");
    run("create box 2 at 1 1 1");
    ask_everything();
    EXPECT_NEAR(get_volume_area(1), 8, kTol);
    expect_point(get_center_point("volume", 1), 1, 1, 1);
    EXPECT_NEAR(get_surface_area(1), 4, kTol);
    EXPECT_NEAR(get_curve_length(1), 2, kTol);
    run("undo");
    EXPECT_EQ(get_volume_area(1), 0);
    EXPECT_EQ(get_surface_area(1), 0);
    run("create box 4 at 9 0 0");
    EXPECT_NEAR(get_volume_area(1), 64, kTol);
    expect_point(get_center_point("volume", 1), 9, 0, 0);
    EXPECT_NEAR(get_surface_area(1), 16, kTol);
    EXPECT_NEAR(get_curve_length(1), 4, kTol);
}

TEST_F(QueryCacheTest, FreeEntitiesFollowCreationDeletionAndUndo) {
    run("undo on");
    run("create box 1");
    ask_everything();
    EXPECT_EQ(get_list_of_free_ref_entities("surface"), std::vector<int>{});
    EXPECT_EQ(get_list_of_free_ref_entities("curve"), std::vector<int>{});
    EXPECT_EQ(get_list_of_free_ref_entities("vertex"), std::vector<int>{});

    run("create surface rectangle width 4 height 2 at 10 0 0");
    run("create vertex 20 0 0");
    run("create vertex 23 4 0");
    const std::vector<int> sheet = get_list_of_free_ref_entities("surface");
    ASSERT_EQ(sheet.size(), 1u);
    EXPECT_NEAR(get_surface_area(sheet[0]), 8, kTol);
    // The rectangle's four curves and vertices are in no volume either, and so are the two
    // lone vertices.
    EXPECT_EQ(get_list_of_free_ref_entities("curve").size(), 4u);
    EXPECT_EQ(get_list_of_free_ref_entities("vertex").size(), 6u);
    ask_everything();

    run("create curve vertex 13 14");
    const std::vector<int> curves = get_list_of_free_ref_entities("curve");
    ASSERT_EQ(curves.size(), 5u);
    EXPECT_NEAR(get_curve_length(curves.back()), 5, kTol);
    EXPECT_EQ(get_relatives("vertex", 13, "curve"), (std::vector<int>{curves.back()}));
    ask_everything();

    run("delete surface " + std::to_string(sheet[0]));
    EXPECT_EQ(get_list_of_free_ref_entities("surface"), std::vector<int>{});
    EXPECT_EQ(get_list_of_free_ref_entities("curve"), (std::vector<int>{curves.back()}));
    EXPECT_EQ(get_list_of_free_ref_entities("vertex"), (std::vector<int>{13, 14}));
    run("undo");
    EXPECT_EQ(get_list_of_free_ref_entities("surface"), sheet);
    EXPECT_EQ(get_list_of_free_ref_entities("curve"), curves);
    run("undo");
    EXPECT_EQ(get_list_of_free_ref_entities("curve").size(), 4u);
    EXPECT_EQ(get_relatives("vertex", 13, "curve"), std::vector<int>{});
}

TEST_F(QueryCacheTest, MergedEntitiesAreSharedUntilAMoveSeparatesThem) {
    run("undo on");
    run("create box 1");
    run("create box 1 at 1 0 0");
    run("imprint all");
    run("merge all");
    ask_everything();
    int shared = 0;
    for (int s : get_entities("surface"))
        if (get_relatives("surface", s, "volume") == std::vector<int>{1, 2}) {
            EXPECT_EQ(shared, 0) << "one shared surface";
            shared = s;
        }
    ASSERT_NE(shared, 0);
    EXPECT_TRUE(is_merged("surface", shared));
    EXPECT_EQ(get_relatives("surface", shared, "body"), (std::vector<int>{1, 2}));
    EXPECT_NEAR(get_surface_area(shared), 1, kTol);
    expect_point(get_center_point("surface", shared), 0.5, 0, 0);
    // Twelve surfaces of two unit cubes, less the one they share.
    EXPECT_EQ(get_entities("surface").size(), 11u);

    run("move volume 2 by 0 0 5");
    // The side that moved has its own faces now; the one that stayed keeps the old id.
    EXPECT_FALSE(is_merged("surface", shared));
    EXPECT_EQ(get_relatives("surface", shared, "volume"), (std::vector<int>{1}));
    expect_point(get_center_point("surface", shared), 0.5, 0, 0);
    EXPECT_NEAR(get_center_point("volume", 2)[2], 5, kTol);
    for (int s : get_relatives("volume", 2, "surface"))
        EXPECT_EQ(get_relatives("surface", s, "volume"), (std::vector<int>{2}));
    EXPECT_EQ(get_entities("surface").size(), 12u);

    run("undo");
    EXPECT_TRUE(is_merged("surface", shared));
    EXPECT_EQ(get_relatives("surface", shared, "volume"), (std::vector<int>{1, 2}));
    EXPECT_NEAR(get_center_point("volume", 2)[2], 0, kTol);
}

} // namespace
