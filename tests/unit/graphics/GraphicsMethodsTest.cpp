#include "graphics/GraphicsRPCRequestHandler.h"
#include "graphics/ImageFormat.h"
#include "graphics/KeySymbols.h"

#include <pixlane/GInteractorStyleBase.h>

#include <QJsonObject>

#include <gtest/gtest.h>

#include <string>

namespace {

QJsonObject with(QJsonObject object, const char* key, const QJsonValue& value) {
    object.insert(QLatin1String(key), value);
    return object;
}

RPCRequest request(const char* method, const QJsonObject& params) {
    RPCRequest r(QString::fromLatin1(method), params);
    r.set_id(1);
    return r;
}

TEST(KeySymbolTest, TextFirstThenKeyCode) {
    struct Row {
        QString text;
        int key;
        char code;
        const char* sym; // null: no symbol
    };
    const Row rows[] = {
        {"a", 0x1000000, 97, "a"},
        {"A", 65, 65, "A"},
        {"", 65, 0, "a"},
        {"", 74, 0, "h"}, // the J key, as clients know it
        {"j", 74, 'j', "j"},
        {"?", 0, '?', "question"},
        {"\t", 0, 9, "Tab"},
        {"\r", 0x1000004, 13, "Return"},
        {"", 0x1000000, 0, "Escape"},
        {"", 0x1000030 + 23, 0, "F24"},
        {QString(QChar(0xE9)), 0x1000012, static_cast<char>(0xE9), "Left"},
        {QString(QChar(0x20AC)), 0x1000013, 0, "Up"},
        {"", 0x1000016, 0, nullptr}, // PageUp has none
        {"", 0x1000009, 0, nullptr}, // Print has none
    };
    for (const Row& row : rows) {
        const KeySymbol s = key_symbol(row.text, row.key);
        EXPECT_EQ(s.key_code, row.code) << row.text.toStdString() << " " << row.key;
        if (row.sym == nullptr)
            EXPECT_EQ(s.key_sym, nullptr) << row.key;
        else
            EXPECT_STREQ(s.key_sym, row.sym) << row.text.toStdString() << " " << row.key;
    }
}

// The row flip and the red/blue order; the e2e scene is symmetric and would not show either.
TEST(ImageFormatTest, RawPayloadsAreTopDownRgbWithRowsPaddedToFourBytes) {
    // The capture: blue, green, red, alpha, bottom row first. Each pixel differs.
    const int w = 801, h = 3;
    QImage frame(w, h, QImage::Format_RGBA8888);
    for (int y = 0; y < h; ++y) {
        uchar* row = frame.scanLine(y);
        for (int x = 0; x < w; ++x) {
            row[4 * x + 0] = static_cast<uchar>(x);     // blue
            row[4 * x + 1] = static_cast<uchar>(y);     // green
            row[4 * x + 2] = static_cast<uchar>(x / 4); // red
            row[4 * x + 3] = 255;
        }
    }
    const QByteArray rgb = image_format::encode(frame, image_format::Rgb);
    ASSERT_EQ(rgb.size(), 2404 * h);
    for (int y = 0; y < h; ++y) {
        const int source_row = h - 1 - y;
        for (int x : {0, 5, 800}) {
            const char* p = rgb.constData() + 2404 * y + 3 * x;
            EXPECT_EQ(static_cast<uchar>(p[0]), static_cast<uchar>(x / 4));
            EXPECT_EQ(static_cast<uchar>(p[1]), static_cast<uchar>(source_row));
            EXPECT_EQ(static_cast<uchar>(p[2]), static_cast<uchar>(x));
        }
    }
}

// The method table with no view table behind it: the parameter rules alone.
TEST(GraphicsMethodTest, ParameterRulesWithoutViews) {
    const auto invalid = static_cast<int>(json_rpc::ErrorCode::InvalidParams);
    const auto unknown = static_cast<int>(json_rpc::ErrorCode::MethodNotFound);
    const QJsonValue null(QJsonValue::Null);
    struct Row {
        const char* method;
        QJsonObject params;
        int error; // 0: answered with `result`
        QJsonValue result;
    };
    const QJsonObject button{{"view_id", 1}, {"button", "LEFT"},        {"mouse_x", 1},
                             {"mouse_y", 2}, {"control_pressed", true}, {"shift_pressed", true}};
    const Row rows[] = {
        {"graphics.create_view", {{"width", 800.5}}, 0, null},
        {"graphics.create_view", {{"format", 3}}, invalid, null},
        {"graphics.destroy_view", {{"view_id", 1}}, 0, false},
        {"graphics.destroy_view", {{"view_id", 1.5}}, invalid, null},
        {"x.y.destroy_view", {}, invalid, null},
        {"graphics.graphics_resize", {{"view_id", 1}, {"width", "a"}, {"height", 2}}, 0, null},
        {"graphics.graphics_resize", {{"view_id", 1}, {"width", 2}}, invalid, null},
        {"graphics.render", {{"view_id", 7}, {"timing", "yes"}}, 0, null},
        {"graphics.key_pressed",
         {{"view_id", 1},
          {"key", 65},
          {"key_text", ""},
          {"shift_pressed", 1},
          {"control_pressed", false},
          {"count", 1}},
         0,
         null},
        {"graphics.key_released", {{"view_id", 1}, {"key", 65}}, invalid, null},
        {"graphics.mouse_button_pressed", button, 0, null},
        {"graphics.mouse_button_pressed", with(button, "button", "back"), 0, null},
        {"graphics.mouse_button_released", {{"view_id", 1}}, invalid, null},
        {"graphics.mouse_move", {{"view_id", 1}, {"mouse_x", 1}, {"mouse_y", 2}}, 0, null},
        {"graphics.mouse_move", {{"view_id", "1"}, {"mouse_x", 1}, {"mouse_y", 2}}, invalid, null},
        {"graphics.mouse_wheel",
         {{"view_id", 1}, {"delta", 1}, {"mouse_x", 1}, {"mouse_y", 2}},
         invalid,
         null},
        {"graphics.mouse_enter", {{"view_id", 1}}, 0, null},
        {"graphics.mouse_leave", {}, invalid, null},
        {"graphics.mouse_double_click", {{"view_id", 1}, {"mouse_x", 1}}, invalid, null},
        {"graphics.toggle_occluded_picking", {{"view_id", 99}, {"setting", "ON"}}, 0, null},
        {"graphics.toggle_pick_filter",
         {{"view_id", 1.25}, {"filter", "x"}, {"setting", "on"}},
         invalid,
         null},
        {"graphics.mouse_button_mapping",
         {{"modeless_mode", 1}, {"button", "left"}},
         invalid,
         null},
        {"graphics.mouse_button_mapping",
         {{"button", "left"},
          {"operation", "pan"},
          {"shift_pressed", false},
          {"control_pressed", false}},
         invalid,
         null},
        {"graphics.test", {}, unknown, null},
        {"graphics.Render", {{"view_id", 1}}, unknown, null},
    };
    for (const Row& row : rows) {
        GraphicsRPCRequestHandler handler(nullptr, nullptr);
        const RPCResponse response = handler.exec(request(row.method, row.params));
        if (row.error != 0) {
            EXPECT_EQ(response.error_code(), row.error) << row.method;
        } else {
            EXPECT_FALSE(response.is_error()) << row.method;
            EXPECT_EQ(response.result(), row.result) << row.method;
        }
    }
}

TEST(GraphicsMethodTest, MouseMappingStoresWhatItNames) {
    GInteractorStyleBase::reset_mouse_functions();
    struct Row {
        QJsonObject params;
        bool modeless;
        PXUtil::Button button;
        int modifiers;
        PXUtil::MouseFunc function;
    };
    const Row rows[] = {
        {{{"button", "RIGHT"},
          {"operation", "ROTATE_Z"},
          {"shift_pressed", true},
          {"control_pressed", true},
          {"modeless", false}},
         false,
         PXUtil::Right,
         3,
         PXUtil::RotateZ},
        // Unknown names: the left button, "rotate".
        {{{"button", "back"},
          {"operation", "spin"},
          {"shift_pressed", false},
          {"control_pressed", true},
          {"modeless", true}},
         true,
         PXUtil::Left,
         2,
         PXUtil::Rotate},
        {{{"button", "middle"},
          {"operation", "select_polygon"},
          {"shift_pressed", true},
          {"control_pressed", false},
          {"modeless", true}},
         true,
         PXUtil::Middle,
         1,
         PXUtil::SelectPolygon},
    };
    for (const Row& row : rows) {
        // Start from something else, so that the test sees the store.
        GInteractorStyleBase::assign_mouse_function(row.modeless, PXUtil::DoNothing, row.button,
                                                    row.modifiers);
        GraphicsRPCRequestHandler handler(nullptr, nullptr);
        const RPCResponse response =
            handler.exec(request("graphics.mouse_button_mapping", row.params));
        EXPECT_EQ(response.result(), QJsonValue(QJsonValue::Null));
        EXPECT_EQ(GInteractorStyleBase::mouse_function(row.modeless, row.button, row.modifiers),
                  row.function)
            << row.params.value("operation").toString().toStdString();
    }
    // The mode switch ignores a mapping in the same request.
    GraphicsRPCRequestHandler handler(nullptr, nullptr);
    handler.exec(request("graphics.mouse_button_mapping", QJsonObject{{"modeless_mode", true},
                                                                      {"button", "right"},
                                                                      {"operation", "pan"},
                                                                      {"shift_pressed", true},
                                                                      {"control_pressed", true},
                                                                      {"modeless", false}}));
    EXPECT_TRUE(GInteractorStyleBase::is_modeless());
    EXPECT_EQ(GInteractorStyleBase::mouse_function(false, PXUtil::Right, 3), PXUtil::RotateZ);
    GInteractorStyleBase::reset_mouse_functions();
}

} // namespace
