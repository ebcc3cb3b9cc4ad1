#include <pixlane/PXUtil.h>

std::string PXUtil::string_from_mode(RenderMode mode) {
    switch (mode) {
    case Wireframe:
        return "wireframe";
    case HiddenLine:
        return "hiddenline";
    case FlatShade:
        return "flatshade";
    case SmoothShade:
        return "smoothshade";
    case Transparent:
        return "transparent";
    }
    return "";
}
