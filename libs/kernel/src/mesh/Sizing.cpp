// Sizes, intervals, biases and schemes: the vocabularies, the per-entity records and the two
// mesher globals, their undo participant, the watcher that keeps records on the entities they
// were given to, and the resolution of the settings in effect (SizingSettings.h).

#include "core/Undo.h"
#include "geometry/GeometryMeasures.h"
#include "geometry/GeometryModule.h"
#include "mesh/SizingSettings.h"
#include "tarvo/TIObserve.h"

#include <TopExp.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Vertex.hxx>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <memory>

namespace tarvo::kernel::mesh {

void register_sizing_commands(); // SizingCommands.cpp

namespace {

// ---- Vocabularies -------------------------------------------------------------------------------

// clang-format off
const std::vector<SchemeInfo> kSchemes = {
    //                         volume surface
    {Scheme::Map,        "map",        true, true},
    {Scheme::Submap,     "submap",     true, true},
    {Scheme::Sweep,      "sweep",      true, false},
    {Scheme::Tetmesh,    "tetmesh",    true, false},
    {Scheme::Pave,       "pave",       true, true},
    {Scheme::Trimesh,    "trimesh",    true, true},
    {Scheme::Polyhedron, "polyhedron", true, false},
    {Scheme::Auto,       "auto",       true, true},
    {Scheme::Sphere,     "sphere",     true, false},
};
// clang-format on

// ---- State --------------------------------------------------------------------------------------

using RecordPtr = std::shared_ptr<const SizingRecord>;

struct SizingState {
    std::map<EntityKey, RecordPtr> records;
    double tetmesh_growth = kDefaultTetmeshGrowth;
    double trimesh_gradation = kDefaultTrimeshGradation;
};

struct SizingSnapshot : UndoSnapshot {
    explicit SizingSnapshot(SizingState s) : state(std::move(s)) {}
    SizingState state;
};

class SizingParticipant : public UndoParticipant {
public:
    std::string participant_name() const override { return "sizing"; }
    std::unique_ptr<UndoSnapshot> save_state() override {
        return std::make_unique<SizingSnapshot>(state);
    }
    void restore_state(const UndoSnapshot& snapshot) override {
        state = static_cast<const SizingSnapshot&>(snapshot).state;
    }
    // Settings have no observer events of their own: the geometry reports the entities.
    void clear_state() override { state = SizingState{}; }

    SizingState state;
};

// Follows the geometry: a deleted entity's record goes, a renumbered entity's record moves with
// it (compress ids renumbers ascending to lower ids, so a move never lands on a live record).
class GeometryWatcher : public TarvoInterface::TIObserve {
public:
    void notify_volume_deleted(int id) override { gone(GeomKind::Volume, id); }
    void notify_surface_deleted(int id) override { gone(GeomKind::Surface, id); }
    void notify_free_surface_deleted(int id) override { gone(GeomKind::Surface, id); }
    void notify_curve_deleted(int id) override { gone(GeomKind::Curve, id); }
    void notify_free_curve_deleted(int id) override { gone(GeomKind::Curve, id); }
    void notify_id_changed(const std::string& type, int old_id, int new_id) override;

private:
    static void gone(GeomKind kind, int id);
};

std::unique_ptr<SizingParticipant> g_sizing;
// A plain pointer, as in the view module: the observer list may be gone at static destruction.
GeometryWatcher* g_watcher = nullptr;

void GeometryWatcher::gone(GeomKind kind, int id) {
    if (g_sizing)
        g_sizing->state.records.erase({kind, id});
}

void GeometryWatcher::notify_id_changed(const std::string& type, int old_id, int new_id) {
    const auto kind = parse_kind(type);
    if (!g_sizing || !kind)
        return;
    auto& records = g_sizing->state.records;
    auto it = records.find({*kind, old_id});
    RecordPtr moved = it == records.end() ? nullptr : it->second;
    if (it != records.end())
        records.erase(it);
    // A record left at the new id belonged to an entity that is gone.
    if (moved)
        records[{*kind, new_id}] = std::move(moved);
    else
        records.erase({*kind, new_id});
}

const GeometryModel* model() {
    GeometryModule* g = geometry_module();
    return g ? &g->model() : nullptr;
}

bool sized_kind(GeomKind kind) {
    return kind == GeomKind::Volume || kind == GeomKind::Surface || kind == GeomKind::Curve;
}

bool exists(GeomKind kind, int id) {
    const GeometryModel* m = model();
    return m && sized_kind(kind) && m->exists(kind, id);
}

const SizingRecord* raw_record(GeomKind kind, int id) {
    if (!g_sizing)
        return nullptr;
    auto it = g_sizing->state.records.find({kind, id});
    return it == g_sizing->state.records.end() ? nullptr : it->second.get();
}

// One level of the resolution: the entities whose settings count equally.
struct Level {
    GeomKind kind;
    std::vector<int> ids;
};

std::vector<Level> levels_of(GeomKind kind, int id, bool own_only) {
    std::vector<Level> levels{{kind, {id}}};
    if (own_only)
        return levels;
    const GeometryModel& m = *model();
    if (kind == GeomKind::Curve)
        levels.push_back({GeomKind::Surface, m.relatives(kind, id, GeomKind::Surface)});
    if (kind != GeomKind::Volume)
        levels.push_back({GeomKind::Volume, m.relatives(kind, id, GeomKind::Volume)});
    return levels;
}

// What one level asks: the finest interval count and the finest size given at it.
struct LevelAsk {
    int intervals = 0;
    double size = 0;
    SizeType size_type = SizeType::NotSet;
};

LevelAsk ask(const Level& level) {
    LevelAsk a;
    for (int id : level.ids) {
        const SizingRecord* r = raw_record(level.kind, id);
        if (!r)
            continue;
        a.intervals = std::max(a.intervals, r->intervals);
        if (r->size_type != SizeType::NotSet && (a.size == 0 || r->size < a.size)) {
            a.size = r->size;
            a.size_type = r->size_type;
        }
    }
    return a;
}

int intervals_for(double length, double size) {
    const double n = std::round(length / size);
    if (!(n >= 1))
        return 1;
    return n >= kMaxIntervals ? kMaxIntervals : static_cast<int>(n);
}

double size_of_box(const Bnd_Box& box, double factor);

// The automatic size for an entity that has nothing else: that of its volume's own box (the
// finest of its volumes'), never coarser than the model's, so that a small part among large ones
// is meshed at its own scale. A volume merged with another, and whatever lies in no volume, keep
// the model's size, so that curves shared between them agree on both sides. Never 0, so that the
// mesher always gets a size (a model without extent gets the unit size).
double fallback_size(GeomKind kind, int id) {
    double s = model_auto_size();
    const GeometryModel* m = model();
    if (!m || !m->exists(kind, id))
        return s > 0 ? s : 1.0;
    const auto merged = [&](int volume) {
        return !adjacent(*m, GeomKind::Volume, volume, GeomKind::Volume).empty();
    };
    const std::vector<int> volumes =
        kind == GeomKind::Volume ? std::vector<int>{id} : m->relatives(kind, id, GeomKind::Volume);
    if (std::none_of(volumes.begin(), volumes.end(), merged))
        for (int v : volumes) {
            const double own =
                size_of_box(m->bounding_box(GeomKind::Volume, v), kDefaultAutoFactor);
            if (own > 0 && own < s)
                s = own;
        }
    return s > 0 ? s : 1.0;
}

std::optional<Resolved> resolve_levels(GeomKind kind, int id, bool own_only) {
    if (!exists(kind, id))
        return std::nullopt;
    const bool curve = kind == GeomKind::Curve;
    const double length = curve ? model()->curve_length(id) : 0.0;
    Resolved r;
    bool sized = false;
    bool counted = false;
    for (const Level& level : levels_of(kind, id, own_only)) {
        const LevelAsk a = ask(level);
        if (!counted && a.intervals > 0) {
            r.intervals = a.intervals;
            r.interval_firmness = Firmness::Hard;
            counted = true;
        }
        if (!sized && a.size > 0) {
            r.size = a.size;
            r.size_type = a.size_type;
            sized = true;
            if (!counted) {
                r.intervals = curve ? intervals_for(length, a.size) : 0;
                r.interval_firmness = Firmness::Soft;
                counted = true;
            }
        }
    }
    if (!sized)
        r.size = fallback_size(kind, id);
    if (!counted && curve && !own_only) {
        const double turning = model()->curve_turning(id);
        r.intervals = std::max(intervals_for(length, r.size),
                               static_cast<int>(std::ceil(turning / kAutoTurnPerInterval - 1e-9)));
    }
    return r;
}

Bnd_Box joint_box(const std::vector<EntityKey>& keys) {
    Bnd_Box box;
    const GeometryModel* m = model();
    if (!m)
        return box;
    for (const EntityKey& k : keys)
        if (m->exists(k.kind, k.id))
            box.Add(m->bounding_box(k.kind, k.id));
    return box;
}

double size_of_box(const Bnd_Box& box, double factor) {
    if (box.IsVoid())
        return 0.0;
    const double diagonal = std::sqrt(box.SquareExtent());
    return factor / kDefaultAutoFactor * diagonal / (std::sqrt(3.0) * kAutoDivisions);
}

} // namespace

// ---- Vocabulary words ---------------------------------------------------------------------------

const char* firmness_word(Firmness f) {
    switch (f) {
    case Firmness::Hard:
        return "HARD";
    case Firmness::Soft:
        return "SOFT";
    case Firmness::Limp:
        break;
    }
    return "LIMP";
}

const char* size_type_word(SizeType t) {
    switch (t) {
    case SizeType::UserSet:
        return "USER_SET";
    case SizeType::Calculated:
        return "CALCULATED";
    case SizeType::NotSet:
        break;
    }
    return "NOT_SET";
}

// Nothing chosen answers "auto": that is how meshing then behaves.
const char* scheme_word(Scheme s) {
    for (const SchemeInfo& info : kSchemes)
        if (info.scheme == s)
            return info.word;
    return "auto";
}

const char* bias_type_word(BiasType type) {
    switch (type) {
    case BiasType::Bias:
        return "bias";
    case BiasType::DualBias:
        return "dualbias";
    case BiasType::None:
        break;
    }
    return "";
}

const std::vector<SchemeInfo>& scheme_table() {
    return kSchemes;
}

// ---- Records ------------------------------------------------------------------------------------

bool SizingRecord::empty() const {
    return size_type == SizeType::NotSet && intervals == 0 && scheme == Scheme::Default &&
           bias == BiasType::None;
}

const SizingRecord* record_of(GeomKind kind, int id) {
    return exists(kind, id) ? raw_record(kind, id) : nullptr;
}

void update_records(const std::vector<EntityKey>& keys,
                    const std::function<void(SizingRecord&)>& edit) {
    if (!g_sizing)
        return;
    auto& records = g_sizing->state.records;
    for (const EntityKey& key : keys) {
        auto it = records.find(key);
        auto updated =
            std::make_shared<SizingRecord>(it == records.end() ? SizingRecord{} : *it->second);
        edit(*updated);
        if (updated->empty())
            records.erase(key);
        else
            records[key] = std::move(updated);
    }
}

void set_tetmesh_growth(double growth) {
    if (g_sizing)
        g_sizing->state.tetmesh_growth = growth;
}

void set_trimesh_gradation(double gradation) {
    if (g_sizing)
        g_sizing->state.trimesh_gradation = gradation;
}

SizingContents sizing_contents() {
    SizingContents out;
    if (!g_sizing)
        return out;
    for (const auto& [key, record] : g_sizing->state.records)
        out.records.emplace_back(key, *record);
    out.tetmesh_growth = g_sizing->state.tetmesh_growth;
    out.trimesh_gradation = g_sizing->state.trimesh_gradation;
    return out;
}

void replace_sizing(const SizingContents& contents) {
    if (!g_sizing)
        return;
    SizingState state;
    for (const auto& [key, record] : contents.records)
        state.records[key] = std::make_shared<const SizingRecord>(record);
    state.tetmesh_growth = contents.tetmesh_growth;
    state.trimesh_gradation = contents.trimesh_gradation;
    g_sizing->state = std::move(state);
}

double auto_size(const std::vector<EntityKey>& keys, double factor) {
    return size_of_box(joint_box(keys), factor);
}

double model_auto_size() {
    const GeometryModel* m = model();
    if (!m)
        return 0.0;
    std::vector<EntityKey> bodies;
    for (int id : m->ids(GeomKind::Body))
        bodies.push_back({GeomKind::Body, id});
    return auto_size(bodies, kDefaultAutoFactor);
}

std::optional<Resolved> resolve(GeomKind kind, int id) {
    return resolve_levels(kind, id, false);
}

std::optional<Resolved> resolve_requested(GeomKind kind, int id) {
    return resolve_levels(kind, id, true);
}

bool curve_ends(int curve_id, int& first, int& last) {
    const GeometryModel* m = model();
    if (!m || !m->exists(GeomKind::Curve, curve_id))
        return false;
    // In the order of the curve's parameter, whatever way a face uses the edge: that is the
    // direction in which Gmsh lays out a progression.
    TopoDS_Vertex a, b;
    TopExp::Vertices(TopoDS::Edge(m->shape(GeomKind::Curve, curve_id)), a, b, false);
    first = a.IsNull() ? 0 : m->id_of(GeomKind::Vertex, a);
    last = b.IsNull() ? 0 : m->id_of(GeomKind::Vertex, b);
    return true;
}

std::vector<double> interval_lengths(int curve_id) {
    if (!exists(GeomKind::Curve, curve_id))
        return {};
    const CurvePlan plan = curve_plan(curve_id);
    const int n = plan.intervals;
    const double log_r = std::log(plan.factor);
    // Exponents of the geometric progression, normalised by the largest so that no weight
    // overflows however many intervals and however strong the bias.
    std::vector<double> exponent(n);
    for (int i = 0; i < n; ++i) {
        const int step = plan.bias == BiasType::DualBias ? std::min(i, n - 1 - i)
                         : plan.bias == BiasType::Bias   ? i
                                                         : 0;
        exponent[i] = step * log_r;
    }
    const double top = *std::max_element(exponent.begin(), exponent.end());
    double sum = 0;
    for (double& e : exponent) {
        e = std::exp(e - top);
        sum += e;
    }
    const double length = model()->curve_length(curve_id);
    for (double& e : exponent)
        e *= length / sum;
    return exponent;
}

// ---- What the mesher asks -----------------------------------------------------------------------

CurvePlan curve_plan(int curve_id) {
    CurvePlan plan;
    const auto r = resolve(GeomKind::Curve, curve_id);
    if (!r)
        return plan;
    plan.intervals = std::max(1, r->intervals);
    if (const SizingRecord* rec = raw_record(GeomKind::Curve, curve_id);
        rec && rec->bias != BiasType::None) {
        plan.bias = rec->bias;
        plan.factor = rec->bias_factor;
        int first = 0, last = 0;
        plan.from_end = rec->bias == BiasType::Bias && rec->bias_start_vertex != 0 &&
                        curve_ends(curve_id, first, last) && first != last &&
                        rec->bias_start_vertex == last;
    }
    return plan;
}

double target_size(GeomKind kind, int id) {
    const auto r = resolve(kind, id);
    return r ? r->size : fallback_size(kind, id);
}

Scheme scheme_of(GeomKind kind, int id) {
    const SizingRecord* r = record_of(kind, id);
    return r ? r->scheme : Scheme::Default;
}

void sweep_surfaces(int volume_id, int& source, int& target) {
    const SizingRecord* r = record_of(GeomKind::Volume, volume_id);
    const bool sweep = r && r->scheme == Scheme::Sweep;
    source = sweep ? r->sweep_source : 0;
    target = sweep ? r->sweep_target : 0;
}

double tetmesh_growth() {
    return g_sizing ? g_sizing->state.tetmesh_growth : kDefaultTetmeshGrowth;
}

double trimesh_gradation() {
    return g_sizing ? g_sizing->state.trimesh_gradation : kDefaultTrimeshGradation;
}

// ---- Module -------------------------------------------------------------------------------------

void init_sizing() {
    if (g_sizing)
        return;
    g_sizing = std::make_unique<SizingParticipant>();
    add_undo_participant(g_sizing.get());
    if (!g_watcher)
        g_watcher = new GeometryWatcher();
    g_watcher->register_observer();
    register_sizing_commands();
}

void shutdown_sizing() {
    delete g_watcher; // unregisters it
    g_watcher = nullptr;
    if (g_sizing) {
        remove_undo_participant(g_sizing.get());
        g_sizing.reset();
    }
}

} // namespace tarvo::kernel::mesh
