// The model tree: which sections a task rebuilds and sends, and what they hold for a real model.

#include "KernelSession.h"

#include "MonitorTestSupport.h"

#include "monitors/ModelMonitor.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <gtest/gtest.h>

#include <set>

namespace {

class ModelMonitorTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(run_command("reset")); }

    // The sections a task rebuilds after `flag` was raised, read from the kernel's model.
    static QJsonObject sections_after(void (ModelMonitor::*flag)()) {
        ModelMonitor monitor;
        (monitor.*flag)();
        monitor.update();
        return monitor.model_sections();
    }
};

TEST_F(ModelMonitorTest, OnlyFlaggedSectionsAreRebuiltAndSent) {
    using M = ModelMonitor;
    const std::vector<std::pair<void (M::*)(), std::set<QString>>> cases = {
        {&M::set_geometry_changed, {"volume", "surface", "curve", "vertex", "bodies"}},
        {&M::set_groups_changed, {"groups"}},
        {&M::set_exodus_changed, {"blocks", "sidesets", "nodesets"}},
        {&M::set_boundary_layers_changed, {"boundary_layers"}},
        {&M::set_fea_bcs_changed, {"fea_bcs"}},
        {&M::set_cfd_bcs_changed, {"cfd_bcs"}},
        {&M::set_materials_changed, {"materials"}}};
    for (const auto& [flag, sections] : cases)
        EXPECT_EQ(keys_of(sections_after(flag)), sections);
}

TEST(CfdBcCode, KindNamesMapToBoundaryConditionTypes) {
    EXPECT_EQ(ModelMonitor::cfd_bc_code("axis"), 11);
    EXPECT_EQ(ModelMonitor::cfd_bc_code("MassFlowInlet"), 18);
    EXPECT_EQ(ModelMonitor::cfd_bc_code("periodicshadow"), 22);
    EXPECT_EQ(ModelMonitor::cfd_bc_code("velocityinlet"), 31);
    EXPECT_EQ(ModelMonitor::cfd_bc_code("wall"), 32);
    EXPECT_EQ(ModelMonitor::cfd_bc_code("cfd_bc"), -1);
    EXPECT_EQ(ModelMonitor::cfd_bc_code("velocity inlet"), -1);
}

TEST_F(ModelMonitorTest, VolumesAndBodiesOfASolid) {
    ASSERT_TRUE(run_command("create box 10"));
    const QJsonObject model = sections_after(&ModelMonitor::set_geometry_changed);

    ASSERT_EQ(model.value("volume").toArray().size(), 1) << dump(model);
    const QJsonObject volume = model.value("volume").toArray()[0].toObject();
    EXPECT_EQ(keys_of(volume), (std::set<QString>{"name", "id", "visible", "virtual"}));
    EXPECT_EQ(volume.value("id"), 1);
    EXPECT_EQ(volume.value("visible"), true);
    EXPECT_EQ(volume.value("virtual"), false);
    EXPECT_TRUE(volume.value("name").isString());

    // The faces, edges and corners of a volume are not free: they don't stand at the top.
    EXPECT_EQ(model.value("surface"), QJsonArray{});
    EXPECT_EQ(model.value("curve"), QJsonArray{});
    EXPECT_EQ(model.value("vertex"), QJsonArray{});

    ASSERT_EQ(model.value("bodies").toArray().size(), 1) << dump(model);
    const QJsonObject body = model.value("bodies").toArray()[0].toObject();
    EXPECT_EQ(body.value("id"), 1);
    EXPECT_EQ(body.value("is_sheet_body"), false);
    EXPECT_EQ(body.value("volumes"), QJsonArray{1});
    EXPECT_EQ(body.value("visible"), true);
}

TEST_F(ModelMonitorTest, FreeSurfaceNestsItsCurvesAndTheirVertices) {
    ASSERT_TRUE(run_command("create surface rectangle width 2 height 1"));
    const QJsonObject model = sections_after(&ModelMonitor::set_geometry_changed);

    const QJsonArray surfaces = model.value("surface").toArray();
    ASSERT_EQ(surfaces.size(), 1) << dump(model);
    const QJsonArray curves = surfaces[0].toObject().value("curve").toArray();
    ASSERT_EQ(curves.size(), 4) << dump(model);
    for (const QJsonValue& curve : curves) {
        const QJsonArray vertices = curve.toObject().value("vertex").toArray();
        EXPECT_EQ(vertices.size(), 2) << dump(model);
        for (const QJsonValue& vertex : vertices)
            EXPECT_EQ(keys_of(vertex.toObject()),
                      (std::set<QString>{"name", "id", "visible", "virtual"}));
    }
    // A sheet body: every volume it has is a sheet, or it has none.
    const QJsonArray bodies = model.value("bodies").toArray();
    ASSERT_EQ(bodies.size(), 1) << dump(model);
    EXPECT_EQ(bodies[0].toObject().value("is_sheet_body"), true);
}

TEST_F(ModelMonitorTest, GroupsListTheirMembersWithoutExpandingSubgroups) {
    ASSERT_TRUE(run_command("create box 1"));
    ASSERT_TRUE(run_command("create group 'inner'"));
    ASSERT_TRUE(run_command("group 'inner' add volume 1"));
    ASSERT_TRUE(run_command("create group 'outer'"));
    ASSERT_TRUE(run_command("group 'outer' add group 1"));
    const QJsonObject model = sections_after(&ModelMonitor::set_groups_changed);
    const QJsonArray groups = model.value("groups").toArray();
    ASSERT_EQ(groups.size(), 2) << dump(model);
    const QJsonObject inner = groups[0].toObject();
    const QJsonObject outer = groups[1].toObject();
    EXPECT_EQ(inner.value("name"), "inner");
    ASSERT_EQ(inner.value("volume").toArray().size(), 1);
    EXPECT_EQ(inner.value("volume").toArray()[0].toObject().value("id"), 1);
    EXPECT_FALSE(inner.contains("surface")) << "empty member lists are left out";
    EXPECT_FALSE(inner.contains("hex_count")) << "zero counts are left out";
    ASSERT_EQ(outer.value("group").toArray().size(), 1);
    EXPECT_EQ(outer.value("group").toArray()[0].toObject().value("id"), inner.value("id"));
    EXPECT_FALSE(outer.contains("volume")) << "a subgroup's members stay inside the subgroup";
}

} // namespace
