#pragma once

#include <functional>
#include <vector>

// What the views of one application share: today the listeners of operation events, numbered
// events that tell the application that a view-level setting (a pick filter, say) changed.
// The model set owns the one AppUtil of a process and hands out shared pointers to it.
//
// Threads: the rendering thread only, like the views; nothing is locked.
class AppUtil {
public:
    using OperationListener = std::function<void(int type)>;

    // Answers a handle for remove_operation_listener.
    int add_operation_listener(OperationListener listener);
    void remove_operation_listener(int handle);
    // Calls every listener with `type`, in the order they were added.
    void send_operation_event(int type);

private:
    std::vector<std::pair<int, OperationListener>> listeners_;
    int next_handle_ = 1;
};
