#pragma once
// The server's kernel observer. It sends nothing: each event becomes up to three effects on the
// monitors of the running task — a record in the event monitor (if a client selected the event),
// a section flag in the model monitor, and the modified mark on the one entity monitor that
// watches the entity — and control returns to the kernel at once.
//
// Threads: owned by TarvoWorker; every operation runs on the worker thread (the overrides inside
// kernel calls). The monitors belong to that thread while their task runs, so nothing is locked.
// Between tasks the pointers are null and the map is empty: events then go nowhere.

#include "tarvo/TIObserve.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

class EntityMonitor;
class GraphicsMonitor;
class ModelMonitor;
class TIObserveMonitor;
class QJsonObject;

class WorkerTIObserve : public TarvoInterface::TIObserve {
public:
    WorkerTIObserve() = default;
    ~WorkerTIObserve() override = default;

    // The task's monitors, not owned; null detaches.
    void set_observe_monitor(TIObserveMonitor* monitor) { observe_monitor = monitor; }
    void set_graphics_monitor(GraphicsMonitor* monitor) { graphics_monitor = monitor; }
    void set_model_monitor(ModelMonitor* monitor) { model_monitor = monitor; }
    // Files the monitor under its type and id; of two with one type and id the first stays.
    void add_entity_monitor(EntityMonitor* monitor);
    void clear_entity_monitors() { entity_monitors.clear(); }

    void notify_valfold_modified() override;
    void notify_merge(const std::string& type, const std::string& new_name, int old_id,
                      int new_id) override;
    void notify_merge_completed() override;
    void notify_webcut_completed() override;
    void notify_undo_state_changed() override;
    void notify_undo_complete() override;
    void notify_boolean_operation_complete() override;
    void notify_body_created(int id) override;
    void notify_body_deleted(int id) override;
    void notify_body_updated(int id) override;
    void notify_volume_updated(int id) override;
    void notify_volume_created(int id) override;
    void notify_volume_deleted(int id) override;
    void notify_surface_created(int id) override;
    void notify_surface_deleted(int id) override;
    void notify_surface_updated(int id) override;
    void notify_curve_created(int id) override;
    void notify_curve_deleted(int id) override;
    void notify_vertex_created(int id) override;
    void notify_vertex_deleted(int id) override;
    void notify_free_vertex_created(int id) override;
    void notify_free_curve_created(int id) override;
    void notify_free_vertex_deleted(int id) override;
    void notify_free_curve_deleted(int id) override;
    void notify_free_surface_deleted(int id) override;
    void notify_free_surface_created(int id) override;
    void notify_sheet_body_created(int id) override;
    void notify_sheet_body_deleted(int id) override;
    void notify_sheet_body_updated(int id) override;
    void notify_boundary_layer_created(int id) override;
    void notify_boundary_layer_deleted(int id) override;
    // Sizing sources are not reported to clients: the kernel's defaults run.
    void notify_id_changed(const std::string& type, int old_id, int new_id) override;
    void notify_highlighted(const std::vector<std::pair<std::string, int>>& entities) override;
    void notify_unhighlighted(const std::vector<std::pair<std::string, int>>& entities) override;
    void notify_entity_pre_selected(const std::string& type, bool add_or_remove) override;
    void notify_entity_name_changed(const std::string& type, int id) override;
    void notify_entities_modified() override;
    void notify_group_created(int id) override;
    void notify_group_modified(int id) override;
    void notify_group_deleted(int id) override;
    void notify_assembly_tree_modified() override;
    void notify_assembly_child_added(const std::string& type, const std::string& path,
                                     const std::string& name, int instance, int id,
                                     int parent_id) override;
    void notify_assembly_child_name_changed(const std::string& type, const std::string& path,
                                            const std::string& name, int id) override;
    void notify_assembly_child_instance_changed(const std::string& type, int instance,
                                                int id) override;
    void notify_assembly_child_description_changed(int id, const std::string& description) override;
    void notify_assembly_child_removed(int id) override;
    void notify_volume_added_to_part(int part_id, int volume_id) override;
    void notify_volume_removed_from_part(int part_id, int volume_id) override;
    void notify_graphics_mode_modified() override;
    void notify_graphics_pick_type_modified() override;
    void notify_genesis_entity_modified(const std::string& type, int id,
                                        const std::string& action) override;
    void notify_material_modified(int id, const std::string& action) override;
    void notify_material_group_modified(const std::string& type_name,
                                        const std::string& action) override;
    void notify_material_property_modified(const std::string& property_name,
                                           const std::string& action) override;
    void notify_media_modified(int id, const std::string& action) override;
    void notify_bc_container_entity_modified(const std::string& type, int id,
                                             const std::string& action) override;
    void notify_bc_entity_modified(const std::string& type, int id,
                                   const std::string& action) override;
    void notify_initial_condition_modified(int id, const std::string& action) override;
    void notify_constraint_modified(int id, const std::string& action) override;
    void notify_coord_sys_modified(int id, const std::string& action) override;
    void notify_model_reset() override;
    void notify_command_complete() override;
    void notify_command_start() override;
    void notify_ids_compressed() override;
    void notify_healer_complete() override;
    void notify_composite_creation_complete() override;
    void notify_split_surface_complete() override;
    void notify_collapse_curve_complete() override;
    void notify_auto_clean_complete() override;
    void notify_geometry_defeaturing_complete() override;
    void notify_remove_topology_complete() override;
    void notify_remove_surface_complete() override;
    void notify_tweak_target_complete() override;
    void notify_ml_training_complete() override;
    void notify_copy_surface_complete() override;
    void notify_midsurface_complete() override;
    void notify_merge_complete() override;
    // Blunt tangency and collapse angle are not reported to clients: the kernel's defaults run.
    void notify_regularize_entity_complete() override;
    void notify_entity_visibility_changed(const std::string& type, int id) override;
    void notify_exodus_entity_visibility_changed(const std::string& type, int id) override;
    void notify_developer_command_toggled(bool on) override;
    void notify_mesh_created(const std::string& type, int id) override;
    void notify_import_acis_complete() override;
    void notify_import_complete(const std::string& path, bool successful) override;
    void notify_export_complete(const std::string& path, bool successful) override;
    void notify_geometry_engine_changed(const std::string& short_name,
                                        const std::string& long_name) override;
    void notify_working_directory_changed() override;
    void notify_fatal_event_encountered() override;
    void notify_tvo_file_read(const std::string& file_name) override;
    void notify_tvo_file_saved(const std::string& file_name, bool is_tmp_file) override;

private:
    using Flag = void (ModelMonitor::*)();

    // The event's record, or null when the task has no monitor of events or nobody selected it.
    QJsonObject* add_record(int code);
    void flag(Flag setter);
    // Marks the monitor of (type, id), if the task has one.
    void mark(const std::string& type, int id);
    // The common shapes: record the fields, set the flag (none if null), mark the entity (none
    // if the type is null).
    void id_event(int code, int id, Flag setter, const char* marked_type);
    void id_action_event(int code, int id, const std::string& action, Flag setter,
                         const char* marked_type);
    void typed_id_event(int code, const std::string& type, int id, Flag setter);
    void typed_action_event(int code, const std::string& type, int id, const std::string& action,
                            Flag setter);

    TIObserveMonitor* observe_monitor = nullptr;
    GraphicsMonitor* graphics_monitor = nullptr;
    ModelMonitor* model_monitor = nullptr;
    std::map<std::string, std::map<int, EntityMonitor*>> entity_monitors;
};
