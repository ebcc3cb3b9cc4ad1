#pragma once
// The one kernel session of this test binary, started before the first test and ended after the
// last (the kernel allows one session per process). Tests run on the thread that started it.

#include "tarvo/TarvoInterface.h"

#include <gtest/gtest.h>

#include <string>

class KernelSession : public ::testing::Environment {
public:
    void SetUp() override {
        started = TarvoInterface::init({"monitors_tests", "-driver", "offscreen"});
        ASSERT_TRUE(started) << "the kernel session did not start";
    }
    void TearDown() override {
        if (started)
            TarvoInterface::destroy();
    }

private:
    bool started = false;
};

// Runs one line of the kernel's command language and says whether it succeeded.
inline ::testing::AssertionResult run_command(const std::string& line) {
    if (TarvoInterface::cmd(line.c_str()))
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "command failed: " << line;
}
