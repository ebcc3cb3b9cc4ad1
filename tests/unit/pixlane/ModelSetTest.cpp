// The kernel's model drawn by GTarvoModelSet into a headless view: shaded faces where the camera
// puts them with the light they should get, hiding, colours, mesh edges, wireframe, and what a
// command rebuilds.
#include <pixlane/GTarvoModelSet.h>
#include <pixlane/GView.h>
#include <pixlane/ServerWindowFactory.h>

#include "tarvo/KernelGraphics.h"
#include "tarvo/TarvoInterface.h"
#include "tarvo_util/TarvoMessage.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <optional>
#include <vector>

#include <vtkCamera.h>
#include <vtkRenderer.h>

namespace {

using Vec = std::array<double, 3>;
using Colour = std::array<int, 3>;

Vec cross(const Vec& a, const Vec& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
Vec unit(const Vec& a) {
    const double n = std::sqrt(a[0] * a[0] + a[1] * a[1] + a[2] * a[2]);
    return {a[0] / n, a[1] / n, a[2] / n};
}

class ModelSet : public ::testing::Test {
protected:
    static constexpr int kWidth = 160, kHeight = 120;

    void SetUp() override {
        ASSERT_TRUE(factory.ok()) << factory.description();
        ASSERT_TRUE(TarvoInterface::init({"tarvo_pixlane_test"}));
        TarvoInterface::silent_cmd("echo off");
        ASSERT_TRUE(GView::add_global_view(view));
        ASSERT_TRUE(factory.core_initialize_window(view));
        factory.resize(view.get(), kWidth, kHeight);
        view->renderer()->SetBackground(0, 0, 0);
        set = std::make_unique<GTarvoModelSet>();
        view->set_model_set(set.get());
    }
    void TearDown() override {
        set.reset();
        GView::remove_global_view(view);
        factory.core_de_initialize_window(view);
        TarvoInterface::destroy();
    }

    void run(const std::string& line) { ASSERT_TRUE(TarvoInterface::silent_cmd(line.c_str())); }

    // A parallel camera looking at the origin from `from`, `scale` model units to the top edge.
    void look(const Vec& from, double scale) {
        camera_from = from;
        camera_scale = scale;
        vtkCamera* camera = view->renderer()->GetActiveCamera();
        camera->ParallelProjectionOn();
        camera->SetParallelScale(scale);
        view->set_focal_point({0, 0, 0});
        view->set_view_up({0, 1, 0});
        view->set_position(from);
    }

    // The model point on the view plane through the origin under pixel (column, row), rows from
    // the bottom, and the direction the camera looks in.
    std::pair<Vec, Vec> ray(double column, double row) const {
        const Vec dop = unit({-camera_from[0], -camera_from[1], -camera_from[2]});
        const Vec right = unit(cross(dop, {0, 1, 0}));
        const Vec up = cross(right, dop);
        const double x = ((column + 0.5) / kWidth * 2 - 1) * camera_scale * kWidth / kHeight;
        const double y = ((row + 0.5) / kHeight * 2 - 1) * camera_scale;
        Vec p{};
        for (int i = 0; i < 3; ++i)
            p[i] = x * right[i] + y * up[i];
        return {p, dop};
    }

    // The axis (0, 1, 2) of the face of the box [lo, hi] that the ray of a pixel enters by, or
    // nothing when it misses.
    std::optional<int> face_hit(double column, double row, const Vec& lo, const Vec& hi) const {
        const auto [p, d] = ray(column, row);
        double enter = -1e300, leave = 1e300;
        int axis = -1;
        for (int i = 0; i < 3; ++i) {
            if (std::abs(d[i]) < 1e-12) {
                if (p[i] < lo[i] || p[i] > hi[i])
                    return std::nullopt;
                continue;
            }
            double t0 = (lo[i] - p[i]) / d[i], t1 = (hi[i] - p[i]) / d[i];
            if (t0 > t1)
                std::swap(t0, t1);
            if (t0 > enter) {
                enter = t0;
                axis = i;
            }
            leave = std::min(leave, t1);
        }
        if (enter > leave)
            return std::nullopt;
        return axis;
    }

    std::vector<unsigned char> frame() {
        view->render();
        std::vector<unsigned char> out(kWidth * kHeight * 4);
        EXPECT_TRUE(view->get_rgba_pixels(kWidth, kHeight, out.data()));
        return out;
    }
    static Colour at(const std::vector<unsigned char>& image, int column, int row) {
        const unsigned char* p = &image[(static_cast<std::size_t>(row) * kWidth + column) * 4];
        return {p[2], p[1], p[0]};
    }
    static int brightness(const Colour& c) { return c[0] + c[1] + c[2]; }

    // The pixel whose centre is nearest to the model point (x, y, 0) under a camera on +z.
    static std::pair<int, int> pixel_of(double x, double y, double scale) {
        const double column = (x / (scale * kWidth / kHeight) + 1) / 2 * kWidth - 0.5;
        const double row = (y / scale + 1) / 2 * kHeight - 0.5;
        return {static_cast<int>(std::lround(column)), static_cast<int>(std::lround(row))};
    }

    ServerWindowFactory factory;
    std::shared_ptr<GView> view = std::make_shared<GView>();
    std::unique_ptr<GTarvoModelSet> set;
    Vec camera_from{0, 0, 10};
    double camera_scale = 1;
};

TEST_F(ModelSet, ShadedBoxFacesAreWhereTheCameraPutsThemWithTheirLight) {
    run("create box 2");
    run("color volume 1 rgb 1 1 1");
    // Each visible face meets the headlight at its own angle, so each has its own grey.
    look({3, 4, 6}, 2.2);
    const auto image = frame();
    const Vec lo{-1, -1, -1}, hi{1, 1, 1};
    const Vec dop = unit({-3, -4, -6});
    int checked = 0, wrong = 0;
    for (int row = 0; row < kHeight; row += 2)
        for (int column = 0; column < kWidth; column += 2) {
            const auto hit = face_hit(column, row, lo, hi);
            // Curves (two pixels wide) and vertices (five) cover the borders of the faces.
            bool clear = true;
            for (int dr = -3; dr <= 3 && clear; dr += 3)
                for (int dc = -3; dc <= 3 && clear; dc += 3)
                    clear = face_hit(column + dc, row + dr, lo, hi) == hit;
            if (!clear)
                continue;
            // Ambient 0.1 plus diffuse 0.9 under a light along the view direction.
            const int expected =
                hit ? static_cast<int>(std::lround(
                          255 * (0.1 + 0.9 * std::abs(dop[static_cast<std::size_t>(*hit)]))))
                    : 0;
            const Colour got = at(image, column, row);
            ++checked;
            for (int c = 0; c < 3; ++c)
                if (std::abs(got[c] - expected) > 6) {
                    ++wrong;
                    ADD_FAILURE_AT(__FILE__, __LINE__)
                        << "pixel " << column << "," << row << " channel " << c << ": " << got[c]
                        << " expected " << expected;
                    break;
                }
            if (wrong > 5)
                return;
        }
    EXPECT_GT(checked, 1000);
    EXPECT_EQ(wrong, 0);
}

// A box has faces reversed in its shell: their triangles must still wind outwards.
TEST_F(ModelSet, SurfaceTrianglesFaceOutOfTheirSolid) {
    run("create box 2 at 1 1 1");
    std::vector<float> xyz, normals;
    std::vector<int> triangles;
    for (int surface : TarvoInterface::get_entities("surface")) {
        ASSERT_TRUE(tarvo::graphics::surface_facets(surface, xyz, normals, triangles));
        for (std::size_t t = 0; t < triangles.size(); t += 3) {
            Vec a{}, b{}, c{}, centre{};
            for (int i = 0; i < 3; ++i) {
                a[i] = xyz[3 * triangles[t] + i];
                b[i] = xyz[3 * triangles[t + 1] + i];
                c[i] = xyz[3 * triangles[t + 2] + i];
                centre[i] = (a[i] + b[i] + c[i]) / 3 - 1;
            }
            const Vec n = cross({b[0] - a[0], b[1] - a[1], b[2] - a[2]},
                                {c[0] - a[0], c[1] - a[1], c[2] - a[2]});
            EXPECT_GT(n[0] * centre[0] + n[1] * centre[1] + n[2] * centre[2], 0)
                << "surface " << surface << " triangle " << t / 3;
        }
    }
}

// Head-on views of two boxes, volume 1 left of the origin and volume 2 right of it.
TEST_F(ModelSet, VisibilityColourAndModeFollowTheKernel) {
    run("create box 2 at -2 0 0");
    run("create box 2 at 2 0 0");
    look({0, 0, 10}, 3);
    const auto [c1, r1] = pixel_of(-2, 0, 3);
    const auto [c2, r2] = pixel_of(2, 0, 3);
    const auto [edge_c, edge_r] = pixel_of(-1, 0.5, 3); // on volume 1's right-hand curve
    auto image = frame();
    ASSERT_GT(brightness(at(image, c1, r1)), 100);
    ASSERT_GT(brightness(at(image, c2, r2)), 100);

    struct Case {
        const char* command;
        bool one_lit, two_lit; // the centres of the boxes' front faces
        int curve_lit;         // volume 1's right-hand curve over the background (-1: not asked)
    };
    // clang-format off
    const Case cases[] = {
        {"hide volume 2",                   true,  false, -1},
        {"show volume 2",                   true,  true,  -1},
        {"hide surface in volume 1",        false, true,  -1},
        {"show surface in volume 1",        true,  true,  -1},
        {"graphics mode wireframe",         false, false,  1},
        {"graphics mode hiddenline",        false, false,  1},
        {"draw volume 2",                   false, false,  0},
        {"draw clear",                      false, false,  1},
        {"graphics mode transparent",       true,  true,  -1},
        {"graphics mode smoothshade",       true,  true,  -1},
    };
    // clang-format on
    for (const Case& c : cases) {
        run(c.command);
        image = frame();
        EXPECT_EQ(brightness(at(image, c1, r1)) > 30, c.one_lit) << c.command;
        EXPECT_EQ(brightness(at(image, c2, r2)) > 30, c.two_lit) << c.command;
        if (c.curve_lit >= 0) {
            // Faces unlit, the curves carry the volume's colour.
            bool lit = false;
            for (int dc = -1; dc <= 1; ++dc)
                lit = lit || brightness(at(image, edge_c + dc, edge_r)) > 30;
            EXPECT_EQ(lit, c.curve_lit == 1) << c.command;
        }
    }

    run("color volume 1 red");
    run("color volume 2 rgb 0 0 1");
    image = frame();
    const Colour one = at(image, c1, r1), two = at(image, c2, r2);
    EXPECT_GT(one[0], 150);
    EXPECT_LT(one[1] + one[2], 20);
    EXPECT_GT(two[2], 150);
    EXPECT_LT(two[0] + two[1], 20);

    // A highlighted volume takes the highlight colour, and gives it back when unselected.
    run("select volume 1");
    const Colour lit = at(frame(), c1, r1);
    EXPECT_GT(lit[1], 150) << "highlight is yellow";
    run("select none");
    EXPECT_EQ(at(frame(), c1, r1), one);
}

TEST_F(ModelSet, LabelsFollowTheKernelsSettingAndVisibility) {
    run("create box 2");
    run("volume 1 name 'brick'");
    run("color volume 1 rgb 0 0 1");
    look({0, 0, 10}, 2);
    // The label's text: light pixels around the volume's centre, where the face is blue.
    const auto text_pixels = [&] {
        const auto image = frame();
        const auto [c, r] = pixel_of(0, 0, 2);
        int count = 0;
        for (int dc = -40; dc <= 40; ++dc)
            for (int dr = -10; dr <= 10; ++dr) {
                const Colour p = at(image, c + dc, r + dr);
                count += p[0] > 150 && p[1] > 150 ? 1 : 0;
            }
        return count;
    };
    EXPECT_EQ(text_pixels(), 0);
    run("label volume on");
    const int id = text_pixels();
    EXPECT_GT(id, 0);
    run("label volume name");
    const int name = text_pixels();
    EXPECT_GT(name, id); // "brick" against "1"
    run("label volume both");
    EXPECT_GT(text_pixels(), name); // "brick (1)"
    run("hide volume 1");
    EXPECT_EQ(text_pixels(), 0);
    run("show volume 1");
    run("label volume off");
    EXPECT_EQ(text_pixels(), 0);
    // A hex's label sits at its centre, the volume's.
    run("mesh volume 1");
    run("label hex on");
    EXPECT_GT(text_pixels(), 0);
}

// Hexes of a box (scaled Jacobian 1, the best) and tets of another (worse) coloured by their
// quality: the two boxes take different colours, the hexes the blue of the good end, a colour bar
// appears at the right, and `quality draw clear` gives back the picture before.
TEST_F(ModelSet, QualityDrawingColoursElementsByTheirMetric) {
    run("create box 2 at -2 0 0");
    run("create box 2 at 2 0 0");
    run("volume 1 interval 1");
    run("volume 2 scheme tetmesh");
    run("mesh volume all");
    run("color volume all rgb 1 1 1");
    look({0, 0, 10}, 3);
    // The mean colour of a 7 x 7 window, so that a mesh edge through it counts for little.
    const auto mean = [](const std::vector<unsigned char>& image, std::pair<int, int> centre) {
        std::array<double, 3> sum{0, 0, 0};
        for (int dc = -3; dc <= 3; ++dc)
            for (int dr = -3; dr <= 3; ++dr)
                for (int i = 0; i < 3; ++i)
                    sum[i] += at(image, centre.first + dc, centre.second + dr)[i] / 49.0;
        return sum;
    };
    const auto hexes = pixel_of(-2.3, 0.4, 3), tets = pixel_of(2.3, 0.4, 3);
    const std::pair<int, int> bar{static_cast<int>(0.93 * kWidth), kHeight / 2};
    const auto before = frame();
    EXPECT_EQ(brightness(at(before, bar.first, bar.second)), 0);

    run("quality volume all draw");
    const auto drawn = frame();
    const auto hex = mean(drawn, hexes), tet = mean(drawn, tets);
    EXPECT_GT(hex[2], hex[0] + 100) << "the best value is blue";
    EXPECT_GT(std::abs(hex[0] - tet[0]) + std::abs(hex[1] - tet[1]) + std::abs(hex[2] - tet[2]),
              60.0);
    EXPECT_GT(brightness(at(drawn, bar.first, bar.second)), 0);

    EXPECT_FALSE(TarvoInterface::silent_cmd("quality draw"));
    run("quality draw clear");
    EXPECT_EQ(frame(), before);
}

TEST_F(ModelSet, MeshEdgesAppearAlongTheGridLines) {
    run("create box 10");
    run("volume 1 size 2");
    run("volume 1 scheme map");
    look({0, 0, 20}, 6);
    // Grid lines of the front face lie at x = -5, -3, ..., 5; cell middles at -4, -2, ...
    const auto lines_stand_out = [&] {
        const auto image = frame();
        int standing = 0;
        for (double y : {-3.7, -0.4, 2.6}) {
            const auto [line_c, row] = pixel_of(1, y, 6);
            const auto [mid_c, mid_row] = pixel_of(2, y, 6);
            const int mid = brightness(at(image, mid_c, mid_row));
            int most = 0;
            for (int dc = -1; dc <= 1; ++dc)
                most = std::max(most, std::abs(brightness(at(image, line_c + dc, row)) - mid));
            standing += most > 60;
        }
        return standing;
    };
    EXPECT_EQ(lines_stand_out(), 0);
    const long before = set->mesh_rebuilds();
    run("mesh volume 1");
    EXPECT_EQ(set->mesh_rebuilds(), before + 1);
    // Dark on shaded faces, in the entity's colour where the faces are not drawn (wireframe) or
    // take the background's colour (hidden line).
    for (const char* mode :
         {"wireframe", "hiddenline", "transparent", "flatshade", "smoothshade"}) {
        run(std::string("graphics mode ") + mode);
        EXPECT_EQ(lines_stand_out(), 3) << mode;
    }

    // The mesh switch takes it away again, and deleting the mesh (no event) is noticed.
    run("graphics mesh off");
    EXPECT_EQ(lines_stand_out(), 0);
    run("graphics mesh on");
    EXPECT_EQ(lines_stand_out(), 3);
    run("delete mesh volume 1 propagate");
    EXPECT_EQ(lines_stand_out(), 0);
}

TEST_F(ModelSet, ProjectionFollowsTheKernelsPerspectiveSwitch) {
    run("create box 2");
    look({0, 0, 10}, 2);
    // From +z a box of side 2 shows its top face alone, a square: in parallel half the view's
    // height (scale 2), in perspective what its distance (9) and the view angle give. Its edges,
    // drawn 2 pixels wide, and its corner points add about 2 pixels; the two differ by 10.
    const auto square = [](const std::vector<unsigned char>& image) {
        long lit = 0;
        for (int row = 0; row < kHeight; ++row)
            for (int column = 0; column < kWidth; ++column)
                lit += brightness(at(image, column, row)) > 0;
        return std::sqrt(static_cast<double>(lit));
    };
    vtkCamera* camera = view->renderer()->GetActiveCamera();
    EXPECT_NEAR(square(frame()), kHeight / 2.0 + 2, 2.0);

    std::vector<unsigned long> asked;
    view->enable_render(false, false);
    view->set_end_render_callback([&](unsigned long id) { asked.push_back(id); });
    run("graphics perspective on");
    EXPECT_EQ(asked, std::vector<unsigned long>{5});
    const double half_height = 9 * std::tan(camera->GetViewAngle() / 2 * M_PI / 180);
    EXPECT_NEAR(square(frame()), kHeight / half_height + 2, 2.0);
    EXPECT_FALSE(camera->GetParallelProjection());

    asked.clear();
    run("graphics perspective off");
    EXPECT_EQ(asked, std::vector<unsigned long>{5});
    view->render();
    EXPECT_TRUE(camera->GetParallelProjection());
}

TEST_F(ModelSet, ACommandRebuildsOnlyWhatItChangedAndAsksOnce) {
    for (int i = 0; i < 3; ++i)
        run("create box 1 at " + std::to_string(3 * i) + " 0 0");
    set->update();
    EXPECT_EQ(set->piece_count(), 3u);
    const long geometry = set->geometry_rebuilds();
    const long tessellated = tarvo::graphics::tessellated_bodies();

    std::vector<unsigned long> asked;
    view->enable_render(false, false);
    view->set_end_render_callback([&](unsigned long id) { asked.push_back(id); });

    run("move volume 2 by 0 1 0");
    EXPECT_EQ(asked, std::vector<unsigned long>{5});
    view->render();
    EXPECT_EQ(set->geometry_rebuilds(), geometry + 1);
    EXPECT_EQ(tarvo::graphics::tessellated_bodies(), tessellated + 1);

    // Nothing drawn changes: no request, no rebuild.
    asked.clear();
    run("list volume 1");
    EXPECT_TRUE(asked.empty());

    // Public view functions end no command: the camera's reset is asked for, a query is not,
    // and flush_graphics asks even with nothing changed.
    tarvo::graphics::set_camera({{0, 0, 0}, {5, 0, 10}, {0, 1, 0}});
    view->render();
    asked.clear();
    TarvoInterface::reset_camera();
    EXPECT_EQ(asked, std::vector<unsigned long>{5});
    view->render();
    asked.clear();
    TarvoInterface::get_view_from();
    EXPECT_TRUE(asked.empty());
    TarvoInterface::flush_graphics();
    EXPECT_EQ(asked, std::vector<unsigned long>{5});
    view->render();
    asked.clear();

    // A colour is no rebuild, but a request.
    run("color volume 3 green");
    EXPECT_EQ(asked, std::vector<unsigned long>{5});
    view->render();
    EXPECT_EQ(set->geometry_rebuilds(), geometry + 1);

    run("delete volume 1");
    view->render();
    EXPECT_EQ(set->piece_count(), 2u);
    EXPECT_EQ(set->geometry_rebuilds(), geometry + 1);
}

} // namespace
