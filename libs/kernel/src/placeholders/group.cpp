// Kernel functions of this family that are not written yet: groups and entity identity.
//
// Each STUB line defines one function of tarvo/TarvoInterface.h that prints
// "ERROR: <name> is not available in this kernel yet." and answers its failure value, and lists
// it in TarvoInterface::not_built_functions(). Delete the STUB line when you define the function
// (a forgotten line shows up as a multiple-definition error at link time).

#include "placeholders/Stub.h"

namespace TarvoInterface {

STUB_VOID(get_group_children, (int, std::vector<int>&, std::vector<int>&, std::vector<int>&,
                               std::vector<int>&, std::vector<int>&, std::vector<int>&, int&, int&,
                               int&, int&, int&, int&, int&, int&, int&))
STUB(get_group_groups, (int), std::vector<int>)
STUB(get_group_volumes, (int), std::vector<int>)
STUB(get_group_bodies, (int), std::vector<int>)
STUB(get_group_surfaces, (int), std::vector<int>)
STUB(get_group_curves, (int), std::vector<int>)
STUB(get_group_vertices, (int), std::vector<int>)
STUB(get_group_nodes, (int), std::vector<int>)
STUB(get_group_edges, (int), std::vector<int>)
STUB(get_group_quads, (int), std::vector<int>)
STUB(get_group_tris, (int), std::vector<int>)
STUB(get_group_tets, (int), std::vector<int>)
STUB(get_group_wedges, (int), std::vector<int>)
STUB(get_group_pyramids, (int), std::vector<int>)
STUB(get_group_spheres, (int), std::vector<int>)
STUB(get_group_hexes, (int), std::vector<int>)
STUB_ID(get_next_group_id, ())
STUB_VOID(delete_all_groups, ())
STUB_VOID(delete_group, (int))
STUB_VOID(set_max_group_id, (int))
STUB_ID(create_new_group, ())
STUB_VOID(remove_entity_from_group, (int, int, const std::string&))
STUB_VOID(add_entity_to_group, (int, int, const std::string&))
STUB_VOID(add_entities_to_group, (int, const std::vector<int>&, const std::string&))
STUB_VOID(group_list, (std::vector<std::string>&, std::vector<int>&))
STUB(group_names_ids, (), std::vector<std::pair<std::string, int>>)
STUB(get_mesh_group_parent_ids, (const std::string&, int), std::vector<int>)
STUB(is_mesh_element_in_group, (const std::string&, int), bool)
STUB(is_part_of_list, (int, const std::vector<int>&), bool)
STUB_ID(get_last_id, (const std::string&))
STUB(get_idless_signature, (const std::string&, int), std::string)
STUB(get_idless_signatures, (const std::string&, const std::vector<int>&), std::string)

} // namespace TarvoInterface
