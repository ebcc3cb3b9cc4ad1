#pragma once
// An entity catalog held in plain maps, for the tests and fuzz targets that resolve entity lists
// without a geometry model: volumes with names and the surfaces that bound them, loose curves and
// groups of volumes. It answers only for the types in `types`. Owned and used by one thread (the
// test's or the fuzz target's).

#include "core/EntityCatalog.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace test_support {

class MapCatalog : public tarvo::kernel::EntityCatalog {
public:
    // Everything the catalog answers from; copied whole where a test snapshots it.
    struct Contents {
        std::map<int, std::string> volumes;              // id -> name
        std::map<int, std::vector<int>> volume_surfaces; // volume -> its surfaces
        std::set<int> surfaces;
        std::vector<int> curves;
        std::map<int, std::vector<int>> groups; // group -> its volumes
    };
    Contents contents;
    std::set<std::string, std::less<>> types{"volume", "surface"};

    void add_volume(int id, const std::string& name, std::vector<int> faces) {
        contents.volumes[id] = name;
        contents.surfaces.insert(faces.begin(), faces.end());
        contents.volume_surfaces[id] = std::move(faces);
    }

    bool handles(std::string_view type) const override { return types.count(type) > 0; }
    std::vector<int> all_ids(std::string_view type) const override {
        std::vector<int> ids;
        if (type == "volume")
            for (const auto& [id, name] : contents.volumes)
                ids.push_back(id);
        if (type == "surface")
            ids.assign(contents.surfaces.begin(), contents.surfaces.end());
        if (type == "curve")
            ids = contents.curves;
        if (type == "group")
            for (const auto& [id, members] : contents.groups)
                ids.push_back(id);
        return ids;
    }
    bool exists(std::string_view type, int id) const override {
        const std::vector<int> ids = all_ids(type);
        return std::find(ids.begin(), ids.end(), id) != ids.end();
    }
    std::vector<int> relatives(std::string_view source, int id,
                               std::string_view target) const override {
        std::set<int> found;
        for (const auto& [volume, faces] : contents.volume_surfaces) {
            if (source == "volume" && target == "surface" && volume == id)
                found.insert(faces.begin(), faces.end());
            if (source == "surface" && target == "volume" &&
                std::find(faces.begin(), faces.end(), id) != faces.end())
                found.insert(volume);
        }
        if (source == "group" && target == "volume" && contents.groups.count(id))
            found.insert(contents.groups.at(id).begin(), contents.groups.at(id).end());
        return {found.begin(), found.end()};
    }
    std::string name_of(std::string_view type, int id) const override {
        return type == "volume" && contents.volumes.count(id) ? contents.volumes.at(id)
                                                              : std::string();
    }
};

} // namespace test_support
