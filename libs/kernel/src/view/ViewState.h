#pragma once
// The kernel's display and selection state: what a click in a view picks, what is selected and
// highlighted, which entities are drawn, labels, the render mode, the switches of the views and
// the camera. Nothing here renders: the render views read this state and change it through these
// operations, and the commands of ViewCommands.cpp and the public functions of ViewApi.cpp do the
// same, so there is one copy of it.
//
// Contract:
// - Every operation validates first and changes nothing when it refuses (it prints one error,
//   counted, and returns false).
// - Changes of the selection or the highlight set emit `highlighted` / `unhighlighted` with the
//   (type, id) pairs that came or went, once per operation; a change of the render mode emits
//   `graphics_mode_modified`; a change of the pick type or the pick filter emits
//   `graphics_pick_type_modified`. Operations that change nothing emit nothing.
// - Deleted entities leave the selection, the highlight set and the drawing sets: geometry
//   through its delete events (a ModelWatcher registered as an observer emits `unhighlighted`
//   for what leaves the selection at that moment, so observers see it just before the delete
//   event itself); renumbered geometry follows `id_changed`. Types without per-entity delete
//   events (mesh, containers) are checked against their catalog whenever the selection is read
//   or changed, and entries that no longer exist are dropped without an event.
// - The view settings (mode, pick type, filter, labels, switches, camera) survive `reset`; the
//   selection, highlights, drawing sets and preview do not. init() starts from the defaults.
//
// Threading: kernel thread only, like the rest of the session.

#include "tarvo/TIObserve.h"

#include <array>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tarvo::kernel {

using PickedEntity = std::pair<std::string, int>; // (canonical type word, id)

// Render modes; the numbers are those of get_rendering_mode().
enum RenderMode : int {
    kWireframe = 1,
    kHiddenLine = 2,
    kFlatShade = 3,
    kSmoothShade = 4,
    kTransparent = 5,
};
// "wireframe", "hiddenline", "flatshade", "smoothshade", "transparent"; "" for other numbers.
std::string render_mode_name(int mode);
// The mode of a name (full word or unambiguous prefix of >= 3 letters), or 0.
int render_mode_from_name(std::string_view name);

// Rubber-band selection shapes; the numbers are those of get_rubberband_shape().
enum RubberbandShape : int { kRubberbandBox = 0, kRubberbandPolygon = 1, kRubberbandCircle = 2 };

// Label settings; the numbers are those of get_label_type().
enum LabelFlag : int { kLabelOff = 0, kLabelId = 1, kLabelName = 2, kLabelBoth = 3 };

// Entity types that can be picked in a view, and so be a pick type or pass the pick filter:
// body volume surface curve vertex node edge face tri quad tet hex wedge pyramid sphere.
const std::vector<std::string>& pickable_types();
// Entity types that carry labels: the pickable types plus group block nodeset sideset.
const std::vector<std::string>& labelable_types();

struct Camera {
    std::array<double, 3> at{0, 0, 0};
    std::array<double, 3> from{0, 0, 1};
    std::array<double, 3> up{0, 1, 0};
    double distance() const;
};

class ViewState {
public:
    ViewState();

    // ---- Render mode and switches --------------------------------------------------------------
    int render_mode() const { return mode_; }
    bool set_render_mode(int mode);
    bool perspective = false;      // perspective projection (else parallel)
    bool occlusion = true;         // picks stop at the front-most entity under the cursor
    bool scale_visibility = false; // the scale bar is shown
    bool mesh_visibility = true;   // meshes are drawn
    bool geometry_visibility = true;
    bool select_partial = false; // rubber bands also take entities partly inside them
    int rubberband_shape = kRubberbandBox;

    // ---- Pick type and filter ------------------------------------------------------------------
    // The pick type is the primary type a click picks; the filter is every type a pick may land
    // on. Setting the pick type makes the filter that type alone; the filter may then grow.
    const std::string& pick_type() const { return pick_type_; }
    const std::vector<std::string>& pick_filter() const { return filter_; }
    bool set_pick_type(std::string_view type, bool silent);
    // The first `count` types of `types` (count clamped to 0..size) become the filter; the pick
    // type becomes the first of them. Unknown names refuse the whole call.
    bool set_filter(int count, const std::vector<std::string>& types);
    bool add_filter(std::string_view type);
    bool remove_filter(std::string_view type);
    bool is_filtered(std::string_view type) const;

    // ---- Selection and highlight ---------------------------------------------------------------
    // The selection, in the order the entities were selected, without entities that have gone.
    const std::vector<PickedEntity>& selection();
    // Entities highlighted without being selected.
    const std::vector<PickedEntity>& highlights();
    // Replaces the selection (`mode` 0), adds to it (1) or removes from it (2). Entities that do
    // not exist were already reported by the caller's list; those left over are checked here.
    bool select(const std::vector<PickedEntity>& entities, int mode);
    // Empties the selection and the highlight set.
    void clear_selection();
    // Adds one existing entity to the highlight set (no-op when already highlighted or
    // selected); a missing one is reported as a warning.
    bool highlight(std::string_view type, int id);
    // Removes the entity from the selection and the highlight set (no-op when in neither).
    bool unselect(std::string_view type, int id);
    // The current entry of the selection, moved by stepping; -1 when nothing is selected.
    int current_index();
    // Moves the current entry one step, wrapping around; prints it.
    void step(int direction);
    std::string describe_selection();
    std::string describe_current();

    // ---- Drawing sets, preview, labels ---------------------------------------------------------
    // Named sets of entities drawn on their own; "" is the set of the `draw` command. While the
    // default set is not empty, views draw only it. Deleted geometry leaves these at once, other
    // types when the selection is next read, so views skip entries that no longer exist.
    std::map<std::string, std::vector<PickedEntity>> drawing_sets;
    std::vector<PickedEntity> preview;
    // Label flag of each labelable type; absent means off.
    std::map<std::string, int> labels;
    int label_of(std::string_view type) const;
    bool set_label(std::string_view type, int flag);

    // ---- Camera
    // ----------------------------------------------------------------------------------
    Camera camera;
    // Points the camera at the centre of the visible model's bounding box, down -z with +y up, far
    // enough that the box's bounding sphere fits a 30 degree view angle.
    void reset_camera();

    // ---- Model changes -------------------------------------------------------------------------
    // Called by the model watcher: the entity is gone; everything that named it forgets it.
    void entity_deleted(const std::string& type, int id);
    void entity_renumbered(const std::string& type, int old_id, int new_id);
    void model_reset();

private:
    void prune();
    bool in_selection(const PickedEntity& e) const;

    int mode_ = kSmoothShade;
    std::string pick_type_ = "volume";
    std::vector<std::string> filter_{"volume"};
    std::vector<PickedEntity> selection_;
    std::vector<PickedEntity> highlights_;
    int current_ = -1;
};

// The live state between init_view_module() and shutdown_view_module(); null otherwise.
ViewState* view_state();
void init_view_module();
void shutdown_view_module();
void register_view_commands();
void register_view_file_section(); // ViewFile.cpp
// Tells the graphics library's listeners that a public view function ran (ViewGraphics.cpp).
void view_functions_ran(bool redraw);

// Whether (type, id) exists according to the catalog that handles the type.
bool entity_exists(const std::string& type, int id);

} // namespace tarvo::kernel
