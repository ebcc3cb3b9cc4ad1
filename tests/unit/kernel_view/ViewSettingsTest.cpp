// Render mode, view switches, pick type and filter, labels: commands and public functions change
// the one state that the queries report, with the events a client's graphics monitor relies on;
// refused input changes nothing.

#include "ViewTestSupport.h"

#include "core/Session.h"

using view_test::ViewSnapshot;
using view_test::ViewTest;

namespace {

using Events = std::vector<std::string>;

TEST_F(ViewTest, GraphicsModeCommandAndFunctionShareOneModeAndEmitOnChangeOnly) {
    EXPECT_EQ(TarvoInterface::get_rendering_mode(), 4) << "smoothshade by default";
    fresh();
    run("graphics mode wireframe");
    EXPECT_EQ(TarvoInterface::get_rendering_mode(), 1);
    EXPECT_TRUE(output->has_line("Graphics mode is wireframe")) << output->all();
    run("graphics mode wireframe"); // no change: no event
    run("GRAPHICS MODE hidden");    // a prefix, any case
    EXPECT_EQ(TarvoInterface::get_rendering_mode(), 2);
    run("graphics mode flatshade");
    EXPECT_EQ(TarvoInterface::get_rendering_mode(), 3);
    EXPECT_EQ(observer.view_events(), Events(3, "graphics_mode_modified"));
    EXPECT_FALSE(TarvoInterface::was_last_cmd_undoable());

    fresh();
    TarvoInterface::set_rendering_mode(4);
    EXPECT_EQ(TarvoInterface::get_rendering_mode(), 4);
    EXPECT_EQ(observer.view_events(), Events(1, "graphics_mode_modified"));

    fresh();
    const int count = TarvoInterface::get_error_count();
    for (int bad : {0, 6, -1}) {
        TarvoInterface::set_rendering_mode(bad);
    }
    EXPECT_EQ(TarvoInterface::get_error_count(), count + 3);
    EXPECT_EQ(errors().size(), 3u);
    EXPECT_EQ(TarvoInterface::get_rendering_mode(), 4);
    EXPECT_TRUE(observer.view_events().empty());
}

TEST_F(ViewTest, SwitchCommandsChangeWhatTheQueriesAnswer) {
    const struct {
        const char* command;
        bool (*query)();
        bool by_default;
    } switches[] = {{"graphics perspective", TarvoInterface::is_perspective_on, false},
                    {"graphics occlusion", TarvoInterface::is_occlusion_on, true},
                    {"graphics scale", TarvoInterface::is_scale_visibility_on, false},
                    {"graphics mesh", TarvoInterface::is_mesh_visibility_on, true},
                    {"graphics geometry", TarvoInterface::is_geometry_visibility_on, true},
                    {"select partial", TarvoInterface::is_select_partial_on, false}};
    for (const auto& s : switches) {
        const std::string command = s.command;
        EXPECT_EQ(s.query(), s.by_default) << command;
        run(command + (s.by_default ? " off" : " on"));
        EXPECT_EQ(s.query(), !s.by_default) << command;
        run(command + (s.by_default ? " on" : " off"));
        EXPECT_EQ(s.query(), s.by_default) << command;
    }
    EXPECT_TRUE(output->has_line("Perspective is on")) << output->all();

    EXPECT_EQ(TarvoInterface::get_rubberband_shape(), 0);
    run("graphics rubberband circle");
    EXPECT_EQ(TarvoInterface::get_rubberband_shape(), 2);
    run("graphics rubberband polygon");
    EXPECT_EQ(TarvoInterface::get_rubberband_shape(), 1);
    // None of this is a graphics-mode or pick-type change.
    EXPECT_TRUE(observer.view_events().empty());
}

TEST_F(ViewTest, PickTypeMakesTheFilterAndTheFilterMovesThePickType) {
    EXPECT_EQ(TarvoInterface::get_pick_type(), "volume");
    EXPECT_EQ(TarvoInterface::get_pick_filters(), (Events{"volume"}));
    fresh();

    run("pick type surf");
    EXPECT_EQ(TarvoInterface::get_pick_type(), "surface");
    EXPECT_EQ(TarvoInterface::get_pick_filters(), (Events{"surface"}));
    EXPECT_TRUE(TarvoInterface::is_type_filtered("surface"));
    EXPECT_FALSE(TarvoInterface::is_type_filtered("volume"));

    // Silent: the same change without the message.
    output->clear();
    TarvoInterface::set_pick_type("curve", true);
    EXPECT_EQ(TarvoInterface::get_pick_type(), "curve");
    EXPECT_TRUE(output->all().empty()) << output->all();
    TarvoInterface::set_pick_type("curve", false); // no change: printed, no event
    EXPECT_TRUE(output->has_line("Pick type is curve"));
    EXPECT_EQ(observer.view_events(), Events(2, "graphics_pick_type_modified"));

    // The count decides, not the list's length; the first becomes the pick type.
    fresh();
    TarvoInterface::set_filter_types(2, {"vertex", "Curve", "surface"});
    EXPECT_EQ(TarvoInterface::get_pick_filters(), (Events{"vertex", "curve"}));
    EXPECT_EQ(TarvoInterface::get_pick_type(), "vertex");
    TarvoInterface::set_filter_types(9, {"node", "hex"});
    EXPECT_EQ(TarvoInterface::get_pick_filters(), (Events{"node", "hex"}));
    TarvoInterface::add_filter_type("tet");
    TarvoInterface::add_filter_type("tet"); // already there: nothing
    TarvoInterface::remove_filter_type("node");
    EXPECT_EQ(TarvoInterface::get_pick_filters(), (Events{"hex", "tet"}));
    EXPECT_EQ(TarvoInterface::get_pick_type(), "hex") << "the removed pick type moved on";
    TarvoInterface::remove_filter_type("volume"); // not in the filter: nothing
    EXPECT_EQ(observer.view_events(), Events(4, "graphics_pick_type_modified"));

    // The command forms.
    fresh();
    run("pick filter volume, surface");
    EXPECT_EQ(TarvoInterface::get_pick_filters(), (Events{"volume", "surface"}));
    run("pick filter remove volume");
    run("pick filter add vertex");
    EXPECT_EQ(TarvoInterface::get_pick_filters(), (Events{"surface", "vertex"}));
    EXPECT_TRUE(output->has_line("Pick filter: surface vertex")) << output->all();
    EXPECT_EQ(observer.view_events(), Events(3, "graphics_pick_type_modified"));

    // An empty filter picks nothing; adding to it makes a new pick type.
    TarvoInterface::set_filter_types(0, {"volume"});
    EXPECT_TRUE(TarvoInterface::get_pick_filters().empty());
    EXPECT_FALSE(TarvoInterface::is_type_filtered("surface"));
    TarvoInterface::add_filter_type("node");
    EXPECT_EQ(TarvoInterface::get_pick_type(), "node");
}

TEST_F(ViewTest, LabelsByCommandAndByFunction) {
    EXPECT_EQ(TarvoInterface::get_label_type("volume"), 0);
    run("label volume on");
    run("label surf name");
    run("label curve both");
    run("label node id");
    EXPECT_EQ(TarvoInterface::get_label_type("volume"), 1);
    EXPECT_EQ(TarvoInterface::get_label_type("surface"), 2);
    EXPECT_EQ(TarvoInterface::get_label_type("curve"), 3);
    EXPECT_EQ(TarvoInterface::get_label_type("node"), 1);
    EXPECT_TRUE(output->has_line("Labels of surface: names")) << output->all();

    TarvoInterface::set_label_type("block", 2);
    run("label all off");
    for (const char* type : {"surface", "curve", "node", "block"}) {
        EXPECT_EQ(TarvoInterface::get_label_type(type), 0) << type;
    }
    run("label all on");
    EXPECT_EQ(TarvoInterface::get_label_type("sideset"), 1);

    // Refused by the function: one error each, nothing changed; asking is never an error.
    output->clear();
    const int count = TarvoInterface::get_error_count();
    TarvoInterface::set_label_type("blob", 1);
    TarvoInterface::set_label_type("vertex", 4);
    TarvoInterface::set_label_type("vertex", -1);
    EXPECT_EQ(TarvoInterface::get_error_count(), count + 3);
    EXPECT_EQ(errors().size(), 3u) << output->all();
    EXPECT_EQ(TarvoInterface::get_label_type("vertex"), 1);
    EXPECT_EQ(TarvoInterface::get_label_type("blob"), 0);
    EXPECT_EQ(TarvoInterface::get_error_count(), count + 3) << "asking is never an error";
}

TEST_F(ViewTest, RefusedInputPrintsOneErrorAndChangesNothing) {
    ASSERT_TRUE(TarvoInterface::silent_cmd("create box 1"));
    run("select volume 1");
    run("label volume on");
    run("graphics mode wireframe");
    const ViewSnapshot before = ViewSnapshot::take();
    const char* bad[] = {
        "graphics mode plaid",
        "graphics mode wireframe now",
        "graphics mode",
        "graphics perspective maybe",
        "graphics occlusion on off",
        "graphics rubberband triangle",
        "graphics colourful on",
        "pick type blob",
        "pick type volume surface",
        "pick filter volume blob", // a bad name refuses the whole list
        "pick filter add blob",
        "pick filter",
        "label blob on",
        "label volume sideways",
        "label volume",
        "select partial",
        "select none please",
        "select volume 1 extra",
        "draw volume 1 extra",
        "view from 0 0",
        "view up 0 0 0",
        "view at 0 0 1" // the camera would sit on its focal point
    };
    int count = TarvoInterface::get_error_count();
    for (const char* line : bad) {
        fresh();
        EXPECT_FALSE(TarvoInterface::cmd(line)) << line;
        EXPECT_EQ(errors().size(), 1u) << line << "\n" << output->all();
        EXPECT_EQ(TarvoInterface::get_error_count(), ++count) << line;
        EXPECT_TRUE(observer.view_events().empty()) << line;
        EXPECT_TRUE(ViewSnapshot::take() == before) << line;
    }
}

TEST_F(ViewTest, EveryViewCommandHasAHelpSection) {
    for (const char* command :
         {"graphics mode", "graphics perspective", "graphics occlusion", "graphics scale",
          "graphics mesh", "graphics geometry", "graphics rubberband", "select", "pick type",
          "pick filter", "label", "draw", "view reset", "view at", "view from", "view up"}) {
        output->clear();
        run(std::string("help ") + command);
        // The section's first usage line is indented by four blanks.
        EXPECT_FALSE(output->starting(std::string("    ") + command).empty()) << command << "\n"
                                                                              << output->all();
    }
}

TEST(ViewWithoutSession, FunctionsReportAndAnswerTheirFailureValue) {
    ASSERT_FALSE(TarvoInterface::is_initialized());
    const int count = tarvo::kernel::error_count();
    EXPECT_EQ(TarvoInterface::get_rendering_mode(), 0);
    EXPECT_EQ(TarvoInterface::get_pick_type(), "");
    EXPECT_EQ(TarvoInterface::current_selection_count(), 0);
    TarvoInterface::highlight("volume", 1);
    EXPECT_EQ(tarvo::kernel::error_count(), count + 4);
}

} // namespace
