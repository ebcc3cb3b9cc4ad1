#pragma once
// The sizing settings behind the commands and the public queries, and how the settings in effect
// are resolved. The mesher reads them through Sizing.h; only the sizing commands change them.
//
// Contract
// - One immutable record per geometry entity (volume, surface, curve) that has a setting; an
//   entity without one has no record. A change builds a new record and swaps it in, so an undo
//   snapshot is a copy of the map (core/Undo.h).
// - Records of entities that no longer exist are ignored by every answer; the module drops them
//   as the geometry reports deletes, and renames them when ids are compressed.
// - Resolution is nearest first: an entity's own setting, else that of the surfaces holding it,
//   else that of the volumes holding it, else the automatic size of the model. At one level an
//   interval count beats a size.
//
// Threading: kernel thread only.

#include "mesh/Sizing.h"

#include <functional>
#include <numbers>
#include <optional>
#include <string>
#include <vector>

namespace tarvo::kernel::mesh {

// Limits of the commands. A size below kMinSize is finer than the geometry's tolerance can
// tell apart; interval counts beyond kMaxIntervals are refused, and derived ones clamped to it.
inline constexpr double kMinSize = 1e-6;
inline constexpr int kMaxIntervals = 1000000;
inline constexpr double kMinBiasFactor = 1e-3;
inline constexpr double kMaxBiasFactor = 1e3;
// Automatic size: factor 1 (fine) to 10 (coarse); at the default, a cube's edge is divided into
// kAutoDivisions intervals.
inline constexpr double kDefaultAutoFactor = 5;
inline constexpr double kAutoDivisions = 10;
// A curve with no size or interval count anywhere gets at least one interval for each this many
// radians its tangent turns (12 round a circle): the model's size alone would leave a small round
// part in a large model a polygon of two or three sides, or nothing that Gmsh can mesh.
inline constexpr double kAutoTurnPerInterval = std::numbers::pi / 6;
inline constexpr double kDefaultDualBiasFactor = 1.5;
inline constexpr double kDefaultTetmeshGrowth = 1.0;
inline constexpr double kDefaultTrimeshGradation = 1.3;

struct SizingRecord {
    double size = 0; // > 0 unless size_type is NotSet
    SizeType size_type = SizeType::NotSet;
    double auto_factor = 0; // the factor of a Calculated size
    int intervals = 0;      // > 0 when given with `interval`
    Scheme scheme = Scheme::Default;
    int sweep_source = 0; // surfaces named with `scheme sweep`; 0: none named
    int sweep_target = 0;
    BiasType bias = BiasType::None;
    double bias_factor = 1.0;
    int bias_start_vertex = 0; // 0: not given (the bias starts at the curve's first vertex)
    bool empty() const;
};

// The record of an entity that exists; null when it has none or the entity is gone.
const SizingRecord* record_of(GeomKind kind, int id);
// Applies `edit` to a copy of each entity's record (a default one when it has none) and swaps the
// copies in; a record left with no setting is removed.
void update_records(const std::vector<EntityKey>& keys,
                    const std::function<void(SizingRecord&)>& edit);
void set_tetmesh_growth(double growth);
void set_trimesh_gradation(double gradation);

// The automatic size of the entities that exist among `keys` at `factor`: factor / 5 times a
// tenth of the edge of the cube with the diagonal of their joint bounding box. 0 when none exists
// or they have no extent.
double auto_size(const std::vector<EntityKey>& keys, double factor);
// The automatic size of the whole model at the default factor; 0 for an empty model.
double model_auto_size();

struct Resolved {
    double size = 0; // > 0
    SizeType size_type = SizeType::NotSet;
    int intervals = 0; // a curve: >= 1; a surface or volume: the count given to it, else 0
    Firmness interval_firmness = Firmness::Limp;
};
// The settings in effect for a volume, surface or curve that exists (nullopt otherwise).
std::optional<Resolved> resolve(GeomKind kind, int id);
// The same from the entity's own record alone: its size or the automatic size of the model
// (NotSet), its interval count (a curve: derived from its own size, Soft), else 0 and Limp.
std::optional<Resolved> resolve_requested(GeomKind kind, int id);

// The first and last vertex of a curve in the order of its parameter (equal for a closed curve);
// false when it is not there.
bool curve_ends(int curve_id, int& first, int& last);
// The lengths of the curve's intervals in effect, from the vertex the bias starts at (its first
// vertex when it has no bias). Empty when the curve does not exist.
std::vector<double> interval_lengths(int curve_id);

// Every record and the mesher settings, for the native file, and putting them back in place of
// the present ones (no events: the geometry's events report the entities).
struct SizingContents {
    std::vector<std::pair<EntityKey, SizingRecord>> records;
    double tetmesh_growth = kDefaultTetmeshGrowth;
    double trimesh_gradation = kDefaultTrimeshGradation;
};
SizingContents sizing_contents();
void replace_sizing(const SizingContents& contents);

// Schemes: the words, and where each may be set.
struct SchemeInfo {
    Scheme scheme;
    const char* word;
    bool on_volume;
    bool on_surface;
};
const std::vector<SchemeInfo>& scheme_table();
const char* bias_type_word(BiasType type); // "bias", "dualbias", "" for none

} // namespace tarvo::kernel::mesh
