// Selection and highlight on real geometry: what `select` and the public functions do to the
// selection, the highlighted / unhighlighted events with their (type, id) pairs, unknown ids,
// stepping, and how the selection follows deletion, renumbering and reset.

#include "ViewTestSupport.h"

using view_test::ViewTest;

namespace {

using Strings = std::vector<std::string>;

::testing::AssertionResult has(const Strings& events, const std::string& event) {
    if (std::find(events.begin(), events.end(), event) != events.end())
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << event << " not in " << ::testing::PrintToString(events);
}

class SelectionTest : public ViewTest {
protected:
    void SetUp() override {
        ViewTest::SetUp();
        for (int i = 0; i < 3; ++i) {
            ASSERT_TRUE(TarvoInterface::silent_cmd(
                ("create box 1 at " + std::to_string(3 * i) + " 0 0").c_str()));
        }
        ASSERT_EQ(TarvoInterface::get_entities("volume"), (std::vector<int>{1, 2, 3}));
        fresh();
    }
};

TEST_F(SelectionTest, SelectReplacesAddsAndRemovesWithEventsForWhatChanged) {
    run("select volume 3 1");
    EXPECT_EQ(selection(), (Strings{"volume 3", "volume 1"}));
    EXPECT_EQ(TarvoInterface::get_selected_ids(), (std::vector<int>{3, 1}));
    EXPECT_EQ(observer.view_events(), (Strings{"highlighted volume 3, volume 1"}));
    EXPECT_TRUE(output->has_line("Selected volume 1 3")) << output->all();

    // Replacing: the one that stays gets no event.
    fresh();
    run("select volume 1 2");
    EXPECT_EQ(selection(), (Strings{"volume 1", "volume 2"}));
    EXPECT_EQ(observer.view_events(), (Strings{"unhighlighted volume 3", "highlighted volume 2"}));

    // The same entities in another order: the order is the new one, and nothing is reported.
    fresh();
    run("select volume 2 1");
    EXPECT_EQ(selection(), (Strings{"volume 2", "volume 1"}));
    EXPECT_TRUE(observer.view_events().empty());
    run("select volume 1 2");

    fresh();
    run("select add surface 1, volume 2");
    EXPECT_EQ(selection(), (Strings{"volume 1", "volume 2", "surface 1"}));
    EXPECT_EQ(observer.view_events(), (Strings{"highlighted surface 1"}));

    fresh();
    run("select remove volume 1 3");
    EXPECT_EQ(selection(), (Strings{"volume 2", "surface 1"}));
    EXPECT_EQ(observer.view_events(), (Strings{"unhighlighted volume 1"}));

    fresh();
    run("select none");
    EXPECT_EQ(TarvoInterface::current_selection_count(), 0);
    EXPECT_EQ(observer.view_events(), (Strings{"unhighlighted volume 2, surface 1"}));
    fresh();
    run("select none"); // nothing left: no event
    EXPECT_TRUE(observer.view_events().empty());

    // Out of range indices answer the "none" values.
    EXPECT_EQ(TarvoInterface::get_selected_id(0), 0);
    EXPECT_EQ(TarvoInterface::get_selected_type(-1), "");
}

TEST_F(SelectionTest, UnknownIdsAreReportedAndSkipped) {
    const int count = TarvoInterface::get_error_count();
    run("select volume 2 7 9");
    EXPECT_EQ(selection(), (Strings{"volume 2"}));
    EXPECT_EQ(output->starting("WARNING: ").size(), 1u) << output->all();
    EXPECT_EQ(observer.view_events(), (Strings{"highlighted volume 2"}));

    // Nothing left to select: the selection stays as it was.
    fresh();
    run("select volume 40");
    EXPECT_EQ(selection(), (Strings{"volume 2"}));
    EXPECT_TRUE(observer.view_events().empty());

    // The functions: a missing entity is reported, not selected, not counted as an error.
    fresh();
    TarvoInterface::highlight("volume", 40);
    TarvoInterface::highlight("node", 1); // no mesh: no node 1
    EXPECT_EQ(output->starting("WARNING: ").size(), 2u) << output->all();
    EXPECT_TRUE(observer.view_events().empty());
    EXPECT_EQ(TarvoInterface::get_error_count(), count);

    // An unknown type is an error.
    TarvoInterface::highlight("blob", 1);
    EXPECT_EQ(TarvoInterface::get_error_count(), count + 1);
    EXPECT_EQ(errors().size(), 1u);
}

TEST_F(SelectionTest, HighlightUnselectAndClearPickedList) {
    run("select volume 1");
    fresh();
    TarvoInterface::highlight("surface", 4);
    TarvoInterface::highlight("surface", 4); // already highlighted
    TarvoInterface::highlight("volume", 1);  // already selected
    EXPECT_EQ(observer.view_events(), (Strings{"highlighted surface 4"}));
    EXPECT_EQ(selection(), (Strings{"volume 1"})) << "highlighting is not selecting";

    // Selecting a highlighted entity: it was drawn highlighted already, so no event.
    fresh();
    run("select add surface 4");
    EXPECT_EQ(selection(), (Strings{"volume 1", "surface 4"}));
    EXPECT_TRUE(observer.view_events().empty());

    fresh();
    TarvoInterface::unselect_entity("volume", 1);
    TarvoInterface::unselect_entity("volume", 1); // not selected any more: nothing
    EXPECT_EQ(selection(), (Strings{"surface 4"}));
    EXPECT_EQ(observer.view_events(), (Strings{"unhighlighted volume 1"}));

    fresh();
    TarvoInterface::highlight("curve", 2);
    TarvoInterface::clear_picked_list();
    EXPECT_EQ(TarvoInterface::current_selection_count(), 0);
    EXPECT_EQ(observer.view_events(),
              (Strings{"highlighted curve 2", "unhighlighted surface 4, curve 2"}));
}

TEST_F(SelectionTest, SteppingMovesTheCurrentEntityThroughTheSelection) {
    TarvoInterface::step_next_possible_selection();
    EXPECT_TRUE(output->has_line("Nothing selected")) << output->all();

    run("select volume 1 2 3");
    fresh();
    TarvoInterface::print_currently_selected_entity();
    EXPECT_TRUE(output->has_line("Current selection: volume 3 (3 of 3)")) << output->all();
    TarvoInterface::step_next_possible_selection(); // wraps to the first
    EXPECT_TRUE(output->has_line("Current selection: volume 1 (1 of 3)")) << output->all();
    TarvoInterface::step_previous_possible_selection();
    TarvoInterface::step_previous_possible_selection();
    EXPECT_TRUE(output->has_line("Current selection: volume 2 (2 of 3)")) << output->all();
    run("select next");
    EXPECT_TRUE(output->has_line("Current selection: volume 3 (3 of 3)")) << output->all();
    // Stepping does not change the selection.
    EXPECT_EQ(selection(), (Strings{"volume 1", "volume 2", "volume 3"}));
    EXPECT_TRUE(observer.view_events().empty());

    fresh();
    TarvoInterface::print_current_selections();
    EXPECT_TRUE(output->has_line("Selected: volume 1 to 3")) << output->all();
}

TEST_F(SelectionTest, DeletedEntitiesLeaveTheSelectionWithAnEvent) {
    const std::vector<int> faces = TarvoInterface::parse_tarvo_list("surface", "in volume 3");
    ASSERT_EQ(faces.size(), 6u);
    const std::string face = "surface " + std::to_string(faces[0]);
    run("select volume 1 2, " + face);
    fresh();
    ASSERT_TRUE(TarvoInterface::cmd("delete volume 1"));
    EXPECT_EQ(selection(), (Strings{"volume 2", face}));
    EXPECT_TRUE(has(observer.events, "unhighlighted volume 1"));
    EXPECT_TRUE(has(observer.events, "volume_deleted 1"));

    // Deleting volume 3 takes its surface out of the selection too.
    fresh();
    ASSERT_TRUE(TarvoInterface::cmd("delete volume 3"));
    EXPECT_EQ(selection(), (Strings{"volume 2"}));
    EXPECT_TRUE(has(observer.view_events(), "unhighlighted " + face));
}

TEST_F(SelectionTest, RenumberedEntitiesStaySelectedUnderTheirNewIds) {
    ASSERT_TRUE(TarvoInterface::cmd("delete volume 1"));
    run("select volume 3");
    fresh();
    ASSERT_TRUE(TarvoInterface::cmd("compress ids"));
    EXPECT_EQ(TarvoInterface::get_entities("volume"), (std::vector<int>{1, 2}));
    // Volume 3 became volume 2 (the geometry says so in its id_changed event).
    ASSERT_TRUE(has(observer.events, "id_changed volume 3 2"));
    EXPECT_EQ(selection(), (Strings{"volume 2"}));
    EXPECT_TRUE(has(observer.view_events(), "highlighted volume 2"));
}

TEST_F(SelectionTest, ResetEmptiesTheSelectionButKeepsTheSettings) {
    run("select volume 1");
    run("graphics mode wireframe");
    run("pick type curve");
    run("label surface on");
    fresh();
    run("reset");
    EXPECT_EQ(TarvoInterface::current_selection_count(), 0);
    EXPECT_TRUE(has(observer.events, "unhighlighted volume 1"));
    EXPECT_EQ(TarvoInterface::get_rendering_mode(), 1);
    EXPECT_EQ(TarvoInterface::get_pick_type(), "curve");
    EXPECT_EQ(TarvoInterface::get_label_type("surface"), 1);
}

TEST_F(SelectionTest, ANewSessionStartsFromTheDefaults) {
    run("select volume 1");
    run("graphics mode wireframe");
    run("graphics perspective on");
    TarvoInterface::destroy();
    ASSERT_TRUE(TarvoInterface::init({"tarvo_view_test", "-driver", "offscreen"}));
    EXPECT_EQ(TarvoInterface::current_selection_count(), 0);
    EXPECT_EQ(TarvoInterface::get_rendering_mode(), 4);
    EXPECT_FALSE(TarvoInterface::is_perspective_on());
    EXPECT_EQ(TarvoInterface::get_pick_type(), "volume");
}

} // namespace
