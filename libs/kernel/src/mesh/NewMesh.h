#pragma once
// A mesh built for one entity before it gets ids: what every mesher (Gmsh, the mapper, the
// sweeper) hands to MeshModule::publish(). Connectivity entries > 0 are ids of nodes that exist
// already (on the entity's boundary); entries <= 0 name new node -entry, i.e. nodes[-entry].
//
// Threading: kernel thread only.

#include "mesh/MeshTypes.h"

#include <vector>

namespace tarvo::kernel::mesh {

struct NewMesh {
    std::vector<Point3> nodes;  // new nodes inside the entity
    std::vector<double> params; // curves only: parameter of each new node on the curve
    struct Block {
        ElemKind kind;
        std::vector<int> conn; // info(kind).nodes entries per element, Exodus order
    };
    std::vector<Block> blocks;

    // Index of a new node as a connectivity entry.
    static int local(int index) { return -index; }
    Block& block(ElemKind kind) {
        for (Block& b : blocks)
            if (b.kind == kind)
                return b;
        blocks.push_back({kind, {}});
        return blocks.back();
    }
};

} // namespace tarvo::kernel::mesh
