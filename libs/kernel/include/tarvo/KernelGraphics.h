#pragma once
// What the graphics library (pixlane_tarvo) needs of the kernel beyond its public queries: the
// drawable form of geometry and mesh, and the drawing sets. Not part of the public API: the
// server's method tables never see it, and no OpenCASCADE or Gmsh type leaks through it.
//
// Contract
// - Coordinates are model coordinates as floats, three per point.
// - Surfaces are tessellated by the geometry engine with a deflection relative to the size of the
//   body that holds them (so one body's change never re-tessellates another). The tessellation is
//   computed once per body: a published body never changes, so the cache is keyed on the body and
//   dropped when the body is gone.
// - Every function answers false (filling nothing) for an entity that does not exist or has
//   nothing to draw; an exception of the geometry engine becomes one error line and false.
//
// Threading: kernel thread only, like the rest of the kernel.

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace tarvo::graphics {

// Triangles of a surface: xyz per node, a unit normal per node (averaged over the triangles of
// this surface only, so edges between surfaces stay sharp) and three node indices per triangle,
// counter-clockwise seen from outside the solid.
bool surface_facets(int surface_id, std::vector<float>& xyz, std::vector<float>& normals,
                    std::vector<int>& triangles);
// Points along a curve, within the same relative deflection, from start to end.
bool curve_polyline(int curve_id, std::vector<float>& xyz);
bool vertex_point(int vertex_id, std::vector<float>& xyz);
// How many bodies were tessellated since the session began (a cache miss each).
long tessellated_bodies();

// The drawable mesh of a volume (the faces of its elements that only one element uses) or of a
// surface (its tris and quads). `faces` holds, per face, its corner count then its node indices;
// `edges` two node indices per distinct element edge of those faces. False when the entity has
// no mesh of that dimension.
// `nodes` holds the kernel's id of each point, so that a drawn cell leads back to the mesh.
struct MeshDrawing {
    std::vector<float> xyz;
    std::vector<int> faces;
    std::vector<int> edges;
    std::vector<int> nodes;
};
bool mesh_outer_faces(const std::string& type, int id, MeshDrawing& out);

using MeshEntity = std::pair<std::string, int>;

// The mesh entities a drawn mesh cell stands for, given the kernel ids of its corners: for a face,
// the tri or quad with exactly those corners, the surface that owns it, and the element of
// which it is a side (of the volume `volume_id`, 0: any); for two nodes, the curve's edge
// element between them. Finest first; what does not exist is left out.
std::vector<MeshEntity> mesh_entities_under(const std::vector<int>& corners, int volume_id);

// How one mesh entity (a node or an element of any kind) is drawn: an element's sides as faces
// (an edge element as one edge), a node as a point with no face or edge. False when it does
// not exist.
bool mesh_entity_drawing(const std::string& type, int id, MeshDrawing& out);

// Every entity of `type` (node or an element kind) of the volume's or surface's mesh and its
// boundary's, with its corner positions: `corners[i]` is the first index into `xyz` / 3 of entity
// `ids[i]`, up to the next one. False when the entity has no mesh or the type is no mesh type.
struct MeshEntityCorners {
    std::vector<int> ids;
    std::vector<int> corners;
    std::vector<float> xyz;
};
bool mesh_entity_corners(const std::string& owner_type, int owner_id, const std::string& type,
                         MeshEntityCorners& out);
// What the last `quality <list> draw` coloured: the sides of its solids that no other of them
// shares, its faces, and its edge elements as edges, each with its element's value of `metric`
// (`face_values` per face of `mesh.faces`, `edge_values` per pair of `mesh.edges`), and the range
// of all values. Elements deleted since are left out. `stamp` changes with every new drawing and
// with `quality draw clear`; false when nothing is drawn.
struct QualityDrawing {
    MeshDrawing mesh;
    std::vector<float> face_values;
    std::vector<float> edge_values;
    std::string metric;
    bool low_is_bad = true;
    double min = 0, max = 0;
};
bool quality_drawing(QualityDrawing& out);
std::uint64_t quality_drawing_stamp();

// Identifies the mesh of a volume or surface: changes whenever that mesh is replaced or deleted,
// 0 when it has none. Meshes have no delete event, so views compare this after each command.
std::uintptr_t mesh_stamp(const std::string& type, int id);

// The named drawing set ("" is the one of the `draw` command): while it is not empty, views draw
// only its entities.
std::vector<std::pair<std::string, int>> drawing_set(const std::string& name);

// Every entity type that the pick filter can hold.
const std::vector<std::string>& pickable_types();

// What a pick in a view did to the selection: replace it (`mode` 0), add to it (1) or remove
// from it (2), with the same events as the select command (highlighted / unhighlighted); an empty
// list with mode 0 clears it. False when there is no session.
bool select_entities(const std::vector<std::pair<std::string, int>>& entities, int mode);

// The camera of the view state, which the views share: focal point, position, up.
struct ViewCamera {
    std::array<double, 3> at{0, 0, 0};
    std::array<double, 3> from{0, 0, 1};
    std::array<double, 3> up{0, 1, 0};
    bool operator==(const ViewCamera&) const = default;
};
// False (camera untouched) when there is no session.
bool get_camera(ViewCamera& camera);
// Moved by a view's input; no event (views compare the camera before each render).
void set_camera(const ViewCamera& camera);

// Called after each public function of the view family that may change what views show (the
// camera, modes, drawing sets, selection): those have no event, and only commands end with
// `command_complete`. `redraw` is true for `flush_graphics`, which asks every view to draw
// again whatever changed. One listener per `owner`; an empty function removes it. Listeners are
// called on the kernel thread and must not register or remove listeners.
void set_view_listener(const void* owner, std::function<void(bool redraw)> listener);

} // namespace tarvo::graphics
