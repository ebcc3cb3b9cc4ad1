// The metric table on shapes whose values are known by hand: ideal elements, sheared, stretched
// and inverted ones, and the pyramid definitions of our own. A wrong Verdict declaration, a
// function in the wrong row or a node order Verdict does not expect all show up as a value.

#include "mesh/Quality.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <vector>

using namespace tarvo::kernel::mesh;

namespace {

const double kS3 = std::sqrt(3.0);

using Corners = std::vector<Point3>;

const Corners kCube{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0},
                    {0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}};
// Top face shifted by one along x: every corner sees edges (1,0,0), (0,1,0), (1,0,1).
const Corners kShearedHex{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0},
                          {1, 0, 1}, {2, 0, 1}, {2, 1, 1}, {1, 1, 1}};
const Corners kInvertedHex{{0, 0, 0}, {0, 1, 0}, {1, 1, 0}, {1, 0, 0},
                           {0, 0, 1}, {0, 1, 1}, {1, 1, 1}, {1, 0, 1}};
const Corners kRegularTet{
    {0, 0, 0}, {1, 0, 0}, {0.5, kS3 / 2, 0}, {0.5, kS3 / 6, std::sqrt(2. / 3)}};
const Corners kEquilateralTri{{0, 0, 0}, {1, 0, 0}, {0.5, kS3 / 2, 0}};
const Corners kSquare{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}};
const Corners kEquilateralPrism{{0, 0, 0}, {1, 0, 0}, {0.5, kS3 / 2, 0},
                                {0, 0, 1}, {1, 0, 1}, {0.5, kS3 / 2, 1}};
const Corners kCornerTet{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
const Corners kRightIsoscelesTri{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
const Corners kRhombus60{{0, 0, 0}, {1, 0, 0}, {1.5, kS3 / 2, 0}, {0.5, kS3 / 2, 0}};
const Corners kRightAngledPrism{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {1, 0, 1}, {0, 1, 1}};
Corners square_pyramid(double height) {
    return {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0.5, 0.5, height}};
}

struct Known {
    const char* what;
    ElemKind kind;
    Corners corners;
    const char* metric;
    double expected;
};

TEST(Quality, KnownShapes) {
    // Tet scaled Jacobian: sqrt(2) * det / the largest product of the three edge lengths at a
    // corner. Tri: 2/sqrt(3) * sin of the smallest angle. Quad: sin of the smallest angle.
    // Pyramid (Quality.cpp): sqrt(2) * the smallest normalised corner determinant; on a unit
    // square base with the apex at height h over the centre, a base corner gives
    // h / sqrt(0.5 + h^2) and the apex 4 * 0.25 * h / (0.5 + h^2)^1.5.
    const std::vector<Known> cases{
        {"cube", ElemKind::Hex, kCube, "Scaled Jacobian", 1},
        {"cube", ElemKind::Hex, kCube, "Aspect Ratio", 1},
        {"cube", ElemKind::Hex, kCube, "Element Volume", 1},
        {"sheared hex", ElemKind::Hex, kShearedHex, "Scaled Jacobian", 1 / std::sqrt(2.)},
        {"sheared hex", ElemKind::Hex, kShearedHex, "Skew", 1 / std::sqrt(2.)},
        {"2x1x1 box",
         ElemKind::Hex,
         {{0, 0, 0}, {2, 0, 0}, {2, 1, 0}, {0, 1, 0}, {0, 0, 1}, {2, 0, 1}, {2, 1, 1}, {0, 1, 1}},
         "Aspect Ratio",
         2},
        {"inverted hex", ElemKind::Hex, kInvertedHex, "Scaled Jacobian", -1},
        {"regular tet", ElemKind::Tet, kRegularTet, "Scaled Jacobian", 1},
        {"regular tet", ElemKind::Tet, kRegularTet, "Aspect Ratio", 1},
        {"corner tet", ElemKind::Tet, kCornerTet, "Scaled Jacobian", std::sqrt(2.) / 2},
        {"corner tet", ElemKind::Tet, kCornerTet, "Element Volume", 1. / 6},
        {"inverted tet",
         ElemKind::Tet,
         {{0, 0, 0}, {0, 1, 0}, {1, 0, 0}, {0, 0, 1}},
         "Scaled Jacobian",
         -std::sqrt(2.) / 2},
        {"equilateral tri", ElemKind::Tri, kEquilateralTri, "Scaled Jacobian", 1},
        {"equilateral tri", ElemKind::Tri, kEquilateralTri, "Aspect Ratio", 1},
        {"equilateral tri", ElemKind::Tri, kEquilateralTri, "Element Area", kS3 / 4},
        {"right isosceles tri", ElemKind::Tri, kRightIsoscelesTri, "Scaled Jacobian",
         std::sqrt(2. / 3)},
        {"right isosceles tri", ElemKind::Tri, kRightIsoscelesTri, "Minimum Angle", 45},
        {"square", ElemKind::Quad, kSquare, "Scaled Jacobian", 1},
        {"square", ElemKind::Quad, kSquare, "Aspect Ratio", 1},
        {"square", ElemKind::Quad, kSquare, "Warpage", 0},
        {"60 degree rhombus", ElemKind::Quad, kRhombus60, "Scaled Jacobian", kS3 / 2},
        {"60 degree rhombus", ElemKind::Quad, kRhombus60, "Skew", 0.5},
        {"equilateral prism", ElemKind::Wedge, kEquilateralPrism, "Scaled Jacobian", 1},
        {"right-angled prism", ElemKind::Wedge, kRightAngledPrism, "Scaled Jacobian",
         std::sqrt(2. / 3)},
        {"right-angled prism", ElemKind::Wedge, kRightAngledPrism, "Element Volume", 0.5},
        {"equilateral pyramid", ElemKind::Pyramid, square_pyramid(1 / std::sqrt(2.)),
         "Scaled Jacobian", 1},
        // h = 0.5: base corners sqrt(2) * 0.5 / sqrt(0.75) govern (the apex gives 1.089).
        {"pyramid h=1/2", ElemKind::Pyramid, square_pyramid(0.5), "Scaled Jacobian",
         std::sqrt(2. / 3)},
        {"pyramid h=1/2", ElemKind::Pyramid, square_pyramid(0.5), "Jacobian", 0.5},
        {"pyramid h=1/2", ElemKind::Pyramid, square_pyramid(0.5), "Element Volume", 1. / 6},
        // h = 2: the apex governs, sqrt(2) * 2 / 4.5^1.5 = 8/27 (the base corners give 1.33).
        {"pyramid h=2", ElemKind::Pyramid, square_pyramid(2), "Scaled Jacobian", 8. / 27},
        // Apex below the base: every corner inverted, the apex most.
        {"pyramid h=-1/2", ElemKind::Pyramid, square_pyramid(-0.5), "Scaled Jacobian",
         -std::sqrt(2.) * 0.5 / std::pow(0.75, 1.5)},
        {"3-4-5 edge", ElemKind::Edge, {{0, 0, 0}, {3, 4, 0}}, "Length", 5},
    };
    for (const auto& c : cases) {
        ASSERT_EQ(c.corners.size(), std::size_t(info(c.kind).nodes)) << c.what;
        const auto value = quality_value(c.kind, c.metric, c.corners.data());
        ASSERT_TRUE(value) << c.what << ": " << c.metric;
        EXPECT_NEAR(*value, c.expected, 1e-9) << c.what << ": " << c.metric;
    }
}

// Every metric a kind lists applies to it, is finite on the ideal element and is never NaN on a
// collapsed one (all corners at one point), where some Verdict functions divide zero by zero.
TEST(Quality, EveryListedMetricIsFiniteOnIdealElementsAndNeverNaN) {
    const std::vector<std::pair<ElemKind, Corners>> ideal{
        {ElemKind::Edge, {{0, 0, 0}, {1, 0, 0}}},
        {ElemKind::Tri, kEquilateralTri},
        {ElemKind::Quad, kSquare},
        {ElemKind::Tet, kRegularTet},
        {ElemKind::Hex, kCube},
        {ElemKind::Wedge, kEquilateralPrism},
        {ElemKind::Pyramid, square_pyramid(1 / std::sqrt(2.))},
    };
    for (const auto& [kind, corners] : ideal) {
        const auto names = metrics_for(kind);
        EXPECT_NE(std::find(names.begin(), names.end(), default_metric(kind)), names.end())
            << info(kind).word;
        for (auto name : names) {
            EXPECT_TRUE(metric_applies(name, kind)) << name;
            const auto value = quality_value(kind, name, corners.data());
            ASSERT_TRUE(value) << info(kind).word << ": " << name;
            EXPECT_TRUE(std::isfinite(*value) && std::abs(*value) < 1e29)
                << info(kind).word << ": " << name << " = " << *value;
            const Corners collapsed(corners.size(), Point3{1, 2, 3});
            EXPECT_FALSE(std::isnan(*quality_value(kind, name, collapsed.data())))
                << info(kind).word << ": " << name;
        }
    }
    EXPECT_TRUE(metrics_for(ElemKind::Sphere).empty());
    EXPECT_EQ(default_metric(ElemKind::Sphere), "");
}

TEST(Quality, NamesAreFoundWithoutCaseOrBlanksAndUnknownOnesAreNot) {
    const std::vector<std::pair<std::string, std::optional<std::string_view>>> cases{
        {"Scaled Jacobian", "Scaled Jacobian"},
        {"  scaled JACOBIAN\t", "Scaled Jacobian"},
        {"volume", "Element Volume"},
        {"condition number", "Condition No."},
        {"CONDITION NO.", "Condition No."},
        {"Scaled  Jacobian", std::nullopt},
        {"Jacobians", std::nullopt},
        {"", std::nullopt},
        {"   ", std::nullopt},
    };
    for (const auto& [name, canonical] : cases)
        EXPECT_EQ(find_metric(name), canonical) << "'" << name << "'";

    EXPECT_TRUE(low_is_bad("scaled jacobian"));
    EXPECT_FALSE(low_is_bad("Aspect Ratio"));
    EXPECT_FALSE(low_is_bad("no such metric"));
}

TEST(Quality, MetricsThatDoNotApplyAnswerNothing) {
    double out = 42;
    EXPECT_FALSE(quality_value(ElemKind::Tet, "Skew", kRegularTet.data()));
    EXPECT_FALSE(quality_value(ElemKind::Hex, "no such metric", kCube.data()));
    EXPECT_FALSE(quality_values(ElemKind::Tet, "Taper", kRegularTet.data(), 1, &out));
    EXPECT_FALSE(metric_applies("Scaled Jacobian", ElemKind::Sphere));
    EXPECT_EQ(out, 42);
}

TEST(Quality, BatchScoresEachElementFromItsOwnCorners) {
    Corners all;
    for (const Corners* hex : {&kCube, &kShearedHex, &kInvertedHex})
        all.insert(all.end(), hex->begin(), hex->end());
    double out[3] = {};
    ASSERT_TRUE(quality_values(ElemKind::Hex, "scaled jacobian", all.data(), 3, out));
    EXPECT_NEAR(out[0], 1, 1e-12);
    EXPECT_NEAR(out[1], 1 / std::sqrt(2.), 1e-12);
    EXPECT_NEAR(out[2], -1, 1e-12);
}

TEST(Quality, Stats) {
    const double values[] = {3, 1, 4, 1, 5};
    const QualityStats s = quality_stats(values, 5);
    EXPECT_EQ(s.min, 1);
    EXPECT_EQ(s.argmin, 1u); // the first of the two minima
    EXPECT_EQ(s.max, 5);
    EXPECT_EQ(s.argmax, 4u);
    EXPECT_DOUBLE_EQ(s.mean, 2.8);
    EXPECT_DOUBLE_EQ(s.stddev, 1.6); // population: sqrt(12.8 / 5)

    const QualityStats none = quality_stats(nullptr, 0);
    EXPECT_EQ(none.min, 0);
    EXPECT_EQ(none.max, 0);
    EXPECT_EQ(none.stddev, 0);
}

} // namespace
