// Boundary conditions and materials: one row per method, in table order.
//
// Enumerations arrive as ints and are cast unchecked. The degree-of-freedom methods answer the
// six values behind the kernel's pointer; calculate_timestep_estimate chooses its kernel function
// by the presence of `density` (see its wrapper).

#include "methods/HandWrittenWrappers.h"
#include "methods/MethodTable.h"

namespace tarvo::methods {

namespace TI = TarvoInterface;

namespace {
// Reads an optional number: absent is fine, present must pass the double rule.
bool read_optional(const QJsonObject& object, const char* name, double& value, bool& present) {
    present = object.contains(QLatin1String(name));
    return !present || json_rpc::from_json(object[QLatin1String(name)], value);
}
} // namespace

bool wrap_calculate_timestep_estimate::process_params(const QJsonValue& params) {
    if (!params.isObject())
        return false;
    const QJsonObject object = params.toObject();
    if (!object.contains("entity_type") || !json_rpc::from_json(object["entity_type"], entity_type))
        return false;
    if (!object.contains("entity_ids") || !json_rpc::from_json(object["entity_ids"], entity_ids))
        return false;
    return read_optional(object, "density", density, has_density) &&
           read_optional(object, "youngs_modulus", youngs_modulus, has_youngs_modulus) &&
           read_optional(object, "poissons_ratio", poissons_ratio, has_poissons_ratio);
}

QJsonValue wrap_calculate_timestep_estimate::invoke() {
    if (has_density)
        return json_rpc::to_json(TI::calculate_timestep_estimate_with_props(
            entity_type, entity_ids, density, has_youngs_modulus ? youngs_modulus : 0.0,
            has_poissons_ratio ? poissons_ratio : 0.0));
    return json_rpc::to_json(TI::calculate_timestep_estimate(entity_type, entity_ids));
}

void add_bc_material_methods(MethodRows& rows) {
    // clang-format off
    rows.insert(rows.end(), {
        row("is_on_thin_shell", &TI::is_on_thin_shell, {param("bc_type_enum"), param("entity_id")}),
        row("temperature_is_on_solid", &TI::temperature_is_on_solid, {param("bc_type_enum"), param("entity_id")}),
        row("convection_is_on_solid", &TI::convection_is_on_solid, {param("entity_id")}),
        row("convection_is_on_shell_area", &TI::convection_is_on_shell_area, {param("entity_id"), param("shell_area_enum")}),
        row("get_convection_coefficient", &TI::get_convection_coefficient, {param("entity_id"), param("bc_type_enum")}),
        row("get_bc_temperature", &TI::get_bc_temperature, {param("bc_type_enum"), param("entity_id"), param("temp_type_enum")}),
        row("temperature_is_on_shell_area", &TI::temperature_is_on_shell_area, {param("bc_type_enum"), param("bc_area_enum"), param("entity_id")}),
        row("heatflux_is_on_shell_area", &TI::heatflux_is_on_shell_area, {param("bc_area_enum"), param("entity_id")}),
        row("get_heatflux_on_area", &TI::get_heatflux_on_area, {param("bc_area_enum"), param("entity_id")}),
        row("get_cfd_type", &TI::get_cfd_type, {param("entity_id")}),
        row("get_contact_pair_friction_value", &TI::get_contact_pair_friction_value, {param("entity_id")}),
        row("get_contact_pair_tolerance_value", &TI::get_contact_pair_tolerance_value, {param("entity_id")}),
        row("get_contact_pair_tol_lower_value", &TI::get_contact_pair_tol_lower_value, {param("entity_id")}),
        row("get_contact_pair_tied_state", &TI::get_contact_pair_tied_state, {param("entity_id")}),
        row("get_contact_pair_general_state", &TI::get_contact_pair_general_state, {param("entity_id")}),
        row("get_contact_pair_exterior_state", &TI::get_contact_pair_exterior_state, {param("entity_id")}),
        row("get_displacement_dof_values", [](int entity_id) { return six(TI::get_displacement_dof_values(entity_id)); }, {param("entity_id")}),
        row("get_displacement_dof_signs", [](int entity_id) { return six(TI::get_displacement_dof_signs(entity_id)); }, {param("entity_id")}),
        row("get_velocity_dof_values", [](int entity_id) { return six(TI::get_velocity_dof_values(entity_id)); }, {param("entity_id")}),
        row("get_velocity_dof_signs", [](int entity_id) { return six(TI::get_velocity_dof_signs(entity_id)); }, {param("entity_id")}),
        row("get_velocity_combine_type", &TI::get_velocity_combine_type, {param("entity_id")}),
        row("get_acceleration_dof_values", [](int entity_id) { return six(TI::get_acceleration_dof_values(entity_id)); }, {param("entity_id")}),
        row("get_acceleration_dof_signs", [](int entity_id) { return six(TI::get_acceleration_dof_signs(entity_id)); }, {param("entity_id")}),
        row("get_acceleration_combine_type", &TI::get_acceleration_combine_type, {param("entity_id")}),
        row("get_displacement_combine_type", &TI::get_displacement_combine_type, {param("entity_id")}),
        row("get_pressure_value", &TI::get_pressure_value, {param("entity_id")}),
        row("get_pressure_function", &TI::get_pressure_function, {param("entity_id")}),
        row("get_force_magnitude", &TI::get_force_magnitude, {param("entity_id")}),
        row("get_moment_magnitude", &TI::get_moment_magnitude, {param("entity_id")}),
        row("get_force_direction_vector", &TI::get_force_direction_vector, {param("entity_id")}),
        row("get_force_moment_vector", &TI::get_force_moment_vector, {param("entity_id")}),
        row("get_constraint_type", &TI::get_constraint_type, {param("constraint_id")}),
        row("get_constraint_reference_point", &TI::get_constraint_reference_point, {param("constraint_id")}),
        row("get_constraint_dependent_entity_point", &TI::get_constraint_dependent_entity_point, {param("constraint_id")}),
        row("get_material_property", &TI::get_material_property, {param("material_property_enum"), param("entity_id")}),
        row("get_media_property", &TI::get_media_property, {param("entity_id")}),
        row("get_material_name_list", &TI::get_material_name_list, {}),
        row("get_media_name_list", &TI::get_media_name_list, {}),
        hand<wrap_calculate_timestep_estimate>("calculate_timestep_estimate"),
        row("get_all_cfd_bcs", &TI::get_all_cfd_bcs, {}),
    });
    // clang-format on
}

} // namespace tarvo::methods
