// Public functions of groups, answered from FeState. A group's lists are its own members, not
// those of the groups inside it (those are listed as groups), and only members that still exist.
//
// Conventions: an unknown group or type answers the failure value without an error line, as the
// other container queries do; the mutators print one error and change nothing on bad input.
// Threading: kernel thread only.

#include "core/EntityList.h"
#include "core/Guard.h"
#include "fe/FeModule.h"
#include "geometry/GeometryModule.h"
#include "mesh/MeshModule.h"
#include "tarvo/TarvoInterface.h"

#include <algorithm>
#include <set>

namespace tk = tarvo::kernel;
namespace fe = tarvo::kernel::fe;
using fe::ElemKind;
using fe::Member;

namespace {

template <class T, class F> T with_module(const char* name, T fail, F&& body) {
    return tk::guarded(name, std::move(fail), [&]() -> T {
        fe::FeModule* m = fe::fe_module();
        return m ? body(*m) : fail;
    });
}

// The group's live members that `pick` accepts, by id, ascending.
template <class Pick> std::vector<int> members_of(int group_id, Pick&& pick) {
    return with_module("group members", std::vector<int>{}, [&](fe::FeModule& m) {
        const auto it = m.state().groups.find(group_id);
        std::set<int> out;
        if (it != m.state().groups.end())
            for (const Member& e : it->second->members)
                if (pick(e) && fe::member_exists(e))
                    out.insert(e.id);
        return std::vector<int>(out.begin(), out.end());
    });
}

std::vector<int> of_type(int group_id, Member::Type type) {
    return members_of(group_id, [&](const Member& e) { return e.type == type; });
}
std::vector<int> of_dim(int group_id, int dim) {
    return members_of(group_id, [&](const Member& e) {
        return e.type == Member::Type::Geometry && e.dim == dim;
    });
}
std::vector<int> of_kind(int group_id, ElemKind kind) {
    return members_of(group_id, [&](const Member& e) {
        return e.type == Member::Type::Element && e.kind == kind;
    });
}

// The member an (entity type word, id) names; nothing for a word that cannot go into a group.
std::optional<Member> member_from(const std::string& type, int id) {
    const std::string word = tk::canonical_entity_type(type);
    if (word == "body")
        return Member{Member::Type::Body, 0, ElemKind::Hex, id};
    if (word == "group")
        return Member{Member::Type::Group, 0, ElemKind::Hex, id};
    if (word == "node")
        return Member{Member::Type::Node, 0, ElemKind::Hex, id};
    if (const auto kind = tk::parse_kind(word))
        return Member{Member::Type::Geometry, tk::mesh::dim_of_kind(*kind), ElemKind::Hex, id};
    if (const auto kind = tk::mesh::elem_kind_from_word(word))
        return Member{Member::Type::Element, 0, *kind, id};
    return std::nullopt;
}

bool change(const char* name, int group_id, const std::vector<int>& ids, const std::string& type,
            bool add) {
    return with_module(name, false, [&](fe::FeModule& m) {
        std::vector<Member> members;
        for (int id : ids) {
            const auto member = member_from(type, id);
            if (!member)
                return tk::error("'" + type + "' cannot go into a group");
            members.push_back(*member);
        }
        return add ? m.group_add(group_id, members) : m.group_remove(group_id, members);
    });
}

} // namespace

namespace TarvoInterface {

void get_group_children(int group_id, std::vector<int>& returned_group_list,
                        std::vector<int>& returned_body_list,
                        std::vector<int>& returned_volume_list,
                        std::vector<int>& returned_surface_list,
                        std::vector<int>& returned_curve_list,
                        std::vector<int>& returned_vertex_list, int& returned_node_count,
                        int& returned_edge_count, int& returned_hex_count, int& returned_quad_count,
                        int& returned_tet_count, int& returned_tri_count, int& returned_wedge_count,
                        int& returned_pyramid_count, int& returned_sphere_count) {
    returned_group_list = of_type(group_id, Member::Type::Group);
    returned_body_list = of_type(group_id, Member::Type::Body);
    returned_volume_list = of_dim(group_id, 3);
    returned_surface_list = of_dim(group_id, 2);
    returned_curve_list = of_dim(group_id, 1);
    returned_vertex_list = of_dim(group_id, 0);
    const auto count = [&](ElemKind kind) {
        return static_cast<int>(of_kind(group_id, kind).size());
    };
    returned_node_count = static_cast<int>(of_type(group_id, Member::Type::Node).size());
    returned_edge_count = count(ElemKind::Edge);
    returned_hex_count = count(ElemKind::Hex);
    returned_quad_count = count(ElemKind::Quad);
    returned_tet_count = count(ElemKind::Tet);
    returned_tri_count = count(ElemKind::Tri);
    returned_wedge_count = count(ElemKind::Wedge);
    returned_pyramid_count = count(ElemKind::Pyramid);
    returned_sphere_count = count(ElemKind::Sphere);
}

std::vector<int> get_group_groups(int group_id) {
    return of_type(group_id, Member::Type::Group);
}
std::vector<int> get_group_bodies(int group_id) {
    return of_type(group_id, Member::Type::Body);
}
std::vector<int> get_group_volumes(int group_id) {
    return of_dim(group_id, 3);
}
std::vector<int> get_group_surfaces(int group_id) {
    return of_dim(group_id, 2);
}
std::vector<int> get_group_curves(int group_id) {
    return of_dim(group_id, 1);
}
std::vector<int> get_group_vertices(int group_id) {
    return of_dim(group_id, 0);
}
std::vector<int> get_group_nodes(int group_id) {
    return of_type(group_id, Member::Type::Node);
}
std::vector<int> get_group_edges(int group_id) {
    return of_kind(group_id, ElemKind::Edge);
}
std::vector<int> get_group_quads(int group_id) {
    return of_kind(group_id, ElemKind::Quad);
}
std::vector<int> get_group_tris(int group_id) {
    return of_kind(group_id, ElemKind::Tri);
}
std::vector<int> get_group_tets(int group_id) {
    return of_kind(group_id, ElemKind::Tet);
}
std::vector<int> get_group_wedges(int group_id) {
    return of_kind(group_id, ElemKind::Wedge);
}
std::vector<int> get_group_pyramids(int group_id) {
    return of_kind(group_id, ElemKind::Pyramid);
}
std::vector<int> get_group_spheres(int group_id) {
    return of_kind(group_id, ElemKind::Sphere);
}
std::vector<int> get_group_hexes(int group_id) {
    return of_kind(group_id, ElemKind::Hex);
}

int get_next_group_id() {
    return with_module("get_next_group_id", 0,
                       [](fe::FeModule& m) { return m.state().group_max_id + 1; });
}

void delete_all_groups() {
    with_module("delete_all_groups", false, [](fe::FeModule& m) {
        const std::vector<int> ids = m.all_ids("group");
        return ids.empty() || m.group_delete(ids);
    });
}

void delete_group(int group_id) {
    with_module("delete_group", false, [&](fe::FeModule& m) { return m.group_delete({group_id}); });
}

void set_max_group_id(int maximum_group_id) {
    with_module("set_max_group_id", false, [&](fe::FeModule& m) {
        m.group_raise_max_id(maximum_group_id);
        return true;
    });
}

int create_new_group() {
    return with_module("create_new_group", 0, [](fe::FeModule& m) { return m.group_create(""); });
}

void remove_entity_from_group(int group_id, int entity_id, const std::string& entity_type) {
    change("remove_entity_from_group", group_id, {entity_id}, entity_type, false);
}
void add_entity_to_group(int group_id, int entity_id, const std::string& entity_type) {
    change("add_entity_to_group", group_id, {entity_id}, entity_type, true);
}
void add_entities_to_group(int group_id, const std::vector<int>& entity_id,
                           const std::string& entity_type) {
    change("add_entities_to_group", group_id, entity_id, entity_type, true);
}

void group_list(std::vector<std::string>& name_list, std::vector<int>& returned_id_list) {
    name_list.clear();
    returned_id_list.clear();
    for (const auto& [name, id] : group_names_ids()) {
        name_list.push_back(name);
        returned_id_list.push_back(id);
    }
}

std::vector<std::pair<std::string, int>> group_names_ids() {
    using Pairs = std::vector<std::pair<std::string, int>>;
    return with_module("group_names_ids", Pairs{}, [](fe::FeModule& m) {
        Pairs out;
        for (const auto& [id, g] : m.state().groups)
            out.emplace_back(g->name, id);
        return out;
    });
}

std::vector<int> get_mesh_group_parent_ids(const std::string& element_type, int element_id) {
    return with_module("get_mesh_group_parent_ids", std::vector<int>{}, [&](fe::FeModule& m) {
        const auto member = member_from(element_type, element_id);
        if (!member ||
            (member->type != Member::Type::Element && member->type != Member::Type::Node))
            return std::vector<int>{};
        return m.groups_holding(*member);
    });
}

bool is_mesh_element_in_group(const std::string& element_type, int element_id) {
    return !get_mesh_group_parent_ids(element_type, element_id).empty();
}

bool is_part_of_list(int target_id, const std::vector<int>& id_list) {
    return std::find(id_list.begin(), id_list.end(), target_id) != id_list.end();
}

} // namespace TarvoInterface
