#pragma once
// Application log lines on standard error, for diagnostics that are not kernel output.

#include <string>

namespace TarvoAppLogger {
void app_log_info(const std::string& text);
void app_log_error(const std::string& text);
} // namespace TarvoAppLogger
