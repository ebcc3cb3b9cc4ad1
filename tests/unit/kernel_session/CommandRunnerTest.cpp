// The command runner: rejected commands, rollback, undo, history, journal, echo, the session's
// own commands, and the observer events around every command.

#include "SessionTestSupport.h"

#include <gmsh.h>

#include <fstream>
#include <sstream>

using session_test::SessionTest;

namespace {

std::string read_file(const std::filesystem::path& path) {
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

class CommandRunnerTest : public SessionTest {};

TEST_F(CommandRunnerTest, RejectedCommandsPrintOneErrorLineCountItAndChangeNothing) {
    ASSERT_TRUE(TarvoInterface::cmd("add volume 1 name 'keep'"));
    TarvoInterface::journal_commands(true);
    const auto before = model.contents.volumes;
    const int undo_steps = TarvoInterface::number_undo_commands();
    const char* bad[] = {
        "ad volume 3",             // misspelled keyword (and too short to be a prefix)
        "add volme 3",             // misspelled second word
        "add volume",              // missing argument
        "add volume three",        // wrong argument type
        "add volume 3 name 'open", // unterminated quote
        "add volume 3 colour red", // trailing garbage
        "add then fail 3",         // fails halfway
        "add then throw 3",        // throws halfway
    };
    for (const char* line : bad) {
        recorder.events.clear();
        EXPECT_GT(rejected(line).size(), std::string("ERROR: ").size() + 5) << line;
        EXPECT_EQ(model.contents.volumes, before) << line;
        EXPECT_EQ(TarvoInterface::number_undo_commands(), undo_steps) << line;
        EXPECT_FALSE(TarvoInterface::was_last_cmd_undoable()) << line;
        ASSERT_FALSE(recorder.events.empty());
        EXPECT_EQ(recorder.events.front(), "command_start") << line;
        EXPECT_EQ(recorder.events.back(), "command_complete") << line;
        EXPECT_EQ(recorder.count("undo_state_changed"), 0u) << line;
    }
    // None of them reached the journal.
    EXPECT_EQ(read_file(TarvoInterface::get_current_journal_file()), "");
}

TEST_F(CommandRunnerTest, HalfwayFailuresAreRolledBackWithTheirEvents) {
    ASSERT_TRUE(TarvoInterface::cmd("add volume 1"));
    recorder.events.clear();
    EXPECT_EQ(rejected("add then fail 4"), "ERROR: Could not finish volume 4");
    EXPECT_EQ(model.restores, 1);
    EXPECT_EQ(model.contents.volumes.count(4), 0u);
    EXPECT_EQ(recorder.events,
              (std::vector<std::string>{"command_start", "volume_deleted 4", "command_complete"}));
    EXPECT_NE(rejected("add then throw 5").find("boom"), std::string::npos);
    EXPECT_EQ(model.contents.volumes.size(), 1u);
}

TEST_F(CommandRunnerTest, SuccessfulCommandEventsAreBracketedByStartAndComplete) {
    ASSERT_TRUE(TarvoInterface::cmd("add volume 1"));
    EXPECT_EQ(recorder.events,
              (std::vector<std::string>{"command_start", "volume_created 1", "undo_state_changed",
                                        "command_complete"}));
    EXPECT_EQ(output->take().front().text, "Created volume 1");
    // A second observer sees the same, in the same order; an unregistered one sees nothing.
    test_support::EventRecorder second;
    second.register_observer();
    recorder.unregister_observer();
    recorder.events.clear();
    ASSERT_TRUE(TarvoInterface::cmd("add volume 2"));
    EXPECT_TRUE(recorder.events.empty());
    EXPECT_EQ(second.events.front(), "command_start");
    EXPECT_EQ(second.events.back(), "command_complete");
    second.unregister_observer();
    recorder.register_observer();
}

TEST_F(CommandRunnerTest, UndoTakesBackTheLastUndoableCommand) {
    ASSERT_TRUE(TarvoInterface::cmd("add volume 1"));
    ASSERT_TRUE(TarvoInterface::cmd("add volume 2"));
    EXPECT_TRUE(TarvoInterface::was_last_cmd_undoable());
    EXPECT_EQ(TarvoInterface::number_undo_commands(), 2);
    recorder.events.clear();

    ASSERT_TRUE(TarvoInterface::cmd("undo"));
    EXPECT_FALSE(TarvoInterface::was_last_cmd_undoable());
    EXPECT_EQ(model.contents.volumes.count(2), 0u);
    EXPECT_EQ(model.contents.volumes.count(1), 1u);
    EXPECT_EQ(TarvoInterface::number_undo_commands(), 1);
    EXPECT_EQ(recorder.events,
              (std::vector<std::string>{"command_start", "volume_deleted 2", "undo_complete",
                                        "undo_state_changed", "command_complete"}));
    ASSERT_TRUE(TarvoInterface::cmd("undo"));
    EXPECT_TRUE(model.contents.volumes.empty());
    EXPECT_EQ(rejected("undo"), "ERROR: Nothing to undo");
    EXPECT_FALSE(TarvoInterface::is_performing_undo());
}

TEST_F(CommandRunnerTest, UndoOffForgetsStepsAndRefusesToUndo) {
    ASSERT_TRUE(TarvoInterface::cmd("add volume 1"));
    ASSERT_TRUE(TarvoInterface::cmd("undo off"));
    EXPECT_EQ(TarvoInterface::number_undo_commands(), 0);
    ASSERT_TRUE(TarvoInterface::cmd("add volume 2"));
    EXPECT_EQ(TarvoInterface::number_undo_commands(), 0);
    // Failures still roll back with undo off.
    EXPECT_FALSE(TarvoInterface::cmd("add then fail 3"));
    EXPECT_EQ(model.contents.volumes.size(), 2u);
    EXPECT_FALSE(TarvoInterface::cmd("undo"));
    ASSERT_TRUE(TarvoInterface::cmd("UNDO ON"));
    ASSERT_TRUE(TarvoInterface::cmd("add volume 3"));
    ASSERT_TRUE(TarvoInterface::cmd("undo"));
    EXPECT_EQ(model.contents.volumes.size(), 2u);
}

TEST_F(CommandRunnerTest, ModifiedAndUndoSaveFlags) {
    ASSERT_TRUE(TarvoInterface::cmd("echo on")); // not a model change
    EXPECT_FALSE(TarvoInterface::is_modified());
    ASSERT_TRUE(TarvoInterface::cmd("add volume 1"));
    EXPECT_TRUE(TarvoInterface::is_undo_save_needed());
    TarvoInterface::set_undo_saved();
    EXPECT_FALSE(TarvoInterface::is_undo_save_needed());
    ASSERT_TRUE(TarvoInterface::cmd("reset"));
    EXPECT_FALSE(TarvoInterface::is_modified());
}

TEST_F(CommandRunnerTest, ResetClearsTheModelThenReportsModelReset) {
    ASSERT_TRUE(TarvoInterface::cmd("add volume 1"));
    ASSERT_TRUE(TarvoInterface::cmd("add volume 2"));
    recorder.events.clear();
    ASSERT_TRUE(TarvoInterface::cmd("reset"));
    EXPECT_TRUE(model.contents.volumes.empty());
    EXPECT_EQ(TarvoInterface::number_undo_commands(), 0);
    EXPECT_EQ(recorder.events,
              (std::vector<std::string>{"command_start", "volume_deleted 1", "volume_deleted 2",
                                        "model_reset", "undo_state_changed", "command_complete"}));
    EXPECT_FALSE(TarvoInterface::cmd("reset now"));
}

TEST_F(CommandRunnerTest, HistoryKeepsEveryLineAndNavigates) {
    ASSERT_TRUE(TarvoInterface::cmd("add volume 1"));
    EXPECT_FALSE(TarvoInterface::cmd("  bogus command  "));
    ASSERT_TRUE(TarvoInterface::silent_cmd("add volume 2")); // silent lines stay out
    ASSERT_TRUE(TarvoInterface::tarvo_or_python_cmd("echo off"));
    EXPECT_EQ(TarvoInterface::get_command_from_history(2), "bogus command");
    EXPECT_EQ(TarvoInterface::get_command_from_history(3), "echo off");
    EXPECT_EQ(TarvoInterface::get_command_from_history(4), "");
    EXPECT_EQ(TarvoInterface::get_command_from_history(0), "");

    EXPECT_EQ(TarvoInterface::get_next_command_from_history(), ""); // already at the end
    EXPECT_EQ(TarvoInterface::get_previous_command_from_history(), "echo off");
    EXPECT_EQ(TarvoInterface::get_previous_command_from_history(), "bogus command");
    EXPECT_EQ(TarvoInterface::get_previous_command_from_history(), "add volume 1");
    EXPECT_EQ(TarvoInterface::get_previous_command_from_history(), "add volume 1"); // the first
    EXPECT_EQ(TarvoInterface::get_next_command_from_history(), "bogus command");
    // A new command puts the navigation back at the end.
    ASSERT_TRUE(TarvoInterface::cmd("add volume 3"));
    EXPECT_EQ(TarvoInterface::get_previous_command_from_history(), "add volume 3");
}

TEST_F(CommandRunnerTest, JournalRecordsSuccessfulLinesAsTyped) {
    ASSERT_TRUE(TarvoInterface::cmd("journal on"));
    const std::filesystem::path first = TarvoInterface::get_current_journal_file();
    EXPECT_EQ(first, scratch / "tarvo01.jou");

    ASSERT_TRUE(TarvoInterface::cmd("#{n = 4}"));
    ASSERT_TRUE(TarvoInterface::cmd("add volume #{n}   # the first one"));
    EXPECT_FALSE(TarvoInterface::cmd("add volume"));
    ASSERT_TRUE(TarvoInterface::silent_cmd("add volume 9"));
    ASSERT_TRUE(TarvoInterface::cmd("help undo"));
    ASSERT_TRUE(TarvoInterface::cmd("journal off"));
    EXPECT_FALSE(TarvoInterface::is_command_journaled());
    ASSERT_TRUE(TarvoInterface::cmd("add volume 5")); // after journal off
    EXPECT_EQ(read_file(first), "#{n = 4}\nadd volume #{n}   # the first one\n");

    // The next journal gets the next free name; an explicit name is used as given.
    TarvoInterface::journal_commands(true);
    EXPECT_EQ(std::filesystem::path(TarvoInterface::get_current_journal_file()),
              scratch / "tarvo02.jou");
    ASSERT_TRUE(TarvoInterface::cmd("journal on 'mine.jou'"));
    EXPECT_EQ(std::filesystem::path(TarvoInterface::get_current_journal_file()),
              scratch / "mine.jou");
    ASSERT_TRUE(TarvoInterface::cmd("undo"));
    TarvoInterface::journal_commands(false);
    EXPECT_EQ(read_file(scratch / "mine.jou"), "undo\n");
}

TEST_F(CommandRunnerTest, EchoAndSilence) {
    ASSERT_TRUE(TarvoInterface::cmd("echo on"));
    EXPECT_TRUE(TarvoInterface::is_command_echoed());
    output->take();
    ASSERT_TRUE(TarvoInterface::cmd("add volume 1"));
    auto lines = output->take();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].text, "add volume 1");
    EXPECT_EQ(lines[1].text, "Created volume 1");

    // A silent command prints nothing but its errors.
    ASSERT_TRUE(TarvoInterface::silent_cmd("add volume 2"));
    EXPECT_TRUE(output->take().empty());
    EXPECT_FALSE(TarvoInterface::silent_cmd("add volume"));
    lines = output->take();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_TRUE(lines[0].is_error);
}

TEST_F(CommandRunnerTest, WorkingDirectoryAndDeveloperSwitch) {
    std::filesystem::create_directory(scratch / "sub dir");
    ASSERT_TRUE(TarvoInterface::cmd("cd 'sub dir'"));
    EXPECT_EQ(std::filesystem::current_path(), scratch / "sub dir");
    EXPECT_TRUE(TarvoInterface::is_working_dir_set());
    EXPECT_FALSE(TarvoInterface::cmd("cd 'no such dir'"));
    EXPECT_EQ(std::filesystem::current_path(), scratch / "sub dir");
    EXPECT_EQ(recorder.count("working_directory_changed"), 1u);

    ASSERT_TRUE(TarvoInterface::cmd("set developer commands on"));
    EXPECT_TRUE(TarvoInterface::developer_commands_are_enabled());
    ASSERT_TRUE(TarvoInterface::cmd("set dev comm off"));
    EXPECT_FALSE(TarvoInterface::developer_commands_are_enabled());
    EXPECT_EQ(recorder.count("developer_command_toggled 1"), 1u);
    EXPECT_EQ(recorder.count("developer_command_toggled 0"), 1u);
    EXPECT_FALSE(TarvoInterface::cmd("set developer commands maybe"));
}

TEST_F(CommandRunnerTest, HelpPrintsTheReferenceAndTheCommandSummary) {
    ASSERT_TRUE(TarvoInterface::cmd("help"));
    EXPECT_NE(output->all().find("add volume <id> [name '<name>']"), std::string::npos);
    output->take();
    ASSERT_TRUE(TarvoInterface::cmd("help playb"));
    const std::string playback = output->all();
    EXPECT_TRUE(playback.starts_with("playback"));
    EXPECT_EQ(playback.find("### "), std::string::npos) << "the section without its markup";
    output->take();
    // A command without a reference section shows its summary line.
    TarvoInterface::print_raw_help("add then fail", 0, 0);
    EXPECT_EQ(output->all(), "add then fail <id>\n");
    rejected("help no such thing");
}

TEST_F(CommandRunnerTest, GmshWarningsReachTheMessageChannelAfterTheCommand) {
    const auto probe = [](tarvo::kernel::Cursor&) {
        gmsh::logger::write("mesh size too small", "warning");
        gmsh::logger::write("just chatting", "info");
        tarvo::kernel::print("Probed");
        return true;
    };
    ASSERT_TRUE(tarvo::kernel::register_command({"probe gmsh warning", probe, false, ""}));
    ASSERT_TRUE(TarvoInterface::cmd("probe gmsh warning"));
    const auto lines = output->take();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].text, "Probed");
    EXPECT_EQ(lines[1].text, "WARNING: Gmsh: mesh size too small");
    EXPECT_FALSE(lines[1].is_error);
    // Drained: the next command does not repeat it.
    ASSERT_TRUE(TarvoInterface::cmd("echo off"));
    EXPECT_EQ(output->take().size(), 1u);
    EXPECT_EQ(TarvoInterface::get_error_count(), 0);
}

TEST_F(CommandRunnerTest, FilenameCompletion) {
    std::ofstream(scratch / "bracket_v1.step").put('x');
    std::ofstream(scratch / "bracket_v2.step").put('x');
    std::ofstream(scratch / "bolt.step").put('x');
    std::string line = "import step 'bo";
    int added = 0;
    bool quote = false;
    TarvoInterface::complete_filename(line, added, quote);
    EXPECT_TRUE(quote);
    EXPECT_EQ(line, "import step 'bolt.step'");
    EXPECT_EQ(added, 8);
    // Two candidates: only their common part is added, and no closing quote.
    line = "import step \"bra";
    TarvoInterface::complete_filename(line, added, quote);
    EXPECT_EQ(line, "import step \"bracket_v");
    EXPECT_EQ(added, 6);
}

TEST(SessionLifecycle, CommandsNeedASessionAndInitIsRepeatable) {
    auto output = std::make_shared<test_support::CapturedOutput>();
    TarvoMessage::instance()->set_message_handler(output);
    ASSERT_FALSE(TarvoInterface::is_initialized());
    EXPECT_FALSE(TarvoInterface::cmd("help"));
    EXPECT_EQ(output->starting("ERROR: ").size(), 1u);
    for (int round = 0; round < 2; ++round) {
        ASSERT_TRUE(TarvoInterface::init({"tarvo_test", "-noecho", "-driver", "offscreen"}));
        EXPECT_TRUE(TarvoInterface::is_initialized());
        EXPECT_EQ(TarvoInterface::get_error_count(), 0); // a fresh session counts afresh
        EXPECT_FALSE(TarvoInterface::is_command_echoed());
        EXPECT_TRUE(TarvoInterface::cmd("#{x = 1}"));
        EXPECT_FALSE(TarvoInterface::cmd("bogus"));
        EXPECT_EQ(TarvoInterface::get_error_count(), 1);
        EXPECT_EQ(TarvoInterface::destroy(), 0);
        EXPECT_FALSE(TarvoInterface::is_initialized());
    }
    TarvoMessage::instance()->set_message_handler({});
}

} // namespace
