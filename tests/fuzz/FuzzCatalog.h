#pragma once
// A small fixed model for the fuzz targets that resolve entity lists: volumes 1-6 with names,
// each bounded by six surfaces of its own (surfaces 1-36), curves 1-40 without relations, and
// groups 1-2 holding volumes. Its ids are sparse on purpose (no volume 4), so that ranges, "all",
// "in" and missing ids all have something to find. Registered once per process, never removed;
// the fuzz target's thread only.

#include "../unit/support/MapCatalog.h"

#include <string>
#include <vector>

namespace fuzz_support {

class FuzzCatalog : public test_support::MapCatalog {
public:
    FuzzCatalog() {
        types = {"volume", "surface", "curve", "group"};
        for (int v : {1, 2, 3, 5, 6}) {
            std::vector<int> faces;
            for (int s = 1; s <= 6; ++s)
                faces.push_back((v - 1) * 6 + s);
            add_volume(v, (v % 2 ? "bolt_" : "Plate") + std::to_string(v), faces);
        }
        for (int c = 1; c <= 40; ++c)
            contents.curves.push_back(c);
        contents.groups[1] = {1, 2};
        contents.groups[2] = {3, 5, 6};
    }

    static FuzzCatalog& installed() {
        static FuzzCatalog* catalog = [] {
            auto* c = new FuzzCatalog;
            tarvo::kernel::set_entity_catalog(c);
            return c;
        }();
        return *catalog;
    }
};

} // namespace fuzz_support
