// Public functions of the session family that belong to the core: interrupt, progress, command
// entry points, history, journal, undo and modified state, variables. Start and end of the
// session live with the module list (KernelApi.cpp).

#include "core/CommandRegistry.h"
#include "core/EntityList.h"
#include "core/Runner.h"
#include "core/Session.h"
#include "core/SessionState.h"
#include "tarvo/TarvoInterface.h"
#include "tarvo_util/TarvoFileUtil.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>

namespace {

using namespace tarvo::kernel;

} // namespace

namespace TarvoInterface {

bool is_initialized() {
    return state().initialized;
}

void set_tarvo_interrupt(bool interrupt) {
    request_interrupt(interrupt);
}

bool get_tarvo_interrupt() {
    return interrupted();
}

void set_progress_handler(std::shared_ptr<TarvoProgressHandler> handler) {
    state().progress_handler = std::move(handler);
}

// ---- Commands
// ------------------------------------------------------------------------------------

bool cmd(const char* input_string) {
    if (!input_string) {
        return error("No command given");
    }
    return run_command(input_string, false);
}

bool tarvo_or_python_cmd(const std::string& input_string) {
    // Lines of Python are not run by this kernel; everything is the command language.
    return run_command(input_string, false);
}

bool silent_cmd(const char* input_string) {
    if (!input_string) {
        return error("No command given");
    }
    return run_command(input_string, true);
}

bool was_last_cmd_undoable() {
    return state().last_cmd_undoable;
}

std::vector<int> parse_tarvo_list(const std::string& type, const std::string& entity_list_string) {
    return parse_entity_ids(type, entity_list_string);
}

void print_raw_help(const std::string& input_line, int /*order_dependent*/,
                    int /*consecutive_dependent*/) {
    const std::string text = help_text(input_line);
    if (text.empty()) {
        error("No help for '" + input_line + "'");
        return;
    }
    print(text);
}

int get_error_count() {
    return error_count();
}

void process_input_files() {
    SessionState& s = state();
    const std::vector<std::string> files = std::exchange(s.input_files, {});
    for (const std::string& file : files) {
        run_command("playback '" + file + "'", false);
    }
}

void print_cmd_options() {
    print("Kernel options:\n"
          "  -driver <name>    graphics driver (offscreen: no display)\n"
          "  -workdir <dir>    start in this working directory\n"
          "  -journal          journal commands to tarvoNN.jou in the working directory\n"
          "  -nojournal        do not journal commands (the default)\n"
          "  -noecho           do not echo commands\n"
          "  <file>            journal to play back by process_input_files\n");
}

// ---- Playback and developer switches
// -------------------------------------------------------------

void set_playback_paused_on_error(bool pause) {
    state().pause_playback_on_error = pause;
}

bool is_playback_paused_on_error() {
    return state().pause_playback_on_error;
}

bool developer_commands_are_enabled() {
    return state().developer_commands;
}

// ---- History
// -------------------------------------------------------------------------------------

std::string get_command_from_history(int command_number) {
    const auto& history = state().history;
    if (command_number < 1 || static_cast<size_t>(command_number) > history.size()) {
        return {};
    }
    return history[static_cast<size_t>(command_number) - 1];
}

std::string get_previous_command_from_history() {
    SessionState& s = state();
    if (s.history.empty()) {
        return {};
    }
    if (s.history_cursor > 0) {
        --s.history_cursor;
    }
    return s.history[s.history_cursor];
}

std::string get_next_command_from_history() {
    SessionState& s = state();
    if (s.history_cursor + 1 >= s.history.size()) {
        s.history_cursor = s.history.size();
        return {};
    }
    ++s.history_cursor;
    return s.history[s.history_cursor];
}

// ---- Journal and echo
// ----------------------------------------------------------------------------

void journal_commands(bool on) {
    if (on) {
        if (!state().journal_on) {
            start_journal("");
        }
    } else {
        stop_journal();
    }
}

bool is_command_journaled() {
    return state().journal_on;
}

std::string get_current_journal_file() {
    return state().journal_on ? state().journal_path : std::string();
}

bool is_command_echoed() {
    return state().echo;
}

bool is_working_dir_set() {
    return state().working_dir_set;
}

// ---- Model and undo state
// ------------------------------------------------------------------------

bool is_modified() {
    return state().modified;
}

void set_modified() {
    state().modified = true;
}

bool is_undo_save_needed() {
    return state().undo_save_needed;
}

void set_undo_saved() {
    state().undo_save_needed = false;
}

bool is_performing_undo() {
    return state().performing_undo;
}

bool get_undo_enabled() {
    return state().undo_enabled;
}

int number_undo_commands() {
    return static_cast<int>(state().undo_stack.size());
}

// ---- Variables
// -----------------------------------------------------------------------------------

std::vector<std::string> get_valfold_vars() {
    return state().valfold.names();
}

std::string get_valfold_value_as_string(const std::string& variable_name) {
    ValfoldValue value;
    return state().valfold.get(variable_name, value) ? value.to_string() : std::string();
}

bool get_valfold_value(const std::string& variable_name, int& returned_variable_type,
                       double& returned_double_val, std::string& returned_string_val) {
    ValfoldValue value;
    if (!state().valfold.get(variable_name, value)) {
        return false;
    }
    returned_variable_type = value.is_string ? 1 : 0;
    if (value.is_string) {
        returned_string_val = value.text;
    } else {
        returned_double_val = value.number;
    }
    return true;
}

double get_valfold_numeric_value(const std::string& variable_name) {
    ValfoldValue value;
    return state().valfold.get(variable_name, value) && !value.is_string ? value.number : 0.0;
}

double get_tarvo_digits_setting() {
    return state().digits;
}

// ---- Files
// ---------------------------------------------------------------------------------------

void add_filename_to_recent_file_list(std::string& filename) {
    if (filename.empty()) {
        return;
    }
    auto& recent = state().recent_files;
    const std::string full = TarvoFileUtil::absolute_path(filename);
    std::erase(recent, full);
    recent.insert(recent.begin(), full);
    if (recent.size() > 10) {
        recent.resize(10);
    }
}

void complete_filename(std::string& line, int& num_chars, bool& found_quote) {
    // Completes the file name that the line's last unclosed quote starts.
    num_chars = 0;
    found_quote = false;
    size_t quote_pos = std::string::npos;
    char quote = 0;
    for (size_t i = 0; i < line.size(); ++i) {
        if (quote) {
            if (line[i] == quote) {
                quote = 0;
                quote_pos = std::string::npos;
            }
        } else if (line[i] == '\'' || line[i] == '"') {
            quote = line[i];
            quote_pos = i;
        }
    }
    if (quote_pos == std::string::npos) {
        return;
    }
    found_quote = true;
    const std::string partial = line.substr(quote_pos + 1);
    namespace fs = std::filesystem;
    const fs::path partial_path(partial);
    const fs::path dir =
        partial_path.has_parent_path() ? partial_path.parent_path() : fs::path(".");
    const std::string stem = partial_path.filename().string();
    std::vector<std::string> matches;
    std::error_code ec;
    for (const auto& entry : fs::directory_iterator(dir, ec)) {
        const std::string name = entry.path().filename().string();
        if (name.starts_with(stem)) {
            matches.push_back(name + (entry.is_directory(ec) ? "/" : ""));
        }
    }
    if (matches.empty()) {
        return;
    }
    // Longest common prefix of the matches.
    std::string common = matches.front();
    for (const std::string& m : matches) {
        size_t k = 0;
        while (k < common.size() && k < m.size() && common[k] == m[k]) {
            ++k;
        }
        common.resize(k);
    }
    const std::string added = common.substr(stem.size());
    line += added;
    if (matches.size() == 1 && !added.ends_with("/")) {
        line += quote;
        num_chars = static_cast<int>(added.size()) + 1;
    } else {
        num_chars = static_cast<int>(added.size());
    }
}

} // namespace TarvoInterface
