// Entity lists against a small fake model, through parse_tarvo_list and the command cursor.

#include "SessionTestSupport.h"

#include "core/EntityList.h"

using namespace tarvo::kernel;
using session_test::SessionTest;

namespace {

class EntityListTest : public SessionTest {
protected:
    void SetUp() override {
        SessionTest::SetUp();
        // Volumes 1 to 9 except 4; volume v bounded by surfaces 10v+1 and 10v+2; volumes 2 and 3
        // share surface 22 (as after a merge).
        for (int id : {1, 2, 3, 5, 6, 7, 8, 9}) {
            model.add_volume(id, "", {10 * id + 1, 10 * id + 2});
        }
        model.contents.volume_surfaces[3] = {31, 22};
        model.contents.volumes[1] = "bracket_left";
        model.contents.volumes[2] = "Bracket_right";
        model.contents.volumes[5] = "bolt";
    }

    std::vector<int> ids(const std::string& type, const std::string& text) {
        return TarvoInterface::parse_tarvo_list(type, text);
    }

    // Reads an entity list from the start of `line` through the command cursor.
    EntityList list_of(const std::string& line) {
        std::vector<Token> tokens;
        std::string error_text;
        EXPECT_TRUE(tokenize(line, tokens, error_text)) << error_text;
        cursor = std::make_unique<Cursor>(tokens);
        EntityList list;
        EXPECT_TRUE(cursor->entity_list(list)) << line;
        return list;
    }
    std::unique_ptr<Cursor> cursor;
};

using Ids = std::vector<int>;

TEST_F(EntityListTest, IdsRangesStepsAndAll) {
    EXPECT_EQ(ids("volume", "volume 3 1 2"), (Ids{3, 1, 2}));
    EXPECT_EQ(ids("volume", "1 to 9"), (Ids{1, 2, 3, 5, 6, 7, 8, 9}));
    EXPECT_EQ(ids("volume", "volume 1 to 9 by 2"), (Ids{1, 3, 5, 7, 9}));
    EXPECT_EQ(ids("volume", "9 to 5"), (Ids{5, 6, 7, 8, 9}));
    EXPECT_EQ(ids("volume", "all"), (Ids{1, 2, 3, 5, 6, 7, 8, 9}));
    EXPECT_EQ(ids("volume", "vol all except 3 5, 7 to 9"), (Ids{1, 2, 6}));
    EXPECT_EQ(ids("volume", "Volumes 2,3 , 5"), (Ids{2, 3, 5}));
    EXPECT_EQ(ids("volume", "volume 2 2 1 2"), (Ids{2, 1}));
    EXPECT_TRUE(error_lines().empty());
}

TEST_F(EntityListTest, RelativesThroughIn) {
    EXPECT_EQ(ids("surface", "surface in volume 2"), (Ids{21, 22}));
    EXPECT_EQ(ids("surface", "in volume 2 3"), (Ids{21, 22, 31}));
    EXPECT_EQ(ids("volume", "volume in surface 22"), (Ids{2, 3}));
    // Nested: the surfaces of the volumes that surface 31 bounds.
    EXPECT_EQ(ids("surface", "surface in volume in surface 31"), (Ids{22, 31}));
    // An item of another type is mapped to the asked type.
    EXPECT_EQ(ids("surface", "volume 1"), (Ids{11, 12}));
    // Types no catalog knows resolve to nothing, without a crash.
    EXPECT_EQ(ids("hex", "hex in volume 1"), Ids{});
    EXPECT_EQ(ids("node", "all"), Ids{});
}

TEST_F(EntityListTest, NamesMatchGlobsWithoutRegardToCase) {
    EXPECT_EQ(ids("volume", "with name 'bracket*'"), (Ids{1, 2}));
    EXPECT_EQ(ids("volume", "volume with name \"b?lt\""), (Ids{5}));
    EXPECT_EQ(ids("volume", "volume with name 'nothing*'"), Ids{});
    EXPECT_EQ(ids("surface", "surface in volume with name 'bolt'"), (Ids{51, 52}));
}

TEST_F(EntityListTest, CombinationsKeepOneGroupPerTypeInOrder) {
    const EntityList list = list_of("volume 3 1, surface 11 volume 2 1 to 3 by 2");
    EXPECT_TRUE(cursor->at_end());
    ASSERT_EQ(list.groups.size(), 2u);
    EXPECT_EQ(list.groups[0].type, "volume");
    EXPECT_EQ(list.groups[0].ids, (Ids{3, 1, 2}));
    EXPECT_EQ(list.groups[1].ids, (Ids{11}));
    EXPECT_EQ(list.size(), 4u);
    EXPECT_EQ(list.describe(), "volume 1 to 3, surface 11");
}

TEST_F(EntityListTest, ListStopsBeforeTheNextKeyword) {
    EXPECT_EQ(list_of("volume 1 2 by 1 0 0").ids_of("volume"), (Ids{1, 2}));
    EXPECT_TRUE(cursor->keyword("by"));
}

TEST_F(EntityListTest, UnknownIdsAreReportedOnceAndSkipped) {
    EXPECT_EQ(ids("volume", "volume 1 4 40 41 42 2"), (Ids{1, 2}));
    const auto lines = output->take();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_FALSE(lines[0].is_error);
    EXPECT_EQ(lines[0].text, "WARNING: volume 4 40 to 42 not found, skipped");
    EXPECT_EQ(TarvoInterface::get_error_count(), 0);
    // Within a range only existing ids count, silently.
    EXPECT_EQ(ids("volume", "3 to 5"), (Ids{3, 5}));
    EXPECT_TRUE(output->take().empty());
}

TEST_F(EntityListTest, SyntaxErrorsPrintOneErrorAndGiveNothing) {
    const char* bad[] = {
        "volume", "volume 1 to",  "volume 1 to 5 by 0", "volume -3",    "volume 1.5",
        "in",     "surface in 3", "volume with 'x'",    "volume 1 'x'", "1 to 3 elephant"};
    int count = TarvoInterface::get_error_count();
    for (const char* text : bad) {
        output->take();
        EXPECT_EQ(ids("volume", text), Ids{}) << text;
        EXPECT_EQ(error_lines().size(), 1u) << text;
        EXPECT_EQ(TarvoInterface::get_error_count(), ++count) << text;
    }
    output->take();
    EXPECT_EQ(ids("blob", "1"), Ids{});
    EXPECT_EQ(error_lines().size(), 1u);
}

TEST(EntityTypes, CanonicalSpellings) {
    EXPECT_EQ(canonical_entity_type("Vol"), "volume");
    EXPECT_EQ(canonical_entity_type("vertices"), "vertex");
    EXPECT_EQ(canonical_entity_type("nodes"), "node");
    EXPECT_EQ(canonical_entity_type("nod"), ""); // node or nodeset
    EXPECT_EQ(canonical_entity_type("size"), "");
    EXPECT_EQ(compress_ids({5, 1, 2, 3, 9, 10}), "1 to 3 5 9 10");
}

} // namespace
