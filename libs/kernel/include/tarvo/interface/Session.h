#pragma once
// Public functions of the kernel: session. The conventions of the whole API
// are in tarvo/TarvoInterface.h, which includes every family.

#include "tarvo/TarvoTypes.h"
#include "tarvo_util/TarvoProgressHandler.h"

#include <memory>
#include <string>
#include <vector>

namespace TarvoInterface {

// ---- Session -------------------------------------------------------------------------------

// Starts the session; blocks until it is up. Arguments as on a command line, the first being the
// program name ("-driver offscreen" selects headless graphics). False when it could not start.
bool init(const std::vector<std::string>& arguments);
// Ends the session. Returns 0.
int destroy();
bool is_initialized();
// Ask the running operation to stop. Thread-safe; cleared when the next command starts.
void set_tarvo_interrupt(bool interrupt);
bool get_tarvo_interrupt();
void set_progress_handler(std::shared_ptr<TarvoProgressHandler> handler);

// ---- Session state, commands and journal --------------------------------------------------------

// Runs the files named on the command line (journals, models) that have not run yet.
void process_input_files();
// Sets whether journal playback stops at the first failing command.
void set_playback_paused_on_error(bool pause);
// Whether journal playback stops at the first failing command.
bool is_playback_paused_on_error();
// Whether developer commands are enabled.
bool developer_commands_are_enabled();
// Adds `filename` to the recent-file list; the kernel may rewrite it (normalised path).
void add_filename_to_recent_file_list(std::string& filename);
// Version of the kernel ("1.2.0").
std::string get_version();
// Date of the kernel's source revision.
std::string get_revision_date();
// Build number of the kernel.
std::string get_build_number();
// Version text of the geometry engine.
std::string get_acis_version();
// Version of the geometry engine as one number (major*100 + minor).
int get_acis_version_as_int();
// Version of the Exodus II library in use.
std::string get_exodus_version();
// Version text of the mesher.
std::string get_meshgems_version();
// Number of significant digits used when printing values.
double get_tarvo_digits_setting();
// Version of the graphics library in use.
std::string get_graphics_version();
// Prints the command-line options of the kernel.
void print_cmd_options();
// Whether the model changed since it was last saved or opened.
bool is_modified();
// Marks the model as changed.
void set_modified();
// Whether an undo checkpoint is due before the next command.
bool is_undo_save_needed();
// Marks the undo checkpoint as taken.
void set_undo_saved();
// Whether an undo is running.
bool is_performing_undo();
// Whether commands are echoed as they run.
bool is_command_echoed();
// Command number `command_number` (1 = first) of this session, or "".
std::string get_command_from_history(int command_number);
// Next command from history.
std::string get_next_command_from_history();
// Previous command from history.
std::string get_previous_command_from_history();
// Whether the volume has a scheme and sizes that let it mesh.
bool is_volume_meshable(int volume_id);
// Turns journaling of commands on or off.
void journal_commands(bool state);
// Whether commands are journaled.
bool is_command_journaled();
// Path of the journal being written, or "".
std::string get_current_journal_file();
// Whether a working directory was set (cd).
bool is_working_dir_set();
// Runs one command of the command language, echoed and journaled. False when it was rejected.
bool cmd(const char* input_string);
// Runs one command line; a line that is not a kernel command is refused. False when rejected.
bool tarvo_or_python_cmd(const std::string& input_string);
// Runs one command without echo or journaling. False when it was rejected.
bool silent_cmd(const char* input_string);
// Whether undo can take back the last command.
bool was_last_cmd_undoable();
// Expands an entity-list expression ("1 to 4", "all", "in volume 2") into ids of `type`, sorted,
// unique.
std::vector<int> parse_tarvo_list(const std::string& type, const std::string& entity_list_string);
// Prints the help of the commands that match `input_line`.
void print_raw_help(const std::string& input_line, int order_dependent, int consecutive_dependent);
// Number of errors reported since the session started.
int get_error_count();
// Commands (each a runnable line, then a description) that may fix mesh error `error_code`.
std::vector<std::string> get_mesh_error_solutions(int error_code);
// Completes the file name at the end of `line`; `num_chars` gets the characters added,
// `found_quote` whether the name is quoted.
void complete_filename(std::string& line, int& num_chars, bool& found_quote);

} // namespace TarvoInterface
