// Session state, commands and journal: one row per method, in table order.
//
// add_filename_to_recent_file_list and complete_filename read no parameters: whatever a client
// sends, the kernel gets the empty members (empty string, 0, false) and the result reports what
// the kernel left in them. add_usage_product and log_feature_usage go to the usage log, not to
// the kernel. cmd and silent_cmd hand the kernel a C string.

#include "methods/MethodTable.h"
#include "tarvo_util/TarvoFeatureUsageTracking.h"

namespace tarvo::methods {

namespace TI = TarvoInterface;

void add_session_methods(MethodRows& rows) {
    // clang-format off
    rows.insert(rows.end(), {
        row("process_input_files", &TI::process_input_files, {}),
        row("set_tarvo_interrupt", &TI::set_tarvo_interrupt, {param("interrupt")}),
        row("set_playback_paused_on_error", &TI::set_playback_paused_on_error, {param("pause")}),
        row("is_playback_paused_on_error", &TI::is_playback_paused_on_error, {}),
        row("developer_commands_are_enabled", &TI::developer_commands_are_enabled, {}),
        row("add_filename_to_recent_file_list", &TI::add_filename_to_recent_file_list, {out("filename")}),
        row("get_version", &TI::get_version, {}),
        row("get_revision_date", &TI::get_revision_date, {}),
        row("get_build_number", &TI::get_build_number, {}),
        row("get_acis_version", &TI::get_acis_version, {}),
        row("get_acis_version_as_int", &TI::get_acis_version_as_int, {}),
        row("get_exodus_version", &TI::get_exodus_version, {}),
        row("get_meshgems_version", &TI::get_meshgems_version, {}),
        row("get_tarvo_digits_setting", &TI::get_tarvo_digits_setting, {}),
        row("get_graphics_version", &TI::get_graphics_version, {}),
        row("print_cmd_options", &TI::print_cmd_options, {}),
        row("is_modified", &TI::is_modified, {}),
        row("set_modified", &TI::set_modified, {}),
        row("is_undo_save_needed", &TI::is_undo_save_needed, {}),
        row("set_undo_saved", &TI::set_undo_saved, {}),
        row("is_performing_undo", &TI::is_performing_undo, {}),
        row("is_command_echoed", &TI::is_command_echoed, {}),
        row("get_command_from_history", &TI::get_command_from_history, {param("command_number")}),
        row("get_next_command_from_history", &TI::get_next_command_from_history, {}),
        row("get_previous_command_from_history", &TI::get_previous_command_from_history, {}),
        row("is_volume_meshable", &TI::is_volume_meshable, {param("volume_id")}),
        row("journal_commands", &TI::journal_commands, {param("state")}),
        row("is_command_journaled", &TI::is_command_journaled, {}),
        row("get_current_journal_file", &TI::get_current_journal_file, {}),
        row("is_working_dir_set", &TI::is_working_dir_set, {}),
        row("cmd", [](const std::string& input_string) { return TI::cmd(input_string.c_str()); }, {param("input_string")}),
        row("tarvo_or_python_cmd", &TI::tarvo_or_python_cmd, {param("input_string")}),
        row("silent_cmd", [](const std::string& input_string) { return TI::silent_cmd(input_string.c_str()); }, {param("input_string")}),
        row("was_last_cmd_undoable", &TI::was_last_cmd_undoable, {}),
        row("parse_tarvo_list", &TI::parse_tarvo_list, {param("type"), param("entity_list_string")}),
        row("print_raw_help", &TI::print_raw_help, {param("input_line"), param("order_dependent"), param("consecutive_dependent")}),
        row("get_error_count", &TI::get_error_count, {}),
        row("get_mesh_error_solutions", &TI::get_mesh_error_solutions, {param("error_code")}),
        row("complete_filename", &TI::complete_filename, {out("line"), out("num_chars"), out("found_quote")}),
        row("add_usage_product", [](const std::string& product, const std::string& version, const std::string& release_flag) { TarvoFeatureUsageTracking::instance()->add_product(product, version, release_flag); }, {param("product"), param("version"), param("release_flag")}),
        row("log_feature_usage", [](const std::string& product, const std::string& feature, bool success) { TarvoFeatureUsageTracking::instance()->write_feature_usage(product, feature, success); }, {param("product"), param("feature"), param("success")}),
    });
    // clang-format on
}

} // namespace tarvo::methods
