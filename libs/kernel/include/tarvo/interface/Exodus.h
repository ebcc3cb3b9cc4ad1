#pragma once
// Public functions of the kernel: exodus, blocks, nodesets and sidesets. The conventions of the
// whole API are in tarvo/TarvoInterface.h, which includes every family.

#include "tarvo/TarvoTypes.h"

#include <string>
#include <vector>

namespace TarvoInterface {

// ---- Exodus, blocks, nodesets and sidesets ------------------------------------------------------

// Exodus entity name of the entity.
std::string get_exodus_entity_name(const std::string& entity_type, int entity_id);
// Properties text of the block, sideset or nodeset.
std::string get_exodus_entity_type(const std::string& entity_type, int entity_id);
// Exodus entity description of the entity.
std::string get_exodus_entity_description(const std::string& entity_type, int entity_id);
// Time values stored in the Exodus file.
std::vector<double> get_all_exodus_times(const std::string& filename);
// Variable names in the Exodus file of `variable_type` ("node", "element", "global").
std::vector<std::string> get_all_exodus_variable_names(const std::string& filename,
                                                       const std::string& variable_type);
// Block that holds the entity, or 0.
int get_block_id(const std::string& entity_type, int entity_id);
// Block ids of the named mesh file.
std::vector<int> get_block_ids(const std::string& mesh_geometry_file_name);
// Ids of all blocks, ascending.
std::vector<int> get_block_id_list();
// Ids of all nodesets, ascending.
std::vector<int> get_nodeset_id_list();
// Ids of all sidesets, ascending.
std::vector<int> get_sideset_id_list();
// Ids of the boundary conditions of the kind.
std::vector<int> get_bc_id_list(TI_BCTypes bc_type_enum);
// Name of the boundary condition.
std::string get_bc_name(TI_BCTypes bc_type_enum, int bc_id);
// Nodesets that carry the boundary condition.
std::vector<int> get_nodeset_id_list_for_bc(TI_BCTypes bc_type_enum, int bc_id);
// Sidesets that carry the boundary condition.
std::vector<int> get_sideset_id_list_for_bc(TI_BCTypes bc_type_enum, int bc_id);
// Id that the next new sideset will get.
int get_next_sideset_id();
// Id that the next new nodeset will get.
int get_next_nodeset_id();
// Id that the next new block will get.
int get_next_block_id();
// What copying geometry does with nodesets: "on", "off" or "use_original".
std::string get_copy_nodeset_on_geometry_copy_setting();
// Copy sideset on geometry copy setting.
std::string get_copy_sideset_on_geometry_copy_setting();
// Copy block on geometry copy setting.
std::string get_copy_block_on_geometry_copy_setting();
// Everything in the block, by kind.
void get_block_children(
    int block_id, std::vector<int>& returned_group_list, std::vector<int>& returned_node_list,
    std::vector<int>& returned_sphere_list, std::vector<int>& returned_edge_list,
    std::vector<int>& returned_tri_list, std::vector<int>& returned_face_list,
    std::vector<int>& returned_pyramid_list, std::vector<int>& returned_tet_list,
    std::vector<int>& returned_hex_list, std::vector<int>& returned_wedge_list,
    std::vector<int>& returned_volume_list, std::vector<int>& returned_surface_list,
    std::vector<int>& returned_curve_list, std::vector<int>& returned_vertex_list);
// Children of the nodeset.
void get_nodeset_children(int nodeset_id, std::vector<int>& returned_node_list,
                          std::vector<int>& returned_volume_list,
                          std::vector<int>& returned_surface_list,
                          std::vector<int>& returned_curve_list,
                          std::vector<int>& returned_vertex_list);
// Children of the sideset.
void get_sideset_children(int sideset_id, std::vector<int>& returned_face_list,
                          std::vector<int>& returned_surface_list,
                          std::vector<int>& returned_curve_list);
// Ids of the volumes in the block.
std::vector<int> get_block_volumes(int block_id);
// Ids of the surfaces in the block.
std::vector<int> get_block_surfaces(int block_id);
// Ids of the curves in the block.
std::vector<int> get_block_curves(int block_id);
// Ids of the vertices in the block.
std::vector<int> get_block_vertices(int block_id);
// Elements and nodes of the block, by kind; false when the block does not exist.
bool get_block_elements_and_nodes(
    int block_id, std::vector<int>& returned_node_list, std::vector<int>& returned_sphere_list,
    std::vector<int>& returned_edge_list, std::vector<int>& returned_tri_list,
    std::vector<int>& returned_face_list, std::vector<int>& returned_pyramid_list,
    std::vector<int>& returned_wedge_list, std::vector<int>& returned_tet_list,
    std::vector<int>& returned_hex_list);
// Ids of the nodes in the block.
std::vector<int> get_block_nodes(int block_id);
// Ids of the edges in the block.
std::vector<int> get_block_edges(int block_id);
// Ids of the tris in the block.
std::vector<int> get_block_tris(int block_id);
// Ids of the faces in the block.
std::vector<int> get_block_faces(int block_id);
// Ids of the pyramids in the block.
std::vector<int> get_block_pyramids(int block_id);
// Ids of the wedges in the block.
std::vector<int> get_block_wedges(int block_id);
// Ids of the tets in the block.
std::vector<int> get_block_tets(int block_id);
// Ids of the hexes in the block.
std::vector<int> get_block_hexes(int block_id);
// Ids of the hexes in the volume.
std::vector<int> get_volume_hexes(int volume_id);
// Ids of the tets in the volume.
std::vector<int> get_volume_tets(int volume_id);
// Ids of the volumes in the nodeset.
std::vector<int> get_nodeset_volumes(int nodeset_id);
// Ids of the surfaces in the nodeset.
std::vector<int> get_nodeset_surfaces(int nodeset_id);
// Ids of the curves in the nodeset.
std::vector<int> get_nodeset_curves(int nodeset_id);
// Ids of the vertices in the nodeset.
std::vector<int> get_nodeset_vertices(int nodeset_id);
// Ids of the nodes in the nodeset.
std::vector<int> get_nodeset_nodes(int nodeset_id);
// Nodes of the nodeset, including those of its geometry.
std::vector<int> get_nodeset_nodes_inclusive(int nodeset_id);
// Ids of the curves in the sideset.
std::vector<int> get_sideset_curves(int sideset_id);
// Ids of the edges in the curve.
std::vector<int> get_curve_edges(int curve_id);
// Ids of the surfaces in the sideset.
std::vector<int> get_sideset_surfaces(int sideset_id);
// Ids of the quads in the sideset.
std::vector<int> get_sideset_quads(int sideset_id);
// Ids of the quads in the surface.
std::vector<int> get_surface_quads(int surface_id);
// Ids of the tris in the surface.
std::vector<int> get_surface_tris(int surface_id);
// Sense of the entity in the sideset: "forward", "reverse" or "both".
std::string get_entity_sense(const std::string& source_type, int source_id, int sideset_id);
// Entity the sideset side is taken with respect to ("volume 2"), or "".
std::string get_wrt_entity(const std::string& source_type, int source_id, int sideset_id);
// Owners ("surface 3") of the mesh entities of `mesh_entity_list` (an id-list expression).
std::vector<std::string> get_geometric_owner(const std::string& mesh_entity_type,
                                             const std::string& mesh_entity_list);
// Ids of the nodes in the volume.
std::vector<int> get_volume_nodes(int volume_id);
// Ids of the nodes in the surface.
std::vector<int> get_surface_nodes(int surface_id);
// Ids of the nodes in the curve.
std::vector<int> get_curve_nodes(int curve_id);
// Node on the vertex, or 0.
int get_vertex_node(int vertex_id);
// Id of the entity named `name`, or 0.
int get_id_from_name(const std::string& name);
// Element type of the sideset.
std::string get_sideset_element_type(int sideset_id);
// Element type of the block.
std::string get_block_element_type(int block_id);
// Number of elements of the block or sideset.
int get_exodus_element_count(int entity_id, const std::string& entity_type);
// Number of attributes of the block.
int get_block_attribute_count(int block_id);
// Number of attributes per element of the block.
int get_block_element_attribute_count(int block_id);
// Attribute value of the block.
double get_block_attribute_value(int block_id, int attribute_index);
// Attribute name of the block.
std::string get_block_attribute_name(int block_id, int attribute_index);
// Element attribute names of the block.
std::vector<std::string> get_block_element_attribute_names(int block_id);
// Element types that the block's contents allow.
std::vector<std::string> get_valid_block_element_types(int block_id);
// Number of Exodus variables on the container.
int get_exodus_variable_count(const std::string& container_type, int container_id);
// Exodus variable names.
std::vector<std::string> get_exodus_variable_names(const std::string& container_type,
                                                   int container_id);
// Number of nodes in the nodeset.
int get_nodeset_node_count(int nodeset_id);
// Number of mesh nodes on the entity, its boundary included.
int get_geometry_node_count(const std::string& entity_type, int entity_id);

} // namespace TarvoInterface
