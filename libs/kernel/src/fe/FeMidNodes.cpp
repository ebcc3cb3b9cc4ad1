// Higher-order blocks and their mid-nodes. The mesh keeps mid-nodes in mid pieces of its own
// (MeshDatabase.h); which ones exist follows from the blocks' element types, so this module
// plans them from the blocks after every command and the mesh module makes, keeps or drops
// them. A type set back to linear, a block deleted or a mesh replaced thus leaves no mid-node
// behind, and undo needs nothing more than the two modules' snapshots.

#include "fe/FeModule.h"

#include "core/Session.h"
#include "mesh/MeshModule.h"

namespace tarvo::kernel::fe {

void FeModule::sync_mid_nodes() {
    mesh::MeshModule* m = mesh::mesh_module();
    if (!m)
        return;
    const mesh::MeshState& s = m->state();
    MidPlanInputs inputs;
    for (const auto& [id, block] : state_.blocks)
        if (const ElementType* type = find_element_type(block->element_type);
            type && !type->mids.empty())
            inputs.blocks.emplace(id, block);
    if (inputs.blocks.empty() && s.mid_pieces().empty()) {
        planned_.reset();
        return;
    }
    inputs.pieces = s.pieces();
    inputs.mids = s.mid_pieces();
    if (planned_ == inputs)
        return;
    std::map<mesh::Owner, std::vector<mesh::MidKey>> wanted;
    for (const auto& [id, block] : inputs.blocks) {
        const ElementType* type = find_element_type(block->element_type);
        const auto elems = elements(*block);
        const auto it = elems.find(type->kind);
        if (it == elems.end())
            continue;
        for (int e : it->second) {
            const auto ref = s.find_element(type->kind, e);
            auto& keys = wanted[ref->piece->owner];
            for (const auto& local : type->mids)
                keys.push_back(mesh::mid_key(ref->nodes(), local));
        }
    }
    m->sync_mid_nodes(wanted);
    inputs.mids = s.mid_pieces();
    planned_ = std::move(inputs);
}

std::vector<int> FeModule::expanded_nodes(const ElementType& type, const int* corners,
                                          const mesh::MidIndex& mids) {
    const int n = mesh::info(type.kind).nodes;
    std::vector<int> out(corners, corners + n);
    for (const auto& local : type.mids) {
        const int id = mids(mesh::mid_key(corners, local));
        if (id == 0)
            return {};
        out.push_back(id);
    }
    return out;
}

} // namespace tarvo::kernel::fe
