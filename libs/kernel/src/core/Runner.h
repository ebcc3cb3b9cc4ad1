#pragma once
// The command runner: one line of the command language from text to effect, and the session's
// own commands (reset, undo, journal, echo, cd, playback, resume, help, set developer commands,
// set digits). Internal to the kernel; the public entry points are cmd, silent_cmd and
// tarvo_or_python_cmd.
//
// Threading: kernel thread only.

#include <string>
#include <string_view>
#include <vector>

namespace tarvo::kernel {

// Runs one top-level line: clears the interrupt flag, emits command_start, records the line in
// the history, executes it, journals it if it succeeded, emits command_complete. `silent`: no
// echo, no information printed, not journaled (errors are printed all the same).
bool run_command(std::string_view line, bool silent);

// Executes one line inside the running command (playback lines): valfold substitution,
// dispatch, snapshot and rollback, undo step. No command_start/complete, no history.
bool execute_line(std::string_view line);

// Plays a journal file back, line by line; stops between lines on interrupt.
bool playback_file(const std::string& path);

// Opens a journal: `path` empty picks the first free "tarvoNN.jou" in the working directory.
bool start_journal(const std::string& path);
void stop_journal();

// Takes back the last undoable command. False (and an error) when there is nothing to undo.
bool undo_last();

void register_session_commands();

// Help text: the whole command summary for an empty topic, else the reference sections of the
// commands that the topic names.
std::string help_text(std::string_view topic);

// The command reference page, built into the kernel.
std::string_view command_reference();

// Called after every top-level command to move what the engines logged to the message channel;
// set by the session's init (empty: nothing to drain).
using LogDrain = void (*)();
void set_log_drain(LogDrain drain);

} // namespace tarvo::kernel
