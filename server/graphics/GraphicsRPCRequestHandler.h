#pragma once
// The method table of the graphics family, run on the worker thread for each graphics task with
// the graphics manager and the calling client. The render views and their methods come with the
// graphics work; until then the table is empty and every graphics name is an unknown method.
//
// Threads: worker thread only.

#include "json_rpc/RPCRequestHandler.h"

class ClientConnection;
class ServerGraphicsManager;

class GraphicsRPCRequestHandler : public RPCRequestHandler {
public:
    // `manager` may be null (no views exist yet).
    GraphicsRPCRequestHandler(ServerGraphicsManager* manager, ClientConnection* client)
        : manager(manager), client(client) {}
    ~GraphicsRPCRequestHandler() override = default;

protected:
    std::unique_ptr<RPCMethodWrapper> create_method(const QString& method_name) override;

private:
    ServerGraphicsManager* manager;
    ClientConnection* client;
};
