#pragma once
// Readable failure messages for Qt's JSON values in GoogleTest expectations (found by ADL).

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>

#include <ostream>

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
