// The records of the boundary-condition, material and boundary-layer monitors, read from a real
// model: which keys each kind sends and that they carry the values the commands set.

#include "KernelSession.h"

#include "MonitorTestSupport.h"

#include "monitors/BcMonitors.h"
#include "monitors/EntityMonitor.h"

#include <QJsonArray>

#include <gtest/gtest.h>

#include <memory>
#include <set>

namespace {

std::unique_ptr<DataMonitor> updated(const QString& type, int id) {
    std::unique_ptr<DataMonitor> monitor = create_monitor(entity_type_code(type), id);
    if (monitor) {
        monitor->set_full_refresh();
        monitor->update();
    }
    return monitor;
}

QJsonObject record_of(const QString& type, int id) {
    const auto monitor = updated(type, id);
    const auto* entity = dynamic_cast<const EntityMonitor*>(monitor.get());
    EXPECT_NE(entity, nullptr) << type.toStdString();
    EXPECT_TRUE(entity && entity->entity_exists()) << type.toStdString();
    return entity ? entity->entity_record() : QJsonObject();
}

TEST(CreateMonitor, AnalysisCodesBuildTheirMonitors) {
    for (int code = 8; code <= 20; ++code)
        EXPECT_NE(dynamic_cast<EntityMonitor*>(create_monitor(code, 1).get()), nullptr) << code;
    // Names that share a code report its canonical type.
    const std::pair<const char*, const char*> names[] = {
        {"Wall", "cfd_bc"}, {"media", "material"}, {"contact region", "contact region"}};
    for (const auto& [name, type] : names) {
        const auto monitor = create_monitor(entity_type_code(name), 3);
        const auto* entity = dynamic_cast<const EntityMonitor*>(monitor.get());
        ASSERT_NE(entity, nullptr) << name;
        EXPECT_EQ(entity->entity_type(), QLatin1String(type));
    }
}

class BcMonitorTest : public ::testing::Test {
protected:
    void SetUp() override {
        for (const char* line :
             {"reset", "create box 2", "nodeset 1 add surface 1", "sideset 1 add surface 1"})
            ASSERT_TRUE(run_command(line));
    }
};

TEST_F(BcMonitorTest, ConditionRecordsCarryTheirValues) {
    for (const char* line :
         {"create force on nodeset 1 magnitude 10 direction 0 0 -1 name 'load'",
          "create temperature on surface 1 shell gradient 5",
          "create temperature on surface 2 value 300",
          "create convection on surface 1 coefficient 25 temperature 290",
          "create displacement on nodeset 1 dof 1 2 value 0.5",
          "create constraint distributing reference vertex 1 dependent surface 2",
          "create cfd wall on sideset 1", "create contact region on sideset 1"})
        ASSERT_TRUE(run_command(line));

    const QJsonObject force = record_of("force", 1);
    EXPECT_EQ(force.value("force_value"), 10.0);
    EXPECT_EQ(force.value("force_direction_z"), -1.0);
    EXPECT_EQ(force.value("force_moment_magnitude"), 0.0);
    EXPECT_EQ(force.value("name"), "load");

    // A shell temperature with only a gradient fills only the gradient; a solid one only solid.
    const QJsonObject shell = record_of("temperature", 1);
    EXPECT_EQ(shell.value("temperature_type"), "gradient");
    EXPECT_EQ(shell.value("temperature_shell_gradient"), 5.0);
    EXPECT_EQ(shell.value("temperature_shell_middle"), 0.0);
    const QJsonObject solid = record_of("temperature", 2);
    EXPECT_EQ(solid.value("temperature_type"), "solid");
    EXPECT_EQ(solid.value("temperature_solid"), 300.0);
    EXPECT_EQ(solid.value("temperature_on_thin_shell"), false);

    const QJsonObject convection = record_of("convection", 1);
    EXPECT_EQ(convection.value("convection_coefficient"), 25.0);
    EXPECT_EQ(convection.value("convection_temperature"), 290.0);
    EXPECT_EQ(convection.value("convection_bottom_coefficient"), 0.0);

    const QJsonObject displacement = record_of("displacement", 1);
    EXPECT_EQ(displacement.value("displacement_dof_value_1"), 0.5);
    EXPECT_EQ(displacement.value("displacement_dof_sign_2"), 0);
    EXPECT_EQ(displacement.value("displacement_combine_method"), "overwrite");
    EXPECT_EQ(displacement.size(), 4 + 1 + 12);

    const QJsonObject constraint = record_of("constraint", 1);
    EXPECT_EQ(constraint.value("constraint_type"), "distributing");
    EXPECT_EQ(constraint.value("constraint_reference_point"), "vertex 1");

    // Every CFD kind is watched as "cfd_bc".
    EXPECT_EQ(record_of("wall", 1).value("cfd_type"), 32);
    EXPECT_EQ(keys_of(record_of("contact region", 1)),
              (std::set<QString>{"entity_type", "entity_id", "name", "idless_signature"}));

    // A condition that is gone sends nothing.
    ASSERT_TRUE(run_command("delete force 1"));
    const auto gone = updated("force", 1);
    EXPECT_FALSE(dynamic_cast<const EntityMonitor*>(gone.get())->entity_exists());
}

TEST_F(BcMonitorTest, MaterialAndLayerRecords) {
    ASSERT_TRUE(run_command("create material 'steel' property 'DENSITY' value 7850 property "
                            "'STRESS_STRAIN' table 0 0, 0.01 250"));
    ASSERT_TRUE(run_command("create media 'oil' type fluid"));
    ASSERT_TRUE(run_command("create media 'odd'"));
    ASSERT_TRUE(run_command("modify media 'odd' property 'CFD_MEDIA_TYPE' value 3"));
    ASSERT_TRUE(run_command("create boundary layer uniform height 0.1 growth 1.2 rows 3"));

    const QJsonObject steel = record_of("material", 1);
    EXPECT_EQ(steel.value("property_group"), "structural");
    EXPECT_EQ(steel.value("scalar_properties").toObject().value("DENSITY"), 7850.0);
    // A property without a value is a null, not an absent key.
    EXPECT_TRUE(steel.value("scalar_properties").toObject().value("POISSON_RATIO").isNull());
    EXPECT_EQ(steel.value("tabular_properties").toObject().value("STRESS_STRAIN").toArray().size(),
              2);
    EXPECT_FALSE(steel.contains("media_type"));

    // "media" selects the material monitor; a medium has its type and no property lists.
    const QJsonObject oil = record_of("media", 2);
    EXPECT_EQ(oil.value("entity_type"), "material");
    EXPECT_EQ(oil.value("media_type"), "fluid");
    EXPECT_FALSE(oil.contains("scalar_properties"));
    const QJsonObject odd = record_of("material", 3);
    EXPECT_TRUE(odd.contains("property_group"));
    EXPECT_FALSE(odd.contains("media_type"));

    const QJsonObject layer = record_of("boundary_layer", 1);
    EXPECT_EQ(layer.value("algorithm"), "uniform");
    EXPECT_EQ(layer.value("number_rows"), 3);
    EXPECT_EQ(layer.value("growth_factor"), 1.2);
}

} // namespace
