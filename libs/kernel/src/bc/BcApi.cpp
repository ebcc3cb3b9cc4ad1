// Public functions of boundary conditions, boundary layers, coordinate systems and the sculpt
// defaults, answered from BcState.
//
// Conventions: an unknown id, or a condition of another kind, answers the failure value without
// an error line (monitors ask about conditions that may just have gone); a value of an area the
// condition does not have is 0.
//
// Threading: kernel thread only.

#include "bc/BcModule.h"
#include "core/Guard.h"
#include "core/Valfold.h"
#include "tarvo/TarvoInterface.h"

#include <algorithm>
#include <variant>

namespace tk = tarvo::kernel;
namespace bc = tarvo::kernel::bc;

namespace {

template <class T, class F> T query(const char* name, T fail, F&& body) {
    return tk::guarded(name, std::move(fail), [&]() -> T {
        const bc::BcModule* m = bc::bc_module();
        return m ? body(*m) : fail;
    });
}

// The condition of that kind and id, read through `read`; `fail` when there is none.
template <class T, class F> T with(const char* name, int kind, int id, T fail, F&& read) {
    return query(name, fail, [&](const bc::BcModule& m) -> T {
        const bc::Condition* c = m.condition(kind, id);
        return c ? read(*c) : fail;
    });
}

double area(const bc::Condition& c, int which) {
    const auto it = c.areas.find(which);
    return it == c.areas.end() ? 0.0 : it->second;
}

// The six dof values or signs of a condition, copied into storage that stays put until the next
// call of the same function (the interface hands out a pointer, never null).
template <class T, std::size_t N>
const T* dof(const char* name, int kind, int id, std::array<T, 6> bc::Condition::*field,
             std::array<T, 6> (&storage)[N], int slot) {
    storage[slot] =
        with(name, kind, id, std::array<T, 6>{}, [&](const bc::Condition& c) { return c.*field; });
    return storage[slot].data();
}
std::array<double, 6> g_values[3];
std::array<int, 6> g_signs[3];

const bc::BoundaryLayer* layer(const bc::BcModule& m, int id) {
    const auto it = m.state().layers.find(id);
    return it == m.state().layers.end() ? nullptr : it->second.get();
}

// The sculpt mesher's settings and their defaults: one table, documented in the kernel README.
using SculptValue = std::variant<double, int, bool, std::string>;
const std::vector<std::pair<std::string, SculptValue>>& sculpt_defaults() {
    static const std::vector<std::pair<std::string, SculptValue>> table{
        {"num_procs", 1},
        {"cell_size", 0.0},
        {"nelx", 0},
        {"nely", 0},
        {"nelz", 0},
        {"box_expand", 0.0},
        {"smooth", std::string("fixed_bbox")},
        {"smooth_iterations", 3},
        {"adapt_type", std::string("none")},
        {"adapt_levels", 2},
        {"pillow_surfaces", false},
        {"pillow_curves", false},
        {"capture", true},
        {"defeature_iterations", 5},
        {"min_vol_cells", 1},
        {"htet", -1.0},
        {"stair", false},
        {"gen_sidesets", 0},
        {"void", false},
        {"trimesh", false},
    };
    return table;
}

const SculptValue* sculpt_default(const std::string& variable) {
    std::string name = variable;
    for (char& ch : name)
        ch = static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
    for (const auto& [key, value] : sculpt_defaults())
        if (key == name)
            return &value;
    tk::error("'" + variable + "' is not a sculpt setting (see the kernel README)");
    return nullptr;
}

double sculpt_number(const SculptValue& v) {
    if (const auto* d = std::get_if<double>(&v))
        return *d;
    if (const auto* i = std::get_if<int>(&v))
        return *i;
    if (const auto* b = std::get_if<bool>(&v))
        return *b ? 1 : 0;
    return 0;
}

} // namespace

namespace TarvoInterface {

// ---- Thermal conditions
// ------------------------------------------------------------------------------

bool is_on_thin_shell(TI_BCTypes bc_type_enum, int entity_id) {
    return with("is_on_thin_shell", bc_type_enum, entity_id, false,
                [](const bc::Condition& c) { return c.shell; });
}

bool temperature_is_on_solid(TI_BCTypes bc_type_enum, int entity_id) {
    return with("temperature_is_on_solid", bc_type_enum, entity_id, false,
                [](const bc::Condition& c) { return !c.shell; });
}

bool convection_is_on_solid(int entity_id) {
    return with("convection_is_on_solid", TI_BC_CONVECTION, entity_id, false,
                [](const bc::Condition& c) { return !c.shell; });
}

bool convection_is_on_shell_area(int entity_id, TI_BCEntityTypes shell_area_enum) {
    return with("convection_is_on_shell_area", TI_BC_CONVECTION, entity_id, false,
                [&](const bc::Condition& c) {
                    const bool top = shell_area_enum == TI_BC_SHELL_TOP ||
                                     shell_area_enum == TI_BC_SHELL_TOP_CONVECTION_COEFFICIENT;
                    const bool bottom =
                        shell_area_enum == TI_BC_SHELL_BOTTOM ||
                        shell_area_enum == TI_BC_SHELL_BOTTOM_CONVECTION_COEFFICIENT;
                    return c.shell && ((top && c.areas.count(TI_BC_SHELL_TOP)) ||
                                       (bottom && c.areas.count(TI_BC_SHELL_BOTTOM)));
                });
}

double get_convection_coefficient(int entity_id, TI_BCEntityTypes bc_type_enum) {
    return with("get_convection_coefficient", TI_BC_CONVECTION, entity_id, 0.0,
                [&](const bc::Condition& c) { return area(c, bc_type_enum); });
}

double get_bc_temperature(TI_BCTypes bc_type_enum, int entity_id, TI_BCEntityTypes temp_type_enum) {
    return with("get_bc_temperature", bc_type_enum, entity_id, 0.0,
                [&](const bc::Condition& c) { return area(c, temp_type_enum); });
}

bool temperature_is_on_shell_area(TI_BCTypes bc_type_enum, TI_BCEntityTypes bc_area_enum,
                                  int entity_id) {
    return with("temperature_is_on_shell_area", bc_type_enum, entity_id, false,
                [&](const bc::Condition& c) { return c.shell && c.areas.count(bc_area_enum); });
}

bool heatflux_is_on_shell_area(TI_BCEntityTypes bc_area_enum, int entity_id) {
    return with("heatflux_is_on_shell_area", TI_BC_HEATFLUX, entity_id, false,
                [&](const bc::Condition& c) { return c.shell && c.areas.count(bc_area_enum); });
}

double get_heatflux_on_area(TI_BCEntityTypes bc_area_enum, int entity_id) {
    return with("get_heatflux_on_area", TI_BC_HEATFLUX, entity_id, 0.0,
                [&](const bc::Condition& c) { return area(c, bc_area_enum); });
}

// ---- CFD and contact
// ---------------------------------------------------------------------------------

int get_cfd_type(int entity_id) {
    return query("get_cfd_type", 0, [&](const bc::BcModule& m) {
        const bc::Condition* c = m.cfd_condition(entity_id);
        return c ? c->kind : 0;
    });
}

std::vector<CFD_BC_Entity> get_all_cfd_bcs() {
    return query("get_all_cfd_bcs", std::vector<CFD_BC_Entity>{}, [](const bc::BcModule& m) {
        std::vector<CFD_BC_Entity> out;
        for (const auto& [key, c] : m.state().conditions)
            if (bc::is_cfd_kind(c->kind))
                out.push_back({bc::kind_by_code(c->kind)->word, c->name, c->id});
        return out;
    });
}

double get_contact_pair_friction_value(int entity_id) {
    return with("get_contact_pair_friction_value", TI_BC_CONTACT_PAIR, entity_id, 0.0,
                [](const bc::Condition& c) { return c.friction; });
}

double get_contact_pair_tolerance_value(int entity_id) {
    return with("get_contact_pair_tolerance_value", TI_BC_CONTACT_PAIR, entity_id, 0.0,
                [](const bc::Condition& c) { return c.tolerance; });
}

double get_contact_pair_tol_lower_value(int entity_id) {
    return with("get_contact_pair_tol_lower_value", TI_BC_CONTACT_PAIR, entity_id, 0.0,
                [](const bc::Condition& c) { return c.tol_lower; });
}

bool get_contact_pair_tied_state(int entity_id) {
    return with("get_contact_pair_tied_state", TI_BC_CONTACT_PAIR, entity_id, false,
                [](const bc::Condition& c) { return c.tied; });
}

bool get_contact_pair_general_state(int entity_id) {
    return with("get_contact_pair_general_state", TI_BC_CONTACT_PAIR, entity_id, false,
                [](const bc::Condition& c) { return c.general; });
}

bool get_contact_pair_exterior_state(int entity_id) {
    return with("get_contact_pair_exterior_state", TI_BC_CONTACT_PAIR, entity_id, false,
                [](const bc::Condition& c) { return c.exterior; });
}

// ---- Displacement, velocity, acceleration
// ------------------------------------------------------------

const double* get_displacement_dof_values(int entity_id) {
    return dof("get_displacement_dof_values", TI_BC_DISPLACEMENT, entity_id,
               &bc::Condition::dof_values, g_values, 0);
}
const int* get_displacement_dof_signs(int entity_id) {
    return dof("get_displacement_dof_signs", TI_BC_DISPLACEMENT, entity_id,
               &bc::Condition::dof_signs, g_signs, 0);
}
const double* get_velocity_dof_values(int entity_id) {
    return dof("get_velocity_dof_values", TI_BC_VELOCITY, entity_id, &bc::Condition::dof_values,
               g_values, 1);
}
const int* get_velocity_dof_signs(int entity_id) {
    return dof("get_velocity_dof_signs", TI_BC_VELOCITY, entity_id, &bc::Condition::dof_signs,
               g_signs, 1);
}
const double* get_acceleration_dof_values(int entity_id) {
    return dof("get_acceleration_dof_values", TI_BC_ACCELERATION, entity_id,
               &bc::Condition::dof_values, g_values, 2);
}
const int* get_acceleration_dof_signs(int entity_id) {
    return dof("get_acceleration_dof_signs", TI_BC_ACCELERATION, entity_id,
               &bc::Condition::dof_signs, g_signs, 2);
}

std::string get_displacement_combine_type(int entity_id) {
    return with("get_displacement_combine_type", TI_BC_DISPLACEMENT, entity_id, std::string(),
                [](const bc::Condition& c) { return c.combine; });
}
std::string get_velocity_combine_type(int entity_id) {
    return with("get_velocity_combine_type", TI_BC_VELOCITY, entity_id, std::string(),
                [](const bc::Condition& c) { return c.combine; });
}
std::string get_acceleration_combine_type(int entity_id) {
    return with("get_acceleration_combine_type", TI_BC_ACCELERATION, entity_id, std::string(),
                [](const bc::Condition& c) { return c.combine; });
}

// ---- Pressure, force, constraint
// ---------------------------------------------------------------------

double get_pressure_value(int entity_id) {
    return with("get_pressure_value", TI_BC_PRESSURE, entity_id, 0.0,
                [](const bc::Condition& c) { return c.pressure; });
}

std::string get_pressure_function(int entity_id) {
    return with("get_pressure_function", TI_BC_PRESSURE, entity_id, std::string(),
                [](const bc::Condition& c) { return c.function; });
}

double get_force_magnitude(int entity_id) {
    return with("get_force_magnitude", TI_BC_FORCE, entity_id, 0.0,
                [](const bc::Condition& c) { return c.magnitude; });
}

double get_moment_magnitude(int entity_id) {
    return with("get_moment_magnitude", TI_BC_FORCE, entity_id, 0.0,
                [](const bc::Condition& c) { return c.moment; });
}

std::array<double, 3> get_force_direction_vector(int entity_id) {
    return with("get_force_direction_vector", TI_BC_FORCE, entity_id, std::array<double, 3>{},
                [](const bc::Condition& c) { return c.direction; });
}

std::array<double, 3> get_force_moment_vector(int entity_id) {
    return with("get_force_moment_vector", TI_BC_FORCE, entity_id, std::array<double, 3>{},
                [](const bc::Condition& c) { return c.moment_direction; });
}

std::string get_constraint_type(int constraint_id) {
    return with("get_constraint_type", TI_BC_CONSTRAINT, constraint_id, std::string(),
                [](const bc::Condition& c) { return c.constraint_type; });
}

std::string get_constraint_reference_point(int constraint_id) {
    return with("get_constraint_reference_point", TI_BC_CONSTRAINT, constraint_id, std::string(),
                [](const bc::Condition& c) { return bc::describe({c.reference}); });
}

std::string get_constraint_dependent_entity_point(int constraint_id) {
    return with("get_constraint_dependent_entity_point", TI_BC_CONSTRAINT, constraint_id,
                std::string(), [](const bc::Condition& c) { return bc::describe(c.on); });
}

// ---- Conditions by kind, and the sets they lie on
// ----------------------------------------------------

std::vector<int> get_bc_id_list(TI_BCTypes bc_type_enum) {
    return query("get_bc_id_list", std::vector<int>{}, [&](const bc::BcModule& m) {
        std::vector<int> out;
        for (const auto& [key, c] : m.state().conditions)
            if (c->kind == bc_type_enum)
                out.push_back(c->id);
        return out;
    });
}

std::string get_bc_name(TI_BCTypes bc_type_enum, int bc_id) {
    return with("get_bc_name", bc_type_enum, bc_id, std::string(),
                [](const bc::Condition& c) { return c.name; });
}

namespace {
std::vector<int> sets_for(const char* name, int kind, int id, const char* set) {
    return with(name, kind, id, std::vector<int>{}, [&](const bc::Condition& c) {
        std::vector<int> out;
        for (const bc::Target& t : c.on)
            if (t.type == set && bc::target_exists(t))
                out.push_back(t.id);
        return out;
    });
}
} // namespace

std::vector<int> get_nodeset_id_list_for_bc(TI_BCTypes bc_type_enum, int bc_id) {
    return sets_for("get_nodeset_id_list_for_bc", bc_type_enum, bc_id, "nodeset");
}

std::vector<int> get_sideset_id_list_for_bc(TI_BCTypes bc_type_enum, int bc_id) {
    return sets_for("get_sideset_id_list_for_bc", bc_type_enum, bc_id, "sideset");
}

// ---- Boundary layers
// ---------------------------------------------------------------------------------

int get_next_boundary_layer_id() {
    return query("get_next_boundary_layer_id", -1,
                 [](const bc::BcModule& m) { return m.next_id(bc::kLayerSpace); });
}

bool is_boundary_layer_id_available(int boundary_layer_id) {
    return query("is_boundary_layer_id_available", false, [&](const bc::BcModule& m) {
        return boundary_layer_id > 0 && !m.state().layers.count(boundary_layer_id);
    });
}

std::string get_boundary_layer_algorithm(int boundary_layer_id) {
    return query("get_boundary_layer_algorithm", std::string(), [&](const bc::BcModule& m) {
        const bc::BoundaryLayer* l = layer(m, boundary_layer_id);
        return l ? l->algorithm : std::string();
    });
}

bool get_boundary_layer_uniform_parameters(int boundary_layer_id, double& returned_first_row_height,
                                           double& returned_growth_factor,
                                           int& returned_number_rows) {
    return query("get_boundary_layer_uniform_parameters", false, [&](const bc::BcModule& m) {
        const bc::BoundaryLayer* l = layer(m, boundary_layer_id);
        if (!l || l->algorithm != "uniform")
            return false;
        returned_first_row_height = l->first_height;
        returned_growth_factor = l->growth;
        returned_number_rows = l->rows;
        return true;
    });
}

bool get_boundary_layer_aspect_first_parameters(int boundary_layer_id,
                                                double& returned_first_row_aspect,
                                                double& returned_growth_factor,
                                                int& returned_number_rows) {
    return query("get_boundary_layer_aspect_first_parameters", false, [&](const bc::BcModule& m) {
        const bc::BoundaryLayer* l = layer(m, boundary_layer_id);
        if (!l || l->algorithm != "aspect first")
            return false;
        returned_first_row_aspect = l->first_aspect;
        returned_growth_factor = l->growth;
        returned_number_rows = l->rows;
        return true;
    });
}

bool get_boundary_layer_aspect_last_parameters(int boundary_layer_id,
                                               double& returned_first_row_height,
                                               int& returned_number_rows,
                                               double& returned_last_row_aspect) {
    return query("get_boundary_layer_aspect_last_parameters", false, [&](const bc::BcModule& m) {
        const bc::BoundaryLayer* l = layer(m, boundary_layer_id);
        if (!l || l->algorithm != "aspect last")
            return false;
        returned_first_row_height = l->first_height;
        returned_number_rows = l->rows;
        returned_last_row_aspect = l->last_aspect;
        return true;
    });
}

namespace {
bool pairs_of(const char* name, int id, bool curves, std::vector<int>& first,
              std::vector<int>& second) {
    return query(name, false, [&](const bc::BcModule& m) {
        const bc::BoundaryLayer* l = layer(m, id);
        if (!l)
            return false;
        first.clear();
        second.clear();
        for (const auto& [a, b] : curves ? l->curve_surface : l->surface_volume) {
            first.push_back(a);
            second.push_back(b);
        }
        return true;
    });
}
bool intersections_of(const char* name, bool vertex, std::vector<int>& first,
                      std::vector<int>& second, std::vector<std::string>& types) {
    return query(name, false, [&](const bc::BcModule& m) {
        first.clear();
        second.clear();
        types.clear();
        for (const auto& [key, type] :
             vertex ? m.state().vertex_intersections : m.state().curve_intersections) {
            first.push_back(key.first);
            second.push_back(key.second);
            types.push_back(type);
        }
        return true;
    });
}
} // namespace

bool get_boundary_layer_curve_surface_pairs(int boundary_layer_id,
                                            std::vector<int>& returned_curve_list,
                                            std::vector<int>& returned_surface_list) {
    return pairs_of("get_boundary_layer_curve_surface_pairs", boundary_layer_id, true,
                    returned_curve_list, returned_surface_list);
}

bool get_boundary_layer_surface_volume_pairs(int boundary_layer_id,
                                             std::vector<int>& returned_surface_list,
                                             std::vector<int>& returned_volume_list) {
    return pairs_of("get_boundary_layer_surface_volume_pairs", boundary_layer_id, false,
                    returned_surface_list, returned_volume_list);
}

bool get_boundary_layer_vertex_intersection_types(std::vector<int>& returned_vertex_list,
                                                  std::vector<int>& returned_surface_list,
                                                  std::vector<std::string>& returned_types) {
    return intersections_of("get_boundary_layer_vertex_intersection_types", true,
                            returned_vertex_list, returned_surface_list, returned_types);
}

bool get_boundary_layer_curve_intersection_types(std::vector<int>& returned_curve_list,
                                                 std::vector<int>& returned_volume_list,
                                                 std::vector<std::string>& returned_types) {
    return intersections_of("get_boundary_layer_curve_intersection_types", false,
                            returned_curve_list, returned_volume_list, returned_types);
}

bool get_boundary_layer_continuity(int boundary_layer_id) {
    return query("get_boundary_layer_continuity", false, [&](const bc::BcModule& m) {
        const bc::BoundaryLayer* l = layer(m, boundary_layer_id);
        return l && l->continuity;
    });
}

std::vector<int> get_boundary_layer_id_list() {
    return query("get_boundary_layer_id_list", std::vector<int>{},
                 [](const bc::BcModule& m) { return m.all_ids("boundary_layer"); });
}

// ---- Coordinate systems and sculpt defaults
// ------------------------------------------------------

std::vector<int> get_coordinate_systems_id_list() {
    return query("get_coordinate_systems_id_list", std::vector<int>{},
                 [](const bc::BcModule& m) { return m.all_ids("coordinate_system"); });
}

double get_dbl_sculpt_default(const std::string& variable) {
    const SculptValue* v = sculpt_default(variable);
    return v ? sculpt_number(*v) : 0.0;
}

int get_int_sculpt_default(const std::string& variable) {
    const SculptValue* v = sculpt_default(variable);
    return v ? static_cast<int>(sculpt_number(*v)) : 0;
}

bool get_bool_sculpt_default(const std::string& variable) {
    const SculptValue* v = sculpt_default(variable);
    return v && sculpt_number(*v) != 0;
}

std::string get_string_sculpt_default(const std::string& variable) {
    const SculptValue* v = sculpt_default(variable);
    if (!v)
        return {};
    if (const auto* s = std::get_if<std::string>(v))
        return *s;
    if (const auto* b = std::get_if<bool>(v))
        return *b ? "true" : "false";
    if (const auto* i = std::get_if<int>(v))
        return std::to_string(*i);
    return tk::format_number(std::get<double>(*v));
}

} // namespace TarvoInterface
