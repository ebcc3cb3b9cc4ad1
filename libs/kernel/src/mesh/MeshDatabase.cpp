#include "mesh/MeshDatabase.h"

#include <algorithm>

namespace tarvo::kernel::mesh {

const char* owner_word(int dim) {
    static const char* const words[] = {"vertex", "curve", "surface", "volume"};
    return dim >= 0 && dim <= 3 ? words[dim] : "";
}

int MeshPiece::element_count() const {
    int n = 0;
    for (const ElemBlock& b : blocks)
        n += b.count();
    return n;
}

int MeshPiece::count(ElemKind kind) const {
    int n = 0;
    for (const ElemBlock& b : blocks)
        if (b.kind == kind)
            n += b.count();
    return n;
}

const MeshPiece* MeshState::piece(Owner owner) const {
    const auto it = pieces_.find(owner);
    return it == pieces_.end() ? nullptr : it->second.get();
}

MidKey mid_key(const int* corners, const std::vector<int>& local) {
    MidKey key{};
    const int n = static_cast<int>(local.size());
    for (int i = 0; i < n; ++i)
        key[i] = corners[local[i]];
    // Insertion sort: at most eight corners (std::sort over a run of unknown length trips
    // GCC's array-bounds analysis).
    for (int i = 1; i < n; ++i)
        for (int j = i; j > 0 && key[j - 1] > key[j]; --j)
            std::swap(key[j - 1], key[j]);
    return key;
}

void MeshState::index_nodes(const MeshPiece& piece, int sign) {
    if (piece.nodes.empty())
        return;
    if (sign > 0)
        node_index_[piece.first_node] = &piece;
    else
        node_index_.erase(piece.first_node);
    node_total_ += sign * piece.node_count();
}

void MeshState::index(const MeshPiece& piece, int sign) {
    index_nodes(piece, sign);
    for (const ElemBlock& b : piece.blocks) {
        if (b.count() == 0)
            continue;
        const int k = static_cast<int>(b.kind);
        if (sign > 0)
            elem_index_[k][b.first_id] = piece.owner;
        else
            elem_index_[k].erase(b.first_id);
        elem_total_[k] += sign * b.count();
    }
}

void MeshState::put(PiecePtr piece) {
    remove(piece->owner);
    index(*piece, +1);
    pieces_[piece->owner] = std::move(piece);
}

bool MeshState::remove(Owner owner) {
    remove_mids(owner);
    const auto it = pieces_.find(owner);
    if (it == pieces_.end())
        return false;
    index(*it->second, -1);
    pieces_.erase(it);
    return true;
}

const MeshPiece* MeshState::mid_piece(Owner owner) const {
    const auto it = mids_.find(owner);
    return it == mids_.end() ? nullptr : it->second.get();
}

void MeshState::put_mids(PiecePtr piece) {
    remove_mids(piece->owner);
    index_nodes(*piece, +1);
    mids_[piece->owner] = std::move(piece);
}

bool MeshState::remove_mids(Owner owner) {
    const auto it = mids_.find(owner);
    if (it == mids_.end())
        return false;
    index_nodes(*it->second, -1);
    mids_.erase(it);
    return true;
}

void MeshState::clear() {
    *this = MeshState();
}

int MeshState::reserve_nodes(int count) {
    const int first = next_node_;
    next_node_ += count;
    return first;
}

int MeshState::reserve_elements(ElemKind kind, int count) {
    const int k = static_cast<int>(kind);
    const int first = next_elem_[k];
    next_elem_[k] += count;
    return first;
}

std::optional<NodeRef> MeshState::find_node(int id) const {
    auto it = node_index_.upper_bound(id);
    if (it == node_index_.begin())
        return std::nullopt;
    --it;
    const MeshPiece* p = it->second;
    const int index = id - p->first_node;
    if (index < 0 || index >= p->node_count())
        return std::nullopt;
    return NodeRef{p, index};
}

std::optional<ElemRef> MeshState::find_element(ElemKind kind, int id) const {
    const auto& idx = elem_index_[static_cast<int>(kind)];
    auto it = idx.upper_bound(id);
    if (it == idx.begin())
        return std::nullopt;
    --it;
    const MeshPiece* p = piece(it->second);
    for (const ElemBlock& b : p->blocks) {
        if (b.kind != kind)
            continue;
        const int index = id - b.first_id;
        if (index >= 0 && index < b.count())
            return ElemRef{p, &b, index};
    }
    return std::nullopt;
}

std::optional<Point3> MeshState::node_position(int id) const {
    const auto ref = find_node(id);
    if (!ref)
        return std::nullopt;
    return ref->piece->nodes[ref->index];
}

const Point3* NodeLookup::operator()(int id) {
    if (!last || id < last->first_node || id >= last->first_node + last->node_count()) {
        const auto ref = state.find_node(id);
        if (!ref)
            return nullptr;
        last = ref->piece;
    }
    return &last->nodes[id - last->first_node];
}

std::vector<int> MeshState::node_ids() const {
    std::vector<int> ids;
    ids.reserve(node_total_);
    for (const auto& [first, piece] : node_index_) {
        const int n = piece->node_count();
        for (int i = 0; i < n; ++i)
            ids.push_back(first + i);
    }
    return ids;
}

std::vector<int> MeshState::element_ids(ElemKind kind) const {
    std::vector<int> ids;
    ids.reserve(elem_total_[static_cast<int>(kind)]);
    for (const auto& [first, owner] : elem_index_[static_cast<int>(kind)]) {
        for (const ElemBlock& b : piece(owner)->blocks)
            if (b.kind == kind && b.first_id == first)
                for (int i = 0; i < b.count(); ++i)
                    ids.push_back(first + i);
    }
    return ids;
}

MidIndex::MidIndex(const MeshState& state) {
    for (const auto& [owner, piece] : state.mid_pieces())
        for (int i = 0; i < piece->node_count(); ++i)
            ids_.emplace(piece->mid_keys[i], piece->first_node + i);
}

int MidIndex::operator()(const MidKey& key) const {
    const auto it = ids_.find(key);
    return it == ids_.end() ? 0 : it->second;
}

size_t MidIndex::Hash::operator()(const MidKey& k) const {
    size_t h = 0;
    for (int v : k)
        h = h * 1000003u ^ static_cast<size_t>(v);
    return h;
}

} // namespace tarvo::kernel::mesh
