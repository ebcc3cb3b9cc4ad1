// The sizing commands: sizes, intervals, biases, schemes and the two mesher globals. Each parses
// and checks the whole line before it changes anything, prints one line of what it did, and is
// undoable (the settings are model state, see SizingSettings.h).

#include "core/Command.h"
#include "core/Session.h"
#include "core/Valfold.h"
#include "geometry/GeometryModule.h"
#include "mesh/SizingSettings.h"

#include <algorithm>
#include <cmath>

namespace tarvo::kernel::mesh {

namespace {

const GeometryModel& geo() {
    return geometry_module()->model();
}

std::string num(double v) {
    return format_number(v);
}

// The entities of the command's list, all of them of `allowed` kinds ("size" is set on volumes,
// surfaces and curves). An empty list (every id unknown, already warned about) is no error.
bool targets(Cursor& c, std::initializer_list<GeomKind> allowed, const char* what,
             std::vector<EntityKey>& keys, EntityList& shown) {
    for (const EntityList& list : c.pattern_lists())
        for (const auto& group : list.groups) {
            const auto kind = parse_kind(group.type);
            if (!kind || std::find(allowed.begin(), allowed.end(), *kind) == allowed.end()) {
                std::string kinds;
                std::size_t i = 0;
                for (GeomKind k : allowed) {
                    kinds += std::string(i == 0                    ? ""
                                         : i + 1 == allowed.size() ? " and "
                                                                   : ", ") +
                             kind_name(k) + "s";
                    ++i;
                }
                return c.fail(std::string(what) + " is set on " + kinds + ", not on " + group.type +
                              " " + compress_ids(group.ids));
            }
            for (int id : group.ids)
                keys.push_back({*kind, id});
            shown.add(group.type, group.ids);
        }
    return true;
}

// Nothing to set: the list named only entities that do not exist.
bool nothing(const char* what) {
    print(std::string("Nothing to set ") + what + " on; no setting changed");
    return true;
}

bool cmd_size(Cursor& c) {
    std::vector<EntityKey> keys;
    EntityList shown;
    if (!targets(c, {GeomKind::Volume, GeomKind::Surface, GeomKind::Curve}, "A size", keys, shown))
        return false;
    if (c.keyword("auto")) {
        double factor = kDefaultAutoFactor;
        if (c.keyword("factor") && !c.number(factor))
            return c.fail(c.expectation());
        if (!(factor >= 1 && factor <= 10))
            return c.fail("the automatic size factor must be from 1 (fine) to 10 (coarse), not " +
                          num(factor));
        if (!c.expect_end())
            return false;
        if (keys.empty())
            return nothing("a size");
        const double size = auto_size(keys, factor);
        if (!(size >= kMinSize))
            return c.fail("the automatic size of " + shown.describe() +
                          " cannot be computed: it has no extent");
        update_records(keys, [&](SizingRecord& r) {
            r.size = size;
            r.size_type = SizeType::Calculated;
            r.auto_factor = factor;
        });
        print("Set automatic size " + num(size) + " (factor " + num(factor) + ") on " +
              shown.describe());
        return true;
    }
    double size = 0;
    if (!c.length(size))
        return c.fail(c.expectation());
    if (!(size >= kMinSize))
        return c.fail("a size must be at least " + num(kMinSize) + ", not " + num(size));
    if (!c.expect_end())
        return false;
    if (keys.empty())
        return nothing("a size");
    update_records(keys, [&](SizingRecord& r) {
        r.size = size;
        r.size_type = SizeType::UserSet;
        r.auto_factor = 0;
    });
    print("Set size " + num(size) + " on " + shown.describe());
    return true;
}

bool cmd_interval(Cursor& c) {
    std::vector<EntityKey> keys;
    EntityList shown;
    if (!targets(c, {GeomKind::Volume, GeomKind::Surface, GeomKind::Curve}, "An interval count",
                 keys, shown))
        return false;
    int n = 0;
    if (!c.integer(n))
        return c.fail(c.expectation());
    if (n < 1 || n > kMaxIntervals)
        return c.fail("an interval count must be from 1 to " + std::to_string(kMaxIntervals) +
                      ", not " + std::to_string(n));
    if (!c.expect_end())
        return false;
    if (keys.empty())
        return nothing("an interval count");
    update_records(keys, [&](SizingRecord& r) { r.intervals = n; });
    print("Set interval " + std::to_string(n) + " on " + shown.describe());
    return true;
}

bool read_bias_factor(Cursor& c, double& factor) {
    if (!c.number(factor))
        return c.fail(c.expectation());
    if (!(factor >= kMinBiasFactor && factor <= kMaxBiasFactor))
        return c.fail("a bias factor must be from " + num(kMinBiasFactor) + " to " +
                      num(kMaxBiasFactor) + ", not " + num(factor));
    return true;
}

bool cmd_bias(Cursor& c) {
    std::vector<EntityKey> keys;
    EntityList shown;
    if (!targets(c, {GeomKind::Curve}, "A bias", keys, shown))
        return false;
    double factor = 1;
    if (!read_bias_factor(c, factor))
        return false;
    int vertex = 0;
    if (c.keyword("start")) {
        if (!c.keyword("vertex") || !c.integer(vertex))
            return c.fail("expected 'start vertex <id>'");
    }
    if (!c.expect_end())
        return false;
    for (const EntityKey& k : keys) {
        int first = 0, last = 0;
        if (vertex != 0 && curve_ends(k.id, first, last) && vertex != first && vertex != last)
            return c.fail("vertex " + std::to_string(vertex) + " is not an end of curve " +
                          std::to_string(k.id));
    }
    if (keys.empty())
        return nothing("a bias");
    const bool none = factor == 1;
    update_records(keys, [&](SizingRecord& r) {
        r.bias = none ? BiasType::None : BiasType::Bias;
        r.bias_factor = none ? 1.0 : factor;
        r.bias_start_vertex = none ? 0 : vertex;
    });
    if (none)
        print("Removed the bias of " + shown.describe());
    else
        print("Set bias " + num(factor) + " on " + shown.describe() +
              (vertex ? " from vertex " + std::to_string(vertex) : std::string()));
    return true;
}

bool cmd_dualbias(Cursor& c) {
    std::vector<EntityKey> keys;
    EntityList shown;
    if (!targets(c, {GeomKind::Curve}, "A dual bias", keys, shown))
        return false;
    double factor = kDefaultDualBiasFactor;
    if (c.keyword("factor") && !read_bias_factor(c, factor))
        return false;
    if (!c.expect_end())
        return false;
    if (keys.empty())
        return nothing("a dual bias");
    const bool none = factor == 1;
    update_records(keys, [&](SizingRecord& r) {
        r.bias = none ? BiasType::None : BiasType::DualBias;
        r.bias_factor = none ? 1.0 : factor;
        r.bias_start_vertex = 0;
    });
    if (none)
        print("Removed the bias of " + shown.describe());
    else
        print("Set dual bias " + num(factor) + " on " + shown.describe());
    return true;
}

std::string scheme_words(bool volume) {
    std::string words;
    for (const SchemeInfo& s : scheme_table())
        if (volume ? s.on_volume : s.on_surface)
            words += std::string(words.empty() ? "" : " ") + s.word;
    return words;
}

std::string valid_schemes() {
    return "volume schemes: " + scheme_words(true) + "; surface schemes: " + scheme_words(false);
}

// `source <s>` or `target <t>`: a surface id, optionally after the word "surface".
bool read_sweep_surface(Cursor& c, const std::vector<EntityKey>& volumes, int& surface) {
    c.keyword("surface");
    if (!c.integer(surface))
        return c.fail(c.expectation());
    for (const EntityKey& v : volumes) {
        const auto in = geo().relatives(GeomKind::Volume, v.id, GeomKind::Surface);
        if (std::find(in.begin(), in.end(), surface) == in.end())
            return c.fail("surface " + std::to_string(surface) + " is not a surface of volume " +
                          std::to_string(v.id));
    }
    return true;
}

bool cmd_scheme(Cursor& c) {
    std::vector<EntityKey> keys;
    EntityList shown;
    if (!targets(c, {GeomKind::Volume, GeomKind::Surface}, "A scheme", keys, shown))
        return false;
    std::vector<std::string> words;
    for (const SchemeInfo& s : scheme_table())
        words.push_back(s.word);
    int which = -1;
    if (!c.choice(words, which)) {
        const Token* t = c.peek();
        return c.fail((t ? "unknown scheme '" + t->text + "'" : std::string("expected a scheme")) +
                      "; " + valid_schemes());
    }
    const SchemeInfo& scheme = scheme_table()[which];
    int source = 0, target = 0;
    if (scheme.scheme == Scheme::Sweep) {
        while (!c.at_end()) {
            if (c.keyword("source")) {
                if (!read_sweep_surface(c, keys, source))
                    return false;
            } else if (c.keyword("target")) {
                if (!read_sweep_surface(c, keys, target))
                    return false;
            } else {
                break;
            }
        }
        if (source != 0 && source == target)
            return c.fail("the sweep source and target must be different surfaces");
    }
    if (!c.expect_end())
        return false;
    for (const EntityKey& k : keys) {
        const bool volume = k.kind == GeomKind::Volume;
        if (!(volume ? scheme.on_volume : scheme.on_surface))
            return c.fail(std::string(scheme.word) + " is not a " +
                          (volume ? "volume" : "surface") + " scheme; " + valid_schemes());
    }
    if (keys.empty())
        return nothing("a scheme");
    update_records(keys, [&](SizingRecord& r) {
        r.scheme = scheme.scheme;
        r.sweep_source = source;
        r.sweep_target = target;
    });
    std::string sweep;
    if (source)
        sweep += " source surface " + std::to_string(source);
    if (target)
        sweep += " target surface " + std::to_string(target);
    print(std::string("Set scheme ") + scheme.word + sweep + " on " + shown.describe());
    return true;
}

// `set tetmesher growth <g>` and `set trimesher gradation <g>`: one number, at least 1.
CommandHandler global_setting(const char* what, void (*set)(double)) {
    return [what, set](Cursor& c) {
        double value = 0;
        if (!c.number(value))
            return c.fail(c.expectation());
        if (!(value >= 1 && value <= 100))
            return c.fail(std::string("the ") + what + " must be from 1 to 100, not " + num(value));
        if (!c.expect_end())
            return false;
        set(value);
        print(std::string("Set ") + what + " " + num(value));
        return true;
    };
}

} // namespace

void register_sizing_commands() {
    const std::vector<CommandSpec> commands = {
        {"<list> size", cmd_size, true, "<list> size <s> | auto [factor <f>]"},
        {"<list> interval", cmd_interval, true, "<list> interval <n>"},
        {"<list> bias", cmd_bias, true, "<curve list> bias <factor> [start vertex <v>]"},
        {"<list> dualbias", cmd_dualbias, true, "<curve list> dualbias [factor <f>]"},
        {"<list> scheme", cmd_scheme, true,
         "<list> scheme map|submap|sweep [source <s>] [target <t>]|tetmesh|pave|trimesh|"
         "polyhedron|auto|sphere"},
        {"set tetmesher growth", global_setting("tetmesher growth", set_tetmesh_growth), true,
         "set tetmesher growth <g>"},
        {"set trimesher gradation", global_setting("trimesher gradation", set_trimesh_gradation),
         true, "set trimesher gradation <g>"},
    };
    for (const CommandSpec& command : commands)
        register_command(command);
}

} // namespace tarvo::kernel::mesh
