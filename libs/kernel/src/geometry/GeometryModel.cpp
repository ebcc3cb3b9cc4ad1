#include "geometry/GeometryModel.h"

#include "core/Wildcard.h"
#include "geometry/GeometryMemo.h"

#include <BRep_Tool.hxx>
#include <TopExp.hxx>
#include <TopExp_Explorer.hxx>
#include <TopTools_DataMapOfShapeInteger.hxx>
#include <TopTools_IndexedDataMapOfShapeListOfShape.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS.hxx>

#include <algorithm>
#include <cctype>
#include <iterator>
#include <set>

namespace tarvo::kernel {

namespace {

constexpr GeomKind kSubKinds[] = {GeomKind::Volume, GeomKind::Surface, GeomKind::Curve,
                                  GeomKind::Vertex};

} // namespace

const char* kind_name(GeomKind kind) {
    switch (kind) {
    case GeomKind::Body:
        return "body";
    case GeomKind::Volume:
        return "volume";
    case GeomKind::Surface:
        return "surface";
    case GeomKind::Curve:
        return "curve";
    case GeomKind::Vertex:
        return "vertex";
    }
    return "";
}

std::optional<GeomKind> parse_kind(std::string_view text) {
    std::string lower;
    for (char c : text)
        lower.push_back(static_cast<char>(std::tolower(static_cast<unsigned char>(c))));
    if (lower.size() < 3)
        return std::nullopt;
    for (GeomKind kind :
         {GeomKind::Body, GeomKind::Volume, GeomKind::Surface, GeomKind::Curve, GeomKind::Vertex}) {
        std::string_view name = kind_name(kind);
        if (name.substr(0, lower.size()) == lower)
            return kind;
    }
    return std::nullopt;
}

int kind_dimension(GeomKind kind) {
    switch (kind) {
    case GeomKind::Body:
    case GeomKind::Volume:
        return 3;
    case GeomKind::Surface:
        return 2;
    case GeomKind::Curve:
        return 1;
    case GeomKind::Vertex:
        return 0;
    }
    return -1;
}

TopAbs_ShapeEnum shape_enum(GeomKind kind) {
    switch (kind) {
    case GeomKind::Volume:
        return TopAbs_SOLID;
    case GeomKind::Surface:
        return TopAbs_FACE;
    case GeomKind::Curve:
        return TopAbs_EDGE;
    case GeomKind::Vertex:
        return TopAbs_VERTEX;
    case GeomKind::Body:
        break;
    }
    return TopAbs_SHAPE;
}

const std::vector<IdShape>& Body::of(GeomKind kind) const {
    switch (kind) {
    case GeomKind::Volume:
        return volumes;
    case GeomKind::Surface:
        return surfaces;
    case GeomKind::Curve:
        return curves;
    case GeomKind::Vertex:
    case GeomKind::Body:
        break;
    }
    return vertices;
}

// ---- IdHints ----------------------------------------------------------------------------------

struct GeometryModel::IdHints::Impl {
    std::array<TopTools_DataMapOfShapeInteger, kGeomKindCount> hint;
    std::array<TopTools_DataMapOfShapeInteger, kGeomKindCount> assigned;
    std::array<std::unordered_map<int, TopoDS_Shape>, kGeomKindCount> claimed;
    std::vector<Merged> merged;
};

GeometryModel::IdHints::IdHints() : impl(std::make_unique<Impl>()) {}
GeometryModel::IdHints::~IdHints() = default;

void GeometryModel::IdHints::add(GeomKind kind, const TopoDS_Shape& shape, int id) {
    auto& map = impl->hint[static_cast<int>(kind)];
    if (!map.IsBound(shape))
        map.Bind(shape, id);
}

int GeometryModel::IdHints::find(GeomKind kind, const TopoDS_Shape& shape) const {
    const int* id = impl->hint[static_cast<int>(kind)].Seek(shape);
    return id ? *id : 0;
}

void GeometryModel::IdHints::reset_hints() {
    for (auto& h : impl->hint)
        h.Clear();
}

const std::vector<GeometryModel::IdHints::Merged>& GeometryModel::IdHints::merged() const {
    return impl->merged;
}

// ---- GeometryModel ----------------------------------------------------------------------------

GeometryModel::GeometryModel() = default;

std::vector<TopoDS_Shape> GeometryModel::explore(const TopoDS_Shape& shape, GeomKind kind) {
    std::vector<TopoDS_Shape> out;
    if (shape.IsNull() || kind == GeomKind::Body)
        return out;
    TopTools_IndexedMapOfShape map;
    TopExp::MapShapes(shape, shape_enum(kind), map);
    out.reserve(static_cast<std::size_t>(map.Extent()));
    for (int i = 1; i <= map.Extent(); ++i) {
        if (kind == GeomKind::Curve && BRep_Tool::Degenerated(TopoDS::Edge(map(i))))
            continue;
        out.push_back(map(i));
    }
    return out;
}

std::shared_ptr<Body> GeometryModel::make_body(int body_id, const TopoDS_Shape& shape,
                                               IdHints* hints) {
    IdHints local;
    IdHints& h = hints ? *hints : local;
    auto body = std::make_shared<Body>();
    body->id = body_id;
    body->shape = shape;
    for (GeomKind kind : kSubKinds) {
        const int k = static_cast<int>(kind);
        auto& claimed = h.impl->claimed[k];
        auto& assigned = h.impl->assigned[k];
        std::vector<IdShape>* out = nullptr;
        switch (kind) {
        case GeomKind::Volume:
            out = &body->volumes;
            break;
        case GeomKind::Surface:
            out = &body->surfaces;
            break;
        case GeomKind::Curve:
            out = &body->curves;
            break;
        default:
            out = &body->vertices;
            break;
        }
        for (const TopoDS_Shape& sub : explore(shape, kind)) {
            const int hinted = h.find(kind, sub);
            int id = 0;
            if (const int* given = assigned.Seek(sub)) {
                id = *given;
                if (hinted > 0 && hinted != id)
                    h.impl->merged.push_back({kind, hinted, id});
            } else {
                id = hinted;
                if (id > 0 && claimed.count(id))
                    id = 0;
                if (id == 0)
                    id = next_id(kind);
                claimed.emplace(id, sub);
                assigned.Bind(sub, id);
            }
            out->push_back({id, sub});
        }
    }
    return body;
}

void GeometryModel::index_add(const Body& body) {
    for (GeomKind kind : kSubKinds) {
        auto& idx = index_[static_cast<int>(kind)];
        const auto& items = body.of(kind);
        for (std::size_t i = 0; i < items.size(); ++i) {
            IndexEntry& entry = idx[items[i].id];
            if (entry.bodies.empty()) {
                entry.shape = items[i].shape;
                entry.holder = &body;
                entry.position = i;
            }
            entry.bodies.push_back(body.id);
        }
    }
}

void GeometryModel::index_remove(const Body& body) {
    for (GeomKind kind : kSubKinds) {
        auto& idx = index_[static_cast<int>(kind)];
        for (const IdShape& e : body.of(kind)) {
            auto it = idx.find(e.id);
            if (it == idx.end())
                continue;
            auto& b = it->second.bodies;
            b.erase(std::remove(b.begin(), b.end(), body.id), b.end());
            if (it->second.holder == &body)
                it->second.holder = nullptr; // never left pointing at a body that may go
            if (b.empty()) {
                idx.erase(it);
            } else if (it->second.shape.IsSame(e.shape)) {
                // Keep the entry's shape pointing at a body that still holds it.
                BodyPtr other = this->body(b.front());
                if (other) {
                    const auto& items = other->of(kind);
                    for (std::size_t i = 0; i < items.size(); ++i)
                        if (items[i].id == e.id) {
                            it->second.shape = items[i].shape;
                            it->second.holder = other.get();
                            it->second.position = i;
                            break;
                        }
                }
            }
        }
    }
}

void GeometryModel::rebuild_index() {
    for (auto& idx : index_)
        idx.clear();
    for (const auto& [id, body] : state_.bodies)
        index_add(*body);
}

void GeometryModel::put_body(std::shared_ptr<const Body> body) {
    auto it = state_.bodies.find(body->id);
    if (it != state_.bodies.end()) {
        BodyPtr old = it->second;
        state_.bodies.erase(it);
        index_remove(*old);
    }
    state_.max_id[0] = std::max(state_.max_id[0], body->id);
    state_.bodies.emplace(body->id, body);
    index_add(*body);
}

void GeometryModel::remove_body(int id) {
    auto it = state_.bodies.find(id);
    if (it == state_.bodies.end())
        return;
    BodyPtr old = it->second;
    state_.bodies.erase(it);
    index_remove(*old);
}

void GeometryModel::restore(const GeometryState& saved) {
    // Bodies that are the same object in both states need no index work.
    std::vector<BodyPtr> gone;
    for (const auto& [id, body] : state_.bodies) {
        auto it = saved.bodies.find(id);
        if (it == saved.bodies.end() || it->second != body)
            gone.push_back(body);
    }
    std::vector<BodyPtr> back;
    for (const auto& [id, body] : saved.bodies) {
        auto it = state_.bodies.find(id);
        if (it == state_.bodies.end() || it->second != body)
            back.push_back(body);
    }
    for (const BodyPtr& b : gone) {
        state_.bodies.erase(b->id);
        index_remove(*b);
    }
    for (const BodyPtr& b : back) {
        state_.bodies.emplace(b->id, b);
        index_add(*b);
    }
    state_.attributes = saved.attributes;
    state_.max_id = saved.max_id;
    state_.assembly = saved.assembly;
}

void GeometryModel::clear() {
    state_ = GeometryState{};
    for (auto& idx : index_)
        idx.clear();
}

bool GeometryModel::exists(GeomKind kind, int id) const {
    if (kind == GeomKind::Body)
        return state_.bodies.count(id) != 0;
    return index_[static_cast<int>(kind)].count(id) != 0;
}

std::vector<int> GeometryModel::ids(GeomKind kind) const {
    std::vector<int> out;
    if (kind == GeomKind::Body) {
        for (const auto& [id, body] : state_.bodies)
            out.push_back(id);
        return out;
    }
    const auto& idx = index_[static_cast<int>(kind)];
    out.reserve(idx.size());
    for (const auto& [id, entry] : idx)
        out.push_back(id);
    std::sort(out.begin(), out.end());
    return out;
}

std::size_t GeometryModel::count(GeomKind kind) const {
    if (kind == GeomKind::Body)
        return state_.bodies.size();
    return index_[static_cast<int>(kind)].size();
}

TopoDS_Shape GeometryModel::shape(GeomKind kind, int id) const {
    if (kind == GeomKind::Body) {
        auto it = state_.bodies.find(id);
        return it == state_.bodies.end() ? TopoDS_Shape() : it->second->shape;
    }
    const auto& idx = index_[static_cast<int>(kind)];
    auto it = idx.find(id);
    return it == idx.end() ? TopoDS_Shape() : it->second.shape;
}

std::vector<int> GeometryModel::bodies_of(GeomKind kind, int id) const {
    if (kind == GeomKind::Body)
        return exists(kind, id) ? std::vector<int>{id} : std::vector<int>{};
    const auto& idx = index_[static_cast<int>(kind)];
    auto it = idx.find(id);
    if (it == idx.end())
        return {};
    std::vector<int> out = it->second.bodies;
    std::sort(out.begin(), out.end());
    out.erase(std::unique(out.begin(), out.end()), out.end());
    return out;
}

BodyPtr GeometryModel::body(int id) const {
    auto it = state_.bodies.find(id);
    return it == state_.bodies.end() ? nullptr : it->second;
}

int GeometryModel::id_of(GeomKind kind, const TopoDS_Shape& s) const {
    if (kind == GeomKind::Body)
        return 0;
    for (const auto& [bid, body] : state_.bodies)
        for (const IdShape& e : body->of(kind))
            if (e.shape.IsSame(s))
                return e.id;
    return 0;
}

const Body* GeometryModel::holder(GeomKind kind, int id, std::size_t& position) const {
    if (kind == GeomKind::Body) {
        auto it = state_.bodies.find(id);
        position = 0;
        return it == state_.bodies.end() ? nullptr : it->second.get();
    }
    const auto& idx = index_[static_cast<int>(kind)];
    auto it = idx.find(id);
    if (it == idx.end())
        return nullptr;
    // The index's shape is the view of the first body that holds the entity; that body answers.
    if (const Body* h = it->second.holder;
        h && h->of(kind)[it->second.position].shape.IsEqual(it->second.shape)) {
        position = it->second.position;
        return h;
    }
    for (int bid : it->second.bodies) {
        const Body* b = body(bid).get();
        if (!b)
            continue;
        if (auto at = b->memo.of(*b).position(kind, id);
            at && b->of(kind)[*at].shape.IsEqual(it->second.shape)) {
            position = *at;
            return b;
        }
    }
    return nullptr;
}

std::vector<int> GeometryModel::relatives(GeomKind source, int id, GeomKind target) const {
    if (!exists(source, id))
        return {};
    if (source == target)
        return {id};
    if (source == GeomKind::Body) {
        const Body& b = *body(id);
        return b.memo.of(b).sorted_ids(target);
    }
    if (target == GeomKind::Body)
        return bodies_of(source, id);
    // Each body that holds the entity answers from its own memo; a merged entity unites them.
    const auto& holders = index_[static_cast<int>(source)].find(id)->second.bodies;
    std::vector<int> out;
    for (int bid : holders) {
        const Body* b = body(bid).get();
        if (!b)
            continue;
        BodyMemo::Data& memo = b->memo.of(*b);
        const auto at = memo.position(source, id);
        if (!at)
            continue;
        const std::vector<int>& ids = memo.related(source, *at, target);
        if (out.empty()) {
            out = ids;
        } else {
            std::vector<int> both;
            std::set_union(out.begin(), out.end(), ids.begin(), ids.end(),
                           std::back_inserter(both));
            out = std::move(both);
        }
    }
    return out;
}

bool GeometryModel::is_free(GeomKind kind, int id) const {
    switch (kind) {
    case GeomKind::Surface:
        return exists(kind, id) && relatives(kind, id, GeomKind::Volume).empty();
    case GeomKind::Curve:
        return exists(kind, id) && relatives(kind, id, GeomKind::Surface).empty();
    case GeomKind::Vertex:
        return exists(kind, id) && relatives(kind, id, GeomKind::Curve).empty();
    default:
        return false;
    }
}

std::vector<int> GeometryModel::ids_outside_volumes(GeomKind kind) const {
    std::vector<int> out;
    if (kind != GeomKind::Surface && kind != GeomKind::Curve && kind != GeomKind::Vertex)
        return out;
    const auto& idx = index_[static_cast<int>(kind)];
    for (const auto& [bid, body] : state_.bodies) {
        for (int id : body->memo.of(*body).outside_volumes(kind)) {
            // Outside every volume only when outside those of every body that holds it.
            auto it = idx.find(id);
            if (it == idx.end())
                continue;
            bool outside = true;
            for (int other : it->second.bodies) {
                if (other == bid)
                    continue;
                const Body* b = this->body(other).get();
                if (!b)
                    continue;
                const auto& free = b->memo.of(*b).outside_volumes(kind);
                if (!std::binary_search(free.begin(), free.end(), id))
                    outside = false;
            }
            if (outside)
                out.push_back(id);
        }
    }
    std::sort(out.begin(), out.end());
    out.erase(std::unique(out.begin(), out.end()), out.end());
    return out;
}

// ---- Measures ---------------------------------------------------------------------------------

Bnd_Box GeometryModel::bounding_box(GeomKind kind, int id) const {
    std::size_t at = 0;
    const Body* b = holder(kind, id, at);
    if (!b)
        return compute_bounding_box(shape(kind, id));
    EntityMeasures& m = b->memo.of(*b).measures(kind, at);
    if (!m.box)
        m.box = compute_bounding_box(kind == GeomKind::Body ? b->shape : b->of(kind)[at].shape);
    return *m.box;
}

double GeometryModel::volume_measure(GeomKind kind, int id) const {
    if (kind != GeomKind::Volume && kind != GeomKind::Body)
        return 0;
    std::size_t at = 0;
    const Body* b = holder(kind, id, at);
    if (!b) {
        const TopoDS_Shape s = shape(kind, id);
        return s.IsNull() ? 0.0 : compute_volume(s);
    }
    EntityMeasures& m = b->memo.of(*b).measures(kind, at);
    if (!m.volume)
        m.volume = compute_volume(kind == GeomKind::Body ? b->shape : b->of(kind)[at].shape);
    return *m.volume;
}

std::array<double, 4> GeometryModel::area_measure(GeomKind kind, int id) const {
    if (kind != GeomKind::Surface && kind != GeomKind::Volume && kind != GeomKind::Body)
        return {};
    std::size_t at = 0;
    const Body* b = holder(kind, id, at);
    if (!b) {
        const TopoDS_Shape s = shape(kind, id);
        return s.IsNull() ? std::array<double, 4>{} : compute_area(s);
    }
    EntityMeasures& m = b->memo.of(*b).measures(kind, at);
    if (!m.area)
        m.area = compute_area(kind == GeomKind::Body ? b->shape : b->of(kind)[at].shape);
    return *m.area;
}

double GeometryModel::curve_measure(int id, std::optional<double> EntityMeasures::*slot,
                                    double (*compute)(const TopoDS_Shape&)) const {
    std::size_t at = 0;
    const Body* b = holder(GeomKind::Curve, id, at);
    if (!b) {
        const TopoDS_Shape s = shape(GeomKind::Curve, id);
        return s.IsNull() ? 0.0 : compute(s);
    }
    std::optional<double>& kept = b->memo.of(*b).measures(GeomKind::Curve, at).*slot;
    if (!kept)
        kept = compute(b->of(GeomKind::Curve)[at].shape);
    return *kept;
}

double GeometryModel::curve_length(int id) const {
    return curve_measure(id, &EntityMeasures::length, compute_length);
}

double GeometryModel::curve_turning(int id) const {
    return curve_measure(id, &EntityMeasures::turning, compute_turning);
}

const EntityAttributes* GeometryModel::attributes(GeomKind kind, int id) const {
    auto it = state_.attributes.find({kind, id});
    return it == state_.attributes.end() ? nullptr : &it->second;
}

EntityAttributes& GeometryModel::attributes_for_update(GeomKind kind, int id) {
    return state_.attributes[{kind, id}];
}

std::string GeometryModel::name_of(GeomKind kind, int id) const {
    const EntityAttributes* a = attributes(kind, id);
    return a ? a->name : std::string();
}

std::vector<int> GeometryModel::ids_with_name(GeomKind kind, std::string_view pattern) const {
    std::vector<int> out;
    for (const auto& [key, attr] : state_.attributes)
        if (key.kind == kind && !attr.name.empty() &&
            wildcard_match(pattern, attr.name, CaseRule::Sensitive) && exists(kind, key.id))
            out.push_back(key.id);
    return out;
}

void GeometryModel::prune_attributes() {
    for (auto it = state_.attributes.begin(); it != state_.attributes.end();) {
        if (!exists(it->first.kind, it->first.id) || it->second.empty())
            it = state_.attributes.erase(it);
        else
            ++it;
    }
}

// ---- Diff -------------------------------------------------------------------------------------

namespace {

using Code = GeomEvent::Code;

// Which entities of a body are free, computed once per body.
struct BodyView {
    std::map<int, TopoDS_Shape> of[kGeomKindCount];
    std::set<int> free_surfaces, free_curves, free_vertices;
};

BodyView view_of(const Body& body) {
    BodyView v;
    for (GeomKind kind : kSubKinds)
        for (const IdShape& e : body.of(kind))
            v.of[static_cast<int>(kind)].emplace(e.id, e.shape);
    auto free_in = [&](GeomKind kind, TopAbs_ShapeEnum parent, std::set<int>& out) {
        const auto& items = body.of(kind);
        if (items.empty())
            return;
        TopTools_IndexedMapOfShape used;
        TopExp_Explorer ex;
        for (ex.Init(body.shape, parent); ex.More(); ex.Next())
            TopExp::MapShapes(ex.Current(), shape_enum(kind), used);
        for (const IdShape& e : items)
            if (!used.Contains(e.shape))
                out.insert(e.id);
    };
    free_in(GeomKind::Surface, TopAbs_SOLID, v.free_surfaces);
    free_in(GeomKind::Curve, TopAbs_FACE, v.free_curves);
    free_in(GeomKind::Vertex, TopAbs_EDGE, v.free_vertices);
    return v;
}

} // namespace

std::vector<GeomEvent> GeometryModel::diff(const GeometryState& before) const {
    std::vector<GeomEvent> events;
    // Bodies that changed: in one state only, or a different object in each.
    // Both maps are ordered by id: one merge-like walk finds the differences.
    std::vector<BodyPtr> old_changed, new_changed;
    {
        auto a = before.bodies.begin(), b = state_.bodies.begin();
        while (a != before.bodies.end() || b != state_.bodies.end()) {
            if (b == state_.bodies.end() || (a != before.bodies.end() && a->first < b->first)) {
                old_changed.push_back((a++)->second);
            } else if (a == before.bodies.end() || b->first < a->first) {
                new_changed.push_back((b++)->second);
            } else {
                if (a->second != b->second) {
                    old_changed.push_back(a->second);
                    new_changed.push_back(b->second);
                }
                ++a;
                ++b;
            }
        }
    }
    auto unchanged = [&](int body_id) {
        auto a = before.bodies.find(body_id);
        auto b = state_.bodies.find(body_id);
        return a != before.bodies.end() && b != state_.bodies.end() && a->second == b->second;
    };
    if (old_changed.empty() && new_changed.empty())
        return events;

    // Per kind: id -> (shape, free?) before and after, over the changed bodies only.
    struct Side {
        std::map<int, TopoDS_Shape> of[kGeomKindCount];
        std::set<int> free[kGeomKindCount];
    };
    auto collect = [](const std::vector<BodyPtr>& bodies, Side& side) {
        for (const BodyPtr& b : bodies) {
            BodyView v = view_of(*b);
            for (GeomKind kind : kSubKinds)
                for (auto& [id, s] : v.of[static_cast<int>(kind)])
                    side.of[static_cast<int>(kind)].emplace(id, s);
            side.free[2].insert(v.free_surfaces.begin(), v.free_surfaces.end());
            side.free[3].insert(v.free_curves.begin(), v.free_curves.end());
            side.free[4].insert(v.free_vertices.begin(), v.free_vertices.end());
        }
    };
    Side was, now;
    collect(old_changed, was);
    collect(new_changed, now);

    auto in_unchanged_body = [&](GeomKind kind, int id) {
        const auto& idx = index_[static_cast<int>(kind)];
        auto it = idx.find(id);
        if (it == idx.end())
            return false;
        for (int b : it->second.bodies)
            if (unchanged(b))
                return true;
        return false;
    };

    // Deleted.
    for (const BodyPtr& b : old_changed)
        if (!state_.bodies.count(b->id))
            events.push_back({b->is_sheet() ? Code::SheetBodyDeleted : Code::BodyDeleted, b->id});
    const Code deleted[] = {Code::VolumeDeleted, Code::SurfaceDeleted, Code::CurveDeleted,
                            Code::VertexDeleted};
    const Code free_deleted[] = {Code::VolumeDeleted, Code::FreeSurfaceDeleted,
                                 Code::FreeCurveDeleted, Code::FreeVertexDeleted};
    for (GeomKind kind : kSubKinds) {
        int k = static_cast<int>(kind);
        for (const auto& [id, s] : was.of[k])
            if (!exists(kind, id))
                events.push_back(
                    {was.free[k].count(id) ? free_deleted[k - 1] : deleted[k - 1], id});
    }
    // Created.
    for (const BodyPtr& b : new_changed)
        if (!before.bodies.count(b->id))
            events.push_back({b->is_sheet() ? Code::SheetBodyCreated : Code::BodyCreated, b->id});
    const Code created[] = {Code::VolumeCreated, Code::SurfaceCreated, Code::CurveCreated,
                            Code::VertexCreated};
    const Code free_created[] = {Code::VolumeCreated, Code::FreeSurfaceCreated,
                                 Code::FreeCurveCreated, Code::FreeVertexCreated};
    for (GeomKind kind : kSubKinds) {
        int k = static_cast<int>(kind);
        for (const auto& [id, s] : now.of[k])
            if (!was.of[k].count(id) && !in_unchanged_body(kind, id))
                events.push_back(
                    {now.free[k].count(id) ? free_created[k - 1] : created[k - 1], id});
    }
    // Updated: bodies in both states that changed; volumes and surfaces whose shape changed.
    for (const BodyPtr& b : new_changed)
        if (before.bodies.count(b->id))
            events.push_back({b->is_sheet() ? Code::SheetBodyUpdated : Code::BodyUpdated, b->id});
    for (GeomKind kind : {GeomKind::Volume, GeomKind::Surface}) {
        int k = static_cast<int>(kind);
        for (const auto& [id, s] : now.of[k]) {
            auto it = was.of[k].find(id);
            if (it != was.of[k].end() && !it->second.IsEqual(s))
                events.push_back(
                    {kind == GeomKind::Volume ? Code::VolumeUpdated : Code::SurfaceUpdated, id});
        }
    }
    return events;
}

std::vector<GeomEvent> GeometryModel::compress_ids() {
    std::vector<GeomEvent> changes;
    std::array<std::map<int, int>, kGeomKindCount> renumber;
    for (GeomKind kind :
         {GeomKind::Body, GeomKind::Volume, GeomKind::Surface, GeomKind::Curve, GeomKind::Vertex}) {
        int k = static_cast<int>(kind);
        int next = 0;
        for (int id : ids(kind)) {
            ++next;
            if (id != next) {
                renumber[k][id] = next;
                changes.push_back({Code::IdChanged, id, next, kind_name(kind)});
            }
        }
        state_.max_id[k] = next;
    }
    if (changes.empty())
        return changes;
    auto map_id = [&](GeomKind kind, int id) {
        const auto& m = renumber[static_cast<int>(kind)];
        auto it = m.find(id);
        return it == m.end() ? id : it->second;
    };
    std::map<int, BodyPtr> bodies;
    for (const auto& [id, body] : state_.bodies) {
        auto copy = std::make_shared<Body>(*body);
        copy->id = map_id(GeomKind::Body, id);
        for (auto& e : copy->volumes)
            e.id = map_id(GeomKind::Volume, e.id);
        for (auto& e : copy->surfaces)
            e.id = map_id(GeomKind::Surface, e.id);
        for (auto& e : copy->curves)
            e.id = map_id(GeomKind::Curve, e.id);
        for (auto& e : copy->vertices)
            e.id = map_id(GeomKind::Vertex, e.id);
        bodies.emplace(copy->id, copy);
    }
    std::map<EntityKey, EntityAttributes> attrs;
    for (auto& [key, attr] : state_.attributes)
        attrs[{key.kind, map_id(key.kind, key.id)}] = attr;
    for (auto& node : state_.assembly)
        for (int& v : node.volume_ids)
            v = map_id(GeomKind::Volume, v);
    state_.bodies = std::move(bodies);
    state_.attributes = std::move(attrs);
    rebuild_index();
    return changes;
}

} // namespace tarvo::kernel
