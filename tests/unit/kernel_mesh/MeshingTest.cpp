// Meshing through the command language: tets against stored boundaries, conformity between
// meshes made by separate commands, what undo, delete and geometry changes do to a mesh, and the
// interrupt between volumes.

#include "MeshTestSupport.h"

#include "tarvo_util/TarvoProgressHandler.h"

#include <algorithm>
#include <numeric>
#include <set>

namespace mesh_test {
namespace {

// Coordinates rounded to 1e-9, so that two nodes at one place compare equal.
std::array<long long, 3> key(const Point& p) {
    return {std::llround(p[0] * 1e9), std::llround(p[1] * 1e9), std::llround(p[2] * 1e9)};
}

// Sorted node ids of each face of each tet of a volume.
std::multiset<std::vector<int>> tet_faces(int volume) {
    static const int faces[4][3] = {{0, 1, 3}, {1, 2, 3}, {0, 3, 2}, {0, 2, 1}};
    std::multiset<std::vector<int>> out;
    for (int t : TarvoInterface::parse_tarvo_list("tet", "in volume " + std::to_string(volume))) {
        const auto c = TarvoInterface::get_connectivity("tet", t);
        for (const auto& f : faces) {
            std::vector<int> face{c[f[0]], c[f[1]], c[f[2]]};
            std::sort(face.begin(), face.end());
            out.insert(face);
        }
    }
    return out;
}

using MeshingTest = MeshTest;

TEST_F(MeshingTest, TetsFillABracketWithAHoleExactly) {
    // Flat faces only, so the tets must fill the solid to rounding.
    run("create box 10 6 4");
    run("create box 3 3 10");
    run("subtract volume 2 from volume 1");
    run("volume 1 size 1");
    run("volume 1 scheme tetmesh");
    run("mesh volume 1");
    const auto volumes = tet_volumes(1);
    ASSERT_GT(volumes.size(), 200u);
    EXPECT_GT(*std::min_element(volumes.begin(), volumes.end()), 0.0) << "inverted tet";
    const double sum = std::accumulate(volumes.begin(), volumes.end(), 0.0);
    EXPECT_NEAR(sum, TarvoInterface::get_volume_area(1), 1e-6 * sum);
    EXPECT_EQ(TarvoInterface::get_tet_count(), static_cast<int>(volumes.size()));
    EXPECT_TRUE(TarvoInterface::volume_contains_tets(1));
    EXPECT_EQ(TarvoInterface::get_mesh_element_type("volume", 1), "TET4");
    // One event per meshed volume, surface and curve: 1 + 10 + 24.
    EXPECT_EQ(recorder.starting("mesh_created volume").size(), 1u);
    EXPECT_EQ(recorder.starting("mesh_created surface").size(), 10u);
    EXPECT_EQ(recorder.starting("mesh_created curve").size(), 24u);
}

TEST_F(MeshingTest, TetmesherGrowthCoarsensTheInsideOnly) {
    run("create box 12");
    run("volume 1 size 1");
    run("volume 1 scheme tetmesh");
    run("mesh volume 1");
    const int even = TarvoInterface::get_tet_count();
    const int tris = TarvoInterface::get_tri_count();
    run("delete mesh volume 1");
    run("set tetmesher growth 1.5");
    run("mesh volume 1");
    EXPECT_LT(TarvoInterface::get_tet_count(), even * 3 / 4);
    EXPECT_EQ(TarvoInterface::get_tri_count(), tris) << "the boundary was kept";
    const auto volumes = tet_volumes(1);
    EXPECT_GT(*std::min_element(volumes.begin(), volumes.end()), 0.0);
    EXPECT_NEAR(std::accumulate(volumes.begin(), volumes.end(), 0.0), 1728.0, 1e-6);
}

TEST_F(MeshingTest, CurvedBoundaryNodesLieOnTheGeometry) {
    run("create cylinder radius 2 height 5");
    run("volume 1 size 0.5");
    run("volume 1 scheme tetmesh");
    run("mesh volume 1");
    const auto volumes = tet_volumes(1);
    ASSERT_FALSE(volumes.empty());
    EXPECT_GT(*std::min_element(volumes.begin(), volumes.end()), 0.0);
    // Chords cut the circle, so the tets hold a little less than the cylinder.
    const double sum = std::accumulate(volumes.begin(), volumes.end(), 0.0);
    EXPECT_LT(sum, TarvoInterface::get_volume_area(1));
    EXPECT_GT(sum, 0.98 * TarvoInterface::get_volume_area(1));
    for (int s : TarvoInterface::get_relatives("volume", 1, "surface")) {
        if (TarvoInterface::get_surface_type(s) != "Cylinder")
            continue;
        for (int n : in("node", "surface " + std::to_string(s))) {
            const Point p = node(n);
            EXPECT_NEAR(std::hypot(p[0], p[1]), 2.0, 1e-6) << "node " << n;
        }
    }
}

TEST_F(MeshingTest, SeparateCommandsMeshMergedVolumesConformingly) {
    run("create box 2");
    run("create box 2");
    run("move volume 2 by 2 0 0");
    run("create box 2");
    run("move volume 3 by 0 2 0");
    run("merge all");
    run("volume all size 0.5");
    run("volume all scheme tetmesh");
    run("mesh volume 1");
    const auto before = in("node", "volume 1");
    const auto first_tets = in("tet", "volume 1");
    run("mesh volume 2");
    run("mesh volume 3");
    // Volume 1 kept its mesh, ids and all.
    EXPECT_EQ(in("node", "volume 1"), before);
    EXPECT_EQ(in("tet", "volume 1"), first_tets);

    std::set<std::array<long long, 3>> places;
    const int nodes = TarvoInterface::get_node_count();
    for (int n : TarvoInterface::parse_tarvo_list("node", "all"))
        EXPECT_TRUE(places.insert(key(node(n))).second) << "two nodes at the place of " << n;
    EXPECT_EQ(static_cast<int>(places.size()), nodes);

    // Every triangle of a shared surface is a face of a tet on each side.
    for (auto [a, b] : {std::pair{1, 2}, std::pair{1, 3}}) {
        const auto fa = tet_faces(a), fb = tet_faces(b);
        int shared = 0;
        for (int s : TarvoInterface::get_relatives("volume", a, "surface")) {
            const auto vols = TarvoInterface::get_relatives("surface", s, "volume");
            if (std::find(vols.begin(), vols.end(), b) == vols.end())
                continue;
            for (int t : in("tri", "surface " + std::to_string(s))) {
                auto c = TarvoInterface::get_connectivity("tri", t);
                std::sort(c.begin(), c.end());
                EXPECT_EQ(fa.count(c), 1u);
                EXPECT_EQ(fb.count(c), 1u);
                ++shared;
            }
        }
        EXPECT_GT(shared, 0) << "volumes " << a << " and " << b << " share no meshed surface";
    }
}

TEST_F(MeshingTest, SweepsGiveHexesOnlyWithTheLayersAsked) {
    // Sizes that leave the circles an odd number of intervals: paving needs an even boundary.
    run("create cylinder radius 2 height 5");
    run("create box 10 10 1");
    run("create cylinder radius 1 height 3");
    run("create cylinder radius 1.3 height 3");
    run("move volume 4 by 3 3 0");
    run("create cylinder radius 0.7 height 3");
    run("move volume 5 by -3 2 0");
    run("subtract volume 3 4 5 from volume 2");
    run("volume 1 size 0.4");
    run("volume 2 size 0.37");
    for (auto [volume, layers] : {std::pair{1, 7}, std::pair{2, 3}}) {
        // The curves along the sweep are the straight ones parallel to z.
        std::vector<int> along;
        for (int c : TarvoInterface::get_relatives("volume", volume, "curve")) {
            const auto box = TarvoInterface::get_bounding_box("curve", c);
            if (TarvoInterface::get_curve_type(c) == "Line" && box[2] < 1e-9 && box[5] < 1e-9)
                along.push_back(c);
        }
        ASSERT_FALSE(along.empty());
        for (int c : along)
            run("curve " + std::to_string(c) + " interval " + std::to_string(layers));
        run("mesh volume " + std::to_string(volume));
        const auto hexes = TarvoInterface::get_volume_hexes(volume);
        EXPECT_EQ(TarvoInterface::get_volume_element_count(volume), static_cast<int>(hexes.size()))
            << "volume " << volume << " has elements other than hexes";
        EXPECT_EQ(hexes.size() % layers, 0u);
        for (int c : along)
            EXPECT_EQ(TarvoInterface::get_curve_edges(c).size(), static_cast<size_t>(layers));
    }
}

TEST_F(MeshingTest, AutoMeshesAnImportedAssemblyConformingly) {
    run("import step '" + test_support::cad_file("as1-tu-203.stp") + "'");
    run("imprint all");
    run("merge all");
    run("volume all size 5");
    output->take();
    run("mesh volume all");
    const auto volumes = TarvoInterface::get_entities("volume");
    ASSERT_EQ(volumes.size(), 18u);
    int elements = 0;
    for (int v : volumes) {
        EXPECT_TRUE(TarvoInterface::is_meshed("volume", v)) << v;
        // Each volume's line names the method auto chose.
        EXPECT_EQ(output->starting("Meshed volume " + std::to_string(v) + ": ").size(), 1u) << v;
        elements += TarvoInterface::get_volume_element_count(v);
    }
    EXPECT_EQ(elements,
              TarvoInterface::get_hex_count() + TarvoInterface::get_tet_count() +
                  static_cast<int>(TarvoInterface::parse_tarvo_list("wedge", "all").size()) +
                  TarvoInterface::get_pyramid_count());
    EXPECT_GT(TarvoInterface::get_hex_count(), 0) << "some parts sweep";
    EXPECT_GT(TarvoInterface::get_tet_count(), 0) << "some parts do not";
    std::set<std::array<long long, 3>> places;
    for (int n : TarvoInterface::parse_tarvo_list("node", "all"))
        EXPECT_TRUE(places.insert(key(node(n))).second) << "two nodes at the place of " << n;
}

// Node ids used by the elements a volume owns.
std::set<int> nodes_used(int volume) {
    std::set<int> out;
    for (const char* kind : {"tet", "hex", "wedge", "pyramid"})
        for (int e : TarvoInterface::parse_tarvo_list(kind, "in volume " + std::to_string(volume)))
            for (int n : TarvoInterface::get_connectivity(kind, e))
                out.insert(n);
    return out;
}

TEST_F(MeshingTest, TetsAndHexesMeshedApartThenAThirdVolumeMergedToBoth) {
    run("create box 2");
    run("create box 2");
    run("move volume 2 by 2 0 0");
    run("merge all");
    run("volume all size 0.5");
    run("volume 1 scheme tetmesh");
    // Hexes first: tets then meet their quads through pyramids (the other way round, the shared
    // face would carry triangles, and the hexes would have to be wedges).
    run("mesh volume 2");
    run("mesh volume 1");
    ASSERT_GT(TarvoInterface::get_tet_count(), 0);
    ASSERT_GT(TarvoInterface::get_hex_count(), 0);
    run("create box 4 2 2");
    run("move volume 3 by 1 2 0");
    run("imprint all");
    run("merge all");
    run("mesh volume all");
    std::set<std::array<long long, 3>> places;
    for (int n : TarvoInterface::parse_tarvo_list("node", "all"))
        EXPECT_TRUE(places.insert(key(node(n))).second) << "two nodes at the place of " << n;
    int shared = 0;
    for (int s : TarvoInterface::get_entities("surface")) {
        const auto volumes = TarvoInterface::get_relatives("surface", s, "volume");
        if (volumes.size() != 2)
            continue;
        ++shared;
        const auto a = nodes_used(volumes[0]), b = nodes_used(volumes[1]);
        for (int n : TarvoInterface::get_surface_nodes(s)) {
            EXPECT_TRUE(a.count(n)) << "surface " << s << " node " << n;
            EXPECT_TRUE(b.count(n)) << "surface " << s << " node " << n;
        }
    }
    EXPECT_GE(shared, 3);
}

TEST_F(MeshingTest, UndoDeleteAndGeometryChangesTakeTheMeshAway) {
    run("create box 4");
    run("volume 1 size 1");
    run("volume 1 scheme tetmesh");
    run("mesh volume 1");
    const int tets = TarvoInterface::get_tet_count();
    const int nodes = TarvoInterface::get_node_count();
    ASSERT_GT(tets, 0);

    run("delete mesh volume 1");
    EXPECT_EQ(TarvoInterface::get_tet_count(), 0);
    EXPECT_FALSE(TarvoInterface::is_meshed("volume", 1));
    EXPECT_TRUE(TarvoInterface::is_meshed("surface", 1)) << "without propagate the faces stay";
    run("undo");
    EXPECT_EQ(TarvoInterface::get_tet_count(), tets);
    EXPECT_EQ(TarvoInterface::get_node_count(), nodes);

    run("delete mesh volume 1 propagate");
    EXPECT_EQ(TarvoInterface::get_node_count(), 0);
    run("undo");
    EXPECT_TRUE(TarvoInterface::is_meshed("volume", 1));

    // A surface's mesh cannot outlive the volume mesh built on it being valid.
    run("delete mesh surface 1");
    EXPECT_FALSE(TarvoInterface::is_meshed("volume", 1));
    run("undo");

    run("move volume 1 by 1 0 0");
    EXPECT_FALSE(TarvoInterface::is_meshed("volume", 1));
    EXPECT_EQ(TarvoInterface::get_node_count(), 0);
    run("undo");
    EXPECT_EQ(TarvoInterface::get_tet_count(), tets);
    EXPECT_EQ(TarvoInterface::get_nodal_coordinates(in("node", "vertex 1").front()),
              TarvoInterface::get_center_point("vertex", 1));

    run("undo"); // the mesh command itself
    EXPECT_EQ(TarvoInterface::get_node_count(), 0);
    EXPECT_FALSE(TarvoInterface::is_meshed("surface", 1));
}

TEST_F(MeshingTest, AMapThatCannotBeSaysWhyAndLeavesNothing) {
    run("create cylinder radius 1 height 2");
    run("volume 1 scheme map");
    const std::string why = rejected("mesh volume 1");
    EXPECT_NE(why.find("cannot be mapped"), std::string::npos) << why;
    EXPECT_FALSE(TarvoInterface::is_meshed("volume", 1));
    EXPECT_EQ(TarvoInterface::get_node_count(), 0);
    ASSERT_EQ(TarvoInterface::get_mesh_error_count(), 1);
    EXPECT_EQ(TarvoInterface::get_mesh_errors()[0]->error_text, why.substr(7));
    for (const char* scheme : {"polyhedron", "sphere", "pave"}) {
        run(std::string("volume 1 scheme ") + scheme);
        EXPECT_NE(rejected("mesh volume 1").find(scheme), std::string::npos) << scheme;
    }
    // The same volume meshes once the user lets the kernel choose.
    run("volume 1 scheme auto");
    run("mesh volume 1");
    EXPECT_EQ(TarvoInterface::get_mesh_error_count(), 0);
    EXPECT_TRUE(TarvoInterface::is_meshed("volume", 1));
}

TEST_F(MeshingTest, RefineHalvesEveryIntervalAndKeepsNeighboursConforming) {
    run("create box 4");
    run("volume 1 interval 4");
    run("mesh volume 1");
    ASSERT_EQ(TarvoInterface::get_hex_count(), 64);
    run("refine volume 1");
    EXPECT_EQ(TarvoInterface::get_hex_count(), 512);
    EXPECT_EQ(TarvoInterface::get_node_count(), 9 * 9 * 9);
    for (int c : TarvoInterface::get_entities("curve"))
        EXPECT_EQ(TarvoInterface::get_mesh_intervals("curve", c), 8);
    run("undo");
    EXPECT_EQ(TarvoInterface::get_hex_count(), 64);

    // A neighbour meshed on a shared surface must be refined with it.
    run("create box 4");
    run("move volume 2 by 4 0 0");
    run("merge all");
    run("volume all interval 4");
    run("volume 2 scheme tetmesh");
    run("mesh volume all");
    EXPECT_NE(rejected("refine volume 1").find("volume 2"), std::string::npos);
    const int tets = TarvoInterface::get_tet_count();
    run("refine volume 1 2");
    EXPECT_GT(TarvoInterface::get_tet_count(), 4 * tets);
    // Pyramids on the hexes' quads, tets behind them: together they fill the box.
    EXPECT_GT(TarvoInterface::get_pyramid_count(), 0);
    const auto volumes = tet_volumes(2);
    EXPECT_GT(*std::min_element(volumes.begin(), volumes.end()), 0.0);
    EXPECT_NEAR(TarvoInterface::get_meshed_volume_or_area("volume", {2}), 64.0, 1e-9);
    EXPECT_EQ(TarvoInterface::get_hex_count(), 512);
}

TEST_F(MeshingTest, SubElementsAndHexSheetsOfABlock) {
    run("create box 4");
    run("volume 1 interval 4");
    run("mesh volume 1");
    // The hex at the corner (-2, -2, -2) has three sides on surfaces and three edges on curves.
    const int corner = TarvoInterface::get_closest_node(-2, -2, -2);
    int hex = 0;
    for (int h : TarvoInterface::get_volume_hexes(1)) {
        const auto c = TarvoInterface::get_connectivity("hex", h);
        if (std::find(c.begin(), c.end(), corner) != c.end())
            hex = h;
    }
    ASSERT_GT(hex, 0);
    EXPECT_EQ(TarvoInterface::get_sub_elements("hex", hex, 0),
              TarvoInterface::get_connectivity("hex", hex));
    EXPECT_EQ(TarvoInterface::get_sub_elements("hex", hex, 1).size(), 3u);
    const auto sides = TarvoInterface::get_sub_elements("hex", hex, 2);
    ASSERT_EQ(sides.size(), 3u);
    for (int q : sides)
        EXPECT_EQ(TarvoInterface::get_geometry_owner("quad", q).rfind("surface ", 0), 0u);
    EXPECT_TRUE(TarvoInterface::get_sub_elements("hex", hex, 3).empty());

    // The sheet through an edge along x is the 4 x 4 layer of hexes across x.
    const int next = TarvoInterface::get_closest_node(-1, -2, -2);
    const auto sheet = TarvoInterface::get_hex_sheet(corner, next);
    EXPECT_EQ(sheet.size(), 16u);
    for (int h : sheet)
        for (int n : TarvoInterface::get_connectivity("hex", h))
            EXPECT_LE(node(n)[0], -1 + 1e-9) << "hex " << h << " is not in the first layer";
    EXPECT_TRUE(TarvoInterface::get_hex_sheet(corner, corner).empty());
}

TEST_F(MeshingTest, MeshQueriesAnswerFromTheDatabase) {
    run("create box 2");
    run("surface 1 size 1");
    run("surface 1 scheme trimesh");
    run("mesh surface 1");
    const auto tris = in("tri", "surface 1");
    ASSERT_FALSE(tris.empty());
    const auto c = TarvoInterface::get_connectivity("tri", tris.front());
    ASSERT_EQ(c.size(), 3u);
    EXPECT_EQ(TarvoInterface::get_geometry_owner("tri", tris.front()), "surface 1");
    for (int n : c) {
        const auto users = TarvoInterface::get_node_tris(n);
        EXPECT_NE(std::find(users.begin(), users.end(), tris.front()), users.end());
    }
    const Point p = node(c[0]);
    EXPECT_EQ(TarvoInterface::get_closest_node(p[0] + 1e-3, p[1], p[2]), c[0]);
    const auto corner = in("node", "vertex 1");
    ASSERT_EQ(corner.size(), 1u);
    EXPECT_TRUE(TarvoInterface::get_node_position_fixed(corner.front()));
    EXPECT_EQ(TarvoInterface::get_geometry_owner("node", corner.front()), "vertex 1");
    EXPECT_FALSE(TarvoInterface::get_node_exists(TarvoInterface::get_node_count() + 100));
    EXPECT_TRUE(TarvoInterface::get_connectivity("tri", 999999).empty());
}

// A progress handler that asks for an interrupt once the first volume is meshed.
class InterruptAfterFirstVolume : public TarvoProgressHandler {
public:
    explicit InterruptAfterFirstVolume(test_support::EventRecorder& r) : recorder(r) {}
    void start(const char*, const char*, bool) override {}
    void end() override {}
    void percent(double) override {
        if (!recorder.starting("mesh_created volume").empty())
            TarvoInterface::set_tarvo_interrupt(true);
    }
    test_support::EventRecorder& recorder;
};

TEST_F(MeshingTest, InterruptStopsBetweenVolumesAndLeavesNothingHalfMeshed) {
    for (int i = 0; i < 4; ++i) {
        run("create box 1");
        run("move volume " + std::to_string(i + 1) + " by " + std::to_string(2 * i) + " 0 0");
    }
    run("volume all size 0.25");
    run("volume all scheme tetmesh");
    TarvoInterface::set_progress_handler(std::make_shared<InterruptAfterFirstVolume>(recorder));
    const std::string why = rejected("mesh volume all");
    TarvoInterface::set_progress_handler(nullptr);
    EXPECT_NE(why.find("Interrupted"), std::string::npos) << why;
    EXPECT_EQ(recorder.starting("mesh_created volume").size(), 1u) << "did not stop after one";
    EXPECT_EQ(TarvoInterface::get_node_count(), 0) << "the failed command must leave no mesh";
    ASSERT_EQ(TarvoInterface::get_mesh_error_count(), 1);
    EXPECT_EQ(TarvoInterface::get_mesh_errors()[0]->error_code, 2);
    EXPECT_EQ(TarvoInterface::get_mesh_errors()[0]->entity_type, "volume");
    for (int v = 1; v <= 4; ++v)
        EXPECT_FALSE(TarvoInterface::is_meshed("volume", v));
}

double worst_scaled_jacobian(int volume) {
    double mn = 0, mx = 0, mean = 0, sd = 0;
    int imin = 0, imax = 0, group = 0;
    std::vector<int> bad;
    std::string type;
    TarvoInterface::get_quality_stats("volume", {volume}, "Scaled Jacobian", 0, false, 0, 0, mn, mx,
                                      mean, sd, imin, imax, bad, type, group, false);
    return mn;
}

TEST_F(MeshingTest, SmoothingMovesOnlyInnerNodesAndNeverWorsensUnderCondition) {
    run("create cylinder radius 2 height 3");
    run("volume 1 size 0.6");
    run("volume 1 scheme tetmesh");
    run("mesh volume 1");
    std::map<int, Point> boundary;
    for (int n : in("node", "volume 1"))
        if (TarvoInterface::get_geometry_owner("node", n) != "volume 1")
            boundary[n] = node(n);
    const double before = worst_scaled_jacobian(1);
    {
        // The elements below a threshold, and a group of them when asked.
        double mn = 0, mx = 0, mean = 0, sd = 0;
        int imin = 0, imax = 0, group = 0;
        std::vector<int> bad;
        std::string type;
        TarvoInterface::get_quality_stats("volume", {1}, "Scaled Jacobian", 0.5, false, 0, 0, mn,
                                          mx, mean, sd, imin, imax, bad, type, group, true);
        ASSERT_FALSE(bad.empty());
        for (int t : bad)
            EXPECT_LT(TarvoInterface::get_quality_value("tet", t, "scaled jacobian"), 0.5);
        ASSERT_GT(group, 0);
        EXPECT_EQ(TarvoInterface::parse_tarvo_list("tet", "in group " + std::to_string(group)),
                  bad);
    }
    const auto inner = TarvoInterface::get_volume_nodes(1).size() - boundary.size();
    ASSERT_GT(inner, 10u);

    run("smooth volume 1 scheme condition");
    EXPECT_GE(worst_scaled_jacobian(1), before);
    for (const auto& [n, p] : boundary)
        EXPECT_EQ(node(n), p) << "boundary node " << n << " moved";

    // Surface smoothing keeps the nodes on the cylinder; curve nodes stay where they were.
    int side = 0;
    for (int s : TarvoInterface::get_relatives("volume", 1, "surface"))
        if (TarvoInterface::get_surface_type(s) == "Cylinder")
            side = s;
    ASSERT_GT(side, 0);
    run("smooth surface " + std::to_string(side));
    for (int n : in("node", "surface " + std::to_string(side))) {
        const Point p = node(n);
        EXPECT_NEAR(std::hypot(p[0], p[1]), 2.0, 1e-7) << "node " << n;
    }
    run("undo");
    run("undo");
    for (const auto& [n, p] : boundary)
        EXPECT_EQ(node(n), p);
    EXPECT_EQ(worst_scaled_jacobian(1), before);
    EXPECT_NE(rejected("smooth curve 1").find("cannot be smoothed"), std::string::npos);
}

} // namespace
} // namespace mesh_test
