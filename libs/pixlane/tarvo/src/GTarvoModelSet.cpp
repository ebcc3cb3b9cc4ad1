#include <pixlane/GTarvoModelSet.h>
#include <pixlane/GView.h>

#include "tarvo/KernelGraphics.h"
#include "tarvo/TIObserve.h"
#include "tarvo/TarvoInterface.h"

#include <vtkActor.h>
#include <vtkCallbackCommand.h>
#include <vtkCellArray.h>
#include <vtkCellData.h>
#include <vtkCommand.h>
#include <vtkFloatArray.h>
#include <vtkIntArray.h>
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

    struct ViewActors {
        std::array<vtkSmartPointer<vtkActor>, kRoleCount> actors;
        long version = -1;
        long look_stamp = -1;
    };
    struct ViewEntry {
        std::weak_ptr<GView> view;
        vtkRenderer* renderer = nullptr;
        unsigned long tag = 0;
        vtkSmartPointer<vtkCallbackCommand> callback;
        std::map<PieceKey, ViewActors> actors;
    };

    explicit Impl(GTarvoModelSet& owner) : owner(owner), observer(*this) {
        for (int i = 0; i < TI::current_selection_count(); ++i)
            highlights.insert({TI::get_selected_type(i), TI::get_selected_id(i)});
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
        if (!pending && command_ended && !(mesh_changed() || compute_look() != drawn))
            return;
        pending = true;
        for (const ViewEntry& entry : views)
            if (auto view = entry.view.lock())
                view->request_render();
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
        vtkRenderer* renderer = entry.renderer;
        std::erase_if(entry.actors, [&](auto& item) {
            if (pieces.count(item.first))
                return false;
            for (auto& actor : item.second.actors)
                if (actor)
                    renderer->RemoveActor(actor);
            return true;
        });
        for (const auto& [key, piece] : pieces) {
            ViewActors& va = entry.actors[key];
            const bool rebuilt = va.version != piece.version;
            if (!rebuilt && va.look_stamp == piece.look_stamp)
                continue;
            for (int role = 0; role < kRoleCount; ++role) {
                vtkSmartPointer<vtkActor>& actor = va.actors[role];
                if (rebuilt) {
                    if (actor)
                        renderer->RemoveActor(actor);
                    actor = nullptr;
                    if (piece.data[role]) {
                        actor = vtkSmartPointer<vtkActor>::New();
                        vtkNew<vtkPolyDataMapper> mapper;
                        mapper->SetInputData(piece.data[role]);
                        mapper->SetScalarModeToUseCellData();
                        mapper->SetColorModeToDirectScalars();
                        actor->SetMapper(mapper);
                        renderer->AddActor(actor);
                    }
                }
                if (actor)
                    style(*actor, piece.look[role], role, renderer);
            }
            va.version = piece.version;
            va.look_stamp = piece.look_stamp;
        }
        renderer->ResetCameraClippingRange();
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

GTarvoModelSet::GTarvoModelSet() : impl_(std::make_unique<Impl>(*this)) {
    // Lines and points lie on the faces they bound: draw them in front.
    vtkMapper::SetResolveCoincidentTopologyToPolygonOffset();
}

GTarvoModelSet::~GTarvoModelSet() {
    impl_->observer.unregister_observer();
    while (!impl_->views.empty()) {
        auto view = impl_->views.back().view.lock();
        if (view)
            remove_view(view.get());
        else
            impl_->views.pop_back();
    }
}

void GTarvoModelSet::add_view(const std::shared_ptr<GView>& view) {
    for (const auto& entry : impl_->views)
        if (entry.view.lock() == view)
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
    impl_->views.push_back(std::move(entry));
}

void GTarvoModelSet::remove_view(const GView* view) {
    auto& views = impl_->views;
    for (auto it = views.begin(); it != views.end(); ++it) {
        if (it->view.lock().get() != view)
            continue;
        it->renderer->RemoveObserver(it->tag);
        for (auto& [key, va] : it->actors)
            for (auto& actor : va.actors)
                if (actor)
                    it->renderer->RemoveActor(actor);
        views.erase(it);
        return;
    }
}

void GTarvoModelSet::update() {
    impl_->update();
}

std::size_t GTarvoModelSet::piece_count() const {
    return impl_->pieces.size();
}
