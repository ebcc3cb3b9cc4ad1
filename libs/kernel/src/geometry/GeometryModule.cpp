#include "geometry/GeometryModule.h"

#include "core/Command.h"
#include "core/Guard.h"

#include "core/Session.h"
#include "geometry/GeometryInternal.h"

#include <BRepBndLib.hxx>
#include <BRepCheck_Analyzer.hxx>
#include <BRep_Builder.hxx>
#include <Bnd_Box.hxx>
#include <Message.hxx>
#include <Message_Messenger.hxx>
#include <Message_PrinterOStream.hxx>
#include <Standard_Failure.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS_Iterator.hxx>

#include <algorithm>
#include <cmath>
#include <map>
#include <memory>
#include <set>
#include <sstream>

namespace tarvo::kernel {

namespace {
std::unique_ptr<GeometryModule> g_module;
}

GeometryModule* geometry_module() {
    return g_module.get();
}

void init_geometry_module() {
    if (g_module)
        return;
    // OpenCASCADE prints translation statistics on standard output; the kernel reports through
    // its own channel instead.
    Message::DefaultMessenger()->RemovePrinters(STANDARD_TYPE(Message_PrinterOStream));
    g_module = std::make_unique<GeometryModule>();
    add_entity_catalog(g_module.get());
    add_undo_participant(g_module.get());
    register_geometry_commands();
    register_geometry_file_section();
}

void shutdown_geometry_module() {
    if (!g_module)
        return;
    remove_undo_participant(g_module.get());
    remove_entity_catalog(g_module.get());
    g_module.reset();
}

bool guarded(const char* what, const std::function<bool()>& body) {
    return guarded(what, false, body);
}

// ---- helpers ----------------------------------------------------------------------------------

namespace geometry_detail {

namespace {
// A changed body is kept only when it is finite and within the size of a model (Command.h), and
// valid when what it was made from was valid: OpenCASCADE's algorithms can answer broken or
// overflowing shapes, and a model must never hold them. An operation that makes bodies from
// nothing (primitives from checked numbers, imports, which keep invalid pieces with a warning)
// is checked for size only. Throws, so that the operation fails and its Transaction rolls back.
void check_changed_bodies(const GeometryModel& model, const GeometryState& before) {
    std::vector<BodyPtr> changed;
    for (int id : model.ids(GeomKind::Body)) {
        const BodyPtr body = model.body(id);
        const auto it = before.bodies.find(id);
        if (body && (it == before.bodies.end() || it->second != body))
            changed.push_back(body);
    }
    if (changed.empty())
        return;
    const double limit = kMaxModelExtent * (1 + 1e-9); // room for tolerances only
    for (const BodyPtr& body : changed) {
        Bnd_Box box;
        BRepBndLib::Add(body->shape, box, false);
        if (box.IsVoid())
            continue;
        double b[6];
        box.Get(b[0], b[1], b[2], b[3], b[4], b[5]);
        if (box.IsOpen() ||
            std::any_of(b, b + 6, [&](double v) { return !(std::abs(v) <= limit); }))
            throw std::runtime_error("the result would reach beyond the size of a model "
                                     "(coordinates at most 1e7 in magnitude)");
    }
    // Bodies are immutable, so a body's validity is known for its life: each is analysed once.
    static std::map<std::weak_ptr<const Body>, bool, std::owner_less<>> known;
    static std::size_t pruned_at = 0;
    if (known.size() > 2 * pruned_at + 64) {
        std::erase_if(known, [](const auto& entry) { return entry.first.expired(); });
        pruned_at = known.size();
    }
    const auto valid = [](const BodyPtr& body) {
        const auto [it, added] = known.try_emplace(body, false);
        if (added)
            it->second = shape_is_valid(body->shape);
        return it->second;
    };
    bool inputs_valid = false;
    for (const auto& [id, body] : before.bodies) {
        if (model.body(id) == body)
            continue;
        if (!valid(body))
            return;
        inputs_valid = true;
    }
    if (!inputs_valid)
        return;
    for (const BodyPtr& body : changed)
        if (!valid(body))
            throw std::runtime_error("OpenCASCADE gave back invalid geometry for body " +
                                     std::to_string(body->id));
}
} // namespace

void Transaction::commit(const std::vector<GeomEvent>& extra) {
    check_changed_bodies(model_, before_);
    model_.prune_attributes();
    done_ = true;
    for (const GeomEvent& e : model_.diff(before_))
        GeometryModule::emit(e);
    for (const GeomEvent& e : extra)
        GeometryModule::emit(e);
}

void Transaction::commit_only(const std::vector<GeomEvent>& events) {
    model_.prune_attributes();
    done_ = true;
    for (const GeomEvent& e : events)
        GeometryModule::emit(e);
}

TopoDS_Compound make_compound(const std::vector<TopoDS_Shape>& shapes) {
    BRep_Builder b;
    TopoDS_Compound c;
    b.MakeCompound(c);
    for (const TopoDS_Shape& s : shapes)
        b.Add(c, s);
    return c;
}

std::vector<TopoDS_Shape> pieces_of(const Body& body) {
    std::vector<TopoDS_Shape> out;
    for (const IdShape& v : body.volumes)
        out.push_back(v.shape);
    if (!out.empty())
        return out;
    if (body.shape.ShapeType() == TopAbs_COMPOUND) {
        for (TopoDS_Iterator it(body.shape); it.More(); it.Next())
            out.push_back(it.Value());
    } else {
        out.push_back(body.shape);
    }
    return out;
}

void add_hints(const GeometryModel& model, const Body& body, const std::vector<int>& operands,
               GeometryModel::IdHints& hints,
               const std::function<std::vector<TopoDS_Shape>(const TopoDS_Shape&)>& images) {
    for (GeomKind kind : {GeomKind::Volume, GeomKind::Surface, GeomKind::Curve, GeomKind::Vertex}) {
        for (const IdShape& e : body.of(kind)) {
            bool owned = true;
            for (int b : model.bodies_of(kind, e.id))
                if (std::find(operands.begin(), operands.end(), b) == operands.end())
                    owned = false;
            for (const TopoDS_Shape& image : images(e.shape))
                // A piece shared with a body outside the operation keeps its id only while it
                // stays the very same shape: then both bodies still share it.
                if (owned || image.IsSame(e.shape))
                    hints.add(kind, image, e.id);
        }
    }
}

std::string describe(const char* kind, const std::vector<int>& ids) {
    std::ostringstream out;
    out << kind;
    if (ids.size() > 1)
        out << (std::string(kind) == "body" ? "" : "s");
    if (std::string(kind) == "body" && ids.size() > 1)
        out.str("bodies");
    out.seekp(0, std::ios_base::end);
    for (int id : ids)
        out << ' ' << id;
    return out.str();
}

std::vector<int> volume_ids(const Body& body) {
    std::vector<int> out;
    for (const IdShape& v : body.volumes)
        out.push_back(v.id);
    return out;
}

bool shape_is_valid(const TopoDS_Shape& shape) {
    if (shape.IsNull())
        return false;
    BRepCheck_Analyzer check(shape);
    return check.IsValid();
}

bool positive(double value, const char* what) {
    if (!(value > 0) || !std::isfinite(value))
        return error(std::string(what) + " must be positive");
    return true;
}

int add_new_body(GeometryModel& model, const TopoDS_Shape& shape, const char* what) {
    auto body = model.make_body(model.next_id(GeomKind::Body), shape, nullptr);
    const int id = body->id;
    model.put_body(body);
    if (what) {
        if (!body->volumes.empty())
            print(std::string("Created ") + describe("volume", volume_ids(*body)) +
                  (*what ? std::string(" (") + what + ")" : std::string()));
        else if (!body->surfaces.empty())
            print("Created surface " + std::to_string(body->surfaces.front().id));
        else if (!body->curves.empty())
            print("Created curve " + std::to_string(body->curves.front().id));
        else if (!body->vertices.empty())
            print("Created vertex " + std::to_string(body->vertices.front().id));
    }
    return id;
}

std::vector<TopoDS_Shape> solids_of(const TopoDS_Shape& shape) {
    return GeometryModel::explore(shape, GeomKind::Volume);
}

bool check_done(const BRepAlgoAPI_BuilderAlgo& algo, const char* what) {
    if (interrupted())
        return error("Interrupted");
    if (!algo.IsDone() || algo.HasErrors())
        return error(std::string(what) + " failed in the geometry engine");
    return true;
}

bool all_solid(const GeometryModel& model, const std::vector<int>& bodies, const char* verb) {
    for (int bid : bodies)
        if (model.body(bid)->volumes.empty())
            return error(std::string("cannot ") + verb + " body " + std::to_string(bid) +
                         ": it has no volume");
    return true;
}

} // namespace geometry_detail

using namespace geometry_detail;

// ---- Module -----------------------------------------------------------------------------------

GeometryModule::GeometryModule() = default;
GeometryModule::~GeometryModule() = default;

void GeometryModule::emit(const GeomEvent& e) {
    using C = GeomEvent::Code;
    using O = TarvoInterface::TIObserve;
    Events& ev = events();
    switch (e.code) {
    case C::BodyCreated:
        ev.emit(&O::notify_body_created, e.id);
        break;
    case C::BodyDeleted:
        ev.emit(&O::notify_body_deleted, e.id);
        break;
    case C::BodyUpdated:
        ev.emit(&O::notify_body_updated, e.id);
        break;
    case C::SheetBodyCreated:
        ev.emit(&O::notify_sheet_body_created, e.id);
        break;
    case C::SheetBodyDeleted:
        ev.emit(&O::notify_sheet_body_deleted, e.id);
        break;
    case C::SheetBodyUpdated:
        ev.emit(&O::notify_sheet_body_updated, e.id);
        break;
    case C::VolumeCreated:
        ev.emit(&O::notify_volume_created, e.id);
        break;
    case C::VolumeDeleted:
        ev.emit(&O::notify_volume_deleted, e.id);
        break;
    case C::VolumeUpdated:
        ev.emit(&O::notify_volume_updated, e.id);
        break;
    case C::SurfaceCreated:
        ev.emit(&O::notify_surface_created, e.id);
        break;
    case C::SurfaceDeleted:
        ev.emit(&O::notify_surface_deleted, e.id);
        break;
    case C::SurfaceUpdated:
        ev.emit(&O::notify_surface_updated, e.id);
        break;
    case C::FreeSurfaceCreated:
        ev.emit(&O::notify_free_surface_created, e.id);
        break;
    case C::FreeSurfaceDeleted:
        ev.emit(&O::notify_free_surface_deleted, e.id);
        break;
    case C::CurveCreated:
        ev.emit(&O::notify_curve_created, e.id);
        break;
    case C::CurveDeleted:
        ev.emit(&O::notify_curve_deleted, e.id);
        break;
    case C::FreeCurveCreated:
        ev.emit(&O::notify_free_curve_created, e.id);
        break;
    case C::FreeCurveDeleted:
        ev.emit(&O::notify_free_curve_deleted, e.id);
        break;
    case C::VertexCreated:
        ev.emit(&O::notify_vertex_created, e.id);
        break;
    case C::VertexDeleted:
        ev.emit(&O::notify_vertex_deleted, e.id);
        break;
    case C::FreeVertexCreated:
        ev.emit(&O::notify_free_vertex_created, e.id);
        break;
    case C::FreeVertexDeleted:
        ev.emit(&O::notify_free_vertex_deleted, e.id);
        break;
    case C::Merge:
        ev.emit(&O::notify_merge, e.type, e.text, e.id, e.id2);
        break;
    case C::MergeCompleted:
        ev.emit(&O::notify_merge_completed);
        break;
    case C::WebcutCompleted:
        ev.emit(&O::notify_webcut_completed);
        break;
    case C::BooleanOperationComplete:
        ev.emit(&O::notify_boolean_operation_complete);
        break;
    case C::HealerComplete:
        ev.emit(&O::notify_healer_complete);
        break;
    case C::IdsCompressed:
        ev.emit(&O::notify_ids_compressed);
        break;
    case C::IdChanged:
        ev.emit(&O::notify_id_changed, e.type, e.id, e.id2);
        break;
    case C::EntityNameChanged:
        ev.emit(&O::notify_entity_name_changed, e.type, e.id);
        break;
    case C::EntityVisibilityChanged:
        ev.emit(&O::notify_entity_visibility_changed, e.type, e.id);
        break;
    case C::ImportComplete:
        ev.emit(&O::notify_import_complete, e.text, e.flag);
        break;
    case C::ExportComplete:
        ev.emit(&O::notify_export_complete, e.text, e.flag);
        break;
    case C::AssemblyTreeModified:
        ev.emit(&O::notify_assembly_tree_modified);
        break;
    }
}

bool GeometryModule::owning_bodies(const std::vector<EntityKey>& list, std::vector<int>& bodies,
                                   const char* verb) {
    std::set<int> out;
    for (const EntityKey& key : list) {
        if (!model_.exists(key.kind, key.id))
            return error(std::string(kind_name(key.kind)) + " " + std::to_string(key.id) +
                         " does not exist");
        if (key.kind != GeomKind::Body && key.kind != GeomKind::Volume &&
            !model_.is_free(key.kind, key.id))
            return error(std::string("cannot ") + verb + " " + kind_name(key.kind) + " " +
                         std::to_string(key.id) + ": it is part of a " +
                         (key.kind == GeomKind::Surface ? "volume"
                          : key.kind == GeomKind::Curve ? "surface"
                                                        : "curve") +
                         "; " + verb + " its volume instead");
        for (int b : model_.bodies_of(key.kind, key.id))
            out.insert(b);
    }
    bodies.assign(out.begin(), out.end());
    if (bodies.empty())
        return error(std::string("nothing to ") + verb);
    return true;
}

// ---- Attributes -------------------------------------------------------------------------------

bool GeometryModule::set_name(const std::vector<EntityKey>& list, const std::string& name) {
    if (list.empty())
        return error("no entity to name");
    Transaction tx(model_);
    std::vector<GeomEvent> extra;
    int n = 0;
    for (const EntityKey& key : list) {
        if (!model_.exists(key.kind, key.id))
            return error(std::string(kind_name(key.kind)) + " " + std::to_string(key.id) +
                         " does not exist");
        // One name for several entities: the first gets it, the others name_2, name_3, ...
        ++n;
        std::string wanted = n == 1 ? name : name + "_" + std::to_string(n);
        for (int other : model_.ids_with_name(key.kind, wanted))
            if (other != key.id)
                return error("name '" + wanted + "' is already used by " + kind_name(key.kind) +
                             " " + std::to_string(other));
        auto& attr = model_.attributes_for_update(key.kind, key.id);
        if (attr.name == wanted)
            continue;
        attr.name = wanted;
        extra.push_back({GeomEvent::Code::EntityNameChanged, key.id, 0, kind_name(key.kind)});
        print(std::string("Named ") + kind_name(key.kind) + " " + std::to_string(key.id) + " '" +
              wanted + "'");
    }
    tx.commit(extra);
    return true;
}

bool GeometryModule::set_color(const std::vector<EntityKey>& list,
                               const std::array<double, 4>& rgba) {
    if (list.empty())
        return error("no entity to colour");
    Transaction tx(model_);
    for (const EntityKey& key : list) {
        if (!model_.exists(key.kind, key.id))
            return error(std::string(kind_name(key.kind)) + " " + std::to_string(key.id) +
                         " does not exist");
        auto& attr = model_.attributes_for_update(key.kind, key.id);
        attr.has_color = true;
        attr.color = rgba;
    }
    tx.commit();
    print("Coloured " + std::to_string(list.size()) + " entit" + (list.size() == 1 ? "y" : "ies"));
    return true;
}

bool GeometryModule::set_visible(const std::vector<EntityKey>& list, bool visible) {
    if (list.empty())
        return error(visible ? "nothing to show" : "nothing to hide");
    Transaction tx(model_);
    std::vector<GeomEvent> extra;
    for (const EntityKey& key : list) {
        if (!model_.exists(key.kind, key.id))
            return error(std::string(kind_name(key.kind)) + " " + std::to_string(key.id) +
                         " does not exist");
        auto& attr = model_.attributes_for_update(key.kind, key.id);
        if (attr.visible == visible)
            continue;
        attr.visible = visible;
        extra.push_back({GeomEvent::Code::EntityVisibilityChanged, key.id, 0, kind_name(key.kind)});
    }
    tx.commit(extra);
    print(std::string(visible ? "Shown " : "Hidden ") + std::to_string(extra.size()) + " entit" +
          (extra.size() == 1 ? "y" : "ies"));
    return true;
}

bool GeometryModule::compress_ids() {
    Transaction tx(model_);
    std::vector<GeomEvent> changes = model_.compress_ids();
    std::vector<GeomEvent> extra;
    extra.push_back({GeomEvent::Code::IdsCompressed});
    extra.insert(extra.end(), changes.begin(), changes.end());
    // Renumbering is not a change of shape: no created/deleted events, only the id changes.
    tx.commit_only(extra);
    print("Compressed ids: " + std::to_string(changes.size()) + " id" +
          (changes.size() == 1 ? "" : "s") + " changed");
    return true;
}

// ---- EntityCatalog ----------------------------------------------------------------------------

bool GeometryModule::handles(std::string_view type) const {
    return type == "body" || type == "volume" || type == "surface" || type == "curve" ||
           type == "vertex";
}

std::vector<int> GeometryModule::all_ids(std::string_view type) const {
    auto kind = parse_kind(type);
    return kind ? model_.ids(*kind) : std::vector<int>{};
}

bool GeometryModule::exists(std::string_view type, int id) const {
    auto kind = parse_kind(type);
    return kind && model_.exists(*kind, id);
}

std::vector<int> GeometryModule::relatives(std::string_view source_type, int id,
                                           std::string_view target_type) const {
    auto s = parse_kind(source_type);
    auto t = parse_kind(target_type);
    if (!s || !t || !handles(source_type) || !handles(target_type))
        return {};
    return model_.relatives(*s, id, *t);
}

std::string GeometryModule::name_of(std::string_view type, int id) const {
    auto kind = parse_kind(type);
    return kind ? model_.name_of(*kind, id) : std::string();
}

// ---- UndoParticipant --------------------------------------------------------------------------

namespace {
struct GeometrySnapshot : UndoSnapshot {
    GeometryState state;
};
} // namespace

std::unique_ptr<UndoSnapshot> GeometryModule::save_state() {
    auto snap = std::make_unique<GeometrySnapshot>();
    snap->state = model_.snapshot();
    return snap;
}

void GeometryModule::restore_state(const UndoSnapshot& snapshot) {
    const auto* snap = dynamic_cast<const GeometrySnapshot*>(&snapshot);
    if (!snap)
        return;
    GeometryState now = model_.snapshot();
    model_.restore(snap->state);
    for (const GeomEvent& e : model_.diff(now))
        emit(e);
}

void GeometryModule::clear_state() {
    GeometryState now = model_.snapshot();
    model_.clear();
    for (const GeomEvent& e : model_.diff(now))
        emit(e);
}

} // namespace tarvo::kernel
