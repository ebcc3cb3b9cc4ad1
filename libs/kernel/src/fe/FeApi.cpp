// Public functions of blocks, node sets and side sets, and the global (export) element ids,
// answered from FeState and the live mesh.
//
// Conventions: an unknown container, type or id answers the failure value without an error line
// (monitors ask about containers that may just have gone). Attribute indices are 0-based here;
// the command counts them from 1.
//
// Threading: kernel thread only.

#include "core/EntityList.h"
#include "core/Guard.h"
#include "fe/FeModule.h"
#include "geometry/GeometryModule.h"
#include "mesh/MeshModule.h"
#include "tarvo/TarvoInterface.h"

#include <algorithm>
#include <optional>
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

const fe::Block* block_of(const fe::FeModule& m, int id) {
    const auto it = m.state().blocks.find(id);
    return it == m.state().blocks.end() ? nullptr : it->second.get();
}
const fe::NodeSet* nodeset_of(const fe::FeModule& m, int id) {
    const auto it = m.state().nodesets.find(id);
    return it == m.state().nodesets.end() ? nullptr : it->second.get();
}
const fe::SideSet* sideset_of(const fe::FeModule& m, int id) {
    const auto it = m.state().sidesets.find(id);
    return it == m.state().sidesets.end() ? nullptr : it->second.get();
}

template <class Map> std::vector<int> ids_of(const Map& map) {
    std::vector<int> out;
    for (const auto& [id, piece] : map)
        out.push_back(id);
    return out;
}

template <class Map> int next_id(const Map& map) {
    return map.empty() ? 1 : map.rbegin()->first + 1;
}

// Live geometry members of dimension `dim`, ascending.
std::vector<int> geometry(const std::vector<Member>& members, int dim) {
    std::set<int> out;
    for (const Member& m : members)
        if (m.type == Member::Type::Geometry && m.dim == dim && fe::member_exists(m))
            out.insert(m.id);
    return {out.begin(), out.end()};
}

std::vector<int> block_elements(int block_id, ElemKind kind) {
    return query("block elements", std::vector<int>{}, [&](const fe::FeModule& m) {
        const fe::Block* b = block_of(m, block_id);
        if (!b)
            return std::vector<int>{};
        auto elems = fe::FeModule::elements(*b);
        std::vector<int> out = elems[kind];
        std::sort(out.begin(), out.end());
        return out;
    });
}

// The nodes of the block's elements, mid-nodes of a higher-order type included.
std::vector<int> block_nodes(const fe::Block& b) {
    const auto& mesh = tk::mesh::mesh_module()->state();
    const fe::ElementType* type = fe::find_element_type(b.element_type);
    std::optional<tk::mesh::MidIndex> mids;
    if (type && !type->mids.empty())
        mids.emplace(mesh);
    std::set<int> out;
    for (const auto& [kind, ids] : fe::FeModule::elements(b))
        for (int e : ids) {
            const auto ref = mesh.find_element(kind, e);
            out.insert(ref->nodes(), ref->nodes() + tk::mesh::info(kind).nodes);
            if (mids && kind == type->kind)
                for (int node : fe::FeModule::expanded_nodes(*type, ref->nodes(), *mids))
                    out.insert(node);
        }
    return {out.begin(), out.end()};
}

// The block's attribute at `index` (0-based), or nothing.
template <class T, class F> T attribute(int block_id, int index, T fail, F&& get) {
    return query("block attribute", fail, [&](const fe::FeModule& m) {
        const fe::Block* b = block_of(m, block_id);
        if (!b || index < 0 || index >= static_cast<int>(b->attributes.size()))
            return fail;
        return get(*b, index);
    });
}

// Global element id of (kind, id): its place in the export layout, 1-based; 0 when in no block.
int global_id(ElemKind kind, int id) {
    return query("global element id", 0, [&](const fe::FeModule& m) {
        fe::Layout layout;
        std::string why;
        if (!m.layout(layout, why))
            return 0;
        int offset = 0;
        for (const auto& b : layout.blocks) {
            if (b.kind == kind) {
                const auto it = std::find(b.elements.begin(), b.elements.end(), id);
                if (it != b.elements.end())
                    return offset + static_cast<int>(it - b.elements.begin()) + 1;
            }
            offset += static_cast<int>(b.elements.size());
        }
        return 0;
    });
}

// The laid-out block that holds global element `global`, or null.
template <class F> auto at_global(int global, F&& answer) {
    return query("element by global id", answer(nullptr), [&](const fe::FeModule& m) {
        fe::Layout layout;
        std::string why;
        if (global <= 0 || !m.layout(layout, why))
            return answer(nullptr);
        for (const auto& b : layout.blocks) {
            if (global <= static_cast<int>(b.elements.size()))
                return answer(&b);
            global -= static_cast<int>(b.elements.size());
        }
        return answer(nullptr);
    });
}

} // namespace

namespace TarvoInterface {

std::vector<int> get_block_id_list() {
    return query("get_block_id_list", std::vector<int>{},
                 [](const fe::FeModule& m) { return ids_of(m.state().blocks); });
}
std::vector<int> get_nodeset_id_list() {
    return query("get_nodeset_id_list", std::vector<int>{},
                 [](const fe::FeModule& m) { return ids_of(m.state().nodesets); });
}
std::vector<int> get_sideset_id_list() {
    return query("get_sideset_id_list", std::vector<int>{},
                 [](const fe::FeModule& m) { return ids_of(m.state().sidesets); });
}
int get_next_block_id() {
    return query("get_next_block_id", -1,
                 [](const fe::FeModule& m) { return next_id(m.state().blocks); });
}
int get_next_nodeset_id() {
    return query("get_next_nodeset_id", -1,
                 [](const fe::FeModule& m) { return next_id(m.state().nodesets); });
}
int get_next_sideset_id() {
    return query("get_next_sideset_id", -1,
                 [](const fe::FeModule& m) { return next_id(m.state().sidesets); });
}

int get_block_id(const std::string& entity_type, int entity_id) {
    return query("get_block_id", 0, [&](const fe::FeModule& m) {
        const std::string type = tk::canonical_entity_type(entity_type);
        const auto kind = tk::parse_kind(type);
        const auto elem = tk::mesh::elem_kind_from_word(type);
        for (const auto& [id, b] : m.state().blocks) {
            if (kind) {
                const auto ids = geometry(b->members, tk::mesh::dim_of_kind(*kind));
                if (std::binary_search(ids.begin(), ids.end(), entity_id))
                    return id;
            } else if (elem) {
                const auto elems = fe::FeModule::elements(*b);
                const auto it = elems.find(*elem);
                if (it != elems.end() &&
                    std::find(it->second.begin(), it->second.end(), entity_id) != it->second.end())
                    return id;
            }
        }
        return 0;
    });
}

// Corners, then the mid-nodes of the type of the element's block, in the Exodus order.
std::vector<int> get_expanded_connectivity(const std::string& entity_type, int entity_id) {
    std::vector<int> corners = get_connectivity(entity_type, entity_id);
    const auto kind = tk::mesh::elem_kind_from_word(tk::canonical_entity_type(entity_type));
    const int block = kind && !corners.empty() ? get_block_id(entity_type, entity_id) : 0;
    return query("get_expanded_connectivity", corners, [&](const fe::FeModule& m) {
        const fe::Block* b = block_of(m, block);
        const fe::ElementType* type = b ? fe::find_element_type(b->element_type) : nullptr;
        if (!type || type->mids.empty() || type->kind != *kind)
            return corners;
        const tk::mesh::MidIndex mids(tk::mesh::mesh_module()->state());
        const auto all = fe::FeModule::expanded_nodes(*type, corners.data(), mids);
        return all.empty() ? corners : all;
    });
}

std::string get_copy_block_on_geometry_copy_setting() {
    return query("get_copy_block_on_geometry_copy_setting", std::string(),
                 [](const fe::FeModule& m) { return m.copy_setting(0); });
}

std::string get_copy_nodeset_on_geometry_copy_setting() {
    return query("get_copy_nodeset_on_geometry_copy_setting", std::string(),
                 [](const fe::FeModule& m) { return m.copy_setting(1); });
}

std::string get_copy_sideset_on_geometry_copy_setting() {
    return query("get_copy_sideset_on_geometry_copy_setting", std::string(),
                 [](const fe::FeModule& m) { return m.copy_setting(2); });
}

std::vector<int> get_block_volumes(int block_id) {
    return query("get_block_volumes", std::vector<int>{}, [&](const fe::FeModule& m) {
        const fe::Block* b = block_of(m, block_id);
        return b ? geometry(b->members, 3) : std::vector<int>{};
    });
}
std::vector<int> get_block_surfaces(int block_id) {
    return query("get_block_surfaces", std::vector<int>{}, [&](const fe::FeModule& m) {
        const fe::Block* b = block_of(m, block_id);
        return b ? geometry(b->members, 2) : std::vector<int>{};
    });
}
std::vector<int> get_block_curves(int block_id) {
    return query("get_block_curves", std::vector<int>{}, [&](const fe::FeModule& m) {
        const fe::Block* b = block_of(m, block_id);
        return b ? geometry(b->members, 1) : std::vector<int>{};
    });
}
std::vector<int> get_block_vertices(int block_id) {
    return query("get_block_vertices", std::vector<int>{}, [&](const fe::FeModule& m) {
        const fe::Block* b = block_of(m, block_id);
        return b ? geometry(b->members, 0) : std::vector<int>{};
    });
}

std::vector<int> get_block_hexes(int block_id) {
    return block_elements(block_id, ElemKind::Hex);
}
std::vector<int> get_block_tets(int block_id) {
    return block_elements(block_id, ElemKind::Tet);
}
std::vector<int> get_block_wedges(int block_id) {
    return block_elements(block_id, ElemKind::Wedge);
}
std::vector<int> get_block_pyramids(int block_id) {
    return block_elements(block_id, ElemKind::Pyramid);
}
std::vector<int> get_block_tris(int block_id) {
    return block_elements(block_id, ElemKind::Tri);
}
std::vector<int> get_block_edges(int block_id) {
    return block_elements(block_id, ElemKind::Edge);
}

std::vector<int> get_block_nodes(int block_id) {
    return query("get_block_nodes", std::vector<int>{}, [&](const fe::FeModule& m) {
        const fe::Block* b = block_of(m, block_id);
        return b ? block_nodes(*b) : std::vector<int>{};
    });
}

bool get_block_elements_and_nodes(int block_id, std::vector<int>& nodes, std::vector<int>& spheres,
                                  std::vector<int>& edges, std::vector<int>& tris,
                                  std::vector<int>& faces, std::vector<int>& pyramids,
                                  std::vector<int>& wedges, std::vector<int>& tets,
                                  std::vector<int>& hexes) {
    return query("get_block_elements_and_nodes", false, [&](const fe::FeModule& m) {
        const fe::Block* b = block_of(m, block_id);
        if (!b)
            return false;
        auto elems = fe::FeModule::elements(*b);
        const auto sorted = [&](ElemKind k) {
            std::vector<int> v = elems[k];
            std::sort(v.begin(), v.end());
            return v;
        };
        nodes = block_nodes(*b);
        spheres = sorted(ElemKind::Sphere);
        edges = sorted(ElemKind::Edge);
        tris = sorted(ElemKind::Tri);
        faces = sorted(ElemKind::Quad);
        pyramids = sorted(ElemKind::Pyramid);
        wedges = sorted(ElemKind::Wedge);
        tets = sorted(ElemKind::Tet);
        hexes = sorted(ElemKind::Hex);
        return true;
    });
}

std::string get_block_element_type(int block_id) {
    return query("get_block_element_type", std::string(), [&](const fe::FeModule& m) {
        const fe::Block* b = block_of(m, block_id);
        return b ? fe::FeModule::type_of(*b) : std::string();
    });
}

std::vector<std::string> get_valid_block_element_types(int block_id) {
    return query("get_valid_block_element_types", std::vector<std::string>{},
                 [&](const fe::FeModule& m) {
                     std::vector<std::string> out;
                     const fe::Block* b = block_of(m, block_id);
                     if (!b)
                         return out;
                     fe::Block contents = *b;
                     contents.element_type.clear();
                     const int dim = fe::FeModule::dimension(contents);
                     for (const auto& t : fe::element_types())
                         if (dim < 0 || t.dim == dim)
                             out.emplace_back(t.name);
                     return out;
                 });
}

int get_block_attribute_count(int block_id) {
    return query("get_block_attribute_count", 0, [&](const fe::FeModule& m) {
        const fe::Block* b = block_of(m, block_id);
        return b ? static_cast<int>(b->attributes.size()) : 0;
    });
}
// Every element of a block carries the block's attributes.
int get_block_element_attribute_count(int block_id) {
    return get_block_attribute_count(block_id);
}
double get_block_attribute_value(int block_id, int attribute_index) {
    return attribute(block_id, attribute_index, 0.0,
                     [](const fe::Block& b, int i) { return b.attributes[i]; });
}
std::string get_block_attribute_name(int block_id, int attribute_index) {
    return attribute(block_id, attribute_index, std::string(),
                     [](const fe::Block& b, int i) { return b.attribute_names[i]; });
}
std::vector<std::string> get_block_element_attribute_names(int block_id) {
    return query("get_block_element_attribute_names", std::vector<std::string>{},
                 [&](const fe::FeModule& m) {
                     const fe::Block* b = block_of(m, block_id);
                     return b ? b->attribute_names : std::vector<std::string>{};
                 });
}

std::vector<int> get_nodeset_volumes(int nodeset_id) {
    return query("get_nodeset_volumes", std::vector<int>{}, [&](const fe::FeModule& m) {
        const fe::NodeSet* s = nodeset_of(m, nodeset_id);
        return s ? geometry(s->members, 3) : std::vector<int>{};
    });
}
std::vector<int> get_nodeset_surfaces(int nodeset_id) {
    return query("get_nodeset_surfaces", std::vector<int>{}, [&](const fe::FeModule& m) {
        const fe::NodeSet* s = nodeset_of(m, nodeset_id);
        return s ? geometry(s->members, 2) : std::vector<int>{};
    });
}
std::vector<int> get_nodeset_curves(int nodeset_id) {
    return query("get_nodeset_curves", std::vector<int>{}, [&](const fe::FeModule& m) {
        const fe::NodeSet* s = nodeset_of(m, nodeset_id);
        return s ? geometry(s->members, 1) : std::vector<int>{};
    });
}
std::vector<int> get_nodeset_vertices(int nodeset_id) {
    return query("get_nodeset_vertices", std::vector<int>{}, [&](const fe::FeModule& m) {
        const fe::NodeSet* s = nodeset_of(m, nodeset_id);
        return s ? geometry(s->members, 0) : std::vector<int>{};
    });
}
std::vector<int> get_nodeset_nodes(int nodeset_id) {
    return query("get_nodeset_nodes", std::vector<int>{}, [&](const fe::FeModule& m) {
        const fe::NodeSet* s = nodeset_of(m, nodeset_id);
        return s ? fe::FeModule::nodes(*s, false) : std::vector<int>{};
    });
}
std::vector<int> get_nodeset_nodes_inclusive(int nodeset_id) {
    return query("get_nodeset_nodes_inclusive", std::vector<int>{}, [&](const fe::FeModule& m) {
        const fe::NodeSet* s = nodeset_of(m, nodeset_id);
        return s ? fe::FeModule::nodes(*s, true) : std::vector<int>{};
    });
}
int get_nodeset_node_count(int nodeset_id) {
    return static_cast<int>(get_nodeset_nodes_inclusive(nodeset_id).size());
}

std::vector<int> get_sideset_surfaces(int sideset_id) {
    return query("get_sideset_surfaces", std::vector<int>{}, [&](const fe::FeModule& m) {
        std::set<int> out;
        if (const fe::SideSet* s = sideset_of(m, sideset_id))
            for (const auto& [surface, wrt] : s->surfaces)
                if (tk::geometry_module()->model().exists(tk::GeomKind::Surface, surface))
                    out.insert(surface);
        return std::vector<int>(out.begin(), out.end());
    });
}

// The tris or quads of the sideset's surfaces.
static std::vector<int> sideset_faces(int sideset_id, ElemKind kind) {
    std::vector<int> out;
    const auto& mesh = tk::mesh::mesh_module()->state();
    for (int s : get_sideset_surfaces(sideset_id))
        if (const auto* piece = mesh.piece({2, s}))
            for (const auto& b : piece->blocks)
                if (b.kind == kind)
                    for (int i = 0; i < b.count(); ++i)
                        out.push_back(b.first_id + i);
    std::sort(out.begin(), out.end());
    return out;
}

std::vector<int> get_sideset_quads(int sideset_id) {
    return sideset_faces(sideset_id, ElemKind::Quad);
}

// QUAD4 or TRI3 when every face of the sideset's surfaces is of that kind; "" when mixed or
// unmeshed.
std::string get_sideset_element_type(int sideset_id) {
    const bool quads = !sideset_faces(sideset_id, ElemKind::Quad).empty();
    const bool tris = !sideset_faces(sideset_id, ElemKind::Tri).empty();
    return quads == tris ? "" : quads ? "QUAD4" : "TRI3";
}

std::string get_wrt_entity(const std::string& source_type, int source_id, int sideset_id) {
    return query("get_wrt_entity", std::string(), [&](const fe::FeModule& m) {
        const fe::SideSet* s = sideset_of(m, sideset_id);
        if (!s || tk::canonical_entity_type(source_type) != "surface")
            return std::string();
        for (const auto& [surface, wrt] : s->surfaces)
            if (surface == source_id && wrt != 0)
                return "volume " + std::to_string(wrt);
        return std::string();
    });
}

std::string get_exodus_entity_name(const std::string& entity_type, int entity_id) {
    return query("get_exodus_entity_name", std::string(), [&](const fe::FeModule& m) {
        const std::string type = tk::canonical_entity_type(entity_type);
        // Boundary conditions are named by the module above this one that owns them.
        const tk::EntityCatalog* owner = m.handles(type) ? &m : tk::catalog_for(type);
        return owner ? owner->name_of(type, entity_id) : std::string();
    });
}

int get_exodus_element_count(int entity_id, const std::string& entity_type) {
    return query("get_exodus_element_count", 0, [&](const fe::FeModule& m) {
        const std::string type = tk::canonical_entity_type(entity_type);
        if (type == "block") {
            const fe::Block* b = block_of(m, entity_id);
            int count = 0;
            if (b)
                for (const auto& [kind, ids] : fe::FeModule::elements(*b))
                    count += static_cast<int>(ids.size());
            return count;
        }
        if (type == "sideset") {
            const fe::SideSet* s = sideset_of(m, entity_id);
            return s ? static_cast<int>(fe::FeModule::sides(*s).size()) : 0;
        }
        if (type == "nodeset") {
            const fe::NodeSet* s = nodeset_of(m, entity_id);
            return s ? static_cast<int>(fe::FeModule::nodes(*s, true).size()) : 0;
        }
        return 0;
    });
}

// Containers first, then geometry from bodies down to vertices.
int get_id_from_name(const std::string& name) {
    return query("get_id_from_name", 0, [&](const fe::FeModule& m) {
        for (const char* type : {"block", "nodeset", "sideset"})
            for (int id : m.all_ids(type))
                if (!name.empty() && m.name_of(type, id) == name)
                    return id;
        const auto& model = tk::geometry_module()->model();
        for (tk::GeomKind kind : {tk::GeomKind::Body, tk::GeomKind::Volume, tk::GeomKind::Surface,
                                  tk::GeomKind::Curve, tk::GeomKind::Vertex})
            for (int id : model.ids(kind))
                if (!name.empty() && model.name_of(kind, id) == name)
                    return id;
        return 0;
    });
}

int get_global_element_id(const std::string& element_type, int id) {
    const auto kind = tk::mesh::elem_kind_from_word(tk::canonical_entity_type(element_type));
    return kind ? global_id(*kind, id) : 0;
}
int get_hex_global_element_id(int id) {
    return global_id(ElemKind::Hex, id);
}
int get_tet_global_element_id(int id) {
    return global_id(ElemKind::Tet, id);
}
int get_wedge_global_element_id(int id) {
    return global_id(ElemKind::Wedge, id);
}
int get_pyramid_global_element_id(int id) {
    return global_id(ElemKind::Pyramid, id);
}
int get_tri_global_element_id(int id) {
    return global_id(ElemKind::Tri, id);
}
int get_quad_global_element_id(int id) {
    return global_id(ElemKind::Quad, id);
}
int get_edge_global_element_id(int id) {
    return global_id(ElemKind::Edge, id);
}
int get_sphere_global_element_id(int id) {
    return global_id(ElemKind::Sphere, id);
}

// Element ids here are global (export) ids.
bool get_element_exists(int element_id) {
    return at_global(element_id, [](const fe::LaidOutBlock* b) { return b != nullptr; });
}
int get_element_block(int element_id) {
    return at_global(element_id, [](const fe::LaidOutBlock* b) { return b ? b->block->id : 0; });
}

} // namespace TarvoInterface
