// What one kernel event does to the monitors of a running task: the record it leaves for the
// clients that selected it, the model sections it flags and the entity monitor it marks.

#include "MonitorTestSupport.h"

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
    const char* name; // the event_name of its record
    std::function<void(WorkerTIObserve&)> fire;
    QJsonObject fields; // the record's other fields
    unsigned flags;
    std::vector<Entity> marks;
};

QJsonObject event(const char* name, QJsonObject fields = {}) {
    fields.insert(QStringLiteral("event_name"), QLatin1String(name));
    return fields;
}

#define FIRE(call) [](WorkerTIObserve& o) { o.call; }

const std::vector<EventCase>& cases() {
    static const std::vector<EventCase> table = [] {
        using A = QJsonArray;
        std::vector<EventCase> t;
        const auto add = [&t](const char* name, std::function<void(WorkerTIObserve&)> fire,
                              QJsonObject fields, unsigned flags, std::vector<Entity> marks = {}) {
            t.push_back({name, std::move(fire), std::move(fields), flags, std::move(marks)});
        };
        add("merge", FIRE(notify_merge("surface", "top", 3, 4)),
            {{"type", "surface"}, {"new_name", "top"}, {"old_id", 3}, {"new_id", 4}}, 0);
        add("merge_complete", FIRE(notify_merge_complete()), {}, 0);
        add("body_created", FIRE(notify_body_created(2)), {{"id", 2}}, geometry, {{"body", 2}});
        add("volume_created", FIRE(notify_volume_created(4)), {{"id", 4}}, geometry,
            {{"volume", 4}});
        add("volume_updated", FIRE(notify_volume_updated(7)), {{"id", 7}}, geometry,
            {{"volume", 7}});
        // A deleted entity's monitor is left alone: it will find that its entity is gone.
        add("volume_deleted", FIRE(notify_volume_deleted(4)), {{"id", 4}}, geometry);
        add("free_surface_created", FIRE(notify_free_surface_created(6)), {{"id", 6}}, geometry,
            {{"surface", 6}});
        add("free_curve_created", FIRE(notify_free_curve_created(2)), {{"id", 2}}, geometry,
            {{"curve", 2}});
        add("vertex_created", FIRE(notify_vertex_created(3)), {{"id", 3}}, geometry,
            {{"vertex", 3}});
        add("sheet_body_updated", FIRE(notify_sheet_body_updated(2)), {{"id", 2}}, geometry,
            {{"body", 2}});
        add("boundary_layer_created", FIRE(notify_boundary_layer_created(3)), {{"id", 3}},
            boundary_layers, {{"boundary_layer", 3}});
        add("boundary_layer_deleted", FIRE(notify_boundary_layer_deleted(3)), {{"id", 3}},
            boundary_layers);
        // Only the new id is marked; the old id's monitor keeps watching a number that is gone.
        add("id_changed", FIRE(notify_id_changed("volume", 4, 7)),
            {{"type", "volume"}, {"old_id", 4}, {"new_id", 7}}, fea_bcs | geometry,
            {{"volume", 7}});
        add("highlighted", FIRE(notify_highlighted({{"volume", 1}, {"surface", 2}})),
            {{"entities", A{A{"volume", 1}, A{"surface", 2}}}}, 0);
        add("unhighlighted", FIRE(notify_unhighlighted({})), {{"entities", A{}}}, 0);
        add("entity_pre_selected", FIRE(notify_entity_pre_selected("curve", true)),
            {{"geom_type", "curve"}, {"add_or_remove", 1}}, 0);
        add("entity_name_changed", FIRE(notify_entity_name_changed("surface", 6)),
            {{"geom_type", "surface"}, {"id", 6}}, geometry, {{"surface", 6}});
        add("group_modified", FIRE(notify_group_modified(9)), {{"id", 9}}, groups, {{"group", 9}});
        add("group_deleted", FIRE(notify_group_deleted(9)), {{"id", 9}}, groups);
        add("assembly_child_added",
            FIRE(notify_assembly_child_added("part", "/a/b", "b", 2, 11, 10)),
            {{"type", "part"},
             {"path", "/a/b"},
             {"name", "b"},
             {"instance", 2},
             {"id", 11},
             {"parent_id", 10}},
            0);
        add("assembly_child_description_changed",
            FIRE(notify_assembly_child_description_changed(11, "steel bolt")),
            {{"id", 11}, {"description", "steel bolt"}}, 0);
        add("volume_added_to_part", FIRE(notify_volume_added_to_part(10, 4)),
            {{"part_id", 10}, {"volume_id", 4}}, 0);
        add("genesis_entity_modified", FIRE(notify_genesis_entity_modified("block", 2, "add")),
            {{"type", "block"}, {"id", 2}, {"action", "add"}}, exodus, {{"block", 2}});
        add("material_modified", FIRE(notify_material_modified(3, "create")),
            {{"id", 3}, {"action", "create"}}, materials, {{"material", 3}});
        add("material_group_modified", FIRE(notify_material_group_modified("fluid", "modify")),
            {{"type_name", "fluid"}, {"action", "modify"}}, materials);
        add("material_property_modified",
            FIRE(notify_material_property_modified("DENSITY", "modify")),
            {{"prop_name", "DENSITY"}, {"action", "modify"}}, materials);
        // A medium is a CFD boundary-condition change: "cfd_bc" 5 is marked, "material" 5 isn't.
        add("media_modified", FIRE(notify_media_modified(5, "modify")),
            {{"id", 5}, {"action", "modify"}}, cfd_bcs, {{"cfd_bc", 5}});
        add("bc_entity_modified", FIRE(notify_bc_entity_modified("force", 1, "create")),
            {{"type", "force"}, {"id", 1}, {"action", "create"}}, fea_bcs, {{"force", 1}});
        add("initial_condition_modified", FIRE(notify_initial_condition_modified(8, "delete")),
            {{"id", 8}, {"action", "delete"}}, fea_bcs, {{"initial_condition", 8}});
        add("constraint_modified", FIRE(notify_constraint_modified(4, "modify")),
            {{"id", 4}, {"action", "modify"}}, fea_bcs, {{"constraint", 4}});
        add("coord_sys_modified", FIRE(notify_coord_sys_modified(1, "create")),
            {{"id", 1}, {"action", "create"}}, fea_bcs);
        // A reset shows in the model only through the delete events that come with it.
        add("model_reset", FIRE(notify_model_reset()), {}, 0);
        add("command_start", FIRE(notify_command_start()), {}, 0);
        add("regularize_entity_complete", FIRE(notify_regularize_entity_complete()), {}, 0);
        add("entity_visibility_changed", FIRE(notify_entity_visibility_changed("curve", 2)),
            {{"type", "curve"}, {"id", 2}}, geometry, {{"curve", 2}});
        add("exodus_entity_visibility_changed",
            FIRE(notify_exodus_entity_visibility_changed("nodeset", 2)),
            {{"type", "nodeset"}, {"id", 2}}, exodus, {{"nodeset", 2}});
        add("developer_command_toggled", FIRE(notify_developer_command_toggled(true)), {{"on", 1}},
            0);
        // Meshing marks the entity but leaves the model tree alone.
        add("mesh_created", FIRE(notify_mesh_created("volume", 4)), {{"type", "volume"}, {"id", 4}},
            0, {{"volume", 4}});
        add("import_complete", FIRE(notify_import_complete("/tmp/part.step", false)),
            {{"filepath", "/tmp/part.step"}, {"import_successful", 0}}, 0);
        add("export_complete", FIRE(notify_export_complete("/tmp/part.e", true)),
            {{"filepath", "/tmp/part.e"}, {"export_successful", 1}}, 0);
        add("geometry_engine_changed", FIRE(notify_geometry_engine_changed("OCC", "OpenCASCADE")),
            {{"short_name", "OCC"}, {"long_name", "OpenCASCADE"}}, 0);
        add("working_directory_changed", FIRE(notify_working_directory_changed()),
            {{"directory", QString::fromStdString(TarvoFileUtil::get_current_working_directory())}},
            0);
        add("tvo_file_read", FIRE(notify_tvo_file_read("model.tvo")), {{"filename", "model.tvo"}},
            0);
        add("tvo_file_saved", FIRE(notify_tvo_file_saved("autosave.tvo", true)),
            {{"filename", "autosave.tvo"}, {"is_tmp_file", 1}}, 0);
        return t;
    }();
    return table;
}

std::set<int> all_events() {
    std::set<int> codes;
    for (int code = 0; code < TIObserveMonitor::event_count; ++code)
        codes.insert(code);
    return codes;
}

// A running task's observer with the model monitor and an entity monitor for every watched entity.
class ObservedTask : public ::testing::Test {
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

class ObserverEvent : public ObservedTask,
                      public ::testing::WithParamInterface<std::tuple<size_t, bool>> {};

TEST_P(ObserverEvent, RecordsFlagsAndMarks) {
    const auto& [index, selected] = GetParam();
    const EventCase& c = cases()[index];
    // Selected: every event is selected. Unselected: none is, and flags and marks must not care.
    TIObserveMonitor events(selected ? all_events() : std::set<int>{});
    observer.set_observe_monitor(&events);

    c.fire(observer);

    if (selected) {
        ASSERT_EQ(events.event_records().size(), 1u);
        EXPECT_EQ(events.event_records()[0].second, event(c.name, c.fields))
            << QJsonDocument(events.event_records()[0].second).toJson().toStdString();
        // The code decides delivery, the name is what the client reads: they must agree.
        EXPECT_EQ(TIObserveMonitor::event_name_from_code(events.event_records()[0].first),
                  QLatin1String(c.name));
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

// Sizing sources stay with the kernel: no record, no flag, even when everything is selected.
TEST_F(ObservedTask, SizingSourcesAreNeverReported) {
    TIObserveMonitor events(all_events());
    observer.set_observe_monitor(&events);
    observer.notify_sizing_source_created(4);
    EXPECT_TRUE(events.event_records().empty());
    EXPECT_EQ(flags_of(model), 0u);
    for (const auto& probe : probes)
        EXPECT_FALSE(probe->is_modified());
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
