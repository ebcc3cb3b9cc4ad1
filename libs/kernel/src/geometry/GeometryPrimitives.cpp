// Primitives of the geometry module: boxes, cylinders, spheres, cones, tori, vertices, curves
// and planar surfaces, each a new body.
#include "core/Session.h"
#include "geometry/GeometryInternal.h"
#include "geometry/GeometryModule.h"

#include <BRepAlgoAPI_Cut.hxx>
#include <BRepBuilderAPI_MakeEdge.hxx>
#include <BRepBuilderAPI_MakeFace.hxx>
#include <BRepBuilderAPI_MakeVertex.hxx>
#include <BRepBuilderAPI_MakeWire.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCone.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakeSphere.hxx>
#include <BRepPrimAPI_MakeTorus.hxx>
#include <TopoDS.hxx>
#include <gp_Ax2.hxx>
#include <gp_Circ.hxx>
#include <gp_Pln.hxx>

#include <cmath>

namespace tarvo::kernel {

using namespace geometry_detail;

namespace {

gp_Dir axis_dir(Axis axis) {
    switch (axis) {
    case Axis::X:
        return gp_Dir(1, 0, 0);
    case Axis::Y:
        return gp_Dir(0, 1, 0);
    case Axis::Z:
        break;
    }
    return gp_Dir(0, 0, 1);
}

} // namespace

bool GeometryModule::create_box(double dx, double dy, double dz, const gp_Pnt& at) {
    return guarded("create box", [&] {
        if (!positive(dx, "width") || !positive(dy, "depth") || !positive(dz, "height"))
            return false;
        Transaction tx(model_);
        gp_Pnt corner(at.X() - dx / 2, at.Y() - dy / 2, at.Z() - dz / 2);
        add_new_body(model_, BRepPrimAPI_MakeBox(corner, dx, dy, dz).Shape(), "");
        tx.commit();
        return true;
    });
}

bool GeometryModule::create_cylinder(double radius, double height, const gp_Pnt& at, Axis axis) {
    return guarded("create cylinder", [&] {
        if (!positive(radius, "radius") || !positive(height, "height"))
            return false;
        Transaction tx(model_);
        gp_Dir d = axis_dir(axis);
        gp_Ax2 ax(at.Translated(gp_Vec(d) * (-height / 2)), d);
        add_new_body(model_, BRepPrimAPI_MakeCylinder(ax, radius, height).Shape(), "");
        tx.commit();
        return true;
    });
}

bool GeometryModule::create_sphere(double radius, double inner_radius, const gp_Pnt& at) {
    return guarded("create sphere", [&] {
        if (!positive(radius, "radius"))
            return false;
        if (inner_radius < 0 || inner_radius >= radius)
            return error("inner radius must be at least 0 and less than the radius");
        Transaction tx(model_);
        TopoDS_Shape shape = BRepPrimAPI_MakeSphere(at, radius).Shape();
        if (inner_radius > 0) {
            BRepAlgoAPI_Cut cut(shape, BRepPrimAPI_MakeSphere(at, inner_radius).Shape());
            if (!cut.IsDone())
                return error("could not hollow the sphere");
            shape = solids_of(cut.Shape()).at(0);
        }
        add_new_body(model_, shape, "");
        tx.commit();
        return true;
    });
}

bool GeometryModule::create_cone(double radius, double top_radius, double height, const gp_Pnt& at,
                                 Axis axis) {
    return guarded("create cone", [&] {
        if (!positive(radius, "radius") || !positive(height, "height"))
            return false;
        if (top_radius < 0 || !std::isfinite(top_radius))
            return error("top radius must not be negative");
        if (std::abs(top_radius - radius) < 1e-12)
            return error("a cone needs two different radii; use create cylinder");
        Transaction tx(model_);
        gp_Dir d = axis_dir(axis);
        gp_Ax2 ax(at.Translated(gp_Vec(d) * (-height / 2)), d);
        add_new_body(model_, BRepPrimAPI_MakeCone(ax, radius, top_radius, height).Shape(), "");
        tx.commit();
        return true;
    });
}

bool GeometryModule::create_torus(double major_radius, double minor_radius, const gp_Pnt& at,
                                  Axis axis) {
    return guarded("create torus", [&] {
        if (!positive(major_radius, "major radius") || !positive(minor_radius, "minor radius"))
            return false;
        if (minor_radius >= major_radius)
            return error("the minor radius must be less than the major radius");
        Transaction tx(model_);
        gp_Ax2 ax(at, axis_dir(axis));
        add_new_body(model_, BRepPrimAPI_MakeTorus(ax, major_radius, minor_radius).Shape(), "");
        tx.commit();
        return true;
    });
}

bool GeometryModule::create_vertex(const gp_Pnt& at) {
    return guarded("create vertex", [&] {
        Transaction tx(model_);
        add_new_body(model_, BRepBuilderAPI_MakeVertex(at).Shape(), "");
        tx.commit();
        return true;
    });
}

bool GeometryModule::create_curve(int vertex_a, int vertex_b) {
    return guarded("create curve", [&] {
        for (int v : {vertex_a, vertex_b})
            if (!model_.exists(GeomKind::Vertex, v))
                return error("vertex " + std::to_string(v) + " does not exist");
        if (vertex_a == vertex_b)
            return error("a curve needs two different vertices");
        TopoDS_Vertex a = TopoDS::Vertex(model_.shape(GeomKind::Vertex, vertex_a));
        TopoDS_Vertex b = TopoDS::Vertex(model_.shape(GeomKind::Vertex, vertex_b));
        BRepBuilderAPI_MakeEdge make(a, b);
        if (!make.IsDone())
            return error("vertices " + std::to_string(vertex_a) + " and " +
                         std::to_string(vertex_b) + " coincide; no curve made");
        Transaction tx(model_);
        // Free vertices become the ends of the curve: their bodies go, their ids stay.
        GeometryModel::IdHints hints;
        for (int v : {vertex_a, vertex_b}) {
            if (model_.is_free(GeomKind::Vertex, v)) {
                for (int bid : model_.bodies_of(GeomKind::Vertex, v)) {
                    BodyPtr body = model_.body(bid);
                    if (body->volumes.empty() && body->surfaces.empty() && body->curves.empty())
                        model_.remove_body(bid);
                }
            }
            hints.add(GeomKind::Vertex, model_.shape(GeomKind::Vertex, v), v);
        }
        hints.add(GeomKind::Vertex, a, vertex_a);
        hints.add(GeomKind::Vertex, b, vertex_b);
        auto body = model_.make_body(model_.next_id(GeomKind::Body), make.Shape(), &hints);
        model_.put_body(body);
        print("Created curve " + std::to_string(body->curves.front().id));
        tx.commit();
        return true;
    });
}

bool GeometryModule::create_rectangle(double width, double height, const gp_Pnt& at, Axis axis) {
    return guarded("create surface", [&] {
        if (!positive(width, "width") || !positive(height, "height"))
            return false;
        Transaction tx(model_);
        gp_Pln plane(gp_Ax3(at, axis_dir(axis)));
        add_new_body(
            model_,
            BRepBuilderAPI_MakeFace(plane, -width / 2, width / 2, -height / 2, height / 2).Shape(),
            "");
        tx.commit();
        return true;
    });
}

bool GeometryModule::create_circle(double radius, const gp_Pnt& at, Axis axis) {
    return guarded("create surface", [&] {
        if (!positive(radius, "radius"))
            return false;
        Transaction tx(model_);
        gp_Circ circle(gp_Ax2(at, axis_dir(axis)), radius);
        TopoDS_Wire wire = BRepBuilderAPI_MakeWire(BRepBuilderAPI_MakeEdge(circle).Edge()).Wire();
        add_new_body(model_, BRepBuilderAPI_MakeFace(wire, true).Shape(), "");
        tx.commit();
        return true;
    });
}

} // namespace tarvo::kernel
