#pragma once
// One unit of work for the worker thread. Made on the main thread by the router, owned by
// whoever holds its std::unique_ptr: the router, then TarvoQueue's deques, then the router again,
// which destroys it on the main thread once its monitor data and response went out. The worker
// and the monitors see it through plain pointers while it runs. It owns the monitors that the
// worker built for it.
//
// Threads: the main thread fills it before it is queued; from then on the worker thread alone
// touches it until it lies on the completed list; after take_completed() it is the main thread's
// again. The queue's mutexes order these hand-overs, so the task itself has no lock.

#include "json_rpc/RPCObject.h"
#include "monitors/MonitorSelection.h"

#include <functional>
#include <future>
#include <memory>
#include <vector>

class ClientConnection;
class DataMonitor;

class Task {
public:
    // An ordinary request.
    Task(ClientConnection* client, const RPCRequest& request);
    // A monitor task: no request, a selection holding this one key. It runs nothing but its
    // monitors, and so brings a new monitor its first data.
    Task(ClientConnection* client, const MonitorKey& key);
    // Code to run on the worker thread, ahead of (here: instead of) a request.
    Task(ClientConnection* client, std::function<void()> action);
    ~Task();
    Task(const Task&) = delete;
    Task& operator=(const Task&) = delete;

    void set_response(const RPCResponse& response) { this->response = response; }
    // Once per task. Becomes ready with 1 after the task was put on the completed list; a task
    // deleted before that breaks the promise.
    std::future<int> get_future() { return done.get_future(); }

    // Who asked. A key only: the connection may be gone by the time that the task comes back, so
    // it is never dereferenced before the router found it among its connected clients.
    ClientConnection* client;
    std::promise<int> done;
    RPCRequest request;   // empty for monitor and action tasks
    RPCResponse response; // empty: nothing to answer
    std::function<void()> action;
    // Main thread, once the task's monitor data and response went out, if its client is still
    // connected; it runs under the queue's notification mutex and so may only post.
    std::function<void()> then;
    // Which monitors to set up, the union over all clients at the time of queueing.
    MonitorSelection selection;
    std::vector<std::unique_ptr<DataMonitor>> monitors;
};
