// Kernel functions of this family that are not written yet: geometry queries.
//
// Each STUB line defines one function of tarvo/TarvoInterface.h that prints
// "ERROR: <name> is not available in this kernel yet." and answers its failure value, and lists
// it in TarvoInterface::not_built_functions(). Delete the STUB line when you define the function
// (a forgotten line shows up as a multiple-definition error at link time).

#include "placeholders/Stub.h"

namespace TarvoInterface {

STUB(get_source_surfaces, (int), std::vector<int>)
STUB(get_target_surfaces, (int), std::vector<int>)
STUB(project_unit_square, (const std::vector<std::vector<double>>&, int, int, int, int),
     std::vector<std::vector<double>>)
STUB(is_interval_count_odd, (int), bool)
STUB_VOID(get_periodic_data, (const std::string&, int, double&, std::string&, int&, std::string&))
STUB(get_node_constraint, (), bool)
STUB(get_node_constraint_value, (), int)
STUB(get_vertex_type, (int, int), std::string)

} // namespace TarvoInterface
