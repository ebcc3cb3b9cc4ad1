#pragma once
// Receives the kernel's progress reports and records them in the queue's output buffer; the main
// thread turns the state it finds there into "progress_started", "progress_percent" and
// "progress_ended" for their subscribers.
//
// Threads: called on the worker thread, from inside kernel operations. Holds the queue's
// notification_mutex only for the moment of recording.

#include "tarvo_util/TarvoProgressHandler.h"

class TarvoQueue;

class WorkerProgressHandler : public TarvoProgressHandler {
public:
    explicit WorkerProgressHandler(TarvoQueue* queue) : queue(queue) {}
    ~WorkerProgressHandler() override = default;

    void start(const char* title, const char* info, bool has_cancel) override;
    void end() override;
    void percent(double value) override;
    // Status lines are not forwarded.
    void status(const char* text) override;

private:
    TarvoQueue* queue;
};
