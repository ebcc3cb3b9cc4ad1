// What one kernel event does to the monitors of a running task: the record it leaves for the
// clients that selected it, the model sections it flags and the entity monitor it marks.

#include "JsonPrinting.h"

#include "monitors/EntityMonitor.h"
#include "monitors/ModelMonitor.h"
#include "monitors/TIObserveMonitor.h"
#include "monitors/WorkerTIObserve.h"

#include "tarvo_util/TarvoFileUtil.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <numeric>
#include <string>
#include <vector>

namespace {

// An entity monitor of any type that reads nothing: the observer only files and marks it.
class ProbeMonitor : public EntityMonitor {
public:
    using EntityMonitor::EntityMonitor;
    void update() override {}
};

enum Flag : unsigned {
    geometry = 1,
    exodus = 2,
    fea_bcs = 4,
    cfd_bcs = 8,
    materials = 16,
    boundary_layers = 32,
    groups = 64,
};

unsigned flags_of(const ModelMonitor& model) {
    const auto bit = [](bool on, Flag flag) { return on ? static_cast<unsigned>(flag) : 0u; };
    return bit(model.is_geometry_changed(), geometry) | bit(model.is_exodus_changed(), exodus) |
           bit(model.is_fea_bcs_changed(), fea_bcs) | bit(model.is_cfd_bcs_changed(), cfd_bcs) |
           bit(model.is_materials_changed(), materials) |
           bit(model.is_boundary_layers_changed(), boundary_layers) |
           bit(model.is_groups_changed(), groups);
}

using Entity = std::pair<std::string, int>;

// The entities that every case watches: among them the targets of every mark, the old id of a
// renumbering, and entities of types that must not be marked instead ("material" 5 beside
// "cfd_bc" 5, the deleted volume 4).
const std::vector<Entity> watched = {
    {"volume", 4},         {"volume", 7},
    {"surface", 6},        {"curve", 2},
    {"vertex", 3},         {"body", 2},
    {"boundary_layer", 3}, {"group", 9},
    {"block", 2},          {"material", 3},
    {"material", 5},       {"cfd_bc", 5},
    {"force", 1},          {"initial_condition", 8},
    {"constraint", 4},     {"nodeset", 2},
};

struct EventCase {
    const char* name;
    std::function<void(WorkerTIObserve&)> fire;
    // The record a client that selected the event gets; empty when the event is never recorded.
    QJsonObject record;
    unsigned flags;
    std::vector<Entity> marks;
};

QJsonObject event(const char* name, QJsonObject fields = {}) {
    fields.insert(QStringLiteral("event_name"), QLatin1String(name));
    return fields;
}

const std::vector<EventCase>& cases() {
    using W = WorkerTIObserve;
    static const std::vector<EventCase> table = {
        {"merge",
         [](W& o) { o.notify_merge("surface", "top", 3, 4); },
         event("merge", {{"type", "surface"}, {"new_name", "top"}, {"old_id", 3}, {"new_id", 4}}),
         0,
         {}},
        {"merge_complete", [](W& o) { o.notify_merge_complete(); }, event("merge_complete"), 0, {}},
        {"body_created",
         [](W& o) { o.notify_body_created(2); },
         event("body_created", {{"id", 2}}),
         geometry,
         {{"body", 2}}},
        {"volume_created",
         [](W& o) { o.notify_volume_created(4); },
         event("volume_created", {{"id", 4}}),
         geometry,
         {{"volume", 4}}},
        {"volume_updated",
         [](W& o) { o.notify_volume_updated(7); },
         event("volume_updated", {{"id", 7}}),
         geometry,
         {{"volume", 7}}},
        // A deleted entity's monitor is left alone: it will find that its entity is gone.
        {"volume_deleted",
         [](W& o) { o.notify_volume_deleted(4); },
         event("volume_deleted", {{"id", 4}}),
         geometry,
         {}},
        {"free_surface_created",
         [](W& o) { o.notify_free_surface_created(6); },
         event("free_surface_created", {{"id", 6}}),
         geometry,
         {{"surface", 6}}},
        {"free_curve_created",
         [](W& o) { o.notify_free_curve_created(2); },
         event("free_curve_created", {{"id", 2}}),
         geometry,
         {{"curve", 2}}},
        {"vertex_created",
         [](W& o) { o.notify_vertex_created(3); },
         event("vertex_created", {{"id", 3}}),
         geometry,
         {{"vertex", 3}}},
        {"sheet_body_updated",
         [](W& o) { o.notify_sheet_body_updated(2); },
         event("sheet_body_updated", {{"id", 2}}),
         geometry,
         {{"body", 2}}},
        {"boundary_layer_created",
         [](W& o) { o.notify_boundary_layer_created(3); },
         event("boundary_layer_created", {{"id", 3}}),
         boundary_layers,
         {{"boundary_layer", 3}}},
        {"boundary_layer_deleted",
         [](W& o) { o.notify_boundary_layer_deleted(3); },
         event("boundary_layer_deleted", {{"id", 3}}),
         boundary_layers,
         {}},
        // Sizing sources stay with the kernel: no record, no flag, even when everything is
        // selected.
        {"sizing_source_created", [](W& o) { o.notify_sizing_source_created(4); }, {}, 0, {}},
        // Only the new id is marked; the old id's monitor keeps watching a number that is gone.
        {"id_changed",
         [](W& o) { o.notify_id_changed("volume", 4, 7); },
         event("id_changed", {{"type", "volume"}, {"old_id", 4}, {"new_id", 7}}),
         fea_bcs | geometry,
         {{"volume", 7}}},
        {"highlighted",
         [](W& o) {
             o.notify_highlighted({{"volume", 1}, {"surface", 2}});
         },
         event("highlighted",
               {{"entities", QJsonArray{QJsonArray{"volume", 1}, QJsonArray{"surface", 2}}}}),
         0,
         {}},
        {"unhighlighted",
         [](W& o) { o.notify_unhighlighted({}); },
         event("unhighlighted", {{"entities", QJsonArray{}}}),
         0,
         {}},
        {"entity_pre_selected",
         [](W& o) { o.notify_entity_pre_selected("curve", true); },
         event("entity_pre_selected", {{"geom_type", "curve"}, {"add_or_remove", 1}}),
         0,
         {}},
        {"entity_name_changed",
         [](W& o) { o.notify_entity_name_changed("surface", 6); },
         event("entity_name_changed", {{"geom_type", "surface"}, {"id", 6}}),
         geometry,
         {{"surface", 6}}},
        {"group_modified",
         [](W& o) { o.notify_group_modified(9); },
         event("group_modified", {{"id", 9}}),
         groups,
         {{"group", 9}}},
        {"group_deleted",
         [](W& o) { o.notify_group_deleted(9); },
         event("group_deleted", {{"id", 9}}),
         groups,
         {}},
        {"assembly_child_added",
         [](W& o) { o.notify_assembly_child_added("part", "/a/b", "b", 2, 11, 10); },
         event("assembly_child_added", {{"type", "part"},
                                        {"path", "/a/b"},
                                        {"name", "b"},
                                        {"instance", 2},
                                        {"id", 11},
                                        {"parent_id", 10}}),
         0,
         {}},
        {"assembly_child_description_changed",
         [](W& o) { o.notify_assembly_child_description_changed(11, "steel bolt"); },
         event("assembly_child_description_changed", {{"id", 11}, {"description", "steel bolt"}}),
         0,
         {}},
        {"volume_added_to_part",
         [](W& o) { o.notify_volume_added_to_part(10, 4); },
         event("volume_added_to_part", {{"part_id", 10}, {"volume_id", 4}}),
         0,
         {}},
        {"genesis_entity_modified",
         [](W& o) { o.notify_genesis_entity_modified("block", 2, "add"); },
         event("genesis_entity_modified", {{"type", "block"}, {"id", 2}, {"action", "add"}}),
         exodus,
         {{"block", 2}}},
        {"material_modified",
         [](W& o) { o.notify_material_modified(3, "create"); },
         event("material_modified", {{"id", 3}, {"action", "create"}}),
         materials,
         {{"material", 3}}},
        {"material_group_modified",
         [](W& o) { o.notify_material_group_modified("fluid", "modify"); },
         event("material_group_modified", {{"type_name", "fluid"}, {"action", "modify"}}),
         materials,
         {}},
        {"material_property_modified",
         [](W& o) { o.notify_material_property_modified("DENSITY", "modify"); },
         event("material_property_modified", {{"prop_name", "DENSITY"}, {"action", "modify"}}),
         materials,
         {}},
        // A medium is a CFD boundary-condition change: "cfd_bc" 5 is marked, "material" 5 isn't.
        {"media_modified",
         [](W& o) { o.notify_media_modified(5, "modify"); },
         event("media_modified", {{"id", 5}, {"action", "modify"}}),
         cfd_bcs,
         {{"cfd_bc", 5}}},
        {"bc_entity_modified",
         [](W& o) { o.notify_bc_entity_modified("force", 1, "create"); },
         event("bc_entity_modified", {{"type", "force"}, {"id", 1}, {"action", "create"}}),
         fea_bcs,
         {{"force", 1}}},
        {"initial_condition_modified",
         [](W& o) { o.notify_initial_condition_modified(8, "delete"); },
         event("initial_condition_modified", {{"id", 8}, {"action", "delete"}}),
         fea_bcs,
         {{"initial_condition", 8}}},
        {"constraint_modified",
         [](W& o) { o.notify_constraint_modified(4, "modify"); },
         event("constraint_modified", {{"id", 4}, {"action", "modify"}}),
         fea_bcs,
         {{"constraint", 4}}},
        {"coord_sys_modified",
         [](W& o) { o.notify_coord_sys_modified(1, "create"); },
         event("coord_sys_modified", {{"id", 1}, {"action", "create"}}),
         fea_bcs,
         {}},
        // A reset shows in the model only through the delete events that come with it.
        {"model_reset", [](W& o) { o.notify_model_reset(); }, event("model_reset"), 0, {}},
        {"command_start", [](W& o) { o.notify_command_start(); }, event("command_start"), 0, {}},
        {"regularize_entity_complete",
         [](W& o) { o.notify_regularize_entity_complete(); },
         event("regularize_entity_complete"),
         0,
         {}},
        {"entity_visibility_changed",
         [](W& o) { o.notify_entity_visibility_changed("curve", 2); },
         event("entity_visibility_changed", {{"type", "curve"}, {"id", 2}}),
         geometry,
         {{"curve", 2}}},
        {"exodus_entity_visibility_changed",
         [](W& o) { o.notify_exodus_entity_visibility_changed("nodeset", 2); },
         event("exodus_entity_visibility_changed", {{"type", "nodeset"}, {"id", 2}}),
         exodus,
         {{"nodeset", 2}}},
        {"developer_command_toggled",
         [](W& o) { o.notify_developer_command_toggled(true); },
         event("developer_command_toggled", {{"on", 1}}),
         0,
         {}},
        // Meshing marks the entity but leaves the model tree alone.
        {"mesh_created",
         [](W& o) { o.notify_mesh_created("volume", 4); },
         event("mesh_created", {{"type", "volume"}, {"id", 4}}),
         0,
         {{"volume", 4}}},
        {"import_complete",
         [](W& o) { o.notify_import_complete("/tmp/part.step", false); },
         event("import_complete", {{"filepath", "/tmp/part.step"}, {"import_successful", 0}}),
         0,
         {}},
        {"export_complete",
         [](W& o) { o.notify_export_complete("/tmp/part.e", true); },
         event("export_complete", {{"filepath", "/tmp/part.e"}, {"export_successful", 1}}),
         0,
         {}},
        {"geometry_engine_changed",
         [](W& o) { o.notify_geometry_engine_changed("OCC", "OpenCASCADE"); },
         event("geometry_engine_changed", {{"short_name", "OCC"}, {"long_name", "OpenCASCADE"}}),
         0,
         {}},
        {"working_directory_changed",
         [](W& o) { o.notify_working_directory_changed(); },
         event("working_directory_changed",
               {{"directory",
                 QString::fromStdString(TarvoFileUtil::get_current_working_directory())}}),
         0,
         {}},
        {"tvo_file_read",
         [](W& o) { o.notify_tvo_file_read("model.tvo"); },
         event("tvo_file_read", {{"filename", "model.tvo"}}),
         0,
         {}},
        {"tvo_file_saved",
         [](W& o) { o.notify_tvo_file_saved("autosave.tvo", true); },
         event("tvo_file_saved", {{"filename", "autosave.tvo"}, {"is_tmp_file", 1}}),
         0,
         {}},
    };
    return table;
}

std::set<int> all_events() {
    std::set<int> codes;
    for (int code = 0; code < TIObserveMonitor::event_count; ++code)
        codes.insert(code);
    return codes;
}

class ObserverEvent : public ::testing::TestWithParam<std::tuple<size_t, bool>> {
protected:
    void SetUp() override {
        for (const auto& [type, id] : watched) {
            probes.push_back(std::make_unique<ProbeMonitor>(QString::fromStdString(type), id));
            observer.add_entity_monitor(probes.back().get());
        }
        observer.set_model_monitor(&model);
    }

    WorkerTIObserve observer;
    ModelMonitor model;
    std::vector<std::unique_ptr<ProbeMonitor>> probes;
};

TEST_P(ObserverEvent, RecordsFlagsAndMarks) {
    const auto& [index, selected] = GetParam();
    const EventCase& c = cases()[index];
    // Selected: every event is selected. Unselected: none is, and flags and marks must not care.
    TIObserveMonitor events(selected ? all_events() : std::set<int>{});
    observer.set_observe_monitor(&events);

    c.fire(observer);

    if (selected && !c.record.isEmpty()) {
        ASSERT_EQ(events.event_records().size(), 1u);
        EXPECT_EQ(events.event_records()[0].second, c.record)
            << QJsonDocument(events.event_records()[0].second).toJson().toStdString();
        // The code decides delivery, the name is what the client reads: they must agree.
        EXPECT_EQ(TIObserveMonitor::event_name_from_code(events.event_records()[0].first),
                  c.record.value("event_name").toString());
    } else {
        EXPECT_TRUE(events.event_records().empty());
    }

    EXPECT_EQ(flags_of(model), c.flags);

    std::vector<Entity> marked;
    for (const auto& probe : probes)
        if (probe->is_modified())
            marked.emplace_back(probe->entity_type().toStdString(), probe->entity_id());
    EXPECT_EQ(marked, c.marks);
}

INSTANTIATE_TEST_SUITE_P(EventTable, ObserverEvent,
                         ::testing::Combine(::testing::Range<size_t>(0, cases().size()),
                                            ::testing::Bool()),
                         [](const ::testing::TestParamInfo<ObserverEvent::ParamType>& info) {
                             return std::string(cases()[std::get<0>(info.param)].name) +
                                    (std::get<1>(info.param) ? "_selected" : "_unselected");
                         });

TEST(WorkerTIObserve, RecordsPileUpInArrivalOrderWithoutCoalescing) {
    WorkerTIObserve observer;
    TIObserveMonitor events({11, 12});
    observer.set_observe_monitor(&events);

    observer.notify_volume_created(4);
    observer.notify_surface_created(1); // not selected
    observer.notify_volume_deleted(4);
    observer.notify_volume_created(4);

    std::vector<QJsonObject> records;
    for (const auto& [code, fields] : events.event_records())
        records.push_back(fields);
    EXPECT_EQ(records, (std::vector<QJsonObject>{event("volume_created", {{"id", 4}}),
                                                 event("volume_deleted", {{"id", 4}}),
                                                 event("volume_created", {{"id", 4}})}));
}

TEST(WorkerTIObserve, FirstMonitorOfATypeAndIdStaysAndClearingDetachesAll) {
    WorkerTIObserve observer;
    ProbeMonitor first(QStringLiteral("volume"), 1);
    ProbeMonitor second(QStringLiteral("volume"), 1);
    ProbeMonitor other(QStringLiteral("surface"), 1);
    observer.add_entity_monitor(&first);
    observer.add_entity_monitor(&second);
    observer.add_entity_monitor(&other);

    observer.notify_volume_updated(1);
    EXPECT_TRUE(first.is_modified());
    EXPECT_FALSE(second.is_modified());
    EXPECT_FALSE(other.is_modified());

    observer.clear_entity_monitors();
    observer.notify_surface_updated(1);
    EXPECT_FALSE(other.is_modified());
}

TEST(WorkerTIObserve, EventsBetweenTasksGoNowhere) {
    WorkerTIObserve observer;
    ModelMonitor model;
    TIObserveMonitor events(all_events());
    observer.set_model_monitor(&model);
    observer.set_observe_monitor(&events);
    observer.set_model_monitor(nullptr);
    observer.set_observe_monitor(nullptr);

    // With every pointer null and no entity monitor, nothing may be touched.
    observer.notify_volume_created(1);
    observer.notify_id_changed("volume", 1, 2);
    observer.notify_highlighted({{"volume", 2}});
    observer.notify_graphics_mode_modified();
    observer.notify_working_directory_changed();

    EXPECT_TRUE(events.event_records().empty());
    EXPECT_FALSE(model.any_changed());
}

} // namespace
