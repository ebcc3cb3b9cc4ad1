// Diagnostics: each finder on models with one planted defect (and on a clean box), the advised
// repair removing the defect so that the model meshes, bad arguments, and the finders on real CAD.

#include "tarvo/TarvoInterface.h"

#include "../support/KernelTest.h"

#include <BRepAlgoAPI_Fuse.hxx>
#include <BRepBuilderAPI_MakeFace.hxx>
#include <BRepBuilderAPI_MakePolygon.hxx>
#include <BRepFilletAPI_MakeFillet.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakePrism.hxx>
#include <BRepTools.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <functional>
#include <map>

namespace ti = TarvoInterface;

namespace {

using Ids = std::vector<int>;

Ids flat(const std::vector<std::vector<int>>& groups) {
    Ids out;
    for (const auto& g : groups)
        out.insert(out.end(), g.begin(), g.end());
    return out;
}

// The list a finder that reports through an out parameter fills.
Ids filled(void (*finder)(const Ids&, Ids&), const Ids& volumes) {
    Ids out;
    finder(volumes, out);
    return out;
}

// Every finder, over a list of volumes, answering the ids it reports (pairs flattened).
const std::map<std::string, std::function<Ids(const Ids&)>>& finders() {
    static const std::map<std::string, std::function<Ids(const Ids&)>> table = {
        {"small curves", [](const Ids& v) { return ti::get_small_curves(v, 0.1); }},
        {"small surfaces", [](const Ids& v) { return ti::get_small_surfaces(v, 0.1); }},
        {"narrow surfaces", [](const Ids& v) { return ti::get_narrow_surfaces(v, 0.1); }},
        {"small volumes", [](const Ids& v) { return ti::get_small_volumes(v, 0.5); }},
        {"close loops", [](const Ids& v) { return ti::get_close_loops(v, 0.1); }},
        {"blend surfaces", [](const Ids& v) { return ti::get_blend_surfaces(v); }},
        {"coincident vertices", [](const Ids& v) { return ti::get_coincident_vertices(v, 1e-3); }},
        {"overlapping volumes", [](const Ids& v) { return ti::get_overlapping_volumes(v); }},
        {"mergeable surfaces", [](const Ids& v) { return flat(ti::get_mergeable_surfaces(v)); }},
        {"volume gaps",
         [](const Ids& v) {
             Ids a, b;
             std::vector<double> d, area;
             ti::get_volume_gaps(v, a, b, d, area, 0.01, 5, 0);
             return flat({a, b});
         }},
        {"overlapping surfaces",
         [](const Ids& v) {
             Ids a, b;
             std::vector<double> d, area;
             ti::get_overlapping_surfaces_in_volumes(v, a, b, d, area, false, false, 0);
             return flat({a, b});
         }},
        {"floating volumes", [](const Ids& v) { return filled(ti::find_floating_volumes, v); }},
        {"nonmanifold vertices",
         [](const Ids& v) { return filled(ti::find_nonmanifold_vertices, v); }},
        {"nonmanifold curves", [](const Ids& v) { return filled(ti::find_nonmanifold_curves, v); }},
        {"bad geometry",
         [](const Ids& v) {
             Ids b, vol, s, c;
             ti::get_bad_geometry(v, b, vol, s, c);
             return vol;
         }},
        {"sharp curve angles",
         [](const Ids& v) {
             Ids large, small;
             std::vector<double> la, sa;
             ti::get_sharp_curve_angles(v, large, small, la, sa, 300, 10);
             return flat({large, small});
         }},
    };
    return table;
}

class DiagnosticsTest : public test_support::KernelTest {
public:
    DiagnosticsTest() : KernelTest("diag") {}
    void import_shape(const TopoDS_Shape& shape) {
        const std::string path = (session.dir() / "model.brep").string();
        ASSERT_TRUE(BRepTools::Write(shape, path.c_str()));
        run("import brep '" + path + "'");
    }
    static Ids volumes() { return ti::parse_tarvo_list("volume", "all"); }
};

// A 10 box with one vertical corner cut off by a face 0.01 wide: two curves of 0.01.
TopoDS_Shape cut_corner_box() {
    const double c = 0.01 / std::sqrt(2.0);
    BRepBuilderAPI_MakePolygon outline;
    for (auto [x, y] :
         {std::pair{-5.0, -5.0}, {5.0, -5.0}, {5.0, 5.0 - c}, {5.0 - c, 5.0}, {-5.0, 5.0}})
        outline.Add(gp_Pnt(x, y, -5));
    outline.Close();
    return BRepPrimAPI_MakePrism(BRepBuilderAPI_MakeFace(outline.Wire()).Face(), gp_Vec(0, 0, 10))
        .Shape();
}

// A 10 box made of two boxes fused without joining their coplanar faces: four surfaces 0.01
// wide along one end.
TopoDS_Shape sliver_box() {
    const TopoDS_Shape a = BRepPrimAPI_MakeBox(gp_Pnt(-5, -5, -5), gp_Pnt(4.99, 5, 5)).Shape();
    const TopoDS_Shape b = BRepPrimAPI_MakeBox(gp_Pnt(4.99, -5, -5), gp_Pnt(5, 5, 5)).Shape();
    return BRepAlgoAPI_Fuse(a, b).Shape();
}

std::string first_command(const std::vector<std::vector<std::string>>& solutions) {
    EXPECT_FALSE(solutions.empty());
    if (solutions.empty())
        return "";
    EXPECT_EQ(solutions.front().size(), 2u);
    EXPECT_FALSE(solutions.front().back().empty());
    return solutions.front().front();
}

// A 10 box with one edge rounded to radius 1.
TopoDS_Shape blended_box() {
    BRepPrimAPI_MakeBox box(gp_Pnt(-5, -5, -5), gp_Pnt(5, 5, 5));
    BRepFilletAPI_MakeFillet fillet(box.Shape());
    TopExp_Explorer edge(box.Shape(), TopAbs_EDGE);
    fillet.Add(1.0, TopoDS::Edge(edge.Current()));
    return fillet.Shape();
}

struct Defect {
    const char* name;
    std::vector<std::string> commands; // builds the model, with `shape` when given
    std::function<TopoDS_Shape()> shape;
    const char* finder;
    std::function<void(const Ids&)> check; // what the finder must have found
    // The first advised command for what was found; null where no advice exists.
    std::function<std::string(const Ids&)> advise;
};

const std::vector<Defect>& defects() {
    static const std::vector<Defect> table = {
        {"small curve",
         {},
         cut_corner_box,
         "small curves",
         [](const Ids& found) {
             EXPECT_EQ(found.size(), 2u);
             for (int c : found)
                 EXPECT_NEAR(ti::get_curve_length(c), 0.01, 1e-9);
         },
         [](const Ids& found) {
             return first_command(ti::get_solutions_for_small_curves(found[0], 0.1, 1));
         }},
        {"sliver face",
         {},
         sliver_box,
         "narrow surfaces",
         [](const Ids& found) {
             EXPECT_EQ(found.size(), 4u);
             for (int s : found)
                 EXPECT_NEAR(ti::get_surface_area(s), 0.1, 1e-9);
         },
         [](const Ids& found) {
             return first_command(ti::get_solutions_for_small_surfaces(found[0], 0.1, 1));
         }},
        {"gap of 1e-4",
         {"create box 10", "create box 10 at 10.0001 0 0"},
         nullptr,
         "volume gaps",
         [](const Ids& found) {
             ASSERT_EQ(found.size(), 2u);
             EXPECT_NEAR(ti::get_center_point("surface", found[0])[0], 5, 1e-9);
             EXPECT_NEAR(ti::get_center_point("surface", found[1])[0], 5.0001, 1e-9);
         },
         [](const Ids& found) {
             return first_command(ti::get_volume_gap_solutions(found[0], found[1]));
         }},
        {"overlapping volumes",
         {"create box 10", "create box 10 at 5 0 0"},
         nullptr,
         "overlapping volumes",
         [](const Ids& found) {
             EXPECT_EQ(found, (Ids{1, 2}));
         },
         [](const Ids& found) {
             return first_command(
                 ti::get_solutions_for_overlapping_volumes(found[0], found[1], 0.01, 5));
         }},
        {"blend",
         {},
         blended_box,
         "blend surfaces",
         [](const Ids& found) {
             ASSERT_EQ(found.size(), 1u);
             EXPECT_EQ(ti::get_surface_type(found[0]), "Cylinder");
         },
         [](const Ids& found) { return first_command(ti::get_solutions_for_blends(found[0])); }},
        {"floating volume",
         {"create box 10", "create box 10 at 10 0 0", "merge volume 1 2", "create box 2 at 30 0 0"},
         nullptr,
         "floating volumes",
         [](const Ids& found) { EXPECT_EQ(found, (Ids{3})); },
         nullptr},
        {"non-manifold vertex",
         {"create box 10", "create box 10 at 10 10 10", "merge volume 1 2"},
         nullptr,
         "nonmanifold vertices",
         [](const Ids& found) {
             ASSERT_EQ(found.size(), 1u);
             const auto p = ti::get_center_point("vertex", found[0]);
             EXPECT_NEAR(p[0] + p[1] + p[2], 15, 1e-9);
         },
         nullptr},
    };
    return table;
}

TEST_F(DiagnosticsTest, CleanModelsHaveNoDefects) {
    const std::vector<std::vector<std::string>> models = {
        {"create box 10"},
        {"create cylinder radius 2 height 10"},
        {"create box 10", "create cylinder radius 2 height 20", "subtract volume 2 from volume 1"},
    };
    for (const auto& model : models) {
        SCOPED_TRACE(model.back());
        run("reset");
        for (const std::string& line : model)
            run(line);
        for (const auto& [name, finder] : finders())
            EXPECT_TRUE(finder(volumes()).empty()) << name;
    }
    EXPECT_EQ(ti::get_error_count(), 0) << output->all();
}

TEST_F(DiagnosticsTest, EachFinderReportsItsDefectAndTheAdviceRemovesIt) {
    for (const Defect& d : defects()) {
        SCOPED_TRACE(d.name);
        run("reset");
        for (const std::string& line : d.commands)
            run(line);
        if (d.shape)
            import_shape(d.shape());
        const auto& finder = finders().at(d.finder);
        Ids found = finder(volumes());
        d.check(found);
        if (!d.advise)
            continue;
        // Advice is for one defect at a time: follow it while something is left.
        for (int round = 0; round < 5 && !found.empty(); ++round) {
            run(d.advise(found));
            found = finder(volumes());
        }
        EXPECT_TRUE(found.empty()) << output->all();
        run("mesh volume all");
    }
}

TEST_F(DiagnosticsTest, BadArgumentsAreRefusedAndChangeNothing) {
    run("create box 10");
    run("create box 10 at 10.0001 0 0");
    const std::vector<std::pair<const char*, std::function<bool()>>> calls = {
        {"empty list", [] { return ti::get_small_curves({}, 0.1).empty(); }},
        {"unknown volume",
         [] {
             return ti::get_small_curves({1, 99}, 20).empty();
         }},
        {"size 0", [] { return ti::get_narrow_surfaces({1}, 0).empty(); }},
        {"negative size", [] { return ti::get_small_volumes({1}, -1).empty(); }},
        {"NaN tolerance",
         [] {
             return ti::get_coincident_vertices({1, 2}, std::nan("")).empty();
         }},
        {"unknown curve", [] { return ti::get_solutions_for_small_curves(99, 0.1, 1).empty(); }},
        {"exterior angle 0",
         [] { return ti::get_solutions_for_decomposition({1}, 0, false, false).empty(); }},
        {"unknown surface", [] { return ti::get_volume_gap_solutions(6, 99).empty(); }},
        {"gap 0",
         [] {
             Ids a, b;
             std::vector<double> d, area;
             ti::get_volume_gaps({1, 2}, a, b, d, area, 0, 5, 0);
             return a.empty();
         }},
        {"low above high",
         [] {
             Ids pairs;
             std::vector<double> d;
             ti::get_coincident_vertex_vertex_pairs({1, 2}, pairs, d, 1, 0.5, false);
             return pairs.empty();
         }},
        {"overlap gap 0",
         [] {
             ti::set_overlap_max_gap(0);
             return ti::get_overlap_max_gap() > 0;
         }},
    };
    for (const auto& [name, call] : calls) {
        const int errors = ti::get_error_count();
        EXPECT_TRUE(call()) << name;
        EXPECT_EQ(ti::get_error_count(), errors + 1) << name;
    }
    for (const char* line : {"find small curves size 0", "find small curves in volume 99",
                             "find nothing", "remove surface 99", "remove volume 1",
                             "merge tolerant volume 1 2 tolerance -1", "regularize volume 99"})
        EXPECT_FALSE(rejected(line).empty()) << line;
    EXPECT_EQ(ti::get_volume_count(), 2);
    EXPECT_EQ(ti::get_surface_count(), 12);
}

TEST_F(DiagnosticsTest, FindCommandsPrintWhatTheyFind) {
    import_shape(cut_corner_box());
    output->clear();
    run("find small curves in volume 1 size 0.1");
    EXPECT_EQ(output->starting("Small curves (size 0.1): 2 found").size(), 1u) << output->all();
    EXPECT_EQ(output->starting("  curve ").size(), 2u);
    output->clear();
    run("find narrow surfaces");
    EXPECT_EQ(output->starting("  surface ").size(), 1u) << output->all();
}

TEST_F(DiagnosticsTest, SweepAdviceNamesThePairTheSweeperTakes) {
    run("create box 10");
    Ids sources, targets;
    const auto advice = ti::get_solutions_for_forced_sweepability(1, sources, targets, -1);
    ASSERT_EQ(sources.size(), 1u);
    ASSERT_EQ(targets.size(), 1u);
    run(first_command(advice));
    EXPECT_EQ(ti::get_mesh_scheme("volume", 1), "sweep");
    std::vector<std::vector<int>> fs, ft, is, it;
    EXPECT_TRUE(ti::get_solutions_for_source_target(1, fs, ft, is, it));
    EXPECT_EQ(fs.size(), 3u); // the three pairs of opposite faces
    EXPECT_TRUE(is.empty());
    run("mesh volume 1");
}

// A bracket whose upright is narrower than its base sweeps in no direction; the advised webcuts
// and merge, run in order, leave pieces that mesh with hexes only. Volumes that sweep get none.
TEST_F(DiagnosticsTest, DecompositionAdviceCutsABracketIntoPiecesThatSweep) {
    run("create box 10");
    run("create cylinder radius 2 height 10 at 20 0 0");
    EXPECT_TRUE(ti::get_solutions_for_decomposition({1, 2}, 200, true, false).empty())
        << output->all();
    run("reset");
    run("create box 10 10 2");
    run("create box 2 5 10 at -4 -2.5 4");
    run("unite volume all");
    run("create box 1 at 20 0 0"); // not listed: the merge leaves it alone
    Ids sources, targets;
    EXPECT_TRUE(ti::get_solutions_for_forced_sweepability(1, sources, targets, -1).empty());
    EXPECT_TRUE(ti::get_solutions_for_decomposition({1}, 300, true, false).empty());
    const auto advice = ti::get_solutions_for_decomposition({1}, 200, true, false);
    ASSERT_GE(advice.size(), 2u) << output->all();
    EXPECT_EQ(advice.back()[0], "merge volume all except 3");
    for (const auto& step : advice)
        run(step[0]);
    EXPECT_EQ(ti::get_volume_count(), static_cast<int>(advice.size()) + 1) << output->all();
    run("mesh volume all");
    EXPECT_GT(ti::get_hex_count(), 0);
    EXPECT_EQ(ti::get_tet_count(), 0) << output->all();
}

TEST_F(DiagnosticsTest, EstimatedMergeToleranceCatchesTheGap) {
    run("create box 10");
    run("create box 10 at 10.0001 0 0");
    std::vector<double> tolerances;
    std::vector<int> counts;
    const double t = ti::estimate_merge_tolerance({1, 2}, false, false, 1e-6, 1e-2, 10, true,
                                                  &tolerances, &counts);
    EXPECT_GT(t, 1e-4);
    EXPECT_LT(t, 1e-3);
    ASSERT_EQ(counts.size(), 10u);
    EXPECT_EQ(counts.front(), 0);
    EXPECT_EQ(counts.back(), 4);
    run("merge tolerant volume all tolerance " + std::to_string(t));
    EXPECT_EQ(ti::get_surface_count(), 11);
}

TEST_F(DiagnosticsTest, RegularizeJoinsSurfacesSplitOnOnePlane) {
    import_shape(sliver_box());
    ASSERT_EQ(ti::get_surface_count(), 10);
    run("regularize volume 1");
    EXPECT_EQ(ti::get_surface_count(), 6);
    EXPECT_TRUE(ti::get_narrow_surfaces({1}, 0.1).empty());
    EXPECT_NEAR(ti::get_total_volume({1}), 1000, 1e-6);
}

TEST_F(DiagnosticsTest, AnInterruptedFinderAnswersNothing) {
    import_shape(cut_corner_box());
    ti::set_tarvo_interrupt(true);
    const int errors = ti::get_error_count();
    EXPECT_TRUE(ti::get_small_curves({1}, 0.1).empty());
    ti::set_tarvo_interrupt(false);
    EXPECT_EQ(ti::get_error_count(), errors + 1);
    EXPECT_EQ(ti::get_small_curves({1}, 0.1).size(), 2u);
}

// The finders run to the end on real files; the timings go to the test's output.
TEST_F(DiagnosticsTest, FindersRunOnRealCad) {
    const std::vector<std::pair<std::string, std::vector<std::string>>> files = {
        {"as1-tu-203.stp", {"imprint all", "merge all"}},
        {"cube1000.igs", {"heal all"}},
        {"t20_data.step", {}},
        {"cube-sphere-cube-compound.brep", {}},
    };
    for (const auto& [file, then] : files) {
        SCOPED_TRACE(file);
        run("reset");
        const std::string ext = file.substr(file.rfind('.') + 1);
        run("import " +
            std::string(ext == "brep"  ? "brep"
                        : ext == "igs" ? "iges"
                                       : "step") +
            " '" + test_support::cad_file(file) + "'");
        for (const std::string& line : then)
            run(line);
        const Ids all = volumes();
        ASSERT_FALSE(all.empty());
        for (const auto& [name, finder] : finders()) {
            const int errors = ti::get_error_count();
            const auto start = std::chrono::steady_clock::now();
            const Ids found = finder(all);
            const double seconds =
                std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
            EXPECT_EQ(ti::get_error_count(), errors) << name << "\n" << output->all();
            std::printf("%-32s %-22s %4zu found %8.3f s\n", file.c_str(), name.c_str(),
                        found.size(), seconds);
        }
    }
}

} // namespace
