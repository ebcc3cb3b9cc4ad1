#pragma once
// Hex meshing of our own, on the stored boundary meshes (Gmsh 4.8 cannot mesh a volume against
// meshes it did not make, nor sweep an existing volume):
//
// - map_volume: a volume that is a logical cube (six faces, each meshed as a structured quad grid,
//   opposite faces with equal counts) gets hexes by transfinite interpolation of its boundary
//   grids. Every node of the boundary is reused, so the hexes conform to the surfaces.
// - sweep_volume: a volume between a source and a target surface, joined by linking surfaces that
//   are structured quad grids, gets layers of hexes (wedges under triangles) by moving the
//   source mesh layer by layer along the linking curves; the last layer is the target surface's
//   mesh, projected onto the target surface. Translate and rotate sweeps at least.
//
// Both fail with `why` set (one sentence, for the user) and build nothing when the volume does
// not qualify. Source/target 0 means "find them".
//
// Threading: kernel thread only.

#include "mesh/NewMesh.h"

#include <map>
#include <string>
#include <vector>

namespace tarvo::kernel::mesh {

class MeshModule;

bool map_volume(const MeshModule& module, int volume_id, NewMesh& out, std::string& why);

// Sweeping takes two calls so that every piece refers only to published nodes:
// 1. find_sweep_pair() picks (or checks the given) source and target surfaces from the geometry
//    alone, before any surface is meshed: two faces that every other face (a linking surface)
//    joins. The mesher then meshes the source as its scheme says, the linking surfaces as
//    structured bands (map_linking_surface below), and leaves the target unmeshed.
// 2. sweep_target() builds the target surface's mesh: the source mesh carried to the target
//    and projected onto it; the caller publishes it for the target surface as it is: its new
//    nodes follow the order of the source's nodes, which step 3 relies on (and checks).
// 3. sweep_volume() builds the volume's hexes (wedges under source triangles) layer by layer;
//    its connectivity refers to the published source, target and linking surface nodes.
// The sweep rule on bare topology, so that it can be asked of shapes that are not (yet) in the
// model: the faces of one volume, each face's curves and each curve's end vertices.
struct VolumeTopology {
    std::vector<int> faces;
    std::map<int, std::vector<int>> curves; // face -> its curves
    std::map<int, std::vector<int>> ends;   // curve -> its end vertices
};
// Whether `s` sweeps to `t`: they share no curve, and every other face meets both with each of
// its other curves running from a vertex of one to a vertex of the other.
bool sweepable_pair(const VolumeTopology& topo, int s, int t);

bool find_sweep_pair(const MeshModule& module, int volume_id, int& source, int& target,
                     std::string& why);
bool sweep_target(const MeshModule& module, int volume_id, int source, int target, NewMesh& out,
                  std::string& why);
bool sweep_volume(const MeshModule& module, int volume_id, int source, int target, NewMesh& out,
                  std::string& why);

// Whether the linking surfaces of a (source, target) pair can be meshed as structured quad bands
// with the interval counts the sizing gives their curves (curve_plan), before anything is
// meshed: each linking surface has two linking curves (or one seam curve, met twice), the
// linking curves of the volume have equal counts, and on each linking surface the counts of
// its curves on the source add up to those on the target. `why` says what does not fit.
bool linking_surfaces_fit(const MeshModule& module, int volume_id, int source, int target,
                          std::string& why);

// The structured quad band of one linking surface, from its meshed curves: rows follow the
// linking curves' nodes, columns the source-side curves' nodes; inner nodes lie on the surface.
// Works for periodic bands (a cylinder's side with its seam) and for several curves on each side.
bool map_linking_surface(const MeshModule& module, int volume_id, int source, int target,
                         int surface, NewMesh& out, std::string& why);

} // namespace tarvo::kernel::mesh
