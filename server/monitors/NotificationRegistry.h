#pragma once
// The publish/subscribe store: which notification names each connected client subscribed to, and
// the names registered with a description. Registration only feeds pubsub.list; delivery goes by
// subscription alone, so a client may subscribe to, and publish under, any name.
//
// Bounded, since every entry lives as long as its client or, for registered names, as long as
// the process: past a bound the operation throws json_rpc::RefusedCall (LimitExceeded), which the
// request handler answers as an error naming the bound.
//
// Threads: owned by the router and used on the main thread only; no lock.

#include <QString>

#include <cstddef>
#include <map>
#include <set>
#include <vector>

class ClientConnection;

class NotificationRegistry {
public:
    static constexpr std::size_t kMaxSubscriptionsPerClient = 1000;
    static constexpr std::size_t kMaxRegisteredNames = 1000;
    static constexpr qsizetype kMaxNameLength = 256;
    static constexpr qsizetype kMaxDescriptionLength = 4096;

    NotificationRegistry() = default;
    ~NotificationRegistry() = default;
    NotificationRegistry(const NotificationRegistry&) = delete;
    NotificationRegistry& operator=(const NotificationRegistry&) = delete;

    // An empty subscription set for a new client; nothing for null or a known client.
    void add_client(ClientConnection* client);
    // Drops the client and its subscriptions; nothing for null or an unknown client.
    void remove_client(ClientConnection* client);

    // True if the name was new. A known name keeps its first description. Names are never
    // withdrawn. Bounded by kMaxRegisteredNames, kMaxNameLength and kMaxDescriptionLength.
    bool register_notification(const QString& name, const QString& description);
    // All registered names, in name order.
    std::vector<QString> notifications() const;
    // Empty for an unknown name.
    QString description(const QString& name) const;

    // False only for an unknown client; true also when nothing changed. A client subscribes to
    // at most kMaxSubscriptionsPerClient names, and a name is at most kMaxNameLength long.
    bool subscribe(ClientConnection* client, const QString& name);
    bool unsubscribe(ClientConnection* client, const QString& name);
    // The clients subscribed to the name, ordered by pointer.
    std::vector<ClientConnection*> subscribers(const QString& name) const;

private:
    std::map<ClientConnection*, std::set<QString>> subscriptions;
    std::map<QString, QString> descriptions;
};
