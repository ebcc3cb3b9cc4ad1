// `mesh <list>`: lower dimensions first, keeping every mesh that exists.
//
// How Gmsh 4.8 is used so that new meshes conform to old ones (kernel README, "Meshing"):
// - Vertices and curves are ours: a node at each vertex, curve nodes at the arc lengths the
//   sizing gives, each with its curve parameter.
// - Surfaces are meshed by Gmsh on the OpenCASCADE geometry, pushed afresh for each command, with
//   the vertex and curve meshes given to it first; with Mesh.MeshOnlyEmpty Gmsh keeps given curve
//   meshes, and a surface's mesh depends only on its curves. (Given surface meshes are not kept:
//   generate(2) de-meshes every surface.)
// - Volumes are meshed from their stored boundary meshes: tets by Gmsh in a second, discrete
//   model whose surfaces are exactly the stored triangles and quads (the boundary is kept node
//   for node), hexes by our own mapper and sweeper (Structured.h).

#include "core/EntityList.h"
#include "core/Session.h"
#include "geometry/GeometryGmsh.h"
#include "geometry/GeometryModule.h"
#include "mesh/MeshModule.h"
#include "mesh/MeshRun.h"
#include "mesh/Sizing.h"
#include "mesh/SizingSettings.h"
#include "mesh/Structured.h"
#include "tarvo/TIObserve.h"
#include "tarvo/TarvoInterface.h"

#include <BRepAdaptor_Curve.hxx>
#include <BRepClass3d_SolidClassifier.hxx>
#include <BRepTools.hxx>
#include <BRepTools_WireExplorer.hxx>
#include <BRep_Tool.hxx>
#include <GCPnts_AbscissaPoint.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Edge.hxx>
#include <TopoDS_Face.hxx>
#include <TopoDS_Wire.hxx>
#include <gmsh.h>

#include <algorithm>
#include <numeric>
#include <set>
#include <unordered_map>
#include <utility>

namespace tarvo::kernel::mesh {

namespace {

// Gmsh element type numbers.
constexpr int kGmshPoint = 15, kGmshLine = 1, kGmshTri = 2, kGmshQuad = 3, kGmshTet = 4,
              kGmshHex = 5, kGmshPrism = 6, kGmshPyramid = 7;

std::optional<ElemKind> kind_of_gmsh(int type) {
    switch (type) {
    case kGmshLine:
        return ElemKind::Edge;
    case kGmshTri:
        return ElemKind::Tri;
    case kGmshQuad:
        return ElemKind::Quad;
    case kGmshTet:
        return ElemKind::Tet;
    case kGmshHex:
        return ElemKind::Hex;
    case kGmshPrism:
        return ElemKind::Wedge;
    case kGmshPyramid:
        return ElemKind::Pyramid;
    default:
        return std::nullopt;
    }
}

std::string plural(int n, const std::string& word) {
    return std::to_string(n) + " " + word + (n == 1 ? "" : word.ends_with('x') ? "es" : "s");
}

std::string describe(const MeshPiece& p) {
    std::string text;
    for (const ElemBlock& b : p.blocks) {
        if (!text.empty())
            text += ", ";
        text += plural(b.count(), std::string(info(b.kind).word));
    }
    return text.empty() ? "no elements" : text;
}

// Gmsh's meshers report errors by throwing std::string from inside OpenMP parallel regions, where
// a throw ends the process whatever the thread count. While they run, Gmsh only logs errors; the
// first error it logged comes back in `failure` (empty when it logged none).
void generate(int dim, std::string& failure) {
    std::vector<std::string> log;
    gmsh::logger::get(log);
    const size_t seen = log.size();
    double before = 2;
    gmsh::option::getNumber("General.AbortOnError", before);
    gmsh::option::setNumber("General.AbortOnError", 0);
    try {
        gmsh::model::mesh::generate(dim);
    } catch (...) {
        gmsh::option::setNumber("General.AbortOnError", before);
        throw;
    }
    gmsh::option::setNumber("General.AbortOnError", before);
    gmsh::logger::get(log);
    failure.clear();
    for (size_t i = seen; i < log.size() && failure.empty(); ++i)
        if (log[i].starts_with("Error"))
            failure = log[i].substr(std::min(log[i].size(), size_t{7}));
}

} // namespace

std::pair<int, int> MeshRun::tag_of(int dim, int id) const {
    const auto it = gmap.to_gmsh.find({kind_of_dim(dim), id});
    return it == gmap.to_gmsh.end() ? std::pair{-1, -1} : it->second;
}

bool MeshRun::mesh_vertices() {
    for (int id : todo[0]) {
        const gp_Pnt p = BRep_Tool::Pnt(TopoDS::Vertex(model().shape(GeomKind::Vertex, id)));
        NewMesh mesh;
        mesh.nodes.push_back({p.X(), p.Y(), p.Z()});
        m.publish({0, id}, std::move(mesh), "vertex");
    }
    return true;
}

bool MeshRun::start_gmsh() {
    if (!push_to_gmsh(model(), gmap))
        return false;
    gmsh::model::getCurrent(geo_model);
    gmsh::option::setNumber("Mesh.MeshOnlyVisible", 1);
    gmsh::option::setNumber("Mesh.MeshOnlyEmpty", 1);
    // Node tags are our node ids for given meshes: Gmsh must not renumber them.
    gmsh::option::setNumber("Mesh.Renumber", 0);
    gmsh::option::setNumber("Mesh.MeshSizeFromPoints", 0);
    gmsh::option::setNumber("Mesh.MeshSizeFromCurvature", 0);
    gmsh::option::setNumber("Mesh.MeshSizeExtendFromBoundary", 1);
    return true;
}

// Vertex nodes and stored curve meshes go back to Gmsh with their ids as tags.
bool MeshRun::give_back_curves() {
    for (const auto& [owner, piece] : m.state().pieces()) {
        if (owner.dim > 1)
            continue;
        const auto [dim, tag] = tag_of(owner.dim, owner.id);
        if (tag < 0)
            continue;
        std::vector<std::size_t> tags;
        std::vector<double> xyz;
        for (int i = 0; i < piece->node_count(); ++i) {
            tags.push_back(static_cast<std::size_t>(piece->first_node + i));
            xyz.insert(xyz.end(), piece->nodes[i].begin(), piece->nodes[i].end());
        }
        if (!tags.empty())
            gmsh::model::mesh::addNodes(dim, tag, tags, xyz, piece->params);
        if (owner.dim == 0) {
            gmsh::model::mesh::addElementsByType(tag, kGmshPoint, {}, tags);
            continue;
        }
        for (const ElemBlock& b : piece->blocks) {
            std::vector<std::size_t> conn(b.conn.begin(), b.conn.end());
            gmsh::model::mesh::addElementsByType(tag, kGmshLine, {}, conn);
        }
    }
    return true;
}

void MeshRun::set_visible(const std::vector<std::pair<int, int>>& keep) {
    gmsh::vectorpair all;
    gmsh::model::getEntities(all);
    gmsh::model::setVisibility(all, 0, false);
    gmsh::model::setVisibility(keep, 1, false);
}

// Nodes inside Gmsh's entity (dim, tag) become new nodes; its elements refer to ids.
bool MeshRun::read_gmsh_piece(int dim, int tag, NewMesh& out, bool with_params) {
    std::vector<std::size_t> tags;
    std::vector<double> xyz, params;
    gmsh::model::mesh::getNodes(tags, xyz, params, dim, tag, false, with_params);
    std::unordered_map<std::size_t, int> local;
    for (std::size_t i = 0; i < tags.size(); ++i) {
        local[tags[i]] = static_cast<int>(out.nodes.size());
        out.nodes.push_back({xyz[3 * i], xyz[3 * i + 1], xyz[3 * i + 2]});
        if (with_params && params.size() == tags.size())
            out.params.push_back(params[i]);
    }
    std::vector<int> types;
    std::vector<std::vector<std::size_t>> elem_tags, elem_nodes;
    gmsh::model::mesh::getElements(types, elem_tags, elem_nodes, dim, tag);
    for (std::size_t t = 0; t < types.size(); ++t) {
        const auto kind = kind_of_gmsh(types[t]);
        if (!kind)
            return fail("Gmsh made elements of an unsupported type " + std::to_string(types[t]));
        auto& conn = out.block(*kind).conn;
        for (std::size_t n : elem_nodes[t]) {
            if (auto it = local.find(n); it != local.end()) {
                conn.push_back(NewMesh::local(it->second));
            } else if (auto jt = node_of_tag.find(n); jt != node_of_tag.end()) {
                conn.push_back(jt->second);
            } else if (m.state().find_node(static_cast<int>(n))) {
                conn.push_back(static_cast<int>(n));
            } else {
                // A node on an entity the kernel has no id for (a degenerate edge at a pole):
                // it becomes this entity's own.
                std::vector<double> c, p;
                gmsh::model::mesh::getNode(n, c, p);
                local[n] = static_cast<int>(out.nodes.size());
                out.nodes.push_back({c[0], c[1], c[2]});
                conn.push_back(NewMesh::local(local[n]));
            }
        }
    }
    return true;
}

void MeshRun::done(Owner owner, const MeshPiece&) {
    events().emit(&TarvoInterface::TIObserve::notify_mesh_created,
                  std::string(owner_word(owner.dim)), owner.id);
    ++finished;
    if (progress)
        progress->step(finished, total);
}

// Curves are ours: nodes at the arc lengths the sizing gives (interval_lengths, bias and dual
// bias included), each with its curve parameter, so that Gmsh takes them as given.
bool MeshRun::mesh_curves() {
    for (int id : todo[1]) {
        current = {1, id};
        if (interrupted())
            return fail("Interrupted");
        const TopoDS_Edge edge = TopoDS::Edge(model().shape(GeomKind::Curve, id));
        BRepAdaptor_Curve curve(edge);
        int first = 0, last = 0;
        std::vector<double> lengths = interval_lengths(id);
        if (!curve_ends(id, first, last) || lengths.empty())
            return fail("curve " + std::to_string(id) + " has no ends to mesh between");
        if (curve_plan(id).from_end)
            std::reverse(lengths.begin(), lengths.end());
        if (const auto given = options.curve_lengths.find(id); given != options.curve_lengths.end())
            lengths = given->second;
        else if (const auto more = extra.find(id); more != extra.end()) {
            const double length = std::accumulate(lengths.begin(), lengths.end(), 0.0);
            const size_t count = lengths.size() + static_cast<size_t>(more->second);
            lengths.assign(count, length / static_cast<double>(count));
        }
        const double u0 = curve.FirstParameter();
        const double total = GCPnts_AbscissaPoint::Length(curve);
        double sum = 0;
        for (double l : lengths)
            sum += l;
        NewMesh mesh;
        std::vector<int> chain{m.state().piece({0, first})->first_node};
        double along = 0;
        for (size_t k = 0; k + 1 < lengths.size(); ++k) {
            along += lengths[k] * total / sum;
            GCPnts_AbscissaPoint at(curve, along, u0);
            if (!at.IsDone())
                return fail("curve " + std::to_string(id) + " could not be divided");
            const gp_Pnt p = curve.Value(at.Parameter());
            chain.push_back(NewMesh::local(static_cast<int>(mesh.nodes.size())));
            mesh.nodes.push_back({p.X(), p.Y(), p.Z()});
            mesh.params.push_back(at.Parameter());
        }
        chain.push_back(m.state().piece({0, last})->first_node);
        auto& edges = mesh.block(ElemKind::Edge).conn;
        for (size_t k = 0; k + 1 < chain.size(); ++k) {
            edges.push_back(chain[k]);
            edges.push_back(chain[k + 1]);
        }
        done({1, id}, m.publish({1, id}, std::move(mesh),
                                curve_plan(id).bias == BiasType::None ? "equal" : "bias"));
    }
    return true;
}

// Degenerate edges (a sphere's poles, a cone's apex) have no id in the kernel: Gmsh meshes them.
bool MeshRun::mesh_degenerate_curves() {
    if (gmap.unmapped.empty())
        return true;
    std::vector<std::pair<int, int>> visible;
    for (const auto& dt : gmap.unmapped)
        if (dt.first == 1)
            visible.push_back(dt);
    if (visible.empty())
        return true;
    set_visible(visible);
    std::string failure;
    generate(1, failure);
    if (!failure.empty())
        return fail("Gmsh could not mesh the curves: " + failure);
    return true;
}

// Surfaces of one target size are meshed by one generate(2) (each call costs a pass over the
// whole model), then read back one by one; the interrupt is tested between batches.
bool MeshRun::mesh_surfaces(const std::vector<int>& ids) {
    std::map<double, std::vector<int>> by_size;
    std::map<int, std::string> how;
    for (int id : ids) {
        current = {2, id};
        if (linking.count(id))
            continue;
        if (tag_of(2, id).second < 0)
            return fail("surface " + std::to_string(id) + " is unknown to Gmsh");
        how[id] = surface_method(id);
        if (how[id].empty())
            return false;
        by_size[size_of(GeomKind::Surface, id)].push_back(id);
    }
    // A sweep's linking surfaces are structured bands of our own, not Gmsh's.
    for (int id : ids) {
        const auto it = linking.find(id);
        if (it == linking.end() || m.state().meshed({2, id}))
            continue;
        current = {2, id};
        const auto [source, target] = sweep_pairs.at(it->second);
        NewMesh band;
        std::string why;
        if (!map_linking_surface(m, it->second, source, target, id, band, why))
            return fail(why);
        done({2, id}, m.publish({2, id}, std::move(band), "map"));
    }
    for (const auto& [size, surfaces] : by_size) {
        current = {2, surfaces.front()};
        if (interrupted())
            return fail("Interrupted");
        std::vector<std::pair<int, int>> visible;
        for (int id : surfaces) {
            const int tag = tag_of(2, id).second;
            if (how[id] == "map")
                gmsh::model::mesh::setTransfiniteSurface(tag);
            if (how[id] != "trimesh")
                gmsh::model::mesh::setRecombine(2, tag);
            visible.push_back({2, tag});
            for (int c : m.boundary(2, id)) {
                visible.push_back(tag_of(1, c));
                for (int v : m.boundary(1, c))
                    visible.push_back(tag_of(0, v));
            }
        }
        gmsh::option::setNumber("Mesh.MeshSizeMax", size);
        set_visible(visible);
        std::string failure;
        generate(2, failure);
        if (!failure.empty())
            return fail("Gmsh could not mesh the surfaces (its numbering): " + failure);
        for (int id : surfaces) {
            current = {2, id};
            NewMesh mesh;
            if (!read_gmsh_piece(2, tag_of(2, id).second, mesh, false))
                return false;
            if (mesh.blocks.empty())
                return fail("Gmsh made no elements on surface " + std::to_string(id));
            if (how[id] == "map" && mesh.blocks.size() != 1)
                return fail("surface " + std::to_string(id) + " could not be mapped into quads");
            done({2, id}, m.publish({2, id}, std::move(mesh), how[id]));
        }
    }
    return true;
}

// Tets from the stored boundary: a discrete model whose surfaces hold exactly the boundary's
// triangles and quads (node tags are our ids), so the volume mesh uses them node for node.
// A pyramid on each boundary quad, its apex inside the volume at half the quad's mean side from
// the quad's centre: the tets then meet four triangles. (Gmsh 4.8 can make these pyramids itself,
// but its relocation of their apexes aborts the process on an Eigen assertion now and then.)
// The apexes are new nodes of the volume (`out`); their Gmsh tags lie above every node id.
void MeshRun::add_pyramids(int volume, const ElemBlock& quads, NewMesh& out,
                           std::vector<std::size_t>& apex_tags, std::vector<double>& apex_xyz,
                           std::vector<std::size_t>& skin) {
    BRepClass3d_SolidClassifier inside(model().shape(GeomKind::Volume, volume));
    for (int e = 0; e < quads.count(); ++e) {
        const int* q = quads.conn.data() + 4 * e;
        gp_Pnt p[4];
        gp_XYZ centre(0, 0, 0);
        double side = 0;
        for (int k = 0; k < 4; ++k) {
            const Point3 x = *m.state().node_position(q[k]);
            p[k] = gp_Pnt(x[0], x[1], x[2]);
            centre += p[k].XYZ() / 4;
        }
        for (int k = 0; k < 4; ++k)
            side += p[k].Distance(p[(k + 1) % 4]) / 4;
        gp_Vec normal = gp_Vec(p[0], p[2]).Crossed(gp_Vec(p[1], p[3]));
        if (normal.Magnitude() <= 0)
            continue;
        normal.Normalize();
        inside.Perform(gp_Pnt(centre + normal.XYZ() * side * 0.25), 1e-7);
        const bool along = inside.State() == TopAbs_IN;
        const gp_XYZ apex = centre + normal.XYZ() * (along ? 0.5 : -0.5) * side;
        const int local = static_cast<int>(out.nodes.size());
        out.nodes.push_back({apex.X(), apex.Y(), apex.Z()});
        const std::size_t tag =
            static_cast<std::size_t>(m.state().next_node_id()) + apex_tags.size();
        apex_tags.push_back(tag);
        apex_xyz.insert(apex_xyz.end(), {apex.X(), apex.Y(), apex.Z()});
        node_of_tag[tag] = NewMesh::local(local);
        // Exodus order: the apex on the side the base's winding points to.
        auto& pyramid = out.block(ElemKind::Pyramid).conn;
        if (along)
            pyramid.insert(pyramid.end(), {q[0], q[1], q[2], q[3], NewMesh::local(local)});
        else
            pyramid.insert(pyramid.end(), {q[3], q[2], q[1], q[0], NewMesh::local(local)});
        for (int k = 0; k < 4; ++k)
            skin.insert(skin.end(), {static_cast<std::size_t>(q[k]),
                                     static_cast<std::size_t>(q[(k + 1) % 4]), tag});
    }
}

bool MeshRun::mesh_volume_tets(int id, NewMesh& out) {
    gmsh::model::add("tarvo-volume");
    std::set<int> placed;
    std::vector<int> surfaces;
    std::vector<std::size_t> apex_tags, skin_tris;
    std::vector<double> apex_xyz;
    node_of_tag.clear();
    // One discrete surface per boundary surface with triangles, one more for the pyramids' sides;
    // each node on the first of them that uses it.
    struct Skin {
        std::vector<std::size_t> tris, nodes;
        std::vector<double> xyz;
    };
    std::vector<Skin> skins;
    const auto place = [&](Skin& skin, std::size_t n, const Point3& p) {
        if (placed.insert(static_cast<int>(n)).second) {
            skin.nodes.push_back(n);
            skin.xyz.insert(skin.xyz.end(), p.begin(), p.end());
        }
    };
    for (int s : m.boundary(3, id)) {
        const MeshPiece* piece = m.state().piece({2, s});
        if (!piece)
            return fail("surface " + std::to_string(s) + " has no mesh");
        Skin skin;
        for (const ElemBlock& b : piece->blocks) {
            if (b.kind == ElemKind::Quad) {
                add_pyramids(id, b, out, apex_tags, apex_xyz, skin_tris);
                continue;
            }
            for (int n : b.conn) {
                skin.tris.push_back(static_cast<std::size_t>(n));
                place(skin, static_cast<std::size_t>(n), *m.state().node_position(n));
            }
        }
        if (!skin.tris.empty())
            skins.push_back(std::move(skin));
    }
    if (!skin_tris.empty()) {
        Skin sides;
        sides.tris = skin_tris;
        for (std::size_t n : skin_tris) {
            if (n >= static_cast<std::size_t>(m.state().next_node_id()))
                continue;
            place(sides, n, *m.state().node_position(static_cast<int>(n)));
        }
        sides.nodes.insert(sides.nodes.end(), apex_tags.begin(), apex_tags.end());
        sides.xyz.insert(sides.xyz.end(), apex_xyz.begin(), apex_xyz.end());
        skins.push_back(std::move(sides));
    }
    for (const Skin& skin : skins) {
        const int tag = gmsh::model::addDiscreteEntity(2);
        surfaces.push_back(tag);
        gmsh::model::mesh::addNodes(2, tag, skin.nodes, skin.xyz);
        gmsh::model::mesh::addElementsByType(tag, kGmshTri, {}, skin.tris);
    }
    const int volume = gmsh::model::addDiscreteEntity(3, -1, surfaces);
    gmsh::model::mesh::createGeometry({{3, volume}});
    const double size = size_of(GeomKind::Volume, id);
    gmsh::option::setNumber("Mesh.MeshSizeMax", size);
    // Growth: the size may rise from the boundary's by (growth - 1) per unit of distance, up to
    // growth^3 times it (a background field over the distance to the boundary triangles).
    const double growth = tetmesh_growth();
    if (growth > 1) {
        const int distance = gmsh::model::mesh::field::add("Distance");
        gmsh::model::mesh::field::setNumbers(distance, "FacesList",
                                             std::vector<double>(surfaces.begin(), surfaces.end()));
        const int law = gmsh::model::mesh::field::add("MathEval");
        gmsh::model::mesh::field::setString(
            law, "F",
            "min(" + std::to_string(size * growth * growth * growth) + ", " + std::to_string(size) +
                " + " + std::to_string(growth - 1) + " * F" + std::to_string(distance) + ")");
        gmsh::model::mesh::field::setAsBackgroundMesh(law);
        gmsh::option::setNumber("Mesh.MeshSizeMax", size * growth * growth * growth);
        // Or the sizes interpolated from the boundary would win everywhere.
        gmsh::option::setNumber("Mesh.MeshSizeExtendFromBoundary", 0);
    }
    std::string failure;
    generate(3, failure);
    if (!failure.empty()) {
        gmsh::model::remove();
        gmsh::model::setCurrent(geo_model);
        return fail("Gmsh could not mesh volume " + std::to_string(id) + ": " + failure);
    }
    // In this model every given node's tag is its id, apexes aside (node_of_tag holds them).
    const bool ok = read_gmsh_piece(3, volume, out, false);
    gmsh::model::remove();
    gmsh::model::setCurrent(geo_model);
    if (!ok)
        return false;
    if (out.blocks.empty())
        return fail("Gmsh made no tets in volume " + std::to_string(id));
    return true;
}

bool MeshRun::mesh_volume(int id) {
    NewMesh mesh;
    std::string why;
    Method how = method.at(id);
    bool made = true;
    if (how == Method::Sweep) {
        const auto [source, target] = sweep_pairs.at(id);
        NewMesh target_mesh;
        made = sweep_target(m, id, source, target, target_mesh, why);
        if (made) {
            done({2, target}, m.publish({2, target}, std::move(target_mesh), "sweep"));
            made = sweep_volume(m, id, source, target, mesh, why);
        }
    } else if (how == Method::Map) {
        made = map_volume(m, id, mesh, why);
    }
    if (!made) {
        // A hex method the user did not ask for gives way to tets on the same boundary.
        const Scheme scheme = scheme_of(GeomKind::Volume, id);
        if (scheme != Scheme::Default && scheme != Scheme::Auto)
            return fail(why);
        warning(why + "; meshing volume " + std::to_string(id) + " with tets instead");
        if (how == Method::Sweep && !m.state().meshed({2, sweep_pairs.at(id).second}) &&
            !mesh_surfaces({sweep_pairs.at(id).second}))
            return false;
        how = Method::Tets;
        mesh = NewMesh{};
    }
    if (how == Method::Tets && !mesh_volume_tets(id, mesh))
        return false;
    done({3, id}, m.publish({3, id}, std::move(mesh), method_word(how)));
    return true;
}

bool MeshRun::run(const std::vector<EntityKey>& list) {
    m.drop_stale();
    if (!plan(list))
        return false;
    if (total == 0 && todo[0].empty()) {
        print("Nothing to mesh: everything listed is meshed already");
        return true;
    }
    progress = std::make_unique<Progress>("Meshing", plural(total, "entity"));
    if (!mesh_vertices() || !mesh_curves() || !start_gmsh() || !give_back_curves() ||
        !mesh_degenerate_curves())
        return false;
    if (!mesh_surfaces(todo[2]))
        return false;
    // A volume waits for the sweeps that make surfaces on its boundary.
    std::vector<int> pending = todo[3];
    while (!pending.empty()) {
        const auto ready = std::find_if(pending.begin(), pending.end(), [&](int v) {
            const auto own = sweep_pairs.find(v);
            for (int s : m.boundary(3, v))
                if (!m.state().meshed({2, s}) &&
                    (own == sweep_pairs.end() || own->second.second != s))
                    return false;
            return true;
        });
        if (ready == pending.end()) {
            current = {3, pending.front()};
            return fail("volumes " + compress_ids(pending) +
                        " wait on each other's sweeps: give their sources and targets");
        }
        const int id = *ready;
        pending.erase(ready);
        current = {3, id};
        if (interrupted())
            return fail("Interrupted");
        if (!mesh_volume(id))
            return false;
    }
    for (const Owner& o : listed)
        if (const MeshPiece* p = m.state().piece(o))
            print(std::string("Meshed ") + owner_word(o.dim) + " " + std::to_string(o.id) + ": " +
                  describe(*p) + " (" + p->scheme + ")");
    return true;
}

bool MeshModule::mesh(const std::vector<EntityKey>& list) {
    errors_.clear();
    return guarded("mesh", [&] {
        MeshRun run(*this);
        return run.run(list);
    });
}

} // namespace tarvo::kernel::mesh
