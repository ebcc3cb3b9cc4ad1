#include "monitors/MonitorRegistry.h"

#include "json_rpc/RPCMethodWrapper.h"

#include <string>

void MonitorRegistry::add_client(ClientConnection* client) {
    if (client == nullptr)
        return;
    selections.try_emplace(client);
    key_counts.try_emplace(client, 0);
}

void MonitorRegistry::remove_client(ClientConnection* client) {
    selections.erase(client);
    key_counts.erase(client);
}

const MonitorSelection* MonitorRegistry::selection_of(ClientConnection* client) const {
    const auto it = selections.find(client);
    return it == selections.end() ? nullptr : &it->second;
}

MonitorSelection MonitorRegistry::copy_selection(ClientConnection* client) const {
    const MonitorSelection* selection = selection_of(client);
    return selection != nullptr ? *selection : MonitorSelection();
}

bool MonitorRegistry::add_monitor(ClientConnection* client, const MonitorKey& key) {
    const auto found = selections.find(client);
    if (found == selections.end())
        return false;
    MonitorSelection* selection = &found->second;
    std::size_t& count = key_counts[client];
    auto& pairs = (*selection)[key.kind];
    if (pairs.count(key.pair) != 0)
        return true;
    if (count >= kMaxKeysPerClient) {
        if (pairs.empty())
            selection->erase(key.kind);
        throw json_rpc::RefusedCall(json_rpc::ErrorCode::LimitExceeded,
                                    "a client may watch at most " +
                                        std::to_string(kMaxKeysPerClient) +
                                        " monitor keys; remove some first");
    }
    pairs.insert(key.pair);
    ++count;
    return true;
}

bool MonitorRegistry::remove_monitor(ClientConnection* client, const MonitorKey& key) {
    const auto found = selections.find(client);
    if (found == selections.end())
        return false;
    MonitorSelection* selection = &found->second;
    const auto it = selection->find(key.kind);
    if (it != selection->end()) {
        if (it->second.erase(key.pair) != 0)
            --key_counts[client];
        if (it->second.empty())
            selection->erase(it);
    }
    return true;
}
