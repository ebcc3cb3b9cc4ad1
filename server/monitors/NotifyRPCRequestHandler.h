#pragma once
// The method table of the pubsub family. Built on the stack by the router for one request, with
// the registry, the router (for publishing) and the calling client; only the name's last section
// counts: subscribe, unsubscribe, register_notification, publish, list.
//
// Threads: main thread only.

#include "json_rpc/RPCRequestHandler.h"

class ClientConnection;
class MessageRouter;
class NotificationRegistry;

class NotifyRPCRequestHandler : public RPCRequestHandler {
public:
    NotifyRPCRequestHandler(NotificationRegistry* registry, MessageRouter* router,
                            ClientConnection* client)
        : registry(registry), router(router), client(client) {}
    ~NotifyRPCRequestHandler() override = default;

protected:
    std::unique_ptr<RPCMethodWrapper> create_method(const QString& method_name) override;

private:
    NotificationRegistry* registry;
    MessageRouter* router;
    ClientConnection* client;
};
