#pragma once
// Receives the kernel's printing and files it in the queue's output buffer, from where the main
// thread sends it to the subscribers of "print_message" and "print_error".
//
// Threads: called on the worker thread, from inside kernel operations. Holds the queue's
// notification_mutex only for the moment of filing.

#include "tarvo_util/TarvoMessage.h"

class TarvoQueue;

class WorkerMessageHandler : public TarvoMessageHandler {
public:
    explicit WorkerMessageHandler(TarvoQueue* queue) : queue(queue) {}
    ~WorkerMessageHandler() override = default;

    void print_message(const char* text) override;
    void print_error(const char* text) override;

private:
    TarvoQueue* queue;
};
