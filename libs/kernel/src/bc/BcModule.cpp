#include "bc/BcModule.h"

#include "core/EntityList.h"
#include "core/Session.h"
#include "core/Valfold.h"
#include "fe/FeModule.h"
#include "geometry/GeometryModule.h"
#include "tarvo/TIObserve.h"
#include "tarvo/TarvoTypes.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <set>

namespace tarvo::kernel::bc {

namespace {

using TarvoInterface::TIObserve;

std::unique_ptr<BcModule> g_module;

struct BcSnapshot : UndoSnapshot {
    BcState state;
};

const std::vector<std::string> kPointLike = {"nodeset", "vertex", "curve", "surface", "volume"};
const std::vector<std::string> kFaceLike = {"sideset", "surface"};

std::string lower(std::string_view text) {
    std::string out(text);
    for (char& ch : out)
        ch = static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
    return out;
}

std::string space_word(int space) {
    if (space == kMaterialSpace)
        return "material";
    if (space == kLayerSpace)
        return "boundary layer";
    if (space == kCoordSpace)
        return "coordinate system";
    if (is_cfd_kind(space))
        return "cfd condition";
    return kind_by_code(space)->word;
}

// The event of a condition: constraints have their own, the others share bc_entity_modified.
void emit_condition(int kind, int id, const std::string& action) {
    if (kind == TarvoInterface::TI_BC_CONSTRAINT)
        events().emit(&TIObserve::notify_constraint_modified, id, action);
    else
        events().emit(&TIObserve::notify_bc_entity_modified, std::string(kind_by_code(kind)->word),
                      id, action);
}

void emit_material(const Material& m, const std::string& action) {
    events().emit(&TIObserve::notify_material_modified, m.id, action);
    if (m.cfd)
        events().emit(&TIObserve::notify_media_modified, m.id, action);
}

// Events for every record that differs between two states.
void emit_difference(const BcState& before, const BcState& after) {
    const auto diff = [](const auto& then, const auto& now, const auto& emit) {
        for (const auto& [key, piece] : then)
            if (!now.count(key))
                emit(*piece, "deleted");
        for (const auto& [key, piece] : now) {
            const auto it = then.find(key);
            if (it == then.end())
                emit(*piece, "created");
            else if (it->second != piece)
                emit(*piece, "modified");
        }
    };
    diff(before.conditions, after.conditions,
         [](const Condition& c, const char* action) { emit_condition(c.kind, c.id, action); });
    diff(before.materials, after.materials,
         [](const Material& m, const char* action) { emit_material(m, action); });
    diff(before.layers, after.layers, [](const BoundaryLayer& l, const std::string& action) {
        if (action == "deleted")
            events().emit(&TIObserve::notify_boundary_layer_deleted, l.id);
        else
            events().emit(&TIObserve::notify_boundary_layer_created, l.id);
    });
    diff(before.coordinate_systems, after.coordinate_systems,
         [](const CoordinateSystem& c, const char* action) {
             events().emit(&TIObserve::notify_coord_sys_modified, c.id, std::string(action));
         });
    if (before.block_materials != after.block_materials)
        for (const auto& [id, m] : after.materials)
            if (before.materials.count(id) && before.materials.at(id) == m)
                emit_material(*m, "modified");
}

template <class Map> std::vector<int> keys_of(const Map& map) {
    std::vector<int> out;
    for (const auto& [id, piece] : map)
        out.push_back(id);
    return out;
}

bool finite(double v) {
    return std::isfinite(v);
}

} // namespace

BcModule* bc_module() {
    return g_module.get();
}

// ---- Kinds
// -------------------------------------------------------------------------------------------

const std::vector<KindInfo>& kinds() {
    using namespace TarvoInterface;
    static const std::vector<KindInfo> table = [] {
        std::vector<KindInfo> t{
            {TI_BC_ACCELERATION, "acceleration", kPointLike},
            {TI_BC_VELOCITY, "velocity", kPointLike},
            {TI_BC_DISPLACEMENT, "displacement", kPointLike},
            {TI_BC_TEMPERATURE, "temperature", kPointLike},
            {TI_BC_FORCE, "force", {"nodeset", "vertex", "curve", "surface"}},
            {TI_BC_PRESSURE, "pressure", kFaceLike},
            {TI_BC_CONSTRAINT, "constraint", {"nodeset", "sideset", "vertex", "curve", "surface"}},
            {TI_BC_CONVECTION, "convection", kFaceLike},
            {TI_BC_HEATFLUX, "heatflux", kFaceLike},
            {TI_BC_CONTACT_REGION, "contact region", kFaceLike},
            {TI_BC_CONTACT_PAIR, "contact pair", {"sideset"}},
        };
        // The CFD kinds in code order; the words are those get_all_cfd_bcs answers.
        const char* const cfd[] = {"axis",
                                   "exhaustfan",
                                   "fan",
                                   "inletvent",
                                   "intakefan",
                                   "interface",
                                   "interior",
                                   "massflowinlet",
                                   "outflow",
                                   "outletvent",
                                   "periodic",
                                   "periodicshadow",
                                   "porousjump",
                                   "pressurefarfield",
                                   "pressureinlet",
                                   "pressureoutlet",
                                   "radiator",
                                   "supersonicinflow",
                                   "supersonicoutflow",
                                   "symmetry",
                                   "velocityinlet",
                                   "wall"};
        for (int i = 0; i < 22; ++i)
            t.push_back({TI_BC_CFD_FIRST + i, cfd[i], {"sideset"}});
        return t;
    }();
    return table;
}

const KindInfo* kind_by_code(int code) {
    for (const KindInfo& k : kinds())
        if (k.code == code)
            return &k;
    return nullptr;
}

const KindInfo* kind_by_word(std::string_view word) {
    const std::string w = lower(word);
    for (const KindInfo& k : kinds())
        if (w == k.word)
            return &k;
    return nullptr;
}

bool target_exists(const Target& t) {
    if (const auto kind = parse_kind(t.type))
        return geometry_module()->model().exists(*kind, t.id);
    const EntityCatalog* c = catalog_for(t.type);
    return c && c->exists(t.type, t.id);
}

std::string describe(const std::vector<Target>& targets) {
    std::vector<std::pair<std::string, std::vector<int>>> groups;
    for (const Target& t : targets) {
        auto it = std::find_if(groups.begin(), groups.end(),
                               [&](const auto& g) { return g.first == t.type; });
        if (it == groups.end())
            it = groups.insert(groups.end(), {t.type, {}});
        it->second.push_back(t.id);
    }
    std::string out;
    for (const auto& [type, ids] : groups) {
        out += (out.empty() ? "" : ", ") + type;
        for (int id : ids)
            out += " " + std::to_string(id);
    }
    return out;
}

// ---- Ids
// ---------------------------------------------------------------------------------------------

int BcModule::next_id(int space) const {
    const auto it = state_.max_ids.find(space);
    return (it == state_.max_ids.end() ? 0 : it->second) + 1;
}

void BcModule::take_id(int space, int id) {
    int& max = state_.max_ids[space];
    max = std::max(max, id);
}

// ---- Conditions
// --------------------------------------------------------------------------------------

const Condition* BcModule::condition(int kind, int id) const {
    const auto it = state_.conditions.find({id_space(kind), id});
    // A CFD id asked for with another CFD kind is not that condition.
    if (it == state_.conditions.end() || it->second->kind != kind)
        return nullptr;
    return it->second.get();
}

const Condition* BcModule::cfd_condition(int id) const {
    const auto it = state_.conditions.find({TarvoInterface::TI_BC_CFD_FIRST, id});
    return it == state_.conditions.end() ? nullptr : it->second.get();
}

bool BcModule::put_condition(Condition c, bool created) {
    const KindInfo* kind = kind_by_code(c.kind);
    if (!kind)
        return error("unknown condition kind " + std::to_string(c.kind));
    const int space = id_space(c.kind);
    if (created && c.id == 0)
        c.id = next_id(space);
    if (c.id <= 0)
        return error(std::string(kind->word) + " ids are positive; " + std::to_string(c.id) +
                     " is not");
    if (created && state_.conditions.count({space, c.id}))
        return error(space_word(space) + " " + std::to_string(c.id) + " exists already");
    if (c.on.empty() && c.kind != TarvoInterface::TI_BC_CONTACT_PAIR)
        return error("a " + std::string(kind->word) + " must lie on something");
    for (const Target& t : c.on) {
        if (std::find(kind->targets.begin(), kind->targets.end(), t.type) == kind->targets.end()) {
            std::string allowed;
            for (const std::string& a : kind->targets)
                allowed += (allowed.empty() ? "" : ", ") + a;
            return error("a " + std::string(kind->word) + " cannot lie on a " + t.type +
                         " (it goes on " + allowed + ")");
        }
        if (!target_exists(t))
            return error(t.type + " " + std::to_string(t.id) + " does not exist");
    }
    for (double v : {c.magnitude, c.moment, c.pressure, c.friction, c.tolerance, c.tol_lower})
        if (!finite(v))
            return error("values must be finite numbers");
    if (c.kind == TarvoInterface::TI_BC_FORCE) {
        const auto zero = [](const std::array<double, 3>& d) {
            return d[0] == 0 && d[1] == 0 && d[2] == 0;
        };
        if (zero(c.direction))
            return error("a force needs a direction that is not zero");
        if (c.moment != 0 && zero(c.moment_direction))
            return error("a moment needs a direction that is not zero");
    }
    if (c.friction < 0 || c.tolerance < 0 || c.tol_lower < 0)
        return error("friction and tolerances of a contact pair are not negative");
    if (c.kind == TarvoInterface::TI_BC_CONSTRAINT) {
        if (c.constraint_type != "rigid" && c.constraint_type != "distributing")
            return error("a constraint is rigid or distributing");
        if (!target_exists(c.reference))
            return error("reference " + c.reference.type + " " + std::to_string(c.reference.id) +
                         " does not exist");
    }
    take_id(space, c.id);
    const int id = c.id;
    const int code = c.kind;
    state_.conditions[{space, id}] = std::make_shared<const Condition>(std::move(c));
    print(std::string(created ? "Created " : "Modified ") + kind->word + " " + std::to_string(id));
    emit_condition(code, id, created ? "created" : "modified");
    return true;
}

bool BcModule::delete_conditions(int kind, const std::vector<int>& ids) {
    const KindInfo* info = kind_by_code(kind);
    for (int id : ids)
        if (!condition(kind, id))
            return error(std::string(info ? info->word : "condition") + " " + std::to_string(id) +
                         " does not exist");
    for (int id : ids) {
        const auto key = BcKey{id_space(kind), id};
        const int code = state_.conditions.at(key)->kind;
        state_.conditions.erase(key);
        print("Deleted " + std::string(kind_by_code(code)->word) + " " + std::to_string(id));
        emit_condition(code, id, "deleted");
    }
    return true;
}

// ---- Materials
// ---------------------------------------------------------------------------------------

const Material* BcModule::material(int id) const {
    const auto it = state_.materials.find(id);
    return it == state_.materials.end() ? nullptr : it->second.get();
}

const Material* BcModule::material_by_name(const std::string& name) const {
    const std::string wanted = lower(name);
    for (const auto& [id, m] : state_.materials)
        if (lower(m->name) == wanted)
            return m.get();
    return nullptr;
}

const Material* BcModule::material_by_serial(long serial) const {
    for (const auto& [id, m] : state_.materials)
        if (m->serial == serial)
            return m.get();
    return nullptr;
}

bool BcModule::put_material(Material m, bool created) {
    const char* what = m.cfd ? "medium" : "material";
    if (m.name.empty())
        return error(std::string("a ") + what + " needs a name");
    if (const Material* other = material_by_name(m.name); other && other->id != m.id)
        return error("the name '" + m.name + "' is taken by " +
                     (other->cfd ? "medium " : "material ") + std::to_string(other->id));
    for (const auto& [name, value] : m.properties) {
        const auto bad = [&](const std::string& why) {
            return error("property '" + name + "' of " + what + " '" + m.name + "': " + why);
        };
        std::vector<double> all = value.vector;
        all.push_back(value.scalar);
        for (const auto& row : value.table)
            all.insert(all.end(), row.begin(), row.end());
        if (!std::all_of(all.begin(), all.end(), finite))
            return bad("values must be finite");
        if (value.kind == 0 &&
            (name == "ELASTIC_MODULUS" || name == "SHEAR_MODULUS" || name == "DENSITY") &&
            value.scalar <= 0)
            return bad("must be positive, not " + format_number(value.scalar));
        if (value.kind == 0 && name == "POISSON_RATIO" &&
            (value.scalar <= -1 || value.scalar >= 0.5))
            return bad("must lie between -1 and 0.5, not " + format_number(value.scalar));
        if (value.kind >= 2) {
            if (value.table.empty())
                return bad("a table needs rows");
            for (const auto& row : value.table)
                if (row.size() != value.table.front().size())
                    return bad("every row of a table has as many numbers as the first");
        }
    }
    for (const auto& [name, value] : m.properties)
        properties_.add_to_group(m.group, properties_.find(name));
    if (created) {
        m.id = next_id(kMaterialSpace);
        m.serial = ++state_.material_serial;
    }
    take_id(kMaterialSpace, m.id);
    auto piece = std::make_shared<const Material>(std::move(m));
    state_.materials[piece->id] = piece;
    print(std::string(created ? "Created " : "Modified ") + what + " " + std::to_string(piece->id) +
          " '" + piece->name + "'");
    emit_material(*piece, created ? "created" : "modified");
    return true;
}

bool BcModule::delete_material(int id) {
    const auto it = state_.materials.find(id);
    if (it == state_.materials.end())
        return error("material " + std::to_string(id) + " does not exist");
    const auto piece = it->second;
    state_.materials.erase(it);
    for (auto b = state_.block_materials.begin(); b != state_.block_materials.end();)
        b = b->second == id ? state_.block_materials.erase(b) : std::next(b);
    print(std::string("Deleted ") + (piece->cfd ? "medium " : "material ") + std::to_string(id) +
          " '" + piece->name + "'");
    emit_material(*piece, "deleted");
    return true;
}

bool BcModule::assign_material(int material_id, const std::vector<int>& blocks) {
    const Material* m = material(material_id);
    if (!m)
        return error("material " + std::to_string(material_id) + " does not exist");
    if (blocks.empty())
        return error("no block to assign '" + m->name + "' to");
    const fe::FeModule* fe = fe::fe_module();
    for (int b : blocks)
        if (!fe || !fe->state().blocks.count(b))
            return error("block " + std::to_string(b) + " does not exist");
    std::string text;
    for (int b : blocks) {
        state_.block_materials[b] = material_id;
        text += " " + std::to_string(b);
    }
    print("Material '" + m->name + "' on block" + (blocks.size() > 1 ? "s" : "") + text);
    emit_material(*m, "modified");
    return true;
}

// ---- Boundary layers and coordinate systems
// ------------------------------------------------------

bool BcModule::put_layer(BoundaryLayer layer, bool created) {
    if (layer.id <= 0)
        return error("boundary layer ids are positive; " + std::to_string(layer.id) + " is not");
    if (created && state_.layers.count(layer.id))
        return error("boundary layer " + std::to_string(layer.id) + " exists already");
    for (double v : {layer.first_height, layer.first_aspect, layer.last_aspect, layer.growth})
        if (!finite(v) || v < 0)
            return error("boundary layer values are finite and not negative");
    if (layer.rows < 1)
        return error("a boundary layer has at least one row");
    const GeometryModel& g = geometry_module()->model();
    const auto on = [&](GeomKind a, int ida, GeomKind b, int idb) {
        const auto r = g.relatives(b, idb, a);
        return std::find(r.begin(), r.end(), ida) != r.end();
    };
    for (const auto& [c, s] : layer.curve_surface)
        if (!g.exists(GeomKind::Curve, c) || !g.exists(GeomKind::Surface, s) ||
            !on(GeomKind::Curve, c, GeomKind::Surface, s))
            return error("curve " + std::to_string(c) + " is not a curve of surface " +
                         std::to_string(s));
    for (const auto& [s, v] : layer.surface_volume)
        if (!g.exists(GeomKind::Surface, s) || !g.exists(GeomKind::Volume, v) ||
            !on(GeomKind::Surface, s, GeomKind::Volume, v))
            return error("surface " + std::to_string(s) + " is not a surface of volume " +
                         std::to_string(v));
    take_id(kLayerSpace, layer.id);
    const int id = layer.id;
    const bool existed = state_.layers.count(id) != 0;
    state_.layers[id] = std::make_shared<const BoundaryLayer>(std::move(layer));
    print(std::string(existed ? "Modified" : "Created") + " boundary layer " + std::to_string(id));
    // There is no "modified" event for layers: a change reads as the layer made anew.
    events().emit(&TIObserve::notify_boundary_layer_created, id);
    return true;
}

bool BcModule::delete_layers(const std::vector<int>& ids) {
    for (int id : ids)
        if (!state_.layers.count(id))
            return error("boundary layer " + std::to_string(id) + " does not exist");
    for (int id : ids) {
        state_.layers.erase(id);
        print("Deleted boundary layer " + std::to_string(id));
        events().emit(&TIObserve::notify_boundary_layer_deleted, id);
    }
    return true;
}

bool BcModule::set_intersection(bool vertex, int a, int b, const std::string& type) {
    const GeometryModel& g = geometry_module()->model();
    const GeomKind ka = vertex ? GeomKind::Vertex : GeomKind::Curve;
    const GeomKind kb = vertex ? GeomKind::Surface : GeomKind::Volume;
    const auto r = g.relatives(kb, b, ka);
    if (!g.exists(kb, b) || std::find(r.begin(), r.end(), a) == r.end())
        return error(std::string(vertex ? "vertex " : "curve ") + std::to_string(a) +
                     " is not on " + (vertex ? "surface " : "volume ") + std::to_string(b));
    (vertex ? state_.vertex_intersections : state_.curve_intersections)[{a, b}] = type;
    print("Boundary layer intersection of " + std::string(vertex ? "vertex " : "curve ") +
          std::to_string(a) + (vertex ? " on surface " : " in volume ") + std::to_string(b) + ": " +
          type);
    return true;
}

bool BcModule::put_coordinate_system(CoordinateSystem cs) {
    const auto norm = [](const std::array<double, 3>& v) {
        return std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
    };
    if (norm(cs.z_axis) == 0 || norm(cs.x_axis) == 0)
        return error("coordinate system axes are not zero");
    const auto& z = cs.z_axis;
    const auto& x = cs.x_axis;
    const std::array<double, 3> cross{z[1] * x[2] - z[2] * x[1], z[2] * x[0] - z[0] * x[2],
                                      z[0] * x[1] - z[1] * x[0]};
    if (norm(cross) <= 1e-12 * norm(z) * norm(x))
        return error("the z axis and the xz-plane direction of a coordinate system are parallel");
    const bool created = cs.id == 0;
    if (created)
        cs.id = next_id(kCoordSpace);
    take_id(kCoordSpace, cs.id);
    const int id = cs.id;
    state_.coordinate_systems[id] = std::make_shared<const CoordinateSystem>(std::move(cs));
    print(std::string(created ? "Created" : "Modified") + " coordinate system " +
          std::to_string(id));
    events().emit(&TIObserve::notify_coord_sys_modified, id,
                  std::string(created ? "created" : "modified"));
    return true;
}

bool BcModule::delete_coordinate_systems(const std::vector<int>& ids) {
    for (int id : ids)
        if (!state_.coordinate_systems.count(id))
            return error("coordinate system " + std::to_string(id) + " does not exist");
    for (int id : ids) {
        state_.coordinate_systems.erase(id);
        print("Deleted coordinate system " + std::to_string(id));
        events().emit(&TIObserve::notify_coord_sys_modified, id, std::string("deleted"));
    }
    return true;
}

void BcModule::follow(const std::string& type, int old_id, int new_id) {
    const auto moved = [&](Target& t) {
        if (t.type != type || t.id != old_id)
            return false;
        t.id = new_id;
        return true;
    };
    for (auto& [key, piece] : state_.conditions) {
        Condition c = *piece;
        bool changed = moved(c.reference);
        for (Target& t : c.on)
            changed = moved(t) || changed;
        if (!changed)
            continue;
        std::erase_if(c.on, [](const Target& t) { return t.id == 0; });
        piece = std::make_shared<const Condition>(std::move(c));
        emit_condition(piece->kind, piece->id, "modified");
    }
}

void BcModule::replace_state(BcState state) {
    const BcState before = std::move(state_);
    state_ = std::move(state);
    emit_difference(before, state_);
}

// ---- EntityCatalog
// -----------------------------------------------------------------------------------

bool BcModule::handles(std::string_view type) const {
    return type == "material" || type == "media" || type == "boundary_layer" ||
           type == "coordinate_system" || type == "cfd_bc" || kind_by_word(type) != nullptr;
}

std::vector<int> BcModule::all_ids(std::string_view type) const {
    if (type == "material" || type == "media") {
        std::vector<int> out;
        for (const auto& [id, m] : state_.materials)
            if (type == "material" || m->cfd)
                out.push_back(id);
        return out;
    }
    if (type == "boundary_layer")
        return keys_of(state_.layers);
    if (type == "coordinate_system")
        return keys_of(state_.coordinate_systems);
    const KindInfo* k = type == "cfd_bc" ? nullptr : kind_by_word(type);
    if (type != "cfd_bc" && !k)
        return {};
    std::vector<int> out;
    for (const auto& [key, c] : state_.conditions)
        if (k ? c->kind == k->code : is_cfd_kind(c->kind))
            out.push_back(key.second);
    return out;
}

bool BcModule::exists(std::string_view type, int id) const {
    const auto ids = all_ids(type);
    return std::binary_search(ids.begin(), ids.end(), id);
}

std::vector<int> BcModule::relatives(std::string_view source_type, int id,
                                     std::string_view target_type) const {
    // "surface in pressure 1", "sideset in wall 2": what a condition lies on.
    const KindInfo* k = kind_by_word(source_type);
    const Condition* c = k ? condition(k->code, id) : nullptr;
    if (!c && source_type == "cfd_bc")
        c = cfd_condition(id);
    std::set<int> out;
    if (c)
        for (const Target& t : c->on)
            if (t.type == target_type && target_exists(t))
                out.insert(t.id);
    return {out.begin(), out.end()};
}

std::string BcModule::name_of(std::string_view type, int id) const {
    if (type == "material" || type == "media") {
        const Material* m = material(id);
        return m ? m->name : std::string();
    }
    const KindInfo* k = kind_by_word(type);
    if (const Condition* c = k ? condition(k->code, id) : nullptr)
        return c->name;
    if (type == "coordinate_system" && state_.coordinate_systems.count(id))
        return state_.coordinate_systems.at(id)->name;
    return {};
}

// ---- UndoParticipant
// ---------------------------------------------------------------------------------

std::unique_ptr<UndoSnapshot> BcModule::save_state() {
    auto snap = std::make_unique<BcSnapshot>();
    snap->state = state_;
    return snap;
}

void BcModule::restore_state(const UndoSnapshot& snapshot) {
    replace_state(static_cast<const BcSnapshot&>(snapshot).state);
}

void BcModule::clear_state() {
    replace_state({});
}

namespace {

// Deleted geometry and sets leave the conditions that lay on them, and renumbered geometry
// (`compress ids`) is followed, so that an id a condition holds always names what it was given.
// Undo puts the whole state back itself, so events of a restore are not followed.
class Watcher : public TIObserve {
public:
    void notify_volume_deleted(int id) override { follow("volume", id, 0); }
    void notify_surface_deleted(int id) override { follow("surface", id, 0); }
    void notify_free_surface_deleted(int id) override { follow("surface", id, 0); }
    void notify_curve_deleted(int id) override { follow("curve", id, 0); }
    void notify_free_curve_deleted(int id) override { follow("curve", id, 0); }
    void notify_vertex_deleted(int id) override { follow("vertex", id, 0); }
    void notify_free_vertex_deleted(int id) override { follow("vertex", id, 0); }
    void notify_id_changed(const std::string& type, int old_id, int new_id) override {
        follow(type, old_id, new_id);
    }
    void notify_genesis_entity_modified(const std::string& type, int id,
                                        const std::string& action) override {
        if (action == "deleted")
            follow(type, id, 0);
    }

private:
    static void follow(const std::string& type, int old_id, int new_id) {
        if (g_module && !performing_undo())
            g_module->follow(type, old_id, new_id);
    }
};

// A plain pointer, as in the other modules: the observer list may be gone at static destruction.
Watcher* g_watcher = nullptr;

} // namespace

} // namespace tarvo::kernel::bc

namespace tarvo::kernel {

void init_bc_module() {
    bc::g_module = std::make_unique<bc::BcModule>();
    add_entity_catalog(bc::g_module.get());
    add_undo_participant(bc::g_module.get());
    bc::register_bc_commands();
    bc::register_bc_file_section();
    fe::set_exodus_extras_provider([] { return bc::exodus_extras_of(bc::g_module->state()); });
    if (!bc::g_watcher)
        bc::g_watcher = new bc::Watcher();
    bc::g_watcher->register_observer();
}

void shutdown_bc_module() {
    if (!bc::g_module)
        return;
    delete bc::g_watcher; // unregisters it
    bc::g_watcher = nullptr;
    bc::unregister_bc_file_section();
    fe::set_exodus_extras_provider({});
    fe::set_block_material_handler({});
    remove_undo_participant(bc::g_module.get());
    remove_entity_catalog(bc::g_module.get());
    bc::g_module.reset();
}

} // namespace tarvo::kernel
