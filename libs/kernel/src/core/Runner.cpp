#include "core/Runner.h"

#include "core/CommandRegistry.h"
#include "core/Guard.h"
#include "core/ListParser.h"
#include "core/Session.h"
#include "core/SessionState.h"
#include "tarvo_util/TarvoFileUtil.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>

namespace tarvo::kernel {

namespace {

using TarvoInterface::TIObserve;

LogDrain log_drain = nullptr;

constexpr int kMaxPlaybackDepth = 16;
// A journal line is a command typed or written by a program: far below this.
constexpr size_t kMaxJournalLine = 64 * 1024;
constexpr size_t kMaxJournalBytes = size_t{256} << 20;

std::string trim(std::string_view text) {
    size_t a = 0, b = text.size();
    while (a < b && std::isspace(static_cast<unsigned char>(text[a]))) {
        ++a;
    }
    while (b > a && std::isspace(static_cast<unsigned char>(text[b - 1]))) {
        --b;
    }
    return std::string(text.substr(a, b - a));
}

// Snapshots of every participant, for rollback and undo.
UndoStep take_snapshots(std::string_view line) {
    UndoStep step;
    step.command = std::string(line);
    for (UndoParticipant* participant : state().participants) {
        std::unique_ptr<UndoSnapshot> snapshot = participant->save_state();
        if (snapshot) {
            step.snapshots.emplace_back(participant, std::move(snapshot));
        }
    }
    return step;
}

void restore_snapshots(const UndoStep& step) {
    SessionState& s = state();
    const bool was = s.performing_undo;
    s.performing_undo = true;
    for (const auto& [participant, snapshot] : step.snapshots) {
        try {
            participant->restore_state(*snapshot);
        } catch (...) {
            error("Could not restore the " + participant->participant_name() + " state");
        }
    }
    s.performing_undo = was;
}

void push_undo_step(UndoStep step) {
    SessionState& s = state();
    s.undo_stack.push_back(std::move(step));
    while (s.undo_stack.size() > s.undo_limit) {
        s.undo_stack.erase(s.undo_stack.begin());
    }
    events().emit(&TIObserve::notify_undo_state_changed);
}

// Runs a handler; an exception becomes one error naming the command's first word.
bool call_handler(const RegisteredCommand& command, Cursor& cursor) {
    const std::string what = "'" + command.words.front() + "'";
    return guarded(what.c_str(), false, [&] { return command.definition.handler(cursor); });
}

bool journaled(const RegisteredCommand* command) {
    if (!command) {
        return true; // definitions of variables
    }
    const std::string& first = command->words.front();
    return first != "journal" && first != "help";
}

} // namespace

void set_log_drain(LogDrain drain) {
    log_drain = drain;
}

// ---- One line
// ------------------------------------------------------------------------------------

namespace {
// Executes `line`; `command` tells the caller what it dispatched to (null for a line without a
// command).
bool execute(std::string_view line, const RegisteredCommand*& command) {
    SessionState& s = state();
    command = nullptr;

    std::string text;
    bool defined = false;
    std::string error_text;
    if (!s.valfold.substitute(line, text, defined, error_text)) {
        return error(error_text);
    }
    if (defined) {
        events().emit(&TIObserve::notify_valfold_modified);
    }
    std::vector<Token> tokens;
    if (!tokenize(text, tokens, error_text)) {
        return error(error_text);
    }
    if (tokens.empty()) {
        return true;
    }
    DispatchResult found = dispatch(tokens);
    // A planned command that names more words than what dispatch found ("delete mesh" beside
    // "delete") is one the user meant: say that it is not there yet rather than misparse it.
    const PlannedCommand planned = planned_command(tokens);
    if (!found.ambiguous && planned.words > (found.command ? found.command->words.size() : 0)) {
        const std::string topic =
            planned.heading.starts_with("<list> ") ? planned.heading.substr(7) : planned.heading;
        return error("'" + planned.heading +
                     "' is planned but not built in this kernel yet (help " + topic + ")");
    }
    if (!found.command) {
        return error(found.error_text);
    }
    command = found.command;

    Cursor cursor(tokens, found.position);
    for (size_t start : found.list_starts) {
        size_t pos = start;
        EntityList list;
        parse_entity_list(tokens, pos, list, error_text); // parsed once already, so it succeeds
        cursor.pattern_lists().push_back(std::move(list));
    }

    const bool undoable = command->definition.undoable;
    UndoStep step;
    if (undoable) {
        step = take_snapshots(line);
    }
    bool ok = call_handler(*command, cursor);
    if (ok) {
        cursor.flush_warnings();
    } else {
        if (!frame_error_reported()) {
            error(cursor.expectation().empty() ? "Command failed: " + trim(text)
                                               : cursor.expectation());
        }
        if (undoable) {
            restore_snapshots(step);
        }
        return false;
    }
    if (undoable) {
        s.modified = true;
        s.undo_save_needed = true;
        if (s.undo_enabled) {
            push_undo_step(std::move(step));
        }
    }
    return true;
}
} // namespace

bool execute_line(std::string_view line) {
    const bool echo = state().echo && state().silent_depth == 0;
    if (echo && !trim(line).empty()) {
        print(trim(line));
    }
    push_frame();
    const RegisteredCommand* command = nullptr;
    const bool ok = execute(line, command);
    pop_frame(true);
    state().last_cmd_undoable = ok && command && command->definition.undoable;
    return ok;
}

bool run_command(std::string_view line, bool silent) {
    SessionState& s = state();
    if (!s.initialized) {
        return error("The kernel is not initialised");
    }
    request_interrupt(false);
    events().emit(&TIObserve::notify_command_start);
    const std::string trimmed = trim(line);
    if (!trimmed.empty() && !silent) {
        s.history.push_back(trimmed);
        s.history_chars += trimmed.size();
        size_t drop = 0;
        while (s.history.size() - drop > 1 &&
               (s.history.size() - drop > SessionState::kMaxHistoryLines ||
                s.history_chars > SessionState::kMaxHistoryChars)) {
            s.history_chars -= s.history[drop++].size();
        }
        s.history.erase(s.history.begin(), s.history.begin() + static_cast<long>(drop));
    }
    s.history_cursor = s.history.size();

    if (silent) {
        ++s.silent_depth;
    }
    push_frame();
    if (!silent && s.echo && !trimmed.empty()) {
        print(trimmed);
    }
    const RegisteredCommand* command = nullptr;
    const bool ok = execute(line, command);
    pop_frame(false);
    s.last_cmd_undoable = ok && command && command->definition.undoable;
    if (silent) {
        --s.silent_depth;
    }
    if (ok && !silent && s.journal_on && s.journal.is_open() && !trimmed.empty() &&
        journaled(command)) {
        s.journal << trimmed << '\n';
        s.journal.flush();
    }
    if (log_drain) {
        log_drain();
    }
    events().emit(&TIObserve::notify_command_complete);
    return ok;
}

// ---- Playback
// ------------------------------------------------------------------------------------

namespace {
// Runs lines[next...] of a journal; on a failure with pausing on, keeps the rest for `resume`.
bool play_lines(const std::string& path, std::vector<std::string> lines, size_t next,
                size_t line_offset) {
    SessionState& s = state();
    if (s.playback_depth >= kMaxPlaybackDepth) {
        return error("Playback of '" + path + "' nested too deeply");
    }
    ++s.playback_depth;
    Progress progress("Playback", path, true);
    bool ok = true;
    const size_t total = lines.size();
    for (size_t i = next; i < total; ++i) {
        if (interrupted()) {
            ok = error("Interrupted: playback of '" + path + "' stopped before line " +
                       std::to_string(line_offset + i + 1));
            break;
        }
        progress.step(static_cast<long>(i), static_cast<long>(total));
        if (!execute_line(lines[i])) {
            ok = false;
            if (s.pause_playback_on_error) {
                s.paused_file = path;
                s.paused_line_offset = line_offset;
                s.paused_next = i + 1;
                s.paused_lines = std::move(lines);
                error("Playback of '" + path + "' paused at line " +
                      std::to_string(line_offset + i + 1) +
                      "; 'resume' goes on with the next line");
                break;
            }
        }
    }
    if (ok) {
        progress.step(1, 1);
    }
    --s.playback_depth;
    return ok;
}
} // namespace

namespace {

// Whether a line could hold a command: its first words begin a registered or a planned command
// (an entity list for the "<list> ..." patterns), or it defines or uses variables.
bool begins_command(std::string_view line) {
    const std::string text = trim(line);
    if (text.starts_with("#{")) {
        return true;
    }
    std::vector<Token> tokens;
    std::string error_text;
    if (!tokenize(text, tokens, error_text)) {
        return false;
    }
    if (tokens.empty()) {
        return true; // blank or comment
    }
    const DispatchResult found = dispatch(tokens);
    return found.command || found.ambiguous || found.matched_words > 0 ||
           planned_command(tokens).words > 0;
}

// Reads a journal whole, before any line runs, so that a file that is no journal changes
// nothing. Errors name the file and the line, never what the file holds: the file may be any
// file the server can read. Lines are read with a length limit, and the interrupt is honoured
// while reading.
bool read_journal(const std::string& path, std::vector<std::string>& lines) {
    const std::string full = TarvoFileUtil::absolute_path(path);
    std::error_code ec;
    const std::filesystem::file_status status = std::filesystem::status(full, ec);
    if (ec || !std::filesystem::exists(status)) {
        return error("Cannot open journal '" + path + "'");
    }
    if (!std::filesystem::is_regular_file(status)) {
        return error("'" + path + "' is not a journal: it is not a regular file");
    }
    std::ifstream in(full, std::ios::binary);
    if (!in) {
        return error("Cannot open journal '" + path + "'");
    }
    const auto refuse = [&](size_t number, const std::string& why) {
        return error("'" + path + "' is not a journal: line " + std::to_string(number) + " " + why);
    };
    std::streambuf& buffer = *in.rdbuf();
    size_t bytes = 0;
    bool command_seen = false;
    for (;;) {
        const size_t number = lines.size() + 1;
        if (number % 1024 == 0 && interrupted()) {
            return error("Interrupted: reading '" + path + "' stopped at line " +
                         std::to_string(number));
        }
        std::string line;
        bool any = false;
        for (int c = buffer.sbumpc(); c != std::char_traits<char>::eof(); c = buffer.sbumpc()) {
            any = true;
            if (c == '\n') {
                break;
            }
            if (c == 0) {
                return refuse(number, "holds binary data");
            }
            if (line.size() >= kMaxJournalLine) {
                return refuse(number,
                              "is longer than " + std::to_string(kMaxJournalLine) + " characters");
            }
            line.push_back(static_cast<char>(c));
        }
        if (!any) {
            return true;
        }
        bytes += line.size() + 1;
        if (bytes > kMaxJournalBytes) {
            return error("'" + path + "' is not a journal: it is longer than " +
                         std::to_string(kMaxJournalBytes) + " bytes");
        }
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        if (!command_seen) {
            if (!begins_command(line)) {
                return refuse(number, "does not start with a command");
            }
            const std::string text = trim(line);
            command_seen = !text.empty() && (!text.starts_with('#') || text.starts_with("#{"));
        }
        lines.push_back(std::move(line));
    }
}

} // namespace

bool playback_file(const std::string& path) {
    std::vector<std::string> lines;
    if (!read_journal(path, lines)) {
        return false;
    }
    state().paused_lines.clear();
    state().paused_file.clear();
    return play_lines(path, std::move(lines), 0, 0);
}

// ---- Journal
// -------------------------------------------------------------------------------------

bool start_journal(const std::string& path) {
    SessionState& s = state();
    std::string target = path;
    if (target.empty()) {
        for (int n = 1; n < 10000; ++n) {
            char name[32];
            std::snprintf(name, sizeof name, "tarvo%02d.jou", n);
            const std::string candidate = TarvoFileUtil::absolute_path(name);
            if (!TarvoFileUtil::file_exists(candidate)) {
                target = candidate;
                break;
            }
        }
    } else {
        target = TarvoFileUtil::absolute_path(target);
    }
    if (s.journal_on && s.journal.is_open() && target == s.journal_path) {
        return true;
    }
    std::ofstream out(target, std::ios::app);
    if (!out) {
        return error("Cannot write journal '" + target + "'");
    }
    stop_journal();
    s.journal = std::move(out);
    s.journal_path = target;
    s.journal_on = true;
    return true;
}

void stop_journal() {
    SessionState& s = state();
    if (s.journal.is_open()) {
        s.journal.close();
    }
    s.journal_on = false;
    s.journal_path.clear();
}

// ---- Undo
// ----------------------------------------------------------------------------------------

bool undo_last() {
    SessionState& s = state();
    if (!s.undo_enabled) {
        return error("Undo is off ('undo on' turns it on)");
    }
    if (s.undo_stack.empty()) {
        return error("Nothing to undo");
    }
    UndoStep step = std::move(s.undo_stack.back());
    s.undo_stack.pop_back();
    restore_snapshots(step);
    s.modified = true;
    print("Undid '" + step.command + "'");
    events().emit(&TIObserve::notify_undo_complete);
    events().emit(&TIObserve::notify_undo_state_changed);
    return true;
}

// ---- Session commands
// ----------------------------------------------------------------------------

namespace {

bool on_off(Cursor& cursor, bool& on) {
    int index = 0;
    if (!cursor.choice({"on", "off"}, index)) {
        return false;
    }
    on = index == 0;
    return true;
}

bool cmd_reset(Cursor& cursor) {
    if (!cursor.expect_end()) {
        return false;
    }
    SessionState& s = state();
    for (auto it = s.participants.rbegin(); it != s.participants.rend(); ++it) {
        (*it)->clear_state();
    }
    const bool had_undo = !s.undo_stack.empty();
    s.undo_stack.clear();
    s.modified = false;
    s.undo_save_needed = false;
    events().emit(&TIObserve::notify_model_reset);
    if (had_undo) {
        events().emit(&TIObserve::notify_undo_state_changed);
    }
    print("Model reset");
    return true;
}

bool cmd_undo(Cursor& cursor) {
    if (cursor.at_end()) {
        return undo_last();
    }
    bool on = false;
    if (!on_off(cursor, on) || !cursor.expect_end()) {
        return false;
    }
    SessionState& s = state();
    if (s.undo_enabled != on) {
        s.undo_enabled = on;
        if (!on) {
            s.undo_stack.clear();
        }
        events().emit(&TIObserve::notify_undo_state_changed);
    }
    print(std::string("Undo ") + (on ? "on" : "off"));
    return true;
}

bool cmd_journal(Cursor& cursor) {
    bool on = false;
    if (!on_off(cursor, on)) {
        return false;
    }
    std::string file;
    if (on && !cursor.at_end() && !cursor.string(file)) {
        return false;
    }
    if (!cursor.expect_end()) {
        return false;
    }
    if (!on) {
        stop_journal();
        print("Journal off");
        return true;
    }
    if (!start_journal(file)) {
        return false;
    }
    print("Journaling to '" + state().journal_path + "'");
    return true;
}

bool cmd_echo(Cursor& cursor) {
    bool on = false;
    if (!on_off(cursor, on) || !cursor.expect_end()) {
        return false;
    }
    state().echo = on;
    print(std::string("Echo ") + (on ? "on" : "off"));
    return true;
}

bool cmd_cd(Cursor& cursor) {
    std::string dir;
    if (!cursor.string(dir, true) || !cursor.expect_end()) {
        return false;
    }
    if (!TarvoFileUtil::set_current_working_directory(dir)) {
        return cursor.fail("Cannot change to directory '" + dir + "'");
    }
    state().working_dir_set = true;
    print("Working directory is '" + TarvoFileUtil::get_current_working_directory() + "'");
    events().emit(&TIObserve::notify_working_directory_changed);
    return true;
}

bool cmd_playback(Cursor& cursor) {
    std::string file;
    if (!cursor.string(file, true) || !cursor.expect_end()) {
        return false;
    }
    return playback_file(file);
}

bool cmd_resume(Cursor& cursor) {
    if (!cursor.expect_end()) {
        return false;
    }
    SessionState& s = state();
    if (s.paused_lines.empty() || s.paused_next >= s.paused_lines.size()) {
        return cursor.fail("No paused playback to resume");
    }
    std::vector<std::string> lines = std::move(s.paused_lines);
    const std::string file = s.paused_file;
    const size_t next = s.paused_next;
    const size_t offset = s.paused_line_offset;
    s.paused_lines.clear();
    s.paused_file.clear();
    return play_lines(file, std::move(lines), next, offset);
}

bool cmd_help(Cursor& cursor) {
    std::string topic = cursor.rest();
    cursor.set_pos(cursor.all_tokens().size());
    const std::string text = help_text(topic);
    if (text.empty()) {
        return cursor.fail("No help for '" + topic + "'");
    }
    print(text);
    return true;
}

bool cmd_developer(Cursor& cursor) {
    bool on = false;
    if (!on_off(cursor, on) || !cursor.expect_end()) {
        return false;
    }
    state().developer_commands = on;
    print(std::string("Developer commands ") + (on ? "on" : "off"));
    events().emit(&TIObserve::notify_developer_command_toggled, on);
    return true;
}

bool cmd_digits(Cursor& cursor) {
    int digits = 0;
    if (!cursor.integer(digits) || !cursor.expect_end()) {
        return false;
    }
    if (digits < 1 || digits > 17) {
        return cursor.fail("Digits must be between 1 and 17");
    }
    state().digits = digits;
    print("Digits " + std::to_string(digits));
    return true;
}

bool cmd_list_variables(Cursor& cursor) {
    if (!cursor.expect_end()) {
        return false;
    }
    const Valfold& valfold = state().valfold;
    std::string text;
    for (const std::string& name : valfold.names()) {
        ValfoldValue value;
        valfold.get(name, value);
        text +=
            name + " = " + (value.is_string ? "\"" + value.text + "\"" : value.to_string()) + "\n";
    }
    print(text.empty() ? "No variables" : text);
    return true;
}

} // namespace

void register_session_commands() {
    register_command({"reset", cmd_reset, false, "reset"});
    register_command({"undo", cmd_undo, false, "undo | undo on|off"});
    register_command({"journal", cmd_journal, false, "journal on ['<file>'] | journal off"});
    register_command({"echo", cmd_echo, false, "echo on|off"});
    register_command({"cd", cmd_cd, false, "cd '<directory>'"});
    register_command({"playback", cmd_playback, false, "playback '<file>'"});
    register_command({"resume", cmd_resume, false, "resume"});
    register_command({"help", cmd_help, false, "help [<command>]"});
    register_command(
        {"set developer commands", cmd_developer, false, "set developer commands on|off"});
    register_command({"set digits", cmd_digits, false, "set digits <n>"});
    register_command({"list variables", cmd_list_variables, false, "list variables"});
}

} // namespace tarvo::kernel
