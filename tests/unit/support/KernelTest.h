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

#include <memory>
#include <set>
#include <string>
#include <utility>

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

    std::shared_ptr<CapturedOutput> output = std::make_shared<CapturedOutput>();
    EventRecorder recorder;
    ScratchSession session;

private:
    std::string tag_;
};

} // namespace test_support
