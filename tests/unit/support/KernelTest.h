#pragma once
// Base fixture of the tests that drive a live kernel through its commands: a scratch session
// with captured output, an event recorder (all events, or only those named), echo off (what it
// printed and raised cleared, so that tests compare whole sequences), and the two ways of running
// a line (one that must work, one that must be refused). Test thread only.

#include "CapturedOutput.h"
#include "EventRecorder.h"
#include "ScratchSession.h"
#include "tarvo/TarvoInterface.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace test_support {

class KernelTest : public ::testing::Test {
protected:
    // `tag` names the scratch directory (see ScratchSession); `events` as EventRecorder takes.
    explicit KernelTest(std::string tag, std::set<std::string> events = {})
        : recorder(std::move(events)), tag_(std::move(tag)) {}

    void SetUp() override {
        ASSERT_TRUE(session.start(tag_, output));
        recorder.register_observer();
        TarvoInterface::silent_cmd("echo off");
        output->take();
        recorder.events.clear();
    }
    void TearDown() override {
        recorder.unregister_observer();
        session.stop();
    }
    void run(const std::string& line) {
        ASSERT_TRUE(TarvoInterface::cmd(line.c_str())) << line << "\n" << output->all();
    }
    std::string rejected(const std::string& line) { return test_support::rejected(*output, line); }
    // Each line of (line, text) is refused with one error holding the text, and `state` answers
    // afterwards what it answered before.
    void expect_refused(const std::vector<std::pair<std::string, std::string>>& cases,
                        const std::function<std::string()>& state) {
        const std::string before = state();
        for (const auto& [line, says] : cases) {
            const std::string error = rejected(line);
            EXPECT_NE(error.find(says), std::string::npos) << line << ": " << error;
            EXPECT_EQ(state(), before) << line;
        }
    }

    std::shared_ptr<CapturedOutput> output = std::make_shared<CapturedOutput>();
    EventRecorder recorder;
    ScratchSession session;

private:
    std::string tag_;
};

#ifdef TARVO_DEFAULT_CAD_DATA
// A file of the CAD test data ($TARVO_CAD_DATA, or the folder the build names).
inline std::string cad_file(const std::string& name) {
    const char* dir = std::getenv("TARVO_CAD_DATA");
    return (std::filesystem::path(dir && *dir ? dir : TARVO_DEFAULT_CAD_DATA) / name).string();
}
#endif

} // namespace test_support
