#pragma once
// The monitor of the kind "graphics": what the user picked, the pick types and the render mode
// of the render views, for the clients that asked. It reads the drawing library's state and so
// comes with the render views; for now only its notification kinds exist, which are the keys
// that clients select through datamonitor.add_graphics_monitor. No object of it is built yet.
//
// Threads: like every monitor, built and updated on the worker thread for one task, read on the
// main thread after the task came back.

#include "monitors/DataMonitor.h"

class GraphicsMonitor : public DataMonitor {
public:
    // The "type" word of a graphics key, in this order: "selection", "picked", "mode_changed",
    // "pick_type_changed".
    enum Notification { selection = 0, picked = 1, mode_changed = 2, pick_type_changed = 3 };
};
