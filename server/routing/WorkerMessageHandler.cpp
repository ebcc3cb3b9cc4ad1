#include "routing/WorkerMessageHandler.h"

#include "routing/TarvoQueue.h"
#include "routing/WorkerOutput.h"

void WorkerMessageHandler::print_message(const char* text) {
    queue->add_print(TarvoString(text), PrintEntry::Message);
}

void WorkerMessageHandler::print_error(const char* text) {
    queue->add_print(TarvoString(text), PrintEntry::Error);
}
