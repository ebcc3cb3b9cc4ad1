// bench_undo_snapshot: the price of undo as the model grows.
//
// Before every undoable command the runner asks each undo participant for a snapshot. The rule
// that keeps undo cheap is that a participant's state is a map of shared immutable pieces, so a
// snapshot is a copy of that map (one node per body, no B-rep copied). This benchmark builds
// models of growing size through the command language and, at each size, times in one run:
//   snapshot:  save_state() of every registered participant, as the runner does it;
//   deep copy: BRepBuilderAPI_Copy of every body's shape, what a participant that copied its
//              state would pay (the B-rep alone, before ids and attributes).
// It prints both per size, the ratio deep/snapshot, and the snapshot cost per body, which stays
// flat when the rule holds (a participant that deep-copies shows it growing with body size and
// the ratio collapsing toward 1).
//
//   bench_undo_snapshot [--sizes 250,1000,4000] [--repeats 20]

#include "../BenchSupport.h"
#include "core/SessionState.h"
#include "core/Undo.h"
#include "geometry/GeometryModule.h"
#include "tarvo/TarvoInterface.h"
#include "tarvo_util/TarvoMessage.h"

#include <BRepBuilderAPI_Copy.hxx>
#include <TopoDS_Shape.hxx>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace bench;

} // namespace

int main(int argc, char** argv) {
    std::vector<int> sizes{250, 1000, 4000};
    int repeats = 20;
    for (int i = 1; i + 1 < argc; i += 2) {
        if (!std::strcmp(argv[i], "--sizes")) {
            sizes.clear();
            std::stringstream list(argv[i + 1]);
            for (std::string item; std::getline(list, item, ',');)
                sizes.push_back(std::atoi(item.c_str()));
        } else if (!std::strcmp(argv[i], "--repeats")) {
            repeats = std::max(1, std::atoi(argv[i + 1]));
        }
    }
    TarvoMessage::instance()->set_message_handler(std::make_shared<QuietHandler>());
    if (!TarvoInterface::init({"bench_undo_snapshot"}))
        return 1;
    // Building the model is not what is measured: no undo steps kept while it grows.
    kernel("undo off");

    std::printf("%8s %14s %14s %10s %16s\n", "bodies", "snapshot ms", "deep copy ms", "ratio",
                "snapshot ns/body");
    int made = 0;
    for (int size : sizes) {
        // Spheres with a hole have a few dozen sub-shapes each: bodies of the kind users import.
        for (; made < size; ++made)
            kernel("create sphere radius 1 inner radius 0.5");
        auto& participants = tarvo::kernel::state().participants;
        const double snapshot = best_seconds(repeats, [&] {
            std::vector<std::unique_ptr<tarvo::kernel::UndoSnapshot>> taken;
            for (auto* participant : participants)
                taken.push_back(participant->save_state());
        });
        const auto& bodies = tarvo::kernel::geometry_module()->model().state().bodies;
        const double deep = best_seconds(std::max(1, repeats / 10), [&] {
            std::vector<TopoDS_Shape> copies;
            copies.reserve(bodies.size());
            for (const auto& [id, body] : bodies)
                copies.push_back(BRepBuilderAPI_Copy(body->shape).Shape());
        });
        std::printf("%8d %14.3f %14.3f %10.0f %16.1f\n", size, 1e3 * snapshot, 1e3 * deep,
                    deep / snapshot, 1e9 * snapshot / size);
    }
    TarvoInterface::destroy();
    return 0;
}
