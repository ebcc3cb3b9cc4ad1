// The parameter type rules and the result conversions shared by every wrapper.

#include "../support/TestJson.h"
#include "json_rpc/Convert.h"

#include <gtest/gtest.h>

#include <limits>

using json_rpc::from_json;
using json_rpc::to_json;

TEST(ConvertInt, IntegralNumbersOnly) {
    int out = -1;
    EXPECT_TRUE(from_json(json("3"), out));
    EXPECT_EQ(out, 3);
    EXPECT_TRUE(from_json(json("3.0"), out));
    EXPECT_EQ(out, 3);
    EXPECT_TRUE(from_json(json("-42"), out));
    EXPECT_EQ(out, -42);
    EXPECT_TRUE(from_json(json("-0.0"), out));
    EXPECT_EQ(out, 0);

    out = 17;
    for (const char* refused : {"3.5", "-0.25", "1e-3", "\"3\"", "true", "null", "[3]", "{}"}) {
        EXPECT_FALSE(from_json(json(refused), out)) << refused;
        EXPECT_EQ(out, 17) << "a refused value must leave the target alone: " << refused;
    }
    EXPECT_FALSE(from_json(QJsonValue(QJsonValue::Undefined), out));
}

TEST(ConvertInt, NoRangeCheck) {
    // Out of range is not refused; the value is what a truncating x86 conversion gives.
    int out = 0;
    EXPECT_TRUE(from_json(json("1e12"), out));
    EXPECT_EQ(out, std::numeric_limits<int>::min());
    EXPECT_TRUE(from_json(json("2147483647"), out));
    EXPECT_EQ(out, 2147483647);
}

TEST(ConvertScalars, DoubleBoolString) {
    double number = 0;
    EXPECT_TRUE(from_json(json("2.5"), number));
    EXPECT_EQ(number, 2.5);
    EXPECT_TRUE(from_json(json("4"), number));
    EXPECT_EQ(number, 4.0);
    EXPECT_FALSE(from_json(json("\"2.5\""), number));
    EXPECT_FALSE(from_json(json("false"), number));

    bool flag = false;
    EXPECT_TRUE(from_json(json("true"), flag));
    EXPECT_TRUE(flag);
    EXPECT_TRUE(from_json(json("false"), flag));
    EXPECT_FALSE(flag);
    for (const char* refused : {"1", "0", "\"true\"", "null"})
        EXPECT_FALSE(from_json(json(refused), flag)) << refused;

    std::string text;
    EXPECT_TRUE(from_json(json(R"("mesh volume 1")"), text));
    EXPECT_EQ(text, "mesh volume 1");
    // Non-ASCII text arrives as UTF-8 bytes.
    EXPECT_TRUE(from_json(json(R"("\u00e9")"), text));
    EXPECT_EQ(text, "\xc3\xa9");
    // The kernel sees C strings: a NUL ends the text.
    EXPECT_TRUE(from_json(json(R"("block 1\u0000 hidden")"), text));
    EXPECT_EQ(text, "block 1");
    EXPECT_FALSE(from_json(json("3"), text));
    EXPECT_FALSE(from_json(json("[\"a\"]"), text));

    QJsonValue any;
    EXPECT_TRUE(from_json(json(R"({"k":[1]})"), any));
    EXPECT_EQ(any, json(R"({"k":[1]})"));
}

TEST(ConvertLists, ElementRulesApplyInOrder) {
    std::vector<int> ids{9, 9};
    EXPECT_TRUE(from_json(json("[]"), ids));
    EXPECT_TRUE(ids.empty()) << "an empty list replaces what the target held";
    EXPECT_TRUE(from_json(json("[1, 2.0, -3]"), ids));
    EXPECT_EQ(ids, (std::vector<int>{1, 2, -3}));
    EXPECT_FALSE(from_json(json("[1, 2.5, 3]"), ids));
    EXPECT_FALSE(from_json(json("[1, \"2\"]"), ids));
    EXPECT_FALSE(from_json(json("1"), ids));
    EXPECT_FALSE(from_json(json("{}"), ids));

    std::vector<std::string> names;
    EXPECT_TRUE(from_json(json(R"(["a", "b\u0000c"])"), names));
    EXPECT_EQ(names, (std::vector<std::string>{"a", "b"}));
    EXPECT_FALSE(from_json(json(R"(["a", 1])"), names));

    std::vector<std::vector<double>> rows;
    EXPECT_TRUE(from_json(json("[[1, 2.5], [], [3]]"), rows));
    EXPECT_EQ(rows, (std::vector<std::vector<double>>{{1, 2.5}, {}, {3}}));
    EXPECT_FALSE(from_json(json("[[1], 2]"), rows));
    EXPECT_FALSE(from_json(json("[[1, true]]"), rows));
}

TEST(ConvertFixedArrays, ExactSizeAndNumbers) {
    std::array<double, 3> point{};
    EXPECT_TRUE(from_json(json("[1, 2.5, -3]"), point));
    EXPECT_EQ(point, (std::array<double, 3>{1, 2.5, -3}));
    for (const char* refused : {"[1, 2]", "[1, 2, 3, 4]", "[]", "[1, \"2\", 3]", "{}", "3"})
        EXPECT_FALSE(from_json(json(refused), point)) << refused;

    // Nested containers find each other's rules whichever way they are nested.
    std::vector<std::array<double, 3>> points;
    EXPECT_TRUE(from_json(json("[[0,0,0],[1,2,3]]"), points));
    ASSERT_EQ(points.size(), 2u);
    EXPECT_EQ(points[1][2], 3.0);
    EXPECT_FALSE(from_json(json("[[0,0,0],[1,2]]"), points));
}

TEST(ConvertResults, ShapesOfResults) {
    EXPECT_EQ(to_json(std::string("abc\0def", 7)), QJsonValue("abc"));
    EXPECT_EQ(to_json(std::string("\xc3\xa9")), QJsonValue(QStringLiteral("\u00e9")));
    EXPECT_EQ(to_json(static_cast<const char*>(nullptr)), QJsonValue(QString()));
    EXPECT_EQ(to_json("volume"), QJsonValue("volume"));

    EXPECT_EQ(to_json(std::vector<int>{}), json("[]"));
    EXPECT_EQ(to_json(std::vector<std::vector<int>>{{1, 2}, {}, {3}}), json("[[1,2],[],[3]]"));
    EXPECT_EQ(to_json(std::vector<std::pair<std::string, int>>{{"curve", 4}, {"surface", 2}}),
              json(R"([["curve",4],["surface",2]])"));
    EXPECT_EQ(to_json(std::array<double, 4>{0.1, 0.2, 0.3, 1.0}), json("[0.1,0.2,0.3,1.0]"));
    EXPECT_EQ(to_json(std::vector<std::array<double, 3>>{{1, 2, 3}}), json("[[1,2,3]]"));

    const double dof[8] = {1, 2, 3, 4, 5, 6, 99, 99};
    EXPECT_EQ(json_rpc::to_json_fixed(dof, 6), json("[1,2,3,4,5,6]"));
}
