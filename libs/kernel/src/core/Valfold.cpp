#include "core/Valfold.h"

#include <cctype>
#include <charconv>
#include <cmath>
#include <numbers>

namespace tarvo::kernel {

std::string format_number(double value) {
    if (value == 0) {
        return "0"; // also for -0
    }
    char buffer[64];
    const auto [ptr, ec] = std::to_chars(buffer, buffer + sizeof buffer, value);
    return ec == std::errc() ? std::string(buffer, ptr) : std::to_string(value);
}

std::string ValfoldValue::to_string() const {
    return is_string ? text : format_number(number);
}

namespace {

// Text of the user's expression inside an error message: long expressions are cut, so that a
// mistake in a generated line does not flood the error channel.
std::string excerpt(std::string_view text) {
    constexpr size_t kShown = 60;
    return text.size() <= kShown ? std::string(text) : std::string(text.substr(0, kShown)) + "...";
}

// Recursive-descent evaluator over one statement. Assignments go to `pending`, which the caller
// commits only when the whole line evaluated.
class Evaluator {
public:
    Evaluator(std::string_view text, const std::map<std::string, ValfoldValue>& vars,
              std::map<std::string, ValfoldValue>& pending)
        : text(text), vars(vars), pending(pending) {}

    bool statement(ValfoldValue& value, bool& defined) {
        skip();
        const size_t start = pos;
        std::string name;
        if (identifier(name)) {
            skip();
            if (pos < text.size() && text[pos] == '=' &&
                (pos + 1 >= text.size() || text[pos + 1] != '=')) {
                ++pos;
                if (is_constant(name)) {
                    return fail("'" + name + "' is a constant");
                }
                if (!expression(value)) {
                    return false;
                }
                if (!finished()) {
                    return false;
                }
                pending[name] = value;
                defined = true;
                return true;
            }
        }
        pos = start;
        return expression(value) && finished();
    }

    std::string error_text;

private:
    static bool is_constant(const std::string& name) {
        return name == "pi" || name == "PI" || name == "e";
    }

    // Holds one level of recursion; the parse fails once the nesting is deeper than the stack
    // of the kernel thread can safely take.
    class Nesting {
    public:
        explicit Nesting(Evaluator& e) : e(e) { ++e.depth; }
        ~Nesting() { --e.depth; }
        Nesting(const Nesting&) = delete;
        Nesting& operator=(const Nesting&) = delete;
        bool ok() const {
            return e.depth <= kMaxValfoldNesting ||
                   e.fail("expression nested more than " + std::to_string(kMaxValfoldNesting) +
                          " levels deep");
        }

    private:
        Evaluator& e;
    };

    bool finite(ValfoldValue& value, char op) {
        if (!std::isfinite(value.number)) {
            return fail(std::string("result of '") + op + "' is not a finite number");
        }
        return true;
    }

    bool fail(const std::string& text_) {
        if (error_text.empty()) {
            error_text = text_;
        }
        return false;
    }

    void skip() {
        while (pos < text.size() && std::isspace(static_cast<unsigned char>(text[pos]))) {
            ++pos;
        }
    }

    bool finished() {
        skip();
        if (pos < text.size()) {
            return fail("unexpected '" + excerpt(text.substr(pos)) + "'");
        }
        return true;
    }

    bool identifier(std::string& name) {
        skip();
        if (pos < text.size() &&
            (std::isalpha(static_cast<unsigned char>(text[pos])) || text[pos] == '_')) {
            const size_t start = pos;
            while (pos < text.size() &&
                   (std::isalnum(static_cast<unsigned char>(text[pos])) || text[pos] == '_')) {
                ++pos;
            }
            name = std::string(text.substr(start, pos - start));
            return true;
        }
        return false;
    }

    static bool numeric(const ValfoldValue& v) { return !v.is_string; }

    bool need_numbers(const ValfoldValue& a, const ValfoldValue& b, char op) {
        if (!numeric(a) || !numeric(b)) {
            return fail(std::string("operator '") + op + "' needs numbers");
        }
        return true;
    }

    bool expression(ValfoldValue& value) {
        if (!term(value)) {
            return false;
        }
        for (;;) {
            skip();
            if (pos >= text.size() || (text[pos] != '+' && text[pos] != '-')) {
                return true;
            }
            const char op = text[pos++];
            ValfoldValue rhs;
            if (!term(rhs)) {
                return false;
            }
            if (op == '+' && (value.is_string || rhs.is_string)) {
                const std::string left = value.to_string(), right = rhs.to_string();
                if (left.size() + right.size() > kMaxValfoldString) {
                    return fail("a string may hold at most " + std::to_string(kMaxValfoldString) +
                                " characters");
                }
                value.text = left + right;
                value.is_string = true;
                continue;
            }
            if (!need_numbers(value, rhs, op)) {
                return false;
            }
            value.number = op == '+' ? value.number + rhs.number : value.number - rhs.number;
            if (!finite(value, op)) {
                return false;
            }
        }
    }

    bool term(ValfoldValue& value) {
        if (!power(value)) {
            return false;
        }
        for (;;) {
            skip();
            if (pos >= text.size() || (text[pos] != '*' && text[pos] != '/')) {
                return true;
            }
            const char op = text[pos++];
            ValfoldValue rhs;
            if (!power(rhs) || !need_numbers(value, rhs, op)) {
                return false;
            }
            if (op == '/') {
                if (rhs.number == 0) {
                    return fail("division by zero");
                }
                value.number /= rhs.number;
            } else {
                value.number *= rhs.number;
            }
            if (!finite(value, op)) {
                return false;
            }
        }
    }

    bool power(ValfoldValue& value) {
        if (!unary(value)) {
            return false;
        }
        skip();
        if (pos < text.size() && text[pos] == '^') {
            ++pos;
            const Nesting nesting(*this);
            ValfoldValue rhs;
            if (!nesting.ok() || !power(rhs) || !need_numbers(value, rhs, '^')) {
                return false;
            }
            value.number = std::pow(value.number, rhs.number);
            if (!finite(value, '^')) {
                return false;
            }
        }
        return true;
    }

    bool unary(ValfoldValue& value) {
        skip();
        if (pos < text.size() && (text[pos] == '-' || text[pos] == '+')) {
            const char op = text[pos++];
            const Nesting nesting(*this);
            if (!nesting.ok() || !unary(value)) {
                return false;
            }
            if (value.is_string) {
                return fail(std::string("operator '") + op + "' needs a number");
            }
            if (op == '-') {
                value.number = -value.number;
            }
            return true;
        }
        return primary(value);
    }

    bool call(const std::string& name, const std::vector<ValfoldValue>& args, ValfoldValue& value) {
        struct Fn1 {
            const char* name;
            double (*fn)(double);
        };
        static const Fn1 one[] = {
            {"sqrt", [](double x) { return std::sqrt(x); }},
            {"sin", [](double x) { return std::sin(x); }},
            {"cos", [](double x) { return std::cos(x); }},
            {"tan", [](double x) { return std::tan(x); }},
            {"asin", [](double x) { return std::asin(x); }},
            {"acos", [](double x) { return std::acos(x); }},
            {"atan", [](double x) { return std::atan(x); }},
            {"exp", [](double x) { return std::exp(x); }},
            {"log", [](double x) { return std::log(x); }},
            {"log10", [](double x) { return std::log10(x); }},
            {"abs", [](double x) { return std::abs(x); }},
            {"floor", [](double x) { return std::floor(x); }},
            {"ceil", [](double x) { return std::ceil(x); }},
            {"sind", [](double x) { return std::sin(x * std::numbers::pi / 180); }},
            {"cosd", [](double x) { return std::cos(x * std::numbers::pi / 180); }},
            {"tand", [](double x) { return std::tan(x * std::numbers::pi / 180); }},
        };
        for (const Fn1& f : one) {
            if (name == f.name) {
                if (args.size() != 1 || args[0].is_string) {
                    return fail(name + " takes one number");
                }
                value = {};
                value.number = f.fn(args[0].number);
                if (!std::isfinite(value.number)) {
                    return fail(name + "(" + format_number(args[0].number) +
                                ") is not a finite number");
                }
                return true;
            }
        }
        if (name == "atan2" || name == "min" || name == "max") {
            if (args.size() != 2 || args[0].is_string || args[1].is_string) {
                return fail(name + " takes two numbers");
            }
            value = {};
            const double a = args[0].number, b = args[1].number;
            value.number = name == "atan2" ? std::atan2(a, b)
                           : name == "min" ? std::min(a, b)
                                           : std::max(a, b);
            return true;
        }
        return fail("unknown function '" + name + "'");
    }

    bool primary(ValfoldValue& value) {
        skip();
        if (pos >= text.size()) {
            return fail("expression ends too early");
        }
        const char c = text[pos];
        if (c == '(') {
            ++pos;
            const Nesting nesting(*this);
            if (!nesting.ok() || !expression(value)) {
                return false;
            }
            skip();
            if (pos >= text.size() || text[pos] != ')') {
                return fail("missing ')'");
            }
            ++pos;
            return true;
        }
        if (c == '"' || c == '\'') {
            const size_t close = text.find(c, pos + 1);
            if (close == std::string_view::npos) {
                return fail("unterminated string");
            }
            value = {};
            value.is_string = true;
            value.text = std::string(text.substr(pos + 1, close - pos - 1));
            pos = close + 1;
            return true;
        }
        if (std::isdigit(static_cast<unsigned char>(c)) || c == '.') {
            double number = 0;
            const auto [ptr, ec] =
                std::from_chars(text.data() + pos, text.data() + text.size(), number);
            if (ec != std::errc()) {
                return fail("bad number at '" + excerpt(text.substr(pos)) + "'");
            }
            pos = static_cast<size_t>(ptr - text.data());
            value = {};
            value.number = number;
            return true;
        }
        std::string name;
        if (identifier(name)) {
            skip();
            if (pos < text.size() && text[pos] == '(') {
                ++pos;
                const Nesting nesting(*this);
                if (!nesting.ok()) {
                    return false;
                }
                std::vector<ValfoldValue> args;
                skip();
                if (pos < text.size() && text[pos] == ')') {
                    ++pos;
                } else {
                    for (;;) {
                        ValfoldValue arg;
                        if (!expression(arg)) {
                            return false;
                        }
                        args.push_back(std::move(arg));
                        skip();
                        if (pos < text.size() && text[pos] == ',') {
                            ++pos;
                            continue;
                        }
                        if (pos < text.size() && text[pos] == ')') {
                            ++pos;
                            break;
                        }
                        return fail("missing ')' after the arguments of " + name);
                    }
                }
                return call(name, args, value);
            }
            if (name == "pi" || name == "PI") {
                value = {};
                value.number = std::numbers::pi;
                return true;
            }
            if (name == "e") {
                value = {};
                value.number = std::numbers::e;
                return true;
            }
            if (auto it = pending.find(name); it != pending.end()) {
                value = it->second;
                return true;
            }
            if (auto it = vars.find(name); it != vars.end()) {
                value = it->second;
                return true;
            }
            return fail("undefined variable '" + name + "'");
        }
        return fail(std::string("unexpected '") + c + "'");
    }

    std::string_view text;
    size_t pos = 0;
    int depth = 0;
    const std::map<std::string, ValfoldValue>& vars;
    std::map<std::string, ValfoldValue>& pending;
};

} // namespace

bool Valfold::commit(std::map<std::string, ValfoldValue>& pending, std::string& error_text) {
    size_t count = variables.size();
    size_t chars = text_chars;
    for (const auto& [name, v] : pending) {
        auto it = variables.find(name);
        if (it == variables.end()) {
            ++count;
        } else {
            chars -= it->second.text.size();
        }
        chars += v.text.size();
    }
    if (count > kMaxValfoldVariables) {
        error_text =
            "a session holds at most " + std::to_string(kMaxValfoldVariables) + " variables";
        return false;
    }
    if (chars > kMaxValfoldTotal) {
        error_text = "the variables of a session hold at most " + std::to_string(kMaxValfoldTotal) +
                     " characters of text";
        return false;
    }
    for (auto& [name, v] : pending) {
        variables[name] = std::move(v);
    }
    text_chars = chars;
    return true;
}

void Valfold::set(const std::string& name, ValfoldValue value) {
    std::map<std::string, ValfoldValue> pending{{name, std::move(value)}};
    std::string ignored;
    commit(pending, ignored);
}

bool Valfold::evaluate(std::string_view statement, ValfoldValue& value, bool& defined,
                       std::string& error_text) {
    std::map<std::string, ValfoldValue> pending;
    Evaluator evaluator(statement, variables, pending);
    bool was_defined = false;
    if (!evaluator.statement(value, was_defined)) {
        error_text = evaluator.error_text;
        return false;
    }
    if (!commit(pending, error_text)) {
        return false;
    }
    defined = defined || was_defined;
    return true;
}

bool Valfold::substitute(std::string_view line, std::string& out, bool& defined,
                         std::string& error_text) {
    out.clear();
    std::map<std::string, ValfoldValue> pending;
    bool any_defined = false;
    char quote = 0;
    size_t i = 0;
    while (i < line.size()) {
        const char c = line[i];
        if (c == '#' && i + 1 < line.size() && line[i + 1] == '{') {
            // Find the closing brace, skipping quoted text inside the expression.
            size_t j = i + 2;
            char inner = 0;
            while (j < line.size() && (inner || line[j] != '}')) {
                if (inner && line[j] == inner) {
                    inner = 0;
                } else if (!inner && (line[j] == '"' || line[j] == '\'')) {
                    inner = line[j];
                }
                ++j;
            }
            if (j >= line.size()) {
                error_text = "missing '}' after '#{'";
                return false;
            }
            const std::string_view statement = line.substr(i + 2, j - i - 2);
            Evaluator evaluator(statement, variables, pending);
            ValfoldValue value;
            bool was_defined = false;
            if (!evaluator.statement(value, was_defined)) {
                error_text = "in #{" + excerpt(statement) + "}: " + evaluator.error_text;
                return false;
            }
            any_defined = any_defined || was_defined;
            if (!was_defined) {
                out += value.to_string();
            }
            if (out.size() > kMaxValfoldLine) {
                error_text = "the line grows beyond " + std::to_string(kMaxValfoldLine) +
                             " characters through its #{...}";
                return false;
            }
            i = j + 1;
            continue;
        }
        if (quote) {
            if (c == quote) {
                quote = 0;
            }
        } else if (c == '"' || c == '\'') {
            quote = c;
        } else if (c == '#') {
            break; // a comment: the rest of the line is not evaluated
        }
        out += c;
        ++i;
    }
    if (!commit(pending, error_text)) {
        return false;
    }
    defined = any_defined;
    return true;
}

bool Valfold::get(const std::string& name, ValfoldValue& value) const {
    auto it = variables.find(name);
    if (it == variables.end()) {
        return false;
    }
    value = it->second;
    return true;
}

std::vector<std::string> Valfold::names() const {
    std::vector<std::string> list;
    for (const auto& [name, value] : variables) {
        list.push_back(name);
    }
    return list;
}

} // namespace tarvo::kernel
