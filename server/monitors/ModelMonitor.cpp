#include "monitors/ModelMonitor.h"

#include "tarvo/MaterialInterface.h"
#include "tarvo/TarvoInterface.h"
#include "tarvo/TarvoTypes.h"

#include <QHash>

#include <array>

namespace {

QString text(const std::string& value) {
    return QString::fromStdString(value);
}

QJsonArray int_array(const std::vector<int>& values) {
    QJsonArray array;
    for (int value : values)
        array.append(value);
    return array;
}

// The FEA boundary conditions in the order in which the tree lists them, each with the kind of
// set that carries it.
enum class Carrier { nodesets, sidesets, none };
struct FeaKind {
    const char* type;
    TarvoInterface::TI_BCTypes code;
    Carrier children;
};
constexpr std::array<FeaKind, 11> fea_kinds = {{
    {"force", TarvoInterface::TI_BC_FORCE, Carrier::nodesets},
    {"pressure", TarvoInterface::TI_BC_PRESSURE, Carrier::sidesets},
    {"heatflux", TarvoInterface::TI_BC_HEATFLUX, Carrier::sidesets},
    {"temperature", TarvoInterface::TI_BC_TEMPERATURE, Carrier::nodesets},
    {"convection", TarvoInterface::TI_BC_CONVECTION, Carrier::sidesets},
    {"displacement", TarvoInterface::TI_BC_DISPLACEMENT, Carrier::nodesets},
    {"acceleration", TarvoInterface::TI_BC_ACCELERATION, Carrier::nodesets},
    {"velocity", TarvoInterface::TI_BC_VELOCITY, Carrier::nodesets},
    {"constraint", TarvoInterface::TI_BC_CONSTRAINT, Carrier::sidesets},
    {"contact region", TarvoInterface::TI_BC_CONTACT_REGION, Carrier::sidesets},
    {"contact pair", TarvoInterface::TI_BC_CONTACT_PAIR, Carrier::none},
}};

const QString model_kind = QStringLiteral("model");

} // namespace

bool ModelMonitor::any_changed() const {
    return geometry_changed || exodus_changed || fea_bcs_changed || cfd_bcs_changed ||
           materials_changed || boundary_layers_changed || groups_changed;
}

void ModelMonitor::update() {
    const bool full = !incremental;
    if (geometry_changed || full)
        build_geometry();
    if (groups_changed || full)
        build_groups();
    if (exodus_changed || full)
        build_exodus_sets();
    if (fea_bcs_changed || full)
        build_fea_bcs();
    if (cfd_bcs_changed || full)
        build_cfd_bcs();
    if (materials_changed || full)
        build_materials();
    if (boundary_layers_changed || full)
        build_boundary_layers();
}

std::vector<RPCRequest> ModelMonitor::get_notifications(const MonitorSelection& selection) {
    const auto selected = selection.find(model_kind);
    if (selected == selection.end() || !selected->second.contains({0, 0}) || model.isEmpty())
        return {};
    return {RPCRequest(QStringLiteral("datamonitor.model_monitor"), model)};
}

int ModelMonitor::cfd_bc_code(const QString& type) {
    static const QHash<QString, int> codes = {
        {QStringLiteral("axis"), TarvoInterface::TI_BC_CFD_AXIS},
        {QStringLiteral("exhaustfan"), TarvoInterface::TI_BC_CFD_EXHAUST_FAN},
        {QStringLiteral("fan"), TarvoInterface::TI_BC_CFD_FAN},
        {QStringLiteral("inletvent"), TarvoInterface::TI_BC_CFD_INLET_VENT},
        {QStringLiteral("intakefan"), TarvoInterface::TI_BC_CFD_INTAKE_FAN},
        {QStringLiteral("interface"), TarvoInterface::TI_BC_CFD_INTERFACE},
        {QStringLiteral("interior"), TarvoInterface::TI_BC_CFD_INTERIOR},
        {QStringLiteral("massflowinlet"), TarvoInterface::TI_BC_CFD_MASS_FLOW_INLET},
        {QStringLiteral("outflow"), TarvoInterface::TI_BC_CFD_OUTFLOW},
        {QStringLiteral("outletvent"), TarvoInterface::TI_BC_CFD_OUTLET_VENT},
        {QStringLiteral("periodic"), TarvoInterface::TI_BC_CFD_PERIODIC},
        {QStringLiteral("periodicshadow"), TarvoInterface::TI_BC_CFD_PERIODIC_SHADOW},
        {QStringLiteral("porousjump"), TarvoInterface::TI_BC_CFD_POROUS_JUMP},
        {QStringLiteral("pressurefarfield"), TarvoInterface::TI_BC_CFD_PRESSURE_FAR_FIELD},
        {QStringLiteral("pressureinlet"), TarvoInterface::TI_BC_CFD_PRESSURE_INLET},
        {QStringLiteral("pressureoutlet"), TarvoInterface::TI_BC_CFD_PRESSURE_OUTLET},
        {QStringLiteral("radiator"), TarvoInterface::TI_BC_CFD_RADIATOR},
        {QStringLiteral("supersonicinflow"), TarvoInterface::TI_BC_CFD_SUPERSONIC_INFLOW},
        {QStringLiteral("supersonicoutflow"), TarvoInterface::TI_BC_CFD_SUPERSONIC_OUTFLOW},
        {QStringLiteral("symmetry"), TarvoInterface::TI_BC_CFD_SYMMETRY},
        {QStringLiteral("velocityinlet"), TarvoInterface::TI_BC_CFD_VELOCITY_INLET},
        {QStringLiteral("wall"), TarvoInterface::TI_BC_CFD_WALL},
    };
    return codes.value(type.toLower(), -1);
}

// ---- Node forms -------------------------------------------------------------------------------

QJsonObject ModelMonitor::geometry_node(const QString& type, int id) {
    const std::string kernel_type = type.toStdString();
    QJsonObject node;
    node.insert(QStringLiteral("name"),
                text(TarvoInterface::get_entity_name(kernel_type, id, false)));
    node.insert(QStringLiteral("id"), id);
    node.insert(QStringLiteral("visible"), TarvoInterface::is_visible(kernel_type, id));
    node.insert(QStringLiteral("virtual"), TarvoInterface::is_virtual(kernel_type, id));
    return node;
}

QJsonObject ModelMonitor::exodus_node(const QString& type, int id) {
    const std::string kernel_type = type.toStdString();
    QJsonObject node;
    node.insert(QStringLiteral("id"), id);
    node.insert(QStringLiteral("name"),
                text(TarvoInterface::get_exodus_entity_name(kernel_type, id)));
    node.insert(QStringLiteral("visible"), TarvoInterface::is_visible(kernel_type, id));
    return node;
}

QJsonArray ModelMonitor::free_entity_nodes(const QString& type, const std::vector<int>& ids) {
    // Each level lists the entities one dimension down inside it.
    QString child_type;
    if (type == QLatin1String("volume"))
        child_type = QStringLiteral("surface");
    else if (type == QLatin1String("surface"))
        child_type = QStringLiteral("curve");
    else if (type == QLatin1String("curve"))
        child_type = QStringLiteral("vertex");

    const std::string kernel_type = type.toStdString();
    QJsonArray nodes;
    for (int id : ids) {
        QJsonObject node = geometry_node(type, id);
        if (!child_type.isEmpty())
            node.insert(child_type, free_entity_nodes(child_type, TarvoInterface::get_relatives(
                                                                      kernel_type, id,
                                                                      child_type.toStdString())));
        nodes.append(node);
    }
    return nodes;
}

// ---- Sections ---------------------------------------------------------------------------------

void ModelMonitor::build_geometry() {
    QJsonArray volumes;
    for (int id : TarvoInterface::parse_tarvo_list("volume", "all"))
        volumes.append(geometry_node(QStringLiteral("volume"), id));
    model.insert(QStringLiteral("volume"), volumes);

    // Only free entities stand at the top: those of a volume are reached through the volume.
    for (const char* type : {"surface", "curve", "vertex"})
        model.insert(QLatin1String(type),
                     free_entity_nodes(QLatin1String(type),
                                       TarvoInterface::get_list_of_free_ref_entities(type)));

    QJsonArray bodies;
    for (int id : TarvoInterface::parse_tarvo_list("body", "all")) {
        const std::vector<int> volume_ids = TarvoInterface::get_relatives("body", id, "volume");
        // A body is a sheet body when all its volumes are sheets (vacuously, when it has none).
        bool is_sheet_body = true;
        for (int volume_id : volume_ids)
            is_sheet_body = is_sheet_body && TarvoInterface::is_sheet_body(volume_id);
        QJsonObject body;
        body.insert(QStringLiteral("id"), id);
        body.insert(QStringLiteral("name"),
                    text(TarvoInterface::get_entity_name("body", id, false)));
        body.insert(QStringLiteral("visible"), TarvoInterface::is_visible("body", id));
        body.insert(QStringLiteral("is_sheet_body"), is_sheet_body);
        body.insert(QStringLiteral("volumes"), int_array(volume_ids));
        bodies.append(body);
    }
    model.insert(QStringLiteral("bodies"), bodies);
}

void ModelMonitor::build_groups() {
    QJsonArray groups;
    for (int id : TarvoInterface::parse_tarvo_list("group", "all")) {
        std::array<std::vector<int>, 6> children; // group, body, volume, surface, curve, vertex
        std::array<int, 9> counts{}; // node, edge, hex, quad, tet, tri, wedge, pyramid, sphere
        TarvoInterface::get_group_children(id, children[0], children[1], children[2], children[3],
                                           children[4], children[5], counts[0], counts[1],
                                           counts[2], counts[3], counts[4], counts[5], counts[6],
                                           counts[7], counts[8]);
        static const std::array<QString, 6> child_types = {
            QStringLiteral("group"),   QStringLiteral("body"),  QStringLiteral("volume"),
            QStringLiteral("surface"), QStringLiteral("curve"), QStringLiteral("vertex")};
        static const std::array<QString, 9> count_keys = {
            QStringLiteral("node_count"),  QStringLiteral("edge_count"),
            QStringLiteral("hex_count"),   QStringLiteral("quad_count"),
            QStringLiteral("tet_count"),   QStringLiteral("tri_count"),
            QStringLiteral("wedge_count"), QStringLiteral("pyramid_count"),
            QStringLiteral("sphere_count")};

        QJsonObject group;
        group.insert(QStringLiteral("id"), id);
        group.insert(QStringLiteral("name"),
                     text(TarvoInterface::get_entity_name("group", id, false)));
        group.insert(QStringLiteral("visible"), TarvoInterface::is_visible("group", id));
        // Subgroups are listed, not expanded: each also has its own entry at the top.
        for (size_t i = 0; i < children.size(); ++i) {
            if (children[i].empty())
                continue;
            QJsonArray nodes;
            for (int child : children[i])
                nodes.append(geometry_node(child_types[i], child));
            group.insert(child_types[i], nodes);
        }
        for (size_t i = 0; i < counts.size(); ++i)
            if (counts[i] != 0)
                group.insert(count_keys[i], counts[i]);
        groups.append(group);
    }
    model.insert(QStringLiteral("groups"), groups);
}

void ModelMonitor::build_exodus_sets() {
    const auto nodes = [](const QString& type, const std::vector<int>& ids) {
        QJsonArray array;
        for (int id : ids)
            array.append(exodus_node(type, id));
        return array;
    };
    model.insert(QStringLiteral("blocks"),
                 nodes(QStringLiteral("block"), TarvoInterface::get_block_id_list()));
    model.insert(QStringLiteral("sidesets"),
                 nodes(QStringLiteral("sideset"), TarvoInterface::get_sideset_id_list()));
    model.insert(QStringLiteral("nodesets"),
                 nodes(QStringLiteral("nodeset"), TarvoInterface::get_nodeset_id_list()));
}

void ModelMonitor::build_fea_bcs() {
    QJsonArray bcs;
    for (const FeaKind& kind : fea_kinds) {
        for (int id : TarvoInterface::get_bc_id_list(kind.code)) {
            QJsonObject bc;
            bc.insert(QStringLiteral("type"), QLatin1String(kind.type));
            bc.insert(QStringLiteral("id"), id);
            if (kind.code == TarvoInterface::TI_BC_CONSTRAINT)
                bc.insert(QStringLiteral("constraint_type"),
                          text(TarvoInterface::get_constraint_type(id)));
            bc.insert(QStringLiteral("name"), text(TarvoInterface::get_bc_name(kind.code, id)));
            QJsonArray sets;
            switch (kind.children) {
            case Carrier::nodesets:
                for (int set : TarvoInterface::get_nodeset_id_list_for_bc(kind.code, id))
                    sets.append(exodus_node(QStringLiteral("nodeset"), set));
                bc.insert(QStringLiteral("nodesets"), sets);
                break;
            case Carrier::sidesets:
                for (int set : TarvoInterface::get_sideset_id_list_for_bc(kind.code, id))
                    sets.append(exodus_node(QStringLiteral("sideset"), set));
                bc.insert(QStringLiteral("sidesets"), sets);
                break;
            case Carrier::none:
                break;
            }
            bcs.append(bc);
        }
    }
    model.insert(QStringLiteral("fea_bcs"), bcs);
}

void ModelMonitor::build_cfd_bcs() {
    QJsonArray bcs;
    for (const TarvoInterface::CFD_BC_Entity& entity : TarvoInterface::get_all_cfd_bcs()) {
        const QString type = text(entity.type);
        QJsonArray sidesets;
        for (int set : TarvoInterface::get_sideset_id_list_for_bc(
                 static_cast<TarvoInterface::TI_BCTypes>(cfd_bc_code(type)), entity.id))
            sidesets.append(exodus_node(QStringLiteral("sideset"), set));
        QJsonObject bc;
        bc.insert(QStringLiteral("type"), type);
        bc.insert(QStringLiteral("id"), entity.id);
        bc.insert(QStringLiteral("name"), text(entity.name));
        bc.insert(QStringLiteral("sidesets"), sidesets);
        bcs.append(bc);
    }
    model.insert(QStringLiteral("cfd_bcs"), bcs);
}

void ModelMonitor::build_materials() {
    QJsonArray materials;
    TarvoInterface::TarvoBaseInterface* base = TarvoInterface::get_interface("Material");
    if (auto* interface = dynamic_cast<TarvoInterface::MaterialInterface*>(base)) {
        std::vector<TarvoInterface::MaterialInterface::Material> list;
        interface->list_materials(list);
        for (auto material : list) {
            QJsonObject node;
            node.insert(QStringLiteral("id"), interface->material_id(material));
            node.insert(QStringLiteral("is_cfd"), interface->is_cfd(material));
            node.insert(QStringLiteral("name"), text(interface->material_name(material)));
            materials.append(node);
        }
    }
    if (base)
        TarvoInterface::release_interface(base);
    model.insert(QStringLiteral("materials"), materials);
}

void ModelMonitor::build_boundary_layers() {
    model.insert(QStringLiteral("boundary_layers"),
                 int_array(TarvoInterface::get_boundary_layer_id_list()));
}
