#pragma once
// Public functions of the kernel: mesh entity queries. The conventions of the whole API
// are in tarvo/TarvoInterface.h, which includes every family.

#include "tarvo/TarvoTypes.h"

#include <array>
#include <string>
#include <utility>
#include <vector>

namespace TarvoInterface {

// ---- Mesh entity queries ------------------------------------------------------------------------

// Exodus (global) id of the mesh entity.
int get_exodus_id(const std::string& entity_type, int entity_id);
// Owner of the mesh entity ("surface 3"), or "".
std::string get_geometry_owner(const std::string& entity_type, int entity_id);
// Node ids of the element, in the element's node order.
std::vector<int> get_connectivity(const std::string& entity_type, int entity_id);
// Node ids of the element, higher-order nodes included.
std::vector<int> get_expanded_connectivity(const std::string& entity_type, int entity_id);
// Ids of the element's sub-entities of the given dimension.
std::vector<int> get_sub_elements(const std::string& entity_type, int entity_id, int dimension);
// Whether node `node_id` exists.
bool get_node_exists(int node_id);
// Whether element `element_id` exists (any type).
bool get_element_exists(int element_id);
// Type of the element.
std::string get_element_type(int element_id);
// Numeric type of the element (its Exodus element code).
int get_element_type_id(int element_id);
// Block that holds the element, or 0.
int get_element_block(int element_id);
// Global (export) element id of the element.
int get_global_element_id(const std::string& element_type, int id);
// Global element id of the hex.
int get_hex_global_element_id(int hex_id);
// Global element id of the tet.
int get_tet_global_element_id(int tet_id);
// Global element id of the wedge.
int get_wedge_global_element_id(int wedge_id);
// Global element id of the pyramid.
int get_pyramid_global_element_id(int pyramid_id);
// Global element id of the tri.
int get_tri_global_element_id(int tri_id);
// Global element id of the quad.
int get_quad_global_element_id(int quad_id);
// Global element id of the edge.
int get_edge_global_element_id(int edge_id);
// Sphere global element id of the sphere element.
int get_sphere_global_element_id(int sphere_id);
// Global id of the node.
int get_node_global_id(int node_id);
// Node nearest to the point.
int get_closest_node(double x_coordinate, double y_coordinate, double z_coordinate);
// Nodal coordinates of the node.
std::array<double, 3> get_nodal_coordinates(int node_id);
// Quads that use the node.
std::vector<int> get_node_faces(int node_id);
// Tris that use the node.
std::vector<int> get_node_tris(int node_id);
// Whether smoothing may not move the node.
bool get_node_position_fixed(int node_id);
// Vertex id and corner type code of each vertex of the surface under a submap scheme.
std::vector<std::pair<int, int>> get_submap_corner_types(int surface_id);
// Mesh entities of the type and, in step, the volume that owns each.
void get_owning_volume_ids(const std::string& entity_type, std::vector<int>& entity_list,
                           std::vector<int>& volume_ids);
// Mesh element type of the entity.
std::string get_mesh_element_type(const std::string& entity_type, int entity_id);
// Errors the last meshing left; the kernel owns the records (valid until the next mesh command).
std::vector<MeshErrorFeedback*> get_mesh_errors();
// Number of mesh errors in the model.
int get_mesh_error_count();

} // namespace TarvoInterface
