#pragma once
// The kernel session and the running of one task against it. The queue's worker thread is the
// only caller of the kernel: it initialises the session, and for each task builds the monitors
// that its selection asks for, attaches them to the kernel observer, runs the request through
// the kernel's method table, and lets the monitors read the state they report.
//
// Threads: constructed and destroyed on the main thread without touching the kernel.
// initialize, shutdown, begin_task, end_task, execute and model_set run on the worker thread;
// interrupt and process_monitor_request on the main thread. The two groups share no field, so
// the object has no lock.

#include "routing/ServerWorker.h"

#include <memory>
#include <string>
#include <vector>

class WorkerTIObserve;

class TarvoWorker : public ServerWorker {
public:
    explicit TarvoWorker(std::vector<std::string>&& arguments);
    ~TarvoWorker() override;
    TarvoWorker(const TarvoWorker&) = delete;
    TarvoWorker& operator=(const TarvoWorker&) = delete;

    void initialize(std::shared_ptr<TarvoMessageHandler> messages,
                    std::shared_ptr<TarvoProgressHandler> progress) override;
    void shutdown() override;
    void begin_task(Task* task, bool graphics_only) override;
    void end_task(Task* task) override;
    void interrupt() override;
    GTarvoModelSet* model_set() override;
    RPCResponse execute(Task* task) override;
    MonitorResult process_monitor_request(MonitorRegistry* registry,
                                          std::unique_ptr<Task> task) override;

    // The kernel's argument vector, as initialize() completes it.
    const std::vector<std::string>& kernel_arguments() const { return arguments; }

    // Headless graphics unless the caller chose a driver: appends "-driver", "offscreen" when no
    // element equals "-driver".
    static void add_default_driver(std::vector<std::string>& arguments);

private:
    std::vector<std::string> arguments;
    // Exists from initialize() to shutdown() only.
    std::unique_ptr<WorkerTIObserve> observer;
};
