// Public queries of the assembly tree that a STEP or IGES import fills. Node ids are the
// kernel's assembly ids, 1-based in import order. Volumes that left the model (deleted, united
// away) are dropped from the answers.
#include "geometry/GeometryModule.h"
#include "tarvo/TarvoInterface.h"

#include <algorithm>

using tarvo::kernel::AssemblyNode;
using tarvo::kernel::GeomKind;

namespace {

const std::vector<AssemblyNode>* tree() {
    auto* m = tarvo::kernel::geometry_module();
    return m ? &m->model().state().assembly : nullptr;
}

const AssemblyNode* node(int id) {
    const auto* t = tree();
    if (!t)
        return nullptr;
    for (const AssemblyNode& n : *t)
        if (n.id == id)
            return &n;
    return nullptr;
}

TarvoInterface::AssemblyItem item_of(const AssemblyNode& n) {
    TarvoInterface::AssemblyItem item;
    item.name = n.name;
    item.type = n.type;
    item.level = n.level;
    item.instance = n.instance;
    item.path = n.path;
    item.id = n.id;
    const auto& model = tarvo::kernel::geometry_module()->model();
    for (int v : n.volume_ids)
        if (model.exists(GeomKind::Volume, v))
            item.volume_ids.push_back(v);
    return item;
}

// The part node that holds a volume.
const AssemblyNode* node_of_volume(int volume_id) {
    const auto* t = tree();
    if (!t)
        return nullptr;
    for (const AssemblyNode& n : *t)
        if (std::count(n.volume_ids.begin(), n.volume_ids.end(), volume_id))
            return &n;
    return nullptr;
}

} // namespace

namespace TarvoInterface {

std::string get_assembly_classification_level() {
    return {};
}
std::string get_assembly_classification_category() {
    return {};
}
std::string get_assembly_weapons_category() {
    return {};
}

std::string get_assembly_metadata(int volume_id, int data_type) {
    const AssemblyNode* n = node_of_volume(volume_id);
    if (!n)
        return {};
    switch (data_type) {
    case 0:
        return n->name;
    case 1:
        return n->path;
    case 2:
        return n->type;
    case 3:
        return n->description;
    default:
        return {};
    }
}

bool is_assembly_metadata_attached(int volume_id) {
    return node_of_volume(volume_id) != nullptr;
}

std::string get_assembly_name(int assembly_id) {
    const AssemblyNode* n = node(assembly_id);
    return n ? n->name : std::string();
}

std::string get_assembly_path(int assembly_id) {
    const AssemblyNode* n = node(assembly_id);
    return n ? n->path : std::string();
}

std::string get_assembly_type(int assembly_id) {
    const AssemblyNode* n = node(assembly_id);
    return n ? n->type : std::string();
}

std::string get_parent_assembly_path(int assembly_id) {
    const AssemblyNode* n = node(assembly_id);
    const AssemblyNode* p = n ? node(n->parent_id) : nullptr;
    return p ? p->path : std::string();
}

int get_assembly_level(int assembly_id) {
    const AssemblyNode* n = node(assembly_id);
    return n ? n->level : -1;
}

std::string get_assembly_description(int assembly_id) {
    const AssemblyNode* n = node(assembly_id);
    return n ? n->description : std::string();
}

int get_assembly_instance(int assembly_id) {
    const AssemblyNode* n = node(assembly_id);
    return n ? n->instance : -1;
}

int get_parent_assembly_instance(int assembly_id) {
    const AssemblyNode* n = node(assembly_id);
    const AssemblyNode* p = n ? node(n->parent_id) : nullptr;
    return p ? p->instance : 0;
}

std::string get_assembly_file_format(int assembly_id) {
    const AssemblyNode* n = node(assembly_id);
    return n ? n->file_format : std::string();
}

std::string get_assembly_units(int assembly_id) {
    const AssemblyNode* n = node(assembly_id);
    return n ? n->units : std::string();
}

std::string get_assembly_material_description(int) {
    return {};
}
std::string get_assembly_material_specification(int) {
    return {};
}

std::vector<AssemblyItem> get_assembly_items() {
    std::vector<AssemblyItem> out;
    if (const auto* t = tree())
        for (const AssemblyNode& n : *t)
            out.push_back(item_of(n));
    return out;
}

std::vector<AssemblyItem> get_top_level_assembly_items() {
    std::vector<AssemblyItem> out;
    if (const auto* t = tree())
        for (const AssemblyNode& n : *t)
            if (n.parent_id == 0)
                out.push_back(item_of(n));
    return out;
}

std::vector<AssemblyItem> get_assembly_children(int assembly_id) {
    std::vector<AssemblyItem> out;
    if (const auto* t = tree())
        for (const AssemblyNode& n : *t)
            if (n.parent_id == assembly_id && assembly_id != 0)
                out.push_back(item_of(n));
    return out;
}

std::vector<int> get_volumes_for_node(const std::string& node_name, int node_instance) {
    std::vector<int> out;
    const auto* t = tree();
    if (!t)
        return out;
    // The node and everything below it.
    for (const AssemblyNode& n : *t) {
        if (n.name != node_name || n.instance != node_instance)
            continue;
        const std::string prefix = n.path + "/";
        for (const AssemblyNode& m : *t)
            if (m.id == n.id || m.path.compare(0, prefix.size(), prefix) == 0)
                for (int v : item_of(m).volume_ids)
                    out.push_back(v);
    }
    std::sort(out.begin(), out.end());
    out.erase(std::unique(out.begin(), out.end()), out.end());
    return out;
}

} // namespace TarvoInterface
