#pragma once
// The session's internal state, shared by the files of core/ and api/session*.cpp. Not for other
// modules: they use Session.h, Command.h, EntityCatalog.h and Undo.h.
//
// Threading: the kernel thread owns every member except `interrupt_flag`, which is atomic and
// may be set from any thread.

#include "core/Command.h"
#include "core/EntityCatalog.h"
#include "core/Undo.h"
#include "core/Valfold.h"
#include "tarvo/TIObserve.h"
#include "tarvo_util/TarvoProgressHandler.h"

#include <atomic>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace tarvo::kernel {

// One line being executed; nested for the lines of a playback.
struct CommandFrame {
    bool error_reported = false; // an "ERROR: " line was printed for this line
};

// The snapshots of all participants taken before one undoable command.
struct UndoStep {
    std::string command; // the line, for messages
    std::vector<std::pair<UndoParticipant*, std::unique_ptr<UndoSnapshot>>> snapshots;
};

struct SessionState {
    bool initialized = false;
    std::atomic<bool> interrupt_flag{false};

    // Output.
    int error_count = 0;
    int silent_depth = 0; // > 0 while silent_cmd runs: information is not printed
    std::vector<CommandFrame> frames;

    // Progress: the handler and the stack of open reports (outermost first).
    std::shared_ptr<TarvoProgressHandler> progress_handler;
    struct OpenProgress {
        std::string title, info;
        bool has_cancel = true;
        double percent = 0;
    };
    std::vector<OpenProgress> progress_stack;

    // Registries.
    std::vector<TarvoInterface::TIObserve*> observers;
    std::vector<EntityCatalog*> catalogs;
    std::vector<UndoParticipant*> participants;

    // Model flags.
    bool modified = false;
    bool undo_save_needed = false;
    bool performing_undo = false;

    // Undo.
    bool undo_enabled = true;
    size_t undo_limit = 20;
    std::vector<UndoStep> undo_stack; // last = most recent
    bool last_cmd_undoable = false;

    // History: the top-level lines, 1-based to clients. `history_cursor` is the position of the
    // previous/next navigation, history.size() when at the end. Bounded: the oldest lines are
    // dropped beyond kMaxHistoryLines lines or kMaxHistoryChars characters in all (the newest
    // line is always kept), so that a long-running session does not grow without end.
    static constexpr size_t kMaxHistoryLines = 1000;
    static constexpr size_t kMaxHistoryChars = size_t{16} << 20;
    std::vector<std::string> history;
    size_t history_chars = 0;
    size_t history_cursor = 0;

    // Journal and echo.
    bool echo = true;
    bool journal_on = false;
    std::string journal_path;
    std::ofstream journal;

    // Playback.
    int playback_depth = 0;
    bool pause_playback_on_error = true;
    // A playback stopped by an error keeps its remaining lines here for `resume`.
    std::string paused_file;
    std::vector<std::string> paused_lines;
    size_t paused_next = 0;
    size_t paused_line_offset = 0; // line number of paused_lines[0] in the file, minus one

    // Misc session settings.
    bool developer_commands = false;
    bool working_dir_set = false;
    double digits = 6;
    std::string driver;
    std::vector<std::string> input_files;
    std::vector<std::string> recent_files; // most recent first

    Valfold valfold;
};

SessionState& state();

// Resets everything but the registries of observers and the progress handler (which outlive a
// session) to the values of a fresh session.
void reset_session_state();

// Command frames: the runner opens one per executed line.
void push_frame();
// Closes the innermost frame; tells the enclosing one that an error was reported inside it.
void pop_frame(bool propagate_error);
bool frame_error_reported();

} // namespace tarvo::kernel
