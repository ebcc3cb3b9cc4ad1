// `refine <list>`: the listed meshed surfaces and volumes (bodies: their volumes) are meshed
// again, finer: every curve interval of theirs is split in two at its arc-length middle (a bias
// keeps its grading), and surfaces and volumes get half their element size. Methods stay as the
// schemes choose them, so a swept or mapped volume stays hexes. A mesh outside the list that uses
// a curve or surface of theirs would no longer conform: the command is then refused and names it.

#include "core/Command.h"
#include "core/EntityList.h"
#include "mesh/MeshRun.h"

#include <BRepAdaptor_Curve.hxx>
#include <GCPnts_AbscissaPoint.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Edge.hxx>

#include <algorithm>
#include <set>

namespace tarvo::kernel::mesh {

bool MeshModule::refine(const std::vector<EntityKey>& list) {
    return guarded("refine", [&] {
        drop_stale();
        std::set<Owner> top, region;
        for (const EntityKey& key : list) {
            if (key.kind == GeomKind::Body) {
                for (int v : model().relatives(GeomKind::Body, key.id, GeomKind::Volume))
                    top.insert({3, v});
            } else {
                top.insert({dim_of_kind(key.kind), key.id});
            }
        }
        std::vector<Owner> stack(top.begin(), top.end());
        while (!stack.empty()) {
            const Owner o = stack.back();
            stack.pop_back();
            if (!state_.meshed(o))
                return error(std::string(owner_word(o.dim)) + " " + std::to_string(o.id) +
                             " is not meshed: nothing to refine");
            if (!region.insert(o).second)
                continue;
            for (int b : boundary(o.dim, o.id))
                stack.push_back({o.dim - 1, b});
        }
        // Meshes outside that use the region's nodes, all the way up: name the largest.
        std::set<Owner> users;
        std::vector<Owner> up(region.begin(), region.end());
        while (!up.empty()) {
            const Owner o = up.back();
            up.pop_back();
            for (int u : cobounds(o.dim, o.id)) {
                const Owner user{o.dim + 1, u};
                if (state_.meshed(user) && !region.count(user) && users.insert(user).second)
                    up.push_back(user);
            }
        }
        if (!users.empty()) {
            const Owner worst =
                *std::max_element(users.begin(), users.end(),
                                  [](const Owner& a, const Owner& b) { return a.dim < b.dim; });
            return error("refining would break the mesh of " + std::string(owner_word(worst.dim)) +
                         " " + std::to_string(worst.id) +
                         ", which shares their boundary: list it too");
        }
        // Each old interval in two, measured along the curve.
        RunOptions options;
        options.size_factor = 0.5;
        for (const Owner& o : region) {
            if (o.dim != 1)
                continue;
            const MeshPiece& piece = *state_.piece(o);
            BRepAdaptor_Curve curve(TopoDS::Edge(model().shape(GeomKind::Curve, o.id)));
            std::vector<double> params{curve.FirstParameter()};
            params.insert(params.end(), piece.params.begin(), piece.params.end());
            params.push_back(curve.LastParameter());
            auto& lengths = options.curve_lengths[o.id];
            for (size_t i = 0; i + 1 < params.size(); ++i) {
                const double l = GCPnts_AbscissaPoint::Length(curve, params[i], params[i + 1]);
                lengths.insert(lengths.end(), {l / 2, l / 2});
            }
        }
        for (const Owner& o : region) {
            state_.remove(o);
            shapes_.erase(o);
        }
        errors_.clear();
        MeshRun run(*this, std::move(options));
        std::vector<EntityKey> keys;
        for (const Owner& o : top)
            keys.push_back({kind_of_dim(o.dim), o.id});
        return run.run(keys);
    });
}

namespace {

bool refine_command(Cursor& c) {
    EntityList list;
    if (!c.entity_list(list))
        return c.fail("expected an entity list");
    if (!c.expect_end())
        return false;
    std::vector<EntityKey> keys;
    for (const auto& group : list.groups) {
        const auto kind = parse_kind(group.type);
        if (!kind || *kind == GeomKind::Vertex || *kind == GeomKind::Curve)
            return c.fail("'" + group.type +
                          "' cannot be refined: list surfaces, volumes or bodies");
        for (int id : group.ids)
            keys.push_back({*kind, id});
    }
    if (keys.empty())
        return c.fail("nothing to refine: the list is empty");
    return mesh_module()->refine(keys);
}

} // namespace

void register_refine_commands() {
    register_command({"refine", refine_command, true, "refine <list>"});
}

} // namespace tarvo::kernel::mesh
