// Mesh entity queries: one row per method, in table order.
//
// get_sphere_global_element_id reads `edge_id`, like get_edge_global_element_id: clients depend
// on that name. get_mesh_errors reads the kernel's records and frees only the list.

#include "methods/MethodTable.h"

namespace tarvo::methods {

namespace TI = TarvoInterface;

void add_mesh_entity_methods(MethodRows& rows) {
    // clang-format off
    rows.insert(rows.end(), {
        row("get_exodus_id", &TI::get_exodus_id, {param("entity_type"), param("entity_id")}),
        row("get_geometry_owner", &TI::get_geometry_owner, {param("entity_type"), param("entity_id")}),
        row("get_connectivity", &TI::get_connectivity, {param("entity_type"), param("entity_id")}),
        row("get_expanded_connectivity", &TI::get_expanded_connectivity, {param("entity_type"), param("entity_id")}),
        row("get_sub_elements", &TI::get_sub_elements, {param("entity_type"), param("entity_id"), param("dimension")}),
        row("get_node_exists", &TI::get_node_exists, {param("node_id")}),
        row("get_element_exists", &TI::get_element_exists, {param("element_id")}),
        row("get_element_type", &TI::get_element_type, {param("element_id")}),
        row("get_element_type_id", &TI::get_element_type_id, {param("element_id")}),
        row("get_element_block", &TI::get_element_block, {param("element_id")}),
        row("get_global_element_id", &TI::get_global_element_id, {param("element_type"), param("id")}),
        row("get_hex_global_element_id", &TI::get_hex_global_element_id, {param("hex_id")}),
        row("get_tet_global_element_id", &TI::get_tet_global_element_id, {param("tet_id")}),
        row("get_wedge_global_element_id", &TI::get_wedge_global_element_id, {param("wedge_id")}),
        row("get_pyramid_global_element_id", &TI::get_pyramid_global_element_id, {param("pyramid_id")}),
        row("get_tri_global_element_id", &TI::get_tri_global_element_id, {param("tri_id")}),
        row("get_quad_global_element_id", &TI::get_quad_global_element_id, {param("quad_id")}),
        row("get_edge_global_element_id", &TI::get_edge_global_element_id, {param("edge_id")}),
        row("get_sphere_global_element_id", &TI::get_sphere_global_element_id, {param("edge_id")}),
        row("get_node_global_id", &TI::get_node_global_id, {param("node_id")}),
        row("get_closest_node", &TI::get_closest_node, {param("x_coordinate"), param("y_coordinate"), param("z_coordinate")}),
        row("get_nodal_coordinates", &TI::get_nodal_coordinates, {param("node_id")}),
        row("get_node_faces", &TI::get_node_faces, {param("node_id")}),
        row("get_node_tris", &TI::get_node_tris, {param("node_id")}),
        row("get_node_position_fixed", &TI::get_node_position_fixed, {param("node_id")}),
        row("get_submap_corner_types", &TI::get_submap_corner_types, {param("surface_id")}),
        row("get_owning_volume_ids", &TI::get_owning_volume_ids, {param("entity_type"), out("entity_list"), out("volume_ids")}),
        row("get_mesh_element_type", &TI::get_mesh_element_type, {param("entity_type"), param("entity_id")}),
        row("get_mesh_errors", &TI::get_mesh_errors, {}),
        row("get_mesh_error_count", &TI::get_mesh_error_count, {}),
    });
    // clang-format on
}

} // namespace tarvo::methods
