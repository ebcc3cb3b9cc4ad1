#include "json_rpc/RPCObject.h"

#include "JsonWriter.h"
#include "WireFormat.h"

#include <algorithm>

using namespace json_rpc::wire;

namespace {

// Every message of one kind has the same members. Building a fresh object inserts each member with
// its own allocations; copying a finished one and replacing its values costs one copy of a small
// container. The copies share the prototype until they change, so any thread may take one.
const QJsonObject& answer_prototype() {
    static const QJsonObject prototype{{kIdKey, QJsonValue::Null}, {kVersionKey, kVersion}};
    return prototype;
}

const QJsonObject& request_prototype() {
    static const QJsonObject prototype{{kVersionKey, kVersion}, {kMethodKey, QString()}};
    return prototype;
}

const QJsonObject& result_prototype() {
    static const QJsonObject prototype{
        {kIdKey, QJsonValue::Null}, {kVersionKey, kVersion}, {kResultKey, QJsonValue::Null}};
    return prototype;
}

void set_id(QJsonObject& object, const QJsonValue& id) {
    // The prototype's id is already null: an absent or null id needs no change (and no copy).
    if (!id.isUndefined() && !id.isNull())
        object.insert(kIdKey, id);
}

} // namespace

namespace json_rpc {

const char* error_message(ErrorCode code) {
    switch (code) {
    case ErrorCode::LimitExceeded:
        return "Limit exceeded";
    case ErrorCode::ParseError:
        return "Parse error";
    case ErrorCode::InvalidRequest:
        return "Invalid Request";
    case ErrorCode::MethodNotFound:
        return "Method not found";
    case ErrorCode::InvalidParams:
        return "Invalid params";
    case ErrorCode::InternalError:
        return "Internal error";
    }
    return "Server error";
}

} // namespace json_rpc

QByteArray RPCObject::to_json_string() const {
    std::string text;
    text.reserve(128);
    json_rpc::writer::append(text, object);
    return json_rpc::writer::to_bytes(text);
}

// --- RPCRequest -------------------------------------------------------------------------------

RPCRequest::RPCRequest(const QString& method) : RPCObject(request_prototype()) {
    object.insert(kMethodKey, method);
}

RPCRequest::RPCRequest(const QString& method, const QJsonValue& params) : RPCRequest(method) {
    // Null and Undefined both mean "no parameters"; the member is then left out, as the wire
    // format wants a structured value or nothing.
    if (!params.isNull() && !params.isUndefined())
        object.insert(kParamsKey, params);
}

RPCRequest RPCRequest::from_json(const QJsonObject& object) {
    RPCRequest request;
    request.object = object;
    return request;
}

QString RPCRequest::method_name() const {
    return object.value(kMethodKey).toString();
}

QJsonValue RPCRequest::params() const {
    const QJsonValue params = object.value(kParamsKey);
    return params.isUndefined() ? QJsonValue(QJsonValue::Null) : params;
}

QJsonValue RPCRequest::id() const {
    return object.value(kIdKey);
}

bool RPCRequest::is_notification() const {
    return !object.contains(kIdKey);
}

void RPCRequest::set_params(const QJsonObject& params) {
    object.insert(kParamsKey, params);
}

void RPCRequest::set_params(const QJsonArray& params) {
    object.insert(kParamsKey, params);
}

void RPCRequest::set_id(const QJsonValue& id) {
    // QJsonObject drops a key whose value is Undefined, which turns the request back into a
    // notification: that is the intended meaning of an Undefined id.
    object.insert(kIdKey, id);
}

// --- RPCResponse ------------------------------------------------------------------------------

RPCResponse::RPCResponse(const RPCRequest& request) : RPCObject(answer_prototype()) {
    set_id(object, request.id());
}

RPCResponse::RPCResponse(const RPCRequest& request, const QJsonValue& result)
    : RPCObject(result_prototype()) {
    set_id(object, request.id());
    if (!result.isUndefined() && !result.isNull())
        object.insert(kResultKey, result);
}

RPCResponse RPCResponse::from_json(const QJsonObject& object) {
    RPCResponse response;
    response.object = object;
    return response;
}

RPCResponse RPCResponse::error(const QJsonValue& id, json_rpc::ErrorCode code,
                               const QJsonValue& data) {
    QJsonObject error;
    error.insert(kCodeKey, static_cast<int>(code));
    error.insert(kMessageKey, QString::fromLatin1(json_rpc::error_message(code)));
    if (!data.isUndefined())
        error.insert(kDataKey, data);

    RPCResponse response;
    response.object = answer_prototype();
    set_id(response.object, id);
    response.object.insert(kErrorKey, error);
    return response;
}

void RPCResponse::set_result(const QJsonValue& result) {
    // A response holds a result or an error, never both. Undefined would delete the key, so it
    // is sent as null like any other "no value".
    object.remove(kErrorKey);
    object.insert(kResultKey, result.isUndefined() ? QJsonValue(QJsonValue::Null) : result);
}

QJsonValue RPCResponse::id() const {
    return object.value(kIdKey);
}

QJsonValue RPCResponse::result() const {
    return object.value(kResultKey);
}

bool RPCResponse::is_error() const {
    return object.contains(kErrorKey);
}

int RPCResponse::error_code() const {
    if (!is_error())
        return 0;
    return object.value(kErrorKey).toObject().value(kCodeKey).toInt();
}

// --- Batches ----------------------------------------------------------------------------------

size_t RPCBatchRequest::notification_count() const {
    return static_cast<size_t>(std::count_if(
        items.begin(), items.end(), [](const RPCRequest& r) { return r.is_notification(); }));
}

namespace {

// One JSON array of the messages' objects, written without gathering them in a QJsonArray.
template <typename Message> QByteArray array_text(const std::vector<Message>& messages) {
    std::string text;
    text.reserve(128 * messages.size() + 2);
    text.push_back('[');
    for (size_t i = 0; i < messages.size(); ++i) {
        if (i != 0)
            text.push_back(',');
        json_rpc::writer::append(text, messages[i].json());
    }
    text.push_back(']');
    return json_rpc::writer::to_bytes(text);
}

} // namespace

QByteArray RPCBatchRequest::to_json_string() const {
    return array_text(items);
}

QByteArray RPCBatchResponse::to_json_string() const {
    return array_text(items);
}
