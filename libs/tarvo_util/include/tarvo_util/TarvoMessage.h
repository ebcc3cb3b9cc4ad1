#pragma once
// The kernel's one output channel. Text goes to the installed handler; without one it is
// dropped. Thread-safe: the handler pointer is guarded by a mutex and calls are made outside it
// on the caller's thread (the worker thread in the server).

#include <memory>
#include <mutex>
#include <string>

class TarvoMessageHandler {
public:
    TarvoMessageHandler() = default;
    virtual ~TarvoMessageHandler() = default;
    virtual void print_message(const char* text) = 0;
    virtual void print_error(const char* text) = 0;
};

class TarvoMessage {
public:
    static TarvoMessage* instance();

    // An empty pointer detaches the handler.
    void set_message_handler(std::shared_ptr<TarvoMessageHandler> handler);
    std::shared_ptr<TarvoMessageHandler> message_handler() const;

    void print_message(const std::string& text);
    void print_error(const std::string& text);

private:
    TarvoMessage() = default;
    mutable std::mutex mutex;
    std::shared_ptr<TarvoMessageHandler> handler; // guarded by mutex
};
