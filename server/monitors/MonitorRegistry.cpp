#include "monitors/MonitorRegistry.h"

MonitorRegistry::~MonitorRegistry() {
    for (auto& [client, selection] : selections)
        delete selection;
}

void MonitorRegistry::add_client(ClientConnection* client) {
    if (client == nullptr || selections.count(client) != 0)
        return;
    selections.emplace(client, new MonitorSelection);
}

void MonitorRegistry::remove_client(ClientConnection* client) {
    const auto it = selections.find(client);
    if (client == nullptr || it == selections.end())
        return;
    delete it->second;
    selections.erase(it);
}

MonitorSelection* MonitorRegistry::selection_of(ClientConnection* client) const {
    const auto it = selections.find(client);
    return it == selections.end() ? nullptr : it->second;
}

MonitorSelection MonitorRegistry::copy_selection(ClientConnection* client) const {
    const MonitorSelection* selection = selection_of(client);
    return selection != nullptr ? *selection : MonitorSelection();
}

bool MonitorRegistry::add_monitor(ClientConnection* client, const MonitorKey& key) {
    MonitorSelection* selection = selection_of(client);
    if (selection == nullptr)
        return false;
    (*selection)[key.kind].insert(key.pair);
    return true;
}

bool MonitorRegistry::remove_monitor(ClientConnection* client, const MonitorKey& key) {
    MonitorSelection* selection = selection_of(client);
    if (selection == nullptr)
        return false;
    const auto it = selection->find(key.kind);
    if (it != selection->end()) {
        it->second.erase(key.pair);
        if (it->second.empty())
            selection->erase(it);
    }
    return true;
}
