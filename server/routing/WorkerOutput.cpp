#include "routing/WorkerOutput.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QString>

bool WorkerOutput::add_print(const TarvoString& text, int kind) {
    if (!entries.empty() && entries.back().kind == kind)
        entries.back().text += text;
    else
        entries.push_back(PrintEntry{kind, text});
    return text.ends_with("\n");
}

void WorkerOutput::start(const char* title, const char* info, bool has_cancel) {
    started_sent = false;
    active = true;
    percent = 0;
    this->title = TarvoString(title);
    this->info = TarvoString(info);
    this->has_cancel = has_cancel;
}

void WorkerOutput::end() {
    ended_sent = false;
    active = false;
    // Nobody saw this progress begin, so nobody needs to hear that it ended.
    if (!started_sent) {
        started_sent = true;
        ended_sent = true;
    }
}

std::vector<RPCRequest> WorkerOutput::take_notifications() {
    std::vector<RPCRequest> notifications;
    for (const PrintEntry& entry : entries) {
        const QString method = entry.kind == PrintEntry::Error ? QStringLiteral("print_error")
                                                               : QStringLiteral("print_message");
        notifications.emplace_back(method, QJsonArray{QString::fromUtf8(entry.text.c_str())});
    }
    entries.clear();

    if (active) {
        if (!started_sent) {
            const QJsonObject params{{QStringLiteral("title"), QString::fromUtf8(title.c_str())},
                                     {QStringLiteral("info"), QString::fromUtf8(info.c_str())},
                                     {QStringLiteral("has_cancel"), has_cancel}};
            notifications.emplace_back(QStringLiteral("progress_started"), params);
            started_sent = true;
        }
        // Every serving repeats the percentage, changed or not.
        notifications.emplace_back(QStringLiteral("progress_percent"), QJsonArray{percent});
    } else if (!ended_sent) {
        notifications.emplace_back(QStringLiteral("progress_ended"));
        ended_sent = true;
    }
    return notifications;
}
