// Start and end of the bc module: registers its commands, catalog and undo participant.

namespace tarvo::kernel {

void init_bc_module() {}
void shutdown_bc_module() {}

} // namespace tarvo::kernel
