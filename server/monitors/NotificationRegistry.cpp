#include "monitors/NotificationRegistry.h"

#include "json_rpc/RPCMethodWrapper.h"

#include <string>

namespace {

[[noreturn]] void refuse(const std::string& reason) {
    throw json_rpc::RefusedCall(json_rpc::ErrorCode::LimitExceeded, reason);
}

void check_name(const QString& name) {
    if (name.size() > NotificationRegistry::kMaxNameLength)
        refuse("a notification name is at most " +
               std::to_string(NotificationRegistry::kMaxNameLength) + " characters long");
}

} // namespace

void NotificationRegistry::add_client(ClientConnection* client) {
    if (client != nullptr)
        subscriptions.try_emplace(client);
}

void NotificationRegistry::remove_client(ClientConnection* client) {
    subscriptions.erase(client);
}

bool NotificationRegistry::register_notification(const QString& name, const QString& description) {
    if (descriptions.count(name) != 0)
        return false;
    check_name(name);
    if (description.size() > kMaxDescriptionLength)
        refuse("a notification description is at most " + std::to_string(kMaxDescriptionLength) +
               " characters long");
    if (descriptions.size() >= kMaxRegisteredNames)
        refuse("at most " + std::to_string(kMaxRegisteredNames) +
               " notification names can be registered");
    descriptions.emplace(name, description);
    return true;
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
    if (it->second.count(name) != 0)
        return true;
    check_name(name);
    if (it->second.size() >= kMaxSubscriptionsPerClient)
        refuse("a client may subscribe to at most " + std::to_string(kMaxSubscriptionsPerClient) +
               " notifications; unsubscribe from some first");
    it->second.insert(name);
    return true;
}

bool NotificationRegistry::unsubscribe(ClientConnection* client, const QString& name) {
    const auto it = subscriptions.find(client);
    if (it == subscriptions.end())
        return false;
    it->second.erase(name);
    return true;
}

std::vector<ClientConnection*> NotificationRegistry::subscribers(const QString& name) const {
    std::vector<ClientConnection*> clients;
    for (const auto& [client, names] : subscriptions)
        if (names.count(name) != 0)
            clients.push_back(client);
    return clients;
}
