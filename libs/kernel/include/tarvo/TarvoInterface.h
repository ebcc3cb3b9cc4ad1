#pragma once
// The kernel's whole public API: a flat, value-typed set of functions in namespace
// TarvoInterface. Entities are (type name, id) pairs; outputs are filled by reference.
//
// Threading: every function must be called from the one thread that called init() (the worker
// thread in the server), except set_tarvo_interrupt(true), which any thread may call.
// No function throws: failures are printed through TarvoMessage, counted in get_error_count(),
// and returned as the function's failure value.
//
// Conventions of the whole API:
//   - Entity types are the lower-case names "body", "volume", "surface", "curve", "vertex",
//     "node", "edge", "tri", "quad", "tet", "hex", "wedge", "pyramid", "sphere", "group",
//     "block", "nodeset", "sideset" and the boundary-condition kinds ("force", "pressure", ...).
//   - Failure values: false, 0 for counts, -1 for an id that cannot be given (0 where the
//     comment says "or 0": a valid question whose answer is "none"), 0.0, "", empty lists, and
//     outputs left as the caller gave them. Asking about an unknown id is a failure, not an
//     error, unless the function prints one.
//   - Strings come in as const std::string&; the two command entry points cmd and silent_cmd
//     take const char* (a C string straight from a line buffer). Id lists come in as
//     const std::vector<int>&. Outputs are non-const references, after the inputs, except where a
//     function's comment says that trailing inputs follow them.
//   - Degree-of-freedom getters answer a pointer to six values owned by the kernel, valid until
//     the next call; never null.

#include "tarvo/MaterialInterface.h"
#include "tarvo/TIObserve.h"
#include "tarvo/TarvoTypes.h"
#include "tarvo_util/TarvoProgressHandler.h"

#include <array>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace TarvoInterface {

// ---- Session -------------------------------------------------------------------------------

// Starts the session; blocks until it is up. Arguments as on a command line, the first being the
// program name ("-driver offscreen" selects headless graphics). False when it could not start.
bool init(const std::vector<std::string>& arguments);
// Ends the session. Returns 0.
int destroy();
bool is_initialized();
// Ask the running operation to stop. Thread-safe; cleared when the next command starts.
void set_tarvo_interrupt(bool interrupt);
bool get_tarvo_interrupt();
void set_progress_handler(std::shared_ptr<TarvoProgressHandler> handler);

// ---- Session state, commands and journal --------------------------------------------------------

// Runs the files named on the command line (journals, models) that have not run yet.
void process_input_files();
// Sets whether journal playback stops at the first failing command.
void set_playback_paused_on_error(bool pause);
// Whether journal playback stops at the first failing command.
bool is_playback_paused_on_error();
// Whether developer commands are enabled.
bool developer_commands_are_enabled();
// Adds `filename` to the recent-file list; the kernel may rewrite it (normalised path).
void add_filename_to_recent_file_list(std::string& filename);
// Version of the kernel ("1.2.0").
std::string get_version();
// Date of the kernel's source revision.
std::string get_revision_date();
// Build number of the kernel.
std::string get_build_number();
// Version text of the geometry engine.
std::string get_acis_version();
// Version of the geometry engine as one number (major*100 + minor).
int get_acis_version_as_int();
// Version of the Exodus II library in use.
std::string get_exodus_version();
// Version text of the mesher.
std::string get_meshgems_version();
// Number of significant digits used when printing values.
double get_tarvo_digits_setting();
// Version of the graphics library in use.
std::string get_graphics_version();
// Prints the command-line options of the kernel.
void print_cmd_options();
// Whether the model changed since it was last saved or opened.
bool is_modified();
// Marks the model as changed.
void set_modified();
// Whether an undo checkpoint is due before the next command.
bool is_undo_save_needed();
// Marks the undo checkpoint as taken.
void set_undo_saved();
// Whether an undo is running.
bool is_performing_undo();
// Whether commands are echoed as they run.
bool is_command_echoed();
// Command number `command_number` (1 = first) of this session, or "".
std::string get_command_from_history(int command_number);
// Next command from history.
std::string get_next_command_from_history();
// Previous command from history.
std::string get_previous_command_from_history();
// Whether the volume has a scheme and sizes that let it mesh.
bool is_volume_meshable(int volume_id);
// Turns journaling of commands on or off.
void journal_commands(bool state);
// Whether commands are journaled.
bool is_command_journaled();
// Path of the journal being written, or "".
std::string get_current_journal_file();
// Whether a working directory was set (cd).
bool is_working_dir_set();
// Runs one command of the command language, echoed and journaled. False when it was rejected.
bool cmd(const char* input_string);
// Runs one command line; a line that is not a kernel command is refused. False when rejected.
bool tarvo_or_python_cmd(const std::string& input_string);
// Runs one command without echo or journaling. False when it was rejected.
bool silent_cmd(const char* input_string);
// Whether undo can take back the last command.
bool was_last_cmd_undoable();
// Expands an entity-list expression ("1 to 4", "all", "in volume 2") into ids of `type`, sorted,
// unique.
std::vector<int> parse_tarvo_list(const std::string& type, const std::string& entity_list_string);
// Prints the help of the commands that match `input_line`.
void print_raw_help(const std::string& input_line, int order_dependent, int consecutive_dependent);
// Number of errors reported since the session started.
int get_error_count();
// Commands (each a runnable line, then a description) that may fix mesh error `error_code`.
std::vector<std::string> get_mesh_error_solutions(int error_code);
// Completes the file name at the end of `line`; `num_chars` gets the characters added,
// `found_quote` whether the name is quoted.
void complete_filename(std::string& line, int& num_chars, bool& found_quote);

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

// ---- Mesh sizing, schemes and quality -----------------------------------------------------------

// Length of mesh edge `edge_id`.
double get_mesh_edge_length(int edge_id);
// Sum of the volumes (or areas) of the mesh elements of the given entities.
double get_meshed_volume_or_area(const std::string& geometry_type,
                                 const std::vector<int>& entity_ids);
// Interval count of the entity (for a curve: its number of mesh edges).
int get_mesh_intervals(const std::string& geometry_type, int entity_id);
// Mesh size in effect for the entity (requested or derived).
double get_mesh_size(const std::string& geometry_type, int entity_id);
// Mesh size the user set, or the auto size if none was set.
double get_requested_mesh_size(const std::string& geometry_type, int id);
// 1 if a size applies to the entity, 0 otherwise.
int has_valid_size(const std::string& geometry_type, int entity_id);
// Whether the auto size is stale and will be computed on demand.
bool auto_size_needs_to_be_calculated();
// Auto size of the whole model at the default factor.
double get_default_auto_size();
// Requested mesh intervals of the entity.
int get_requested_mesh_intervals(const std::string& geometry_type, int entity_id);
// Auto size of the given entities at factor `size` (1 fine ... 10 coarse).
double get_auto_size(const std::string& geometry_type, const std::vector<int>& entity_id_list,
                     double size);
// Estimated element count of the entities at `auto_factor`.
int get_element_budget(const std::string& element_type, const std::vector<int>& entity_id_list,
                       int auto_factor);
// Exodus sizing function variable name.
std::string get_exodus_sizing_function_variable_name();
// Exodus sizing function file name.
std::string get_exodus_sizing_function_file_name();
// Sizing function name of the entity.
std::string get_sizing_function_name(const std::string& entity_type, int surface_id);
// Whether the Exodus file of the sizing function exists.
bool exodus_sizing_function_file_exists();
// Sphere-meshing parameters of the volumes; false when they have none.
bool get_vol_sphere_params(const std::vector<int>& sphere_id_list, int& rad_intervals,
                           int& az_intervals, double& bias, double& fract,
                           int& max_smooth_iterations);
// Bias type of the curve ("bias", "dualbias", "" for none).
std::string get_curve_bias_type(int curve_id);
// Bias geometric factor of the curve.
double get_curve_bias_geometric_factor(int curve_id);
// Bias geometric factor2 of the curve.
double get_curve_bias_geometric_factor2(int curve_id);
// Bias first interval length of the curve.
double get_curve_bias_first_interval_length(int curve_id);
// Bias first interval fraction of the curve.
double get_curve_bias_first_interval_fraction(int curve_id);
// Bias fine size of the curve.
double get_curve_bias_fine_size(int curve_id);
// Bias coarse size of the curve.
double get_curve_bias_coarse_size(int curve_id);
// Bias first last ratio1 of the curve.
double get_curve_bias_first_last_ratio1(int curve_id);
// Bias first last ratio2 of the curve.
double get_curve_bias_first_last_ratio2(int curve_id);
// Bias last first ratio1 of the curve.
double get_curve_bias_last_first_ratio1(int curve_id);
// Bias last first ratio2 of the curve.
double get_curve_bias_last_first_ratio2(int curve_id);
// Whether the bias grows from the curve's start; false when the curve has no bias.
bool get_curve_bias_from_start(int curve_id, bool& value);
// Bias from start set of the curve.
bool get_curve_bias_from_start_set(int curve_id);
// Bias start vertex id of the curve.
int get_curve_bias_start_vertex_id(int curve_id);
// Mesh scheme curvature of the curve.
double get_curve_mesh_scheme_curvature(int curve_id);
// Stretch scheme values of the curve; false when its scheme is not stretch.
bool get_curve_mesh_scheme_stretch_values(int curve_id, double& first_size, double& factor,
                                          double& last_size, bool& start, int& vertex_id);
// Parameter locations of a pinpoint scheme, in order.
std::vector<double> get_curve_mesh_scheme_pinpoint_locations(int curve_id);
// Quality of the elements of the entities by `metric_name`: min, max, mean, std dev, worst ids,
// the elements beyond the thresholds (mesh_list), their element type, and with `make_group` a
// group holding them (bad_group_id, else 0). Inputs after the outputs: make_group.
void get_quality_stats(const std::string& entity_type, const std::vector<int>& id_list,
                       const std::string& metric_name, double single_threshold,
                       bool use_low_threshold, double low_threshold, double high_threshold,
                       double& min_value, double& max_value, double& mean_value, double& std_value,
                       int& min_element_id, int& max_element_id, std::vector<int>& mesh_list,
                       std::string& element_type, int& bad_group_id, bool make_group);
// Value of quality metric `metric_name` for one mesh element.
double get_quality_value(const std::string& mesh_type, int mesh_id, const std::string& metric_name);
// Mesh scheme of the entity ("map", "sweep", "tetmesh", ...).
std::string get_mesh_scheme(const std::string& geometry_type, int entity_id);
// Firmness of the scheme: "HARD", "SOFT" or "LIMP".
std::string get_mesh_scheme_firmness(const std::string& geometry_type, int entity_id);
// Firmness of the interval count in effect: "HARD", "SOFT" or "LIMP".
std::string get_mesh_interval_firmness(const std::string& geometry_type, int entity_id);
// Firmness of the interval count the user requested.
std::string get_requested_mesh_interval_firmness(const std::string& geometry_type, int entity_id);
// How the size in effect came about: "USER_SET", "CALCULATED" or "NOT_SET".
std::string get_mesh_size_type(const std::string& geometry_type, int entity_id);
// How the requested size came about: "USER_SET", "CALCULATED" or "NOT_SET".
std::string get_requested_mesh_size_type(const std::string& geometry_type, int entity_id);
// Tetmesh proximity flag of the volume.
bool get_tetmesh_proximity_flag(int volume_id);
// Tetmesh proximity layers of the volume.
int get_tetmesh_proximity_layers(int volume_id);
// Mesh geometry approximation angle of the entity.
double get_mesh_geometry_approximation_angle(const std::string& geometry_type, int entity_id);
// Trimesh surface gradation.
double get_trimesh_surface_gradation();
// Trimesh volume gradation.
double get_trimesh_volume_gradation();
// Tetmesh growth factor of the volume.
double get_tetmesh_growth_factor(int volume_id);
// Whether the entity is meshed.
bool is_meshed(const std::string& geometry_type, int entity_id);
// Whether the entity is merged.
bool is_merged(const std::string& geometry_type, int entity_id);
// Smooth scheme of the entity.
std::string get_smooth_scheme(const std::string& geometry_type, int entity_id);
// Number of hexes in the model.
int get_hex_count();
// Number of pyramids in the model.
int get_pyramid_count();
// Number of tets in the model.
int get_tet_count();
// Number of quads in the model.
int get_quad_count();
// Number of tris in the model.
int get_tri_count();
// Number of edges in the model.
int get_edge_count();
// Number of spheres in the model.
int get_sphere_count();
// Number of nodes in the model.
int get_node_count();
// Number of elements in the model.
int get_element_count();
// Number of mesh elements in the volume.
int get_volume_element_count(int volume_id);
// Number of mesh elements on the surface.
int get_surface_element_count(int surface_id);
// Volume contains tets.
bool volume_contains_tets(int volume_id);
// Hexes of the sheet through the mesh edge between the two nodes.
std::vector<int> get_hex_sheet(int node_id_1, int node_id_2);
// Element type that meshing uses by default ("HEX8", "TET4", ...).
std::string get_default_element_type();

// ---- Geometry queries ---------------------------------------------------------------------------

// Whether the entity is visible.
bool is_visible(const std::string& geometry_type, int entity_id);
// Whether the entity is virtual.
bool is_virtual(const std::string& geometry_type, int entity_id);
// Contains virtual.
bool contains_virtual(const std::string& geometry_type, int entity_id);
// Source surfaces of the sweep scheme of the volume.
std::vector<int> get_source_surfaces(int volume_id);
// Target surfaces of the sweep scheme of the volume.
std::vector<int> get_target_surfaces(int volume_id);
// Curve shared by the two surfaces, or 0.
int get_common_curve_id(int surface_1_id, int surface_2_id);
// Vertex shared by the two curves, or 0.
int get_common_vertex_id(int curve_1_id, int curve_2_id);
// Maps points of the unit square of quad `quad_id` (corners node00, node10) onto the surface.
std::vector<std::vector<double>> project_unit_square(const std::vector<std::vector<double>>& pts,
                                                     int surface_id, int quad_id, int node00_id,
                                                     int node10_id);
// Merge setting of the entity: "on", "off" or "auto".
std::string get_merge_setting(const std::string& geometry_type, int entity_id);
// Type of the curve.
std::string get_curve_type(int curve_id);
// Type of the surface.
std::string get_surface_type(int surface_id);
// Normal of the surface.
std::array<double, 3> get_surface_normal(int surface_id);
// Centroid of the surface.
std::array<double, 3> get_surface_centroid(int surface_id);
// Sense of the surface relative to its volume: "forward", "reverse" or "both".
std::string get_surface_sense(int surface_id);
// Geometry engines that own the entity.
std::vector<std::string> get_entity_modeler_engine(const std::string& geometry_type, int entity_id);
// Default geometry engine.
std::string get_default_geometry_engine();
// Box of the entity: xmin, xmax, xrange, ymin, ymax, yrange, zmin, zmax, zrange, diagonal.
std::array<double, 10> get_bounding_box(const std::string& geometry_type, int entity_id);
// Box enclosing all the given entities, laid out as get_bounding_box.
std::array<double, 10> get_total_bounding_box(const std::string& geometry_type,
                                              const std::vector<int>& entity_list);
// Oriented box: centre (3), three unit axes (9), half-extents along them (3).
std::array<double, 15> get_tight_bounding_box(const std::string& geometry_type,
                                              const std::vector<int>& entity_list);
// Sum of the volumes of the given volumes.
double get_total_volume(const std::vector<int>& volume_list);
// Name of the entity; with `name_only` false, a generated default ("Volume 3") when it has none.
std::string get_entity_name(const std::string& entity_type, int entity_id, bool name_only);
// Names the entity. False when the name is taken or invalid.
bool set_entity_name(const std::string& entity_type, int entity_id, const std::string& new_name);
// Colour of the entity: red, green, blue, alpha, each 0..1.
std::array<double, 4> get_entity_color(const std::string& entity_type, int entity_id);
// Index of the entity's colour in the kernel's colour table.
int get_entity_color_index(const std::string& entity_type, int entity_id);
// Whether the body is multi volume.
bool is_multi_volume(int body_id);
// Whether the volume is sheet body.
bool is_sheet_body(int volume_id);
// Whether the surface is interval count odd.
bool is_interval_count_odd(int surface_id);
// Whether the entity is periodic.
bool is_periodic(const std::string& geometry_type, int entity_id);
// Whether the surface is planar (older spelling, kept for clients).
bool is_surface_planer(int surface_id);
// Whether the surface is surface planar.
bool is_surface_planar(int surface_id);
// Periodic setting of the entity: interval, its firmness, and the lower bound and upper-bound
// text.
void get_periodic_data(const std::string& geometry_type, int entity_id, double& returned_interval,
                       std::string& returned_firmness, int& returned_lower_bound,
                       std::string& returned_upper_bound);
// Undo enabled.
bool get_undo_enabled();
// Number of commands that undo can take back.
int number_undo_commands();
// Names of the command-language variables.
std::vector<std::string> get_valfold_vars();
// Valfold value as string of the variable.
std::string get_valfold_value_as_string(const std::string& variable_name);
// Value of a variable: type 0 number in `returned_double_val`, 1 string in `returned_string_val`;
// false when unknown.
bool get_valfold_value(const std::string& variable_name, int& returned_variable_type,
                       double& returned_double_val, std::string& returned_string_val);
// Valfold numeric value of the variable.
double get_valfold_numeric_value(const std::string& variable_name);
// Whether new mesh nodes are constrained to the geometry.
bool get_node_constraint();
// Node constraint mode: 0 off, 1 on, 2 smart.
int get_node_constraint_value();
// Role of the vertex for meshing the surface ("end", "side", "corner", "reversal").
std::string get_vertex_type(int surface_id, int vertex_id);
// Ids of the entities of `target_geom_type` related to the source (owners or children).
std::vector<int> get_relatives(const std::string& source_geometry_type, int source_id,
                               const std::string& target_geom_type);
// Adjacent surfaces of the entity.
std::vector<int> get_adjacent_surfaces(const std::string& geometry_type, int entity_id);
// Adjacent volumes of the entity.
std::vector<int> get_adjacent_volumes(const std::string& geometry_type, int entity_id);
// Ids of all entities of `entity_type`, ascending.
std::vector<int> get_entities(const std::string& entity_type);
// Ids of the entities of that type that belong to no volume.
std::vector<int> get_list_of_free_ref_entities(const std::string& geometry_type);
// Body that owns the entity, or 0.
int get_owning_body(const std::string& geometry_type, int entity_id);
// Volume that owns the entity, or 0.
int get_owning_volume(const std::string& geometry_type, int entity_id);
// Id of the volume that owns the entity named `entity_name`, or 0.
int get_owning_volume_by_name(const std::string& entity_name);
// Length of the curve.
double get_curve_length(int curve_id);
// Arc length of the curve.
double get_arc_length(int curve_id);
// Arc length from the start of the curve to the point nearest (x, y, z).
double get_distance_from_curve_start(double x_coordinate, double y_coordinate, double z_coordinate,
                                     int curve_id);
// Radius of a circular curve, 0 otherwise.
double get_curve_radius(int curve_id);
// Center of the curve.
std::array<double, 3> get_curve_center(int curve_id);
// Area of the surface.
double get_surface_area(int surface_id);
// Volume (measure) of the volume.
double get_volume_area(int volume_id);
// Hydraulic radius of the surface (2 * area / perimeter).
double get_hydraulic_radius_surface_area(int surface_id);
// Hydraulic radius of the volume (3 * volume / surface area).
double get_hydraulic_radius_volume_area(int volume_id);
// Center point of the entity.
std::array<double, 3> get_center_point(const std::string& entity_type, int entity_id);
// Number of curves at the vertex.
int get_valence(int vertex_id);
// Distance between two vertices.
double get_distance_between(int vertex_id_1, int vertex_id_2);
// Whether the point lies in the entity: 1 inside, 0 outside, 2 on the boundary, -1 unknown.
int is_point_contained(const std::string& geometry_type, int entity_id,
                       const std::array<double, 3>& xyz_point);
// Prints the surface summary stats through the message channel.
void print_surface_summary_stats();
// Prints the volume summary stats through the message channel.
void print_volume_summary_stats();
// Number of blocks in the model.
int get_block_count();
// Number of sidesets in the model.
int get_sideset_count();
// Number of nodesets in the model.
int get_nodeset_count();
// Number of volumes in the model.
int get_volume_count();
// Number of bodies in the model.
int get_body_count();
// Number of surfaces in the model.
int get_surface_count();
// Number of vertices in the model.
int get_vertex_count();
// Number of curves in the model.
int get_curve_count();
// Number of curves in the given volumes.
int get_curve_count_in_volumes(const std::vector<int>& target_volume_ids);
// Whether catia engine is available.
bool is_catia_engine_available();
// Whether acis engine is available.
bool is_acis_engine_available();
// Whether opencascade engine is available.
bool is_opencascade_engine_available();
// Curves among `curve_list` whose exterior angle is below `test_angle` degrees.
std::vector<int> evaluate_exterior_angle(const std::vector<int>& curve_list, double test_angle);
// Exterior angle in degrees at the curve, measured in the volume.
double evaluate_exterior_angle_at_curve(int curve_id, int volume_id);

// ---- Geometry diagnostics and repair solutions --------------------------------------------------

// Gap tolerance of overlap searches.
double get_overlap_max_gap();
// Sets the overlap max gap.
void set_overlap_max_gap(double maximum_gap);
// Angle tolerance of overlap searches, degrees.
double get_overlap_max_angle();
// Sets the overlap max angle.
void set_overlap_max_angle(double maximum_angle);
// Surfaces of the volumes whose hydraulic radius is below `mesh_size`, with that radius.
void get_small_surfaces_hydraulic_radius(const std::vector<int>& target_volume_ids,
                                         double mesh_size,
                                         std::vector<int>& returned_small_surfaces,
                                         std::vector<double>& returned_small_radius);
// Volumes whose hydraulic radius is below `mesh_size`, with that radius.
void get_small_volumes_hydraulic_radius(const std::vector<int>& target_volume_ids, double mesh_size,
                                        std::vector<int>& returned_small_volumes,
                                        std::vector<double>& returned_small_radius);
// Small curves of the given volumes.
std::vector<int> get_small_curves(const std::vector<int>& target_volume_ids, double mesh_size);
// Smallest curves of the given volumes.
std::vector<int> get_smallest_curves(const std::vector<int>& target_volume_ids,
                                     int number_to_return);
// Small surfaces of the given volumes.
std::vector<int> get_small_surfaces(const std::vector<int>& target_volume_ids, double mesh_size);
// Narrow surfaces of the given volumes.
std::vector<int> get_narrow_surfaces(const std::vector<int>& target_volume_ids, double mesh_size);
// Small and narrow surfaces of the given entities.
std::vector<int> get_small_and_narrow_surfaces(const std::vector<int>& target_ids,
                                               double small_area, double small_curve_size);
// Closed narrow surfaces of the given entities.
std::vector<int> get_closed_narrow_surfaces(const std::vector<int>& target_ids, double narrow_size);
// Surfs with narrow regions of the given entities.
std::vector<int> get_surfs_with_narrow_regions(const std::vector<int>& target_ids,
                                               double narrow_size);
// Narrow regions of the given entities.
std::vector<int> get_narrow_regions(const std::vector<int>& target_ids, double narrow_size);
// Small volumes of the given volumes.
std::vector<int> get_small_volumes(const std::vector<int>& target_volume_ids, double mesh_size);
// Blend surfaces in the given volumes.
std::vector<int> get_blend_surfaces(const std::vector<int>& target_volume_ids);
// Surfaces with loops closer together than `mesh_size`.
std::vector<int> get_close_loops(const std::vector<int>& target_volume_ids, double mesh_size);
// Vertices where surfaces meet at an angle outside [lower_bound, upper_bound] degrees.
std::vector<int> get_tangential_intersections(const std::vector<int>& target_volume_ids,
                                              double upper_bound, double lower_bound);
// Coincident vertices of the given volumes.
std::vector<int> get_coincident_vertices(const std::vector<int>& target_volume_ids,
                                         double high_tolerance);
// Ways to fix near coincident vertices: each a runnable command line, then a description.
std::vector<std::vector<std::string>> get_solutions_for_near_coincident_vertices(int vertex_id_1,
                                                                                 int vertex_id_2);
// Ways to fix overlapping volumes: each a runnable command line, then a description.
std::vector<std::vector<std::string>>
get_solutions_for_overlapping_volumes(int volume_id_1, int volume_id_2,
                                      double maximum_gap_tolerance, double maximum_gap_angle);
// Ways to close the gap between two surfaces: each a runnable command line, then a description.
std::vector<std::vector<std::string>> get_volume_gap_solutions(int surface_id_1, int surface_id_2);
// Ways to fix near coincident vertex and curve: each a runnable command line, then a description.
std::vector<std::vector<std::string>>
get_solutions_for_near_coincident_vertex_and_curve(int vertex_id, int curve_id);
// Ways to fix near coincident vertex and surface: each a runnable command line, then a
// description.
std::vector<std::vector<std::string>>
get_solutions_for_near_coincident_vertex_and_surface(int vertex_id, int surface_id);
// Ways to fix imprint merge: each a runnable command line, then a description.
std::vector<std::vector<std::string>> get_solutions_for_imprint_merge(int surface_id1,
                                                                      int surface_id2);
// Commands that would make the volume sweepable, and the source and target surfaces they assume.
// Inputs after the outputs: small_curve_size.
std::vector<std::vector<std::string>>
get_solutions_for_forced_sweepability(int volume_id, std::vector<int>& source_surface_id_list,
                                      std::vector<int>& target_surface_id_list,
                                      double small_curve_size);
// Ways to fix small surfaces: each a runnable command line, then a description.
std::vector<std::vector<std::string>>
get_solutions_for_small_surfaces(int surface_id, double small_curve_size, double mesh_size);
// Ways to fix small curves: each a runnable command line, then a description.
std::vector<std::vector<std::string>>
get_solutions_for_small_curves(int curve_id, double small_curve_size, double mesh_size);
// Ways to fix surfaces with narrow regions: each a runnable command line, then a description.
std::vector<std::vector<std::string>>
get_solutions_for_surfaces_with_narrow_regions(int surface_id, double small_curve_size,
                                               double mesh_size);
// Feasible and infeasible source/target surface sets for sweeping the volume.
bool get_solutions_for_source_target(
    int volume_id, std::vector<std::vector<int>>& feasible_source_surface_id_list,
    std::vector<std::vector<int>>& feasible_target_surface_id_list,
    std::vector<std::vector<int>>& infeasible_source_surface_id_list,
    std::vector<std::vector<int>>& infeasible_target_surface_id_list);
// Sharp surface angles of the given volumes. Inputs after the outputs: upper_bound, lower_bound.
void get_sharp_surface_angles(const std::vector<int>& target_volume_ids,
                              std::vector<int>& returned_large_surface_angles,
                              std::vector<int>& returned_small_surface_angles,
                              std::vector<double>& returned_large_angles,
                              std::vector<double>& returned_small_angles, double upper_bound,
                              double lower_bound);
// Sharp curve angles of the given volumes. Inputs after the outputs: upper_bound, lower_bound.
void get_sharp_curve_angles(const std::vector<int>& target_volume_ids,
                            std::vector<int>& returned_large_curve_angles,
                            std::vector<int>& returned_small_curve_angles,
                            std::vector<double>& returned_large_angles,
                            std::vector<double>& returned_small_angles, double upper_bound,
                            double lower_bound);
// Bodies, volumes, surfaces and curves that fail the geometry check.
void get_bad_geometry(const std::vector<int>& target_volume_ids,
                      std::vector<int>& returned_body_list, std::vector<int>& returned_volume_list,
                      std::vector<int>& returned_surface_list,
                      std::vector<int>& returned_curve_list);
// Pairs of overlapping surfaces (parallel lists), at most `max_results` pairs (0: all). Inputs
// after the outputs: filter_slivers, filter_volume_overlaps, max_results.
void get_overlapping_surfaces_in_volumes(const std::vector<int>& target_volume_ids,
                                         std::vector<int>& returned_surface_list_1,
                                         std::vector<int>& returned_surface_list_2,
                                         std::vector<double>& returned_distance_list,
                                         std::vector<double>& returned_overlap_area_list,
                                         bool filter_slivers, bool filter_volume_overlaps,
                                         int max_results);
// Pairs of overlapping surfaces among the given ones, at most `max_results` pairs (0: all). Inputs
// after the outputs: filter_slivers, filter_volume_overlaps, max_results.
void get_overlapping_surfaces(const std::vector<int>& target_surface_ids,
                              std::vector<int>& returned_surface_list_1,
                              std::vector<int>& returned_surface_list_2,
                              std::vector<double>& returned_distance_list,
                              std::vector<double>& returned_overlap_area_list, bool filter_slivers,
                              bool filter_volume_overlaps, int max_results);
// Pairs of surfaces facing each other across a gap, at most `max_results` pairs (0: all). Inputs
// after the outputs: maximum_gap_tolerance, maximum_gap_angle, max_results.
void get_volume_gaps(const std::vector<int>& target_volume_ids,
                     std::vector<int>& returned_surface_list_1,
                     std::vector<int>& returned_surface_list_2,
                     std::vector<double>& returned_distance_list,
                     std::vector<double>& returned_overlap_area_list, double maximum_gap_tolerance,
                     double maximum_gap_angle, int max_results);
// Overlapping volumes of the given volumes.
std::vector<int> get_overlapping_volumes(const std::vector<int>& target_volume_ids);
// Groups of surfaces, curves and vertices that would merge at `merge_tolerance` (negative: the
// model's). Inputs after the outputs: merge_tolerance.
void get_mergeable_entities(const std::vector<int>& target_volume_ids,
                            std::vector<std::vector<int>>& returned_surface_list,
                            std::vector<std::vector<int>>& returned_curve_list,
                            std::vector<std::vector<int>>& returned_vertex_list,
                            double merge_tolerance);
// Mergeable vertices of the given volumes.
std::vector<std::vector<int>> get_mergeable_vertices(const std::vector<int>& target_volume_ids);
// Mergeable curves of the given volumes.
std::vector<std::vector<int>> get_mergeable_curves(const std::vector<int>& target_volume_ids);
// Mergeable surfaces of the given volumes.
std::vector<std::vector<int>> get_mergeable_surfaces(const std::vector<int>& target_volume_ids);
// Closest vertex-curve pairs, nearest first.
void get_closest_vertex_curve_pairs(const std::vector<int>& target_ids,
                                    int& returned_number_to_return,
                                    std::vector<int>& returned_vertex_ids,
                                    std::vector<int>& returned_curve_ids,
                                    std::vector<double>& returned_distances);
// Smallest features (pairs of entities with their type codes and distance), smallest first.
void get_smallest_features(const std::vector<int>& target_ids, int& returned_number_to_return,
                           std::vector<int>& returned_type_1_list,
                           std::vector<int>& returned_type_2_list,
                           std::vector<int>& returned_id_1_list,
                           std::vector<int>& returned_id_2_list,
                           std::vector<double>& returned_distance_list);
// Suggested merge tolerance; the lists, when given, receive the tolerances tried and the
// proximities found at each.
double estimate_merge_tolerance(const std::vector<int>& target_volume_ids, bool accurate_in,
                                bool report_in, double low_value_in, double high_value_in,
                                int number_calculations_in, bool return_calculations_in,
                                std::vector<double>* merge_tolerance_list,
                                std::vector<int>* number_of_proximities_list);
// Volumes that touch no other volume.
void find_floating_volumes(const std::vector<int>& target_volume_ids,
                           std::vector<int>& returned_floating_id_list);
// Curves shared by more than two surfaces of a volume.
void find_nonmanifold_curves(const std::vector<int>& target_volume_ids,
                             std::vector<int>& returned_curve_list);
// Vertices where the volumes meet non-manifoldly.
void find_nonmanifold_vertices(const std::vector<int>& target_volume_ids,
                               std::vector<int>& returned_vertex_list);
// Vertex-vertex, vertex-curve and vertex-surface pairs closer than [low_value, high_value]. Inputs
// after the outputs: low_value, high_value, do_vertex_vertex, do_vertex_curve, do_vertex_surf,
// filter_same_volume_cases.
void get_coincident_entity_pairs(const std::vector<int>& target_volume_ids,
                                 std::vector<int>& returned_v_v_vertex_list,
                                 std::vector<int>& returned_v_c_vertex_list,
                                 std::vector<int>& returned_v_c_curve_list,
                                 std::vector<int>& returned_v_s_vertex_list,
                                 std::vector<int>& returned_v_s_surf_list,
                                 std::vector<double>& returned_vertex_distance_list,
                                 std::vector<double>& returned_curve_distance_list,
                                 std::vector<double>& returned_surf_distance_list, double low_value,
                                 double high_value, bool do_vertex_vertex, bool do_vertex_curve,
                                 bool do_vertex_surf, bool filter_same_volume_cases);
// Coincident vertex vertex pairs of the given volumes. Inputs after the outputs: low_value,
// threshold_value, filter_same_volume_cases.
void get_coincident_vertex_vertex_pairs(const std::vector<int>& target_volume_ids,
                                        std::vector<int>& returned_vertex_pair_list,
                                        std::vector<double>& returned_distance_list,
                                        double low_value, double threshold_value,
                                        bool filter_same_volume_cases);
// Coincident vertex curve pairs of the given volumes. Inputs after the outputs: low_value,
// threshold_value, filter_same_volume_cases.
void get_coincident_vertex_curve_pairs(const std::vector<int>& target_volume_ids,
                                       std::vector<int>& returned_vertex_list,
                                       std::vector<int>& returned_curve_list,
                                       std::vector<double>& returned_distance_list,
                                       double low_value, double threshold_value,
                                       bool filter_same_volume_cases);
// Coincident vertex surface pairs of the given volumes. Inputs after the outputs: low_value,
// threshold_value, filter_same_volume_cases.
void get_coincident_vertex_surface_pairs(const std::vector<int>& target_volume_ids,
                                         std::vector<int>& returned_vertex_list,
                                         std::vector<int>& returned_surface_list,
                                         std::vector<double>& returned_distance_list,
                                         double low_value, double threshold_value,
                                         bool filter_same_volume_cases);
// Ways to fix decomposition: each a runnable command line, then a description.
std::vector<std::vector<std::string>>
get_solutions_for_decomposition(const std::vector<int>& volume_list, double exterior_angle,
                                bool do_imprint_merge, bool tolerant_imprint);
// Ways to fix blends: each a runnable command line, then a description.
std::vector<std::vector<std::string>> get_solutions_for_blends(int surface_id);
// Chains of blend surfaces through the surface.
std::vector<std::vector<int>> get_blend_chains(int surface_id);
// Merge tolerance of the model.
double get_merge_tolerance();

// ---- Exodus, blocks, nodesets and sidesets ------------------------------------------------------

// Exodus entity name of the entity.
std::string get_exodus_entity_name(const std::string& entity_type, int entity_id);
// Properties text of the block, sideset or nodeset.
std::string get_exodus_entity_type(const std::string& entity_type, int entity_id);
// Exodus entity description of the entity.
std::string get_exodus_entity_description(const std::string& entity_type, int entity_id);
// Time values stored in the Exodus file.
std::vector<double> get_all_exodus_times(const std::string& filename);
// Variable names in the Exodus file of `variable_type` ("node", "element", "global").
std::vector<std::string> get_all_exodus_variable_names(const std::string& filename,
                                                       const std::string& variable_type);
// Block that holds the entity, or 0.
int get_block_id(const std::string& entity_type, int entity_id);
// Block ids of the named mesh file.
std::vector<int> get_block_ids(const std::string& mesh_geometry_file_name);
// Ids of all blocks, ascending.
std::vector<int> get_block_id_list();
// Ids of all nodesets, ascending.
std::vector<int> get_nodeset_id_list();
// Ids of all sidesets, ascending.
std::vector<int> get_sideset_id_list();
// Ids of the boundary conditions of the kind.
std::vector<int> get_bc_id_list(TI_BCTypes bc_type_enum);
// Name of the boundary condition.
std::string get_bc_name(TI_BCTypes bc_type_enum, int bc_id);
// Nodesets that carry the boundary condition.
std::vector<int> get_nodeset_id_list_for_bc(TI_BCTypes bc_type_enum, int bc_id);
// Sidesets that carry the boundary condition.
std::vector<int> get_sideset_id_list_for_bc(TI_BCTypes bc_type_enum, int bc_id);
// Id that the next new sideset will get.
int get_next_sideset_id();
// Id that the next new nodeset will get.
int get_next_nodeset_id();
// Id that the next new block will get.
int get_next_block_id();
// What copying geometry does with nodesets: "on", "off" or "use_original".
std::string get_copy_nodeset_on_geometry_copy_setting();
// Copy sideset on geometry copy setting.
std::string get_copy_sideset_on_geometry_copy_setting();
// Copy block on geometry copy setting.
std::string get_copy_block_on_geometry_copy_setting();
// Everything in the block, by kind.
void get_block_children(
    int block_id, std::vector<int>& returned_group_list, std::vector<int>& returned_node_list,
    std::vector<int>& returned_sphere_list, std::vector<int>& returned_edge_list,
    std::vector<int>& returned_tri_list, std::vector<int>& returned_face_list,
    std::vector<int>& returned_pyramid_list, std::vector<int>& returned_tet_list,
    std::vector<int>& returned_hex_list, std::vector<int>& returned_wedge_list,
    std::vector<int>& returned_volume_list, std::vector<int>& returned_surface_list,
    std::vector<int>& returned_curve_list, std::vector<int>& returned_vertex_list);
// Children of the nodeset.
void get_nodeset_children(int nodeset_id, std::vector<int>& returned_node_list,
                          std::vector<int>& returned_volume_list,
                          std::vector<int>& returned_surface_list,
                          std::vector<int>& returned_curve_list,
                          std::vector<int>& returned_vertex_list);
// Children of the sideset.
void get_sideset_children(int sideset_id, std::vector<int>& returned_face_list,
                          std::vector<int>& returned_surface_list,
                          std::vector<int>& returned_curve_list);
// Ids of the volumes in the block.
std::vector<int> get_block_volumes(int block_id);
// Ids of the surfaces in the block.
std::vector<int> get_block_surfaces(int block_id);
// Ids of the curves in the block.
std::vector<int> get_block_curves(int block_id);
// Ids of the vertices in the block.
std::vector<int> get_block_vertices(int block_id);
// Elements and nodes of the block, by kind; false when the block does not exist.
bool get_block_elements_and_nodes(
    int block_id, std::vector<int>& returned_node_list, std::vector<int>& returned_sphere_list,
    std::vector<int>& returned_edge_list, std::vector<int>& returned_tri_list,
    std::vector<int>& returned_face_list, std::vector<int>& returned_pyramid_list,
    std::vector<int>& returned_wedge_list, std::vector<int>& returned_tet_list,
    std::vector<int>& returned_hex_list);
// Ids of the nodes in the block.
std::vector<int> get_block_nodes(int block_id);
// Ids of the edges in the block.
std::vector<int> get_block_edges(int block_id);
// Ids of the tris in the block.
std::vector<int> get_block_tris(int block_id);
// Ids of the faces in the block.
std::vector<int> get_block_faces(int block_id);
// Ids of the pyramids in the block.
std::vector<int> get_block_pyramids(int block_id);
// Ids of the wedges in the block.
std::vector<int> get_block_wedges(int block_id);
// Ids of the tets in the block.
std::vector<int> get_block_tets(int block_id);
// Ids of the hexes in the block.
std::vector<int> get_block_hexes(int block_id);
// Ids of the hexes in the volume.
std::vector<int> get_volume_hexes(int volume_id);
// Ids of the tets in the volume.
std::vector<int> get_volume_tets(int volume_id);
// Ids of the volumes in the nodeset.
std::vector<int> get_nodeset_volumes(int nodeset_id);
// Ids of the surfaces in the nodeset.
std::vector<int> get_nodeset_surfaces(int nodeset_id);
// Ids of the curves in the nodeset.
std::vector<int> get_nodeset_curves(int nodeset_id);
// Ids of the vertices in the nodeset.
std::vector<int> get_nodeset_vertices(int nodeset_id);
// Ids of the nodes in the nodeset.
std::vector<int> get_nodeset_nodes(int nodeset_id);
// Nodes of the nodeset, including those of its geometry.
std::vector<int> get_nodeset_nodes_inclusive(int nodeset_id);
// Ids of the curves in the sideset.
std::vector<int> get_sideset_curves(int sideset_id);
// Ids of the edges in the curve.
std::vector<int> get_curve_edges(int curve_id);
// Ids of the surfaces in the sideset.
std::vector<int> get_sideset_surfaces(int sideset_id);
// Ids of the quads in the sideset.
std::vector<int> get_sideset_quads(int sideset_id);
// Ids of the quads in the surface.
std::vector<int> get_surface_quads(int surface_id);
// Ids of the tris in the surface.
std::vector<int> get_surface_tris(int surface_id);
// Sense of the entity in the sideset: "forward", "reverse" or "both".
std::string get_entity_sense(const std::string& source_type, int source_id, int sideset_id);
// Entity the sideset side is taken with respect to ("volume 2"), or "".
std::string get_wrt_entity(const std::string& source_type, int source_id, int sideset_id);
// Owners ("surface 3") of the mesh entities of `mesh_entity_list` (an id-list expression).
std::vector<std::string> get_geometric_owner(const std::string& mesh_entity_type,
                                             const std::string& mesh_entity_list);
// Ids of the nodes in the volume.
std::vector<int> get_volume_nodes(int volume_id);
// Ids of the nodes in the surface.
std::vector<int> get_surface_nodes(int surface_id);
// Ids of the nodes in the curve.
std::vector<int> get_curve_nodes(int curve_id);
// Node on the vertex, or 0.
int get_vertex_node(int vertex_id);
// Id of the entity named `name`, or 0.
int get_id_from_name(const std::string& name);
// Element type of the sideset.
std::string get_sideset_element_type(int sideset_id);
// Element type of the block.
std::string get_block_element_type(int block_id);
// Number of elements of the block or sideset.
int get_exodus_element_count(int entity_id, const std::string& entity_type);
// Number of attributes of the block.
int get_block_attribute_count(int block_id);
// Number of attributes per element of the block.
int get_block_element_attribute_count(int block_id);
// Attribute value of the block.
double get_block_attribute_value(int block_id, int attribute_index);
// Attribute name of the block.
std::string get_block_attribute_name(int block_id, int attribute_index);
// Element attribute names of the block.
std::vector<std::string> get_block_element_attribute_names(int block_id);
// Element types that the block's contents allow.
std::vector<std::string> get_valid_block_element_types(int block_id);
// Number of Exodus variables on the container.
int get_exodus_variable_count(const std::string& container_type, int container_id);
// Exodus variable names.
std::vector<std::string> get_exodus_variable_names(const std::string& container_type,
                                                   int container_id);
// Number of nodes in the nodeset.
int get_nodeset_node_count(int nodeset_id);
// Number of mesh nodes on the entity, its boundary included.
int get_geometry_node_count(const std::string& entity_type, int entity_id);

// ---- Groups and entity identity -----------------------------------------------------------------

// Everything in the group: ids of geometry by kind and counts of mesh entities by kind.
void get_group_children(int group_id, std::vector<int>& returned_group_list,
                        std::vector<int>& returned_body_list,
                        std::vector<int>& returned_volume_list,
                        std::vector<int>& returned_surface_list,
                        std::vector<int>& returned_curve_list,
                        std::vector<int>& returned_vertex_list, int& returned_node_count,
                        int& returned_edge_count, int& returned_hex_count, int& returned_quad_count,
                        int& returned_tet_count, int& returned_tri_count, int& returned_wedge_count,
                        int& returned_pyramid_count, int& returned_sphere_count);
// Ids of the groups in the group.
std::vector<int> get_group_groups(int group_id);
// Ids of the volumes in the group.
std::vector<int> get_group_volumes(int group_id);
// Ids of the bodies in the group.
std::vector<int> get_group_bodies(int group_id);
// Ids of the surfaces in the group.
std::vector<int> get_group_surfaces(int group_id);
// Ids of the curves in the group.
std::vector<int> get_group_curves(int group_id);
// Ids of the vertices in the group.
std::vector<int> get_group_vertices(int group_id);
// Ids of the nodes in the group.
std::vector<int> get_group_nodes(int group_id);
// Ids of the edges in the group.
std::vector<int> get_group_edges(int group_id);
// Ids of the quads in the group.
std::vector<int> get_group_quads(int group_id);
// Ids of the tris in the group.
std::vector<int> get_group_tris(int group_id);
// Ids of the tets in the group.
std::vector<int> get_group_tets(int group_id);
// Ids of the wedges in the group.
std::vector<int> get_group_wedges(int group_id);
// Ids of the pyramids in the group.
std::vector<int> get_group_pyramids(int group_id);
// Ids of the spheres in the group.
std::vector<int> get_group_spheres(int group_id);
// Ids of the hexes in the group.
std::vector<int> get_group_hexes(int group_id);
// Id that the next new group will get.
int get_next_group_id();
// Deletes all groups.
void delete_all_groups();
// Deletes group.
void delete_group(int group_id);
// Raises the next group id to follow `maximum_group_id`.
void set_max_group_id(int maximum_group_id);
// Creates an empty group; its id.
int create_new_group();
// Removes entity from group.
void remove_entity_from_group(int group_id, int entity_id, const std::string& entity_type);
// Adds entity to group.
void add_entity_to_group(int group_id, int entity_id, const std::string& entity_type);
// Adds entities to group.
void add_entities_to_group(int group_id, const std::vector<int>& entity_id,
                           const std::string& entity_type);
// Names and ids of all groups, as parallel lists.
void group_list(std::vector<std::string>& name_list, std::vector<int>& returned_id_list);
// Names and ids of all groups, as pairs.
std::vector<std::pair<std::string, int>> group_names_ids();
// Groups that hold the mesh element.
std::vector<int> get_mesh_group_parent_ids(const std::string& element_type, int element_id);
// Whether the element is mesh element in group.
bool is_mesh_element_in_group(const std::string& element_type, int element_id);
// Whether `target_id` is in `id_list`.
bool is_part_of_list(int target_id, const std::vector<int>& id_list);
// Highest id in use for `entity_type`.
int get_last_id(const std::string& entity_type);
// Text that identifies the entity without its id ("surface at 1.5 0 0"), stable across
// renumbering.
std::string get_idless_signature(const std::string& entity_type, int entity_id);
// Id-less signatures of the entities, joined.
std::string get_idless_signatures(const std::string& entity_type,
                                  const std::vector<int>& entity_id_list);

// ---- Assembly metadata --------------------------------------------------------------------------

// Assembly classification level.
std::string get_assembly_classification_level();
// Assembly classification category.
std::string get_assembly_classification_category();
// Assembly weapons category.
std::string get_assembly_weapons_category();
// Metadata item `data_type` of the volume's assembly (0 name, 1 path, 2 type, 3 description, 4
// material).
std::string get_assembly_metadata(int volume_id, int data_type);
// Whether the volume is assembly metadata attached.
bool is_assembly_metadata_attached(int volume_id);
// Name of the assembly.
std::string get_assembly_name(int assembly_id);
// Path of the assembly.
std::string get_assembly_path(int assembly_id);
// Type of the assembly.
std::string get_assembly_type(int assembly_id);
// Parent assembly path of the assembly.
std::string get_parent_assembly_path(int assembly_id);
// Level of the assembly.
int get_assembly_level(int assembly_id);
// Description of the assembly.
std::string get_assembly_description(int assembly_id);
// Instance of the assembly.
int get_assembly_instance(int assembly_id);
// Parent assembly instance of the assembly.
int get_parent_assembly_instance(int assembly_id);
// File format of the assembly.
std::string get_assembly_file_format(int assembly_id);
// Units of the assembly.
std::string get_assembly_units(int assembly_id);
// Material description of the assembly.
std::string get_assembly_material_description(int assembly_id);
// The material standard or grade recorded for the assembly.
std::string get_assembly_material_specification(int assembly_id);
// Every node of the assembly tree.
std::vector<AssemblyItem> get_assembly_items();
// The roots of the assembly tree.
std::vector<AssemblyItem> get_top_level_assembly_items();
// The children of the assembly node.
std::vector<AssemblyItem> get_assembly_children(int assembly_id);
// Volumes of the assembly node with that name and instance.
std::vector<int> get_volumes_for_node(const std::string& node_name, int node_instance);

// ---- Mesh entity queries ------------------------------------------------------------------------

// Exodus (global) id of the mesh entity.
int get_exodus_id(const std::string& entity_type, int entity_id);
// Owner of the mesh entity ("surface 3"), or "".
std::string get_geometry_owner(const std::string& entity_type, int entity_id);
// Node ids of the element, in the element's node order.
std::vector<int> get_connectivity(const std::string& entity_type, int entity_id);
// Node ids of the element, higher-order nodes included.
std::vector<int> get_expanded_connectivity(const std::string& entity_type, int entity_id);
// Ids of the element's sub-entities of the given dimension.
std::vector<int> get_sub_elements(const std::string& entity_type, int entity_id, int dimension);
// Whether node `node_id` exists.
bool get_node_exists(int node_id);
// Whether element `element_id` exists (any type).
bool get_element_exists(int element_id);
// Type of the element.
std::string get_element_type(int element_id);
// Numeric type of the element (its Exodus element code).
int get_element_type_id(int element_id);
// Block that holds the element, or 0.
int get_element_block(int element_id);
// Global (export) element id of the element.
int get_global_element_id(const std::string& element_type, int id);
// Global element id of the hex.
int get_hex_global_element_id(int hex_id);
// Global element id of the tet.
int get_tet_global_element_id(int tet_id);
// Global element id of the wedge.
int get_wedge_global_element_id(int wedge_id);
// Global element id of the pyramid.
int get_pyramid_global_element_id(int pyramid_id);
// Global element id of the tri.
int get_tri_global_element_id(int tri_id);
// Global element id of the quad.
int get_quad_global_element_id(int quad_id);
// Global element id of the edge.
int get_edge_global_element_id(int edge_id);
// Sphere global element id of the sphere element.
int get_sphere_global_element_id(int sphere_id);
// Global id of the node.
int get_node_global_id(int node_id);
// Node nearest to the point.
int get_closest_node(double x_coordinate, double y_coordinate, double z_coordinate);
// Nodal coordinates of the node.
std::array<double, 3> get_nodal_coordinates(int node_id);
// Quads that use the node.
std::vector<int> get_node_faces(int node_id);
// Tris that use the node.
std::vector<int> get_node_tris(int node_id);
// Whether smoothing may not move the node.
bool get_node_position_fixed(int node_id);
// Vertex id and corner type code of each vertex of the surface under a submap scheme.
std::vector<std::pair<int, int>> get_submap_corner_types(int surface_id);
// Mesh entities of the type and, in step, the volume that owns each.
void get_owning_volume_ids(const std::string& entity_type, std::vector<int>& entity_list,
                           std::vector<int>& volume_ids);
// Mesh element type of the entity.
std::string get_mesh_element_type(const std::string& entity_type, int entity_id);
// Errors the last meshing left; the kernel owns the records (valid until the next mesh command).
std::vector<MeshErrorFeedback*> get_mesh_errors();
// Number of mesh errors in the model.
int get_mesh_error_count();

// ---- Boundary conditions and materials ----------------------------------------------------------

// Whether the condition lies on a thin shell.
bool is_on_thin_shell(TI_BCTypes bc_type_enum, int entity_id);
// Whether the temperature condition lies on a solid.
bool temperature_is_on_solid(TI_BCTypes bc_type_enum, int entity_id);
// Whether the convection lies on a solid.
bool convection_is_on_solid(int entity_id);
// Whether the convection applies to that area of a shell.
bool convection_is_on_shell_area(int entity_id, TI_BCEntityTypes shell_area_enum);
// Convection coefficient of that area (solid, shell top or bottom).
double get_convection_coefficient(int entity_id, TI_BCEntityTypes bc_type_enum);
// Temperature of that area of the condition.
double get_bc_temperature(TI_BCTypes bc_type_enum, int entity_id, TI_BCEntityTypes temp_type_enum);
// Whether the temperature applies to that area of a shell.
bool temperature_is_on_shell_area(TI_BCTypes bc_type_enum, TI_BCEntityTypes bc_area_enum,
                                  int entity_id);
// Whether the heat flux applies to that area of a shell.
bool heatflux_is_on_shell_area(TI_BCEntityTypes bc_area_enum, int entity_id);
// Heat flux on that area.
double get_heatflux_on_area(TI_BCEntityTypes bc_area_enum, int entity_id);
// Kind of the CFD boundary condition (a TI_BCTypes value 11..32).
int get_cfd_type(int entity_id);
// Contact pair friction value of the entity.
double get_contact_pair_friction_value(int entity_id);
// Contact pair tolerance value of the entity.
double get_contact_pair_tolerance_value(int entity_id);
// Lower search tolerance of the contact pair.
double get_contact_pair_tol_lower_value(int entity_id);
// Contact pair tied state of the entity.
bool get_contact_pair_tied_state(int entity_id);
// Contact pair general state of the entity.
bool get_contact_pair_general_state(int entity_id);
// Contact pair exterior state of the entity.
bool get_contact_pair_exterior_state(int entity_id);
// Six values (x, y, z, rx, ry, rz) of the displacement; never null.
const double* get_displacement_dof_values(int entity_id);
// Six flags (1 set, 0 free) of the displacement; never null.
const int* get_displacement_dof_signs(int entity_id);
// Six values of the velocity; never null.
const double* get_velocity_dof_values(int entity_id);
// Six set/free flags of the velocity; never null.
const int* get_velocity_dof_signs(int entity_id);
// Velocity combine type of the entity.
std::string get_velocity_combine_type(int entity_id);
// Six values of the acceleration; never null.
const double* get_acceleration_dof_values(int entity_id);
// Six set/free flags of the acceleration; never null.
const int* get_acceleration_dof_signs(int entity_id);
// Acceleration combine type of the entity.
std::string get_acceleration_combine_type(int entity_id);
// Displacement combine type of the entity.
std::string get_displacement_combine_type(int entity_id);
// Pressure value of the entity.
double get_pressure_value(int entity_id);
// Pressure function of the entity.
std::string get_pressure_function(int entity_id);
// Force magnitude of the entity.
double get_force_magnitude(int entity_id);
// Moment magnitude of the entity.
double get_moment_magnitude(int entity_id);
// Force direction vector of the entity.
std::array<double, 3> get_force_direction_vector(int entity_id);
// Force moment vector of the entity.
std::array<double, 3> get_force_moment_vector(int entity_id);
// Kind of the constraint: "rigid" or "distributing".
std::string get_constraint_type(int constraint_id);
// Reference point of the constraint ("vertex 4").
std::string get_constraint_reference_point(int constraint_id);
// Dependent entities of the constraint ("surface 2 3").
std::string get_constraint_dependent_entity_point(int constraint_id);
// Value of the property of material `entity_id`.
double get_material_property(TI_MaterialProperty material_property_enum, int entity_id);
// Kind of medium `entity_id` (TI_MediaType).
int get_media_property(int entity_id);
// Names of all structural materials.
std::vector<std::string> get_material_name_list();
// Names of all CFD media.
std::vector<std::string> get_media_name_list();
// Stable explicit time step of the elements, from their blocks' materials.
double calculate_timestep_estimate(const std::string& entity_type,
                                   const std::vector<int>& entity_ids);
// Stable explicit time step of the elements for the given material values.
double calculate_timestep_estimate_with_props(const std::string& entity_type,
                                              const std::vector<int>& entity_ids, double density,
                                              double youngs_modulus, double poissons_ratio);
// Every CFD boundary condition.
std::vector<CFD_BC_Entity> get_all_cfd_bcs();

// ---- Labels, comparison, sculpt defaults and boundary layers ------------------------------------

// Label setting of the entity type (0 off, 1 id, 2 name, 3 both).
void set_label_type(const std::string& entity_type, int label_flag);
// Label setting of the entity type (0 off, 1 id, 2 name, 3 both).
int get_label_type(const std::string& entity_type);
// Ids of all coordinate systems, ascending.
std::vector<int> get_coordinate_systems_id_list();
// Matches volumes with mesh within `tolerance`; groups of full and partial matches and of
// unmatched curves.
void compare_geometry_and_mesh(const std::vector<int>& volume_ids,
                               const std::vector<int>& block_ids, const std::vector<int>& hex_ids,
                               const std::vector<int>& tet_ids, double tolerance,
                               int& returned_unmatched_volumes_count,
                               int& returned_unmatched_elements_count,
                               std::vector<int>& returned_full_matches_group_ids_list,
                               std::vector<int>& returned_partial_matches_group_ids_list,
                               int& returned_volume_curves_group_id);
// Default of the named sculpt setting, as a number.
double get_dbl_sculpt_default(const std::string& variable);
// Default of the named sculpt setting, as an int.
int get_int_sculpt_default(const std::string& variable);
// Default of the named sculpt setting, as a bool.
bool get_bool_sculpt_default(const std::string& variable);
// Default of the named sculpt setting, as text.
std::string get_string_sculpt_default(const std::string& variable);
// Id that the next new boundary layer will get.
int get_next_boundary_layer_id();
// Whether no boundary layer uses that id.
bool is_boundary_layer_id_available(int boundary_layer_id);
// Algorithm of the layer: "uniform", "aspect first" or "aspect last".
std::string get_boundary_layer_algorithm(int boundary_layer_id);
// Parameters of a uniform layer; false when the layer is not uniform.
bool get_boundary_layer_uniform_parameters(int boundary_layer_id, double& returned_first_row_height,
                                           double& returned_growth_factor,
                                           int& returned_number_rows);
// Parameters of an aspect-first layer; false when it is not one.
bool get_boundary_layer_aspect_first_parameters(int boundary_layer_id,
                                                double& returned_first_row_aspect,
                                                double& returned_growth_factor,
                                                int& returned_number_rows);
// Parameters of an aspect-last layer; false when it is not one.
bool get_boundary_layer_aspect_last_parameters(int boundary_layer_id,
                                               double& returned_first_row_height,
                                               int& returned_number_rows,
                                               double& returned_last_row_aspect);
// The (curve, surface) pairs the layer grows from, as parallel lists.
bool get_boundary_layer_curve_surface_pairs(int boundary_layer_id,
                                            std::vector<int>& returned_curve_list,
                                            std::vector<int>& returned_surface_list);
// The (surface, volume) pairs the layer grows from, as parallel lists.
bool get_boundary_layer_surface_volume_pairs(int boundary_layer_id,
                                             std::vector<int>& returned_surface_list,
                                             std::vector<int>& returned_volume_list);
// Intersection type of each (vertex, surface) of all layers.
bool get_boundary_layer_vertex_intersection_types(std::vector<int>& returned_vertex_list,
                                                  std::vector<int>& returned_surface_list,
                                                  std::vector<std::string>& returned_types);
// Intersection type of each (curve, volume) of all layers.
bool get_boundary_layer_curve_intersection_types(std::vector<int>& returned_curve_list,
                                                 std::vector<int>& returned_volume_list,
                                                 std::vector<std::string>& returned_types);
// Whether rows continue across internal boundaries.
bool get_boundary_layer_continuity(int boundary_layer_id);
// Ids of all boundary layers, ascending.
std::vector<int> get_boundary_layer_id_list();

// ---- Interfaces -------------------------------------------------------------------------------

// The named interface ("Material": a MaterialInterface), or null for an unknown name. Give it
// back with release_interface.
TarvoBaseInterface* get_interface(const std::string& name);
// Gives back an interface from get_interface. Null is ignored.
void release_interface(TarvoBaseInterface* instance);

} // namespace TarvoInterface
