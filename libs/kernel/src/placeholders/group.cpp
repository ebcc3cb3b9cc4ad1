// Kernel functions of this family that are not written yet: entity identity (groups are in fe/).
//
// Each STUB line defines one function of tarvo/TarvoInterface.h that prints
// "ERROR: <name> is not available in this kernel yet." and answers its failure value, and lists
// it in TarvoInterface::not_built_functions(). Delete the STUB line when you define the function
// (a forgotten line shows up as a multiple-definition error at link time).

#include "placeholders/Stub.h"

namespace TarvoInterface {

STUB_ID(get_last_id, (const std::string&))
STUB(get_idless_signature, (const std::string&, int), std::string)
STUB(get_idless_signatures, (const std::string&, const std::vector<int>&), std::string)

} // namespace TarvoInterface
