#pragma once
// The finite-element model: element blocks, node sets and side sets, the containers a solver
// reads from the exported mesh, groups (named collections of anything, for the user), and their
// hooks into the session (entity catalog for group, block, nodeset and sideset; undo participant
// "fe"; commands; Exodus II export).
//
// Contract
// - Containers hold geometry, not elements, where they can: a block of volume 1 takes volume 1's
//   elements when it is read (queries, export), so meshing, remeshing or deleting the mesh after
//   the block was made is always reflected. Mesh elements and nodes may also be listed one by one.
// - Every container is an immutable piece (std::shared_ptr<const T>) in a map by id; a change
//   builds a new piece and swaps it in, so a snapshot copies three maps and nothing else.
// - A block holds entities of one dimension (volumes and 3D elements, surfaces and faces, or
//   curves and edges), and its element type, when set, is one of that dimension. A geometry
//   entity is in at most one block. Operations print what they did, or print one error and
//   return false with the model unchanged.
// - Ids are positive; stored entities that have since gone are skipped when read.
// - Global (export) element ids number the blocks' elements 1..N, blocks in ascending id order,
//   each block's elements in the order they are written to the file (layout()).
// - Groups hold any mix of geometry (bodies included), mesh entities and other groups, never
//   themselves through any chain; names are unique among groups, ids follow the kernel's rule
//   (highest ever used plus one). Group changes emit group_created/modified/deleted.
//
// Threading: kernel thread only.

#include "core/Command.h"
#include "core/EntityCatalog.h"
#include "core/Undo.h"
#include "geometry/GeometryModule.h"
#include "mesh/MeshDatabase.h"
#include "mesh/MeshTypes.h"

#include <array>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tarvo::kernel::fe {

using mesh::ElemKind;
enum class MeshFormat; // MeshExport.h

// An entity a container lists: a geometry entity (dim 0..3, kind unused), a mesh element or node,
// or (groups only) a body or a group.
struct Member {
    enum class Type : unsigned char { Geometry, Element, Node, Body, Group } type = Type::Geometry;
    int dim = 0;                   // geometry: 0 vertex .. 3 volume
    ElemKind kind = ElemKind::Hex; // element
    int id = 0;
    auto operator<=>(const Member&) const = default;
};

struct Block {
    int id = 0;
    std::string name;
    std::string description;
    std::string element_type; // "" until set: then the type follows the elements
    std::vector<Member> members;
    std::vector<double> attributes;
    std::vector<std::string> attribute_names;
};

struct NodeSet {
    int id = 0;
    std::string name;
    std::string description;
    std::vector<Member> members; // geometry or nodes
};

struct SideSet {
    int id = 0;
    std::string name;
    std::string description;
    // Surfaces, each with the volume its sides are taken from (0: every volume it bounds).
    std::vector<std::pair<int, int>> surfaces;
};

struct Group {
    int id = 0;
    std::string name;
    std::vector<Member> members; // in the order added
};

struct FeState {
    std::map<int, std::shared_ptr<const Block>> blocks;
    std::map<int, std::shared_ptr<const NodeSet>> nodesets;
    std::map<int, std::shared_ptr<const SideSet>> sidesets;
    std::map<int, std::shared_ptr<const Group>> groups;
    int group_max_id = 0; // highest group id ever given, so a deleted group's id is not reused
};

// Element types a block may be given, one row per name. A higher-order type has mid-nodes
// beyond its corners: `mids` lists, in the Exodus node order, the corners (0-based, Exodus
// order) each extra node is the middle of.
struct ElementType {
    std::string_view name;
    int dim;
    ElemKind kind;
    int nodes; // per element, corners and mid-nodes
    std::vector<std::vector<int>> mids;
};
const std::vector<ElementType>& element_types();
const ElementType* find_element_type(std::string_view name); // any case
std::string_view default_type_name(ElemKind kind);           // the linear type of the kind

// One block as it is written: its elements (all of one kind) in file order.
struct LaidOutBlock {
    const Block* block = nullptr;
    std::string type;
    ElemKind kind = ElemKind::Hex;
    int nodes = 8; // per element as written, mid-nodes included
    std::vector<int> elements;
};
struct Layout {
    std::vector<LaidOutBlock> blocks;
    int element_count = 0;
};

// A side of an element in a side set: (kind, element id, 0-based side index in Exodus order).
struct Side {
    ElemKind kind;
    int element;
    int side;
};

class FeModule : public EntityCatalog, public UndoParticipant {
public:
    const FeState& state() const { return state_; }

    bool block_add(int id, const std::vector<Member>& members);
    bool block_remove(int id, const std::vector<Member>& members);
    bool block_element_type(int id, const std::string& type);
    bool block_name(int id, const std::string& name);
    bool block_attribute_count(int id, int count);
    bool block_attribute(int id, int index, double value, const std::optional<std::string>& name);
    bool nodeset_add(int id, const std::vector<Member>& members);
    bool sideset_add(int id, const std::vector<int>& surfaces, int wrt_volume);
    bool set_name(const std::string& type, int id, const std::string& name); // nodeset, sideset
    // Free text for the user's notes (block, nodeset, sideset); not written to Exodus, which has
    // no place for it.
    bool set_description(const std::string& type, int id, const std::string& text);
    bool remove(const std::string& type, const std::vector<int>& ids);
    // Geometry (dim, old_id) became new_id; 0: it was deleted and leaves every container.
    // Dimension 4 stands for a body (only groups hold bodies).
    void follow_geometry(int dim, int old_id, int new_id);

    // ---- Groups (FeGroups.cpp) -----------------------------------------------------------------
    // The new group's id, or 0 (with an error) when the name is taken or empty.
    int group_create(const std::string& name);
    // Every member must exist, and a group may not end up inside itself.
    bool group_add(int id, const std::vector<Member>& members);
    bool group_remove(int id, const std::vector<Member>& members);
    // Deleted groups also leave the groups that held them.
    bool group_delete(const std::vector<int>& ids);
    void group_raise_max_id(int id);
    int group_by_name(const std::string& name) const; // 0: none
    // Entities of `target` in the group or any group inside it ("volume in group 2"); bodies
    // count with their volumes.
    std::vector<int> group_relatives(int id, std::string_view target) const;
    // Groups that list `m` directly.
    std::vector<int> groups_holding(const Member& m) const;

    // ---- Reading, from the live mesh ---------------------------------------------------------
    // The dimension of what the block holds, or of its element type; -1 when it is empty.
    static int dimension(const Block& block);
    // The block's elements by kind, geometry members first (in order), then listed elements.
    static std::map<ElemKind, std::vector<int>> elements(const Block& block);
    // The type the block is written with: the one set, else that of its elements' kind, else the
    // first type of its dimension; "" for an empty block.
    static std::string type_of(const Block& block);
    // Nodes of the set: its listed nodes and, with `inclusive`, those of its geometry (whole
    // closure). Ascending.
    static std::vector<int> nodes(const NodeSet& set, bool inclusive);
    // Element sides of the set: each face of a listed surface's mesh matched by its nodes to a
    // side of an element of the chosen volumes.
    static std::vector<Side> sides(const SideSet& set);
    // Blocks in ascending id order as they are exported. False with `why` when a block mixes
    // element kinds, or its elements are not of its element type, or an element is in two.
    bool layout(Layout& out, std::string& why) const;

    // Makes the mesh hold exactly the mid-nodes the higher-order blocks need (after every
    // command, and before an export; nothing to do when neither the higher-order blocks nor the
    // mesh changed since the last plan); FeMidNodes.cpp.
    void sync_mid_nodes();
    // The element's nodes as a block of `type` writes them: corners, then mid-nodes in the
    // Exodus order. Empty when a mid-node is missing.
    static std::vector<int> expanded_nodes(const ElementType& type, const int* corners,
                                           const mesh::MidIndex& mids);

    // What a geometry `copy` is to do with the blocks, nodesets and sidesets of what it copies
    // (`which`: 0 block, 1 nodeset, 2 sideset): "ON" (a new container of the same kind for the
    // copies), "USE_ORIGINAL" (the copies join the original's containers) or "OFF" (the default).
    // Kept until reset.
    const std::string& copy_setting(int which) const { return copy_settings_.at(which); }
    bool set_copy_setting(int which, const std::string& value);
    // Acts on the settings after a geometry `copy` (FeFollow.cpp): a container that holds a copied
    // entity gets its copy (USE_ORIGINAL), or a new container of the next free id, with the
    // original's element type, attributes and description, gets the copies (ON). Only geometry
    // members follow: the copy has no mesh.
    void follow_copy(const std::vector<CopiedEntity>& copied);

    // Writes the mesh in `format` through a temporary file beside `path`, renamed at the end
    // (MeshExport.cpp).
    bool export_mesh(const std::string& path, bool overwrite, MeshFormat format);

    // ---- EntityCatalog -------------------------------------------------------------------------
    bool handles(std::string_view type) const override;
    std::vector<int> all_ids(std::string_view type) const override;
    bool exists(std::string_view type, int id) const override;
    std::vector<int> relatives(std::string_view source_type, int id,
                               std::string_view target_type) const override;
    std::string name_of(std::string_view type, int id) const override;

    // The native file's open (FeFile.cpp): the loaded state in place of this one, with the
    // deleted and created events.
    void replace_state(const FeState& loaded);

    // ---- UndoParticipant -----------------------------------------------------------------------
    std::string participant_name() const override { return "fe"; }
    std::unique_ptr<UndoSnapshot> save_state() override;
    void restore_state(const UndoSnapshot& snapshot) override;
    void clear_state() override;

private:
    // What the last mid-node plan was made from (held, so that an address is never reused): a
    // command that changed none of it needs no new plan.
    struct MidPlanInputs {
        std::map<int, std::shared_ptr<const Block>> blocks; // the higher-order ones
        std::map<mesh::Owner, mesh::PiecePtr> pieces, mids;
        bool operator==(const MidPlanInputs&) const = default;
    };
    std::optional<MidPlanInputs> planned_;

    FeState state_;
    std::array<std::string, 3> copy_settings_{"OFF", "OFF", "OFF"};
};

// The live module between init_fe_module() and shutdown_fe_module(); null otherwise.
FeModule* fe_module();
void register_fe_commands();
// `block <id> material '<name>'`: materials live in the bc module above fe, which installs the
// handler of the rest of the line at its start (and an empty one at its end). Without one the
// verb is refused.
using BlockMaterialHandler = std::function<bool(Cursor&, int block_id)>;
void set_block_material_handler(BlockMaterialHandler handler);
void register_group_commands();  // FeGroups.cpp
void register_fe_file_section(); // FeFile.cpp

// "/proc/self/fd/<fd>": a short name of an open file, for libraries that copy names into fixed
// buffers.
inline std::string descriptor_path(int fd) {
    return "/proc/self/fd/" + std::to_string(fd);
}

// "volume 3", "hex 12", "node 4".
std::string describe(const Member& m);
// Whether the member exists in the live model.
bool member_exists(const Member& m);

} // namespace tarvo::kernel::fe

namespace tarvo::kernel {
void init_fe_module();
void shutdown_fe_module();
} // namespace tarvo::kernel
