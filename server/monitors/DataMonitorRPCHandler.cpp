#include "monitors/DataMonitorRPCHandler.h"

#include "json_rpc/GenericRPCMethodWrapper.h"
#include "monitors/GraphicsMonitor.h"
#include "monitors/MonitorRegistry.h"
#include "monitors/MonitorWrappers.h"

#include <QJsonValue>

// The "type" word of a graphics key; anything but the four words, or a non-string, is refused.
// Found by argument-dependent lookup from the generic wrapper.
bool from_json(const QJsonValue& value, GraphicsMonitor::Notification& out) {
    if (!value.isString())
        return false;
    const QString word = value.toString();
    if (word == QLatin1String("selection"))
        out = GraphicsMonitor::selection;
    else if (word == QLatin1String("picked"))
        out = GraphicsMonitor::picked;
    else if (word == QLatin1String("mode_changed"))
        out = GraphicsMonitor::mode_changed;
    else if (word == QLatin1String("pick_type_changed"))
        out = GraphicsMonitor::pick_type_changed;
    else
        return false;
    return true;
}

namespace {

MonitorKey model_key() {
    return MonitorKey{QStringLiteral("model"), {0, 0}};
}

MonitorKey graphics_key(GraphicsMonitor::Notification type) {
    return MonitorKey{QStringLiteral("graphics"), {static_cast<int>(type), 0}};
}

} // namespace

MonitorKey DataMonitorRPCHandler::take_pending_key() {
    MonitorKey key = pending_key;
    pending_key = MonitorKey();
    return key;
}

std::unique_ptr<RPCMethodWrapper> DataMonitorRPCHandler::create_method(const QString& method_name) {
    const QString name = last_section(method_name);
    using ModelWrapper = GenericRPCMethodWrapper<bool()>;
    using GraphicsWrapper = GenericRPCMethodWrapper<bool(GraphicsMonitor::Notification)>;

    std::unique_ptr<MonitorWrapper> wrapper;
    if (name == QLatin1String("add_entity_monitor")) {
        wrapper = std::make_unique<wrap_add_entity_monitor>();
    } else if (name == QLatin1String("remove_entity_monitor")) {
        wrapper = std::make_unique<wrap_remove_entity_monitor>();
    } else if (name == QLatin1String("add_TIObserve_monitor")) {
        wrapper = std::make_unique<wrap_add_tiobserve>();
    } else if (name == QLatin1String("remove_TIObserve_monitor")) {
        wrapper = std::make_unique<wrap_remove_tiobserve>();
    } else if (name == QLatin1String("add_model_monitor")) {
        return std::make_unique<ModelWrapper>(
            [this] {
                const bool added = registry->add_monitor(client, model_key());
                if (added)
                    pending_key = model_key();
                return added;
            },
            std::vector<json_rpc::ParamSpec>{});
    } else if (name == QLatin1String("remove_model_monitor")) {
        return std::make_unique<ModelWrapper>(
            [this] { return registry->remove_monitor(client, model_key()); },
            std::vector<json_rpc::ParamSpec>{});
    } else if (name == QLatin1String("add_graphics_monitor")) {
        return std::make_unique<GraphicsWrapper>(
            [this](GraphicsMonitor::Notification type) {
                const bool added = registry->add_monitor(client, graphics_key(type));
                if (added)
                    pending_key = graphics_key(type);
                return added;
            },
            std::vector<json_rpc::ParamSpec>{json_rpc::param("type")});
    } else if (name == QLatin1String("remove_graphics_monitor")) {
        return std::make_unique<GraphicsWrapper>(
            [this](GraphicsMonitor::Notification type) {
                return registry->remove_monitor(client, graphics_key(type));
            },
            std::vector<json_rpc::ParamSpec>{json_rpc::param("type")});
    } else {
        return nullptr;
    }
    wrapper->handler = this;
    wrapper->registry = registry;
    wrapper->client = client;
    return wrapper;
}
