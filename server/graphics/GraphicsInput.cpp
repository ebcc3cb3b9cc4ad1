// The input methods of the graphics family: keys, mouse, the mouse mapping, pick filters and
// occluded picking. Each event ends in one call of the view's library; whether it needs a new
// picture is the library's business, and the picture comes through the view's render callback.

#include "graphics/GraphicsMethod.h"
#include "graphics/KeySymbols.h"
#include "graphics/RenderQueue.h"
#include "graphics/ServerGraphicsManager.h"
#include "graphics/ServerGraphicsView.h"

#include <pixlane/AppUtil.h>
#include <pixlane/GInteractorStyleBase.h>
#include <pixlane/GPickerBase.h>
#include <pixlane/GTarvoModelSet.h>
#include <pixlane/GView.h>
#include <pixlane/PXUtil.h>

#include <array>
#include <utility>

using namespace graphics_params;

namespace {

const QJsonValue kNull(QJsonValue::Null);

// The kernel utility event that tells listeners that the pick types changed.
constexpr int kPickTypesChanged = 18;

// The modifier value of "shift_pressed" and "control_pressed": a member that is absent or not
// a boolean counts as not pressed.
int read_modifiers(const QJsonObject& params) {
    bool shift = false;
    bool control = false;
    read_bool(params, "shift_pressed", shift);
    read_bool(params, "control_pressed", control);
    return (shift ? PXUtil::kShift : 0) + (control ? PXUtil::kControl : 0);
}

std::string lower(const std::string& text) {
    return QString::fromStdString(text).toLower().toStdString();
}

// 0 for a name that is none of the three.
int button_of(const std::string& name) {
    const std::string b = lower(name);
    if (b == "right")
        return PXUtil::Right;
    if (b == "left")
        return PXUtil::Left;
    if (b == "middle")
        return PXUtil::Middle;
    return 0;
}

constexpr std::array<const char*, PXUtil::kMouseFuncCount> kOperations{
    "rotate",          "rotate_xy",      "rotate_z",
    "rotate_camera",   "zoom",           "zoom_telephoto",
    "zoom_navigate",   "zoom_box",       "pan",
    "center_on_click", "zoom_in_click",  "zoom_out_click",
    "select",          "add_select",     "echo_selection",
    "select_box",      "select_circle",  "select_and_echo",
    "do_nothing",      "select_polygon", "rotate_about_mouse_cursor"};

// An unknown name is "rotate": a mapping never fails.
PXUtil::MouseFunc operation_of(const std::string& name) {
    const std::string op = lower(name);
    for (size_t i = 0; i < kOperations.size(); ++i) {
        if (op == kOperations[i])
            return static_cast<PXUtil::MouseFunc>(i);
    }
    return PXUtil::Rotate;
}

// A call on the view of "view_id", or nothing for an unknown view.
template <class Act>
std::optional<GraphicsCall> on_view(ServerGraphicsManager* manager, int32_t id, Act act) {
    return [=]() -> QJsonValue {
        if (ServerGraphicsView* view = find_view(manager, id))
            act(*view->gview());
        return kNull;
    };
}

template <bool Press>
std::optional<GraphicsCall> parse_key(const QJsonObject& params, ServerGraphicsManager* manager,
                                      ClientConnection*) {
    const std::optional<int32_t> id = view_id_of(
        params, {"view_id", "key", "key_text", "shift_pressed", "control_pressed", "count"});
    if (!id)
        return std::nullopt;
    // A member of the wrong type keeps what it had; the event goes ahead.
    int32_t key = 0;
    int32_t count = 0;
    to_int(params.value(QLatin1String("key")), key);
    to_int(params.value(QLatin1String("count")), count);
    std::string text;
    read_string(params, "key_text", text);
    const KeySymbol symbol = key_symbol(QString::fromStdString(text), key);
    const int mods = read_modifiers(params);
    return on_view(manager, *id, [=](GView& view) {
        if (Press)
            view.invoke_keypress(mods, symbol.key_code, count, symbol.key_sym);
        else
            view.invoke_keyrelease(mods, symbol.key_code, count, symbol.key_sym);
    });
}

template <bool Press>
std::optional<GraphicsCall> parse_button(const QJsonObject& params, ServerGraphicsManager* manager,
                                         ClientConnection*) {
    const std::optional<int32_t> id = view_id_of(
        params, {"view_id", "button", "mouse_x", "mouse_y", "control_pressed", "shift_pressed"});
    if (!id)
        return std::nullopt;
    std::string button;
    int32_t x = 0;
    int32_t y = 0;
    read_string(params, "button", button);
    to_int(params.value(QLatin1String("mouse_x")), x);
    to_int(params.value(QLatin1String("mouse_y")), y);
    const int which = button_of(button);
    const int mods = read_modifiers(params);
    return on_view(manager, *id, [=](GView& view) {
        // Another button name makes the event disappear, answered like a done one.
        if (which == 0)
            return;
        const auto b = static_cast<PXUtil::Button>(which);
        if (Press)
            view.invoke_mouse_press(x, y, mods, b);
        else
            view.invoke_mouse_release(x, y, mods, b);
    });
}

std::optional<GraphicsCall> parse_move(const QJsonObject& params, ServerGraphicsManager* manager,
                                       ClientConnection*) {
    const std::optional<int32_t> id = view_id_of(params, {"view_id", "mouse_x", "mouse_y"});
    if (!id)
        return std::nullopt;
    int32_t x = 0;
    int32_t y = 0;
    to_int(params.value(QLatin1String("mouse_x")), x);
    to_int(params.value(QLatin1String("mouse_y")), y);
    const int mods = read_modifiers(params);
    return on_view(manager, *id, [=](GView& view) { view.invoke_mouse_move(x, y, mods); });
}

std::optional<GraphicsCall> parse_wheel(const QJsonObject& params, ServerGraphicsManager* manager,
                                        ClientConnection*) {
    const std::optional<int32_t> id = view_id_of(
        params, {"view_id", "delta", "mouse_x", "mouse_y", "shift_pressed", "control_pressed"});
    if (!id)
        return std::nullopt;
    int32_t delta = 0;
    int32_t x = 0;
    int32_t y = 0;
    to_int(params.value(QLatin1String("delta")), delta);
    to_int(params.value(QLatin1String("mouse_x")), x);
    to_int(params.value(QLatin1String("mouse_y")), y);
    const int mods = read_modifiers(params);
    // Only the sign counts, and 0 is a step backward.
    const bool forward = delta >= 1;
    return on_view(manager, *id,
                   [=](GView& view) { view.invoke_mouse_wheel(forward, x, y, mods); });
}

template <int Which>
std::optional<GraphicsCall> parse_enter_leave(const QJsonObject& params,
                                              ServerGraphicsManager* manager, ClientConnection*) {
    const std::optional<int32_t> id = int_member(params, "view_id");
    if (!id)
        return std::nullopt;
    return on_view(manager, *id, [](GView& view) {
        if (Which == 0)
            view.invoke_enter();
        else
            view.invoke_leave();
    });
}

std::optional<GraphicsCall> parse_double_click(const QJsonObject& params,
                                               ServerGraphicsManager* manager, ClientConnection*) {
    const std::optional<int32_t> id = view_id_of(params, {"view_id", "mouse_x", "mouse_y"});
    if (!id)
        return std::nullopt;
    int32_t x = 0;
    int32_t y = 0;
    to_int(params.value(QLatin1String("mouse_x")), x);
    to_int(params.value(QLatin1String("mouse_y")), y);
    return on_view(manager, *id, [=](GView& view) { view.invoke_double_click(x, y); });
}

std::optional<GraphicsCall> parse_mapping(const QJsonObject& params, ServerGraphicsManager*,
                                          ClientConnection*) {
    // Switching the mode: everything else in the request is ignored.
    if (params.contains(QLatin1String("modeless_mode"))) {
        const QJsonValue mode = params.value(QLatin1String("modeless_mode"));
        if (!mode.isBool())
            return std::nullopt;
        return [on = mode.toBool()]() -> QJsonValue {
            GInteractorStyleBase::set_modeless(on);
            return kNull;
        };
    }
    if (!has_all(params, {"button", "operation", "shift_pressed", "control_pressed", "modeless"}))
        return std::nullopt;
    std::string button;
    std::string operation;
    bool modeless = false;
    read_string(params, "button", button);
    read_string(params, "operation", operation);
    read_bool(params, "modeless", modeless);
    // Unlike a button event, a mapping never fails: another name means the left button.
    const int which = button_of(button);
    const auto b = static_cast<PXUtil::Button>(which == 0 ? PXUtil::Left : which);
    const PXUtil::MouseFunc function = operation_of(operation);
    const int mods = read_modifiers(params);
    return [=]() -> QJsonValue {
        GInteractorStyleBase::assign_mouse_function(modeless, function, b, mods);
        return kNull;
    };
}

bool setting_on(const QJsonObject& params) {
    return params.value(QLatin1String("setting")).toString() == QLatin1String("on");
}

std::optional<GraphicsCall> parse_pick_filter(const QJsonObject& params,
                                              ServerGraphicsManager* manager, ClientConnection*) {
    if (!view_id_of(params, {"view_id", "filter", "setting"}))
        return std::nullopt;
    std::string filter;
    read_string(params, "filter", filter);
    const bool on = setting_on(params);
    return [=]() -> QJsonValue {
        if (on)
            GPickerBase::add_filter_type(filter.c_str());
        else
            GPickerBase::remove_filter_type(filter.c_str());
        // The graphics monitor learns of it through the kernel's listeners.
        GTarvoModelSet* models =
            manager == nullptr ? nullptr : manager->render_queue()->model_set();
        if (models != nullptr) {
            if (const std::shared_ptr<AppUtil> app = models->app_util())
                app->send_operation_event(kPickTypesChanged);
        }
        return kNull;
    };
}

std::optional<GraphicsCall> parse_occluded(const QJsonObject& params,
                                           ServerGraphicsManager* manager, ClientConnection*) {
    if (!view_id_of(params, {"view_id", "setting"}))
        return std::nullopt;
    const bool on = setting_on(params);
    return [=]() -> QJsonValue {
        GTarvoModelSet* models =
            manager == nullptr ? nullptr : manager->render_queue()->model_set();
        if (models != nullptr)
            models->set_select_occluded(on);
        return kNull;
    };
}

} // namespace

GraphicsParser input_method(const QString& name) {
    static const std::array<std::pair<const char*, GraphicsParser>, 12> kMethods{{
        {"key_pressed", parse_key<true>},
        {"key_released", parse_key<false>},
        {"mouse_button_pressed", parse_button<true>},
        {"mouse_button_released", parse_button<false>},
        {"mouse_move", parse_move},
        {"mouse_wheel", parse_wheel},
        {"mouse_enter", parse_enter_leave<0>},
        {"mouse_leave", parse_enter_leave<1>},
        {"mouse_double_click", parse_double_click},
        {"mouse_button_mapping", parse_mapping},
        {"toggle_pick_filter", parse_pick_filter},
        {"toggle_occluded_picking", parse_occluded},
    }};
    for (const auto& [method, parser] : kMethods) {
        if (name == QLatin1String(method))
            return parser;
    }
    return {};
}
