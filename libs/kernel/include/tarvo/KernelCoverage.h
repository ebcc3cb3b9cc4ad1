#pragma once
// Which functions of the kernel API are still placeholders. A placeholder prints
// "ERROR: <name> is not available in this kernel yet.", counts the error and answers its failure
// value; it exists so that every declared function links while the kernel is being written.

#include <string>
#include <vector>

namespace TarvoInterface {

// Names of the placeholder functions, sorted and unique. Complete once static initialisation is
// over (each placeholder adds itself); thread-safe to read after that.
std::vector<std::string> not_built_functions();

} // namespace TarvoInterface
