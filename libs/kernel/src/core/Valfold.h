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
// Threading: kernel thread only.

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace tarvo::kernel {

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
    void set(const std::string& name, ValfoldValue value) { variables[name] = std::move(value); }
    std::vector<std::string> names() const;
    void clear() { variables.clear(); }

private:
    std::map<std::string, ValfoldValue> variables;
};

// Shortest text that reads back as the same double ("2.5", "3", "1e+20").
std::string format_number(double value);

} // namespace tarvo::kernel
