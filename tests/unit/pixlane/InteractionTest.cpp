// Input on a headless view of the kernel's model: a rotate drag turns the camera by its angle and
// the kernel's camera follows (and leads, after a view command); a click picks what the pick type
// and filter allow and the kernel reports it as highlighted; a box takes exactly what lies in it.
#include <pixlane/GInteractorStyle.h>
#include <pixlane/GPickerBase.h>
#include <pixlane/GTarvoModelSet.h>
#include <pixlane/GView.h>
#include <pixlane/ServerWindowFactory.h>

#include "tarvo/TIObserve.h"
#include "tarvo/TarvoInterface.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <set>
#include <vector>

#include <vtkCamera.h>
#include <vtkRenderer.h>

namespace {

namespace TI = TarvoInterface;
using Entity = std::pair<std::string, int>;
using Vec = std::array<double, 3>;

struct Highlights : TI::TIObserve {
    std::vector<std::vector<Entity>> added;
    void notify_highlighted(const std::vector<Entity>& entities) override {
        added.push_back(entities);
    }
};

std::vector<Entity> selection() {
    std::vector<Entity> out;
    for (int i = 0; i < GPickerBase::current_selection_count(); ++i)
        if (const auto* e = GPickerBase::get_selection(i))
            out.push_back({e->entity_type_name(), e->entity_id()});
    return out;
}

class Interaction : public ::testing::Test {
protected:
    static constexpr int kWidth = 160, kHeight = 120;

    void SetUp() override {
        ASSERT_TRUE(factory.ok()) << factory.description();
        ASSERT_TRUE(TI::init({"tarvo_pixlane_test"}));
        TI::silent_cmd("echo off");
        ASSERT_TRUE(factory.core_initialize_window(view));
        factory.resize(view.get(), kWidth, kHeight);
        set = std::make_unique<GTarvoModelSet>();
        view->set_model_set(set.get());
        auto* style = GInteractorStyle::New();
        view->set_style(style);
        style->SetModelSet(set.get());
        style->set_donepick_function([this] { ++donepicks; });
        style->set_popup_function([this](int x, int y) { popups.push_back({x, y}); });
        style->Delete();
        GInteractorStyleBase::reset_mouse_functions();
        highlights.register_observer();
    }
    void TearDown() override {
        highlights.unregister_observer();
        view->set_style(nullptr);
        set.reset();
        factory.core_de_initialize_window(view);
        TI::destroy();
    }

    void run(const std::string& line) { ASSERT_TRUE(TI::silent_cmd(line.c_str())); }

    // A parallel camera on +z looking at the origin, `scale` model units to the top edge.
    void look_down_z(double scale) {
        vtkCamera* camera = view->renderer()->GetActiveCamera();
        camera->ParallelProjectionOn();
        camera->SetParallelScale(scale);
        view->set_focal_point({0, 0, 0});
        view->set_view_up({0, 1, 0});
        view->set_position({0, 0, 10});
        view->render();
    }
    // The input position (y down from the top row) of the model point (x, y, 0).
    static std::array<int, 2> input_of(double x, double y, double scale) {
        const double column = (x / (scale * kWidth / kHeight) + 1) / 2 * kWidth - 0.5;
        const double row = (y / scale + 1) / 2 * kHeight - 0.5;
        return {static_cast<int>(std::lround(column)),
                kHeight - 1 - static_cast<int>(std::lround(row))};
    }
    void drag(PXUtil::Button button, std::array<int, 2> from, std::array<int, 2> to) {
        view->invoke_mouse_press(from[0], from[1], 0, button);
        for (int step = 1; step <= 4; ++step)
            view->invoke_mouse_move(from[0] + (to[0] - from[0]) * step / 4,
                                    from[1] + (to[1] - from[1]) * step / 4, 0);
        view->invoke_mouse_release(to[0], to[1], 0, button);
    }
    void click(PXUtil::Button button, std::array<int, 2> at) { drag(button, at, at); }
    // Red, green, blue of the pixel under an input position, after a render.
    std::array<int, 3> colour_at(std::array<int, 2> at) {
        view->render();
        std::vector<unsigned char> image(kWidth * kHeight * 4);
        EXPECT_TRUE(view->get_rgba_pixels(kWidth, kHeight, image.data()));
        const std::size_t row = static_cast<std::size_t>(kHeight - 1 - at[1]);
        const unsigned char* p = &image[(row * kWidth + static_cast<std::size_t>(at[0])) * 4];
        return {p[2], p[1], p[0]};
    }
    static bool near(const std::array<int, 3>& c, const double (&want)[3]) {
        for (int i = 0; i < 3; ++i)
            if (std::abs(c[i] - want[i] * 255) > 8)
                return false;
        return true;
    }

    ServerWindowFactory factory;
    std::shared_ptr<GView> view = std::make_shared<GView>();
    std::unique_ptr<GTarvoModelSet> set;
    Highlights highlights;
    int donepicks = 0;
    std::vector<std::array<int, 2>> popups;
};

TEST_F(Interaction, RotateDragTurnsTheCameraByItsAngleAndSharesItWithTheKernel) {
    run("create box 2");
    look_down_z(2);
    GInteractorStyleBase::assign_mouse_function(false, PXUtil::Rotate, PXUtil::Left, 0);
    // 40 of 160 pixels: a quarter of the half turn a full-width drag gives.
    drag(PXUtil::Left, {60, 60}, {100, 60});
    const auto pos = view->get_position();
    const double degrees = std::atan2(-pos[0], pos[2]) * 180 / M_PI;
    EXPECT_NEAR(degrees, 45.0, 1e-6);
    EXPECT_NEAR(pos[1], 0.0, 1e-9);
    EXPECT_NEAR(std::hypot(pos[0], pos[2]), 10.0, 1e-9);
    const auto kernel = TI::get_view_from();
    for (int i = 0; i < 3; ++i)
        EXPECT_NEAR(kernel[i], pos[i], 1e-9);

    // A view command moves the view's camera at its next render.
    run("view from 0 -10 0");
    run("view up 0 0 1");
    view->render();
    const auto moved = view->get_position();
    EXPECT_NEAR(moved[1], -10.0, 1e-9);
    EXPECT_NEAR(view->get_view_up()[2], 1.0, 1e-9);
}

TEST_F(Interaction, DoubleClickCentresOnTheModelPointUnderTheCursor) {
    run("create box 2");
    look_down_z(2);
    const auto at = input_of(0.5, -0.25, 2);
    view->invoke_double_click(at[0], at[1]);
    const auto focal = view->get_focal_point(), pos = view->get_position();
    // Within the pixel's size (2 / 120) of the point on the top face.
    EXPECT_NEAR(focal[0], 0.5, 0.02);
    EXPECT_NEAR(focal[1], -0.25, 0.02);
    EXPECT_NEAR(focal[2], 1.0, 1e-9);
    EXPECT_NEAR(pos[0] - focal[0], 0.0, 1e-9);
    EXPECT_NEAR(pos[2] - focal[2], 10.0, 1e-9);
    EXPECT_NEAR(TI::get_view_at()[2], 1.0, 1e-9) << "the kernel's camera follows";
    // Off the model nothing moves.
    view->invoke_double_click(2, 2);
    EXPECT_EQ(view->get_focal_point(), focal);
}

TEST_F(Interaction, ClickPicksWhatThePickTypeAllowsAndTheKernelHighlightsIt) {
    run("create box 2"); // -1..1 on every axis
    look_down_z(2);
    int top = 0, right_edge = 0;
    for (int s : TI::get_entities("surface"))
        if (std::abs(TI::get_surface_centroid(s)[2] - 1) < 1e-9)
            top = s;
    for (int c : TI::get_entities("curve")) {
        const auto centre = TI::get_curve_center(c);
        if (std::abs(centre[0] - 1) < 1e-9 && std::abs(centre[2] - 1) < 1e-9)
            right_edge = c;
    }
    ASSERT_GT(top, 0);
    ASSERT_GT(right_edge, 0);
    GInteractorStyleBase::assign_mouse_function(false, PXUtil::Select, PXUtil::Left, 0);

    struct Row {
        const char* pick_type;
        std::array<double, 2> at;
        std::vector<Entity> expected;
    };
    const std::vector<Row> rows = {
        {"surface", {0.2, 0.3}, {{"surface", top}}},
        {"volume", {0.2, 0.3}, {{"volume", 1}}},
        // Nothing of the type under the cursor: the face in front is not a curve.
        {"curve", {0.2, 0.3}, {}},
        // Within a few pixels of the edge the curve wins over the face it bounds.
        {"curve", {0.97, 0.3}, {{"curve", right_edge}}},
        {"surface", {0.97, 0.3}, {{"surface", top}}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(row.pick_type) + " at " + std::to_string(row.at[0]));
        run(std::string("pick type ") + row.pick_type);
        run("select none");
        highlights.added.clear();
        donepicks = 0;
        click(PXUtil::Left, input_of(row.at[0], row.at[1], 2));
        EXPECT_EQ(selection(), row.expected);
        EXPECT_EQ(donepicks, 1);
        if (row.expected.empty())
            EXPECT_TRUE(highlights.added.empty());
        else
            EXPECT_EQ(highlights.added, std::vector<std::vector<Entity>>{row.expected});
    }

    // Outside the model a click clears the selection; a right click asks for the menu there.
    click(PXUtil::Left, {2, 2});
    EXPECT_TRUE(selection().empty());
    click(PXUtil::Right, {30, 40});
    EXPECT_EQ(popups, (std::vector<std::array<int, 2>>{{30, 40}}));
}

TEST_F(Interaction, BoxSelectionTakesExactlyTheEntitiesInside) {
    for (int x : {-3, 0, 3})
        run("create box 1 at " + std::to_string(x) + " 0 0");
    look_down_z(3);
    GInteractorStyleBase::assign_mouse_function(false, PXUtil::SelectBox, PXUtil::Left, 0);
    const std::vector<Entity> first_two{{"volume", 1}, {"volume", 2}};
    std::vector<Entity> surfaces_of_2;
    for (int s : TI::get_relatives("volume", 2, "surface"))
        surfaces_of_2.push_back({"surface", s});

    struct Row {
        const char* pick_type;
        bool partial;
        std::array<double, 2> from, to;
        std::vector<Entity> expected;
    };
    const std::vector<Row> rows = {
        {"volume", false, {-3.8, 1}, {0.8, -1}, first_two},
        // The third box is only partly inside.
        {"volume", false, {-3.8, 1}, {3.0, -1}, first_two},
        {"volume", true, {-3.8, 1}, {3.0, -1}, {{"volume", 1}, {"volume", 2}, {"volume", 3}}},
        // Hidden faces count too: all six of the middle box.
        {"surface", false, {-0.8, 1}, {0.8, -1}, surfaces_of_2},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(row.pick_type) + (row.partial ? " partial" : ""));
        run(std::string("pick type ") + row.pick_type);
        run(std::string("select partial ") + (row.partial ? "on" : "off"));
        run("select none");
        drag(PXUtil::Left, input_of(row.from[0], row.from[1], 3),
             input_of(row.to[0], row.to[1], 3));
        auto got = selection();
        std::sort(got.begin(), got.end());
        auto expected = row.expected;
        std::sort(expected.begin(), expected.end());
        EXPECT_EQ(got, expected);
    }
}

TEST_F(Interaction, HoverDrawsWhatAClickWouldPickInThisViewOnly) {
    run("create box 2");
    run("color volume 1 rgb 1 1 1");
    run("pick type surface");
    look_down_z(2);
    const std::array<int, 2> centre{70, kHeight / 2};
    const double white[3] = {1, 1, 1};
    EXPECT_TRUE(near(colour_at(centre), white));
    view->invoke_mouse_move(centre[0], centre[1], 0);
    EXPECT_TRUE(near(colour_at(centre), GTarvoModelSet::kPreselect));
    EXPECT_TRUE(selection().empty());
    EXPECT_TRUE(highlights.added.empty());
    view->invoke_leave();
    EXPECT_TRUE(near(colour_at(centre), white));
}

TEST_F(Interaction, OccludedPickingReachesBehindTheFrontFace) {
    run("create box 1");          // its corner (0.5, 0.5, 0.5) lies behind
    run("create box 2 at 0 0 3"); // this box's front face
    look_down_z(2);
    int corner = 0;
    for (int v : TI::get_entities("vertex")) {
        const auto p = TI::get_center_point("vertex", v);
        if (std::abs(p[0] - 0.5) + std::abs(p[1] - 0.5) + std::abs(p[2] - 0.5) < 1e-9)
            corner = v;
    }
    ASSERT_GT(corner, 0);
    run("pick type vertex");
    GInteractorStyleBase::assign_mouse_function(false, PXUtil::Select, PXUtil::Left, 0);
    for (bool occluded : {false, true}) {
        SCOPED_TRACE(occluded ? "occluded" : "front only");
        set->set_select_occluded(occluded);
        run("select none");
        click(PXUtil::Left, input_of(0.5, 0.5, 2));
        const std::vector<Entity> expected =
            occluded ? std::vector<Entity>{{"vertex", corner}} : std::vector<Entity>{};
        EXPECT_EQ(selection(), expected);
    }
}

// A 2 x 2 x 2 hex mesh of the box seen from +z, mesh shown: clicks land on the mesh entities
// under the cursor (and the surface, through the mesh face drawn over it), hover and selection
// draw them, and a box takes the nodes and elements wholly inside.
TEST_F(Interaction, MeshEntitiesArePickedDrawnAndBoxed) {
    run("create box 2");
    run("volume 1 interval 2");
    run("mesh volume 1");
    run("color volume 1 rgb 1 1 1");
    look_down_z(2);
    GInteractorStyleBase::assign_mouse_function(false, PXUtil::Select, PXUtil::Left, 0);
    const auto centre_of = [](const Entity& e) {
        const std::vector<int> nodes = e.first == "node" ? std::vector<int>{e.second}
                                                         : TI::get_connectivity(e.first, e.second);
        Vec sum{0, 0, 0};
        for (int node : nodes)
            for (int i = 0; i < 3; ++i)
                sum[i] += TI::get_nodal_coordinates(node)[i] / static_cast<double>(nodes.size());
        return sum;
    };
    const auto centre_near = [&](const Entity& e, const Vec& want) {
        const Vec c = centre_of(e);
        return std::abs(c[0] - want[0]) + std::abs(c[1] - want[1]) + std::abs(c[2] - want[2]) <
               1e-9;
    };

    struct Row {
        const char* pick_type;
        std::array<double, 2> at;
        const char* type;
        Vec centre;
    };
    const std::vector<Row> rows = {
        {"hex", {0.5, 0.5}, "hex", {0.5, 0.5, 0.5}},
        {"quad", {-0.5, 0.5}, "quad", {-0.5, 0.5, 1}},
        {"face", {0.5, -0.5}, "quad", {0.5, -0.5, 1}},
        {"node", {0.03, 0.02}, "node", {0, 0, 1}},
        {"edge", {0.98, 0.5}, "edge", {1, 0.5, 1}},
        // The geometry's faces give way to the mesh drawn over them, which still leads to them.
        {"surface", {0.5, 0.5}, "surface", {}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.pick_type);
        run(std::string("pick type ") + row.pick_type);
        run("select none");
        click(PXUtil::Left, input_of(row.at[0], row.at[1], 2));
        const std::vector<Entity> got = selection();
        ASSERT_EQ(got.size(), 1u);
        EXPECT_EQ(got[0].first, row.type);
        if (got[0].first == "surface")
            EXPECT_NEAR(TI::get_surface_centroid(got[0].second)[2], 1.0, 1e-9);
        else
            EXPECT_TRUE(centre_near(got[0], row.centre)) << got[0].first << " " << got[0].second;
    }

    // A selected hex is drawn in the highlight colour, its neighbour is not; hover draws the hex
    // a click would pick.
    run("pick type hex");
    run("select none");
    const auto inside_hex = input_of(0.5, 0.5, 2), other_hex = input_of(-0.5, -0.5, 2);
    click(PXUtil::Left, inside_hex);
    EXPECT_TRUE(near(colour_at(inside_hex), GTarvoModelSet::kHighlight));
    EXPECT_FALSE(near(colour_at(other_hex), GTarvoModelSet::kHighlight));
    view->invoke_mouse_move(other_hex[0], other_hex[1], 0);
    EXPECT_TRUE(near(colour_at(other_hex), GTarvoModelSet::kPreselect));
    view->invoke_leave();
    run("select none");
    EXPECT_FALSE(near(colour_at(inside_hex), GTarvoModelSet::kHighlight));

    // The box covers the half x > 0.3: the nine nodes at x = 1 (hidden ones too), and no hex.
    GInteractorStyleBase::assign_mouse_function(false, PXUtil::SelectBox, PXUtil::Left, 0);
    for (const char* type : {"node", "hex"}) {
        SCOPED_TRACE(type);
        run(std::string("pick type ") + type);
        run("select none");
        drag(PXUtil::Left, input_of(0.3, 1.3, 2), input_of(1.3, -1.3, 2));
        const std::vector<Entity> got = selection();
        if (std::string(type) == "hex") {
            EXPECT_TRUE(got.empty());
            continue;
        }
        ASSERT_EQ(got.size(), 9u);
        for (const Entity& e : got)
            EXPECT_NEAR(centre_of(e)[0], 1.0, 1e-9);
    }
    // Over the half x < 0.2 the four hexes there are wholly inside.
    run("select none");
    drag(PXUtil::Left, input_of(-1.3, 1.3, 2), input_of(0.2, -1.3, 2));
    const std::vector<Entity> hexes = selection();
    ASSERT_EQ(hexes.size(), 4u);
    for (const Entity& e : hexes)
        EXPECT_NEAR(centre_of(e)[0], -0.5, 1e-9);
}

} // namespace
