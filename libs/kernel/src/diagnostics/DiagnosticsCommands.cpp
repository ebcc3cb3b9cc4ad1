// The diagnostics commands: `find <what> [in <list>] [options]`, which print what the finders
// find, and the repairs `remove`, `regularize` and `merge tolerant`.

#include "core/Command.h"
#include "core/Guard.h"
#include "core/Session.h"
#include "diagnostics/Diagnostics.h"

#include <Bnd_Box.hxx>

#include <cmath>
#include <cstdio>
#include <functional>
#include <map>

namespace tarvo::kernel::diagnostics {

namespace {

std::string fmt(double value) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "%.6g", value);
    return buf;
}

// Volumes of a list: bodies become their volumes, surfaces and curves the volumes holding them.
bool read_volumes(Cursor& c, std::vector<int>& volumes) {
    EntityList list;
    if (!c.entity_list(list))
        return c.fail(c.expectation().empty() ? "expected an entity list" : c.expectation());
    for (const auto& group : list.groups) {
        const auto kind = parse_kind(group.type);
        if (!kind)
            return c.fail("'" + group.type + "' is not geometry");
        for (int id : group.ids)
            for (int v : model().relatives(*kind, id, GeomKind::Volume))
                volumes.push_back(v);
    }
    if (volumes.empty())
        return c.fail("the list holds no volume");
    std::sort(volumes.begin(), volumes.end());
    volumes.erase(std::unique(volumes.begin(), volumes.end()), volumes.end());
    return true;
}

// A hundredth of the diagonal of the volumes' box: the default size of small features.
double default_size(const std::vector<int>& volumes) {
    Bnd_Box box;
    for (int v : volumes)
        box.Add(model().bounding_box(GeomKind::Volume, v));
    return box.IsVoid() ? 0.0 : 0.01 * std::sqrt(box.SquareExtent());
}

struct Options {
    std::vector<int> volumes;
    double size = -1, tolerance = -1, gap = -1, angle = -1;
    int count = 10;
};

bool read_options(Cursor& c, Options& o) {
    if (c.keyword("in") || (!c.at_end() && !canonical_entity_type(c.peek()->text).empty())) {
        if (!read_volumes(c, o.volumes))
            return false;
    } else {
        o.volumes = model().ids(GeomKind::Volume);
    }
    while (!c.at_end()) {
        int which = -1;
        if (!c.choice({"size", "tolerance", "gap", "angle", "count"}, which))
            return c.fail("expected size, tolerance, gap, angle or count, found '" + c.rest() +
                          "'");
        if (which == 4) {
            if (!c.integer(o.count) || o.count <= 0)
                return c.fail("count must be a positive whole number");
            continue;
        }
        double value = 0;
        if (!c.number(value) || !(value > 0) || !std::isfinite(value))
            return c.fail("expected a number greater than 0 after '" +
                          std::string(which == 0   ? "size"
                                      : which == 1 ? "tolerance"
                                      : which == 2 ? "gap"
                                                   : "angle") +
                          "'");
        (which == 0 ? o.size : which == 1 ? o.tolerance : which == 2 ? o.gap : o.angle) = value;
    }
    if (o.volumes.empty())
        return c.fail("there is no volume to look at");
    if (o.size < 0)
        o.size = default_size(o.volumes);
    if (o.tolerance < 0)
        o.tolerance = settings().merge_tolerance;
    if (o.gap < 0)
        o.gap = settings().overlap_max_gap;
    if (o.angle < 0)
        o.angle = settings().overlap_max_angle;
    return true;
}

void report(const std::string& title, std::size_t found) {
    print(title + ": " + std::to_string(found) + " found");
}

void measured(const std::string& title, const char* type, const char* what,
              const std::vector<Measured>& found) {
    report(title, found.size());
    for (const Measured& m : found)
        print("  " + std::string(type) + " " + std::to_string(m.id) + ": " + what + " " +
              fmt(m.value));
}

void ids(const std::string& title, const char* type, const std::vector<int>& found) {
    report(title, found.size());
    for (int id : found)
        print("  " + std::string(type) + " " + std::to_string(id));
}

void groups(const std::string& title, const char* type,
            const std::vector<std::vector<int>>& found) {
    report(title, found.size());
    for (const auto& g : found) {
        std::string line = "  " + std::string(type) + "s";
        for (int id : g)
            line += " " + std::to_string(id);
        print(line);
    }
}

void pairs(const std::string& title, const char* a, const char* b, const std::vector<Pair>& found,
           const char* what = "distance") {
    report(title, found.size());
    for (const Pair& p : found)
        print("  " + std::string(a) + " " + std::to_string(p.a) + ", " + b + " " +
              std::to_string(p.b) + ": " + what + " " + fmt(p.distance));
}

using Finder = std::function<void(const Options&)>;

const std::map<std::string, Finder>& finders() {
    static const std::map<std::string, Finder> table = {
        {"small curves",
         [](const Options& o) {
             measured("Small curves (size " + fmt(o.size) + ")", "curve", "length",
                      small_curves(o.volumes, o.size));
         }},
        {"smallest curves",
         [](const Options& o) {
             measured("Smallest curves", "curve", "length", smallest_curves(o.volumes, o.count));
         }},
        {"small surfaces",
         [](const Options& o) {
             measured("Small surfaces (size " + fmt(o.size) + ")", "surface", "area",
                      small_surfaces(entities_of(o.volumes, GeomKind::Surface), o.size));
         }},
        {"narrow surfaces",
         [](const Options& o) {
             measured("Narrow surfaces (size " + fmt(o.size) + ")", "surface", "width",
                      narrow_surfaces(entities_of(o.volumes, GeomKind::Surface), o.size));
         }},
        {"small volumes",
         [](const Options& o) {
             measured("Small volumes (size " + fmt(o.size) + ")", "volume", "volume",
                      small_volumes(o.volumes, o.size));
         }},
        {"close loops",
         [](const Options& o) {
             measured("Close loops (size " + fmt(o.size) + ")", "surface", "distance",
                      close_loops(entities_of(o.volumes, GeomKind::Surface), o.size));
         }},
        {"blend surfaces",
         [](const Options& o) {
             ids("Blend surfaces", "surface",
                 blend_surfaces(entities_of(o.volumes, GeomKind::Surface)));
         }},
        {"coincident vertices",
         [](const Options& o) {
             pairs("Coincident vertices (tolerance " + fmt(o.tolerance) + ")", "vertex", "vertex",
                   vertex_vertex_pairs(o.volumes, 0, o.tolerance, false));
         }},
        {"overlapping volumes",
         [](const Options& o) {
             pairs("Overlapping volumes", "volume", "volume", overlapping_volumes(o.volumes),
                   "common volume");
         }},
        {"overlapping surfaces",
         [](const Options& o) {
             const auto found = facing_surfaces(entities_of(o.volumes, GeomKind::Surface), o.gap,
                                                o.angle, false, false, false, 0);
             report("Overlapping surfaces", found.size());
             for (const auto& p : found)
                 print("  surface " + std::to_string(p.a) + ", surface " + std::to_string(p.b) +
                       ": common area " + fmt(p.area));
         }},
        {"volume gaps",
         [](const Options& o) {
             const auto found = facing_surfaces(entities_of(o.volumes, GeomKind::Surface), o.gap,
                                                o.angle, true, false, false, 0);
             report("Volume gaps (gap " + fmt(o.gap) + ")", found.size());
             for (const auto& p : found)
                 print("  surface " + std::to_string(p.a) + ", surface " + std::to_string(p.b) +
                       ": gap " + fmt(p.distance) + ", facing area " + fmt(p.area));
         }},
        {"mergeable vertices",
         [](const Options& o) {
             groups("Mergeable vertices (tolerance " + fmt(o.tolerance) + ")", "vertex",
                    mergeable(o.volumes, GeomKind::Vertex, o.tolerance));
         }},
        {"mergeable curves",
         [](const Options& o) {
             groups("Mergeable curves (tolerance " + fmt(o.tolerance) + ")", "curve",
                    mergeable(o.volumes, GeomKind::Curve, o.tolerance));
         }},
        {"mergeable surfaces",
         [](const Options& o) {
             groups("Mergeable surfaces (tolerance " + fmt(o.tolerance) + ")", "surface",
                    mergeable(o.volumes, GeomKind::Surface, o.tolerance));
         }},
        {"floating volumes",
         [](const Options& o) { ids("Floating volumes", "volume", floating_volumes(o.volumes)); }},
        {"nonmanifold curves",
         [](const Options& o) {
             ids("Non-manifold curves", "curve", nonmanifold_curves(o.volumes));
         }},
        {"nonmanifold vertices",
         [](const Options& o) {
             ids("Non-manifold vertices", "vertex", nonmanifold_vertices(o.volumes));
         }},
        {"bad geometry",
         [](const Options& o) {
             const BadGeometry bad = bad_geometry(o.volumes);
             ids("Bad volumes", "volume", bad.volumes);
             ids("Bad surfaces", "surface", bad.surfaces);
             ids("Bad curves", "curve", bad.curves);
         }},
    };
    return table;
}

bool find_command(Cursor& c) {
    std::vector<std::string> firsts, seconds;
    for (const auto& [name, finder] : finders()) {
        const std::string first = name.substr(0, name.find(' '));
        if (std::find(firsts.begin(), firsts.end(), first) == firsts.end())
            firsts.push_back(first);
    }
    int i = -1;
    if (!c.choice(firsts, i))
        return c.fail("expected what to find: small, smallest, narrow, close, blend, coincident, "
                      "overlapping, volume, mergeable, floating, nonmanifold or bad");
    for (const auto& [name, finder] : finders())
        if (name.rfind(firsts[i] + " ", 0) == 0)
            seconds.push_back(name.substr(firsts[i].size() + 1));
    int j = -1;
    if (!c.choice(seconds, j))
        return c.fail("expected one of after '" + firsts[i] + "': " + [&] {
            std::string all;
            for (const auto& s : seconds)
                all += (all.empty() ? "" : ", ") + s;
            return all;
        }());
    Options o;
    if (!read_options(c, o))
        return false;
    c.flush_warnings();
    return guarded("find", false, [&] {
        finders().at(firsts[i] + " " + seconds[j])(o);
        return true;
    });
}

bool remove_command(Cursor& c) {
    EntityList list;
    if (!c.entity_list(list) || list.empty())
        return c.fail("expected surfaces to remove (remove surface <ids>)");
    for (const auto& group : list.groups)
        if (group.type != "surface")
            return c.fail("only surfaces can be removed, not a " + group.type);
    if (!c.expect_end())
        return false;
    return guarded("remove", false, [&] { return remove_surfaces(list.ids_of("surface")); });
}

bool regularize_command(Cursor& c) {
    std::vector<int> volumes;
    if (!read_volumes(c, volumes) || !c.expect_end())
        return false;
    return guarded("regularize", false, [&] { return regularize(volumes); });
}

bool merge_tolerant_command(Cursor& c) {
    std::vector<int> volumes;
    if (!read_volumes(c, volumes))
        return false;
    double tolerance = settings().merge_tolerance;
    if (c.keyword("tolerance") && (!c.number(tolerance) || !(tolerance > 0)))
        return c.fail("expected a tolerance greater than 0");
    if (!c.expect_end())
        return false;
    return guarded("merge tolerant", false, [&] { return merge_tolerant(volumes, tolerance); });
}

} // namespace

void register_commands() {
    register_command({"find", find_command, false,
                      "find <what> [in <list>] [size <s>] [tolerance <t>] [gap <g>] [angle <a>] "
                      "[count <n>]"});
    register_command({"remove", remove_command, true, "remove surface <ids>"});
    register_command({"regularize", regularize_command, true, "regularize <list>"});
    register_command(
        {"merge tolerant", merge_tolerant_command, true, "merge tolerant <list> [tolerance <t>]"});
}

} // namespace tarvo::kernel::diagnostics
