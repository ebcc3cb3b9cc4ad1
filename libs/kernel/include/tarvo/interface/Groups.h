#pragma once
// Public functions of the kernel: groups and entity identity. The conventions of the whole API
// are in tarvo/TarvoInterface.h, which includes every family.

#include "tarvo/TarvoTypes.h"

#include <string>
#include <utility>
#include <vector>

namespace TarvoInterface {

// ---- Groups and entity identity -----------------------------------------------------------------

// Everything in the group: ids of geometry by kind and counts of mesh entities by kind.
void get_group_children(int group_id, std::vector<int>& returned_group_list,
                        std::vector<int>& returned_body_list,
                        std::vector<int>& returned_volume_list,
                        std::vector<int>& returned_surface_list,
                        std::vector<int>& returned_curve_list,
                        std::vector<int>& returned_vertex_list, int& returned_node_count,
                        int& returned_edge_count, int& returned_hex_count, int& returned_quad_count,
                        int& returned_tet_count, int& returned_tri_count, int& returned_wedge_count,
                        int& returned_pyramid_count, int& returned_sphere_count);
// Ids of the groups in the group.
std::vector<int> get_group_groups(int group_id);
// Ids of the volumes in the group.
std::vector<int> get_group_volumes(int group_id);
// Ids of the bodies in the group.
std::vector<int> get_group_bodies(int group_id);
// Ids of the surfaces in the group.
std::vector<int> get_group_surfaces(int group_id);
// Ids of the curves in the group.
std::vector<int> get_group_curves(int group_id);
// Ids of the vertices in the group.
std::vector<int> get_group_vertices(int group_id);
// Ids of the nodes in the group.
std::vector<int> get_group_nodes(int group_id);
// Ids of the edges in the group.
std::vector<int> get_group_edges(int group_id);
// Ids of the quads in the group.
std::vector<int> get_group_quads(int group_id);
// Ids of the tris in the group.
std::vector<int> get_group_tris(int group_id);
// Ids of the tets in the group.
std::vector<int> get_group_tets(int group_id);
// Ids of the wedges in the group.
std::vector<int> get_group_wedges(int group_id);
// Ids of the pyramids in the group.
std::vector<int> get_group_pyramids(int group_id);
// Ids of the spheres in the group.
std::vector<int> get_group_spheres(int group_id);
// Ids of the hexes in the group.
std::vector<int> get_group_hexes(int group_id);
// Id that the next new group will get.
int get_next_group_id();
// Deletes all groups.
void delete_all_groups();
// Deletes group.
void delete_group(int group_id);
// Raises the next group id to follow `maximum_group_id`.
void set_max_group_id(int maximum_group_id);
// Creates an empty group; its id.
int create_new_group();
// Removes entity from group.
void remove_entity_from_group(int group_id, int entity_id, const std::string& entity_type);
// Adds entity to group.
void add_entity_to_group(int group_id, int entity_id, const std::string& entity_type);
// Adds entities to group.
void add_entities_to_group(int group_id, const std::vector<int>& entity_id,
                           const std::string& entity_type);
// Names and ids of all groups, as parallel lists.
void group_list(std::vector<std::string>& name_list, std::vector<int>& returned_id_list);
// Names and ids of all groups, as pairs.
std::vector<std::pair<std::string, int>> group_names_ids();
// Groups that hold the mesh element.
std::vector<int> get_mesh_group_parent_ids(const std::string& element_type, int element_id);
// Whether the element is mesh element in group.
bool is_mesh_element_in_group(const std::string& element_type, int element_id);
// Whether `target_id` is in `id_list`.
bool is_part_of_list(int target_id, const std::vector<int>& id_list);
// Highest id in use for `entity_type`.
int get_last_id(const std::string& entity_type);
// Text that identifies the entity without its id ("surface at 1.5 0 0"), stable across
// renumbering.
std::string get_idless_signature(const std::string& entity_type, int entity_id);
// Id-less signatures of the entities, joined.
std::string get_idless_signatures(const std::string& entity_type,
                                  const std::vector<int>& entity_id_list);

} // namespace TarvoInterface
