#pragma once
// Fixture of the geometry tests: a live kernel session per test with captured output and an
// observer that records every geometry event as text ("volume_created 1").

#include "tarvo/TarvoInterface.h"
#include "tarvo_util/TarvoMessage.h"

#include "../support/CapturedOutput.h"
#include "../support/ScratchSession.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace geometry_test {

using CapturingHandler = test_support::CapturedOutput;

class Recorder : public TarvoInterface::TIObserve {
public:
    std::vector<std::string> events;
    void add(const std::string& name, int id) { events.push_back(name + " " + std::to_string(id)); }
    void notify_command_start() override { events.push_back("command_start"); }
    void notify_command_complete() override { events.push_back("command_complete"); }
    void notify_body_created(int id) override { add("body_created", id); }
    void notify_body_deleted(int id) override { add("body_deleted", id); }
    void notify_body_updated(int id) override { add("body_updated", id); }
    void notify_sheet_body_created(int id) override { add("sheet_body_created", id); }
    void notify_sheet_body_deleted(int id) override { add("sheet_body_deleted", id); }
    void notify_sheet_body_updated(int id) override { add("sheet_body_updated", id); }
    void notify_volume_created(int id) override { add("volume_created", id); }
    void notify_volume_deleted(int id) override { add("volume_deleted", id); }
    void notify_volume_updated(int id) override { add("volume_updated", id); }
    void notify_surface_created(int id) override { add("surface_created", id); }
    void notify_surface_deleted(int id) override { add("surface_deleted", id); }
    void notify_surface_updated(int id) override { add("surface_updated", id); }
    void notify_free_surface_created(int id) override { add("free_surface_created", id); }
    void notify_free_surface_deleted(int id) override { add("free_surface_deleted", id); }
    void notify_curve_created(int id) override { add("curve_created", id); }
    void notify_curve_deleted(int id) override { add("curve_deleted", id); }
    void notify_free_curve_created(int id) override { add("free_curve_created", id); }
    void notify_free_curve_deleted(int id) override { add("free_curve_deleted", id); }
    void notify_vertex_created(int id) override { add("vertex_created", id); }
    void notify_vertex_deleted(int id) override { add("vertex_deleted", id); }
    void notify_free_vertex_created(int id) override { add("free_vertex_created", id); }
    void notify_free_vertex_deleted(int id) override { add("free_vertex_deleted", id); }
    void notify_merge(const std::string& type, const std::string& name, int old_id,
                      int new_id) override {
        events.push_back("merge " + type + " '" + name + "' " + std::to_string(old_id) + " " +
                         std::to_string(new_id));
    }
    void notify_merge_completed() override { events.push_back("merge_completed"); }
    void notify_webcut_completed() override { events.push_back("webcut_completed"); }
    void notify_boolean_operation_complete() override {
        events.push_back("boolean_operation_complete");
    }
    void notify_healer_complete() override { events.push_back("healer_complete"); }
    void notify_ids_compressed() override { events.push_back("ids_compressed"); }
    void notify_id_changed(const std::string& type, int old_id, int new_id) override {
        events.push_back("id_changed " + type + " " + std::to_string(old_id) + " " +
                         std::to_string(new_id));
    }
    void notify_entity_name_changed(const std::string& type, int id) override {
        events.push_back("entity_name_changed " + type + " " + std::to_string(id));
    }
    void notify_entity_visibility_changed(const std::string& type, int id) override {
        events.push_back("entity_visibility_changed " + type + " " + std::to_string(id));
    }
    void notify_import_complete(const std::string& path, bool ok) override {
        events.push_back("import_complete " + path + " " + (ok ? "1" : "0"));
    }
    void notify_export_complete(const std::string& path, bool ok) override {
        events.push_back("export_complete " + path + " " + (ok ? "1" : "0"));
    }
    void notify_assembly_tree_modified() override { events.push_back("assembly_tree_modified"); }

    // Events whose text starts with `prefix`.
    std::vector<std::string> starting(const std::string& prefix) const {
        std::vector<std::string> out;
        for (const std::string& e : events)
            if (e.rfind(prefix, 0) == 0)
                out.push_back(e);
        return out;
    }
    std::size_t count(const std::string& e) const {
        return static_cast<std::size_t>(std::count(events.begin(), events.end(), e));
    }
};

inline std::string cad_file(const std::string& name) {
    const char* dir = std::getenv("TARVO_CAD_DATA");
    return (std::filesystem::path(dir && *dir ? dir : TARVO_DEFAULT_CAD_DATA) / name).string();
}

class GeometryTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(session.start("geometry", output));
        recorder.register_observer();
        TarvoInterface::silent_cmd("echo off");
        output->take();
        recorder.events.clear();
    }
    void TearDown() override {
        recorder.unregister_observer();
        session.stop();
    }

    // Runs a command that must succeed; shows the output when it does not.
    void run(const std::string& line) {
        ASSERT_TRUE(TarvoInterface::cmd(line.c_str())) << line << "\n" << output->all();
    }

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

    std::shared_ptr<CapturingHandler> output = std::make_shared<CapturingHandler>();
    Recorder recorder;
    test_support::ScratchSession session;
};

} // namespace geometry_test
