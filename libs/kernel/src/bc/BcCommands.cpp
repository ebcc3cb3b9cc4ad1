// The analysis set-up commands: `create <condition kind> ...`, `modify <kind> <id> ...`,
// `delete <kind> <ids>`, materials and media, boundary layers and coordinate systems. The
// grammar is in docs/commands.md ("Loads, constraints and materials").

#include "bc/BcModule.h"
#include "core/Command.h"
#include "core/Session.h"
#include "core/Valfold.h"
#include "fe/FeModule.h"
#include "tarvo/TarvoTypes.h"

#include <cctype>

namespace tarvo::kernel::bc {

namespace {

using namespace TarvoInterface;

std::string upper(std::string text) {
    for (char& ch : text)
        ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
    return text;
}

bool read_targets(Cursor& c, std::vector<Target>& out) {
    const size_t start = c.pos();
    EntityList list;
    if (!c.entity_list(list))
        return c.fail(c.expectation().empty() ? "expected an entity list" : c.expectation());
    for (const auto& group : list.groups)
        for (int id : group.ids)
            out.push_back({group.type, id});
    if (out.empty()) {
        std::string text;
        for (size_t i = start; i < c.pos(); ++i)
            text += (text.empty() ? "" : " ") + c.all_tokens()[i].text;
        return c.fail("'" + text + "' names nothing that exists");
    }
    return true;
}

bool read_vector(Cursor& c, std::array<double, 3>& v) {
    return c.number(v[0]) && c.number(v[1]) && c.number(v[2]);
}

// Reads `top <v>`, `bottom <v>`, `middle <v>`, `gradient <v>` after `shell` into the areas.
bool read_shell_values(Cursor& c, Condition& bc, bool with_middle) {
    bc.shell = true;
    bc.areas.clear();
    std::vector<std::string_view> words{"top", "bottom"};
    if (with_middle) {
        words.push_back("middle");
        words.push_back("gradient");
    }
    const int areas[] = {TI_BC_SHELL_TOP, TI_BC_SHELL_BOTTOM, TI_BC_SHELL_MIDDLE,
                         TI_BC_SHELL_GRADIENT};
    int which = -1;
    while (c.choice(std::vector<std::string>(words.begin(), words.end()), which)) {
        double v = 0;
        if (!c.number(v))
            return false;
        bc.areas[areas[which]] = v;
    }
    if (bc.areas.empty())
        return c.fail("expected shell " +
                      std::string(with_middle ? "top, bottom, middle or " : "top or bottom ") +
                      "values");
    return true;
}

// The options of every kind, applied onto `bc` (for create after `on <list>`, for modify after
// the id). Unknown words fail.
bool read_options(Cursor& c, Condition& bc) {
    const int k = bc.kind;
    while (!c.at_end()) {
        if (c.keyword("name")) {
            if (!c.string(bc.name, true))
                return false;
        } else if (c.keyword("on")) {
            bc.on.clear();
            if (!read_targets(c, bc.on))
                return false;
        } else if (k == TI_BC_FORCE && c.keyword("magnitude")) {
            if (!c.number(bc.magnitude))
                return false;
        } else if (k == TI_BC_FORCE && c.keyword("direction")) {
            if (!read_vector(c, bc.direction))
                return false;
        } else if (k == TI_BC_FORCE && c.keyword("moment")) {
            if (!c.number(bc.moment) || !c.keyword("direction") ||
                !read_vector(c, bc.moment_direction))
                return c.fail("expected moment <m> direction <x> <y> <z>");
        } else if (k == TI_BC_PRESSURE && c.keyword("magnitude")) {
            if (!c.number(bc.pressure))
                return false;
        } else if (k == TI_BC_PRESSURE && c.keyword("function")) {
            if (!c.string(bc.function))
                return false;
        } else if ((k == TI_BC_DISPLACEMENT || k == TI_BC_VELOCITY || k == TI_BC_ACCELERATION) &&
                   c.keyword("dof")) {
            std::vector<int> dofs;
            int d = 0;
            if (c.keyword("all"))
                dofs = {1, 2, 3, 4, 5, 6};
            while (dofs.empty() || (c.peek() && std::isdigit(c.peek()->text[0]))) {
                if (!c.integer(d) || d < 1 || d > 6)
                    return c.fail("degrees of freedom are 1 to 6 (x y z rx ry rz)");
                dofs.push_back(d);
            }
            double value = 0;
            if (c.keyword("value") && !c.number(value))
                return false;
            for (int dof : dofs) {
                bc.dof_signs[dof - 1] = 1;
                bc.dof_values[dof - 1] = value;
            }
        } else if ((k == TI_BC_DISPLACEMENT || k == TI_BC_VELOCITY || k == TI_BC_ACCELERATION) &&
                   c.keyword("fixed")) {
            bc.dof_signs.fill(1);
            bc.dof_values.fill(0);
        } else if ((k == TI_BC_DISPLACEMENT || k == TI_BC_VELOCITY || k == TI_BC_ACCELERATION) &&
                   c.keyword("combine")) {
            if (!c.choice({"overwrite", "average", "smallest", "largest", "add"}, bc.combine))
                return c.fail("combine is overwrite, average, smallest, largest or add");
        } else if ((k == TI_BC_TEMPERATURE || k == TI_BC_HEATFLUX) && c.keyword("value")) {
            double v = 0;
            if (!c.number(v))
                return false;
            bc.shell = false;
            bc.areas = {{TI_BC_SOLID_TEMPERATURE, v}};
        } else if ((k == TI_BC_TEMPERATURE || k == TI_BC_HEATFLUX) && c.keyword("shell")) {
            if (!read_shell_values(c, bc, k == TI_BC_TEMPERATURE))
                return false;
        } else if (k == TI_BC_CONVECTION && c.keyword("coefficient")) {
            double h = 0, t = 0;
            if (!c.number(h) || !c.keyword("temperature") || !c.number(t))
                return c.fail("expected coefficient <h> temperature <t>");
            bc.shell = false;
            bc.areas = {{TI_BC_SOLID_CONVECTION_COEFFICIENT, h},
                        {TI_BC_SOLID_CONVECTION_TEMPERATURE, t}};
        } else if (k == TI_BC_CONVECTION && c.keyword("shell")) {
            bc.shell = true;
            bc.areas.clear();
            int side = -1;
            while (c.choice({"top", "bottom"}, side)) {
                double h = 0, t = 0;
                if (!c.keyword("coefficient") || !c.number(h) || !c.keyword("temperature") ||
                    !c.number(t))
                    return c.fail("expected top|bottom coefficient <h> temperature <t>");
                bc.areas[side == 0 ? TI_BC_SHELL_TOP_CONVECTION_COEFFICIENT
                                   : TI_BC_SHELL_BOTTOM_CONVECTION_COEFFICIENT] = h;
                bc.areas[side == 0 ? TI_BC_SHELL_TOP : TI_BC_SHELL_BOTTOM] = t;
            }
            if (bc.areas.empty())
                return c.fail("expected shell top|bottom coefficient <h> temperature <t>");
        } else if (k == TI_BC_CONTACT_PAIR && c.keyword("friction")) {
            if (!c.number(bc.friction))
                return false;
        } else if (k == TI_BC_CONTACT_PAIR && c.keyword("tolerance")) {
            if (!c.number(bc.tolerance))
                return false;
        } else if (k == TI_BC_CONTACT_PAIR && c.keyword("lower")) {
            if (!c.keyword("tolerance") || !c.number(bc.tol_lower))
                return c.fail("expected lower tolerance <t>");
        } else if (k == TI_BC_CONTACT_PAIR && c.keyword("tied")) {
            bc.tied = true;
        } else if (k == TI_BC_CONTACT_PAIR && c.keyword("untied")) {
            bc.tied = false;
        } else if (k == TI_BC_CONTACT_PAIR && c.keyword("general")) {
            bc.general = true;
        } else if (k == TI_BC_CONTACT_PAIR && c.keyword("exterior")) {
            bc.exterior = true;
        } else if (k == TI_BC_CONTACT_PAIR && c.keyword("interior")) {
            bc.exterior = false;
        } else if (k == TI_BC_CONSTRAINT && c.keyword("reference")) {
            std::vector<Target> ref;
            if (!read_targets(c, ref))
                return false;
            if (ref.size() != 1 || ref[0].type != "vertex")
                return c.fail("the reference of a constraint is one vertex");
            bc.reference = ref[0];
        } else if (k == TI_BC_CONSTRAINT && c.keyword("dependent")) {
            bc.on.clear();
            if (!read_targets(c, bc.on))
                return false;
        } else {
            return c.fail("unexpected '" + c.peek()->text + "' for a " + kind_by_code(k)->word);
        }
    }
    return c.expect_end();
}

// What each kind needs before it is stored.
bool complete(Cursor& c, const Condition& bc) {
    const std::string word = kind_by_code(bc.kind)->word;
    if ((bc.kind == TI_BC_TEMPERATURE || bc.kind == TI_BC_HEATFLUX ||
         bc.kind == TI_BC_CONVECTION) &&
        bc.areas.empty())
        return c.fail("a " + word + " needs its values");
    if ((bc.kind == TI_BC_DISPLACEMENT || bc.kind == TI_BC_VELOCITY ||
         bc.kind == TI_BC_ACCELERATION) &&
        bc.dof_signs == std::array<int, 6>{})
        return c.fail("a " + word + " needs at least one dof (or 'fixed')");
    if (bc.kind == TI_BC_CONSTRAINT && bc.reference.id == 0)
        return c.fail("a constraint needs 'reference vertex <v>'");
    return true;
}

// `create <kind> [id <n>] on <list> <options>`.
CommandHandler create_condition(int kind) {
    return [kind](Cursor& c) {
        Condition bc;
        bc.kind = kind;
        if (c.keyword("id") && !c.integer(bc.id))
            return false;
        if (kind == TI_BC_CONTACT_PAIR) {
            // Two sidesets, the first the one that moves onto the second.
            for (int side = 0; side < 2; ++side) {
                int s = 0;
                if (!c.keyword("sideset") || !c.integer(s))
                    return c.fail("expected contact pair sideset <a> sideset <b>");
                bc.on.push_back({"sideset", s});
            }
        } else if (kind == TI_BC_CONSTRAINT) {
            int type = -1;
            if (!c.choice({"rigid", "distributing"}, type))
                return c.fail("expected rigid or distributing");
            bc.constraint_type = type == 0 ? "rigid" : "distributing";
        } else if (!c.keyword("on")) {
            return c.fail("expected 'on <list>'");
        } else if (!read_targets(c, bc.on)) {
            return false;
        }
        if (!read_options(c, bc) || !complete(c, bc))
            return false;
        return bc_module()->put_condition(std::move(bc), true);
    };
}

bool create_cfd(Cursor& c) {
    std::vector<std::string> words;
    for (const KindInfo& k : kinds())
        if (is_cfd_kind(k.code))
            words.push_back(k.word);
    int which = -1;
    if (!c.choice(words, which))
        return c.fail("expected a CFD kind (wall, velocityinlet, pressureoutlet, ...)");
    return create_condition(TI_BC_CFD_FIRST + which)(c);
}

// The kind word of modify and delete: one word, "contact pair|region", or "cfd".
bool read_kind(Cursor& c, int& kind, bool& any_cfd) {
    std::vector<std::string> words{"contact", "cfd"};
    for (const KindInfo& k : kinds())
        if (k.code <= TI_BC_HEATFLUX)
            words.push_back(k.word);
    int which = -1;
    any_cfd = false;
    if (!c.choice(words, which))
        return c.fail("expected a condition kind (force, pressure, ..., contact pair, cfd)");
    if (which == 0) {
        int sub = -1;
        if (!c.choice({"pair", "region"}, sub))
            return c.fail("expected contact pair or contact region");
        kind = sub == 0 ? TI_BC_CONTACT_PAIR : TI_BC_CONTACT_REGION;
    } else if (which == 1) {
        any_cfd = true;
        kind = TI_BC_CFD_FIRST;
    } else {
        kind = kind_by_word(words[static_cast<size_t>(which)])->code;
    }
    return true;
}

bool modify_condition(Cursor& c) {
    int kind = 0, id = 0;
    bool cfd = false;
    if (!read_kind(c, kind, cfd) || !c.integer(id))
        return false;
    BcModule& m = *bc_module();
    const Condition* existing = cfd ? m.cfd_condition(id) : m.condition(kind, id);
    if (!existing)
        return c.fail((cfd ? std::string("cfd condition") : kind_by_code(kind)->word) + " " +
                      std::to_string(id) + " does not exist");
    Condition bc = *existing;
    if (!read_options(c, bc) || !complete(c, bc))
        return false;
    return m.put_condition(std::move(bc), false);
}

bool delete_condition(Cursor& c) {
    int kind = 0;
    bool cfd = false;
    if (!read_kind(c, kind, cfd))
        return false;
    std::vector<int> ids;
    int id = 0;
    while (c.integer(id))
        ids.push_back(id);
    if (ids.empty() || !c.expect_end())
        return c.fail("expected the ids to delete");
    BcModule& m = *bc_module();
    if (cfd)
        for (int cfd_id : ids)
            if (const Condition* existing = m.cfd_condition(cfd_id))
                kind = existing->kind;
    return m.delete_conditions(kind, ids);
}

// ---- Materials ---------------------------------------------------------------------------------

// A material by quoted name or id.
const Material* read_material(Cursor& c, bool cfd) {
    const BcModule& m = *bc_module();
    const Material* found = nullptr;
    std::string name;
    int id = 0;
    if (c.peek() && c.peek()->quoted && c.string(name))
        found = m.material_by_name(name);
    else if (c.integer(id))
        found = m.material(id);
    else {
        c.fail(std::string("expected the ") + (cfd ? "medium" : "material") + "'s name or id");
        return nullptr;
    }
    if (!found)
        c.fail(std::string(cfd ? "medium " : "material ") +
               (name.empty() ? std::to_string(id) : "'" + name + "'") + " does not exist");
    return found;
}

// `property '<p>' value <v> | vector <v...> | table <row>, <row>, ...` and `remove property`.
bool read_material_options(Cursor& c, Material& mat) {
    PropertyCatalog& catalog = bc_module()->properties();
    while (!c.at_end()) {
        if (c.keyword("name")) {
            if (!c.string(mat.name, true))
                return false;
        } else if (!mat.cfd && c.keyword("group")) {
            if (!c.string(mat.group, true))
                return false;
        } else if (mat.cfd && c.keyword("type")) {
            int type = -1;
            if (!c.choice({"fluid", "porous", "solid"}, type))
                return c.fail("a medium is fluid, porous or solid");
            mat.group = type == 0 ? "fluid" : type == 1 ? "porous" : "solid";
            mat.properties[TI_MEDIA_TYPE_PROPERTY] = {0, double(type), {}, {}};
        } else if (c.keyword("remove")) {
            std::string name;
            if (!c.keyword("property") || !c.string(name, true))
                return c.fail("expected remove property '<name>'");
            if (!mat.properties.erase(upper(name)))
                return c.fail("'" + mat.name + "' has no property '" + upper(name) + "'");
        } else if (c.keyword("property")) {
            std::string name;
            if (!c.string(name, true))
                return false;
            name = upper(name);
            PropertyValue value;
            int shape = -1;
            if (!c.choice({"value", "vector", "table"}, shape))
                return c.fail("expected value, vector or table after property '" + name + "'");
            value.kind = shape;
            double v = 0;
            if (shape == 0 && !c.number(value.scalar))
                return false;
            if (shape == 1)
                while (c.peek() && !c.peek()->quoted && c.number(v))
                    value.vector.push_back(v);
            if (shape == 2) {
                value.table.emplace_back();
                while (c.peek() && !c.peek()->quoted) {
                    if (c.peek()->comma) {
                        c.optional_comma();
                        value.table.emplace_back();
                    } else if (c.number(v)) {
                        value.table.back().push_back(v);
                    } else {
                        break;
                    }
                }
                if (value.table.back().empty())
                    value.table.pop_back();
            }
            if (shape == 1 && value.vector.empty())
                return c.fail("a vector needs numbers");
            std::string why;
            const PropertyRecord* def = catalog.define(name, shape, why);
            if (!def)
                return c.fail(why);
            // A table property may have been defined with a header row: keep its kind.
            value.kind = def->kind;
            mat.properties[name] = std::move(value);
        } else {
            return c.fail("unexpected '" + c.peek()->text + "'");
        }
    }
    return c.expect_end();
}

CommandHandler create_material(bool cfd) {
    return [cfd](Cursor& c) {
        Material mat;
        mat.cfd = cfd;
        mat.group = cfd ? "fluid" : "structural";
        if (cfd)
            mat.properties[TI_MEDIA_TYPE_PROPERTY] = {0, double(TI_MEDIA_FLUID), {}, {}};
        if (!c.string(mat.name, true))
            return c.fail(std::string("expected the ") + (cfd ? "medium" : "material") + "'s name");
        if (!read_material_options(c, mat))
            return false;
        return bc_module()->put_material(std::move(mat), true);
    };
}

CommandHandler modify_material(bool cfd) {
    return [cfd](Cursor& c) {
        const Material* found = read_material(c, cfd);
        if (!found)
            return false;
        Material mat = *found;
        if (!read_material_options(c, mat))
            return false;
        return bc_module()->put_material(std::move(mat), false);
    };
}

CommandHandler delete_material(bool cfd) {
    return [cfd](Cursor& c) {
        const Material* found = read_material(c, cfd);
        if (!found || !c.expect_end())
            return false;
        return bc_module()->delete_material(found->id);
    };
}

// `material '<name>' block <ids>`: the material of those element blocks.
bool assign_material(Cursor& c) {
    const Material* found = read_material(c, false);
    if (!found)
        return false;
    if (!c.keyword("block"))
        return c.fail("expected block <ids>");
    std::vector<int> blocks;
    int id = 0;
    while (c.integer(id))
        blocks.push_back(id);
    if (!c.expect_end())
        return false;
    return bc_module()->assign_material(found->id, blocks);
}

// ---- Boundary layers and coordinate systems ---------------------------------------------------

bool read_layer_options(Cursor& c, BoundaryLayer& layer) {
    while (!c.at_end()) {
        int which = -1;
        if (c.keyword("uniform")) {
            layer.algorithm = "uniform";
            if (!c.keyword("height") || !c.number(layer.first_height) || !c.keyword("growth") ||
                !c.number(layer.growth) || !c.keyword("rows") || !c.integer(layer.rows))
                return c.fail("expected uniform height <h> growth <g> rows <n>");
        } else if (c.keyword("aspect")) {
            if (!c.choice({"first", "last"}, which))
                return c.fail("expected aspect first or aspect last");
            if (which == 0) {
                layer.algorithm = "aspect first";
                if (!c.number(layer.first_aspect) || !c.keyword("growth") ||
                    !c.number(layer.growth) || !c.keyword("rows") || !c.integer(layer.rows))
                    return c.fail("expected aspect first <a> growth <g> rows <n>");
            } else {
                layer.algorithm = "aspect last";
                if (!c.keyword("height") || !c.number(layer.first_height) || !c.keyword("rows") ||
                    !c.integer(layer.rows) || !c.keyword("aspect") || !c.number(layer.last_aspect))
                    return c.fail("expected aspect last height <h> rows <n> aspect <a>");
            }
        } else if (c.keyword("continuity")) {
            if (!c.choice({"on", "off"}, which))
                return false;
            layer.continuity = which == 0;
        } else if (c.keyword("add")) {
            int a = 0, b = 0;
            if (c.keyword("curve")) {
                if (!c.integer(a) || !c.keyword("surface") || !c.integer(b))
                    return c.fail("expected add curve <c> surface <s>");
                layer.curve_surface.push_back({a, b});
            } else if (c.keyword("surface")) {
                if (!c.integer(a) || !c.keyword("volume") || !c.integer(b))
                    return c.fail("expected add surface <s> volume <v>");
                layer.surface_volume.push_back({a, b});
            } else {
                return c.fail("expected add curve <c> surface <s> or add surface <s> volume <v>");
            }
        } else {
            return c.fail("unexpected '" + c.peek()->text + "'");
        }
    }
    return c.expect_end();
}

bool create_layer(Cursor& c) {
    BoundaryLayer layer;
    layer.id = bc_module()->next_id(kLayerSpace);
    if (c.peek() && std::isdigit(c.peek()->text[0]) && !c.integer(layer.id))
        return false;
    if (c.at_end())
        return c.fail("expected uniform, aspect first or aspect last");
    if (!read_layer_options(c, layer))
        return false;
    return bc_module()->put_layer(std::move(layer), true);
}

// `boundary layer <id> <options>`, and the intersection types
// `boundary layer vertex <v> surface <s> type '<t>'`, `... curve <c> volume <v> type '<t>'`.
bool modify_layer(Cursor& c) {
    BcModule& m = *bc_module();
    int a = 0, b = 0;
    std::string type;
    const auto intersection = [&](bool vertex) {
        if (!c.integer(a) || !c.keyword(vertex ? "surface" : "volume") || !c.integer(b) ||
            !c.keyword("type") || !c.string(type, true) || !c.expect_end())
            return false;
        return m.set_intersection(vertex, a, b, type);
    };
    if (c.keyword("vertex"))
        return intersection(true);
    if (c.keyword("curve"))
        return intersection(false);
    int id = 0;
    if (!c.integer(id))
        return false;
    const auto it = m.state().layers.find(id);
    if (it == m.state().layers.end())
        return c.fail("boundary layer " + std::to_string(id) + " does not exist");
    BoundaryLayer layer = *it->second;
    if (!read_layer_options(c, layer))
        return false;
    return m.put_layer(std::move(layer), false);
}

CommandHandler delete_ids(bool layers) {
    return [layers](Cursor& c) {
        std::vector<int> ids;
        int id = 0;
        while (c.integer(id))
            ids.push_back(id);
        if (ids.empty() || !c.expect_end())
            return c.fail("expected the ids to delete");
        return layers ? bc_module()->delete_layers(ids)
                      : bc_module()->delete_coordinate_systems(ids);
    };
}

// `create coordinate system [rectangular|cylindrical|spherical] [origin <x y z>]
// [zaxis <x y z>] [xzplane <x y z>] [name '<n>']`
bool create_coordinate_system(Cursor& c) {
    CoordinateSystem cs;
    int which = -1;
    if (c.choice({"rectangular", "cylindrical", "spherical"}, which))
        cs.type = which == 0 ? "rectangular" : which == 1 ? "cylindrical" : "spherical";
    while (!c.at_end()) {
        if (c.keyword("origin")) {
            if (!read_vector(c, cs.origin))
                return false;
        } else if (c.keyword("zaxis")) {
            if (!read_vector(c, cs.z_axis))
                return false;
        } else if (c.keyword("xzplane")) {
            if (!read_vector(c, cs.x_axis))
                return false;
        } else if (c.keyword("name")) {
            if (!c.string(cs.name, true))
                return false;
        } else {
            return c.fail("unexpected '" + c.peek()->text + "'");
        }
    }
    return c.expect_end() && bc_module()->put_coordinate_system(std::move(cs));
}

} // namespace

// `block <id> material '<name>'`, the rest of the line after fe's block command read the id.
static bool block_material(Cursor& c, int block) {
    const Material* found = read_material(c, false);
    if (!found || !c.expect_end())
        return false;
    return bc_module()->assign_material(found->id, {block});
}

void register_bc_commands() {
    fe::set_block_material_handler(block_material);
    for (const KindInfo& k : kinds()) {
        if (is_cfd_kind(k.code))
            continue;
        const std::string word = k.word;
        std::string usage = "create " + word + " on <list> ...";
        if (k.code == TI_BC_CONTACT_PAIR)
            usage = "create contact pair sideset <a> sideset <b> [friction <f>] ...";
        if (k.code == TI_BC_CONSTRAINT)
            usage = "create constraint rigid|distributing reference vertex <v> dependent <list>";
        register_command({"create " + word, create_condition(k.code), true, usage});
    }
    register_command({"create cfd", create_cfd, true, "create cfd <kind> on sideset <ids>"});
    register_command({"modify", modify_condition, true, "modify <kind> <id> <options>"});
    for (const char* word :
         {"force", "pressure", "heatflux", "temperature", "convection", "displacement",
          "acceleration", "velocity", "constraint", "contact", "cfd"})
        register_command({std::string("delete ") + word,
                          [](Cursor& c) {
                              // Let read_kind see the kind word again.
                              c.set_pos(c.pos() - 1);
                              return delete_condition(c);
                          },
                          true, "delete <kind> <ids>"});
    register_command({"create material", create_material(false), true,
                      "create material '<name>' [group '<g>'] [property '<p>' value|vector|table "
                      "...]..."});
    register_command({"create media", create_material(true), true,
                      "create media '<name>' type fluid|porous|solid"});
    register_command({"modify material", modify_material(false), true,
                      "modify material '<name>' [name '<n>'] [property ...] [remove property "
                      "'<p>']"});
    register_command({"modify media", modify_material(true), true,
                      "modify media '<name>' type fluid|porous|solid"});
    register_command(
        {"delete material", delete_material(false), true, "delete material '<name>'|<id>"});
    register_command({"delete media", delete_material(true), true, "delete media '<name>'|<id>"});
    register_command({"material", assign_material, true, "material '<name>' block <ids>"});
    register_command({"create boundary layer", create_layer, true,
                      "create boundary layer [<id>] uniform|aspect first|aspect last ..."});
    register_command({"boundary layer", modify_layer, true, "boundary layer <id> <options>"});
    register_command(
        {"delete boundary layer", delete_ids(true), true, "delete boundary layer <ids>"});
    register_command({"create coordinate system", create_coordinate_system, true,
                      "create coordinate system [rectangular|cylindrical|spherical] ..."});
    register_command(
        {"delete coordinate system", delete_ids(false), true, "delete coordinate system <ids>"});
}

} // namespace tarvo::kernel::bc
