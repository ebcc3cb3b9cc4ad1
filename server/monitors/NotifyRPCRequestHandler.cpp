#include "monitors/NotifyRPCRequestHandler.h"

#include "monitors/NotifyWrappers.h"

RPCMethodWrapper* NotifyRPCRequestHandler::create_method(const QString& method_name) {
    const QString name = last_section(method_name);
    NotifyWrapper* wrapper = nullptr;
    if (name == QLatin1String("subscribe"))
        wrapper = new wrap_subscribe;
    else if (name == QLatin1String("unsubscribe"))
        wrapper = new wrap_unsubscribe;
    else if (name == QLatin1String("register_notification"))
        wrapper = new wrap_register_notification;
    else if (name == QLatin1String("publish"))
        wrapper = new wrap_publish;
    else if (name == QLatin1String("list"))
        wrapper = new wrap_list;
    else
        return nullptr;
    wrapper->registry = registry;
    wrapper->client = client;
    wrapper->router = router;
    return wrapper;
}
