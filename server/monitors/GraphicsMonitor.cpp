#include "monitors/GraphicsMonitor.h"

#include <pixlane/GPickerBase.h>
#include <pixlane/PXDrawTool.h>
#include <pixlane/PXUtil.h>

#include <QJsonArray>
#include <QJsonObject>

#include <map>

namespace {

// One object per entity type, ordered by the bytes of the name, with that type's ids in the
// order of arrival.
QJsonArray entity_list(const std::vector<GraphicsMonitor::PickedItem>& entities) {
    std::map<std::string, QJsonArray> by_type;
    for (const auto& [type, id] : entities)
        by_type[type].append(id);
    QJsonArray list;
    for (const auto& [type, ids] : by_type)
        list.append(QJsonObject{{QStringLiteral("entity_type"), QString::fromStdString(type)},
                                {QStringLiteral("ids"), ids}});
    return list;
}

bool has_key(const MonitorSelection& selection, GraphicsMonitor::Notification n) {
    const auto it = selection.find(QStringLiteral("graphics"));
    return it != selection.end() && it->second.count({static_cast<int>(n), 0}) != 0;
}

} // namespace

void GraphicsMonitor::note_highlighted(const std::vector<PickedItem>& entities) {
    if (wants(selection) || wants(picked))
        highlight_changes.push_back({true, entities});
}

void GraphicsMonitor::note_unhighlighted(const std::vector<PickedItem>& entities) {
    if (wants(selection) || wants(picked))
        highlight_changes.push_back({false, entities});
}

void GraphicsMonitor::note_mode_modified() {
    if (wants(mode_changed))
        mode_was_changed = true;
}

void GraphicsMonitor::note_pick_type_modified() {
    if (wants(pick_type_changed))
        pick_type_was_changed = true;
}

void GraphicsMonitor::update() {
    if (wants(selection) && (!incremental || !highlight_changes.empty())) {
        selection_changed = true;
        const int count = GPickerBase::current_selection_count();
        for (int i = 0; i < count; ++i) {
            if (const GPicked::PickedEntity* entity = GPickerBase::get_selection(i))
                current_selection.emplace_back(entity->entity_type_name(), entity->entity_id());
        }
    }
    if (wants(pick_type_changed) && (!incremental || pick_type_was_changed)) {
        int n = GPickerBase::get_number_pick_types();
        std::vector<const char*> types(static_cast<size_t>(n > 0 ? n : 0), nullptr);
        GPickerBase::get_pick_filters(types.data(), n);
        for (int i = 0; i < n && i < static_cast<int>(types.size()); ++i)
            pick_types.emplace_back(types[static_cast<size_t>(i)] ? types[static_cast<size_t>(i)]
                                                                  : "");
    }
    if (wants(mode_changed) && (!incremental || mode_was_changed))
        mode = PXUtil::string_from_mode(PXDrawTool::get_render_mode());
}

std::vector<RPCRequest> GraphicsMonitor::get_notifications(const MonitorSelection& selection_of) {
    std::vector<RPCRequest> out;
    if (selection_changed && has_key(selection_of, selection)) {
        out.emplace_back(QStringLiteral("datamonitor.graphics_selection"),
                         entity_list(current_selection));
        selection_changed = false;
    }
    if (has_key(selection_of, picked)) {
        for (const HighlightChange& change : highlight_changes)
            out.emplace_back(
                QStringLiteral("datamonitor.graphics_picked"),
                QJsonObject{{QStringLiteral("add_or_remove"), change.add_or_remove},
                            {QStringLiteral("pick_set"), entity_list(change.entities)}});
    }
    if (!pick_types.empty() && has_key(selection_of, pick_type_changed)) {
        QJsonArray types;
        for (const std::string& type : pick_types)
            types.append(QString::fromStdString(type));
        out.emplace_back(QStringLiteral("datamonitor.graphics_picktype"),
                         QJsonObject{{QStringLiteral("types"), types}});
    }
    if (mode_was_changed && has_key(selection_of, mode_changed))
        out.emplace_back(QStringLiteral("datamonitor.graphics_mode"),
                         QJsonObject{{QStringLiteral("mode"), QString::fromStdString(mode)}});
    return out;
}
