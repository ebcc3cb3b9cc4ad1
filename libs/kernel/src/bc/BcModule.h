#pragma once
// The analysis set-up of the model: boundary conditions (loads, constraints, contact, CFD
// conditions), materials and CFD media with the blocks they are assigned to, boundary layers and
// coordinate systems; and their hooks into the session (entity catalog for the condition kinds,
// "material", "media", "boundary_layer" and "coordinate_system"; undo participant "bc";
// commands; native file section "bc").
//
// Contract
// - Every record is an immutable piece (std::shared_ptr<const T>) in a map by id; a change builds
//   a new piece and swaps it in, so a snapshot copies a few maps and nothing else.
// - Id spaces: each FEA kind (force, pressure, ..., contact pair) numbers its own conditions; the
//   22 CFD kinds share one space (get_cfd_type(id) names the kind). Materials and media share one
//   space, so the MaterialInterface finds either by id. Boundary layers and coordinate systems
//   have their own. Ids are positive; a new one is the highest ever given plus one.
// - A condition lies on geometry or sets of the kinds its family allows (a pressure on sidesets
//   and surfaces, a force on nodesets, vertices, curves and surfaces, ...); everything it names
//   must exist when it is made. Values are checked (finite; a direction is not zero; a material
//   modulus or density is positive, Poisson's ratio in (-1, 0.5)). A rejected command prints one
//   error and leaves the state as it was.
// - Every change emits its event: bc_entity_modified (type word, id, created|modified|deleted)
//   for FEA and CFD conditions, constraint_modified for constraints, material_modified (and
//   media_modified for a medium), material_property_modified, boundary_layer_created|deleted,
//   coord_sys_modified. An undo emits them for every record that differs.
// - A material keeps a serial number, given once when it is created and never reused, so that a
//   handle of the MaterialInterface names one material and is refused once that material is gone.
//
// Threading: kernel thread only.

#include "core/EntityCatalog.h"
#include "core/Undo.h"
#include "fe/ExodusExtras.h"
#include "mesh/MeshTypes.h"
#include "tarvo/MaterialInterface.h"

#include <array>
#include <deque>
#include <map>
#include <memory>
#include <string>
#include <vector>

// The opaque records behind the MaterialInterface's handles. Property and group records live
// as long as the session (their handles never dangle); a material record holds only the serial
// of its material and is looked up again on every use.
struct TarvoInterface::MaterialInterface::MaterialRecord {
    long serial = 0;
};
struct TarvoInterface::MaterialInterface::PropertyRecord {
    std::string name;
    int kind = 0; // PropertyKind
};
struct TarvoInterface::MaterialInterface::PropertyGroupRecord {
    std::string name;
    std::vector<const PropertyRecord*> properties; // in their defined order
};

namespace tarvo::kernel::bc {

using PropertyRecord = TarvoInterface::MaterialInterface::PropertyRecord;
using GroupRecord = TarvoInterface::MaterialInterface::PropertyGroupRecord;
using MaterialRecord = TarvoInterface::MaterialInterface::MaterialRecord;

// The properties and groups materials may use: the built-in ones (structural: the
// TI_MaterialProperty scalars and the table STRESS_STRAIN; media: CFD_MEDIA_TYPE, DENSITY,
// VISCOSITY) and those users name, whose kind is fixed by their first use. Not undone: a
// definition is not model state, only vocabulary. Session lifetime.
class PropertyCatalog {
public:
    PropertyCatalog();
    const PropertyRecord* find(const std::string& name) const; // upper-case name; null if none
    // The property, defined with `kind` if new; null (with `why`) when it exists with another
    // kind.
    const PropertyRecord* define(const std::string& name, int kind, std::string& why);
    // The group of that name, made (with the structural properties) if new.
    const GroupRecord* group(const std::string& name);
    void add_to_group(const std::string& group, const PropertyRecord* property);
    const MaterialRecord* material_record(long serial);

private:
    std::deque<PropertyRecord> properties_;
    std::map<std::string, GroupRecord> groups_;
    std::map<long, std::unique_ptr<MaterialRecord>> materials_;
};

// Something a condition lies on: ("nodeset", 2), ("surface", 5).
struct Target {
    std::string type;
    int id = 0;
    auto operator<=>(const Target&) const = default;
};

// One boundary condition of any kind; the fields its kind does not use stay at their defaults.
struct Condition {
    int kind = 0; // a TI_BCTypes value
    int id = 0;
    std::string name;
    std::vector<Target> on; // a constraint's dependent entities
    // force
    double magnitude = 0;
    std::array<double, 3> direction{};
    double moment = 0;
    std::array<double, 3> moment_direction{};
    // pressure
    double pressure = 0;
    std::string function;
    // displacement, velocity, acceleration: x y z rx ry rz; a sign 1 marks a set dof
    std::array<double, 6> dof_values{};
    std::array<int, 6> dof_signs{};
    std::string combine = "overwrite";
    // temperature, heat flux, convection: value per TI_BCEntityTypes area (3 = on the solid)
    bool shell = false;
    std::map<int, double> areas;
    // contact pair
    double friction = 0;
    double tolerance = 0;
    double tol_lower = 0;
    bool tied = false;
    bool general = false;
    bool exterior = true;
    // constraint
    std::string constraint_type; // "rigid" or "distributing"
    Target reference;
};

// Property value of a material, in one of the interface's kinds.
struct PropertyValue {
    int kind = 0; // MaterialInterface::PropertyKind
    double scalar = 0;
    std::vector<double> vector;
    std::vector<std::vector<double>> table;
    bool operator==(const PropertyValue&) const = default;
};

struct Material {
    int id = 0;
    long serial = 0;
    std::string name;
    std::string group; // property group ("structural", or a medium's kind)
    bool cfd = false;
    std::map<std::string, PropertyValue> properties; // by upper-case property name
};

struct BoundaryLayer {
    int id = 0;
    std::string algorithm = "uniform"; // "uniform", "aspect first", "aspect last"
    double first_height = 0;           // uniform, aspect last
    double first_aspect = 0;           // aspect first
    double last_aspect = 0;            // aspect last
    double growth = 1;                 // uniform, aspect first
    int rows = 1;
    bool continuity = false;
    std::vector<std::pair<int, int>> curve_surface;  // 2D layers
    std::vector<std::pair<int, int>> surface_volume; // 3D layers
};

struct CoordinateSystem {
    int id = 0;
    std::string name;
    std::string type = "rectangular"; // "rectangular", "cylindrical", "spherical"
    std::array<double, 3> origin{};
    std::array<double, 3> z_axis{0, 0, 1};
    std::array<double, 3> x_axis{1, 0, 0};
};

// (id space, id): each FEA kind is its own space, the CFD kinds share TI_BC_CFD_FIRST.
using BcKey = std::pair<int, int>;

struct BcState {
    std::map<BcKey, std::shared_ptr<const Condition>> conditions;
    std::map<int, std::shared_ptr<const Material>> materials;
    std::map<int, int> block_materials; // block id -> material id
    std::map<int, std::shared_ptr<const BoundaryLayer>> layers;
    std::map<int, std::shared_ptr<const CoordinateSystem>> coordinate_systems;
    // (vertex, surface) and (curve, volume) intersection types of the boundary layers
    std::map<std::pair<int, int>, std::string> vertex_intersections;
    std::map<std::pair<int, int>, std::string> curve_intersections;
    std::map<int, int> max_ids; // id space -> highest id ever given; -1 materials, -2 layers,
                                // -3 coordinate systems
    long material_serial = 0;
};

inline constexpr int kMaterialSpace = -1;
inline constexpr int kLayerSpace = -2;
inline constexpr int kCoordSpace = -3;

// The kinds: TI_BCTypes value, the word commands and events use, and what it may lie on.
struct KindInfo {
    int code;
    const char* word; // "force", "contact pair", "wall"
    std::vector<std::string> targets;
};
const std::vector<KindInfo>& kinds();
const KindInfo* kind_by_code(int code);
const KindInfo* kind_by_word(std::string_view word); // exact, any case
inline bool is_cfd_kind(int code) {
    return code >= 11 && code <= 32;
}
inline int id_space(int code) {
    return is_cfd_kind(code) ? 11 : code;
}

class BcModule : public EntityCatalog, public UndoParticipant {
public:
    const BcState& state() const { return state_; }

    // ---- Conditions ----------------------------------------------------------------------------
    const Condition* condition(int kind, int id) const; // of exactly that kind
    const Condition* cfd_condition(int id) const;       // any CFD kind
    // Checks and stores `c` (id 0: the next free one); prints what it did.
    bool put_condition(Condition c, bool created);
    bool delete_conditions(int kind, const std::vector<int>& ids);
    int next_id(int space) const;

    // ---- Materials -----------------------------------------------------------------------------
    const Material* material(int id) const;
    const Material* material_by_name(const std::string& name) const; // any case
    const Material* material_by_serial(long serial) const;
    bool put_material(Material m, bool created);
    bool delete_material(int id);
    bool assign_material(int material, const std::vector<int>& blocks);

    // ---- Boundary layers and coordinate systems ------------------------------------------------
    bool put_layer(BoundaryLayer layer, bool created);
    bool delete_layers(const std::vector<int>& ids);
    bool set_intersection(bool vertex, int a, int b, const std::string& type);
    bool put_coordinate_system(CoordinateSystem cs);
    bool delete_coordinate_systems(const std::vector<int>& ids);

    // Geometry or a set (type, old_id) became new_id; 0: it was deleted and leaves every
    // condition (a constraint whose reference goes keeps reference id 0).
    void follow(const std::string& type, int old_id, int new_id);

    PropertyCatalog& properties() { return properties_; }

    // Replaces the whole state (the native file), emitting the events of the difference.
    void replace_state(BcState state);

    // ---- EntityCatalog -------------------------------------------------------------------------
    bool handles(std::string_view type) const override;
    std::vector<int> all_ids(std::string_view type) const override;
    bool exists(std::string_view type, int id) const override;
    std::vector<int> relatives(std::string_view source_type, int id,
                               std::string_view target_type) const override;
    std::string name_of(std::string_view type, int id) const override;

    // ---- UndoParticipant -----------------------------------------------------------------------
    std::string participant_name() const override { return "bc"; }
    std::unique_ptr<UndoSnapshot> save_state() override;
    void restore_state(const UndoSnapshot& snapshot) override;
    void clear_state() override;

private:
    void take_id(int space, int id);
    BcState state_;
    PropertyCatalog properties_;
};

// The live module between init_bc_module() and shutdown_bc_module(); null otherwise.
BcModule* bc_module();
void register_bc_commands();
// What the set-up adds to an Exodus export (BcExodus.cpp).
fe::ExodusExtras exodus_extras_of(const BcState& state);
// The native file's "bc" section (BcFile.cpp).
void register_bc_file_section();
void unregister_bc_file_section();

// Whether the entity a condition or layer names exists in the live model.
bool target_exists(const Target& t);
// "surface 2 3, nodeset 1": targets grouped by type, in order of first appearance.
std::string describe(const std::vector<Target>& targets);

// Elementwise stable time step (see the kernel README): the smallest over the elements of
// `entity_type` `ids` of L / c, L the element's characteristic length and c the dilatational wave
// speed. With `material` null each element takes its block's material. 0 with an error when no
// element or no usable material is found.
double timestep_estimate(const std::string& entity_type, const std::vector<int>& ids,
                         const Material* material);
// Volume of a solid element from its corners (Exodus order); 0 for other kinds.
double element_volume(mesh::ElemKind kind, const std::vector<mesh::Point3>& corners);

} // namespace tarvo::kernel::bc

namespace tarvo::kernel {
void init_bc_module();
void shutdown_bc_module();
} // namespace tarvo::kernel
