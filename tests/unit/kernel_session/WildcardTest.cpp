// Name patterns: '*' and '?' with backtracking, under both case rules. Entity lists match names
// whatever their case; geometry names are told apart by case.

#include "core/Wildcard.h"

#include <gtest/gtest.h>

namespace {

using tarvo::kernel::CaseRule;
using tarvo::kernel::wildcard_match;

bool sensitive(std::string_view pattern, std::string_view text) {
    return wildcard_match(pattern, text, CaseRule::Sensitive);
}
bool insensitive(std::string_view pattern, std::string_view text) {
    return wildcard_match(pattern, text, CaseRule::Insensitive);
}

TEST(WildcardTest, StarAndQuestionMarkCoverTheWholeName) {
    EXPECT_TRUE(sensitive("bracket*", "bracket_left"));
    EXPECT_TRUE(sensitive("bracket*", "bracket"));
    EXPECT_TRUE(sensitive("*", ""));
    EXPECT_TRUE(sensitive("", ""));
    EXPECT_FALSE(sensitive("", "a"));
    EXPECT_TRUE(sensitive("b?lt", "bolt"));
    EXPECT_FALSE(sensitive("b?lt", "blt"));
    EXPECT_FALSE(sensitive("bolt", "bolts"));
    EXPECT_FALSE(sensitive("bolt*x", "bolt"));
    // A first guess for a star that turns out wrong is taken back.
    EXPECT_TRUE(sensitive("a*b*c", "axbxxbyc"));
    EXPECT_TRUE(sensitive("*ab", "aab"));
    EXPECT_FALSE(sensitive("a*b*c", "axbxxby"));
    EXPECT_TRUE(sensitive("**?", "q"));
}

TEST(WildcardTest, WildcardCharactersInTheNameAreOrdinary) {
    EXPECT_TRUE(sensitive("*a", "*b a"));
    EXPECT_TRUE(sensitive("x*", "x*"));
    EXPECT_FALSE(sensitive("x?", "x"));
}

TEST(WildcardTest, CaseRuleDecidesWhetherCaseCounts) {
    EXPECT_TRUE(insensitive("BRACKET*", "bracket_Left"));
    EXPECT_TRUE(insensitive("b?LT", "BoLt"));
    EXPECT_FALSE(sensitive("BRACKET*", "bracket_Left"));
    EXPECT_FALSE(sensitive("bolt", "Bolt"));
    EXPECT_TRUE(sensitive("Bolt", "Bolt"));
    EXPECT_FALSE(insensitive("bolt", "bolx"));
}

} // namespace
