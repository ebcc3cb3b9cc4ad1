// Variables and expressions: evaluation, substitution into commands, definitions, errors, and
// the public valfold queries.

#include "SessionTestSupport.h"

#include "core/Valfold.h"

#include <cmath>
#include <numbers>

using namespace tarvo::kernel;
using session_test::eval;
using session_test::eval_error;
using session_test::SessionTest;

namespace {

TEST(Valfold, ArithmeticFunctionsAndConstants) {
    const struct {
        const char* text;
        double value;
    } cases[] = {
        {"1 + 2 * 3", 7},   {"(1 + 2) * 3", 9},       {"10 - 4 - 3", 3},
        {"8 / 4 / 2", 1},   {"2 ^ 3 ^ 2", 512}, // right-associative
        {"-2 ^ 2", 4},                          // unary minus binds tighter
        {"2 * -3", -6},     {"1.5e2 + .5", 150.5},    {"sqrt(16) + abs(-2)", 6},
        {"sin(pi / 2)", 1}, {"cos(PI)", -1},          {"tan(pi / 4)", 1},
        {"sind(30)", 0.5},  {"max(2, min(7, 5))", 5}, {"atan2(1, 1) * 4", std::numbers::pi},
    };
    Valfold v;
    for (const auto& c : cases)
        EXPECT_NEAR(eval(v, c.text), c.value, 1e-15) << c.text;
}

TEST(Valfold, VariablesAndStrings) {
    Valfold v;
    ValfoldValue value;
    bool defined = false;
    std::string error_text;
    ASSERT_TRUE(v.evaluate("r = 2.5", value, defined, error_text));
    EXPECT_TRUE(defined);
    EXPECT_DOUBLE_EQ(eval(v, "2 * r + 1"), 6);
    ASSERT_TRUE(v.evaluate("name = \"bolt\" + '_' + r", value, defined, error_text));
    EXPECT_TRUE(value.is_string);
    EXPECT_EQ(value.text, "bolt_2.5");
    ASSERT_TRUE(v.evaluate("r = r * 2", value, defined, error_text));
    EXPECT_DOUBLE_EQ(eval(v, "r"), 5);
    EXPECT_EQ(v.names(), (std::vector<std::string>{"name", "r"}));
}

TEST(Valfold, ErrorsNameTheProblemAndChangeNothing) {
    const struct {
        const char* text;
        const char* says;
    } cases[] = {{"1 / 0", "division by zero"},
                 {"q + 1", "undefined variable 'q'"},
                 {"(1 + 2", "missing ')'"},
                 {"1 +", "ends too early"},
                 {"foo(1)", "unknown function"},
                 {"'a' * 2", "needs numbers"},
                 {"sqrt(-1)", "not a finite number"},
                 {"pi = 3", "constant"},
                 {"x = 1 2", "unexpected"}};
    Valfold v;
    for (const auto& c : cases)
        EXPECT_NE(eval_error(v, c.text).find(c.says), std::string::npos) << c.text;
    EXPECT_TRUE(v.names().empty());
}

TEST(Valfold, SubstitutionKeepsCommentsAndCommitsOnlyWholeLines) {
    Valfold v;
    std::string out;
    bool defined = false;
    std::string error_text;
    ASSERT_TRUE(v.substitute("#{w = 4}create box #{w} #{w/2} 1 # then #{nothing}", out, defined,
                             error_text));
    EXPECT_TRUE(defined);
    EXPECT_EQ(out, "create box 4 2 1 ");
    ASSERT_TRUE(v.substitute("import step '#{\"part\" + w}.step'", out, defined, error_text));
    EXPECT_FALSE(defined);
    EXPECT_EQ(out, "import step 'part4.step'");
    // The second expression fails: the first definition of the line does not take effect.
    EXPECT_FALSE(v.substitute("#{a = 1} #{a + b}", out, defined, error_text));
    ValfoldValue value;
    EXPECT_FALSE(v.get("a", value));
    EXPECT_FALSE(v.substitute("#{w + 1", out, defined, error_text));
    EXPECT_NE(error_text.find("missing '}'"), std::string::npos);
    EXPECT_EQ(format_number(0.1), "0.1");
    EXPECT_EQ(format_number(3), "3");
    EXPECT_EQ(format_number(-0.0), "0");
}

class ValfoldCommandTest : public SessionTest {};

TEST_F(ValfoldCommandTest, DefinitionsSubstituteIntoCommandsAndAreQueryable) {
    EXPECT_TRUE(TarvoInterface::cmd("#{id = 3} #{label = \"bolt\"}"));
    EXPECT_EQ(recorder.count("valfold_modified"), 1u);
    EXPECT_TRUE(TarvoInterface::cmd("add volume #{id * 2 + 1} name '#{label}_#{id}'"));
    EXPECT_EQ(model.contents.volumes[7], "bolt_3");
    EXPECT_EQ(recorder.count("valfold_modified"), 1u); // use alone changes nothing

    EXPECT_EQ(TarvoInterface::get_valfold_vars(), (std::vector<std::string>{"id", "label"}));
    EXPECT_EQ(TarvoInterface::get_valfold_value_as_string("id"), "3");
    EXPECT_DOUBLE_EQ(TarvoInterface::get_valfold_numeric_value("label"), 0);
    int type = -1;
    double number = -1;
    std::string text;
    EXPECT_TRUE(TarvoInterface::get_valfold_value("label", type, number, text));
    EXPECT_EQ(type, 1);
    EXPECT_EQ(text, "bolt");
    // An unknown name leaves the outputs alone.
    type = 7;
    EXPECT_FALSE(TarvoInterface::get_valfold_value("missing", type, number, text));
    EXPECT_EQ(type, 7);
}

TEST_F(ValfoldCommandTest, BadExpressionRejectsTheWholeCommand) {
    EXPECT_NE(rejected("add volume #{undefined_var}").find("undefined variable 'undefined_var'"),
              std::string::npos);
    EXPECT_TRUE(model.contents.volumes.empty());
}

} // namespace
