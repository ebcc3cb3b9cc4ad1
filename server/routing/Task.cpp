#include "routing/Task.h"

#include "monitors/DataMonitor.h"

#include <utility>

Task::Task(ClientConnection* client, const RPCRequest& request)
    : client(client), request(request) {}

Task::Task(ClientConnection* client, const MonitorKey& key) : client(client) {
    selection[key.kind].insert(key.pair);
}

Task::Task(ClientConnection* client, std::function<void()> action)
    : client(client), action(std::move(action)) {}

Task::~Task() = default;
