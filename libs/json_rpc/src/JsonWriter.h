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

namespace json_rpc::writer {

void append(QByteArray& out, const QJsonValue& value);
void append(QByteArray& out, const QJsonObject& object);
void append(QByteArray& out, const QJsonArray& array);

// A string as a quoted JSON string.
void append_string(QByteArray& out, QStringView text);

} // namespace json_rpc::writer
