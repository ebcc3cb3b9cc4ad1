#pragma once
// The kernel's mesh: nodes and elements, each owned by one geometry entity, stored in immutable
// pieces per owner so that a snapshot (undo, rollback) copies maps and never elements.
//
// Contract
// - A MeshPiece holds what one entity (vertex, curve, surface, volume) contributes: the nodes
//   that lie inside it and not on its boundary, and its elements (a curve's edges, a surface's
//   tris and quads, a volume's tets, hexes, wedges and pyramids). Elements refer to nodes of any
//   piece by id: a volume's tets use the nodes of its surfaces, curves and vertices, which is what
//   makes neighbouring meshes conform.
// - Ids: nodes and each element kind have their own sequence, a new id is the highest ever + 1.
//   A piece gets one contiguous range per sequence, so finding the piece of an id is a search in
//   a small index (one entry per piece), not in a table of every id.
// - Connectivity is in the Exodus node order.
// - A piece is published once and never changed; replacing or removing a piece changes only the
//   maps of MeshState.
// - Mid-nodes of higher-order elements live in a second, separate piece per owner (mid piece):
//   the nodes at the middle of edges, faces or elements that lie in the owner and not on its
//   boundary, each with the corners it is the middle of (its MidKey). They share the node id
//   sequence and every node query, but no element refers to them: an element's higher-order
//   connectivity is looked up by key (MidIndex), so replacing a mesh piece drops its owner's mid
//   piece and nothing else.
//
// Threading: kernel thread only.

#include "mesh/MeshTypes.h"

#include <array>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace tarvo::kernel::mesh {

// A geometry entity that owns mesh: dim 0 vertex, 1 curve, 2 surface, 3 volume.
struct Owner {
    int dim = 0;
    int id = 0;
    auto operator<=>(const Owner&) const = default;
};

const char* owner_word(int dim); // "vertex", "curve", "surface", "volume"

// The corners a mid-node is the middle of, ascending, unused slots 0: two for an edge, three or
// four for a face, all of an element's for its centre.
using MidKey = std::array<int, 8>;
// The key of the corners `local` (indices into `corners`).
MidKey mid_key(const int* corners, const std::vector<int>& local);

struct ElemBlock {
    ElemKind kind = ElemKind::Tet;
    int first_id = 0;      // ids first_id .. first_id + count() - 1
    std::vector<int> conn; // info(kind).nodes node ids per element
    int count() const { return static_cast<int>(conn.size()) / info(kind).nodes; }
};

struct MeshPiece {
    Owner owner;
    int first_node = 0;         // node ids first_node .. first_node + nodes.size() - 1
    std::vector<Point3> nodes;  // the nodes inside the owner, not on its boundary
    std::vector<double> params; // curves: the curve parameter of each node (Gmsh needs them)
    std::vector<ElemBlock> blocks;
    std::string scheme;           // how it was meshed ("map", "tetmesh", ...), for messages
    std::vector<MidKey> mid_keys; // mid pieces only: the key of each node, ascending
    int node_count() const { return static_cast<int>(nodes.size()); }
    int element_count() const;
    int count(ElemKind kind) const;
};

using PiecePtr = std::shared_ptr<const MeshPiece>;

// Where an id lives: the piece and the index inside it.
struct NodeRef {
    const MeshPiece* piece = nullptr;
    int index = 0;
};
struct ElemRef {
    const MeshPiece* piece = nullptr;
    const ElemBlock* block = nullptr;
    int index = 0;
    const int* nodes() const { return block->conn.data() + index * info(block->kind).nodes; }
};

class MeshState;

// Positions of many nodes, fast when consecutive ids fall in the same piece (an element's
// corners mostly do): it remembers the last piece it found. Valid while the state is unchanged.
class NodeLookup {
public:
    explicit NodeLookup(const MeshState& state) : state(state) {}
    const Point3* operator()(int id);

private:
    const MeshState& state;
    const MeshPiece* last = nullptr;
};

// The whole mesh of the model: a value type; copying it is the undo snapshot.
class MeshState {
public:
    const std::map<Owner, PiecePtr>& pieces() const { return pieces_; }
    const MeshPiece* piece(Owner owner) const;
    bool meshed(Owner owner) const { return pieces_.count(owner) != 0; }

    // Publishes a piece built by the caller with ids from reserve_*(); replaces any earlier piece
    // of the same owner.
    void put(PiecePtr piece);
    // Removes the owner's piece (and its mid piece); true if there was one.
    bool remove(Owner owner);
    // Mid pieces: put replaces the owner's (its nodes reserved with reserve_nodes()).
    const std::map<Owner, PiecePtr>& mid_pieces() const { return mids_; }
    const MeshPiece* mid_piece(Owner owner) const;
    void put_mids(PiecePtr piece);
    bool remove_mids(Owner owner);
    void clear();

    // Id ranges for a piece under construction.
    int reserve_nodes(int count);
    // The id the next reserved node will get: no node has it or a higher one.
    int next_node_id() const { return next_node_; }
    int next_element_id(ElemKind kind) const { return next_elem_[static_cast<int>(kind)]; }
    int reserve_elements(ElemKind kind, int count);

    std::optional<NodeRef> find_node(int id) const;
    std::optional<ElemRef> find_element(ElemKind kind, int id) const;
    std::optional<Point3> node_position(int id) const;

    int node_count() const { return node_total_; }
    int element_count(ElemKind kind) const { return elem_total_[static_cast<int>(kind)]; }
    // Ids of all nodes / elements of a kind, ascending.
    std::vector<int> node_ids() const;
    std::vector<int> element_ids(ElemKind kind) const;

private:
    void index(const MeshPiece& piece, int sign);

    std::map<Owner, PiecePtr> pieces_;
    void index_nodes(const MeshPiece& piece, int sign);

    std::map<Owner, PiecePtr> mids_;
    // First node id of each piece with nodes (mid pieces too) -> the piece, kept alive by the
    // maps above (a copy of the state shares them, so the pointers stay valid in it).
    std::map<int, const MeshPiece*> node_index_;
    std::array<std::map<int, Owner>, kElemKindCount> elem_index_;
    int next_node_ = 1;
    std::array<int, kElemKindCount> next_elem_{1, 1, 1, 1, 1, 1, 1, 1};
    int node_total_ = 0;
    std::array<int, kElemKindCount> elem_total_{};
};

// Mid-node ids by key over every mid piece of a state; valid while the state is unchanged.
class MidIndex {
public:
    explicit MidIndex(const MeshState& state);
    int operator()(const MidKey& key) const; // 0: none

private:
    struct Hash {
        size_t operator()(const MidKey& k) const;
    };
    std::unordered_map<MidKey, int, Hash> ids_;
};

} // namespace tarvo::kernel::mesh
