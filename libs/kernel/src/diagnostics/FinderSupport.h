#pragma once
// Shape helpers the finders share (angles, grown boxes, exact distances, faces at an edge, the
// frame of a face along an edge). Internal to the diagnostics module.
//
// Threading: kernel thread only.

#include "core/Session.h"
#include "diagnostics/Diagnostics.h"
#include "geometry/GeometryInternal.h"

#include <BRepAdaptor_Curve.hxx>
#include <BRepAdaptor_Curve2d.hxx>
#include <BRepAdaptor_Surface.hxx>
#include <BRepAlgoAPI_BuilderAlgo.hxx>
#include <BRepAlgoAPI_Common.hxx>
#include <BRepBndLib.hxx>
#include <BRepBuilderAPI_MakeVertex.hxx>
#include <BRepBuilderAPI_Transform.hxx>
#include <BRepCheck_Analyzer.hxx>
#include <BRepCheck_ListOfStatus.hxx>
#include <BRepCheck_Result.hxx>
#include <BRepExtrema_DistShapeShape.hxx>
#include <BRepGProp.hxx>
#include <BRepLProp_SLProps.hxx>
#include <BRepTools.hxx>
#include <BRep_Tool.hxx>
#include <GProp_GProps.hxx>
#include <TopExp.hxx>
#include <TopExp_Explorer.hxx>
#include <TopTools_DataMapOfShapeInteger.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Vertex.hxx>
#include <TopoDS_Wire.hxx>
#include <gp_Lin.hxx>
#include <gp_Trsf.hxx>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <numeric>
#include <set>
#include <tuple>

namespace tarvo::kernel::diagnostics::detail {

constexpr double kPi = 3.14159265358979323846;

inline double degrees_between(const gp_Vec& a, const gp_Vec& b) {
    if (a.Magnitude() < 1e-300 || b.Magnitude() < 1e-300)
        return 0;
    return a.Angle(b) * 180.0 / kPi;
}

inline Bnd_Box grown(Bnd_Box box, double by) {
    box.Enlarge(by);
    return box;
}

// Exact distance between two shapes, or a negative value when OpenCASCADE finds none.
inline double distance(const TopoDS_Shape& a, const TopoDS_Shape& b) {
    BRepExtrema_DistShapeShape d(a, b);
    return d.IsDone() && d.NbSolution() > 0 ? d.Value() : -1.0;
}

inline TopoDS_Vertex middle_of(const TopoDS_Edge& edge) {
    BRepAdaptor_Curve c(edge);
    return BRepBuilderAPI_MakeVertex(c.Value(0.5 * (c.FirstParameter() + c.LastParameter())))
        .Vertex();
}

inline gp_Pnt point_of(int vertex) {
    return BRep_Tool::Pnt(TopoDS::Vertex(model().shape(GeomKind::Vertex, vertex)));
}

inline bool share_volume(GeomKind ka, int a, GeomKind kb, int b) {
    const std::vector<int> va = volumes_holding(ka, a), vb = volumes_holding(kb, b);
    for (int v : va)
        if (std::count(vb.begin(), vb.end(), v))
            return true;
    return false;
}

inline bool share_body(GeomKind ka, int a, GeomKind kb, int b) {
    const std::vector<int> ba = model().bodies_of(ka, a), bb = model().bodies_of(kb, b);
    for (int x : ba)
        if (std::count(bb.begin(), bb.end(), x))
            return true;
    return false;
}

inline bool share_surface(int volume_a, int volume_b) {
    for (int s : model().relatives(GeomKind::Volume, volume_a, GeomKind::Surface)) {
        const std::vector<int> holders = model().relatives(GeomKind::Surface, s, GeomKind::Volume);
        if (std::count(holders.begin(), holders.end(), volume_b))
            return true;
    }
    return false;
}

inline std::vector<int> sub_ids(GeomKind kind, int id, GeomKind sub) {
    return model().relatives(kind, id, sub);
}

// The edge as it is oriented in the face (the face's own use of it).
inline TopoDS_Edge edge_in(const TopoDS_Face& face, const TopoDS_Shape& edge) {
    for (TopExp_Explorer ex(face, TopAbs_EDGE); ex.More(); ex.Next())
        if (ex.Current().IsSame(edge))
            return TopoDS::Edge(ex.Current());
    return {};
}

// Outward normal of the face at the point of the edge at parameter t, and the direction from
// the edge into the face there (material of the face lies on the left of its oriented edges
// seen from the outward normal).
inline bool frame_at(const TopoDS_Face& face, const TopoDS_Edge& edge, double t, gp_Vec& normal,
                     gp_Vec& inward) {
    BRepAdaptor_Curve2d c2d(edge, face);
    BRepAdaptor_Surface surf(face);
    const gp_Pnt2d uv = c2d.Value(t);
    gp_Pnt p;
    gp_Vec du, dv;
    surf.D1(uv.X(), uv.Y(), p, du, dv);
    normal = du.Crossed(dv);
    if (normal.Magnitude() < 1e-12)
        return false;
    normal.Normalize();
    if (face.Orientation() == TopAbs_REVERSED)
        normal.Reverse();
    BRepAdaptor_Curve c3d(edge);
    gp_Pnt q;
    gp_Vec tangent;
    c3d.D1(t, q, tangent);
    if (tangent.Magnitude() < 1e-12)
        return false;
    if (edge.Orientation() == TopAbs_REVERSED)
        tangent.Reverse();
    inward = normal.Crossed(tangent);
    return inward.Magnitude() > 1e-12;
}

// Angle inside the material between two faces at the middle of their common edge, degrees.
inline std::optional<double> dihedral(const TopoDS_Shape& edge, const TopoDS_Face& f1,
                                      const TopoDS_Face& f2) {
    const TopoDS_Edge e1 = edge_in(f1, edge), e2 = edge_in(f2, edge);
    if (e1.IsNull() || e2.IsNull())
        return std::nullopt;
    double first = 0, last = 0;
    BRep_Tool::Range(TopoDS::Edge(edge), first, last);
    const double t = 0.5 * (first + last);
    gp_Vec n1, d1, n2, d2;
    if (!frame_at(f1, e1, t, n1, d1) || !frame_at(f2, e2, t, n2, d2))
        return std::nullopt;
    const double open = degrees_between(d1, d2);
    // The second face turns away from the first one's outward side: a convex edge.
    return d2.Dot(n1) <= 0 ? open : 360.0 - open;
}

// Faces of the volume that hold the edge.
inline std::vector<TopoDS_Face> faces_at(int volume, const TopoDS_Shape& edge) {
    std::vector<TopoDS_Face> out;
    const TopoDS_Shape solid = model().shape(GeomKind::Volume, volume);
    TopTools_IndexedMapOfShape seen;
    for (TopExp_Explorer ex(solid, TopAbs_FACE); ex.More(); ex.Next()) {
        if (seen.Contains(ex.Current()))
            continue;
        for (TopExp_Explorer ee(ex.Current(), TopAbs_EDGE); ee.More(); ee.Next())
            if (ee.Current().IsSame(edge)) {
                seen.Add(ex.Current());
                out.push_back(TopoDS::Face(ex.Current()));
                break;
            }
    }
    return out;
}

} // namespace tarvo::kernel::diagnostics::detail
