#include "routing/TarvoWorker.h"

#include "methods/TarvoRPCRequestHandler.h"
#include "monitors/EntityMonitor.h"
#include "monitors/GraphicsMonitor.h"
#include "monitors/ModelMonitor.h"
#include "monitors/TIObserveMonitor.h"
#include "monitors/WorkerTIObserve.h"
#include "routing/Task.h"
#include "tarvo/TarvoInterface.h"
#include "tarvo_util/TarvoMessage.h"

#include <pixlane/PXDrawTool.h>

#include <algorithm>
#include <set>
#include <utility>

TarvoWorker::TarvoWorker(std::vector<std::string>&& arguments) : arguments(std::move(arguments)) {}

TarvoWorker::~TarvoWorker() = default;

void TarvoWorker::add_default_driver(std::vector<std::string>& arguments) {
    if (std::find(arguments.begin(), arguments.end(), "-driver") == arguments.end()) {
        arguments.emplace_back("-driver");
        arguments.emplace_back("offscreen");
    }
}

void TarvoWorker::initialize(std::shared_ptr<TarvoMessageHandler> messages,
                             std::shared_ptr<TarvoProgressHandler> progress) {
    add_default_driver(arguments);
    observer = std::make_unique<WorkerTIObserve>();
    // A session that fails to start is not detected here: the worker goes on to its loop, and
    // each call then tells its own failure.
    TarvoInterface::init(arguments);
    TarvoMessage::instance()->set_message_handler(std::move(messages));
    TarvoInterface::set_progress_handler(std::move(progress));
    observer->register_observer();
}

void TarvoWorker::shutdown() {
    if (observer == nullptr)
        return;
    observer->unregister_observer();
    // It watches the kernel, so it goes first.
    PXDrawTool::release_model_set();
    TarvoInterface::destroy();
    observer.reset();
}

void TarvoWorker::begin_task(Task* task, bool graphics_only) {
    // Only a monitor task has neither action nor request: its monitors report in full, as the
    // first data of a monitor that was just selected.
    const bool first_data = !task->action && task->request.is_empty();

    const MonitorSelection selection = task->selection;
    for (const auto& [kind, pairs] : selection) {
        if (!graphics_only && kind == QLatin1String("entity")) {
            for (const auto& [code, id] : pairs) {
                if (std::unique_ptr<DataMonitor> monitor = create_monitor(code, id))
                    task->monitors.push_back(std::move(monitor));
            }
        } else if (!graphics_only && kind == QLatin1String("model")) {
            task->monitors.push_back(std::make_unique<ModelMonitor>());
        } else if (kind == QLatin1String("TIObserve")) {
            std::set<int> events;
            for (const auto& pair : pairs)
                events.insert(pair.first);
            task->monitors.push_back(std::make_unique<TIObserveMonitor>(std::move(events)));
        } else if (kind == QLatin1String("graphics")) {
            std::set<int> notes;
            for (const auto& pair : pairs)
                notes.insert(pair.first);
            task->monitors.push_back(std::make_unique<GraphicsMonitor>(std::move(notes)));
        }
    }

    for (const auto& owned : task->monitors) {
        DataMonitor* monitor = owned.get();
        if (first_data)
            monitor->set_full_refresh();
        if (auto* observe = dynamic_cast<TIObserveMonitor*>(monitor))
            observer->set_observe_monitor(observe);
        else if (auto* graphics = dynamic_cast<GraphicsMonitor*>(monitor))
            observer->set_graphics_monitor(graphics);
        else if (auto* model = dynamic_cast<ModelMonitor*>(monitor))
            observer->set_model_monitor(model);
        else if (auto* entity = dynamic_cast<EntityMonitor*>(monitor))
            observer->add_entity_monitor(entity);
    }
}

void TarvoWorker::end_task(Task* task) {
    for (const auto& monitor : task->monitors)
        monitor->update();
    observer->set_observe_monitor(nullptr);
    observer->set_graphics_monitor(nullptr);
    observer->set_model_monitor(nullptr);
    observer->clear_entity_monitors();
}

RPCResponse TarvoWorker::execute(Task* task) {
    const RPCRequest request = task->request;
    if (request.is_empty())
        return RPCResponse();
    TarvoRPCRequestHandler handler;
    return handler.exec(request);
}

void TarvoWorker::interrupt() {
    TarvoInterface::set_tarvo_interrupt(true);
}

GTarvoModelSet* TarvoWorker::model_set() {
    return PXDrawTool::tarvo_model_set();
}

MonitorResult TarvoWorker::process_monitor_request(MonitorRegistry* registry,
                                                   std::unique_ptr<Task> task) {
    return handle_monitor_request(registry, std::move(task));
}
