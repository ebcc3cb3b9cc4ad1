// Kernel functions of this family that are not written yet: exodus, blocks, nodesets and sidesets.
//
// Each STUB line defines one function of tarvo/TarvoInterface.h that prints
// "ERROR: <name> is not available in this kernel yet." and answers its failure value, and lists
// it in TarvoInterface::not_built_functions(). Delete the STUB line when you define the function
// (a forgotten line shows up as a multiple-definition error at link time).

#include "placeholders/Stub.h"

namespace TarvoInterface {

STUB(get_exodus_entity_type, (const std::string&, int), std::string)
STUB(get_exodus_entity_description, (const std::string&, int), std::string)
STUB(get_all_exodus_times, (const std::string&), std::vector<double>)
STUB(get_all_exodus_variable_names, (const std::string&, const std::string&),
     std::vector<std::string>)
STUB(get_bc_id_list, (TI_BCTypes), std::vector<int>)
STUB(get_bc_name, (TI_BCTypes, int), std::string)
STUB(get_nodeset_id_list_for_bc, (TI_BCTypes, int), std::vector<int>)
STUB(get_sideset_id_list_for_bc, (TI_BCTypes, int), std::vector<int>)
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
STUB(get_block_faces, (int), std::vector<int>)
STUB(get_sideset_curves, (int), std::vector<int>)
STUB(get_entity_sense, (const std::string&, int, int), std::string)
STUB(get_exodus_variable_count, (const std::string&, int), int)
STUB(get_exodus_variable_names, (const std::string&, int), std::vector<std::string>)

} // namespace TarvoInterface
