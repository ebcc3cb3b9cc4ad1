#pragma once
// Variables and expressions of the command language: `#{r = 2.5}` defines, `#{r}` substitutes,
// `#{2*r + 1}` evaluates. Values are numbers or strings.
//
//   statement := name '=' expr | expr
//   expr      := term (('+' | '-') term)*       '+' of a string and anything concatenates
//   term      := power (('*' | '/') power)*
//   power     := unary ['^' power]              right-associative
//   unary     := ('-' | '+') unary | primary
//   primary   := number | string | name | name '(' expr (',' expr)* ')' | '(' expr ')'
//
// Functions: sqrt sin cos tan asin acos atan atan2 exp log log10 abs floor ceil min max, and
// sind cosd tand taking degrees; sin/cos/tan take radians. Constants pi, PI, e.
// A definition substitutes to nothing, so a line holding only definitions runs no command.
// Numbers substitute in their shortest exact form ("2.5", "3", "0.1").
//
// Limits, each refused with an error and no variable changed: nesting deeper than
// kMaxValfoldNesting levels (each parenthesis, function call, unary sign and '^' of a chain is
// one; the evaluator is recursive and runs on the kernel thread's stack), strings longer than
// kMaxValfoldString characters, a substituted line longer than kMaxValfoldLine, results that are
// not finite numbers, and more than kMaxValfoldVariables variables or kMaxValfoldTotal characters
// of text in all of them.
//
// Threading: kernel thread only.

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace tarvo::kernel {

inline constexpr int kMaxValfoldNesting = 200;
inline constexpr size_t kMaxValfoldString = size_t{1} << 20;
inline constexpr size_t kMaxValfoldLine = 2 * kMaxValfoldString;
inline constexpr size_t kMaxValfoldVariables = 10000;
inline constexpr size_t kMaxValfoldTotal = size_t{64} << 20;

struct ValfoldValue {
    bool is_string = false;
    double number = 0;
    std::string text;

    std::string to_string() const;
};

class Valfold {
public:
    // Replaces every #{...} of `line` by its value. `defined` is set when a variable was defined
    // or changed. False with `error_text` on a bad expression or an unknown variable; then no
    // variable has changed.
    bool substitute(std::string_view line, std::string& out, bool& defined,
                    std::string& error_text);

    // Evaluates one statement (the text between the braces).
    bool evaluate(std::string_view statement, ValfoldValue& value, bool& defined,
                  std::string& error_text);

    bool get(const std::string& name, ValfoldValue& value) const;
    // Ignored when it would break the limits on the variables.
    void set(const std::string& name, ValfoldValue value);
    std::vector<std::string> names() const;
    void clear() {
        variables.clear();
        text_chars = 0;
    }

private:
    // Takes the definitions of a line over, unless the variables would then be more than
    // kMaxValfoldVariables or hold more than kMaxValfoldTotal characters of text.
    bool commit(std::map<std::string, ValfoldValue>& pending, std::string& error_text);

    std::map<std::string, ValfoldValue> variables;
    size_t text_chars = 0; // of all string values
};

// Shortest text that reads back as the same double ("2.5", "3", "1e+20").
std::string format_number(double value);

} // namespace tarvo::kernel
