#pragma once
// The mesh module: the model's mesh (MeshState), the operations that change it, and its hooks
// into the session (entity catalog for node, edge, tri, quad, tet, hex, wedge, pyramid, sphere;
// undo participant "mesh"; commands).
//
// Contract
// - Every meshed entity has its whole boundary meshed: a volume's surfaces, curves and vertices
//   each hold a piece, and the volume's elements use their nodes. Meshing keeps what is meshed
//   and meshes only what is not, lower dimensions first, so a new mesh conforms to every
//   neighbour meshed before it.
// - A piece remembers the shape of its owner. When the geometry changes under it (moved, cut,
//   merged, deleted), the piece and every piece built on it are dropped at the end of the command
//   (drop_stale()); undo brings geometry and mesh back together.
// - Operations print what they did, or print one error and return false; a command that fails
//   is rolled back by the session (this module's snapshot is a copy of MeshState's maps).
//
// Threading: kernel thread only.

#include "core/EntityCatalog.h"
#include "core/Undo.h"
#include "geometry/GeometryModel.h"
#include "mesh/MeshDatabase.h"
#include "mesh/NewMesh.h"
#include "tarvo/TarvoTypes.h"

#include <TopoDS_Shape.hxx>

#include <functional>
#include <map>
#include <memory>
#include <vector>

namespace tarvo::kernel::mesh {

class MeshModule : public EntityCatalog, public UndoParticipant {
public:
    MeshState& state() { return state_; }
    const MeshState& state() const { return state_; }

    // Meshes the listed volumes, surfaces and curves (bodies: their volumes), after the unmeshed
    // parts of their boundaries. Reports progress per entity and stops between entities when
    // interrupted (the session then rolls the whole command back).
    bool mesh(const std::vector<EntityKey>& list);
    // Meshes the listed surfaces and volumes again with every interval of their curves halved
    // and half their element sizes. Refused when a mesh outside the list uses their boundary.
    bool refine(const std::vector<EntityKey>& list);
    // Deletes the meshes of the listed entities and of everything built on them; with
    // `propagate` also the meshes of their boundaries that nothing else meshed uses.
    bool delete_mesh(const std::vector<EntityKey>& list, bool propagate);

    // Gives the new mesh of `owner` its ids and stores it (replacing any earlier piece), with the
    // owner's present shape. The entries of `mesh` that name new nodes become their ids.
    const MeshPiece& publish(Owner owner, NewMesh mesh, const std::string& scheme);

    // Drops pieces whose owner no longer has the shape it was meshed on, and pieces built on
    // them. Returns the number dropped.
    int drop_stale();

    // The geometry entities on the boundary of (dim, id), one level down.
    std::vector<int> boundary(int dim, int id) const;
    // Entities one level up that (dim, id) bounds.
    std::vector<int> cobounds(int dim, int id) const;
    // Pieces of the owner and everything on its boundary, all levels.
    std::vector<const MeshPiece*> closure(Owner owner) const;

    // Mid-nodes of higher-order elements (MidNodes.cpp). `wanted` lists, per owner of elements,
    // the keys its elements need. Each node goes to the lowest entity it lies on: an edge of a
    // curve's mesh to the curve, an edge or face of a surface's mesh to the surface (so
    // neighbouring volumes share it), anything else to the elements' owner. On a curve or a
    // surface a node is the corners' mean projected onto the geometry; inside, the mean itself.
    // A mid piece whose keys are all still wanted and nothing more is kept with its ids; the
    // others are made again, and mid pieces of owners that want none go. Returns the number of
    // nodes made.
    int sync_mid_nodes(const std::map<Owner, std::vector<MidKey>>& wanted);
    // Runs after every command, once stale pieces have gone: the fe module, which knows the
    // element types, plans the mid-nodes there. Empty: none.
    void set_after_command(std::function<void()> hook) { after_command_ = std::move(hook); }
    void after_command() {
        if (after_command_)
            after_command_();
    }

    // ---- EntityCatalog -------------------------------------------------------------------------
    bool handles(std::string_view type) const override;
    std::vector<int> all_ids(std::string_view type) const override;
    bool exists(std::string_view type, int id) const override;
    std::vector<int> relatives(std::string_view source_type, int id,
                               std::string_view target_type) const override;
    std::string name_of(std::string_view, int) const override { return {}; }

    // ---- UndoParticipant -----------------------------------------------------------------------
    std::string participant_name() const override { return "mesh"; }
    std::unique_ptr<UndoSnapshot> save_state() override;
    void restore_state(const UndoSnapshot& snapshot) override;
    void clear_state() override;

    // What the last `mesh` command could not mesh, one record per failure (kept through the
    // rollback of that command, replaced by the next one).
    void add_mesh_error(const std::string& type, int id, const std::string& text);
    std::vector<TarvoInterface::MeshErrorFeedback*> mesh_errors();

    // The shapes the pieces were meshed on (kept beside the state, snapshotted with it).
    std::map<Owner, TopoDS_Shape>& shapes() { return shapes_; }

    // What the last `quality ... draw` coloured, for the views: a view setting, not part of the
    // model (no undo), cleared by `quality draw clear` and by a reset. `stamp` changes with
    // every new drawing.
    struct DrawnQuality {
        std::string metric;
        bool low_is_bad = true;
        std::vector<std::pair<ElemKind, int>> elements;
        std::vector<double> values;
        std::uint64_t stamp = 0;
    };
    DrawnQuality& drawn_quality() { return drawn_quality_; }

private:
    MeshState state_;
    std::map<Owner, TopoDS_Shape> shapes_;
    std::vector<std::unique_ptr<TarvoInterface::MeshErrorFeedback>> errors_;
    std::function<void()> after_command_;
    DrawnQuality drawn_quality_;
};

// The live module between init_mesh_module() and shutdown_mesh_module(); null otherwise.
MeshModule* mesh_module();
GeomKind kind_of_dim(int dim);
int dim_of_kind(GeomKind kind); // -1 for a body

void register_mesh_commands();
// The mesh's and the sizing's sections of the native file (MeshFile.cpp).
void register_mesh_file_sections();

} // namespace tarvo::kernel::mesh

namespace tarvo::kernel {
void init_mesh_module();
void shutdown_mesh_module();
} // namespace tarvo::kernel
