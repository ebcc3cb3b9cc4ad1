#pragma once
// Fixture of the mesh tests: a live kernel session per test with captured output and recorded
// mesh events, and helpers that read the whole mesh back through the public queries.

#include "tarvo/TarvoInterface.h"

#include "../support/KernelTest.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <map>
#include <string>
#include <vector>

namespace mesh_test {

using Point = std::array<double, 3>;

inline double tet_volume(const Point& a, const Point& b, const Point& c, const Point& d) {
    const double u[3] = {b[0] - a[0], b[1] - a[1], b[2] - a[2]};
    const double v[3] = {c[0] - a[0], c[1] - a[1], c[2] - a[2]};
    const double w[3] = {d[0] - a[0], d[1] - a[1], d[2] - a[2]};
    return (u[0] * (v[1] * w[2] - v[2] * w[1]) - u[1] * (v[0] * w[2] - v[2] * w[0]) +
            u[2] * (v[0] * w[1] - v[1] * w[0])) /
           6.0;
}

class MeshTest : public test_support::KernelTest {
protected:
    MeshTest() : KernelTest("mesh", {"mesh_created"}) {}

public:
    static Point node(int id) { return TarvoInterface::get_nodal_coordinates(id); }

    // Ids of the mesh entities of `type` in a geometry entity ("tet", "volume 1").
    static std::vector<int> in(const std::string& type, const std::string& owner) {
        return TarvoInterface::parse_tarvo_list(type, "in " + owner);
    }

    // Signed volumes of the tets of a volume.
    static std::vector<double> tet_volumes(int volume) {
        std::vector<double> out;
        for (int t : in("tet", "volume " + std::to_string(volume))) {
            const auto c = TarvoInterface::get_connectivity("tet", t);
            out.push_back(tet_volume(node(c[0]), node(c[1]), node(c[2]), node(c[3])));
        }
        return out;
    }
};

} // namespace mesh_test
