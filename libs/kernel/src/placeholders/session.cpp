// Kernel functions of this family that are not written yet: session state, commands and journal.
//
// Each STUB line defines one function of tarvo/TarvoInterface.h that prints
// "ERROR: <name> is not available in this kernel yet." and answers its failure value, and lists
// it in TarvoInterface::not_built_functions(). Delete the STUB line when you define the function
// (a forgotten line shows up as a multiple-definition error at link time).

#include "placeholders/Stub.h"

namespace TarvoInterface {

// All of this family is defined now (the mesh questions in src/mesh/, the graphics version in
// src/view/).

} // namespace TarvoInterface
