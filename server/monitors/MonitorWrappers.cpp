#include "monitors/MonitorWrappers.h"

#include "json_rpc/Convert.h"
#include "monitors/DataMonitorRPCHandler.h"
#include "monitors/EntityMonitor.h"
#include "monitors/MonitorRegistry.h"
#include "monitors/TIObserveMonitor.h"

#include <QJsonObject>

bool MonitorWrapper::add_key(const MonitorKey& key) {
    const bool added = registry->add_monitor(client, key);
    if (added)
        handler->set_pending_key(key);
    return added;
}

bool MonitorWrapper::remove_key(const MonitorKey& key) {
    return registry->remove_monitor(client, key);
}

bool wrap_add_entity_monitor::process_params(const QJsonValue& params) {
    if (!params.isObject())
        return false;
    const QJsonObject object = params.toObject();
    const QString type_key = QStringLiteral("entity_type");
    const QString id_key = QStringLiteral("entity_id");
    if (!object.contains(type_key) || !object.contains(id_key))
        return false;
    entity_type = object.value(type_key).toString();
    if (!json_rpc::from_json(object.value(id_key), entity_id))
        return false;
    return entity_id != -1;
}

MonitorKey wrap_add_entity_monitor::key() const {
    return MonitorKey{QStringLiteral("entity"), {entity_type_code(entity_type), entity_id}};
}

QJsonValue wrap_add_entity_monitor::invoke() {
    return add_key(key());
}

QJsonValue wrap_remove_entity_monitor::invoke() {
    return remove_key(key());
}

bool wrap_add_tiobserve::process_params(const QJsonValue& params) {
    if (!params.isObject())
        return false;
    event_code = TIObserveMonitor::event_code_from_name(
        params.toObject().value(QStringLiteral("event_name")).toString());
    return event_code != TIObserveMonitor::invalid_event_code;
}

MonitorKey wrap_add_tiobserve::key() const {
    return MonitorKey{QStringLiteral("TIObserve"), {event_code, 0}};
}

QJsonValue wrap_add_tiobserve::invoke() {
    return add_key(key());
}

QJsonValue wrap_remove_tiobserve::invoke() {
    return remove_key(key());
}
