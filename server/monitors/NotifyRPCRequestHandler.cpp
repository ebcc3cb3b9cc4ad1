#include "monitors/NotifyRPCRequestHandler.h"

#include "monitors/NotifyWrappers.h"

std::unique_ptr<RPCMethodWrapper>
NotifyRPCRequestHandler::create_method(const QString& method_name) {
    const QString name = last_section(method_name);
    std::unique_ptr<NotifyWrapper> wrapper;
    if (name == QLatin1String("subscribe"))
        wrapper = std::make_unique<wrap_subscribe>();
    else if (name == QLatin1String("unsubscribe"))
        wrapper = std::make_unique<wrap_unsubscribe>();
    else if (name == QLatin1String("register_notification"))
        wrapper = std::make_unique<wrap_register_notification>();
    else if (name == QLatin1String("publish"))
        wrapper = std::make_unique<wrap_publish>();
    else if (name == QLatin1String("list"))
        wrapper = std::make_unique<wrap_list>();
    else
        return nullptr;
    wrapper->registry = registry;
    wrapper->client = client;
    wrapper->router = router;
    return wrapper;
}
