// The records of block, sideset and nodeset monitors, and the model tree's sets, read from a
// real model: a 2 x 2 x 2 hex box with one of each.

#include "KernelSession.h"

#include "MonitorTestSupport.h"

#include "monitors/ExodusMonitor.h"
#include "monitors/ModelMonitor.h"

#include <QJsonArray>

#include <gtest/gtest.h>

#include <memory>
#include <set>

namespace {

class ExodusMonitorTest : public ::testing::Test {
protected:
    void SetUp() override {
        for (const char* line :
             {"reset", "create box 10", "volume 1 interval 2", "mesh volume 1",
              "block 1 add volume 1", "block 1 description 'steel part'",
              "block 1 attribute count 3", "block 1 attribute index 2 value 4.5 name 'thick'",
              "nodeset 2 add surface 1", "sideset 3 add surface 1", "sideset 3 name 'top'"})
            ASSERT_TRUE(run_command(line));
    }
};

const std::set<QString> base_keys = {"entity_type",
                                     "entity_id",
                                     "name",
                                     "description",
                                     "properties",
                                     "color",
                                     "exodus_variables_count",
                                     "exodus_variable_names",
                                     "element_count"};

TEST_F(ExodusMonitorTest, BlockRecordWithNamedAndUnnamedAttributes) {
    const auto block = first_data<BlockMonitor>(1);
    ASSERT_TRUE(block->entity_exists());
    const QJsonObject r = block->entity_record();
    std::set<QString> keys = base_keys;
    keys.insert({"element_type", "attribute_count", "element_attribute_count", "block_attributes",
                 "element_attributes"});
    EXPECT_EQ(keys_of(r), keys) << dump(r);
    EXPECT_EQ(r.value("description"), "steel part");
    EXPECT_EQ(r.value("properties"), "HEX8");
    EXPECT_EQ(r.value("element_type"), "HEX8");
    EXPECT_EQ(r.value("element_count"), 8);
    EXPECT_EQ(r.value("attribute_count"), 3);
    const QJsonArray attributes = r.value("block_attributes").toArray();
    ASSERT_EQ(attributes.size(), 3);
    EXPECT_EQ(attributes[0].toObject().value("block_attribute_name"), "Attribute 1");
    EXPECT_EQ(attributes[1].toObject().value("block_attribute_name"), "thick");
    EXPECT_EQ(attributes[1].toObject().value("block_attribute_value"), 4.5);
    EXPECT_EQ(attributes[2].toObject().value("block_attribute_name"), "Attribute 3");
    EXPECT_EQ(r.value("element_attributes"), (QJsonArray{"", "thick"}));

    ASSERT_TRUE(run_command("block 1 attribute count 0"));
    const QJsonObject plain = first_data<BlockMonitor>(1)->entity_record();
    EXPECT_FALSE(plain.contains("block_attributes"));
    EXPECT_FALSE(plain.contains("element_attributes"));
    EXPECT_EQ(plain.value("element_attribute_count"), 0);
}

TEST_F(ExodusMonitorTest, SetRecordsAndGoneSets) {
    const QJsonObject sideset = first_data<SidesetMonitor>(3)->entity_record();
    EXPECT_EQ(keys_of(sideset), base_keys) << dump(sideset);
    EXPECT_EQ(sideset.value("name"), "top");
    EXPECT_EQ(sideset.value("element_count"), 4);
    EXPECT_EQ(sideset.value("exodus_variables_count"), 0.0);
    EXPECT_EQ(first_data<NodesetMonitor>(2)->entity_record().value("element_count"), 9);
    ASSERT_TRUE(run_command("delete sideset 3"));
    const auto gone = first_data<SidesetMonitor>(3);
    EXPECT_FALSE(gone->entity_exists());
    EXPECT_TRUE(gone->get_notifications(watching(6, 3)).empty());
}

TEST_F(ExodusMonitorTest, ModelTreeListsTheSets) {
    ModelMonitor monitor;
    monitor.set_exodus_changed();
    monitor.update();
    const QJsonObject model = monitor.model_sections();
    ASSERT_EQ(model.value("sidesets").toArray().size(), 1) << dump(model);
    EXPECT_EQ(model.value("sidesets").toArray()[0].toObject().value("name"), "top");
    EXPECT_EQ(model.value("blocks").toArray()[0].toObject().value("id"), 1);
    EXPECT_EQ(model.value("nodesets").toArray()[0].toObject().value("id"), 2);
}

} // namespace
