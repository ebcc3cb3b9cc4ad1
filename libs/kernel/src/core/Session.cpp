#include "core/Session.h"

#include "core/SessionState.h"
#include "tarvo_util/TarvoMessage.h"

#include <algorithm>

namespace tarvo::kernel {

SessionState& state() {
    // Never destroyed: observers with static storage may unregister during exit.
    static SessionState* instance = new SessionState;
    return *instance;
}

void reset_session_state() {
    SessionState& s = state();
    s.interrupt_flag = false;
    s.error_count = 0;
    s.silent_depth = 0;
    s.frames.clear();
    s.progress_stack.clear();
    s.catalogs.clear();
    s.participants.clear();
    s.modified = false;
    s.undo_save_needed = false;
    s.performing_undo = false;
    s.undo_enabled = true;
    s.undo_stack.clear();
    s.last_cmd_undoable = false;
    s.history.clear();
    s.history_chars = 0;
    s.history_cursor = 0;
    s.echo = true;
    s.journal_on = false;
    s.journal_path.clear();
    if (s.journal.is_open()) {
        s.journal.close();
    }
    s.playback_depth = 0;
    s.pause_playback_on_error = true;
    s.paused_file.clear();
    s.paused_lines.clear();
    s.paused_next = 0;
    s.paused_line_offset = 0;
    s.developer_commands = false;
    s.working_dir_set = false;
    s.digits = 6;
    s.driver.clear();
    s.input_files.clear();
    s.recent_files.clear();
    s.valfold.clear();
}

// ---- Output ------------------------------------------------------------------------------------

namespace {
std::string as_line(std::string text) {
    if (text.empty() || text.back() != '\n') {
        text += '\n';
    }
    return text;
}
} // namespace

void print(const std::string& text) {
    if (state().silent_depth > 0) {
        return;
    }
    TarvoMessage::instance()->print_message(as_line(text));
}

void warning(const std::string& text) {
    print("WARNING: " + text);
}

bool error(const std::string& text) {
    SessionState& s = state();
    if (!s.frames.empty() && s.frames.back().error_reported) {
        // The command has said why it failed already; this is detail.
        TarvoMessage::instance()->print_error(as_line("  " + text));
        return false;
    }
    if (!s.frames.empty()) {
        s.frames.back().error_reported = true;
    }
    ++s.error_count;
    TarvoMessage::instance()->print_error(as_line("ERROR: " + text));
    return false;
}

int error_count() {
    return state().error_count;
}

void push_frame() {
    state().frames.emplace_back();
}

void pop_frame(bool propagate_error) {
    SessionState& s = state();
    if (s.frames.empty()) {
        return;
    }
    const bool reported = s.frames.back().error_reported;
    s.frames.pop_back();
    if (propagate_error && reported && !s.frames.empty()) {
        s.frames.back().error_reported = true;
    }
}

bool frame_error_reported() {
    const SessionState& s = state();
    return !s.frames.empty() && s.frames.back().error_reported;
}

// ---- Interrupt ---------------------------------------------------------------------------------

bool interrupted() {
    return state().interrupt_flag.load(std::memory_order_relaxed);
}

void request_interrupt(bool on) {
    state().interrupt_flag.store(on, std::memory_order_relaxed);
}

// ---- Progress ----------------------------------------------------------------------------------
// Reports nest: while an inner report runs the handler shows it; when it ends, the outer one is
// started again at its last percentage, so the handler always shows the innermost open report.

Progress::Progress(const std::string& title, const std::string& info, bool has_cancel) {
    SessionState& s = state();
    s.progress_stack.push_back({title, info, has_cancel, 0});
    open = true;
    if (s.progress_handler) {
        s.progress_handler->start(title.c_str(), info.c_str(), has_cancel);
    }
}

Progress::~Progress() {
    end();
}

void Progress::percent(double value) {
    SessionState& s = state();
    if (!open || s.progress_stack.empty()) {
        return;
    }
    value = std::clamp(value, 0.0, 100.0);
    s.progress_stack.back().percent = value;
    if (s.progress_handler) {
        s.progress_handler->percent(value);
    }
}

void Progress::step(long done, long total) {
    percent(total > 0 ? 100.0 * static_cast<double>(done) / static_cast<double>(total) : 100.0);
}

void Progress::end() {
    if (!open) {
        return;
    }
    open = false;
    SessionState& s = state();
    if (s.progress_stack.empty()) {
        return;
    }
    s.progress_stack.pop_back();
    if (!s.progress_handler) {
        return;
    }
    s.progress_handler->end();
    if (!s.progress_stack.empty()) {
        const auto& outer = s.progress_stack.back();
        s.progress_handler->start(outer.title.c_str(), outer.info.c_str(), outer.has_cancel);
        s.progress_handler->percent(outer.percent);
    }
}

// ---- Events ------------------------------------------------------------------------------------

void Events::for_each_observer(const std::function<void(TarvoInterface::TIObserve&)>& fn) {
    // A copy, so that observers may (un)register while being notified; each is checked against
    // the live list before it is called, so one that went away meanwhile is skipped.
    const std::vector<TarvoInterface::TIObserve*> observers = state().observers;
    for (TarvoInterface::TIObserve* observer : observers) {
        const auto& live = state().observers;
        if (std::find(live.begin(), live.end(), observer) != live.end()) {
            fn(*observer);
        }
    }
}

Events& events() {
    static Events instance;
    return instance;
}

// ---- Registries
// ----------------------------------------------------------------------------------

void add_entity_catalog(EntityCatalog* catalog) {
    auto& list = state().catalogs;
    if (catalog && std::find(list.begin(), list.end(), catalog) == list.end()) {
        list.push_back(catalog);
    }
}

void remove_entity_catalog(EntityCatalog* catalog) {
    std::erase(state().catalogs, catalog);
}

void set_entity_catalog(EntityCatalog* catalog) {
    state().catalogs.clear();
    add_entity_catalog(catalog);
}

namespace {
GroupMaker& group_maker() {
    static GroupMaker maker;
    return maker;
}
} // namespace

void set_group_maker(GroupMaker maker) {
    group_maker() = std::move(maker);
}

int make_group(const std::string& type, const std::vector<int>& ids) {
    return group_maker() ? group_maker()(type, ids) : 0;
}

EntityCatalog* catalog_for(std::string_view type) {
    for (EntityCatalog* catalog : state().catalogs) {
        if (catalog->handles(type)) {
            return catalog;
        }
    }
    return nullptr;
}

void add_undo_participant(UndoParticipant* participant) {
    auto& list = state().participants;
    if (participant && std::find(list.begin(), list.end(), participant) == list.end()) {
        list.push_back(participant);
    }
}

void remove_undo_participant(UndoParticipant* participant) {
    SessionState& s = state();
    std::erase(s.participants, participant);
    // Snapshots of a participant that is gone can't be restored.
    for (UndoStep& step : s.undo_stack) {
        std::erase_if(step.snapshots,
                      [&](const auto& entry) { return entry.first == participant; });
    }
}

// ---- Flags
// ---------------------------------------------------------------------------------------

bool model_modified() {
    return state().modified;
}
void set_model_modified(bool modified) {
    state().modified = modified;
}
bool performing_undo() {
    return state().performing_undo;
}
bool in_playback() {
    return state().playback_depth > 0;
}

} // namespace tarvo::kernel

// ---- Observer registration (TarvoInterface::TIObserve)
// -------------------------------------------

namespace TarvoInterface {

TIObserve::~TIObserve() {
    unregister_observer();
}

void TIObserve::register_observer() {
    auto& list = tarvo::kernel::state().observers;
    if (std::find(list.begin(), list.end(), this) == list.end()) {
        list.push_back(this);
    }
    registered = true;
}

void TIObserve::unregister_observer() {
    std::erase(tarvo::kernel::state().observers, this);
    registered = false;
}

} // namespace TarvoInterface
