// Public functions of the session family: start and end of the session, interrupt, progress,
// command entry points, history, journal, undo and modified state, versions.

#include "core/Session.h"
#include "core/CommandRegistry.h"
#include "core/EntityList.h"
#include "core/Modules.h"
#include "core/Runner.h"
#include "core/SessionState.h"
#include "tarvo/TarvoInterface.h"
#include "tarvo_util/TarvoFileUtil.h"

#include <exodusII.h>
#include <gmsh.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>

namespace {

using namespace tarvo::kernel;

constexpr const char* kKernelVersion = "0.1.0";
constexpr const char* kBuildNumber = "1";

// Moves what Gmsh logged during the command to the message channel: warnings as warnings,
// errors as plain lines (the command that met them reports its own failure and counts it).
void drain_gmsh_log() {
    try {
        std::vector<std::string> log;
        gmsh::logger::get(log);
        if (log.empty()) {
            return;
        }
        gmsh::logger::stop();
        gmsh::logger::start();
        for (const std::string& line : log) {
            if (line.starts_with("Warning")) {
                const size_t colon = line.find(':');
                warning("Gmsh: " + (colon == std::string::npos ? line : line.substr(colon + 2)));
            } else if (line.starts_with("Error")) {
                const size_t colon = line.find(':');
                print("Gmsh error: " +
                      (colon == std::string::npos ? line : line.substr(colon + 2)));
            }
        }
    } catch (...) {
        // Logging must never fail a command.
    }
}

void apply_arguments(const std::vector<std::string>& arguments) {
    SessionState& s = state();
    for (size_t i = 1; i < arguments.size(); ++i) {
        const std::string& arg = arguments[i];
        const bool has_value = i + 1 < arguments.size();
        if (arg == "-driver" && has_value) {
            s.driver = arguments[++i];
        } else if (arg == "-workdir" && has_value) {
            const std::string dir = arguments[++i];
            if (TarvoFileUtil::set_current_working_directory(dir)) {
                s.working_dir_set = true;
            } else {
                warning("Cannot change to working directory '" + dir + "'");
            }
        } else if (arg == "-journal") {
            start_journal("");
        } else if (arg == "-nojournal") {
            stop_journal();
        } else if (arg == "-noecho") {
            s.echo = false;
        } else if (arg == "-batch" || arg == "-nographics" || arg == "-nogui") {
            // Headless anyway.
        } else if (!arg.empty() && arg[0] == '-') {
            warning("Unknown kernel option '" + arg + "' ignored");
        } else if (!arg.empty()) {
            s.input_files.push_back(arg);
        }
    }
}

} // namespace

namespace TarvoInterface {

// ---- Session
// -------------------------------------------------------------------------------------

bool init(const std::vector<std::string>& arguments) {
    SessionState& s = state();
    if (s.initialized) {
        warning("The kernel is initialised already");
        return true;
    }
    reset_session_state();
    try {
        // Gmsh reads no command line of ours (it would take our options for files to open), and
        // no configuration files: the session must not depend on the user's Gmsh settings.
        char program[] = "tarvo";
        char* argv[] = {program, nullptr};
        gmsh::initialize(1, argv, false);
        gmsh::option::setNumber("General.Terminal", 0);
        gmsh::option::setNumber("General.Verbosity", 2); // errors and warnings reach the log
        gmsh::logger::start();
    } catch (const std::string& text) {
        error("Cannot start Gmsh: " + text);
        return false;
    } catch (...) {
        error("Cannot start Gmsh");
        return false;
    }
    set_log_drain(drain_gmsh_log);
    register_session_commands();
    s.initialized = true;
    try {
        init_modules();
    } catch (...) {
        error("A kernel module failed to start");
    }
    apply_arguments(arguments);
    return true;
}

int destroy() {
    SessionState& s = state();
    if (!s.initialized) {
        return 0;
    }
    try {
        shutdown_modules();
    } catch (...) {
        error("A kernel module failed to stop cleanly");
    }
    stop_journal();
    clear_commands();
    s.catalogs.clear();
    s.participants.clear();
    s.undo_stack.clear();
    set_log_drain(nullptr);
    try {
        gmsh::logger::stop();
        gmsh::finalize();
    } catch (...) {
    }
    s.initialized = false;
    return 0;
}

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

// ---- Versions
// ------------------------------------------------------------------------------------

std::string get_version() {
    return kKernelVersion;
}

std::string get_revision_date() {
    // __DATE__ is "Mmm dd yyyy"; answer ISO 8601.
    static const char* months[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                   "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const std::string date = __DATE__;
    int month = 0;
    for (int i = 0; i < 12; ++i) {
        if (date.compare(0, 3, months[i]) == 0) {
            month = i + 1;
        }
    }
    const int day = std::atoi(date.substr(4, 2).c_str());
    char text[16];
    std::snprintf(text, sizeof text, "%s-%02d-%02d", date.substr(7, 4).c_str(), month, day);
    return text;
}

std::string get_build_number() {
    return kBuildNumber;
}

std::string get_exodus_version() {
    char text[16];
    std::snprintf(text, sizeof text, "%.2f", static_cast<double>(EX_API_VERS));
    return text;
}

std::string get_meshgems_version() {
    return {};
} // no MeshGems in this kernel

// The geometry engine is OpenCASCADE (get_default_geometry_engine); ACIS is not part of this
// kernel, so its version is empty and its number 0, as for every engine that is not there.
std::string get_acis_version() {
    return {};
}

int get_acis_version_as_int() {
    return 0;
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
