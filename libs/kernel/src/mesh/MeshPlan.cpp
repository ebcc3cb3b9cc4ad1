// The plan of a `mesh` command: the unmeshed closure of what is listed, and each volume's method
// (sweep, map or tets) chosen before any surface is meshed, since the method decides how its
// surfaces are meshed. Also how each surface is meshed, and the interval adjustments that let a
// swept source be paved into quads.

#include "core/EntityList.h"
#include "mesh/MeshRun.h"
#include "mesh/Structured.h"
#include "tarvo/TarvoInterface.h"

#include <BRepTools.hxx>
#include <BRepTools_WireExplorer.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Face.hxx>
#include <TopoDS_Wire.hxx>

#include <algorithm>

namespace tarvo::kernel::mesh {

bool MeshRun::plan(const std::vector<EntityKey>& list) {
    std::set<Owner> wanted;
    for (const EntityKey& key : list) {
        if (key.kind == GeomKind::Body) {
            for (int v : model().relatives(GeomKind::Body, key.id, GeomKind::Volume)) {
                wanted.insert({3, v});
                listed.insert({3, v});
            }
            continue;
        }
        const int dim = dim_of_kind(key.kind);
        wanted.insert({dim, key.id});
        listed.insert({dim, key.id});
    }
    std::set<Owner> closure;
    std::vector<Owner> stack(wanted.begin(), wanted.end());
    while (!stack.empty()) {
        const Owner o = stack.back();
        stack.pop_back();
        if (!closure.insert(o).second)
            continue;
        for (int b : m.boundary(o.dim, o.id))
            stack.push_back({o.dim - 1, b});
    }
    for (const Owner& o : closure)
        if (!m.state().meshed(o))
            todo[o.dim].push_back(o.id);
    for (auto& ids : todo)
        std::sort(ids.begin(), ids.end());

    // Each volume's method, chosen before any surface is meshed: it decides how its surfaces are
    // meshed (a swept volume's target is made by the sweep, not by the surface mesher).
    for (int v : todo[3]) {
        const Scheme scheme = scheme_of(GeomKind::Volume, v);
        const bool automatic = scheme == Scheme::Default || scheme == Scheme::Auto;
        std::string why;
        current = {3, v};
        switch (scheme) {
        case Scheme::Polyhedron:
        case Scheme::Sphere:
            return fail("volume " + std::to_string(v) + ": the " + scheme_word(scheme) +
                        " scheme is not available in this kernel (Gmsh 4.8 has no such mesher); "
                        "use sweep, map, tetmesh or auto");
        case Scheme::Pave:
        case Scheme::Trimesh:
            return fail("volume " + std::to_string(v) + ": " + scheme_word(scheme) +
                        " is a surface scheme; use sweep, map, tetmesh or auto");
        default:
            break;
        }
        if (scheme == Scheme::Sweep || automatic) {
            int source = 0, target = 0;
            sweep_surfaces(v, source, target);
            bool found = find_sweep_pair(m, v, source, target, why);
            // Two sweeps toward one shared surface cannot both make it: sweep away from it.
            if (found && claimed.count(target)) {
                const int shared = target;
                source = shared;
                target = 0;
                found = find_sweep_pair(m, v, source, target, why);
            }
            if (found && !m.state().meshed({2, target}) && !claimed.count(target) &&
                linking_surfaces_fit(m, v, source, target, why)) {
                claimed.insert(target);
                method[v] = Method::Sweep;
                sweep_pairs[v] = {source, target};
                std::erase(todo[2], target);
                for (int s : m.boundary(3, v))
                    if (s != source && s != target)
                        linking.try_emplace(s, v);
                if (scheme_of(GeomKind::Surface, source) == Scheme::Default)
                    (m.boundary(2, source).size() == 4 ? mapped : paved).insert(source);
                if (paved.count(source) || scheme_of(GeomKind::Surface, source) == Scheme::Pave)
                    make_even(v, source, target);
            } else if (scheme == Scheme::Sweep) {
                if (why.empty())
                    why = "volume " + std::to_string(v) + " cannot be swept: its target surface " +
                          std::to_string(target) + " is meshed already";
                return fail(why);
            }
        }
        // Submap is honoured as map: the mapper takes logical cubes only.
        if (!method.count(v) &&
            (scheme == Scheme::Map || scheme == Scheme::Submap || (automatic && logical_cube(v)))) {
            method[v] = Method::Map;
            for (int s : m.boundary(3, v))
                mapped.insert(s);
        }
        if (!method.count(v)) {
            method[v] = Method::Tets;
            // Triangles under tets: quads there would need pyramids.
            for (int s : m.boundary(3, v))
                triangulated.insert(s);
        }
    }
    total = static_cast<int>(todo[1].size() + todo[2].size() + todo[3].size() + sweep_pairs.size());
    return true;
}

// Quads can pave a surface only if its boundary has an even number of intervals. When a swept
// volume's paved source has an odd number, one source curve and the target curve that a linking
// band pairs it with get one more interval each (curves without bias or a hard count, and not
// meshed yet), so that the sweep makes hexes only.
void MeshRun::make_even(int volume, int source, int target) {
    const auto intervals = [&](int c) {
        const auto more = extra.find(c);
        return curve_plan(c).intervals + (more == extra.end() ? 0 : more->second);
    };
    int sum = 0;
    for (int c : m.boundary(2, source))
        sum += intervals(c);
    if (sum % 2 == 0)
        return;
    const auto src = m.boundary(2, source), tgt = m.boundary(2, target);
    const auto free = [&](int c) {
        return !m.state().meshed({1, c}) && !extra.count(c) &&
               curve_plan(c).bias == BiasType::None &&
               TarvoInterface::get_mesh_interval_firmness("curve", c) != "HARD";
    };
    for (int band : m.boundary(3, volume)) {
        if (band == source || band == target)
            continue;
        std::vector<int> on_source, on_target;
        for (int c : m.boundary(2, band)) {
            if (std::count(src.begin(), src.end(), c))
                on_source.push_back(c);
            if (std::count(tgt.begin(), tgt.end(), c))
                on_target.push_back(c);
        }
        if (on_source.size() == 1 && on_target.size() == 1 && free(on_source[0]) &&
            free(on_target[0]) && intervals(on_source[0]) == intervals(on_target[0])) {
            extra[on_source[0]] = 1;
            extra[on_target[0]] = 1;
            return;
        }
    }
}

// Six faces of four curves each: worth trying to map.
bool MeshRun::plannable(int volume, std::string& why) {
    question = &why;
    const bool ok = plan({EntityKey{GeomKind::Volume, volume}});
    question = nullptr;
    return ok;
}

bool MeshRun::logical_cube(int volume) const {
    const auto faces = m.boundary(3, volume);
    return faces.size() == 6 && std::all_of(faces.begin(), faces.end(),
                                            [&](int f) { return m.boundary(2, f).size() == 4; });
}

// Whether the four curves of a surface, taken around it, have equal interval counts on opposite
// sides: what a mapped grid needs.
bool MeshRun::opposite_sides_match(int id) const {
    const TopoDS_Face face = TopoDS::Face(model().shape(GeomKind::Surface, id));
    std::vector<int> counts;
    for (BRepTools_WireExplorer e(BRepTools::OuterWire(face), face); e.More(); e.Next()) {
        const int curve = model().id_of(GeomKind::Curve, e.Current());
        if (curve <= 0)
            return false;
        counts.push_back(curve_plan(curve).intervals);
    }
    return counts.size() == 4 && counts[0] == counts[2] && counts[1] == counts[3];
}

// How a surface is meshed ("map", "pave", "trimesh"), or "" with an error printed.
std::string MeshRun::surface_method(int id) {
    const Scheme scheme = scheme_of(GeomKind::Surface, id);
    const size_t sides = m.boundary(2, id).size();
    const bool map = scheme == Scheme::Map || scheme == Scheme::Submap || mapped.count(id) ||
                     (scheme == Scheme::Default && sides == 4 && !paved.count(id) &&
                      !triangulated.count(id) && opposite_sides_match(id));
    if (map && sides != 4) {
        fail("surface " + std::to_string(id) + " cannot be mapped: it has " +
             std::to_string(sides) + " curves, not four");
        return {};
    }
    if (map)
        return "map";
    return scheme == Scheme::Pave || paved.count(id) ? "pave" : "trimesh";
}

} // namespace tarvo::kernel::mesh
