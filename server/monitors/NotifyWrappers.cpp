#include "monitors/NotifyWrappers.h"

#include "monitors/NotificationRegistry.h"
#include "transport/MessageRouter.h"

#include <QJsonArray>
#include <QJsonObject>

#include <vector>

bool NotifyWrapper::read_name(const QJsonValue& params, const char* name, QString& value) {
    if (!params.isObject())
        return false;
    QJsonObject object = params.toObject();
    const QString key = QString::fromLatin1(name);
    if (!object.contains(key))
        return false;
    value = object[key].toString();
    return true;
}

bool wrap_subscribe::process_params(const QJsonValue& params) {
    return read_name(params, "notification", notification);
}

QJsonValue wrap_subscribe::invoke() {
    return registry->subscribe(client, notification);
}

bool wrap_unsubscribe::process_params(const QJsonValue& params) {
    return read_name(params, "notification", notification);
}

QJsonValue wrap_unsubscribe::invoke() {
    return registry->unsubscribe(client, notification);
}

bool wrap_register_notification::process_params(const QJsonValue& params) {
    return read_name(params, "notification", notification) &&
           read_name(params, "data_description", description);
}

QJsonValue wrap_register_notification::invoke() {
    return registry->register_notification(notification, description);
}

bool wrap_publish::process_params(const QJsonValue& params) {
    if (!read_name(params, "notification", notification))
        return false;
    const QJsonObject object = params.toObject();
    has_data = object.contains(QStringLiteral("data"));
    if (has_data)
        data = object.value(QStringLiteral("data"));
    return true;
}

QJsonValue wrap_publish::invoke() {
    RPCRequest message(notification);
    if (has_data) {
        if (data.isArray())
            message.set_params(data.toArray());
        else if (data.isObject())
            message.set_params(data.toObject());
        else
            message.set_params(QJsonArray{data});
    }
    router->send_notifications(std::vector<RPCRequest>{message});
    return QJsonValue(QJsonValue::Null);
}

bool wrap_list::process_params(const QJsonValue& /*params*/) {
    return true;
}

QJsonValue wrap_list::invoke() {
    QJsonObject names;
    for (const QString& name : registry->notifications())
        names.insert(name, registry->description(name));
    return names;
}
