#pragma once
// The method table of the datamonitor family: adding and removing monitor keys of the calling
// client. Built on the stack for one request with the registry and the client; only the name's
// last section counts. A successful add leaves its key as the pending key, from which the caller
// makes a task that brings the new monitor its first data.
//
// Threads: main thread only; it never reaches the kernel.

#include "json_rpc/RPCRequestHandler.h"
#include "monitors/MonitorSelection.h"

class ClientConnection;
class MonitorRegistry;

class DataMonitorRPCHandler : public RPCRequestHandler {
public:
    DataMonitorRPCHandler(MonitorRegistry* registry, ClientConnection* client)
        : registry(registry), client(client) {}
    ~DataMonitorRPCHandler() override = default;

    bool has_pending_key() const { return !pending_key.is_empty(); }
    // The key that the request has just added; resets it.
    MonitorKey take_pending_key();
    void set_pending_key(const MonitorKey& key) { pending_key = key; }

protected:
    std::unique_ptr<RPCMethodWrapper> create_method(const QString& method_name) override;

private:
    MonitorRegistry* registry;
    ClientConnection* client;
    MonitorKey pending_key; // empty kind: none
};
