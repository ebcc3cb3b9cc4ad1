// Start and end of the exchange module: registers its commands, catalog and undo participant.

namespace tarvo::kernel {

void init_exchange_module() {}
void shutdown_exchange_module() {}

} // namespace tarvo::kernel
