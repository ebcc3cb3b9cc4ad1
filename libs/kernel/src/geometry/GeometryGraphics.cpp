// Drawable geometry for the graphics library (tarvo/KernelGraphics.h): surfaces tessellated per
// body and cached against the immutable Body, curves as polylines, vertices as points.
//
// The tessellation is made on a copy of the body's shape: BRepMesh stores its triangles on the
// shape's faces, which published bodies share with snapshots and with each other, and bounding
// boxes and the hand-over to Gmsh should never see them.
//
// Threading: kernel thread only.
#include "core/Guard.h"
#include "geometry/GeometryModule.h"
#include "tarvo/KernelGraphics.h"

#include <BRepAdaptor_Curve.hxx>
#include <BRepBuilderAPI_Copy.hxx>
#include <BRepMesh_IncrementalMesh.hxx>
#include <BRep_Tool.hxx>
#include <GCPnts_TangentialDeflection.hxx>
#include <Poly_Triangulation.hxx>
#include <TopoDS.hxx>

#include <cmath>
#include <map>
#include <memory>

namespace tarvo::graphics {

namespace {

using kernel::Body;
using kernel::BodyPtr;
using kernel::GeomKind;

// Chord deflection as a fraction of the body's bounding-box diagonal, and the angle between
// neighbouring facets: fine enough that a cylinder of a 100-volume model reads as round, coarse
// enough that tessellation stays well below a render's cost.
constexpr double kRelativeDeflection = 0.002;
constexpr double kAngularDeflection = 0.35;

struct Facets {
    std::vector<float> xyz, normals;
    std::vector<int> triangles;
};

struct BodyTessellation {
    std::weak_ptr<const Body> body;
    double deflection = 0;
    std::map<int, Facets> surfaces;
};

std::map<int, BodyTessellation> g_cache;
long g_tessellated = 0;

const kernel::GeometryModel* model() {
    auto* m = kernel::geometry_module();
    return m ? &m->model() : nullptr;
}

double body_deflection(const Body& body) {
    const Bnd_Box box = model()->bounding_box(GeomKind::Body, body.id);
    if (box.IsVoid())
        return 1e-3;
    const double diagonal = std::sqrt(box.SquareExtent());
    return diagonal > 0 ? diagonal * kRelativeDeflection : 1e-3;
}

void append_point(std::vector<float>& xyz, const gp_Pnt& p) {
    xyz.push_back(static_cast<float>(p.X()));
    xyz.push_back(static_cast<float>(p.Y()));
    xyz.push_back(static_cast<float>(p.Z()));
}

Facets face_facets(const TopoDS_Face& face) {
    Facets out;
    TopLoc_Location location;
    const Handle(Poly_Triangulation) tri = BRep_Tool::Triangulation(face, location);
    if (tri.IsNull())
        return out;
    const gp_Trsf transform = location.Transformation();
    const int nodes = tri->NbNodes();
    std::vector<gp_Pnt> points(static_cast<std::size_t>(nodes));
    for (int i = 1; i <= nodes; ++i) {
        points[i - 1] = tri->Node(i).Transformed(transform);
        append_point(out.xyz, points[i - 1]);
    }
    // A reversed face's triangles wind the other way round its outward normal.
    const bool reversed = face.Orientation() == TopAbs_REVERSED;
    std::vector<gp_XYZ> normals(static_cast<std::size_t>(nodes), gp_XYZ(0, 0, 0));
    for (int t = 1; t <= tri->NbTriangles(); ++t) {
        int a = 0, b = 0, c = 0;
        tri->Triangle(t).Get(a, b, c);
        if (reversed)
            std::swap(b, c);
        out.triangles.insert(out.triangles.end(), {a - 1, b - 1, c - 1});
        // Cross product unnormalised: larger triangles weigh more in their corners' normals.
        const gp_XYZ n = (points[b - 1].XYZ() - points[a - 1].XYZ())
                             .Crossed(points[c - 1].XYZ() - points[a - 1].XYZ());
        for (int k : {a, b, c})
            normals[k - 1] += n;
    }
    for (const gp_XYZ& n : normals) {
        const double length = n.Modulus();
        const gp_XYZ unit = length > 0 ? n / length : gp_XYZ(0, 0, 1);
        out.normals.insert(out.normals.end(),
                           {static_cast<float>(unit.X()), static_cast<float>(unit.Y()),
                            static_cast<float>(unit.Z())});
    }
    return out;
}

// The cache entry of `body`, tessellated now when the cached one is of another body.
const BodyTessellation& tessellation(const BodyPtr& body) {
    BodyTessellation& entry = g_cache[body->id];
    if (entry.body.lock() == body)
        return entry;
    // Forget bodies that are gone before adding one, so the cache follows the model's size.
    std::erase_if(g_cache, [](const auto& item) { return item.second.body.expired(); });
    BodyTessellation fresh;
    fresh.body = body;
    fresh.deflection = body_deflection(*body);
    BRepBuilderAPI_Copy copy(body->shape, Standard_True, Standard_False);
    BRepMesh_IncrementalMesh mesher(copy.Shape(), fresh.deflection, Standard_False,
                                    kAngularDeflection, Standard_False);
    for (const kernel::IdShape& surface : body->surfaces)
        // The copy's history answers the face forward; its orientation in the body is the
        // original's, and says which way round the triangles go.
        fresh.surfaces[surface.id] = face_facets(
            TopoDS::Face(copy.ModifiedShape(surface.shape).Oriented(surface.shape.Orientation())));
    ++g_tessellated;
    BodyTessellation& slot = g_cache[body->id];
    slot = std::move(fresh);
    return slot;
}

BodyPtr holding_body(GeomKind kind, int id) {
    const auto* m = model();
    if (!m || !m->exists(kind, id))
        return nullptr;
    const auto bodies = m->bodies_of(kind, id);
    return bodies.empty() ? nullptr : m->body(bodies.front());
}

} // namespace

bool surface_facets(int surface_id, std::vector<float>& xyz, std::vector<float>& normals,
                    std::vector<int>& triangles) {
    return kernel::guarded("surface_facets", false, [&] {
        const BodyPtr body = holding_body(GeomKind::Surface, surface_id);
        if (!body)
            return false;
        const auto& cached = tessellation(body).surfaces;
        const auto it = cached.find(surface_id);
        if (it == cached.end() || it->second.triangles.empty())
            return false;
        xyz = it->second.xyz;
        normals = it->second.normals;
        triangles = it->second.triangles;
        return true;
    });
}

bool curve_polyline(int curve_id, std::vector<float>& xyz) {
    return kernel::guarded("curve_polyline", false, [&] {
        const BodyPtr body = holding_body(GeomKind::Curve, curve_id);
        if (!body)
            return false;
        const TopoDS_Edge edge = TopoDS::Edge(model()->shape(GeomKind::Curve, curve_id));
        if (BRep_Tool::Degenerated(edge))
            return false;
        BRepAdaptor_Curve curve(edge);
        GCPnts_TangentialDeflection points(curve, kAngularDeflection,
                                           tessellation(body).deflection);
        if (points.NbPoints() < 2)
            return false;
        xyz.clear();
        for (int i = 1; i <= points.NbPoints(); ++i)
            append_point(xyz, points.Value(i));
        return true;
    });
}

bool vertex_point(int vertex_id, std::vector<float>& xyz) {
    return kernel::guarded("vertex_point", false, [&] {
        const auto* m = model();
        if (!m || !m->exists(GeomKind::Vertex, vertex_id))
            return false;
        xyz.clear();
        append_point(xyz, BRep_Tool::Pnt(TopoDS::Vertex(m->shape(GeomKind::Vertex, vertex_id))));
        return true;
    });
}

long tessellated_bodies() {
    return g_tessellated;
}

} // namespace tarvo::graphics
