#pragma once
// What the transport and the publish/subscribe methods call on the router. Kept abstract so that
// transport code doesn't depend on the router's Qt side; main-thread only.

#include "json_rpc/RPCObject.h"

#include <vector>

class ClientConnection;

class MessageRouter {
public:
    virtual ~MessageRouter() = default;
    virtual void add_client(ClientConnection* client) = 0;
    virtual void remove_client(ClientConnection* client) = 0;
    virtual void process_batch(ClientConnection* client, const RPCBatchRequest& batch) = 0;
    virtual void process_request(ClientConnection* client, const RPCRequest& request) = 0;
    virtual void process_response(ClientConnection* client, const RPCResponse& response) = 0;
    virtual void send_notifications(const std::vector<RPCRequest>& notifications) = 0;
};
