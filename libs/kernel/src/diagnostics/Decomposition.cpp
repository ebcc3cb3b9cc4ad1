// Decomposition advice (Solutions.h): the webcuts that split a volume which does not sweep into
// pieces that all do.
//
// Candidates are the planes of the volume's planar surfaces at its concave curves: a reentrant
// edge is where sweep directions meet, and the surface beside it is the natural place to cut.
// Sets of one, two, then three candidates are tried on a copy of the volume (the same splitter
// the webcut command uses), each plane cutting every piece it meets. The pieces are judged by
// the mesher's own sweep rule on their bare topology, so advised cuts give pieces that `mesh`
// will sweep. One cut is rarely enough for our single-source sweeper: a plane through a face
// leaves that face split where the other piece touches it, and that side then has two faces.
// Nothing in the model changes.

#include "core/Session.h"
#include "diagnostics/Diagnostics.h"
#include "diagnostics/Solutions.h"
#include "geometry/GeometryInternal.h"
#include "mesh/MeshModule.h"
#include "mesh/Structured.h"

#include <BRepAdaptor_Surface.hxx>
#include <BRepAlgoAPI_Splitter.hxx>
#include <BRepBndLib.hxx>
#include <BRepBuilderAPI_MakeFace.hxx>
#include <BRep_Tool.hxx>
#include <Bnd_Box.hxx>
#include <TopExp.hxx>
#include <TopExp_Explorer.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Edge.hxx>
#include <TopoDS_Vertex.hxx>
#include <gp_Pln.hxx>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace tarvo::kernel::diagnostics {

namespace {

// Concave curves below this angle (inside the material) are too flat to be worth a cut.
constexpr double kMinConcave = 181.0;

std::string exact(double value) {
    if (std::abs(value) < 1e-12)
        value = 0;
    char buf[32];
    std::snprintf(buf, sizeof buf, "%.12g", value);
    return buf;
}

// The sweep rule's view of one solid: faces, curves and vertices numbered by OpenCASCADE's
// shape maps.
mesh::VolumeTopology topology_of(const TopoDS_Shape& solid) {
    TopTools_IndexedMapOfShape faces, edges, vertices;
    TopExp::MapShapes(solid, TopAbs_FACE, faces);
    TopExp::MapShapes(solid, TopAbs_EDGE, edges);
    TopExp::MapShapes(solid, TopAbs_VERTEX, vertices);
    mesh::VolumeTopology topo;
    for (int f = 1; f <= faces.Extent(); ++f) {
        topo.faces.push_back(f);
        std::vector<int>& curves = topo.curves[f];
        for (TopExp_Explorer ex(faces(f), TopAbs_EDGE); ex.More(); ex.Next()) {
            const TopoDS_Edge e = TopoDS::Edge(ex.Current());
            const int c = edges.FindIndex(e);
            if (BRep_Tool::Degenerated(e) || std::count(curves.begin(), curves.end(), c))
                continue;
            curves.push_back(c);
            TopoDS_Vertex a, b;
            TopExp::Vertices(e, a, b);
            topo.ends[c] = {vertices.FindIndex(a), vertices.FindIndex(b)};
        }
    }
    return topo;
}

bool sweeps(const TopoDS_Shape& solid) {
    const mesh::VolumeTopology topo = topology_of(solid);
    for (int s : topo.faces)
        for (int t : topo.faces)
            if (s < t && mesh::sweepable_pair(topo, s, t))
                return true;
    return false;
}

// The solids a plane cuts `solid` into (one when it misses).
std::vector<TopoDS_Shape> split_by(const TopoDS_Shape& solid, const gp_Pln& plane) {
    Bnd_Box box;
    BRepBndLib::Add(solid, box);
    const double size = 2 * std::sqrt(box.SquareExtent()) +
                        plane.Location().Distance(box.CornerMin()) +
                        plane.Location().Distance(box.CornerMax());
    BRepAlgoAPI_Splitter split;
    TopTools_ListOfShape args, tools;
    args.Append(solid);
    tools.Append(BRepBuilderAPI_MakeFace(plane, -size, size, -size, size).Face());
    split.SetArguments(args);
    split.SetTools(tools);
    split.SetNonDestructive(true);
    split.Build();
    if (!split.IsDone() || split.HasErrors())
        return {};
    std::vector<TopoDS_Shape> out;
    for (TopExp_Explorer ex(split.Shape(), TopAbs_SOLID); ex.More(); ex.Next())
        out.push_back(ex.Current());
    return out;
}

// The cutting plane in the webcut command's own words: an axis plane by its offset when the
// normal is along an axis, else the normal and a point.
std::string plane_words(const gp_Pln& plane) {
    const gp_Dir n = plane.Axis().Direction();
    const gp_Pnt p = plane.Location();
    const double c[3] = {n.X(), n.Y(), n.Z()};
    const double at[3] = {p.X(), p.Y(), p.Z()};
    for (int i = 0; i < 3; ++i)
        if (std::abs(std::abs(c[i]) - 1) < 1e-12)
            return std::string("plane ") + "xyz"[i] + " offset " + exact(at[i]);
    return "plane normal " + exact(c[0]) + " " + exact(c[1]) + " " + exact(c[2]) + " point " +
           exact(at[0]) + " " + exact(at[1]) + " " + exact(at[2]);
}

bool same_plane(const gp_Pln& a, const gp_Pln& b) {
    return a.Axis().Direction().IsParallel(b.Axis().Direction(), 1e-9) &&
           a.Distance(b.Location()) < 1e-7;
}

// The planes of the planar surfaces of `volume` at its concave curves sharper than
// `exterior_angle`, each once, with the surface it comes from; each plane goes through a
// vertex of its curve, so that the command states it exactly.
std::vector<std::pair<gp_Pln, int>> candidate_planes(int volume, double exterior_angle) {
    std::vector<std::pair<gp_Pln, int>> out;
    for (const CurveAngle& a : curve_angles({volume})) {
        if (a.degrees <= std::max(exterior_angle, kMinConcave))
            continue;
        const TopoDS_Edge edge = TopoDS::Edge(model().shape(GeomKind::Curve, a.curve));
        const gp_Pnt on = BRep_Tool::Pnt(TopExp::FirstVertex(edge));
        const std::vector<int> own = model().relatives(GeomKind::Volume, volume, GeomKind::Surface);
        for (int s : model().relatives(GeomKind::Curve, a.curve, GeomKind::Surface)) {
            if (!std::count(own.begin(), own.end(), s))
                continue;
            BRepAdaptor_Surface surface(TopoDS::Face(model().shape(GeomKind::Surface, s)));
            if (surface.GetType() != GeomAbs_Plane)
                continue;
            const gp_Pln plane(on, surface.Plane().Axis().Direction());
            if (std::none_of(out.begin(), out.end(),
                             [&](const auto& p) { return same_plane(p.first, plane); }))
                out.push_back({plane, s});
        }
    }
    return out;
}

// One cut of a decomposition: the plane and the surfaces (kept from the volume, one per piece it
// cuts) that name the pieces after the first cut, whose ids are not known beforehand.
struct Cut {
    gp_Pln plane;
    int from_surface = 0;
    std::vector<int> pieces_by_surface;
};

// An original surface of `volume` alone (a merged one would list its neighbour too) that `piece`
// still holds untouched (its id survives the cuts), or 0.
int kept_surface(int volume, const TopoDS_Shape& piece) {
    for (int s : model().relatives(GeomKind::Volume, volume, GeomKind::Surface)) {
        if (volumes_holding(GeomKind::Surface, s).size() != 1)
            continue;
        const TopoDS_Shape face = model().shape(GeomKind::Surface, s);
        for (TopExp_Explorer ex(piece, TopAbs_FACE); ex.More(); ex.Next())
            if (ex.Current().IsSame(face))
                return s;
    }
    return 0;
}

// Cuts `solid` by the planes in order, each through every piece it meets; false when a plane
// meets no piece, a cut fails, or a piece to cut cannot be named. `pieces` is what is left.
bool cut_in_order(int volume, const TopoDS_Shape& solid,
                  const std::vector<std::pair<gp_Pln, int>>& planes, std::vector<Cut>& cuts,
                  std::vector<TopoDS_Shape>& pieces) {
    pieces = {solid};
    cuts.clear();
    for (const auto& [plane, surface] : planes) {
        Cut cut{plane, surface, {}};
        std::vector<TopoDS_Shape> next;
        for (const TopoDS_Shape& piece : pieces) {
            std::vector<TopoDS_Shape> parts = split_by(piece, plane);
            if (parts.empty())
                return false;
            if (parts.size() > 1 && !cuts.empty()) {
                const int named = kept_surface(volume, piece);
                if (named == 0)
                    return false;
                cut.pieces_by_surface.push_back(named);
            } else if (parts.size() > 1) {
                cut.pieces_by_surface.push_back(0); // the volume itself
            }
            next.insert(next.end(), parts.begin(), parts.end());
        }
        if (cut.pieces_by_surface.empty())
            return false;
        pieces = std::move(next);
        cuts.push_back(std::move(cut));
    }
    return true;
}

// The fewest planes (at most kMaxCuts, in the order found) after which every piece sweeps.
constexpr std::size_t kMaxCuts = 3;
constexpr std::size_t kMaxCandidates = 8;

bool search(int volume, const std::vector<std::pair<gp_Pln, int>>& candidates,
            std::vector<Cut>& found, std::size_t& piece_count) {
    const TopoDS_Shape solid = model().shape(GeomKind::Volume, volume);
    const std::size_t n = std::min(candidates.size(), kMaxCandidates);
    for (std::size_t k = 1; k <= std::min(n, kMaxCuts); ++k) {
        // Subsets of k candidates in lexicographic order.
        std::vector<std::size_t> pick(k);
        for (std::size_t i = 0; i < k; ++i)
            pick[i] = i;
        while (true) {
            if (interrupted())
                throw Interrupted();
            std::vector<std::pair<gp_Pln, int>> planes;
            for (std::size_t i : pick)
                planes.push_back(candidates[i]);
            std::vector<TopoDS_Shape> pieces;
            if (cut_in_order(volume, solid, planes, found, pieces) &&
                std::all_of(pieces.begin(), pieces.end(), sweeps)) {
                piece_count = pieces.size();
                return true;
            }
            std::size_t i = k;
            while (i > 0 && pick[i - 1] == n - k + i - 1)
                --i;
            if (i == 0)
                break;
            ++pick[i - 1];
            for (std::size_t j = i; j < k; ++j)
                pick[j] = pick[j - 1] + 1;
        }
    }
    return false;
}

std::string ids_text(const std::vector<int>& ids) {
    std::string out;
    for (int id : ids)
        out += " " + std::to_string(id);
    return out;
}

} // namespace

Solutions decomposition_solutions(const std::vector<int>& volumes, double exterior_angle,
                                  bool imprint_merge, bool tolerant) {
    Solutions out;
    const mesh::MeshModule* mesher = mesh::mesh_module();
    if (!mesher)
        throw std::runtime_error("the mesh module is not running");
    for (int v : volumes) {
        int s = 0, t = 0;
        std::string why;
        if (mesh::find_sweep_pair(*mesher, v, s, t, why))
            continue; // sweeps as it is
        // A webcut cuts whole bodies: the copy would not show what it does to the others.
        const std::vector<int> bodies = model().bodies_of(GeomKind::Volume, v);
        if (bodies.size() != 1 || model().body(bodies.front())->volumes.size() != 1)
            continue;
        std::vector<Cut> cuts;
        std::size_t pieces = 0;
        if (!search(v, candidate_planes(v, exterior_angle), cuts, pieces))
            continue;
        const std::string vol = std::to_string(v);
        for (std::size_t i = 0; i < cuts.size(); ++i) {
            const Cut& cut = cuts[i];
            const std::string list = cut.pieces_by_surface.front() == 0
                                         ? "volume " + vol
                                         : "volume in surface" + ids_text(cut.pieces_by_surface);
            std::string description = "Cut " + std::to_string(i + 1) + " of " +
                                      std::to_string(cuts.size()) + " of volume " + vol +
                                      ", by the plane of its surface " +
                                      std::to_string(cut.from_surface);
            if (i + 1 == cuts.size())
                description += ": the " + std::to_string(pieces) + " pieces each sweep";
            out.push_back({"webcut " + list + " " + plane_words(cut.plane), description});
        }
    }
    if (imprint_merge && !out.empty()) {
        // The pieces are the listed volumes' new volumes: everything but the others of now.
        std::vector<int> others;
        for (int v : model().ids(GeomKind::Volume))
            if (!std::count(volumes.begin(), volumes.end(), v))
                others.push_back(v);
        const std::string list =
            "volume all" + (others.empty() ? std::string() : " except" + ids_text(others));
        out.push_back({std::string(tolerant ? "merge tolerant " : "merge ") + list,
                       "Then imprint and merge the pieces, so that they share their cut "
                       "surfaces and mesh conformally"});
    }
    return out;
}

} // namespace tarvo::kernel::diagnostics
