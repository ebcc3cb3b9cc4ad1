#include "fe/ExodusExtras.h"

#include <utility>

namespace tarvo::kernel::fe {

namespace {
ExodusExtrasProvider g_provider;
} // namespace

void set_exodus_extras_provider(ExodusExtrasProvider provider) {
    g_provider = std::move(provider);
}

ExodusExtras exodus_extras() {
    return g_provider ? g_provider() : ExodusExtras{};
}

} // namespace tarvo::kernel::fe
