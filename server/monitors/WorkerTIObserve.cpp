#include "monitors/WorkerTIObserve.h"

#include "monitors/EntityMonitor.h"
#include "monitors/ModelMonitor.h"
#include "monitors/TIObserveMonitor.h"

#include "tarvo_util/TarvoFileUtil.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QString>

// Graphics notes (highlight changes, render mode, pick types) go to the task's graphics monitor
// before the event is recorded. That monitor is built by the graphics subsystem; until its class
// offers note_highlighted/note_unhighlighted/note_mode_modified/note_pick_type_modified, the
// pointer is only stored, and the four overrides below record the event alone.

namespace {

QString text(const std::string& value) {
    return QString::fromStdString(value);
}

// Bools travel as the numbers 0 and 1: the clients of this event stream expect numbers.
int number(bool value) {
    return value ? 1 : 0;
}

const QString key_id = QStringLiteral("id");
const QString key_type = QStringLiteral("type");
const QString key_action = QStringLiteral("action");

QJsonArray entity_list(const std::vector<std::pair<std::string, int>>& entities) {
    QJsonArray list;
    for (const auto& [type, id] : entities)
        list.append(QJsonArray{text(type), id});
    return list;
}

} // namespace

namespace {
// Event codes, in the order of the kernel's operations.
namespace event {
enum : int {
    valfold_modified = 0,
    merge = 1,
    merge_completed = 2,
    webcut_completed = 3,
    undo_state_changed = 4,
    undo_complete = 5,
    boolean_operation_complete = 6,
    body_created = 7,
    body_deleted = 8,
    body_updated = 9,
    volume_updated = 10,
    volume_created = 11,
    volume_deleted = 12,
    surface_created = 13,
    surface_deleted = 14,
    surface_updated = 15,
    curve_created = 16,
    curve_deleted = 17,
    vertex_created = 18,
    vertex_deleted = 19,
    free_vertex_created = 20,
    free_curve_created = 21,
    free_vertex_deleted = 22,
    free_curve_deleted = 23,
    free_surface_deleted = 24,
    free_surface_created = 25,
    sheet_body_created = 26,
    sheet_body_deleted = 27,
    sheet_body_updated = 28,
    boundary_layer_created = 29,
    boundary_layer_deleted = 30,
    id_changed = 31,
    highlighted = 32,
    unhighlighted = 33,
    entity_pre_selected = 34,
    entity_name_changed = 35,
    entities_modified = 36,
    group_created = 37,
    group_modified = 38,
    group_deleted = 39,
    assembly_tree_modified = 40,
    assembly_child_added = 41,
    assembly_child_name_changed = 42,
    assembly_child_instance_changed = 43,
    assembly_child_description_changed = 44,
    assembly_child_removed = 45,
    volume_added_to_part = 46,
    volume_removed_from_part = 47,
    graphics_mode_modified = 48,
    graphics_pick_type_modified = 49,
    genesis_entity_modified = 50,
    material_modified = 51,
    material_group_modified = 52,
    material_property_modified = 53,
    media_modified = 54,
    bc_container_entity_modified = 55,
    bc_entity_modified = 56,
    initial_condition_modified = 57,
    constraint_modified = 58,
    coord_sys_modified = 59,
    model_reset = 60,
    command_complete = 61,
    command_start = 62,
    ids_compressed = 63,
    healer_complete = 64,
    composite_creation_complete = 65,
    split_surface_complete = 66,
    collapse_curve_complete = 67,
    auto_clean_complete = 68,
    geometry_defeaturing_complete = 69,
    remove_topology_complete = 70,
    remove_surface_complete = 71,
    tweak_target_complete = 72,
    regularize_entity_complete = 73,
    entity_visibility_changed = 74,
    exodus_entity_visibility_changed = 75,
    developer_command_toggled = 76,
    mesh_created = 77,
    import_acis_complete = 78,
    import_complete = 79,
    export_complete = 80,
    geometry_engine_changed = 81,
    working_directory_changed = 82,
    fatal_event_encountered = 83,
    tvo_file_read = 84,
    tvo_file_saved = 85,
    ml_training_complete = 86,
    copy_surface_complete = 87,
    midsurface_complete = 88,
    merge_complete = 89,
};
} // namespace event
} // namespace

void WorkerTIObserve::add_entity_monitor(EntityMonitor* monitor) {
    if (!monitor)
        return;
    entity_monitors[monitor->entity_type().toStdString()].try_emplace(monitor->entity_id(),
                                                                      monitor);
}

QJsonObject* WorkerTIObserve::add_record(int code) {
    return observe_monitor ? observe_monitor->add_event(code) : nullptr;
}

void WorkerTIObserve::flag(Flag setter) {
    if (model_monitor && setter)
        (model_monitor->*setter)();
}

void WorkerTIObserve::id_event(int code, int id, Flag setter, const char* marked_type) {
    if (QJsonObject* record = add_record(code))
        record->insert(key_id, id);
    flag(setter);
    if (marked_type)
        mark(marked_type, id);
}

void WorkerTIObserve::id_action_event(int code, int id, const std::string& action, Flag setter,
                                      const char* marked_type) {
    if (QJsonObject* record = add_record(code)) {
        record->insert(key_id, id);
        record->insert(key_action, text(action));
    }
    flag(setter);
    if (marked_type)
        mark(marked_type, id);
}

void WorkerTIObserve::typed_action_event(int code, const std::string& type, int id,
                                         const std::string& action, Flag setter) {
    if (QJsonObject* record = add_record(code)) {
        record->insert(key_type, text(type));
        record->insert(key_id, id);
        record->insert(key_action, text(action));
    }
    flag(setter);
    mark(type, id);
}

void WorkerTIObserve::typed_id_event(int code, const std::string& type, int id, Flag setter) {
    if (QJsonObject* record = add_record(code)) {
        record->insert(key_type, text(type));
        record->insert(key_id, id);
    }
    flag(setter);
    mark(type, id);
}

void WorkerTIObserve::mark(const std::string& type, int id) {
    const auto of_type = entity_monitors.find(type);
    if (of_type == entity_monitors.end())
        return;
    const auto monitor = of_type->second.find(id);
    if (monitor != of_type->second.end())
        monitor->second->mark_modified();
}

// ---- Events without arguments ---------------------------------------------------------------

void WorkerTIObserve::notify_valfold_modified() {
    add_record(event::valfold_modified);
}
void WorkerTIObserve::notify_merge_completed() {
    add_record(event::merge_completed);
}
void WorkerTIObserve::notify_webcut_completed() {
    add_record(event::webcut_completed);
}
void WorkerTIObserve::notify_undo_state_changed() {
    add_record(event::undo_state_changed);
}
void WorkerTIObserve::notify_undo_complete() {
    add_record(event::undo_complete);
}
void WorkerTIObserve::notify_boolean_operation_complete() {
    add_record(event::boolean_operation_complete);
}
void WorkerTIObserve::notify_entities_modified() {
    add_record(event::entities_modified);
}
void WorkerTIObserve::notify_assembly_tree_modified() {
    add_record(event::assembly_tree_modified);
}
void WorkerTIObserve::notify_model_reset() {
    add_record(event::model_reset);
}
void WorkerTIObserve::notify_command_complete() {
    add_record(event::command_complete);
}
void WorkerTIObserve::notify_command_start() {
    add_record(event::command_start);
}
void WorkerTIObserve::notify_ids_compressed() {
    add_record(event::ids_compressed);
}
void WorkerTIObserve::notify_healer_complete() {
    add_record(event::healer_complete);
}
void WorkerTIObserve::notify_composite_creation_complete() {
    add_record(event::composite_creation_complete);
}
void WorkerTIObserve::notify_split_surface_complete() {
    add_record(event::split_surface_complete);
}
void WorkerTIObserve::notify_collapse_curve_complete() {
    add_record(event::collapse_curve_complete);
}
void WorkerTIObserve::notify_auto_clean_complete() {
    add_record(event::auto_clean_complete);
}
void WorkerTIObserve::notify_geometry_defeaturing_complete() {
    add_record(event::geometry_defeaturing_complete);
}
void WorkerTIObserve::notify_remove_topology_complete() {
    add_record(event::remove_topology_complete);
}
void WorkerTIObserve::notify_remove_surface_complete() {
    add_record(event::remove_surface_complete);
}
void WorkerTIObserve::notify_tweak_target_complete() {
    add_record(event::tweak_target_complete);
}
void WorkerTIObserve::notify_ml_training_complete() {
    add_record(event::ml_training_complete);
}
void WorkerTIObserve::notify_copy_surface_complete() {
    add_record(event::copy_surface_complete);
}
void WorkerTIObserve::notify_midsurface_complete() {
    add_record(event::midsurface_complete);
}
void WorkerTIObserve::notify_merge_complete() {
    add_record(event::merge_complete);
}
void WorkerTIObserve::notify_regularize_entity_complete() {
    add_record(event::regularize_entity_complete);
}
void WorkerTIObserve::notify_import_acis_complete() {
    add_record(event::import_acis_complete);
}
void WorkerTIObserve::notify_fatal_event_encountered() {
    add_record(event::fatal_event_encountered);
}

// ---- Geometry and boundary layers: one id ------------------------------------------------------

void WorkerTIObserve::notify_body_created(int id) {
    id_event(event::body_created, id, &ModelMonitor::set_geometry_changed, "body");
}
void WorkerTIObserve::notify_body_deleted(int id) {
    id_event(event::body_deleted, id, &ModelMonitor::set_geometry_changed, nullptr);
}
void WorkerTIObserve::notify_body_updated(int id) {
    id_event(event::body_updated, id, &ModelMonitor::set_geometry_changed, "body");
}
void WorkerTIObserve::notify_volume_updated(int id) {
    id_event(event::volume_updated, id, &ModelMonitor::set_geometry_changed, "volume");
}
void WorkerTIObserve::notify_volume_created(int id) {
    id_event(event::volume_created, id, &ModelMonitor::set_geometry_changed, "volume");
}
void WorkerTIObserve::notify_volume_deleted(int id) {
    id_event(event::volume_deleted, id, &ModelMonitor::set_geometry_changed, nullptr);
}
void WorkerTIObserve::notify_surface_created(int id) {
    id_event(event::surface_created, id, &ModelMonitor::set_geometry_changed, "surface");
}
void WorkerTIObserve::notify_surface_deleted(int id) {
    id_event(event::surface_deleted, id, &ModelMonitor::set_geometry_changed, nullptr);
}
void WorkerTIObserve::notify_surface_updated(int id) {
    id_event(event::surface_updated, id, &ModelMonitor::set_geometry_changed, "surface");
}
void WorkerTIObserve::notify_curve_created(int id) {
    id_event(event::curve_created, id, &ModelMonitor::set_geometry_changed, "curve");
}
void WorkerTIObserve::notify_curve_deleted(int id) {
    id_event(event::curve_deleted, id, &ModelMonitor::set_geometry_changed, nullptr);
}
void WorkerTIObserve::notify_vertex_created(int id) {
    id_event(event::vertex_created, id, &ModelMonitor::set_geometry_changed, "vertex");
}
void WorkerTIObserve::notify_vertex_deleted(int id) {
    id_event(event::vertex_deleted, id, &ModelMonitor::set_geometry_changed, nullptr);
}
void WorkerTIObserve::notify_free_vertex_created(int id) {
    id_event(event::free_vertex_created, id, &ModelMonitor::set_geometry_changed, "vertex");
}
void WorkerTIObserve::notify_free_curve_created(int id) {
    id_event(event::free_curve_created, id, &ModelMonitor::set_geometry_changed, "curve");
}
void WorkerTIObserve::notify_free_vertex_deleted(int id) {
    id_event(event::free_vertex_deleted, id, &ModelMonitor::set_geometry_changed, nullptr);
}
void WorkerTIObserve::notify_free_curve_deleted(int id) {
    id_event(event::free_curve_deleted, id, &ModelMonitor::set_geometry_changed, nullptr);
}
void WorkerTIObserve::notify_free_surface_deleted(int id) {
    id_event(event::free_surface_deleted, id, &ModelMonitor::set_geometry_changed, nullptr);
}
void WorkerTIObserve::notify_free_surface_created(int id) {
    id_event(event::free_surface_created, id, &ModelMonitor::set_geometry_changed, "surface");
}
void WorkerTIObserve::notify_sheet_body_created(int id) {
    id_event(event::sheet_body_created, id, &ModelMonitor::set_geometry_changed, "body");
}
void WorkerTIObserve::notify_sheet_body_deleted(int id) {
    id_event(event::sheet_body_deleted, id, &ModelMonitor::set_geometry_changed, nullptr);
}
void WorkerTIObserve::notify_sheet_body_updated(int id) {
    id_event(event::sheet_body_updated, id, &ModelMonitor::set_geometry_changed, "body");
}
void WorkerTIObserve::notify_boundary_layer_created(int id) {
    id_event(event::boundary_layer_created, id, &ModelMonitor::set_boundary_layers_changed,
             "boundary_layer");
}
void WorkerTIObserve::notify_boundary_layer_deleted(int id) {
    id_event(event::boundary_layer_deleted, id, &ModelMonitor::set_boundary_layers_changed,
             nullptr);
}
void WorkerTIObserve::notify_group_created(int id) {
    id_event(event::group_created, id, &ModelMonitor::set_groups_changed, "group");
}
void WorkerTIObserve::notify_group_modified(int id) {
    id_event(event::group_modified, id, &ModelMonitor::set_groups_changed, "group");
}
void WorkerTIObserve::notify_group_deleted(int id) {
    id_event(event::group_deleted, id, &ModelMonitor::set_groups_changed, nullptr);
}

void WorkerTIObserve::notify_assembly_child_removed(int id) {
    if (QJsonObject* record = add_record(event::assembly_child_removed))
        record->insert(key_id, id);
}

// ---- Identity ---------------------------------------------------------------------------------

void WorkerTIObserve::notify_merge(const std::string& type, const std::string& new_name, int old_id,
                                   int new_id) {
    if (QJsonObject* record = add_record(event::merge)) {
        record->insert(key_type, text(type));
        record->insert(QStringLiteral("new_name"), text(new_name));
        record->insert(QStringLiteral("old_id"), old_id);
        record->insert(QStringLiteral("new_id"), new_id);
    }
}

void WorkerTIObserve::notify_id_changed(const std::string& type, int old_id, int new_id) {
    if (QJsonObject* record = add_record(event::id_changed)) {
        record->insert(key_type, text(type));
        record->insert(QStringLiteral("old_id"), old_id);
        record->insert(QStringLiteral("new_id"), new_id);
    }
    flag(&ModelMonitor::set_fea_bcs_changed);
    flag(&ModelMonitor::set_geometry_changed);
    // Keys are not rewritten: a monitor of the old id stays as it is, and one that already
    // watched the new id learns that its entity changed.
    mark(type, new_id);
}

void WorkerTIObserve::notify_entity_name_changed(const std::string& type, int id) {
    if (QJsonObject* record = add_record(event::entity_name_changed)) {
        record->insert(QStringLiteral("geom_type"), text(type));
        record->insert(key_id, id);
    }
    flag(&ModelMonitor::set_geometry_changed);
    mark(type, id);
}

// ---- Selection and graphics -------------------------------------------------------------------

void WorkerTIObserve::notify_highlighted(const std::vector<std::pair<std::string, int>>& entities) {
    // Graphics seam: graphics_monitor->note_highlighted(entities) goes first, once it exists.
    if (QJsonObject* record = add_record(event::highlighted))
        record->insert(QStringLiteral("entities"), entity_list(entities));
}

void WorkerTIObserve::notify_unhighlighted(
    const std::vector<std::pair<std::string, int>>& entities) {
    // Graphics seam: graphics_monitor->note_unhighlighted(entities) goes first, once it exists.
    if (QJsonObject* record = add_record(event::unhighlighted))
        record->insert(QStringLiteral("entities"), entity_list(entities));
}

void WorkerTIObserve::notify_entity_pre_selected(const std::string& type, bool add_or_remove) {
    if (QJsonObject* record = add_record(event::entity_pre_selected)) {
        record->insert(QStringLiteral("geom_type"), text(type));
        record->insert(QStringLiteral("add_or_remove"), number(add_or_remove));
    }
}

void WorkerTIObserve::notify_graphics_mode_modified() {
    // Graphics seam: graphics_monitor->note_mode_modified() goes first, once it exists.
    add_record(event::graphics_mode_modified);
}

void WorkerTIObserve::notify_graphics_pick_type_modified() {
    // Graphics seam: graphics_monitor->note_pick_type_modified() goes first, once it exists.
    add_record(event::graphics_pick_type_modified);
}

void WorkerTIObserve::notify_entity_visibility_changed(const std::string& type, int id) {
    typed_id_event(event::entity_visibility_changed, type, id, &ModelMonitor::set_geometry_changed);
}

void WorkerTIObserve::notify_exodus_entity_visibility_changed(const std::string& type, int id) {
    typed_id_event(event::exodus_entity_visibility_changed, type, id,
                   &ModelMonitor::set_exodus_changed);
}

// ---- Assemblies -------------------------------------------------------------------------------

void WorkerTIObserve::notify_assembly_child_added(const std::string& type, const std::string& path,
                                                  const std::string& name, int instance, int id,
                                                  int parent_id) {
    if (QJsonObject* record = add_record(event::assembly_child_added)) {
        record->insert(key_type, text(type));
        record->insert(QStringLiteral("path"), text(path));
        record->insert(QStringLiteral("name"), text(name));
        record->insert(QStringLiteral("instance"), instance);
        record->insert(key_id, id);
        record->insert(QStringLiteral("parent_id"), parent_id);
    }
}

void WorkerTIObserve::notify_assembly_child_name_changed(const std::string& type,
                                                         const std::string& path,
                                                         const std::string& name, int id) {
    if (QJsonObject* record = add_record(event::assembly_child_name_changed)) {
        record->insert(key_type, text(type));
        record->insert(QStringLiteral("path"), text(path));
        record->insert(QStringLiteral("name"), text(name));
        record->insert(key_id, id);
    }
}

void WorkerTIObserve::notify_assembly_child_instance_changed(const std::string& type, int instance,
                                                             int id) {
    if (QJsonObject* record = add_record(event::assembly_child_instance_changed)) {
        record->insert(key_type, text(type));
        record->insert(QStringLiteral("instance"), instance);
        record->insert(key_id, id);
    }
}

void WorkerTIObserve::notify_assembly_child_description_changed(int id,
                                                                const std::string& description) {
    if (QJsonObject* record = add_record(event::assembly_child_description_changed)) {
        record->insert(key_id, id);
        record->insert(QStringLiteral("description"), text(description));
    }
}

void WorkerTIObserve::notify_volume_added_to_part(int part_id, int volume_id) {
    if (QJsonObject* record = add_record(event::volume_added_to_part)) {
        record->insert(QStringLiteral("part_id"), part_id);
        record->insert(QStringLiteral("volume_id"), volume_id);
    }
}

void WorkerTIObserve::notify_volume_removed_from_part(int part_id, int volume_id) {
    if (QJsonObject* record = add_record(event::volume_removed_from_part)) {
        record->insert(QStringLiteral("part_id"), part_id);
        record->insert(QStringLiteral("volume_id"), volume_id);
    }
}

// ---- Finite-element containers, boundary conditions, materials --------------------------------

void WorkerTIObserve::notify_genesis_entity_modified(const std::string& type, int id,
                                                     const std::string& action) {
    typed_action_event(event::genesis_entity_modified, type, id, action,
                       &ModelMonitor::set_exodus_changed);
}
void WorkerTIObserve::notify_bc_container_entity_modified(const std::string& type, int id,
                                                          const std::string& action) {
    typed_action_event(event::bc_container_entity_modified, type, id, action,
                       &ModelMonitor::set_fea_bcs_changed);
}
void WorkerTIObserve::notify_bc_entity_modified(const std::string& type, int id,
                                                const std::string& action) {
    typed_action_event(event::bc_entity_modified, type, id, action,
                       &ModelMonitor::set_fea_bcs_changed);
}

void WorkerTIObserve::notify_material_modified(int id, const std::string& action) {
    id_action_event(event::material_modified, id, action, &ModelMonitor::set_materials_changed,
                    "material");
}
// A medium's change is a CFD boundary-condition change for the model tree and the entity marks,
// although "media" selects a material monitor: clients rely on this asymmetry.
void WorkerTIObserve::notify_media_modified(int id, const std::string& action) {
    id_action_event(event::media_modified, id, action, &ModelMonitor::set_cfd_bcs_changed,
                    "cfd_bc");
}
void WorkerTIObserve::notify_initial_condition_modified(int id, const std::string& action) {
    id_action_event(event::initial_condition_modified, id, action,
                    &ModelMonitor::set_fea_bcs_changed, "initial_condition");
}
void WorkerTIObserve::notify_constraint_modified(int id, const std::string& action) {
    id_action_event(event::constraint_modified, id, action, &ModelMonitor::set_fea_bcs_changed,
                    "constraint");
}
void WorkerTIObserve::notify_coord_sys_modified(int id, const std::string& action) {
    id_action_event(event::coord_sys_modified, id, action, &ModelMonitor::set_fea_bcs_changed,
                    nullptr);
}

void WorkerTIObserve::notify_material_group_modified(const std::string& type_name,
                                                     const std::string& action) {
    if (QJsonObject* record = add_record(event::material_group_modified)) {
        record->insert(QStringLiteral("type_name"), text(type_name));
        record->insert(key_action, text(action));
    }
    flag(&ModelMonitor::set_materials_changed);
}

void WorkerTIObserve::notify_material_property_modified(const std::string& property_name,
                                                        const std::string& action) {
    if (QJsonObject* record = add_record(event::material_property_modified)) {
        record->insert(QStringLiteral("prop_name"), text(property_name));
        record->insert(key_action, text(action));
    }
    flag(&ModelMonitor::set_materials_changed);
}

// ---- Meshing, files, session ------------------------------------------------------------------

void WorkerTIObserve::notify_mesh_created(const std::string& type, int id) {
    // No model flag: meshing changes no section of the model tree.
    typed_id_event(event::mesh_created, type, id, nullptr);
}

void WorkerTIObserve::notify_developer_command_toggled(bool on) {
    if (QJsonObject* record = add_record(event::developer_command_toggled))
        record->insert(QStringLiteral("on"), number(on));
}

void WorkerTIObserve::notify_import_complete(const std::string& path, bool successful) {
    if (QJsonObject* record = add_record(event::import_complete)) {
        record->insert(QStringLiteral("filepath"), text(path));
        record->insert(QStringLiteral("import_successful"), number(successful));
    }
}

void WorkerTIObserve::notify_export_complete(const std::string& path, bool successful) {
    if (QJsonObject* record = add_record(event::export_complete)) {
        record->insert(QStringLiteral("filepath"), text(path));
        record->insert(QStringLiteral("export_successful"), number(successful));
    }
}

void WorkerTIObserve::notify_geometry_engine_changed(const std::string& short_name,
                                                     const std::string& long_name) {
    if (QJsonObject* record = add_record(event::geometry_engine_changed)) {
        record->insert(QStringLiteral("short_name"), text(short_name));
        record->insert(QStringLiteral("long_name"), text(long_name));
    }
}

void WorkerTIObserve::notify_working_directory_changed() {
    // The kernel passes nothing: the directory is read when the event happens.
    if (QJsonObject* record = add_record(event::working_directory_changed))
        record->insert(QStringLiteral("directory"),
                       text(TarvoFileUtil::get_current_working_directory()));
}

void WorkerTIObserve::notify_tvo_file_read(const std::string& file_name) {
    if (QJsonObject* record = add_record(event::tvo_file_read))
        record->insert(QStringLiteral("filename"), text(file_name));
}

void WorkerTIObserve::notify_tvo_file_saved(const std::string& file_name, bool is_tmp_file) {
    if (QJsonObject* record = add_record(event::tvo_file_saved)) {
        record->insert(QStringLiteral("filename"), text(file_name));
        record->insert(QStringLiteral("is_tmp_file"), number(is_tmp_file));
    }
}
