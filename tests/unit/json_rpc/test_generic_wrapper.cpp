// GenericRPCMethodWrapper: reading named params by the type rules, calling, and shaping results.

#include "../support/TestJson.h"
#include "json_rpc/GenericRPCMethodWrapper.h"

#include <gtest/gtest.h>

using json_rpc::optional_param;
using json_rpc::out;
using json_rpc::param;

namespace {

// Convert failures show which value was touched: a rule that is never reached leaves no trace.
struct Traced {
    int value = 0;
};
int conversions = 0;
bool from_json(const QJsonValue& value, Traced& target) {
    ++conversions;
    return json_rpc::from_json(value, target.value);
}

} // namespace

TEST(GenericWrapper, ParameterlessAcceptsNullOrAnyObjectOnly) {
    int calls = 0;
    GenericRPCMethodWrapper<int()> count([&] { return ++calls; }, {});
    EXPECT_TRUE(count.process_params(QJsonValue::Null));
    EXPECT_TRUE(count.process_params(json("{}")));
    EXPECT_TRUE(count.process_params(json(R"({"anything":[1,2]})")));
    for (const char* refused : {"[]", "[1]", "\"x\"", "3", "false"})
        EXPECT_FALSE(count.process_params(json(refused))) << refused;
    EXPECT_EQ(count.invoke(), QJsonValue(1));

    GenericRPCMethodWrapper<void()> reset([&] { ++calls; }, {});
    EXPECT_TRUE(reset.invoke().isNull());
    EXPECT_EQ(calls, 2);
}

TEST(GenericWrapper, MissingNameFoundBeforeAnyConversion) {
    conversions = 0;
    GenericRPCMethodWrapper<int(Traced, Traced)> add(
        [](Traced a, Traced b) { return a.value + b.value; }, {param("a"), param("b")});

    // "b" is missing and "a" is even malformed: still no conversion may run.
    EXPECT_FALSE(add.process_params(json(R"({"a":1})")));
    EXPECT_FALSE(add.process_params(json(R"({"a":"bad"})")));
    EXPECT_EQ(conversions, 0);

    // With both present, conversion stops at the first failure in argument order.
    EXPECT_FALSE(add.process_params(json(R"({"a":0.5,"b":1})")));
    EXPECT_EQ(conversions, 1);
    conversions = 0;
    ASSERT_TRUE(add.process_params(json(R"({"b":2,"a":1})")));
    EXPECT_EQ(conversions, 2);
    EXPECT_EQ(add.invoke(), QJsonValue(3));
}

TEST(GenericWrapper, OptionalParamsTakeDefaultsButObeyTheirRule) {
    std::vector<std::tuple<std::vector<int>, bool, double, int>> calls;
    GenericRPCMethodWrapper<double(const std::vector<int>&, bool, double, int)> estimate(
        [&](const std::vector<int>& ids, bool accurate, double low, int count) {
            calls.emplace_back(ids, accurate, low, count);
            return 0.5;
        },
        {param("target_volume_ids"), optional_param("accurate_in", false),
         optional_param("low_value_in", -1.0), optional_param("number_calculations_in", 10)});

    ASSERT_TRUE(estimate.process_params(json(R"({"target_volume_ids":[4]})")));
    estimate.invoke();
    ASSERT_TRUE(estimate.process_params(
        json(R"({"target_volume_ids":[4],"accurate_in":true,"number_calculations_in":2.0})")));
    estimate.invoke();
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_EQ(calls[0], std::make_tuple(std::vector<int>{4}, false, -1.0, 10));
    EXPECT_EQ(calls[1], std::make_tuple(std::vector<int>{4}, true, -1.0, 2));

    // A present optional is checked like any other; a required one cannot be left out.
    EXPECT_FALSE(
        estimate.process_params(json(R"({"target_volume_ids":[4],"number_calculations_in":2.5})")));
    EXPECT_FALSE(estimate.process_params(json(R"({"target_volume_ids":[4],"accurate_in":0})")));
    EXPECT_FALSE(estimate.process_params(json(R"({"accurate_in":true})")));

    // A default is converted by the same rule, so a wrong default cannot slip through.
    GenericRPCMethodWrapper<int(int)> wrong_default([](int v) { return v; },
                                                    {optional_param("v", 0.5)});
    EXPECT_FALSE(wrong_default.process_params(json("{}")));
}

TEST(GenericWrapper, OutputsByReferenceMakeAnObject) {
    GenericRPCMethodWrapper<bool(int, std::vector<int>&, double&)> query(
        [](int volume, std::vector<int>& surfaces, double& firmness) {
            if (volume < 0)
                return false;
            surfaces = {volume * 10, volume * 10 + 1};
            firmness = 0.75;
            return true;
        },
        {param("volume_id"), out("returned_surface_list"), out("returned_firmness")});

    // Output names are keys, not inputs: they need not be sent.
    ASSERT_TRUE(query.process_params(json(R"({"volume_id":2})")));
    EXPECT_EQ(query.invoke(), json(R"({"return":true,"returned_surface_list":[20,21],
                                       "returned_firmness":0.75})"));

    // On failure every output key is still there, with its empty value.
    GenericRPCMethodWrapper<bool(int, std::vector<int>&, double&)> failing(
        [](int, std::vector<int>&, double&) { return false; },
        {param("volume_id"), out("returned_surface_list"), out("returned_firmness")});
    ASSERT_TRUE(failing.process_params(json(R"({"volume_id":-1})")));
    EXPECT_EQ(failing.invoke(),
              json(R"({"return":false,"returned_surface_list":[],"returned_firmness":0})"));

    // A void function with outputs has no "return" key; outputs-only accepts Null params.
    GenericRPCMethodWrapper<void(std::vector<std::string>&)> names(
        [](std::vector<std::string>& list) {
            list = {"a", "b"};
        },
        {out("name_list")});
    ASSERT_TRUE(names.process_params(QJsonValue::Null));
    EXPECT_EQ(names.invoke(), json(R"({"name_list":["a","b"]})"));
}

// Without outputs the result is the return value as to_json makes it, not wrapped in an object.
TEST(GenericWrapper, PlainResultsStayPlain) {
    GenericRPCMethodWrapper<std::array<double, 3>(int)> centroid(
        [](int id) {
            return std::array<double, 3>{1.0 * id, 0, -1};
        },
        {param("id")});
    ASSERT_TRUE(centroid.process_params(json(R"({"id":2})")));
    EXPECT_EQ(centroid.invoke(), json("[2,0,-1]"));
}

TEST(GenericWrapper, ParameterCountMustMatchTheFunction) {
    EXPECT_THROW(
        (GenericRPCMethodWrapper<int(int, int)>([](int a, int) { return a; }, {param("a")})),
        std::invalid_argument);
    EXPECT_THROW((GenericRPCMethodWrapper<int()>([] { return 1; }, {param("stray")})),
                 std::invalid_argument);
    EXPECT_THROW((GenericRPCMethodWrapper<int()>(nullptr, {})), std::invalid_argument);
}
