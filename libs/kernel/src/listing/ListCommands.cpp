// `list <list>` and `list model`: read-only reports on the model.
//
// Every value printed here comes from the public query functions of tarvo/TarvoInterface.h, so
// the listing shows exactly what a client of the kernel would see and cannot drift from the
// queries. Families whose query functions are still placeholders (blocks, sets, groups) are
// left out of the summary instead of being asked: a placeholder prints an error, and a listing
// must not fail because a part of the kernel is not written yet.
//
// Numbers are printed with the session's `set digits` precision. Neither command is undoable:
// they change nothing.
//
// Threading: kernel thread only.

#include "core/Command.h"
#include "core/EntityList.h"
#include "core/Session.h"
#include "tarvo/TarvoInterface.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

namespace tarvo::kernel {

namespace {

namespace ti = TarvoInterface;

// A number in the session's precision; -0 prints as 0.
std::string number(double value) {
    const int digits = std::clamp(static_cast<int>(ti::get_tarvo_digits_setting()), 1, 17);
    char text[64];
    std::snprintf(text, sizeof text, "%.*g", digits, value);
    std::string out = text;
    if (out == "-0") {
        out = "0";
    }
    return out;
}

std::string count_and_ids(const std::vector<int>& ids) {
    if (ids.empty()) {
        return "none";
    }
    return std::to_string(ids.size()) + " (" + compress_ids(ids) + ")";
}

std::string id_or_none(int id) {
    return id > 0 ? std::to_string(id) : "none";
}

// Appends "  <label>:" padded to one column, then the value.
void field(std::string& text, const std::string& label, const std::string& value) {
    std::string line = "  " + label + ":";
    line.resize(std::max<size_t>(line.size() + 1, 18), ' ');
    text += line + value + "\n";
}

void name_field(std::string& text, const std::string& type, int id) {
    const std::string name = ti::get_entity_name(type, id, true);
    field(text, "Name", name.empty() ? "none" : name);
}

void box_field(std::string& text, const std::string& type, int id) {
    const std::array<double, 10> b = ti::get_bounding_box(type, id);
    field(text, "Bounding box",
          "x " + number(b[0]) + " to " + number(b[1]) + ", y " + number(b[3]) + " to " +
              number(b[4]) + ", z " + number(b[6]) + " to " + number(b[7]));
}

// How the entity is or will be meshed: its scheme and sizing, and its mesh when it has one.
void mesh_fields(std::string& text, const std::string& type, int id) {
    std::string sizing = ti::get_mesh_scheme(type, id) + ", ";
    if (type == "curve") {
        sizing += std::to_string(ti::get_mesh_intervals(type, id)) + " intervals (" +
                  ti::get_mesh_interval_firmness(type, id) + ")";
    } else {
        sizing += "size " + number(ti::get_mesh_size(type, id)) + " (" +
                  ti::get_mesh_size_type(type, id) + ")";
    }
    field(text, "Scheme", sizing);
    if (!ti::is_meshed(type, id)) {
        field(text, "Mesh", "not meshed");
        return;
    }
    const int elements = type == "volume"    ? ti::get_volume_element_count(id)
                         : type == "surface" ? ti::get_surface_element_count(id)
                                             : static_cast<int>(ti::get_curve_edges(id).size());
    field(text, "Mesh",
          std::to_string(elements) + " " + ti::get_mesh_element_type(type, id) + " elements, " +
              std::to_string(ti::get_geometry_node_count(type, id)) + " nodes");
}

void look_fields(std::string& text, const std::string& type, int id) {
    const std::array<double, 4> c = ti::get_entity_color(type, id);
    std::string colour = number(c[0]) + " " + number(c[1]) + " " + number(c[2]);
    if (c[3] < 1) {
        colour += " alpha " + number(c[3]);
    }
    field(text, "Colour", colour);
    field(text, "Visible", ti::is_visible(type, id) ? "yes" : "no");
}

std::string list_body(int id) {
    std::string text = "Body " + std::to_string(id) + "\n";
    name_field(text, "body", id);
    const std::vector<int> volumes = ti::get_relatives("body", id, "volume");
    field(text, "Volumes", count_and_ids(volumes));
    if (volumes.empty()) {
        // A sheet or wire body: what it is made of instead.
        const std::vector<int> surfaces = ti::get_relatives("body", id, "surface");
        if (!surfaces.empty()) {
            field(text, "Surfaces", count_and_ids(surfaces));
        } else {
            field(text, "Curves", count_and_ids(ti::get_relatives("body", id, "curve")));
        }
    } else {
        field(text, "Volume", number(ti::get_total_volume(volumes)));
    }
    box_field(text, "body", id);
    return text;
}

std::string list_volume(int id) {
    std::string text = "Volume " + std::to_string(id) + "\n";
    name_field(text, "volume", id);
    field(text, "Body", id_or_none(ti::get_owning_body("volume", id)));
    field(text, "Volume", number(ti::get_volume_area(id)));
    box_field(text, "volume", id);
    field(text, "Surfaces", count_and_ids(ti::get_relatives("volume", id, "surface")));
    field(text, "Curves", count_and_ids(ti::get_relatives("volume", id, "curve")));
    field(text, "Vertices", count_and_ids(ti::get_relatives("volume", id, "vertex")));
    mesh_fields(text, "volume", id);
    look_fields(text, "volume", id);
    return text;
}

std::string list_surface(int id) {
    std::string text = "Surface " + std::to_string(id) + "\n";
    name_field(text, "surface", id);
    field(text, "Type", ti::get_surface_type(id));
    field(text, "Area", number(ti::get_surface_area(id)));
    const std::vector<int> volumes = ti::get_relatives("surface", id, "volume");
    field(text, "Volumes", volumes.empty() ? "none (free surface)" : count_and_ids(volumes));
    field(text, "Body", id_or_none(ti::get_owning_body("surface", id)));
    field(text, "Curves", count_and_ids(ti::get_relatives("surface", id, "curve")));
    box_field(text, "surface", id);
    mesh_fields(text, "surface", id);
    look_fields(text, "surface", id);
    return text;
}

std::string list_curve(int id) {
    std::string text = "Curve " + std::to_string(id) + "\n";
    name_field(text, "curve", id);
    field(text, "Type", ti::get_curve_type(id));
    field(text, "Length", number(ti::get_curve_length(id)));
    if (const double radius = ti::get_curve_radius(id); radius > 0) {
        field(text, "Radius", number(radius));
    }
    field(text, "Vertices", count_and_ids(ti::get_relatives("curve", id, "vertex")));
    const std::vector<int> surfaces = ti::get_relatives("curve", id, "surface");
    field(text, "Surfaces", surfaces.empty() ? "none (free curve)" : count_and_ids(surfaces));
    field(text, "Body", id_or_none(ti::get_owning_body("curve", id)));
    mesh_fields(text, "curve", id);
    look_fields(text, "curve", id);
    return text;
}

std::string list_vertex(int id) {
    std::string text = "Vertex " + std::to_string(id) + "\n";
    name_field(text, "vertex", id);
    const std::array<double, 3> p = ti::get_center_point("vertex", id);
    field(text, "Coordinates", number(p[0]) + " " + number(p[1]) + " " + number(p[2]));
    const std::vector<int> curves = ti::get_relatives("vertex", id, "curve");
    field(text, "Curves", curves.empty() ? "none (free vertex)" : count_and_ids(curves));
    field(text, "Body", id_or_none(ti::get_owning_body("vertex", id)));
    look_fields(text, "vertex", id);
    return text;
}

bool cmd_list_entities(Cursor& c) {
    if (c.pattern_lists().empty() || !c.expect_end()) {
        return false;
    }
    const EntityList& list = c.pattern_lists().front();
    if (list.empty()) {
        // The parser has already said which ids were not found.
        print("Nothing to list");
        return true;
    }
    for (const EntityList::Group& group : list.groups) {
        std::string (*lister)(int) = nullptr;
        if (group.type == "body") {
            lister = list_body;
        } else if (group.type == "volume") {
            lister = list_volume;
        } else if (group.type == "surface") {
            lister = list_surface;
        } else if (group.type == "curve") {
            lister = list_curve;
        } else if (group.type == "vertex") {
            lister = list_vertex;
        }
        if (!lister) {
            warning("Listing of " + group.type + " entities is not available yet, skipped " +
                    group.type + " " + compress_ids(group.ids));
            continue;
        }
        for (int id : group.ids) {
            print(lister(id));
        }
    }
    return true;
}

// Free in the model's own sense: a surface in no volume, a curve in no surface, a vertex in no
// curve.
int free_count(const std::string& type, const std::string& owner_type) {
    int count = 0;
    for (int id : ti::get_entities(type)) {
        if (ti::get_relatives(type, id, owner_type).empty()) {
            ++count;
        }
    }
    return count;
}

bool cmd_list_model(Cursor& c) {
    if (!c.expect_end()) {
        return false;
    }
    std::string text = "Model\n";
    field(text, "Bodies", std::to_string(ti::get_body_count()));
    field(text, "Volumes", std::to_string(ti::get_volume_count()));
    field(text, "Surfaces", std::to_string(ti::get_surface_count()));
    field(text, "Curves", std::to_string(ti::get_curve_count()));
    field(text, "Vertices", std::to_string(ti::get_vertex_count()));
    field(text, "Free surfaces", std::to_string(free_count("surface", "volume")));
    field(text, "Free curves", std::to_string(free_count("curve", "surface")));
    field(text, "Free vertices", std::to_string(free_count("vertex", "curve")));

    // Blocks, sets and groups join this summary with the module that holds them.
    print(text);
    return true;
}

} // namespace

void init_listing_module() {
    register_command({"list <list>", cmd_list_entities, false, "list <list>"});
    register_command({"list model", cmd_list_model, false, "list model"});
}

} // namespace tarvo::kernel
