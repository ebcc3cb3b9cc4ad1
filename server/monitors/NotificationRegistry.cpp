#include "monitors/NotificationRegistry.h"

NotificationRegistry::~NotificationRegistry() {
    for (auto& [client, names] : subscriptions)
        delete names;
}

void NotificationRegistry::add_client(ClientConnection* client) {
    if (client == nullptr || subscriptions.count(client) != 0)
        return;
    subscriptions.emplace(client, new std::set<QString>);
}

void NotificationRegistry::remove_client(ClientConnection* client) {
    const auto it = subscriptions.find(client);
    if (client == nullptr || it == subscriptions.end())
        return;
    delete it->second;
    subscriptions.erase(it);
}

bool NotificationRegistry::register_notification(const QString& name, const QString& description) {
    return descriptions.emplace(name, description).second;
}

std::vector<QString> NotificationRegistry::notifications() const {
    std::vector<QString> names;
    names.reserve(descriptions.size());
    for (const auto& [name, description] : descriptions)
        names.push_back(name);
    return names;
}

QString NotificationRegistry::description(const QString& name) const {
    const auto it = descriptions.find(name);
    return it == descriptions.end() ? QString() : it->second;
}

bool NotificationRegistry::subscribe(ClientConnection* client, const QString& name) {
    const auto it = subscriptions.find(client);
    if (it == subscriptions.end())
        return false;
    it->second->insert(name);
    return true;
}

bool NotificationRegistry::unsubscribe(ClientConnection* client, const QString& name) {
    const auto it = subscriptions.find(client);
    if (it == subscriptions.end())
        return false;
    it->second->erase(name);
    return true;
}

std::vector<ClientConnection*> NotificationRegistry::subscribers(const QString& name) const {
    std::vector<ClientConnection*> clients;
    for (const auto& [client, names] : subscriptions)
        if (names->count(name) != 0)
            clients.push_back(client);
    return clients;
}
