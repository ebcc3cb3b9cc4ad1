// Tokens, keywords and prefixes, the argument cursor, and dispatch of a line to its command.

#include "SessionTestSupport.h"

#include "core/Command.h"

using namespace tarvo::kernel;
using session_test::SessionTest;

namespace {

std::vector<Token> tokens_of(std::string_view line) {
    std::vector<Token> tokens;
    std::string error_text;
    EXPECT_TRUE(tokenize(line, tokens, error_text)) << error_text;
    return tokens;
}

TEST(Tokenizer, SplitsWordsStringsCommasAndDropsComments) {
    const auto tokens = tokens_of("  create 1.5,-2 'my file#1.step'x \"it's\" # ignored 'x");
    ASSERT_EQ(tokens.size(), 7u);
    EXPECT_EQ(tokens[1].text, "1.5");
    EXPECT_TRUE(tokens[2].comma);
    EXPECT_EQ(tokens[3].text, "-2");
    // '#' inside quotes is text, and a quote ends a bare word.
    EXPECT_EQ(tokens[4].text, "my file#1.step");
    EXPECT_TRUE(tokens[4].quoted);
    EXPECT_EQ(tokens[5].text, "x");
    EXPECT_EQ(tokens[6].text, "it's");
}

TEST(Tokenizer, UnterminatedQuoteIsAnError) {
    std::vector<Token> tokens;
    std::string error_text;
    EXPECT_FALSE(tokenize("import step 'bracket.step", tokens, error_text));
    EXPECT_NE(error_text.find("Unterminated"), std::string::npos);
    EXPECT_TRUE(tokens.empty());
}

TEST(Keywords, FullWordOrPrefixOfAtLeastThreeLettersAnyCase) {
    for (const char* yes : {"volume", "VOL", "Volu"})
        EXPECT_TRUE(keyword_matches(yes, "volume")) << yes;
    for (const char* no : {"vo", "volumes2", "vox"})
        EXPECT_FALSE(keyword_matches(no, "volume")) << no;
    // A word shorter than three letters can only be given whole.
    EXPECT_TRUE(keyword_matches("BY", "by"));
    EXPECT_FALSE(keyword_matches("b", "by"));
}

TEST(Cursor, ReadsTypedArgumentsAndLeavesTheTokenOnMismatch) {
    Cursor cursor(tokens_of("radius 2.5 HEI 10 name 'bolt' axis Y"));
    double radius = 0;
    double height = 0;
    std::string name;
    std::string axis;
    EXPECT_TRUE(cursor.keyword("radius"));
    EXPECT_TRUE(cursor.number(radius));
    EXPECT_FALSE(cursor.keyword("radius")); // "HEI" stays
    EXPECT_FALSE(cursor.keyword("he"));     // the word asked for is the full one
    EXPECT_TRUE(cursor.keyword("height"));
    EXPECT_TRUE(cursor.number(height));
    EXPECT_TRUE(cursor.keyword("name"));
    EXPECT_TRUE(cursor.string(name));
    EXPECT_TRUE(cursor.keyword("axis"));
    EXPECT_TRUE(cursor.choice({"x", "y", "z"}, axis));
    EXPECT_TRUE(cursor.at_end());
    EXPECT_DOUBLE_EQ(height, 10);
    EXPECT_EQ(name, "bolt");
    EXPECT_EQ(axis, "y");
}

TEST(Cursor, RejectsWrongTypesWithAnExpectation) {
    Cursor cursor(tokens_of("2.5 abc 'quoted'"));
    int integer = 0;
    EXPECT_FALSE(cursor.integer(integer));
    EXPECT_NE(cursor.expectation().find("integer"), std::string::npos);
    double number = 0;
    EXPECT_TRUE(cursor.number(number));
    EXPECT_FALSE(cursor.number(number));
    EXPECT_NE(cursor.expectation().find("'abc'"), std::string::npos);
    std::string text;
    EXPECT_FALSE(cursor.string(text));      // a bare word is no string...
    EXPECT_TRUE(cursor.string(text, true)); // ...unless allowed
    EXPECT_EQ(text, "abc");
    EXPECT_FALSE(cursor.number(number)); // a quoted number is text
    EXPECT_TRUE(cursor.string(text));
    EXPECT_FALSE(cursor.number(number));
    EXPECT_NE(cursor.expectation().find("end of the line"), std::string::npos);
}

TEST(Cursor, ChoiceRejectsAmbiguousPrefixes) {
    int index = -1;
    Cursor ambiguous(tokens_of("tet"));
    // "tet" is a whole word here, so it wins over being a prefix of "tetmesh".
    EXPECT_TRUE(ambiguous.choice({"tetmesh", "tet"}, index));
    EXPECT_EQ(index, 1);

    Cursor prefix(tokens_of("sub"));
    EXPECT_FALSE(prefix.choice({"submap", "subtract"}, index));
    EXPECT_NE(prefix.expectation().find("ambiguous"), std::string::npos);
    EXPECT_FALSE(prefix.at_end());

    Cursor unique(tokens_of("subm"));
    EXPECT_TRUE(unique.choice({"submap", "subtract"}, index));
    EXPECT_EQ(index, 0);
}

// ---- Dispatch through cmd
// ------------------------------------------------------------------------

class DispatchTest : public SessionTest {
protected:
    void SetUp() override {
        SessionTest::SetUp();
        auto record = [this](std::string name) {
            return [this, name](Cursor& cursor) {
                calls.push_back(name + (cursor.at_end() ? "" : ": " + cursor.rest()));
                if (!cursor.pattern_lists().empty()) {
                    calls.back() += " [" + cursor.pattern_lists().front().describe() + "]";
                }
                cursor.set_pos(cursor.all_tokens().size());
                return true;
            };
        };
        // Patterns of their own, under a first word that no kernel module uses.
        ASSERT_TRUE(register_command({"probe reflect", record("reflect"), false, ""}));
        ASSERT_TRUE(register_command({"probe refine", record("refine"), false, ""}));
        ASSERT_TRUE(register_command({"probe delete", record("delete"), false, ""}));
        ASSERT_TRUE(register_command({"probe delete mesh", record("delete mesh"), false, ""}));
        ASSERT_TRUE(register_command({"<list> zoom", record("zoom"), false, ""}));
        ASSERT_TRUE(register_command({"<list> zone", record("zone"), false, ""}));
        model.add_volume(1, "", {11, 12});
        model.add_volume(2, "", {21, 22});
    }
    std::vector<std::string> calls;
};

TEST_F(DispatchTest, PrefixesReachTheirCommandAndAmbiguousOnesAreRejected) {
    EXPECT_TRUE(TarvoInterface::cmd("probe REFL volume 1"));
    EXPECT_TRUE(TarvoInterface::cmd("PROBE refin volume 2"));
    EXPECT_EQ(calls, (std::vector<std::string>{"reflect: volume 1", "refine: volume 2"}));

    const std::string error = rejected("probe ref volume 1");
    EXPECT_NE(error.find("ambiguous"), std::string::npos);
    EXPECT_NE(error.find("reflect"), std::string::npos);
    EXPECT_NE(error.find("refine"), std::string::npos);
    EXPECT_EQ(calls.size(), 2u);
}

TEST_F(DispatchTest, LongestPatternWinsAndListPatternsGetTheirList) {
    EXPECT_TRUE(TarvoInterface::cmd("probe delete mesh volume 1"));
    EXPECT_TRUE(TarvoInterface::cmd("probe del volume 1"));
    EXPECT_TRUE(TarvoInterface::cmd("volume 1 2 zoom 0.5"));
    EXPECT_TRUE(TarvoInterface::cmd("surf in vol 2 ZON map"));
    EXPECT_EQ(calls,
              (std::vector<std::string>{"delete mesh: volume 1", "delete: volume 1",
                                        "zoom: 0.5 [volume 1 2]", "zone: map [surface 21 22]"}));
}

TEST_F(DispatchTest, RegisteringAPatternTwiceIsRefused) {
    EXPECT_FALSE(register_command({"Probe Delete  Mesh", [](Cursor&) { return true; }, false, ""}));
    EXPECT_FALSE(register_command({"", [](Cursor&) { return true; }, false, ""}));
    EXPECT_TRUE(TarvoInterface::cmd("probe delete mesh volume 2"));
    EXPECT_EQ(calls, (std::vector<std::string>{"delete mesh: volume 2"}));
}

TEST_F(DispatchTest, AliasesMatchOnlyInFullAndStayOutOfTheSummary) {
    const auto color = [this](Cursor& c) {
        calls.push_back("color " + c.rest());
        c.set_pos(c.all_tokens().size());
        return true;
    };
    ASSERT_TRUE(register_command({"probe color", color, false, "probe color <name>"}));
    ASSERT_TRUE(register_alias("probe colour", "probe color"));
    EXPECT_FALSE(register_alias("probe tint", "probe paint"));   // no such target
    EXPECT_FALSE(register_alias("probe colour", "probe color")); // taken
    EXPECT_TRUE(TarvoInterface::cmd("probe col red"));           // a prefix: the real word only
    EXPECT_TRUE(TarvoInterface::cmd("probe COLOUR blue"));       // the alias in full
    EXPECT_FALSE(TarvoInterface::cmd("probe colou green"));      // not a prefix of anything real
    EXPECT_EQ(calls, (std::vector<std::string>{"color red", "color blue"}));
    const auto patterns = registered_commands();
    EXPECT_NE(std::find(patterns.begin(), patterns.end(), "probe color"), patterns.end());
    EXPECT_EQ(std::find(patterns.begin(), patterns.end(), "probe colour"), patterns.end());
}

TEST_F(DispatchTest, UnknownAndIncompleteCommandsSayWhatWasExpected) {
    EXPECT_FALSE(TarvoInterface::cmd("frobnicate volume 1"));
    EXPECT_FALSE(TarvoInterface::cmd("volume 1 frobnicate"));
    EXPECT_FALSE(TarvoInterface::cmd("probe"));
    const auto lines = error_lines();
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_NE(lines[0].find("Unknown command 'frobnicate'"), std::string::npos);
    EXPECT_NE(lines[1].find("zoom"), std::string::npos);
    EXPECT_NE(lines[1].find("zone"), std::string::npos);
    EXPECT_NE(lines[2].find("reflect"), std::string::npos);
    EXPECT_TRUE(calls.empty());
}

} // namespace
