#pragma once
// The monitor of the kind "graphics": what the user picked, the pick types and the render mode,
// for the clients that asked. The kernel observer notes during the task what happened (highlight
// changes, a new mode, new pick types); update() then reads the drawing library once, and only
// for the parts that were noted or that a first report (not incremental) asks for.
//
// Keys, by the "type" word a client selects: "selection" gives the whole selection whenever
// something was highlighted or unhighlighted in the task; "picked" each highlight change in
// order; "pick_type_changed" the filter's types; "mode_changed" the render mode, but only when
// the observer saw it change (a first report sends none). Only the first client asked for the
// selection in a task gets it: get_notifications clears the flag, a behaviour clients rely on.
//
// Threads: like every monitor, built and updated on the worker thread for one task (the note_*
// operations come from the observer there), read on the main thread after the task came back.

#include "monitors/DataMonitor.h"

#include <set>
#include <string>
#include <utility>
#include <vector>

class GraphicsMonitor : public DataMonitor {
public:
    // The "type" word of a graphics key, in this order: "selection", "picked", "mode_changed",
    // "pick_type_changed".
    enum Notification { selection = 0, picked = 1, mode_changed = 2, pick_type_changed = 3 };

    using PickedItem = std::pair<std::string, int>; // entity type name, id

    // `requested`: the Notification values that any client's selection holds for this task.
    explicit GraphicsMonitor(std::set<int> requested) : requested(std::move(requested)) {}

    // Worker thread, from the kernel observer while the task runs.
    void note_highlighted(const std::vector<PickedItem>& entities);
    void note_unhighlighted(const std::vector<PickedItem>& entities);
    void note_mode_modified();
    void note_pick_type_modified();

    void update() override;
    std::vector<RPCRequest> get_notifications(const MonitorSelection& selection) override;

private:
    struct HighlightChange {
        bool add_or_remove;
        std::vector<PickedItem> entities;
    };
    bool wants(Notification n) const { return requested.count(n) != 0; }

    std::set<int> requested;
    bool mode_was_changed = false;
    bool pick_type_was_changed = false;
    std::vector<HighlightChange> highlight_changes;
    std::vector<PickedItem> current_selection;
    std::vector<std::string> pick_types;
    std::string mode;
    bool selection_changed = false;
};
