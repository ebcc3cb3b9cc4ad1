#include "geometry/GeometryGmsh.h"

#include "core/Session.h"
#include "geometry/GeometryModule.h"

#include <BRep_Builder.hxx>
#include <TopoDS_Compound.hxx>
#include <gmsh.h>

namespace tarvo::kernel {

bool push_to_gmsh(const GeometryModel& model, GmshMap& map) {
    map = GmshMap{};
    return guarded("transfer to Gmsh", [&] {
        gmsh::clear();
        BRep_Builder builder;
        TopoDS_Compound all;
        builder.MakeCompound(all);
        for (const auto& [id, body] : model.state().bodies)
            builder.Add(all, body->shape);
        gmsh::vectorpair imported;
        gmsh::model::occ::importShapesNativePointer(&all, imported, false);
        // Asking again for a shape Gmsh has bound answers its tag without binding anything new.
        for (GeomKind kind :
             {GeomKind::Volume, GeomKind::Surface, GeomKind::Curve, GeomKind::Vertex}) {
            for (int id : model.ids(kind)) {
                TopoDS_Shape shape = model.shape(kind, id);
                gmsh::vectorpair found;
                gmsh::model::occ::importShapesNativePointer(&shape, found, true);
                if (found.size() != 1)
                    return error(std::string("Gmsh has no entity for ") + kind_name(kind) + " " +
                                 std::to_string(id));
                map.to_gmsh[{kind, id}] = found.front();
                map.from_gmsh[found.front()] = {kind, id};
            }
        }
        gmsh::model::occ::synchronize();
        gmsh::vectorpair entities;
        gmsh::model::getEntities(entities);
        for (const auto& dt : entities)
            if (!map.from_gmsh.count(dt))
                map.unmapped.push_back(dt);
        return true;
    });
}

} // namespace tarvo::kernel
