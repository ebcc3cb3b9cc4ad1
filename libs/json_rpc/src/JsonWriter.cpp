#include "JsonWriter.h"

#include <QLocale>

#include <cmath>

namespace json_rpc::writer {

namespace {

constexpr char kHex[] = "0123456789abcdef";

// Bytes that a JSON string can't hold as they are.
inline bool needs_escape(unsigned char c) {
    return c < 0x20 || c == '"' || c == '\\';
}

void append_escaped_byte(QByteArray& out, unsigned char c) {
    out.append('\\');
    switch (c) {
    case '"':
        out.append('"');
        return;
    case '\\':
        out.append('\\');
        return;
    case '\b':
        out.append('b');
        return;
    case '\f':
        out.append('f');
        return;
    case '\n':
        out.append('n');
        return;
    case '\r':
        out.append('r');
        return;
    case '\t':
        out.append('t');
        return;
    default:
        out.append("u00", 3);
        out.append(kHex[c >> 4]);
        out.append(kHex[c & 0xf]);
    }
}

void append_number(QByteArray& out, double value) {
    if (!std::isfinite(value)) {
        // JSON has no infinities or NaN; the reader gets null, as from QJsonDocument.
        out.append("null", 4);
        return;
    }
    // Integral values within the exactly representable range print as integers, others in the
    // shortest form that reads back to the same double.
    constexpr double kExact = 9007199254740992.0; // 2^53
    if (std::fabs(value) <= kExact && std::trunc(value) == value) {
        out.append(QByteArray::number(static_cast<qint64>(value)));
        return;
    }
    out.append(QByteArray::number(value, 'g', QLocale::FloatingPointShortest));
}

} // namespace

void append_string(QByteArray& out, QStringView text) {
    out.append('"');
    const qsizetype n = text.size();
    for (qsizetype i = 0; i < n; ++i) {
        const char16_t c = text[i].unicode();
        if (c < 0x80) {
            if (needs_escape(static_cast<unsigned char>(c)))
                append_escaped_byte(out, static_cast<unsigned char>(c));
            else
                out.append(static_cast<char>(c));
        } else if (c < 0x800) {
            out.append(static_cast<char>(0xc0 | (c >> 6)));
            out.append(static_cast<char>(0x80 | (c & 0x3f)));
        } else if (QChar::isHighSurrogate(c) && i + 1 < n && text[i + 1].isLowSurrogate()) {
            const char32_t code = QChar::surrogateToUcs4(c, text[i + 1].unicode());
            ++i;
            out.append(static_cast<char>(0xf0 | (code >> 18)));
            out.append(static_cast<char>(0x80 | ((code >> 12) & 0x3f)));
            out.append(static_cast<char>(0x80 | ((code >> 6) & 0x3f)));
            out.append(static_cast<char>(0x80 | (code & 0x3f)));
        } else if (QChar::isSurrogate(c)) {
            // A surrogate without its partner has no UTF-8 form; it travels as an escape, so
            // that nothing of the string is lost.
            out.append("\\u", 2);
            for (int shift = 12; shift >= 0; shift -= 4)
                out.append(kHex[(c >> shift) & 0xf]);
        } else {
            out.append(static_cast<char>(0xe0 | (c >> 12)));
            out.append(static_cast<char>(0x80 | ((c >> 6) & 0x3f)));
            out.append(static_cast<char>(0x80 | (c & 0x3f)));
        }
    }
    out.append('"');
}

void append(QByteArray& out, const QJsonValue& value) {
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
            out.append(QByteArray::number(integer));
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

void append(QByteArray& out, const QJsonObject& object) {
    out.append('{');
    bool first = true;
    for (auto it = object.constBegin(), end = object.constEnd(); it != end; ++it) {
        if (!first)
            out.append(',');
        first = false;
        append_string(out, it.key());
        out.append(':');
        append(out, it.value());
    }
    out.append('}');
}

void append(QByteArray& out, const QJsonArray& array) {
    out.append('[');
    bool first = true;
    for (const QJsonValue& element : array) {
        if (!first)
            out.append(',');
        first = false;
        append(out, element);
    }
    out.append(']');
}

} // namespace json_rpc::writer
