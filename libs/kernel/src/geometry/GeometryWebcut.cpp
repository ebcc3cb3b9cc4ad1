// Webcut of the geometry module: splits bodies by a plane; the largest piece keeps the body.
#include "core/Session.h"
#include "geometry/GeometryInternal.h"
#include "geometry/GeometryModule.h"

#include <BRepAlgoAPI_Splitter.hxx>
#include <BRepBndLib.hxx>
#include <BRepBuilderAPI_MakeFace.hxx>
#include <BRepGProp.hxx>
#include <Bnd_Box.hxx>
#include <GProp_GProps.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Face.hxx>
#include <gp_Pln.hxx>

#include <algorithm>
#include <cmath>
#include <map>

namespace tarvo::kernel {

using namespace geometry_detail;

namespace {

double solid_volume(const TopoDS_Shape& s) {
    GProp_GProps props;
    BRepGProp::VolumeProperties(s, props);
    return std::abs(props.Mass());
}

} // namespace

bool GeometryModule::webcut(const std::vector<EntityKey>& list, const gp_Pnt& point,
                            const gp_Dir& normal) {
    return guarded("webcut", [&] {
        std::vector<int> bodies;
        if (!owning_bodies(list, bodies, "webcut") || !all_solid(model_, bodies, "webcut"))
            return false;
        Transaction tx(model_);
        Progress progress("Webcut", "", true);
        std::vector<int> cut_bodies;
        std::map<int, std::size_t> shared_before; // merged surface of a listed body -> owners
        for (int bid : bodies)
            for (const IdShape& f : model_.body(bid)->surfaces)
                if (std::size_t n = model_.bodies_of(GeomKind::Surface, f.id).size(); n > 1)
                    shared_before[f.id] = n;
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
        // Merged faces the plane missed stay shared; one it cut is split on the cut side only,
        // so the neighbour keeps the whole face and the two are no longer merged.
        std::vector<int> unmerged;
        for (const auto& [surface, owners] : shared_before)
            if (model_.bodies_of(GeomKind::Surface, surface).size() < owners)
                unmerged.push_back(surface);
        tx.commit({{GeomEvent::Code::WebcutCompleted}});
        print("Webcut " + describe("body", cut_bodies) + ": created " +
              describe("volume", created));
        if (!unmerged.empty())
            warning("the cut split merged " + describe("surface", unmerged) +
                    ": no longer merged; imprint and merge to merge the pieces again");
        return true;
    });
}

} // namespace tarvo::kernel
