// The kernel as a whole: the list of its modules, the session's start and end (which start and
// stop every module, Gmsh and the log drain), and the versions of the engines it is built on.
// The one place that knows every module: core knows none of them.

#include "core/CommandRegistry.h"
#include "core/Guard.h"
#include "core/Runner.h"
#include "core/Session.h"
#include "core/SessionState.h"
#include "core/Version.h"
#include "tarvo/TarvoInterface.h"
#include "tarvo_util/TarvoFileUtil.h"

#include <exodusII.h>
#include <gmsh.h>

#include <cstdio>
#include <cstdlib>

namespace tarvo::kernel {

// Each module's init registers its commands, entity catalog and undo participant; its shutdown
// removes the catalog and participant. Declared here so that no module header is needed.
void init_geometry_module();
void shutdown_geometry_module();
void init_view_module();
void shutdown_view_module();
// Listing keeps no state of its own: it only registers commands.
void init_listing_module();
void init_mesh_module();
void shutdown_mesh_module();
void init_fe_module();
void shutdown_fe_module();
void init_bc_module();
void shutdown_bc_module();
void init_exchange_module();
void shutdown_exchange_module();
void init_diagnostics_module();
void shutdown_diagnostics_module();

} // namespace tarvo::kernel

namespace {

using namespace tarvo::kernel;

void init_modules() {
    init_geometry_module();
    init_view_module();
    init_listing_module();
    init_mesh_module();
    init_fe_module();
    init_bc_module();
    init_exchange_module();
    init_diagnostics_module();
}

void shutdown_modules() {
    shutdown_diagnostics_module();
    shutdown_exchange_module();
    shutdown_bc_module();
    shutdown_fe_module();
    shutdown_mesh_module();
    shutdown_view_module();
    shutdown_geometry_module();
}

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

bool init(const std::vector<std::string>& arguments) {
    SessionState& s = state();
    if (s.initialized) {
        warning("The kernel is initialised already");
        return true;
    }
    reset_session_state();
    // Gmsh reads no command line of ours (it would take our options for files to open), and no
    // configuration files: the session must not depend on the user's Gmsh settings.
    const bool gmsh_started = guarded("Starting Gmsh", false, [] {
        char program[] = "tarvo";
        char* argv[] = {program, nullptr};
        gmsh::initialize(1, argv, false);
        gmsh::option::setNumber("General.Terminal", 0);
        gmsh::option::setNumber("General.Verbosity", 2); // errors and warnings reach the log
        gmsh::logger::start();
        return true;
    });
    if (!gmsh_started) {
        return false;
    }
    set_log_drain(drain_gmsh_log);
    register_session_commands();
    s.initialized = true;
    guarded("Starting the kernel modules", false, [] {
        init_modules();
        return true;
    });
    apply_arguments(arguments);
    return true;
}

int destroy() {
    SessionState& s = state();
    if (!s.initialized) {
        return 0;
    }
    guarded("Stopping the kernel modules", false, [] {
        shutdown_modules();
        return true;
    });
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

// ---- Versions
// ------------------------------------------------------------------------------------

std::string get_version() {
    return tarvo::kernel::kKernelVersion;
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

} // namespace TarvoInterface
