// Kernel functions of this family that are not written yet: geometry queries.
//
// Each STUB line defines one function of tarvo/TarvoInterface.h that prints
// "ERROR: <name> is not available in this kernel yet." and answers its failure value, and lists
// it in TarvoInterface::not_built_functions(). Delete the STUB line when you define the function
// (a forgotten line shows up as a multiple-definition error at link time).

#include "placeholders/Stub.h"

namespace TarvoInterface {

STUB_VOID(get_periodic_data, (const std::string&, int, double&, std::string&, int&, std::string&))

} // namespace TarvoInterface
