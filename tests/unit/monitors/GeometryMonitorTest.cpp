// The records of volume, surface, curve and vertex monitors, read from a real model.

#include "KernelSession.h"

#include "MonitorTestSupport.h"

#include "monitors/EntityMonitor.h"
#include "monitors/GeometryMonitor.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <gtest/gtest.h>

#include <memory>
#include <set>

namespace {

TEST(PointText, SixDecimalsJoinedByCommaAndBlank) {
    EXPECT_EQ(point_text(1, 0.5, 0), "1.000000, 0.500000, 0.000000");
    EXPECT_EQ(point_text(-2.25, 1e-7, 12345.678), "-2.250000, 0.000000, 12345.678000");
}

class GeometryMonitorTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(run_command("reset"));
        ASSERT_TRUE(run_command("create box 10 4 2"));
    }
};

TEST_F(GeometryMonitorTest, VolumeRecord) {
    const auto monitor = first_data<VolumeMonitor>(1);
    ASSERT_TRUE(monitor->entity_exists());
    const QJsonObject record = monitor->entity_record();
    EXPECT_EQ(
        keys_of(record),
        (std::set<QString>{"entity_type", "entity_id", "name", "color", "center_point",
                           "modeler_engine", "is_meshed", "requested_intervals", "requested_size",
                           "geometric_volume", "meshed_volume", "element_count", "node_count",
                           "smooth_scheme", "mesh_scheme", "sizing_function"}));
    EXPECT_EQ(record.value("entity_type"), "volume");
    EXPECT_EQ(record.value("entity_id"), 1);
    EXPECT_EQ(record.value("center_point"), "0.000000, 0.000000, 0.000000") << dump(record);
    EXPECT_DOUBLE_EQ(record.value("geometric_volume").toDouble(), 80.0);
    EXPECT_EQ(record.value("is_meshed"), false);
    EXPECT_EQ(record.value("element_count"), 0);
    const QJsonArray color = record.value("color").toArray();
    ASSERT_EQ(color.size(), 4);
    for (const QJsonValue& component : color)
        EXPECT_TRUE(component.isDouble());
    EXPECT_TRUE(record.value("requested_intervals").isString());
    EXPECT_TRUE(record.value("requested_size").isString());
}

TEST_F(GeometryMonitorTest, SurfaceCurveAndVertexRecords) {
    const auto surface = first_data<SurfaceMonitor>(1);
    ASSERT_TRUE(surface->entity_exists());
    EXPECT_EQ(surface->entity_record().value("analytic_type"), "Plane");
    EXPECT_EQ(surface->entity_record().value("is_merged"), false);
    EXPECT_TRUE(surface->entity_record().value("surface_area").isDouble());

    const auto curve = first_data<CurveMonitor>(1);
    ASSERT_TRUE(curve->entity_exists());
    EXPECT_EQ(curve->entity_record().value("analytic_type"), "Line");
    const double length = curve->entity_record().value("curve_length").toDouble();
    EXPECT_TRUE(length == 10 || length == 4 || length == 2) << length;

    const auto vertex = first_data<VertexMonitor>(1);
    ASSERT_TRUE(vertex->entity_exists());
    EXPECT_EQ(keys_of(vertex->entity_record()),
              (std::set<QString>{"entity_type", "entity_id", "name", "color", "center_point",
                                 "modeler_engine", "is_meshed", "is_merged", "is_virtual"}));
}

TEST_F(GeometryMonitorTest, RequestedIntervalsAndSizeCarryTheirKind) {
    // An existing curve always has a firmness; none means the kernel has no mesh sizing yet.
    if (TarvoInterface::get_requested_mesh_interval_firmness("curve", 1).empty())
        GTEST_SKIP() << "the kernel reports no requested mesh sizes yet";
    // Nothing decided yet: no count, and the mark of a soft count.
    EXPECT_EQ(first_data<CurveMonitor>(1)->entity_record().value("requested_intervals"),
              "Not Set (S)");
    ASSERT_TRUE(run_command("curve 1 interval 5"));
    EXPECT_EQ(first_data<CurveMonitor>(1)->entity_record().value("requested_intervals"), "5 (H)");

    ASSERT_TRUE(run_command("volume 1 size 2"));
    EXPECT_EQ(first_data<VolumeMonitor>(1)->entity_record().value("requested_size"), "2 (U)");
}

} // namespace
