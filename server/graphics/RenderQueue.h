#pragma once
// What the render views need of the task queue, so that the graphics code does not depend on
// the routing layer above it: a place to report a view with a new image, and the batching state
// of the graphics pass that runs. TarvoQueue is the real one; unit tests put a fake behind it.
//
// Threads: every operation is called on the worker thread, the one that renders.

class ClientConnection;
class GTarvoModelSet;
class ServerGraphicsView;

class RenderQueue {
public:
    virtual ~RenderQueue() = default;

    // The view has an image to deliver to `client`. Ignored while the client's views are being
    // torn down.
    virtual void mark_view_dirty(ServerGraphicsView* view, ClientConnection* client) = 0;
    // The view is about to go: it leaves the set of views waiting for delivery.
    virtual void forget_view(ServerGraphicsView* view) = 0;
    // True while several graphics tasks run back to back: a view that asks for a render is only
    // marked, and renders once at the end of the pass.
    virtual bool is_batching_renders() = 0;
    // The model the views draw, or null when the kernel has no graphics.
    virtual GTarvoModelSet* model_set() = 0;
};
