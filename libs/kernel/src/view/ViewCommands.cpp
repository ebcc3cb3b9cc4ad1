// The view and selection commands of the command language: parsing and messages; the state and
// its events are in ViewState. None of them is undoable: they change what is shown and picked,
// not the model. Every handler parses the whole line before it changes anything.

#include "core/Command.h"
#include "core/EntityList.h"
#include "core/Session.h"
#include "view/ViewState.h"

#include <cmath>

namespace tarvo::kernel {

namespace {

ViewState& view() {
    return *view_state();
}

std::string on_off(bool on) {
    return on ? "on" : "off";
}

// "on" or "off", then the end of the line.
bool read_switch(Cursor& c, bool& on) {
    int which = 0;
    if (!c.choice({"on", "off"}, which) || !c.expect_end()) {
        return false;
    }
    on = which == 0;
    return true;
}

CommandHandler switch_command(bool ViewState::*member, const std::string& what) {
    return [member, what](Cursor& c) {
        bool on = false;
        if (!read_switch(c, on)) {
            return false;
        }
        view().*member = on;
        print(what + " is " + on_off(on));
        return true;
    };
}

bool read_point(Cursor& c, std::array<double, 3>& p) {
    for (double& v : p) {
        if (!c.number(v)) {
            return false;
        }
    }
    return c.expect_end();
}

std::vector<PickedEntity> entities_of(const EntityList& list) {
    std::vector<PickedEntity> entities;
    for (const auto& group : list.groups) {
        for (int id : group.ids) {
            entities.emplace_back(group.type, id);
        }
    }
    return entities;
}

bool read_list(Cursor& c, EntityList& list) {
    if (!c.entity_list(list)) {
        return c.fail(c.expectation().empty() ? "expected an entity list" : c.expectation());
    }
    return c.expect_end();
}

bool cmd_graphics_mode(Cursor& c) {
    const Token* token = c.peek();
    const int mode = token && !token->quoted ? render_mode_from_name(token->text) : 0;
    if (mode == 0) {
        return c.fail("expected wireframe, hiddenline, flatshade, smoothshade or transparent" +
                      (token ? ", found '" + token->text + "'" : std::string()));
    }
    c.set_pos(c.pos() + 1);
    if (!c.expect_end() || !view().set_render_mode(mode)) {
        return false;
    }
    print("Graphics mode is " + render_mode_name(mode));
    return true;
}

bool cmd_graphics_rubberband(Cursor& c) {
    int shape = 0;
    if (!c.choice({"box", "polygon", "circle"}, shape) || !c.expect_end()) {
        return false;
    }
    view().rubberband_shape = shape;
    print(std::string("Rubber-band selection is a ") + (shape == kRubberbandBox       ? "box"
                                                        : shape == kRubberbandPolygon ? "polygon"
                                                                                      : "circle"));
    return true;
}

bool cmd_select(Cursor& c) {
    if (c.keyword("none")) {
        if (!c.expect_end()) {
            return false;
        }
        view().clear_selection();
        print("Nothing selected");
        return true;
    }
    int step = 0;
    if (c.choice({"next", "previous"}, step)) {
        if (!c.expect_end()) {
            return false;
        }
        view().step(step == 0 ? 1 : -1);
        return true;
    }
    if (c.keyword("partial")) {
        bool on = false;
        if (!read_switch(c, on)) {
            return false;
        }
        view().select_partial = on;
        print("Partial selection is " + on_off(on));
        return true;
    }
    int mode = 0; // replace
    if (c.keyword("add")) {
        mode = 1;
    } else if (c.keyword("remove")) {
        mode = 2;
    }
    EntityList list;
    if (!read_list(c, list)) {
        return false;
    }
    if (list.empty()) {
        print("Nothing to select; the selection is unchanged");
        return true;
    }
    view().select(entities_of(list), mode);
    print("Selected " + view().describe_selection());
    return true;
}

bool cmd_pick_type(Cursor& c) {
    std::string type;
    if (!c.string(type, true) || !c.expect_end()) {
        return false;
    }
    return view().set_pick_type(type, false);
}

bool cmd_pick_filter(Cursor& c) {
    int action = -1;
    if (c.choice({"add", "remove"}, action)) {
        std::string type;
        if (!c.string(type, true) || !c.expect_end()) {
            return false;
        }
        if (!(action == 0 ? view().add_filter(type) : view().remove_filter(type))) {
            return false;
        }
    } else {
        std::vector<std::string> types;
        std::string type;
        while (!c.at_end()) {
            c.optional_comma();
            if (!c.string(type, true)) {
                return false;
            }
            types.push_back(type);
        }
        if (types.empty()) {
            return c.fail("expected one or more pick types after 'filter'");
        }
        if (!view().set_filter(static_cast<int>(types.size()), types)) {
            return false;
        }
    }
    std::string text;
    for (const std::string& t : view().pick_filter()) {
        text += (text.empty() ? "" : " ") + t;
    }
    print("Pick filter: " + (text.empty() ? std::string("nothing") : text));
    return true;
}

bool cmd_label(Cursor& c) {
    std::string type;
    if (!c.string(type, true)) {
        return false;
    }
    int flag = 0;
    if (!c.choice({"off", "on", "id", "name", "both"}, flag) || !c.expect_end()) {
        return false;
    }
    // "on" is the id.
    static const int flags[] = {kLabelOff, kLabelId, kLabelId, kLabelName, kLabelBoth};
    static const char* names[] = {"off", "ids", "ids", "names", "ids and names"};
    const bool all = keyword_matches(type, "all") && canonical_entity_type(type).empty();
    if (all) {
        for (const std::string& t : labelable_types()) {
            view().set_label(t, flags[flag]);
        }
        print(std::string("Labels of all types: ") + names[flag]);
        return true;
    }
    if (!view().set_label(type, flags[flag])) {
        return false;
    }
    print("Labels of " + canonical_entity_type(type) + ": " + names[flag]);
    return true;
}

bool cmd_draw(Cursor& c) {
    if (c.keyword("clear")) {
        if (!c.expect_end()) {
            return false;
        }
        view().drawing_sets.erase("");
        print("Drawing the whole model");
        return true;
    }
    EntityList list;
    if (!c.entity_list(list)) {
        return c.fail(c.expectation().empty() ? "expected an entity list" : c.expectation());
    }
    const bool add = c.keyword("add");
    if (!c.expect_end()) {
        return false;
    }
    if (list.empty()) {
        print("Nothing to draw; the drawing is unchanged");
        return true;
    }
    std::vector<PickedEntity>& set = view().drawing_sets[""];
    if (!add) {
        set.clear();
    }
    for (const PickedEntity& e : entities_of(list)) {
        if (std::find(set.begin(), set.end(), e) == set.end()) {
            set.push_back(e);
        }
    }
    EntityList drawn;
    for (const PickedEntity& e : set) {
        drawn.add(e.first, {e.second});
    }
    print("Drawing " + drawn.describe());
    return true;
}

bool cmd_view_reset(Cursor& c) {
    if (!c.expect_end()) {
        return false;
    }
    view().reset_camera();
    return true;
}

// `view at|from|up <x> <y> <z>`: moves one of the camera's vectors, keeping the others.
CommandHandler view_vector(int which) {
    return [which](Cursor& c) {
        std::array<double, 3> p{};
        if (!read_point(c, p)) {
            return false;
        }
        Camera next = view().camera;
        (which == 0 ? next.at : which == 1 ? next.from : next.up) = p;
        if (next.distance() <= 0) {
            return c.fail("The camera cannot be at its focal point");
        }
        if (std::hypot(next.up[0], next.up[1], next.up[2]) <= 0) {
            return c.fail("The up vector cannot be zero");
        }
        view().camera = next;
        return true;
    };
}

} // namespace

void register_view_commands() {
    const CommandSpec commands[] = {
        {"graphics mode", cmd_graphics_mode, false,
         "graphics mode wireframe|hiddenline|flatshade|smoothshade|transparent"},
        {"graphics perspective", switch_command(&ViewState::perspective, "Perspective"), false,
         "graphics perspective on|off"},
        {"graphics occlusion", switch_command(&ViewState::occlusion, "Occlusion"), false,
         "graphics occlusion on|off"},
        {"graphics scale", switch_command(&ViewState::scale_visibility, "The scale"), false,
         "graphics scale on|off"},
        {"graphics mesh", switch_command(&ViewState::mesh_visibility, "Mesh visibility"), false,
         "graphics mesh on|off"},
        {"graphics geometry",
         switch_command(&ViewState::geometry_visibility, "Geometry visibility"), false,
         "graphics geometry on|off"},
        {"graphics rubberband", cmd_graphics_rubberband, false,
         "graphics rubberband box|polygon|circle"},
        {"select", cmd_select, false,
         "select [add|remove] <list> | none | next | previous | partial on|off"},
        {"pick type", cmd_pick_type, false, "pick type <type>"},
        {"pick filter", cmd_pick_filter, false, "pick filter <type>... | add|remove <type>"},
        {"label", cmd_label, false, "label <type>|all on|off|id|name|both"},
        {"draw", cmd_draw, false, "draw <list> [add] | clear"},
        {"view reset", cmd_view_reset, false, "view reset"},
        {"view at", view_vector(0), false, "view at <x> <y> <z>"},
        {"view from", view_vector(1), false, "view from <x> <y> <z>"},
        {"view up", view_vector(2), false, "view up <x> <y> <z>"},
    };
    for (const CommandSpec& command : commands) {
        register_command(command);
    }
}

} // namespace tarvo::kernel
