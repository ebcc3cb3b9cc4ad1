// The repairs that the solutions advise: `remove surface` (defeaturing), `regularize` (joining
// surfaces and curves that lie on one underlying geometry) and `merge tolerant` (a general fuse
// that treats entities closer than a tolerance as coincident). Each is one undoable command: a
// Transaction rolls the model back on any failure, and ids are kept through the algorithm's
// history as the geometry module's own operations keep them.

#include "core/Session.h"
#include "diagnostics/Diagnostics.h"
#include "geometry/GeometryInternal.h"

#include <BRepAlgoAPI_BuilderAlgo.hxx>
#include <BRepAlgoAPI_Defeaturing.hxx>
#include <ShapeUpgrade_UnifySameDomain.hxx>
#include <TopExp_Explorer.hxx>
#include <TopTools_DataMapOfShapeInteger.hxx>
#include <TopTools_MapOfShape.hxx>

#include <algorithm>
#include <map>
#include <set>

namespace tarvo::kernel::diagnostics {

using namespace geometry_detail;

namespace {

GeometryModel& live_model() {
    GeometryModule* m = geometry_module();
    if (!m)
        throw std::runtime_error("the geometry module is not running");
    return m->model();
}

std::vector<int> bodies_of_volumes(const GeometryModel& model, const std::vector<int>& volumes) {
    std::set<int> out;
    for (int v : volumes)
        for (int b : model.bodies_of(GeomKind::Volume, v))
            out.insert(b);
    return {out.begin(), out.end()};
}

} // namespace

bool remove_surfaces(const std::vector<int>& surfaces) {
    GeometryModel& model = live_model();
    std::map<int, std::vector<int>> by_body;
    for (int s : surfaces) {
        const std::vector<int> owners = model.bodies_of(GeomKind::Surface, s);
        if (owners.size() != 1)
            return error("cannot remove surface " + std::to_string(s) +
                         ": it is shared by two bodies (unmerge them first)");
        if (model.body(owners.front())->volumes.empty())
            return error("cannot remove surface " + std::to_string(s) + ": it bounds no volume");
        by_body[owners.front()].push_back(s);
    }
    Transaction tx(model);
    Progress progress("Remove surfaces", "", true);
    for (const auto& [bid, ids] : by_body) {
        BodyPtr body = model.body(bid);
        BRepAlgoAPI_Defeaturing defeat;
        defeat.SetShape(body->shape);
        for (int s : ids)
            defeat.AddFaceToRemove(model.shape(GeomKind::Surface, s));
        defeat.SetToFillHistory(true);
        defeat.Build();
        if (interrupted())
            return error("Interrupted");
        if (!defeat.IsDone() || defeat.HasErrors() || !shape_is_valid(defeat.Shape()))
            return error("cannot remove " + describe("surface", ids) +
                         ": their neighbours do not close the hole");
        GeometryModel::IdHints hints;
        add_hints(model, *body, {bid}, hints,
                  [&](const TopoDS_Shape& s) { return images_after(defeat, s); });
        model.put_body(model.make_body(bid, defeat.Shape(), &hints));
    }
    tx.commit();
    print("Removed " + describe("surface", surfaces));
    return true;
}

bool regularize(const std::vector<int>& volumes) {
    GeometryModel& model = live_model();
    const std::vector<int> bodies = bodies_of_volumes(model, volumes);
    Transaction tx(model);
    const std::size_t surfaces_before = model.count(GeomKind::Surface);
    const std::size_t curves_before = model.count(GeomKind::Curve);
    for (int bid : bodies) {
        BodyPtr body = model.body(bid);
        ShapeUpgrade_UnifySameDomain unify(body->shape, true, true, false);
        // Entities shared with another body stay, or the two would no longer share them.
        TopTools_MapOfShape keep;
        for (const IdShape& f : body->surfaces)
            if (model.bodies_of(GeomKind::Surface, f.id).size() > 1)
                for (TopExp_Explorer ex(f.shape, TopAbs_EDGE); ex.More(); ex.Next()) {
                    keep.Add(ex.Current());
                    keep.Add(f.shape);
                }
        unify.KeepShapes(keep);
        unify.Build();
        if (interrupted())
            return error("Interrupted");
        const BRepTools_History& history = *unify.History();
        HistoryView view{history};
        GeometryModel::IdHints hints;
        add_hints(model, *body, {bid}, hints,
                  [&](const TopoDS_Shape& s) { return images_after(view, s); });
        if (!shape_is_valid(unify.Shape()))
            return error("regularize made an invalid shape of body " + std::to_string(bid));
        model.put_body(model.make_body(bid, unify.Shape(), &hints));
    }
    tx.commit();
    print("Regularized " + describe("volume", volumes) + ": " +
          std::to_string(model.count(GeomKind::Surface)) + " surfaces (were " +
          std::to_string(surfaces_before) + "), " + std::to_string(model.count(GeomKind::Curve)) +
          " curves (were " + std::to_string(curves_before) + ")");
    return true;
}

bool merge_tolerant(const std::vector<int>& volumes, double tolerance) {
    GeometryModel& model = live_model();
    const std::vector<int> bodies = bodies_of_volumes(model, volumes);
    if (bodies.size() < 2)
        return error("merge tolerant needs volumes of at least two bodies");
    Transaction tx(model);
    Progress progress("Tolerant merge", "", true);
    BRepAlgoAPI_BuilderAlgo gf;
    TopTools_ListOfShape args;
    for (int bid : bodies)
        for (const TopoDS_Shape& s : pieces_of(*model.body(bid)))
            args.Append(s);
    gf.SetArguments(args);
    gf.SetNonDestructive(true);
    gf.SetFuzzyValue(tolerance);
    Handle(OccProgress) pi = new OccProgress(&progress, 0, 80);
    gf.Build(pi->Start());
    if (!check_done(gf, "merge tolerant"))
        return false;
    TopTools_DataMapOfShapeInteger owner;
    for (int bid : bodies)
        for (const IdShape& v : model.body(bid)->volumes)
            for (const TopoDS_Shape& image : images_after(gf, v.shape)) {
                if (const int* other = owner.Seek(image); other && *other != v.id)
                    return error("volumes " + std::to_string(*other) + " and " +
                                 std::to_string(v.id) +
                                 " overlap; subtract or unite them before merging");
                owner.Bind(image, v.id);
            }
    GeometryModel::IdHints hints;
    std::vector<std::shared_ptr<Body>> results;
    for (int bid : bodies) {
        BodyPtr body = model.body(bid);
        hints.reset_hints();
        add_hints(model, *body, bodies, hints,
                  [&](const TopoDS_Shape& s) { return images_after(gf, s); });
        std::vector<TopoDS_Shape> images = body_images(gf, *body);
        if (images.empty())
            return error("merge tolerant would lose body " + std::to_string(bid));
        results.push_back(model.make_body(
            bid, images.size() == 1 ? images.front() : make_compound(images), &hints));
    }
    for (auto& r : results)
        model.put_body(r);
    std::vector<GeomEvent> extra;
    std::set<std::pair<int, int>> seen;
    int surfaces = 0;
    for (const auto& m : hints.merged()) {
        if (model.exists(m.kind, m.old_id) || !model.exists(m.kind, m.new_id) ||
            !seen.insert({static_cast<int>(m.kind), m.old_id}).second)
            continue;
        surfaces += m.kind == GeomKind::Surface;
        extra.push_back({GeomEvent::Code::Merge, m.old_id, m.new_id, kind_name(m.kind),
                         model.name_of(m.kind, m.new_id)});
    }
    extra.push_back({GeomEvent::Code::MergeCompleted});
    tx.commit(extra);
    print("Merged " + std::to_string(surfaces) + " surface" + (surfaces == 1 ? "" : "s") + " of " +
          std::to_string(bodies.size()) + " bodies within " + std::to_string(tolerance));
    return true;
}

} // namespace tarvo::kernel::diagnostics
