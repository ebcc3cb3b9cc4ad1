#pragma once
// Helpers of the method-table tests: JSON written as text, wrappers by method name, and a capture
// of what the kernel prints.

#include "methods/TarvoRPCRequestHandler.h"
#include "tarvo_util/TarvoMessage.h"

#include "../support/TestJson.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

inline std::unique_ptr<RPCMethodWrapper> wrapper_for(const char* method) {
    TarvoRPCRequestHandler handler;
    return handler.create_method(QString::fromLatin1(method));
}

// Whether the method's wrapper accepts these params (the kernel is not called).
inline bool accepts(const char* method, const char* params_text) {
    auto wrapper = wrapper_for(method);
    EXPECT_TRUE(wrapper) << method;
    return wrapper && wrapper->process_params(json(params_text));
}

// The method's result for these params; fails the test if they are refused.
inline QJsonValue call(const char* method, const char* params_text) {
    auto wrapper = wrapper_for(method);
    if (!wrapper) {
        ADD_FAILURE() << "unknown method " << method;
        return {};
    }
    if (!wrapper->process_params(json(params_text))) {
        ADD_FAILURE() << method << " refused " << params_text;
        return {};
    }
    return wrapper->invoke();
}

// Collects the kernel's error channel while alive; restores the previous handler after.
class ErrorCapture : public TarvoMessageHandler {
public:
    static std::shared_ptr<ErrorCapture> install() {
        auto capture = std::make_shared<ErrorCapture>();
        capture->previous = TarvoMessage::instance()->message_handler();
        TarvoMessage::instance()->set_message_handler(capture);
        return capture;
    }
    void uninstall() { TarvoMessage::instance()->set_message_handler(previous); }

    void print_message(const char*) override {}
    void print_error(const char* text) override {
        std::lock_guard lock(mutex);
        errors.emplace_back(text);
    }
    std::vector<std::string> lines() {
        std::lock_guard lock(mutex);
        return errors;
    }

private:
    std::mutex mutex;
    std::vector<std::string> errors; // guarded by mutex
    std::shared_ptr<TarvoMessageHandler> previous;
};

// True when the kernel session of this binary is up (see test_main.cpp).
bool kernel_started();
