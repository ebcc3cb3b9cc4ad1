#pragma once
// Process-wide state of the one kernel session: the output channel, the error count, the
// interrupt flag, progress and the observer list.
//
// Threading: everything here belongs to the kernel thread (the thread that called
// TarvoInterface::init), except interrupted() and request_interrupt(), which are atomic and may
// be called from any thread.

#include "tarvo/TIObserve.h"

#include <functional>
#include <string>
#include <utility>

namespace tarvo::kernel {

// ---- Output ------------------------------------------------------------------------------------

// Prints information through TarvoMessage. `text` should be whole lines; a missing final line
// feed is added, so callers may pass "Created volume 4".
void print(const std::string& text);

// Prints "ERROR: <text>\n" through TarvoMessage's error channel and counts it.
// Inside a command only the first error is counted and carries the "ERROR: " prefix; later ones
// are printed indented on the error channel, so that a rejected command shows exactly one
// "ERROR: " line and raises the count by one. Always returns false, so `return error("...");`
// works in a bool function.
bool error(const std::string& text);

// Prints "WARNING: <text>\n" on the message channel. Not counted.
void warning(const std::string& text);

int error_count();

// ---- Interrupt ---------------------------------------------------------------------------------

// True once set_tarvo_interrupt(true) was called and no command has started since. Long
// operations test it between entities and between stages, then stop, leave the model as it was
// and fail with error("Interrupted").
bool interrupted();
void request_interrupt(bool on);

// ---- Progress ----------------------------------------------------------------------------------

// One progress report on the installed TarvoProgressHandler. The constructor calls start(), the
// destructor end() (so an early return or an exception still ends it). With no handler installed
// every call does nothing.
class Progress {
public:
    Progress(const std::string& title, const std::string& info = {}, bool has_cancel = true);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // 0 to 100; values are clamped.
    void percent(double value);
    // Convenience: percent(100 * done / total).
    void step(long done, long total);
    void end();

private:
    bool open = false;
};

// ---- Events ------------------------------------------------------------------------------------

// Fan-out of observer events to every registered TIObserve, in registration order. Observers may
// register or unregister from inside a notification; the change takes effect with the next event.
class Events {
public:
    // events().emit(&TIObserve::notify_volume_created, 4);
    template <class... Params, class... Args>
    void emit(void (TarvoInterface::TIObserve::*op)(Params...), Args&&... args) {
        for_each_observer([&](TarvoInterface::TIObserve& observer) { (observer.*op)(args...); });
    }
    void for_each_observer(const std::function<void(TarvoInterface::TIObserve&)>& fn);

    // Shorthands for the events that geometry code sends most.
    void body_created(int id) { emit(&TarvoInterface::TIObserve::notify_body_created, id); }
    void body_deleted(int id) { emit(&TarvoInterface::TIObserve::notify_body_deleted, id); }
    void body_updated(int id) { emit(&TarvoInterface::TIObserve::notify_body_updated, id); }
    void volume_created(int id) { emit(&TarvoInterface::TIObserve::notify_volume_created, id); }
    void volume_deleted(int id) { emit(&TarvoInterface::TIObserve::notify_volume_deleted, id); }
    void volume_updated(int id) { emit(&TarvoInterface::TIObserve::notify_volume_updated, id); }
    void surface_created(int id) { emit(&TarvoInterface::TIObserve::notify_surface_created, id); }
    void surface_deleted(int id) { emit(&TarvoInterface::TIObserve::notify_surface_deleted, id); }
    void surface_updated(int id) { emit(&TarvoInterface::TIObserve::notify_surface_updated, id); }
    void curve_created(int id) { emit(&TarvoInterface::TIObserve::notify_curve_created, id); }
    void curve_deleted(int id) { emit(&TarvoInterface::TIObserve::notify_curve_deleted, id); }
    void vertex_created(int id) { emit(&TarvoInterface::TIObserve::notify_vertex_created, id); }
    void vertex_deleted(int id) { emit(&TarvoInterface::TIObserve::notify_vertex_deleted, id); }
};

Events& events();

// ---- Model state flags -------------------------------------------------------------------------

// "Modified" is set by every successful undoable command and by set_modified(); save code clears
// it after writing the native file.
bool model_modified();
void set_model_modified(bool modified);

// True while the command runner restores a snapshot (undo, or rollback of a failed command).
bool performing_undo();

// True while a journal is being played back (commands then are not journaled one by one).
bool in_playback();

} // namespace tarvo::kernel
