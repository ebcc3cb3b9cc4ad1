#pragma once
// Public functions of the kernel: interfaces. The conventions of the whole API
// are in tarvo/TarvoInterface.h, which includes every family.

#include "tarvo/MaterialInterface.h"
#include "tarvo/TarvoTypes.h"

#include <string>

namespace TarvoInterface {

// ---- Interfaces -------------------------------------------------------------------------------

// The named interface ("Material": a MaterialInterface), or null for an unknown name. Give it
// back with release_interface.
TarvoBaseInterface* get_interface(const std::string& name);
// Gives back an interface from get_interface. Null is ignored.
void release_interface(TarvoBaseInterface* instance);

} // namespace TarvoInterface
