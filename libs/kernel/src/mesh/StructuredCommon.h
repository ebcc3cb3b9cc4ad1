#pragma once
// What the mapper and the sweeper share: small vector arithmetic on Point3, structured grids
// recovered from a surface's quads, and the orientation flip of prism-like elements.
//
// Threading: kernel thread only (reads MeshState).

#include "mesh/MeshDatabase.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace tarvo::kernel::mesh {

inline Point3 operator+(const Point3& a, const Point3& b) {
    return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}
inline Point3 operator-(const Point3& a, const Point3& b) {
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}
inline Point3 operator*(double s, const Point3& a) {
    return {s * a[0], s * a[1], s * a[2]};
}
inline double dot(const Point3& a, const Point3& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}
inline Point3 cross(const Point3& a, const Point3& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
inline double norm(const Point3& a) {
    return std::sqrt(dot(a, a));
}
inline double triple(const Point3& a, const Point3& b, const Point3& c) {
    return dot(cross(a, b), c);
}

// An undirected edge between two node ids as one key.
inline long long edge_key(int a, int b) {
    if (a > b)
        std::swap(a, b);
    return (static_cast<long long>(a) << 32) | static_cast<unsigned>(b);
}

// A structured quad grid of node ids: ni x nj nodes, node (i, j) at ids[i * nj + j].
struct Grid {
    int ni = 0, nj = 0;
    std::vector<int> ids;
    int at(int i, int j) const { return ids[static_cast<std::size_t>(i) * nj + j]; }
};

// Recovers the grid of a surface's quads by walking from its corner with the lowest node id
// (corners are the nodes of exactly one quad). False, with `why` naming the surface, when the
// surface is unmeshed, holds other elements, or its quads do not form one grid.
bool face_grid(const MeshState& state, int surface, Grid& grid, std::string& why);

// Reverses the base (and with it the top) of every element of `conn` that has two faces of
// `base` nodes each, base first (hex: 4, wedge: 3): the element's volume changes sign.
inline void reverse_bases(std::vector<int>& conn, int base) {
    for (std::size_t e = 0; e + 2 * base <= conn.size(); e += 2 * base) {
        std::reverse(conn.begin() + e + 1, conn.begin() + e + base);
        std::reverse(conn.begin() + e + base + 1, conn.begin() + e + 2 * base);
    }
}

} // namespace tarvo::kernel::mesh
