#pragma once
// GTarvoModelSet's private state, shared by its two source files: drawing (GTarvoModelSet.cpp)
// and picking with hover (GTarvoModelSetPick.cpp). Not part of the library's interface; the
// threading rules are the class's own (the kernel's thread only).

#include <pixlane/AppUtil.h>
#include <pixlane/GTarvoModelSet.h>

#include "tarvo/KernelGraphics.h"
#include "tarvo/TIObserve.h"
#include "tarvo/TarvoInterface.h"

#include <vtkActor.h>
#include <vtkActor2D.h>
#include <vtkCallbackCommand.h>
#include <vtkPolyData.h>
#include <vtkPolyDataMapper.h>
#include <vtkRenderer.h>
#include <vtkScalarBarActor.h>
#include <vtkSmartPointer.h>

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace model_set_internal {

namespace TI = TarvoInterface;
namespace tg = tarvo::graphics;

using Entity = std::pair<std::string, int>;
using Rgb = std::array<unsigned char, 3>;

// A volume with what lies in it, or one surface, curve or vertex that lies in no volume.
enum class PieceKind { Volume, Surface, Curve, Vertex };
struct PieceKey {
    PieceKind kind;
    int id;
    auto operator<=>(const PieceKey&) const = default;
};

enum Role { kFaces, kCurves, kVertices, kMeshFaces, kMeshEdges, kRoleCount };

// How one role of a piece is drawn now, in every view.
struct RoleLook {
    bool shown = false;
    bool cell_colours = true; // colour by the cells' "colors" array, else `colour`
    bool background = false;  // hidden-line faces: the view's background colour, unlit
    bool flat = false;
    double opacity = 1.0;
    std::array<double, 3> colour{0, 0, 0};
    // Mesh faces: they draw their element edges in their own pass. Mesh edges: the faces draw
    // them, so their own actor leaves them out (they stay shown for picking).
    bool edges_in_faces = false;
};

struct Piece {
    PieceKey key;
    // Entity 0 is the piece's own; a volume's surfaces, curves and vertices follow. Cells carry
    // the index of their entity in "member" so that colours change without a rebuild.
    std::vector<Entity> members;
    std::array<vtkSmartPointer<vtkPolyData>, kRoleCount> data;
    std::array<RoleLook, kRoleCount> look;
    std::uintptr_t mesh_stamp = 0;
    long version = 0;    // the data was replaced
    long styled = -1;    // the version the look was last applied to
    long look_stamp = 0; // the look was applied again
};

// What the kernel's state says each piece looks like; compared after each command to learn
// whether the views must draw again.
struct Look {
    int mode = 0;
    bool mesh_on = true, geometry_on = true, perspective = false;
    std::map<std::string, int> labels; // label type to its flag, those switched on
    std::uint64_t quality = 0;         // the kernel's quality drawing
    std::map<PieceKey, std::pair<bool, std::vector<Rgb>>> pieces; // visible, member colours
    bool operator==(const Look&) const = default;
};

} // namespace model_set_internal

struct GTarvoModelSet::Impl {
    using Entity = model_set_internal::Entity;
    using PieceKind = model_set_internal::PieceKind;
    using PieceKey = model_set_internal::PieceKey;
    using RoleLook = model_set_internal::RoleLook;
    using Piece = model_set_internal::Piece;
    using Look = model_set_internal::Look;

    struct Observer : model_set_internal::TI::TIObserve {
        explicit Observer(Impl& impl) : impl(impl) {}
        Impl& impl;

        void notify_body_created(int id) override { impl.body_touched(id); }
        void notify_body_updated(int id) override { impl.body_touched(id); }
        void notify_body_deleted(int) override { impl.structure_changed(); }
        void notify_sheet_body_created(int id) override { impl.body_touched(id); }
        void notify_sheet_body_updated(int id) override { impl.body_touched(id); }
        void notify_sheet_body_deleted(int) override { impl.structure_changed(); }
        void notify_volume_created(int id) override { impl.dirty({PieceKind::Volume, id}); }
        void notify_volume_updated(int id) override { impl.dirty({PieceKind::Volume, id}); }
        void notify_volume_deleted(int) override { impl.structure_changed(); }
        void notify_surface_created(int id) override { impl.touched("surface", id); }
        void notify_surface_updated(int id) override { impl.touched("surface", id); }
        void notify_surface_deleted(int id) override { impl.gone("surface", id); }
        void notify_free_surface_created(int id) override { impl.touched("surface", id); }
        void notify_free_surface_deleted(int id) override { impl.gone("surface", id); }
        void notify_curve_created(int id) override { impl.touched("curve", id); }
        void notify_curve_deleted(int id) override { impl.gone("curve", id); }
        void notify_free_curve_created(int id) override { impl.touched("curve", id); }
        void notify_free_curve_deleted(int id) override { impl.gone("curve", id); }
        void notify_vertex_created(int id) override { impl.touched("vertex", id); }
        void notify_vertex_deleted(int id) override { impl.gone("vertex", id); }
        void notify_free_vertex_created(int id) override { impl.touched("vertex", id); }
        void notify_free_vertex_deleted(int id) override { impl.gone("vertex", id); }
        // Renumbering and undo change many pieces at once and say little about which.
        void notify_id_changed(const std::string&, int, int) override { impl.everything(); }
        void notify_ids_compressed() override { impl.everything(); }
        void notify_undo_complete() override { impl.everything(); }
        void notify_model_reset() override {
            impl.highlights.clear();
            impl.everything();
        }
        void notify_mesh_created(const std::string&, int) override { impl.changed(); }
        // A surface, curve or vertex hidden inside a shown volume leaves that volume's drawing.
        void notify_entity_visibility_changed(const std::string& type, int id) override {
            if (type == "surface" || type == "curve" || type == "vertex")
                impl.touched(type, id);
            else
                impl.changed();
        }
        void notify_graphics_mode_modified() override { impl.changed(); }
        void notify_highlighted(const std::vector<Entity>& entities) override {
            impl.highlights.insert(entities.begin(), entities.end());
            impl.changed();
        }
        void notify_unhighlighted(const std::vector<Entity>& entities) override {
            for (const Entity& e : entities)
                impl.highlights.erase(e);
            impl.changed();
        }
        void notify_command_start() override { impl.in_command = true; }
        void notify_command_complete() override {
            impl.in_command = false;
            impl.after_change(true);
        }
    };

    // The pieces are drawn in kChunks groups, fixed by their key: per group and role one actor
    // drawing the group's shown pieces joined into one polydata (one draw call). A frame costs
    // far more per draw call than per triangle, while a changed piece makes its group's actors
    // join and upload again, so a change costs a share of the model, not all of it.
    static constexpr int kChunks = 8;
    static int chunk_of(const PieceKey& key) {
        return static_cast<int>(
            (static_cast<unsigned>(key.id) * 4u + static_cast<unsigned>(key.kind)) % kChunks);
    }
    struct RoleActor {
        vtkSmartPointer<vtkActor> actor;
        vtkSmartPointer<vtkPolyDataMapper> mapper;
    };
    struct ViewEntry {
        GView* view = nullptr;
        vtkRenderer* renderer = nullptr;
        unsigned long tag = 0;
        vtkSmartPointer<vtkCallbackCommand> callback;
        std::array<std::array<RoleActor, model_set_internal::kRoleCount>, kChunks> roles;
        std::array<std::map<PieceKey, std::pair<long, long>>, kChunks> drawn; // version, look
        long camera_generation = 0;
        std::optional<Entity> preselected;
        vtkSmartPointer<vtkActor> preselect_actor;
        vtkSmartPointer<vtkActor> highlight_actor; // highlighted mesh entities
        long highlight_version = 0;
        vtkSmartPointer<vtkActor2D> label_actor;
        long labels_version = 0;
        vtkSmartPointer<vtkActor> quality_actor;
        vtkSmartPointer<vtkScalarBarActor> quality_bar;
        long quality_version = 0;
    };

    explicit Impl(GTarvoModelSet& owner);

    GTarvoModelSet& owner;
    Observer observer;
    std::map<PieceKey, Piece> pieces;
    std::set<PieceKey> dirty_pieces;
    std::set<Entity> highlights;
    // Highlighted mesh entities have no member to colour: they are drawn over the model, from
    // this data (null: none), rebuilt when the highlights or the mesh change.
    vtkSmartPointer<vtkPolyData> mesh_highlights;
    long mesh_highlight_version = 0;
    // The label anchors with their texts (null: no labels), rebuilt at each update while labels
    // are on (GTarvoModelSetLabels.cpp).
    vtkSmartPointer<vtkPolyData> labels;
    long labels_version = 0;
    // More would hide the model and cost seconds a frame.
    static constexpr vtkIdType kMaxLabels = 20000;
    static constexpr double kLabel[3] = {1.0, 1.0, 1.0};
    // The quality drawing, its cells with their values (null: none), rebuilt when the kernel
    // draws another or the mesh changes (GTarvoModelSetQuality.cpp).
    vtkSmartPointer<vtkPolyData> quality;
    std::uint64_t quality_built = 0;
    std::string quality_metric;
    bool quality_low_is_bad = true;
    std::array<double, 2> quality_range{0, 1};
    long quality_version = 0;
    bool structure = true, all_dirty = true, pending = true, in_command = false;
    Look drawn;
    std::vector<ViewEntry> views;
    std::shared_ptr<AppUtil> app;
    // The kernel's camera as views last wrote or adopted it; a difference is a view command.
    model_set_internal::tg::ViewCamera camera_seen;
    long camera_generation = 0;

    ViewEntry* entry_of(const GView* view);

    // ---- Marking -----------------------------------------------------------------------------

    void changed();
    void dirty(PieceKey key);
    void structure_changed();
    void everything();
    void body_touched(int body);
    // A surface, curve or vertex was made or changed: the volumes it lies in, or its own piece.
    void touched(const std::string& type, int id);
    // Gone: its relations went with it, so the pieces that drew it say where it was.
    void gone(const std::string& type, int id);

    // Within a command, the views are asked once at its end; outside one (a public function
    // that highlights, say) at once. Colours and drawing sets change without events, so the
    // end of every command compares the appearance too.
    void after_change(bool command_ended);

    // ---- Building ----------------------------------------------------------------------------

    std::set<PieceKey> wanted() const;
    void build_geometry(Piece& piece);
    std::uintptr_t stamp_of(const Piece& piece) const;
    void build_mesh(Piece& piece);
    bool mesh_changed() const;

    // ---- Appearance --------------------------------------------------------------------------

    Look compute_look() const;

    // Fills the cell colours and role looks of the pieces that are new or look different from
    // `before`: refilling a colour array makes every view upload the piece again.
    void apply(const Look& look, const Look& before);

    // ---- Keeping up ----------------------------------------------------------------------------

    void update();
    void sync(ViewEntry& entry);
    void sync_role(ViewEntry& entry, int chunk, int role);
    static void style(vtkActor& actor, const RoleLook& look, int role, vtkRenderer* renderer);

    // ---- Camera ------------------------------------------------------------------------------

    // A view command moved the kernel's camera: every view takes it, each at its next render.
    void follow_camera(ViewEntry& entry);
    // The kernel's projection switch, applied to the view's camera at each render.
    void follow_projection(ViewEntry& entry);
    void camera_moved(ViewEntry& entry);

    // ---- Picking and hover (GTarvoModelSetPick.cpp) --------------------------------------

    // World to display pixels (x right, y up) and depth along the line of sight.
    struct Projector;

    struct Hit {
        PieceKey piece;
        int member;
        int dim; // 0 vertex, 1 curve, 2 face
        double depth;
        // A mesh cell: the kernel ids of its corners, and the one within the pick tolerance of
        // the cursor (0: none).
        std::vector<int> corners;
        int node = 0;
    };

    // The roles a view shows now, as (role, dimension) for picking.
    static int role_dim(int role);
    std::vector<Hit> hits_at(vtkRenderer* renderer, double x, double y) const;

    // The entity, then the volume that holds it, then its body: what a pick may land on. A mesh
    // cell adds, before those, its node near the cursor and the mesh entities it draws.
    std::vector<Entity> chain(const Hit& hit) const;
    // Whether the pick filter lets the entity through ("face" stands for tris and quads).
    static bool allowed(const std::vector<std::string>& filter, const Entity& entity);
    std::optional<Entity> pick(vtkRenderer* renderer, int x, int y, bool occluded);
    static bool inside(const std::vector<std::array<double, 2>>& outline, double x, double y);
    std::vector<Entity> pick_area(vtkRenderer* renderer,
                                  const std::vector<std::array<double, 2>>& outline);
    bool surface_point(vtkRenderer* renderer, int x, int y, double point[3]);

    // The cells of one entity (or the whole piece of a volume or body), for the pre-selection.
    vtkSmartPointer<vtkPolyData> cells_of(const Entity& entity) const;
    void build_mesh_highlights();
    static std::map<std::string, int> label_settings();
    void build_labels();
    void sync_labels(ViewEntry& entry);
    void build_quality(bool mesh_moved);
    void sync_quality(ViewEntry& entry);
    // Puts the mesh highlights into the view's overlay when they changed since it last did.
    void sync_highlights(ViewEntry& entry);
    void preselect(ViewEntry& entry, std::optional<Entity> entity);
};
