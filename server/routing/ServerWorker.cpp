#include "routing/ServerWorker.h"

#include "monitors/DataMonitorRPCHandler.h"
#include "routing/Task.h"

MonitorResult ServerWorker::handle_monitor_request(MonitorRegistry* registry,
                                                   std::unique_ptr<Task> task) {
    DataMonitorRPCHandler handler(registry, task->client);
    const RPCResponse response = handler.exec(task->request);
    MonitorResult result;
    if (handler.has_pending_key()) {
        // The answer waits in a task that brings the new monitor its first data, so that the
        // client has the data before it learns that the monitor exists.
        auto follow_up = std::make_unique<Task>(task->client, handler.take_pending_key());
        follow_up->set_response(response);
        result.follow_up = std::move(follow_up);
    } else {
        result = MonitorResult(response);
    }
    return result;
}
