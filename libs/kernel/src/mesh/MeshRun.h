#pragma once
// One `mesh` command's work, shared by the files of the mesher: the plan (MeshPlan.cpp: what to
// mesh and each volume's method), the meshing itself (Mesher.cpp) and `refine` (MeshRefine.cpp).
// Internal to the mesh module.
//
// Threading: kernel thread only (Gmsh too).

#include "core/Session.h"
#include "geometry/GeometryGmsh.h"
#include "geometry/GeometryModule.h"
#include "mesh/MeshModule.h"
#include "mesh/Sizing.h"

#include <array>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

namespace tarvo::kernel::mesh {

inline GeometryModel& model() {
    return geometry_module()->model();
}

// How a run departs from the sizing: `refine` gives curves their new interval lengths (in order
// of the curve's parameter) and shrinks the target sizes of surfaces and volumes.
struct RunOptions {
    std::map<int, std::vector<double>> curve_lengths;
    double size_factor = 1.0;
};

// One mesh command's work: the plan of what to mesh, the Gmsh session, the new pieces.
class MeshRun {
public:
    explicit MeshRun(MeshModule& module, RunOptions options = {})
        : m(module), options(std::move(options)) {}

    bool run(const std::vector<EntityKey>& list);
    // The plan of `mesh volume <id>` alone, as a question: whether its scheme can be carried out
    // on its geometry and sizes. Prints and records nothing; `why` says what stops it.
    bool plannable(int volume, std::string& why);

private:
    bool plan(const std::vector<EntityKey>& list);
    // Prints the error and records it against the entity being meshed (get_mesh_errors); a
    // question (plannable) keeps it instead.
    bool fail(const std::string& text) {
        if (question) {
            *question = text;
            return false;
        }
        m.add_mesh_error(owner_word(current.dim), current.id, text);
        return error(text);
    }
    std::string* question = nullptr;
    bool mesh_vertices();
    bool start_gmsh();
    bool give_back_curves();
    bool mesh_curves();
    bool mesh_degenerate_curves();
    std::string surface_method(int id);
    bool opposite_sides_match(int id) const;
    bool mesh_surfaces(const std::vector<int>& ids);
    bool mesh_volume(int id);
    bool mesh_volume_tets(int id, NewMesh& out);
    void add_pyramids(int volume, const ElemBlock& quads, NewMesh& out,
                      std::vector<std::size_t>& apex_tags, std::vector<double>& apex_xyz,
                      std::vector<std::size_t>& skin);
    bool read_gmsh_piece(int dim, int tag, NewMesh& out, bool with_params);
    void set_visible(const std::vector<std::pair<int, int>>& keep);
    std::pair<int, int> tag_of(int dim, int id) const;
    void done(Owner owner, const MeshPiece& piece);

    double size_of(GeomKind kind, int id) const {
        return target_size(kind, id) * options.size_factor;
    }

    MeshModule& m;
    RunOptions options;
    std::array<std::vector<int>, 4> todo; // unmeshed entities per dimension, ascending
    std::set<Owner> listed;               // what the user named (reported one line each)
    enum class Method { Sweep, Map, Tets };
    static const char* method_word(Method m) {
        return m == Method::Sweep ? "sweep" : m == Method::Map ? "map" : "tetmesh";
    }
    bool logical_cube(int volume) const;
    void make_even(int volume, int source, int target);
    std::map<int, int> extra;     // curves given more intervals than the sizing asks (make_even)
    std::map<int, Method> method; // per volume to mesh
    std::map<int, std::pair<int, int>> sweep_pairs; // volume -> (source, target)
    std::set<int> mapped, paved;                    // surfaces whose volume's method needs quads
    std::map<int, int> linking;                     // linking surface of a sweep -> its volume
    std::set<int> claimed;                          // surfaces that a sweep of this run makes
    std::set<int> triangulated;                     // surfaces of tet volumes
    GmshMap gmap;
    std::string geo_model;
    // Gmsh node tag -> node id, for nodes that Gmsh made in this run (given nodes keep their id
    // as their tag).
    std::unordered_map<std::size_t, int> node_of_tag;
    int total = 0, finished = 0;
    Owner current; // the entity being meshed, for error records
    std::unique_ptr<Progress> progress;
};

} // namespace tarvo::kernel::mesh
