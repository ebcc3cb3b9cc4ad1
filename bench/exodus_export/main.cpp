// `export mesh` of a structured hex model (three merged boxes, one block each, five nodesets and
// five sidesets on their surfaces) against the floor: plain Exodus API calls writing the same
// arrays, read back from our own file, in the same run. Prints both times, the ratio and the
// file sizes; then `save as` and `open` of the native file of the same model.
//
//   bench_exodus_export [intervals per box edge, default 70: 3 x 70^3 = 1,029,000 hexes]
//                       [repeats, default 3]

#include "../BenchSupport.h"

#include <exodusII.h>

#include <ctime>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace {

struct Block {
    int id;
    std::string type, name;
    int count, per_element;
    std::vector<int> conn;
};
struct Set {
    int id;
    std::string name;
    std::vector<int> entries, sides;
};

// What our file holds, read back with the Exodus API, so the floor writes the same arrays.
struct Arrays {
    int dim = 3;
    std::vector<double> x, y, z;
    std::vector<int> node_map;
    std::vector<Block> blocks;
    std::vector<Set> nodesets, sidesets;
};

void must(int rc, const char* what) {
    if (rc < 0) {
        std::fprintf(stderr, "Exodus call failed: %s\n", what);
        std::exit(1);
    }
}

std::string name_of(int exo, ex_entity_type type, int id) {
    char name[80 + 1] = {}; // the file's names are up to 80 (ex_set_max_name_length below)
    must(ex_get_name(exo, type, id, name), "name");
    return name;
}

std::vector<Set> read_sets(int exo, ex_entity_type type, ex_inquiry count) {
    std::vector<int> ids(ex_inquire_int(exo, count));
    if (!ids.empty())
        must(ex_get_ids(exo, type, ids.data()), "set ids");
    std::vector<Set> sets;
    for (int id : ids) {
        Set s{id, name_of(exo, type, id), {}, {}};
        int64_t size = 0, dist = 0;
        must(ex_get_set_param(exo, type, id, &size, &dist), "set param");
        s.entries.resize(size);
        if (type == EX_SIDE_SET)
            s.sides.resize(size);
        must(
            ex_get_set(exo, type, id, s.entries.data(), s.sides.empty() ? nullptr : s.sides.data()),
            "set");
        sets.push_back(std::move(s));
    }
    return sets;
}

Arrays read_back(const std::string& path) {
    int cpu = 8, io = 0;
    float version = 0;
    const int exo = ex_open(path.c_str(), EX_READ, &cpu, &io, &version);
    must(exo, "open");
    ex_set_max_name_length(exo, 80);
    Arrays a;
    const auto nodes = ex_inquire_int(exo, EX_INQ_NODES);
    a.x.resize(nodes);
    a.y.resize(nodes);
    a.z.resize(nodes);
    a.node_map.resize(nodes);
    must(ex_get_coord(exo, a.x.data(), a.y.data(), a.z.data()), "coordinates");
    must(ex_get_id_map(exo, EX_NODE_MAP, a.node_map.data()), "node map");
    std::vector<int> ids(ex_inquire_int(exo, EX_INQ_ELEM_BLK));
    must(ex_get_ids(exo, EX_ELEM_BLOCK, ids.data()), "block ids");
    for (int id : ids) {
        char type[MAX_STR_LENGTH + 1] = {};
        int64_t count = 0, per = 0, edges = 0, faces = 0, attrs = 0;
        must(ex_get_block(exo, EX_ELEM_BLOCK, id, type, &count, &per, &edges, &faces, &attrs),
             "block");
        Block b{id,
                type,
                name_of(exo, EX_ELEM_BLOCK, id),
                static_cast<int>(count),
                static_cast<int>(per),
                std::vector<int>(count * per)};
        must(ex_get_conn(exo, EX_ELEM_BLOCK, id, b.conn.data(), nullptr, nullptr), "conn");
        a.blocks.push_back(std::move(b));
    }
    a.nodesets = read_sets(exo, EX_NODE_SET, EX_INQ_NODE_SETS);
    a.sidesets = read_sets(exo, EX_SIDE_SET, EX_INQ_SIDE_SETS);
    ex_close(exo);
    return a;
}

// The floor: the calls our export makes, with the arrays ready, in the same order (every
// definition before the bulk data, so that netCDF never moves data already written).
void write_plain(const Arrays& a, const std::string& path) {
    int cpu = 8, io = 8;
    const int exo = ex_create(path.c_str(), EX_CLOBBER, &cpu, &io);
    must(exo, "create");
    must(ex_set_max_name_length(exo, 80), "name length");
    int64_t elements = 0;
    for (const auto& b : a.blocks)
        elements += b.count;
    must(ex_put_init(exo, "plain", a.dim, static_cast<int64_t>(a.x.size()), elements,
                     static_cast<int64_t>(a.blocks.size()), static_cast<int64_t>(a.nodesets.size()),
                     static_cast<int64_t>(a.sidesets.size())),
         "init");
    for (const auto& b : a.blocks) {
        must(
            ex_put_block(exo, EX_ELEM_BLOCK, b.id, b.type.c_str(), b.count, b.per_element, 0, 0, 0),
            "block");
        if (!b.name.empty())
            must(ex_put_name(exo, EX_ELEM_BLOCK, b.id, b.name.c_str()), "block name");
    }
    for (const auto* sets : {&a.nodesets, &a.sidesets}) {
        const ex_entity_type type = sets == &a.nodesets ? EX_NODE_SET : EX_SIDE_SET;
        for (const auto& s : *sets) {
            must(ex_put_set_param(exo, type, s.id, static_cast<int64_t>(s.entries.size()), 0),
                 "set param");
            must(ex_put_set(exo, type, s.id, s.entries.data(),
                            s.sides.empty() ? nullptr : s.sides.data()),
                 "set");
            if (!s.name.empty())
                must(ex_put_name(exo, type, s.id, s.name.c_str()), "set name");
        }
    }
    std::string fields[4] = {"plain", "1", "01/01/26", "00:00:00"};
    char* qa[1][4] = {{fields[0].data(), fields[1].data(), fields[2].data(), fields[3].data()}};
    must(ex_put_qa(exo, 1, qa), "qa");
    std::string info = "plain Exodus API floor";
    char* infos[1] = {info.data()};
    must(ex_put_info(exo, 1, infos), "info");
    std::string axes[3] = {"x", "y", "z"};
    char* axis_names[3] = {axes[0].data(), axes[1].data(), axes[2].data()};
    must(ex_put_coord_names(exo, axis_names), "coordinate names");
    must(ex_put_id_map(exo, EX_NODE_MAP, a.node_map.data()), "node map");
    must(ex_put_coord(exo, a.x.data(), a.y.data(), a.z.data()), "coordinates");
    for (const auto& b : a.blocks)
        must(ex_put_conn(exo, EX_ELEM_BLOCK, b.id, b.conn.data(), nullptr, nullptr), "conn");
    must(ex_close(exo), "close");
}

} // namespace

int main(int argc, char** argv) {
    const int n = argc > 1 ? std::atoi(argv[1]) : 70;
    const int repeats = argc > 2 ? std::atoi(argv[2]) : 3;
    TarvoMessage::instance()->set_message_handler(std::make_shared<bench::QuietHandler>());
    if (!TarvoInterface::init({"bench_exodus_export", "-nojournal"}))
        return 1;
    bench::kernel("create box 10");
    bench::kernel("create box 10");
    bench::kernel("create box 10");
    bench::kernel("move volume 2 by 10 0 0");
    bench::kernel("move volume 3 by 20 0 0");
    bench::kernel("merge all");
    bench::kernel("volume all interval " + std::to_string(n));
    const double mesh_s = bench::seconds([] { bench::kernel("mesh volume all"); });
    for (int v = 1; v <= 3; ++v)
        bench::kernel("block " + std::to_string(v) + " add volume " + std::to_string(v));
    bench::kernel("block 2 name 'middle'");
    // Ten sets on the model's outer surfaces: five nodesets, five sidesets.
    std::vector<int> outer;
    for (int s : TarvoInterface::parse_tarvo_list("surface", "all"))
        if (TarvoInterface::parse_tarvo_list("volume", "in surface " + std::to_string(s)).size() ==
            1)
            outer.push_back(s);
    for (int k = 0; k < 5; ++k) {
        bench::kernel("nodeset " + std::to_string(k + 1) + " add surface " +
                      std::to_string(outer[k % outer.size()]));
        bench::kernel("sideset " + std::to_string(k + 1) + " add surface " +
                      std::to_string(outer[(k + 5) % outer.size()]));
    }
    const int hexes = TarvoInterface::get_hex_count();
    std::printf("model: %d hexes, %d nodes, 3 blocks, 5 nodesets, 5 sidesets (mesh %.2f s)\n",
                hexes, TarvoInterface::get_node_count(), mesh_s);

    const std::string ours = "bench_ours.e", plain = "bench_plain.e";
    bench::kernel("export mesh '" + ours + "' overwrite"); // warm-up, and the arrays for the floor
    const Arrays arrays = read_back(ours);
    // Best of the repeats, in wall time and in this process's CPU time (user and system: less
    // disturbed by a busy machine), alternating so that a change of load hits both alike.
    double ours_s = 1e300, plain_s = 1e300, ours_cpu = 1e300, plain_cpu = 1e300;
    for (int r = 0; r < repeats; ++r) {
        std::clock_t c0 = std::clock();
        ours_s = std::min(
            ours_s, bench::seconds([&] { bench::kernel("export mesh '" + ours + "' overwrite"); }));
        ours_cpu = std::min(ours_cpu, double(std::clock() - c0) / CLOCKS_PER_SEC);
        c0 = std::clock();
        plain_s = std::min(plain_s, bench::seconds([&] { write_plain(arrays, plain); }));
        plain_cpu = std::min(plain_cpu, double(std::clock() - c0) / CLOCKS_PER_SEC);
    }
    std::printf("                wall     cpu      file\n");
    std::printf("export mesh     %.3f s  %.3f s  %.1f MB\n", ours_s, ours_cpu,
                std::filesystem::file_size(ours) / 1e6);
    std::printf("plain Exodus    %.3f s  %.3f s  %.1f MB\n", plain_s, plain_cpu,
                std::filesystem::file_size(plain) / 1e6);
    std::printf("ratio           %.2f     %.2f     (target at most 1.3)\n", ours_s / plain_s,
                ours_cpu / plain_cpu);
    std::filesystem::remove(ours);
    std::filesystem::remove(plain);

    // The native file of the same model, beside the Exodus file: save (best of the repeats),
    // then open once (it replaces the model, so it comes last) and check what came back.
    const std::string native = "bench_model.tvo";
    double save_s = 1e300;
    for (int r = 0; r < repeats; ++r)
        save_s = std::min(
            save_s, bench::seconds([&] { bench::kernel("save as '" + native + "' overwrite"); }));
    const double native_mb = std::filesystem::file_size(native) / 1e6;
    const double open_s = bench::seconds([&] { bench::kernel("open '" + native + "'"); });
    std::printf("save as         %.3f s           %.1f MB\n", save_s, native_mb);
    std::printf("open            %.3f s           (%d hexes back)\n", open_s,
                TarvoInterface::get_hex_count());
    std::filesystem::remove(native);
    TarvoInterface::destroy();
    return 0;
}
