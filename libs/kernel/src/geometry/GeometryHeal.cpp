// Delete and heal of the geometry module.
#include "core/Session.h"
#include "geometry/GeometryInternal.h"
#include "geometry/GeometryModule.h"

#include <BRepBndLib.hxx>
#include <BRepBuilderAPI_Copy.hxx>
#include <BRepBuilderAPI_MakeSolid.hxx>
#include <BRepBuilderAPI_Sewing.hxx>
#include <BRep_Tool.hxx>
#include <Bnd_Box.hxx>
#include <ShapeBuild_ReShape.hxx>
#include <ShapeFix_Shape.hxx>
#include <ShapeFix_Solid.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Shell.hxx>

#include <algorithm>
#include <cmath>

namespace tarvo::kernel {

using namespace geometry_detail;

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
        // A valid body has nothing to heal: it stays as it is, with every id. (ShapeFix would
        // still rebuild parts of a valid solid, and they would be numbered anew.)
        if (shape_is_valid(body->shape)) {
            if (progress)
                progress->step(++done, total);
            continue;
        }
        // Healing works on a copy: published shapes are shared with snapshots.
        BRepBuilderAPI_Copy copier(body->shape);
        ShapeFix_Shape fix(copier.Shape());
        Handle(OccProgress) pi = new OccProgress(nullptr);
        fix.Perform(pi->Start());
        if (interrupted())
            return error("Interrupted");
        if (fix.Status(ShapeExtend_DONE)) {
            // The context builds a new history on each call: keep it alive while in use.
            const Handle(BRepTools_History) history = fix.Context()->History();
            HistoryView fixed{*history};
            GeometryModel::IdHints hints;
            add_hints(model, *body, {bid}, hints, [&](const TopoDS_Shape& s) {
                return images_after(fixed, copier.ModifiedShape(s));
            });
            model.put_body(model.make_body(bid, fix.Shape(), &hints));
        }
        if (progress)
            progress->step(++done, total);
    }
    if (sheets.empty())
        return true;
    // Loose faces of all the sheet bodies together: sew them into shells, and closed shells
    // into solids. The results take the sheet bodies' ids in order; new bodies for the rest.
    Bnd_Box box;
    std::vector<TopoDS_Shape> faces;
    std::vector<std::unique_ptr<BRepBuilderAPI_Copy>> copies;
    for (int bid : sheets) {
        copies.push_back(std::make_unique<BRepBuilderAPI_Copy>(model.body(bid)->shape));
        const TopoDS_Shape& copy = copies.back()->Shape();
        BRepBndLib::Add(copy, box);
        for (TopExp_Explorer ex(copy, TopAbs_FACE); ex.More(); ex.Next())
            faces.push_back(ex.Current());
    }
    BRepBuilderAPI_Sewing sew(std::max(1e-6, 1e-5 * std::sqrt(box.SquareExtent())));
    for (const TopoDS_Shape& f : faces)
        sew.Add(f);
    Handle(OccProgress) sew_progress = new OccProgress(progress, 100.0 * done / total, 90);
    sew.Perform(sew_progress->Start());
    if (interrupted())
        return error("Interrupted");
    // Sewn faces keep their surfaces' ids; of the edges and vertices sewn into one, the first
    // keeps its id.
    GeometryModel::IdHints hints;
    for (std::size_t i = 0; i < sheets.size(); ++i)
        add_hints(model, *model.body(sheets[i]), sheets, hints, [&](const TopoDS_Shape& s) {
            const TopoDS_Shape copy = copies[i]->ModifiedShape(s);
            TopoDS_Shape image;
            if (copy.ShapeType() == TopAbs_FACE)
                image = sew.IsModified(copy) ? sew.Modified(copy) : copy;
            else
                image = sew.IsModifiedSubShape(copy) ? sew.ModifiedSubShape(copy) : copy;
            return image.IsNull() ? std::vector<TopoDS_Shape>{} : std::vector<TopoDS_Shape>{image};
        });
    TopoDS_Shape sewn = sew.SewedShape();
    std::vector<TopoDS_Shape> parts;
    for (TopExp_Explorer ex(sewn, TopAbs_SHELL); ex.More(); ex.Next()) {
        TopoDS_Shell shell = TopoDS::Shell(ex.Current());
        if (BRep_Tool::IsClosed(shell)) {
            BRepBuilderAPI_MakeSolid ms(shell);
            if (ms.IsDone()) {
                ShapeFix_Solid fix(ms.Solid());
                Handle(OccProgress) pi = new OccProgress(nullptr);
                fix.Perform(pi->Start());
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
        Handle(OccProgress) pi = new OccProgress(nullptr);
        fix.Perform(pi->Start());
        if (interrupted())
            return error("Interrupted");
        const Handle(BRepTools_History) history = fix.Context()->History();
        HistoryView fixed{*history};
        GeometryModel::IdHints final_hints;
        for (GeomKind kind :
             {GeomKind::Volume, GeomKind::Surface, GeomKind::Curve, GeomKind::Vertex})
            for (const TopoDS_Shape& sub : GeometryModel::explore(parts[i], kind))
                if (const int id = hints.find(kind, sub))
                    for (const TopoDS_Shape& image : images_after(fixed, sub))
                        final_hints.add(kind, image, id);
        const int id = i < sheets.size() ? sheets[i] : model.next_id(GeomKind::Body);
        model.put_body(model.make_body(id, fix.Shape(), &final_hints));
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
