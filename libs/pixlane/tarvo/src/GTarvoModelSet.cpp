#include "GTarvoModelSetImpl.h"

#include <pixlane/GPickerBase.h>
#include <pixlane/GView.h>

#include <vtkAppendPolyData.h>
#include <vtkCamera.h>
#include <vtkCellArray.h>
#include <vtkCellData.h>
#include <vtkCommand.h>
#include <vtkFloatArray.h>
#include <vtkIntArray.h>
#include <vtkMath.h>
#include <vtkPointData.h>
#include <vtkPoints.h>
#include <vtkPolyDataMapper.h>
#include <vtkProperty.h>
#include <vtkUnsignedCharArray.h>

#include <algorithm>
#include <cmath>

using namespace model_set_internal;

namespace {

const char* word(PieceKind kind) {
    static const char* words[] = {"volume", "surface", "curve", "vertex"};
    return words[static_cast<int>(kind)];
}

constexpr Rgb kEdgeDark{26, 26, 26};
constexpr double kTransparentOpacity = 0.4;

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

GTarvoModelSet::Impl::Impl(GTarvoModelSet& owner)
    : owner(owner), observer(*this), app(std::make_shared<AppUtil>()) {
    for (int i = 0; i < TI::current_selection_count(); ++i)
        highlights.insert({TI::get_selected_type(i), TI::get_selected_id(i)});
    tg::get_camera(camera_seen);
    observer.register_observer();
    // Public view functions (reset_camera, set_rendering_mode, ...) emit no event and end no
    // command: after each, compare as at the end of a command.
    tg::set_view_listener(this, [this](bool redraw) {
        pending = pending || redraw;
        after_change(true);
    });
}

auto GTarvoModelSet::Impl::entry_of(const GView* view) -> ViewEntry* {
    for (ViewEntry& entry : views)
        if (entry.view == view)
            return &entry;
    return nullptr;
}

void GTarvoModelSet::Impl::changed() {
    pending = true;
    after_change(false);
}

void GTarvoModelSet::Impl::dirty(PieceKey key) {
    dirty_pieces.insert(key);
    structure = true;
    changed();
}

void GTarvoModelSet::Impl::structure_changed() {
    structure = true;
    changed();
}

void GTarvoModelSet::Impl::everything() {
    all_dirty = true;
    changed();
}

void GTarvoModelSet::Impl::body_touched(int body) {
    for (int volume : TI::get_relatives("body", body, "volume"))
        dirty_pieces.insert({PieceKind::Volume, volume});
    structure_changed();
}

void GTarvoModelSet::Impl::touched(const std::string& type, int id) {
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

void GTarvoModelSet::Impl::gone(const std::string& type, int id) {
    const Entity entity{type, id};
    for (const auto& [key, piece] : pieces)
        if (std::find(piece.members.begin(), piece.members.end(), entity) != piece.members.end())
            dirty_pieces.insert(key);
    structure_changed();
}

void GTarvoModelSet::Impl::after_change(bool command_ended) {
    if (in_command)
        return;
    tg::ViewCamera camera;
    const bool camera_moved = tg::get_camera(camera) && !(camera == camera_seen);
    if (!pending && command_ended && !camera_moved && !(mesh_changed() || compute_look() != drawn))
        return;
    pending = true;
    for (const ViewEntry& entry : views)
        entry.view->request_render();
}

std::set<PieceKey> GTarvoModelSet::Impl::wanted() const {
    std::set<PieceKey> out;
    for (int id : TI::get_entities("volume"))
        out.insert({PieceKind::Volume, id});
    for (const auto kind : {PieceKind::Surface, PieceKind::Curve, PieceKind::Vertex})
        for (int id : TI::get_list_of_free_ref_entities(word(kind)))
            out.insert({kind, id});
    return out;
}

void GTarvoModelSet::Impl::build_geometry(Piece& piece) {
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
        // Hidden on its own inside a shown volume: not drawn, so not picked either.
        if (m > 0 && !TI::is_visible(sub, id))
            continue;
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

std::uintptr_t GTarvoModelSet::Impl::stamp_of(const Piece& piece) const {
    std::uintptr_t stamp = 0;
    for (const auto& [type, id] : piece.members)
        if (type == "volume" || type == "surface")
            stamp = stamp * 1000003u + tg::mesh_stamp(type, id);
    return stamp;
}

void GTarvoModelSet::Impl::build_mesh(Piece& piece) {
    piece.mesh_stamp = stamp_of(piece);
    piece.data[kMeshFaces] = piece.data[kMeshEdges] = nullptr;
    if (!piece.mesh_stamp)
        return;
    vtkNew<vtkPoints> points;
    vtkNew<vtkCellArray> faces, edges;
    vtkNew<vtkIntArray> node_ids;
    node_ids->SetName("node");
    auto face_members = member_array(), edge_members = member_array();
    const auto add = [&](const tg::MeshDrawing& d, int member) {
        const vtkIdType base = points->GetNumberOfPoints();
        append_points(points, d.xyz);
        for (int node : d.nodes)
            node_ids->InsertNextValue(node);
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
    // The kernel's node ids lead a picked cell back to the mesh.
    for (vtkPolyData* data : {piece.data[kMeshFaces].Get(), piece.data[kMeshEdges].Get()})
        if (data)
            data->GetPointData()->AddArray(node_ids);
    ++owner.mesh_rebuilds_;
}

bool GTarvoModelSet::Impl::mesh_changed() const {
    for (const auto& [key, piece] : pieces)
        if (stamp_of(piece) != piece.mesh_stamp)
            return true;
    return false;
}

Look GTarvoModelSet::Impl::compute_look() const {
    Look look;
    look.mode = TI::get_rendering_mode();
    look.mesh_on = TI::is_mesh_visibility_on();
    look.geometry_on = TI::is_geometry_visibility_on();
    look.perspective = TI::is_perspective_on();
    look.labels = label_settings();
    look.quality = tg::quality_drawing_stamp();
    std::set<Entity> drawing;
    for (const Entity& e : tg::drawing_set(""))
        drawing.insert(e);
    const Rgb highlight = to_rgb({kHighlight[0], kHighlight[1], kHighlight[2], 1});
    for (const auto& [key, piece] : pieces) {
        const Entity& self = piece.members.front();
        const int body = TI::get_owning_body(self.first, self.second);
        const Entity body_entity{"body", body};
        bool visible =
            TI::is_visible(self.first, self.second) && (body == 0 || TI::is_visible("body", body));
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

void GTarvoModelSet::Impl::apply(const Look& look, const Look& before) {
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
            if (!data)
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
            // On shaded faces the element edges are dark; where the faces are not drawn or
            // take the background's colour, they carry the entities' colours as curves do.
            if (role == kMeshEdges && shaded) {
                r.cell_colours = false;
                for (int i = 0; i < 3; ++i)
                    r.colour[i] = kEdgeDark[i] / 255.0;
            }
        }
        // Shaded opaque mesh faces draw their element edges in the same pass (VTK's geometry
        // shader for edge visibility): drawn apart, as lines, the edges cost a software
        // rasteriser more than the faces they lie on. Translucent faces would fade them and
        // hidden-line ones colour them by entity, so there they stay lines of their own.
        RoleLook& faces = piece.look[kMeshFaces];
        faces.edges_in_faces = shaded && faces.opacity == 1.0;
        piece.look[kMeshEdges].edges_in_faces = faces.shown && faces.edges_in_faces;
    }
}

void GTarvoModelSet::Impl::update() {
    if (!pending)
        return;
    const long mesh_rebuilds = owner.mesh_rebuilds_;
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
    build_mesh_highlights();
    build_labels();
    build_quality(owner.mesh_rebuilds_ != mesh_rebuilds);
    dirty_pieces.clear();
    structure = all_dirty = pending = false;
}

void GTarvoModelSet::Impl::sync(ViewEntry& entry) {
    update();
    sync_highlights(entry);
    sync_labels(entry);
    sync_quality(entry);
    follow_camera(entry);
    follow_projection(entry);
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

void GTarvoModelSet::Impl::sync_role(ViewEntry& entry, int chunk, int role) {
    RoleActor& ra = entry.roles[static_cast<std::size_t>(chunk)][static_cast<std::size_t>(role)];
    if (!ra.actor) {
        ra.mapper = vtkSmartPointer<vtkPolyDataMapper>::New();
        ra.mapper->SetScalarModeToUseCellData();
        ra.mapper->SetColorModeToDirectScalars();
        ra.actor = vtkSmartPointer<vtkActor>::New();
        ra.actor->SetMapper(ra.mapper);
        entry.renderer->AddActor(ra.actor);
    }
    // The shown pieces of the group are joined into one polydata: one draw call instead of
    // one per piece, which is what a frame pays for on a software rasteriser.
    vtkNew<vtkAppendPolyData> joined;
    const RoleLook* look = nullptr;
    bool any = false;
    for (const auto& [key, piece] : pieces) {
        vtkPolyData* data = piece.data[role];
        if (!data || chunk_of(key) != chunk)
            continue;
        const RoleLook& l = piece.look[role];
        const bool drawn = l.shown && !(role == kMeshEdges && l.edges_in_faces);
        if (drawn)
            joined->AddInputData(data);
        any = any || drawn;
        if (!look || (drawn && !look->shown))
            look = &l;
    }
    if (any) {
        joined->Update();
        ra.mapper->SetInputData(joined->GetOutput());
    } else {
        ra.mapper->SetInputData(vtkSmartPointer<vtkPolyData>::New());
    }
    ra.actor->SetVisibility(any);
    if (look) {
        // Everything but visibility depends on the role and the render mode alone.
        RoleLook shown = *look;
        shown.shown = any;
        style(*ra.actor, shown, role, entry.renderer);
    }
}

void GTarvoModelSet::Impl::follow_camera(ViewEntry& entry) {
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

void GTarvoModelSet::Impl::follow_projection(ViewEntry& entry) {
    vtkCamera* c = entry.renderer->GetActiveCamera();
    const int parallel = drawn.perspective ? 0 : 1;
    if (c->GetParallelProjection() == parallel)
        return;
    // Turned parallel, the focal plane keeps the size the view angle gave it; turned
    // perspective, the camera's distance says it all.
    if (parallel)
        c->SetParallelScale(c->GetDistance() *
                            std::tan(vtkMath::RadiansFromDegrees(c->GetViewAngle() / 2)));
    c->SetParallelProjection(parallel);
}

void GTarvoModelSet::Impl::camera_moved(ViewEntry& entry) {
    vtkCamera* c = entry.renderer->GetActiveCamera();
    tg::ViewCamera camera;
    c->GetFocalPoint(camera.at.data());
    c->GetPosition(camera.from.data());
    c->GetViewUp(camera.up.data());
    tg::set_camera(camera);
    // Read back: the view state is the judge of what it holds.
    tg::get_camera(camera_seen);
}

void GTarvoModelSet::Impl::style(vtkActor& actor, const RoleLook& look, int role,
                                 vtkRenderer* renderer) {
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
        p->SetEdgeVisibility(role == kMeshFaces && look.edges_in_faces);
        p->SetEdgeColor(kEdgeDark[0] / 255.0, kEdgeDark[1] / 255.0, kEdgeDark[2] / 255.0);
    } else {
        // Lines and points are not lit: their colour is what the entity says.
        p->SetLighting(false);
        p->SetColor(look.colour[0], look.colour[1], look.colour[2]);
        p->SetLineWidth(role == kMeshEdges ? 1.0f : 2.0f);
        p->SetPointSize(5.0f);
    }
}

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
    tg::set_view_listener(impl_.get(), nullptr);
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
        for (vtkProp* overlay : {static_cast<vtkProp*>(it->preselect_actor.Get()),
                                 static_cast<vtkProp*>(it->highlight_actor.Get()),
                                 static_cast<vtkProp*>(it->label_actor.Get()),
                                 static_cast<vtkProp*>(it->quality_actor.Get()),
                                 static_cast<vtkProp*>(it->quality_bar.Get())})
            if (overlay)
                it->renderer->RemoveViewProp(overlay);
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

std::size_t GTarvoModelSet::piece_count() const {
    return impl_->pieces.size();
}
