// Start and end of the diagnostics module: registers its commands, catalog and undo participant.

namespace tarvo::kernel {

void init_diagnostics_module() {}
void shutdown_diagnostics_module() {}

} // namespace tarvo::kernel
