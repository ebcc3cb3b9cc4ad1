#include "tarvo_util/TarvoMessage.h"

TarvoMessage* TarvoMessage::instance() {
    static TarvoMessage message;
    return &message;
}

void TarvoMessage::set_message_handler(std::shared_ptr<TarvoMessageHandler> new_handler) {
    std::lock_guard lock(mutex);
    handler = std::move(new_handler);
}

std::shared_ptr<TarvoMessageHandler> TarvoMessage::message_handler() const {
    std::lock_guard lock(mutex);
    return handler;
}

void TarvoMessage::print_message(const std::string& text) {
    // Call outside the lock: a handler may take locks of its own.
    if (auto current = message_handler())
        current->print_message(text.c_str());
}

void TarvoMessage::print_error(const std::string& text) {
    if (auto current = message_handler())
        current->print_error(text.c_str());
}
