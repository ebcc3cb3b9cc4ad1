#include "monitors/WorkerTIObserve.h"

#include "monitors/EntityMonitor.h"
#include "monitors/GraphicsMonitor.h"
#include "monitors/ModelMonitor.h"
#include "monitors/TIObserveMonitor.h"

#include "tarvo_util/TarvoFileUtil.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QString>

// Graphics notes (highlight changes, render mode, pick types) go to the task's graphics monitor
// before the event is recorded: every override passes its code and arguments to note_graphics,
// which only the four graphics events answer.

namespace {

// One field of a record: the key from the table and the argument it holds. The value is turned
// into JSON only when a client selected the event.
template <typename T> struct Field {
    QLatin1StringView key;
    const T& value;
};

template <typename T> Field<T> field(const char* key, const T& value) {
    return {QLatin1StringView(key), value};
}

// The kernel passes nothing for a Cwd field: the directory is read when the event happens.
struct CurrentDirectory {};

QJsonValue to_json(int value) {
    return value;
}
QJsonValue to_json(const std::string& value) {
    return QString::fromStdString(value);
}
// Bools travel as the numbers 0 and 1: the clients of this event stream expect numbers.
QJsonValue to_json(bool value) {
    return value ? 1 : 0;
}
QJsonValue to_json(const std::vector<std::pair<std::string, int>>& entities) {
    QJsonArray list;
    for (const auto& [type, id] : entities)
        list.append(QJsonArray{QString::fromStdString(type), id});
    return list;
}
QJsonValue to_json(CurrentDirectory) {
    return QString::fromStdString(TarvoFileUtil::get_current_working_directory());
}

template <typename... T> void fill(QJsonObject* record, const Field<T>&... fields) {
    if (record)
        (record->insert(fields.key, to_json(fields.value)), ...);
}

} // namespace

void WorkerTIObserve::note_graphics(int code) {
    if (graphics_monitor == nullptr)
        return;
    if (code == kModeModified)
        graphics_monitor->note_mode_modified();
    else if (code == kPickTypeModified)
        graphics_monitor->note_pick_type_modified();
}

void WorkerTIObserve::note_graphics(int code,
                                    const std::vector<std::pair<std::string, int>>& entities) {
    if (graphics_monitor == nullptr)
        return;
    if (code == kHighlighted)
        graphics_monitor->note_highlighted(entities);
    else if (code == kUnhighlighted)
        graphics_monitor->note_unhighlighted(entities);
}

void WorkerTIObserve::add_entity_monitor(EntityMonitor* monitor) {
    if (!monitor)
        return;
    entity_monitors[monitor->entity_type().toStdString()].try_emplace(monitor->entity_id(),
                                                                      monitor);
}

QJsonObject* WorkerTIObserve::add_record(int code) {
    return observe_monitor ? observe_monitor->add_event(code) : nullptr;
}

void WorkerTIObserve::flag(Flag setter) {
    if (model_monitor)
        (model_monitor->*setter)();
}

void WorkerTIObserve::mark(const std::string& type, int id) {
    const auto of_type = entity_monitors.find(type);
    if (of_type == entity_monitors.end())
        return;
    const auto monitor = of_type->second.find(id);
    if (monitor != of_type->second.end())
        monitor->second->mark_modified();
}

// Every override has one shape, in this order: the record with the row's fields (if selected),
// the row's model flags, the row's entity mark. The mark of id_changed names the new id: a
// monitor of the old id is left as it is, and one that already watched the new id learns that
// its entity changed. Deleted entities are not marked: their monitors find them gone.
#define TARVO_WORKER_FIELD(field) TARVO_WORKER_FIELD_ field
#define TARVO_WORKER_FIELD_(kind, name, key) , TARVO_WORKER_VALUE_##kind(key, name)
#define TARVO_WORKER_VALUE_Int(key, name) field(key, name)
#define TARVO_WORKER_VALUE_Str(key, name) field(key, name)
#define TARVO_WORKER_VALUE_Bool(key, name) field(key, name)
#define TARVO_WORKER_VALUE_Pairs(key, name) field(key, name)
#define TARVO_WORKER_VALUE_Cwd(key, name) field(key, CurrentDirectory{})
#define TARVO_WORKER_FLAG(section) flag(&ModelMonitor::set_##section##_changed);
#define TARVO_WORKER_MARK(...) __VA_OPT__(mark(__VA_ARGS__);)

#define TARVO_OBSERVER_EVENT(name, code, flags, marked, ...)                                       \
    void WorkerTIObserve::notify_##name(TARVO_EVENT_PARAMS(__VA_ARGS__)) {                         \
        note_graphics(code TARVO_EVENT_ARGS(__VA_ARGS__));                                         \
        fill(add_record(code) TARVO_EV_FOR_EACH(TARVO_WORKER_FIELD, __VA_ARGS__));                 \
        TARVO_EV_FOR_EACH_IN(TARVO_WORKER_FLAG, flags)                                             \
        TARVO_WORKER_MARK marked                                                                   \
    }
#define TARVO_OBSERVER_UNSENT(name, ...)
#include "tarvo/TIObserveEvents.def"
