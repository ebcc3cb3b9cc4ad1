#pragma once
// A MessageRouter that records what the transport hands it, attaching and detaching clients the
// way the real router does. Main thread only.

#include "transport/ClientConnection.h"
#include "transport/MessageRouter.h"

#include <functional>
#include <vector>

class FakeRouter : public MessageRouter {
public:
    struct Request {
        ClientConnection* client;
        RPCRequest request;
    };
    struct Batch {
        ClientConnection* client;
        RPCBatchRequest batch;
    };

    void add_client(ClientConnection* client) override {
        client->set_router(this);
        added.push_back(client);
    }
    void remove_client(ClientConnection* client) override {
        client->set_router(nullptr);
        removed.push_back(client);
        if (on_remove)
            on_remove(client);
    }
    void process_batch(ClientConnection* client, const RPCBatchRequest& batch) override {
        batches.push_back({client, batch});
    }
    void process_request(ClientConnection* client, const RPCRequest& request) override {
        requests.push_back({client, request});
    }
    void process_response(ClientConnection* client, const RPCResponse& response) override {
        (void)client;
        responses.push_back(response);
    }
    void send_notifications(const std::vector<RPCRequest>& notifications) override {
        (void)notifications;
    }

    std::vector<ClientConnection*> added;
    std::vector<ClientConnection*> removed;
    std::vector<Request> requests;
    std::vector<Batch> batches;
    std::vector<RPCResponse> responses;
    // Runs inside remove_client, after the client has been detached.
    std::function<void(ClientConnection*)> on_remove;
};
