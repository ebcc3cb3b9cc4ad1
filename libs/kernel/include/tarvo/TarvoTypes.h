#pragma once
// Records and enumerations that the kernel API exchanges with its callers. Plain values: no
// behaviour, no dependency beyond the standard library.
//
// The numeric values of the enumerations are part of the remote interface (clients send and
// receive them as plain ints), so a value once given never changes meaning.

#include <string>
#include <vector>

namespace TarvoInterface {

// Kinds of boundary condition. Sent by clients as `bc_type_enum`.
enum TI_BCTypes : int {
    TI_BC_ACCELERATION = 1,
    TI_BC_VELOCITY = 2,
    TI_BC_DISPLACEMENT = 3,
    TI_BC_TEMPERATURE = 4,
    TI_BC_FORCE = 5,
    TI_BC_PRESSURE = 6,
    TI_BC_CONSTRAINT = 7,
    TI_BC_CONVECTION = 8,
    TI_BC_HEATFLUX = 9,
    TI_BC_CONTACT_REGION = 10,
    // The CFD kinds, 11..32, in alphabetical order of their names.
    TI_BC_CFD_AXIS = 11,
    TI_BC_CFD_EXHAUST_FAN = 12,
    TI_BC_CFD_FAN = 13,
    TI_BC_CFD_INLET_VENT = 14,
    TI_BC_CFD_INTAKE_FAN = 15,
    TI_BC_CFD_INTERFACE = 16,
    TI_BC_CFD_INTERIOR = 17,
    TI_BC_CFD_MASS_FLOW_INLET = 18,
    TI_BC_CFD_OUTFLOW = 19,
    TI_BC_CFD_OUTLET_VENT = 20,
    TI_BC_CFD_PERIODIC = 21,
    TI_BC_CFD_PERIODIC_SHADOW = 22,
    TI_BC_CFD_POROUS_JUMP = 23,
    TI_BC_CFD_PRESSURE_FAR_FIELD = 24,
    TI_BC_CFD_PRESSURE_INLET = 25,
    TI_BC_CFD_PRESSURE_OUTLET = 26,
    TI_BC_CFD_RADIATOR = 27,
    TI_BC_CFD_SUPERSONIC_INFLOW = 28,
    TI_BC_CFD_SUPERSONIC_OUTFLOW = 29,
    TI_BC_CFD_SYMMETRY = 30,
    TI_BC_CFD_VELOCITY_INLET = 31,
    TI_BC_CFD_WALL = 32,
    TI_BC_CONTACT_PAIR = 40,
};

inline constexpr int TI_BC_CFD_FIRST = TI_BC_CFD_AXIS;
inline constexpr int TI_BC_CFD_LAST = TI_BC_CFD_WALL;

// The part of a boundary condition that a value belongs to: solid, or an area of a thin shell.
// Sent by clients as `bc_area_enum`, `shell_area_enum`, `temp_type_enum` (and as `bc_type_enum`
// of get_convection_coefficient). 4 is not used.
enum TI_BCEntityTypes : int {
    TI_BC_SOLID_CONVECTION_COEFFICIENT = 1,
    TI_BC_SOLID_CONVECTION_TEMPERATURE = 2,
    TI_BC_SOLID_TEMPERATURE = 3,
    TI_BC_SHELL_TOP_CONVECTION_COEFFICIENT = 5,
    TI_BC_SHELL_BOTTOM_CONVECTION_COEFFICIENT = 6,
    TI_BC_SHELL_TOP = 7,
    TI_BC_SHELL_BOTTOM = 8,
    TI_BC_SHELL_GRADIENT = 9,
    TI_BC_SHELL_MIDDLE = 10,
};

// Scalar properties of a structural material, for get_material_property. Each stands for the
// material property of the same name (TI_MATERIAL_DENSITY: "DENSITY"), see
// material_property_name(). Units are the model's; the kernel does not convert.
enum TI_MaterialProperty : int {
    TI_MATERIAL_ELASTIC_MODULUS = 1,
    TI_MATERIAL_SHEAR_MODULUS = 2,
    TI_MATERIAL_POISSON_RATIO = 3,
    TI_MATERIAL_DENSITY = 4,
    TI_MATERIAL_SPECIFIC_HEAT = 5,
    TI_MATERIAL_CONDUCTIVITY = 6,
    TI_MATERIAL_THERMAL_EXPANSION = 7,
    TI_MATERIAL_YIELD_STRESS = 8,
    TI_MATERIAL_ULTIMATE_STRESS = 9,
};

// Name of the property behind a TI_MaterialProperty value, or null for an unknown value.
constexpr const char* material_property_name(TI_MaterialProperty property) {
    switch (property) {
    case TI_MATERIAL_ELASTIC_MODULUS:
        return "ELASTIC_MODULUS";
    case TI_MATERIAL_SHEAR_MODULUS:
        return "SHEAR_MODULUS";
    case TI_MATERIAL_POISSON_RATIO:
        return "POISSON_RATIO";
    case TI_MATERIAL_DENSITY:
        return "DENSITY";
    case TI_MATERIAL_SPECIFIC_HEAT:
        return "SPECIFIC_HEAT";
    case TI_MATERIAL_CONDUCTIVITY:
        return "CONDUCTIVITY";
    case TI_MATERIAL_THERMAL_EXPANSION:
        return "THERMAL_EXPANSION";
    case TI_MATERIAL_YIELD_STRESS:
        return "YIELD_STRESS";
    case TI_MATERIAL_ULTIMATE_STRESS:
        return "ULTIMATE_STRESS";
    }
    return nullptr;
}

// Kind of a CFD medium: the value of its scalar property "CFD_MEDIA_TYPE" and the answer of
// get_media_property. Clients see the values, so they are fixed.
enum TI_MediaType : int {
    TI_MEDIA_FLUID = 0,
    TI_MEDIA_POROUS = 1,
    TI_MEDIA_SOLID = 2,
};
inline constexpr const char* TI_MEDIA_TYPE_PROPERTY = "CFD_MEDIA_TYPE";

// One node of the assembly tree of an imported model.
struct AssemblyItem {
    std::string name;            // part or assembly name
    std::string type;            // "assembly" or "part"
    int level = 0;               // 0 for a root
    int instance = 0;            // 1-based instance number among equal names under one parent
    std::string path;            // names from the root, joined by '/'
    int id = 0;                  // assembly id (get_assembly_name(id) and kin)
    std::vector<int> volume_ids; // volumes of this node (a part's own, none for an assembly)
};

// One CFD boundary condition.
struct CFD_BC_Entity {
    std::string type; // lower-case kind without blanks ("wall", "velocityinlet", ...)
    std::string name;
    int id = 0;
};

// One error that meshing left behind. The kernel owns these records (get_mesh_errors hands out
// pointers); they stay valid until the next mesh command or reset.
struct MeshErrorFeedback {
    int entity_id = 0;
    std::string entity_type; // "volume", "surface", "curve", ...
    int error_code = 0;      // see get_mesh_error_solutions
    std::string error_text;
};

} // namespace TarvoInterface
