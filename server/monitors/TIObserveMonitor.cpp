#include "monitors/TIObserveMonitor.h"

#include "tarvo_util/TarvoFileUtil.h"

#include <QJsonArray>

#include <array>

namespace {

// Codes by event name, from the table of kernel events.
namespace code {
enum : int {
#define TARVO_OBSERVER_EVENT(name, number, ...) name = number,
#define TARVO_OBSERVER_UNSENT(...)
#include "tarvo/TIObserveEvents.def"
};
} // namespace code

static_assert(code::working_directory_changed == TIObserveMonitor::working_directory_changed_code);

// Names as they go out with a record, by event code. Code 1 is selected by another name: see
// event_code_from_name().
constexpr std::array<const char*, TIObserveMonitor::event_count> event_names = [] {
    std::array<const char*, TIObserveMonitor::event_count> names{};
#define TARVO_OBSERVER_EVENT(name, number, ...) names[number] = #name;
#define TARVO_OBSERVER_UNSENT(...)
#include "tarvo/TIObserveEvents.def"
    return names;
}();

// A code outside 0..event_count-1 fails to compile above; a repeated code leaves a hole here.
constexpr bool every_code_named() {
    for (const char* name : event_names)
        if (name == nullptr)
            return false;
    return true;
}
static_assert(every_code_named(), "two events of the table share a code");

constexpr int merge_code = code::merge;
const QString merge_selection_name = QStringLiteral("notify_merge");

const QString kind = QStringLiteral("TIObserve");

} // namespace

TIObserveMonitor::TIObserveMonitor(std::set<int> events) : events(std::move(events)) {}

QJsonObject* TIObserveMonitor::add_event(int code) {
    if (!events.contains(code))
        return nullptr;
    records.emplace_back(code,
                         QJsonObject{{QStringLiteral("event_name"), event_name_from_code(code)}});
    return &records.back().second;
}

void TIObserveMonitor::update() {
    // A client that has just selected the working-directory event learns the present directory
    // at once; every other event waits until it happens.
    if (incremental || !events.contains(working_directory_changed_code))
        return;
    if (QJsonObject* record = add_event(working_directory_changed_code))
        record->insert(QStringLiteral("directory"),
                       QString::fromStdString(TarvoFileUtil::get_current_working_directory()));
}

std::vector<RPCRequest> TIObserveMonitor::get_notifications(const MonitorSelection& selection) {
    const auto selected = selection.find(kind);
    if (selected == selection.end())
        return {};
    QJsonArray params;
    for (const auto& [code, fields] : records)
        if (selected->second.contains({code, 0}))
            params.append(fields);
    if (params.isEmpty())
        return {};
    return {RPCRequest(QStringLiteral("datamonitor.TIObserve"), params)};
}

int TIObserveMonitor::event_code_from_name(const QString& name) {
    if (name == merge_selection_name)
        return merge_code;
    for (int code = 0; code < event_count; ++code)
        if (code != merge_code && name == QLatin1String(event_names[code]))
            return code;
    return invalid_event_code;
}

QString TIObserveMonitor::event_name_from_code(int code) {
    if (code < 0 || code >= event_count)
        return {};
    return QString::fromLatin1(event_names[code]);
}
