#pragma once
// The kernel's whole public API: a flat, value-typed set of functions in namespace
// TarvoInterface. Entities are (type name, id) pairs; outputs are filled by reference.
//
// Threading: every function must be called from the one thread that called init() (the worker
// thread in the server), except set_tarvo_interrupt(true), which any thread may call.
// No function throws: failures are printed through TarvoMessage, counted in get_error_count(),
// and returned as the function's failure value.

#include "tarvo/TIObserve.h"
#include "tarvo_util/TarvoProgressHandler.h"

#include <array>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace TarvoInterface {

// ---- Session -------------------------------------------------------------------------------

// Starts the session; blocks until it is up. Arguments as on a command line, the first being the
// program name ("-driver offscreen" selects headless graphics). False when it could not start.
bool init(const std::vector<std::string>& arguments);
// Ends the session. Returns 0.
int destroy();
bool is_initialized();
// Ask the running operation to stop. Thread-safe; cleared when the next command starts.
void set_tarvo_interrupt(bool interrupt);
bool get_tarvo_interrupt();
void set_progress_handler(std::shared_ptr<TarvoProgressHandler> handler);

} // namespace TarvoInterface
