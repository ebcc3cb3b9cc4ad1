// The native file through the command language: a model with every kind of state is saved,
// reset and opened, and every public query answers as it did before (compared as a dump of the
// query functions); meshing goes on from the opened model. Files that must be refused (foreign,
// newer, truncated at every length, damaged) and saves that must fail leave the model as it was
// and no file behind.

#include "tarvo/TarvoInterface.h"

#include "../support/KernelTest.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <unistd.h>

namespace TI = TarvoInterface;
namespace fs = std::filesystem;

namespace {

// Every answer of the query functions about the model, one line per entity, numbers to 12
// significant digits (a B-rep read back gives its measures to the last bit or nearly so).
class Dump {
public:
    std::string text() const { return out.str(); }

    Dump() {
        out.precision(12);
        geometry();
        mesh();
        containers();
        view();
    }

private:
    template <class T> void put(const T& v) { out << ' ' << v; }
    template <class T, size_t N> void put(const std::array<T, N>& v) {
        for (const T& x : v)
            put(x);
    }
    template <class T> void put(const std::vector<T>& v) {
        out << " [";
        for (const T& x : v)
            put(x);
        out << " ]";
    }
    void put(const std::pair<std::string, int>& p) { out << ' ' << p.first << '=' << p.second; }
    template <class... T> void line(const std::string& what, const T&... v) {
        out << what;
        (put(v), ...);
        out << '\n';
    }

    void geometry() {
        const char* types[] = {"body", "volume", "surface", "curve", "vertex"};
        line("counts", TI::get_body_count(), TI::get_volume_count(), TI::get_surface_count(),
             TI::get_curve_count(), TI::get_vertex_count());
        line("auto size", TI::get_default_auto_size(), TI::get_trimesh_surface_gradation());
        for (const std::string type : types) {
            line("free " + type, TI::get_list_of_free_ref_entities(type));
            for (int id : TI::get_entities(type)) {
                const std::string e = type + " " + std::to_string(id);
                line(e, TI::get_entity_name(type, id, true), TI::get_entity_color(type, id),
                     TI::is_visible(type, id), TI::get_bounding_box(type, id),
                     TI::get_center_point(type, id), TI::get_owning_body(type, id));
                for (const std::string other : types)
                    line(e + " " + other, TI::get_relatives(type, id, other));
                if (type == "volume")
                    line(e + " mesh", TI::get_volume_area(id), TI::is_sheet_body(id),
                         TI::get_tetmesh_growth_factor(id), TI::get_volume_hexes(id),
                         TI::get_volume_tets(id), TI::get_volume_nodes(id));
                if (type == "surface")
                    line(e + " mesh", TI::get_surface_area(id), TI::get_surface_type(id),
                         TI::get_surface_quads(id), TI::get_surface_tris(id),
                         TI::get_surface_nodes(id), TI::get_adjacent_volumes(type, id));
                if (type == "curve")
                    line(e + " mesh", TI::get_curve_length(id), TI::get_curve_type(id),
                         TI::get_curve_bias_type(id), TI::get_curve_bias_geometric_factor(id),
                         TI::get_curve_edges(id), TI::get_curve_nodes(id));
                if (type == "vertex")
                    line(e + " node", TI::get_vertex_node(id));
                if (type != "body" && type != "vertex")
                    line(e + " sizing", TI::is_meshed(type, id), TI::is_merged(type, id),
                         TI::get_mesh_scheme(type, id), TI::get_mesh_size(type, id),
                         TI::get_requested_mesh_size(type, id), TI::get_mesh_size_type(type, id),
                         TI::get_mesh_intervals(type, id), TI::get_mesh_interval_firmness(type, id),
                         TI::get_requested_mesh_intervals(type, id));
            }
        }
    }

    void mesh() {
        line("mesh counts", TI::get_node_count(), TI::get_element_count(), TI::get_hex_count(),
             TI::get_tet_count(), TI::get_pyramid_count(), TI::get_quad_count(),
             TI::get_tri_count(), TI::get_edge_count());
        for (int n : TI::parse_tarvo_list("node", "all"))
            line("node " + std::to_string(n), TI::get_nodal_coordinates(n),
                 TI::get_geometry_owner("node", n));
        for (const std::string kind : {"edge", "tri", "quad", "tet", "hex", "pyramid", "wedge"})
            for (int e : TI::parse_tarvo_list(kind, "all"))
                line(kind + " " + std::to_string(e), TI::get_connectivity(kind, e),
                     TI::get_geometry_owner(kind, e), TI::get_global_element_id(kind, e));
    }

    void containers() {
        line("next ids", TI::get_next_block_id(), TI::get_next_nodeset_id(),
             TI::get_next_sideset_id(), TI::get_next_group_id());
        for (int b : TI::get_block_id_list())
            line("block " + std::to_string(b), TI::get_exodus_entity_name("block", b),
                 TI::get_block_element_type(b), TI::get_block_volumes(b), TI::get_block_hexes(b),
                 TI::get_block_tets(b), TI::get_block_element_attribute_names(b),
                 TI::get_block_attribute_count(b));
        for (int n : TI::get_nodeset_id_list())
            line("nodeset " + std::to_string(n), TI::get_exodus_entity_name("nodeset", n),
                 TI::get_nodeset_surfaces(n), TI::get_nodeset_nodes_inclusive(n));
        for (int s : TI::get_sideset_id_list())
            line("sideset " + std::to_string(s), TI::get_exodus_entity_name("sideset", s),
                 TI::get_sideset_surfaces(s), TI::get_sideset_quads(s),
                 TI::get_exodus_element_count(s, "sideset"));
        for (const auto& [name, id] : TI::group_names_ids())
            line("group " + std::to_string(id), name, TI::get_group_groups(id),
                 TI::get_group_volumes(id), TI::get_group_surfaces(id), TI::get_group_hexes(id),
                 TI::get_group_nodes(id));
    }

    void view() {
        line("view", TI::get_rendering_mode(), TI::is_perspective_on(), TI::is_mesh_visibility_on(),
             TI::get_label_type("volume"), TI::get_label_type("surface"));
    }

    std::ostringstream out;
};

std::string read_bytes(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

void write_bytes(const fs::path& path, std::string_view bytes) {
    std::ofstream(path, std::ios::binary | std::ios::trunc).write(bytes.data(), bytes.size());
}

std::vector<std::string> listing(const fs::path& dir) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(dir))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

class NativeFileTest : public test_support::KernelTest {
protected:
    NativeFileTest() : KernelTest("exchange") {}
};

TEST_F(NativeFileTest, SaveResetOpenGivesBackEveryAnswer) {
    // Two boxes merged (a shared surface), a hidden cylinder, names and colours, sizes and a
    // bias, a hex-meshed and a tet-meshed volume, containers and nested groups, a view setting.
    run("create box 10");
    run("create box 10 at 10 0 0");
    run("imprint all");
    run("merge all");
    run("create cylinder radius 2 height 5 at 0 20 0");
    run("volume 1 name 'left'");
    run("color volume 2 rgb 0.2 0.4 0.6");
    run("hide volume 3");
    run("volume 1 interval 3");
    run("volume 2 size 4");
    run("volume 2 scheme tetmesh");
    run("curve 1 bias 1.3");
    run("mesh volume 1");
    run("mesh volume 2");
    // One interval: curves and faces without nodes of their own.
    run("create box 1 at 0 -20 0");
    run("volume 4 interval 1");
    run("mesh volume 4");
    run("block 1 add volume 1");
    run("block 1 name 'steel'");
    run("nodeset 3 add surface 1");
    run("sideset 4 add surface 2");
    run("create group 'inner'");
    run("group 'inner' add volume 1 surface 3 hex 1 to 5");
    run("create group 'outer'");
    run("group 'outer' add group 1 volume 2");
    run("graphics mode wireframe");
    run("label volume on");
    ASSERT_GT(TI::get_hex_count(), 0);
    ASSERT_GT(TI::get_tet_count(), 0);
    int shared = 0;
    for (int s : TI::get_entities("surface"))
        shared += TI::get_relatives("surface", s, "volume").size() == 2;
    ASSERT_EQ(shared, 1);
    const std::string before = Dump().text();

    // The saved and read events and the modified flag are tests/e2e/test_native_file.py's.
    run("save as 'model.tvo'");
    run("reset");
    run("graphics mode smoothshade");
    ASSERT_EQ(TI::get_volume_count(), 0);

    recorder.events.clear();
    run("open 'model.tvo'");
    EXPECT_EQ(Dump().text(), before);
    EXPECT_EQ(TI::number_undo_commands(), 0);
    EXPECT_EQ(recorder.count("volume_created 1"), 1u);
    EXPECT_EQ(recorder.count("mesh_created volume 2"), 1u);
    EXPECT_EQ(recorder.count("group_created 2"), 1u);

    // Meshing goes on: the cylinder conforms to nothing, and its ids follow the highest ever.
    const int nodes = TI::get_node_count();
    const std::vector<int> old_nodes = TI::parse_tarvo_list("node", "all");
    run("mesh volume 3");
    EXPECT_GT(TI::get_node_count(), nodes);
    EXPECT_GT(TI::parse_tarvo_list("node", "in volume 3").front(), old_nodes.back());
    run("undo");
    EXPECT_EQ(Dump().text(), before);

    // Opening over a live model replaces it.
    run("create box 1 at 50 50 50");
    run("open 'model.tvo'");
    EXPECT_EQ(Dump().text(), before);
}

TEST_F(NativeFileTest, RefusedFilesAndFailedSavesChangeNothing) {
    // Small, so that opening every prefix of it stays quick.
    run("create vertex 1 2 3");
    run("save as 'small.tvo'");
    const std::string good = read_bytes(session.dir() / "small.tvo");
    ASSERT_GT(good.size(), 40u);
    run("create sphere radius 3 at 30 0 0");
    run("volume 1 name 'ball'");
    run("mesh volume 1");
    const std::string model = Dump().text();
    const bool modified = TI::is_modified();

    std::string newer = good;
    const uint32_t version = 2;
    std::memcpy(newer.data() + 8, &version, 4);
    std::string damaged = good;
    damaged[good.size() / 2] ^= 0x55;
    fs::create_directory(session.dir() / "ro");
    write_bytes(session.dir() / "ro" / "keep.tvo", "old");
    fs::permissions(session.dir() / "ro", fs::perms::owner_read | fs::perms::owner_exec);

    struct Case {
        std::string line, file_bytes, message;
        bool skip = false;
    };
    const std::vector<Case> cases = {
        {"open 'newer.tvo'", newer, "newer version (format 2"},
        {"open 'damaged.tvo'", damaged, "damaged"},
        {"open 'notes.txt'", "solid box\nfacet normal 0 0 1\n", "not a native model file"},
        {"open 'missing.tvo'", "", "does not exist"},
        {"save as 'nodir/x.tvo'", "", "does not exist"},
        {"save as 'small.tvo'", "", "exists; add 'overwrite'"},
        {"save as 'model.step'", "", "must end in .tvo"},
        // Root writes anywhere: the read-only case only means something to other users.
        {"save as 'ro/keep.tvo' overwrite", "", "Permission denied", ::geteuid() == 0},
    };
    for (const Case& c : cases) {
        if (c.skip)
            continue;
        const std::string name =
            c.line.substr(c.line.find('\'') + 1, c.line.rfind('\'') - c.line.find('\'') - 1);
        if (!c.file_bytes.empty())
            write_bytes(session.dir() / name, c.file_bytes);
        EXPECT_NE(rejected(c.line).find(c.message), std::string::npos) << c.line;
        EXPECT_EQ(Dump().text(), model) << c.line;
        EXPECT_EQ(TI::is_modified(), modified) << c.line;
    }
    EXPECT_EQ(read_bytes(session.dir() / "ro" / "keep.tvo"), "old");
    EXPECT_EQ(read_bytes(session.dir() / "small.tvo"), good);

    // Every prefix of a good file is refused as truncated, and leaves the model alone.
    for (size_t n = 0; n < good.size(); ++n) {
        write_bytes(session.dir() / "cut.tvo", std::string_view(good).substr(0, n));
        output->clear();
        ASSERT_FALSE(TI::cmd("open 'cut.tvo'")) << n;
        ASSERT_NE(output->all().find("truncated"), std::string::npos) << n << output->all();
        ASSERT_EQ(TI::get_volume_count(), 1) << n;
    }
    EXPECT_EQ(Dump().text(), model);

    // No temporary file was left behind by any of it.
    fs::permissions(session.dir() / "ro", fs::perms::owner_all);
    EXPECT_EQ(listing(session.dir()),
              (std::vector<std::string>{"cut.tvo", "damaged.tvo", "newer.tvo", "notes.txt", "ro",
                                        "small.tvo"}));
    EXPECT_EQ(listing(session.dir() / "ro"), std::vector<std::string>{"keep.tvo"});
}

} // namespace
