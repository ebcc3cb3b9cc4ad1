// Groups through the command language and the public functions: mixed members and nesting, the
// entity-list grammar reaching into them, bad input refused with nothing changed, undo, the id
// rule, and members following deleted and renumbered geometry.

#include "tarvo/TarvoInterface.h"

#include "../support/KernelTest.h"

#include <gtest/gtest.h>

namespace TI = TarvoInterface;

namespace {

using Ids = std::vector<int>;

class GroupTest : public test_support::KernelTest {
protected:
    GroupTest() : KernelTest("groups", {"group_created", "group_modified", "group_deleted"}) {}
    // Every group with its direct members, to compare before and after.
    static std::string dump() {
        std::string out;
        for (const auto& [name, id] : TI::group_names_ids()) {
            out += std::to_string(id) + " '" + name + "':";
            for (const Ids& ids :
                 {TI::get_group_groups(id), TI::get_group_bodies(id), TI::get_group_volumes(id),
                  TI::get_group_surfaces(id), TI::get_group_hexes(id), TI::get_group_nodes(id)}) {
                for (int i : ids)
                    out += " " + std::to_string(i);
                out += ";";
            }
        }
        return out + " next " + std::to_string(TI::get_next_group_id());
    }
};

TEST_F(GroupTest, GroupsHoldAnyMixAndNest) {
    run("create box 10");
    run("create box 1");
    run("volume 1 interval 2");
    run("mesh volume 1");
    run("create group 'parts'");
    run("group 'parts' add body 2 volume 1 surface 1 hex 1 2 node 3");
    run("create group 'outer'");
    run("group 'outer' add group 1 curve 2");

    std::vector<int> groups, bodies, volumes, surfaces, curves, vertices;
    int nodes, edges, hexes, quads, tets, tris, wedges, pyramids, spheres;
    TI::get_group_children(1, groups, bodies, volumes, surfaces, curves, vertices, nodes, edges,
                           hexes, quads, tets, tris, wedges, pyramids, spheres);
    EXPECT_EQ(bodies, Ids{2});
    EXPECT_EQ(volumes, Ids{1});
    EXPECT_EQ(surfaces, Ids{1});
    EXPECT_TRUE(groups.empty() && curves.empty() && vertices.empty());
    EXPECT_EQ(hexes, 2);
    EXPECT_EQ(nodes, 1);
    EXPECT_EQ(quads + tets + tris + wedges + pyramids + spheres + edges, 0);
    // A subgroup is one member: its volumes are not the outer group's own.
    EXPECT_EQ(TI::get_group_groups(2), Ids{1});
    EXPECT_EQ(TI::get_group_curves(2), Ids{2});
    EXPECT_TRUE(TI::get_group_volumes(2).empty());
    // The list grammar walks into subgroups, and a body counts with its volumes.
    EXPECT_EQ(TI::parse_tarvo_list("volume", "in group 2"), (Ids{1, 2}));
    EXPECT_EQ(TI::parse_tarvo_list("hex", "in group 2"), (Ids{1, 2}));
    EXPECT_EQ(TI::parse_tarvo_list("group", "all"), (Ids{1, 2}));
    EXPECT_EQ(TI::parse_tarvo_list("group", "with name 'out*'"), Ids{2});

    std::vector<std::string> names;
    std::vector<int> ids;
    TI::group_list(names, ids);
    EXPECT_EQ(names, (std::vector<std::string>{"parts", "outer"}));
    EXPECT_EQ(ids, (Ids{1, 2}));
    EXPECT_EQ(TI::get_entity_name("group", 2, false), "outer");
    EXPECT_EQ(TI::get_mesh_group_parent_ids("hex", 2), Ids{1});
    EXPECT_TRUE(TI::is_mesh_element_in_group("node", 3));
    EXPECT_FALSE(TI::is_mesh_element_in_group("hex", 3));

    // The functions reach the same members; a new group gets no name.
    const int api = TI::create_new_group();
    EXPECT_EQ(api, 3);
    TI::add_entities_to_group(api, {4, 5}, "hex");
    TI::add_entity_to_group(api, 1, "group");
    TI::remove_entity_from_group(api, 4, "hex");
    EXPECT_EQ(TI::get_group_hexes(api), Ids{5});
    EXPECT_EQ(TI::get_group_groups(api), Ids{1});
    EXPECT_EQ(TI::get_entity_name("group", api, false), "Group 3");
    EXPECT_EQ(recorder.count("group_created 1"), 1u);
    EXPECT_EQ(recorder.count("group_modified 1"), 1u);
}

TEST_F(GroupTest, BadInputIsRefusedAndChangesNothing) {
    run("create box 1");
    run("create group 'a'");
    run("create group 'b'");
    run("group 'b' add group 1 volume 1");
    const std::string before = dump();
    expect_refused(
        {
            {"create group 'a'", "exists already"},
            {"create group 'two words'", "no blanks"},
            {"group 'a' add group 1", "cannot hold itself"},
            {"group 'a' add group 2", "cycle"},
            {"group 'zz' add volume 1", "no group is named"},
            {"group 9 add volume 1", "does not exist"},
            {"group 'a' add volume 99", "the list names no entity"},
            {"group 'a' add volume 1 group 2", "cycle"}, // all or nothing: volume 1 stays out
            {"group 'a' frobnicate volume 1", "add or remove"},
        },
        dump);
    TI::add_entity_to_group(1, 2, "group");
    TI::add_entity_to_group(1, 99, "volume");
    EXPECT_EQ(dump(), before);
    EXPECT_EQ(recorder.count("group_modified 1"), 0u);
}

TEST_F(GroupTest, UndoDeleteIdsAndGeometryFollowing) {
    run("create box 1");
    run("create box 1");
    run("create group 'a'");
    run("create group 'b'");
    run("group 'a' add volume 1 2");
    run("group 'b' add group 1");
    run("delete group 1");
    EXPECT_EQ(TI::get_group_groups(2), Ids{}) << "a deleted group leaves its parents";
    EXPECT_EQ(recorder.count("group_deleted 1"), 1u);
    EXPECT_EQ(recorder.count("group_modified 2"), 2u); // the add, then losing group 1
    run("undo");
    EXPECT_EQ(TI::get_group_groups(2), Ids{1});
    EXPECT_EQ(recorder.count("group_created 1"), 2u);

    // A deleted volume leaves the group; a renumbered one is followed.
    run("delete volume 1");
    run("compress ids");
    EXPECT_EQ(TI::get_group_volumes(1), Ids{1});

    // Ids are never reused: the highest ever given plus one.
    run("delete group 2");
    run("create group 'c'");
    EXPECT_EQ(TI::parse_tarvo_list("group", "all"), (Ids{1, 3}));
    TI::set_max_group_id(10);
    TI::set_max_group_id(5); // only ever raised
    EXPECT_EQ(TI::get_next_group_id(), 11);
    TI::delete_all_groups();
    EXPECT_TRUE(TI::group_names_ids().empty());
    run("create group 'a'");
    run("reset");
    EXPECT_TRUE(TI::group_names_ids().empty());
}

} // namespace
