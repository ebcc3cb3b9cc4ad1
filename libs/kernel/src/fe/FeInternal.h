#pragma once
// Helpers the fe module's files share: the live geometry and mesh it reads, the event it emits for
// a changed container, and how a member or a mesh piece is read. Kernel thread only, like the
// module.

#include "core/Session.h"
#include "fe/FeModule.h"
#include "geometry/GeometryModule.h"
#include "mesh/MeshModule.h"
#include "tarvo/TIObserve.h"

#include <string>
#include <vector>

namespace tarvo::kernel::fe::internal {

inline GeometryModel& model() {
    return geometry_module()->model();
}

inline const mesh::MeshState& mesh_state() {
    return mesh::mesh_module()->state();
}

// genesis_entity_modified for a block, nodeset or sideset: "created", "modified" or "deleted".
inline void emit_modified(const std::string& type, int id, const std::string& action) {
    events().emit(&TarvoInterface::TIObserve::notify_genesis_entity_modified, type, id, action);
}

// Ids of the elements of `kind` that a piece owns.
inline void append_ids(const mesh::MeshPiece& piece, ElemKind kind, std::vector<int>& out) {
    for (const auto& b : piece.blocks)
        if (b.kind == kind)
            for (int i = 0; i < b.count(); ++i)
                out.push_back(b.first_id + i);
}

inline int member_dim(const Member& m) {
    return m.type == Member::Type::Element ? mesh::info(m.kind).dim : m.dim;
}

} // namespace tarvo::kernel::fe::internal
