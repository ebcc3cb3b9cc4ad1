#pragma once
// Fixture of the view tests: a live kernel session per test with captured output, an observer
// that records the view events (and the geometry deletions around them) as text, and a snapshot
// of every view setting so that a refused command can be shown to change nothing.

#include "tarvo/TarvoInterface.h"
#include "tarvo_util/TarvoMessage.h"

#include "../support/CapturedOutput.h"
#include "../support/EventRecorder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <utility>
#include <vector>

namespace view_test {

using CapturingHandler = test_support::CapturedOutput;

// Every event as text ("highlighted volume 1, surface 3", "graphics_mode_modified",
// "volume_deleted 2", ...), with the view events picked out.
class ViewObserver : public test_support::EventRecorder {
public:
    // The view events alone (what a refused command must not produce).
    std::vector<std::string> view_events() const {
        std::vector<std::string> out;
        for (const std::string& e : events) {
            if (e.starts_with("highlighted") || e.starts_with("unhighlighted") ||
                e.starts_with("graphics_")) {
                out.push_back(e);
            }
        }
        return out;
    }
};

// Everything the public functions report about the view state.
struct ViewSnapshot {
    int mode = 0, rubberband = 0;
    bool perspective = false, occlusion = false, scale = false, mesh = false, geometry = false,
         partial = false;
    std::string pick_type;
    std::vector<std::string> filters;
    std::vector<std::pair<std::string, int>> selection;
    std::vector<int> labels;
    std::array<double, 3> at{}, from{}, up{};

    static ViewSnapshot take() {
        namespace TI = TarvoInterface;
        ViewSnapshot s;
        s.mode = TI::get_rendering_mode();
        s.rubberband = TI::get_rubberband_shape();
        s.perspective = TI::is_perspective_on();
        s.occlusion = TI::is_occlusion_on();
        s.scale = TI::is_scale_visibility_on();
        s.mesh = TI::is_mesh_visibility_on();
        s.geometry = TI::is_geometry_visibility_on();
        s.partial = TI::is_select_partial_on();
        s.pick_type = TI::get_pick_type();
        s.filters = TI::get_pick_filters();
        for (int i = 0; i < TI::current_selection_count(); ++i) {
            s.selection.emplace_back(TI::get_selected_type(i), TI::get_selected_id(i));
        }
        for (const char* type : {"volume", "surface", "curve", "vertex", "node", "block"}) {
            s.labels.push_back(TI::get_label_type(type));
        }
        s.at = TI::get_view_at();
        s.from = TI::get_view_from();
        s.up = TI::get_view_up();
        return s;
    }
    bool operator==(const ViewSnapshot&) const = default;
};

class ViewTest : public ::testing::Test {
protected:
    void SetUp() override {
        TarvoMessage::instance()->set_message_handler(output);
        ASSERT_TRUE(TarvoInterface::init({"tarvo_view_test", "-driver", "offscreen"}));
        observer.register_observer();
        TarvoInterface::silent_cmd("echo off");
        output->clear();
    }
    void TearDown() override {
        observer.unregister_observer();
        TarvoInterface::destroy();
        TarvoMessage::instance()->set_message_handler({});
    }

    // Runs a command that must succeed; the captured output and events start afresh after it.
    void run(const std::string& line) {
        ASSERT_TRUE(TarvoInterface::cmd(line.c_str())) << line << "\n" << output->all();
    }
    void fresh() {
        output->clear();
        observer.events.clear();
    }
    std::vector<std::string> errors() { return output->starting("ERROR: "); }

    // Selection as "volume 1" strings, in order.
    static std::vector<std::string> selection() {
        std::vector<std::string> out;
        for (int i = 0; i < TarvoInterface::current_selection_count(); ++i) {
            out.push_back(TarvoInterface::get_selected_type(i) + " " +
                          std::to_string(TarvoInterface::get_selected_id(i)));
        }
        return out;
    }

    std::shared_ptr<CapturingHandler> output = std::make_shared<CapturingHandler>();
    ViewObserver observer;
};

} // namespace view_test
