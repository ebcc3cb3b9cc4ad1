// Groups and entity identity: one row per method, in table order.

#include "methods/MethodTable.h"

namespace tarvo::methods {

namespace TI = TarvoInterface;

void add_group_methods(MethodRows& rows) {
    // clang-format off
    rows.insert(rows.end(), {
        row("get_group_children", &TI::get_group_children, {param("group_id"), out("returned_group_list"), out("returned_body_list"), out("returned_volume_list"), out("returned_surface_list"), out("returned_curve_list"), out("returned_vertex_list"), out("returned_node_count"), out("returned_edge_count"), out("returned_hex_count"), out("returned_quad_count"), out("returned_tet_count"), out("returned_tri_count"), out("returned_wedge_count"), out("returned_pyramid_count"), out("returned_sphere_count")}),
        row("get_group_groups", &TI::get_group_groups, {param("group_id")}),
        row("get_group_volumes", &TI::get_group_volumes, {param("group_id")}),
        row("get_group_bodies", &TI::get_group_bodies, {param("group_id")}),
        row("get_group_surfaces", &TI::get_group_surfaces, {param("group_id")}),
        row("get_group_curves", &TI::get_group_curves, {param("group_id")}),
        row("get_group_vertices", &TI::get_group_vertices, {param("group_id")}),
        row("get_group_nodes", &TI::get_group_nodes, {param("group_id")}),
        row("get_group_edges", &TI::get_group_edges, {param("group_id")}),
        row("get_group_quads", &TI::get_group_quads, {param("group_id")}),
        row("get_group_tris", &TI::get_group_tris, {param("group_id")}),
        row("get_group_tets", &TI::get_group_tets, {param("group_id")}),
        row("get_group_wedges", &TI::get_group_wedges, {param("group_id")}),
        row("get_group_pyramids", &TI::get_group_pyramids, {param("group_id")}),
        row("get_group_spheres", &TI::get_group_spheres, {param("group_id")}),
        row("get_group_hexes", &TI::get_group_hexes, {param("group_id")}),
        row("get_next_group_id", &TI::get_next_group_id, {}),
        row("delete_all_groups", &TI::delete_all_groups, {}),
        row("delete_group", &TI::delete_group, {param("group_id")}),
        row("set_max_group_id", &TI::set_max_group_id, {param("maximum_group_id")}),
        row("create_new_group", &TI::create_new_group, {}),
        row("remove_entity_from_group", &TI::remove_entity_from_group, {param("group_id"), param("entity_id"), param("entity_type")}),
        row("add_entity_to_group", &TI::add_entity_to_group, {param("group_id"), param("entity_id"), param("entity_type")}),
        row("add_entities_to_group", &TI::add_entities_to_group, {param("group_id"), param("entity_id"), param("entity_type")}),
        row("group_list", &TI::group_list, {out("name_list"), out("returned_id_list")}),
        row("group_names_ids", &TI::group_names_ids, {}),
        row("get_mesh_group_parent_ids", &TI::get_mesh_group_parent_ids, {param("element_type"), param("element_id")}),
        row("is_mesh_element_in_group", &TI::is_mesh_element_in_group, {param("element_type"), param("element_id")}),
        row("is_part_of_list", &TI::is_part_of_list, {param("target_id"), param("id_list")}),
        row("get_last_id", &TI::get_last_id, {param("entity_type")}),
        row("get_idless_signature", &TI::get_idless_signature, {param("entity_type"), param("entity_id")}),
        row("get_idless_signatures", &TI::get_idless_signatures, {param("entity_type"), param("entity_id_list")}),
    });
    // clang-format on
}

} // namespace tarvo::methods
