#include "graphics/ServerGraphicsManager.h"

#include "graphics/RenderQueue.h"
#include "graphics/ServerGraphicsView.h"

#include <pixlane/GView.h>
#include <pixlane/ServerWindowFactory.h>

#include <iostream>

ServerGraphicsManager::ServerGraphicsManager(RenderQueue* queue) : queue(queue) {
    if (queue->model_set() == nullptr)
        return;
    auto factory = std::make_unique<ServerWindowFactory>();
    if (!factory->ok()) {
        // Every window would be refused: better no views than views that never draw.
        std::cerr << "Render views are not available: " << factory->description() << std::endl;
        return;
    }
    GWindowFactory::set_window_factory(std::move(factory));
    // Each frame allocates a capture and a payload of a few MB: reused, not faulted in again
    // (raw RGB at 800x600 took 30 to 50 ms to encode on a virtual machine without it, 0.4 ms
    // with it).
    ServerWindowFactory::keep_frame_memory();
}

ServerGraphicsManager::~ServerGraphicsManager() {
    while (!views.empty())
        destroy(views.begin());
    GWindowFactory::set_window_factory(nullptr);
}

bool ServerGraphicsManager::has_graphics() const {
    return GWindowFactory::get_window_factory() != nullptr;
}

ServerGraphicsView* ServerGraphicsManager::create_view(ClientConnection* client, int format) {
    if (!has_graphics())
        return nullptr;
    auto view = std::make_unique<ServerGraphicsView>(client, queue);
    // The library's ids are unique among its views, so the slot is free unless something else
    // entered a view under this id: the existing one is kept then.
    auto [it, inserted] = views.emplace(view->view_id(), nullptr);
    if (inserted)
        it->second = std::move(view);
    it->second->set_format(format);
    return it->second.get();
}

ServerGraphicsView* ServerGraphicsManager::find(int32_t view_id) const {
    const auto it = views.find(view_id);
    return it == views.end() ? nullptr : it->second.get();
}

bool ServerGraphicsManager::destroy_view(int32_t view_id) {
    const auto it = views.find(view_id);
    if (it == views.end())
        return false;
    destroy(it);
    return true;
}

void ServerGraphicsManager::destroy_client_views(ClientConnection* client) {
    for (auto it = views.begin(); it != views.end();) {
        auto next = std::next(it);
        if (it->second->client() == client)
            destroy(it);
        it = next;
    }
}

void ServerGraphicsManager::resize(ServerGraphicsView* view, int width, int height) {
    if (GWindowFactory* factory = GWindowFactory::get_window_factory())
        factory->resize(view->gview(), width, height);
}

void ServerGraphicsManager::destroy(
    std::map<int32_t, std::unique_ptr<ServerGraphicsView>>::iterator it) {
    // Out of the delivery set first, whatever the path: the main thread must never find a
    // pointer to a view that is gone (nor to a new one that reuses its address).
    queue->forget_view(it->second.get());
    std::unique_ptr<ServerGraphicsView> view = std::move(it->second);
    views.erase(it);
    view.reset();
}
