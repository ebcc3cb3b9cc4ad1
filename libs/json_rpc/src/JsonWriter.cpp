#include "JsonWriter.h"

#include <QLocale>

#include <charconv>
#include <cmath>

namespace json_rpc::writer {

namespace {

constexpr char kHex[] = "0123456789abcdef";

// Bytes that a JSON string can't hold as they are.
inline bool needs_escape(unsigned char c) {
    return c < 0x20 || c == '"' || c == '\\';
}

void append_escaped_byte(std::string& out, unsigned char c) {
    out.push_back('\\');
    switch (c) {
    case '"':
        out.push_back('"');
        return;
    case '\\':
        out.push_back('\\');
        return;
    case '\b':
        out.push_back('b');
        return;
    case '\f':
        out.push_back('f');
        return;
    case '\n':
        out.push_back('n');
        return;
    case '\r':
        out.push_back('r');
        return;
    case '\t':
        out.push_back('t');
        return;
    default:
        out.append("u00", 3);
        out.push_back(kHex[c >> 4]);
        out.push_back(kHex[c & 0xf]);
    }
}

void append_integer(std::string& out, qint64 value) {
    char digits[24];
    const auto [end, error] = std::to_chars(digits, digits + sizeof digits, value);
    (void)error; // 24 characters hold every 64-bit integer
    out.append(digits, end);
}

// A number that isn't an integer (those go through append_integer): the shortest form that reads
// back to the same double.
void append_number(std::string& out, double value) {
    if (!std::isfinite(value)) {
        // JSON has no infinities or NaN; the reader gets null, as from QJsonDocument.
        out.append("null", 4);
        return;
    }
    const QByteArray text = QByteArray::number(value, 'g', QLocale::FloatingPointShortest);
    out.append(text.constData(), static_cast<size_t>(text.size()));
}

} // namespace

void append_string(std::string& out, QStringView text) {
    out.push_back('"');
    const qsizetype n = text.size();
    for (qsizetype i = 0; i < n; ++i) {
        const char16_t c = text[i].unicode();
        if (c < 0x80) {
            if (needs_escape(static_cast<unsigned char>(c)))
                append_escaped_byte(out, static_cast<unsigned char>(c));
            else
                out.push_back(static_cast<char>(c));
        } else if (c < 0x800) {
            out.push_back(static_cast<char>(0xc0 | (c >> 6)));
            out.push_back(static_cast<char>(0x80 | (c & 0x3f)));
        } else if (QChar::isHighSurrogate(c) && i + 1 < n && text[i + 1].isLowSurrogate()) {
            const char32_t code = QChar::surrogateToUcs4(c, text[i + 1].unicode());
            ++i;
            out.push_back(static_cast<char>(0xf0 | (code >> 18)));
            out.push_back(static_cast<char>(0x80 | ((code >> 12) & 0x3f)));
            out.push_back(static_cast<char>(0x80 | ((code >> 6) & 0x3f)));
            out.push_back(static_cast<char>(0x80 | (code & 0x3f)));
        } else if (QChar::isSurrogate(c)) {
            // A surrogate without its partner has no UTF-8 form; it travels as an escape, so
            // that nothing of the string is lost.
            out.append("\\u", 2);
            for (int shift = 12; shift >= 0; shift -= 4)
                out.push_back(kHex[(c >> shift) & 0xf]);
        } else {
            out.push_back(static_cast<char>(0xe0 | (c >> 12)));
            out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3f)));
            out.push_back(static_cast<char>(0x80 | (c & 0x3f)));
        }
    }
    out.push_back('"');
}

void append(std::string& out, const QJsonValue& value) {
    switch (value.type()) {
    case QJsonValue::Null:
    case QJsonValue::Undefined:
        out.append("null", 4);
        return;
    case QJsonValue::Bool:
        if (value.toBool())
            out.append("true", 4);
        else
            out.append("false", 5);
        return;
    case QJsonValue::Double: {
        // An integer kept as such (ids, counts) prints without a detour through double, so that
        // 64-bit values keep every digit.
        // toInteger answers its default for a value that isn't integral, so two defaults tell.
        const qint64 integer = value.toInteger(0);
        if (integer == value.toInteger(1) && static_cast<double>(integer) == value.toDouble())
            append_integer(out, integer);
        else
            append_number(out, value.toDouble());
        return;
    }
    case QJsonValue::String:
        append_string(out, value.toString());
        return;
    case QJsonValue::Array:
        append(out, value.toArray());
        return;
    case QJsonValue::Object:
        append(out, value.toObject());
        return;
    }
}

void append(std::string& out, const QJsonObject& object) {
    out.push_back('{');
    bool first = true;
    for (auto it = object.constBegin(), end = object.constEnd(); it != end; ++it) {
        if (!first)
            out.push_back(',');
        first = false;
        append_string(out, it.key());
        out.push_back(':');
        append(out, it.value());
    }
    out.push_back('}');
}

void append(std::string& out, const QJsonArray& array) {
    out.push_back('[');
    bool first = true;
    for (const QJsonValue& element : array) {
        if (!first)
            out.push_back(',');
        first = false;
        append(out, element);
    }
    out.push_back(']');
}

} // namespace json_rpc::writer
