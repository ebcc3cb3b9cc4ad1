// What results look like on the wire: plain values, objects of outputs, fixed-size arrays, lists
// of pairs and of records.
#include "MethodTestSupport.h"

#include "json_rpc/Convert.h"
#include "methods/KernelJson.h"
#include "tarvo/TarvoInterface.h"
#include "tarvo_util/TarvoFeatureUsageTracking.h"

namespace {
bool is_number_array(const QJsonValue& value, qsizetype size) {
    if (!value.isArray() || value.toArray().size() != size)
        return false;
    for (const QJsonValue& element : value.toArray())
        if (!element.isDouble())
            return false;
    return true;
}
} // namespace

// A bool, an int, a string and a list come back as such in tests/e2e (is_modified,
// get_hex_count, get_entity_name, get_block_id_list).
TEST(ResultShape, PlainResultsKeepTheirType) {
    EXPECT_TRUE(call("reset_camera", "{}").isNull());
    EXPECT_TRUE(call("get_version", "{}").isString());
    EXPECT_TRUE(call("get_mesh_size", R"({"geometry_type": "volume", "entity_id": 1})").isDouble());
}

TEST(ResultShape, OutputsMakeAnObjectWithReturnOnlyForNonVoid) {
    const QJsonValue valfold = call("get_valfold_value", R"({"variable_name": "no_such"})");
    ASSERT_TRUE(valfold.isObject());
    EXPECT_EQ(valfold.toObject().keys(),
              (QStringList{"return", "returned_double_val", "returned_string_val",
                           "returned_variable_type"}));
    EXPECT_EQ(valfold["return"], QJsonValue(false)) << "an unknown variable is a failure";

    const QJsonValue periodic =
        call("get_periodic_data", R"({"geometry_type": "surface", "entity_id": 1})");
    ASSERT_TRUE(periodic.isObject());
    EXPECT_FALSE(periodic.toObject().contains("return")) << "void kernel function";
    EXPECT_EQ(periodic.toObject().size(), 4);

    const QJsonValue stats = call("get_quality_stats",
                                  R"({"entity_type": "volume", "id_list": [], "metric_name":
                                      "Shape", "single_threshold": 0.2, "use_low_threshold":
                                      false, "low_threshold": 0, "high_threshold": 1})");
    ASSERT_TRUE(stats.isObject());
    EXPECT_EQ(stats.toObject().keys(),
              (QStringList{"bad_group_id", "element_type", "max_element_id", "max_value",
                           "mean_value", "mesh_list", "min_element_id", "min_value", "std_value"}));
    EXPECT_TRUE(stats["mesh_list"].isArray());
}

TEST(ResultShape, FixedSizeArrays) {
    const char* entity = R"({"geometry_type": "volume", "entity_id": 1})";
    EXPECT_TRUE(is_number_array(call("get_bounding_box", entity), 10));
    EXPECT_TRUE(is_number_array(
        call("get_total_bounding_box", R"({"geometry_type": "volume", "entity_list": [1]})"), 10));
    EXPECT_TRUE(is_number_array(
        call("get_tight_bounding_box", R"({"geometry_type": "volume", "entity_list": [1]})"), 15));
    EXPECT_TRUE(is_number_array(
        call("get_entity_color", R"({"entity_type": "volume", "entity_id": 1})"), 4));
    EXPECT_TRUE(is_number_array(call("get_view_at", "{}"), 3));
    EXPECT_TRUE(is_number_array(call("get_nodal_coordinates", R"({"node_id": 1})"), 3));
}

TEST(ResultShape, DegreeOfFreedomMethodsAnswerSixNumbers) {
    for (const char* method :
         {"get_displacement_dof_values", "get_displacement_dof_signs", "get_velocity_dof_values",
          "get_velocity_dof_signs", "get_acceleration_dof_values", "get_acceleration_dof_signs"})
        EXPECT_TRUE(is_number_array(call(method, R"({"entity_id": 1})"), 6)) << method;
}

TEST(ResultShape, ListOfPairs) {
    const QJsonValue corners = call("get_submap_corner_types", R"({"surface_id": 1})");
    EXPECT_TRUE(corners.isArray());
    if (!kernel_started())
        GTEST_SKIP() << "a non-empty list needs a kernel session";
    ASSERT_TRUE(TarvoInterface::cmd("reset"));
    TarvoInterface::cmd("create group 'pairs'"); // refused while the kernel has no groups
    const auto expected = TarvoInterface::group_names_ids();
    const QJsonValue groups = call("group_names_ids", "{}");
    TarvoInterface::cmd("reset");
    ASSERT_TRUE(groups.isArray());
    ASSERT_EQ(groups.toArray().size(), static_cast<qsizetype>(expected.size()));
    if (expected.empty())
        GTEST_SKIP() << "the kernel makes no groups yet: no pair to look at";
    const QJsonValue pair = groups.toArray().at(0);
    ASSERT_TRUE(pair.isArray());
    ASSERT_EQ(pair.toArray().size(), 2);
    EXPECT_EQ(pair[0].toString().toStdString(), expected[0].first);
    EXPECT_EQ(pair[1].toInt(), expected[0].second);
}

TEST(ResultShape, RecordListsAreArraysOfObjects) {
    for (const char* method : {"get_assembly_items", "get_top_level_assembly_items",
                               "get_all_cfd_bcs", "get_mesh_errors"})
        EXPECT_TRUE(call(method, "{}").isArray()) << method;
    EXPECT_TRUE(call("get_assembly_children", R"({"assembly_id": 1})").isArray());
}

TEST(ResultShape, RecordConverters) {
    using namespace TarvoInterface;
    const AssemblyItem item{"bracket", "part", 1, 2, "top/bracket", 5, {3, 4}};
    const QJsonValue assembly = json_rpc::to_json(std::vector<AssemblyItem>{item});
    EXPECT_EQ(assembly, json(R"([{"name": "bracket", "type": "part", "level": 1, "instance": 2,
                                  "path": "top/bracket", "id": 5, "volume_ids": [3, 4]}])"));

    const CFD_BC_Entity wall{"wall", "outer", 9};
    EXPECT_EQ(json_rpc::to_json(std::vector<CFD_BC_Entity>{wall}),
              json(R"([{"type": "wall", "id": 9, "name": "outer"}])"));

    // The list holds pointers; each must become a record, not a boolean.
    MeshErrorFeedback error{7, "surface", 3, "could not map"};
    const std::vector<MeshErrorFeedback*> errors{&error};
    EXPECT_EQ(json_rpc::to_json(errors),
              json(R"([{"entity_id": 7, "entity_type": "surface", "error_code": 3,
                        "error_text": "could not map"}])"));
    EXPECT_EQ(error.error_text, "could not map") << "the record is only read";
}

TEST(ResultShape, MergeToleranceListsAreAlwaysThere) {
    const QJsonValue estimate = call("estimate_merge_tolerance", R"({"target_volume_ids": []})");
    ASSERT_TRUE(estimate.isObject());
    EXPECT_EQ(estimate.toObject().keys(),
              (QStringList{"merge_tolerance_list", "number_of_proximities_list", "return"}));
    EXPECT_TRUE(estimate["merge_tolerance_list"].isArray());
    EXPECT_TRUE(estimate["return"].isDouble());
}

TEST(ResultShape, UsageMethodsGoToTheUsageLog) {
    auto* usage = TarvoFeatureUsageTracking::instance();
    EXPECT_TRUE(call("add_usage_product",
                     R"({"product": "bench", "version": "2.1", "release_flag": "beta"})")
                    .isNull());
    ASSERT_FALSE(usage->products().empty());
    const auto product = usage->products().back();
    EXPECT_EQ(product.product, "bench");
    EXPECT_EQ(product.version, "2.1");
    EXPECT_EQ(product.release_flag, "beta");

    EXPECT_TRUE(
        call("log_feature_usage", R"({"product": "bench", "feature": "export", "success": false})")
            .isNull());
    ASSERT_FALSE(usage->features().empty());
    const auto feature = usage->features().back();
    EXPECT_EQ(feature.feature, "export");
    EXPECT_FALSE(feature.success);
    EXPECT_FALSE(
        accepts("log_feature_usage", R"({"product": "bench", "feature": "export", "success": 0})"));
}
