#pragma once
// Receives progress of long kernel operations, on the thread that runs them.

class TarvoProgressHandler {
public:
    TarvoProgressHandler() = default;
    virtual ~TarvoProgressHandler() = default;
    virtual void start(const char* title, const char* info, bool has_cancel) = 0;
    virtual void end() = 0;
    // 0 to 100.
    virtual void percent(double value) = 0;
    // Free-text status line beside the percentage; most receivers ignore it.
    virtual void status(const char* /*text*/) {}
};
