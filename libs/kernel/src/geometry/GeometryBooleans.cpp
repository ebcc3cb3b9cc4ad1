// Booleans of the geometry module: subtract, unite, intersect, and the general fuse behind
// imprint, merge and unmerge.
#include "core/Session.h"
#include "geometry/GeometryInternal.h"
#include "geometry/GeometryModule.h"

#include <BOPAlgo_Builder.hxx>
#include <BRepAlgoAPI_BuilderAlgo.hxx>
#include <BRepAlgoAPI_Common.hxx>
#include <BRepAlgoAPI_Cut.hxx>
#include <BRepAlgoAPI_Fuse.hxx>
#include <BRepBuilderAPI_Copy.hxx>
#include <ShapeUpgrade_UnifySameDomain.hxx>
#include <TopExp.hxx>
#include <TopExp_Explorer.hxx>
#include <TopTools_DataMapOfShapeInteger.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopTools_ListOfShape.hxx>
#include <TopTools_MapOfShape.hxx>

#include <algorithm>
#include <set>

namespace tarvo::kernel {

using namespace geometry_detail;

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
        std::vector<IdShape> tool_volumes;
        for (int t : tool_bodies)
            for (const IdShape& v : model_.body(t)->volumes) {
                tool_list.Append(v.shape);
                tool_volumes.push_back(v);
            }
        // A tool touched the objects when part of its boundary became part of theirs.
        std::vector<bool> touched(tool_volumes.size(), false);
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
            TopTools_IndexedMapOfShape result_faces;
            TopExp::MapShapes(cut.Shape(), TopAbs_FACE, result_faces);
            for (std::size_t t = 0; t < tool_volumes.size(); ++t)
                for (TopExp_Explorer ex(tool_volumes[t].shape, TopAbs_FACE);
                     ex.More() && !touched[t]; ex.Next())
                    for (const TopoDS_Shape& image : images_after(cut, ex.Current()))
                        if (result_faces.Contains(image))
                            touched[t] = true;
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
        for (std::size_t t = 0; t < tool_volumes.size(); ++t)
            if (!touched[t])
                warning("volume " + std::to_string(tool_volumes[t].id) + " did not touch " +
                        describe("volume", vols) + (keep ? "" : "; it was deleted all the same"));
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
        // The fuse leaves the seams of the operands: coplanar faces and collinear edges that
        // now meet are one surface and one curve to the user, so they are unified.
        ShapeUpgrade_UnifySameDomain unify(fuse.Shape(), true, true, false);
        // A face merged with a body outside the unite stays as it is, edges and vertices too,
        // or the two would no longer share it.
        TopTools_MapOfShape keep;
        for (int bid : bodies)
            for (const IdShape& f : model_.body(bid)->surfaces)
                for (int owner : model_.bodies_of(GeomKind::Surface, f.id))
                    if (!std::count(bodies.begin(), bodies.end(), owner)) {
                        for (TopExp_Explorer ex(f.shape, TopAbs_EDGE); ex.More(); ex.Next())
                            keep.Add(ex.Current());
                        for (TopExp_Explorer ex(f.shape, TopAbs_VERTEX); ex.More(); ex.Next())
                            keep.Add(ex.Current());
                    }
        unify.KeepShapes(keep);
        unify.Build();
        if (interrupted())
            return error("Interrupted");
        const BRepTools_History& unified = *unify.History();
        // The result is the first body; bodies are in ascending order, so the lowest ids
        // (volume and body) survive, and a unified face keeps the id of its first part.
        GeometryModel::IdHints hints;
        for (int bid : bodies)
            add_hints(model_, *model_.body(bid), bodies, hints,
                      [&](const TopoDS_Shape& s) { return images_after_both(fuse, unified, s); });
        hint_unmatched_volumes(hints, unify.Shape(), model_, bodies);
        auto result = model_.make_body(bodies.front(), unify.Shape(), &hints);
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
    // Bodies that overlap would share the solid of their common region: each would hold a copy
    // of it (imprint) or one would vanish into the other (merge). Both are refused; subtract or
    // unite decides where the common material belongs.
    TopTools_DataMapOfShapeInteger owner;
    for (int bid : bodies)
        for (const IdShape& v : model.body(bid)->volumes)
            for (const TopoDS_Shape& image : images_after(gf, v.shape)) {
                if (const int* other = owner.Seek(image); other && *other != v.id)
                    return error("volumes " + std::to_string(*other) + " and " +
                                 std::to_string(v.id) + " overlap; " +
                                 (share ? "merge" : "imprint") +
                                 " needs bodies that only touch (subtract or unite them first)");
                owner.Bind(image, v.id);
            }
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
    // A volume that the fuse lost must not go silently.
    std::vector<int> lost;
    for (int bid : bodies)
        for (int v : volume_ids(*model.body(bid))) {
            bool kept = false;
            for (auto& r : results)
                for (const IdShape& nv : r->volumes)
                    kept = kept || nv.id == v;
            if (!kept)
                lost.push_back(v);
        }
    if (!lost.empty())
        return error(std::string(title) + " would lose " + describe("volume", lost) +
                     "; the bodies may overlap");
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

} // namespace tarvo::kernel
