#include "mesh/MeshModule.h"

#include "core/Session.h"
#include "geometry/GeometryModule.h"
#include "mesh/Sizing.h"
#include "tarvo/TIObserve.h"

#include <algorithm>
#include <set>

namespace tarvo::kernel::mesh {

namespace {

std::unique_ptr<MeshModule> g_module;

struct MeshSnapshot : UndoSnapshot {
    MeshState state;
    std::map<Owner, TopoDS_Shape> shapes;
};

GeometryModel& model() {
    return geometry_module()->model();
}

// The geometry changes inside commands; the pieces it invalidated go when the command ends.
class StaleWatcher : public TarvoInterface::TIObserve {
public:
    void notify_command_complete() override {
        if (!g_module)
            return;
        g_module->drop_stale();
        g_module->after_command();
    }
};
std::unique_ptr<StaleWatcher> g_watcher;

constexpr std::string_view kNodeWord = "node";

std::optional<ElemKind> kind_of_word(std::string_view type) {
    return elem_kind_from_word(type);
}

} // namespace

MeshModule* mesh_module() {
    return g_module.get();
}

GeomKind kind_of_dim(int dim) {
    static const GeomKind kinds[] = {GeomKind::Vertex, GeomKind::Curve, GeomKind::Surface,
                                     GeomKind::Volume};
    return kinds[std::clamp(dim, 0, 3)];
}

int dim_of_kind(GeomKind kind) {
    switch (kind) {
    case GeomKind::Vertex:
        return 0;
    case GeomKind::Curve:
        return 1;
    case GeomKind::Surface:
        return 2;
    case GeomKind::Volume:
        return 3;
    default:
        return -1;
    }
}

std::vector<int> MeshModule::boundary(int dim, int id) const {
    if (dim <= 0)
        return {};
    return model().relatives(kind_of_dim(dim), id, kind_of_dim(dim - 1));
}

std::vector<int> MeshModule::cobounds(int dim, int id) const {
    if (dim >= 3)
        return {};
    return model().relatives(kind_of_dim(dim), id, kind_of_dim(dim + 1));
}

std::vector<const MeshPiece*> MeshModule::closure(Owner owner) const {
    std::vector<const MeshPiece*> out;
    std::set<Owner> seen{owner};
    std::vector<Owner> todo{owner};
    while (!todo.empty()) {
        const Owner o = todo.back();
        todo.pop_back();
        if (const MeshPiece* p = state_.piece(o))
            out.push_back(p);
        for (int b : boundary(o.dim, o.id))
            if (seen.insert({o.dim - 1, b}).second)
                todo.push_back({o.dim - 1, b});
    }
    return out;
}

int MeshModule::drop_stale() {
    if (state_.pieces().empty())
        return 0;
    int dropped = 0;
    // Ids renumbered by `compress ids` keep their shapes: follow them before judging.
    std::map<Owner, TopoDS_Shape> moved;
    for (const auto& [owner, shape] : shapes_) {
        const GeomKind kind = kind_of_dim(owner.dim);
        const bool same =
            model().exists(kind, owner.id) && model().shape(kind, owner.id).IsSame(shape);
        if (same)
            continue;
        for (int id : model().ids(kind)) {
            if (!state_.meshed({owner.dim, id}) && model().shape(kind, id).IsSame(shape)) {
                moved[{owner.dim, id}] = shape;
                break;
            }
        }
    }
    for (const auto& [to, shape] : moved) {
        for (auto it = shapes_.begin(); it != shapes_.end(); ++it) {
            if (!it->second.IsSame(shape) || it->first == to)
                continue;
            auto piece = std::make_shared<MeshPiece>(*state_.piece(it->first));
            state_.remove(it->first);
            shapes_.erase(it);
            piece->owner = to;
            state_.put(std::move(piece));
            shapes_[to] = shape;
            break;
        }
    }
    // Lower dimensions first, so that a piece whose boundary went goes with it.
    for (int dim = 0; dim <= 3; ++dim) {
        std::vector<Owner> gone;
        for (const auto& [owner, piece] : state_.pieces()) {
            if (owner.dim != dim)
                continue;
            const GeomKind kind = kind_of_dim(dim);
            bool stale = !model().exists(kind, owner.id) ||
                         !model().shape(kind, owner.id).IsSame(shapes_[owner]);
            for (int b : stale ? std::vector<int>{} : boundary(dim, owner.id))
                stale = stale || !state_.meshed({dim - 1, b});
            if (stale)
                gone.push_back(owner);
        }
        for (const Owner& o : gone) {
            state_.remove(o);
            shapes_.erase(o);
            ++dropped;
        }
    }
    if (dropped > 0)
        print("Mesh of " + std::to_string(dropped) + " entities removed: their geometry changed");
    return dropped;
}

const MeshPiece& MeshModule::publish(Owner owner, NewMesh mesh, const std::string& scheme) {
    auto piece = std::make_shared<MeshPiece>();
    piece->owner = owner;
    piece->scheme = scheme;
    const int count = static_cast<int>(mesh.nodes.size());
    piece->first_node = count > 0 ? state_.reserve_nodes(count) : 0;
    piece->nodes = std::move(mesh.nodes);
    piece->params = std::move(mesh.params);
    for (NewMesh::Block& b : mesh.blocks) {
        ElemBlock block;
        block.kind = b.kind;
        for (int& n : b.conn)
            if (n <= 0)
                n = piece->first_node - n;
        block.conn = std::move(b.conn);
        if (block.count() == 0)
            continue;
        block.first_id = state_.reserve_elements(block.kind, block.count());
        piece->blocks.push_back(std::move(block));
    }
    shapes_[owner] = model().shape(kind_of_dim(owner.dim), owner.id);
    state_.put(piece);
    return *piece;
}

bool MeshModule::delete_mesh(const std::vector<EntityKey>& list, bool propagate) {
    std::set<Owner> targets;
    for (const EntityKey& key : list) {
        if (key.kind == GeomKind::Body) {
            for (int v : model().relatives(GeomKind::Body, key.id, GeomKind::Volume))
                targets.insert({3, v});
        } else {
            targets.insert({dim_of_kind(key.kind), key.id});
        }
    }
    // Everything built on a target goes with it.
    std::set<Owner> doomed;
    std::vector<Owner> todo(targets.begin(), targets.end());
    while (!todo.empty()) {
        const Owner o = todo.back();
        todo.pop_back();
        if (!doomed.insert(o).second)
            continue;
        for (int up : cobounds(o.dim, o.id))
            if (state_.meshed({o.dim + 1, up}))
                todo.push_back({o.dim + 1, up});
    }
    if (propagate) {
        // Boundaries of what goes, top down, unless a mesh that stays still uses them.
        for (int dim = 3; dim >= 1; --dim) {
            std::vector<Owner> level;
            for (const Owner& o : doomed)
                if (o.dim == dim)
                    level.push_back(o);
            for (const Owner& o : level)
                for (int b : boundary(o.dim, o.id)) {
                    const Owner low{o.dim - 1, b};
                    bool used = false;
                    for (int up : cobounds(low.dim, low.id))
                        used = used || (state_.meshed({low.dim + 1, up}) &&
                                        !doomed.count({low.dim + 1, up}));
                    if (!used)
                        doomed.insert(low);
                }
        }
    }
    int count = 0;
    for (const Owner& o : doomed) {
        if (state_.remove(o))
            ++count;
        shapes_.erase(o);
    }
    print("Deleted the mesh of " + std::to_string(count) + (count == 1 ? " entity" : " entities"));
    return true;
}

void MeshModule::add_mesh_error(const std::string& type, int id, const std::string& text) {
    auto record = std::make_unique<TarvoInterface::MeshErrorFeedback>();
    record->entity_type = type;
    record->entity_id = id;
    // 1: the entity could not be meshed; 2: meshing was interrupted at it.
    record->error_code = text.starts_with("Interrupted") ? 2 : 1;
    record->error_text = text;
    errors_.push_back(std::move(record));
}

std::vector<TarvoInterface::MeshErrorFeedback*> MeshModule::mesh_errors() {
    std::vector<TarvoInterface::MeshErrorFeedback*> out;
    for (const auto& e : errors_)
        out.push_back(e.get());
    return out;
}

// ---- EntityCatalog ------------------------------------------------------------------------------

bool MeshModule::handles(std::string_view type) const {
    return type == kNodeWord || kind_of_word(type).has_value();
}

std::vector<int> MeshModule::all_ids(std::string_view type) const {
    if (type == kNodeWord)
        return state_.node_ids();
    if (auto k = kind_of_word(type))
        return state_.element_ids(*k);
    return {};
}

bool MeshModule::exists(std::string_view type, int id) const {
    if (type == kNodeWord)
        return state_.find_node(id).has_value();
    if (auto k = kind_of_word(type))
        return state_.find_element(*k, id).has_value();
    return false;
}

std::vector<int> MeshModule::relatives(std::string_view source_type, int id,
                                       std::string_view target_type) const {
    std::vector<int> out;
    const auto source_geom = parse_kind(source_type);
    const bool target_mesh = handles(target_type);
    if (source_geom && target_mesh) {
        // Mesh entities in a geometry entity: those of its own piece and of its boundary.
        std::vector<Owner> owners;
        if (*source_geom == GeomKind::Body) {
            for (int v : model().relatives(GeomKind::Body, id, GeomKind::Volume))
                owners.push_back({3, v});
        } else {
            owners.push_back({dim_of_kind(*source_geom), id});
        }
        for (const Owner& owner : owners)
            for (const MeshPiece* p : closure(owner)) {
                if (target_type == kNodeWord) {
                    for (int i = 0; i < p->node_count(); ++i)
                        out.push_back(p->first_node + i);
                    if (const MeshPiece* mids = state_.mid_piece(p->owner))
                        for (int i = 0; i < mids->node_count(); ++i)
                            out.push_back(mids->first_node + i);
                    continue;
                }
                for (const ElemBlock& b : p->blocks)
                    if (info(b.kind).word == target_type)
                        for (int i = 0; i < b.count(); ++i)
                            out.push_back(b.first_id + i);
            }
    } else if (handles(source_type)) {
        if (source_type == kNodeWord) {
            const auto ref = state_.find_node(id);
            if (ref && parse_kind(target_type)) {
                const Owner o = ref->piece->owner;
                if (kind_name(kind_of_dim(o.dim)) == target_type)
                    out.push_back(o.id);
            }
        } else if (auto k = kind_of_word(source_type)) {
            const auto ref = state_.find_element(*k, id);
            if (ref && target_type == kNodeWord) {
                out.assign(ref->nodes(), ref->nodes() + info(*k).nodes);
            } else if (ref && parse_kind(target_type)) {
                const Owner o = ref->piece->owner;
                if (kind_name(kind_of_dim(o.dim)) == target_type)
                    out.push_back(o.id);
            }
        }
    }
    std::sort(out.begin(), out.end());
    out.erase(std::unique(out.begin(), out.end()), out.end());
    return out;
}

// ---- UndoParticipant ----------------------------------------------------------------------------

std::unique_ptr<UndoSnapshot> MeshModule::save_state() {
    auto s = std::make_unique<MeshSnapshot>();
    s->state = state_;
    s->shapes = shapes_;
    return s;
}

void MeshModule::restore_state(const UndoSnapshot& snapshot) {
    const auto& s = static_cast<const MeshSnapshot&>(snapshot);
    state_ = s.state;
    shapes_ = s.shapes;
}

void MeshModule::clear_state() {
    errors_.clear();
    state_.clear();
    shapes_.clear();
    const std::uint64_t stamp = drawn_quality_.stamp + 1;
    drawn_quality_ = DrawnQuality{};
    drawn_quality_.stamp = stamp;
}

} // namespace tarvo::kernel::mesh

namespace tarvo::kernel {

void init_mesh_module() {
    using namespace mesh;
    if (g_module)
        return;
    g_module = std::make_unique<MeshModule>();
    add_entity_catalog(g_module.get());
    add_undo_participant(g_module.get());
    g_watcher = std::make_unique<StaleWatcher>();
    g_watcher->register_observer();
    init_sizing();
    register_mesh_commands();
    register_mesh_file_sections();
}

void shutdown_mesh_module() {
    using namespace mesh;
    if (!g_module)
        return;
    shutdown_sizing();
    g_watcher.reset();
    remove_undo_participant(g_module.get());
    remove_entity_catalog(g_module.get());
    g_module.reset();
}

} // namespace tarvo::kernel
