#pragma once
// The pubsub methods: subscribe, unsubscribe, register_notification, publish and list. Each call
// is one short-lived wrapper that NotifyRPCRequestHandler builds and fills with its context.
//
// "notification" and "data_description" must be present, but a value that is not a string is
// read as the empty string rather than refused. "data" of publish may be any JSON value.
//
// Threads: main thread only, inside the router's handling of one request.

#include "json_rpc/RPCMethodWrapper.h"

#include <QJsonValue>
#include <QString>

class ClientConnection;
class MessageRouter;
class NotificationRegistry;

class NotifyWrapper : public RPCMethodWrapper {
public:
    NotificationRegistry* registry = nullptr;
    ClientConnection* client = nullptr;
    MessageRouter* router = nullptr;

protected:
    // params must be an object holding `name`; `value` gets its text, empty for a non-string.
    static bool read_name(const QJsonValue& params, const char* name, QString& value);
};

class wrap_subscribe : public NotifyWrapper {
public:
    bool process_params(const QJsonValue& params) override;
    QJsonValue invoke() override;

private:
    QString notification;
};

class wrap_unsubscribe : public NotifyWrapper {
public:
    bool process_params(const QJsonValue& params) override;
    QJsonValue invoke() override;

private:
    QString notification;
};

class wrap_register_notification : public NotifyWrapper {
public:
    bool process_params(const QJsonValue& params) override;
    QJsonValue invoke() override;

private:
    QString notification;
    QString description;
};

// Sends a notification named `notification` to its subscribers, the publisher included. An
// array or object `data` becomes the params as it is; any other value is wrapped in an array of
// one; without `data` the notification has no params. Answers null.
class wrap_publish : public NotifyWrapper {
public:
    bool process_params(const QJsonValue& params) override;
    QJsonValue invoke() override;

private:
    QString notification;
    bool has_data = false;
    QJsonValue data;
};

// Every registered name and its description, as one object. Takes any params, an array too.
class wrap_list : public NotifyWrapper {
public:
    bool process_params(const QJsonValue& params) override;
    QJsonValue invoke() override;
};
