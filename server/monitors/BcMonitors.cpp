#include "monitors/BcMonitors.h"

#include "tarvo/MaterialInterface.h"
#include "tarvo/TarvoInterface.h"

#include <QJsonArray>
#include <QJsonObject>

namespace TI = TarvoInterface;

namespace {

QString text(const std::string& value) {
    return QString::fromStdString(value);
}

} // namespace

void BoundaryConditionMonitor::update() {
    if (!check_exists())
        return;
    const std::string kernel_type = type.toStdString();
    record.insert(QStringLiteral("name"), text(TI::get_exodus_entity_name(kernel_type, id)));
    record.insert(QStringLiteral("idless_signature"),
                  text(TI::get_idless_signature(kernel_type, id)));
}

void BC_ForceMonitor::update() {
    BoundaryConditionMonitor::update();
    if (!exists)
        return;
    const auto direction = TI::get_force_direction_vector(id);
    const auto moment = TI::get_force_moment_vector(id);
    record.insert(QStringLiteral("force_value"), TI::get_force_magnitude(id));
    record.insert(QStringLiteral("force_direction_x"), direction[0]);
    record.insert(QStringLiteral("force_direction_y"), direction[1]);
    record.insert(QStringLiteral("force_direction_z"), direction[2]);
    record.insert(QStringLiteral("force_moment_magnitude"), TI::get_moment_magnitude(id));
    record.insert(QStringLiteral("force_moment_x"), moment[0]);
    record.insert(QStringLiteral("force_moment_y"), moment[1]);
    record.insert(QStringLiteral("force_moment_z"), moment[2]);
}

void BC_PressureMonitor::update() {
    BoundaryConditionMonitor::update();
    if (exists)
        record.insert(QStringLiteral("pressure"), TI::get_pressure_value(id));
}

void BC_HeatfluxMonitor::update() {
    BoundaryConditionMonitor::update();
    if (!exists)
        return;
    record.insert(QStringLiteral("heatflux_on_thin_shell"),
                  TI::is_on_thin_shell(TI::TI_BC_HEATFLUX, id));
    // Both areas are sent, on a solid too.
    record.insert(QStringLiteral("heatflux_top_value"),
                  TI::get_heatflux_on_area(TI::TI_BC_SHELL_TOP, id));
    record.insert(QStringLiteral("heatflux_bottom_value"),
                  TI::get_heatflux_on_area(TI::TI_BC_SHELL_BOTTOM, id));
}

void BC_TemperatureMonitor::update() {
    BoundaryConditionMonitor::update();
    if (!exists)
        return;
    using namespace TI;
    const bool shell = is_on_thin_shell(TI_BC_TEMPERATURE, id);
    record.insert(QStringLiteral("temperature_on_thin_shell"), shell);
    QString kind = QStringLiteral("solid");
    if (shell) {
        const bool middle = temperature_is_on_shell_area(TI_BC_TEMPERATURE, TI_BC_SHELL_MIDDLE, id);
        const bool gradient =
            temperature_is_on_shell_area(TI_BC_TEMPERATURE, TI_BC_SHELL_GRADIENT, id);
        const bool top = temperature_is_on_shell_area(TI_BC_TEMPERATURE, TI_BC_SHELL_TOP, id);
        const bool bottom = temperature_is_on_shell_area(TI_BC_TEMPERATURE, TI_BC_SHELL_BOTTOM, id);
        if (top || bottom)
            kind = QStringLiteral("topbottom");
        else if (gradient && middle)
            kind = QStringLiteral("middlegradient");
        else if (gradient)
            kind = QStringLiteral("gradient");
        else
            kind = QStringLiteral("middle");
    }
    record.insert(QStringLiteral("temperature_type"), kind);
    const struct {
        const char* key;
        TI_BCEntityTypes area;
    } areas[] = {{"temperature_solid", TI_BC_SOLID_TEMPERATURE},
                 {"temperature_shell_top", TI_BC_SHELL_TOP},
                 {"temperature_shell_bottom", TI_BC_SHELL_BOTTOM},
                 {"temperature_shell_middle", TI_BC_SHELL_MIDDLE},
                 {"temperature_shell_gradient", TI_BC_SHELL_GRADIENT}};
    for (const auto& a : areas)
        record.insert(QLatin1String(a.key), 0.0);
    const auto fill = [&](int index) {
        record.insert(QLatin1String(areas[index].key),
                      get_bc_temperature(TI_BC_TEMPERATURE, id, areas[index].area));
    };
    if (kind == QLatin1String("solid")) {
        fill(0);
    } else if (kind == QLatin1String("topbottom")) {
        fill(1);
        fill(2);
    } else {
        if (kind != QLatin1String("gradient"))
            fill(3);
        if (kind != QLatin1String("middle"))
            fill(4);
    }
}

void BC_ConvectionMonitor::update() {
    BoundaryConditionMonitor::update();
    if (!exists)
        return;
    using namespace TI;
    const bool shell = is_on_thin_shell(TI_BC_CONVECTION, id);
    record.insert(QStringLiteral("convection_on_thin_shell"), shell);
    record.insert(QStringLiteral("convection_bottom_temperature"), 0.0);
    record.insert(QStringLiteral("convection_bottom_coefficient"), 0.0);
    if (shell) {
        record.insert(QStringLiteral("convection_temperature"),
                      get_bc_temperature(TI_BC_CONVECTION, id, TI_BC_SHELL_TOP));
        record.insert(QStringLiteral("convection_coefficient"),
                      get_convection_coefficient(id, TI_BC_SHELL_TOP_CONVECTION_COEFFICIENT));
        record.insert(QStringLiteral("convection_bottom_temperature"),
                      get_bc_temperature(TI_BC_CONVECTION, id, TI_BC_SHELL_BOTTOM));
        record.insert(QStringLiteral("convection_bottom_coefficient"),
                      get_convection_coefficient(id, TI_BC_SHELL_BOTTOM_CONVECTION_COEFFICIENT));
    } else {
        record.insert(QStringLiteral("convection_temperature"),
                      get_bc_temperature(TI_BC_CONVECTION, id, TI_BC_SOLID_CONVECTION_TEMPERATURE));
        record.insert(QStringLiteral("convection_coefficient"),
                      get_convection_coefficient(id, TI_BC_SOLID_CONVECTION_COEFFICIENT));
    }
}

void BC_DofMonitor::update() {
    BoundaryConditionMonitor::update();
    if (!exists)
        return;
    std::string combine;
    const double* values = nullptr;
    const int* signs = nullptr;
    if (type == QLatin1String("displacement")) {
        combine = TI::get_displacement_combine_type(id);
        values = TI::get_displacement_dof_values(id);
        signs = TI::get_displacement_dof_signs(id);
    } else if (type == QLatin1String("acceleration")) {
        combine = TI::get_acceleration_combine_type(id);
        values = TI::get_acceleration_dof_values(id);
        signs = TI::get_acceleration_dof_signs(id);
    } else {
        combine = TI::get_velocity_combine_type(id);
        values = TI::get_velocity_dof_values(id);
        signs = TI::get_velocity_dof_signs(id);
    }
    record.insert(type + QStringLiteral("_combine_method"), text(combine));
    for (int i = 0; i < 6; ++i) {
        record.insert(type + QStringLiteral("_dof_value_") + QString::number(i),
                      values ? values[i] : 0.0);
        record.insert(type + QStringLiteral("_dof_sign_") + QString::number(i),
                      signs ? signs[i] : 0);
    }
}

void BC_ConstraintMonitor::update() {
    BoundaryConditionMonitor::update();
    if (!exists)
        return;
    record.insert(QStringLiteral("constraint_reference_point"),
                  text(TI::get_constraint_reference_point(id)));
    record.insert(QStringLiteral("constraint_dependent_entity"),
                  text(TI::get_constraint_dependent_entity_point(id)));
    record.insert(QStringLiteral("constraint_type"), text(TI::get_constraint_type(id)));
}

void BC_CFDMonitor::update() {
    BoundaryConditionMonitor::update();
    if (exists)
        record.insert(QStringLiteral("cfd_type"), TI::get_cfd_type(id));
}

void MaterialMonitor::update() {
    if (!check_exists())
        return;
    TI::TarvoBaseInterface* base = TI::get_interface("Material");
    auto* mi = dynamic_cast<TI::MaterialInterface*>(base);
    const TI::MaterialInterface::Material material = mi ? mi->find_material(id) : nullptr;
    if (!material) {
        if (base)
            TI::release_interface(base);
        return;
    }
    record.insert(QStringLiteral("name"), text(mi->material_name(material)));
    const auto group = mi->material_group(material);
    record.insert(QStringLiteral("property_group"), text(mi->group_name(group)));
    if (mi->is_cfd(material)) {
        double value = 0.0;
        mi->get_scalar_value(material, mi->property_by_name("CFD_MEDIA_TYPE"), value);
        if (value == 0)
            record.insert(QStringLiteral("media_type"), QStringLiteral("fluid"));
        else if (value == 1)
            record.insert(QStringLiteral("media_type"), QStringLiteral("porous"));
        else if (value == 2)
            record.insert(QStringLiteral("media_type"), QStringLiteral("solid"));
    } else {
        QJsonObject scalars, vectors, tables;
        std::vector<TI::MaterialInterface::Property> properties;
        mi->group_properties(group, properties);
        for (const auto property : properties) {
            const QString name = text(mi->property_name(property));
            const int kind = mi->property_kind(property);
            if (kind == 0) {
                double value = 0;
                scalars.insert(name, mi->get_scalar_value(material, property, value)
                                         ? QJsonValue(value)
                                         : QJsonValue(QJsonValue::Null));
            } else if (kind == 1) {
                std::vector<double> values;
                QJsonArray array;
                if (mi->get_vector_value(material, property, values))
                    for (double v : values)
                        array.append(v);
                vectors.insert(name, array);
            } else if (kind == 2 || kind == 3) {
                std::vector<std::vector<double>> rows;
                QJsonArray array;
                if (mi->get_tabular_value(material, property, rows))
                    for (const auto& row : rows) {
                        QJsonArray cells;
                        for (double v : row)
                            cells.append(v);
                        array.append(cells);
                    }
                tables.insert(name, array);
            }
        }
        record.insert(QStringLiteral("scalar_properties"), scalars);
        record.insert(QStringLiteral("vector_properties"), vectors);
        record.insert(QStringLiteral("tabular_properties"), tables);
    }
    TI::release_interface(base);
}

void BoundaryLayerMonitor::update() {
    if (!check_exists())
        return;
    double height = 0, growth = 0;
    int rows = 0;
    TI::get_boundary_layer_uniform_parameters(id, height, growth, rows);
    record.insert(QStringLiteral("algorithm"), text(TI::get_boundary_layer_algorithm(id)));
    record.insert(QStringLiteral("first_row_height"), height);
    record.insert(QStringLiteral("growth_factor"), growth);
    record.insert(QStringLiteral("number_rows"), rows);
    record.insert(QStringLiteral("internal_continuity"), TI::get_boundary_layer_continuity(id));
}
