// Public mesh queries: counts, meshed state and the mesh entities, answered from MeshState.
//
// Conventions: an unknown type or id answers the failure value without an error line (monitors
// ask about entities that may just have gone). Mesh entity types are the command language's
// words (node, edge, tri, quad, tet, hex, wedge, pyramid, sphere), any case or plural.
//
// Threading: kernel thread only.

#include "core/EntityList.h"
#include "core/Guard.h"
#include "geometry/GeometryModule.h"
#include "mesh/MeshModule.h"
#include "tarvo/TarvoInterface.h"

#include <cmath>
#include <limits>

namespace tk = tarvo::kernel;
namespace km = tarvo::kernel::mesh;
using km::ElemKind;
using km::Owner;

namespace {

const km::MeshState* mesh_state() {
    auto* m = km::mesh_module();
    return m ? &m->state() : nullptr;
}

template <class T, class F> T query(const char* name, T fail, F&& body) {
    return tk::guarded(name, std::move(fail), [&]() -> T {
        const km::MeshState* s = mesh_state();
        return s ? body(*s) : fail;
    });
}

std::optional<ElemKind> elem_kind(const std::string& type) {
    return km::elem_kind_from_word(tk::canonical_entity_type(type));
}

bool is_node(const std::string& type) {
    return tk::canonical_entity_type(type) == "node";
}

// (dim, id) of a geometry entity named by type; nullopt for a body or an unknown type.
std::optional<Owner> owner_of(const std::string& type, int id) {
    const auto kind = tk::parse_kind(type);
    if (!kind)
        return std::nullopt;
    const int dim = km::dim_of_kind(*kind);
    if (dim < 0)
        return std::nullopt;
    return Owner{dim, id};
}

int count(ElemKind kind) {
    return query("element count", 0, [&](const km::MeshState& s) { return s.element_count(kind); });
}

double distance(const km::Point3& a, const km::Point3& b) {
    return std::sqrt((a[0] - b[0]) * (a[0] - b[0]) + (a[1] - b[1]) * (a[1] - b[1]) +
                     (a[2] - b[2]) * (a[2] - b[2]));
}

// Element types in finite-element terms, as blocks will name them.
const char* element_type_name(ElemKind kind) {
    static const char* const names[] = {"BAR2", "TRI3",   "QUAD4",    "TET4",
                                        "HEX8", "WEDGE6", "PYRAMID5", "SPHERE"};
    return names[static_cast<int>(kind)];
}

// Elements of `kind` that use `node`: the node's own piece and the pieces above it.
std::vector<int> elements_at_node(ElemKind kind, int node) {
    return query("elements at node", std::vector<int>{}, [&](const km::MeshState& s) {
        std::vector<int> out;
        const auto ref = s.find_node(node);
        if (!ref)
            return out;
        for (const auto& [owner, piece] : s.pieces()) {
            if (owner.dim < ref->piece->owner.dim)
                continue;
            for (const km::ElemBlock& b : piece->blocks) {
                if (b.kind != kind)
                    continue;
                const int n = km::info(kind).nodes;
                for (int e = 0; e < b.count(); ++e)
                    for (int k = 0; k < n; ++k)
                        if (b.conn[e * n + k] == node) {
                            out.push_back(b.first_id + e);
                            break;
                        }
            }
        }
        std::sort(out.begin(), out.end());
        return out;
    });
}

// Elements of `kind` that the geometry entity owns itself.
std::vector<int> own_elements(int dim, int id, ElemKind kind) {
    return query("elements of an entity", std::vector<int>{}, [&](const km::MeshState& s) {
        std::vector<int> out;
        if (const km::MeshPiece* p = s.piece({dim, id}))
            for (const km::ElemBlock& b : p->blocks)
                if (b.kind == kind)
                    for (int i = 0; i < b.count(); ++i)
                        out.push_back(b.first_id + i);
        return out;
    });
}

// Nodes in the geometry entity, its boundary included, ascending.
std::vector<int> closure_nodes(int dim, int id) {
    return query("nodes of an entity", std::vector<int>{}, [&](const km::MeshState&) {
        std::vector<int> out;
        for (const km::MeshPiece* p : km::mesh_module()->closure({dim, id}))
            for (int i = 0; i < p->node_count(); ++i)
                out.push_back(p->first_node + i);
        std::sort(out.begin(), out.end());
        return out;
    });
}

} // namespace

namespace TarvoInterface {

int get_hex_count() {
    return count(ElemKind::Hex);
}
int get_pyramid_count() {
    return count(ElemKind::Pyramid);
}
int get_tet_count() {
    return count(ElemKind::Tet);
}
int get_quad_count() {
    return count(ElemKind::Quad);
}
int get_tri_count() {
    return count(ElemKind::Tri);
}
int get_edge_count() {
    return count(ElemKind::Edge);
}
int get_sphere_count() {
    return count(ElemKind::Sphere);
}

int get_node_count() {
    return query("get_node_count", 0, [](const km::MeshState& s) { return s.node_count(); });
}

int get_element_count() {
    return query("get_element_count", 0, [](const km::MeshState& s) {
        int n = 0;
        for (const auto& k : km::kElemKinds)
            n += s.element_count(k.kind);
        return n;
    });
}

bool is_meshed(const std::string& geometry_type, int entity_id) {
    return query("is_meshed", false, [&](const km::MeshState& s) {
        const auto kind = tk::parse_kind(geometry_type);
        if (kind == tk::GeomKind::Body) {
            const auto vols = tk::geometry_module()->model().relatives(
                tk::GeomKind::Body, entity_id, tk::GeomKind::Volume);
            return !vols.empty() && std::all_of(vols.begin(), vols.end(), [&](int v) {
                return s.meshed({3, v});
            });
        }
        const auto owner = owner_of(geometry_type, entity_id);
        return owner && s.meshed(*owner);
    });
}

int get_volume_element_count(int volume_id) {
    return query("get_volume_element_count", 0, [&](const km::MeshState& s) {
        const km::MeshPiece* p = s.piece({3, volume_id});
        return p ? p->element_count() : 0;
    });
}

int get_surface_element_count(int surface_id) {
    return query("get_surface_element_count", 0, [&](const km::MeshState& s) {
        const km::MeshPiece* p = s.piece({2, surface_id});
        return p ? p->element_count() : 0;
    });
}

bool volume_contains_tets(int volume_id) {
    return query("volume_contains_tets", false, [&](const km::MeshState& s) {
        const km::MeshPiece* p = s.piece({3, volume_id});
        return p && p->count(ElemKind::Tet) > 0;
    });
}

std::string get_default_element_type() {
    return "HEX8";
}

double get_mesh_edge_length(int edge_id) {
    return query("get_mesh_edge_length", 0.0, [&](const km::MeshState& s) {
        const auto ref = s.find_element(ElemKind::Edge, edge_id);
        if (!ref)
            return 0.0;
        return distance(*s.node_position(ref->nodes()[0]), *s.node_position(ref->nodes()[1]));
    });
}

// ---- Mesh entities ------------------------------------------------------------------------------

std::string get_geometry_owner(const std::string& entity_type, int entity_id) {
    return query("get_geometry_owner", std::string(), [&](const km::MeshState& s) {
        const km::MeshPiece* piece = nullptr;
        if (is_node(entity_type)) {
            if (auto ref = s.find_node(entity_id))
                piece = ref->piece;
        } else if (auto kind = elem_kind(entity_type)) {
            if (auto ref = s.find_element(*kind, entity_id))
                piece = ref->piece;
        }
        return piece ? std::string(km::owner_word(piece->owner.dim)) + " " +
                           std::to_string(piece->owner.id)
                     : std::string();
    });
}

std::vector<int> get_connectivity(const std::string& entity_type, int entity_id) {
    return query("get_connectivity", std::vector<int>{}, [&](const km::MeshState& s) {
        const auto kind = elem_kind(entity_type);
        if (is_node(entity_type)) {
            return s.find_node(entity_id) ? std::vector<int>{entity_id} : std::vector<int>{};
        }
        const auto ref = kind ? s.find_element(*kind, entity_id) : std::nullopt;
        if (!ref)
            return std::vector<int>{};
        return std::vector<int>(ref->nodes(), ref->nodes() + km::info(*kind).nodes);
    });
}

bool get_node_exists(int node_id) {
    return query("get_node_exists", false,
                 [&](const km::MeshState& s) { return s.find_node(node_id).has_value(); });
}

std::array<double, 3> get_nodal_coordinates(int node_id) {
    return query("get_nodal_coordinates", std::array<double, 3>{}, [&](const km::MeshState& s) {
        return s.node_position(node_id).value_or(km::Point3{});
    });
}

int get_closest_node(double x, double y, double z) {
    return query("get_closest_node", 0, [&](const km::MeshState& s) {
        int best = 0;
        double best_d = std::numeric_limits<double>::infinity();
        for (const auto& [owner, piece] : s.pieces())
            for (int i = 0; i < piece->node_count(); ++i) {
                const double d = distance(piece->nodes[i], {x, y, z});
                if (d < best_d) {
                    best_d = d;
                    best = piece->first_node + i;
                }
            }
        return best;
    });
}

std::vector<int> get_node_faces(int node_id) {
    return elements_at_node(ElemKind::Quad, node_id);
}
std::vector<int> get_node_tris(int node_id) {
    return elements_at_node(ElemKind::Tri, node_id);
}

// Smoothing moves nodes inside surfaces and volumes only: nodes at vertices and on curves stay.
bool get_node_position_fixed(int node_id) {
    return query("get_node_position_fixed", false, [&](const km::MeshState& s) {
        const auto ref = s.find_node(node_id);
        return ref && ref->piece->owner.dim <= 1;
    });
}

void get_owning_volume_ids(const std::string& entity_type, std::vector<int>& entity_list,
                           std::vector<int>& volume_ids) {
    volume_ids.clear();
    tk::guarded("get_owning_volume_ids", false, [&] {
        const km::MeshState* s = mesh_state();
        const auto kind = elem_kind(entity_type);
        for (int id : entity_list) {
            int volume = 0;
            if (s && kind)
                if (auto ref = s->find_element(*kind, id); ref && ref->piece->owner.dim == 3)
                    volume = ref->piece->owner.id;
            volume_ids.push_back(volume);
        }
        return true;
    });
}

std::string get_mesh_element_type(const std::string& entity_type, int entity_id) {
    return query("get_mesh_element_type", std::string(), [&](const km::MeshState& s) {
        if (auto kind = elem_kind(entity_type))
            return s.find_element(*kind, entity_id) ? std::string(element_type_name(*kind))
                                                    : std::string();
        const auto owner = owner_of(entity_type, entity_id);
        const km::MeshPiece* p = owner ? s.piece(*owner) : nullptr;
        if (!p || p->blocks.empty())
            return std::string();
        // The kind with the most elements names the entity's mesh.
        const km::ElemBlock* most = &p->blocks.front();
        for (const km::ElemBlock& b : p->blocks)
            if (b.count() > most->count())
                most = &b;
        return std::string(element_type_name(most->kind));
    });
}

std::vector<int> get_volume_hexes(int volume_id) {
    return own_elements(3, volume_id, ElemKind::Hex);
}
std::vector<int> get_volume_tets(int volume_id) {
    return own_elements(3, volume_id, ElemKind::Tet);
}
std::vector<int> get_surface_quads(int surface_id) {
    return own_elements(2, surface_id, ElemKind::Quad);
}
std::vector<int> get_surface_tris(int surface_id) {
    return own_elements(2, surface_id, ElemKind::Tri);
}
std::vector<int> get_curve_edges(int curve_id) {
    return own_elements(1, curve_id, ElemKind::Edge);
}

std::vector<int> get_volume_nodes(int volume_id) {
    return closure_nodes(3, volume_id);
}
std::vector<int> get_surface_nodes(int surface_id) {
    return closure_nodes(2, surface_id);
}
std::vector<int> get_curve_nodes(int curve_id) {
    return closure_nodes(1, curve_id);
}

int get_vertex_node(int vertex_id) {
    return query("get_vertex_node", 0, [&](const km::MeshState& s) {
        const km::MeshPiece* p = s.piece({0, vertex_id});
        return p && p->node_count() == 1 ? p->first_node : 0;
    });
}

int get_geometry_node_count(const std::string& entity_type, int entity_id) {
    const auto owner = owner_of(entity_type, entity_id);
    return owner ? static_cast<int>(closure_nodes(owner->dim, owner->id).size()) : 0;
}

std::vector<std::string> get_geometric_owner(const std::string& mesh_entity_type,
                                             const std::string& mesh_entity_list) {
    std::vector<std::string> out;
    for (int id : TarvoInterface::parse_tarvo_list(mesh_entity_type, mesh_entity_list)) {
        const std::string owner = get_geometry_owner(mesh_entity_type, id);
        if (!owner.empty() && std::find(out.begin(), out.end(), owner) == out.end())
            out.push_back(owner);
    }
    return out;
}

std::vector<MeshErrorFeedback*> get_mesh_errors() {
    auto* m = km::mesh_module();
    return m ? m->mesh_errors() : std::vector<MeshErrorFeedback*>{};
}

int get_mesh_error_count() {
    return static_cast<int>(get_mesh_errors().size());
}

} // namespace TarvoInterface
