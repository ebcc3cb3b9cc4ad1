#include "monitors/TIObserveMonitor.h"

#include "tarvo_util/TarvoFileUtil.h"

#include <QJsonArray>

#include <array>

namespace {

// Names as they go out with a record, by event code. Code 1 is selected by another name: see
// event_code_from_name().
constexpr std::array<const char*, TIObserveMonitor::event_count> event_names = {
    "valfold_modified",                   // 0
    "merge",                              // 1
    "merge_completed",                    // 2
    "webcut_completed",                   // 3
    "undo_state_changed",                 // 4
    "undo_complete",                      // 5
    "boolean_operation_complete",         // 6
    "body_created",                       // 7
    "body_deleted",                       // 8
    "body_updated",                       // 9
    "volume_updated",                     // 10
    "volume_created",                     // 11
    "volume_deleted",                     // 12
    "surface_created",                    // 13
    "surface_deleted",                    // 14
    "surface_updated",                    // 15
    "curve_created",                      // 16
    "curve_deleted",                      // 17
    "vertex_created",                     // 18
    "vertex_deleted",                     // 19
    "free_vertex_created",                // 20
    "free_curve_created",                 // 21
    "free_vertex_deleted",                // 22
    "free_curve_deleted",                 // 23
    "free_surface_deleted",               // 24
    "free_surface_created",               // 25
    "sheet_body_created",                 // 26
    "sheet_body_deleted",                 // 27
    "sheet_body_updated",                 // 28
    "boundary_layer_created",             // 29
    "boundary_layer_deleted",             // 30
    "id_changed",                         // 31
    "highlighted",                        // 32
    "unhighlighted",                      // 33
    "entity_pre_selected",                // 34
    "entity_name_changed",                // 35
    "entities_modified",                  // 36
    "group_created",                      // 37
    "group_modified",                     // 38
    "group_deleted",                      // 39
    "assembly_tree_modified",             // 40
    "assembly_child_added",               // 41
    "assembly_child_name_changed",        // 42
    "assembly_child_instance_changed",    // 43
    "assembly_child_description_changed", // 44
    "assembly_child_removed",             // 45
    "volume_added_to_part",               // 46
    "volume_removed_from_part",           // 47
    "graphics_mode_modified",             // 48
    "graphics_pick_type_modified",        // 49
    "genesis_entity_modified",            // 50
    "material_modified",                  // 51
    "material_group_modified",            // 52
    "material_property_modified",         // 53
    "media_modified",                     // 54
    "bc_container_entity_modified",       // 55
    "bc_entity_modified",                 // 56
    "initial_condition_modified",         // 57
    "constraint_modified",                // 58
    "coord_sys_modified",                 // 59
    "model_reset",                        // 60
    "command_complete",                   // 61
    "command_start",                      // 62
    "ids_compressed",                     // 63
    "healer_complete",                    // 64
    "composite_creation_complete",        // 65
    "split_surface_complete",             // 66
    "collapse_curve_complete",            // 67
    "auto_clean_complete",                // 68
    "geometry_defeaturing_complete",      // 69
    "remove_topology_complete",           // 70
    "remove_surface_complete",            // 71
    "tweak_target_complete",              // 72
    "regularize_entity_complete",         // 73
    "entity_visibility_changed",          // 74
    "exodus_entity_visibility_changed",   // 75
    "developer_command_toggled",          // 76
    "mesh_created",                       // 77
    "import_acis_complete",               // 78
    "import_complete",                    // 79
    "export_complete",                    // 80
    "geometry_engine_changed",            // 81
    "working_directory_changed",          // 82
    "fatal_event_encountered",            // 83
    "tvo_file_read",                      // 84
    "tvo_file_saved",                     // 85
    "ml_training_complete",               // 86
    "copy_surface_complete",              // 87
    "midsurface_complete",                // 88
    "merge_complete",                     // 89
};

constexpr int merge_code = 1;
const QString merge_selection_name = QStringLiteral("notify_merge");

const QString kind = QStringLiteral("TIObserve");

} // namespace

TIObserveMonitor::TIObserveMonitor(std::set<int> events) : events(std::move(events)) {}

QJsonObject* TIObserveMonitor::add_event(int code) {
    if (!events.contains(code))
        return nullptr;
    records.emplace_back(code,
                         QJsonObject{{QStringLiteral("event_name"), event_name_from_code(code)}});
    return &records.back().second;
}

void TIObserveMonitor::update() {
    // A client that has just selected the working-directory event learns the present directory
    // at once; every other event waits until it happens.
    if (incremental || !events.contains(working_directory_changed_code))
        return;
    if (QJsonObject* record = add_event(working_directory_changed_code))
        record->insert(QStringLiteral("directory"),
                       QString::fromStdString(TarvoFileUtil::get_current_working_directory()));
}

std::vector<RPCRequest> TIObserveMonitor::get_notifications(const MonitorSelection& selection) {
    const auto selected = selection.find(kind);
    if (selected == selection.end())
        return {};
    QJsonArray params;
    for (const auto& [code, fields] : records)
        if (selected->second.contains({code, 0}))
            params.append(fields);
    if (params.isEmpty())
        return {};
    return {RPCRequest(QStringLiteral("datamonitor.TIObserve"), params)};
}

int TIObserveMonitor::event_code_from_name(const QString& name) {
    if (name == merge_selection_name)
        return merge_code;
    for (int code = 0; code < event_count; ++code)
        if (code != merge_code && name == QLatin1String(event_names[code]))
            return code;
    return invalid_event_code;
}

QString TIObserveMonitor::event_name_from_code(int code) {
    if (code < 0 || code >= event_count)
        return {};
    return QString::fromLatin1(event_names[code]);
}
