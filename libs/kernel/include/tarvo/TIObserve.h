#pragma once
// The kernel's observer interface. A subclass overrides the events it cares about; the defaults do
// nothing. Events are delivered on the thread that runs the kernel command, synchronously, in the
// order in which they happen, between notify_command_start and notify_command_complete.
//
// The operations are declared by the table of events (TIObserveEvents.def): their names,
// parameters and order. The order is part of the interface: keep it.

#include "tarvo/TIObserveEvents.h"

namespace TarvoInterface {

class TIObserve {
public:
    TIObserve() = default;
    virtual ~TIObserve();
    TIObserve(const TIObserve&) = delete;
    TIObserve& operator=(const TIObserve&) = delete;

    // Start and stop receiving events. Registering twice is harmless; an observer that is
    // destroyed while registered removes itself.
    void register_observer();
    void unregister_observer();
    bool is_registered() const { return registered; }

    // One empty default per row of TIObserveEvents.def, in its order: notify_<name>(fields).
#define TARVO_OBSERVER_EVENT(name, code, flags, mark, ...)                                         \
    virtual void notify_##name(TARVO_EVENT_PARAM_TYPES(__VA_ARGS__)) {}
#define TARVO_OBSERVER_UNSENT(name, ...)                                                           \
    virtual void notify_##name(TARVO_EVENT_PARAM_TYPES(__VA_ARGS__)) {}
#include "tarvo/TIObserveEvents.def"

private:
    bool registered = false;
};

} // namespace TarvoInterface
