#pragma once
// Which monitor keys each connected client has selected. Only keys live here: the objects that
// compute data are built anew for every task from the union of all selections.
//
// Bounded: a client holds at most kMaxKeysPerClient keys, since every key costs a monitor in every
// task that runs while it is selected.
//
// Threads: owned by the router and used on the main thread only; no lock.

#include "monitors/MonitorSelection.h"

#include <cstddef>
#include <map>

class ClientConnection;

class MonitorRegistry {
public:
    static constexpr std::size_t kMaxKeysPerClient = 10000;

    MonitorRegistry() = default;
    ~MonitorRegistry() = default;
    MonitorRegistry(const MonitorRegistry&) = delete;
    MonitorRegistry& operator=(const MonitorRegistry&) = delete;

    // An empty selection for the client; a known client keeps the one it has.
    void add_client(ClientConnection* client);
    // Deletes the client's selection; nothing for null or an unknown client.
    void remove_client(ClientConnection* client);

    // Null for an unknown client.
    const MonitorSelection* selection_of(ClientConnection* client) const;
    // Empty for an unknown client.
    MonitorSelection copy_selection(ClientConnection* client) const;

    // False for an unknown client; otherwise the key is in the selection afterwards. A new key
    // past kMaxKeysPerClient throws json_rpc::RefusedCall (LimitExceeded), which the request
    // handler answers as an error.
    bool add_monitor(ClientConnection* client, const MonitorKey& key);
    // False for an unknown client; true otherwise, also when the key was not there. A kind left
    // without keys is erased.
    bool remove_monitor(ClientConnection* client, const MonitorKey& key);

private:
    std::map<ClientConnection*, MonitorSelection> selections;
    std::map<ClientConnection*, std::size_t> key_counts;
};
