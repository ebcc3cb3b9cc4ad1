#pragma once
// UTF-8 string value used across the kernel/server seam. A thin value type over std::string.

#include <string>
#include <string_view>

class TarvoString {
public:
    TarvoString() = default;
    TarvoString(const char* text) : text(text ? text : "") {}
    TarvoString(std::string text) : text(std::move(text)) {}

    const char* c_str() const { return text.c_str(); }
    const std::string& str() const { return text; }
    size_t length() const { return text.size(); }
    bool is_empty() const { return text.empty(); }
    bool ends_with(std::string_view suffix) const { return text.ends_with(suffix); }
    TarvoString& operator+=(const TarvoString& other) {
        text += other.text;
        return *this;
    }
    bool operator==(const TarvoString& other) const = default;

    // Fixed-point text of `value`: `precision` digits after the point (0: none), padded on the
    // left with blanks to at least `width` characters.
    static TarvoString number(double value, int width = 0, int precision = 6);
    static TarvoString number(int value);

private:
    std::string text;
};
