// Repair advice (Solutions.h): which of the module's own repairs (remove surface, regularize,
// merge tolerant) or the geometry commands (subtract, unite, merge) removes a found problem.

#include "core/Session.h"
#include "diagnostics/Diagnostics.h"
#include "diagnostics/Solutions.h"
#include "mesh/MeshModule.h"
#include "mesh/Structured.h"

#include <BRepAlgoAPI_Defeaturing.hxx>
#include <BRepCheck_Analyzer.hxx>
#include <BRepExtrema_DistShapeShape.hxx>
#include <TopoDS.hxx>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <set>

namespace tarvo::kernel::diagnostics {

namespace {

std::string ids_text(const std::vector<int>& ids) {
    std::string out;
    for (int id : ids)
        out += (out.empty() ? "" : " ") + std::to_string(id);
    return out;
}

std::string number(double value) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "%.3g", value);
    return buf;
}

// Whether removing the surfaces from a copy of their body gives a valid solid.
bool removable(const std::vector<int>& surfaces) {
    std::set<int> bodies;
    for (int s : surfaces) {
        const std::vector<int> owners = model().bodies_of(GeomKind::Surface, s);
        if (owners.size() != 1)
            return false;
        bodies.insert(owners.front());
    }
    if (bodies.size() != 1 || model().body(*bodies.begin())->volumes.empty())
        return false;
    BRepAlgoAPI_Defeaturing defeat;
    defeat.SetShape(model().body(*bodies.begin())->shape);
    for (int s : surfaces)
        defeat.AddFaceToRemove(model().shape(GeomKind::Surface, s));
    defeat.SetToFillHistory(false);
    defeat.Build();
    return defeat.IsDone() && !defeat.HasErrors() && BRepCheck_Analyzer(defeat.Shape()).IsValid();
}

// A volume of `surface` in which it has a neighbour on the same underlying surface.
int volume_to_regularize(int surface) {
    const TopoDS_Face face = TopoDS::Face(model().shape(GeomKind::Surface, surface));
    for (int v : volumes_holding(GeomKind::Surface, surface)) {
        const std::vector<int> own = model().relatives(GeomKind::Volume, v, GeomKind::Surface);
        for (int c : model().relatives(GeomKind::Surface, surface, GeomKind::Curve))
            for (int n : model().relatives(GeomKind::Curve, c, GeomKind::Surface))
                if (n != surface && std::count(own.begin(), own.end(), n) &&
                    same_domain(face, TopoDS::Face(model().shape(GeomKind::Surface, n))))
                    return v;
    }
    return 0;
}

double distance_between(GeomKind ka, int a, GeomKind kb, int b) {
    BRepExtrema_DistShapeShape d(model().shape(ka, a), model().shape(kb, b));
    return d.IsDone() && d.NbSolution() > 0 ? d.Value() : -1.0;
}

std::vector<int> one_volume_per_body(GeomKind ka, int a, GeomKind kb, int b) {
    const std::vector<int> va = volumes_holding(ka, a), vb = volumes_holding(kb, b);
    if (va.empty() || vb.empty())
        return {};
    return {va.front(), vb.front()};
}

void add_regularize(Solutions& out, int surface) {
    if (const int v = volume_to_regularize(surface))
        out.push_back({"regularize volume " + std::to_string(v),
                       "Join the surfaces of volume " + std::to_string(v) +
                           " that lie on one underlying surface (surface " +
                           std::to_string(surface) +
                           " and its neighbour) and the curves on one "
                           "curve"});
}

} // namespace

std::string tolerance_above(double distance) {
    return number(std::max(distance * 1.5, 1e-7));
}

Solutions small_curve_solutions(int curve, double small_curve_size) {
    Solutions out;
    const std::vector<int> surfaces = model().relatives(GeomKind::Curve, curve, GeomKind::Surface);
    for (int s : surfaces) {
        const double width =
            edge_pair_width(TopoDS::Face(model().shape(GeomKind::Surface, s)), small_curve_size);
        if (width < small_curve_size && removable({s}))
            out.push_back({"remove surface " + std::to_string(s),
                           "Remove surface " + std::to_string(s) + " (" + number(width) +
                               " wide) that holds curve " + std::to_string(curve) +
                               "; its neighbours extend over it"});
    }
    for (int s : surfaces) {
        const std::size_t before = out.size();
        add_regularize(out, s);
        if (out.size() > before)
            break;
    }
    out.push_back(
        {"curve " + std::to_string(curve) + " size " + number(model().curve_length(curve)),
         "Keep curve " + std::to_string(curve) +
             " and mesh it with one element of its length (the mesh around it will be "
             "fine)"});
    return out;
}

Solutions small_surface_solutions(int surface, double small_curve_size) {
    Solutions out;
    if (removable({surface}))
        out.push_back(
            {"remove surface " + std::to_string(surface),
             "Remove surface " + std::to_string(surface) + "; its neighbours extend over it"});
    add_regularize(out, surface);
    const TopoDS_Face face = TopoDS::Face(model().shape(GeomKind::Surface, surface));
    if (out.empty() && edge_pair_width(face, small_curve_size) < small_curve_size)
        out.push_back({"surface " + std::to_string(surface) + " size " +
                           number(edge_pair_width(face, small_curve_size)),
                       "Keep surface " + std::to_string(surface) +
                           " and mesh it with elements as small as its width"});
    return out;
}

Solutions near_vertices_solutions(int vertex_1, int vertex_2) {
    const double d = distance_between(GeomKind::Vertex, vertex_1, GeomKind::Vertex, vertex_2);
    // In one body the vertices bound a short curve, which is what to repair.
    const std::vector<int> c1 = model().relatives(GeomKind::Vertex, vertex_1, GeomKind::Curve);
    const std::vector<int> c2 = model().relatives(GeomKind::Vertex, vertex_2, GeomKind::Curve);
    for (int c : c1)
        if (std::count(c2.begin(), c2.end(), c))
            return small_curve_solutions(c, std::max(2 * d, 1e-6));
    return close_entities_solutions("vertex", vertex_1, "vertex", vertex_2);
}

Solutions close_entities_solutions(const char* kind_1, int id_1, const char* kind_2, int id_2) {
    const GeomKind k1 = *parse_kind(kind_1), k2 = *parse_kind(kind_2);
    const std::vector<int> b1 = model().bodies_of(k1, id_1), b2 = model().bodies_of(k2, id_2);
    for (int b : b1)
        if (std::count(b2.begin(), b2.end(), b))
            return {};
    const std::vector<int> vols = one_volume_per_body(k1, id_1, k2, id_2);
    if (vols.size() != 2)
        return {};
    const double d = distance_between(k1, id_1, k2, id_2);
    const std::string pair = "volume " + ids_text(vols);
    return {{"merge tolerant " + pair + " tolerance " + tolerance_above(d),
             "Imprint and merge " + pair + ", closing the distance of " + number(d) + " between " +
                 kind_1 + " " + std::to_string(id_1) + " and " + kind_2 + " " +
                 std::to_string(id_2)}};
}

Solutions overlapping_volumes_solutions(int volume_1, int volume_2) {
    if (overlapping_volumes({volume_1, volume_2}).empty())
        return {};
    const std::string a = std::to_string(volume_1), b = std::to_string(volume_2);
    return {{"subtract volume " + b + " from volume " + a + " keep",
             "Cut the common region out of volume " + a + "; volume " + b + " keeps it"},
            {"subtract volume " + a + " from volume " + b + " keep",
             "Cut the common region out of volume " + b + "; volume " + a + " keeps it"},
            {"unite volume " + a + " " + b, "Unite volumes " + a + " and " + b + " into one"}};
}

Solutions imprint_merge_solutions(int surface_1, int surface_2) {
    const double d = distance_between(GeomKind::Surface, surface_1, GeomKind::Surface, surface_2);
    if (d < 0)
        return {};
    if (d > 1e-7)
        return close_entities_solutions("surface", surface_1, "surface", surface_2);
    const std::vector<int> vols =
        one_volume_per_body(GeomKind::Surface, surface_1, GeomKind::Surface, surface_2);
    if (vols.size() != 2 || vols[0] == vols[1])
        return {};
    const std::string pair = "volume " + ids_text(vols);
    return {{"merge " + pair, "Imprint and merge " + pair + " so that surfaces " +
                                  std::to_string(surface_1) + " and " + std::to_string(surface_2) +
                                  " become shared surfaces"}};
}

Solutions blend_solutions(int surface) {
    Solutions out;
    if (blend_surfaces({surface}).empty())
        return out;
    const std::vector<int> chain = blend_chains(surface).front();
    if (chain.size() > 1 && removable(chain))
        out.push_back({"remove surface " + ids_text(chain),
                       "Remove the chain of blends through surface " + std::to_string(surface) +
                           "; the surfaces they join meet at a sharp edge"});
    if (removable({surface}))
        out.push_back({"remove surface " + std::to_string(surface),
                       "Remove blend surface " + std::to_string(surface) +
                           "; the surfaces it joins meet at a sharp edge"});
    return out;
}

namespace {

const mesh::MeshModule& mesher() {
    const mesh::MeshModule* m = mesh::mesh_module();
    if (!m)
        throw std::runtime_error("the mesh module is not running");
    return *m;
}

} // namespace

bool source_target_pairs(int volume, std::vector<std::vector<int>>& feasible_sources,
                         std::vector<std::vector<int>>& feasible_targets,
                         std::vector<std::vector<int>>& infeasible_sources,
                         std::vector<std::vector<int>>& infeasible_targets) {
    const std::vector<int> faces = model().relatives(GeomKind::Volume, volume, GeomKind::Surface);
    for (std::size_t i = 0; i < faces.size(); ++i)
        for (std::size_t j = i + 1; j < faces.size(); ++j) {
            const std::vector<int> ci =
                model().relatives(GeomKind::Surface, faces[i], GeomKind::Curve);
            const std::vector<int> cj =
                model().relatives(GeomKind::Surface, faces[j], GeomKind::Curve);
            bool meet = false;
            for (int c : ci)
                meet = meet || std::count(cj.begin(), cj.end(), c);
            if (meet)
                continue;
            int s = faces[i], t = faces[j];
            std::string why;
            const bool ok = mesh::find_sweep_pair(mesher(), volume, s, t, why);
            (ok ? feasible_sources : infeasible_sources).push_back({faces[i]});
            (ok ? feasible_targets : infeasible_targets).push_back({faces[j]});
        }
    return !feasible_sources.empty();
}

Solutions sweep_solutions(int volume, std::vector<int>& sources, std::vector<int>& targets) {
    int s = 0, t = 0;
    std::string why;
    if (!mesh::find_sweep_pair(mesher(), volume, s, t, why)) {
        print(why);
        return {};
    }
    sources = {s};
    targets = {t};
    const std::string v = std::to_string(volume);
    return {{"volume " + v + " scheme sweep source surface " + std::to_string(s) +
                 " target surface " + std::to_string(t),
             "Sweep volume " + v + " from surface " + std::to_string(s) + " to surface " +
                 std::to_string(t)}};
}

} // namespace tarvo::kernel::diagnostics
