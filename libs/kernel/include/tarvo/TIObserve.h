#pragma once
// The kernel's observer interface. A subclass overrides the events it cares about; the defaults do
// nothing. Events are delivered on the thread that runs the kernel command, synchronously, in the
// order in which they happen, between notify_command_start and notify_command_complete.
//
// The order of the operations is part of the interface: keep it.

#include <string>
#include <utility>
#include <vector>

namespace TarvoInterface {

class TIObserve {
public:
    TIObserve() = default;
    virtual ~TIObserve();
    TIObserve(const TIObserve&) = delete;
    TIObserve& operator=(const TIObserve&) = delete;

    // Start and stop receiving events. Registering twice is harmless; an observer that is
    // destroyed while registered removes itself.
    void register_observer();
    void unregister_observer();
    bool is_registered() const { return registered; }

    virtual void notify_valfold_modified() {}  // event code 0
    virtual void notify_merge(const std::string& /*type*/, const std::string& /*new_name*/, int /*old_id*/, int /*new_id*/) {}  // event code 1
    virtual void notify_merge_completed() {}  // event code 2
    virtual void notify_webcut_completed() {}  // event code 3
    virtual void notify_undo_state_changed() {}  // event code 4
    virtual void notify_undo_complete() {}  // event code 5
    virtual void notify_boolean_operation_complete() {}  // event code 6
    virtual void notify_body_created(int /*id*/) {}  // event code 7
    virtual void notify_body_deleted(int /*id*/) {}  // event code 8
    virtual void notify_body_updated(int /*id*/) {}  // event code 9
    virtual void notify_volume_updated(int /*id*/) {}  // event code 10
    virtual void notify_volume_created(int /*id*/) {}  // event code 11
    virtual void notify_volume_deleted(int /*id*/) {}  // event code 12
    virtual void notify_surface_created(int /*id*/) {}  // event code 13
    virtual void notify_surface_deleted(int /*id*/) {}  // event code 14
    virtual void notify_surface_updated(int /*id*/) {}  // event code 15
    virtual void notify_curve_created(int /*id*/) {}  // event code 16
    virtual void notify_curve_deleted(int /*id*/) {}  // event code 17
    virtual void notify_vertex_created(int /*id*/) {}  // event code 18
    virtual void notify_vertex_deleted(int /*id*/) {}  // event code 19
    virtual void notify_free_vertex_created(int /*id*/) {}  // event code 20
    virtual void notify_free_curve_created(int /*id*/) {}  // event code 21
    virtual void notify_free_vertex_deleted(int /*id*/) {}  // event code 22
    virtual void notify_free_curve_deleted(int /*id*/) {}  // event code 23
    virtual void notify_free_surface_deleted(int /*id*/) {}  // event code 24
    virtual void notify_free_surface_created(int /*id*/) {}  // event code 25
    virtual void notify_sheet_body_created(int /*id*/) {}  // event code 26
    virtual void notify_sheet_body_deleted(int /*id*/) {}  // event code 27
    virtual void notify_sheet_body_updated(int /*id*/) {}  // event code 28
    virtual void notify_boundary_layer_created(int /*id*/) {}  // event code 29
    virtual void notify_boundary_layer_deleted(int /*id*/) {}  // event code 30
    virtual void notify_sizing_source_created(int /*id*/) {}  // not forwarded to clients
    virtual void notify_sizing_source_deleted(int /*id*/) {}  // not forwarded to clients
    virtual void notify_id_changed(const std::string& /*type*/, int /*old_id*/, int /*new_id*/) {}  // event code 31
    virtual void notify_highlighted(const std::vector<std::pair<std::string, int>>& /*entities*/) {}  // event code 32
    virtual void notify_unhighlighted(const std::vector<std::pair<std::string, int>>& /*entities*/) {}  // event code 33
    virtual void notify_entity_pre_selected(const std::string& /*type*/, bool /*add_or_remove*/) {}  // event code 34
    virtual void notify_entity_name_changed(const std::string& /*type*/, int /*id*/) {}  // event code 35
    virtual void notify_entities_modified() {}  // event code 36
    virtual void notify_group_created(int /*id*/) {}  // event code 37
    virtual void notify_group_modified(int /*id*/) {}  // event code 38
    virtual void notify_group_deleted(int /*id*/) {}  // event code 39
    virtual void notify_assembly_tree_modified() {}  // event code 40
    virtual void notify_assembly_child_added(const std::string& /*type*/, const std::string& /*path*/, const std::string& /*name*/, int /*instance*/, int /*id*/, int /*parent_id*/) {}  // event code 41
    virtual void notify_assembly_child_name_changed(const std::string& /*type*/, const std::string& /*path*/, const std::string& /*name*/, int /*id*/) {}  // event code 42
    virtual void notify_assembly_child_instance_changed(const std::string& /*type*/, int /*instance*/, int /*id*/) {}  // event code 43
    virtual void notify_assembly_child_description_changed(int /*id*/, const std::string& /*description*/) {}  // event code 44
    virtual void notify_assembly_child_removed(int /*id*/) {}  // event code 45
    virtual void notify_volume_added_to_part(int /*part_id*/, int /*volume_id*/) {}  // event code 46
    virtual void notify_volume_removed_from_part(int /*part_id*/, int /*volume_id*/) {}  // event code 47
    virtual void notify_graphics_mode_modified() {}  // event code 48
    virtual void notify_graphics_pick_type_modified() {}  // event code 49
    virtual void notify_genesis_entity_modified(const std::string& /*type*/, int /*id*/, const std::string& /*action*/) {}  // event code 50
    virtual void notify_material_modified(int /*id*/, const std::string& /*action*/) {}  // event code 51
    virtual void notify_material_group_modified(const std::string& /*type_name*/, const std::string& /*action*/) {}  // event code 52
    virtual void notify_material_property_modified(const std::string& /*property_name*/, const std::string& /*action*/) {}  // event code 53
    virtual void notify_media_modified(int /*id*/, const std::string& /*action*/) {}  // event code 54
    virtual void notify_bc_container_entity_modified(const std::string& /*type*/, int /*id*/, const std::string& /*action*/) {}  // event code 55
    virtual void notify_bc_entity_modified(const std::string& /*type*/, int /*id*/, const std::string& /*action*/) {}  // event code 56
    virtual void notify_initial_condition_modified(int /*id*/, const std::string& /*action*/) {}  // event code 57
    virtual void notify_constraint_modified(int /*id*/, const std::string& /*action*/) {}  // event code 58
    virtual void notify_coord_sys_modified(int /*id*/, const std::string& /*action*/) {}  // event code 59
    virtual void notify_model_reset() {}  // event code 60
    virtual void notify_command_complete() {}  // event code 61
    virtual void notify_command_start() {}  // event code 62
    virtual void notify_ids_compressed() {}  // event code 63
    virtual void notify_healer_complete() {}  // event code 64
    virtual void notify_composite_creation_complete() {}  // event code 65
    virtual void notify_split_surface_complete() {}  // event code 66
    virtual void notify_collapse_curve_complete() {}  // event code 67
    virtual void notify_auto_clean_complete() {}  // event code 68
    virtual void notify_geometry_defeaturing_complete() {}  // event code 69
    virtual void notify_remove_topology_complete() {}  // event code 70
    virtual void notify_remove_surface_complete() {}  // event code 71
    virtual void notify_tweak_target_complete() {}  // event code 72
    virtual void notify_ml_training_complete() {}  // event code 86
    virtual void notify_copy_surface_complete() {}  // event code 87
    virtual void notify_midsurface_complete() {}  // event code 88
    virtual void notify_merge_complete() {}  // event code 89
    virtual void notify_blunt_tangency_complete() {}  // not forwarded to clients
    virtual void notify_collapse_angle_complete() {}  // not forwarded to clients
    virtual void notify_regularize_entity_complete() {}  // event code 73
    virtual void notify_entity_visibility_changed(const std::string& /*type*/, int /*id*/) {}  // event code 74
    virtual void notify_exodus_entity_visibility_changed(const std::string& /*type*/, int /*id*/) {}  // event code 75
    virtual void notify_developer_command_toggled(bool /*on*/) {}  // event code 76
    virtual void notify_mesh_created(const std::string& /*type*/, int /*id*/) {}  // event code 77
    virtual void notify_import_acis_complete() {}  // event code 78
    virtual void notify_import_complete(const std::string& /*path*/, bool /*successful*/) {}  // event code 79
    virtual void notify_export_complete(const std::string& /*path*/, bool /*successful*/) {}  // event code 80
    virtual void notify_geometry_engine_changed(const std::string& /*short_name*/, const std::string& /*long_name*/) {}  // event code 81
    virtual void notify_working_directory_changed() {}  // event code 82
    virtual void notify_fatal_event_encountered() {}  // event code 83
    virtual void notify_tvo_file_read(const std::string& /*file_name*/) {}  // event code 84
    virtual void notify_tvo_file_saved(const std::string& /*file_name*/, bool /*is_tmp_file*/) {}  // event code 85

private:
    bool registered = false;
};

} // namespace TarvoInterface
