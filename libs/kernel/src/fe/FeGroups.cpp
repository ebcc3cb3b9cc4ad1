// Groups: named collections of geometry, mesh entities and other groups, and their commands
// (`create group`, `group ... add|remove`, `delete group`).
//
// A group keeps what it was given, not what it expands to: a subgroup stays one member, so a
// change to the subgroup shows in every group that holds it, and a reader (the model monitor)
// can list the tree as the user built it. Cycles are refused when a group is added, so every
// walk down the tree ends. Threading: kernel thread only.

#include "core/Command.h"
#include "core/EntityList.h"
#include "core/Session.h"
#include "fe/FeModule.h"
#include "geometry/GeometryModule.h"
#include "mesh/MeshModule.h"
#include "tarvo/TIObserve.h"

#include <algorithm>
#include <set>

namespace tarvo::kernel::fe {

namespace {

using TarvoInterface::TIObserve;

std::string group_word(const Group& g) {
    return "group " + std::to_string(g.id) + (g.name.empty() ? "" : " ('" + g.name + "')");
}

// Whether `target` is `from` or lies anywhere inside it.
bool reaches(const FeState& state, int from, int target) {
    std::set<int> seen;
    std::vector<int> todo{from};
    while (!todo.empty()) {
        const int id = todo.back();
        todo.pop_back();
        if (id == target)
            return true;
        const auto it = state.groups.find(id);
        if (it == state.groups.end() || !seen.insert(id).second)
            continue;
        for (const Member& m : it->second->members)
            if (m.type == Member::Type::Group)
                todo.push_back(m.id);
    }
    return false;
}

} // namespace

int FeModule::group_by_name(const std::string& name) const {
    for (const auto& [id, g] : state_.groups)
        if (!name.empty() && g->name == name)
            return id;
    return 0;
}

int FeModule::group_create(const std::string& name) {
    if (const int taken = group_by_name(name)) {
        error("a group named '" + name + "' exists already (group " + std::to_string(taken) + ")");
        return 0;
    }
    auto g = std::make_shared<Group>();
    g->id = ++state_.group_max_id;
    g->name = name;
    state_.groups[g->id] = g;
    print("Created " + group_word(*g));
    events().emit(&TIObserve::notify_group_created, g->id);
    return g->id;
}

bool FeModule::group_add(int id, const std::vector<Member>& members) {
    const auto it = state_.groups.find(id);
    if (it == state_.groups.end())
        return error("group " + std::to_string(id) + " does not exist");
    // Everything is checked before anything changes, so a refusal leaves the group as it was.
    for (const Member& m : members) {
        if (!member_exists(m))
            return error(describe(m) + " does not exist");
        if (m.type == Member::Type::Group && reaches(state_, m.id, id))
            return error("group " + std::to_string(m.id) +
                         (m.id == id ? " cannot hold itself"
                                     : " holds group " + std::to_string(id) +
                                           ": adding it would make a cycle"));
    }
    auto g = std::make_shared<Group>(*it->second);
    std::string text;
    for (const Member& m : members) {
        if (std::find(g->members.begin(), g->members.end(), m) != g->members.end())
            continue;
        g->members.push_back(m);
        text += (text.empty() ? "" : ", ") + describe(m);
    }
    print(group_word(*g) + (text.empty() ? ": nothing new added" : ": added " + text));
    if (text.empty())
        return true;
    it->second = g;
    events().emit(&TIObserve::notify_group_modified, id);
    return true;
}

bool FeModule::group_remove(int id, const std::vector<Member>& members) {
    const auto it = state_.groups.find(id);
    if (it == state_.groups.end())
        return error("group " + std::to_string(id) + " does not exist");
    auto g = std::make_shared<Group>(*it->second);
    std::string text;
    for (const Member& m : members) {
        const auto pos = std::find(g->members.begin(), g->members.end(), m);
        if (pos == g->members.end()) {
            warning(describe(m) + " is not in " + group_word(*g));
            continue;
        }
        g->members.erase(pos);
        text += (text.empty() ? "" : ", ") + describe(m);
    }
    print(group_word(*g) + (text.empty() ? ": nothing removed" : ": removed " + text));
    if (text.empty())
        return true;
    it->second = g;
    events().emit(&TIObserve::notify_group_modified, id);
    return true;
}

bool FeModule::group_delete(const std::vector<int>& ids) {
    if (ids.empty())
        return error("no group to delete: the list is empty");
    for (int id : ids)
        if (!state_.groups.count(id))
            return error("group " + std::to_string(id) + " does not exist");
    const std::set<int> gone(ids.begin(), ids.end());
    for (int id : gone)
        state_.groups.erase(id);
    std::vector<int> modified;
    for (auto& [id, piece] : state_.groups) {
        auto g = std::make_shared<Group>(*piece);
        const auto end = std::remove_if(g->members.begin(), g->members.end(), [&](const Member& m) {
            return m.type == Member::Type::Group && gone.count(m.id);
        });
        if (end == g->members.end())
            continue;
        g->members.erase(end, g->members.end());
        piece = g;
        modified.push_back(id);
    }
    EntityList list;
    list.add("group", {gone.begin(), gone.end()});
    print("Deleted " + list.describe());
    for (int id : gone)
        events().emit(&TIObserve::notify_group_deleted, id);
    for (int id : modified)
        events().emit(&TIObserve::notify_group_modified, id);
    return true;
}

void FeModule::group_raise_max_id(int id) {
    state_.group_max_id = std::max(state_.group_max_id, id);
}

std::vector<int> FeModule::group_relatives(int id, std::string_view target) const {
    std::set<int> out;
    std::set<int> seen;
    const auto elem = mesh::elem_kind_from_word(target);
    const auto& model = geometry_module()->model();
    std::vector<int> todo{id};
    while (!todo.empty()) {
        const int gid = todo.back();
        todo.pop_back();
        const auto it = state_.groups.find(gid);
        if (it == state_.groups.end() || !seen.insert(gid).second)
            continue;
        for (const Member& m : it->second->members) {
            if (m.type == Member::Type::Group) {
                todo.push_back(m.id);
                if (target == "group")
                    out.insert(m.id);
                continue;
            }
            if (!member_exists(m))
                continue;
            switch (m.type) {
            case Member::Type::Geometry:
                if (mesh::kind_of_dim(m.dim) == parse_kind(target))
                    out.insert(m.id);
                break;
            case Member::Type::Body:
                if (target == "body")
                    out.insert(m.id);
                else if (target == "volume")
                    for (int v : model.relatives(GeomKind::Body, m.id, GeomKind::Volume))
                        out.insert(v);
                break;
            case Member::Type::Element:
                if (elem && *elem == m.kind)
                    out.insert(m.id);
                break;
            case Member::Type::Node:
                if (target == "node")
                    out.insert(m.id);
                break;
            case Member::Type::Group:
                break;
            }
        }
    }
    return {out.begin(), out.end()};
}

std::vector<int> FeModule::groups_holding(const Member& m) const {
    std::vector<int> out;
    for (const auto& [id, g] : state_.groups)
        if (std::find(g->members.begin(), g->members.end(), m) != g->members.end())
            out.push_back(id);
    return out;
}

namespace {

// Members of a group from an entity list: bodies and groups stay themselves.
bool read_group_members(Cursor& c, std::vector<Member>& out) {
    EntityList list;
    if (!c.entity_list(list))
        return c.fail(c.expectation().empty() ? "expected an entity list" : c.expectation());
    for (const auto& group : list.groups) {
        for (int id : group.ids) {
            if (group.type == "body")
                out.push_back({Member::Type::Body, 0, ElemKind::Hex, id});
            else if (group.type == "group")
                out.push_back({Member::Type::Group, 0, ElemKind::Hex, id});
            else if (const auto kind = parse_kind(group.type))
                out.push_back(
                    {Member::Type::Geometry, mesh::dim_of_kind(*kind), ElemKind::Hex, id});
            else if (const auto ek = mesh::elem_kind_from_word(group.type))
                out.push_back({Member::Type::Element, 0, *ek, id});
            else if (group.type == "node")
                out.push_back({Member::Type::Node, 0, ElemKind::Hex, id});
            else
                return c.fail("'" + group.type + "' cannot go into a group");
        }
    }
    if (out.empty())
        return c.fail("nothing to put in or take out of the group: the list names no entity that "
                      "exists");
    return true;
}

bool create_group_command(Cursor& c) {
    std::string name;
    if (!c.string(name, false))
        return c.fail("expected the group's name in quotes");
    if (!c.expect_end())
        return false;
    if (name.empty() || name.find_first_of(" \t*?") != std::string::npos)
        return c.fail("a group name is not empty and holds no blanks, '*' or '?'");
    return fe_module()->group_create(name) != 0;
}

// `group '<name>' add|remove <list>`, or `group <id> ...`.
bool group_command(Cursor& c) {
    FeModule& fe = *fe_module();
    int id = 0;
    std::string name;
    if (c.string(name, false)) {
        id = fe.group_by_name(name);
        if (!id)
            return c.fail("no group is named '" + name + "'");
    } else if (!c.integer(id)) {
        return c.fail("expected the group's name in quotes or its id");
    }
    int verb = -1;
    if (!c.choice({"add", "remove"}, verb))
        return c.fail("expected add or remove after the group");
    std::vector<Member> members;
    if (!read_group_members(c, members) || !c.expect_end())
        return false;
    return verb == 0 ? fe.group_add(id, members) : fe.group_remove(id, members);
}

bool delete_group_command(Cursor& c) {
    if (c.at_end())
        return c.fail("expected the group ids to delete");
    const std::vector<int> ids = parse_entity_ids("group", c.rest());
    c.set_pos(c.all_tokens().size());
    return fe_module()->group_delete(ids);
}

} // namespace

void register_group_commands() {
    register_command({"create group", create_group_command, true, "create group '<name>'"});
    register_command({"group", group_command, true, "group '<name>'|<id> add|remove <list>"});
    register_command({"delete group", delete_group_command, true, "delete group <ids>"});
}

} // namespace tarvo::kernel::fe
