#pragma once
// The method table of the graphics family, made for each graphics task on the worker thread
// with the view table and the calling client. Only the name behind the last dot counts
// ("graphics.create_view"); any other name is an unknown method. Without a view table (no
// graphics task has made one, or tests) the view methods find no view and answer null.
//
// Methods: create_view, destroy_view, graphics_resize, render here; key_pressed, key_released,
// the mouse events, mouse_button_mapping, toggle_pick_filter and toggle_occluded_picking in
// GraphicsInput.cpp. An unknown view id is never an error: destroy_view answers false, the
// others null.
//
// Threads: worker thread only.

#include "json_rpc/RPCRequestHandler.h"

class ClientConnection;
class ServerGraphicsManager;

class GraphicsRPCRequestHandler : public RPCRequestHandler {
public:
    // `manager` may be null: every view method then answers as for an unknown view, and
    // create_view null.
    GraphicsRPCRequestHandler(ServerGraphicsManager* manager, ClientConnection* client)
        : manager(manager), client(client) {}
    ~GraphicsRPCRequestHandler() override = default;

protected:
    std::unique_ptr<RPCMethodWrapper> create_method(const QString& method_name) override;

private:
    ServerGraphicsManager* manager;
    ClientConnection* client;
};
