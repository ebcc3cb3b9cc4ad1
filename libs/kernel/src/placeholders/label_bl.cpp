// Kernel functions of this family that are not written yet: labels, comparison, sculpt defaults and
// boundary layers.
//
// Each STUB line defines one function of tarvo/TarvoInterface.h that prints
// "ERROR: <name> is not available in this kernel yet." and answers its failure value, and lists
// it in TarvoInterface::not_built_functions(). Delete the STUB line when you define the function
// (a forgotten line shows up as a multiple-definition error at link time).

#include "placeholders/Stub.h"

namespace TarvoInterface {

STUB(get_coordinate_systems_id_list, (), std::vector<int>)
STUB_VOID(compare_geometry_and_mesh,
          (const std::vector<int>&, const std::vector<int>&, const std::vector<int>&,
           const std::vector<int>&, double, int&, int&, std::vector<int>&, std::vector<int>&, int&))
STUB(get_dbl_sculpt_default, (const std::string&), double)
STUB(get_int_sculpt_default, (const std::string&), int)
STUB(get_bool_sculpt_default, (const std::string&), bool)
STUB(get_string_sculpt_default, (const std::string&), std::string)
STUB_ID(get_next_boundary_layer_id, ())
STUB(is_boundary_layer_id_available, (int), bool)
STUB(get_boundary_layer_algorithm, (int), std::string)
STUB(get_boundary_layer_uniform_parameters, (int, double&, double&, int&), bool)
STUB(get_boundary_layer_aspect_first_parameters, (int, double&, double&, int&), bool)
STUB(get_boundary_layer_aspect_last_parameters, (int, double&, int&, double&), bool)
STUB(get_boundary_layer_curve_surface_pairs, (int, std::vector<int>&, std::vector<int>&), bool)
STUB(get_boundary_layer_surface_volume_pairs, (int, std::vector<int>&, std::vector<int>&), bool)
STUB(get_boundary_layer_vertex_intersection_types,
     (std::vector<int>&, std::vector<int>&, std::vector<std::string>&), bool)
STUB(get_boundary_layer_curve_intersection_types,
     (std::vector<int>&, std::vector<int>&, std::vector<std::string>&), bool)
STUB(get_boundary_layer_continuity, (int), bool)
STUB(get_boundary_layer_id_list, (), std::vector<int>)

} // namespace TarvoInterface
