// Assembly metadata: one row per method, in table order.

#include "methods/MethodTable.h"

namespace tarvo::methods {

namespace TI = TarvoInterface;

void add_assembly_methods(MethodRows& rows) {
    // clang-format off
    rows.insert(rows.end(), {
        row("get_assembly_classification_level", &TI::get_assembly_classification_level, {}),
        row("get_assembly_classification_category", &TI::get_assembly_classification_category, {}),
        row("get_assembly_weapons_category", &TI::get_assembly_weapons_category, {}),
        row("get_assembly_metadata", &TI::get_assembly_metadata, {param("volume_id"), param("data_type")}),
        row("is_assembly_metadata_attached", &TI::is_assembly_metadata_attached, {param("volume_id")}),
        row("get_assembly_name", &TI::get_assembly_name, {param("assembly_id")}),
        row("get_assembly_path", &TI::get_assembly_path, {param("assembly_id")}),
        row("get_assembly_type", &TI::get_assembly_type, {param("assembly_id")}),
        row("get_parent_assembly_path", &TI::get_parent_assembly_path, {param("assembly_id")}),
        row("get_assembly_level", &TI::get_assembly_level, {param("assembly_id")}),
        row("get_assembly_description", &TI::get_assembly_description, {param("assembly_id")}),
        row("get_assembly_instance", &TI::get_assembly_instance, {param("assembly_id")}),
        row("get_parent_assembly_instance", &TI::get_parent_assembly_instance, {param("assembly_id")}),
        row("get_assembly_file_format", &TI::get_assembly_file_format, {param("assembly_id")}),
        row("get_assembly_units", &TI::get_assembly_units, {param("assembly_id")}),
        row("get_assembly_material_description", &TI::get_assembly_material_description, {param("assembly_id")}),
        row("get_assembly_material_specification", &TI::get_assembly_material_specification, {param("assembly_id")}),
        row("get_assembly_items", &TI::get_assembly_items, {}),
        row("get_top_level_assembly_items", &TI::get_top_level_assembly_items, {}),
        row("get_assembly_children", &TI::get_assembly_children, {param("assembly_id")}),
        row("get_volumes_for_node", &TI::get_volumes_for_node, {param("node_name"), param("node_instance")}),
    });
    // clang-format on
}

} // namespace tarvo::methods
