#pragma once
// Passes kernel events to clients. One object per task serves every event that any client
// selected; each client receives only the records of the events that it selected itself.
//
// Threads: built, filled by WorkerTIObserve and updated on the worker thread while its task
// runs; read with get_notifications() on the main thread after the task came back.

#include "monitors/DataMonitor.h"

#include <QJsonObject>
#include <QString>

#include <set>
#include <utility>
#include <vector>

class TIObserveMonitor : public DataMonitor {
public:
    // Number of events that clients can select (the rows of tarvo/TIObserveEvents.def that have
    // a code); also the code that stands for "no such event".
#define TARVO_OBSERVER_EVENT(...) +1
#define TARVO_OBSERVER_UNSENT(...)
    static constexpr int event_count = 0
#include "tarvo/TIObserveEvents.def"
        ;
    static constexpr int invalid_event_code = event_count;
    static constexpr int working_directory_changed_code = 82;

    explicit TIObserveMonitor(std::set<int> events);

    // Appends a record {"event_name": name} for `code` and returns it so that the observer can
    // add the event's fields; null when no client of this task selected the event. The pointer
    // is valid until the next add_event().
    QJsonObject* add_event(int code);

    // A first report of the working directory when the monitor is new; no other kernel call.
    void update() override;
    // One "datamonitor.TIObserve" notification holding, in arrival order, the records whose
    // event `selection` holds; nothing when there are none.
    std::vector<RPCRequest> get_notifications(const MonitorSelection& selection) override;

    // The code that a client selects with this name (exact, case-sensitive), invalid_event_code
    // for an unknown name. The merge event is selected as "notify_merge" and reported as "merge".
    static int event_code_from_name(const QString& name);
    // The name that goes out with a record; empty for a code outside the table.
    static QString event_name_from_code(int code);

    const std::vector<std::pair<int, QJsonObject>>& event_records() const {
        return records;
    }

private:
    std::set<int> events;
    std::vector<std::pair<int, QJsonObject>> records;
};
