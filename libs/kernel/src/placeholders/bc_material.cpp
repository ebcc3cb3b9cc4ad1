// Kernel functions of this family that are not written yet: boundary conditions and materials.
//
// Each STUB line defines one function of tarvo/TarvoInterface.h that prints
// "ERROR: <name> is not available in this kernel yet." and answers its failure value, and lists
// it in TarvoInterface::not_built_functions(). Delete the STUB line when you define the function
// (a forgotten line shows up as a multiple-definition error at link time).

#include "placeholders/Stub.h"

namespace TarvoInterface {

STUB(is_on_thin_shell, (TI_BCTypes, int), bool)
STUB(temperature_is_on_solid, (TI_BCTypes, int), bool)
STUB(convection_is_on_solid, (int), bool)
STUB(convection_is_on_shell_area, (int, TI_BCEntityTypes), bool)
STUB(get_convection_coefficient, (int, TI_BCEntityTypes), double)
STUB(get_bc_temperature, (TI_BCTypes, int, TI_BCEntityTypes), double)
STUB(temperature_is_on_shell_area, (TI_BCTypes, TI_BCEntityTypes, int), bool)
STUB(heatflux_is_on_shell_area, (TI_BCEntityTypes, int), bool)
STUB(get_heatflux_on_area, (TI_BCEntityTypes, int), double)
STUB(get_cfd_type, (int), int)
STUB(get_contact_pair_friction_value, (int), double)
STUB(get_contact_pair_tolerance_value, (int), double)
STUB(get_contact_pair_tol_lower_value, (int), double)
STUB(get_contact_pair_tied_state, (int), bool)
STUB(get_contact_pair_general_state, (int), bool)
STUB(get_contact_pair_exterior_state, (int), bool)
STUB_DOF(get_displacement_dof_values, (int), const double*)
STUB_DOF(get_displacement_dof_signs, (int), const int*)
STUB_DOF(get_velocity_dof_values, (int), const double*)
STUB_DOF(get_velocity_dof_signs, (int), const int*)
STUB(get_velocity_combine_type, (int), std::string)
STUB_DOF(get_acceleration_dof_values, (int), const double*)
STUB_DOF(get_acceleration_dof_signs, (int), const int*)
STUB(get_acceleration_combine_type, (int), std::string)
STUB(get_displacement_combine_type, (int), std::string)
STUB(get_pressure_value, (int), double)
STUB(get_pressure_function, (int), std::string)
STUB(get_force_magnitude, (int), double)
STUB(get_moment_magnitude, (int), double)
STUB(get_force_direction_vector, (int), std::array<double, 3>)
STUB(get_force_moment_vector, (int), std::array<double, 3>)
STUB(get_constraint_type, (int), std::string)
STUB(get_constraint_reference_point, (int), std::string)
STUB(get_constraint_dependent_entity_point, (int), std::string)
STUB(get_material_property, (TI_MaterialProperty, int), double)
STUB(get_media_property, (int), int)
STUB(get_material_name_list, (), std::vector<std::string>)
STUB(get_media_name_list, (), std::vector<std::string>)
STUB(calculate_timestep_estimate, (const std::string&, const std::vector<int>&), double)
STUB(calculate_timestep_estimate_with_props,
     (const std::string&, const std::vector<int>&, double, double, double), double)
STUB(get_all_cfd_bcs, (), std::vector<CFD_BC_Entity>)

} // namespace TarvoInterface
