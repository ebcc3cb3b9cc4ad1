#pragma once
// The table of render views, by view id. It installs the window factory of hidden windows when
// the kernel has graphics, and is the one owner of every ServerGraphicsView. Ids are global,
// shared by all clients, and start at 1.
//
// Threads: made, used and destroyed on the worker thread only (after the kernel is up, before
// it goes down), so the table needs no lock: the main thread never reads it.

#include <cstdint>
#include <map>
#include <memory>

class ClientConnection;
class RenderQueue;
class ServerGraphicsView;

class ServerGraphicsManager {
public:
    // Installs a ServerWindowFactory when the queue has a model set and EGL gives a display;
    // otherwise views can't be made and create_view answers null.
    // With graphics it also tells glibc to keep frame-sized blocks in the heap (process-wide).
    explicit ServerGraphicsManager(RenderQueue* queue);
    // Destroys all views, then uninstalls the factory.
    ~ServerGraphicsManager();
    ServerGraphicsManager(const ServerGraphicsManager&) = delete;
    ServerGraphicsManager& operator=(const ServerGraphicsManager&) = delete;

    bool has_graphics() const;
    // A new view of `client` in the given format code; null without graphics.
    ServerGraphicsView* create_view(ClientConnection* client, int format);
    ServerGraphicsView* find(int32_t view_id) const;
    // False when no view has that id.
    bool destroy_view(int32_t view_id);
    // Every view of a client that has gone.
    void destroy_client_views(ClientConnection* client);
    // Resizes the view's window; renders nothing.
    void resize(ServerGraphicsView* view, int width, int height);
    RenderQueue* render_queue() const { return queue; }
    std::size_t view_count() const { return views.size(); }

private:
    void destroy(std::map<int32_t, std::unique_ptr<ServerGraphicsView>>::iterator it);

    RenderQueue* queue;
    std::map<int32_t, std::unique_ptr<ServerGraphicsView>> views;
};
