#pragma once
// The geometry model: bodies, volumes, surfaces, curves and vertices with the ids that clients see.
//
// Contract
// - The B-rep is held as OpenCASCADE shapes. A Body is immutable once published and shared by
//   std::shared_ptr, so a snapshot of the whole model is a copy of a map of pointers plus the
//   attribute tables: cheap enough to take before every command (undo, failure, interrupt).
// - Ids are positive and per type. A new entity gets the highest id ever used for its type plus
//   one (the counters are part of a snapshot, so undo also rewinds them). compress_ids() renumbers
//   densely. A sub-shape that an operation leaves alone (same TShape and location) or modifies
//   into one image keeps its id; a split piece beyond the first gets a new id.
// - A surface (curve, vertex) shared by two bodies after a merge has one id and is listed by both.
// - Free entities: a surface in no volume, a curve in no surface, a vertex in no curve. A body
//   without solids but with faces is a sheet body.
// - Degenerate edges (sphere and cone apexes) are not curves.
//
// Threading: kernel thread only; no locking.

#include <Bnd_Box.hxx>
#include <TopAbs_ShapeEnum.hxx>
#include <TopoDS_Shape.hxx>

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace tarvo::kernel {

enum class GeomKind : int { Body = 0, Volume = 1, Surface = 2, Curve = 3, Vertex = 4 };
constexpr int kGeomKindCount = 5;

const char* kind_name(GeomKind kind);
// Accepts the canonical names, any case, and their unambiguous prefixes of three letters or more.
std::optional<GeomKind> parse_kind(std::string_view text);
// The topological dimension of a kind (body: 3).
int kind_dimension(GeomKind kind);
// The OpenCASCADE shape type that an entity of this kind is (body: TopAbs_SHAPE, as a body may
// be any compound).
TopAbs_ShapeEnum shape_enum(GeomKind kind);

struct EntityKey {
    GeomKind kind;
    int id;
    bool operator<(const EntityKey& o) const {
        return kind != o.kind ? static_cast<int>(kind) < static_cast<int>(o.kind) : id < o.id;
    }
    bool operator==(const EntityKey& o) const { return kind == o.kind && id == o.id; }
};

struct Body;
struct EntityMeasures; // GeometryMemo.h

// Answers derived from one body alone (which of its entities lie inside which, which are in no
// volume, boxes and mass properties), each filled on first use. A published Body never changes,
// so its memo never goes stale: an operation that changes an entity makes a new Body with an empty
// memo, a snapshot put back by undo or rollback brings its Bodies back with their memos, and a
// reset drops the Bodies. A copy of a Body starts with an empty memo, because a copy is made to
// change something (compress ids renumbers copies, and the memo holds ids).
// Threading: kernel thread only, like the model; filling it from a const Body is not locked.
class BodyMemo {
public:
    BodyMemo();
    ~BodyMemo();
    BodyMemo(const BodyMemo&);
    BodyMemo& operator=(const BodyMemo&);
    struct Data;
    // The memo of `body` (the Body that holds this memo), created empty on first use.
    Data& of(const Body& body) const;

private:
    mutable std::unique_ptr<Data> data_;
};

// One sub-shape and its id.
struct IdShape {
    int id = 0;
    TopoDS_Shape shape;
};

// A body: one shape (solids, or faces, or edges, or a vertex, or a mix) and the ids of its pieces.
// Published bodies are never modified.
struct Body {
    int id = 0;
    TopoDS_Shape shape;
    std::vector<IdShape> volumes;  // solids, in exploration order
    std::vector<IdShape> surfaces; // faces
    std::vector<IdShape> curves;   // non-degenerate edges
    std::vector<IdShape> vertices;
    const std::vector<IdShape>& of(GeomKind kind) const;
    bool is_sheet() const { return volumes.empty() && !surfaces.empty(); }
    BodyMemo memo;
};
using BodyPtr = std::shared_ptr<const Body>;

struct EntityAttributes {
    std::string name;
    bool has_color = false;
    std::array<double, 4> color{0.5, 0.5, 0.5, 1.0};
    bool visible = true;
    bool empty() const { return name.empty() && !has_color && visible; }
};

// One node of the assembly tree that a STEP import fills.
struct AssemblyNode {
    int id = 0;
    int parent_id = 0; // 0: top level
    std::string name;
    std::string type; // "assembly" or "part"
    int level = 0;    // 0 for top level
    int instance = 1; // 1-based instance among the parent's children of the same product
    std::string path; // names from the top joined by '/'
    std::string description;
    std::string file_format;
    std::string units;
    std::vector<int> volume_ids;
};

// What the model emits; the session turns these into observer calls.
struct GeomEvent {
    enum class Code {
        BodyCreated,
        BodyDeleted,
        BodyUpdated,
        SheetBodyCreated,
        SheetBodyDeleted,
        SheetBodyUpdated,
        VolumeCreated,
        VolumeDeleted,
        VolumeUpdated,
        SurfaceCreated,
        SurfaceDeleted,
        SurfaceUpdated,
        FreeSurfaceCreated,
        FreeSurfaceDeleted,
        CurveCreated,
        CurveDeleted,
        FreeCurveCreated,
        FreeCurveDeleted,
        VertexCreated,
        VertexDeleted,
        FreeVertexCreated,
        FreeVertexDeleted,
        Merge, // type, name, id (old), id2 (new)
        MergeCompleted,
        WebcutCompleted,
        BooleanOperationComplete,
        HealerComplete,
        IdsCompressed,
        IdChanged,               // type, id (old), id2 (new)
        EntityNameChanged,       // type, id
        EntityVisibilityChanged, // type, id
        ImportComplete,          // text (path), flag
        ExportComplete,          // text (path), flag
        AssemblyTreeModified,
    };
    GeomEvent(Code c, int i = 0, int i2 = 0, std::string t = {}, std::string s = {}, bool f = false)
        : code(c), id(i), id2(i2), type(std::move(t)), text(std::move(s)), flag(f) {}
    Code code;
    int id = 0;
    int id2 = 0;
    std::string type;
    std::string text;
    bool flag = false;
    bool operator==(const GeomEvent& o) const {
        return code == o.code && id == o.id && id2 == o.id2 && type == o.type && text == o.text &&
               flag == o.flag;
    }
};

// The whole model state; copying it is the snapshot.
struct GeometryState {
    std::map<int, BodyPtr> bodies;
    std::map<EntityKey, EntityAttributes> attributes;
    std::array<int, kGeomKindCount> max_id{0, 0, 0, 0, 0};
    std::vector<AssemblyNode> assembly;
};

class GeometryModel {
public:
    GeometryModel();

    // ---- State --------------------------------------------------------------------------------
    const GeometryState& state() const { return state_; }
    GeometryState snapshot() const { return state_; }
    // Puts a snapshot back; the id index is updated for the bodies that differ.
    void restore(const GeometryState& saved);
    void clear();

    // ---- Lookup -------------------------------------------------------------------------------
    bool exists(GeomKind kind, int id) const;
    // All ids of a kind, ascending.
    std::vector<int> ids(GeomKind kind) const;
    std::size_t count(GeomKind kind) const;
    // The shape of an entity (the first body's view of a shared one); null shape when missing.
    TopoDS_Shape shape(GeomKind kind, int id) const;
    // Bodies that hold an entity (two for a merged surface).
    std::vector<int> bodies_of(GeomKind kind, int id) const;
    BodyPtr body(int id) const;
    // Entities of target kind related to a source entity: the ones inside it (downward), the ones
    // that contain it (upward), itself for the same kind. Ascending ids.
    std::vector<int> relatives(GeomKind source, int id, GeomKind target) const;
    bool is_free(GeomKind kind, int id) const;
    // Surfaces, curves or vertices that lie in no volume (a surface of a sheet body, a curve of a
    // wire body, a lone vertex), ascending. Empty for other kinds.
    std::vector<int> ids_outside_volumes(GeomKind kind) const;

    // ---- Measures ------------------------------------------------------------------------------
    // Computed from the exact geometry on first use and kept in the memo of the body that holds
    // the entity; an exception of OpenCASCADE leaves nothing behind and reaches the caller.
    // Bounding box without tolerance padding (a vertex: its point); void when missing.
    Bnd_Box bounding_box(GeomKind kind, int id) const;
    // Absolute volume of a volume or body; 0 when missing.
    double volume_measure(GeomKind kind, int id) const;
    // Area and area centroid (x, y, z) of a surface, volume or body; zeros when missing.
    std::array<double, 4> area_measure(GeomKind kind, int id) const;
    // Arc length of a curve; 0 when missing.
    double curve_length(int id) const;
    // How far a curve's tangent turns from its start to its end, in radians (summed, not net: a
    // full circle turns 2 pi); 0 for a line, a degenerate edge or a missing curve.
    double curve_turning(int id) const;
    // The id of a shape found in the model (IsSame), or 0.
    int id_of(GeomKind kind, const TopoDS_Shape& shape) const;

    // ---- Attributes ---------------------------------------------------------------------------
    const EntityAttributes* attributes(GeomKind kind, int id) const;
    EntityAttributes& attributes_for_update(GeomKind kind, int id);
    std::string name_of(GeomKind kind, int id) const;
    // Ids whose name matches a pattern with * and ? wildcards (case-sensitive).
    std::vector<int> ids_with_name(GeomKind kind, std::string_view pattern) const;

    // ---- Editing (used by the operations) ------------------------------------------------------
    int next_id(GeomKind kind) { return ++state_.max_id[static_cast<int>(kind)]; }
    // Builds a body from a shape. Sub-shapes found in `hints` (IsSame) keep the hinted id when it
    // is not taken yet inside this build; the others get new ids. Free vertices/edges that were
    // separate bodies and are now used by this one are not touched here.
    struct IdHints;
    std::shared_ptr<Body> make_body(int body_id, const TopoDS_Shape& shape, IdHints* hints);
    void put_body(std::shared_ptr<const Body> body);
    void remove_body(int id);
    std::vector<AssemblyNode>& assembly() { return state_.assembly; }
    // Drops attributes of entities that no longer exist.
    void prune_attributes();

    // ---- Events -------------------------------------------------------------------------------
    // The created/deleted/updated events that turn `before` into the current state, in a fixed
    // order: deleted (body, volume, surface, curve, vertex), created (same order), updated (body,
    // volume, surface). Each type ascending by id. Free and sheet variants replace the plain ones.
    std::vector<GeomEvent> diff(const GeometryState& before) const;

    // Renumbers every type densely in ascending order; returns (type, old, new) for each change.
    std::vector<GeomEvent> compress_ids();

    // Every sub-shape of a kind of a shape, in the order that make_body numbers them.
    static std::vector<TopoDS_Shape> explore(const TopoDS_Shape& shape, GeomKind kind);

private:
    struct IndexEntry {
        TopoDS_Shape shape;
        std::vector<int> bodies;
        // The body whose view `shape` is, and the entity's position in it (its memo answers).
        const Body* holder = nullptr;
        std::size_t position = 0;
    };
    void index_add(const Body& body);
    void index_remove(const Body& body);
    void rebuild_index();
    // The body whose memo answers for (kind, id) and the entity's position in that body's list;
    // null when the entity does not exist, or when no body that holds it has the very shape that
    // shape() answers (the measures are then computed without being kept).
    const Body* holder(GeomKind kind, int id, std::size_t& position) const;
    // A measure of a curve, kept in the memo's `slot` once `compute` has given it.
    double curve_measure(int id, std::optional<double> EntityMeasures::*slot,
                         double (*compute)(const TopoDS_Shape&)) const;

    GeometryState state_;
    std::array<std::unordered_map<int, IndexEntry>, kGeomKindCount> index_;
};

// Ids that sub-shapes should keep through an operation.
// - hints: shape (IsSame) -> the id it had before; set per operand body, reset_hints() between.
// - assigned: shape -> id given in this build; a shape met again (a face shared by two result
//   bodies after a merge) gets the same id, and if its hint differs, that is recorded as a merge.
// - claimed: ids used in this build; a second shape hinted to a claimed id gets a new id.
struct GeometryModel::IdHints {
    IdHints();
    ~IdHints();
    void add(GeomKind kind, const TopoDS_Shape& shape, int id);
    int find(GeomKind kind, const TopoDS_Shape& shape) const;
    void reset_hints();
    struct Merged {
        GeomKind kind;
        int old_id;
        int new_id;
    };
    const std::vector<Merged>& merged() const;
    struct Impl;
    std::unique_ptr<Impl> impl;
};

} // namespace tarvo::kernel
