// Kernel functions of this family that are not written yet: exodus, blocks, nodesets and sidesets.
//
// Each STUB line defines one function of tarvo/TarvoInterface.h that prints
// "ERROR: <name> is not available in this kernel yet." and answers its failure value, and lists
// it in TarvoInterface::not_built_functions(). Delete the STUB line when you define the function
// (a forgotten line shows up as a multiple-definition error at link time).

#include "placeholders/Stub.h"

namespace TarvoInterface {

STUB(get_exodus_entity_name, (const std::string&, int), std::string)
STUB(get_exodus_entity_type, (const std::string&, int), std::string)
STUB(get_exodus_entity_description, (const std::string&, int), std::string)
STUB(get_all_exodus_times, (const std::string&), std::vector<double>)
STUB(get_all_exodus_variable_names, (const std::string&, const std::string&),
     std::vector<std::string>)
STUB_ID(get_block_id, (const std::string&, int))
STUB(get_block_ids, (const std::string&), std::vector<int>)
STUB(get_block_id_list, (), std::vector<int>)
STUB(get_nodeset_id_list, (), std::vector<int>)
STUB(get_sideset_id_list, (), std::vector<int>)
STUB(get_bc_id_list, (TI_BCTypes), std::vector<int>)
STUB(get_bc_name, (TI_BCTypes, int), std::string)
STUB(get_nodeset_id_list_for_bc, (TI_BCTypes, int), std::vector<int>)
STUB(get_sideset_id_list_for_bc, (TI_BCTypes, int), std::vector<int>)
STUB_ID(get_next_sideset_id, ())
STUB_ID(get_next_nodeset_id, ())
STUB_ID(get_next_block_id, ())
STUB(get_copy_nodeset_on_geometry_copy_setting, (), std::string)
STUB(get_copy_sideset_on_geometry_copy_setting, (), std::string)
STUB(get_copy_block_on_geometry_copy_setting, (), std::string)
STUB_VOID(get_block_children,
          (int, std::vector<int>&, std::vector<int>&, std::vector<int>&, std::vector<int>&,
           std::vector<int>&, std::vector<int>&, std::vector<int>&, std::vector<int>&,
           std::vector<int>&, std::vector<int>&, std::vector<int>&, std::vector<int>&,
           std::vector<int>&, std::vector<int>&))
STUB_VOID(get_nodeset_children, (int, std::vector<int>&, std::vector<int>&, std::vector<int>&,
                                 std::vector<int>&, std::vector<int>&))
STUB_VOID(get_sideset_children, (int, std::vector<int>&, std::vector<int>&, std::vector<int>&))
STUB(get_block_volumes, (int), std::vector<int>)
STUB(get_block_surfaces, (int), std::vector<int>)
STUB(get_block_curves, (int), std::vector<int>)
STUB(get_block_vertices, (int), std::vector<int>)
STUB(get_block_elements_and_nodes,
     (int, std::vector<int>&, std::vector<int>&, std::vector<int>&, std::vector<int>&,
      std::vector<int>&, std::vector<int>&, std::vector<int>&, std::vector<int>&,
      std::vector<int>&),
     bool)
STUB(get_block_nodes, (int), std::vector<int>)
STUB(get_block_edges, (int), std::vector<int>)
STUB(get_block_tris, (int), std::vector<int>)
STUB(get_block_faces, (int), std::vector<int>)
STUB(get_block_pyramids, (int), std::vector<int>)
STUB(get_block_wedges, (int), std::vector<int>)
STUB(get_block_tets, (int), std::vector<int>)
STUB(get_block_hexes, (int), std::vector<int>)
STUB(get_nodeset_volumes, (int), std::vector<int>)
STUB(get_nodeset_surfaces, (int), std::vector<int>)
STUB(get_nodeset_curves, (int), std::vector<int>)
STUB(get_nodeset_vertices, (int), std::vector<int>)
STUB(get_nodeset_nodes, (int), std::vector<int>)
STUB(get_nodeset_nodes_inclusive, (int), std::vector<int>)
STUB(get_sideset_curves, (int), std::vector<int>)
STUB(get_sideset_surfaces, (int), std::vector<int>)
STUB(get_sideset_quads, (int), std::vector<int>)
STUB(get_entity_sense, (const std::string&, int, int), std::string)
STUB(get_wrt_entity, (const std::string&, int, int), std::string)
STUB_ID(get_id_from_name, (const std::string&))
STUB(get_sideset_element_type, (int), std::string)
STUB(get_block_element_type, (int), std::string)
STUB(get_exodus_element_count, (int, const std::string&), int)
STUB(get_block_attribute_count, (int), int)
STUB(get_block_element_attribute_count, (int), int)
STUB(get_block_attribute_value, (int, int), double)
STUB(get_block_attribute_name, (int, int), std::string)
STUB(get_block_element_attribute_names, (int), std::vector<std::string>)
STUB(get_valid_block_element_types, (int), std::vector<std::string>)
STUB(get_exodus_variable_count, (const std::string&, int), int)
STUB(get_exodus_variable_names, (const std::string&, int), std::vector<std::string>)
STUB(get_nodeset_node_count, (int), int)

} // namespace TarvoInterface
