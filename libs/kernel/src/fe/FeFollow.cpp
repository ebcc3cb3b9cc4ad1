// Following the geometry: containers keep naming the entities they were given when geometry
// is deleted (members go) or renumbered by `compress ids` (members follow), FeModule.cpp's
// watcher calls this on the geometry's events; and copies of geometry join containers as the
// copy settings say.

#include "core/Session.h"
#include "fe/FeInternal.h"
#include "fe/FeModule.h"
#include "mesh/MeshModule.h"
#include "tarvo/TIObserve.h"

#include <algorithm>
#include <map>
#include <type_traits>

namespace tarvo::kernel::fe {

using namespace internal;

void FeModule::follow_geometry(int dim, int old_id, int new_id) {
    const auto map = [&](int d, int id) { return d == dim && id == old_id ? new_id : id; };
    const auto rewrite = [&](std::vector<Member>& members) {
        std::vector<Member> out;
        for (Member m : members) {
            if (m.type == Member::Type::Geometry)
                m.id = map(m.dim, m.id);
            else if (m.type == Member::Type::Body)
                m.id = map(4, m.id);
            if (m.id != 0 && std::find(out.begin(), out.end(), m) == out.end())
                out.push_back(m);
        }
        const bool changed = out != members;
        members = std::move(out);
        return changed;
    };
    for (auto& [id, piece] : state_.blocks) {
        auto copy = std::make_shared<Block>(*piece);
        if (rewrite(copy->members))
            piece = copy;
    }
    for (auto& [id, piece] : state_.nodesets) {
        auto copy = std::make_shared<NodeSet>(*piece);
        if (rewrite(copy->members))
            piece = copy;
    }
    for (auto& [id, piece] : state_.groups) {
        auto copy = std::make_shared<Group>(*piece);
        if (rewrite(copy->members)) {
            piece = copy;
            events().emit(&TarvoInterface::TIObserve::notify_group_modified, id);
        }
    }
    for (auto& [id, piece] : state_.sidesets) {
        auto copy = std::make_shared<SideSet>(*piece);
        std::vector<std::pair<int, int>> out;
        for (auto [surface, wrt] : copy->surfaces) {
            surface = map(2, surface);
            // Sides taken from a volume that went have nothing left to be taken from.
            const int volume = wrt == 0 ? 0 : map(3, wrt);
            if (surface != 0 && (wrt == 0 || volume != 0))
                out.push_back({surface, volume});
        }
        if (out != copy->surfaces) {
            copy->surfaces = std::move(out);
            piece = copy;
        }
    }
}

namespace {

// The copies of `members` that copying made, in the members' order.
std::vector<Member> copies_of(const std::vector<Member>& members,
                              const std::map<std::pair<int, int>, int>& copy_of) {
    std::vector<Member> out;
    for (const Member& m : members)
        if (m.type == Member::Type::Geometry)
            if (const auto it = copy_of.find({m.dim, m.id}); it != copy_of.end())
                out.push_back({Member::Type::Geometry, m.dim, m.kind, it->second});
    return out;
}

template <class Map> int next_id(const Map& map) {
    return map.empty() ? 1 : map.rbegin()->first + 1;
}

// One kind of container: each that holds a copied entity gets the copies (USE_ORIGINAL) or
// hands them to a new container made by `fresh` from it (ON).
template <class Map, class Copies, class Add, class Fresh>
void follow_copies(Map& map, const std::string& setting, const char* type, Copies copies_in,
                   Add add, Fresh fresh) {
    using Piece = std::remove_const_t<typename Map::mapped_type::element_type>;
    if (setting == "OFF")
        return;
    const std::vector<int> ids = [&] {
        std::vector<int> out;
        for (const auto& [id, piece] : map)
            out.push_back(id);
        return out;
    }();
    for (int id : ids) {
        const auto original = map.at(id);
        auto copies = copies_in(*original);
        if (copies.empty())
            continue;
        if (setting == "USE_ORIGINAL") {
            auto piece = std::make_shared<Piece>(*original);
            add(*piece, copies);
            map[id] = piece;
            print("Copies added to " + std::string(type) + " " + std::to_string(id));
            emit_modified(type, id, "modified");
        } else {
            const int made = next_id(map);
            auto piece = std::make_shared<Piece>(fresh(*original));
            piece->id = made;
            add(*piece, copies);
            map[made] = piece;
            print("Created " + std::string(type) + " " + std::to_string(made) +
                  " for the copies in " + type + " " + std::to_string(id));
            emit_modified(type, made, "created");
        }
    }
}

} // namespace

void FeModule::follow_copy(const std::vector<CopiedEntity>& copied) {
    std::map<std::pair<int, int>, int> copy_of; // (dim, original id) -> copy id
    for (const CopiedEntity& c : copied)
        if (const int dim = mesh::dim_of_kind(c.kind); dim >= 0)
            copy_of[{dim, c.from}] = c.to;
    if (copy_of.empty())
        return;
    const auto members_in = [&](const auto& container) {
        return copies_of(container.members, copy_of);
    };
    const auto append = [](auto& container, const std::vector<Member>& copies) {
        container.members.insert(container.members.end(), copies.begin(), copies.end());
    };
    follow_copies(state_.blocks, copy_settings_[0], "block", members_in, append,
                  [](const Block& original) {
                      Block b = original;
                      b.name.clear(); // names stay the original's own
                      b.members.clear();
                      return b;
                  });
    follow_copies(state_.nodesets, copy_settings_[1], "nodeset", members_in, append,
                  [](const NodeSet& original) {
                      NodeSet n = original;
                      n.name.clear();
                      n.members.clear();
                      return n;
                  });
    using Sides = std::vector<std::pair<int, int>>;
    follow_copies(
        state_.sidesets, copy_settings_[2], "sideset",
        [&](const SideSet& set) {
            Sides out;
            for (const auto& [surface, wrt] : set.surfaces) {
                const auto s = copy_of.find({2, surface});
                const auto v = copy_of.find({3, wrt});
                if (s != copy_of.end() && (wrt == 0 || v != copy_of.end()))
                    out.push_back({s->second, wrt == 0 ? 0 : v->second});
            }
            return out;
        },
        [](SideSet& set, const Sides& sides) {
            set.surfaces.insert(set.surfaces.end(), sides.begin(), sides.end());
        },
        [](const SideSet& original) {
            SideSet s = original;
            s.name.clear();
            s.surfaces.clear();
            return s;
        });
}

} // namespace tarvo::kernel::fe
