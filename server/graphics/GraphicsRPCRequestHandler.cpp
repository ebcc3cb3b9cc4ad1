#include "graphics/GraphicsRPCRequestHandler.h"

#include "graphics/GraphicsMethod.h"
#include "graphics/ImageFormat.h"
#include "graphics/ServerGraphicsManager.h"
#include "graphics/ServerGraphicsView.h"

#include <QJsonArray>

#include <cmath>
#include <limits>
#include <utility>

namespace graphics_params {

bool to_int(const QJsonValue& value, int32_t& out) {
    if (!value.isDouble())
        return false;
    const double d = value.toDouble();
    if (std::trunc(d) != d)
        return false;
    // Far outside int32 there is nothing sensible to cut to: the nearest end of the range.
    constexpr double lo = std::numeric_limits<int32_t>::min();
    constexpr double hi = std::numeric_limits<int32_t>::max();
    out = static_cast<int32_t>(d < lo ? lo : (d > hi ? hi : d));
    return true;
}

std::optional<int32_t> int_member(const QJsonObject& params, const char* key) {
    int32_t value = 0;
    if (!to_int(params.value(QLatin1String(key)), value))
        return std::nullopt;
    return value;
}

void read_bool(const QJsonObject& params, const char* key, bool& out) {
    const QJsonValue value = params.value(QLatin1String(key));
    if (value.isBool())
        out = value.toBool();
}

void read_string(const QJsonObject& params, const char* key, std::string& out) {
    const QJsonValue value = params.value(QLatin1String(key));
    if (value.isString())
        out = value.toString().toStdString();
}

bool has_all(const QJsonObject& params, std::initializer_list<const char*> keys) {
    for (const char* key : keys) {
        if (!params.contains(QLatin1String(key)))
            return false;
    }
    return true;
}

std::optional<int32_t> view_id_of(const QJsonObject& params,
                                  std::initializer_list<const char*> keys) {
    if (!has_all(params, keys))
        return std::nullopt;
    return int_member(params, "view_id");
}

ServerGraphicsView* find_view(ServerGraphicsManager* manager, int32_t view_id) {
    return manager == nullptr ? nullptr : manager->find(view_id);
}

} // namespace graphics_params

using namespace graphics_params;

bool GraphicsRPCMethodWrapper::process_params(const QJsonValue& params) {
    if (!params.isObject())
        return false;
    std::optional<GraphicsCall> made = parser(params.toObject(), manager, client);
    if (!made)
        return false;
    call = std::move(*made);
    return true;
}

QJsonValue GraphicsRPCMethodWrapper::invoke() {
    return call();
}

namespace {

const QJsonValue kNull(QJsonValue::Null);

std::optional<GraphicsCall> parse_create_view(const QJsonObject& params,
                                              ServerGraphicsManager* manager,
                                              ClientConnection* client) {
    // A width or height that isn't an integer counts as absent; only -1 means absent, so 0 x 0
    // still resizes and renders.
    const int32_t width = int_member(params, "width").value_or(-1);
    const int32_t height = int_member(params, "height").value_or(-1);
    int format = image_format::Rgb;
    if (params.contains(QLatin1String("format"))) {
        const QJsonValue name = params.value(QLatin1String("format"));
        if (!name.isString())
            return std::nullopt;
        format = image_format::code_of(name.toString());
    }
    return [=]() -> QJsonValue {
        if (manager == nullptr)
            return kNull;
        ServerGraphicsView* view = manager->create_view(client, format);
        if (view == nullptr)
            return kNull;
        if (width != -1 && height != -1) {
            // The first image the client gets.
            manager->resize(view, width, height);
            view->render();
        }
        return view->view_id();
    };
}

std::optional<GraphicsCall> parse_destroy_view(const QJsonObject& params,
                                               ServerGraphicsManager* manager, ClientConnection*) {
    const std::optional<int32_t> id = int_member(params, "view_id");
    if (!id)
        return std::nullopt;
    // Whoever asks: there is no check that the caller owns the view.
    return [=]() -> QJsonValue { return manager != nullptr && manager->destroy_view(*id); };
}

std::optional<GraphicsCall> parse_resize(const QJsonObject& params, ServerGraphicsManager* manager,
                                         ClientConnection*) {
    const std::optional<int32_t> id = view_id_of(params, {"view_id", "width", "height"});
    if (!id)
        return std::nullopt;
    // A width or height that isn't an integer isn't refused; the factory takes what is below
    // 1 as 1.
    const int32_t width = int_member(params, "width").value_or(0);
    const int32_t height = int_member(params, "height").value_or(0);
    return [=]() -> QJsonValue {
        if (ServerGraphicsView* view = find_view(manager, *id)) {
            manager->resize(view, width, height);
            view->render();
        }
        return kNull;
    };
}

std::optional<GraphicsCall> parse_render(const QJsonObject& params, ServerGraphicsManager* manager,
                                         ClientConnection*) {
    const std::optional<int32_t> id = int_member(params, "view_id");
    if (!id)
        return std::nullopt;
    bool timing = false;
    bool statistics = false;
    read_bool(params, "timing", timing);
    // Asked by the router on the last render of graphics.test_render: the statistics are
    // printed with the image of this render, whenever the main thread delivers it.
    read_bool(params, "print_statistics", statistics);
    return [=]() -> QJsonValue {
        if (ServerGraphicsView* view = find_view(manager, *id)) {
            if (timing)
                view->start_timing();
            if (statistics)
                view->request_statistics();
            view->render();
        }
        return kNull;
    };
}

GraphicsParser view_method(const QString& name) {
    if (name == QLatin1String("create_view"))
        return parse_create_view;
    if (name == QLatin1String("destroy_view"))
        return parse_destroy_view;
    if (name == QLatin1String("graphics_resize"))
        return parse_resize;
    if (name == QLatin1String("render"))
        return parse_render;
    return {};
}

} // namespace

std::unique_ptr<RPCMethodWrapper>
GraphicsRPCRequestHandler::create_method(const QString& method_name) {
    // Whatever stands before the last dot is never looked at.
    const QString name = method_name.section(QLatin1Char('.'), -1, -1);
    GraphicsParser parser = view_method(name);
    if (!parser)
        parser = input_method(name);
    if (!parser)
        return nullptr;
    return std::make_unique<GraphicsRPCMethodWrapper>(manager, client, std::move(parser));
}
