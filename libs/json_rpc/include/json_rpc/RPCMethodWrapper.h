#pragma once
// One client call becomes one short-lived wrapper: process_params() takes the typed arguments
// out of params and keeps them, invoke() calls the wrapped function and turns what comes back
// into JSON. invoke() is called only after process_params() answered true.

#include "json_rpc/RPCObject.h"

#include <QJsonValue>

#include <stdexcept>
#include <string>

namespace json_rpc {

// Thrown by a wrapper that refuses a call with a reason the client should read (a bound passed,
// say): RPCRequestHandler::exec answers with `code` and the text as the error's data.
class RefusedCall : public std::runtime_error {
public:
    RefusedCall(ErrorCode code, const std::string& reason)
        : std::runtime_error(reason), error_code(code) {}
    ErrorCode code() const { return error_code; }

private:
    ErrorCode error_code;
};

} // namespace json_rpc

class RPCMethodWrapper {
public:
    virtual ~RPCMethodWrapper() = default;

    // Default for methods that read no parameters: accepts absent/null params and any object,
    // refuses everything else (arrays, strings, numbers, bools). Through exec, absent params
    // arrive as an empty object.
    virtual bool process_params(const QJsonValue& params);
    virtual QJsonValue invoke() = 0;
};
