#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <pixlane/GModelSet.h>

class GView;

// The kernel's model drawn into views: geometry (surfaces tessellated by the kernel, curves as
// polylines, vertices as points) and mesh (a volume's outer element faces, a surface's elements,
// their edges), with the colours, visibility, drawing set, highlights, render mode and mesh and
// geometry switches of the kernel's view state.
//
// The model is drawn in pieces: one per volume (its surfaces, curves and vertices) and one per
// surface, curve or vertex in no volume; a view draws them in a few fixed groups, one composite
// actor per group and role. An observer of the kernel's events marks the pieces a
// change touches; the next render of any view rebuilds those pieces alone, before drawing. After
// a command that changed what is drawn (model, mesh, colours, visibility, view state), every
// view is asked once for a render through GView::request_render, so a quiet view sends event 5.
//
// Appearance has no events of its own for colours and drawing sets, so it is compared after each
// command with what was last drawn; it costs a few queries per drawn entity, no rebuild.
//
// Highlighted mesh entities (nodes, elements) are drawn over the model in kHighlight.
//
// Labels follow the kernel's `label` settings: the id, the name or both of each visible body,
// volume, surface, curve and vertex at its centre, and of each node and element of the shown
// meshes; at most Impl::kMaxLabels. Groups, blocks and sets get none.
//
// The kernel's quality drawing (`quality <list> draw`) colours its elements by value, red at the
// bad end, with a colour bar.
//
// A surface, curve or vertex hidden on its own inside a shown volume is left out of that volume's
// drawing (its piece is rebuilt), so it is not picked either.
//
// Not drawn yet: the preview.
//
// Views are bound with GView::set_model_set. The camera is shared with the kernel's view state:
// a view command (view at/from/up, view reset) moves every bound view's camera at its next render,
// and a camera moved by input or reset_camera is written back to the kernel.
// The projection follows the kernel's perspective switch (parallel while it is off, the
// default), applied at each render; turned parallel, the focal plane keeps its size.
//
// Picking. Every cell drawn knows the entity it belongs to, so a pixel or an outline maps back to
// kernel entities. A click picks the front-most geometry under the cursor (vertices and curves
// within kPickTolerance pixels before faces), then the first of that entity, its volume and its
// body that passes the kernel's pick filter; when select_occluded is set, or the kernel's
// occlusion is off, the entities behind are tried too, front to back. An outline takes every
// entity of a filtered type wholly inside it (partly, with the kernel's partial selection on),
// hidden or not.
//
// With the mesh shown, a click on a mesh face or edge can also land on the node within
// kPickTolerance pixels of the cursor, the tri or quad drawn there ("face" in the filter stands
// for both), the volume's element whose side it is, the surface that owns that face, and on
// from there as above. An outline takes the nodes and elements of the shown meshes whose
// corners lie inside it, by the same rule.
//
// Threads: everything belongs to the kernel's thread, which is also the thread that renders
// (the server's worker thread). Requires a live kernel session (TarvoInterface::init) for as long
// as it exists; not copyable.
class GTarvoModelSet : public GModelSet {
public:
    using Entity = std::pair<std::string, int>;

    GTarvoModelSet();
    ~GTarvoModelSet() override;
    GTarvoModelSet(const GTarvoModelSet&) = delete;
    GTarvoModelSet& operator=(const GTarvoModelSet&) = delete;

    std::shared_ptr<AppUtil> app_util() const override;
    // Through GView::set_model_set: draws the model into the view from its next render on.
    void attach_view(GView* view) override;
    void detach_view(GView* view) override;
    void camera_moved(GView* view) override;

    // Whether picks reach entities hidden behind others.
    void set_select_occluded(bool on) { select_occluded_ = on; }
    bool select_occluded() const { return select_occluded_; }

    // What a click at display pixel (x, y) (y up from the bottom row) of the view picks, as
    // described above; nothing when the pick lands on nothing the filter allows.
    std::optional<Entity> pick(GView* view, int x, int y);
    // Entities inside the closed outline (display pixels), in model order.
    std::vector<Entity> pick_area(GView* view, const std::vector<std::array<double, 2>>& outline);
    // The point of the front-most face under (x, y); false when there is none.
    bool surface_point(GView* view, int x, int y, double point[3]);
    // Draws the entity in kPreselect in that view only (nothing: none). Asks for a render when
    // it changes.
    void set_preselection(GView* view, std::optional<Entity> entity);

    static constexpr double kPickTolerance = 5.0;

    // Brings the pieces up to date now (a render does this by itself).
    void update();

    // Pieces whose geometry or mesh was built, since construction: what a change cost.
    long geometry_rebuilds() const { return geometry_rebuilds_; }
    long mesh_rebuilds() const { return mesh_rebuilds_; }
    // Pieces drawn now (all of the model, visible or not).
    std::size_t piece_count() const;

    // Drawn over highlighted and selected entities.
    static constexpr double kHighlight[3] = {1.0, 0.85, 0.0};
    // Drawn over the entity a click would pick.
    static constexpr double kPreselect[3] = {0.2, 0.8, 1.0};

    struct Impl;

private:
    std::unique_ptr<Impl> impl_;
    long geometry_rebuilds_ = 0;
    long mesh_rebuilds_ = 0;
    bool select_occluded_ = false;
    friend struct Impl;
};
