#pragma once
// Hands the geometry model to Gmsh for meshing.
//
// push_to_gmsh() empties Gmsh's current model, gives it every body's OpenCASCADE shape (shared
// faces stay shared: Gmsh binds a sub-shape once), synchronizes, and answers the map between
// the kernel's (type, id) and Gmsh's (dim, tag) for volumes, surfaces, curves and vertices.
// Gmsh entities without a kernel id (the degenerate edges at sphere and cone apexes) appear only
// in `unmapped`. Gmsh's tags mean nothing after the next push.
//
// Threading: kernel thread only (Gmsh is not thread-safe).

#include "geometry/GeometryModel.h"

#include <map>
#include <utility>
#include <vector>

namespace tarvo::kernel {

struct GmshMap {
    std::map<EntityKey, std::pair<int, int>> to_gmsh;   // (type, id) -> (dim, tag)
    std::map<std::pair<int, int>, EntityKey> from_gmsh; // (dim, tag) -> (type, id)
    std::vector<std::pair<int, int>> unmapped;          // Gmsh entities without a kernel id
};

// False with an error printed if Gmsh refused the shapes.
bool push_to_gmsh(const GeometryModel& model, GmshMap& map);

} // namespace tarvo::kernel
