#pragma once
// The kernel's method table: maps a method name to a new wrapper around one kernel function.
// Compares only the text behind the last dot, so "get_version", "tarvo.get_version" and
// "a.b.get_version" are the same method; case matters. No data members: build one per request
// on the worker thread, the only thread that may call the kernel.

#include "json_rpc/RPCRequestHandler.h"

#include <QString>

#include <vector>

class TarvoRPCRequestHandler : public RPCRequestHandler {
public:
    // The table's method names, in table order (485).
    static const std::vector<QString>& method_names();

    // A new wrapper, or null for an unknown name.
    std::unique_ptr<RPCMethodWrapper> create_method(const QString& method_name) override;
};
