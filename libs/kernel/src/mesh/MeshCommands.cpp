// The meshing commands: `mesh <list>` and `delete mesh <list> [propagate]`.

#include "core/Command.h"
#include "core/Session.h"
#include "geometry/GeometryModule.h"
#include "mesh/MeshModule.h"

namespace tarvo::kernel::mesh {

namespace {

// Geometry entities of the list at the cursor: bodies, volumes, surfaces and curves.
bool read_geometry(Cursor& c, std::vector<EntityKey>& keys) {
    EntityList list;
    if (!c.entity_list(list))
        return c.fail(c.expectation().empty() ? "expected an entity list" : c.expectation());
    for (const auto& group : list.groups) {
        const auto kind = parse_kind(group.type);
        if (!kind || *kind == GeomKind::Vertex)
            return c.fail("'" + group.type +
                          "' cannot be meshed: list bodies, volumes, "
                          "surfaces or curves");
        for (int id : group.ids)
            keys.push_back({*kind, id});
    }
    if (keys.empty())
        return c.fail("nothing to mesh: the list is empty");
    return true;
}

bool mesh_command(Cursor& c) {
    std::vector<EntityKey> keys;
    if (!read_geometry(c, keys) || !c.expect_end())
        return false;
    return mesh_module()->mesh(keys);
}

bool delete_mesh_command(Cursor& c) {
    std::vector<EntityKey> keys;
    if (!read_geometry(c, keys))
        return false;
    const bool propagate = c.keyword("propagate");
    if (!c.expect_end())
        return false;
    return mesh_module()->delete_mesh(keys, propagate);
}

} // namespace

void register_quality_commands();
void register_smooth_commands();
void register_refine_commands();

void register_mesh_commands() {
    register_quality_commands();
    register_smooth_commands();
    register_refine_commands();
    register_command({"mesh", mesh_command, true, "mesh <list>"});
    register_command({"delete mesh", delete_mesh_command, true, "delete mesh <list> [propagate]"});
}

} // namespace tarvo::kernel::mesh
