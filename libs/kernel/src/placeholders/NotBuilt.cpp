#include "placeholders/Stub.h"

#include "core/Session.h"

#include <algorithm>
#include <mutex>
#include <set>

namespace tarvo::kernel {
namespace {
// Filled during static initialisation (one thread), read afterwards from any thread; the mutex
// keeps a late reader safe anyway.
std::mutex& registry_mutex() {
    static std::mutex mutex;
    return mutex;
}
std::set<std::string>& registry() {
    static std::set<std::string> names; // guarded by registry_mutex()
    return names;
}
} // namespace

bool register_not_built(const char* name) {
    std::lock_guard lock(registry_mutex());
    registry().insert(name);
    return true;
}

void report_not_built(const char* name) {
    error(std::string(name) + " is not available in this kernel yet.");
}

} // namespace tarvo::kernel

namespace TarvoInterface {

std::vector<std::string> not_built_functions() {
    std::lock_guard lock(tarvo::kernel::registry_mutex());
    const auto& names = tarvo::kernel::registry();
    return {names.begin(), names.end()};
}

} // namespace TarvoInterface
