// Materials and media as the public API reads them: the property catalog, the MaterialInterface
// handed out by get_interface("Material"), the material queries and the stable time step.
//
// Threading: kernel thread only.

#include "bc/BcModule.h"
#include "core/EntityList.h"
#include "core/Guard.h"
#include "core/Session.h"
#include "core/Valfold.h"
#include "fe/FeModule.h"
#include "geometry/GeometryModule.h"
#include "mesh/MeshModule.h"
#include "tarvo/TarvoInterface.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>

namespace tk = tarvo::kernel;
namespace bc = tarvo::kernel::bc;
using TarvoInterface::MaterialInterface;

namespace tarvo::kernel::bc {

namespace {

using Kind = MaterialInterface::PropertyKind;

struct BuiltIn {
    const char* name;
    Kind kind;
    bool medium; // a property of media rather than of structural materials
};
// The defined order of the groups' properties.
const BuiltIn kBuiltIns[] = {
    {"ELASTIC_MODULUS", MaterialInterface::SCALAR, false},
    {"SHEAR_MODULUS", MaterialInterface::SCALAR, false},
    {"POISSON_RATIO", MaterialInterface::SCALAR, false},
    {"DENSITY", MaterialInterface::SCALAR, false},
    {"SPECIFIC_HEAT", MaterialInterface::SCALAR, false},
    {"CONDUCTIVITY", MaterialInterface::SCALAR, false},
    {"THERMAL_EXPANSION", MaterialInterface::SCALAR, false},
    {"YIELD_STRESS", MaterialInterface::SCALAR, false},
    {"ULTIMATE_STRESS", MaterialInterface::SCALAR, false},
    {"STRESS_STRAIN", MaterialInterface::TABLE, false},
    {"CFD_MEDIA_TYPE", MaterialInterface::SCALAR, true},
    {"VISCOSITY", MaterialInterface::SCALAR, true},
};

const char* const kMediaGroups[] = {"fluid", "porous", "solid"};

bool is_media_group(const std::string& name) {
    return std::find(std::begin(kMediaGroups), std::end(kMediaGroups), name) !=
           std::end(kMediaGroups);
}

} // namespace

PropertyCatalog::PropertyCatalog() {
    for (const BuiltIn& b : kBuiltIns)
        properties_.push_back({b.name, b.kind});
}

const PropertyRecord* PropertyCatalog::find(const std::string& name) const {
    for (const PropertyRecord& p : properties_)
        if (p.name == name)
            return &p;
    return nullptr;
}

const PropertyRecord* PropertyCatalog::define(const std::string& name, int kind, std::string& why) {
    if (const PropertyRecord* p = find(name)) {
        // Both table kinds read as rows of numbers.
        if (p->kind == kind || (p->kind >= 2 && kind >= 2))
            return p;
        static const char* const words[] = {"a scalar (value)", "a vector", "a table", "a table"};
        why = "property '" + name + "' is " + words[p->kind] + ", not " + words[kind];
        return nullptr;
    }
    properties_.push_back({name, kind});
    return &properties_.back();
}

const GroupRecord* PropertyCatalog::group(const std::string& name) {
    auto [it, added] = groups_.try_emplace(name);
    if (added) {
        it->second.name = name;
        const bool medium = is_media_group(name) || name == "medium";
        for (const BuiltIn& b : kBuiltIns)
            if (b.medium == medium || (medium && std::string(b.name) == "DENSITY"))
                it->second.properties.push_back(find(b.name));
    }
    return &it->second;
}

void PropertyCatalog::add_to_group(const std::string& name, const PropertyRecord* property) {
    group(name);
    auto& list = groups_.at(name).properties;
    if (std::find(list.begin(), list.end(), property) == list.end())
        list.push_back(property);
}

const MaterialRecord* PropertyCatalog::material_record(long serial) {
    auto& slot = materials_[serial];
    if (!slot)
        slot = std::make_unique<MaterialRecord>(MaterialRecord{serial});
    return slot.get();
}

// ---- Stable time step
// --------------------------------------------------------------------------------

namespace {

using mesh::ElemKind;
using mesh::Point3;

Point3 sub(const Point3& a, const Point3& b) {
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}
Point3 cross(const Point3& a, const Point3& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
double dot(const Point3& a, const Point3& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}
double norm(const Point3& a) {
    return std::sqrt(dot(a, a));
}

// Area of a polygon (fan from its centroid, so a warped quad counts its two halves).
double polygon_area(const std::vector<Point3>& p) {
    Point3 c{};
    for (const Point3& q : p)
        for (int i = 0; i < 3; ++i)
            c[i] += q[i] / static_cast<double>(p.size());
    double area = 0;
    for (size_t i = 0; i < p.size(); ++i)
        area += 0.5 * norm(cross(sub(p[i], c), sub(p[(i + 1) % p.size()], c)));
    return area;
}

// Volume of a solid element from its faces (each fanned from its centroid) against the
// element's centroid, so warped faces count; and its largest face area.
double solid_measures(ElemKind kind, const std::vector<Point3>& p, double& largest) {
    const auto& topo = mesh::topology(kind);
    Point3 centre{};
    for (const Point3& q : p)
        for (int i = 0; i < 3; ++i)
            centre[i] += q[i] / static_cast<double>(p.size());
    double volume = 0;
    largest = 0;
    for (const auto& face : topo.faces) {
        std::vector<Point3> f;
        for (int corner : face)
            f.push_back(p[static_cast<size_t>(corner)]);
        largest = std::max(largest, polygon_area(f));
        Point3 fc{};
        for (const Point3& q : f)
            for (int i = 0; i < 3; ++i)
                fc[i] += q[i] / static_cast<double>(f.size());
        for (size_t i = 0; i < f.size(); ++i)
            volume +=
                dot(sub(fc, centre), cross(sub(f[i], centre), sub(f[(i + 1) % f.size()], centre))) /
                6;
    }
    return std::abs(volume);
}

// Characteristic length of one element; 0 when it cannot be measured.
double characteristic_length(ElemKind kind, const std::vector<Point3>& p) {
    const auto& topo = mesh::topology(kind);
    switch (kind) {
    case ElemKind::Edge:
        return norm(sub(p[1], p[0]));
    case ElemKind::Tri:
    case ElemKind::Quad: {
        double longest = 0;
        for (const auto& [a, b] : topo.edges)
            longest = std::max(longest, norm(sub(p[b], p[a])));
        const double area = polygon_area(p);
        return longest > 0 ? (kind == ElemKind::Tri ? 2 : 1) * area / longest : 0;
    }
    case ElemKind::Sphere:
        return 0;
    default:
        break;
    }
    double largest = 0;
    const double volume = solid_measures(kind, p, largest);
    if (largest <= 0)
        return 0;
    return (kind == ElemKind::Tet ? 3 : 1) * volume / largest;
}

// Dilatational wave speed sqrt(E (1 - nu) / (rho (1 + nu) (1 - 2 nu))); 0 when the values do
// not make one.
double wave_speed(double rho, double e, double nu) {
    if (!(rho > 0) || !(e > 0) || !(nu > -1) || !(nu < 0.5))
        return 0;
    return std::sqrt(e * (1 - nu) / (rho * (1 + nu) * (1 - 2 * nu)));
}

double scalar(const Material& m, const char* name, double fallback) {
    const auto it = m.properties.find(name);
    return it != m.properties.end() && it->second.kind == 0 ? it->second.scalar : fallback;
}

} // namespace

double element_volume(mesh::ElemKind kind, const std::vector<mesh::Point3>& corners) {
    double largest = 0;
    return mesh::info(kind).dim == 3 ? solid_measures(kind, corners, largest) : 0.0;
}

double timestep_estimate(const std::string& entity_type, const std::vector<int>& ids,
                         const Material* material) {
    const fe::FeModule* fe = fe::fe_module();
    const BcModule* bcm = bc_module();
    const mesh::MeshState& mesh = mesh::mesh_module()->state();
    const std::string type = canonical_entity_type(entity_type);
    const std::set<int> wanted(ids.begin(), ids.end());
    const auto element_kind = mesh::elem_kind_from_word(type);
    if (type != "block" && !element_kind)
        return error("a time step is estimated for blocks or elements, not '" + entity_type + "'"),
               0.0;
    // The elements asked for, each with the material that applies.
    std::vector<std::tuple<ElemKind, int, const Material*>> elements;
    std::set<std::pair<ElemKind, int>> seen;
    for (const auto& [block_id, block] : fe->state().blocks) {
        const Material* m = material;
        if (!m) {
            const auto it = bcm->state().block_materials.find(block_id);
            m = it == bcm->state().block_materials.end() ? nullptr : bcm->material(it->second);
        }
        for (const auto& [kind, elems] : fe::FeModule::elements(*block))
            for (int e : elems) {
                const bool asked = type == "block" ? wanted.count(block_id) != 0
                                                   : kind == *element_kind && wanted.count(e);
                if (asked && seen.insert({kind, e}).second)
                    elements.emplace_back(kind, e, m);
            }
    }
    // Elements in no block can only use the given values.
    if (material && element_kind)
        for (int e : ids)
            if (!seen.count({*element_kind, e}) && mesh.find_element(*element_kind, e))
                elements.emplace_back(*element_kind, e, material);
    if (elements.empty())
        return error("no elements of " + entity_type + " " + std::to_string(ids.size()) +
                     " id(s) to estimate a time step for"),
               0.0;
    double best = std::numeric_limits<double>::infinity();
    for (const auto& [kind, id, m] : elements) {
        if (!m)
            return error(std::string(mesh::info(kind).word) + " " + std::to_string(id) +
                         " is in a block without a material"),
                   0.0;
        const double c = wave_speed(scalar(*m, "DENSITY", 0), scalar(*m, "ELASTIC_MODULUS", 0),
                                    scalar(*m, "POISSON_RATIO", 0));
        if (c <= 0)
            return error("material '" + m->name +
                         "' needs a positive DENSITY and ELASTIC_MODULUS and a POISSON_RATIO "
                         "between -1 and 0.5"),
                   0.0;
        const auto ref = mesh.find_element(kind, id);
        if (!ref)
            continue;
        std::vector<Point3> corners;
        const int n = mesh::info(kind).nodes;
        for (int i = 0; i < n; ++i)
            corners.push_back(mesh.node_position(ref->nodes()[i]).value_or(Point3{}));
        const double l = characteristic_length(kind, corners);
        if (l > 0)
            best = std::min(best, l / c);
    }
    if (!std::isfinite(best))
        return error("none of the elements has a measurable size"), 0.0;
    return best;
}

} // namespace tarvo::kernel::bc

// ---- The MaterialInterface
// ---------------------------------------------------------------------------

namespace {

// Reads the live module on every call; a handle of a material that is gone is refused (null,
// false, 0 or "") and never followed.
class KernelMaterialInterface final : public MaterialInterface {
public:
    std::string interface_name() const override { return "Material"; }

    Material find_material(int id) override {
        const bc::Material* m = module() ? module()->material(id) : nullptr;
        return m ? module()->properties().material_record(m->serial) : nullptr;
    }
    void list_materials(std::vector<Material>& materials) override {
        materials.clear();
        if (module())
            for (const auto& [id, m] : module()->state().materials)
                materials.push_back(module()->properties().material_record(m->serial));
    }
    int material_id(Material material) override {
        const bc::Material* m = live(material);
        return m ? m->id : 0;
    }
    std::string material_name(Material material) override {
        const bc::Material* m = live(material);
        return m ? m->name : std::string();
    }
    PropertyGroup material_group(Material material) override {
        const bc::Material* m = live(material);
        return m ? module()->properties().group(m->group) : nullptr;
    }
    bool is_cfd(Material material) override {
        const bc::Material* m = live(material);
        return m && m->cfd;
    }
    bool get_tabular_value(Material material, Property property,
                           std::vector<std::vector<double>>& value) override {
        const bc::PropertyValue* v = value_of(material, property);
        if (!v || v->kind < 2)
            return false;
        value = v->table;
        return true;
    }
    bool get_vector_value(Material material, Property property,
                          std::vector<double>& value) override {
        const bc::PropertyValue* v = value_of(material, property);
        if (!v || v->kind != 1)
            return false;
        value = v->vector;
        return true;
    }
    bool get_scalar_value(Material material, Property property, double& value) override {
        const bc::PropertyValue* v = value_of(material, property);
        if (!v || v->kind != 0)
            return false;
        value = v->scalar;
        return true;
    }
    Property property_by_name(const std::string& name) override {
        return module() ? module()->properties().find(name) : nullptr;
    }
    std::string property_name(Property property) override {
        return property ? property->name : std::string();
    }
    int property_kind(Property property) override { return property ? property->kind : -1; }
    std::string group_name(PropertyGroup group) override {
        return group ? group->name : std::string();
    }
    void group_properties(PropertyGroup group, std::vector<Property>& properties) override {
        properties.clear();
        if (group)
            properties.assign(group->properties.begin(), group->properties.end());
    }

private:
    static bc::BcModule* module() { return bc::bc_module(); }
    // The material behind a handle, found by the serial the handle's record holds; the records
    // live until the module shuts down, so reading one is always safe.
    static const bc::Material* live(Material material) {
        return material && module() ? module()->material_by_serial(material->serial) : nullptr;
    }
    static const bc::PropertyValue* value_of(Material material, Property property) {
        const bc::Material* m = live(material);
        if (!m || !property)
            return nullptr;
        const auto it = m->properties.find(property->name);
        return it == m->properties.end() ? nullptr : &it->second;
    }
};

std::string upper(std::string text) {
    for (char& ch : text)
        ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
    return text;
}

template <class T, class F> T query(const char* name, T fail, F&& body) {
    return tk::guarded(name, std::move(fail), [&]() -> T {
        const bc::BcModule* m = bc::bc_module();
        return m ? body(*m) : fail;
    });
}

} // namespace

namespace TarvoInterface {

TarvoBaseInterface* get_interface(const std::string& name) {
    if (upper(name) == "MATERIAL")
        return new KernelMaterialInterface();
    tk::error("There is no interface '" + name + "' (this kernel offers \"Material\")");
    return nullptr;
}

void release_interface(TarvoBaseInterface* instance) {
    delete instance;
}

double get_material_property(TI_MaterialProperty material_property_enum, int entity_id) {
    return query("get_material_property", 0.0, [&](const bc::BcModule& m) {
        const bc::Material* mat = m.material(entity_id);
        const char* name = material_property_name(material_property_enum);
        return mat && name ? bc::scalar(*mat, name, 0.0) : 0.0;
    });
}

int get_media_property(int entity_id) {
    return query("get_media_property", -1, [&](const bc::BcModule& m) {
        const bc::Material* mat = m.material(entity_id);
        if (!mat || !mat->cfd)
            return -1;
        return static_cast<int>(bc::scalar(*mat, TI_MEDIA_TYPE_PROPERTY, -1));
    });
}

namespace {
std::vector<std::string> names(bool cfd) {
    return query("material names", std::vector<std::string>{}, [&](const bc::BcModule& m) {
        std::vector<std::string> out;
        for (const auto& [id, mat] : m.state().materials)
            if (mat->cfd == cfd)
                out.push_back(mat->name);
        return out;
    });
}
} // namespace

std::vector<std::string> get_material_name_list() {
    return names(false);
}

std::vector<std::string> get_media_name_list() {
    return names(true);
}

double calculate_timestep_estimate(const std::string& entity_type,
                                   const std::vector<int>& entity_ids) {
    return query("calculate_timestep_estimate", 0.0, [&](const bc::BcModule&) {
        return bc::timestep_estimate(entity_type, entity_ids, nullptr);
    });
}

double calculate_timestep_estimate_with_props(const std::string& entity_type,
                                              const std::vector<int>& entity_ids, double density,
                                              double youngs_modulus, double poissons_ratio) {
    return query("calculate_timestep_estimate_with_props", 0.0, [&](const bc::BcModule&) {
        bc::Material given;
        given.name = "given values";
        given.properties["DENSITY"] = {0, density, {}, {}};
        given.properties["ELASTIC_MODULUS"] = {0, youngs_modulus, {}, {}};
        given.properties["POISSON_RATIO"] = {0, poissons_ratio, {}, {}};
        return bc::timestep_estimate(entity_type, entity_ids, &given);
    });
}

} // namespace TarvoInterface
