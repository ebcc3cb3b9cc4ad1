#pragma once
// Public functions of the kernel: boundary conditions and materials. The conventions of the whole
// API are in tarvo/TarvoInterface.h, which includes every family.

#include "tarvo/TarvoTypes.h"

#include <array>
#include <string>
#include <vector>

namespace TarvoInterface {

// ---- Boundary conditions and materials ----------------------------------------------------------

// Whether the condition lies on a thin shell.
bool is_on_thin_shell(TI_BCTypes bc_type_enum, int entity_id);
// Whether the temperature condition lies on a solid.
bool temperature_is_on_solid(TI_BCTypes bc_type_enum, int entity_id);
// Whether the convection lies on a solid.
bool convection_is_on_solid(int entity_id);
// Whether the convection applies to that area of a shell.
bool convection_is_on_shell_area(int entity_id, TI_BCEntityTypes shell_area_enum);
// Convection coefficient of that area (solid, shell top or bottom).
double get_convection_coefficient(int entity_id, TI_BCEntityTypes bc_type_enum);
// Temperature of that area of the condition.
double get_bc_temperature(TI_BCTypes bc_type_enum, int entity_id, TI_BCEntityTypes temp_type_enum);
// Whether the temperature applies to that area of a shell.
bool temperature_is_on_shell_area(TI_BCTypes bc_type_enum, TI_BCEntityTypes bc_area_enum,
                                  int entity_id);
// Whether the heat flux applies to that area of a shell.
bool heatflux_is_on_shell_area(TI_BCEntityTypes bc_area_enum, int entity_id);
// Heat flux on that area.
double get_heatflux_on_area(TI_BCEntityTypes bc_area_enum, int entity_id);
// Kind of the CFD boundary condition (a TI_BCTypes value 11..32).
int get_cfd_type(int entity_id);
// Contact pair friction value of the entity.
double get_contact_pair_friction_value(int entity_id);
// Contact pair tolerance value of the entity.
double get_contact_pair_tolerance_value(int entity_id);
// Lower search tolerance of the contact pair.
double get_contact_pair_tol_lower_value(int entity_id);
// Contact pair tied state of the entity.
bool get_contact_pair_tied_state(int entity_id);
// Contact pair general state of the entity.
bool get_contact_pair_general_state(int entity_id);
// Contact pair exterior state of the entity.
bool get_contact_pair_exterior_state(int entity_id);
// Six values (x, y, z, rx, ry, rz) of the displacement; never null.
const double* get_displacement_dof_values(int entity_id);
// Six flags (1 set, 0 free) of the displacement; never null.
const int* get_displacement_dof_signs(int entity_id);
// Six values of the velocity; never null.
const double* get_velocity_dof_values(int entity_id);
// Six set/free flags of the velocity; never null.
const int* get_velocity_dof_signs(int entity_id);
// Velocity combine type of the entity.
std::string get_velocity_combine_type(int entity_id);
// Six values of the acceleration; never null.
const double* get_acceleration_dof_values(int entity_id);
// Six set/free flags of the acceleration; never null.
const int* get_acceleration_dof_signs(int entity_id);
// Acceleration combine type of the entity.
std::string get_acceleration_combine_type(int entity_id);
// Displacement combine type of the entity.
std::string get_displacement_combine_type(int entity_id);
// Pressure value of the entity.
double get_pressure_value(int entity_id);
// Pressure function of the entity.
std::string get_pressure_function(int entity_id);
// Force magnitude of the entity.
double get_force_magnitude(int entity_id);
// Moment magnitude of the entity.
double get_moment_magnitude(int entity_id);
// Force direction vector of the entity.
std::array<double, 3> get_force_direction_vector(int entity_id);
// Force moment vector of the entity.
std::array<double, 3> get_force_moment_vector(int entity_id);
// Kind of the constraint: "rigid" or "distributing".
std::string get_constraint_type(int constraint_id);
// Reference point of the constraint ("vertex 4").
std::string get_constraint_reference_point(int constraint_id);
// Dependent entities of the constraint ("surface 2 3").
std::string get_constraint_dependent_entity_point(int constraint_id);
// Value of the property of material `entity_id`.
double get_material_property(TI_MaterialProperty material_property_enum, int entity_id);
// Kind of medium `entity_id` (TI_MediaType).
int get_media_property(int entity_id);
// Names of all structural materials.
std::vector<std::string> get_material_name_list();
// Names of all CFD media.
std::vector<std::string> get_media_name_list();
// Stable explicit time step of the elements, from their blocks' materials.
double calculate_timestep_estimate(const std::string& entity_type,
                                   const std::vector<int>& entity_ids);
// Stable explicit time step of the elements for the given material values.
double calculate_timestep_estimate_with_props(const std::string& entity_type,
                                              const std::vector<int>& entity_ids, double density,
                                              double youngs_modulus, double poissons_ratio);
// Every CFD boundary condition.
std::vector<CFD_BC_Entity> get_all_cfd_bcs();

} // namespace TarvoInterface
