#pragma once
// Compact JSON text of Qt JSON values, written straight into one growing buffer.
//
// Every frame the server sends goes through here, so it is on the path of every round trip. It
// writes what QJsonDocument::toJson(Compact) writes, byte for byte (members in the object's own
// order, UTF-8, the same escapes and number forms), without building the intermediate strings
// that QJsonDocument makes for every key and value.
//
// Stateless functions; safe on any thread for values that thread owns.

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>

#include <string>

namespace json_rpc::writer {

// The text is gathered in a std::string, whose appends are inlined, and copied out once.
void append(std::string& out, const QJsonValue& value);
void append(std::string& out, const QJsonObject& object);
void append(std::string& out, const QJsonArray& array);

// A string as a quoted JSON string.
void append_string(std::string& out, QStringView text);

inline QByteArray to_bytes(const std::string& text) {
    return QByteArray(text.data(), static_cast<qsizetype>(text.size()));
}

} // namespace json_rpc::writer
