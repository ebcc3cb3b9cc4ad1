#include "graphics/KeySymbols.h"

#include <array>

namespace {

// X-style symbols of the printable ASCII characters and of tab and delete, by character code.
// Digits and letters stand for themselves.
constexpr std::array<const char*, 128> text_table() {
    std::array<const char*, 128> t{};
    t[9] = "Tab";
    t[32] = "space";
    t[33] = "exclam";
    t[34] = "quotedbl";
    t[35] = "numbersign";
    t[36] = "dollar";
    t[37] = "percent";
    t[38] = "ampersand";
    t[39] = "quoteright";
    t[40] = "parenleft";
    t[41] = "parenright";
    t[42] = "asterisk";
    t[43] = "plus";
    t[44] = "comma";
    t[45] = "minus";
    t[46] = "period";
    t[47] = "slash";
    t[58] = "colon";
    t[59] = "semicolon";
    t[60] = "less";
    t[61] = "equal";
    t[62] = "greater";
    t[63] = "question";
    t[64] = "at";
    t[91] = "bracketleft";
    t[92] = "backslash";
    t[93] = "bracketright";
    t[94] = "asciicircum";
    t[95] = "underscore";
    t[96] = "quoteleft";
    t[123] = "braceleft";
    t[124] = "bar";
    t[125] = "braceright";
    t[126] = "asciitilde";
    t[127] = "Delete";
    return t;
}
constexpr std::array<const char*, 128> kText = text_table();

constexpr const char* kDigits[] = {"0", "1", "2", "3", "4", "5", "6", "7", "8", "9"};
constexpr const char* kUpper[] = {"A", "B", "C", "D", "E", "F", "G", "H", "I", "J", "K", "L", "M",
                                  "N", "O", "P", "Q", "R", "S", "T", "U", "V", "W", "X", "Y", "Z"};
// The J key (74) gives "h", as H does, and no key code gives "j": kept as clients know it.
constexpr const char* kLowerByKey[] = {"a", "b", "c", "d", "e", "f", "g", "h", "i",
                                       "h", "k", "l", "m", "n", "o", "p", "q", "r",
                                       "s", "t", "u", "v", "w", "x", "y", "z"};
constexpr const char* kLower[] = {"a", "b", "c", "d", "e", "f", "g", "h", "i", "j", "k", "l", "m",
                                  "n", "o", "p", "q", "r", "s", "t", "u", "v", "w", "x", "y", "z"};
constexpr const char* kFunction[] = {"F1",  "F2",  "F3",  "F4",  "F5",  "F6",  "F7",  "F8",
                                     "F9",  "F10", "F11", "F12", "F13", "F14", "F15", "F16",
                                     "F17", "F18", "F19", "F20", "F21", "F22", "F23", "F24"};

const char* from_text(int code) {
    if (code < 0 || code >= 128)
        return nullptr;
    if (code >= '0' && code <= '9')
        return kDigits[code - '0'];
    if (code >= 'A' && code <= 'Z')
        return kUpper[code - 'A'];
    if (code >= 'a' && code <= 'z')
        return kLower[code - 'a'];
    return kText[static_cast<size_t>(code)];
}

const char* from_key(int key) {
    switch (key) {
    case 0x1000000:
        return "Escape";
    case 0x1000001:
    case 0x1000002:
        return "Tab";
    case 0x1000003:
        return "BackSpace";
    case 0x1000004:
    case 0x1000005:
        return "Return";
    case 0x1000006:
        return "Insert";
    case 0x1000007:
        return "Delete";
    case 0x1000008:
        return "Pause";
    case 0x100000a:
        return "Snapshot";
    case 0x1000010:
        return "Home";
    case 0x1000011:
        return "End";
    case 0x1000012:
        return "Left";
    case 0x1000013:
        return "Up";
    case 0x1000014:
        return "Right";
    case 0x1000015:
        return "Down";
    case 0x1000020:
        return "Shift_L";
    case 0x1000021:
        return "Control_L";
    case 0x1000023:
        return "Alt_L";
    case 0x1000024:
        return "Caps_Lock";
    case 0x1000025:
        return "Num_Lock";
    case 0x1000026:
        return "Scroll_Lock";
    case 0x1000058:
        return "Help";
    case 32:
        return "space";
    case 42:
        return "asterisk";
    case 43:
        return "plus";
    case 45:
        return "minus";
    case 46:
        return "period";
    case 47:
        return "slash";
    default:
        break;
    }
    if (key >= 0x1000030 && key <= 0x1000047)
        return kFunction[key - 0x1000030];
    if (key >= '0' && key <= '9')
        return kDigits[key - '0'];
    if (key >= 'A' && key <= 'Z')
        return kLowerByKey[key - 'A'];
    return nullptr;
}

} // namespace

KeySymbol key_symbol(const QString& text, int key) {
    const int unit = text.isEmpty() ? 0 : text.at(0).unicode();
    KeySymbol result;
    // 128 to 255 come out negative, as a signed char holds them.
    result.key_code = unit < 256 ? static_cast<char>(static_cast<unsigned char>(unit)) : 0;
    if (result.key_code >= 0)
        result.key_sym = from_text(result.key_code);
    if (result.key_sym == nullptr)
        result.key_sym = from_key(key);
    return result;
}
