#pragma once
// Element quality metrics: one table of metric names, which element kinds each applies to, how
// each is computed, and whether its low values are the bad ones.
//
// A pure numeric layer: it knows neither the session nor ids. Callers pass corner coordinates in
// the Exodus node order of MeshTypes.h (info(kind).nodes points per element) and get numbers
// back; turning an unknown name into an error, choosing elements and making groups of the bad
// ones is the caller's business.
//
// Metrics come from Verdict (Verdict.h) for edges, triangles, quads, tets, hexes and wedges;
// pyramid metrics other than the volume are computed here (Quality.cpp documents the
// definitions). Only metrics that need nothing beyond the corners are offered: no "relative
// size" or "... and size" metrics, which depend on a reference size. Spheres have no metric.
//
// Names are matched without regard to case and to surrounding blanks; a few common spellings
// are accepted as aliases ("Volume" for "Element Volume", "Condition Number" for "Condition
// No."), and every function answers with the canonical name.
//
// Threading: every function is reentrant and may run on any thread (nothing here holds state,
// and no Verdict global setter is ever called).

#include "mesh/MeshTypes.h"

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace tarvo::kernel::mesh {

// The canonical name of the metric called `name` (case and surrounding blanks ignored, aliases
// resolved), or nullopt for a name the table does not know.
std::optional<std::string_view> find_metric(std::string_view name);

// Whether low values of `metric` mark bad elements (Scaled Jacobian, Shape, Element Volume), as
// opposed to high ones (Aspect Ratio, Skew, Condition No.). False for an unknown name.
bool low_is_bad(std::string_view metric);

// The canonical names of the metrics that apply to `kind`, in table order (empty for spheres).
std::vector<std::string_view> metrics_for(ElemKind kind);

// The metric used when none is named: "Scaled Jacobian" for triangles, quads and all solids,
// "Length" for edges, empty for spheres.
std::string_view default_metric(ElemKind kind);

// Whether `metric` (any accepted spelling) applies to `kind`.
bool metric_applies(std::string_view metric, ElemKind kind);

// The value of `metric` for one element whose corners are `corners[0 .. info(kind).nodes)`, or
// nullopt when the name is unknown or the metric does not apply to the kind. Never NaN: Verdict
// clamps degenerate elements to +-1e30, and where it would answer NaN for a collapsed element
// the value is 0 for a metric whose low values are bad and 1e30 for one whose high values are.
std::optional<double> quality_value(ElemKind kind, std::string_view metric, const Point3* corners);

// The batch form, for whole meshes: `count` elements with their corners back to back
// (info(kind).nodes each), one value per element into `out[0 .. count)`. The name is resolved
// once. False, with `out` untouched, when the metric is unknown or does not apply to `kind`.
bool quality_values(ElemKind kind, std::string_view metric, const Point3* corners,
                    std::size_t count, double* out);

// Summary of a set of values: the population standard deviation, and the positions of the first
// minimum and the first maximum. All zero for an empty set.
struct QualityStats {
    double min = 0, max = 0, mean = 0, stddev = 0;
    std::size_t argmin = 0, argmax = 0;
};
QualityStats quality_stats(const double* values, std::size_t count);

} // namespace tarvo::kernel::mesh
