#include "GTarvoModelSetImpl.h"

#include <pixlane/GView.h>

#include <vtkCamera.h>
#include <vtkCellArray.h>
#include <vtkCellData.h>
#include <vtkIntArray.h>
#include <vtkMatrix4x4.h>
#include <vtkPointData.h>
#include <vtkPoints.h>
#include <vtkPolyDataMapper.h>
#include <vtkProperty.h>

#include <algorithm>
#include <cmath>
#include <limits>

using namespace model_set_internal;

namespace {

bool is_mesh_type(const std::string& type) {
    static const std::set<std::string> types = {"node", "edge",  "tri",     "quad",  "tet",
                                                "hex",  "wedge", "pyramid", "sphere"};
    return types.count(type) != 0;
}

// A drawing of mesh entities added to one set of cells: faces as polygons, edges as lines, and a
// drawing of points alone (a node) as vertices.
void append_drawing(const tg::MeshDrawing& d, vtkPoints* points, vtkCellArray* polys,
                    vtkCellArray* lines, vtkCellArray* verts) {
    const vtkIdType base = points->GetNumberOfPoints();
    for (std::size_t i = 0; i + 2 < d.xyz.size(); i += 3)
        points->InsertNextPoint(d.xyz[i], d.xyz[i + 1], d.xyz[i + 2]);
    for (std::size_t i = 0; i < d.faces.size(); i += static_cast<std::size_t>(d.faces[i]) + 1) {
        polys->InsertNextCell(d.faces[i]);
        for (int k = 1; k <= d.faces[i]; ++k)
            polys->InsertCellPoint(base + d.faces[i + static_cast<std::size_t>(k)]);
    }
    for (std::size_t i = 0; i + 1 < d.edges.size(); i += 2) {
        const vtkIdType ids[2] = {base + d.edges[i], base + d.edges[i + 1]};
        lines->InsertNextCell(2, ids);
    }
    if (d.faces.empty() && d.edges.empty())
        for (vtkIdType i = base; i < points->GetNumberOfPoints(); ++i)
            verts->InsertNextCell(1, &i);
}

vtkSmartPointer<vtkPolyData> poly_data(vtkPoints* points, vtkCellArray* polys, vtkCellArray* lines,
                                       vtkCellArray* verts) {
    auto data = vtkSmartPointer<vtkPolyData>::New();
    data->SetPoints(points);
    data->SetPolys(polys);
    data->SetLines(lines);
    data->SetVerts(verts);
    return data;
}

// Cells drawn over the model in one colour, in front of the faces they cover.
vtkSmartPointer<vtkActor> overlay(vtkPolyData* data, const double colour[3]) {
    auto actor = vtkSmartPointer<vtkActor>::New();
    vtkNew<vtkPolyDataMapper> mapper;
    mapper->SetInputData(data);
    mapper->ScalarVisibilityOff();
    mapper->SetRelativeCoincidentTopologyPolygonOffsetParameters(-1, -1);
    actor->SetMapper(mapper);
    vtkProperty* p = actor->GetProperty();
    p->SetColor(colour[0], colour[1], colour[2]);
    p->SetLineWidth(3.0f);
    p->SetPointSize(7.0f);
    return actor;
}

} // namespace

// World to display pixels (x right, y up) and depth along the line of sight.
struct GTarvoModelSet::Impl::Projector {
    double m[16];
    double eye[3], dir[3];
    double width, height;
    explicit Projector(vtkRenderer* renderer) {
        const int* size = renderer->GetSize();
        width = size[0];
        height = size[1];
        vtkCamera* camera = renderer->GetActiveCamera();
        vtkMatrix4x4* matrix =
            camera->GetCompositeProjectionTransformMatrix(height > 0 ? width / height : 1.0, -1, 1);
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

int GTarvoModelSet::Impl::role_dim(int role) {
    return role == kVertices ? 0 : (role == kCurves || role == kMeshEdges) ? 1 : 2;
}

auto GTarvoModelSet::Impl::hits_at(vtkRenderer* renderer, double x, double y) const
    -> std::vector<Hit> {
    const Projector project(renderer);
    const double tol = GTarvoModelSet::kPickTolerance;
    std::vector<Hit> hits;
    std::vector<std::array<double, 3>> screen;
    std::vector<char> ok;
    for (const auto& [key, piece] : pieces) {
        for (int role : {kFaces, kMeshFaces, kMeshEdges, kCurves, kVertices}) {
            vtkPolyData* data = piece.data[role];
            if (!data || !piece.look[role].shown)
                continue;
            auto* nodes = vtkIntArray::SafeDownCast(data->GetPointData()->GetArray("node"));
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
                            len2 > 0
                                ? std::clamp(((x - a[0]) * dx + (y - a[1]) * dy) / len2, 0.0, 1.0)
                                : 0.0;
                        if (std::hypot(a[0] + t * dx - x, a[1] + t * dy - y) <= tol)
                            best = std::min(best, a[2] + t * (b[2] - a[2]));
                    }
                } else if (count > 0 && valid(0) && std::hypot(at(0)[0] - x, at(0)[1] - y) <= tol) {
                    best = at(0)[2];
                }
                if (best == std::numeric_limits<double>::infinity())
                    continue;
                Hit hit{key, members->GetValue(cell), dim, best, {}, 0};
                double nearest = tol;
                for (vtkIdType k = 0; nodes && k < count; ++k) {
                    hit.corners.push_back(nodes->GetValue(ids[k]));
                    const double d = std::hypot(at(k)[0] - x, at(k)[1] - y);
                    if (valid(k) && d <= nearest) {
                        nearest = d;
                        hit.node = hit.corners.back();
                    }
                }
                hits.push_back(std::move(hit));
            }
        }
    }
    return hits;
}

std::vector<Entity> GTarvoModelSet::Impl::chain(const Hit& hit) const {
    const Piece& piece = pieces.at(hit.piece);
    const Entity& self = piece.members[static_cast<std::size_t>(hit.member)];
    std::vector<Entity> out;
    const auto add = [&](const Entity& e) {
        if (std::find(out.begin(), out.end(), e) == out.end())
            out.push_back(e);
    };
    if (!hit.corners.empty()) {
        if (hit.node)
            add({"node", hit.node});
        const int volume = hit.piece.kind == PieceKind::Volume ? hit.piece.id : 0;
        for (const Entity& e : tg::mesh_entities_under(hit.corners, volume))
            add(e);
    }
    add(self);
    if (hit.piece.kind == PieceKind::Volume && self.first != "volume")
        add(piece.members.front());
    if (const int body = TI::get_owning_body(self.first, self.second))
        add({"body", body});
    return out;
}

bool GTarvoModelSet::Impl::allowed(const std::vector<std::string>& filter, const Entity& entity) {
    const auto has = [&](const char* type) {
        return std::find(filter.begin(), filter.end(), type) != filter.end();
    };
    return has(entity.first.c_str()) ||
           ((entity.first == "tri" || entity.first == "quad") && has("face"));
}

std::optional<Entity> GTarvoModelSet::Impl::pick(vtkRenderer* renderer, int x, int y,
                                                 bool occluded) {
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
    for (const Hit& h : hits) {
        if (!occluded && !visible(h))
            break;
        for (const Entity& e : chain(h))
            if (allowed(filter, e))
                return e;
    }
    return std::nullopt;
}

bool GTarvoModelSet::Impl::inside(const std::vector<std::array<double, 2>>& outline, double x,
                                  double y) {
    bool in = false;
    for (std::size_t i = 0, j = outline.size() - 1; i < outline.size(); j = i++) {
        const auto &a = outline[i], &b = outline[j];
        if ((a[1] > y) != (b[1] > y) && x < (b[0] - a[0]) * (y - a[1]) / (b[1] - a[1]) + a[0])
            in = !in;
    }
    return in;
}

std::vector<Entity>
GTarvoModelSet::Impl::pick_area(vtkRenderer* renderer,
                                const std::vector<std::array<double, 2>>& outline) {
    update();
    if (outline.size() < 3)
        return {};
    const Projector project(renderer);
    const std::vector<std::string> filter = TI::get_pick_filters();
    const bool partial = TI::is_select_partial_on();
    std::vector<std::string> mesh_types;
    for (const std::string& type : filter)
        if (type == "face")
            mesh_types.insert(mesh_types.end(), {"tri", "quad"});
        else if (is_mesh_type(type))
            mesh_types.push_back(type);
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
                note(piece.members[static_cast<std::size_t>(member)], flags.first, flags.second);
                piece_any = piece_any || flags.first;
                piece_all = piece_all && flags.second;
            }
        }
        note(self, piece_any, piece_all);
        if (body)
            note({"body", body}, piece_any, piece_all);
        if (drawn.mesh_on && piece.data[kMeshFaces])
            for (const std::string& type : mesh_types)
                for (const Entity& owner : piece.members) {
                    tg::MeshEntityCorners found;
                    if ((owner.first != "volume" && owner.first != "surface") ||
                        !tg::mesh_entity_corners(owner.first, owner.second, type, found))
                        continue;
                    for (std::size_t i = 0; i < found.ids.size(); ++i) {
                        const int end = i + 1 < found.ids.size()
                                            ? found.corners[i + 1]
                                            : static_cast<int>(found.xyz.size() / 3);
                        bool any = false, all = true;
                        for (int k = found.corners[i]; k < end; ++k) {
                            const double p[3] = {found.xyz[3 * k], found.xyz[3 * k + 1],
                                                 found.xyz[3 * k + 2]};
                            double sx, sy, depth;
                            const bool in = project(p, sx, sy, depth) && inside(outline, sx, sy);
                            any = any || in;
                            all = all && in;
                        }
                        note({type, found.ids[i]}, any, all);
                    }
                    // A volume's mesh includes its surfaces'.
                    if (owner.first == "volume")
                        break;
                }
    }
    std::vector<Entity> out;
    for (const Entity& e : order) {
        const auto [any, all] = seen.at(e);
        if (allowed(filter, e) && (partial ? any : all))
            out.push_back(e);
    }
    return out;
}

bool GTarvoModelSet::Impl::surface_point(vtkRenderer* renderer, int x, int y, double point[3]) {
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

vtkSmartPointer<vtkPolyData> GTarvoModelSet::Impl::cells_of(const Entity& entity) const {
    vtkNew<vtkPoints> points;
    vtkNew<vtkCellArray> polys, lines, verts;
    if (is_mesh_type(entity.first)) {
        tg::MeshDrawing drawing;
        if (tg::mesh_entity_drawing(entity.first, entity.second, drawing))
            append_drawing(drawing, points, polys, lines, verts);
        return poly_data(points, polys, lines, verts);
    }
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
    return poly_data(points, polys, lines, verts);
}

void GTarvoModelSet::Impl::build_mesh_highlights() {
    vtkNew<vtkPoints> points;
    vtkNew<vtkCellArray> polys, lines, verts;
    for (const Entity& e : highlights) {
        tg::MeshDrawing drawing;
        if (is_mesh_type(e.first) && tg::mesh_entity_drawing(e.first, e.second, drawing))
            append_drawing(drawing, points, polys, lines, verts);
    }
    const bool none = points->GetNumberOfPoints() == 0;
    if (none && !mesh_highlights)
        return;
    mesh_highlights = none ? nullptr : poly_data(points, polys, lines, verts);
    ++mesh_highlight_version;
}

void GTarvoModelSet::Impl::sync_highlights(ViewEntry& entry) {
    if (entry.highlight_version == mesh_highlight_version)
        return;
    entry.highlight_version = mesh_highlight_version;
    if (entry.highlight_actor)
        entry.renderer->RemoveActor(entry.highlight_actor);
    entry.highlight_actor = mesh_highlights ? overlay(mesh_highlights, kHighlight) : nullptr;
    if (entry.highlight_actor)
        entry.renderer->AddActor(entry.highlight_actor);
}

void GTarvoModelSet::Impl::preselect(ViewEntry& entry, std::optional<Entity> entity) {
    if (entry.preselected == entity)
        return;
    entry.preselected = entity;
    if (entry.preselect_actor) {
        entry.renderer->RemoveActor(entry.preselect_actor);
        entry.preselect_actor = nullptr;
    }
    if (entity) {
        entry.preselect_actor = overlay(cells_of(*entity), GTarvoModelSet::kPreselect);
        entry.renderer->AddActor(entry.preselect_actor);
    }
    entry.view->request_render();
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
