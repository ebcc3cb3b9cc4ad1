// The kernel's camera (reset fits the visible geometry; the view commands move it) and the
// drawing sets that the render views will read.

#include "ViewTestSupport.h"

#include "view/ViewState.h"

#include <cmath>
#include <numbers>

using view_test::ViewTest;

namespace {

using tarvo::kernel::PickedEntity;
using tarvo::kernel::view_state;

// Distance at which a sphere of `radius` fills a 30 degree view angle.
double fit_distance(double radius) {
    return radius / std::sin(15.0 * std::numbers::pi / 180.0);
}

void expect_near3(const std::array<double, 3>& got, const std::array<double, 3>& want,
                  double tolerance, const char* what) {
    for (int i = 0; i < 3; ++i) {
        EXPECT_NEAR(got[i], want[i], tolerance) << what << "[" << i << "]";
    }
}

TEST_F(ViewTest, ResetCameraFitsTheVisibleGeometry) {
    // Nothing to fit: the origin, with room for a unit sphere.
    TarvoInterface::reset_camera();
    expect_near3(TarvoInterface::get_view_at(), {0, 0, 0}, 1e-12, "at");
    EXPECT_NEAR(TarvoInterface::get_view_distance(), fit_distance(1), 1e-9);

    // A 2x1x1 box centred at (1, 2, 3): bounding sphere radius sqrt(6)/2.
    ASSERT_TRUE(TarvoInterface::silent_cmd("create box 2 1 1 at 1 2 3"));
    run("view reset");
    const auto at = TarvoInterface::get_view_at();
    expect_near3(at, {1, 2, 3}, 1e-3, "at");
    const double d = fit_distance(std::sqrt(6.0) / 2);
    EXPECT_NEAR(TarvoInterface::get_view_distance(), d, 1e-2);
    expect_near3(TarvoInterface::get_view_from(), {at[0], at[1], at[2] + d}, 1e-2, "from");
    expect_near3(TarvoInterface::get_view_up(), {0, 1, 0}, 0, "up");

    // A second box far away widens the fit; hiding it narrows it again.
    ASSERT_TRUE(TarvoInterface::silent_cmd("create box 2 1 1 at 21 2 3"));
    TarvoInterface::reset_camera();
    expect_near3(TarvoInterface::get_view_at(), {11, 2, 3}, 1e-3, "at of both");
    EXPECT_NEAR(TarvoInterface::get_view_distance(), fit_distance(std::sqrt(22.0 * 22 + 2) / 2),
                1e-2);
    ASSERT_TRUE(TarvoInterface::silent_cmd("hide volume 2"));
    ASSERT_FALSE(TarvoInterface::is_visible("volume", 2));
    TarvoInterface::reset_camera();
    expect_near3(TarvoInterface::get_view_at(), {1, 2, 3}, 1e-3, "at without the hidden one");

    // A free vertex counts as visible geometry too.
    ASSERT_TRUE(TarvoInterface::silent_cmd("create vertex 1 2 -37"));
    TarvoInterface::reset_camera();
    EXPECT_NEAR(TarvoInterface::get_view_at()[2], (-37 + 3.5) / 2, 1e-3);

    // The view commands place the camera exactly where they say.
    run("view at 1 1 1");
    run("view from 1 1 11");
    run("view up 1 0 0");
    expect_near3(TarvoInterface::get_view_from(), {1, 1, 11}, 0, "from");
    expect_near3(TarvoInterface::get_view_up(), {1, 0, 0}, 0, "up");
    EXPECT_DOUBLE_EQ(TarvoInterface::get_view_distance(), 10);
}

TEST_F(ViewTest, DrawKeepsTheDefaultDrawingSetUntilCleared) {
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(TarvoInterface::silent_cmd("create box 1"));
    }
    auto& sets = view_state()->drawing_sets;
    run("draw volume 2 3");
    EXPECT_EQ(sets[""], (std::vector<PickedEntity>{{"volume", 2}, {"volume", 3}}));
    EXPECT_TRUE(output->has_line("Drawing volume 2 3")) << output->all();
    run("draw volume 1 add");
    EXPECT_EQ(sets[""].size(), 3u);
    run("draw volume 1"); // replaces
    EXPECT_EQ(sets[""], (std::vector<PickedEntity>{{"volume", 1}}));
    run("draw volume 99"); // reported, skipped: the drawing stays
    EXPECT_EQ(sets[""], (std::vector<PickedEntity>{{"volume", 1}}));

    // A deleted entity leaves the drawing.
    run("draw volume 1 2");
    ASSERT_TRUE(TarvoInterface::silent_cmd("delete volume 1"));
    EXPECT_EQ(sets[""], (std::vector<PickedEntity>{{"volume", 2}}));

    run("draw clear");
    EXPECT_EQ(sets.count(""), 0u);
    sets["other"] = {{"volume", 2}};
    TarvoInterface::clear_drawing_set("never made"); // nothing to clear, no error
    EXPECT_EQ(sets.count("other"), 1u) << "only the named set is cleared";
    EXPECT_TRUE(errors().empty()) << output->all();
}

} // namespace
