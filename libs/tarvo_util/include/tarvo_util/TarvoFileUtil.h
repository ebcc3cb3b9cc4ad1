#pragma once
// File-system helpers shared by kernel and server.

#include <string>

namespace TarvoFileUtil {
// The process's working directory, with a trailing separator removed.
std::string get_current_working_directory();
// False (and errno set) when the directory can't be entered.
bool set_current_working_directory(const std::string& path);
bool file_exists(const std::string& path);
// Lower-case extension without the dot, "" when there is none.
std::string extension(const std::string& path);
// `path` made absolute against the working directory.
std::string absolute_path(const std::string& path);
} // namespace TarvoFileUtil
