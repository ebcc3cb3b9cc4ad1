#pragma once
// The diagnostics module: finders of what will stop a model from meshing, and the commands that
// repair it.
//
// Contract
// - Every finder reads the live GeometryModel and changes nothing. It takes the ids of the
//   volumes (or surfaces) to look at, checked by scope(): an empty list, an unknown id or a
//   tolerance that is not finite and positive is refused with one error line, and the finder
//   answers nothing. Results are ascending ids unless a finder says otherwise.
// - Long scans report progress and stop on the interrupt: scan_step() throws Interrupted, which
//   the public functions' guard turns into one error line.
// - The default tolerances live in Settings and are documented in docs/commands.md ("find").
//
// Threading: kernel thread only.

#include "geometry/GeometryModel.h"

#include <TopoDS_Edge.hxx>
#include <TopoDS_Face.hxx>

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace tarvo::kernel::diagnostics {

// Session settings of the diagnostics; reset by init.
struct Settings {
    // Two surfaces closer than this count as facing across a gap (overlap and gap searches).
    double overlap_max_gap = 0.01;
    // Two surfaces whose normals differ from antiparallel by less than this many degrees face
    // each other.
    double overlap_max_angle = 5.0;
    // Entities of different bodies closer than this are mergeable (`merge tolerant`'s default).
    double merge_tolerance = 5e-4;
};
Settings& settings();

struct Interrupted : std::runtime_error {
    Interrupted() : std::runtime_error("Interrupted") {}
};

// ---- Scope ----------------------------------------------------------------------------------
// Volume ids that exist, or nullopt after one error line ("<what>: ..."). An empty list is refused.
std::optional<std::vector<int>> volume_scope(const std::vector<int>& ids, const char* what);
// The same for surface ids.
std::optional<std::vector<int>> surface_scope(const std::vector<int>& ids, const char* what);
// False (with an error) unless `value` is finite and > 0.
bool positive_value(double value, const char* what, const char* name);
// Ids of `kind` inside the volumes, ascending, without duplicates.
std::vector<int> entities_of(const std::vector<int>& volumes, GeomKind kind);
// Ids of every volume holding the entity.
std::vector<int> volumes_holding(GeomKind kind, int id);
const GeometryModel& model();

// ---- Finders (the argument checks are done by the caller) ----------------------------------
struct Measured {
    int id = 0;
    double value = 0;
};
std::vector<Measured> small_curves(const std::vector<int>& volumes, double size);
std::vector<Measured> smallest_curves(const std::vector<int>& volumes, int count);
std::vector<Measured> small_surfaces(const std::vector<int>& surfaces, double size);
// Narrowest width of each surface that is narrower than `size`: the distance between two of its
// curves that share no vertex.
std::vector<Measured> narrow_surfaces(const std::vector<int>& surfaces, double size);
// Narrow surfaces that close on themselves (a seam curve).
std::vector<Measured> closed_narrow_surfaces(const std::vector<int>& surfaces, double size);
std::vector<Measured> small_volumes(const std::vector<int>& volumes, double size);
// 2 * area / perimeter of surfaces, 3 * volume / area of volumes (the radius for a disc and a
// ball), below `size`.
std::vector<Measured> surface_hydraulic_radius(const std::vector<int>& surfaces, double size);
std::vector<Measured> volume_hydraulic_radius(const std::vector<int>& volumes, double size);
// Surfaces whose loops come closer than `size`.
std::vector<Measured> close_loops(const std::vector<int>& surfaces, double size);
// Curved surfaces that meet two or more neighbours tangentially.
std::vector<int> blend_surfaces(const std::vector<int>& surfaces);
std::vector<std::vector<int>> blend_chains(int surface);
// Angle inside the material between the two surfaces of a volume at a curve, degrees (180: flat).
// Curves with fewer or more than two surfaces in the volume are skipped.
struct CurveAngle {
    int curve = 0;
    int volume = 0;
    double degrees = 0;
};
std::vector<CurveAngle> curve_angles(const std::vector<int>& volumes);
// Angle at each corner of a surface between its two curves, degrees.
struct CornerAngle {
    int surface = 0;
    int vertex = 0;
    double degrees = 0;
};
std::vector<CornerAngle> corner_angles(const std::vector<int>& volumes);

struct Pair {
    int a = 0, b = 0;
    double distance = 0;
};
// Vertex pairs, vertex-curve and vertex-surface pairs with low <= distance <= high. With
// `other_volume` only pairs whose entities share no volume.
std::vector<Pair> vertex_vertex_pairs(const std::vector<int>& volumes, double low, double high,
                                      bool other_volume);
std::vector<Pair> vertex_curve_pairs(const std::vector<int>& volumes, double low, double high,
                                     bool other_volume);
std::vector<Pair> vertex_surface_pairs(const std::vector<int>& volumes, double low, double high,
                                       bool other_volume);
// The `count` nearest vertex-curve pairs (the vertex not on the curve).
std::vector<Pair> closest_vertex_curve_pairs(const std::vector<int>& volumes, int count);

// Surfaces of different volumes that face each other: distance <= max_gap, normals antiparallel
// within max_angle; `area` is the area they have in common when one is moved onto the other.
struct FacingPair {
    int a = 0, b = 0;
    double distance = 0;
    double area = 0;
};
std::vector<FacingPair> facing_surfaces(const std::vector<int>& surfaces, double max_gap,
                                        double max_angle, bool only_gaps, bool filter_slivers,
                                        bool filter_volume_overlaps, int max_results);
// Pairs of volumes that share material (flat: a1 b1 a2 b2 ...).
std::vector<Pair> overlapping_volumes(const std::vector<int>& volumes);
// Entities of different bodies that coincide within `tolerance`.
std::vector<std::vector<int>> mergeable(const std::vector<int>& volumes, GeomKind kind,
                                        double tolerance);
std::vector<int> floating_volumes(const std::vector<int>& volumes);
std::vector<int> nonmanifold_curves(const std::vector<int>& volumes);
std::vector<int> nonmanifold_vertices(const std::vector<int>& volumes);
struct BadGeometry {
    std::vector<int> bodies, volumes, surfaces, curves;
};
BadGeometry bad_geometry(const std::vector<int>& volumes);

// Shape helpers shared with the solutions.
double edge_pair_width(const TopoDS_Face& face, double limit);
bool same_domain(const TopoDS_Face& a, const TopoDS_Face& b);

// ---- Progress ---------------------------------------------------------------------------------
// Counts steps of a scan for the session's progress (opened for scans of 200 steps or more) and
// throws Interrupted when the user interrupts.
class Scan {
public:
    Scan(const char* title, long total);
    ~Scan();
    Scan(const Scan&) = delete;
    Scan& operator=(const Scan&) = delete;
    void step();

private:
    struct Impl;
    Impl* impl_;
};

// ---- Repair operations (undoable commands) ------------------------------------------------------
// Removes surfaces and lets their neighbours grow over the hole (sliver, blend, small faces).
bool remove_surfaces(const std::vector<int>& surfaces);
// Joins surfaces that lie on one underlying surface and curves on one curve, in the bodies of
// the volumes.
bool regularize(const std::vector<int>& volumes);
// Imprints and merges the bodies of the volumes, treating entities closer than `tolerance` as
// coincident.
bool merge_tolerant(const std::vector<int>& volumes, double tolerance);

void register_commands();

} // namespace tarvo::kernel::diagnostics
