#pragma once
// Public functions of the kernel: assembly metadata. The conventions of the whole API
// are in tarvo/TarvoInterface.h, which includes every family.

#include "tarvo/TarvoTypes.h"

#include <string>
#include <vector>

namespace TarvoInterface {

// ---- Assembly metadata --------------------------------------------------------------------------

// Assembly classification level.
std::string get_assembly_classification_level();
// Assembly classification category.
std::string get_assembly_classification_category();
// Assembly weapons category.
std::string get_assembly_weapons_category();
// Metadata item `data_type` of the volume's assembly (0 name, 1 path, 2 type, 3 description, 4
// material).
std::string get_assembly_metadata(int volume_id, int data_type);
// Whether the volume is assembly metadata attached.
bool is_assembly_metadata_attached(int volume_id);
// Name of the assembly.
std::string get_assembly_name(int assembly_id);
// Path of the assembly.
std::string get_assembly_path(int assembly_id);
// Type of the assembly.
std::string get_assembly_type(int assembly_id);
// Parent assembly path of the assembly.
std::string get_parent_assembly_path(int assembly_id);
// Level of the assembly.
int get_assembly_level(int assembly_id);
// Description of the assembly.
std::string get_assembly_description(int assembly_id);
// Instance of the assembly.
int get_assembly_instance(int assembly_id);
// Parent assembly instance of the assembly.
int get_parent_assembly_instance(int assembly_id);
// File format of the assembly.
std::string get_assembly_file_format(int assembly_id);
// Units of the assembly.
std::string get_assembly_units(int assembly_id);
// Material description of the assembly.
std::string get_assembly_material_description(int assembly_id);
// The material standard or grade recorded for the assembly.
std::string get_assembly_material_specification(int assembly_id);
// Every node of the assembly tree.
std::vector<AssemblyItem> get_assembly_items();
// The roots of the assembly tree.
std::vector<AssemblyItem> get_top_level_assembly_items();
// The children of the assembly node.
std::vector<AssemblyItem> get_assembly_children(int assembly_id);
// Volumes of the assembly node with that name and instance.
std::vector<int> get_volumes_for_node(const std::string& node_name, int node_instance);

} // namespace TarvoInterface
