// Playback of journal files: nesting, errors with pause and resume, progress, input files, and
// interruption of a long playback from another thread.

#include "SessionTestSupport.h"

#include <chrono>
#include <fstream>
#include <future>
#include <thread>

using session_test::SessionTest;

namespace {

void write_file(const std::filesystem::path& path, const std::string& text) {
    std::ofstream out(path);
    out << text;
}

// Records progress calls as text.
class RecordingProgress : public TarvoProgressHandler {
public:
    std::vector<std::string> calls;
    void start(const char* title, const char* info, bool has_cancel) override {
        calls.push_back(std::string("start ") + title + " " + info + (has_cancel ? " cancel" : ""));
    }
    void end() override { calls.push_back("end"); }
    void percent(double value) override {
        calls.push_back("percent " + std::to_string(static_cast<int>(value)));
    }
};

class PlaybackTest : public SessionTest {};

TEST_F(PlaybackTest, PlaysLinesInOrderWithVariablesAndNesting) {
    write_file(scratch / "inner.jou",
               "add volume #{base + 1}\r\n# a comment line\n\nadd volume #{base + 2}\n");
    write_file(scratch / "outer.jou",
               "#{base = 10}\nplayback 'inner.jou'\n#{base = 20}\nplayback \"inner.jou\"\n");
    ASSERT_TRUE(TarvoInterface::cmd("playback 'outer.jou'"));
    EXPECT_EQ(model.contents.volumes.size(), 4u);
    for (int id : {11, 12, 21, 22}) {
        EXPECT_EQ(model.contents.volumes.count(id), 1u) << id;
    }
    // One command for the client: one start, one complete; each line is its own undo step.
    EXPECT_EQ(recorder.count("command_start"), 1u);
    EXPECT_EQ(recorder.count("command_complete"), 1u);
    EXPECT_EQ(TarvoInterface::number_undo_commands(), 4);
    EXPECT_EQ(TarvoInterface::get_command_from_history(1), "playback 'outer.jou'");
    EXPECT_EQ(TarvoInterface::get_command_from_history(2), "");
}

TEST_F(PlaybackTest, EchoShowsEachPlayedLine) {
    write_file(scratch / "a.jou", "add volume 1\n");
    ASSERT_TRUE(TarvoInterface::cmd("echo on"));
    output->take();
    ASSERT_TRUE(TarvoInterface::cmd("playback 'a.jou'"));
    EXPECT_TRUE(output->has_line("add volume 1")) << output->all();
}

TEST_F(PlaybackTest, StopsAtAFailingLineAndResumesAfterIt) {
    write_file(scratch / "broken.jou", "add volume 1\nadd volume\nadd volume 3\n");
    EXPECT_TRUE(TarvoInterface::is_playback_paused_on_error());
    rejected("playback 'broken.jou'"); // the failing line says why; the pause is told as detail
    EXPECT_EQ(model.contents.volumes.size(), 1u);
    EXPECT_NE(output->all().find("paused at line 2"), std::string::npos);

    ASSERT_TRUE(TarvoInterface::cmd("resume"));
    EXPECT_EQ(model.contents.volumes.count(3), 1u);
    EXPECT_FALSE(TarvoInterface::cmd("resume")); // nothing left

    TarvoInterface::set_playback_paused_on_error(false);
    ASSERT_TRUE(TarvoInterface::cmd("reset"));
    EXPECT_FALSE(TarvoInterface::cmd("playback 'broken.jou'"));
    EXPECT_EQ(model.contents.volumes.size(), 2u); // went on past line 2

    rejected("playback 'missing.jou'");
}

TEST_F(PlaybackTest, SelfPlayingJournalStopsAtTheNestingLimit) {
    write_file(scratch / "loop.jou", "playback 'loop.jou'\n");
    EXPECT_NE(rejected("playback 'loop.jou'").find("nested too deeply"), std::string::npos);
}

// Per line; a nested playback shows its own report, then the outer one starts again.
TEST_F(PlaybackTest, ReportsProgress) {
    write_file(scratch / "four.jou", "add volume 1\nadd volume 2\nadd volume 3\nadd volume 4\n");
    write_file(scratch / "leaf.jou", "add volume 5\n");
    write_file(scratch / "root.jou", "playback 'leaf.jou'\nadd volume 6\n");
    const std::pair<const char*, std::vector<std::string>> cases[] = {
        {"playback 'four.jou'",
         {"start Playback four.jou cancel", "percent 0", "percent 25", "percent 50", "percent 75",
          "percent 100", "end"}},
        {"playback 'root.jou'",
         {"start Playback root.jou cancel", "percent 0", "start Playback leaf.jou cancel",
          "percent 0", "percent 100", "end", "start Playback root.jou cancel", "percent 0",
          "percent 50", "percent 100", "end"}}};
    for (const auto& [command, calls] : cases) {
        auto progress = std::make_shared<RecordingProgress>();
        TarvoInterface::set_progress_handler(progress);
        ASSERT_TRUE(TarvoInterface::cmd(command));
        TarvoInterface::set_progress_handler({});
        EXPECT_EQ(progress->calls, calls) << command;
    }
}

TEST_F(PlaybackTest, InputFilesFromTheCommandLineRunOnce) {
    write_file(scratch / "startup.jou", "add volume 8\n");
    TarvoInterface::destroy();
    ASSERT_TRUE(TarvoInterface::init({"tarvo_test", "startup.jou", "-noecho"}));
    use_fake_model();
    TarvoInterface::process_input_files();
    EXPECT_EQ(model.contents.volumes.count(8), 1u);
    ASSERT_TRUE(TarvoInterface::cmd("reset"));
    TarvoInterface::process_input_files();
    EXPECT_TRUE(model.contents.volumes.empty());
}

TEST_F(PlaybackTest, InterruptFromAnotherThreadStopsALongPlaybackWithinASecond) {
    // Ten million lines (10000 playbacks of a 1000-line journal: many seconds of work), with a
    // gate command first so that the interrupt arrives while the playback surely runs.
    std::string inner;
    for (int i = 0; i < 1000; ++i) {
        inner += "#{count = count + 1}\n";
    }
    write_file(scratch / "inner.jou", inner);
    std::string outer = "#{count = 0}\ngate\n";
    for (int i = 0; i < 10000; ++i) {
        outer += "playback 'inner.jou'\n";
    }
    write_file(scratch / "outer.jou", outer);

    std::promise<void> started;
    auto started_future = started.get_future();
    ASSERT_TRUE(tarvo::kernel::register_command({"gate",
                                                 [&](tarvo::kernel::Cursor&) {
                                                     started.set_value();
                                                     return true;
                                                 },
                                                 false, "gate"}));

    std::promise<std::chrono::steady_clock::time_point> finished;
    auto finished_future = finished.get_future();
    bool result = true;
    std::thread kernel([&] {
        result = TarvoInterface::cmd("playback 'outer.jou'");
        finished.set_value(std::chrono::steady_clock::now());
    });
    started_future.wait();
    const auto interrupted_at = std::chrono::steady_clock::now();
    TarvoInterface::set_tarvo_interrupt(true);
    const auto status = finished_future.wait_for(std::chrono::seconds(10));
    ASSERT_EQ(status, std::future_status::ready) << "playback did not stop";
    kernel.join();
    const auto elapsed = finished_future.get() - interrupted_at;

    EXPECT_FALSE(result);
    EXPECT_LT(elapsed, std::chrono::seconds(1));
    EXPECT_LT(TarvoInterface::get_valfold_numeric_value("count"), 10000000.0);
    const auto errors = error_lines();
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_TRUE(errors[0].starts_with("ERROR: Interrupted")) << errors[0];
    EXPECT_EQ(TarvoInterface::get_error_count(), 1);

    // The flag stays up until the next command starts, which clears it.
    EXPECT_TRUE(TarvoInterface::get_tarvo_interrupt());
    ASSERT_TRUE(TarvoInterface::cmd("#{after = 1}"));
    EXPECT_FALSE(TarvoInterface::get_tarvo_interrupt());
}

} // namespace
