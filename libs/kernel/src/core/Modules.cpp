#include "core/Modules.h"

// Each module adds its init and shutdown calls below, one line each, declared here so that
// no header of another module is needed.

namespace tarvo::kernel {

void init_geometry_module();
void shutdown_geometry_module();
void init_view_module();
void shutdown_view_module();
// Listing keeps no state of its own: it only registers commands.
void init_listing_module();

void init_modules() {
    init_geometry_module();
    init_view_module();
    init_listing_module();
}

void shutdown_modules() {
    shutdown_view_module();
    shutdown_geometry_module();
}

} // namespace tarvo::kernel
