#include "view/ViewState.h"

#include "core/Command.h"
#include "core/EntityCatalog.h"
#include "core/EntityList.h"
#include "core/Session.h"
#include "tarvo/TarvoInterface.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tarvo::kernel {

namespace {

using TarvoInterface::TIObserve;

// Removes from `list` every entry for which `gone` holds; appends them to `removed`.
template <class Pred>
void take_out(std::vector<PickedEntity>& list, Pred gone, std::vector<PickedEntity>& removed) {
    auto keep = std::stable_partition(list.begin(), list.end(),
                                      [&](const PickedEntity& e) { return !gone(e); });
    removed.insert(removed.end(), keep, list.end());
    list.erase(keep, list.end());
}

void emit_highlighted(const std::vector<PickedEntity>& entities) {
    if (!entities.empty()) {
        events().emit(&TIObserve::notify_highlighted, entities);
    }
}

void emit_unhighlighted(const std::vector<PickedEntity>& entities) {
    if (!entities.empty()) {
        events().emit(&TIObserve::notify_unhighlighted, entities);
    }
}

std::string join(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& w : words) {
        text += (text.empty() ? "" : " ") + w;
    }
    return text;
}

// The canonical pickable type of a user's spelling, or "".
std::string pickable(std::string_view word) {
    const std::string type = canonical_entity_type(word);
    const auto& types = pickable_types();
    return std::find(types.begin(), types.end(), type) != types.end() ? type : std::string();
}

// Follows the model for the view state: geometry that is deleted or renumbered, and resets.
class ModelWatcher : public TIObserve {
public:
    void notify_body_deleted(int id) override { gone("body", id); }
    void notify_sheet_body_deleted(int id) override { gone("body", id); }
    void notify_volume_deleted(int id) override { gone("volume", id); }
    void notify_surface_deleted(int id) override { gone("surface", id); }
    void notify_free_surface_deleted(int id) override { gone("surface", id); }
    void notify_curve_deleted(int id) override { gone("curve", id); }
    void notify_free_curve_deleted(int id) override { gone("curve", id); }
    void notify_vertex_deleted(int id) override { gone("vertex", id); }
    void notify_free_vertex_deleted(int id) override { gone("vertex", id); }
    void notify_id_changed(const std::string& type, int old_id, int new_id) override {
        if (ViewState* v = view_state()) {
            v->entity_renumbered(canonical_entity_type(type), old_id, new_id);
        }
    }
    void notify_model_reset() override {
        if (ViewState* v = view_state()) {
            v->model_reset();
        }
    }

private:
    static void gone(const char* type, int id) {
        if (ViewState* v = view_state()) {
            v->entity_deleted(type, id);
        }
    }
};

std::unique_ptr<ViewState> g_state;
// A plain pointer: if the process ends without destroy(), the watcher must not unregister itself
// from an observer list that static destruction may already have taken down.
ModelWatcher* g_watcher = nullptr;

} // namespace

// ---- Vocabularies
// --------------------------------------------------------------------------------

namespace {
const std::vector<std::string> kModeNames = {"wireframe", "hiddenline", "flatshade", "smoothshade",
                                             "transparent"};
}

std::string render_mode_name(int mode) {
    return mode >= kWireframe && mode <= kTransparent ? kModeNames[mode - 1] : std::string();
}

int render_mode_from_name(std::string_view name) {
    int found = 0;
    for (size_t i = 0; i < kModeNames.size(); ++i) {
        if (keyword_matches(name, kModeNames[i])) {
            if (name.size() == kModeNames[i].size()) {
                return static_cast<int>(i) + 1;
            }
            if (found) {
                return 0; // ambiguous prefix
            }
            found = static_cast<int>(i) + 1;
        }
    }
    return found;
}

const std::vector<std::string>& pickable_types() {
    static const std::vector<std::string> types = {
        "body", "volume", "surface", "curve", "vertex", "node",    "edge",  "face",
        "tri",  "quad",   "tet",     "hex",   "wedge",  "pyramid", "sphere"};
    return types;
}

const std::vector<std::string>& labelable_types() {
    static const std::vector<std::string> types = [] {
        std::vector<std::string> t = pickable_types();
        for (const char* extra : {"group", "block", "nodeset", "sideset"}) {
            t.emplace_back(extra);
        }
        return t;
    }();
    return types;
}

double Camera::distance() const {
    const double dx = from[0] - at[0], dy = from[1] - at[1], dz = from[2] - at[2];
    return std::sqrt(dx * dx + dy * dy + dz * dz);
}

bool entity_exists(const std::string& type, int id) {
    EntityCatalog* catalog = catalog_for(type);
    return catalog && catalog->exists(type, id);
}

// ---- ViewState
// -------------------------------------------------------------------------------------

ViewState::ViewState() = default;

bool ViewState::set_render_mode(int mode) {
    if (render_mode_name(mode).empty()) {
        return error("Unknown graphics mode " + std::to_string(mode) +
                     " (1 wireframe, 2 hiddenline, 3 flatshade, 4 smoothshade, 5 transparent)");
    }
    if (mode != mode_) {
        mode_ = mode;
        events().emit(&TIObserve::notify_graphics_mode_modified);
    }
    return true;
}

bool ViewState::set_pick_type(std::string_view word, bool silent) {
    const std::string type = pickable(word);
    if (type.empty()) {
        return error("Unknown pick type '" + std::string(word) + "'; expected one of " +
                     join(pickable_types()));
    }
    const bool changed = type != pick_type_ || filter_ != std::vector<std::string>{type};
    pick_type_ = type;
    filter_ = {type};
    if (!silent) {
        print("Pick type is " + type);
    }
    if (changed) {
        events().emit(&TIObserve::notify_graphics_pick_type_modified);
    }
    return true;
}

bool ViewState::set_filter(int count, const std::vector<std::string>& types) {
    const size_t n = static_cast<size_t>(std::clamp(count, 0, static_cast<int>(types.size())));
    std::vector<std::string> filter;
    for (size_t i = 0; i < n; ++i) {
        const std::string type = pickable(types[i]);
        if (type.empty()) {
            return error("Unknown pick filter type '" + types[i] + "'; expected one of " +
                         join(pickable_types()));
        }
        if (std::find(filter.begin(), filter.end(), type) == filter.end()) {
            filter.push_back(type);
        }
    }
    if (filter == filter_) {
        return true;
    }
    filter_ = std::move(filter);
    if (!filter_.empty()) {
        pick_type_ = filter_.front();
    }
    events().emit(&TIObserve::notify_graphics_pick_type_modified);
    return true;
}

bool ViewState::add_filter(std::string_view word) {
    const std::string type = pickable(word);
    if (type.empty()) {
        return error("Unknown pick filter type '" + std::string(word) + "'; expected one of " +
                     join(pickable_types()));
    }
    if (is_filtered(type)) {
        return true;
    }
    if (filter_.empty()) {
        pick_type_ = type;
    }
    filter_.push_back(type);
    events().emit(&TIObserve::notify_graphics_pick_type_modified);
    return true;
}

bool ViewState::remove_filter(std::string_view word) {
    const std::string type = pickable(word);
    if (type.empty()) {
        return error("Unknown pick filter type '" + std::string(word) + "'; expected one of " +
                     join(pickable_types()));
    }
    auto it = std::find(filter_.begin(), filter_.end(), type);
    if (it == filter_.end()) {
        return true;
    }
    filter_.erase(it);
    if (type == pick_type_ && !filter_.empty()) {
        pick_type_ = filter_.front();
    }
    events().emit(&TIObserve::notify_graphics_pick_type_modified);
    return true;
}

bool ViewState::is_filtered(std::string_view word) const {
    const std::string type = pickable(word);
    return !type.empty() && std::find(filter_.begin(), filter_.end(), type) != filter_.end();
}

void ViewState::prune() {
    std::vector<PickedEntity> removed;
    auto gone = [](const PickedEntity& e) { return !entity_exists(e.first, e.second); };
    take_out(selection_, gone, removed);
    take_out(highlights_, gone, removed);
    if (current_ >= static_cast<int>(selection_.size())) {
        current_ = static_cast<int>(selection_.size()) - 1;
    }
    for (auto& [name, set] : drawing_sets) {
        take_out(set, gone, removed);
    }
    take_out(preview, gone, removed);
}

bool ViewState::in_selection(const PickedEntity& e) const {
    return std::find(selection_.begin(), selection_.end(), e) != selection_.end();
}

const std::vector<PickedEntity>& ViewState::selection() {
    prune();
    return selection_;
}

const std::vector<PickedEntity>& ViewState::highlights() {
    prune();
    return highlights_;
}

bool ViewState::select(const std::vector<PickedEntity>& requested, int mode) {
    prune();
    // Keep the order given, without repeats or entities that are not there.
    std::vector<PickedEntity> entities;
    EntityList missing;
    for (const PickedEntity& e : requested) {
        if (!entity_exists(e.first, e.second)) {
            missing.add(e.first, {e.second});
        } else if (std::find(entities.begin(), entities.end(), e) == entities.end()) {
            entities.push_back(e);
        }
    }
    if (!missing.empty()) {
        warning(missing.describe() + " not found, skipped");
    }
    auto listed = [&](const PickedEntity& e) {
        return std::find(entities.begin(), entities.end(), e) != entities.end();
    };

    std::vector<PickedEntity> added, removed;
    const std::vector<PickedEntity> before = selection_;
    if (mode == 2) {
        take_out(selection_, listed, removed);
    } else {
        if (mode == 0) {
            // The new selection is the list, in its order.
            take_out(
                selection_, [&](const PickedEntity& e) { return !listed(e); }, removed);
            selection_.clear();
        }
        for (const PickedEntity& e : entities) {
            if (in_selection(e)) {
                continue;
            }
            selection_.push_back(e);
            if (std::find(before.begin(), before.end(), e) != before.end()) {
                continue; // kept by a replacement
            }
            // An entity that was only highlighted stays highlighted: no event for it.
            auto h = std::find(highlights_.begin(), highlights_.end(), e);
            if (h != highlights_.end()) {
                highlights_.erase(h);
            } else {
                added.push_back(e);
            }
        }
    }
    const bool changed = selection_ != before;
    // The most recently selected entity is the current one after a change.
    if (changed) {
        current_ = static_cast<int>(selection_.size()) - 1;
    }
    emit_unhighlighted(removed);
    emit_highlighted(added);
    return true;
}

void ViewState::clear_selection() {
    std::vector<PickedEntity> removed = std::move(selection_);
    removed.insert(removed.end(), highlights_.begin(), highlights_.end());
    selection_.clear();
    highlights_.clear();
    current_ = -1;
    emit_unhighlighted(removed);
}

bool ViewState::highlight(std::string_view type_word, int id) {
    const std::string type = canonical_entity_type(type_word);
    if (type.empty()) {
        return error("Unknown entity type '" + std::string(type_word) + "'");
    }
    prune();
    if (!entity_exists(type, id)) {
        warning(type + " " + std::to_string(id) + " not found, not highlighted");
        return true;
    }
    const PickedEntity e{type, id};
    if (in_selection(e) ||
        std::find(highlights_.begin(), highlights_.end(), e) != highlights_.end()) {
        return true;
    }
    highlights_.push_back(e);
    emit_highlighted({e});
    return true;
}

bool ViewState::unselect(std::string_view type_word, int id) {
    const std::string type = canonical_entity_type(type_word);
    if (type.empty()) {
        return error("Unknown entity type '" + std::string(type_word) + "'");
    }
    prune();
    const PickedEntity e{type, id};
    std::vector<PickedEntity> removed;
    take_out(
        selection_, [&](const PickedEntity& x) { return x == e; }, removed);
    take_out(
        highlights_, [&](const PickedEntity& x) { return x == e; }, removed);
    if (current_ >= static_cast<int>(selection_.size())) {
        current_ = static_cast<int>(selection_.size()) - 1;
    }
    emit_unhighlighted(removed);
    return true;
}

int ViewState::current_index() {
    prune();
    return selection_.empty() ? -1 : std::max(current_, 0);
}

void ViewState::step(int direction) {
    prune();
    const int n = static_cast<int>(selection_.size());
    if (n == 0) {
        print("Nothing selected");
        return;
    }
    current_ = ((std::max(current_, 0) + direction) % n + n) % n;
    print("Current selection: " + describe_current());
}

std::string ViewState::describe_selection() {
    prune();
    if (selection_.empty()) {
        return "nothing";
    }
    EntityList list;
    for (const PickedEntity& e : selection_) {
        list.add(e.first, {e.second});
    }
    return list.describe();
}

std::string ViewState::describe_current() {
    const int i = current_index();
    if (i < 0) {
        return "nothing";
    }
    const PickedEntity& e = selection_[static_cast<size_t>(i)];
    return e.first + " " + std::to_string(e.second) + " (" + std::to_string(i + 1) + " of " +
           std::to_string(selection_.size()) + ")";
}

int ViewState::label_of(std::string_view word) const {
    auto it = labels.find(canonical_entity_type(word));
    return it == labels.end() ? kLabelOff : it->second;
}

bool ViewState::set_label(std::string_view word, int flag) {
    const std::string type = canonical_entity_type(word);
    const auto& types = labelable_types();
    if (type.empty() || std::find(types.begin(), types.end(), type) == types.end()) {
        return error("Unknown label type '" + std::string(word) + "'; expected one of " +
                     join(types));
    }
    if (flag < kLabelOff || flag > kLabelBoth) {
        return error("Unknown label setting " + std::to_string(flag) +
                     " (0 off, 1 id, 2 name, 3 both)");
    }
    if (flag == kLabelOff) {
        labels.erase(type);
    } else {
        labels[type] = flag;
    }
    return true;
}

void ViewState::reset_camera() {
    // Visible volumes and visible free entities: what a view would show of the geometry.
    std::array<double, 6> box{}; // xmin xmax ymin ymax zmin zmax
    bool any = false;
    for (const char* type : {"volume", "surface", "curve", "vertex"}) {
        const std::vector<int> candidates =
            std::string_view(type) == "volume"
                ? TarvoInterface::get_entities(type)
                : TarvoInterface::get_list_of_free_ref_entities(type);
        std::vector<int> ids;
        for (int id : candidates) {
            if (TarvoInterface::is_visible(type, id)) {
                ids.push_back(id);
            }
        }
        if (ids.empty()) {
            continue;
        }
        const auto b = TarvoInterface::get_total_bounding_box(type, ids);
        const std::array<double, 6> part{b[0], b[1], b[3], b[4], b[6], b[7]};
        for (int axis = 0; axis < 3; ++axis) {
            box[2 * axis] = any ? std::min(box[2 * axis], part[2 * axis]) : part[2 * axis];
            box[2 * axis + 1] =
                any ? std::max(box[2 * axis + 1], part[2 * axis + 1]) : part[2 * axis + 1];
        }
        any = true;
    }
    std::array<double, 3> centre{0, 0, 0};
    double radius = 1;
    if (any) {
        double diagonal2 = 0;
        for (int axis = 0; axis < 3; ++axis) {
            centre[axis] = (box[2 * axis] + box[2 * axis + 1]) / 2;
            const double range = box[2 * axis + 1] - box[2 * axis];
            diagonal2 += range * range;
        }
        radius = std::sqrt(diagonal2) / 2;
        if (radius <= 0) {
            radius = 1; // a lone vertex: some room around it
        }
    }
    const double distance = radius / std::sin(15.0 * std::numbers::pi / 180.0);
    camera.at = centre;
    camera.from = {centre[0], centre[1], centre[2] + distance};
    camera.up = {0, 1, 0};
}

void ViewState::entity_deleted(const std::string& type, int id) {
    const PickedEntity e{type, id};
    auto same = [&](const PickedEntity& x) { return x == e; };
    std::vector<PickedEntity> removed;
    take_out(selection_, same, removed);
    take_out(highlights_, same, removed);
    if (current_ >= static_cast<int>(selection_.size())) {
        current_ = static_cast<int>(selection_.size()) - 1;
    }
    std::vector<PickedEntity> ignored;
    for (auto& [name, set] : drawing_sets) {
        take_out(set, same, ignored);
    }
    take_out(preview, same, ignored);
    emit_unhighlighted(removed);
}

void ViewState::entity_renumbered(const std::string& type, int old_id, int new_id) {
    const PickedEntity from{type, old_id}, to{type, new_id};
    bool shown = false;
    for (auto* list : {&selection_, &highlights_}) {
        for (PickedEntity& e : *list) {
            if (e == from) {
                e = to;
                shown = true;
            }
        }
    }
    for (auto& [name, set] : drawing_sets) {
        std::replace(set.begin(), set.end(), from, to);
    }
    std::replace(preview.begin(), preview.end(), from, to);
    if (shown) {
        emit_unhighlighted({from});
        emit_highlighted({to});
    }
}

void ViewState::model_reset() {
    drawing_sets.clear();
    preview.clear();
    clear_selection();
}

// ---- Module
// ------------------------------------------------------------------------------------------

ViewState* view_state() {
    return g_state.get();
}

void init_view_module() {
    g_state = std::make_unique<ViewState>();
    if (!g_watcher) {
        g_watcher = new ModelWatcher();
    }
    g_watcher->register_observer();
    register_view_commands();
    register_view_file_section();
}

void shutdown_view_module() {
    delete g_watcher; // unregisters it
    g_watcher = nullptr;
    g_state.reset();
}

} // namespace tarvo::kernel
