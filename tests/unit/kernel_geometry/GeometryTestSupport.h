#pragma once
// Fixture of the geometry tests: a live kernel session per test with captured output and an
// observer that records the geometry events as text ("volume_created 1").

#include "tarvo/TarvoInterface.h"

#include "../support/KernelTest.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

namespace geometry_test {

// The geometry events and the command brackets, without the session's undo and variable events
// that every command brings, so that the tests can compare whole sequences.
inline std::set<std::string> geometry_events() {
    // clang-format off
    return {
        "command_start", "command_complete", "body_created", "body_deleted", "body_updated",
        "sheet_body_created", "sheet_body_deleted", "sheet_body_updated", "volume_created",
        "volume_deleted", "volume_updated", "surface_created", "surface_deleted", "surface_updated",
        "free_surface_created", "free_surface_deleted", "curve_created", "curve_deleted",
        "free_curve_created", "free_curve_deleted", "vertex_created", "vertex_deleted",
        "free_vertex_created", "free_vertex_deleted", "merge", "merge_completed",
        "webcut_completed", "boolean_operation_complete", "healer_complete", "ids_compressed",
        "id_changed", "entity_name_changed", "entity_visibility_changed", "import_complete",
        "export_complete", "assembly_tree_modified"};
    // clang-format on
}

using test_support::cad_file;

class GeometryTest : public test_support::KernelTest {
protected:
    GeometryTest() : KernelTest("geometry", geometry_events()) {}

    // A fingerprint of the whole geometry: ids per type and the measure of every volume.
    std::string fingerprint() {
        std::string out;
        for (const char* type : {"body", "volume", "surface", "curve", "vertex"}) {
            out += type;
            for (int id : TarvoInterface::get_entities(type))
                out += " " + std::to_string(id);
            out += "\n";
        }
        for (int v : TarvoInterface::get_entities("volume"))
            out += std::to_string(TarvoInterface::get_volume_area(v)) + " ";
        return out;
    }
};

} // namespace geometry_test
