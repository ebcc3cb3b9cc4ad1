// Kernel functions of this family that are not written yet: mesh entity queries.
//
// Each STUB line defines one function of tarvo/TarvoInterface.h that prints
// "ERROR: <name> is not available in this kernel yet." and answers its failure value, and lists
// it in TarvoInterface::not_built_functions(). Delete the STUB line when you define the function
// (a forgotten line shows up as a multiple-definition error at link time).

#include "placeholders/Stub.h"

namespace TarvoInterface {

STUB_ID(get_exodus_id, (const std::string&, int))
STUB(get_geometry_owner, (const std::string&, int), std::string)
STUB(get_connectivity, (const std::string&, int), std::vector<int>)
STUB(get_expanded_connectivity, (const std::string&, int), std::vector<int>)
STUB(get_sub_elements, (const std::string&, int, int), std::vector<int>)
STUB(get_node_exists, (int), bool)
STUB(get_element_exists, (int), bool)
STUB(get_element_type, (int), std::string)
STUB_ID(get_element_type_id, (int))
STUB_ID(get_element_block, (int))
STUB_ID(get_global_element_id, (const std::string&, int))
STUB_ID(get_hex_global_element_id, (int))
STUB_ID(get_tet_global_element_id, (int))
STUB_ID(get_wedge_global_element_id, (int))
STUB_ID(get_pyramid_global_element_id, (int))
STUB_ID(get_tri_global_element_id, (int))
STUB_ID(get_quad_global_element_id, (int))
STUB_ID(get_edge_global_element_id, (int))
STUB_ID(get_sphere_global_element_id, (int))
STUB_ID(get_node_global_id, (int))
STUB_ID(get_closest_node, (double, double, double))
STUB(get_nodal_coordinates, (int), std::array<double, 3>)
STUB(get_node_faces, (int), std::vector<int>)
STUB(get_node_tris, (int), std::vector<int>)
STUB(get_node_position_fixed, (int), bool)
STUB(get_submap_corner_types, (int), std::vector<std::pair<int, int>>)
STUB_VOID(get_owning_volume_ids, (const std::string&, std::vector<int>&, std::vector<int>&))
STUB(get_mesh_element_type, (const std::string&, int), std::string)
STUB(get_mesh_errors, (), std::vector<MeshErrorFeedback*>)
STUB(get_mesh_error_count, (), int)

} // namespace TarvoInterface
