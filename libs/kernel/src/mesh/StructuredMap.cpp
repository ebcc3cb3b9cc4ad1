// map_volume: a logical cube's six structured face grids matched into one (I, J, K) block of node
// ids, its inside filled by transfinite interpolation. The faces are matched by their shared
// nodes, not by geometry: conforming face meshes share the nodes of their common curves, so a
// side of one grid that equals a side of another is where the two faces meet.
#include "mesh/MeshModule.h"
#include "mesh/Structured.h"
#include "mesh/StructuredCommon.h"

#include <climits>
#include <set>
#include <unordered_map>

namespace tarvo::kernel::mesh {

namespace {

// A face grid seen in one of its eight orientations: a view axis may run along the grid's rows
// or columns (transpose), either way round.
struct View {
    const Grid* grid = nullptr;
    bool transpose = false, flip_a = false, flip_b = false;
    int na() const { return transpose ? grid->nj : grid->ni; }
    int nb() const { return transpose ? grid->ni : grid->nj; }
    int at(int a, int b) const {
        if (flip_a)
            a = na() - 1 - a;
        if (flip_b)
            b = nb() - 1 - b;
        return transpose ? grid->at(b, a) : grid->at(a, b);
    }
};

constexpr int kUnset = INT_MIN;

struct Block {
    int ni = 0, nj = 0, nk = 0;
    std::vector<int> ids; // node ids (> 0) or NewMesh::local() entries, kUnset before filling
    int& at(int i, int j, int k) { return ids[(static_cast<std::size_t>(i) * nj + j) * nk + k]; }
};

// The first unused face with an orientation whose b = 0 side is `side_a` and, when `side_b` is
// not empty, whose a = 0 side is `side_b`. Index into `grids`, or -1.
int find_face(const std::vector<Grid>& grids, const std::vector<bool>& used,
              const std::vector<int>& side_a, const std::vector<int>& side_b, View& found) {
    for (std::size_t f = 0; f < grids.size(); ++f) {
        if (used[f])
            continue;
        for (int o = 0; o < 8; ++o) {
            const View v{&grids[f], (o & 1) != 0, (o & 2) != 0, (o & 4) != 0};
            if (v.na() != static_cast<int>(side_a.size()))
                continue;
            if (!side_b.empty() && v.nb() != static_cast<int>(side_b.size()))
                continue;
            bool ok = true;
            for (int a = 0; ok && a < v.na(); ++a)
                ok = v.at(a, 0) == side_a[a];
            for (int b = 0; ok && b < static_cast<int>(side_b.size()); ++b)
                ok = v.at(0, b) == side_b[b];
            if (ok) {
                found = v;
                return static_cast<int>(f);
            }
        }
    }
    return -1;
}

// Normalised arc-length parameters along one block direction, averaged over the four block edges
// that run that way: a graded edge distribution carries into the interior.
std::vector<double> edge_parameters(int n, const std::array<std::function<Point3(int)>, 4>& edges) {
    std::vector<double> u(n, 0.0);
    for (const auto& edge : edges) {
        std::vector<double> s(n, 0.0);
        for (int i = 1; i < n; ++i)
            s[i] = s[i - 1] + norm(edge(i) - edge(i - 1));
        for (int i = 0; i < n; ++i)
            u[i] += (s[n - 1] > 0 ? s[i] / s[n - 1] : double(i) / (n - 1)) / 4;
    }
    return u;
}

} // namespace

bool face_grid(const MeshState& state, int surface, Grid& grid, std::string& why) {
    const std::string name = "surface " + std::to_string(surface);
    const MeshPiece* piece = state.piece({2, surface});
    if (!piece) {
        why = name + " is not meshed";
        return false;
    }
    std::vector<int> quads;
    for (const ElemBlock& b : piece->blocks) {
        if (b.kind != ElemKind::Quad && b.count() > 0) {
            why = name + " holds " + std::string(info(b.kind).word) + "s, not only quads";
            return false;
        }
        if (b.kind == ElemKind::Quad)
            quads.insert(quads.end(), b.conn.begin(), b.conn.end());
    }
    const int nq = static_cast<int>(quads.size() / 4);
    std::unordered_map<int, std::vector<int>> quads_of; // node -> quads using it
    std::unordered_map<long long, std::vector<int>> by_edge;
    for (int q = 0; q < nq; ++q)
        for (int c = 0; c < 4; ++c) {
            quads_of[quads[4 * q + c]].push_back(q);
            by_edge[edge_key(quads[4 * q + c], quads[4 * q + (c + 1) % 4])].push_back(q);
        }
    std::vector<int> corners;
    for (const auto& [node, qs] : quads_of)
        if (qs.size() == 1)
            corners.push_back(node);
    const std::string not_grid = name + " is not meshed as a structured quad grid";
    if (corners.size() != 4) {
        why = not_grid + " (" + std::to_string(corners.size()) + " corners)";
        return false;
    }
    const int c0 = *std::min_element(corners.begin(), corners.end());
    const int* q0 = &quads[4 * quads_of[c0][0]];
    const int p0 = static_cast<int>(std::find(q0, q0 + 4, c0) - q0);

    // From the corner along the boundary (edges of one quad) to the next corner.
    auto walk = [&](int next) {
        std::vector<int> line{c0};
        int prev = c0, cur = next;
        while (line.size() <= quads_of.size()) {
            line.push_back(cur);
            if (quads_of[cur].size() == 1)
                return line;
            int step = 0;
            for (int q : quads_of[cur]) {
                const int* n = &quads[4 * q];
                const int p = static_cast<int>(std::find(n, n + 4, cur) - n);
                for (int other : {n[(p + 1) % 4], n[(p + 3) % 4]})
                    if (other != prev && by_edge[edge_key(cur, other)].size() == 1)
                        step = other;
            }
            if (step == 0)
                break;
            prev = cur;
            cur = step;
        }
        return std::vector<int>{};
    };
    const std::vector<int> row = walk(q0[(p0 + 1) % 4]);
    const std::vector<int> col = walk(q0[(p0 + 3) % 4]);
    grid.ni = static_cast<int>(row.size());
    grid.nj = static_cast<int>(col.size());
    if (grid.ni < 2 || grid.nj < 2 || (grid.ni - 1) * (grid.nj - 1) != nq) {
        why = not_grid;
        return false;
    }
    grid.ids.assign(static_cast<std::size_t>(grid.ni) * grid.nj, 0);
    for (int i = 0; i < grid.ni; ++i)
        grid.ids[i * grid.nj] = row[i];
    for (int j = 0; j < grid.nj; ++j)
        grid.ids[j] = col[j];
    // Each cell is the quad on the edge below it that holds its left neighbour's corner; its
    // fourth corner must sit opposite the cell's first one.
    for (int i = 1; i < grid.ni; ++i)
        for (int j = 1; j < grid.nj; ++j) {
            const int a = grid.at(i - 1, j - 1), b = grid.at(i, j - 1), c = grid.at(i - 1, j);
            int d = 0;
            for (int q : by_edge[edge_key(a, b)]) {
                const int* n = &quads[4 * q];
                const int pa = static_cast<int>(std::find(n, n + 4, a) - n);
                if (std::find(n, n + 4, c) != n + 4)
                    d = n[(pa + 2) % 4];
            }
            if (d == 0 || d == b || d == c) {
                why = not_grid;
                return false;
            }
            grid.ids[i * grid.nj + j] = d;
        }
    if (std::set<int>(grid.ids.begin(), grid.ids.end()).size() != grid.ids.size()) {
        why = not_grid;
        return false;
    }
    return true;
}

bool map_volume(const MeshModule& module, int volume_id, NewMesh& out, std::string& why) {
    const MeshState& state = module.state();
    const std::string prefix = "volume " + std::to_string(volume_id) + " is not a logical cube: ";
    const std::vector<int> faces = module.boundary(3, volume_id);
    if (faces.size() != 6) {
        why = prefix + "it has " + std::to_string(faces.size()) + " surfaces, not six";
        return false;
    }
    std::vector<Grid> grids(6);
    for (int f = 0; f < 6; ++f) {
        std::string reason;
        if (!face_grid(state, faces[f], grids[f], reason)) {
            why = prefix + reason;
            return false;
        }
    }
    std::vector<bool> used(6, false);
    used[0] = true;
    const Grid& g0 = grids[0];
    Block blk;
    blk.ni = g0.ni;
    blk.nj = g0.nj;

    // Places a face found by its sides; a node that two faces put in different places means the
    // faces do not close into a block.
    auto place = [&](const char* where, const std::vector<int>& side_a,
                     const std::vector<int>& side_b, auto&& to_block) {
        View v;
        const int f = find_face(grids, used, side_a, side_b, v);
        if (f < 0) {
            View loose;
            const int g = find_face(grids, used, side_a, {}, loose);
            why = prefix;
            if (g >= 0 && !side_b.empty() && loose.nb() != static_cast<int>(side_b.size()))
                why += "surface " + std::to_string(faces[g]) + " has " +
                       std::to_string(loose.nb() - 1) + " intervals from surface " +
                       std::to_string(faces[0]) + " where its neighbours have " +
                       std::to_string(side_b.size() - 1);
            else
                why += "no surface meets the " + std::string(where) + " side of surface " +
                       std::to_string(faces[0]) + " along a whole side";
            return false;
        }
        used[f] = true;
        for (int a = 0; a < v.na(); ++a)
            for (int b = 0; b < v.nb(); ++b) {
                int& slot = to_block(a, b);
                if (slot != kUnset && slot != v.at(a, b)) {
                    why = prefix + "surface " + std::to_string(faces[f]) +
                          " does not close the block of its neighbours";
                    return false;
                }
                slot = v.at(a, b);
            }
        return true;
    };
    auto line = [](int n, auto&& node) {
        std::vector<int> s(n);
        for (int a = 0; a < n; ++a)
            s[a] = node(a);
        return s;
    };
    // The front face (j = 0) fixes K; the others follow from the nodes already placed.
    {
        View v;
        const int f =
            find_face(grids, used, line(blk.ni, [&](int i) { return g0.at(i, 0); }), {}, v);
        if (f < 0) {
            why = prefix + "no surface meets surface " + std::to_string(faces[0]) +
                  " along a whole side";
            return false;
        }
        blk.nk = v.nb();
        blk.ids.assign(static_cast<std::size_t>(blk.ni) * blk.nj * blk.nk, kUnset);
    }
    const int I = blk.ni - 1, J = blk.nj - 1;
    for (int i = 0; i <= I; ++i)
        for (int j = 0; j <= J; ++j)
            blk.at(i, j, 0) = g0.at(i, j);
    auto bottom_i = [&](int j) { return line(blk.ni, [&](int i) { return g0.at(i, j); }); };
    auto bottom_j = [&](int i) { return line(blk.nj, [&](int j) { return g0.at(i, j); }); };
    auto up = [&](int i, int j) { return line(blk.nk, [&](int k) { return blk.at(i, j, k); }); };
    const int K = blk.nk - 1;
    if (!place("first", bottom_i(0), {}, [&](int a, int b) -> int& { return blk.at(a, 0, b); }) ||
        !place("second", bottom_j(0), up(0, 0),
               [&](int a, int b) -> int& { return blk.at(0, a, b); }) ||
        !place("third", bottom_j(I), up(I, 0),
               [&](int a, int b) -> int& { return blk.at(I, a, b); }) ||
        !place("fourth", bottom_i(J), up(0, J),
               [&](int a, int b) -> int& { return blk.at(a, J, b); }))
        return false;
    if (!place("opposite", line(blk.ni, [&](int i) { return blk.at(i, 0, K); }),
               line(blk.nj, [&](int j) { return blk.at(0, j, K); }),
               [&](int a, int b) -> int& { return blk.at(a, b, K); }))
        return false;

    std::vector<Point3> pos(blk.ids.size());
    auto x = [&](int i, int j, int k) -> Point3& {
        return pos[(static_cast<std::size_t>(i) * blk.nj + j) * blk.nk + k];
    };
    for (int i = 0; i <= I; ++i)
        for (int j = 0; j <= J; ++j)
            for (int k = 0; k <= K; ++k)
                if (blk.at(i, j, k) != kUnset)
                    x(i, j, k) = *state.node_position(blk.at(i, j, k));
    const std::vector<double> U = edge_parameters(
        blk.ni, {[&](int i) { return x(i, 0, 0); }, [&](int i) { return x(i, J, 0); },
                 [&](int i) { return x(i, 0, K); }, [&](int i) { return x(i, J, K); }});
    const std::vector<double> V = edge_parameters(
        blk.nj, {[&](int j) { return x(0, j, 0); }, [&](int j) { return x(I, j, 0); },
                 [&](int j) { return x(0, j, K); }, [&](int j) { return x(I, j, K); }});
    const std::vector<double> W = edge_parameters(
        blk.nk, {[&](int k) { return x(0, 0, k); }, [&](int k) { return x(I, 0, k); },
                 [&](int k) { return x(0, J, k); }, [&](int k) { return x(I, J, k); }});

    out = NewMesh{};
    for (int i = 1; i < I; ++i)
        for (int j = 1; j < J; ++j)
            for (int k = 1; k < K; ++k) {
                const double u = U[i], v = V[j], w = W[k], u0 = 1 - u, v0 = 1 - v, w0 = 1 - w;
                const Point3 faces_part = u0 * x(0, j, k) + u * x(I, j, k) + v0 * x(i, 0, k) +
                                          v * x(i, J, k) + w0 * x(i, j, 0) + w * x(i, j, K);
                const Point3 edges_part =
                    u0 * v0 * x(0, 0, k) + u0 * v * x(0, J, k) + u * v0 * x(I, 0, k) +
                    u * v * x(I, J, k) + u0 * w0 * x(0, j, 0) + u0 * w * x(0, j, K) +
                    u * w0 * x(I, j, 0) + u * w * x(I, j, K) + v0 * w0 * x(i, 0, 0) +
                    v0 * w * x(i, 0, K) + v * w0 * x(i, J, 0) + v * w * x(i, J, K);
                const Point3 corners_part = u0 * v0 * w0 * x(0, 0, 0) + u * v0 * w0 * x(I, 0, 0) +
                                            u0 * v * w0 * x(0, J, 0) + u * v * w0 * x(I, J, 0) +
                                            u0 * v0 * w * x(0, 0, K) + u * v0 * w * x(I, 0, K) +
                                            u0 * v * w * x(0, J, K) + u * v * w * x(I, J, K);
                x(i, j, k) = faces_part - edges_part + corners_part;
                blk.at(i, j, k) = NewMesh::local(static_cast<int>(out.nodes.size()));
                out.nodes.push_back(x(i, j, k));
            }

    // Exodus order: the k face counter-clockwise, then the k + 1 face. Whether that turns
    // outward depends on how the bottom grid happened to be walked, so the whole block is
    // flipped at once when its volume comes out negative.
    NewMesh::Block& hexes = out.block(ElemKind::Hex);
    double signed_volume = 0;
    for (int i = 0; i < I; ++i)
        for (int j = 0; j < J; ++j)
            for (int k = 0; k < K; ++k) {
                const int cell[8][3] = {
                    {i, j, k},     {i + 1, j, k},     {i + 1, j + 1, k},     {i, j + 1, k},
                    {i, j, k + 1}, {i + 1, j, k + 1}, {i + 1, j + 1, k + 1}, {i, j + 1, k + 1}};
                for (const auto& c : cell)
                    hexes.conn.push_back(blk.at(c[0], c[1], c[2]));
                const Point3 p0 = x(i, j, k);
                signed_volume +=
                    triple(x(i + 1, j, k) - p0, x(i, j + 1, k) - p0, x(i, j, k + 1) - p0);
            }
    if (signed_volume < 0)
        reverse_bases(hexes.conn, 4);
    return true;
}

} // namespace tarvo::kernel::mesh
