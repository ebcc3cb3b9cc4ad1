#include "monitors/EntityMonitor.h"

#include "monitors/BcMonitors.h"
#include "monitors/ExodusMonitor.h"
#include "monitors/GeometryMonitor.h"

#include "tarvo/TarvoInterface.h"
#include "tarvo_util/TarvoString.h"

#include <QHash>

namespace {

// Entity type codes. Several names may share a code; the first name of each code is the
// canonical type that its monitors report.
enum EntityCode : int {
    unknown_code = -1,
    body_code = 0,
    volume_code = 1,
    surface_code = 2,
    curve_code = 3,
    vertex_code = 4,
    block_code = 5,
    sideset_code = 6,
    nodeset_code = 7,
    force_code = 8,
    pressure_code = 9,
    heatflux_code = 10,
    temperature_code = 11,
    convection_code = 12,
    displacement_code = 13,
    acceleration_code = 14,
    velocity_code = 15,
    contact_region_code = 16,
    constraint_code = 17,
    cfd_bc_code = 18,
    material_code = 19,
    boundary_layer_code = 20,
};

const QHash<QString, int>& codes_by_name() {
    static const QHash<QString, int> codes = {
        {QStringLiteral("body"), body_code},
        {QStringLiteral("volume"), volume_code},
        {QStringLiteral("surface"), surface_code},
        {QStringLiteral("curve"), curve_code},
        {QStringLiteral("vertex"), vertex_code},
        {QStringLiteral("block"), block_code},
        {QStringLiteral("sideset"), sideset_code},
        {QStringLiteral("nodeset"), nodeset_code},
        {QStringLiteral("force"), force_code},
        {QStringLiteral("pressure"), pressure_code},
        {QStringLiteral("heatflux"), heatflux_code},
        {QStringLiteral("temperature"), temperature_code},
        {QStringLiteral("convection"), convection_code},
        {QStringLiteral("displacement"), displacement_code},
        {QStringLiteral("acceleration"), acceleration_code},
        {QStringLiteral("velocity"), velocity_code},
        {QStringLiteral("contact region"), contact_region_code},
        {QStringLiteral("constraint"), constraint_code},
        {QStringLiteral("cfd_bc"), cfd_bc_code},
        // Each CFD kind is watched as "cfd_bc": one key per id, whatever kind the client named.
        {QStringLiteral("axis"), cfd_bc_code},
        {QStringLiteral("exhaustfan"), cfd_bc_code},
        {QStringLiteral("fan"), cfd_bc_code},
        {QStringLiteral("inletvent"), cfd_bc_code},
        {QStringLiteral("intakefan"), cfd_bc_code},
        {QStringLiteral("interface"), cfd_bc_code},
        {QStringLiteral("interior"), cfd_bc_code},
        {QStringLiteral("massflowinlet"), cfd_bc_code},
        {QStringLiteral("outflow"), cfd_bc_code},
        {QStringLiteral("outletvent"), cfd_bc_code},
        {QStringLiteral("periodic"), cfd_bc_code},
        {QStringLiteral("periodicshadow"), cfd_bc_code},
        {QStringLiteral("porousjump"), cfd_bc_code},
        {QStringLiteral("pressurefarfield"), cfd_bc_code},
        {QStringLiteral("pressureinlet"), cfd_bc_code},
        {QStringLiteral("pressureoutlet"), cfd_bc_code},
        {QStringLiteral("radiator"), cfd_bc_code},
        {QStringLiteral("supersonicinflow"), cfd_bc_code},
        {QStringLiteral("supersonicoutflow"), cfd_bc_code},
        {QStringLiteral("symmetry"), cfd_bc_code},
        {QStringLiteral("velocityinlet"), cfd_bc_code},
        {QStringLiteral("wall"), cfd_bc_code},
        {QStringLiteral("material"), material_code},
        {QStringLiteral("media"), material_code},
        {QStringLiteral("boundary_layer"), boundary_layer_code},
    };
    return codes;
}

const QString entity_kind = QStringLiteral("entity");

} // namespace

EntityMonitor::EntityMonitor(const QString& type, int id)
    : type(type),
      id(id), record{{QStringLiteral("entity_type"), type}, {QStringLiteral("entity_id"), id}} {}

std::vector<RPCRequest> EntityMonitor::get_notifications(const MonitorSelection& selection) {
    const auto selected = selection.find(entity_kind);
    if (selected == selection.end() || !selected->second.contains({entity_type_code(type), id}))
        return {};
    if (!exists)
        return {};
    if (!modified && incremental)
        return {};
    return {RPCRequest(QStringLiteral("datamonitor.entity_monitor"), record)};
}

bool EntityMonitor::check_exists() {
    const TarvoString id_text = TarvoString::number(id);
    exists = !TarvoInterface::parse_tarvo_list(type.toStdString(), id_text.str()).empty();
    return exists;
}

int entity_type_code(const QString& name) {
    return codes_by_name().value(name.toLower(), unknown_code);
}

std::unique_ptr<DataMonitor> create_monitor(int code, int id) {
    switch (code) {
    case volume_code:
        return std::make_unique<VolumeMonitor>(id);
    case surface_code:
        return std::make_unique<SurfaceMonitor>(id);
    case curve_code:
        return std::make_unique<CurveMonitor>(id);
    case vertex_code:
        return std::make_unique<VertexMonitor>(id);
    case block_code:
        return std::make_unique<BlockMonitor>(id);
    case sideset_code:
        return std::make_unique<SidesetMonitor>(id);
    case nodeset_code:
        return std::make_unique<NodesetMonitor>(id);
    case force_code:
        return std::make_unique<BC_ForceMonitor>(id);
    case pressure_code:
        return std::make_unique<BC_PressureMonitor>(id);
    case heatflux_code:
        return std::make_unique<BC_HeatfluxMonitor>(id);
    case temperature_code:
        return std::make_unique<BC_TemperatureMonitor>(id);
    case convection_code:
        return std::make_unique<BC_ConvectionMonitor>(id);
    case displacement_code:
        return std::make_unique<BC_DisplacementMonitor>(id);
    case acceleration_code:
        return std::make_unique<BC_AccelerationMonitor>(id);
    case velocity_code:
        return std::make_unique<BC_VelocityMonitor>(id);
    case contact_region_code:
        return std::make_unique<BC_ContactRegionMonitor>(id);
    case constraint_code:
        return std::make_unique<BC_ConstraintMonitor>(id);
    case cfd_bc_code:
        return std::make_unique<BC_CFDMonitor>(id);
    case material_code:
        return std::make_unique<MaterialMonitor>(id);
    case boundary_layer_code:
        return std::make_unique<BoundaryLayerMonitor>(id);
    default:
        // Bodies have no monitor: their keys are stored and produce no data.
        return nullptr;
    }
}
