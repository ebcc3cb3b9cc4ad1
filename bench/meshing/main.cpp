// bench_meshing: what our meshing layer costs over Gmsh, and what the mesh database costs.
//
// Side by side in one run, for a box minus cylinders at sizes that give about 200k and 1M tets
// (--sizes to choose), and for a hex box:
//   tets:     `mesh volume 1` (tetmesh) against plain Gmsh meshing the same OpenCASCADE shape with
//             the same maximum size (one generate(3)); elements per second of each and their
//             ratio (ours / Gmsh; 1 means our layer costs nothing).
//   database: publishing the same elements again into the database (elements per second) and
//             the bytes per element, nodes included.
//   undo:     one snapshot of every undo participant with that mesh in the model.
//   quality:  get_quality_stats over every element of the volume.
//   hexes:    `mesh volume 1` of a box with N intervals per side (our own hex meshing) against
//             Gmsh's transfinite hexes on the same box; hexes per second and their ratio.
//
//   bench_meshing [--sizes 0.09,0.04] [--hex 100]

#include "../BenchSupport.h"
#include "core/SessionState.h"
#include "core/Undo.h"
#include "geometry/GeometryModule.h"
#include "mesh/MeshModule.h"
#include "tarvo/TarvoInterface.h"
#include "tarvo_util/TarvoMessage.h"

#include <gmsh.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace bench;

namespace km = tarvo::kernel::mesh;

// Plain Gmsh on volume 1's shape: the same OpenCASCADE solid, the same size, one generate(3).
size_t gmsh_elements(double size, bool hexes, int intervals, double& time) {
    gmsh::clear();
    TopoDS_Shape shape =
        tarvo::kernel::geometry_module()->model().shape(tarvo::kernel::GeomKind::Volume, 1);
    gmsh::vectorpair out;
    gmsh::model::occ::importShapesNativePointer(&shape, out, false);
    gmsh::model::occ::synchronize();
    gmsh::option::setNumber("Mesh.MeshOnlyVisible", 0);
    gmsh::option::setNumber("Mesh.MeshSizeFromPoints", 0);
    gmsh::option::setNumber("Mesh.MeshSizeFromCurvature", 0);
    gmsh::option::setNumber("Mesh.MeshSizeMax", size);
    if (hexes) {
        gmsh::vectorpair curves;
        gmsh::model::getEntities(curves, 1);
        for (auto [d, t] : curves)
            gmsh::model::mesh::setTransfiniteCurve(t, intervals + 1);
        gmsh::model::mesh::setTransfiniteAutomatic();
        gmsh::option::setNumber("Mesh.RecombineAll", 1);
    }
    const double two = seconds([] { gmsh::model::mesh::generate(2); });
    time = two + seconds([] { gmsh::model::mesh::generate(3); });
    if (std::getenv("TARVO_TIMING"))
        std::fprintf(stderr, "gmsh 2D %.3f 3D %.3f\n", two, time - two);
    gmsh::option::setNumber("Mesh.RecombineAll", 0);
    std::vector<int> types;
    std::vector<std::vector<std::size_t>> tags, nodes;
    gmsh::model::mesh::getElements(types, tags, nodes, 3);
    size_t n = 0;
    for (const auto& t : tags)
        n += t.size();
    gmsh::clear();
    return n;
}

// Bytes the database holds for the volume's mesh and its boundary, per volume element.
double bytes_per_element(int elements) {
    size_t bytes = 0;
    for (const auto& [owner, piece] : km::mesh_module()->state().pieces()) {
        bytes += sizeof(km::MeshPiece) + piece->nodes.capacity() * sizeof(km::Point3) +
                 piece->params.capacity() * sizeof(double);
        for (const km::ElemBlock& b : piece->blocks)
            bytes += sizeof(b) + b.conn.capacity() * 4;
    }
    return static_cast<double>(bytes) / elements;
}

void measure_database(int elements) {
    const km::MeshPiece* piece = km::mesh_module()->state().piece({3, 1});
    km::NewMesh copy;
    copy.nodes = piece->nodes;
    // The volume's own nodes become new nodes of the copy; the boundary's stay as they are.
    for (const km::ElemBlock& b : piece->blocks) {
        copy.blocks.push_back({b.kind, b.conn});
        for (int& n : copy.blocks.back().conn)
            if (n >= piece->first_node && n < piece->first_node + piece->node_count())
                n = km::NewMesh::local(n - piece->first_node);
    }
    const double fill = seconds([&] {
        km::mesh_module()->publish({3, 1}, std::move(copy), "copy");
    });
    std::printf("  database: %.2f M elements/s filled, %.1f bytes per element (nodes included)\n",
                elements / fill / 1e6, bytes_per_element(elements));
    auto& participants = tarvo::kernel::state().participants;
    const double snap = seconds([&] {
        for (int r = 0; r < 100; ++r)
            for (auto* p : participants)
                p->save_state();
    });
    std::printf("  undo snapshot: %.4f ms\n", snap / 100 * 1e3);
    double mn, mx, mean, sd;
    int imin, imax, group;
    std::vector<int> bad;
    std::string type;
    const double q = seconds([&] {
        TarvoInterface::get_quality_stats("volume", {1}, "Scaled Jacobian", 0.2, false, 0, 0, mn,
                                          mx, mean, sd, imin, imax, bad, type, group, false);
    });
    std::printf("  get_quality_stats: %.3f s (%s, min %.3f, mean %.3f)\n", q, type.c_str(), mn,
                mean);
}

} // namespace

int main(int argc, char** argv) {
    std::vector<double> sizes{0.09, 0.04};
    int hex = 100;
    for (int i = 1; i + 1 < argc; i += 2) {
        if (!std::strcmp(argv[i], "--sizes")) {
            sizes.clear();
            std::stringstream list(argv[i + 1]);
            for (std::string item; std::getline(list, item, ',');)
                sizes.push_back(std::atof(item.c_str()));
        } else if (!std::strcmp(argv[i], "--hex")) {
            hex = std::atoi(argv[i + 1]);
        }
    }
    TarvoMessage::instance()->set_message_handler(std::make_shared<QuietHandler>());
    if (!TarvoInterface::init({"bench_meshing"}))
        return 1;
    kernel("undo off");
    for (double size : sizes) {
        kernel("reset");
        kernel("create box 4 2 2");
        for (int i = 0; i < 3; ++i) {
            kernel("create cylinder radius 0.3 height 4 axis z");
            kernel("move volume " + std::to_string(i + 2) + " by " + std::to_string(i - 1.0) +
                   " 0 0");
        }
        kernel("subtract volume 2 3 4 from volume 1");
        kernel("volume 1 size " + std::to_string(size));
        kernel("volume 1 scheme tetmesh");
        const double ours = seconds([] { kernel("mesh volume 1"); });
        const int elements = TarvoInterface::get_volume_element_count(1);
        double gmsh_time = 0;
        const size_t gmsh_count = gmsh_elements(size, false, 0, gmsh_time);
        std::printf("tets, size %g: ours %d in %.2f s (%.0f/s), Gmsh %zu in %.2f s (%.0f/s), "
                    "ratio %.2f\n",
                    size, elements, ours, elements / ours, gmsh_count, gmsh_time,
                    gmsh_count / gmsh_time, (elements / ours) / (gmsh_count / gmsh_time));
        measure_database(elements);
    }
    kernel("reset");
    kernel("create box 10");
    kernel("volume 1 interval " + std::to_string(hex));
    const double ours = seconds([] { kernel("mesh volume 1"); });
    const int hexes = TarvoInterface::get_hex_count();
    double gmsh_time = 0;
    const size_t gmsh_count = gmsh_elements(10.0 / hex, true, hex, gmsh_time);
    std::printf("hexes, %d per side: ours %d in %.2f s (%.0f/s), Gmsh transfinite %zu in %.2f s "
                "(%.0f/s), ratio %.2f\n",
                hex, hexes, ours, hexes / ours, gmsh_count, gmsh_time, gmsh_count / gmsh_time,
                (hexes / ours) / (gmsh_count / gmsh_time));
    if (hexes > 0)
        measure_database(hexes);
    TarvoInterface::destroy();
    return 0;
}
