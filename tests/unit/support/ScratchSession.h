#pragma once
// A live kernel session in an empty scratch directory, for fixtures of tests that run commands.
// start() makes the directory (named after the running test, so that tests and test processes
// never share one), enters it, sends the kernel's output to a handler and starts the kernel;
// stop() undoes that in reverse order. rejected() runs a line that must be refused. Test thread
// only.

#include "CapturedOutput.h"
#include "tarvo/TarvoInterface.h"
#include "tarvo_util/TarvoMessage.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <unistd.h>
#include <vector>

namespace test_support {

class ScratchSession {
public:
    // `tag` keeps suites apart: "geometry" gives <tmp>/tarvo_geometry_<pid>_<test name>. False
    // when the kernel does not start.
    bool start(const std::string& tag, std::shared_ptr<TarvoMessageHandler> handler) {
        original_dir_ = std::filesystem::current_path();
        dir_ = std::filesystem::temp_directory_path() /
               ("tarvo_" + tag + "_" + std::to_string(::getpid()) + "_" +
                ::testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::remove_all(dir_);
        std::filesystem::create_directories(dir_);
        std::filesystem::current_path(dir_);
        TarvoMessage::instance()->set_message_handler(std::move(handler));
        return TarvoInterface::init({"tarvo_test", "-driver", "offscreen"});
    }

    // Stops the kernel, restores the message handler and the working directory, and removes the
    // scratch directory with whatever the test left in it.
    void stop() {
        TarvoInterface::destroy();
        TarvoMessage::instance()->set_message_handler({});
        std::filesystem::current_path(original_dir_);
        std::filesystem::remove_all(dir_);
    }

    const std::filesystem::path& dir() const { return dir_; }

private:
    std::filesystem::path original_dir_;
    std::filesystem::path dir_;
};

// Runs a line that must fail with exactly one error line, counted once, and gives that line
// (empty when there was none). What `output` held before is dropped.
inline std::string rejected(CapturedOutput& output, const std::string& line) {
    output.clear();
    const int errors = TarvoInterface::get_error_count();
    EXPECT_FALSE(TarvoInterface::cmd(line.c_str())) << line;
    EXPECT_EQ(TarvoInterface::get_error_count(), errors + 1) << line;
    const std::vector<std::string> lines = output.starting("ERROR: ");
    EXPECT_EQ(lines.size(), 1u) << line << "\n" << output.all();
    return lines.empty() ? std::string() : lines.front();
}

} // namespace test_support
