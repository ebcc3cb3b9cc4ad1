#include <pixlane/GView.h>
#include <pixlane/ServerWindowFactory.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <vector>

#include <vtkActor.h>
#include <vtkCamera.h>
#include <vtkCommand.h>
#include <vtkCubeSource.h>
#include <vtkNew.h>
#include <vtkPolyDataMapper.h>
#include <vtkProperty.h>
#include <vtkRenderer.h>

namespace {

using Colour = std::array<int, 3>; // r, g, b
constexpr Colour black{0, 0, 0}, red{255, 0, 0}, green{0, 255, 0}, blue{0, 0, 255};

// A unit cube at `centre` seen head-on through a parallel camera whose half-height is `scale`:
// its silhouette is exactly its front face, which the tests project themselves.
struct Scene {
    static constexpr double scale = 1.5;
    std::array<double, 3> centre{0.5, 0.3, 0.0};
    std::shared_ptr<GView> view = std::make_shared<GView>();
    vtkNew<vtkActor> actor;

    Scene(ServerWindowFactory& factory, const Colour& colour, int width, int height) {
        EXPECT_TRUE(GView::add_global_view(view));
        EXPECT_TRUE(factory.core_initialize_window(view));
        factory.resize(view.get(), width, height);
        vtkNew<vtkCubeSource> cube;
        cube->SetCenter(centre.data());
        vtkNew<vtkPolyDataMapper> mapper;
        mapper->SetInputConnection(cube->GetOutputPort());
        actor->SetMapper(mapper);
        // Ambient only, so that every covered pixel has exactly the actor's colour.
        actor->GetProperty()->SetAmbient(1.0);
        actor->GetProperty()->SetDiffuse(0.0);
        set_colour(colour);
        view->renderer()->AddActor(actor);
        view->renderer()->SetBackground(0, 0, 0);
        view->renderer()->GetActiveCamera()->ParallelProjectionOn();
        view->renderer()->GetActiveCamera()->SetParallelScale(scale);
        view->set_focal_point({0, 0, 0});
        view->set_position({0, 0, 5});
        view->set_view_up({0, 1, 0});
    }
    ~Scene() { GView::remove_global_view(view); }

    void set_colour(const Colour& c) {
        actor->GetProperty()->SetColor(c[0] / 255.0, c[1] / 255.0, c[2] / 255.0);
    }

    std::vector<unsigned char> pixels() const {
        int w = 0, h = 0;
        view->get_size(w, h);
        std::vector<unsigned char> out(static_cast<std::size_t>(w) * h * 4);
        EXPECT_TRUE(view->get_rgba_pixels(w, h, out.data()));
        return out;
    }

    // Pixel (column, row), rows counted from the bottom as delivered; bytes are b, g, r, a.
    Colour at(const std::vector<unsigned char>& pixels, int column, int row) const {
        int w = 0, h = 0;
        view->get_size(w, h);
        const unsigned char* p = &pixels[(static_cast<std::size_t>(row) * w + column) * 4];
        return {p[2], p[1], p[0]};
    }

    // Where the projection puts the cube: 1 inside, 0 outside, -1 within a pixel and a half of
    // its edge, where rasterisation may go either way.
    int covers(int column, int row) const {
        int w = 0, h = 0;
        view->get_size(w, h);
        const double pixel = 2 * scale / h;
        const double x = ((column + 0.5) / w * 2 - 1) * scale * w / h;
        const double y = ((row + 0.5) / h * 2 - 1) * scale;
        const double inset = 0.5 - std::max(std::abs(x - centre[0]), std::abs(y - centre[1]));
        return std::abs(inset) < 1.5 * pixel ? -1 : inset > 0;
    }

    // Number of sampled pixels whose colour isn't what the projection says.
    int mismatches(const Colour& colour, int stride = 3) const {
        const auto image = pixels();
        int w = 0, h = 0, wrong = 0;
        view->get_size(w, h);
        for (int row = 0; row < h; row += stride)
            for (int column = 0; column < w; column += stride) {
                const int inside = covers(column, row);
                if (inside < 0)
                    continue;
                const Colour expected = inside ? colour : black, got = at(image, column, row);
                for (int c = 0; c < 3; ++c)
                    if (std::abs(got[c] - expected[c]) > 2) {
                        ++wrong;
                        break;
                    }
            }
        return wrong;
    }
};

class ViewRender : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(factory.ok()) << factory.description(); }
    ServerWindowFactory factory;
};

TEST_F(ViewRender, CubeIsWhereTheProjectionSaysAtEverySize) {
    Scene scene(factory, red, 200, 150);
    for (const auto& [w, h] : std::vector<std::pair<int, int>>{{200, 150}, {64, 120}, {333, 211}}) {
        factory.resize(scene.view.get(), w, h);
        int width = 0, height = 0;
        scene.view->get_size(width, height);
        ASSERT_EQ(std::make_pair(width, height), std::make_pair(w, h));
        scene.view->render();
        EXPECT_EQ(scene.mismatches(red), 0) << w << "x" << h;
    }
    std::vector<unsigned char> stale(200 * 150 * 4);
    EXPECT_FALSE(scene.view->get_rgba_pixels(200, 150, stale.data()));

    scene.view->reset_camera();
    for (int i = 0; i < 3; ++i)
        EXPECT_NEAR(scene.view->get_focal_point()[i], scene.centre[i], 1e-6);
    int w = 0, h = 0;
    scene.view->get_size(w, h);
    EXPECT_EQ(scene.at(scene.pixels(), w / 2, h / 2), red);
}

TEST_F(ViewRender, TwoViewsRenderIndependentlyWithTheirOwnIds) {
    Scene first(factory, red, 120, 90), second(factory, green, 90, 160);
    EXPECT_NE(first.view->view_id(), second.view->view_id());
    EXPECT_EQ(GView::find_global_view(second.view->view_id()), second.view);

    first.view->render();
    second.view->render();
    first.set_colour(blue);
    first.view->render();
    EXPECT_EQ(first.mismatches(blue), 0);
    EXPECT_EQ(second.mismatches(green), 0);

    const int freed = first.view->view_id();
    GView::remove_global_view(first.view);
    EXPECT_EQ(GView::find_global_view(freed), nullptr);
    EXPECT_EQ(GView::get_available_id(1), freed);
}

TEST_F(ViewRender, QuietViewAsksForRendersInsteadOfDrawing) {
    Scene scene(factory, red, 80, 60);
    std::vector<unsigned long> events;
    scene.view->set_start_render_callback([&](unsigned long id) { events.push_back(id); });
    scene.view->set_end_render_callback([&](unsigned long id) { events.push_back(id); });
    scene.view->render();
    EXPECT_EQ(events, (std::vector<unsigned long>{vtkCommand::StartEvent, vtkCommand::EndEvent}));

    scene.view->enable_render(false, false);
    events.clear();
    scene.set_colour(blue);
    scene.view->set_position({0, 0, 6});
    scene.view->request_render();
    EXPECT_EQ(events, (std::vector<unsigned long>{5, 5}));
    EXPECT_EQ(scene.mismatches(red), 0);

    events.clear();
    scene.view->render();
    EXPECT_EQ(events, (std::vector<unsigned long>{vtkCommand::StartEvent, 4}));
    EXPECT_EQ(scene.mismatches(blue), 0);

    scene.view->enable_render(true, false);
    events.clear();
    scene.set_colour(green);
    scene.view->request_render();
    EXPECT_EQ(events, (std::vector<unsigned long>{vtkCommand::StartEvent, 4}));
    EXPECT_EQ(scene.mismatches(green), 0);
}

TEST_F(ViewRender, WindowsComeAndGoWithoutLeakingContexts) {
    for (int cycle = 0; cycle < 50; ++cycle) {
        Scene scene(factory, red, 32, 24);
        ASSERT_EQ(ServerWindowFactory::live_contexts(), 1);
        scene.view->render();
        ASSERT_EQ(scene.mismatches(red, 1), 0) << "cycle " << cycle;
        factory.core_de_initialize_window(scene.view);
        ASSERT_EQ(scene.view->render_window(), nullptr);
    }
    EXPECT_EQ(ServerWindowFactory::live_contexts(), 0);

    // A factory that goes first takes the windows of the views still holding one.
    auto early = std::make_unique<ServerWindowFactory>();
    Scene left(*early, red, 16, 16);
    EXPECT_EQ(ServerWindowFactory::live_contexts(), 1);
    early.reset();
    EXPECT_EQ(ServerWindowFactory::live_contexts(), 0);
    EXPECT_EQ(left.view->render_window(), nullptr);
}

} // namespace
