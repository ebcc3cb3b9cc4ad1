#include "tarvo_util/TarvoString.h"

#include <cstdio>
#include <vector>

TarvoString TarvoString::number(double value, int width, int precision) {
    if (precision < 0)
        precision = 0;
    const int needed = std::snprintf(nullptr, 0, "%*.*f", width, precision, value);
    std::vector<char> buffer(static_cast<size_t>(needed) + 1);
    std::snprintf(buffer.data(), buffer.size(), "%*.*f", width, precision, value);
    return TarvoString(std::string(buffer.data(), static_cast<size_t>(needed)));
}

TarvoString TarvoString::number(int value) { return TarvoString(std::to_string(value)); }
