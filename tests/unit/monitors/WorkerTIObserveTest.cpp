// How the observer treats the monitors of a running task beyond single events (each event's
// record, flags and mark are in EventWireGoldenTest): records in arrival order, the filing of
// entity monitors, and events between tasks.

#include "MonitorTestSupport.h"

#include "monitors/EntityMonitor.h"
#include "monitors/ModelMonitor.h"
#include "monitors/TIObserveMonitor.h"
#include "monitors/WorkerTIObserve.h"

#include <gtest/gtest.h>

#include <set>
#include <vector>

namespace {

// An entity monitor of any type that reads nothing: the observer only files and marks it.
class ProbeMonitor : public EntityMonitor {
public:
    using EntityMonitor::EntityMonitor;
    void update() override {}
};

QJsonObject event(const char* name, QJsonObject fields = {}) {
    fields.insert(QStringLiteral("event_name"), QLatin1String(name));
    return fields;
}

std::set<int> all_events() {
    std::set<int> codes;
    for (int code = 0; code < TIObserveMonitor::event_count; ++code)
        codes.insert(code);
    return codes;
}

TEST(WorkerTIObserve, RecordsPileUpInArrivalOrderWithoutCoalescing) {
    WorkerTIObserve observer;
    TIObserveMonitor events({11, 12});
    observer.set_observe_monitor(&events);

    observer.notify_volume_created(4);
    observer.notify_surface_created(1); // not selected
    observer.notify_volume_deleted(4);
    observer.notify_volume_created(4);

    std::vector<QJsonObject> records;
    for (const auto& [code, fields] : events.event_records())
        records.push_back(fields);
    EXPECT_EQ(records, (std::vector<QJsonObject>{event("volume_created", {{"id", 4}}),
                                                 event("volume_deleted", {{"id", 4}}),
                                                 event("volume_created", {{"id", 4}})}));
}

TEST(WorkerTIObserve, FirstMonitorOfATypeAndIdStaysAndClearingDetachesAll) {
    WorkerTIObserve observer;
    ProbeMonitor first(QStringLiteral("volume"), 1);
    ProbeMonitor second(QStringLiteral("volume"), 1);
    ProbeMonitor other(QStringLiteral("surface"), 1);
    observer.add_entity_monitor(&first);
    observer.add_entity_monitor(&second);
    observer.add_entity_monitor(&other);

    observer.notify_volume_updated(1);
    EXPECT_TRUE(first.is_modified());
    EXPECT_FALSE(second.is_modified());
    EXPECT_FALSE(other.is_modified());

    observer.clear_entity_monitors();
    observer.notify_surface_updated(1);
    EXPECT_FALSE(other.is_modified());
}

TEST(WorkerTIObserve, EventsBetweenTasksGoNowhere) {
    WorkerTIObserve observer;
    ModelMonitor model;
    TIObserveMonitor events(all_events());
    observer.set_model_monitor(&model);
    observer.set_observe_monitor(&events);
    observer.set_model_monitor(nullptr);
    observer.set_observe_monitor(nullptr);

    // With every pointer null and no entity monitor, nothing may be touched.
    observer.notify_volume_created(1);
    observer.notify_id_changed("volume", 1, 2);
    observer.notify_highlighted({{"volume", 2}});
    observer.notify_graphics_mode_modified();
    observer.notify_working_directory_changed();

    EXPECT_TRUE(events.event_records().empty());
    EXPECT_FALSE(model.any_changed());
}

} // namespace
