#include "routing/WorkerProgressHandler.h"

#include "routing/TarvoQueue.h"

void WorkerProgressHandler::start(const char* title, const char* info, bool has_cancel) {
    queue->progress_start(title, info, has_cancel);
}

void WorkerProgressHandler::end() {
    queue->progress_end();
}

void WorkerProgressHandler::percent(double value) {
    queue->progress_percent(value);
}

void WorkerProgressHandler::status(const char* /*text*/) {}
