#pragma once
// Small helpers for reading frames in tests.

#include "json_rpc/RPCObject.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>

inline QJsonValue parse_frame(const QString& frame) {
    const QJsonDocument document = QJsonDocument::fromJson(frame.toUtf8());
    if (document.isArray())
        return document.array();
    if (document.isObject())
        return document.object();
    return QJsonValue(QJsonValue::Undefined);
}

inline RPCRequest make_request(const QString& method, const QJsonValue& id) {
    RPCRequest request(method);
    request.set_id(id);
    return request;
}

inline RPCResponse make_response(const QJsonValue& id, const QJsonValue& result) {
    RPCResponse response(make_request(QStringLiteral("m"), id));
    response.set_result(result);
    return response;
}
