#include "StrictJson.h"

#include <algorithm>
#include <charconv>
#include <system_error>
#include <utility>
#include <vector>

namespace json_rpc::strict {

namespace {

// Deeper nesting than any message of this protocol needs; Qt's own limit is higher, and the
// recursion below must stay far from the end of the stack.
constexpr int kMaxDepth = 512;
// A double carries at most 17 significant digits; a plain number shorter than this and without
// an exponent is always in range, so only longer ones pay for a conversion.
constexpr std::ptrdiff_t kAlwaysInRangeLength = 17;

struct Span {
    std::size_t begin;
    std::size_t end;
    bool negative;
};

class Checker {
public:
    Checker(const QByteArray& text, std::size_t max_elements)
        : p(text.constData()), begin(text.constData()), end(text.constData() + text.size()),
          max_elements(max_elements) {}

    Checked run() {
        skip_space();
        const char first = p < end ? *p : '\0';
        result.container = first == '{' || first == '[';
        if (!value(0, true))
            return finish_failure();
        skip_space();
        if (p != end) {
            fail("text after the end of the value");
            return finish_failure();
        }
        if (!zeroed.empty())
            result.rewritten = rewrite();
        return std::move(result);
    }

private:
    bool fail(const char* what) {
        if (result.status == Checked::Valid) {
            result.status = Checked::SyntaxError;
            result.detail = QStringLiteral("%1 at byte %2")
                                .arg(QLatin1String(what))
                                .arg(static_cast<qint64>(p - begin));
        }
        return false;
    }

    Checked finish_failure() {
        result.container = false;
        result.top_level_elements = 0;
        result.rewritten.clear();
        return std::move(result);
    }

    void skip_space() {
        // Only the four whitespace characters of the grammar; a byte-order mark is not one.
        while (p < end && (*p == ' ' || *p == '\t' || *p == '\n' || *p == '\r'))
            ++p;
    }

    bool literal(const char* word) {
        for (; *word != '\0'; ++word, ++p) {
            if (p == end || *p != *word)
                return fail("invalid literal");
        }
        return true;
    }

    bool value(int depth, bool top) {
        if (p == end)
            return fail("value expected");
        switch (*p) {
        case '{':
            return object(depth + 1);
        case '[':
            return array(depth + 1, top);
        case '"':
            return string();
        case 't':
            return literal("true");
        case 'f':
            return literal("false");
        case 'n':
            return literal("null");
        default:
            if (*p == '-' || (*p >= '0' && *p <= '9'))
                return number();
            return fail("value expected");
        }
    }

    bool object(int depth) {
        if (depth > kMaxDepth)
            return fail("nesting too deep");
        ++p; // '{'
        skip_space();
        if (p < end && *p == '}') {
            ++p;
            return true;
        }
        for (;;) {
            skip_space();
            if (p == end || *p != '"')
                return fail("member name expected");
            if (!string())
                return false;
            skip_space();
            if (p == end || *p != ':')
                return fail("':' expected");
            ++p;
            skip_space();
            if (!value(depth, false))
                return false;
            skip_space();
            if (p < end && *p == ',') {
                ++p;
                continue;
            }
            if (p < end && *p == '}') {
                ++p;
                return true;
            }
            return fail("',' or '}' expected");
        }
    }

    bool array(int depth, bool top) {
        if (depth > kMaxDepth)
            return fail("nesting too deep");
        ++p; // '['
        skip_space();
        if (p < end && *p == ']') {
            ++p;
            return true;
        }
        std::size_t count = 0;
        for (;;) {
            skip_space();
            if (top && ++count > max_elements) {
                result.status = Checked::TooManyElements;
                result.detail = QStringLiteral("a batch holds at most %1 elements")
                                    .arg(static_cast<qulonglong>(max_elements));
                return false;
            }
            if (!value(depth, false))
                return false;
            skip_space();
            if (p < end && *p == ',') {
                ++p;
                continue;
            }
            if (p < end && *p == ']') {
                ++p;
                if (top)
                    result.top_level_elements = count;
                return true;
            }
            return fail("',' or ']' expected");
        }
    }

    static bool is_hex(char c) {
        return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
    }

    bool string() {
        ++p; // '"'
        while (p < end) {
            const auto c = static_cast<unsigned char>(*p);
            if (c == '"') {
                ++p;
                return true;
            }
            if (c < 0x20)
                return fail("unescaped control character in a string");
            if (c != '\\') {
                ++p;
                continue;
            }
            ++p;
            if (p == end)
                break;
            switch (*p) {
            case '"':
            case '\\':
            case '/':
            case 'b':
            case 'f':
            case 'n':
            case 'r':
            case 't':
                ++p;
                break;
            case 'u':
                ++p;
                for (int i = 0; i < 4; ++i, ++p) {
                    if (p == end || !is_hex(*p))
                        return fail("invalid \\u escape");
                }
                break;
            default:
                return fail("invalid escape");
            }
        }
        return fail("unterminated string");
    }

    static bool is_digit(const char* at, const char* end) {
        return at < end && *at >= '0' && *at <= '9';
    }

    bool number() {
        const char* start = p;
        const bool negative = *p == '-';
        if (negative)
            ++p;
        // Int part: 0, or a digit 1-9 followed by digits. The decimal exponent of the leading
        // significant digit is tracked as well, to tell an overflow from an underflow.
        if (!is_digit(p, end))
            return fail("digit expected");
        long long magnitude = 0; // decimal exponent of the first non-zero digit
        bool seen_significant = false;
        if (*p == '0') {
            ++p;
        } else {
            const char* digits = p;
            while (is_digit(p, end))
                ++p;
            magnitude = static_cast<long long>(p - digits) - 1;
            seen_significant = true;
        }
        bool has_exponent = false;
        if (p < end && *p == '.') {
            ++p;
            if (!is_digit(p, end))
                return fail("digit expected after '.'");
            long long position = -1;
            while (is_digit(p, end)) {
                if (!seen_significant && *p != '0') {
                    magnitude = position;
                    seen_significant = true;
                }
                --position;
                ++p;
            }
        }
        if (p < end && (*p == 'e' || *p == 'E')) {
            has_exponent = true;
            ++p;
            if (p < end && (*p == '+' || *p == '-'))
                ++p;
            if (!is_digit(p, end))
                return fail("digit expected in exponent");
            while (is_digit(p, end))
                ++p;
        }
        if (!has_exponent && p - start < kAlwaysInRangeLength)
            return true;

        double parsed = 0.0;
        const auto [stop, error] = std::from_chars(start, p, parsed);
        if (error != std::errc::result_out_of_range)
            return true;
        // Out of range: the exponent decides the direction. Only exponents far beyond +-300
        // get here, so the written exponent dominates the estimate.
        const char* e = start;
        while (e < p && *e != 'e' && *e != 'E')
            ++e;
        long long exponent = 0;
        if (e < p) {
            const char* digits = e + 1;
            const bool exponent_negative = *digits == '-';
            if (*digits == '+' || *digits == '-')
                ++digits;
            for (; digits < p && exponent < 100000000; ++digits)
                exponent = exponent * 10 + (*digits - '0');
            if (exponent_negative)
                exponent = -exponent;
        }
        if (seen_significant && magnitude + exponent > 0) {
            result.status = Checked::NumberOutOfRange;
            result.detail =
                QStringLiteral("the number %1 is beyond the range of a double")
                    .arg(QString::fromLatin1(
                        start, static_cast<int>(std::min<std::ptrdiff_t>(p - start, 40))));
            return false;
        }
        zeroed.push_back(Span{static_cast<std::size_t>(start - begin),
                              static_cast<std::size_t>(p - begin), negative});
        return true;
    }

    QByteArray rewrite() const {
        QByteArray text;
        text.reserve(end - begin);
        std::size_t at = 0;
        for (const Span& span : zeroed) {
            text.append(begin + at, static_cast<qsizetype>(span.begin - at));
            text.append(span.negative ? "-0" : "0");
            at = span.end;
        }
        text.append(begin + at, static_cast<qsizetype>((end - begin) - at));
        return text;
    }

    const char* p;
    const char* begin;
    const char* end;
    std::size_t max_elements;
    std::vector<Span> zeroed;
    Checked result;
};

} // namespace

Checked check(const QByteArray& utf8, std::size_t max_elements) {
    return Checker(utf8, max_elements).run();
}

} // namespace json_rpc::strict
