// Import and export of real CAD files, healing, bad files and interrupts.
#include "GeometryTestSupport.h"

#include <cmath>
#include <fstream>
#include <future>
#include <set>
#include <thread>

using namespace geometry_test;
using namespace TarvoInterface;

namespace {

using GeometryFilesTest = GeometryTest;

TEST_F(GeometryFilesTest, StepAssemblyImportsNamedVolumesAndTree) {
    run("import step '" + cad_file("as1-tu-203.stp") + "'");
    ASSERT_EQ(get_volume_count(), 18);
    std::multiset<std::string> names;
    for (int v : get_entities("volume")) {
        std::string name = get_entity_name("volume", v, true);
        EXPECT_FALSE(name.empty()) << "volume " << v;
        // Instances of one part get distinct names: "nut", "nut_2", ...
        names.insert(name.substr(0, name.find('_')));
    }
    for (const char* part : {"nut", "bolt", "rod", "l-bracket", "plate"})
        EXPECT_GT(names.count(part), 0u) << part;
    const int plate = get_owning_volume_by_name("plate");
    ASSERT_NE(plate, 0);
    EXPECT_EQ(get_entity_name("volume", plate, true), "plate");
    // The assembly tree: one root, parts with volumes, every volume in exactly one part.
    auto roots = get_top_level_assembly_items();
    ASSERT_EQ(roots.size(), 1u);
    EXPECT_EQ(roots[0].type, "assembly");
    std::multiset<int> in_parts;
    for (const AssemblyItem& item : get_assembly_items()) {
        if (item.type == "part") {
            EXPECT_FALSE(item.volume_ids.empty()) << item.path;
            in_parts.insert(item.volume_ids.begin(), item.volume_ids.end());
            EXPECT_EQ(get_parent_assembly_path(item.id) + "/" + item.name, item.path);
        }
    }
    EXPECT_EQ(in_parts.size(), 18u);
    EXPECT_EQ(std::set<int>(in_parts.begin(), in_parts.end()).size(), 18u);
    EXPECT_FALSE(get_assembly_children(roots[0].id).empty());
    EXPECT_EQ(get_volumes_for_node(roots[0].name, 1).size(), 18u);
}

TEST_F(GeometryFilesTest, ImprintAndMergeOfTheAssemblyReduceSurfaces) {
    run("import step '" + cad_file("as1-tu-203.stp") + "'");
    const int surfaces = get_surface_count();
    const double volume = get_total_volume(get_entities("volume"));
    run("imprint all");
    const int imprinted = get_surface_count();
    EXPECT_GE(imprinted, surfaces);
    recorder.events.clear();
    run("merge all");
    const int merged = get_surface_count();
    EXPECT_LT(merged, imprinted);
    EXPECT_EQ(get_volume_count(), 18);
    EXPECT_NEAR(get_total_volume(get_entities("volume")), volume, 1e-5 * volume);
    // One merge event per surface that went away.
    std::size_t surface_merges = recorder.starting("merge surface").size();
    EXPECT_EQ(surface_merges, static_cast<std::size_t>(imprinted - merged));
    int shared = 0;
    for (int s : get_entities("surface"))
        shared += is_merged("surface", s) ? 1 : 0;
    EXPECT_EQ(shared, imprinted - merged);
}

TEST_F(GeometryFilesTest, LooseFacesHealIntoSolids) {
    run("import iges '" + cad_file("cube1000.igs") + "'");
    EXPECT_EQ(get_volume_count(), 0);
    const auto loose = get_entities("surface");
    ASSERT_EQ(loose.size(), 6u);
    run("heal all");
    EXPECT_EQ(get_volume_count(), 1);
    EXPECT_EQ(get_entities("surface"), loose); // sewn faces keep their ids
    EXPECT_GT(get_volume_area(get_entities("volume").front()), 0);

    // cube_filet.stp holds only the blends of a filleted cube (no flat faces): healing sews
    // nothing open into a solid, and the blends stay cylinders and spheres.
    run("import step '" + cad_file("cube_filet.stp") + "' heal");
    EXPECT_EQ(get_volume_count(), 1);
    EXPECT_EQ(get_surface_count(), 6 + 25);
    for (int s : get_list_of_free_ref_entities("surface")) {
        const std::string type = get_surface_type(s);
        EXPECT_TRUE(type == "Cylinder" || type == "Sphere") << type;
    }

    // model1.igs: 28 faces of revolution and extrusion that sew into one closed solid.
    run("import iges '" + cad_file("model1.igs") + "' heal");
    EXPECT_EQ(get_volume_count(), 2);
    const int turned = get_entities("volume").back();
    EXPECT_EQ(get_relatives("volume", turned, "surface").size(), 28u);
    EXPECT_GT(get_volume_area(turned), 0);
}

TEST_F(GeometryFilesTest, BadFilesFailCleanly) {
    run("create box 1");
    const std::string before = fingerprint();
    // Truncated copies of real files, text that is no CAD at all, binary noise, an empty file.
    auto head_of = [](const std::string& path, std::size_t bytes) {
        std::ifstream in(path, std::ios::binary);
        std::string text(bytes, '\0');
        in.read(text.data(), static_cast<std::streamsize>(bytes));
        text.resize(static_cast<std::size_t>(in.gcount()));
        return text;
    };
    const std::vector<std::pair<std::string, std::string>> files = {
        {"step", head_of(cad_file("as1-tu-203.stp"), 3000)},
        {"iges", head_of(cad_file("model1.igs"), 5000)},
        {"step", "ISO-10303-21;\nHEADER;\nthis is not step\n"},
        {"iges", "\x01\x02\x03 garbage"},
        {"brep", "DBRep_DrawableShape\nCASCADE Topology V1\nLocations 7\n"},
        {"step", ""},
    };
    for (const auto& [format, content] : files) {
        {
            std::ofstream f("corrupt." + format, std::ios::binary | std::ios::trunc);
            f << content;
        }
        const std::string error = rejected("import " + format + " 'corrupt." + format + "'");
        EXPECT_NE(error.find("corrupt." + format), std::string::npos) << content.size() << " bytes";
        EXPECT_EQ(fingerprint(), before);
    }
}

TEST_F(GeometryFilesTest, ExportRoundTripsThroughEachFormat) {
    run("create box 10");
    run("create cylinder radius 2 height 20");
    run("subtract volume 2 from volume 1");
    const double volume = get_volume_area(1);
    for (const char* format : {"step", "iges", "brep"}) {
        const std::string file = std::string("part.") + format;
        run(std::string("export ") + format + " '" + file + "'");
        EXPECT_FALSE(cmd((std::string("export ") + format + " '" + file + "'").c_str()))
            << "an existing file needs 'overwrite'";
        run(std::string("export ") + format + " '" + file + "' overwrite");
        run(std::string("import ") + format + " '" + file + "'" +
            (std::string(format) == "iges" ? " heal" : ""));
        const int v = get_entities("volume").back();
        EXPECT_NEAR(get_volume_area(v), volume, 1e-3 * volume) << format;
        run("delete volume " + std::to_string(v));
    }
    run("import brep '" + cad_file("cube-sphere-cube-compound.brep") + "'");
    EXPECT_EQ(get_volume_count(), 4);
}

// Colours as the file gives them (sRGB), within the precision the file writes.
void expect_color(const std::array<double, 4>& c, double r, double g, double b) {
    EXPECT_NEAR(c[0], r, 1e-4);
    EXPECT_NEAR(c[1], g, 1e-4);
    EXPECT_NEAR(c[2], b, 1e-4);
}

TEST_F(GeometryFilesTest, ColoursOfPartsAndFacesComeFromTheFile) {
    // red_cube_blue_cylinder.step styles only faces: each surface and, as all its faces agree,
    // each volume shows the file's colour.
    run("import step '" + cad_file("red_cube_blue_cylinder.step") + "'");
    ASSERT_EQ(get_volume_count(), 2);
    for (int v : get_entities("volume")) {
        const bool cube = get_entity_name("volume", v, true) == "red_cube";
        const std::array<double, 3> rgb =
            cube ? std::array<double, 3>{0.8666667, 0.3215686, 0.1568628}
                 : std::array<double, 3>{0.2313726, 0.3803922, 0.7058824};
        expect_color(get_entity_color("volume", v), rgb[0], rgb[1], rgb[2]);
        const auto surfaces = get_relatives("volume", v, "surface");
        EXPECT_EQ(surfaces.size(), cube ? 6u : 3u);
        for (int s : surfaces)
            expect_color(get_entity_color("surface", s), rgb[0], rgb[1], rgb[2]);
    }
    // as1-tu-203.stp gives one part COLOUR_RGB(1.0, 0.56862745098, 0.0).
    run("import step '" + cad_file("as1-tu-203.stp") + "'");
    int orange = 0;
    for (int v : get_entities("volume")) {
        const auto c = get_entity_color("volume", v);
        orange += std::abs(c[0] - 1) < 1e-4 && std::abs(c[1] - 0.5686275) < 1e-4 && c[2] < 1e-4;
    }
    EXPECT_GT(orange, 0);
}

TEST_F(GeometryFilesTest, StepAndIgesExportKeepNamesColoursAndTheTree) {
    run("import step '" + cad_file("as1-tu-203.stp") + "'");
    run("color volume with name 'plate' rgb 0.2 0.4 0.6");
    auto snapshot = [] {
        std::multiset<std::string> out;
        for (int v : get_entities("volume")) {
            const auto c = get_entity_color("volume", v);
            char rgb[64];
            std::snprintf(rgb, sizeof rgb, " %.3f %.3f %.3f", c[0], c[1], c[2]);
            out.insert(get_entity_name("volume", v, true) + rgb);
        }
        for (const AssemblyItem& item : get_assembly_items())
            out.insert(item.type + " " + item.path + " " + std::to_string(item.level) + " " +
                       std::to_string(item.instance));
        return out;
    };
    const auto before = snapshot();
    run("export step 'as1.step'");
    run("reset");
    run("import step 'as1.step'");
    EXPECT_EQ(snapshot(), before);

    // IGES has no assemblies: names and colours only.
    run("reset");
    run("create box 10");
    run("create cylinder radius 2 height 5 at 20 0 0");
    run("volume 1 name 'plate'");
    run("volume 2 name 'pin'");
    run("color volume 1 rgb 1 0.5686 0");
    run("export iges 'parts.igs'");
    run("reset");
    run("import iges 'parts.igs'");
    ASSERT_EQ(get_volume_count(), 2);
    EXPECT_EQ(get_entity_name("volume", 1, true), "plate");
    EXPECT_EQ(get_entity_name("volume", 2, true), "pin");
    expect_color(get_entity_color("volume", 1), 1, 0.5686, 0);
}

TEST_F(GeometryFilesTest, BrepKeepsTheFacesThatMergedVolumesShare) {
    run("create box 10");
    run("create box 10 at 10 0 0");
    run("merge all");
    ASSERT_EQ(get_surface_count(), 11);
    run("export brep 'merged.brep'");
    run("reset");
    run("import brep 'merged.brep'");
    EXPECT_EQ(get_volume_count(), 2);
    EXPECT_EQ(get_surface_count(), 11);
    EXPECT_EQ(get_curve_count(), 20);
    EXPECT_EQ(get_vertex_count(), 12);
    EXPECT_EQ(get_adjacent_volumes("volume", 1), std::vector<int>{2});
}

// Sets the interrupt from another thread when the kernel reports progress past `trigger`, and
// holds the kernel thread until the interrupt is set: the race is decided by gates.
class InterruptingProgress : public TarvoProgressHandler {
public:
    explicit InterruptingProgress(double trigger) : trigger(trigger) {}
    void start(const char*, const char*, bool) override { maybe_fire(0); }
    void percent(double value) override { maybe_fire(value); }
    void end() override {}
    bool fired = false;

private:
    void maybe_fire(double value) {
        if (fired || value < trigger)
            return;
        fired = true;
        std::promise<void> done;
        std::thread other([&] {
            set_tarvo_interrupt(true);
            done.set_value();
        });
        done.get_future().wait();
        other.join();
    }
    double trigger;
};

TEST_F(GeometryFilesTest, InterruptStopsImportAndBooleansAndRestores) {
    run("create box 1 at 100 0 0");
    const std::string before = fingerprint();
    // Inside the STEP transfer (30..80 %): OpenCASCADE polls the interrupt and stops.
    auto in_transfer = std::make_shared<InterruptingProgress>(30.5);
    set_progress_handler(in_transfer);
    EXPECT_EQ(rejected("import step '" + cad_file("as1-tu-203.stp") + "'"), "ERROR: Interrupted");
    EXPECT_TRUE(in_transfer->fired);
    EXPECT_EQ(fingerprint(), before);

    // A subtract over many bodies stops at the first check after the interrupt.
    set_progress_handler({});
    for (int i = 0; i < 6; ++i)
        run("create box 1 at " + std::to_string(3 * i) + " 0 0");
    run("create box 40 0.5 0.5 at 8 0 0");
    const std::string many = fingerprint();
    auto at_start = std::make_shared<InterruptingProgress>(0);
    set_progress_handler(at_start);
    EXPECT_EQ(rejected("subtract volume 8 from volume 2 to 7"), "ERROR: Interrupted");
    EXPECT_TRUE(at_start->fired);
    EXPECT_EQ(fingerprint(), many);
    set_progress_handler({});
    // The next command runs normally: the flag was cleared.
    run("subtract volume 8 from volume 2 to 7");
    EXPECT_EQ(get_volume_count(), 7);
}

TEST_F(GeometryFilesTest, InterruptInsideTheGeneralFuseOfAnAssembly) {
    run("import step '" + cad_file("as1-tu-203.stp") + "'");
    const std::string before = fingerprint();
    // Past 2 % the imprint is inside OpenCASCADE's general fuse, which polls the interrupt.
    auto inside = std::make_shared<InterruptingProgress>(2);
    set_progress_handler(inside);
    EXPECT_EQ(rejected("imprint all"), "ERROR: Interrupted");
    set_progress_handler({});
    EXPECT_TRUE(inside->fired);
    EXPECT_EQ(fingerprint(), before);
}

} // namespace
