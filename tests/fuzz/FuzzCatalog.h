#pragma once
// A small fixed model for the fuzz targets that resolve entity lists: volumes 1-6 with names,
// each bounded by six surfaces of its own (surfaces 1-36), curves 1-40 without relations, and
// groups 1-2 holding volumes. Its ids are sparse on purpose (no volume 4), so that ranges, "all",
// "in" and missing ids all have something to find. Registered once per process, never removed;
// the fuzz target's thread only.

#include "core/EntityCatalog.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace fuzz_support {

class FuzzCatalog : public tarvo::kernel::EntityCatalog {
public:
    FuzzCatalog() {
        for (int v : {1, 2, 3, 5, 6}) {
            for (int s = 1; s <= 6; ++s) {
                surfaces[v].push_back((v - 1) * 6 + s);
            }
        }
        for (int c = 1; c <= 40; ++c) {
            curves.push_back(c);
        }
        groups[1] = {1, 2};
        groups[2] = {3, 5, 6};
    }

    static FuzzCatalog& installed() {
        static FuzzCatalog* catalog = [] {
            auto* c = new FuzzCatalog;
            tarvo::kernel::set_entity_catalog(c);
            return c;
        }();
        return *catalog;
    }

    bool handles(std::string_view type) const override {
        return type == "volume" || type == "surface" || type == "curve" || type == "group";
    }

    std::vector<int> all_ids(std::string_view type) const override {
        std::vector<int> ids;
        if (type == "volume") {
            for (const auto& [v, faces] : surfaces) {
                ids.push_back(v);
            }
        } else if (type == "surface") {
            for (const auto& [v, faces] : surfaces) {
                ids.insert(ids.end(), faces.begin(), faces.end());
            }
        } else if (type == "curve") {
            ids = curves;
        } else if (type == "group") {
            for (const auto& [g, members] : groups) {
                ids.push_back(g);
            }
        }
        return ids;
    }

    bool exists(std::string_view type, int id) const override {
        for (int existing : all_ids(type)) {
            if (existing == id) {
                return true;
            }
        }
        return false;
    }

    std::vector<int> relatives(std::string_view source, int id,
                               std::string_view target) const override {
        if (source == "volume" && target == "surface" && surfaces.count(id)) {
            return surfaces.at(id);
        }
        if (source == "surface" && target == "volume" && id >= 1) {
            const int v = (id - 1) / 6 + 1;
            return surfaces.count(v) && exists("surface", id) ? std::vector<int>{v}
                                                              : std::vector<int>{};
        }
        if (source == "group" && target == "volume" && groups.count(id)) {
            return groups.at(id);
        }
        return {};
    }

    std::string name_of(std::string_view type, int id) const override {
        if (type == "volume") {
            return id % 2 ? "bolt_" + std::to_string(id) : "Plate" + std::to_string(id);
        }
        return {};
    }

private:
    std::map<int, std::vector<int>> surfaces; // volume -> its surfaces, ascending
    std::vector<int> curves;
    std::map<int, std::vector<int>> groups; // group -> its volumes
};

} // namespace fuzz_support
