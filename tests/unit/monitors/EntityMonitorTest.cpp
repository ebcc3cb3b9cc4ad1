// Entity type names, the monitors they build, and when an entity monitor sends its record.

#include "MonitorTestSupport.h"

#include "monitors/EntityMonitor.h"
#include "monitors/ExodusMonitor.h"
#include "monitors/GeometryMonitor.h"

#include <QStringList>

#include <gtest/gtest.h>

#include <memory>

namespace {

TEST(EntityTypeCode, CanonicalNamesAndAliases) {
    // The code of each name is its place in this list.
    const QStringList names =
        QStringLiteral(
            "body,volume,surface,curve,vertex,block,sideset,nodeset,force,pressure,heatflux,"
            "temperature,convection,displacement,acceleration,velocity,contact region,constraint,"
            "cfd_bc,material,boundary_layer")
            .split(',');
    for (int code = 0; code < names.size(); ++code)
        EXPECT_EQ(entity_type_code(names[code]), code) << names[code].toStdString();
    EXPECT_EQ(entity_type_code("media"), 19);
}

TEST(EntityTypeCode, EveryCfdKindIsACfdBoundaryCondition) {
    const QString kinds = QStringLiteral(
        "axis exhaustfan fan inletvent intakefan interface interior massflowinlet outflow "
        "outletvent periodic periodicshadow porousjump pressurefarfield pressureinlet "
        "pressureoutlet radiator supersonicinflow supersonicoutflow symmetry velocityinlet wall");
    for (const QString& kind : kinds.split(' '))
        EXPECT_EQ(entity_type_code(kind), 18) << kind.toStdString();
}

TEST(EntityTypeCode, IsCaseInsensitiveButOtherwiseExact) {
    EXPECT_EQ(entity_type_code("Volume"), 1);
    EXPECT_EQ(entity_type_code("WALL"), 18);
    EXPECT_EQ(entity_type_code("Contact Region"), 16);
    for (const char* name : {"bodies", "contact_region", " volume", "boundary layer", "group",
                             "cfd", "velocity inlet", ""})
        EXPECT_EQ(entity_type_code(name), -1) << name;
}

TEST(CreateMonitor, GeometryCodesBuildTheirMonitors) {
    const std::vector<std::pair<int, const char*>> geometry = {
        {1, "volume"}, {2, "surface"}, {3, "curve"}, {4, "vertex"}};
    for (const auto& [code, type] : geometry) {
        std::unique_ptr<DataMonitor> monitor(create_monitor(code, 7));
        auto* entity = dynamic_cast<GeometryMonitor*>(monitor.get());
        ASSERT_NE(entity, nullptr) << code;
        EXPECT_EQ(entity->entity_type(), QLatin1String(type));
        EXPECT_EQ(entity->entity_id(), 7);
        // Every record names its entity, with the canonical type.
        EXPECT_EQ(entity->entity_record(), (QJsonObject{{"entity_type", type}, {"entity_id", 7}}));
        EXPECT_TRUE(entity->is_incremental());
        EXPECT_FALSE(entity->entity_exists());
        EXPECT_FALSE(entity->is_modified());
    }
    EXPECT_NE(
        dynamic_cast<VolumeMonitor*>(std::unique_ptr<DataMonitor>(create_monitor(1, 1)).get()),
        nullptr);
    EXPECT_NE(
        dynamic_cast<VertexMonitor*>(std::unique_ptr<DataMonitor>(create_monitor(4, 1)).get()),
        nullptr);
}

TEST(CreateMonitor, CodesWithoutAMonitorBuildNothing) {
    // Bodies and unknown names are stored as keys but never produce data.
    for (int code : {-1, 0, 21, 1000})
        EXPECT_EQ(create_monitor(code, 1), nullptr) << code;
}

TEST(CreateMonitor, ExodusSetCodesBuildTheirMonitors) {
    EXPECT_NE(dynamic_cast<BlockMonitor*>(create_monitor(5, 1).get()), nullptr);
    EXPECT_NE(dynamic_cast<SidesetMonitor*>(create_monitor(6, 1).get()), nullptr);
    EXPECT_NE(dynamic_cast<NodesetMonitor*>(create_monitor(7, 1).get()), nullptr);
}

// An entity monitor whose entity always exists, to exercise the key matching alone.
class PresentMonitor : public EntityMonitor {
public:
    using EntityMonitor::EntityMonitor;
    void update() override { exists = true; }
};

TEST(EntityMonitor, KeyIsMatchedByTypeCodeNotByTheNameTheClientUsed) {
    // "wall" 5 and "cfd_bc" 5 are one key; a surface 5 is another.
    PresentMonitor cfd("cfd_bc", 5);
    cfd.mark_modified();
    cfd.update();
    EXPECT_EQ(cfd.get_notifications(watching(entity_type_code("wall"), 5)).size(), 1u);
    EXPECT_TRUE(cfd.get_notifications(watching(entity_type_code("surface"), 5)).empty());
    MonitorSelection other_kind;
    other_kind["model"].insert({18, 5});
    EXPECT_TRUE(cfd.get_notifications(other_kind).empty());
}

} // namespace
