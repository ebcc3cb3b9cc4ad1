#pragma once
// Helpers of the monitor tests: readable failure messages for Qt's JSON values in GoogleTest
// expectations (PrintTo, found by ADL), the keys and text of a JSON object, selections, and a
// monitor's first data.

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>

#include "monitors/MonitorSelection.h"

#include <memory>
#include <ostream>
#include <set>
#include <string>

inline void PrintTo(const QJsonObject& object, std::ostream* out) {
    *out << QJsonDocument(object).toJson(QJsonDocument::Compact).toStdString();
}

inline void PrintTo(const QJsonArray& array, std::ostream* out) {
    *out << QJsonDocument(array).toJson(QJsonDocument::Compact).toStdString();
}

inline void PrintTo(const QJsonValue& value, std::ostream* out) {
    if (value.isObject())
        PrintTo(value.toObject(), out);
    else if (value.isArray())
        PrintTo(value.toArray(), out);
    else if (value.isString())
        *out << '"' << value.toString().toStdString() << '"';
    else if (value.isBool())
        *out << (value.toBool() ? "true" : "false");
    else if (value.isDouble())
        *out << value.toDouble();
    else
        *out << (value.isNull() ? "null" : "undefined");
}

inline std::set<QString> keys_of(const QJsonObject& object) {
    const QStringList keys = object.keys();
    return {keys.begin(), keys.end()};
}

inline std::string dump(const QJsonObject& object) {
    return QJsonDocument(object).toJson(QJsonDocument::Indented).toStdString();
}

// A client's selection of one entity monitor.
inline MonitorSelection watching(int code, int id) {
    MonitorSelection selection;
    selection["entity"].insert({code, id});
    return selection;
}

// A monitor as a follow-up task builds it: fresh, reporting in full.
template <typename Monitor> std::unique_ptr<Monitor> first_data(int id) {
    auto monitor = std::make_unique<Monitor>(id);
    monitor->set_full_refresh();
    monitor->update();
    return monitor;
}
