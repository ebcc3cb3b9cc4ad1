// Fuzz target of the variable evaluator (`#{...}` in command lines). One input is a few lines
// run through one fresh Valfold in order, so that definitions of one line feed the next. Beyond
// crashes, stack overflow and sanitizer faults it checks the evaluator's promises:
//  - a line that fails changes no variable, nor does one that reports no definition;
//  - every number a variable holds is finite, and prints in a form that reads back exactly;
//  - the text limits hold.

#include "core/Valfold.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <string_view>

namespace {

using tarvo::kernel::Valfold;
using tarvo::kernel::ValfoldValue;

// At most this many lines per input: enough for definitions to build on each other.
constexpr size_t kMaxLines = 16;

[[noreturn]] void fault(const char* what, std::string_view line) {
    std::fprintf(stderr, "fuzz_valfold: %s\nline: %.*s\n", what, static_cast<int>(line.size()),
                 line.data());
    __builtin_trap();
}

std::map<std::string, ValfoldValue> variables(const Valfold& valfold) {
    std::map<std::string, ValfoldValue> all;
    for (const std::string& name : valfold.names()) {
        valfold.get(name, all[name]);
    }
    return all;
}

bool same(const std::map<std::string, ValfoldValue>& a,
          const std::map<std::string, ValfoldValue>& b) {
    if (a.size() != b.size()) {
        return false;
    }
    for (auto i = a.begin(), j = b.begin(); i != a.end(); ++i, ++j) {
        if (i->first != j->first || i->second.is_string != j->second.is_string ||
            i->second.text != j->second.text ||
            (!i->second.is_string && i->second.number != j->second.number)) {
            return false;
        }
    }
    return true;
}

void check_values(const std::map<std::string, ValfoldValue>& all, std::string_view line) {
    size_t text = 0;
    for (const auto& [name, value] : all) {
        if (value.is_string) {
            if (value.text.size() > tarvo::kernel::kMaxValfoldString) {
                fault("a string variable is over the limit", line);
            }
            text += value.text.size();
            continue;
        }
        if (!std::isfinite(value.number)) {
            fault("a variable holds a number that is not finite", line);
        }
        const std::string printed = tarvo::kernel::format_number(value.number);
        if (std::strtod(printed.c_str(), nullptr) != value.number) {
            fault("a number does not read back from its printed form", line);
        }
    }
    if (all.size() > tarvo::kernel::kMaxValfoldVariables ||
        text > tarvo::kernel::kMaxValfoldTotal) {
        fault("the variables are over their limits", line);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    Valfold valfold;
    size_t start = 0;
    for (size_t n = 0; n < kMaxLines && start <= input.size(); ++n) {
        size_t end = input.find('\n', start);
        if (end == std::string_view::npos) {
            end = input.size();
        }
        const std::string_view line = input.substr(start, end - start);
        start = end + 1;

        const auto before = variables(valfold);
        std::string out, error_text;
        bool defined = false;
        if (valfold.substitute(line, out, defined, error_text)) {
            if (out.size() > tarvo::kernel::kMaxValfoldLine) {
                fault("a substituted line is over the limit", line);
            }
            const auto after = variables(valfold);
            if (!defined && !same(before, after)) {
                fault("a line changed a variable without saying so", line);
            }
            check_values(after, line);
        } else {
            if (error_text.empty()) {
                fault("a failed line says nothing", line);
            }
            if (!same(before, variables(valfold))) {
                fault("a failed line changed a variable", line);
            }
        }
    }
    return 0;
}
