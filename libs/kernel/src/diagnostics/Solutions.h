#pragma once
// Repair advice: for one found problem, the commands of the kernel's language that remove it.
// Each answer is a list of solutions, each {command line, description}; the command runs as given
// (`cmd`). A solution is offered only where its operation applies (a surface is advised for
// removal only when removing it from a copy of its body succeeds). Ids are checked by the
// caller. Threading: kernel thread only.

#include <string>
#include <vector>

namespace tarvo::kernel::diagnostics {

using Solutions = std::vector<std::vector<std::string>>;

Solutions small_curve_solutions(int curve, double small_curve_size);
Solutions small_surface_solutions(int surface, double small_curve_size);
Solutions near_vertices_solutions(int vertex_1, int vertex_2);
// Two entities of different bodies close to each other (kind names "vertex", "curve", "surface").
Solutions close_entities_solutions(const char* kind_1, int id_1, const char* kind_2, int id_2);
Solutions overlapping_volumes_solutions(int volume_1, int volume_2);
Solutions imprint_merge_solutions(int surface_1, int surface_2);
Solutions blend_solutions(int surface);
// Sweep advice: the scheme command for the first feasible pair, and that pair.
Solutions sweep_solutions(int volume, std::vector<int>& sources, std::vector<int>& targets);
// Every pair of surfaces of the volume that share no curve, split into those the sweeper accepts
// and those it refuses.
bool source_target_pairs(int volume, std::vector<std::vector<int>>& feasible_sources,
                         std::vector<std::vector<int>>& feasible_targets,
                         std::vector<std::vector<int>>& infeasible_sources,
                         std::vector<std::vector<int>>& infeasible_targets);
// Steps to run in order, not alternatives: for each listed volume that does not sweep, the
// fewest webcuts (at most three) after which every piece sweeps, by the planes of its planar
// surfaces at concave curves whose angle inside the material exceeds `exterior_angle`; with
// `imprint_merge`, last, the merge (`tolerant`: merge tolerant) of the pieces. Volumes that sweep,
// or that no such cuts decompose, get no steps.
Solutions decomposition_solutions(const std::vector<int>& volumes, double exterior_angle,
                                  bool imprint_merge, bool tolerant);
// A tolerance a little above `distance`, written with two significant digits.
std::string tolerance_above(double distance);

} // namespace tarvo::kernel::diagnostics
