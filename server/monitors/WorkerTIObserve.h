#pragma once
// The server's kernel observer. It sends nothing: each event becomes up to three effects on the
// monitors of the running task — a record in the event monitor (if a client selected the event),
// a section flag in the model monitor, and the modified mark on the one entity monitor that
// watches the entity — and control returns to the kernel at once.
//
// Threads: owned by TarvoWorker; every operation runs on the worker thread (the overrides inside
// kernel calls). The monitors belong to that thread while their task runs, so nothing is locked.
// Between tasks the pointers are null and the map is empty: events then go nowhere.

#include "tarvo/TIObserve.h"

#include <map>
#include <string>

class EntityMonitor;
class GraphicsMonitor;
class ModelMonitor;
class TIObserveMonitor;
class QJsonObject;

class WorkerTIObserve : public TarvoInterface::TIObserve {
public:
    WorkerTIObserve() = default;
    ~WorkerTIObserve() override = default;

    // The task's monitors, not owned; null detaches.
    void set_observe_monitor(TIObserveMonitor* monitor) { observe_monitor = monitor; }
    void set_graphics_monitor(GraphicsMonitor* monitor) { graphics_monitor = monitor; }
    void set_model_monitor(ModelMonitor* monitor) { model_monitor = monitor; }
    // Files the monitor under its type and id; of two with one type and id the first stays.
    void add_entity_monitor(EntityMonitor* monitor);
    void clear_entity_monitors() { entity_monitors.clear(); }

    // Every event the clients may hear of, one per row of tarvo/TIObserveEvents.def; the row
    // says what the override does (record fields, model flags, entity mark). Operations the
    // table marks as unsent are not overridden: the kernel's defaults run.
#define TARVO_OBSERVER_EVENT(name, code, flags, mark, ...)                                         \
    void notify_##name(TARVO_EVENT_PARAMS(__VA_ARGS__)) override;
#define TARVO_OBSERVER_UNSENT(name, ...)
#include "tarvo/TIObserveEvents.def"

private:
    using Flag = void (ModelMonitor::*)();

    // The event's record, or null when the task has no monitor of events or nobody selected it.
    QJsonObject* add_record(int code);
    void flag(Flag setter);
    // Marks the monitor of (type, id), if the task has one.
    void mark(const std::string& type, int id);
    // The graphics monitor's share of an event, by code: highlighted (32), unhighlighted (33),
    // graphics_mode_modified (48), graphics_pick_type_modified (49); other events pass by.
    static constexpr int kHighlighted = 32;
    static constexpr int kUnhighlighted = 33;
    static constexpr int kModeModified = 48;
    static constexpr int kPickTypeModified = 49;
    void note_graphics(int code);
    void note_graphics(int code, const std::vector<std::pair<std::string, int>>& entities);
    template <typename... Other> void note_graphics(int, const Other&...) {}

    TIObserveMonitor* observe_monitor = nullptr;
    GraphicsMonitor* graphics_monitor = nullptr;
    ModelMonitor* model_monitor = nullptr;
    std::map<std::string, std::map<int, EntityMonitor*>> entity_monitors;
};
