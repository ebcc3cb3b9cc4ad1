// The model handed to Gmsh for meshing: every entity found, with the same shape.
#include "GeometryTestSupport.h"

#include "geometry/GeometryGmsh.h"
#include "geometry/GeometryModule.h"

#include <gmsh.h>

#include <cmath>

using namespace geometry_test;
using namespace TarvoInterface;
using tarvo::kernel::GeomKind;

namespace {

using GeometryGmshTest = GeometryTest;

TEST_F(GeometryGmshTest, EveryEntityMapsToAGmshEntityWithItsBox) {
    run("create box 10");
    run("create box 10 at 10 0 0");
    run("merge all");
    run("create sphere radius 2 at 0 20 0");
    run("create cylinder radius 1 height 20");
    run("subtract volume 4 from volume 1");
    run("create surface rectangle width 3 at 0 0 30");
    run("create vertex 7 7 7");
    tarvo::kernel::GmshMap map;
    ASSERT_TRUE(tarvo::kernel::push_to_gmsh(tarvo::kernel::geometry_module()->model(), map));
    const char* types[] = {"body", "volume", "surface", "curve", "vertex"};
    std::size_t mapped = 0;
    for (int k = 1; k <= 4; ++k) {
        for (int id : get_entities(types[k])) {
            auto it = map.to_gmsh.find({static_cast<GeomKind>(k), id});
            ASSERT_NE(it, map.to_gmsh.end()) << types[k] << " " << id;
            EXPECT_EQ(it->second.first, 4 - k);
            double x0, y0, z0, x1, y1, z1;
            gmsh::model::getBoundingBox(it->second.first, it->second.second, x0, y0, z0, x1, y1,
                                        z1);
            auto box = get_bounding_box(types[k], id);
            // Gmsh pads its boxes by a tolerance; the centres agree closely.
            EXPECT_NEAR((x0 + x1) / 2, (box[0] + box[1]) / 2, 1e-5) << types[k] << " " << id;
            EXPECT_NEAR((y0 + y1) / 2, (box[3] + box[4]) / 2, 1e-5) << types[k] << " " << id;
            EXPECT_NEAR((z0 + z1) / 2, (box[6] + box[7]) / 2, 1e-5) << types[k] << " " << id;
            ++mapped;
        }
    }
    EXPECT_EQ(map.to_gmsh.size(), mapped);
    EXPECT_EQ(map.from_gmsh.size(), mapped);
    // The only Gmsh entities without an id are the sphere's degenerate pole edges.
    for (const auto& dt : map.unmapped)
        EXPECT_EQ(dt.first, 1);
    EXPECT_LE(map.unmapped.size(), 2u);
    // The merged face is one Gmsh surface bounding both volumes.
    gmsh::vectorpair entities;
    gmsh::model::getEntities(entities, 2);
    EXPECT_EQ(entities.size(), static_cast<std::size_t>(get_surface_count()));
}

} // namespace
