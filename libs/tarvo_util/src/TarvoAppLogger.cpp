#include "tarvo_util/TarvoAppLogger.h"

#include <cstdio>

namespace TarvoAppLogger {
void app_log_info(const std::string& text) { std::fprintf(stderr, "[info] %s\n", text.c_str()); }
void app_log_error(const std::string& text) { std::fprintf(stderr, "[error] %s\n", text.c_str()); }
} // namespace TarvoAppLogger
