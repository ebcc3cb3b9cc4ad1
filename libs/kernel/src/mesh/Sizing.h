#pragma once
// Sizes, intervals, biases and schemes: what the user asked for each geometry entity, and what
// the mesher derives from it. The state is part of the model (undo and rollback keep it): it is
// its own undo participant, holding one immutable record per entity that has settings, so a
// snapshot is a map copy.
//
// Vocabularies (firmness, size types, bias types, schemes) are written once, in Sizing.cpp's
// tables, and documented in docs/commands.md.
//
// Threading: kernel thread only.

#include "geometry/GeometryModel.h"

#include <string>
#include <vector>

namespace tarvo::kernel::mesh {

enum class Firmness { Limp, Soft, Hard };
enum class SizeType { NotSet, Calculated, UserSet };
// Volume and surface schemes; Default means "nothing chosen" (meshing then behaves as Auto).
enum class Scheme { Default, Auto, Map, Submap, Sweep, Pave, Trimesh, Tetmesh, Polyhedron, Sphere };
enum class BiasType { None, Bias, DualBias };

// How one curve is to be divided, resolved from its own settings, its size (own, else of the
// surfaces and volumes it bounds, else the automatic size of the model).
struct CurvePlan {
    int intervals = 1; // >= 1
    BiasType bias = BiasType::None;
    double factor = 1.0;   // ratio of each interval to the one before it
    bool from_end = false; // bias grows from the curve's last vertex
};

// What the mesher asks. Each answers from the live model and the current settings.
CurvePlan curve_plan(int curve_id);
// Target element size for a surface or volume (its own, else of the volumes it bounds / the
// automatic size of the model). Always > 0 for an existing entity.
double target_size(GeomKind kind, int id);
// The scheme chosen for a surface or volume (Default when none).
Scheme scheme_of(GeomKind kind, int id);
// Sweep source and target surfaces given with `scheme sweep source .. target ..` (0: find them).
void sweep_surfaces(int volume_id, int& source, int& target);
// Mesher settings: `set tetmesher growth <g>` (>= 1), `set trimesher gradation <g>` (>= 1).
double tetmesh_growth();
double trimesh_gradation();

// Vocabulary words as queries answer them ("HARD", "USER_SET", "map", ...).
const char* firmness_word(Firmness f);
const char* size_type_word(SizeType t);
const char* scheme_word(Scheme s);

// Registers the sizing commands and the undo participant; called by the mesh module's init.
void init_sizing();
void shutdown_sizing();

} // namespace tarvo::kernel::mesh
