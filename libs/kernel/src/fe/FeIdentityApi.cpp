// Public functions about what containers hold and how entities are known outside the kernel:
// container children, descriptions and properties, the sense of a sideset's surfaces, the ids a
// mesh entity gets in the exported file, the highest id in use and id-free signatures.
//
// Conventions: as in FeApi.cpp, an unknown container, type or id answers the failure value
// without an error line. Element ids of get_element_type(_id) are global (export) ids, as for
// get_element_exists. A node's id in the file is its kernel id (the export writes them as the
// node number map), so its global id is its own id when it is written and 0 when not.
// Threading: kernel thread only.

#include "core/EntityCatalog.h"
#include "core/EntityList.h"
#include "core/Guard.h"
#include "fe/FeModule.h"
#include "geometry/GeometryModule.h"
#include "mesh/MeshModule.h"
#include "tarvo/TarvoInterface.h"

#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <set>

namespace tk = tarvo::kernel;
namespace fe = tarvo::kernel::fe;
using fe::ElemKind;
using fe::Member;

namespace {

template <class T, class F> T query(const char* name, T fail, F&& body) {
    return tk::guarded(name, std::move(fail), [&]() -> T {
        const fe::FeModule* m = fe::fe_module();
        return m ? body(*m) : fail;
    });
}

template <class Map> auto find_in(const Map& map, int id) -> decltype(map.begin()->second.get()) {
    const auto it = map.find(id);
    return it == map.end() ? nullptr : it->second.get();
}

std::vector<int> sorted(std::map<ElemKind, std::vector<int>>& elems, ElemKind kind) {
    std::vector<int> v = elems[kind];
    std::sort(v.begin(), v.end());
    return v;
}

// Whether `volume` uses `face` with the face's stored orientation; nullopt when it does not hold
// it.
std::optional<bool> same_orientation(const TopoDS_Shape& volume, const TopoDS_Shape& face) {
    for (TopExp_Explorer e(volume, TopAbs_FACE); e.More(); e.Next())
        if (e.Current().IsSame(face))
            return e.Current().Orientation() == face.Orientation();
    return std::nullopt;
}

// The laid-out block holding global element `global`, with `index` its place in the block.
const fe::LaidOutBlock* at_global(const fe::Layout& layout, int global, int& index) {
    for (const auto& b : layout.blocks) {
        if (global >= 1 && global <= static_cast<int>(b.elements.size())) {
            index = global - 1;
            return &b;
        }
        global -= static_cast<int>(b.elements.size());
    }
    return nullptr;
}

// Round-off around zero (a centre at 1e-17) would make two signatures of one place differ.
std::string number(double v) {
    char text[32];
    std::snprintf(text, sizeof text, "%.6g", std::abs(v) < 1e-9 ? 0.0 : v);
    return text;
}

} // namespace

namespace TarvoInterface {

int get_block_count() {
    return static_cast<int>(get_block_id_list().size());
}
int get_nodeset_count() {
    return static_cast<int>(get_nodeset_id_list().size());
}
int get_sideset_count() {
    return static_cast<int>(get_sideset_id_list().size());
}

// The element type a block is written with, the face type of a sideset ("" when mixed or
// unmeshed) and "nodeset" for a nodeset.
std::string get_exodus_entity_type(const std::string& entity_type, int entity_id) {
    return query("get_exodus_entity_type", std::string(), [&](const fe::FeModule& m) {
        const std::string type = tk::canonical_entity_type(entity_type);
        if (type == "block") {
            const fe::Block* b = find_in(m.state().blocks, entity_id);
            return b ? fe::FeModule::type_of(*b) : std::string();
        }
        if (type == "sideset")
            return find_in(m.state().sidesets, entity_id) ? get_sideset_element_type(entity_id)
                                                          : std::string();
        if (type == "nodeset" && find_in(m.state().nodesets, entity_id))
            return std::string("nodeset");
        return std::string();
    });
}

std::string get_exodus_entity_description(const std::string& entity_type, int entity_id) {
    return query("get_exodus_entity_description", std::string(), [&](const fe::FeModule& m) {
        const std::string type = tk::canonical_entity_type(entity_type);
        if (type == "block")
            if (const auto* b = find_in(m.state().blocks, entity_id))
                return b->description;
        if (type == "nodeset")
            if (const auto* s = find_in(m.state().nodesets, entity_id))
                return s->description;
        if (type == "sideset")
            if (const auto* s = find_in(m.state().sidesets, entity_id))
                return s->description;
        return std::string();
    });
}

// The model defines no result variables on its containers (a solver writes them into its own
// result file, read with get_all_exodus_variable_names), so there is nothing to list.
int get_exodus_variable_count(const std::string& container_type, int container_id) {
    return static_cast<int>(get_exodus_variable_names(container_type, container_id).size());
}
std::vector<std::string> get_exodus_variable_names(const std::string&, int) {
    return {};
}

// The block's geometry members and all of its elements; blocks hold no groups, and nodes only
// through their elements.
void get_block_children(int block_id, std::vector<int>& groups, std::vector<int>& nodes,
                        std::vector<int>& spheres, std::vector<int>& edges, std::vector<int>& tris,
                        std::vector<int>& faces, std::vector<int>& pyramids, std::vector<int>& tets,
                        std::vector<int>& hexes, std::vector<int>& wedges,
                        std::vector<int>& volumes, std::vector<int>& surfaces,
                        std::vector<int>& curves, std::vector<int>& vertices) {
    groups.clear();
    volumes.clear();
    surfaces.clear();
    curves.clear();
    vertices.clear();
    if (!get_block_elements_and_nodes(block_id, nodes, spheres, edges, tris, faces, pyramids,
                                      wedges, tets, hexes))
        return;
    volumes = get_block_volumes(block_id);
    surfaces = get_block_surfaces(block_id);
    curves = get_block_curves(block_id);
    vertices = get_block_vertices(block_id);
}

void get_nodeset_children(int nodeset_id, std::vector<int>& nodes, std::vector<int>& volumes,
                          std::vector<int>& surfaces, std::vector<int>& curves,
                          std::vector<int>& vertices) {
    nodes = get_nodeset_nodes(nodeset_id);
    volumes = get_nodeset_volumes(nodeset_id);
    surfaces = get_nodeset_surfaces(nodeset_id);
    curves = get_nodeset_curves(nodeset_id);
    vertices = get_nodeset_vertices(nodeset_id);
}

// Faces are the quads of the sideset's surfaces; sidesets hold surfaces only, so no curves.
void get_sideset_children(int sideset_id, std::vector<int>& faces, std::vector<int>& surfaces,
                          std::vector<int>& curves) {
    faces = get_sideset_quads(sideset_id);
    surfaces = get_sideset_surfaces(sideset_id);
    curves = get_sideset_curves(sideset_id);
}

std::vector<int> get_block_faces(int block_id) {
    return query("get_block_faces", std::vector<int>{}, [&](const fe::FeModule& m) {
        const fe::Block* b = find_in(m.state().blocks, block_id);
        if (!b)
            return std::vector<int>{};
        auto elems = fe::FeModule::elements(*b);
        return sorted(elems, ElemKind::Quad);
    });
}

std::vector<int> get_sideset_curves(int sideset_id) {
    return query("get_sideset_curves", std::vector<int>{}, [&](const fe::FeModule&) {
        (void)sideset_id; // a sideset holds (surface, volume) pairs only
        return std::vector<int>{};
    });
}

// How the volumes whose sides the sideset takes on the surface use it, against the surface's
// stored orientation: "forward", "reverse", or "both" when they disagree (a merged surface taken
// from both sides). A surface in no volume is "forward"; one not in the sideset answers "".
std::string get_entity_sense(const std::string& source_type, int source_id, int sideset_id) {
    return query("get_entity_sense", std::string(), [&](const fe::FeModule& m) {
        const fe::SideSet* s = find_in(m.state().sidesets, sideset_id);
        const auto& model = tk::geometry_module()->model();
        if (!s || tk::canonical_entity_type(source_type) != "surface" ||
            !model.exists(tk::GeomKind::Surface, source_id))
            return std::string();
        std::set<int> volumes;
        bool listed = false;
        for (const auto& [surface, wrt] : s->surfaces) {
            if (surface != source_id)
                continue;
            listed = true;
            if (wrt != 0) {
                volumes.insert(wrt);
            } else {
                const auto all =
                    model.relatives(tk::GeomKind::Surface, surface, tk::GeomKind::Volume);
                volumes.insert(all.begin(), all.end());
            }
        }
        if (!listed)
            return std::string();
        const TopoDS_Shape face = model.shape(tk::GeomKind::Surface, source_id);
        std::set<bool> senses;
        for (int v : volumes)
            if (model.exists(tk::GeomKind::Volume, v))
                if (const auto same = same_orientation(model.shape(tk::GeomKind::Volume, v), face))
                    senses.insert(*same);
        if (senses.size() > 1)
            return std::string("both");
        return std::string(senses.empty() || *senses.begin() ? "forward" : "reverse");
    });
}

std::string get_element_type(int element_id) {
    return query("get_element_type", std::string(), [&](const fe::FeModule& m) {
        fe::Layout layout;
        std::string why;
        int index = 0;
        const fe::LaidOutBlock* b =
            m.layout(layout, why) ? at_global(layout, element_id, index) : nullptr;
        return b ? b->type : std::string();
    });
}

int get_element_type_id(int element_id) {
    return query("get_element_type_id", -1, [&](const fe::FeModule& m) {
        fe::Layout layout;
        std::string why;
        int index = 0;
        const fe::LaidOutBlock* b =
            m.layout(layout, why) ? at_global(layout, element_id, index) : nullptr;
        return b ? tk::mesh::info(b->kind).code : -1;
    });
}

int get_node_global_id(int node_id) {
    return query("get_node_global_id", 0, [&](const fe::FeModule& m) {
        const auto& mesh = tk::mesh::mesh_module()->state();
        if (!mesh.find_node(node_id))
            return 0;
        for (const auto& [id, set] : m.state().nodesets) {
            const auto nodes = fe::FeModule::nodes(*set, true);
            if (std::binary_search(nodes.begin(), nodes.end(), node_id))
                return node_id;
        }
        fe::Layout layout;
        std::string why;
        if (!m.layout(layout, why))
            return 0;
        for (const auto& b : layout.blocks) {
            const int n = tk::mesh::info(b.kind).nodes;
            for (int e : b.elements) {
                const int* corners = mesh.find_element(b.kind, e)->nodes();
                if (std::find(corners, corners + n, node_id) != corners + n)
                    return node_id;
            }
        }
        return 0;
    });
}

// The entity's id in the exported file: the global id of an element or node, the container's
// own id for a block, nodeset or sideset; 0 when it is not written.
int get_exodus_id(const std::string& entity_type, int entity_id) {
    const std::string type = tk::canonical_entity_type(entity_type);
    if (type == "node")
        return get_node_global_id(entity_id);
    if (tk::mesh::elem_kind_from_word(type))
        return get_global_element_id(type, entity_id);
    return query("get_exodus_id", 0, [&](const fe::FeModule& m) {
        if (type == "block" || type == "nodeset" || type == "sideset")
            return m.exists(type, entity_id) ? entity_id : 0;
        return 0;
    });
}

int get_last_id(const std::string& entity_type) {
    return tk::guarded("get_last_id", 0, [&] {
        const std::string type = tk::canonical_entity_type(entity_type);
        const tk::EntityCatalog* catalog = type.empty() ? nullptr : tk::catalog_for(type);
        if (!catalog)
            return 0;
        const auto ids = catalog->all_ids(type);
        return ids.empty() ? 0 : ids.back();
    });
}

// Geometry by its centre, a node by its position, an element by the centre of its corners
// (6 significant digits, so that round-off does not change it), a container by its name.
std::string get_idless_signature(const std::string& entity_type, int entity_id) {
    return tk::guarded("get_idless_signature", std::string(), [&] {
        const std::string type = tk::canonical_entity_type(entity_type);
        const auto at = [&](const tk::mesh::Point3& p) {
            return type + " at " + number(p[0]) + " " + number(p[1]) + " " + number(p[2]);
        };
        if (const auto kind = tk::parse_kind(type)) {
            if (!tk::geometry_module()->model().exists(*kind, entity_id))
                return std::string();
            return at(get_center_point(type, entity_id));
        }
        const auto& mesh = tk::mesh::mesh_module()->state();
        if (type == "node") {
            const auto p = mesh.node_position(entity_id);
            return p ? at(*p) : std::string();
        }
        if (const auto kind = tk::mesh::elem_kind_from_word(type)) {
            const auto ref = mesh.find_element(*kind, entity_id);
            if (!ref)
                return std::string();
            tk::mesh::Point3 c{0, 0, 0};
            const int n = tk::mesh::info(*kind).nodes;
            for (int k = 0; k < n; ++k) {
                const auto p = mesh.node_position(ref->nodes()[k]);
                for (int i = 0; i < 3; ++i)
                    c[i] += (*p)[i] / n;
            }
            return at(c);
        }
        const tk::EntityCatalog* catalog = type.empty() ? nullptr : tk::catalog_for(type);
        if (!catalog || !catalog->exists(type, entity_id))
            return std::string();
        const std::string name = catalog->name_of(type, entity_id);
        return name.empty() ? std::string() : type + " with name '" + name + "'";
    });
}

// One signature per entity, joined by "; "; an entity without one leaves an empty place.
std::string get_idless_signatures(const std::string& entity_type,
                                  const std::vector<int>& entity_id_list) {
    std::string out;
    for (size_t i = 0; i < entity_id_list.size(); ++i)
        out += (i ? "; " : "") + get_idless_signature(entity_type, entity_id_list[i]);
    return out;
}

} // namespace TarvoInterface
