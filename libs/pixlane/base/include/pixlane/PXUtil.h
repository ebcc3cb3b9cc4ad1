#pragma once

#include <string>

// Enumerations shared by the views, the interactor styles and the server's graphics methods.
// Their numbers are fixed: clients and the server's method tables use them.
namespace PXUtil {

// Mouse buttons as the input operations of GView name them.
enum Button : int { Left = 1, Middle = 2, Right = 3 };

// What a button does, by button and modifiers (GInteractorStyleBase::assign_mouse_function).
enum MouseFunc : int {
    Rotate = 0,
    RotateXY = 1,
    RotateZ = 2,
    RotateCamera = 3,
    Zoom = 4,
    ZoomTelephoto = 5,
    ZoomNavigate = 6,
    ZoomBox = 7,
    Pan = 8,
    CenterOnClick = 9,
    ZoomInClick = 10,
    ZoomOutClick = 11,
    Select = 12,
    AddSelect = 13,
    EchoSelection = 14,
    SelectBox = 15,
    SelectCircle = 16,
    SelectAndEcho = 17,
    DoNothing = 18,
    SelectPolygon = 19,
    RotateAboutMouseCursor = 20,
};
constexpr int kMouseFuncCount = 21;

// Modifier value of the input operations: 1 shift, 2 control, 3 both, 0 neither.
constexpr int kShift = 1;
constexpr int kControl = 2;

// Render modes, numbered as the kernel's view state numbers them.
enum RenderMode : int {
    Wireframe = 1,
    HiddenLine = 2,
    FlatShade = 3,
    SmoothShade = 4,
    Transparent = 5,
};
// "wireframe", "hiddenline", "flatshade", "smoothshade", "transparent"; "" for other values.
std::string string_from_mode(RenderMode mode);

} // namespace PXUtil
