// The finite-element commands: `block`, `nodeset`, `sideset`, `delete block|nodeset|sideset`
// and `export mesh`.

#include "core/Command.h"
#include "core/Session.h"
#include "fe/FeModule.h"
#include "fe/MeshExport.h"
#include "geometry/GeometryModule.h"
#include "mesh/MeshModule.h"

namespace tarvo::kernel::fe {

namespace {

// The entities of a list as members: bodies become their volumes.
bool read_members(Cursor& c, std::vector<Member>& out) {
    EntityList list;
    if (!c.entity_list(list))
        return c.fail(c.expectation().empty() ? "expected an entity list" : c.expectation());
    for (const auto& group : list.groups) {
        for (int id : group.ids) {
            if (group.type == "body") {
                for (int v :
                     geometry_module()->model().relatives(GeomKind::Body, id, GeomKind::Volume))
                    out.push_back({Member::Type::Geometry, 3, ElemKind::Hex, v});
            } else if (const auto kind = parse_kind(group.type)) {
                out.push_back(
                    {Member::Type::Geometry, mesh::dim_of_kind(*kind), ElemKind::Hex, id});
            } else if (const auto ek = mesh::elem_kind_from_word(group.type)) {
                out.push_back({Member::Type::Element, 0, *ek, id});
            } else if (group.type == "node") {
                out.push_back({Member::Type::Node, 0, ElemKind::Hex, id});
            } else {
                return c.fail("'" + group.type + "' cannot go into a block or set");
            }
        }
    }
    if (out.empty())
        return c.fail("the list is empty");
    return true;
}

bool read_id(Cursor& c, const char* type, int& id) {
    if (!c.integer(id))
        return c.fail("expected a " + std::string(type) + " id, " + c.expectation());
    return true;
}

BlockMaterialHandler g_block_material;

bool block_command(Cursor& c) {
    int id = 0;
    if (!read_id(c, "block", id))
        return false;
    int verb = -1;
    if (!c.choice({"add", "remove", "element", "name", "attribute", "description", "material"},
                  verb))
        return c.fail("expected add, remove, element type, name, attribute, description or "
                      "material after 'block " +
                      std::to_string(id) + "'");
    if (verb == 6)
        return g_block_material ? g_block_material(c, id)
                                : c.fail("materials are not available in this kernel");
    FeModule& fe = *fe_module();
    if (verb <= 1) {
        std::vector<Member> members;
        if (!read_members(c, members) || !c.expect_end())
            return false;
        return verb == 0 ? fe.block_add(id, members) : fe.block_remove(id, members);
    }
    if (verb == 2) {
        std::string type;
        if (!c.keyword("type") || !c.string(type, true) || !c.expect_end())
            return false;
        return fe.block_element_type(id, type);
    }
    if (verb == 3 || verb == 5) {
        std::string text;
        if (!c.string(text, true) || !c.expect_end())
            return false;
        return verb == 3 ? fe.block_name(id, text) : fe.set_description("block", id, text);
    }
    int which = -1;
    if (!c.choice({"count", "index"}, which))
        return false;
    if (which == 0) {
        int count = 0;
        if (!c.integer(count) || !c.expect_end())
            return false;
        return fe.block_attribute_count(id, count);
    }
    int index = 0;
    double value = 0;
    if (!c.integer(index) || !c.keyword("value") || !c.number(value))
        return false;
    std::optional<std::string> name;
    if (c.keyword("name")) {
        name.emplace();
        if (!c.string(*name, true))
            return false;
    }
    if (!c.expect_end())
        return false;
    return fe.block_attribute(id, index, value, name);
}

// The start the set commands share: `<type> <id> name|description '<text>'` is done here (Named,
// or Failed), and `<type> <id> add` is left to the caller (Add).
enum class SetHead { Failed, Named, Add };
SetHead set_head(Cursor& c, const char* type, int& id) {
    int verb = -1;
    if (!read_id(c, type, id) || !c.choice({"add", "name", "description"}, verb))
        return SetHead::Failed;
    if (verb == 0)
        return SetHead::Add;
    std::string text;
    if (!c.string(text, true) || !c.expect_end())
        return SetHead::Failed;
    const bool ok = verb == 1 ? fe_module()->set_name(type, id, text)
                              : fe_module()->set_description(type, id, text);
    return ok ? SetHead::Named : SetHead::Failed;
}

bool nodeset_command(Cursor& c) {
    int id = 0;
    if (const SetHead head = set_head(c, "nodeset", id); head != SetHead::Add)
        return head == SetHead::Named;
    std::vector<Member> members;
    if (!read_members(c, members) || !c.expect_end())
        return false;
    return fe_module()->nodeset_add(id, members);
}

bool sideset_command(Cursor& c) {
    int id = 0;
    if (const SetHead head = set_head(c, "sideset", id); head != SetHead::Add)
        return head == SetHead::Named;
    std::vector<Member> members;
    if (!read_members(c, members))
        return false;
    std::vector<int> surfaces;
    for (const Member& m : members) {
        if (m.type != Member::Type::Geometry || m.dim != 2)
            return c.fail("a sideset holds surfaces, not " + describe(m));
        surfaces.push_back(m.id);
    }
    int wrt = 0;
    if (c.keyword("wrt") && (!c.keyword("volume") || !c.integer(wrt)))
        return false;
    if (!c.expect_end())
        return false;
    return fe_module()->sideset_add(id, surfaces, wrt);
}

CommandHandler delete_command(std::string type) {
    return [type](Cursor& c) {
        if (c.at_end())
            return c.fail("expected the " + type + " ids to delete");
        const std::vector<int> ids = parse_entity_ids(type, c.rest());
        c.set_pos(c.all_tokens().size());
        return fe_module()->remove(type, ids);
    };
}

bool export_mesh_command(Cursor& c) {
    std::string path, word;
    if (!c.string(path, false))
        return c.fail("expected the file name in quotes");
    if (c.keyword("format") && !c.string(word, true))
        return c.fail("expected exodus, gmsh, vtu or abaqus after 'format'");
    const bool overwrite = c.keyword("overwrite");
    if (!c.expect_end())
        return false;
    const auto format = mesh_format(word, path);
    if (!format)
        return c.fail("unknown mesh format '" + word + "' (exodus, gmsh, vtu, abaqus)");
    return fe_module()->export_mesh(path, overwrite, *format);
}

// `set copy block|nodeset|sideset on geometry copy on|off|use_original`.
bool copy_setting_command(Cursor& c) {
    int which = 0;
    std::string value;
    if (!c.choice({"block", "nodeset", "sideset"}, which))
        return c.fail("expected block, nodeset or sideset after 'set copy'");
    if (!c.keyword("on") || !c.keyword("geometry") || !c.keyword("copy"))
        return c.fail("expected 'on geometry copy'");
    if (!c.choice({"on", "off", "use_original"}, value) || !c.expect_end())
        return c.fail("expected on, off or use_original");
    return fe_module()->set_copy_setting(which, value);
}

} // namespace

void set_block_material_handler(BlockMaterialHandler handler) {
    g_block_material = std::move(handler);
}

void register_fe_commands() {
    register_command(
        {"block", block_command, true,
         "block <id> add|remove <list> | element type <type> | name|description '<text>' "
         "| attribute count <n> | attribute index <i> value <v> [name '<text>'] "
         "| material '<name>'"});
    register_command(
        {"nodeset", nodeset_command, true, "nodeset <id> add <list> | name|description '<text>'"});
    register_command(
        {"sideset", sideset_command, true,
         "sideset <id> add <surface list> [wrt volume <v>] | name|description '<text>'"});
    register_command({"delete block", delete_command("block"), true, "delete block <ids>"});
    register_command({"delete nodeset", delete_command("nodeset"), true, "delete nodeset <ids>"});
    register_command({"delete sideset", delete_command("sideset"), true, "delete sideset <ids>"});
    register_command({"set copy", copy_setting_command, false,
                      "set copy block|nodeset|sideset on geometry copy on|off|use_original"});
    register_command({"export mesh", export_mesh_command, false,
                      "export mesh '<file>' [format exodus|gmsh|vtu|abaqus] [overwrite]"});
}

} // namespace tarvo::kernel::fe
