// bench_kernel_commands: what the kernel adds to geometry work.
//
// Two workloads, each timed through the kernel's command language (TarvoInterface::cmd, with
// undo on: snapshot, ids, diff, events, printing) and through plain Gmsh OpenCASCADE calls in
// the same process:
//   primitives: N boxes created one by one;
//   booleans:   M subtracts, each of a cylinder from its own box (the boxes and cylinders are
//               made before the clock starts).
// The third column is the same work with plain OpenCASCADE calls (BRepPrimAPI_MakeBox,
// BRepAlgoAPI_Cut), which is what the kernel runs underneath: kernel minus that is the kernel's
// own overhead (parsing, ids, snapshot for undo, diff, events, messages).
// Gmsh is timed synchronizing once at the end (the least work Gmsh can do: the baseline of the
// ratio). For the booleans it is also timed synchronizing after every call, as a model that can
// be queried after each step needs; for the primitives that variant grows quadratically
// (about 13 s for 200 boxes here) and is left out.
// Each variant runs `rounds` times; the best wall-clock time counts, and the process CPU time of
// that round is shown beside it (the machine is shared, so wall time is noisy).
//
//   bench_kernel_commands [--boxes 1000] [--booleans 100] [--rounds 3]

#include "../BenchSupport.h"
#include "tarvo/TarvoInterface.h"
#include "tarvo_util/TarvoMessage.h"

#include <gmsh.h>

#include <BRepAlgoAPI_Cut.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <TopoDS_Shape.hxx>
#include <gp_Ax2.hxx>

#include <vector>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <functional>
#include <string>
#include <thread>

namespace {

using namespace bench;

double cpu_now() {
    timespec ts{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &ts);
    return static_cast<double>(ts.tv_sec) + 1e-9 * static_cast<double>(ts.tv_nsec);
}

struct Timing {
    double wall = 1e300;
    double cpu = 0;
};

Timing seconds(const std::function<void()>& setup, const std::function<void()>& work, int rounds) {
    Timing best;
    for (int r = 0; r < rounds; ++r) {
        setup();
        const double c0 = cpu_now();
        auto t0 = std::chrono::steady_clock::now();
        work();
        auto t1 = std::chrono::steady_clock::now();
        const double c1 = cpu_now();
        const double wall = std::chrono::duration<double>(t1 - t0).count();
        if (wall < best.wall)
            best = {wall, c1 - c0};
    }
    return best;
}

} // namespace

int main(int argc, char** argv) {
    int boxes = 1000, booleans = 100, rounds = 3;
    for (int i = 1; i + 1 < argc; i += 2) {
        if (!std::strcmp(argv[i], "--boxes"))
            boxes = std::atoi(argv[i + 1]);
        else if (!std::strcmp(argv[i], "--booleans"))
            booleans = std::atoi(argv[i + 1]);
        else if (!std::strcmp(argv[i], "--rounds"))
            rounds = std::atoi(argv[i + 1]);
    }
    TarvoMessage::instance()->set_message_handler(std::make_shared<QuietHandler>());
    if (!TarvoInterface::init({"bench_kernel_commands"}))
        return 1;
    kernel("undo on");

    auto gmsh_reset = [] { gmsh::clear(); };
    auto kernel_reset = [] { kernel("reset"); };

    // ---- primitives ----
    const Timing gmsh_box_once = seconds(
        gmsh_reset,
        [&] {
            for (int i = 0; i < boxes; ++i)
                gmsh::model::occ::addBox(2.0 * i, 0, 0, 1, 1, 1);
            gmsh::model::occ::synchronize();
        },
        rounds);
    std::vector<TopoDS_Shape> keep;
    const Timing occ_box =
        seconds([&] { keep.clear(); },
                [&] {
                    for (int i = 0; i < boxes; ++i)
                        keep.push_back(BRepPrimAPI_MakeBox(gp_Pnt(2.0 * i, 0, 0), 1, 1, 1).Shape());
                },
                rounds);
    const Timing kernel_box = seconds(
        kernel_reset,
        [&] {
            for (int i = 0; i < boxes; ++i)
                kernel("create box 1 at " + std::to_string(2.0 * i + 0.5) + " 0.5 0.5");
        },
        rounds);
    if (TarvoInterface::get_volume_count() != boxes) {
        std::fprintf(stderr, "kernel made %d volumes, expected %d\n",
                     TarvoInterface::get_volume_count(), boxes);
        return 1;
    }

    // ---- booleans ----
    std::vector<std::pair<int, int>> pairs;
    auto gmsh_setup = [&] {
        gmsh::clear();
        pairs.clear();
        for (int i = 0; i < booleans; ++i) {
            int b = gmsh::model::occ::addBox(4.0 * i, 0, 0, 2, 2, 2);
            int c = gmsh::model::occ::addCylinder(4.0 * i + 1, 1, -1, 0, 0, 4, 0.5);
            pairs.push_back({b, c});
        }
        gmsh::model::occ::synchronize();
    };
    const Timing gmsh_bool_sync = seconds(
        gmsh_setup,
        [&] {
            for (auto [b, c] : pairs) {
                gmsh::vectorpair out;
                std::vector<gmsh::vectorpair> map;
                gmsh::model::occ::cut({{3, b}}, {{3, c}}, out, map);
                gmsh::model::occ::synchronize();
            }
        },
        rounds);
    const Timing gmsh_bool_once = seconds(
        gmsh_setup,
        [&] {
            for (auto [b, c] : pairs) {
                gmsh::vectorpair out;
                std::vector<gmsh::vectorpair> map;
                gmsh::model::occ::cut({{3, b}}, {{3, c}}, out, map);
            }
            gmsh::model::occ::synchronize();
        },
        rounds);
    std::vector<std::pair<TopoDS_Shape, TopoDS_Shape>> occ_pairs;
    const Timing occ_bool = seconds(
        [&] {
            keep.clear();
            occ_pairs.clear();
            for (int i = 0; i < booleans; ++i)
                occ_pairs.push_back(
                    {BRepPrimAPI_MakeBox(gp_Pnt(4.0 * i, 0, 0), 2, 2, 2).Shape(),
                     BRepPrimAPI_MakeCylinder(gp_Ax2(gp_Pnt(4.0 * i + 1, 1, -1), gp_Dir(0, 0, 1)),
                                              0.5, 4)
                         .Shape()});
        },
        [&] {
            for (auto& [b, cyl] : occ_pairs) {
                BRepAlgoAPI_Cut cut(b, cyl);
                keep.push_back(cut.Shape());
            }
        },
        rounds);
    auto kernel_setup = [&] {
        kernel("reset");
        for (int i = 0; i < booleans; ++i) {
            kernel("create box 2 at " + std::to_string(4.0 * i + 1) + " 1 1");
            kernel("create cylinder radius 0.5 height 4 at " + std::to_string(4.0 * i + 1) +
                   " 1 1");
        }
    };
    const Timing kernel_bool = seconds(
        kernel_setup,
        [&] {
            for (int i = 0; i < booleans; ++i)
                kernel("subtract volume " + std::to_string(2 * i + 2) + " from volume " +
                       std::to_string(2 * i + 1));
        },
        rounds);
    const double expected = booleans * (8 - 3.14159265358979 * 0.25 * 2);
    std::vector<int> vols = TarvoInterface::get_entities("volume");
    const double got = TarvoInterface::get_total_volume(vols);
    if (static_cast<int>(vols.size()) != booleans || std::abs(got - expected) > 1e-6 * expected) {
        std::fprintf(stderr, "kernel result wrong: %zu volumes, total %g (expected %g)\n",
                     vols.size(), got, expected);
        return 1;
    }
    // ---- interrupt latency: imprint of the as1 assembly, interrupted from another thread ----
    const char* data = std::getenv("TARVO_CAD_DATA");
    const std::string as1 =
        std::string(data && *data ? data : TARVO_DEFAULT_CAD_DATA) + "/as1-tu-203.stp";
    std::vector<double> latencies;
    if (FILE* f = std::fopen(as1.c_str(), "rb")) {
        std::fclose(f);
        for (int delay_ms : {100, 500, 1500}) {
            kernel("reset");
            kernel("import step '" + as1 + "'");
            std::atomic<bool> done{false};
            std::chrono::steady_clock::time_point set_at;
            std::thread other([&] {
                std::this_thread::sleep_for(std::chrono::milliseconds(delay_ms));
                set_at = std::chrono::steady_clock::now();
                TarvoInterface::set_tarvo_interrupt(true);
            });
            const bool ok = TarvoInterface::silent_cmd("imprint all");
            const auto returned = std::chrono::steady_clock::now();
            other.join();
            if (ok) {
                std::printf("imprint finished before the interrupt at %d ms\n", delay_ms);
                continue;
            }
            latencies.push_back(std::chrono::duration<double>(returned - set_at).count());
        }
    }
    TarvoInterface::destroy();

    std::printf("workload          gmsh (sync once)     plain OCC            kernel              "
                " kernel/gmsh  kernel/OCC   (wall; cpu)\n");
    auto row = [](const char* what, int n, const Timing& g, const Timing& o, const Timing& k) {
        std::printf("%5d %-10s  %6.3f s (cpu %6.3f)  %6.3f s (cpu %6.3f)  %6.3f s (cpu %6.3f)  "
                    "%5.3f; %5.3f  %5.3f; %5.3f\n",
                    n, what, g.wall, g.cpu, o.wall, o.cpu, k.wall, k.cpu, k.wall / g.wall,
                    k.cpu / g.cpu, k.wall / o.wall, k.cpu / o.cpu);
    };
    row("primitives", boxes, gmsh_box_once, occ_box, kernel_box);
    row("booleans", booleans, gmsh_bool_once, occ_bool, kernel_bool);
    std::printf("gmsh booleans synchronizing after each: %.3f s (cpu %.3f); kernel/that %.3f\n",
                gmsh_bool_sync.wall, gmsh_bool_sync.cpu, kernel_bool.wall / gmsh_bool_sync.wall);
    for (double l : latencies)
        std::printf("interrupt of 'imprint all' on as1-tu-203.stp: stopped %.3f s after the "
                    "request\n",
                    l);
    return 0;
}
