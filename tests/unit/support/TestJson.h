#pragma once
// JSON literals written as text, for tests that look at JSON-RPC messages.

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>

// Any JSON value written as text, scalars included; Undefined when the text is no JSON.
inline QJsonValue json(const char* text) {
    QJsonParseError error{};
    const QJsonDocument document =
        QJsonDocument::fromJson(QByteArray("[") + text + QByteArray("]"), &error);
    if (error.error != QJsonParseError::NoError || document.array().size() != 1)
        return QJsonValue(QJsonValue::Undefined);
    return document.array().at(0);
}

// The text that goes on the wire, read back, so that tests look at what a client would see.
inline QJsonValue wire(const QByteArray& text) {
    return json(text.constData());
}
