// The event table and the delivery of event records to the clients that selected them.

#include "MonitorTestSupport.h"

#include "monitors/TIObserveMonitor.h"

#include "tarvo_util/TarvoFileUtil.h"

#include <QJsonArray>

#include <gtest/gtest.h>

#include <set>

namespace {

MonitorSelection events_selected(std::initializer_list<const char*> names) {
    MonitorSelection selection;
    for (const char* name : names)
        selection["TIObserve"].insert({TIObserveMonitor::event_code_from_name(name), 0});
    return selection;
}

TEST(EventTable, NamesAndCodesAgreeBothWays) {
    std::set<QString> names;
    for (int code = 0; code < TIObserveMonitor::event_count; ++code) {
        const QString name = TIObserveMonitor::event_name_from_code(code);
        ASSERT_FALSE(name.isEmpty()) << code;
        names.insert(name);
        if (code != 1) {
            EXPECT_EQ(TIObserveMonitor::event_code_from_name(name), code) << name.toStdString();
        }
    }
    EXPECT_EQ(names.size(), 90u) << "two codes share a name";
}

TEST(EventTable, MergeIsSelectedAsNotifyMergeAndReportedAsMerge) {
    EXPECT_EQ(TIObserveMonitor::event_code_from_name("notify_merge"), 1);
    EXPECT_EQ(TIObserveMonitor::event_name_from_code(1), "merge");
    EXPECT_EQ(TIObserveMonitor::event_code_from_name("merge"),
              TIObserveMonitor::invalid_event_code);
    EXPECT_EQ(TIObserveMonitor::event_code_from_name("merge_complete"), 89);
    EXPECT_EQ(TIObserveMonitor::event_code_from_name("merge_completed"), 2);
}

TEST(EventTable, UnknownNamesAndCodesAreInvalid) {
    for (const char* name : {"Volume_created", "VOLUME_CREATED", "volume_created ", "", "notify_",
                             "sizing_source_created", "notify_volume_created"})
        EXPECT_EQ(TIObserveMonitor::event_code_from_name(name), 90) << name;
    EXPECT_TRUE(TIObserveMonitor::event_name_from_code(90).isEmpty());
    EXPECT_TRUE(TIObserveMonitor::event_name_from_code(-1).isEmpty());
}

TEST(TIObserveMonitor, EachClientGetsItsOwnEventsInOneMessage) {
    // Client A watches creations, B deletions, C only the model; the task saw both kinds.
    TIObserveMonitor monitor({11, 12});
    monitor.add_event(11)->insert("id", 4);
    monitor.add_event(12)->insert("id", 2);
    monitor.add_event(11)->insert("id", 5);

    const auto a = monitor.get_notifications(events_selected({"volume_created"}));
    ASSERT_EQ(a.size(), 1u);
    EXPECT_EQ(a[0].method_name(), "datamonitor.TIObserve");
    EXPECT_TRUE(a[0].is_notification());
    EXPECT_EQ(a[0].params(),
              (QJsonArray{QJsonObject{{"event_name", "volume_created"}, {"id", 4}},
                          QJsonObject{{"event_name", "volume_created"}, {"id", 5}}}));

    const auto b = monitor.get_notifications(events_selected({"volume_deleted", "id_changed"}));
    ASSERT_EQ(b.size(), 1u);
    EXPECT_EQ(b[0].params(),
              (QJsonArray{QJsonObject{{"event_name", "volume_deleted"}, {"id", 2}}}));

    MonitorSelection c;
    c["model"].insert({0, 0});
    c["entity"].insert({11, 0}); // same numbers, another kind
    EXPECT_TRUE(monitor.get_notifications(c).empty());
}

TEST(TIObserveMonitor, NewWorkingDirectoryMonitorReportsTheDirectoryOnce) {
    const QJsonObject directory_event{
        {"event_name", "working_directory_changed"},
        {"directory", QString::fromStdString(TarvoFileUtil::get_current_working_directory())}};
    const MonitorSelection selection = events_selected({"working_directory_changed"});

    TIObserveMonitor fresh({82});
    fresh.set_full_refresh();
    fresh.update();
    const auto sent = fresh.get_notifications(selection);
    ASSERT_EQ(sent.size(), 1u);
    EXPECT_EQ(sent[0].params(), QJsonArray{directory_event});

    // During ordinary tasks the directory is reported only when it changes.
    TIObserveMonitor ordinary({82});
    ordinary.update();
    EXPECT_TRUE(ordinary.get_notifications(selection).empty());

    // A new monitor of any other event gets no first message.
    TIObserveMonitor other({11});
    other.set_full_refresh();
    other.update();
    EXPECT_TRUE(other.event_records().empty());
}

} // namespace
