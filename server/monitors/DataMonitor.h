#pragma once
// Abstract base of all monitors. A monitor lives for one task: it is built and updated on the
// worker thread, then read with get_notifications() on the main thread after the task came back
// (the queue's lock orders the two). It keeps nothing between tasks.

#include "json_rpc/RPCObject.h"
#include "monitors/MonitorSelection.h"

#include <vector>

class DataMonitor {
public:
    DataMonitor() = default;
    virtual ~DataMonitor() = default;
    DataMonitor(const DataMonitor&) = delete;
    DataMonitor& operator=(const DataMonitor&) = delete;

    // Worker thread: read the watched state from the kernel.
    virtual void update() = 0;
    // Main thread: the notifications for the client whose selection this is. No kernel calls.
    virtual std::vector<RPCRequest> get_notifications(const MonitorSelection& selection) = 0;

    // Report everything, not only what the observer flagged (first data of a new monitor).
    void set_full_refresh() { incremental = false; }
    bool is_incremental() const { return incremental; }

protected:
    bool incremental = true;
};
