#pragma once
// One render view of one client: a GView of the drawing library with its hidden window, the
// last frame captured from it, and the delivery of that frame to the client that created the
// view, the only one that ever receives its images and callbacks.
//
// The view is quiet: it never renders of its own accord. When the picture changes the library
// asks through the end-of-render callback (event 5), and the view renders at once, or, while the
// queue batches the renders of a graphics pass, only marks itself so that the pass renders it
// once at its end. Every finished render (event 4) is captured and reported to the queue; only
// the latest capture is kept, so a main thread that lags sends the newest frame, once.
//
// Threads: built, rendered and destroyed on the worker thread, which owns the GView and its GL
// context. deliver() runs on the main thread with the queue's notification mutex held; `mutex`
// guards the frame, its size and the statistics between the two (capture takes it alone, and
// releases it before reporting to the queue, so the lock order queue-then-view holds).

#include <QImage>

#include <cstdint>
#include <memory>
#include <mutex>

class ClientConnection;
class GView;
class RenderQueue;

class ServerGraphicsView {
public:
    // Gives the view its window, binds the model and fits the camera. Renders nothing.
    ServerGraphicsView(ClientConnection* client, RenderQueue* queue);
    ~ServerGraphicsView();
    ServerGraphicsView(const ServerGraphicsView&) = delete;
    ServerGraphicsView& operator=(const ServerGraphicsView&) = delete;

    int32_t view_id() const { return id; }
    GView* gview() const { return view.get(); }
    ClientConnection* client() const { return owner; }
    void set_format(int code) { format = code; }

    // ---- Worker thread ------------------------------------------------------------------

    // Renders now, whatever the batching (graphics.render, a resize, the end of a pass).
    void render();
    // Switches the render and image statistics on (graphics.render with "timing").
    void start_timing();
    // The statistics go to standard output with the delivery of the next frame captured (or a
    // later one), then switch off again.
    void request_statistics();

    // ---- Main thread, queue's notification mutex held ------------------------------------

    // Encodes the last frame in the view's format and sends it to `client` (the router has
    // checked that it is still connected). Prints the statistics when `dump_time` is set or
    // they were requested. A view with an unknown format sends nothing.
    void deliver(ClientConnection* client, bool dump_time);

private:
    void on_render_start();
    void on_render_end(unsigned long event_id);
    void capture();

    int format = 0;
    ClientConnection* owner;
    RenderQueue* queue;
    std::shared_ptr<GView> view;
    QImage image;
    int32_t id = 0;
    int width = 0;
    int height = 0;
    std::mutex mutex;
    // Statistics; a count of -1 means that timing is off. Seconds of the steady clock.
    double render_time = 0;
    int32_t render_count = -1;
    double render_start = 0;
    double image_time = 0;
    int32_t image_count = -1;
    bool statistics_at_capture = false;
    bool statistics_requested = false;
};
