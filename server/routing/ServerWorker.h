#pragma once
// The face of the kernel session as the queue and the router see it, so that neither depends on
// the kernel's interface; TarvoWorker is the real one, tests put a fake behind it.
//
// Threads: initialize, shutdown, begin_task, end_task, execute and model_set run on the worker
// thread only; interrupt and process_monitor_request on the main thread. The implementation
// must keep the two groups apart, as they run at the same time.

#include "json_rpc/RPCObject.h"
#include "routing/Task.h"

#include <memory>
#include <utility>

class GTarvoModelSet;
class MonitorRegistry;
class TarvoMessageHandler;
class TarvoProgressHandler;

// The answer of a datamonitor. request: the response to send now, or, when the request selected
// a new monitor, an empty response and a follow-up task that carries the real one behind that
// monitor's first data.
class MonitorResult : public RPCResponse {
public:
    MonitorResult() = default;
    explicit MonitorResult(const RPCResponse& response, std::unique_ptr<Task> follow_up = nullptr)
        : RPCResponse(response), follow_up(std::move(follow_up)) {}

    std::unique_ptr<Task> follow_up;
};

class ServerWorker {
public:
    virtual ~ServerWorker() = default;

    // Worker thread, once, before the first task: start the session and route its printing and
    // progress to the given handlers.
    virtual void initialize(std::shared_ptr<TarvoMessageHandler> messages,
                            std::shared_ptr<TarvoProgressHandler> progress) = 0;
    // Worker thread, once, after the last task.
    virtual void shutdown() = 0;
    // Worker thread: build the task's monitors from its selection and attach them, so that what
    // happens while it runs is caught. A graphics task gets event and graphics monitors only.
    virtual void begin_task(Task* task, bool graphics_only) = 0;
    // Worker thread: let the monitors read their state, then detach them.
    virtual void end_task(Task* task) = 0;
    // Main thread: ask the running kernel operation to stop.
    virtual void interrupt() = 0;
    // Worker thread: what the render views draw; may be null.
    virtual GTarvoModelSet* model_set() = 0;
    // Worker thread: run the task's request; the empty response for a task without one.
    virtual RPCResponse execute(Task* task) = 0;
    // Main thread, without any kernel call: run a datamonitor request.
    virtual MonitorResult process_monitor_request(MonitorRegistry* registry,
                                                  std::unique_ptr<Task> task) = 0;

protected:
    // The whole of process_monitor_request for any worker: it needs the registry alone, never
    // the kernel.
    static MonitorResult handle_monitor_request(MonitorRegistry* registry,
                                                std::unique_ptr<Task> task);
};
