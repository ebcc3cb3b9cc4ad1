#pragma once
// The JSON-RPC 2.0 message objects. Every member name of the wire format lives in this library;
// the server reads and writes messages only through these operations.
//
// Values are plain data: copy them freely between threads, never share one between threads.

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>

#include <vector>

namespace json_rpc {

// Error codes of JSON-RPC 2.0, with the texts of that standard, and one of the range that it
// leaves to servers: LimitExceeded, for a request refused because it would pass a bound that keeps
// the server's memory or main thread in check (its data names the bound).
enum class ErrorCode : int {
    LimitExceeded = -32000,
    ParseError = -32700,
    InvalidRequest = -32600,
    MethodNotFound = -32601,
    InvalidParams = -32602,
    InternalError = -32603,
};
const char* error_message(ErrorCode code);

} // namespace json_rpc

// One message: the whole message as one JSON object. A default-constructed object is empty.
class RPCObject {
public:
    RPCObject() = default;
    explicit RPCObject(const QJsonObject& object) : object(object) {}
    virtual ~RPCObject() = default;

    // True for an object with no members; an empty response is never sent.
    bool is_empty() const { return object.isEmpty(); }
    // UTF-8 text of the message, compact, ready for a text frame.
    QByteArray to_json_string() const;
    const QJsonObject& json() const { return object; }

protected:
    QJsonObject object;
};

// A request, or a notification when it carries no id.
class RPCRequest : public RPCObject {
public:
    RPCRequest() = default;
    explicit RPCRequest(const QString& method);
    RPCRequest(const QString& method, const QJsonValue& params);
    // Wraps an object that the parser has already validated as a request.
    static RPCRequest from_json(const QJsonObject& object);

    QString method_name() const;
    // Null, never Undefined, when the request has no parameters.
    QJsonValue params() const;
    // Undefined for a notification.
    QJsonValue id() const;
    bool is_notification() const;

    void set_params(const QJsonObject& params);
    void set_params(const QJsonArray& params);
    // Clients and tests build requests with ids; the server never does.
    void set_id(const QJsonValue& id);
};

// A response. The default-constructed response is empty and means "nothing to send".
class RPCResponse : public RPCObject {
public:
    RPCResponse() = default;
    // A response carrying the request's id (no result yet).
    explicit RPCResponse(const RPCRequest& request);
    // The same with its result; equal to set_result(result) on the above, and cheaper.
    RPCResponse(const RPCRequest& request, const QJsonValue& result);
    static RPCResponse from_json(const QJsonObject& object);
    // The library's error response; id Null when the request's id could not be read.
    static RPCResponse error(const QJsonValue& id, json_rpc::ErrorCode code,
                             const QJsonValue& data = QJsonValue(QJsonValue::Undefined));

    // A Null result still gives a non-empty response that is sent.
    void set_result(const QJsonValue& result);
    QJsonValue id() const;
    QJsonValue result() const;
    bool is_error() const;
    // 0 when the response is not an error.
    int error_code() const;
};

class RPCBatchRequest {
public:
    RPCBatchRequest() = default;
    explicit RPCBatchRequest(const std::vector<RPCRequest>& requests) : items(requests) {}

    const std::vector<RPCRequest>& requests() const { return items; }
    // Counts every element, notifications included.
    size_t request_count() const { return items.size(); }
    size_t notification_count() const;
    QByteArray to_json_string() const;

private:
    std::vector<RPCRequest> items;
};

class RPCBatchResponse {
public:
    RPCBatchResponse() = default;
    RPCBatchResponse(const RPCBatchResponse&) = default;
    RPCBatchResponse& operator=(const RPCBatchResponse&) = default;
    virtual ~RPCBatchResponse() = default;

    void add_response(const RPCResponse& response) { items.push_back(response); }
    const std::vector<RPCResponse>& responses() const { return items; }
    size_t response_count() const { return items.size(); }
    QByteArray to_json_string() const;

private:
    std::vector<RPCResponse> items;
};
