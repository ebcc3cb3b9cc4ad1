// Sizes, intervals, biases and schemes through the command language and the public queries: how
// firmness and size type follow the settings nearest a curve, the interval lengths a bias gives,
// scheme words, refused input, and that undo and compress ids keep settings on their entities.

#include "MeshTestSupport.h"

#include "geometry/GeometryMemo.h"
#include "mesh/Sizing.h"

#include <BRepBuilderAPI_MakeEdge.hxx>
#include <gp_Elips.hxx>

#include <cmath>
#include <map>

namespace mesh_test {
namespace {

using namespace TarvoInterface;

class SizingTest : public MeshTest {
protected:
    // Every answer of the settings of the model's volumes, surfaces and curves, and the globals.
    static std::string settings() {
        std::string out = std::to_string(get_tetmesh_growth_factor(1)) + " " +
                          std::to_string(get_trimesh_surface_gradation()) + "\n";
        for (const char* type : {"volume", "surface", "curve"})
            for (int id : get_entities(type))
                out += std::string(type) + " " + std::to_string(id) + ": " +
                       std::to_string(get_mesh_intervals(type, id)) + " " +
                       get_mesh_interval_firmness(type, id) + " " +
                       std::to_string(get_mesh_size(type, id)) + " " +
                       get_mesh_size_type(type, id) + " " + get_mesh_scheme(type, id) + " " +
                       get_mesh_scheme_firmness(type, id) + " " +
                       std::to_string(get_curve_bias_geometric_factor(id)) + "\n";
        return out;
    }
    // The ends of curve 1 of a box, in the order of ids.
    static std::vector<int> ends(int curve) { return get_relatives("curve", curve, "vertex"); }
};

// A 10 cube: its automatic size at the default factor is 1 (ten intervals per edge). The curves
// of surface 1 follow the nearest setting: their own, surface 1's, then volume 1's.
TEST_F(SizingTest, NearestSettingDecidesIntervalsFirmnessAndSizeType) {
    run("create box 10");
    EXPECT_NEAR(get_default_auto_size(), 1.0, 1e-12);
    const std::vector<int> on_surface = get_relatives("surface", 1, "curve");
    ASSERT_EQ(on_surface.size(), 4u);
    const int a = on_surface[0], b = on_surface[1];
    int off_surface = 0;
    for (int c : get_entities("curve"))
        if (std::find(on_surface.begin(), on_surface.end(), c) == on_surface.end())
            off_surface = c;

    struct Step {
        std::string command;
        int curve;
        int intervals;
        const char* firmness;
        const char* size_type;
        int requested; // requested intervals of the curve
        const char* requested_firmness;
    };
    const std::vector<Step> steps = {
        {"", a, 10, "LIMP", "NOT_SET", 0, "LIMP"},
        {"volume 1 size 2.5", a, 4, "SOFT", "USER_SET", 0, "LIMP"},
        {"surface 1 size 5", a, 2, "SOFT", "USER_SET", 0, "LIMP"},
        {"", off_surface, 4, "SOFT", "USER_SET", 0, "LIMP"},
        {"surface 1 interval 6", a, 6, "HARD", "USER_SET", 0, "LIMP"},
        {"curve " + std::to_string(a) + " size 3", a, 3, "SOFT", "USER_SET", 3, "SOFT"},
        {"", b, 6, "HARD", "USER_SET", 0, "LIMP"},
        {"curve " + std::to_string(a) + " interval 7", a, 7, "HARD", "USER_SET", 7, "HARD"},
        {"volume 1 size auto factor 10", off_surface, 5, "SOFT", "CALCULATED", 0, "LIMP"},
    };
    for (const Step& s : steps) {
        if (!s.command.empty())
            run(s.command);
        SCOPED_TRACE(s.command + " / curve " + std::to_string(s.curve));
        EXPECT_EQ(get_mesh_intervals("curve", s.curve), s.intervals);
        EXPECT_EQ(get_mesh_interval_firmness("curve", s.curve), s.firmness);
        EXPECT_EQ(get_mesh_size_type("curve", s.curve), s.size_type);
        EXPECT_EQ(get_requested_mesh_intervals("curve", s.curve), s.requested);
        EXPECT_EQ(get_requested_mesh_interval_firmness("curve", s.curve), s.requested_firmness);
        EXPECT_EQ(tarvo::kernel::mesh::curve_plan(s.curve).intervals, s.intervals);
    }
    EXPECT_EQ(get_requested_mesh_size_type("volume", 1), "CALCULATED");
    EXPECT_NEAR(get_requested_mesh_size("volume", 1), 2.0, 1e-12);
    EXPECT_EQ(get_mesh_interval_firmness("surface", 1), "HARD");
    EXPECT_EQ(get_mesh_intervals("surface", 1), 6);
    EXPECT_EQ(has_valid_size("surface", 2), 1);
    EXPECT_TRUE(output->has_line("Set interval 6 on surface 1")) << output->all();
    // Unknown entities answer the failure value without an error.
    const int errors = get_error_count();
    EXPECT_EQ(get_mesh_intervals("curve", 999), 0);
    EXPECT_EQ(get_mesh_size_type("vertex", 1), "");
    EXPECT_EQ(get_curve_bias_start_vertex_id(999), -1);
    EXPECT_EQ(get_error_count(), errors);
}

TEST_F(SizingTest, BiasSpacesIntervalsGeometrically) {
    run("create box 10");
    run("curve 1 interval 4");
    EXPECT_EQ(get_curve_bias_type(1), "");
    EXPECT_EQ(get_mesh_scheme("curve", 1), "equal");
    EXPECT_NEAR(get_curve_bias_fine_size(1), 2.5, 1e-12);

    struct Case {
        std::string command;
        const char* type;
        double first, coarse, ratio1, ratio2, factor2;
    };
    // Bias 2 over 4 intervals: 1 2 4 8 fifteenths. Dual bias 2: 1 2 2 1 sixths; over 5
    // intervals 1 2 4 2 1 tenths.
    const std::vector<Case> cases = {
        {"curve 1 bias 2", "bias", 10.0 / 15, 80.0 / 15, 1.0 / 8, 1.0, 1.0},
        {"curve 1 dualbias factor 2", "dualbias", 10.0 / 6, 20.0 / 6, 0.5, 2.0, 0.5},
        {"curve 1 interval 5", "dualbias", 1.0, 4.0, 0.25, 4.0, 0.5},
    };
    for (const Case& c : cases) {
        run(c.command);
        SCOPED_TRACE(c.command);
        EXPECT_EQ(get_curve_bias_type(1), c.type);
        EXPECT_EQ(get_mesh_scheme("curve", 1), c.type);
        EXPECT_EQ(get_mesh_scheme_firmness("curve", 1), "HARD");
        EXPECT_DOUBLE_EQ(get_curve_bias_geometric_factor(1), 2.0);
        EXPECT_DOUBLE_EQ(get_curve_bias_geometric_factor2(1), c.factor2);
        EXPECT_NEAR(get_curve_bias_first_interval_length(1), c.first, 1e-9);
        EXPECT_NEAR(get_curve_bias_first_interval_fraction(1), c.first / 10, 1e-9);
        EXPECT_NEAR(get_curve_bias_fine_size(1), c.first, 1e-9);
        EXPECT_NEAR(get_curve_bias_coarse_size(1), c.coarse, 1e-9);
        EXPECT_NEAR(get_curve_bias_first_last_ratio1(1), c.ratio1, 1e-9);
        EXPECT_NEAR(get_curve_bias_last_first_ratio1(1), 1 / c.ratio1, 1e-9);
        EXPECT_NEAR(get_curve_bias_first_last_ratio2(1), c.ratio2, 1e-9);
    }

    // A bias from either end: exactly one end is the curve's start.
    const std::vector<int> v = ends(1);
    ASSERT_EQ(v.size(), 2u);
    int from_start = 0;
    for (int vertex : v) {
        run("curve 1 bias 1.5 start vertex " + std::to_string(vertex));
        bool value = false;
        ASSERT_TRUE(get_curve_bias_from_start(1, value));
        from_start += value;
        EXPECT_TRUE(get_curve_bias_from_start_set(1));
        EXPECT_EQ(get_curve_bias_start_vertex_id(1), vertex);
        EXPECT_EQ(tarvo::kernel::mesh::curve_plan(1).from_end, !value);
    }
    EXPECT_EQ(from_start, 1);

    run("curve 1 bias 1");
    EXPECT_EQ(get_curve_bias_type(1), "");
    bool value = true;
    EXPECT_FALSE(get_curve_bias_from_start(1, value));
    EXPECT_EQ(get_curve_bias_start_vertex_id(1), 0);
    EXPECT_EQ(get_mesh_scheme_firmness("curve", 1), "LIMP");
}

// The mesher lays a bias out from the vertex the queries name: the mesh edge at that vertex is
// the first interval.
TEST_F(SizingTest, MeshedBiasGrowsFromItsStartVertex) {
    // Every curve of a box, since faces use some of its edges reversed.
    run("create box 10");
    run("curve all interval 4");
    for (int curve : get_entities("curve"))
        for (int vertex : ends(curve)) {
            const std::string c = "curve " + std::to_string(curve);
            run(c + " bias 2 start vertex " + std::to_string(vertex));
            run("mesh " + c);
            const Point at = get_center_point("vertex", vertex);
            std::vector<double> lengths;
            double at_vertex = 0;
            for (int e : in("edge", c)) {
                const auto n = get_connectivity("edge", e);
                const Point p = node(n[0]), q = node(n[1]);
                lengths.push_back(std::hypot(p[0] - q[0], p[1] - q[1], p[2] - q[2]));
                for (const Point& x : {p, q})
                    if (std::hypot(x[0] - at[0], x[1] - at[1], x[2] - at[2]) < 1e-9)
                        at_vertex = lengths.back();
            }
            SCOPED_TRACE(c + " from vertex " + std::to_string(vertex));
            ASSERT_EQ(lengths.size(), 4u);
            EXPECT_NEAR(at_vertex, get_curve_bias_first_interval_length(curve), 1e-6);
            EXPECT_NEAR(*std::max_element(lengths.begin(), lengths.end()),
                        get_curve_bias_coarse_size(curve), 1e-6);
            run("delete mesh " + c);
        }
}

TEST_F(SizingTest, SchemesAndGlobals) {
    run("create box 10");
    EXPECT_EQ(get_mesh_scheme("volume", 1), "auto");
    EXPECT_EQ(get_mesh_scheme_firmness("volume", 1), "LIMP");
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"volume 1 scheme map", "map"},         {"volume 1 scheme sub", "submap"},
        {"volume 1 scheme tetmesh", "tetmesh"}, {"volume 1 scheme polyhedron", "polyhedron"},
        {"surface 2 scheme pave", "pave"},      {"surface 2 scheme trimesh", "trimesh"},
    };
    for (const auto& [command, word] : cases) {
        run(command);
        const std::string type = command.substr(0, command.find(' '));
        EXPECT_EQ(get_mesh_scheme(type, type == "volume" ? 1 : 2), word) << command;
        EXPECT_EQ(get_mesh_scheme_firmness(type, type == "volume" ? 1 : 2), "HARD") << command;
    }
    run("volume 1 scheme sweep source surface 1 target 2");
    int source = 0, target = 0;
    tarvo::kernel::mesh::sweep_surfaces(1, source, target);
    EXPECT_EQ(source, 1);
    EXPECT_EQ(target, 2);
    EXPECT_EQ(tarvo::kernel::mesh::scheme_of(tarvo::kernel::GeomKind::Volume, 1),
              tarvo::kernel::mesh::Scheme::Sweep);

    EXPECT_DOUBLE_EQ(get_tetmesh_growth_factor(1), 1.0);
    run("set tetmesher growth 1.4");
    run("set trimesher gradation 2");
    EXPECT_DOUBLE_EQ(get_tetmesh_growth_factor(1), 1.4);
    EXPECT_DOUBLE_EQ(get_trimesh_volume_gradation(), 2.0);
    EXPECT_DOUBLE_EQ(get_tetmesh_growth_factor(99), 0.0);

    // Automatic sizes and budgets of the 10 cube: a factor scales the size; a budget counts
    // elements of that size.
    EXPECT_NEAR(get_auto_size("volume", {1}, 10), 2.0, 1e-12);
    EXPECT_EQ(get_auto_size("volume", {1}, 11), 0.0);
    EXPECT_EQ(get_element_budget("hex", {1}, 5), 1000);
    EXPECT_EQ(get_element_budget("HEX8", {1}, 10), 125);
    // Surface 1's own box (10 x 10) gives it the size sqrt(2/3); 100 / (sqrt(3)/4 * 2/3) tris.
    EXPECT_EQ(get_element_budget("tri", {1}, 5), 346);
    EXPECT_EQ(get_element_budget("wedge", {1}, 5), 0);
}

// Without sizes, an unmerged volume is meshed at the scale of its own box, never coarser than the
// model's (a sphere of radius 1 beside a box of 100 got a seam of one interval, which Gmsh could
// not mesh), and a round curve gets at least one interval per 30 degrees of turning (a rod's
// circles). Merged volumes keep the model's size, so that the curves they share agree; a size
// that was asked for is followed as it is.
TEST_F(SizingTest, AutomaticSizesFollowEachPartAndKeepRoundCurvesRound) {
    run("create box 100");
    run("create sphere radius 1 at 300 0 0");
    run("create cylinder radius 1 height 200 at 0 300 0");
    EXPECT_NEAR(get_mesh_size("volume", 2), get_auto_size("volume", {2}, 5), 1e-12);
    EXPECT_LT(get_mesh_size("volume", 2), get_default_auto_size() / 10);
    for (int c : get_relatives("volume", 2, "curve"))
        EXPECT_EQ(get_mesh_intervals("curve", c), 16) << "the sphere's seam: pi / 0.2";
    std::map<std::string, std::vector<int>> rod;
    for (int c : get_relatives("volume", 3, "curve"))
        rod[get_curve_type(c)].push_back(get_mesh_intervals("curve", c));
    EXPECT_EQ(rod["Circle"], (std::vector<int>{12, 12})) << "6.28 at a size of 11.5";
    EXPECT_EQ(rod["Line"], (std::vector<int>{17}));
    run("mesh volume all");
    EXPECT_GT(get_tet_count(), 0u);

    run("delete mesh volume all propagate");
    run("volume 3 size 50");
    rod.clear();
    for (int c : get_relatives("volume", 3, "curve"))
        rod[get_curve_type(c)].push_back(get_mesh_intervals("curve", c));
    EXPECT_EQ(rod["Circle"], (std::vector<int>{1, 1}));
    EXPECT_EQ(rod["Line"], (std::vector<int>{4}));

    run("reset");
    run("create box 10");
    run("create box 10 at 10 0 0");
    run("create box 1 at 50 0 0");
    run("merge all");
    EXPECT_NEAR(get_mesh_size("volume", 1), get_default_auto_size(), 1e-12);
    EXPECT_NEAR(get_mesh_size("volume", 3), get_auto_size("volume", {3}, 5), 1e-12);

    // Curves other than lines and circles are measured by their sampled tangents: a quarter of an
    // ellipse turns by a right angle, a whole one by a full turn.
    const gp_Elips ellipse(gp_Ax2(), 3, 1);
    EXPECT_NEAR(tarvo::kernel::compute_turning(BRepBuilderAPI_MakeEdge(ellipse, 0, M_PI / 2)),
                M_PI / 2, 0.01);
    EXPECT_NEAR(tarvo::kernel::compute_turning(BRepBuilderAPI_MakeEdge(ellipse)), 2 * M_PI, 0.02);
}

TEST_F(SizingTest, RefusedInputChangesNothing) {
    run("create box 10");
    run("volume 1 size 2");
    run("curve 1 bias 2");
    expect_refused(
        {
            {"volume 1 size 0", "at least"},
            {"volume 1 size -1", "at least"},
            {"volume 1 size 1e8", ""},
            {"volume 1 size auto factor 11", "1 (fine) to 10"},
            {"curve 1 interval 0", "from 1"},
            {"curve 1 interval 2.5", ""},
            {"curve 1 bias 0", "bias factor"},
            {"curve 1 bias 2 start vertex 99", "not an end"},
            {"surface 1 bias 2", "curves"},
            {"vertex 1 size 1", "volumes, surfaces and curves, not on vertex 1"},
            {"volume 1 scheme hexmesh", "volume schemes: map submap sweep"},
            {"surface 1 scheme sweep", "not a surface scheme"},
            {"volume 1 scheme sweep source 1 target 1", "different"},
            {"volume 1 scheme map source 1", "unexpected"},
            {"set tetmesher growth 0.5", "from 1"},
            {"volume 1 size 3 extra", "unexpected"},
        },
        settings);
}

TEST_F(SizingTest, UndoAndCompressIdsKeepSettingsOnTheirEntities) {
    run("create box 10");
    run("create box 4 at 20 0 0");
    const std::string plain = settings();
    run("volume 2 size 0.5");
    run("curve 1 interval 3");
    run("set trimesher gradation 1.5");
    const std::string set = settings();
    ASSERT_NE(set, plain);
    run("undo");
    run("undo");
    run("undo");
    EXPECT_EQ(settings(), plain);

    // Volume 2 becomes volume 1 and keeps its size; the deleted box's settings go with it.
    run("volume 1 size 3");
    run("volume 2 size 0.5");
    run("delete volume 1");
    run("compress ids");
    EXPECT_EQ(get_requested_mesh_size_type("volume", 1), "USER_SET");
    EXPECT_DOUBLE_EQ(get_requested_mesh_size("volume", 1), 0.5);
    run("reset");
    run("create box 10");
    EXPECT_EQ(get_requested_mesh_size_type("volume", 1), "NOT_SET");
}

} // namespace
} // namespace mesh_test
