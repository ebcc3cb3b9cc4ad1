#include <pixlane/AppUtil.h>
#include <pixlane/GPickerBase.h>
#include <pixlane/GTarvoModelSet.h>
#include <pixlane/GView.h>

#include "tarvo/KernelGraphics.h"
#include "tarvo/TIObserve.h"
#include "tarvo/TarvoInterface.h"

#include <vtkActor.h>
#include <vtkCallbackCommand.h>
#include <vtkCamera.h>
#include <vtkCellArray.h>
#include <vtkCellData.h>
#include <vtkCommand.h>
#include <vtkCompositeDataDisplayAttributes.h>
#include <vtkCompositePolyDataMapper2.h>
#include <vtkFloatArray.h>
#include <vtkIntArray.h>
#include <vtkMatrix4x4.h>
#include <vtkMultiBlockDataSet.h>
#include <vtkPointData.h>
#include <vtkPoints.h>
#include <vtkPolyData.h>
#include <vtkPolyDataMapper.h>
#include <vtkProperty.h>
#include <vtkRenderer.h>
#include <vtkSmartPointer.h>
#include <vtkUnsignedCharArray.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>

namespace TI = TarvoInterface;
namespace tg = tarvo::graphics;

namespace {

using Entity = std::pair<std::string, int>;
using Rgb = std::array<unsigned char, 3>;

// A volume with what lies in it, or one surface, curve or vertex that lies in no volume.
enum class PieceKind { Volume, Surface, Curve, Vertex };
const char* word(PieceKind kind) {
    static const char* words[] = {"volume", "surface", "curve", "vertex"};
    return words[static_cast<int>(kind)];
}
struct PieceKey {
    PieceKind kind;
    int id;
    auto operator<=>(const PieceKey&) const = default;
};

enum Role { kFaces, kCurves, kVertices, kMeshFaces, kMeshEdges, kRoleCount };

constexpr Rgb kEdgeDark{26, 26, 26};
constexpr double kTransparentOpacity = 0.4;

// How one role of a piece is drawn now, in every view.
struct RoleLook {
    bool shown = false;
    bool cell_colours = true; // colour by the cells' "colors" array, else `colour`
    bool background = false;  // hidden-line faces: the view's background colour, unlit
    bool flat = false;
    double opacity = 1.0;
    std::array<double, 3> colour{0, 0, 0};
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
    bool mesh_on = true, geometry_on = true;
    std::map<PieceKey, std::pair<bool, std::vector<Rgb>>> pieces; // visible, member colours
    bool operator==(const Look&) const = default;
};

Rgb to_rgb(const std::array<double, 4>& c) {
    Rgb out{};
    for (int i = 0; i < 3; ++i)
        out[i] = static_cast<unsigned char>(std::lround(std::clamp(c[i], 0.0, 1.0) * 255));
    return out;
}

vtkSmartPointer<vtkIntArray> member_array() {
    auto members = vtkSmartPointer<vtkIntArray>::New();
    members->SetName("member");
    return members;
}

vtkSmartPointer<vtkPolyData> finish(vtkPoints* points, vtkCellArray* cells, vtkIntArray* members,
                                    int cell_type) {
    if (cells->GetNumberOfCells() == 0)
        return nullptr;
    auto data = vtkSmartPointer<vtkPolyData>::New();
    data->SetPoints(points);
    if (cell_type == 2)
        data->SetPolys(cells);
    else if (cell_type == 1)
        data->SetLines(cells);
    else
        data->SetVerts(cells);
    data->GetCellData()->AddArray(members);
    return data;
}

void append_points(vtkPoints* points, const std::vector<float>& xyz) {
    for (std::size_t i = 0; i + 2 < xyz.size(); i += 3)
        points->InsertNextPoint(xyz[i], xyz[i + 1], xyz[i + 2]);
}

} // namespace

struct GTarvoModelSet::Impl {
    struct Observer : TI::TIObserve {
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
        void notify_entity_visibility_changed(const std::string&, int) override { impl.changed(); }
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

    // The pieces are drawn in kChunks groups, fixed by their key: per group and role one actor,
    // each piece a block of it. A frame costs far more per actor than per triangle, while a
    // changed piece makes its group's actors upload again, so a change costs a share of the
    // model, not all of it.
    static constexpr int kChunks = 8;
    static int chunk_of(const PieceKey& key) {
        return static_cast<int>(
            (static_cast<unsigned>(key.id) * 4u + static_cast<unsigned>(key.kind)) % kChunks);
    }
    struct RoleActor {
        vtkSmartPointer<vtkActor> actor;
        vtkSmartPointer<vtkCompositePolyDataMapper2> mapper;
        vtkSmartPointer<vtkCompositeDataDisplayAttributes> attributes;
    };
    struct ViewEntry {
        GView* view = nullptr;
        vtkRenderer* renderer = nullptr;
        unsigned long tag = 0;
        vtkSmartPointer<vtkCallbackCommand> callback;
        std::array<std::array<RoleActor, kRoleCount>, kChunks> roles;
        std::array<std::map<PieceKey, std::pair<long, long>>, kChunks> drawn; // version, look
        long camera_generation = 0;
        std::optional<Entity> preselected;
        vtkSmartPointer<vtkActor> preselect_actor;
    };

    explicit Impl(GTarvoModelSet& owner)
        : owner(owner), observer(*this), app(std::make_shared<AppUtil>()) {
        for (int i = 0; i < TI::current_selection_count(); ++i)
            highlights.insert({TI::get_selected_type(i), TI::get_selected_id(i)});
        tg::get_camera(camera_seen);
        observer.register_observer();
    }

    GTarvoModelSet& owner;
    Observer observer;
    std::map<PieceKey, Piece> pieces;
    std::set<PieceKey> dirty_pieces;
    std::set<Entity> highlights;
    bool structure = true, all_dirty = true, pending = true, in_command = false;
    Look drawn;
    std::vector<ViewEntry> views;
    std::shared_ptr<AppUtil> app;
    // The kernel's camera as views last wrote or adopted it; a difference is a view command.
    tg::ViewCamera camera_seen;
    long camera_generation = 0;

    ViewEntry* entry_of(const GView* view) {
        for (ViewEntry& entry : views)
            if (entry.view == view)
                return &entry;
        return nullptr;
    }

    // ---- Marking -----------------------------------------------------------------------------

    void changed() {
        pending = true;
        after_change(false);
    }
    void dirty(PieceKey key) {
        dirty_pieces.insert(key);
        structure = true;
        changed();
    }
    void structure_changed() {
        structure = true;
        changed();
    }
    void everything() {
        all_dirty = true;
        changed();
    }
    void body_touched(int body) {
        for (int volume : TI::get_relatives("body", body, "volume"))
            dirty_pieces.insert({PieceKind::Volume, volume});
        structure_changed();
    }
    // A surface, curve or vertex was made or changed: the volumes it lies in, or its own piece.
    void touched(const std::string& type, int id) {
        const auto volumes = TI::get_relatives(type, id, "volume");
        for (int volume : volumes)
            dirty_pieces.insert({PieceKind::Volume, volume});
        if (volumes.empty())
            dirty_pieces.insert({type == "surface" ? PieceKind::Surface
                                 : type == "curve" ? PieceKind::Curve
                                                   : PieceKind::Vertex,
                                 id});
        structure_changed();
    }
    // Gone: its relations went with it, so the pieces that drew it say where it was.
    void gone(const std::string& type, int id) {
        const Entity entity{type, id};
        for (const auto& [key, piece] : pieces)
            if (std::find(piece.members.begin(), piece.members.end(), entity) !=
                piece.members.end())
                dirty_pieces.insert(key);
        structure_changed();
    }

    // Within a command, the views are asked once at its end; outside one (a public function
    // that highlights, say) at once. Colours and drawing sets change without events, so the
    // end of every command compares the appearance too.
    void after_change(bool command_ended) {
        if (in_command)
            return;
        tg::ViewCamera camera;
        const bool camera_moved = tg::get_camera(camera) && !(camera == camera_seen);
        if (!pending && command_ended && !camera_moved &&
            !(mesh_changed() || compute_look() != drawn))
            return;
        pending = true;
        for (const ViewEntry& entry : views)
            entry.view->request_render();
    }

    // ---- Building ----------------------------------------------------------------------------

    std::set<PieceKey> wanted() const {
        std::set<PieceKey> out;
        for (int id : TI::get_entities("volume"))
            out.insert({PieceKind::Volume, id});
        for (const auto kind : {PieceKind::Surface, PieceKind::Curve, PieceKind::Vertex})
            for (int id : TI::get_list_of_free_ref_entities(word(kind)))
                out.insert({kind, id});
        return out;
    }

    void build_geometry(Piece& piece) {
        const std::string type = word(piece.key.kind);
        piece.members = {{type, piece.key.id}};
        if (piece.key.kind == PieceKind::Volume)
            for (const char* sub : {"surface", "curve", "vertex"})
                for (int id : TI::get_relatives("volume", piece.key.id, sub))
                    piece.members.push_back({sub, id});

        vtkNew<vtkPoints> face_points, line_points, vertex_points;
        vtkNew<vtkCellArray> polys, lines, verts;
        vtkNew<vtkFloatArray> normals;
        normals->SetNumberOfComponents(3);
        normals->SetName("Normals");
        auto face_members = member_array(), line_members = member_array(),
             vertex_members = member_array();
        std::vector<float> xyz, nxyz;
        std::vector<int> triangles;
        for (std::size_t m = 0; m < piece.members.size(); ++m) {
            const auto& [sub, id] = piece.members[m];
            if (sub == "surface" && tg::surface_facets(id, xyz, nxyz, triangles)) {
                const vtkIdType base = face_points->GetNumberOfPoints();
                append_points(face_points, xyz);
                for (std::size_t i = 0; i + 2 < nxyz.size(); i += 3)
                    normals->InsertNextTuple3(nxyz[i], nxyz[i + 1], nxyz[i + 2]);
                for (std::size_t t = 0; t + 2 < triangles.size(); t += 3) {
                    const vtkIdType ids[3] = {base + triangles[t], base + triangles[t + 1],
                                              base + triangles[t + 2]};
                    polys->InsertNextCell(3, ids);
                    face_members->InsertNextValue(static_cast<int>(m));
                }
            } else if (sub == "curve" && tg::curve_polyline(id, xyz)) {
                const vtkIdType base = line_points->GetNumberOfPoints();
                append_points(line_points, xyz);
                const vtkIdType count = static_cast<vtkIdType>(xyz.size() / 3);
                lines->InsertNextCell(count);
                for (vtkIdType i = 0; i < count; ++i)
                    lines->InsertCellPoint(base + i);
                line_members->InsertNextValue(static_cast<int>(m));
            } else if (sub == "vertex" && tg::vertex_point(id, xyz)) {
                const vtkIdType point = vertex_points->InsertNextPoint(xyz[0], xyz[1], xyz[2]);
                verts->InsertNextCell(1, &point);
                vertex_members->InsertNextValue(static_cast<int>(m));
            }
        }
        piece.data[kFaces] = finish(face_points, polys, face_members, 2);
        if (piece.data[kFaces])
            piece.data[kFaces]->GetPointData()->SetNormals(normals);
        piece.data[kCurves] = finish(line_points, lines, line_members, 1);
        piece.data[kVertices] = finish(vertex_points, verts, vertex_members, 0);
        ++owner.geometry_rebuilds_;
    }

    std::uintptr_t stamp_of(const Piece& piece) const {
        std::uintptr_t stamp = 0;
        for (const auto& [type, id] : piece.members)
            if (type == "volume" || type == "surface")
                stamp = stamp * 1000003u + tg::mesh_stamp(type, id);
        return stamp;
    }

    void build_mesh(Piece& piece) {
        piece.mesh_stamp = stamp_of(piece);
        piece.data[kMeshFaces] = piece.data[kMeshEdges] = nullptr;
        if (!piece.mesh_stamp)
            return;
        vtkNew<vtkPoints> points;
        vtkNew<vtkCellArray> faces, edges;
        auto face_members = member_array(), edge_members = member_array();
        const auto add = [&](const tg::MeshDrawing& d, int member) {
            const vtkIdType base = points->GetNumberOfPoints();
            append_points(points, d.xyz);
            for (std::size_t i = 0; i < d.faces.size(); i += d.faces[i] + 1) {
                faces->InsertNextCell(d.faces[i]);
                for (int k = 1; k <= d.faces[i]; ++k)
                    faces->InsertCellPoint(base + d.faces[i + k]);
                face_members->InsertNextValue(member);
            }
            for (std::size_t i = 0; i + 1 < d.edges.size(); i += 2) {
                const vtkIdType ids[2] = {base + d.edges[i], base + d.edges[i + 1]};
                edges->InsertNextCell(2, ids);
                edge_members->InsertNextValue(member);
            }
        };
        tg::MeshDrawing drawing;
        const auto& [type, id] = piece.members.front();
        if (tg::mesh_outer_faces(type, id, drawing)) {
            add(drawing, 0);
        } else {
            // An unmeshed volume may still have meshed surfaces.
            for (std::size_t m = 1; m < piece.members.size(); ++m)
                if (piece.members[m].first == "surface" &&
                    tg::mesh_outer_faces("surface", piece.members[m].second, drawing))
                    add(drawing, static_cast<int>(m));
        }
        piece.data[kMeshFaces] = finish(points, faces, face_members, 2);
        piece.data[kMeshEdges] = finish(points, edges, edge_members, 1);
        ++owner.mesh_rebuilds_;
    }

    bool mesh_changed() const {
        for (const auto& [key, piece] : pieces)
            if (stamp_of(piece) != piece.mesh_stamp)
                return true;
        return false;
    }

    // ---- Appearance --------------------------------------------------------------------------

    Look compute_look() const {
        Look look;
        look.mode = TI::get_rendering_mode();
        look.mesh_on = TI::is_mesh_visibility_on();
        look.geometry_on = TI::is_geometry_visibility_on();
        std::set<Entity> drawing;
        for (const Entity& e : tg::drawing_set(""))
            drawing.insert(e);
        const Rgb highlight = to_rgb({kHighlight[0], kHighlight[1], kHighlight[2], 1});
        for (const auto& [key, piece] : pieces) {
            const Entity& self = piece.members.front();
            const int body = TI::get_owning_body(self.first, self.second);
            const Entity body_entity{"body", body};
            bool visible = TI::is_visible(self.first, self.second) &&
                           (body == 0 || TI::is_visible("body", body));
            if (!drawing.empty())
                visible = visible && (drawing.count(self) || drawing.count(body_entity));
            const bool whole = highlights.count(self) || highlights.count(body_entity);
            std::vector<Rgb> colours;
            colours.reserve(piece.members.size());
            for (const Entity& member : piece.members)
                colours.push_back(whole || highlights.count(member)
                                      ? highlight
                                      : to_rgb(TI::get_entity_color(member.first, member.second)));
            look.pieces[key] = {visible, std::move(colours)};
        }
        return look;
    }

    // Fills the cell colours and role looks of the pieces that are new or look different from
    // `before`: refilling a colour array makes every view upload the piece again.
    void apply(const Look& look, const Look& before) {
        const bool all = look.mode != before.mode || look.mesh_on != before.mesh_on ||
                         look.geometry_on != before.geometry_on;
        const bool shaded = look.mode != 1 && look.mode != 2;
        const bool wire = look.mode == 1;
        const Rgb highlight = to_rgb({kHighlight[0], kHighlight[1], kHighlight[2], 1});
        for (auto& [key, piece] : pieces) {
            const auto& now = look.pieces.at(key);
            const auto was = before.pieces.find(key);
            if (!all && piece.styled == piece.version && was != before.pieces.end() &&
                was->second == now)
                continue;
            piece.styled = piece.version;
            ++piece.look_stamp;
            const auto& [visible, colours] = now;
            // Shaded, the curves outline the surfaces; otherwise they carry the colours.
            std::vector<Rgb> line_colours = colours;
            if (shaded)
                for (Rgb& c : line_colours)
                    if (c != highlight)
                        c = kEdgeDark;
            for (int role = 0; role < kRoleCount; ++role) {
                vtkPolyData* data = piece.data[role];
                if (!data || role == kMeshEdges)
                    continue;
                const auto& table = (role == kCurves || role == kVertices) ? line_colours : colours;
                auto* members = vtkIntArray::SafeDownCast(data->GetCellData()->GetArray("member"));
                vtkNew<vtkUnsignedCharArray> rgb;
                rgb->SetName("colors");
                rgb->SetNumberOfComponents(3);
                rgb->SetNumberOfTuples(members->GetNumberOfTuples());
                for (vtkIdType c = 0; c < members->GetNumberOfTuples(); ++c) {
                    const Rgb& colour = table[static_cast<std::size_t>(members->GetValue(c))];
                    rgb->SetTypedTuple(c, colour.data());
                }
                data->GetCellData()->SetScalars(rgb);
            }
            const bool geometry = look.geometry_on && visible;
            const bool mesh = look.mesh_on && visible && piece.data[kMeshFaces];
            for (int role = 0; role < kRoleCount; ++role) {
                RoleLook& r = piece.look[role];
                r = RoleLook{};
                const bool is_faces = role == kFaces || role == kMeshFaces;
                r.shown = piece.data[role] && (role >= kMeshFaces ? mesh : geometry);
                if (role == kFaces)
                    r.shown = r.shown && !wire && !mesh;
                if (role == kMeshFaces)
                    r.shown = r.shown && !wire;
                if (is_faces) {
                    r.background = look.mode == 2;
                    r.cell_colours = !r.background;
                    r.flat = look.mode == 3;
                    r.opacity = look.mode == 5 ? kTransparentOpacity : 1.0;
                }
                if (role == kMeshEdges) {
                    r.cell_colours = false;
                    for (int i = 0; i < 3; ++i)
                        r.colour[i] = kEdgeDark[i] / 255.0;
                }
            }
        }
    }

    // ---- Keeping up ----------------------------------------------------------------------------

    void update() {
        if (!pending)
            return;
        if (all_dirty) {
            pieces.clear();
            structure = true;
        }
        if (structure || !dirty_pieces.empty()) {
            // A pre-selection drawn from the old geometry would stay behind: the next move
            // draws it anew.
            for (ViewEntry& entry : views)
                if (entry.preselect_actor) {
                    entry.renderer->RemoveActor(entry.preselect_actor);
                    entry.preselect_actor = nullptr;
                    entry.preselected.reset();
                }
        }
        if (structure) {
            const std::set<PieceKey> want = wanted();
            std::erase_if(pieces, [&](const auto& item) { return !want.count(item.first); });
            for (const PieceKey& key : want)
                if (!pieces.count(key))
                    dirty_pieces.insert(key);
            std::erase_if(dirty_pieces, [&](const PieceKey& key) { return !want.count(key); });
        }
        for (const PieceKey& key : dirty_pieces) {
            Piece& piece = pieces[key];
            piece.key = key;
            build_geometry(piece);
            build_mesh(piece);
            ++piece.version;
        }
        for (auto& [key, piece] : pieces)
            if (!dirty_pieces.count(key) && stamp_of(piece) != piece.mesh_stamp) {
                build_mesh(piece);
                ++piece.version;
            }
        Look look = compute_look();
        apply(look, drawn);
        drawn = std::move(look);
        dirty_pieces.clear();
        structure = all_dirty = pending = false;
    }

    void sync(ViewEntry& entry) {
        update();
        follow_camera(entry);
        vtkRenderer* renderer = entry.renderer;
        std::array<std::map<PieceKey, std::pair<long, long>>, kChunks> now;
        for (const auto& [key, piece] : pieces)
            now[static_cast<std::size_t>(chunk_of(key))][key] = {piece.version, piece.look_stamp};
        for (int chunk = 0; chunk < kChunks; ++chunk) {
            auto& state = now[static_cast<std::size_t>(chunk)];
            if (state == entry.drawn[static_cast<std::size_t>(chunk)])
                continue;
            for (int role = 0; role < kRoleCount; ++role)
                sync_role(entry, chunk, role);
            entry.drawn[static_cast<std::size_t>(chunk)] = std::move(state);
        }
        renderer->ResetCameraClippingRange();
    }

    void sync_role(ViewEntry& entry, int chunk, int role) {
        RoleActor& ra =
            entry.roles[static_cast<std::size_t>(chunk)][static_cast<std::size_t>(role)];
        if (!ra.actor) {
            ra.mapper = vtkSmartPointer<vtkCompositePolyDataMapper2>::New();
            ra.attributes = vtkSmartPointer<vtkCompositeDataDisplayAttributes>::New();
            ra.mapper->SetCompositeDataDisplayAttributes(ra.attributes);
            ra.mapper->SetScalarModeToUseCellData();
            ra.mapper->SetColorModeToDirectScalars();
            ra.actor = vtkSmartPointer<vtkActor>::New();
            ra.actor->SetMapper(ra.mapper);
            entry.renderer->AddActor(ra.actor);
        }
        vtkNew<vtkMultiBlockDataSet> blocks;
        ra.attributes->RemoveBlockVisibilities();
        const RoleLook* look = nullptr;
        bool any = false;
        unsigned int block = 0;
        for (const auto& [key, piece] : pieces) {
            vtkPolyData* data = piece.data[role];
            if (!data || chunk_of(key) != chunk)
                continue;
            blocks->SetBlock(block++, data);
            const RoleLook& l = piece.look[role];
            ra.attributes->SetBlockVisibility(data, l.shown);
            any = any || l.shown;
            if (!look || (l.shown && !look->shown))
                look = &l;
        }
        ra.mapper->SetInputDataObject(blocks);
        ra.mapper->Modified();
        ra.actor->SetVisibility(any);
        if (look) {
            // Everything but visibility depends on the role and the render mode alone.
            RoleLook shown = *look;
            shown.shown = any;
            style(*ra.actor, shown, role, entry.renderer);
        }
    }

    // ---- Camera ------------------------------------------------------------------------------

    // A view command moved the kernel's camera: every view takes it, each at its next render.
    void follow_camera(ViewEntry& entry) {
        tg::ViewCamera camera;
        if (!tg::get_camera(camera))
            return;
        if (!(camera == camera_seen)) {
            camera_seen = camera;
            ++camera_generation;
        }
        if (entry.camera_generation == camera_generation)
            return;
        entry.camera_generation = camera_generation;
        vtkCamera* c = entry.renderer->GetActiveCamera();
        c->SetFocalPoint(camera.at.data());
        c->SetPosition(camera.from.data());
        c->SetViewUp(camera.up.data());
        c->OrthogonalizeViewUp();
    }

    void camera_moved(ViewEntry& entry) {
        vtkCamera* c = entry.renderer->GetActiveCamera();
        tg::ViewCamera camera;
        c->GetFocalPoint(camera.at.data());
        c->GetPosition(camera.from.data());
        c->GetViewUp(camera.up.data());
        tg::set_camera(camera);
        // Read back: the view state is the judge of what it holds.
        tg::get_camera(camera_seen);
    }

    // ---- Picking -------------------------------------------------------------------------------

    // World to display pixels (x right, y up) and depth along the line of sight.
    struct Projector {
        double m[16];
        double eye[3], dir[3];
        double width, height;
        explicit Projector(vtkRenderer* renderer) {
            const int* size = renderer->GetSize();
            width = size[0];
            height = size[1];
            vtkCamera* camera = renderer->GetActiveCamera();
            vtkMatrix4x4* matrix = camera->GetCompositeProjectionTransformMatrix(
                height > 0 ? width / height : 1.0, -1, 1);
            std::copy(&matrix->Element[0][0], &matrix->Element[0][0] + 16, m);
            camera->GetPosition(eye);
            camera->GetDirectionOfProjection(dir);
        }
        // False for a point behind the camera.
        bool operator()(const double p[3], double& x, double& y, double& depth) const {
            const double w = m[12] * p[0] + m[13] * p[1] + m[14] * p[2] + m[15];
            if (w <= 0)
                return false;
            x = ((m[0] * p[0] + m[1] * p[1] + m[2] * p[2] + m[3]) / w + 1) * width / 2;
            y = ((m[4] * p[0] + m[5] * p[1] + m[6] * p[2] + m[7]) / w + 1) * height / 2;
            depth = (p[0] - eye[0]) * dir[0] + (p[1] - eye[1]) * dir[1] + (p[2] - eye[2]) * dir[2];
            return true;
        }
    };

    struct Hit {
        PieceKey piece;
        int member;
        int dim; // 0 vertex, 1 curve, 2 face
        double depth;
    };

    // The roles a view shows now, as (role, dimension) for picking.
    static int role_dim(int role) {
        return role == kVertices ? 0 : (role == kCurves || role == kMeshEdges) ? 1 : 2;
    }

    std::vector<Hit> hits_at(vtkRenderer* renderer, double x, double y) const {
        const Projector project(renderer);
        const double tol = GTarvoModelSet::kPickTolerance;
        std::vector<Hit> hits;
        std::vector<std::array<double, 3>> screen;
        std::vector<char> ok;
        for (const auto& [key, piece] : pieces) {
            for (int role : {kFaces, kMeshFaces, kCurves, kVertices}) {
                vtkPolyData* data = piece.data[role];
                if (!data || !piece.look[role].shown)
                    continue;
                vtkPoints* points = data->GetPoints();
                const vtkIdType n = points->GetNumberOfPoints();
                screen.resize(static_cast<std::size_t>(n));
                ok.resize(static_cast<std::size_t>(n));
                for (vtkIdType i = 0; i < n; ++i) {
                    double p[3];
                    points->GetPoint(i, p);
                    auto& s = screen[static_cast<std::size_t>(i)];
                    ok[static_cast<std::size_t>(i)] = project(p, s[0], s[1], s[2]);
                }
                auto* members = vtkIntArray::SafeDownCast(data->GetCellData()->GetArray("member"));
                const int dim = role_dim(role);
                vtkCellArray* cells = dim == 2   ? data->GetPolys()
                                      : dim == 1 ? data->GetLines()
                                                 : data->GetVerts();
                vtkIdType cell = 0, count = 0;
                const vtkIdType* ids = nullptr;
                for (cells->InitTraversal(); cells->GetNextCell(count, ids); ++cell) {
                    double best = std::numeric_limits<double>::infinity();
                    const auto at = [&](vtkIdType k) -> const std::array<double, 3>& {
                        return screen[static_cast<std::size_t>(ids[k])];
                    };
                    const auto valid = [&](vtkIdType k) {
                        return ok[static_cast<std::size_t>(ids[k])];
                    };
                    if (dim == 2) {
                        for (vtkIdType k = 1; k + 1 < count; ++k) {
                            if (!valid(0) || !valid(k) || !valid(k + 1))
                                continue;
                            const auto &a = at(0), &b = at(k), &c = at(k + 1);
                            const double det =
                                (b[1] - c[1]) * (a[0] - c[0]) + (c[0] - b[0]) * (a[1] - c[1]);
                            if (std::abs(det) < 1e-12)
                                continue;
                            const double l1 =
                                ((b[1] - c[1]) * (x - c[0]) + (c[0] - b[0]) * (y - c[1])) / det;
                            const double l2 =
                                ((c[1] - a[1]) * (x - c[0]) + (a[0] - c[0]) * (y - c[1])) / det;
                            const double l3 = 1 - l1 - l2;
                            if (l1 < 0 || l2 < 0 || l3 < 0)
                                continue;
                            best = std::min(best, l1 * a[2] + l2 * b[2] + l3 * c[2]);
                        }
                    } else if (dim == 1) {
                        for (vtkIdType k = 0; k + 1 < count; ++k) {
                            if (!valid(k) || !valid(k + 1))
                                continue;
                            const auto &a = at(k), &b = at(k + 1);
                            const double dx = b[0] - a[0], dy = b[1] - a[1];
                            const double len2 = dx * dx + dy * dy;
                            const double t =
                                len2 > 0 ? std::clamp(((x - a[0]) * dx + (y - a[1]) * dy) / len2,
                                                      0.0, 1.0)
                                         : 0.0;
                            if (std::hypot(a[0] + t * dx - x, a[1] + t * dy - y) <= tol)
                                best = std::min(best, a[2] + t * (b[2] - a[2]));
                        }
                    } else if (count > 0 && valid(0) &&
                               std::hypot(at(0)[0] - x, at(0)[1] - y) <= tol) {
                        best = at(0)[2];
                    }
                    if (best < std::numeric_limits<double>::infinity())
                        hits.push_back({key, members->GetValue(cell), dim, best});
                }
            }
        }
        return hits;
    }

    // The entity, then the volume that holds it, then its body: what a pick may land on.
    std::vector<Entity> chain(const Hit& hit) const {
        const Piece& piece = pieces.at(hit.piece);
        const Entity& self = piece.members[static_cast<std::size_t>(hit.member)];
        std::vector<Entity> out{self};
        if (hit.piece.kind == PieceKind::Volume && self.first != "volume")
            out.push_back(piece.members.front());
        if (const int body = TI::get_owning_body(self.first, self.second))
            out.push_back({"body", body});
        return out;
    }

    std::optional<Entity> pick(vtkRenderer* renderer, int x, int y, bool occluded) {
        update();
        std::vector<Hit> hits = hits_at(renderer, x + 0.5, y + 0.5);
        double front = std::numeric_limits<double>::infinity();
        for (const Hit& h : hits)
            if (h.dim == 2)
                front = std::min(front, h.depth);
        // Lines and points on the front face are drawn over it: a small margin keeps them.
        const double margin = 1e-3 * renderer->GetActiveCamera()->GetDistance();
        const auto visible = [&](const Hit& h) {
            return h.dim == 2 ? h.depth <= front : h.depth <= front + margin;
        };
        std::stable_sort(hits.begin(), hits.end(), [&](const Hit& a, const Hit& b) {
            const bool va = visible(a), vb = visible(b);
            if (va != vb)
                return va;
            if (va && a.dim != b.dim)
                return a.dim < b.dim;
            return a.depth < b.depth;
        });
        const std::vector<std::string> filter = TI::get_pick_filters();
        const auto allowed = [&](const Entity& e) {
            return std::find(filter.begin(), filter.end(), e.first) != filter.end();
        };
        for (const Hit& h : hits) {
            if (!occluded && !visible(h))
                break;
            for (const Entity& e : chain(h))
                if (allowed(e))
                    return e;
        }
        return std::nullopt;
    }

    static bool inside(const std::vector<std::array<double, 2>>& outline, double x, double y) {
        bool in = false;
        for (std::size_t i = 0, j = outline.size() - 1; i < outline.size(); j = i++) {
            const auto &a = outline[i], &b = outline[j];
            if ((a[1] > y) != (b[1] > y) && x < (b[0] - a[0]) * (y - a[1]) / (b[1] - a[1]) + a[0])
                in = !in;
        }
        return in;
    }

    std::vector<Entity> pick_area(vtkRenderer* renderer,
                                  const std::vector<std::array<double, 2>>& outline) {
        update();
        if (outline.size() < 3)
            return {};
        const Projector project(renderer);
        const std::vector<std::string> filter = TI::get_pick_filters();
        const bool partial = TI::is_select_partial_on();
        // Per entity: (some point inside, every point inside), over all that draws it.
        std::map<Entity, std::pair<bool, bool>> seen;
        std::vector<Entity> order;
        const auto note = [&](const Entity& e, bool any, bool all) {
            auto [it, fresh] = seen.try_emplace(e, any, all);
            if (fresh)
                order.push_back(e);
            else
                it->second = {it->second.first || any, it->second.second && all};
        };
        for (const auto& [key, piece] : pieces) {
            const Entity& self = piece.members.front();
            const bool visible = drawn.pieces.count(key) && drawn.pieces.at(key).first;
            if (!visible)
                continue;
            const int body = TI::get_owning_body(self.first, self.second);
            bool piece_any = false, piece_all = true;
            for (int role : {kFaces, kCurves, kVertices}) {
                vtkPolyData* data = piece.data[role];
                if (!data)
                    continue;
                auto* members = vtkIntArray::SafeDownCast(data->GetCellData()->GetArray("member"));
                vtkCellArray* cells = role == kFaces    ? data->GetPolys()
                                      : role == kCurves ? data->GetLines()
                                                        : data->GetVerts();
                vtkPoints* points = data->GetPoints();
                vtkIdType cell = 0, count = 0;
                const vtkIdType* ids = nullptr;
                std::map<int, std::pair<bool, bool>> by_member;
                for (cells->InitTraversal(); cells->GetNextCell(count, ids); ++cell) {
                    auto& [any, all] =
                        by_member.try_emplace(members->GetValue(cell), false, true).first->second;
                    for (vtkIdType k = 0; k < count; ++k) {
                        double p[3], sx, sy, depth;
                        points->GetPoint(ids[k], p);
                        const bool in = project(p, sx, sy, depth) && inside(outline, sx, sy);
                        any = any || in;
                        all = all && in;
                    }
                }
                for (const auto& [member, flags] : by_member) {
                    note(piece.members[static_cast<std::size_t>(member)], flags.first,
                         flags.second);
                    piece_any = piece_any || flags.first;
                    piece_all = piece_all && flags.second;
                }
            }
            note(self, piece_any, piece_all);
            if (body)
                note({"body", body}, piece_any, piece_all);
        }
        std::vector<Entity> out;
        for (const Entity& e : order) {
            const auto [any, all] = seen.at(e);
            if (std::find(filter.begin(), filter.end(), e.first) != filter.end() &&
                (partial ? any : all))
                out.push_back(e);
        }
        return out;
    }

    bool surface_point(vtkRenderer* renderer, int x, int y, double point[3]) {
        update();
        double front = std::numeric_limits<double>::infinity();
        for (const Hit& h : hits_at(renderer, x + 0.5, y + 0.5))
            if (h.dim == 2)
                front = std::min(front, h.depth);
        if (!std::isfinite(front))
            return false;
        // The point on the ray through the pixel at that depth.
        renderer->SetDisplayPoint(x + 0.5, y + 0.5, 0.0);
        renderer->DisplayToWorld();
        double near[4];
        renderer->GetWorldPoint(near);
        vtkCamera* camera = renderer->GetActiveCamera();
        double eye[3], dir[3];
        camera->GetPosition(eye);
        camera->GetDirectionOfProjection(dir);
        double ray[3];
        for (int i = 0; i < 3; ++i)
            ray[i] = near[i] / near[3] - eye[i];
        double along = ray[0] * dir[0] + ray[1] * dir[1] + ray[2] * dir[2];
        if (camera->GetParallelProjection() || along <= 0) {
            // Parallel rays: step from the near point along the line of sight.
            const double at_near = along;
            for (int i = 0; i < 3; ++i)
                point[i] = near[i] / near[3] + dir[i] * (front - at_near);
            return true;
        }
        for (int i = 0; i < 3; ++i)
            point[i] = eye[i] + ray[i] * (front / along);
        return true;
    }

    // The cells of one entity (or the whole piece of a volume or body), for the pre-selection.
    vtkSmartPointer<vtkPolyData> cells_of(const Entity& entity) const {
        vtkNew<vtkPoints> points;
        vtkNew<vtkCellArray> polys, lines, verts;
        for (const auto& [key, piece] : pieces) {
            const Entity& self = piece.members.front();
            const bool whole =
                self == entity || (entity.first == "body" &&
                                   TI::get_owning_body(self.first, self.second) == entity.second);
            for (int role : {kFaces, kMeshFaces, kCurves, kVertices}) {
                vtkPolyData* data = piece.data[role];
                if (!data || !piece.look[role].shown)
                    continue;
                auto* members = vtkIntArray::SafeDownCast(data->GetCellData()->GetArray("member"));
                const int dim = role_dim(role);
                vtkCellArray* cells = dim == 2   ? data->GetPolys()
                                      : dim == 1 ? data->GetLines()
                                                 : data->GetVerts();
                vtkCellArray* out = dim == 2 ? polys.Get() : dim == 1 ? lines.Get() : verts.Get();
                vtkIdType cell = 0, count = 0;
                const vtkIdType* ids = nullptr;
                for (cells->InitTraversal(); cells->GetNextCell(count, ids); ++cell) {
                    const int m = members->GetValue(cell);
                    if (!whole && piece.members[static_cast<std::size_t>(m)] != entity)
                        continue;
                    out->InsertNextCell(count);
                    for (vtkIdType k = 0; k < count; ++k)
                        out->InsertCellPoint(points->InsertNextPoint(data->GetPoint(ids[k])));
                }
            }
        }
        auto data = vtkSmartPointer<vtkPolyData>::New();
        data->SetPoints(points);
        data->SetPolys(polys);
        data->SetLines(lines);
        data->SetVerts(verts);
        return data;
    }

    void preselect(ViewEntry& entry, std::optional<Entity> entity) {
        if (entry.preselected == entity)
            return;
        entry.preselected = entity;
        if (entry.preselect_actor) {
            entry.renderer->RemoveActor(entry.preselect_actor);
            entry.preselect_actor = nullptr;
        }
        if (entity) {
            entry.preselect_actor = vtkSmartPointer<vtkActor>::New();
            vtkNew<vtkPolyDataMapper> mapper;
            mapper->SetInputData(cells_of(*entity));
            mapper->ScalarVisibilityOff();
            // In front of the faces it covers.
            mapper->SetRelativeCoincidentTopologyPolygonOffsetParameters(-1, -1);
            entry.preselect_actor->SetMapper(mapper);
            vtkProperty* p = entry.preselect_actor->GetProperty();
            p->SetColor(GTarvoModelSet::kPreselect[0], GTarvoModelSet::kPreselect[1],
                        GTarvoModelSet::kPreselect[2]);
            p->SetLineWidth(3.0f);
            p->SetPointSize(7.0f);
            entry.renderer->AddActor(entry.preselect_actor);
        }
        entry.view->request_render();
    }

    static void style(vtkActor& actor, const RoleLook& look, int role, vtkRenderer* renderer) {
        actor.SetVisibility(look.shown);
        actor.GetMapper()->SetScalarVisibility(look.cell_colours);
        vtkProperty* p = actor.GetProperty();
        p->SetOpacity(look.opacity);
        if (role == kFaces || role == kMeshFaces) {
            p->SetInterpolation(look.flat ? VTK_FLAT : VTK_GOURAUD);
            if (look.background) {
                p->SetColor(renderer->GetBackground());
                p->SetAmbient(1.0);
                p->SetDiffuse(0.0);
            } else {
                p->SetAmbient(0.1);
                p->SetDiffuse(0.9);
            }
            p->SetSpecular(0.0);
        } else {
            // Lines and points are not lit: their colour is what the entity says.
            p->SetLighting(false);
            p->SetColor(look.colour[0], look.colour[1], look.colour[2]);
            p->SetLineWidth(role == kMeshEdges ? 1.0f : 2.0f);
            p->SetPointSize(5.0f);
        }
    }
};

namespace {

// The picker's selection and filter are the kernel's view state, so picks in views, the select
// and pick commands and the public functions all see one selection.
class KernelPicker : public GPickerBase {
protected:
    std::vector<Entity> selection() const override {
        std::vector<Entity> out;
        for (int i = 0, n = TI::current_selection_count(); i < n; ++i)
            out.push_back({TI::get_selected_type(i), TI::get_selected_id(i)});
        return out;
    }
    std::vector<std::string> pickable_types() const override { return tg::pickable_types(); }
    std::vector<std::string> filter() const override { return TI::get_pick_filters(); }
    void add_filter(const std::string& type) override { TI::add_filter_type(type); }
    void remove_filter(const std::string& type) override { TI::remove_filter_type(type); }
};

} // namespace

GTarvoModelSet::GTarvoModelSet() : impl_(std::make_unique<Impl>(*this)) {
    // Lines and points lie on the faces they bound: draw them in front.
    vtkMapper::SetResolveCoincidentTopologyToPolygonOffset();
    if (!GPickerBase::picker())
        GPickerBase::set_picker(std::make_unique<KernelPicker>());
}

GTarvoModelSet::~GTarvoModelSet() {
    if (dynamic_cast<KernelPicker*>(GPickerBase::picker()))
        GPickerBase::set_picker(nullptr);
    impl_->observer.unregister_observer();
    // Views still bound forget this set (which detaches them here).
    while (!impl_->views.empty())
        impl_->views.back().view->set_model_set(nullptr);
}

void GTarvoModelSet::attach_view(GView* view) {
    for (const auto& entry : impl_->views)
        if (entry.view == view)
            return;
    Impl::ViewEntry entry;
    entry.view = view;
    entry.renderer = view->renderer();
    entry.callback = vtkSmartPointer<vtkCallbackCommand>::New();
    // The renderer's start comes before it gathers its actors, so pieces rebuilt here are drawn
    // in the same frame.
    entry.callback->SetClientData(this);
    entry.callback->SetCallback([](vtkObject* caller, unsigned long, void* client, void*) {
        auto* set = static_cast<GTarvoModelSet*>(client);
        for (auto& e : set->impl_->views)
            if (e.renderer == caller)
                set->impl_->sync(e);
    });
    entry.tag = entry.renderer->AddObserver(vtkCommand::StartEvent, entry.callback);
    entry.camera_generation = impl_->camera_generation;
    impl_->views.push_back(std::move(entry));
    // The actors are in place before the first render, so that reset_camera can fit them.
    impl_->sync(impl_->views.back());
}

void GTarvoModelSet::detach_view(GView* view) {
    auto& views = impl_->views;
    for (auto it = views.begin(); it != views.end(); ++it) {
        if (it->view != view)
            continue;
        it->renderer->RemoveObserver(it->tag);
        if (it->preselect_actor)
            it->renderer->RemoveActor(it->preselect_actor);
        for (auto& chunk : it->roles)
            for (auto& ra : chunk)
                if (ra.actor)
                    it->renderer->RemoveActor(ra.actor);
        views.erase(it);
        return;
    }
}

void GTarvoModelSet::update() {
    impl_->update();
}

std::shared_ptr<AppUtil> GTarvoModelSet::app_util() const {
    return impl_->app;
}

void GTarvoModelSet::camera_moved(GView* view) {
    if (auto* entry = impl_->entry_of(view))
        impl_->camera_moved(*entry);
}

std::optional<GTarvoModelSet::Entity> GTarvoModelSet::pick(GView* view, int x, int y) {
    auto* entry = impl_->entry_of(view);
    if (!entry)
        return std::nullopt;
    return impl_->pick(entry->renderer, x, y, select_occluded_ || !TI::is_occlusion_on());
}

std::vector<GTarvoModelSet::Entity>
GTarvoModelSet::pick_area(GView* view, const std::vector<std::array<double, 2>>& outline) {
    auto* entry = impl_->entry_of(view);
    return entry ? impl_->pick_area(entry->renderer, outline) : std::vector<Entity>{};
}

bool GTarvoModelSet::surface_point(GView* view, int x, int y, double point[3]) {
    auto* entry = impl_->entry_of(view);
    return entry && impl_->surface_point(entry->renderer, x, y, point);
}

void GTarvoModelSet::set_preselection(GView* view, std::optional<Entity> entity) {
    if (auto* entry = impl_->entry_of(view))
        impl_->preselect(*entry, std::move(entity));
}

std::size_t GTarvoModelSet::piece_count() const {
    return impl_->pieces.size();
}
