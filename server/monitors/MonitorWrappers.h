#pragma once
// The datamonitor methods that read entity and event keys. An add wrapper stores the key in the
// client's selection and, if that worked, leaves it as the handler's pending key; a remove
// wrapper only takes the key out. Both answer the registry's bool. (The model and graphics
// methods are generic wrappers made in DataMonitorRPCHandler.)
//
// Threads: main thread only.

#include "json_rpc/RPCMethodWrapper.h"
#include "monitors/MonitorSelection.h"

#include <QString>

class ClientConnection;
class DataMonitorRPCHandler;
class MonitorRegistry;

class MonitorWrapper : public RPCMethodWrapper {
public:
    DataMonitorRPCHandler* handler = nullptr;
    MonitorRegistry* registry = nullptr;
    ClientConnection* client = nullptr;

protected:
    // Adds the key; a success makes it the handler's pending key.
    bool add_key(const MonitorKey& key);
    bool remove_key(const MonitorKey& key);
};

// "entity_type" (not checked: an unknown name gives a key that never yields data) and
// "entity_id" (int, not -1).
class wrap_add_entity_monitor : public MonitorWrapper {
public:
    bool process_params(const QJsonValue& params) override;
    QJsonValue invoke() override;

protected:
    MonitorKey key() const;

    QString entity_type;
    int entity_id = 0;
};

class wrap_remove_entity_monitor : public wrap_add_entity_monitor {
public:
    QJsonValue invoke() override;
};

// "event_name", one of the kernel events; a missing or unknown name is refused.
class wrap_add_tiobserve : public MonitorWrapper {
public:
    bool process_params(const QJsonValue& params) override;
    QJsonValue invoke() override;

protected:
    MonitorKey key() const;

    int event_code = 0;
};

class wrap_remove_tiobserve : public wrap_add_tiobserve {
public:
    QJsonValue invoke() override;
};
