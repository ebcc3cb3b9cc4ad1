// What a client receives for every kernel event, as text, compared with a recording kept in
// data/observer_events.golden: the datamonitor.TIObserve message (every event selected), the
// model sections flagged and the entity monitors marked. Any change to an event's wire form,
// flags or marks shows here as a line of difference.
//
// Regenerate the recording after an intended change with TARVO_UPDATE_GOLDEN=1 and review the
// difference before committing it.

#include "monitors/EntityMonitor.h"
#include "monitors/ModelMonitor.h"
#include "monitors/TIObserveMonitor.h"
#include "monitors/WorkerTIObserve.h"

#include "tarvo_util/TarvoFileUtil.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

class ProbeMonitor : public EntityMonitor {
public:
    using EntityMonitor::EntityMonitor;
    void update() override {}
};

struct Fired {
    const char* call;
    std::function<void(WorkerTIObserve&)> fire;
};

#define FIRE(call)                                                                                 \
    Fired {                                                                                        \
#call, [](WorkerTIObserve & o) { o.call; }                                                 \
    }

// Every operation of the kernel's observer, in its order. Within one call no two values are
// equal, so a field that takes the wrong argument shows; strings that need escaping or are not
// ASCII travel through two of them.
const std::vector<Fired>& every_event() {
    static const std::vector<Fired> calls = {
        FIRE(notify_valfold_modified()),
        FIRE(notify_merge("surface", "top \"lid\"", 3, 4)),
        FIRE(notify_merge_completed()),
        FIRE(notify_webcut_completed()),
        FIRE(notify_undo_state_changed()),
        FIRE(notify_undo_complete()),
        FIRE(notify_boolean_operation_complete()),
        FIRE(notify_body_created(7)),
        FIRE(notify_body_deleted(8)),
        FIRE(notify_body_updated(9)),
        FIRE(notify_volume_updated(10)),
        FIRE(notify_volume_created(11)),
        FIRE(notify_volume_deleted(12)),
        FIRE(notify_surface_created(13)),
        FIRE(notify_surface_deleted(14)),
        FIRE(notify_surface_updated(15)),
        FIRE(notify_curve_created(16)),
        FIRE(notify_curve_deleted(17)),
        FIRE(notify_vertex_created(18)),
        FIRE(notify_vertex_deleted(19)),
        FIRE(notify_free_vertex_created(20)),
        FIRE(notify_free_curve_created(21)),
        FIRE(notify_free_vertex_deleted(22)),
        FIRE(notify_free_curve_deleted(23)),
        FIRE(notify_free_surface_deleted(24)),
        FIRE(notify_free_surface_created(25)),
        FIRE(notify_sheet_body_created(26)),
        FIRE(notify_sheet_body_deleted(27)),
        FIRE(notify_sheet_body_updated(28)),
        FIRE(notify_boundary_layer_created(29)),
        FIRE(notify_boundary_layer_deleted(30)),
        FIRE(notify_sizing_source_created(31)),
        FIRE(notify_sizing_source_deleted(32)),
        FIRE(notify_id_changed("volume", 33, 34)),
        FIRE(notify_highlighted({{"volume", 35}, {"surface", 36}})),
        FIRE(notify_unhighlighted({{"curve", 37}})),
        FIRE(notify_entity_pre_selected("vertex", true)),
        FIRE(notify_entity_name_changed("surface", 38)),
        FIRE(notify_entities_modified()),
        FIRE(notify_group_created(39)),
        FIRE(notify_group_modified(40)),
        FIRE(notify_group_deleted(41)),
        FIRE(notify_assembly_tree_modified()),
        FIRE(notify_assembly_child_added("part", "/top/bolt", "bolt", 2, 42, 43)),
        FIRE(notify_assembly_child_name_changed("assembly", "/top/nut", "nut", 44)),
        FIRE(notify_assembly_child_instance_changed("part", 3, 45)),
        FIRE(notify_assembly_child_description_changed(46, "steel bolt")),
        FIRE(notify_assembly_child_removed(47)),
        FIRE(notify_volume_added_to_part(48, 49)),
        FIRE(notify_volume_removed_from_part(50, 51)),
        FIRE(notify_graphics_mode_modified()),
        FIRE(notify_graphics_pick_type_modified()),
        FIRE(notify_genesis_entity_modified("block", 52, "add")),
        FIRE(notify_material_modified(53, "create")),
        FIRE(notify_material_group_modified("fluid", "modify")),
        FIRE(notify_material_property_modified("DENSITY", "remove")),
        FIRE(notify_media_modified(54, "modify")),
        FIRE(notify_bc_container_entity_modified("nodeset", 55, "delete")),
        FIRE(notify_bc_entity_modified("force", 56, "create")),
        FIRE(notify_initial_condition_modified(57, "delete")),
        FIRE(notify_constraint_modified(58, "modify")),
        FIRE(notify_coord_sys_modified(59, "create")),
        FIRE(notify_model_reset()),
        FIRE(notify_command_complete()),
        FIRE(notify_command_start()),
        FIRE(notify_ids_compressed()),
        FIRE(notify_healer_complete()),
        FIRE(notify_composite_creation_complete()),
        FIRE(notify_split_surface_complete()),
        FIRE(notify_collapse_curve_complete()),
        FIRE(notify_auto_clean_complete()),
        FIRE(notify_geometry_defeaturing_complete()),
        FIRE(notify_remove_topology_complete()),
        FIRE(notify_remove_surface_complete()),
        FIRE(notify_tweak_target_complete()),
        FIRE(notify_ml_training_complete()),
        FIRE(notify_copy_surface_complete()),
        FIRE(notify_midsurface_complete()),
        FIRE(notify_merge_complete()),
        FIRE(notify_blunt_tangency_complete()),
        FIRE(notify_collapse_angle_complete()),
        FIRE(notify_regularize_entity_complete()),
        FIRE(notify_entity_visibility_changed("curve", 60)),
        FIRE(notify_exodus_entity_visibility_changed("sideset", 61)),
        FIRE(notify_developer_command_toggled(false)),
        FIRE(notify_mesh_created("volume", 62)),
        FIRE(notify_import_acis_complete()),
        FIRE(notify_import_complete("/data/größe 1.step", true)),
        FIRE(notify_export_complete("C:\\out\\part.e", false)),
        FIRE(notify_geometry_engine_changed("OCC", "OpenCASCADE 7.6")),
        FIRE(notify_working_directory_changed()),
        FIRE(notify_fatal_event_encountered()),
        FIRE(notify_tvo_file_read("model.tvo")),
        FIRE(notify_tvo_file_saved("autosave.tvo", true)),
    };
    return calls;
}

#undef FIRE

// Every type that a mark could name, each watched at every id that the calls above use, so that
// a mark of the wrong type or id is caught as surely as a missing one.
const char* const watched_types[] = {
    "assembly",          "block",     "body",    "boundary_layer", "cfd_bc",
    "constraint",        "coord_sys", "curve",   "force",          "group",
    "material",          "media",     "nodeset", "part",           "sideset",
    "initial_condition", "surface",   "vertex",  "volume",
};
constexpr int highest_watched_id = 62;

MonitorSelection every_event_selected() {
    MonitorSelection selection;
    for (int code = 0; code < TIObserveMonitor::event_count; ++code)
        selection["TIObserve"].insert({code, 0});
    return selection;
}

std::string model_flags(const ModelMonitor& model) {
    std::string out;
    const auto add = [&out](bool on, const char* name) {
        if (on)
            out += std::string(out.empty() ? "" : " ") + name;
    };
    add(model.is_geometry_changed(), "geometry");
    add(model.is_exodus_changed(), "exodus");
    add(model.is_fea_bcs_changed(), "fea_bcs");
    add(model.is_cfd_bcs_changed(), "cfd_bcs");
    add(model.is_materials_changed(), "materials");
    add(model.is_boundary_layers_changed(), "boundary_layers");
    add(model.is_groups_changed(), "groups");
    return out.empty() ? "none" : out;
}

struct Effects {
    std::string sent, flags, marks;
};

// One event in a task of its own: fresh monitors, every entity watched.
Effects fire_in_task(const Fired& call, bool selected) {
    WorkerTIObserve observer;
    ModelMonitor model;
    std::set<int> codes;
    if (selected)
        for (int code = 0; code < TIObserveMonitor::event_count; ++code)
            codes.insert(code);
    TIObserveMonitor monitor(codes);
    std::vector<std::unique_ptr<ProbeMonitor>> probes;
    for (const char* type : watched_types) {
        for (int id = 1; id <= highest_watched_id; ++id) {
            probes.push_back(std::make_unique<ProbeMonitor>(QString::fromLatin1(type), id));
            observer.add_entity_monitor(probes.back().get());
        }
    }
    observer.set_observe_monitor(&monitor);
    observer.set_model_monitor(&model);

    call.fire(observer);

    Effects effects;
    for (const RPCRequest& message : monitor.get_notifications(every_event_selected()))
        effects.sent += message.to_json_string().toStdString();
    if (effects.sent.empty())
        effects.sent = "nothing";
    effects.flags = model_flags(model);
    for (const auto& probe : probes)
        if (probe->is_modified())
            effects.marks += (effects.marks.empty() ? "" : ", ") +
                             probe->entity_type().toStdString() + " " +
                             std::to_string(probe->entity_id());
    if (effects.marks.empty())
        effects.marks = "none";
    return effects;
}

std::string replace_all(std::string text, const std::string& from, const std::string& to) {
    if (from.empty())
        return text;
    for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    return text;
}

std::string golden_path() {
    return std::string(TARVO_MONITORS_TEST_DATA) + "/observer_events.golden";
}

TEST(EventWireGolden, EveryEventReachesClientsAsRecorded) {
    // The working directory differs from machine to machine; the recording names it alike.
    const std::string directory = TarvoFileUtil::get_current_working_directory();
    std::ostringstream out;
    for (const Fired& call : every_event()) {
        const Effects selected = fire_in_task(call, true);
        out << call.call << "\n"
            << "  sent: " << replace_all(selected.sent, directory, "<working directory>") << "\n"
            << "  model: " << selected.flags << "\n"
            << "  marked: " << selected.marks << "\n";

        // Whether a client selected the event changes only what is sent.
        const Effects unselected = fire_in_task(call, false);
        EXPECT_EQ(unselected.sent, "nothing") << call.call;
        EXPECT_EQ(unselected.flags, selected.flags) << call.call;
        EXPECT_EQ(unselected.marks, selected.marks) << call.call;
    }
    const std::string actual = out.str();

    if (const char* update = std::getenv("TARVO_UPDATE_GOLDEN"); update && *update) {
        std::ofstream(golden_path(), std::ios::binary) << actual;
        GTEST_SKIP() << "recording rewritten: " << golden_path();
    }
    std::ifstream file(golden_path(), std::ios::binary);
    ASSERT_TRUE(file) << "no recording at " << golden_path();
    const std::string expected{std::istreambuf_iterator<char>(file), {}};

    // Show the first line that differs rather than two pages of text.
    std::istringstream want(expected), got(actual);
    for (int line = 1; want || got; ++line) {
        std::string want_line = "<end of recording>", got_line = "<end of output>";
        std::getline(want, want_line);
        std::getline(got, got_line);
        ASSERT_EQ(got_line, want_line) << "first difference at line " << line;
    }
    EXPECT_EQ(actual, expected);
}

} // namespace

// A row added to the event table without a call above would go unrecorded: every row is fired
// exactly once.
TEST(EventWireGolden, EveryRowOfTheEventTableIsFired) {
    std::multiset<std::string> fired;
    for (const Fired& call : every_event()) {
        const std::string text = call.call;
        fired.insert(text.substr(0, text.find('(')));
    }
    std::multiset<std::string> rows;
#define TARVO_OBSERVER_EVENT(name, ...) rows.insert("notify_" #name);
#define TARVO_OBSERVER_UNSENT(name, ...) rows.insert("notify_" #name);
#include "tarvo/TIObserveEvents.def"
    EXPECT_EQ(fired, rows);
}
