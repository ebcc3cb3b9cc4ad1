// bench_quality: what scoring a whole mesh costs.
//
// Builds `--count` hexes (a unit-cube grid whose corners are moved by up to `--jitter` of the
// cell size, with a fixed seed, so that the elements are distorted but valid), then times, best
// of `--repeats`:
//   batch:       quality_values() over all of them, the metric name resolved once;
//   per element: quality_value() for each, the name looked up every time, as a caller that
//                loops over elements itself would do.
// It prints both, the time per element, the ratio per-element/batch and, so that the work is
// not optimised away and a change of results shows, the statistics of the values.
//
//   bench_quality [--count 1000000] [--metric "Scaled Jacobian"] [--jitter 0.2] [--repeats 5]

#include "../BenchSupport.h"
#include "mesh/Quality.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace mesh = tarvo::kernel::mesh;

namespace {

using namespace bench;

std::vector<mesh::Point3> jittered_hexes(std::size_t count, double jitter) {
    static const int kCorner[8][3] = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0},
                                      {0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}};
    std::mt19937_64 rng(12345);
    std::uniform_real_distribution<double> move(-jitter, jitter);
    const std::size_t side = std::max<std::size_t>(1, std::size_t(std::cbrt(double(count))) + 1);
    std::vector<mesh::Point3> corners;
    corners.reserve(count * 8);
    for (std::size_t e = 0; e < count; ++e) {
        const double base[3] = {double(e % side), double(e / side % side),
                                double(e / (side * side))};
        for (const auto& c : kCorner)
            corners.push_back({base[0] + c[0] + move(rng), base[1] + c[1] + move(rng),
                               base[2] + c[2] + move(rng)});
    }
    return corners;
}

} // namespace

int main(int argc, char** argv) {
    std::size_t count = 1000000;
    std::string metric = "Scaled Jacobian";
    double jitter = 0.2;
    int repeats = 5;
    for (int i = 1; i + 1 < argc; i += 2) {
        if (!std::strcmp(argv[i], "--count"))
            count = std::strtoull(argv[i + 1], nullptr, 10);
        else if (!std::strcmp(argv[i], "--metric"))
            metric = argv[i + 1];
        else if (!std::strcmp(argv[i], "--jitter"))
            jitter = std::atof(argv[i + 1]);
        else if (!std::strcmp(argv[i], "--repeats"))
            repeats = std::max(1, std::atoi(argv[i + 1]));
        else {
            std::fprintf(stderr, "unknown option %s\n", argv[i]);
            return 2;
        }
    }
    if (!mesh::metric_applies(metric, mesh::ElemKind::Hex)) {
        std::fprintf(stderr, "'%s' is not a hex metric\n", metric.c_str());
        return 2;
    }

    const auto corners = jittered_hexes(count, jitter);
    std::vector<double> batch(count), single(count);

    const double t_batch = best_seconds(repeats, [&] {
        mesh::quality_values(mesh::ElemKind::Hex, metric, corners.data(), count, batch.data());
    });
    const double t_single = best_seconds(repeats, [&] {
        for (std::size_t e = 0; e < count; ++e)
            single[e] = *mesh::quality_value(mesh::ElemKind::Hex, metric, &corners[e * 8]);
    });
    if (batch != single) {
        std::fprintf(stderr, "batch and per-element values differ\n");
        return 1;
    }

    const auto s = mesh::quality_stats(batch.data(), count);
    std::printf("%zu hexes, metric '%s', jitter %g, best of %d\n", count, metric.c_str(), jitter,
                repeats);
    std::printf("  batch:       %8.3f s  %7.1f ns/element\n", t_batch, 1e9 * t_batch / count);
    std::printf("  per element: %8.3f s  %7.1f ns/element\n", t_single, 1e9 * t_single / count);
    std::printf("  per element / batch: %.2f\n", t_single / t_batch);
    std::printf("  values: min %.4f (#%zu) max %.4f (#%zu) mean %.4f std %.4f\n", s.min, s.argmin,
                s.max, s.argmax, s.mean, s.stddev);
    return 0;
}
