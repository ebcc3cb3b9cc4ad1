#pragma once
// What the kernel benchmarks share: a kernel session that prints only errors, a command that
// must succeed, and timing.

#include "tarvo/TarvoInterface.h"
#include "tarvo_util/TarvoMessage.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace bench {

class QuietHandler : public TarvoMessageHandler {
public:
    void print_message(const char*) override {}
    void print_error(const char* text) override { std::fprintf(stderr, "%s", text); }
};

// Runs a command of the kernel's language; a failure ends the benchmark.
inline void kernel(const std::string& line) {
    if (!TarvoInterface::silent_cmd(line.c_str())) {
        std::fprintf(stderr, "command failed: %s\n", line.c_str());
        std::exit(1);
    }
}

template <class F> double seconds(F&& work) {
    const auto t0 = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
}

// The fastest of `repeats` runs: the one least disturbed by the rest of the machine.
template <class F> double best_seconds(int repeats, F&& work) {
    double best = 1e300;
    for (int r = 0; r < repeats; ++r)
        best = std::min(best, seconds(work));
    return best;
}

} // namespace bench
