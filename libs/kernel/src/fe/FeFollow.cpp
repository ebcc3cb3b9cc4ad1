// Following the geometry: containers keep naming the entities they were given when geometry
// is deleted (members go) or renumbered by `compress ids` (members follow). FeModule.cpp's watcher
// calls this on the geometry's events.

#include "core/Session.h"
#include "fe/FeModule.h"
#include "tarvo/TIObserve.h"

#include <algorithm>

namespace tarvo::kernel::fe {

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

} // namespace tarvo::kernel::fe
