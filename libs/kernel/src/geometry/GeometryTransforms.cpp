// Transforms of the geometry module: move, rotate, scale, reflect and copy of whole bodies.
#include "core/Session.h"
#include "geometry/GeometryInternal.h"
#include "geometry/GeometryModule.h"

#include <BRepBndLib.hxx>
#include <BRepBuilderAPI_Copy.hxx>
#include <BRepBuilderAPI_Transform.hxx>
#include <Bnd_Box.hxx>
#include <gp_Ax2.hxx>
#include <gp_Trsf.hxx>

#include <cmath>
#include <map>

namespace tarvo::kernel {

using namespace geometry_detail;

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

// The one path of every rigid or scaling transform: finds the owning bodies, builds the
// transformation from them, applies it with ids kept, and prints `done` with the bodies.
bool transform_listed(GeometryModel& model, GeometryModule& module,
                      const std::vector<EntityKey>& list, const char* verb, const char* done,
                      const std::function<gp_Trsf()>& make) {
    return guarded(verb, [&] {
        std::vector<int> bodies;
        if (!module.owning_bodies(list, bodies, verb))
            return false;
        const gp_Trsf trsf = make();
        Transaction tx(model);
        if (!transform_bodies(model, bodies, trsf))
            return false;
        tx.commit();
        print(std::string(done) + " " + describe("body", bodies));
        return true;
    });
}

} // namespace

bool GeometryModule::move_by(const std::vector<EntityKey>& list, const gp_Vec& by) {
    return transform_listed(model_, *this, list, "move", "Moved", [&] {
        gp_Trsf t;
        t.SetTranslation(by);
        return t;
    });
}

bool GeometryModule::move_to(const std::vector<EntityKey>& list, const gp_Pnt& to) {
    return transform_listed(model_, *this, list, "move", "Moved", [&] {
        // The centre of the listed entities' common box goes to `to`.
        Bnd_Box box;
        for (const EntityKey& key : list)
            BRepBndLib::Add(model_.shape(key.kind, key.id), box);
        double x0, y0, z0, x1, y1, z1;
        box.Get(x0, y0, z0, x1, y1, z1);
        gp_Trsf t;
        t.SetTranslation(gp_Pnt((x0 + x1) / 2, (y0 + y1) / 2, (z0 + z1) / 2), to);
        return t;
    });
}

bool GeometryModule::rotate(const std::vector<EntityKey>& list, double degrees, const gp_Dir& axis,
                            const gp_Pnt& origin) {
    return transform_listed(model_, *this, list, "rotate", "Rotated", [&] {
        gp_Trsf t;
        t.SetRotation(gp_Ax1(origin, axis), degrees * M_PI / 180.0);
        return t;
    });
}

bool GeometryModule::scale(const std::vector<EntityKey>& list, double factor) {
    if (!positive(factor, "scale factor"))
        return false;
    return transform_listed(model_, *this, list, "scale", "Scaled", [&] {
        gp_Trsf t;
        t.SetScale(gp_Pnt(0, 0, 0), factor);
        return t;
    });
}

bool GeometryModule::reflect(const std::vector<EntityKey>& list, const gp_Dir& normal) {
    return transform_listed(model_, *this, list, "reflect", "Reflected", [&] {
        gp_Trsf t;
        t.SetMirror(gp_Ax2(gp_Pnt(0, 0, 0), normal));
        return t;
    });
}

namespace {
CopyListener copy_listener;
} // namespace

void set_copy_listener(CopyListener listener) {
    copy_listener = std::move(listener);
}

bool GeometryModule::copy(const std::vector<EntityKey>& list, const std::optional<gp_Vec>& move) {
    return guarded("copy", [&] {
        std::vector<int> bodies;
        if (!owning_bodies(list, bodies, "copy"))
            return false;
        Transaction tx(model_);
        std::vector<int> made;
        std::vector<CopiedEntity> copied;
        for (int bid : bodies) {
            const BodyPtr original = model_.body(bid);
            BRepBuilderAPI_Copy copier(original->shape);
            TopoDS_Shape shape = copier.Shape();
            if (move) {
                gp_Trsf t;
                t.SetTranslation(*move);
                shape = BRepBuilderAPI_Transform(shape, t, false).Shape();
            }
            int id = add_new_body(model_, shape);
            const BodyPtr body = model_.body(id);
            // The move only locates the copy, so each copied entity is the copier's image of its
            // original up to location.
            for (GeomKind kind :
                 {GeomKind::Volume, GeomKind::Surface, GeomKind::Curve, GeomKind::Vertex}) {
                std::map<const TopoDS_TShape*, int> copies;
                for (const IdShape& e : body->of(kind))
                    copies.emplace(e.shape.TShape().get(), e.id);
                for (const IdShape& e : original->of(kind)) {
                    const auto found = copies.find(copier.ModifiedShape(e.shape).TShape().get());
                    if (found != copies.end())
                        copied.push_back({kind, e.id, found->second});
                }
            }
            for (int v : volume_ids(*body))
                made.push_back(v);
            if (body->volumes.empty())
                made.push_back(-id);
        }
        tx.commit();
        std::vector<int> vols;
        for (int v : made)
            if (v > 0)
                vols.push_back(v);
        print("Copied " + describe("body", bodies) +
              (vols.empty() ? std::string() : ": created " + describe("volume", vols)));
        if (copy_listener)
            copy_listener(copied);
        return true;
    });
}

} // namespace tarvo::kernel
