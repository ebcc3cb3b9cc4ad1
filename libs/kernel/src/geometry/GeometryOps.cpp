// Primitives, transforms, booleans and cutting of the geometry module.
#include "core/Session.h"
#include "geometry/GeometryInternal.h"
#include "geometry/GeometryModule.h"

#include <BOPAlgo_Builder.hxx>
#include <BRepAlgoAPI_BuilderAlgo.hxx>
#include <BRepAlgoAPI_Common.hxx>
#include <BRepAlgoAPI_Cut.hxx>
#include <BRepAlgoAPI_Fuse.hxx>
#include <BRepAlgoAPI_Splitter.hxx>
#include <BRepBndLib.hxx>
#include <BRepBuilderAPI_Copy.hxx>
#include <BRepBuilderAPI_MakeEdge.hxx>
#include <BRepBuilderAPI_MakeFace.hxx>
#include <BRepBuilderAPI_MakeSolid.hxx>
#include <BRepBuilderAPI_MakeVertex.hxx>
#include <BRepBuilderAPI_MakeWire.hxx>
#include <BRepBuilderAPI_Sewing.hxx>
#include <BRepBuilderAPI_Transform.hxx>
#include <BRepGProp.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCone.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakeSphere.hxx>
#include <BRepPrimAPI_MakeTorus.hxx>
#include <BRep_Builder.hxx>
#include <Bnd_Box.hxx>
#include <GProp_GProps.hxx>
#include <ShapeFix_Shape.hxx>
#include <ShapeFix_Solid.hxx>
#include <TopExp.hxx>
#include <TopExp_Explorer.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopTools_ListOfShape.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Shell.hxx>
#include <gp_Ax2.hxx>
#include <gp_Circ.hxx>
#include <gp_Pln.hxx>
#include <gp_Trsf.hxx>

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

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

bool positive(double value, const char* what) {
    if (!(value > 0) || !std::isfinite(value))
        return error(std::string(what) + " must be positive");
    return true;
}

// Adds a new body made of `shape` and prints what it is.
int add_new_body(GeometryModel& model, const TopoDS_Shape& shape, const char* what = nullptr) {
    auto body = model.make_body(model.next_id(GeomKind::Body), shape, nullptr);
    const int id = body->id;
    model.put_body(body);
    if (what) {
        if (!body->volumes.empty())
            print(std::string("Created ") + describe("volume", volume_ids(*body)) +
                  (*what ? std::string(" (") + what + ")" : std::string()));
        else if (!body->surfaces.empty())
            print("Created surface " + std::to_string(body->surfaces.front().id));
        else if (!body->curves.empty())
            print("Created curve " + std::to_string(body->curves.front().id));
        else if (!body->vertices.empty())
            print("Created vertex " + std::to_string(body->vertices.front().id));
    }
    return id;
}

// Images of a sub-shape after an algorithm: its modified pieces, itself when untouched, none when
// deleted.
template <class Algo> std::vector<TopoDS_Shape> images_after(Algo& algo, const TopoDS_Shape& s) {
    std::vector<TopoDS_Shape> out;
    if (algo.IsDeleted(s))
        return out;
    const TopTools_ListOfShape& mod = algo.Modified(s);
    if (mod.IsEmpty()) {
        out.push_back(s);
        return out;
    }
    for (const TopoDS_Shape& m : mod)
        out.push_back(m);
    return out;
}

double solid_volume(const TopoDS_Shape& s) {
    GProp_GProps props;
    BRepGProp::VolumeProperties(s, props);
    return std::abs(props.Mass());
}

std::vector<TopoDS_Shape> solids_of(const TopoDS_Shape& shape) {
    return GeometryModel::explore(shape, GeomKind::Volume);
}

// The body's pieces after an algorithm, in the order of the original pieces.
template <class Algo> std::vector<TopoDS_Shape> body_images(Algo& algo, const Body& body) {
    std::vector<TopoDS_Shape> out;
    TopTools_IndexedMapOfShape seen;
    for (const TopoDS_Shape& piece : pieces_of(body))
        for (const TopoDS_Shape& image : images_after(algo, piece))
            if (seen.Add(image))
                out.push_back(image);
    return out;
}

bool check_done(const BRepAlgoAPI_BuilderAlgo& algo, const char* what) {
    if (interrupted())
        return error("Interrupted");
    if (!algo.IsDone() || algo.HasErrors())
        return error(std::string(what) + " failed in the geometry engine");
    return true;
}

} // namespace

// ---- Primitives -------------------------------------------------------------------------------

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

// ---- Transforms -------------------------------------------------------------------------------

namespace {

// Applies `trsf` to every listed body in place; ids stay with their images.
bool transform_bodies(GeometryModel& model, const std::vector<int>& bodies, const gp_Trsf& trsf) {
    std::vector<std::shared_ptr<Body>> results;
    for (int bid : bodies) {
        if (interrupted())
            return error("Interrupted");
        BodyPtr body = model.body(bid);
        BRepBuilderAPI_Transform tf(body->shape, trsf, true);
        if (!tf.IsDone())
            return error("could not transform body " + std::to_string(bid));
        GeometryModel::IdHints hints;
        add_hints(model, *body, bodies, hints, [&](const TopoDS_Shape& s) {
            return std::vector<TopoDS_Shape>{tf.ModifiedShape(s)};
        });
        results.push_back(model.make_body(bid, tf.Shape(), &hints));
    }
    for (auto& b : results)
        model.put_body(b);
    return true;
}

} // namespace

bool GeometryModule::move_by(const std::vector<EntityKey>& list, const gp_Vec& by) {
    return guarded("move", [&] {
        std::vector<int> bodies;
        if (!owning_bodies(list, bodies, "move"))
            return false;
        Transaction tx(model_);
        gp_Trsf t;
        t.SetTranslation(by);
        if (!transform_bodies(model_, bodies, t))
            return false;
        tx.commit();
        print("Moved " + describe("body", bodies));
        return true;
    });
}

bool GeometryModule::move_to(const std::vector<EntityKey>& list, const gp_Pnt& to) {
    return guarded("move", [&] {
        std::vector<int> bodies;
        if (!owning_bodies(list, bodies, "move"))
            return false;
        // The centre of the listed entities' common box goes to `to`.
        Bnd_Box box;
        for (const EntityKey& key : list)
            BRepBndLib::Add(model_.shape(key.kind, key.id), box);
        double x0, y0, z0, x1, y1, z1;
        box.Get(x0, y0, z0, x1, y1, z1);
        gp_Pnt centre((x0 + x1) / 2, (y0 + y1) / 2, (z0 + z1) / 2);
        Transaction tx(model_);
        gp_Trsf t;
        t.SetTranslation(centre, to);
        if (!transform_bodies(model_, bodies, t))
            return false;
        tx.commit();
        print("Moved " + describe("body", bodies));
        return true;
    });
}

bool GeometryModule::rotate(const std::vector<EntityKey>& list, double degrees, const gp_Dir& axis,
                            const gp_Pnt& origin) {
    return guarded("rotate", [&] {
        std::vector<int> bodies;
        if (!owning_bodies(list, bodies, "rotate"))
            return false;
        Transaction tx(model_);
        gp_Trsf t;
        t.SetRotation(gp_Ax1(origin, axis), degrees * M_PI / 180.0);
        if (!transform_bodies(model_, bodies, t))
            return false;
        tx.commit();
        print("Rotated " + describe("body", bodies));
        return true;
    });
}

bool GeometryModule::scale(const std::vector<EntityKey>& list, double factor) {
    return guarded("scale", [&] {
        if (!positive(factor, "scale factor"))
            return false;
        std::vector<int> bodies;
        if (!owning_bodies(list, bodies, "scale"))
            return false;
        Transaction tx(model_);
        gp_Trsf t;
        t.SetScale(gp_Pnt(0, 0, 0), factor);
        if (!transform_bodies(model_, bodies, t))
            return false;
        tx.commit();
        print("Scaled " + describe("body", bodies));
        return true;
    });
}

bool GeometryModule::reflect(const std::vector<EntityKey>& list, const gp_Dir& normal) {
    return guarded("reflect", [&] {
        std::vector<int> bodies;
        if (!owning_bodies(list, bodies, "reflect"))
            return false;
        Transaction tx(model_);
        gp_Trsf t;
        t.SetMirror(gp_Ax2(gp_Pnt(0, 0, 0), normal));
        if (!transform_bodies(model_, bodies, t))
            return false;
        tx.commit();
        print("Reflected " + describe("body", bodies));
        return true;
    });
}

bool GeometryModule::copy(const std::vector<EntityKey>& list, const std::optional<gp_Vec>& move) {
    return guarded("copy", [&] {
        std::vector<int> bodies;
        if (!owning_bodies(list, bodies, "copy"))
            return false;
        Transaction tx(model_);
        std::vector<int> made;
        for (int bid : bodies) {
            BRepBuilderAPI_Copy copier(model_.body(bid)->shape);
            TopoDS_Shape shape = copier.Shape();
            if (move) {
                gp_Trsf t;
                t.SetTranslation(*move);
                shape = BRepBuilderAPI_Transform(shape, t, false).Shape();
            }
            int id = add_new_body(model_, shape);
            for (int v : volume_ids(*model_.body(id)))
                made.push_back(v);
            if (model_.body(id)->volumes.empty())
                made.push_back(-id);
        }
        tx.commit();
        std::vector<int> vols;
        for (int v : made)
            if (v > 0)
                vols.push_back(v);
        print("Copied " + describe("body", bodies) +
              (vols.empty() ? std::string() : ": created " + describe("volume", vols)));
        return true;
    });
}

// ---- Booleans ---------------------------------------------------------------------------------

namespace {

std::vector<TopoDS_Shape> solids_of_bodies(const GeometryModel& model,
                                           const std::vector<int>& ids) {
    std::vector<TopoDS_Shape> out;
    for (int bid : ids)
        for (const TopoDS_Shape& s : pieces_of(*model.body(bid)))
            out.push_back(s);
    return out;
}

// Result solids that history did not tie to an input take the operands' volume ids, lowest
// first (a fuse of two solids reports neither as modified into the result).
void hint_unmatched_volumes(GeometryModel::IdHints& hints, const TopoDS_Shape& result,
                            const GeometryModel& model, const std::vector<int>& bodies) {
    std::vector<int> ids;
    for (int bid : bodies)
        for (int v : volume_ids(*model.body(bid)))
            ids.push_back(v);
    std::sort(ids.begin(), ids.end());
    std::vector<TopoDS_Shape> solids = solids_of(result);
    for (const TopoDS_Shape& s : solids) {
        int hinted = hints.find(GeomKind::Volume, s);
        ids.erase(std::remove(ids.begin(), ids.end(), hinted), ids.end());
    }
    std::size_t next = 0;
    for (const TopoDS_Shape& s : solids)
        if (hints.find(GeomKind::Volume, s) == 0 && next < ids.size())
            hints.add(GeomKind::Volume, s, ids[next++]);
}

bool all_solid(const GeometryModel& model, const std::vector<int>& bodies, const char* verb) {
    for (int bid : bodies)
        if (model.body(bid)->volumes.empty())
            return error(std::string("cannot ") + verb + " body " + std::to_string(bid) +
                         ": it has no volume");
    return true;
}

// Puts the images of `body` after `algo` back as the same body (ids kept through history).
template <class Algo>
std::shared_ptr<Body> rebuilt(GeometryModel& model, Algo& algo, const Body& body,
                              const std::vector<int>& operands, GeometryModel::IdHints& hints) {
    hints.reset_hints();
    add_hints(model, body, operands, hints,
              [&](const TopoDS_Shape& s) { return images_after(algo, s); });
    std::vector<TopoDS_Shape> images = body_images(algo, body);
    if (images.empty())
        return nullptr;
    return model.make_body(body.id, images.size() == 1 ? images.front() : make_compound(images),
                           &hints);
}

} // namespace

bool GeometryModule::subtract(const std::vector<EntityKey>& tools,
                              const std::vector<EntityKey>& objects, bool keep) {
    return guarded("subtract", [&] {
        std::vector<int> tool_bodies, object_bodies;
        if (!owning_bodies(tools, tool_bodies, "subtract") ||
            !owning_bodies(objects, object_bodies, "subtract from"))
            return false;
        for (int t : tool_bodies)
            if (std::count(object_bodies.begin(), object_bodies.end(), t))
                return error("body " + std::to_string(t) + " is both tool and object");
        if (!all_solid(model_, tool_bodies, "subtract") ||
            !all_solid(model_, object_bodies, "subtract from"))
            return false;
        Transaction tx(model_);
        Progress progress("Subtract", "", true);
        TopTools_ListOfShape tool_list;
        for (const TopoDS_Shape& s : solids_of_bodies(model_, tool_bodies))
            tool_list.Append(s);
        std::vector<std::shared_ptr<Body>> results;
        long done = 0;
        for (int bid : object_bodies) {
            if (interrupted())
                return error("Interrupted");
            BodyPtr body = model_.body(bid);
            TopTools_ListOfShape args;
            for (const TopoDS_Shape& s : pieces_of(*body))
                args.Append(s);
            BRepAlgoAPI_Cut cut;
            cut.SetArguments(args);
            cut.SetTools(tool_list);
            cut.SetNonDestructive(true);
            Handle(OccProgress) pi = new OccProgress(&progress, 100.0 * done / object_bodies.size(),
                                                     100.0 * (done + 1) / object_bodies.size());
            cut.Build(pi->Start());
            if (!check_done(cut, "subtract"))
                return false;
            GeometryModel::IdHints hints;
            auto result = rebuilt(model_, cut, *body, {bid}, hints);
            if (!result || result->volumes.empty())
                return error("subtract would leave nothing of " +
                             describe("volume", volume_ids(*body)));
            results.push_back(result);
            progress.step(++done, static_cast<long>(object_bodies.size()));
        }
        for (auto& r : results)
            model_.put_body(r);
        if (!keep)
            for (int t : tool_bodies)
                model_.remove_body(t);
        tx.commit({{GeomEvent::Code::BooleanOperationComplete}});
        std::vector<int> vols;
        for (auto& r : results)
            for (int v : volume_ids(*r))
                vols.push_back(v);
        print("Subtracted: " + describe("volume", vols) + " remain" +
              (vols.size() == 1 ? "s" : ""));
        return true;
    });
}

bool GeometryModule::unite(const std::vector<EntityKey>& list) {
    return guarded("unite", [&] {
        std::vector<int> bodies;
        if (!owning_bodies(list, bodies, "unite") || !all_solid(model_, bodies, "unite"))
            return false;
        if (bodies.size() < 2 && model_.body(bodies.front())->volumes.size() < 2)
            return error("unite needs at least two volumes");
        Transaction tx(model_);
        Progress progress("Unite", "", true);
        std::vector<TopoDS_Shape> solids = solids_of_bodies(model_, bodies);
        TopTools_ListOfShape args, tools;
        args.Append(solids.front());
        for (std::size_t i = 1; i < solids.size(); ++i)
            tools.Append(solids[i]);
        BRepAlgoAPI_Fuse fuse;
        fuse.SetArguments(args);
        fuse.SetTools(tools);
        fuse.SetNonDestructive(true);
        Handle(OccProgress) pi = new OccProgress(&progress);
        fuse.Build(pi->Start());
        if (!check_done(fuse, "unite"))
            return false;
        // The result is the first body; bodies are in ascending order, so the lowest ids
        // (volume and body) survive.
        GeometryModel::IdHints hints;
        for (int bid : bodies)
            add_hints(model_, *model_.body(bid), bodies, hints,
                      [&](const TopoDS_Shape& s) { return images_after(fuse, s); });
        hint_unmatched_volumes(hints, fuse.Shape(), model_, bodies);
        auto result = model_.make_body(bodies.front(), fuse.Shape(), &hints);
        for (int bid : bodies)
            model_.remove_body(bid);
        model_.put_body(result);
        tx.commit({{GeomEvent::Code::BooleanOperationComplete}});
        print("United into " + describe("volume", volume_ids(*result)));
        return true;
    });
}

bool GeometryModule::intersect(const std::vector<EntityKey>& list, bool keep) {
    return guarded("intersect", [&] {
        std::vector<int> bodies;
        if (!owning_bodies(list, bodies, "intersect") || !all_solid(model_, bodies, "intersect"))
            return false;
        std::vector<TopoDS_Shape> solids = solids_of_bodies(model_, bodies);
        if (solids.size() < 2)
            return error("intersect needs at least two volumes");
        Transaction tx(model_);
        Progress progress("Intersect", "", true);
        // Common of all: intersect the first with each following one in turn.
        TopoDS_Shape acc = solids.front();
        std::vector<std::unique_ptr<BRepAlgoAPI_Common>> steps;
        for (std::size_t i = 1; i < solids.size(); ++i) {
            auto common = std::make_unique<BRepAlgoAPI_Common>();
            TopTools_ListOfShape a, t;
            a.Append(acc);
            t.Append(solids[i]);
            common->SetArguments(a);
            common->SetTools(t);
            common->SetNonDestructive(true);
            Handle(OccProgress) pi = new OccProgress(&progress, 100.0 * (i - 1) / solids.size(),
                                                     100.0 * i / solids.size());
            common->Build(pi->Start());
            if (!check_done(*common, "intersect"))
                return false;
            acc = common->Shape();
            steps.push_back(std::move(common));
        }
        if (solids_of(acc).empty())
            return error("the volumes do not intersect");
        std::shared_ptr<Body> result;
        if (keep) {
            result = model_.make_body(model_.next_id(GeomKind::Body), acc, nullptr);
        } else {
            GeometryModel::IdHints hints;
            BodyPtr first = model_.body(bodies.front());
            add_hints(model_, *first, bodies, hints, [&](const TopoDS_Shape& s) {
                std::vector<TopoDS_Shape> cur{s};
                for (auto& step : steps) {
                    std::vector<TopoDS_Shape> next;
                    for (const TopoDS_Shape& c : cur)
                        for (const TopoDS_Shape& i : images_after(*step, c))
                            next.push_back(i);
                    cur = next;
                }
                return cur;
            });
            hint_unmatched_volumes(hints, acc, model_, bodies);
            result = model_.make_body(first->id, acc, &hints);
            for (int bid : bodies)
                model_.remove_body(bid);
        }
        model_.put_body(result);
        tx.commit({{GeomEvent::Code::BooleanOperationComplete}});
        print("Intersection is " + describe("volume", volume_ids(*result)));
        return true;
    });
}

bool GeometryModule::webcut(const std::vector<EntityKey>& list, const gp_Pnt& point,
                            const gp_Dir& normal) {
    return guarded("webcut", [&] {
        std::vector<int> bodies;
        if (!owning_bodies(list, bodies, "webcut") || !all_solid(model_, bodies, "webcut"))
            return false;
        Transaction tx(model_);
        Progress progress("Webcut", "", true);
        std::vector<int> cut_bodies;
        std::vector<int> created;
        long done = 0;
        for (int bid : bodies) {
            if (interrupted())
                return error("Interrupted");
            BodyPtr body = model_.body(bid);
            Bnd_Box box;
            BRepBndLib::Add(body->shape, box);
            const double size = 2 * std::sqrt(box.SquareExtent()) +
                                point.Distance(box.CornerMin()) + point.Distance(box.CornerMax());
            TopoDS_Face plane =
                BRepBuilderAPI_MakeFace(gp_Pln(point, normal), -size, size, -size, size).Face();
            BRepAlgoAPI_Splitter split;
            TopTools_ListOfShape args, tools;
            for (const TopoDS_Shape& s : pieces_of(*body))
                args.Append(s);
            tools.Append(plane);
            split.SetArguments(args);
            split.SetTools(tools);
            split.SetNonDestructive(true);
            Handle(OccProgress) pi = new OccProgress(&progress, 100.0 * done / bodies.size(),
                                                     100.0 * (done + 1) / bodies.size());
            split.Build(pi->Start());
            if (!check_done(split, "webcut"))
                return false;
            progress.step(++done, static_cast<long>(bodies.size()));
            std::vector<TopoDS_Shape> pieces = solids_of(split.Shape());
            if (pieces.size() <= body->volumes.size())
                continue; // the plane misses this body
            // The largest piece keeps the body and volume ids; the others become new bodies.
            std::stable_sort(pieces.begin(), pieces.end(),
                             [](const TopoDS_Shape& a, const TopoDS_Shape& b) {
                                 return solid_volume(a) > solid_volume(b);
                             });
            GeometryModel::IdHints hints;
            add_hints(model_, *body, {bid}, hints,
                      [&](const TopoDS_Shape& s) { return images_after(split, s); });
            model_.put_body(model_.make_body(bid, pieces.front(), &hints));
            for (std::size_t i = 1; i < pieces.size(); ++i) {
                auto nb = model_.make_body(model_.next_id(GeomKind::Body), pieces[i], &hints);
                model_.put_body(nb);
                for (int v : volume_ids(*nb))
                    created.push_back(v);
            }
            cut_bodies.push_back(bid);
        }
        if (cut_bodies.empty())
            return error("the cutting plane does not cut " + describe("body", bodies));
        tx.commit({{GeomEvent::Code::WebcutCompleted}});
        print("Webcut " + describe("body", cut_bodies) + ": created " +
              describe("volume", created));
        return true;
    });
}

namespace {

// General fuse of the bodies' pieces. With `share` the coincident faces, curves and vertices of
// different bodies become one entity each (merge); without, each body keeps its own copy
// (imprint). Returns the merges done.
bool general_fuse(GeometryModel& model, const std::vector<int>& bodies, bool share,
                  const char* title, std::vector<GeometryModel::IdHints::Merged>& merged,
                  int& changed) {
    Progress progress(title, "", true);
    BRepAlgoAPI_BuilderAlgo gf;
    TopTools_ListOfShape args;
    for (int bid : bodies)
        for (const TopoDS_Shape& s : pieces_of(*model.body(bid)))
            args.Append(s);
    gf.SetArguments(args);
    gf.SetNonDestructive(true);
    gf.SetRunParallel(true);
    gf.SetUseOBB(true);
    // Merging assumes the bodies only touch (they were imprinted): gluing finds the coincident
    // faces without intersecting everything with everything.
    if (share)
        gf.SetGlue(BOPAlgo_GlueShift);
    Handle(OccProgress) pi = new OccProgress(&progress, 0, 80);
    gf.Build(pi->Start());
    if (!check_done(gf, title))
        return false;
    GeometryModel::IdHints hints;
    TopTools_IndexedMapOfShape seen_faces;
    std::vector<std::shared_ptr<Body>> results;
    long done = 0;
    changed = 0;
    for (int bid : bodies) {
        if (interrupted())
            return error("Interrupted");
        BodyPtr body = model.body(bid);
        hints.reset_hints();
        add_hints(model, *body, bodies, hints,
                  [&](const TopoDS_Shape& s) { return images_after(gf, s); });
        std::vector<TopoDS_Shape> images = body_images(gf, *body);
        TopoDS_Shape shape = images.size() == 1 ? images.front() : make_compound(images);
        if (!share) {
            // Faces already owned by an earlier body are copied, so no topology is shared.
            bool shares = false;
            for (TopExp_Explorer ex(shape, TopAbs_FACE); ex.More() && !shares; ex.Next())
                shares = seen_faces.Contains(ex.Current());
            for (TopExp_Explorer ex(shape, TopAbs_FACE); ex.More(); ex.Next())
                seen_faces.Add(ex.Current());
            if (shares) {
                BRepBuilderAPI_Copy copier(shape);
                GeometryModel::IdHints copied;
                for (GeomKind kind :
                     {GeomKind::Volume, GeomKind::Surface, GeomKind::Curve, GeomKind::Vertex})
                    for (const TopoDS_Shape& s : GeometryModel::explore(shape, kind))
                        if (int id = hints.find(kind, s))
                            copied.add(kind, copier.ModifiedShape(s), id);
                hints.reset_hints();
                for (GeomKind kind :
                     {GeomKind::Volume, GeomKind::Surface, GeomKind::Curve, GeomKind::Vertex})
                    for (const TopoDS_Shape& s : GeometryModel::explore(copier.Shape(), kind))
                        if (int id = copied.find(kind, s))
                            hints.add(kind, s, id);
                shape = copier.Shape();
            }
        }
        auto result = model.make_body(bid, shape, &hints);
        results.push_back(result);
        progress.percent(80 + 20.0 * (++done) / bodies.size());
    }
    for (auto& r : results) {
        BodyPtr old = model.body(r->id);
        auto count = [](const Body& b) {
            return b.surfaces.size() + b.curves.size() + b.vertices.size();
        };
        if (count(*old) != count(*r) || !old->shape.IsSame(r->shape))
            ++changed;
        model.put_body(r);
    }
    merged = hints.merged();
    return true;
}

} // namespace

bool GeometryModule::imprint(const std::vector<EntityKey>& list) {
    return guarded("imprint", [&] {
        std::vector<int> bodies;
        if (!owning_bodies(list, bodies, "imprint"))
            return false;
        if (bodies.size() < 2)
            return error("imprint needs at least two bodies");
        Transaction tx(model_);
        std::vector<GeometryModel::IdHints::Merged> merged;
        int changed = 0;
        const std::size_t surfaces_before = model_.count(GeomKind::Surface);
        if (!general_fuse(model_, bodies, false, "Imprint", merged, changed))
            return false;
        tx.commit();
        print("Imprinted " + std::to_string(bodies.size()) +
              " bodies: " + std::to_string(model_.count(GeomKind::Surface)) + " surfaces (were " +
              std::to_string(surfaces_before) + ")");
        return true;
    });
}

bool GeometryModule::merge(const std::vector<EntityKey>& list) {
    return guarded("merge", [&] {
        std::vector<int> bodies;
        if (!owning_bodies(list, bodies, "merge"))
            return false;
        if (bodies.size() < 2)
            return error("merge needs at least two bodies");
        Transaction tx(model_);
        std::vector<GeometryModel::IdHints::Merged> merged;
        int changed = 0;
        if (!general_fuse(model_, bodies, true, "Merge", merged, changed))
            return false;
        std::vector<GeomEvent> extra;
        std::set<std::pair<int, int>> seen;
        int surfaces = 0;
        for (const auto& m : merged) {
            // Only entities that really went away were merged into another one.
            if (model_.exists(m.kind, m.old_id) || !model_.exists(m.kind, m.new_id))
                continue;
            if (!seen.insert({static_cast<int>(m.kind), m.old_id}).second)
                continue;
            if (m.kind == GeomKind::Surface)
                ++surfaces;
            extra.push_back({GeomEvent::Code::Merge, m.old_id, m.new_id, kind_name(m.kind),
                             model_.name_of(m.kind, m.new_id)});
        }
        extra.push_back({GeomEvent::Code::MergeCompleted});
        tx.commit(extra);
        print("Merged " + std::to_string(surfaces) + " surface" + (surfaces == 1 ? "" : "s") +
              " of " + std::to_string(bodies.size()) + " bodies");
        return true;
    });
}

bool GeometryModule::unmerge(const std::vector<EntityKey>& list) {
    return guarded("unmerge", [&] {
        std::vector<int> bodies;
        if (!owning_bodies(list, bodies, "unmerge"))
            return false;
        Transaction tx(model_);
        int unmerged = 0;
        // A body that shares faces with an earlier body (any body, listed or not) gets its own
        // copies; the earlier body keeps the ids.
        for (int bid : bodies) {
            BodyPtr body = model_.body(bid);
            bool shares = false;
            for (const IdShape& f : body->surfaces) {
                std::vector<int> owners = model_.bodies_of(GeomKind::Surface, f.id);
                if (owners.size() > 1 && owners.front() != bid)
                    shares = true;
            }
            if (!shares)
                continue;
            BRepBuilderAPI_Copy copier(body->shape);
            GeometryModel::IdHints hints;
            for (GeomKind kind : {GeomKind::Volume})
                for (const IdShape& e : body->of(kind))
                    hints.add(kind, copier.ModifiedShape(e.shape), e.id);
            model_.put_body(model_.make_body(bid, copier.Shape(), &hints));
            ++unmerged;
        }
        tx.commit();
        print("Unmerged " + std::to_string(unmerged) + " bod" + (unmerged == 1 ? "y" : "ies"));
        return true;
    });
}

bool GeometryModule::remove(const std::vector<EntityKey>& list) {
    return guarded("delete", [&] {
        if (list.empty())
            return error("nothing to delete");
        Transaction tx(model_);
        int n = 0;
        for (const EntityKey& key : list) {
            if (!model_.exists(key.kind, key.id))
                continue; // gone with an earlier item of the list
            if (key.kind == GeomKind::Body) {
                model_.remove_body(key.id);
                ++n;
                continue;
            }
            if (key.kind != GeomKind::Volume && !model_.is_free(key.kind, key.id))
                return error(std::string("cannot delete ") + kind_name(key.kind) + " " +
                             std::to_string(key.id) + ": it belongs to a larger entity");
            TopoDS_Shape target = model_.shape(key.kind, key.id);
            for (int bid : model_.bodies_of(key.kind, key.id)) {
                BodyPtr body = model_.body(bid);
                std::vector<TopoDS_Shape> keep;
                for (const TopoDS_Shape& piece : pieces_of(*body))
                    if (!piece.IsSame(target))
                        keep.push_back(piece);
                if (keep.empty()) {
                    model_.remove_body(bid);
                } else {
                    GeometryModel::IdHints hints;
                    add_hints(model_, *body, {bid}, hints,
                              [](const TopoDS_Shape& s) { return std::vector<TopoDS_Shape>{s}; });
                    model_.put_body(model_.make_body(
                        bid, keep.size() == 1 ? keep.front() : make_compound(keep), &hints));
                }
            }
            ++n;
        }
        tx.commit();
        print("Deleted " + std::to_string(n) + " entit" + (n == 1 ? "y" : "ies"));
        return true;
    });
}

namespace geometry_detail {

bool heal_bodies(GeometryModel& model, const std::vector<int>& bodies, Progress* progress,
                 int& solids_made) {
    long done = 0;
    const long total = static_cast<long>(bodies.size()) + 1;
    std::vector<int> sheets;
    for (int bid : bodies) {
        if (interrupted())
            return error("Interrupted");
        BodyPtr body = model.body(bid);
        if (body->volumes.empty() && !body->surfaces.empty()) {
            sheets.push_back(bid);
            continue;
        }
        // Healing works on a copy: published shapes are shared with snapshots.
        ShapeFix_Shape fix(BRepBuilderAPI_Copy(body->shape).Shape());
        fix.Perform();
        model.put_body(model.make_body(bid, fix.Shape(), nullptr));
        if (progress)
            progress->step(++done, total);
    }
    if (sheets.empty())
        return true;
    // Loose faces of all the sheet bodies together: sew them into shells, and closed shells
    // into solids. The results take the sheet bodies' ids in order; new bodies for the rest.
    Bnd_Box box;
    std::vector<TopoDS_Shape> faces;
    for (int bid : sheets) {
        TopoDS_Shape copy = BRepBuilderAPI_Copy(model.body(bid)->shape).Shape();
        BRepBndLib::Add(copy, box);
        for (TopExp_Explorer ex(copy, TopAbs_FACE); ex.More(); ex.Next())
            faces.push_back(ex.Current());
    }
    BRepBuilderAPI_Sewing sew(std::max(1e-6, 1e-5 * std::sqrt(box.SquareExtent())));
    for (const TopoDS_Shape& f : faces)
        sew.Add(f);
    sew.Perform();
    if (interrupted())
        return error("Interrupted");
    TopoDS_Shape sewn = sew.SewedShape();
    std::vector<TopoDS_Shape> parts;
    for (TopExp_Explorer ex(sewn, TopAbs_SHELL); ex.More(); ex.Next()) {
        TopoDS_Shell shell = TopoDS::Shell(ex.Current());
        if (BRep_Tool::IsClosed(shell)) {
            BRepBuilderAPI_MakeSolid ms(shell);
            if (ms.IsDone()) {
                ShapeFix_Solid fix(ms.Solid());
                fix.Perform();
                parts.push_back(fix.Solid());
                ++solids_made;
                continue;
            }
        }
        parts.push_back(shell);
    }
    std::vector<TopoDS_Shape> loose;
    for (TopExp_Explorer ex(sewn, TopAbs_FACE, TopAbs_SHELL); ex.More(); ex.Next())
        loose.push_back(ex.Current());
    if (!loose.empty())
        parts.push_back(loose.size() == 1 ? loose.front() : make_compound(loose));
    for (int bid : sheets)
        model.remove_body(bid);
    for (std::size_t i = 0; i < parts.size(); ++i) {
        ShapeFix_Shape fix(parts[i]);
        fix.Perform();
        const int id = i < sheets.size() ? sheets[i] : model.next_id(GeomKind::Body);
        model.put_body(model.make_body(id, fix.Shape(), nullptr));
    }
    if (progress)
        progress->percent(100);
    return true;
}

} // namespace geometry_detail

bool GeometryModule::heal(const std::vector<EntityKey>& list) {
    return guarded("heal", [&] {
        std::vector<int> bodies;
        if (!owning_bodies(list, bodies, "heal"))
            return false;
        Transaction tx(model_);
        Progress progress("Heal", "", true);
        int solids_made = 0;
        if (!heal_bodies(model_, bodies, &progress, solids_made))
            return false;
        tx.commit({{GeomEvent::Code::HealerComplete}});
        print("Healed " + describe("body", bodies) +
              (solids_made ? ": made " + std::to_string(solids_made) + " solid" +
                                 (solids_made == 1 ? "" : "s")
                           : std::string()));
        return true;
    });
}

} // namespace tarvo::kernel
