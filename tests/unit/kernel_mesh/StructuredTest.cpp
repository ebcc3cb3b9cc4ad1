// Hex meshing by mapping and sweeping: the mapper on boundary meshes built by hand (no Gmsh),
// then whole volumes meshed through the command language and checked for element counts,
// positive elements, filled volume and nodes lying on their surfaces.

#include "MeshTestSupport.h"

#include "geometry/GeometryModule.h"
#include "mesh/MeshModule.h"
#include "mesh/Quality.h"
#include "mesh/Sizing.h"
#include "mesh/Structured.h"
#include "mesh/StructuredCommon.h"

#include <BRep_Tool.hxx>
#include <GeomAPI_ProjectPointOnSurf.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Face.hxx>

#include <map>

namespace mesh_test {
namespace {

using namespace tarvo::kernel;
using namespace tarvo::kernel::mesh;

// Gives every vertex, curve and surface of the model a piece as the mesher would: one node per
// vertex, a mid node per curve, and on each four-sided surface a centre node with four quads.
// A surface listed in `with_tris` gets eight triangles around its centre instead.
void mesh_by_hand(MeshModule& m, const std::set<int>& with_tris = {}) {
    const GeometryModel& model = geometry_module()->model();
    std::map<int, int> at_vertex, at_curve;
    for (int v : model.ids(GeomKind::Vertex)) {
        const gp_Pnt p = BRep_Tool::Pnt(TopoDS::Vertex(model.shape(GeomKind::Vertex, v)));
        NewMesh nm;
        nm.nodes.push_back({p.X(), p.Y(), p.Z()});
        at_vertex[v] = m.publish({0, v}, nm, "hand").first_node;
    }
    auto pos = [&](int id) { return *m.state().node_position(id); };
    for (int c : model.ids(GeomKind::Curve)) {
        std::vector<int> ends = m.boundary(1, c);
        if (ends.size() == 1) // a closed curve starts and ends at its one vertex
            ends.push_back(ends[0]);
        const Point3 a = pos(at_vertex[ends[0]]), b = pos(at_vertex[ends[1]]);
        NewMesh nm;
        nm.nodes.push_back({(a[0] + b[0]) / 2, (a[1] + b[1]) / 2, (a[2] + b[2]) / 2});
        nm.params.push_back(0.5);
        nm.block(ElemKind::Edge).conn = {at_vertex[ends[0]], 0, 0, at_vertex[ends[1]]};
        at_curve[c] = m.publish({1, c}, nm, "hand").first_node;
    }
    for (int s : model.ids(GeomKind::Surface)) {
        const std::vector<int> curves = m.boundary(2, s);
        NewMesh nm;
        Point3 centre{0, 0, 0};
        for (int c : curves)
            for (int k = 0; k < 3; ++k)
                centre[k] += pos(at_curve[c])[k] / curves.size();
        nm.nodes.push_back(centre);
        for (const auto& [v, node] : at_vertex) {
            std::vector<int> mids; // the surface's two curves at this vertex
            for (int c : curves)
                for (int e : m.boundary(1, c))
                    if (e == v)
                        mids.push_back(at_curve[c]);
            if (mids.size() != 2)
                continue;
            if (with_tris.count(s)) {
                for (int mid : mids) {
                    auto& tris = nm.block(ElemKind::Tri).conn;
                    tris.insert(tris.end(), {node, mid, 0});
                }
            } else {
                auto& quads = nm.block(ElemKind::Quad).conn;
                quads.insert(quads.end(), {node, mids[0], 0, mids[1]});
            }
        }
        m.publish({2, s}, nm, "hand");
    }
}

// One element kind's corners, each element's corners back to back.
std::vector<Point3> corners(const std::string& word, const std::vector<int>& ids) {
    std::vector<Point3> out;
    for (int e : ids)
        for (int n : TarvoInterface::get_connectivity(word, e))
            out.push_back(TarvoInterface::get_nodal_coordinates(n));
    return out;
}

struct SolidStats {
    int hexes = 0, wedges = 0, others = 0;
    double min_scaled_jacobian = 2, max_scaled_jacobian = -2, volume = 0;
};

SolidStats solid_stats(int volume) {
    SolidStats s;
    const std::string owner = "volume " + std::to_string(volume);
    for (ElemKind kind : {ElemKind::Hex, ElemKind::Wedge}) {
        const std::string word(info(kind).word);
        const std::vector<int> ids = TarvoInterface::parse_tarvo_list(word, "in " + owner);
        (kind == ElemKind::Hex ? s.hexes : s.wedges) = static_cast<int>(ids.size());
        const std::vector<Point3> c = corners(word, ids);
        std::vector<double> sj(ids.size()), vol(ids.size());
        quality_values(kind, "Scaled Jacobian", c.data(), ids.size(), sj.data());
        quality_values(kind, "Element Volume", c.data(), ids.size(), vol.data());
        for (std::size_t i = 0; i < ids.size(); ++i) {
            s.min_scaled_jacobian = std::min(s.min_scaled_jacobian, sj[i]);
            s.max_scaled_jacobian = std::max(s.max_scaled_jacobian, sj[i]);
            s.volume += vol[i];
        }
    }
    for (const char* word : {"tet", "pyramid"})
        s.others += static_cast<int>(TarvoInterface::parse_tarvo_list(word, "in " + owner).size());
    return s;
}

// The largest distance from a node of a surface of the volume to that surface.
double worst_off_surface(int volume) {
    const GeometryModel& model = geometry_module()->model();
    double worst = 0;
    for (int s : mesh_module()->boundary(3, volume)) {
        const auto surface = BRep_Tool::Surface(TopoDS::Face(model.shape(GeomKind::Surface, s)));
        for (int n : TarvoInterface::parse_tarvo_list("node", "in surface " + std::to_string(s))) {
            const Point p = TarvoInterface::get_nodal_coordinates(n);
            GeomAPI_ProjectPointOnSurf proj(gp_Pnt(p[0], p[1], p[2]), surface);
            worst = std::max(worst, proj.NbPoints() > 0 ? proj.LowerDistance() : 1e30);
        }
    }
    return worst;
}

// A quarter ring of radii 5 and 10, height 2, cut into four slices of 22.5 degrees: the volume
// of the prism on its polygon, which hexes with flat faces between the arcs' nodes fill.
const double kQuarterRingPolygon = 4 * 0.5 * (100 - 25) * std::sin(M_PI / 8) * 2;

using StructuredTest = MeshTest;

TEST_F(StructuredTest, MapFillsACubeOfHandMadeFacesThroughItsCentre) {
    run("create box 1");
    MeshModule& m = *mesh_module();
    mesh_by_hand(m);
    NewMesh out;
    std::string why;
    ASSERT_TRUE(map_volume(m, 1, out, why)) << why;
    ASSERT_EQ(out.nodes.size(), 1u);
    for (double c : out.nodes[0])
        EXPECT_NEAR(c, 0, 1e-12);
    ASSERT_EQ(out.blocks.size(), 1u);
    const std::vector<int>& conn = out.blocks[0].conn;
    ASSERT_EQ(out.blocks[0].kind, ElemKind::Hex);
    ASSERT_EQ(conn.size(), 8u * 8);
    std::set<int> used(conn.begin(), conn.end());
    EXPECT_EQ(used.size(), 27u); // 26 boundary nodes and the new one
    for (std::size_t e = 0; e < conn.size(); e += 8) {
        Point3 c[8];
        for (int k = 0; k < 8; ++k)
            c[k] =
                conn[e + k] > 0 ? *m.state().node_position(conn[e + k]) : out.nodes[-conn[e + k]];
        EXPECT_NEAR(*quality_value(ElemKind::Hex, "Scaled Jacobian", c), 1, 1e-12) << e / 8;
    }
}

TEST_F(StructuredTest, VolumesThatDoNotQualifySayWhy) {
    struct Case {
        const char* geometry;
        std::set<int> tri_surfaces;
        bool sweep; // find_sweep_pair with no hints, else map_volume
        const char* why;
    };
    const Case cases[] = {
        {"create box 1", {3}, false, "volume 1 is not a logical cube: surface 3 holds tris"},
        {"create cylinder radius 1 height 1",
         {},
         false,
         "volume 1 is not a logical cube: it has 3 surfaces, not six"},
        {"create sphere radius 1", {}, true, "volume 1 cannot be swept: no two of its surfaces"},
        // A notch in one side: that side no longer joins top and bottom with whole curves.
        {"create box 4 4 1;create box 1 1 1 at 2 0 0.5;subtract volume 2 from volume 1",
         {},
         true,
         "volume 1 cannot be swept"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.geometry);
        run("reset");
        std::string text = c.geometry;
        for (std::size_t at = 0, end; at < text.size(); at = end + 1) {
            end = std::min(text.find(';', at), text.size());
            run(text.substr(at, end - at));
        }
        MeshModule& m = *mesh_module();
        const int volume = geometry_module()->model().ids(GeomKind::Volume).front();
        std::string why;
        bool ok = true;
        if (c.sweep) {
            int source = 0, target = 0;
            ok = find_sweep_pair(m, volume, source, target, why);
        } else {
            mesh_by_hand(m, c.tri_surfaces);
            NewMesh out;
            ok = map_volume(m, volume, out, why);
        }
        EXPECT_FALSE(ok);
        EXPECT_EQ(why.rfind(c.why, 0), 0u) << why;
        m.clear_state();
    }
}

TEST_F(StructuredTest, BoxOfTenIntervalsIsPerfectMappedOrSwept) {
    for (const char* scheme : {"map", "sweep"}) {
        SCOPED_TRACE(scheme);
        run("reset");
        run("create box 10");
        const int v = TarvoInterface::get_entities("volume").back();
        run("volume " + std::to_string(v) + " interval 10");
        run("volume " + std::to_string(v) + " scheme " + scheme);
        run("mesh volume " + std::to_string(v));
        const SolidStats s = solid_stats(v);
        EXPECT_EQ(s.hexes, 1000);
        EXPECT_EQ(s.wedges + s.others, 0);
        EXPECT_EQ(in("node", "volume " + std::to_string(v)).size(), 1331u);
        EXPECT_NEAR(s.min_scaled_jacobian, 1, 1e-9);
        EXPECT_NEAR(s.volume, 1000, 1e-6);
    }
}

// Swept and mapped solids with curved and holed sections: every element right way round, the
// elements fill the solid (to the chordal error of curved sides), the boundary nodes lie on
// their surfaces and the source's triangles alone make wedges.
TEST_F(StructuredTest, SweptAndMappedSolidsFillTheirGeometry) {
    struct Case {
        const char* name;
        std::vector<std::string> lines;
        double volume_tolerance; // relative
        bool wedges_allowed;
        double volume = 0; // what the elements fill, when not the solid's own volume
    };
    const Case cases[] = {
        {"L-section extruded",
         {"create box 10 10 2", "create box 5 5 4 at 2.5 2.5 0", "subtract volume 2 from volume 1",
          "volume all size 1"},
         1e-9,
         true},
        // Round sides and hole walls are periodic bands with their seams; the plate is swept
        // through its thickness whole.
        // Gmsh's paving of the round source leaves a few triangles: wedges stand on them.
        {"cylinder", {"create cylinder radius 2 height 5", "volume all size 0.5"}, 0.02, true},
        {"plate with three through holes",
         {"create box 20 10 2", "create cylinder radius 1 height 4 at -5 0 0",
          "create cylinder radius 1 height 4 at 0 0 0",
          "create cylinder radius 1.5 height 4 at 5 0 0", "subtract volume 2 3 4 from volume 1",
          "volume all size 0.7"},
         0.01,
         true},
        // The small box touches the top along part of an edge: the side below holds one curve
        // on the bottom and three on the top.
        {"box with an edge split by an imprint",
         {"create box 10", "create box 4 4 2 at 7 0 6", "imprint all", "volume all size 1"},
         1e-9,
         false},
        {"quarter rings mapped",
         {"create cylinder radius 10 height 2", "create cylinder radius 5 height 4",
          "subtract volume 2 from volume 1", "webcut volume 1 plane x", "webcut volume all plane y",
          "volume all interval 4", "volume all scheme map"},
         1e-9,
         false,
         kQuarterRingPolygon},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        run("reset");
        for (const std::string& line : c.lines)
            run(line);
        run("mesh volume all");
        for (int v : TarvoInterface::get_entities("volume")) {
            SCOPED_TRACE("volume " + std::to_string(v));
            const SolidStats s = solid_stats(v);
            EXPECT_GT(s.hexes, 0);
            EXPECT_EQ(s.others, 0);
            EXPECT_TRUE(c.wedges_allowed || s.wedges == 0) << s.wedges;
            EXPECT_GT(s.min_scaled_jacobian, 0);
            const double exact = c.volume > 0 ? c.volume : TarvoInterface::get_volume_area(v);
            EXPECT_NEAR(s.volume, exact, c.volume_tolerance * exact);
            EXPECT_LT(worst_off_surface(v), 1e-6);
            // Wedges stand on the source's triangles, one per layer.
            const int tris = static_cast<int>(in("tri", "volume " + std::to_string(v)).size());
            EXPECT_EQ(s.wedges % std::max(tris / 2, 1), 0);
            EXPECT_EQ(s.wedges == 0, tris == 0);
        }
    }
}

TEST_F(StructuredTest, RotationSweepBendsTheLayersAroundTheAxis) {
    // A quarter ring swept from one cut face to the other turns through 90 degrees: its layers
    // are rotated copies, so the elements fill it and the middle layer sits on the 45 degree
    // plane.
    run("create cylinder radius 10 height 2");
    run("create cylinder radius 5 height 4");
    run("subtract volume 2 from volume 1");
    run("webcut volume 1 plane x");
    run("webcut volume all plane y");
    const int v = 1;
    std::vector<int> cut_faces; // planar faces standing across the ring
    for (int s : TarvoInterface::get_relatives("volume", v, "surface"))
        if (TarvoInterface::get_surface_type(s) == "Plane" &&
            TarvoInterface::get_bounding_box("surface", s)[8] > 1)
            cut_faces.push_back(s);
    ASSERT_EQ(cut_faces.size(), 2u);
    run("volume 1 interval 4");
    run("volume 1 scheme sweep source surface " + std::to_string(cut_faces[0]) +
        " target surface " + std::to_string(cut_faces[1]));
    run("mesh volume 1");
    const SolidStats s = solid_stats(v);
    EXPECT_GT(s.hexes, 0);
    EXPECT_EQ(s.wedges + s.others, 0);
    EXPECT_GT(s.min_scaled_jacobian, 0.5);
    EXPECT_NEAR(s.volume, kQuarterRingPolygon, 1e-9 * kQuarterRingPolygon);
    EXPECT_LT(worst_off_surface(v), 1e-6 * TarvoInterface::get_bounding_box("volume", v)[9]);
    // Nodes inside the volume, off every surface, lie on the layers' planes through the axis:
    // four layers of 22.5 degrees.
    int inside = 0;
    for (int n : in("node", "volume 1")) {
        const auto ref = mesh_module()->state().find_node(n);
        if (ref->piece->owner.dim != 3)
            continue;
        ++inside;
        const Point p = node(n);
        const double degrees = std::atan2(std::abs(p[1]), std::abs(p[0])) * 180 / M_PI;
        EXPECT_NEAR(std::remainder(degrees, 22.5), 0, 1e-6) << degrees;
    }
    EXPECT_GT(inside, 0);
}

// Linking surfaces meshed as bands by map_linking_surface from curves the mesher divided:
// periodic sides and hole walls, a side split by an imprint, arcs as linking curves, and
// interval counts that make no band. (Their sweeps are in the solids above.)
TEST_F(StructuredTest, LinkingSurfacesBecomeStructuredBands) {
    struct Case {
        const char* name;
        std::vector<std::string> lines;
        const char* why; // "" when the linking surfaces fit; else how the check begins
        double turn = 0; // > 0: inner band nodes lie on planes through the z axis this far apart
    };
    const Case cases[] = {
        {"cylinder", {"create cylinder radius 2 height 5", "volume 1 size 0.5"}, ""},
        {"plate with three through holes",
         {"create box 20 10 2", "create cylinder radius 1 height 4 at -5 0 0",
          "create cylinder radius 1 height 4 at 0 0 0",
          "create cylinder radius 1.5 height 4 at 5 0 0", "subtract volume 2 3 4 from volume 1",
          "volume all size 0.7"},
         ""},
        {"box with a top edge split by an imprint",
         {"create box 10", "create box 4 4 2 at 7 0 6", "imprint all", "volume 1 size 1"},
         ""},
        // Bands whose linking curves are arcs: inner nodes follow them round.
        {"quarter ring swept by rotation",
         {"create cylinder radius 10 height 2", "create cylinder radius 5 height 4",
          "subtract volume 2 from volume 1", "webcut volume 1 plane x", "webcut volume all plane y",
          "volume 1 interval 8", "volume 1 scheme sweep source surface 10 target surface 16"},
         "",
         11.25},
        {"cylinder with unequal circles",
         {"create cylinder radius 2 height 5", "volume 1 interval 10", "curve 1 interval 8"},
         "the linking surface 1 of volume 1 has 8 intervals on the source and 10 on the target"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        run("reset");
        for (const std::string& line : c.lines)
            run(line);
        MeshModule& m = *mesh_module();
        const int v = 1;
        int source = 0, target = 0;
        sweep_surfaces(v, source, target);
        std::string why;
        ASSERT_TRUE(find_sweep_pair(m, v, source, target, why)) << why;
        const bool fits = linking_surfaces_fit(m, v, source, target, why);
        EXPECT_EQ(fits, *c.why == 0) << why;
        EXPECT_EQ(why.rfind(c.why, 0), 0u) << why;
        run("mesh curve in surface in volume 1");
        const GeometryModel& model = geometry_module()->model();
        for (int f : m.boundary(3, v)) {
            if (f == source || f == target)
                continue;
            SCOPED_TRACE("surface " + std::to_string(f));
            NewMesh band;
            if (!fits) {
                EXPECT_FALSE(map_linking_surface(m, v, source, target, f, band, why));
                EXPECT_NE(why.find("nodes on the source"), std::string::npos) << why;
                continue;
            }
            ASSERT_TRUE(map_linking_surface(m, v, source, target, f, band, why)) << why;
            const MeshPiece& piece = m.publish({2, f}, band, "band");
            // Structured: every inner node is a corner of four quads; every quad faces the way
            // the face does and every node lies on the face.
            std::map<int, int> uses;
            const TopoDS_Face face = TopoDS::Face(model.shape(GeomKind::Surface, f));
            const auto surface = BRep_Tool::Surface(face);
            const double sense = face.Orientation() == TopAbs_REVERSED ? -1 : 1;
            ASSERT_EQ(piece.blocks.size(), 1u);
            const std::vector<int>& quads = piece.blocks[0].conn;
            for (std::size_t e = 0; e < quads.size(); e += 4) {
                Point3 p[4], centre{0, 0, 0};
                for (int k = 0; k < 4; ++k) {
                    ++uses[quads[e + k]];
                    p[k] = *m.state().node_position(quads[e + k]);
                    centre = centre + 0.25 * p[k];
                    GeomAPI_ProjectPointOnSurf proj(gp_Pnt(p[k][0], p[k][1], p[k][2]), surface);
                    EXPECT_LT(proj.LowerDistance(), 1e-6);
                }
                GeomAPI_ProjectPointOnSurf proj(gp_Pnt(centre[0], centre[1], centre[2]), surface);
                double u = 0, w = 0;
                proj.LowerDistanceParameters(u, w);
                gp_Pnt at;
                gp_Vec du, dw;
                surface->D1(u, w, at, du, dw);
                const gp_Vec n = du.Crossed(dw) * sense;
                EXPECT_GT(dot(cross(p[2] - p[0], p[3] - p[1]), {n.X(), n.Y(), n.Z()}), 0) << e / 4;
            }
            for (int i = 0; i < piece.node_count(); ++i) {
                EXPECT_EQ(uses[piece.first_node + i], 4);
                const Point3& p = piece.nodes[i];
                if (c.turn > 0) {
                    EXPECT_NEAR(std::remainder(std::atan2(p[1], p[0]) * 180 / M_PI, c.turn), 0,
                                1e-6);
                }
            }
        }
    }
}

} // namespace
} // namespace mesh_test
