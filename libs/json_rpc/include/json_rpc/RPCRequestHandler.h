#pragma once
// Base of every method table. A handler is built on the stack for one exec() and thrown away;
// it is used by the one thread that calls exec().

#include "json_rpc/RPCMethodWrapper.h"
#include "json_rpc/RPCObject.h"

#include <memory>

class RPCRequestHandler {
public:
    virtual ~RPCRequestHandler() = default;

    // create_method -> (null: -32601) -> process_params -> (false: -32602) -> invoke -> result.
    // A request without params reaches process_params as an empty object.
    // A notification runs the same way and gives the empty response, errors included.
    // json_rpc::RefusedCall from a wrapper becomes its code with its text as data; any other
    // exception that escapes a wrapper becomes -32603 Internal error; none unwinds further.
    RPCResponse exec(const RPCRequest& request);

    // The text behind the last dot, or the whole name when it has none.
    static QString last_section(const QString& method_name);

protected:
    // A new wrapper, or null for an unknown name.
    virtual std::unique_ptr<RPCMethodWrapper> create_method(const QString& method_name) = 0;
};
