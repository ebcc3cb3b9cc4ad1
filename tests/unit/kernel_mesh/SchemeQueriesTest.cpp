// The questions on how the mesher treats an entity (sweep pair, meshability, interval parity,
// corner roles, mesh-error advice, points of a quad on its surface) on one model: an L-shaped
// extrusion, a cylinder and a cube.

#include "MeshTestSupport.h"

#include <algorithm>
#include <functional>

namespace ti = TarvoInterface;

namespace {

using mesh_test::MeshTest;
using Ids = std::vector<int>;

// The surface of `volume` whose normal is `axis` (0 x, 1 y, 2 z) with sign `sign`.
int face_along(int volume, int axis, double sign) {
    for (int s : ti::get_relatives("volume", volume, "surface"))
        if (ti::is_surface_planar(s) && ti::get_surface_normal(s)[axis] * sign > 0.999)
            return s;
    return 0;
}

TEST_F(MeshTest, SchemeQueriesAnswerAsTheMesherWorks) {
    run("create box 10 10 2");
    run("create box 2 10 10 at -4 0 4");
    run("unite volume 1 2"); // volume 1: an L in x-z, extruded along y
    run("create cylinder radius 2 height 4 at 20 0 0");
    run("create box 4 at -20 0 0");
    const Ids vols = ti::get_entities("volume");
    ASSERT_EQ(vols.size(), 3u);
    const int l = vols[0], cube = vols[2];
    const int l_front = face_along(l, 1, -1), l_back = face_along(l, 1, 1);
    const int cube_top = face_along(cube, 2, 1), cube_bottom = face_along(cube, 2, -1);
    ASSERT_TRUE(l_front && l_back && cube_top && cube_bottom);
    const Ids top_curves = ti::get_relatives("surface", cube_top, "curve");
    ASSERT_EQ(top_curves.size(), 4u);

    // Corner roles of the L's end face: five ends and the reentrant corner, adding up to 4.
    const auto corners = ti::get_submap_corner_types(l_front);
    ASSERT_EQ(corners.size(), 6u);
    int sum = 0, reentrant = 0;
    for (const auto& [vertex, code] : corners) {
        sum += code;
        if (code == -1)
            reentrant = vertex;
    }
    EXPECT_EQ(sum, 4);
    ASSERT_NE(reentrant, 0);
    const auto other = std::find_if(corners.begin(), corners.end(), [&](const auto& c) {
                           return c.second == 1;
                       })->first;

    struct Row {
        const char* what;
        std::function<std::string()> answer;
        std::string expected;
    };
    auto text = [](const Ids& ids) {
        std::string out;
        for (int id : ids)
            out += (out.empty() ? "" : " ") + std::to_string(id);
        return out;
    };
    const std::string front = std::to_string(l_front), back = std::to_string(l_back);
    const std::vector<Row> rows = {
        {"L sweeps between its end faces",
         [&] { return text(ti::get_source_surfaces(l)) + "/" + text(ti::get_target_surfaces(l)); },
         std::to_string(std::min(l_front, l_back)) + "/" +
             std::to_string(std::max(l_front, l_back))},
        {"named pair wins",
         [&] {
             run("volume " + std::to_string(l) + " scheme sweep source surface " + back +
                 " target surface " + front);
             return text(ti::get_source_surfaces(l)) + "/" + text(ti::get_target_surfaces(l));
         },
         back + "/" + front},
        {"tets have no sweep pair",
         [&] {
             run("volume " + std::to_string(l) + " scheme tetmesh");
             return text(ti::get_source_surfaces(l));
         },
         ""},
        {"reentrant vertex", [&] { return ti::get_vertex_type(l_front, reentrant); }, "corner"},
        {"convex vertex", [&] { return ti::get_vertex_type(l_front, other); }, "end"},
        {"vertex off the surface",
         [&] {
             return ti::get_vertex_type(cube_top,
                                        ti::get_relatives("surface", l_front, "vertex")[0]);
         },
         ""},
        {"cube meshable", [&] { return std::to_string(ti::is_volume_meshable(cube)); }, "1"},
        {"sweep between touching faces",
         [&] {
             run("volume " + std::to_string(cube) + " scheme sweep source surface " +
                 std::to_string(cube_top) + " target surface " +
                 std::to_string(ti::get_relatives("curve", top_curves[0], "surface")[0] == cube_top
                                    ? ti::get_relatives("curve", top_curves[0], "surface")[1]
                                    : ti::get_relatives("curve", top_curves[0], "surface")[0]));
             return std::to_string(ti::is_volume_meshable(cube));
         },
         "0"},
        {"sweep between opposite faces",
         [&] {
             run("volume " + std::to_string(cube) + " scheme sweep source surface " +
                 std::to_string(cube_top) + " target surface " + std::to_string(cube_bottom));
             return std::to_string(ti::is_volume_meshable(cube));
         },
         "1"},
        {"even boundary",
         [&] {
             run("volume " + std::to_string(cube) + " interval 2");
             return std::to_string(ti::is_interval_count_odd(cube_top));
         },
         "0"},
        {"one odd curve",
         [&] {
             run("curve " + std::to_string(top_curves[0]) + " interval 3");
             return std::to_string(ti::is_interval_count_odd(cube_top));
         },
         "1"},
        {"advice for a failed mesh",
         [&] {
             run("volume " + std::to_string(l) + " scheme polyhedron");
             EXPECT_FALSE(ti::is_volume_meshable(l));
             EXPECT_FALSE(ti::cmd(("mesh volume " + std::to_string(l)).c_str()));
             const auto advice = ti::get_mesh_error_solutions(1);
             EXPECT_TRUE(ti::get_mesh_error_solutions(2).empty());
             if (advice.size() != 2)
                 return std::string("advice: ") + std::to_string(advice.size());
             run(advice[0]);
             run("mesh volume " + std::to_string(l));
             return std::to_string(ti::get_volume_element_count(l) > 0);
         },
         "1"},
        {"graphics version", [&] { return ti::get_graphics_version().substr(0, 5); }, "VTK 9"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(row.answer(), row.expected) << row.what << "\n" << output->all();
}

// Points of the unit square of a quad land on its surface: the corners on the quad's nodes in
// the order node00, node10, and the middle on the cylinder, outside the quad's flat middle.
TEST_F(MeshTest, UnitSquareOfAQuadProjectsOntoItsSurface) {
    run("create cylinder radius 2 height 4");
    run("mesh volume 1");
    int side = 0;
    for (int s : ti::get_relatives("volume", 1, "surface"))
        if (!ti::is_surface_planar(s))
            side = s;
    ASSERT_NE(side, 0);
    const Ids quads = in("quad", "surface " + std::to_string(side));
    ASSERT_FALSE(quads.empty());
    const Ids c = ti::get_connectivity("quad", quads[0]);
    const auto out =
        ti::project_unit_square({{0, 0}, {1, 0}, {0, 1}, {0.5, 0.5}}, side, quads[0], c[1], c[0]);
    ASSERT_EQ(out.size(), 4u);
    for (int k = 0; k < 3; ++k) {
        const auto expected = node(k == 0 ? c[1] : k == 1 ? c[0] : c[2]);
        for (int i = 0; i < 3; ++i)
            EXPECT_NEAR(out[k][i], expected[i], 1e-9) << k;
    }
    EXPECT_NEAR(std::hypot(out[3][0], out[3][1]), 2.0, 1e-9);
    for (const auto& bad : std::vector<std::array<int, 2>>{{c[0], c[2]}, {999999, c[0]}})
        EXPECT_TRUE(ti::project_unit_square({{0, 0}}, side, quads[0], bad[0], bad[1]).empty());
}

} // namespace
