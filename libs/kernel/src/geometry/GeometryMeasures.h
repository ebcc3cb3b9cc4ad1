#pragma once
// The geometry module's measures and tests of entities: type names, boxes, normals, senses,
// exterior angles, distances, point containment, display colours and adjacency. They answer
// from shapes the caller has looked up, or from the GeometryModel and the per-body measures its
// memo keeps (GeometryMemo.h), so that repeated questions cost nothing.
//
// Contract: a shape passed in is not null and is of the kind its name says (an edge, a face, a
// vertex); an id passed with the model names an entity that exists, except where a function says
// what it answers for a missing one. Nothing here prints: an OpenCASCADE exception reaches the
// caller, whose guard reports it.
//
// Threading: kernel thread only (the model's memo is filled without locking).

#include "geometry/GeometryModel.h"

#include <gp_Dir.hxx>
#include <gp_Pnt.hxx>

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace tarvo::kernel {

// ---- Types -------------------------------------------------------------------------------------
// The analytic type of an edge's curve under any trimming: Line, Circle, Ellipse, Hyperbola,
// Parabola, Bezier, BSpline, OffsetCurve or Unknown.
std::string curve_type_name(const TopoDS_Shape& edge);
// The type of a face's surface: Plane, Cylinder, Cone, Sphere, Torus, "BSpline surface",
// "Bezier surface", "Surface of Revolution", "Surface of Extrusion", "Offset surface" or Unknown.
std::string surface_type_name(const TopoDS_Shape& face);
// A surface periodic in u or v, or a periodic curve; false for the other kinds.
bool is_periodic(const TopoDS_Shape& shape, GeomKind kind);
bool is_planar(const TopoDS_Shape& face);

// ---- Boxes -------------------------------------------------------------------------------------
// xmin, xmax, xrange, ymin, ymax, yrange, zmin, zmax, zrange, diagonal; zeros for a void box.
using BoxNumbers = std::array<double, 10>;
// The memo'd box of one entity, and the union of those of several (ids not in the model add
// nothing).
BoxNumbers bounding_box_numbers(const GeometryModel& model, GeomKind kind, int id);
BoxNumbers total_box_numbers(const GeometryModel& model, GeomKind kind,
                             const std::vector<int>& ids);
// The centre of an entity's box: a vertex's own point.
gp_Pnt box_center(const GeometryModel& model, GeomKind kind, int id);
// The tight (oriented) box around the listed entities that exist, together: centre, unit x, y and
// z axes, then the three half-extents; zeros when there is nothing to enclose.
std::array<double, 15> tight_box(const GeometryModel& model, GeomKind kind,
                                 const std::vector<int>& ids);

// ---- Measures from the memo --------------------------------------------------------------------
// The volume of the distinct listed volumes that exist.
double total_volume(const GeometryModel& model, const std::vector<int>& volume_ids);
// 2 * area / perimeter of a surface (its curves, degenerate edges excluded); 0 without perimeter.
double surface_hydraulic_radius(const GeometryModel& model, int surface_id);
// 3 * volume / area of a volume; 0 without area.
double volume_hydraulic_radius(const GeometryModel& model, int volume_id);

// ---- Surfaces ----------------------------------------------------------------------------------
// The outward normal of a surface at the point nearest its area centroid, oriented as its first
// volume uses it (as stored when it lies in no volume); nullopt where the normal is undefined
// (a singular point).
std::optional<gp_Dir> outward_normal(const GeometryModel& model, int surface_id);
enum class FaceSense { Forward, Reverse, Both };
// How the volumes of a surface use it relative to its stored orientation: Both when they
// disagree (a merged surface between two volumes); Forward when it lies in no volume.
FaceSense face_sense(const GeometryModel& model, int surface_id);

// ---- Curves ------------------------------------------------------------------------------------
// The angle in degrees between the two surfaces of a volume that meet at a curve, at the curve's
// middle and measured through the volume's material: 90 at a box edge, 270 at a re-entrant one.
// 0 unless both exist and exactly two surfaces of the volume hold the curve.
double exterior_angle(const GeometryModel& model, int curve_id, int volume_id);
// The listed curves whose exterior angle in one of their volumes lies strictly between 0 and
// `test_angle`, in list order.
std::vector<int> curves_with_angle_below(const GeometryModel& model, const std::vector<int>& curves,
                                         double test_angle);
// Arc length from the edge's start to the point of the edge nearest `point`.
double distance_from_start(const TopoDS_Shape& edge, const gp_Pnt& point);
// The radius of a circular edge; 0 for other curves.
double curve_radius(const TopoDS_Shape& edge);
// The centre of a circle or ellipse; the centre of mass of other curves.
gp_Pnt curve_center(const TopoDS_Shape& edge);

// ---- Points ------------------------------------------------------------------------------------
double vertex_distance(const TopoDS_Shape& vertex_a, const TopoDS_Shape& vertex_b);
enum class PointPlace { Outside = 0, Inside = 1, Boundary = 2, Unknown = -1 };
// Where `point` lies against an entity (within 1e-6). A volume or body is asked through its
// solids (a body without any, or a missing entity, is Unknown); a surface, curve or vertex: on it
// counts as Inside, on its curves (a surface's) or vertices (a curve's) as Boundary.
PointPlace point_place(const GeometryModel& model, GeomKind kind, int id, const gp_Pnt& point);

// ---- Colours -----------------------------------------------------------------------------------
// The colour an entity shows: its own, else (a surface, curve or vertex) its first volume's, else
// the palette's entry for its id.
std::array<double, 4> display_color(const GeometryModel& model, GeomKind kind, int id);
// The index of the palette entry nearest `rgba` (alpha ignored).
int nearest_palette_index(const std::array<double, 4>& rgba);

// ---- Relations ---------------------------------------------------------------------------------
// The first id of kind `target` related to both (source, a) and (source, b), in the order of
// a's relatives; 0 when they share none.
int first_common_relative(const GeometryModel& model, GeomKind source, int a, int b,
                          GeomKind target);
// Entities of kind `target` next to (kind, id): its relatives of that kind, or, for the same
// kind, the others that share a piece one dimension lower with it (surfaces a curve, volumes a
// surface), ascending.
std::vector<int> adjacent(const GeometryModel& model, GeomKind kind, int id, GeomKind target);
// The first volume of the first entity called `name` (volumes, then bodies, surfaces, curves and
// vertices, each kind in ascending ids); 0 when no entity has that name or it lies in no volume.
int volume_of_name(const GeometryModel& model, const std::string& name);

} // namespace tarvo::kernel
