// The public geometry queries: types, normals, measures, boxes, names, colours, engines.
#include "GeometryTestSupport.h"

#include <cmath>
#include <map>

using namespace geometry_test;
using namespace TarvoInterface;

namespace {

using GeometryQueriesTest = GeometryTest;

std::map<std::string, int> surface_types(int volume) {
    std::map<std::string, int> out;
    for (int s : get_relatives("volume", volume, "surface"))
        ++out[get_surface_type(s)];
    return out;
}

TEST_F(GeometryQueriesTest, SurfaceAndCurveTypesUseGmshNames) {
    run("create cylinder radius 1 height 2");
    run("create sphere radius 1 at 5 0 0");
    run("create cone radius 1 top radius 0.5 height 1 at 10 0 0");
    run("create torus major radius 3 minor radius 1 at 20 0 0");
    EXPECT_EQ(surface_types(1), (std::map<std::string, int>{{"Cylinder", 1}, {"Plane", 2}}));
    EXPECT_EQ(surface_types(2), (std::map<std::string, int>{{"Sphere", 1}}));
    EXPECT_EQ(surface_types(3), (std::map<std::string, int>{{"Cone", 1}, {"Plane", 2}}));
    EXPECT_EQ(surface_types(4), (std::map<std::string, int>{{"Torus", 1}}));
    int circles = 0;
    for (int c : get_relatives("volume", 1, "curve")) {
        if (get_curve_type(c) == "Circle") {
            ++circles;
            EXPECT_NEAR(get_curve_radius(c), 1, 1e-12);
            EXPECT_NEAR(std::abs(get_curve_center(c)[2]), 1, 1e-12);
            EXPECT_TRUE(is_periodic("curve", c));
        }
    }
    EXPECT_EQ(circles, 2);
    for (int s : get_relatives("volume", 1, "surface"))
        EXPECT_EQ(is_surface_planar(s), get_surface_type(s) == "Plane");
    // A sphere has no curves but its seam; its pole edges are degenerate and not curves.
    EXPECT_EQ(get_relatives("volume", 2, "curve").size(), 1u);
    run("import step '" + cad_file("t20_data.step") + "'");
    bool bspline = false;
    for (int s : get_relatives("volume", 5, "surface"))
        bspline |= get_surface_type(s) == "BSpline surface";
    EXPECT_TRUE(bspline);
}

TEST_F(GeometryQueriesTest, BoxNormalsPointOutOfTheVolume) {
    run("create box 2 4 6 at 1 1 1");
    run("create box 10 at 20 0 0");
    run("create cylinder radius 1 height 20 at 20 0 0");
    run("subtract volume 3 from volume 2");
    for (int v : {1, 2}) {
        auto c = get_center_point("volume", v);
        for (int s : get_relatives("volume", v, "surface")) {
            auto n = get_surface_normal(s);
            auto p = get_surface_centroid(s);
            EXPECT_NEAR(n[0] * n[0] + n[1] * n[1] + n[2] * n[2], 1, 1e-9);
            double out = n[0] * (p[0] - c[0]) + n[1] * (p[1] - c[1]) + n[2] * (p[2] - c[2]);
            if (get_surface_type(s) == "Plane") {
                EXPECT_GT(out, 0) << "surface " << s;
            }
            EXPECT_EQ(get_surface_sense(s) == "both", false);
        }
    }
    // A plane face of the unit box: centroid in its middle.
    int top = 0;
    for (int s : get_relatives("volume", 1, "surface"))
        if (std::abs(get_surface_centroid(s)[2] - 4) < 1e-9)
            top = s;
    ASSERT_NE(top, 0);
    EXPECT_EQ(get_surface_normal(top), (std::array<double, 3>{0, 0, 1}));
    EXPECT_NEAR(get_hydraulic_radius_surface_area(top), 2 * 8.0 / 12.0, 1e-12);
    EXPECT_NEAR(get_hydraulic_radius_volume_area(1), 3 * 48.0 / 88.0, 1e-12);
}

TEST_F(GeometryQueriesTest, BoundingBoxesAndPointContainment) {
    run("create box 2 4 6");
    run("create box 1 at 10 10 10");
    auto total = get_total_bounding_box("volume", {1, 2});
    const std::array<double, 10> expected{
        -1,   10.5, 11.5, -2,   10.5,
        12.5, -3,   10.5, 13.5, std::sqrt(11.5 * 11.5 + 12.5 * 12.5 + 13.5 * 13.5)};
    for (std::size_t i = 0; i < 10; ++i)
        EXPECT_NEAR(total[i], expected[i], 1e-9) << i;
    // The oriented box of a rotated box is the box itself: half-extents 1, 2, 3 in some order.
    run("rotate volume 1 angle 30 about axis 1 1 0");
    auto tight = get_tight_bounding_box("volume", {1});
    std::array<double, 3> half{tight[12], tight[13], tight[14]};
    std::sort(half.begin(), half.end());
    EXPECT_NEAR(half[0], 1, 1e-6);
    EXPECT_NEAR(half[1], 2, 1e-6);
    EXPECT_NEAR(half[2], 3, 1e-6);
    EXPECT_NEAR(tight[0], 0, 1e-6);
    EXPECT_EQ(is_point_contained("volume", 2, {10, 10, 10}), 1);
    EXPECT_EQ(is_point_contained("volume", 2, {10.5, 10, 10}), 2);
    EXPECT_EQ(is_point_contained("volume", 2, {12, 10, 10}), 0);
    EXPECT_EQ(is_point_contained("volume", 99, {0, 0, 0}), -1);
}

TEST_F(GeometryQueriesTest, CurveDistancesAndCommonEntities) {
    run("create box 10");
    int s1 = 0, s2 = 0;
    for (int s : get_entities("surface")) {
        auto c = get_surface_centroid(s);
        if (std::abs(c[0] - 5) < 1e-9)
            s1 = s;
        if (std::abs(c[1] - 5) < 1e-9)
            s2 = s;
    }
    int common = get_common_curve_id(s1, s2);
    ASSERT_NE(common, 0);
    EXPECT_EQ(get_curve_type(common), "Line");
    EXPECT_DOUBLE_EQ(get_curve_length(common), 10);
    // The edge x = 5, y = 5 runs along z from -5 to 5, in one direction or the other.
    double d = get_distance_from_curve_start(5, 5, 2, common);
    EXPECT_TRUE(std::abs(d - 7) < 1e-9 || std::abs(d - 3) < 1e-9) << d;
    auto verts = get_relatives("curve", common, "vertex");
    ASSERT_EQ(verts.size(), 2u);
    EXPECT_DOUBLE_EQ(get_distance_between(verts[0], verts[1]), 10);
    int opposite = 0;
    for (int s : get_entities("surface"))
        if (std::abs(get_surface_centroid(s)[0] + 5) < 1e-9)
            opposite = s;
    EXPECT_EQ(get_common_curve_id(s1, opposite), 0);
    const std::vector<int> adjacent = get_adjacent_surfaces("surface", s1);
    EXPECT_EQ(adjacent.size(), 4u);
    EXPECT_EQ(std::count(adjacent.begin(), adjacent.end(), opposite), 0);
    EXPECT_EQ(evaluate_exterior_angle(get_entities("curve"), 100).size(), 12u);
    EXPECT_TRUE(evaluate_exterior_angle(get_entities("curve"), 80).empty());
}

TEST_F(GeometryQueriesTest, NamesColoursAndEngines) {
    run("create box 1");
    run("create box 1 at 3 0 0");
    EXPECT_EQ(get_entity_name("volume", 1, false), "Volume 1");
    EXPECT_EQ(get_entity_name("volume", 1, true), "");
    EXPECT_TRUE(set_entity_name("volume", 1, "left"));
    EXPECT_FALSE(set_entity_name("volume", 2, "left")); // taken
    EXPECT_FALSE(set_entity_name("volume", 7, "nobody"));
    EXPECT_EQ(parse_tarvo_list("volume", "with name 'lef*'"), std::vector<int>{1});
    run("color volume 2 blue");
    // A surface without its own colour shows its volume's.
    int s = get_relatives("volume", 2, "surface").front();
    EXPECT_EQ(get_entity_color("surface", s), (std::array<double, 4>{0, 0, 1, 1}));
    EXPECT_EQ(get_entity_color_index("volume", 9), -1);
    EXPECT_EQ(get_entity_modeler_engine("volume", 1), std::vector<std::string>{"OpenCASCADE"});
    EXPECT_TRUE(get_entity_modeler_engine("volume", 9).empty());
    EXPECT_EQ(get_curve_count_in_volumes({1, 2}), 24);
    EXPECT_EQ(get_entities("nonsense"), std::vector<int>{});
}

} // namespace
