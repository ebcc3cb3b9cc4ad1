#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

class GView;

// The kernel's model drawn into views: geometry (surfaces tessellated by the kernel, curves as
// polylines, vertices as points) and mesh (a volume's outer element faces, a surface's elements,
// their edges), with the colours, visibility, drawing set, highlights, render mode and mesh and
// geometry switches of the kernel's view state.
//
// The model is drawn in pieces: one per volume (its surfaces, curves and vertices) and one per
// surface, curve or vertex in no volume. An observer of the kernel's events marks the pieces a
// change touches; the next render of any view rebuilds those pieces alone, before drawing. After
// a command that changed what is drawn (model, mesh, colours, visibility, view state), every
// view is asked once for a render through GView::request_render, so a quiet view sends event 5.
//
// Appearance has no events of its own for colours and drawing sets, so it is compared after each
// command with what was last drawn; it costs a few queries per drawn entity, no rebuild.
//
// Not drawn yet: labels, the preview, per-surface visibility inside a visible volume, and the
// highlighting of mesh entities.
//
// Threads: everything belongs to the kernel's thread, which is also the thread that renders
// (the server's worker thread). Requires a live kernel session (TarvoInterface::init) for as long
// as it exists; not copyable.
class GTarvoModelSet {
public:
    GTarvoModelSet();
    ~GTarvoModelSet();
    GTarvoModelSet(const GTarvoModelSet&) = delete;
    GTarvoModelSet& operator=(const GTarvoModelSet&) = delete;

    // Draws the model into the view's renderer from its next render on. A view is added once.
    void add_view(const std::shared_ptr<GView>& view);
    void remove_view(const GView* view);

    // Brings the pieces up to date now (a render does this by itself).
    void update();

    // Pieces whose geometry or mesh was built, since construction: what a change cost.
    long geometry_rebuilds() const { return geometry_rebuilds_; }
    long mesh_rebuilds() const { return mesh_rebuilds_; }
    // Pieces drawn now (all of the model, visible or not).
    std::size_t piece_count() const;

    // Drawn over highlighted and selected entities.
    static constexpr double kHighlight[3] = {1.0, 0.85, 0.0};

    struct Impl;

private:
    std::unique_ptr<Impl> impl_;
    long geometry_rebuilds_ = 0;
    long mesh_rebuilds_ = 0;
    friend struct Impl;
};
