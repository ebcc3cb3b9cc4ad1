#pragma once
// The publish/subscribe store: which notification names each connected client subscribed to, and
// the names registered with a description. Registration only feeds pubsub.list; delivery goes by
// subscription alone, so a client may subscribe to, and publish under, any name.
//
// Threads: owned by the router and used on the main thread only; no lock.

#include <QString>

#include <map>
#include <set>
#include <vector>

class ClientConnection;

class NotificationRegistry {
public:
    NotificationRegistry() = default;
    ~NotificationRegistry();
    NotificationRegistry(const NotificationRegistry&) = delete;
    NotificationRegistry& operator=(const NotificationRegistry&) = delete;

    // An empty subscription set for a new client; nothing for null or a known client.
    void add_client(ClientConnection* client);
    // Drops the client and its subscriptions; nothing for null or an unknown client.
    void remove_client(ClientConnection* client);

    // True if the name was new. A known name keeps its first description. Names are never
    // withdrawn.
    bool register_notification(const QString& name, const QString& description);
    // All registered names, in name order.
    std::vector<QString> notifications() const;
    // Empty for an unknown name.
    QString description(const QString& name) const;

    // False only for an unknown client; true also when nothing changed.
    bool subscribe(ClientConnection* client, const QString& name);
    bool unsubscribe(ClientConnection* client, const QString& name);
    // The clients subscribed to the name, ordered by pointer.
    std::vector<ClientConnection*> subscribers(const QString& name) const;

private:
    std::map<ClientConnection*, std::set<QString>*> subscriptions; // sets owned
    std::map<QString, QString> descriptions;
};
