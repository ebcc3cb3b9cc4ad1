#include <pixlane/AppUtil.h>

#include <algorithm>

int AppUtil::add_operation_listener(OperationListener listener) {
    listeners_.emplace_back(next_handle_, std::move(listener));
    return next_handle_++;
}

void AppUtil::remove_operation_listener(int handle) {
    std::erase_if(listeners_, [&](const auto& item) { return item.first == handle; });
}

void AppUtil::send_operation_event(int type) {
    // A listener may remove itself: walk a copy.
    const auto listeners = listeners_;
    for (const auto& [handle, listener] : listeners)
        listener(type);
}
