#include "mesh/Quality.h"

#include "mesh/Verdict.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace tarvo::kernel::mesh {
namespace {

static_assert(sizeof(Point3) == 3 * sizeof(double), "corners are handed to Verdict as double[][3]");

using MetricFn = double (*)(int, VerdictCorners);

// ---- Pyramids -------------------------------------------------------------------------------
//
// Verdict 9.1 scores pyramids by volume only. The Jacobian metrics below follow the way Verdict
// treats hexes and tets: at a corner, the determinant of three edge vectors leaving it, scaled by
// their lengths for the scaled Jacobian.
//
// - A base corner i has exactly three edges: to the next base corner, to the previous one and to
//   the apex, taken in that order so that a valid pyramid (base 1-2-3-4 turning counterclockwise
//   seen from the apex, as Exodus orders it) is positive.
// - The apex has four edges, so it is not a corner of three: it is scored by each of the four
//   ways of taking three consecutive edges around it (the corner of the two triangular faces that
//   share the middle edge).
//
// "Jacobian" is the smallest of these eight determinants. "Scaled Jacobian" is the smallest of
// the eight normalised determinants times sqrt(2), so that the equilateral pyramid (all edges
// equal, the ideal one, whose every normalised determinant is 1/sqrt(2)) scores 1, as the regular
// tet does in Verdict; it is capped at 1, so that no pyramid scores above the ideal. A pyramid
// that is folded or inverted at any corner scores negative.

struct Vec {
    double x, y, z;
};
Vec sub(const double* a, const double* b) {
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}
double det(const Vec& a, const Vec& b, const Vec& c) {
    return a.x * (b.y * c.z - b.z * c.y) - a.y * (b.x * c.z - b.z * c.x) +
           a.z * (b.x * c.y - b.y * c.x);
}
double len(const Vec& a) {
    return std::sqrt(a.x * a.x + a.y * a.y + a.z * a.z);
}

// The eight corner determinants of a pyramid, each optionally divided by its edge lengths; the
// smallest is returned. A corner with a zero-length edge normalises to 0 (degenerate).
template <bool Normalised> double pyramid_min_corner(const double (*p)[3]) {
    double smallest = 1e30;
    auto score = [&](const Vec& a, const Vec& b, const Vec& c) {
        double d = det(a, b, c);
        if constexpr (Normalised) {
            const double lengths = len(a) * len(b) * len(c);
            d = lengths > 0 ? d / lengths : 0.0;
        }
        smallest = std::min(smallest, d);
    };
    for (int i = 0; i < 4; ++i)
        score(sub(p[(i + 1) % 4], p[i]), sub(p[(i + 3) % 4], p[i]), sub(p[4], p[i]));
    for (int i = 0; i < 4; ++i) {
        // Three consecutive edges leaving the apex of a valid pyramid have a negative
        // determinant in their own order (they point down, away from the apex): swap two.
        score(sub(p[(i + 1) % 4], p[4]), sub(p[i], p[4]), sub(p[(i + 2) % 4], p[4]));
    }
    return smallest;
}

double pyramid_jacobian(int, VerdictCorners p) {
    return pyramid_min_corner<false>(p);
}
double pyramid_scaled_jacobian(int, VerdictCorners p) {
    return std::min(1.0, std::sqrt(2.0) * pyramid_min_corner<true>(p));
}

// Verdict 9.1's quad warpage answers the cube of the smallest cosine between opposite corner
// normals (1 for a flat quad); the usual definition, and the one users read thresholds against,
// is one minus that (0 for a flat quad, growing with the warp).
double quad_warpage(int n, VerdictCorners p) {
    return 1.0 - vtkverdict__v_quad_warpage(n, p);
}

// ---- The table ------------------------------------------------------------------------------

// The function of a metric per element kind; null where the metric does not apply.
struct PerKind {
    MetricFn edge = nullptr, tri = nullptr, quad = nullptr, tet = nullptr, hex = nullptr,
             wedge = nullptr, pyramid = nullptr;

    MetricFn of(ElemKind kind) const {
        switch (kind) {
        case ElemKind::Edge:
            return edge;
        case ElemKind::Tri:
            return tri;
        case ElemKind::Quad:
            return quad;
        case ElemKind::Tet:
            return tet;
        case ElemKind::Hex:
            return hex;
        case ElemKind::Wedge:
            return wedge;
        case ElemKind::Pyramid:
            return pyramid;
        case ElemKind::Sphere:
            return nullptr;
        }
        return nullptr;
    }
};

enum class Bad : bool { High = false, Low = true };

struct MetricRow {
    std::string_view name;
    std::array<std::string_view, 2> aliases;
    Bad bad;
    PerKind fn;
};

// Names in common finite-element usage. "Aspect Ratio" of a hex is Verdict's maximum edge ratio
// (the largest ratio of the lengths of its principal axes), the hex counterpart of the tri, quad
// and tet aspect ratios, which Verdict has under that name. Wedges have no Verdict aspect ratio:
// their edge ratio and Frobenius aspects are offered instead.
// clang-format off
const std::array kMetrics{
    MetricRow{"Scaled Jacobian", {}, Bad::Low,
              {.tri = vtkverdict__v_tri_scaled_jacobian, .quad = vtkverdict__v_quad_scaled_jacobian,
               .tet = vtkverdict__v_tet_scaled_jacobian, .hex = vtkverdict__v_hex_scaled_jacobian,
               .wedge = vtkverdict__wedge_scaled_jacobian, .pyramid = pyramid_scaled_jacobian}},
    MetricRow{"Jacobian", {}, Bad::Low,
              {.quad = vtkverdict__v_quad_jacobian, .tet = vtkverdict__v_tet_jacobian,
               .hex = vtkverdict__v_hex_jacobian, .wedge = vtkverdict__wedge_jacobian,
               .pyramid = pyramid_jacobian}},
    MetricRow{"Aspect Ratio", {}, Bad::High,
              {.tri = vtkverdict__v_tri_aspect_ratio, .quad = vtkverdict__v_quad_aspect_ratio,
               .tet = vtkverdict__v_tet_aspect_ratio, .hex = vtkverdict__v_hex_max_edge_ratio}},
    MetricRow{"Aspect Ratio Gamma", {}, Bad::High, {.tet = vtkverdict__v_tet_aspect_gamma}},
    MetricRow{"Aspect Ratio Beta", {}, Bad::High, {.tet = vtkverdict__v_tet_aspect_beta}},
    MetricRow{"Aspect Frobenius", {}, Bad::High,
              {.tri = vtkverdict__v_tri_aspect_frobenius, .tet = vtkverdict__v_tet_aspect_frobenius}},
    MetricRow{"Maximum Aspect Frobenius", {}, Bad::High,
              {.quad = vtkverdict__v_quad_max_aspect_frobenius,
               .hex = vtkverdict__v_hex_max_aspect_frobenius,
               .wedge = vtkverdict__wedge_max_aspect_frobenius}},
    MetricRow{"Mean Aspect Frobenius", {}, Bad::High,
              {.quad = vtkverdict__v_quad_med_aspect_frobenius,
               .hex = vtkverdict__v_hex_med_aspect_frobenius,
               .wedge = vtkverdict__wedge_mean_aspect_frobenius}},
    MetricRow{"Edge Ratio", {}, Bad::High,
              {.tri = vtkverdict__v_tri_edge_ratio, .quad = vtkverdict__v_quad_edge_ratio,
               .tet = vtkverdict__v_tet_edge_ratio, .hex = vtkverdict__v_hex_edge_ratio,
               .wedge = vtkverdict__wedge_edge_ratio}},
    MetricRow{"Radius Ratio", {}, Bad::High,
              {.tri = vtkverdict__v_tri_radius_ratio, .quad = vtkverdict__v_quad_radius_ratio,
               .tet = vtkverdict__v_tet_radius_ratio}},
    MetricRow{"Skew", {}, Bad::High,
              {.quad = vtkverdict__v_quad_skew, .hex = vtkverdict__v_hex_skew}},
    MetricRow{"Taper", {}, Bad::High,
              {.quad = vtkverdict__v_quad_taper, .hex = vtkverdict__v_hex_taper}},
    MetricRow{"Warpage", {}, Bad::High, {.quad = quad_warpage}},
    MetricRow{"Stretch", {}, Bad::Low,
              {.quad = vtkverdict__v_quad_stretch, .hex = vtkverdict__v_hex_stretch,
               .wedge = vtkverdict__wedge_max_stretch}},
    MetricRow{"Shear", {}, Bad::Low,
              {.quad = vtkverdict__v_quad_shear, .hex = vtkverdict__v_hex_shear}},
    MetricRow{"Shape", {}, Bad::Low,
              {.tri = vtkverdict__v_tri_shape, .quad = vtkverdict__v_quad_shape,
               .tet = vtkverdict__v_tet_shape, .hex = vtkverdict__v_hex_shape,
               .wedge = vtkverdict__wedge_shape}},
    MetricRow{"Condition No.", {"Condition Number", "Condition"}, Bad::High,
              {.tri = vtkverdict__v_tri_condition, .quad = vtkverdict__v_quad_condition,
               .tet = vtkverdict__v_tet_condition, .hex = vtkverdict__v_hex_condition,
               .wedge = vtkverdict__wedge_condition}},
    MetricRow{"Distortion", {}, Bad::Low,
              {.tri = vtkverdict__v_tri_distortion, .quad = vtkverdict__v_quad_distortion,
               .tet = vtkverdict__v_tet_distortion, .hex = vtkverdict__v_hex_distortion,
               .wedge = vtkverdict__wedge_distortion}},
    MetricRow{"Oddy", {}, Bad::High,
              {.quad = vtkverdict__v_quad_oddy, .hex = vtkverdict__v_hex_oddy}},
    MetricRow{"Minimum Angle", {}, Bad::Low,
              {.tri = vtkverdict__v_tri_minimum_angle, .quad = vtkverdict__v_quad_minimum_angle,
               .tet = vtkverdict__v_tet_minimum_angle}},
    MetricRow{"Maximum Angle", {}, Bad::High,
              {.tri = vtkverdict__v_tri_maximum_angle, .quad = vtkverdict__v_quad_maximum_angle}},
    MetricRow{"Collapse Ratio", {}, Bad::Low, {.tet = vtkverdict__v_tet_collapse_ratio}},
    MetricRow{"Equivolume Skew", {}, Bad::High, {.tet = vtkverdict__v_tet_equivolume_skew}},
    MetricRow{"Squish Index", {}, Bad::High, {.tet = vtkverdict__v_tet_squish_index}},
    MetricRow{"Diagonal Ratio", {"Diagonal"}, Bad::Low, {.hex = vtkverdict__v_hex_diagonal}},
    MetricRow{"Dimension", {}, Bad::Low, {.hex = vtkverdict__v_hex_dimension}},
    MetricRow{"Length", {"Element Length"}, Bad::Low, {.edge = vtkverdict__v_edge_length}},
    MetricRow{"Element Area", {"Area"}, Bad::Low,
              {.tri = vtkverdict__v_tri_area, .quad = vtkverdict__v_quad_area}},
    MetricRow{"Element Volume", {"Volume"}, Bad::Low,
              {.tet = vtkverdict__v_tet_volume, .hex = vtkverdict__v_hex_volume,
               .wedge = vtkverdict__v_wedge_volume, .pyramid = vtkverdict__v_pyramid_volume}},
};
// clang-format on

std::string_view trimmed(std::string_view s) {
    const auto blank = [](char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; };
    while (!s.empty() && blank(s.front()))
        s.remove_prefix(1);
    while (!s.empty() && blank(s.back()))
        s.remove_suffix(1);
    return s;
}

bool same_name(std::string_view a, std::string_view b) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; };
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(),
                                              [&](char x, char y) { return lower(x) == lower(y); });
}

const MetricRow* find_row(std::string_view name) {
    name = trimmed(name);
    if (name.empty())
        return nullptr;
    for (const auto& row : kMetrics) {
        if (same_name(row.name, name))
            return &row;
        for (auto alias : row.aliases)
            if (!alias.empty() && same_name(alias, name))
                return &row;
    }
    return nullptr;
}

// The function of `metric` for `kind` and the value that stands for NaN: a few Verdict functions
// divide zero by zero on a collapsed element (quad and hex distortion, hex dimension, tet
// equivolume skew). It becomes 0 where low is bad (a collapsed element has no size and no
// Jacobian) and Verdict's own "degenerate" value 1e30 where high is bad, so that statistics and
// thresholds never meet a NaN.
struct Evaluator {
    MetricFn fn = nullptr;
    double instead_of_nan = 0;

    double operator()(int nodes, const Point3* corners) const {
        const double v = fn(nodes, reinterpret_cast<const double(*)[3]>(corners));
        return std::isnan(v) ? instead_of_nan : v;
    }
};

Evaluator find_evaluator(std::string_view metric, ElemKind kind) {
    const MetricRow* row = find_row(metric);
    if (!row)
        return {};
    return {row->fn.of(kind), row->bad == Bad::Low ? 0.0 : 1e30};
}

} // namespace

std::optional<std::string_view> find_metric(std::string_view name) {
    if (const MetricRow* row = find_row(name))
        return row->name;
    return std::nullopt;
}

bool low_is_bad(std::string_view metric) {
    const MetricRow* row = find_row(metric);
    return row && row->bad == Bad::Low;
}

std::vector<std::string_view> metrics_for(ElemKind kind) {
    std::vector<std::string_view> names;
    for (const auto& row : kMetrics)
        if (row.fn.of(kind))
            names.push_back(row.name);
    return names;
}

std::string_view default_metric(ElemKind kind) {
    switch (kind) {
    case ElemKind::Edge:
        return "Length";
    case ElemKind::Sphere:
        return {};
    default:
        return "Scaled Jacobian";
    }
}

bool metric_applies(std::string_view metric, ElemKind kind) {
    return find_evaluator(metric, kind).fn != nullptr;
}

std::optional<double> quality_value(ElemKind kind, std::string_view metric, const Point3* corners) {
    const Evaluator score = find_evaluator(metric, kind);
    if (!score.fn)
        return std::nullopt;
    return score(info(kind).nodes, corners);
}

bool quality_values(ElemKind kind, std::string_view metric, const Point3* corners,
                    std::size_t count, double* out) {
    const Evaluator score = find_evaluator(metric, kind);
    if (!score.fn)
        return false;
    const int nodes = info(kind).nodes;
    for (std::size_t i = 0; i < count; ++i)
        out[i] = score(nodes, corners + i * nodes);
    return true;
}

QualityStats quality_stats(const double* values, std::size_t count) {
    QualityStats s;
    if (count == 0)
        return s;
    s.min = s.max = values[0];
    double sum = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const double v = values[i];
        sum += v;
        if (v < s.min) {
            s.min = v;
            s.argmin = i;
        }
        if (v > s.max) {
            s.max = v;
            s.argmax = i;
        }
    }
    s.mean = sum / double(count);
    // Two passes: the sum of squared deviations does not cancel the way E[x^2] - mean^2 does
    // when the values sit close together (a good mesh scores near 1 everywhere).
    double squares = 0;
    for (std::size_t i = 0; i < count; ++i)
        squares += (values[i] - s.mean) * (values[i] - s.mean);
    s.stddev = std::sqrt(squares / double(count));
    return s;
}

} // namespace tarvo::kernel::mesh
