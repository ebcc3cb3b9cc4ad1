#include "fe/FeModule.h"
#include "fe/FeInternal.h"

#include "core/EntityList.h"
#include "core/Session.h"
#include "core/Valfold.h"
#include "geometry/GeometryModule.h"
#include "mesh/MeshModule.h"
#include "tarvo/TIObserve.h"
#include "tarvo/TarvoInterface.h"

#include <algorithm>
#include <array>
#include <set>

namespace tarvo::kernel::fe {

using namespace internal;

namespace {

std::unique_ptr<FeModule> g_module;

struct FeSnapshot : UndoSnapshot {
    FeState state;
};

const char* const kDimWords[] = {"vertex", "curve", "surface", "volume"};

std::string dim_name(int dim) {
    static const char* const names[] = {"0D", "1D (curves, edges)", "2D (surfaces, faces)",
                                        "3D (volumes, solid elements)"};
    return dim < 0 || dim > 3 ? "empty" : names[dim];
}

template <class Map> std::vector<int> keys_of(const Map& map) {
    std::vector<int> out;
    for (const auto& [id, piece] : map)
        out.push_back(id);
    return out;
}

bool valid_id(const char* type, int id) {
    if (id > 0)
        return true;
    return error(std::string(type) + " ids are positive; " + std::to_string(id) + " is not");
}

} // namespace

FeModule* fe_module() {
    return g_module.get();
}

// ---- Element types
// -------------------------------------------------------------------------------

const std::vector<ElementType>& element_types() {
    // Mid-nodes of each edge, face and centre, in the Exodus order of each type.
    using Mids = std::vector<std::vector<int>>;
    const Mids hex20{{0, 1}, {1, 2}, {2, 3}, {3, 0}, {0, 4}, {1, 5},
                     {2, 6}, {3, 7}, {4, 5}, {5, 6}, {6, 7}, {7, 4}};
    Mids hex27 = hex20;
    hex27.insert(hex27.end(), {{0, 1, 2, 3, 4, 5, 6, 7},
                               {0, 3, 2, 1},
                               {4, 5, 6, 7},
                               {0, 4, 7, 3},
                               {1, 2, 6, 5},
                               {0, 1, 5, 4},
                               {2, 3, 7, 6}});
    const Mids tet10{{0, 1}, {1, 2}, {2, 0}, {0, 3}, {1, 3}, {2, 3}};
    const Mids wedge15{{0, 1}, {1, 2}, {2, 0}, {0, 3}, {1, 4}, {2, 5}, {3, 4}, {4, 5}, {5, 3}};
    const Mids pyramid13{{0, 1}, {1, 2}, {2, 3}, {3, 0}, {0, 4}, {1, 4}, {2, 4}, {3, 4}};
    const Mids quad8{{0, 1}, {1, 2}, {2, 3}, {3, 0}};
    Mids quad9 = quad8;
    quad9.push_back({0, 1, 2, 3});
    const Mids tri6{{0, 1}, {1, 2}, {2, 0}};
    static const std::vector<ElementType> table{
        {"HEX8", 3, ElemKind::Hex, 8, {}},
        {"HEX20", 3, ElemKind::Hex, 20, hex20},
        {"HEX27", 3, ElemKind::Hex, 27, hex27},
        {"TET4", 3, ElemKind::Tet, 4, {}},
        {"TET10", 3, ElemKind::Tet, 10, tet10},
        {"WEDGE6", 3, ElemKind::Wedge, 6, {}},
        {"WEDGE15", 3, ElemKind::Wedge, 15, wedge15},
        {"PYRAMID5", 3, ElemKind::Pyramid, 5, {}},
        {"PYRAMID13", 3, ElemKind::Pyramid, 13, pyramid13},
        {"QUAD4", 2, ElemKind::Quad, 4, {}},
        {"QUAD8", 2, ElemKind::Quad, 8, quad8},
        {"QUAD9", 2, ElemKind::Quad, 9, quad9},
        {"SHELL4", 2, ElemKind::Quad, 4, {}},
        {"SHELL8", 2, ElemKind::Quad, 8, quad8},
        {"SHELL9", 2, ElemKind::Quad, 9, quad9},
        {"TRI3", 2, ElemKind::Tri, 3, {}},
        {"TRI6", 2, ElemKind::Tri, 6, tri6},
        {"TRISHELL3", 2, ElemKind::Tri, 3, {}},
        {"TRISHELL6", 2, ElemKind::Tri, 6, tri6},
        {"BAR2", 1, ElemKind::Edge, 2, {}},
        {"BAR3", 1, ElemKind::Edge, 3, {{0, 1}}},
        {"BEAM2", 1, ElemKind::Edge, 2, {}},
        {"BEAM3", 1, ElemKind::Edge, 3, {{0, 1}}},
        {"TRUSS2", 1, ElemKind::Edge, 2, {}},
        {"TRUSS3", 1, ElemKind::Edge, 3, {{0, 1}}},
        {"SPHERE", 0, ElemKind::Sphere, 1, {}},
    };
    return table;
}

const ElementType* find_element_type(std::string_view name) {
    for (const auto& t : element_types())
        if (std::equal(name.begin(), name.end(), t.name.begin(), t.name.end(),
                       [](char a, char b) { return std::toupper(a) == b; }))
            return &t;
    return nullptr;
}

std::string_view default_type_name(ElemKind kind) {
    for (const auto& t : element_types())
        if (t.kind == kind && t.mids.empty())
            return t.name;
    return {};
}

std::string describe(const Member& m) {
    switch (m.type) {
    case Member::Type::Geometry:
        return std::string(kDimWords[std::clamp(m.dim, 0, 3)]) + " " + std::to_string(m.id);
    case Member::Type::Element:
        return std::string(mesh::info(m.kind).word) + " " + std::to_string(m.id);
    case Member::Type::Body:
        return "body " + std::to_string(m.id);
    case Member::Type::Group:
        return "group " + std::to_string(m.id);
    case Member::Type::Node:
        break;
    }
    return "node " + std::to_string(m.id);
}

bool member_exists(const Member& m) {
    switch (m.type) {
    case Member::Type::Geometry:
        return model().exists(mesh::kind_of_dim(m.dim), m.id);
    case Member::Type::Element:
        return mesh_state().find_element(m.kind, m.id).has_value();
    case Member::Type::Body:
        return model().exists(GeomKind::Body, m.id);
    case Member::Type::Group:
        return g_module && g_module->state().groups.count(m.id) != 0;
    case Member::Type::Node:
        break;
    }
    return mesh_state().find_node(m.id).has_value();
}

// ---- Changes
// -------------------------------------------------------------------------------------

bool FeModule::block_add(int id, const std::vector<Member>& members) {
    if (!valid_id("block", id))
        return false;
    const auto it = state_.blocks.find(id);
    auto block = it == state_.blocks.end() ? std::make_shared<Block>()
                                           : std::make_shared<Block>(*it->second);
    block->id = id;
    int dim = dimension(*block);
    std::vector<Member> added;
    for (const Member& m : members) {
        if (m.type == Member::Type::Node || (m.type == Member::Type::Geometry && m.dim == 0))
            return error("a block holds volumes, surfaces, curves or elements, not " + describe(m));
        const int d = member_dim(m);
        if (dim >= 0 && d != dim)
            return error("block " + std::to_string(id) + " is " + dim_name(dim) + ": " +
                         describe(m) + " is " + dim_name(d));
        dim = d;
        if (std::find(block->members.begin(), block->members.end(), m) != block->members.end())
            continue;
        if (m.type == Member::Type::Geometry)
            for (const auto& [other, b] : state_.blocks)
                if (other != id &&
                    std::find(b->members.begin(), b->members.end(), m) != b->members.end())
                    return error(describe(m) + " is in block " + std::to_string(other) +
                                 " already; remove it there first");
        block->members.push_back(m);
        added.push_back(m);
    }
    const bool created = it == state_.blocks.end();
    state_.blocks[id] = block;
    std::string text;
    for (const Member& m : added)
        text += (text.empty() ? "" : ", ") + describe(m);
    print((created ? "Created block " : "Block ") + std::to_string(id) +
          (added.empty() ? ": nothing new added" : ": added " + text));
    emit_modified("block", id, created ? "created" : "modified");
    return true;
}

bool FeModule::block_remove(int id, const std::vector<Member>& members) {
    const auto it = state_.blocks.find(id);
    if (it == state_.blocks.end())
        return error("block " + std::to_string(id) + " does not exist");
    auto block = std::make_shared<Block>(*it->second);
    std::string removed;
    for (const Member& m : members) {
        const auto pos = std::find(block->members.begin(), block->members.end(), m);
        if (pos == block->members.end()) {
            warning(describe(m) + " is not in block " + std::to_string(id));
            continue;
        }
        block->members.erase(pos);
        removed += (removed.empty() ? "" : ", ") + describe(m);
    }
    state_.blocks[id] = block;
    print("Block " + std::to_string(id) +
          (removed.empty() ? ": nothing removed" : ": removed " + removed));
    emit_modified("block", id, "modified");
    return true;
}

bool FeModule::block_element_type(int id, const std::string& type) {
    const auto it = state_.blocks.find(id);
    if (it == state_.blocks.end())
        return error("block " + std::to_string(id) + " does not exist");
    const ElementType* t = find_element_type(type);
    if (!t) {
        std::string names;
        for (const auto& e : element_types())
            names += (names.empty() ? "" : " ") + std::string(e.name);
        return error("unknown element type '" + type + "' (" + names + ")");
    }
    const int dim = [&] {
        Block probe = *it->second;
        probe.element_type.clear();
        return dimension(probe);
    }();
    if (dim >= 0 && dim != t->dim)
        return error("element type " + std::string(t->name) + " is " + dim_name(t->dim) +
                     ", block " + std::to_string(id) + " is " + dim_name(dim));
    auto block = std::make_shared<Block>(*it->second);
    block->element_type = std::string(t->name);
    state_.blocks[id] = block;
    print("Block " + std::to_string(id) + " element type " + block->element_type);
    emit_modified("block", id, "modified");
    return true;
}

namespace {
bool valid_name(const std::string& name) {
    if (name.size() <= 80)
        return true;
    return error("a name holds at most 80 characters (the Exodus limit); this one has " +
                 std::to_string(name.size()));
}
} // namespace

bool FeModule::block_name(int id, const std::string& name) {
    const auto it = state_.blocks.find(id);
    if (it == state_.blocks.end())
        return error("block " + std::to_string(id) + " does not exist");
    if (!valid_name(name))
        return false;
    auto block = std::make_shared<Block>(*it->second);
    block->name = name;
    state_.blocks[id] = block;
    print("Block " + std::to_string(id) + " named '" + name + "'");
    emit_modified("block", id, "modified");
    return true;
}

bool FeModule::block_attribute_count(int id, int count) {
    const auto it = state_.blocks.find(id);
    if (it == state_.blocks.end())
        return error("block " + std::to_string(id) + " does not exist");
    if (count < 0 || count > 1000)
        return error("an attribute count is 0 to 1000, not " + std::to_string(count));
    auto block = std::make_shared<Block>(*it->second);
    block->attributes.resize(count, 0.0);
    block->attribute_names.resize(count);
    state_.blocks[id] = block;
    print("Block " + std::to_string(id) + " has " + std::to_string(count) + " attributes");
    emit_modified("block", id, "modified");
    return true;
}

bool FeModule::block_attribute(int id, int index, double value,
                               const std::optional<std::string>& name) {
    const auto it = state_.blocks.find(id);
    if (it == state_.blocks.end())
        return error("block " + std::to_string(id) + " does not exist");
    const int count = static_cast<int>(it->second->attributes.size());
    if (index < 1 || index > count)
        return error("block " + std::to_string(id) + " has " + std::to_string(count) +
                     " attributes: index " + std::to_string(index) + " is not 1 to " +
                     std::to_string(count) + " (set 'attribute count' first)");
    if (name && !valid_name(*name))
        return false;
    auto block = std::make_shared<Block>(*it->second);
    block->attributes[index - 1] = value;
    if (name)
        block->attribute_names[index - 1] = *name;
    state_.blocks[id] = block;
    print("Block " + std::to_string(id) + " attribute " + std::to_string(index) + " = " +
          format_number(value) + (name ? " ('" + *name + "')" : ""));
    emit_modified("block", id, "modified");
    return true;
}

bool FeModule::nodeset_add(int id, const std::vector<Member>& members) {
    if (!valid_id("nodeset", id))
        return false;
    const auto it = state_.nodesets.find(id);
    auto set = it == state_.nodesets.end() ? std::make_shared<NodeSet>()
                                           : std::make_shared<NodeSet>(*it->second);
    set->id = id;
    std::string text;
    for (const Member& m : members) {
        if (m.type == Member::Type::Element)
            return error("a nodeset holds geometry or nodes, not " + describe(m));
        if (std::find(set->members.begin(), set->members.end(), m) != set->members.end())
            continue;
        set->members.push_back(m);
        text += (text.empty() ? "" : ", ") + describe(m);
    }
    const bool created = it == state_.nodesets.end();
    state_.nodesets[id] = set;
    print((created ? "Created nodeset " : "Nodeset ") + std::to_string(id) +
          (text.empty() ? ": nothing new added" : ": added " + text));
    emit_modified("nodeset", id, created ? "created" : "modified");
    return true;
}

bool FeModule::sideset_add(int id, const std::vector<int>& surfaces, int wrt_volume) {
    if (!valid_id("sideset", id))
        return false;
    if (wrt_volume != 0 && !model().exists(GeomKind::Volume, wrt_volume))
        return error("volume " + std::to_string(wrt_volume) + " does not exist");
    const auto it = state_.sidesets.find(id);
    auto set = it == state_.sidesets.end() ? std::make_shared<SideSet>()
                                           : std::make_shared<SideSet>(*it->second);
    set->id = id;
    std::string text;
    for (int s : surfaces) {
        if (wrt_volume != 0) {
            const auto vols = model().relatives(GeomKind::Surface, s, GeomKind::Volume);
            if (std::find(vols.begin(), vols.end(), wrt_volume) == vols.end())
                return error("surface " + std::to_string(s) + " is not on volume " +
                             std::to_string(wrt_volume));
        }
        const std::pair<int, int> entry{s, wrt_volume};
        if (std::find(set->surfaces.begin(), set->surfaces.end(), entry) != set->surfaces.end())
            continue;
        set->surfaces.push_back(entry);
        text += (text.empty() ? "surface " : " ") + std::to_string(s);
    }
    const bool created = it == state_.sidesets.end();
    state_.sidesets[id] = set;
    print((created ? "Created sideset " : "Sideset ") + std::to_string(id) +
          (text.empty() ? ": nothing new added"
                        : ": added " + text +
                              (wrt_volume ? " wrt volume " + std::to_string(wrt_volume) : "")));
    emit_modified("sideset", id, created ? "created" : "modified");
    return true;
}

bool FeModule::set_name(const std::string& type, int id, const std::string& name) {
    if (!valid_name(name))
        return false;
    if (type == "nodeset") {
        const auto it = state_.nodesets.find(id);
        if (it == state_.nodesets.end())
            return error("nodeset " + std::to_string(id) + " does not exist");
        auto set = std::make_shared<NodeSet>(*it->second);
        set->name = name;
        it->second = set;
    } else {
        const auto it = state_.sidesets.find(id);
        if (it == state_.sidesets.end())
            return error("sideset " + std::to_string(id) + " does not exist");
        auto set = std::make_shared<SideSet>(*it->second);
        set->name = name;
        it->second = set;
    }
    print((type == "nodeset" ? "Nodeset " : "Sideset ") + std::to_string(id) + " named '" + name +
          "'");
    emit_modified(type, id, "modified");
    return true;
}

namespace {
template <class Map>
bool describe_in(Map& map, const std::string& type, int id, const std::string& text) {
    const auto it = map.find(id);
    if (it == map.end())
        return error(type + " " + std::to_string(id) + " does not exist");
    using Piece = std::remove_const_t<typename Map::mapped_type::element_type>;
    auto piece = std::make_shared<Piece>(*it->second);
    piece->description = text;
    it->second = piece;
    return true;
}
} // namespace

bool FeModule::set_description(const std::string& type, int id, const std::string& text) {
    // Long enough for a paragraph, short enough that a runaway variable cannot bloat undo.
    if (text.size() > 4096)
        return error("a description holds at most 4096 characters; this one has " +
                     std::to_string(text.size()));
    const bool ok = type == "block"     ? describe_in(state_.blocks, type, id, text)
                    : type == "nodeset" ? describe_in(state_.nodesets, type, id, text)
                                        : describe_in(state_.sidesets, type, id, text);
    if (!ok)
        return false;
    print(std::string(1, static_cast<char>(std::toupper(type[0]))) + type.substr(1) + " " +
          std::to_string(id) + " description '" + text + "'");
    emit_modified(type, id, "modified");
    return true;
}

bool FeModule::remove(const std::string& type, const std::vector<int>& ids) {
    if (ids.empty())
        return error("no " + type + " to delete: the list is empty");
    for (int id : ids) {
        if (type == "block")
            state_.blocks.erase(id);
        else if (type == "nodeset")
            state_.nodesets.erase(id);
        else
            state_.sidesets.erase(id);
    }
    EntityList list;
    list.add(type, ids);
    print("Deleted " + list.describe());
    for (int id : ids)
        emit_modified(type, id, "deleted");
    return true;
}

// ---- EntityCatalog
// -------------------------------------------------------------------------------

bool FeModule::handles(std::string_view type) const {
    return type == "block" || type == "nodeset" || type == "sideset" || type == "group";
}

std::vector<int> FeModule::all_ids(std::string_view type) const {
    if (type == "block")
        return keys_of(state_.blocks);
    if (type == "nodeset")
        return keys_of(state_.nodesets);
    if (type == "sideset")
        return keys_of(state_.sidesets);
    if (type == "group")
        return keys_of(state_.groups);
    return {};
}

bool FeModule::exists(std::string_view type, int id) const {
    if (type == "block")
        return state_.blocks.count(id) != 0;
    if (type == "nodeset")
        return state_.nodesets.count(id) != 0;
    if (type == "sideset")
        return state_.sidesets.count(id) != 0;
    if (type == "group")
        return state_.groups.count(id) != 0;
    return false;
}

std::vector<int> FeModule::relatives(std::string_view source_type, int id,
                                     std::string_view target_type) const {
    if (source_type == "group")
        return group_relatives(id, target_type);
    std::set<int> out;
    const auto geometry_dim = [](std::string_view t) {
        for (int d = 0; d < 4; ++d)
            if (t == kDimWords[d])
                return d;
        return -1;
    };
    const int dim = geometry_dim(target_type);
    if (source_type == "block" && state_.blocks.count(id)) {
        const Block& b = *state_.blocks.at(id);
        for (const Member& m : b.members)
            if (m.type == Member::Type::Geometry && m.dim == dim && member_exists(m))
                out.insert(m.id);
        if (const auto kind = mesh::elem_kind_from_word(target_type)) {
            const auto elems = elements(b);
            if (const auto it = elems.find(*kind); it != elems.end())
                out.insert(it->second.begin(), it->second.end());
        }
    } else if (source_type == "nodeset" && state_.nodesets.count(id)) {
        const NodeSet& n = *state_.nodesets.at(id);
        for (const Member& m : n.members)
            if (m.type == Member::Type::Geometry && m.dim == dim && member_exists(m))
                out.insert(m.id);
        if (target_type == "node")
            for (int node : nodes(n, true))
                out.insert(node);
    } else if (source_type == "sideset" && state_.sidesets.count(id) && dim == 2) {
        for (const auto& [s, wrt] : state_.sidesets.at(id)->surfaces)
            if (model().exists(GeomKind::Surface, s))
                out.insert(s);
    }
    return {out.begin(), out.end()};
}

std::string FeModule::name_of(std::string_view type, int id) const {
    if (type == "block" && state_.blocks.count(id))
        return state_.blocks.at(id)->name;
    if (type == "nodeset" && state_.nodesets.count(id))
        return state_.nodesets.at(id)->name;
    if (type == "sideset" && state_.sidesets.count(id))
        return state_.sidesets.at(id)->name;
    if (type == "group" && state_.groups.count(id))
        return state_.groups.at(id)->name;
    return {};
}

// ---- UndoParticipant
// -----------------------------------------------------------------------------

std::unique_ptr<UndoSnapshot> FeModule::save_state() {
    auto snap = std::make_unique<FeSnapshot>();
    snap->state = state_;
    return snap;
}

void FeModule::restore_state(const UndoSnapshot& snapshot) {
    const FeState& saved = static_cast<const FeSnapshot&>(snapshot).state;
    // Events for what differs, so that monitors of a container see it come, go or change.
    const auto diff = [](const std::string& type, const auto& now, const auto& then) {
        for (const auto& [id, piece] : now)
            if (!then.count(id))
                emit_modified(type, id, "deleted");
        for (const auto& [id, piece] : then) {
            const auto it = now.find(id);
            if (it == now.end())
                emit_modified(type, id, "created");
            else if (it->second != piece)
                emit_modified(type, id, "modified");
        }
    };
    const FeState before = state_;
    state_ = saved;
    diff("block", before.blocks, saved.blocks);
    diff("nodeset", before.nodesets, saved.nodesets);
    diff("sideset", before.sidesets, saved.sidesets);
    using TarvoInterface::TIObserve;
    for (const auto& [id, piece] : before.groups)
        if (!saved.groups.count(id))
            events().emit(&TIObserve::notify_group_deleted, id);
    for (const auto& [id, piece] : saved.groups) {
        const auto it = before.groups.find(id);
        if (it == before.groups.end())
            events().emit(&TIObserve::notify_group_created, id);
        else if (it->second != piece)
            events().emit(&TIObserve::notify_group_modified, id);
    }
}

bool FeModule::set_copy_setting(int which, const std::string& value) {
    static const char* const kinds[] = {"block", "nodeset", "sideset"};
    std::string upper = value;
    for (char& ch : upper)
        ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
    if (upper != "ON" && upper != "OFF" && upper != "USE_ORIGINAL")
        return error("expected on, off or use_original, not '" + value + "'");
    copy_settings_.at(which) = upper;
    print(std::string("Copy ") + kinds[which] + " on geometry copy: " + upper);
    return true;
}

void FeModule::clear_state() {
    const FeState before = state_;
    state_ = {};
    copy_settings_ = {"OFF", "OFF", "OFF"};
    for (const auto& [id, b] : before.blocks)
        emit_modified("block", id, "deleted");
    for (const auto& [id, n] : before.nodesets)
        emit_modified("nodeset", id, "deleted");
    for (const auto& [id, s] : before.sidesets)
        emit_modified("sideset", id, "deleted");
    for (const auto& [id, g] : before.groups)
        events().emit(&TarvoInterface::TIObserve::notify_group_deleted, id);
}

namespace {

// Deleted geometry leaves every container, and renumbered geometry (`compress ids`) is followed,
// so that an id a container holds always names the entity it was given. Undo puts the whole
// state back itself, so events of a restore are not followed.
class GeometryWatcher : public TarvoInterface::TIObserve {
public:
    void notify_body_deleted(int id) override { follow(4, id, 0); }
    void notify_volume_deleted(int id) override { follow(3, id, 0); }
    void notify_surface_deleted(int id) override { follow(2, id, 0); }
    void notify_free_surface_deleted(int id) override { follow(2, id, 0); }
    void notify_curve_deleted(int id) override { follow(1, id, 0); }
    void notify_free_curve_deleted(int id) override { follow(1, id, 0); }
    void notify_vertex_deleted(int id) override { follow(0, id, 0); }
    void notify_free_vertex_deleted(int id) override { follow(0, id, 0); }
    void notify_id_changed(const std::string& type, int old_id, int new_id) override {
        const auto kind = parse_kind(type);
        const int dim = !kind ? -1 : *kind == GeomKind::Body ? 4 : mesh::dim_of_kind(*kind);
        if (dim >= 0)
            follow(dim, old_id, new_id);
    }

private:
    static void follow(int dim, int old_id, int new_id) {
        if (g_module && !performing_undo())
            g_module->follow_geometry(dim, old_id, new_id);
    }
};

// A plain pointer, as in the other modules: the observer list may be gone at static destruction.
GeometryWatcher* g_watcher = nullptr;

} // namespace

} // namespace tarvo::kernel::fe

namespace tarvo::kernel {

void init_fe_module() {
    fe::g_module = std::make_unique<fe::FeModule>();
    add_entity_catalog(fe::g_module.get());
    add_undo_participant(fe::g_module.get());
    fe::register_fe_commands();
    fe::register_group_commands();
    fe::register_fe_file_section();
    if (!fe::g_watcher)
        fe::g_watcher = new fe::GeometryWatcher();
    fe::g_watcher->register_observer();
    if (mesh::MeshModule* m = mesh::mesh_module())
        m->set_after_command([] {
            if (fe::g_module)
                fe::g_module->sync_mid_nodes();
        });
    set_copy_listener([](const std::vector<CopiedEntity>& copied) {
        if (fe::g_module)
            fe::g_module->follow_copy(copied);
    });
    set_group_maker([](const std::string& type, const std::vector<int>& ids) {
        const int group = TarvoInterface::create_new_group();
        if (group > 0)
            TarvoInterface::add_entities_to_group(group, ids, type);
        return group;
    });
}

void shutdown_fe_module() {
    if (!fe::g_module)
        return;
    set_group_maker(nullptr);
    set_copy_listener(nullptr);
    if (mesh::MeshModule* m = mesh::mesh_module())
        m->set_after_command(nullptr);
    delete fe::g_watcher; // unregisters it
    fe::g_watcher = nullptr;
    remove_undo_participant(fe::g_module.get());
    remove_entity_catalog(fe::g_module.get());
    fe::g_module.reset();
}

} // namespace tarvo::kernel
