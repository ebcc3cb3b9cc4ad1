#pragma once
// Matching of name patterns: '*' stands for any run of characters (none included), '?' for any
// one character; every other character stands for itself. Pure functions, any thread.

#include <cctype>
#include <string_view>

namespace tarvo::kernel {

enum class CaseRule { Sensitive, Insensitive };

// Whether the whole of `text` matches `pattern`. A '*' or '?' in `text` is an ordinary
// character. Iterative, backtracking only to the last '*': constant space, no recursion.
inline bool wildcard_match(std::string_view pattern, std::string_view text, CaseRule rule) {
    auto same = [rule](char a, char b) {
        if (rule == CaseRule::Sensitive)
            return a == b;
        return std::tolower(static_cast<unsigned char>(a)) ==
               std::tolower(static_cast<unsigned char>(b));
    };
    std::size_t p = 0, t = 0, star = std::string_view::npos, mark = 0;
    while (t < text.size()) {
        if (p < pattern.size() &&
            (pattern[p] == '?' || (pattern[p] != '*' && same(pattern[p], text[t])))) {
            ++p;
            ++t;
        } else if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            mark = t;
        } else if (star != std::string_view::npos) {
            p = star + 1;
            t = ++mark;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == '*')
        ++p;
    return p == pattern.size();
}

} // namespace tarvo::kernel
