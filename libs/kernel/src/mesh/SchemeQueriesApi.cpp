// Public questions on how the mesher will treat an entity, answered from the same rules it
// meshes by: the sweep pair of a volume, whether a volume's scheme can be carried out, the parity
// of a surface's intervals (quads pave only an even boundary), the role of each corner of a
// surface, what to do about a mesh error, and points of a quad mapped onto a surface.
//
// Conventions as in SizingApi.cpp: an unknown id answers the failure value without an error line
// (monitors ask about entities that may just have gone); project_unit_square, an operation on
// arguments, names what is wrong with them.
//
// Threading: kernel thread only.

#include "core/Guard.h"
#include "core/Session.h"
#include "mesh/MeshRun.h"
#include "mesh/SizingSettings.h"
#include "mesh/Structured.h"
#include "tarvo/TarvoInterface.h"

#include <BRepAdaptor_Curve.hxx>
#include <BRepAdaptor_Surface.hxx>
#include <BRepTools.hxx>
#include <BRepTools_WireExplorer.hxx>
#include <BRep_Tool.hxx>
#include <GeomAPI_ProjectPointOnSurf.hxx>
#include <Geom_Surface.hxx>
#include <TopExp.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Edge.hxx>
#include <TopoDS_Face.hxx>
#include <TopoDS_Vertex.hxx>
#include <TopoDS_Wire.hxx>

#include <algorithm>
#include <cmath>
#include <optional>

namespace tk = tarvo::kernel;
namespace ms = tarvo::kernel::mesh;
using tk::GeomKind;

namespace {

constexpr double kPi = 3.14159265358979323846;

bool exists(GeomKind kind, int id) {
    return tk::geometry_module() && ms::model().exists(kind, id);
}

// The pair the mesher sweeps `volume` with, if its scheme sweeps it: `sweep`, or automatic and
// sweepable with linking surfaces that fit (else the automatic scheme maps or tets it).
std::optional<std::pair<int, int>> sweep_pair_of(int volume) {
    const ms::MeshModule* m = ms::mesh_module();
    if (!m || !exists(GeomKind::Volume, volume))
        return std::nullopt;
    const ms::Scheme scheme = ms::scheme_of(GeomKind::Volume, volume);
    if (scheme != ms::Scheme::Sweep && scheme != ms::Scheme::Default && scheme != ms::Scheme::Auto)
        return std::nullopt;
    int source = 0, target = 0;
    std::string why;
    ms::sweep_surfaces(volume, source, target);
    if (!ms::find_sweep_pair(*m, volume, source, target, why))
        return std::nullopt;
    if (scheme != ms::Scheme::Sweep && !ms::linking_surfaces_fit(*m, volume, source, target, why))
        return std::nullopt;
    return std::make_pair(source, target);
}

// The angle of the face's own region at each corner of its boundary, in degrees [0, 360): from
// the edge leaving the corner, turning about the face's normal, to the edge arriving at it.
// A vertex met twice (a seam) keeps its first corner.
std::vector<std::pair<int, double>> corner_angles(int surface) {
    const TopoDS_Face face = TopoDS::Face(ms::model().shape(GeomKind::Surface, surface));
    const BRepAdaptor_Surface adaptor(face);
    std::vector<std::pair<int, double>> out;
    auto tangent = [](const TopoDS_Edge& e, bool at_start) {
        const BRepAdaptor_Curve c(e);
        const bool reversed = e.Orientation() == TopAbs_REVERSED;
        const bool first = at_start != reversed;
        gp_Pnt p;
        gp_Vec d;
        c.D1(first ? c.FirstParameter() : c.LastParameter(), p, d);
        return reversed ? d.Reversed() : d; // along the edge as the wire runs
    };
    for (TopExp_Explorer w(face, TopAbs_WIRE); w.More(); w.Next()) {
        std::vector<TopoDS_Edge> edges;
        for (BRepTools_WireExplorer e(TopoDS::Wire(w.Current()), face); e.More(); e.Next())
            if (!BRep_Tool::Degenerated(e.Current()))
                edges.push_back(e.Current());
        for (std::size_t i = 0; i < edges.size(); ++i) {
            const TopoDS_Edge& in = edges[(i + edges.size() - 1) % edges.size()];
            const TopoDS_Edge& leaving = edges[i];
            const TopoDS_Vertex v = TopExp::FirstVertex(leaving, true);
            const int id = ms::model().id_of(GeomKind::Vertex, v);
            if (id <= 0 ||
                std::any_of(out.begin(), out.end(), [&](const auto& a) { return a.first == id; }))
                continue;
            const gp_Pnt2d uv = BRep_Tool::Parameters(v, face);
            gp_Pnt p;
            gp_Vec du, dv;
            adaptor.D1(uv.X(), uv.Y(), p, du, dv);
            gp_Vec n = du.Crossed(dv);
            if (face.Orientation() == TopAbs_REVERSED)
                n.Reverse();
            const gp_Vec a = tangent(leaving, true), b = tangent(in, false).Reversed();
            double deg = std::atan2(n.Normalized().Dot(a.Crossed(b)), a.Dot(b)) * 180.0 / kPi;
            if (deg < 0)
                deg += 360;
            out.emplace_back(id, deg);
        }
    }
    return out;
}

// Submap's corner codes: end +1 (about 90 degrees), side 0 (180), corner -1 (270), reversal -2
// (360). Around a surface with one loop they add up to 4.
int corner_code(double degrees) {
    return degrees < 135 ? 1 : degrees < 225 ? 0 : degrees < 315 ? -1 : -2;
}

const char* corner_word(int code) {
    return code == 1 ? "end" : code == 0 ? "side" : code == -1 ? "corner" : "reversal";
}

} // namespace

namespace TarvoInterface {

std::vector<int> get_source_surfaces(int volume_id) {
    return tk::guarded("get_source_surfaces", std::vector<int>{}, [&] {
        const auto pair = sweep_pair_of(volume_id);
        return pair ? std::vector<int>{pair->first} : std::vector<int>{};
    });
}

std::vector<int> get_target_surfaces(int volume_id) {
    return tk::guarded("get_target_surfaces", std::vector<int>{}, [&] {
        const auto pair = sweep_pair_of(volume_id);
        return pair ? std::vector<int>{pair->second} : std::vector<int>{};
    });
}

bool is_interval_count_odd(int surface_id) {
    return tk::guarded("is_interval_count_odd", false, [&] {
        const ms::MeshModule* m = ms::mesh_module();
        if (!m || !exists(GeomKind::Surface, surface_id))
            return false;
        int sum = 0;
        for (int c : m->boundary(2, surface_id))
            if (const auto r = ms::resolve(GeomKind::Curve, c))
                sum += r->intervals;
        return sum % 2 == 1;
    });
}

std::string get_vertex_type(int surface_id, int vertex_id) {
    return tk::guarded("get_vertex_type", std::string(), [&] {
        if (!exists(GeomKind::Surface, surface_id))
            return std::string();
        for (const auto& [vertex, degrees] : corner_angles(surface_id))
            if (vertex == vertex_id)
                return std::string(corner_word(corner_code(degrees)));
        return std::string();
    });
}

std::vector<std::pair<int, int>> get_submap_corner_types(int surface_id) {
    using Out = std::vector<std::pair<int, int>>;
    return tk::guarded("get_submap_corner_types", Out{}, [&] {
        Out out;
        if (!exists(GeomKind::Surface, surface_id))
            return out;
        for (const auto& [vertex, degrees] : corner_angles(surface_id))
            out.emplace_back(vertex, corner_code(degrees));
        return out;
    });
}

// Nodes are always placed on their geometry here: curve nodes at arc lengths on the curve,
// surface nodes by Gmsh on the face, and smoothing projects moved nodes back onto it. There is
// no switch to turn that off, so the mode is always "on".
bool get_node_constraint() {
    return true;
}

int get_node_constraint_value() {
    return 1;
}

bool is_volume_meshable(int volume_id) {
    return tk::guarded("is_volume_meshable", false, [&] {
        ms::MeshModule* m = ms::mesh_module();
        if (!m || !exists(GeomKind::Volume, volume_id))
            return false;
        std::string why;
        return ms::MeshRun(*m).plannable(volume_id, why);
    });
}

// Code 1 (could not mesh) and 2 (interrupted), for each entity the last `mesh` left with that
// code: runnable lines, each followed by its description.
std::vector<std::string> get_mesh_error_solutions(int error_code) {
    return tk::guarded("get_mesh_error_solutions", std::vector<std::string>{}, [&] {
        std::vector<std::string> out;
        ms::MeshModule* m = ms::mesh_module();
        if (!m)
            return out;
        if (error_code != 1 && error_code != 2) {
            tk::error("get_mesh_error_solutions: " + std::to_string(error_code) +
                      " is not a mesh error code (1: could not mesh, 2: interrupted)");
            return out;
        }
        for (const MeshErrorFeedback* e : m->mesh_errors()) {
            if (e->error_code != error_code)
                continue;
            const std::string entity = e->entity_type + " " + std::to_string(e->entity_id);
            if (error_code == 2) {
                out.insert(out.end(), {"mesh " + entity, "Mesh " + entity + " again"});
                continue;
            }
            if (e->entity_type == "volume")
                out.insert(out.end(),
                           {entity + " scheme tetmesh",
                            "Mesh " + entity + " with tets, which need no structure of it"});
            else if (e->entity_type == "surface")
                out.insert(out.end(),
                           {entity + " scheme trimesh",
                            "Mesh " + entity + " with triangles, which need no structure of it"});
        }
        return out;
    });
}

std::vector<std::vector<double>> project_unit_square(const std::vector<std::vector<double>>& pts,
                                                     int surface_id, int quad_id, int node00_id,
                                                     int node10_id) {
    using Out = std::vector<std::vector<double>>;
    const char* what = "project_unit_square";
    return tk::guarded(what, Out{}, [&] {
        auto refuse = [&](const std::string& why) {
            tk::error(std::string(what) + ": " + why);
            return Out{};
        };
        if (!exists(GeomKind::Surface, surface_id))
            return refuse("surface " + std::to_string(surface_id) + " does not exist");
        const std::vector<int> quad = get_connectivity("quad", quad_id);
        if (quad.size() != 4)
            return refuse("quad " + std::to_string(quad_id) + " does not exist");
        // The corners in the order (0,0) (1,0) (1,1) (0,1): from node00 toward node10.
        const auto at = std::find(quad.begin(), quad.end(), node00_id);
        if (at == quad.end())
            return refuse("node " + std::to_string(node00_id) + " is not a corner of quad " +
                          std::to_string(quad_id));
        const int i = static_cast<int>(at - quad.begin());
        const int step = quad[(i + 1) % 4] == node10_id   ? 1
                         : quad[(i + 3) % 4] == node10_id ? 3
                                                          : 0;
        if (step == 0)
            return refuse("node " + std::to_string(node10_id) + " is not a corner of quad " +
                          std::to_string(quad_id) + " beside node " + std::to_string(node00_id));
        gp_XYZ corner[4];
        for (int k = 0; k < 4; ++k) {
            const auto c = get_nodal_coordinates(quad[(i + k * step) % 4]);
            corner[k] = gp_XYZ(c[0], c[1], c[2]);
        }
        const Handle(Geom_Surface) surface =
            BRep_Tool::Surface(TopoDS::Face(ms::model().shape(GeomKind::Surface, surface_id)));
        Out out;
        for (const std::vector<double>& uv : pts) {
            if (uv.size() < 2 || !std::isfinite(uv[0]) || !std::isfinite(uv[1]))
                return refuse("each point needs two finite coordinates (u v)");
            const double u = uv[0], v = uv[1];
            const gp_XYZ p = (1 - u) * (1 - v) * corner[0] + u * (1 - v) * corner[1] +
                             u * v * corner[2] + (1 - u) * v * corner[3];
            GeomAPI_ProjectPointOnSurf proj(gp_Pnt(p), surface);
            const gp_Pnt q = proj.NbPoints() > 0 ? proj.NearestPoint() : gp_Pnt(p);
            out.push_back({q.X(), q.Y(), q.Z()});
        }
        return out;
    });
}

} // namespace TarvoInterface
