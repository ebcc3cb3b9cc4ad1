#pragma once
// What the command language needs to know about the model to resolve entity lists
// ("volume all", "surface in volume 2", "volume with name 'bolt*'"). The geometry, mesh and
// container modules each implement it for the types they own and register it with the session.
//
// Threading: called on the kernel thread only, from inside commands and queries.

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace tarvo::kernel {

// Entity type words of the command language, in canonical lower-case spelling. A catalog answers
// with these names; the parser maps user spellings ("vol", "Surface") onto them.
// Geometry: body volume surface curve vertex
// Mesh:     node edge tri quad tet hex wedge pyramid sphere face
// Containers: group block nodeset sideset
// Analysis set-up: force pressure heatflux temperature convection displacement acceleration
//   velocity constraint "contact region" "contact pair" cfd_bc material media boundary_layer
//   coordinate_system
const std::vector<std::string>& entity_type_words();

class EntityCatalog {
public:
    virtual ~EntityCatalog() = default;

    // Whether this catalog owns `type` (canonical name). The first registered catalog that
    // handles a type answers for it.
    virtual bool handles(std::string_view type) const = 0;

    // All ids of `type`, ascending.
    virtual std::vector<int> all_ids(std::string_view type) const = 0;

    virtual bool exists(std::string_view type, int id) const = 0;

    // Entities of `target_type` related to (source_type, id): downward ("surface in volume 2":
    // the surfaces bounding volume 2), upward ("volume in surface 3": volumes that surface 3
    // bounds) or by membership ("volume in group 1", "node in volume 1"). Ascending, no
    // duplicates; empty when unrelated or unknown. The session asks the catalog of the target
    // type first, then, if different, the catalog of the source type, and unites the answers.
    virtual std::vector<int> relatives(std::string_view source_type, int id,
                                       std::string_view target_type) const = 0;

    // The entity's name, "" when it has none.
    virtual std::string name_of(std::string_view type, int id) const = 0;
};

// Adds a catalog to the session (not owned; the caller keeps it alive until it removes it).
// set_entity_catalog replaces all registered catalogs by this one (nullptr: none).
void add_entity_catalog(EntityCatalog* catalog);
void remove_entity_catalog(EntityCatalog* catalog);
void set_entity_catalog(EntityCatalog* catalog);

// The catalog answering for `type`, or nullptr.
EntityCatalog* catalog_for(std::string_view type);

// Groups belong to a module above the mesh; a module below that must make one (the group of the
// bad elements that quality statistics may ask for) goes through this hook, which the module that
// owns groups sets from its init and clears at its shutdown.
using GroupMaker = std::function<int(const std::string& type, const std::vector<int>& ids)>;
void set_group_maker(GroupMaker maker);
// A new group holding the entities; its id, or 0 when no module makes groups.
int make_group(const std::string& type, const std::vector<int>& ids);

} // namespace tarvo::kernel
