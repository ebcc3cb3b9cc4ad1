// The geometry commands of the command language: parsing only; the work is in GeometryModule.
#include "core/Command.h"
#include "core/Session.h"
#include "geometry/GeometryModule.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <map>

namespace tarvo::kernel {

namespace {

GeometryModule& geo() {
    return *geometry_module();
}

bool to_keys(Cursor& c, const EntityList& list, std::vector<EntityKey>& keys) {
    for (const auto& group : list.groups) {
        auto kind = parse_kind(group.type);
        if (!kind || !geo().handles(group.type))
            return c.fail("'" + group.type + "' is not a geometry type");
        for (int id : group.ids)
            keys.push_back({*kind, id});
    }
    return true;
}

// An entity list at the cursor, as geometry keys. `allow_all`: the bare word "all" means every
// body.
bool read_list(Cursor& c, std::vector<EntityKey>& keys, bool allow_all = false) {
    if (allow_all && c.keyword("all")) {
        for (int id : geo().model().ids(GeomKind::Body))
            keys.push_back({GeomKind::Body, id});
        return true;
    }
    EntityList list;
    if (!c.entity_list(list))
        return c.fail(c.expectation().empty() ? "expected an entity list" : c.expectation());
    return to_keys(c, list, keys);
}

bool pattern_keys(Cursor& c, std::vector<EntityKey>& keys) {
    for (const EntityList& list : c.pattern_lists())
        if (!to_keys(c, list, keys))
            return false;
    return true;
}

// Every length, coordinate and direction of these commands is read through need_length, so
// that no command can put the model beyond the size that the kernel works at (Command.h).
bool need_length(Cursor& c, double& v) {
    return c.length(v) || c.fail(c.expectation());
}

bool need_number(Cursor& c, double& v) {
    return c.number(v) || c.fail(c.expectation());
}

bool read_point(Cursor& c, gp_Pnt& p) {
    double x, y, z;
    if (!need_length(c, x) || !need_length(c, y) || !need_length(c, z))
        return false;
    p = gp_Pnt(x, y, z);
    return true;
}

// Trailing options of primitives: [at x y z] [axis x|y|z], in any order.
bool placement(Cursor& c, gp_Pnt& at, Axis& axis, bool allow_axis = true) {
    while (!c.at_end()) {
        if (c.keyword("at")) {
            if (!read_point(c, at))
                return false;
        } else if (allow_axis && c.keyword("axis")) {
            int which = 0;
            if (!c.choice({"x", "y", "z"}, which))
                return c.fail("expected x, y or z after 'axis'");
            axis = static_cast<Axis>(which);
        } else {
            return c.expect_end();
        }
    }
    return true;
}

bool keyword_length(Cursor& c, const char* word, double& v) {
    if (!c.keyword(word))
        return c.fail(std::string("expected '") + word + "'");
    return need_length(c, v);
}

const std::map<std::string, std::array<double, 3>>& colour_table() {
    static const std::map<std::string, std::array<double, 3>> table = {
        {"black", {0, 0, 0}},
        {"white", {1, 1, 1}},
        {"red", {1, 0, 0}},
        {"green", {0, 1, 0}},
        {"blue", {0, 0, 1}},
        {"yellow", {1, 1, 0}},
        {"cyan", {0, 1, 1}},
        {"magenta", {1, 0, 1}},
        {"gray", {0.5, 0.5, 0.5}},
        {"grey", {0.5, 0.5, 0.5}},
        {"orange", {1, 0.5, 0}},
        {"purple", {0.5, 0, 0.5}},
        {"brown", {0.6, 0.4, 0.2}},
        {"pink", {1, 0.75, 0.8}},
        {"lightblue", {0.68, 0.85, 0.9}},
        {"lightgreen", {0.56, 0.93, 0.56}},
        {"darkgreen", {0, 0.39, 0}},
        {"navy", {0, 0, 0.5}},
        {"gold", {1, 0.84, 0}},
        {"silver", {0.75, 0.75, 0.75}},
    };
    return table;
}

bool is_number_token(const Token& t) {
    if (t.quoted || t.comma || t.text.empty())
        return false;
    char* end = nullptr;
    std::strtod(t.text.c_str(), &end);
    return end && *end == '\0';
}

bool cmd_create_box(Cursor& c) {
    // One size makes a cube, three make a box; the words in front are optional.
    static constexpr const char* kWords[3][2] = {{"width", "x"}, {"depth", "y"}, {"height", "z"}};
    double size[3];
    int count = 0;
    for (; count < 3; ++count) {
        const std::size_t at = c.pos();
        const bool named = c.keyword(kWords[count][0]) || c.keyword(kWords[count][1]);
        if (!c.length(size[count])) {
            if (named || count == 0 || (c.peek() && is_number_token(*c.peek())))
                return c.fail(c.expectation());
            c.set_pos(at);
            break;
        }
    }
    if (count == 2)
        return c.fail("create box takes one size (a cube) or three (<dx> <dy> <dz>), not two");
    if (count == 1)
        size[1] = size[2] = size[0];
    gp_Pnt at(0, 0, 0);
    Axis axis = Axis::Z;
    return placement(c, at, axis, false) && geo().create_box(size[0], size[1], size[2], at);
}

bool cmd_create_cylinder(Cursor& c) {
    double r, h;
    if (!keyword_length(c, "radius", r) || !keyword_length(c, "height", h))
        return false;
    gp_Pnt at(0, 0, 0);
    Axis axis = Axis::Z;
    return placement(c, at, axis) && geo().create_cylinder(r, h, at, axis);
}

bool cmd_create_sphere(Cursor& c) {
    double r, inner = 0;
    if (!keyword_length(c, "radius", r))
        return false;
    if (c.keyword("inner")) {
        if (!keyword_length(c, "radius", inner))
            return false;
    }
    gp_Pnt at(0, 0, 0);
    Axis axis = Axis::Z;
    return placement(c, at, axis, false) && geo().create_sphere(r, inner, at);
}

bool cmd_create_cone(Cursor& c) {
    double r, top = 0, h;
    if (!keyword_length(c, "radius", r))
        return false;
    if (c.keyword("top")) {
        if (!keyword_length(c, "radius", top))
            return false;
    }
    if (!keyword_length(c, "height", h))
        return false;
    gp_Pnt at(0, 0, 0);
    Axis axis = Axis::Z;
    return placement(c, at, axis) && geo().create_cone(r, top, h, at, axis);
}

bool cmd_create_torus(Cursor& c) {
    double major, minor;
    if (!c.keyword("major") || !keyword_length(c, "radius", major))
        return c.fail("expected 'major radius <R>'");
    if (!c.keyword("minor") || !keyword_length(c, "radius", minor))
        return c.fail("expected 'minor radius <r>'");
    gp_Pnt at(0, 0, 0);
    Axis axis = Axis::Z;
    return placement(c, at, axis) && geo().create_torus(major, minor, at, axis);
}

bool cmd_create_vertex(Cursor& c) {
    gp_Pnt p;
    if (!read_point(c, p))
        return false;
    return c.expect_end() && geo().create_vertex(p);
}

bool cmd_create_curve(Cursor& c) {
    if (!c.keyword("vertex"))
        return c.fail("expected 'vertex <a> <b>'");
    int a, b;
    if (!c.integer(a) || (c.optional_comma(), !c.integer(b)))
        return c.fail("expected two vertex ids");
    return c.expect_end() && geo().create_curve(a, b);
}

bool cmd_create_surface(Cursor& c) {
    int which = 0;
    if (!c.choice({"rectangle", "circle"}, which))
        return c.fail("expected 'rectangle' or 'circle'");
    gp_Pnt at(0, 0, 0);
    Axis axis = Axis::Z;
    if (which == 0) {
        double w, h;
        if (!keyword_length(c, "width", w))
            return false;
        h = w;
        if (c.keyword("height") && !need_length(c, h))
            return false;
        return placement(c, at, axis) && geo().create_rectangle(w, h, at, axis);
    }
    double r;
    if (!keyword_length(c, "radius", r))
        return false;
    return placement(c, at, axis) && geo().create_circle(r, at, axis);
}

bool cmd_move(Cursor& c) {
    std::vector<EntityKey> keys;
    // "move volume 1 to 10 0 0": "1 to 10" would read as an id range, so a trailing
    // "to <x> <y> <z>" is split off before the list is parsed.
    const auto& tokens = c.all_tokens();
    const std::size_t n = tokens.size();
    if (n >= c.pos() + 5 && keyword_matches(tokens[n - 4].text, "to") && !tokens[n - 4].quoted &&
        is_number_token(tokens[n - 3]) && is_number_token(tokens[n - 2]) &&
        is_number_token(tokens[n - 1])) {
        Cursor list_part(std::vector<Token>(tokens.begin(), tokens.begin() + (n - 4)), c.pos());
        if (!read_list(list_part, keys) || !list_part.expect_end())
            return false;
        c.set_pos(n - 3);
        gp_Pnt p;
        return read_point(c, p) && geo().move_to(keys, p);
    }
    if (!read_list(c, keys))
        return false;
    gp_Pnt p;
    if (c.keyword("by")) {
        if (!read_point(c, p) || !c.expect_end())
            return false;
        return geo().move_by(keys, gp_Vec(p.X(), p.Y(), p.Z()));
    }
    if (c.keyword("to")) {
        if (!read_point(c, p) || !c.expect_end())
            return false;
        return geo().move_to(keys, p);
    }
    // Also accept "move volume 1 x 2 y 3": any of x, y, z with a value.
    gp_Vec v(0, 0, 0);
    bool any = false;
    int which = 0;
    while (c.choice({"x", "y", "z"}, which)) {
        double d;
        if (!need_length(c, d))
            return false;
        v.SetCoord(which + 1, d);
        any = true;
    }
    if (!any)
        return c.fail("expected 'by <dx> <dy> <dz>' or 'to <x> <y> <z>'");
    return c.expect_end() && geo().move_by(keys, v);
}

bool cmd_rotate(Cursor& c) {
    std::vector<EntityKey> keys;
    if (!read_list(c, keys))
        return false;
    double angle;
    if (!c.keyword("angle"))
        return c.fail("expected 'angle'");
    if (!c.angle(angle))
        return c.fail(c.expectation());
    if (!c.keyword("about"))
        return c.fail("expected 'about x|y|z|axis'");
    gp_Dir dir(0, 0, 1);
    int which = 0;
    if (c.choice({"x", "y", "z", "axis"}, which)) {
        if (which < 3) {
            dir = gp_Dir(which == 0, which == 1, which == 2);
        } else {
            gp_Pnt d;
            if (!read_point(c, d))
                return false;
            if (d.XYZ().Modulus() < 1e-12)
                return c.fail("the rotation axis must not be zero");
            dir = gp_Dir(d.XYZ());
        }
    } else {
        return c.fail("expected x, y, z or axis after 'about'");
    }
    gp_Pnt origin(0, 0, 0);
    if (c.keyword("origin") && !read_point(c, origin))
        return false;
    return c.expect_end() && geo().rotate(keys, angle, dir, origin);
}

bool cmd_scale(Cursor& c) {
    std::vector<EntityKey> keys;
    double f;
    if (!read_list(c, keys))
        return false;
    if (!c.keyword("factor"))
        return c.fail("expected 'factor <f>'");
    if (!need_number(c, f))
        return false;
    return c.expect_end() && geo().scale(keys, f);
}

bool cmd_reflect(Cursor& c) {
    std::vector<EntityKey> keys;
    if (!read_list(c, keys))
        return false;
    gp_Pnt n;
    if (!c.keyword("normal") || !read_point(c, n))
        return c.fail("expected 'normal <nx> <ny> <nz>'");
    if (n.XYZ().Modulus() < 1e-12)
        return c.fail("the normal must not be zero");
    return c.expect_end() && geo().reflect(keys, gp_Dir(n.XYZ()));
}

bool cmd_copy(Cursor& c) {
    std::vector<EntityKey> keys;
    if (!read_list(c, keys))
        return false;
    std::optional<gp_Vec> move;
    if (c.keyword("move")) {
        gp_Pnt p;
        if (!read_point(c, p))
            return false;
        move = gp_Vec(p.X(), p.Y(), p.Z());
    }
    return c.expect_end() && geo().copy(keys, move);
}

bool cmd_subtract(Cursor& c) {
    std::vector<EntityKey> tools, objects;
    if (!read_list(c, tools))
        return false;
    if (!c.keyword("from"))
        return c.fail("expected 'from'");
    if (!read_list(c, objects))
        return false;
    bool keep = c.keyword("keep");
    return c.expect_end() && geo().subtract(tools, objects, keep);
}

bool cmd_unite(Cursor& c) {
    std::vector<EntityKey> keys;
    if (!read_list(c, keys, true))
        return false;
    return c.expect_end() && geo().unite(keys);
}

bool cmd_intersect(Cursor& c) {
    std::vector<EntityKey> keys;
    if (!read_list(c, keys))
        return false;
    bool keep = c.keyword("keep");
    return c.expect_end() && geo().intersect(keys, keep);
}

bool cmd_webcut(Cursor& c) {
    std::vector<EntityKey> keys;
    if (!read_list(c, keys))
        return false;
    c.keyword("with");
    if (!c.keyword("plane"))
        return c.fail("expected 'plane'");
    gp_Pnt point(0, 0, 0);
    gp_Dir normal(0, 0, 1);
    int which = 0;
    if (c.keyword("normal")) {
        gp_Pnt n;
        if (!read_point(c, n))
            return false;
        if (n.XYZ().Modulus() < 1e-12)
            return c.fail("the normal must not be zero");
        normal = gp_Dir(n.XYZ());
        if (!c.keyword("point") || !read_point(c, point))
            return c.fail("expected 'point <x> <y> <z>'");
    } else if (c.choice({"x", "y", "z", "xplane", "yplane", "zplane"}, which)) {
        which %= 3;
        normal = gp_Dir(which == 0, which == 1, which == 2);
        if (c.keyword("offset")) {
            double off;
            if (!need_length(c, off))
                return false;
            point.SetCoord(which + 1, off);
        }
    } else {
        return c.fail("expected x, y, z or 'normal' after 'plane'");
    }
    return c.expect_end() && geo().webcut(keys, point, normal);
}

bool cmd_imprint(Cursor& c) {
    std::vector<EntityKey> keys;
    if (!read_list(c, keys, true))
        return false;
    return c.expect_end() && geo().imprint(keys);
}

bool cmd_merge(Cursor& c) {
    std::vector<EntityKey> keys;
    if (!read_list(c, keys, true))
        return false;
    return c.expect_end() && geo().merge(keys);
}

bool cmd_unmerge(Cursor& c) {
    std::vector<EntityKey> keys;
    if (!read_list(c, keys, true))
        return false;
    return c.expect_end() && geo().unmerge(keys);
}

bool cmd_delete(Cursor& c) {
    std::vector<EntityKey> keys;
    if (!read_list(c, keys, true))
        return false;
    return c.expect_end() && geo().remove(keys);
}

bool cmd_heal(Cursor& c) {
    std::vector<EntityKey> keys;
    if (!read_list(c, keys, true))
        return false;
    return c.expect_end() && geo().heal(keys);
}

CommandHandler cmd_import(const char* format) {
    return [format](Cursor& c) {
        std::string path;
        if (!c.string(path, true))
            return c.fail("expected a file name in quotes");
        bool heal = false, names = true;
        while (!c.at_end()) {
            if (c.keyword("heal"))
                heal = true;
            else if (c.keyword("names"))
                names = true;
            else if (c.keyword("nonames"))
                names = false;
            else
                return c.expect_end();
        }
        return geo().import_file(format, path, heal, names);
    };
}

CommandHandler cmd_export(const char* format) {
    return [format](Cursor& c) {
        std::string path;
        if (!c.string(path, true))
            return c.fail("expected a file name in quotes");
        std::vector<EntityKey> keys;
        bool overwrite = false;
        while (!c.at_end()) {
            if (c.keyword("overwrite")) {
                overwrite = true;
                continue;
            }
            if (!read_list(c, keys))
                return false;
        }
        return c.expect_end() && geo().export_file(format, path, overwrite, keys);
    };
}

bool cmd_name(Cursor& c) {
    std::vector<EntityKey> keys;
    if (!pattern_keys(c, keys))
        return false;
    std::string name;
    if (!c.string(name, true))
        return c.fail("expected a name in quotes");
    if (name.empty() || name.find_first_of(" \t*?") != std::string::npos)
        return c.fail("a name must not be empty nor contain blanks, '*' or '?'");
    return c.expect_end() && geo().set_name(keys, name);
}

bool cmd_color(Cursor& c) {
    std::vector<EntityKey> keys;
    if (!read_list(c, keys))
        return false;
    std::array<double, 4> rgba{0, 0, 0, 1};
    if (c.keyword("rgb")) {
        for (int i = 0; i < 3; ++i) {
            if (!need_number(c, rgba[static_cast<std::size_t>(i)]))
                return false;
            if (rgba[static_cast<std::size_t>(i)] < 0 || rgba[static_cast<std::size_t>(i)] > 1)
                return c.fail("colour components are between 0 and 1");
        }
    } else {
        std::string name;
        if (!c.string(name, true))
            return c.fail("expected a colour name or 'rgb <r> <g> <b>'");
        std::string lower;
        for (char ch : name)
            lower.push_back(static_cast<char>(std::tolower(static_cast<unsigned char>(ch))));
        auto it = colour_table().find(lower);
        if (it == colour_table().end())
            return c.fail("unknown colour '" + name + "'");
        rgba = {it->second[0], it->second[1], it->second[2], 1.0};
    }
    return c.expect_end() && geo().set_color(keys, rgba);
}

CommandHandler cmd_visibility(bool visible) {
    return [visible](Cursor& c) {
        std::vector<EntityKey> keys;
        if (!read_list(c, keys))
            return false;
        return c.expect_end() && geo().set_visible(keys, visible);
    };
}

bool cmd_compress_ids(Cursor& c) {
    return c.expect_end() && geo().compress_ids();
}

} // namespace

void register_geometry_commands() {
    const std::vector<CommandSpec> commands = {
        {"create box", cmd_create_box, true, "create box <dx> [<dy> <dz>] [at <x> <y> <z>]"},
        {"create cylinder", cmd_create_cylinder, true,
         "create cylinder radius <r> height <h> [at <x> <y> <z>] [axis x|y|z]"},
        {"create sphere", cmd_create_sphere, true,
         "create sphere radius <r> [inner radius <r>] [at <x> <y> <z>]"},
        {"create cone", cmd_create_cone, true,
         "create cone radius <r> top radius <r> height <h> [at <x> <y> <z>] [axis x|y|z]"},
        {"create torus", cmd_create_torus, true,
         "create torus major radius <R> minor radius <r> [at <x> <y> <z>] [axis x|y|z]"},
        {"create vertex", cmd_create_vertex, true, "create vertex <x> <y> <z>"},
        {"create curve", cmd_create_curve, true, "create curve vertex <a> <b>"},
        {"create surface", cmd_create_surface, true,
         "create surface rectangle width <w> [height <h>] | circle radius <r> [at ...] [axis ...]"},
        {"move", cmd_move, true, "move <list> by <dx> <dy> <dz> | to <x> <y> <z>"},
        {"rotate", cmd_rotate, true,
         "rotate <list> angle <deg> about x|y|z|axis <ax> <ay> <az> [origin <x> <y> <z>]"},
        {"scale", cmd_scale, true, "scale <list> factor <f>"},
        {"reflect", cmd_reflect, true, "reflect <list> normal <nx> <ny> <nz>"},
        {"copy", cmd_copy, true, "copy <list> [move <dx> <dy> <dz>]"},
        {"subtract", cmd_subtract, true, "subtract <list> from <list> [keep]"},
        {"unite", cmd_unite, true, "unite <list>"},
        {"intersect", cmd_intersect, true, "intersect <list> [keep]"},
        {"webcut", cmd_webcut, true,
         "webcut <list> plane x|y|z [offset <v>] | plane normal <n> point <p>"},
        {"imprint", cmd_imprint, true, "imprint <list>|all"},
        {"merge", cmd_merge, true, "merge <list>|all"},
        {"unmerge", cmd_unmerge, true, "unmerge <list>|all"},
        {"delete", cmd_delete, true, "delete <geometry list>|all"},
        {"heal", cmd_heal, true, "heal <list>|all"},
        {"import step", cmd_import("step"), true, "import step '<file>' [heal] [nonames]"},
        {"import iges", cmd_import("iges"), true, "import iges '<file>' [heal] [nonames]"},
        {"import brep", cmd_import("brep"), true, "import brep '<file>' [heal]"},
        {"export step", cmd_export("step"), false, "export step '<file>' [<list>] [overwrite]"},
        {"export iges", cmd_export("iges"), false, "export iges '<file>' [<list>] [overwrite]"},
        {"export brep", cmd_export("brep"), false, "export brep '<file>' [<list>] [overwrite]"},
        {"<list> name", cmd_name, true, "<list> name '<text>'"},
        {"color", cmd_color, true, "color <list> <name>|rgb <r> <g> <b>"},
        {"colour", cmd_color, true, "colour <list> <name>|rgb <r> <g> <b>"},
        {"hide", cmd_visibility(false), true, "hide <list>"},
        {"show", cmd_visibility(true), true, "show <list>"},
        {"compress ids", cmd_compress_ids, true, "compress ids"},
    };
    for (const CommandSpec& command : commands)
        register_command(command);
}

} // namespace tarvo::kernel
