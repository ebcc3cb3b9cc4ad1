#pragma once
// Public functions of the kernel: view, drawing and selection. The conventions of the whole API
// are in tarvo/TarvoInterface.h, which includes every family.

#include "tarvo/TarvoTypes.h"

#include <array>
#include <string>
#include <vector>

namespace TarvoInterface {

// ---- View, drawing and selection ----------------------------------------------------------------

// Distance from the camera to its focal point.
double get_view_distance();
// Focal point of the camera.
std::array<double, 3> get_view_at();
// Position of the camera.
std::array<double, 3> get_view_from();
// Up vector of the camera.
std::array<double, 3> get_view_up();
// Fits the camera to the visible model.
void reset_camera();
// Redraws whatever changed.
void flush_graphics();
// Empties the named set of temporarily drawn entities.
void clear_drawing_set(const std::string& set_name);
// Unselects entity.
void unselect_entity(const std::string& entity_type, int entity_id);
// Shape of rubber-band selection: 0 box, 1 polygon, 2 circle.
int get_rubberband_shape();
// Whether perspective is on.
bool is_perspective_on();
// Whether occlusion is on.
bool is_occlusion_on();
// Whether scale visibility is on.
bool is_scale_visibility_on();
// Whether mesh visibility is on.
bool is_mesh_visibility_on();
// Whether geometry visibility is on.
bool is_geometry_visibility_on();
// Whether select partial is on.
bool is_select_partial_on();
// Rendering mode: 1 wireframe, 2 hidden line, 3 flat shade, 4 smooth shade, 5 transparent.
int get_rendering_mode();
// Sets the rendering mode (values as get_rendering_mode).
void set_rendering_mode(int mode);
// Removes preview drawing.
void clear_preview();
// Entity type that picking selects ("volume", "surface", ..., "node").
std::string get_pick_type();
// Sets the pick type; `silent` suppresses the printed confirmation.
void set_pick_type(const std::string& pick_type, bool silent);
// Replaces the pick filter with the first `filter_count` types of `filter_list`.
void set_filter_types(int filter_count, const std::vector<std::string>& filter_list);
// Adds filter type.
void add_filter_type(const std::string& filter_type);
// Removes filter type.
void remove_filter_type(const std::string& filter_type);
// Whether entities of `filter_type` pass the pick filter.
bool is_type_filtered(const std::string& filter_type);
// Clears picked list.
void clear_picked_list();
// Entity types that pass the pick filter.
std::vector<std::string> get_pick_filters();
// Moves the highlighted candidate of a pick to the next entity under the cursor.
void step_next_possible_selection();
// Moves the highlighted candidate of a pick to the previous one.
void step_previous_possible_selection();
// Prints the current selections through the message channel.
void print_current_selections();
// Prints the currently selected entity through the message channel.
void print_currently_selected_entity();
// Number of selected entities.
int current_selection_count();
// Ids of the selected entities, in selection order.
std::vector<int> get_selected_ids();
// Id of selected entity `index` (0-based), or 0.
int get_selected_id(int index);
// Type of selected entity `index` (0-based), or "".
std::string get_selected_type(int index);
// Highlights the entity.
void highlight(const std::string& entity_type, int entity_id);

} // namespace TarvoInterface
