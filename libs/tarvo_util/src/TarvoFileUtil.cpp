#include "tarvo_util/TarvoFileUtil.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <system_error>

namespace fs = std::filesystem;

namespace TarvoFileUtil {

std::string get_current_working_directory() {
    std::error_code error;
    std::string path = fs::current_path(error).string();
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    return path;
}

bool set_current_working_directory(const std::string& path) {
    std::error_code error;
    fs::current_path(path, error);
    return !error;
}

bool file_exists(const std::string& path) {
    std::error_code error;
    return fs::is_regular_file(path, error);
}

std::string extension(const std::string& path) {
    std::string ext = fs::path(path).extension().string();
    if (!ext.empty() && ext.front() == '.')
        ext.erase(0, 1);
    std::transform(ext.begin(), ext.end(), ext.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return ext;
}

std::string absolute_path(const std::string& path) {
    std::error_code error;
    fs::path result = fs::absolute(path, error);
    return error ? path : result.lexically_normal().string();
}

} // namespace TarvoFileUtil
