#include "tarvo_util/TarvoString.h"

#include <cstdio>
#include <vector>

TarvoString TarvoString::number(double value, int width, int precision) {
    if (precision < 0)
        precision = 0;
    // Most numbers fit on the stack; very wide fields or huge values take a second pass.
    char small[128];
    const int needed = std::snprintf(small, sizeof small, "%*.*f", width, precision, value);
    if (needed < 0)
        return TarvoString();
    if (static_cast<size_t>(needed) < sizeof small)
        return TarvoString(std::string(small, static_cast<size_t>(needed)));
    std::vector<char> large(static_cast<size_t>(needed) + 1);
    std::snprintf(large.data(), large.size(), "%*.*f", width, precision, value);
    return TarvoString(std::string(large.data(), static_cast<size_t>(needed)));
}

TarvoString TarvoString::number(int value) { return TarvoString(std::to_string(value)); }
