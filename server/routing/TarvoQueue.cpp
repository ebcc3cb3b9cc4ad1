#include "routing/TarvoQueue.h"

#include "graphics/GraphicsRPCRequestHandler.h"
#include "graphics/ServerGraphicsManager.h"
#include "graphics/ServerGraphicsView.h"
#include "routing/ServerWorker.h"
#include "routing/Task.h"
#include "routing/WorkerMessageHandler.h"
#include "routing/WorkerOutput.h"
#include "routing/WorkerProgressHandler.h"
#include "tarvo_util/TarvoMessage.h"
#include "tarvo_util/TarvoString.h"
#include "transport/ClientConnection.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <utility>

namespace {

constexpr std::uint32_t bit_of(TarvoQueue::NotificationType type) {
    return std::uint32_t{1} << static_cast<int>(type);
}

} // namespace

TarvoQueue::TarvoQueue(ServerWorker* worker, std::function<void(NotificationType)> notify)
    : server_worker(worker), notify(std::move(notify)), output(std::make_unique<WorkerOutput>()) {
    thread = std::thread(&TarvoQueue::run, this);
}

TarvoQueue::~TarvoQueue() {
    if (thread.joinable())
        stop();
}

// ---- Main thread ----------------------------------------------------------------------------

std::future<int> TarvoQueue::enqueue_kernel_task(std::unique_ptr<Task> task) {
    return enqueue(kernel_tasks, std::move(task));
}

std::future<int> TarvoQueue::enqueue_graphics_task(std::unique_ptr<Task> task) {
    return enqueue(graphics_tasks, std::move(task));
}

std::future<int> TarvoQueue::enqueue(std::deque<std::unique_ptr<Task>>& tasks,
                                     std::unique_ptr<Task> task) {
    std::future<int> future = task->get_future();
    {
        std::lock_guard lock(queue_mutex);
        tasks.push_back(std::move(task));
    }
    // Woken after the lock is released, so that the worker doesn't wake only to sleep again on
    // queue_mutex. No wake-up is lost: the worker tests the deques under the lock before waiting.
    task_available.notify_one();
    return future;
}

MonitorResult TarvoQueue::process_monitor_request(MonitorRegistry* registry,
                                                  std::unique_ptr<Task> task) {
    return server_worker->process_monitor_request(registry, std::move(task));
}

void TarvoQueue::request_interrupt() {
    // Held across the call, so that the task that `busy` speaks of can't end meanwhile.
    std::lock_guard lock(queue_mutex);
    if (busy)
        server_worker->interrupt();
}

void TarvoQueue::remove_client(ClientConnection* client) {
    {
        std::lock_guard lock(notification_lock);
        removed_clients.insert(client);
        // None of its views is delivered any more; the teardown below forgets them anyway.
        std::erase_if(dirty_views, [client](const auto& entry) { return entry.second == client; });
    }
    // notification_mutex is released before queue_mutex is taken: the lock order.
    std::vector<std::unique_ptr<Task>> dropped;
    {
        std::lock_guard lock(queue_mutex);
        // Nobody is left to answer: the client's waiting requests never start. They have not
        // run, so no monitor of any client has anything to report about them.
        for (auto* tasks : {&kernel_tasks, &graphics_tasks}) {
            const auto gone = std::stable_partition(
                tasks->begin(), tasks->end(), [client](const std::unique_ptr<Task>& task) {
                    return task->client != client || task->action;
                });
            std::move(gone, tasks->end(), std::back_inserter(dropped));
            tasks->erase(gone, tasks->end());
        }
        // Its running request is interrupted, but only when it is the one running: another
        // client's work is never cut short for it. A kernel command ends at its next check of
        // the interrupt and completes as usual, so monitors still read a consistent model.
        if (busy && running_client == client)
            server_worker->interrupt();
    }
    // The dropped tasks go here, outside the lock; nobody waits on their futures.
    dropped.clear();

    enqueue_graphics_task(std::make_unique<Task>(client, [this, client] {
        if (graphics != nullptr)
            graphics->destroy_client_views(client);
        std::lock_guard lock(notification_lock);
        removed_clients.erase(client);
    }));
}

std::vector<RPCRequest> TarvoQueue::take_output() {
    pending &= ~bit_of(Output);
    return output->take_notifications();
}

std::deque<std::unique_ptr<Task>> TarvoQueue::take_completed() {
    pending &= ~bit_of(TaskCompleted);
    std::deque<std::unique_ptr<Task>> tasks;
    tasks.swap(completed_tasks);
    return tasks;
}

void TarvoQueue::deliver_views(bool dump_time) {
    pending &= ~bit_of(Graphics);
    for (auto it = dirty_views.begin(); it != dirty_views.end();) {
        const auto [view, client] = *it;
        // Its connection may be deleted already: never deliver to a client the router no
        // longer knows.
        if (!client_connected(client)) {
            it = dirty_views.erase(it);
            continue;
        }
        // A client that hasn't taken what it was sent before keeps its views waiting here, so
        // that no frame queues behind another in the socket: when its output has drained, it
        // gets the latest frame of each, once.
        if (client->unsent_bytes() > 0) {
            client->want_drained_signal();
            ++it;
            continue;
        }
        view->deliver(client, dump_time);
        it = dirty_views.erase(it);
    }
}

void TarvoQueue::stop() {
    {
        std::lock_guard lock(queue_mutex);
        stopping = true;
        task_available.notify_one();
    }
    thread.join();
}

bool TarvoQueue::client_connected(ClientConnection* client) const {
    return connected_clients != nullptr && connected_clients->count(client) != 0;
}

// ---- Worker thread --------------------------------------------------------------------------

void TarvoQueue::mark_view_dirty(ServerGraphicsView* view, ClientConnection* client) {
    bool post = false;
    {
        std::lock_guard lock(notification_lock);
        if (removed_clients.count(client) != 0)
            return;
        dirty_views.emplace(view, client);
        if (batching_renders)
            batched_views.insert(view);
        post = !batching_renders && raise(Graphics);
    }
    if (post)
        notify(Graphics);
}

void TarvoQueue::forget_view(ServerGraphicsView* view) {
    std::lock_guard lock(notification_lock);
    dirty_views.erase(view);
    batched_views.erase(view);
}

GTarvoModelSet* TarvoQueue::model_set() {
    return server_worker->model_set();
}

bool TarvoQueue::is_batching_renders() {
    std::lock_guard lock(notification_lock);
    return batching_renders;
}

void TarvoQueue::complete_task(std::unique_ptr<Task> task) {
    std::lock_guard lock(notification_lock);
    // Once the lock is released the main thread may take the task and delete it; the promise
    // leaves with its shared state, so its waiter is still told, later, outside every lock.
    deferred_done.push_back(std::move(task->done));
    completed_tasks.push_back(std::move(task));
    if (raise(TaskCompleted))
        deferred_posts |= bit_of(TaskCompleted);
}

void TarvoQueue::set_render_batching(bool on) {
    std::set<ServerGraphicsView*> to_render;
    {
        std::lock_guard lock(notification_lock);
        to_render.swap(batched_views);
    }
    // Each view collected during the batch renders once here, outside the lock; its render
    // marks it dirty again, now with the new frame. Views are destroyed only on this thread,
    // and forgotten when they are, so every one in the copy is alive.
    for (ServerGraphicsView* view : to_render)
        view->render();
    std::lock_guard lock(notification_lock);
    if (!on && !dirty_views.empty() && raise(Graphics))
        deferred_posts |= bit_of(Graphics);
    batching_renders = on;
}

void TarvoQueue::add_print(const TarvoString& text, int kind) {
    // Only a completed line asks for a serving; a partial one waits for the next.
    change_output([&](WorkerOutput& out) { return out.add_print(text, kind); });
}

void TarvoQueue::progress_start(const char* title, const char* info, bool has_cancel) {
    change_output([&](WorkerOutput& out) {
        out.start(title, info, has_cancel);
        return true;
    });
}

void TarvoQueue::progress_end() {
    change_output([](WorkerOutput& out) {
        out.end();
        return true;
    });
}

void TarvoQueue::progress_percent(double value) {
    change_output([value](WorkerOutput& out) {
        out.set_percent(value);
        return true;
    });
}

void TarvoQueue::change_output(const std::function<bool(WorkerOutput&)>& change) {
    bool post = false;
    {
        std::lock_guard lock(notification_lock);
        post = change(*output) && raise(Output);
    }
    if (post)
        notify(Output);
}

bool TarvoQueue::raise(NotificationType type) {
    if (pending & bit_of(type))
        return false;
    pending |= bit_of(type);
    return true;
}

void TarvoQueue::release_queue(std::unique_lock<std::mutex>& lock) {
    lock.unlock();
    const std::uint32_t posts = std::exchange(deferred_posts, 0);
    for (NotificationType type : {Output, TaskCompleted, Graphics}) {
        if (posts & bit_of(type))
            notify(type);
    }
    // Only this thread touches the list, and nothing below reenters here; clearing it in place
    // keeps its storage for the next task.
    for (std::promise<int>& promise : deferred_done)
        promise.set_value(1);
    deferred_done.clear();
}

// The worker thread: the only thread that calls the kernel.
void TarvoQueue::run() {
    auto messages = std::make_shared<WorkerMessageHandler>(this);
    auto progress = std::make_shared<WorkerProgressHandler>(this);
    server_worker->initialize(messages, progress);
    auto views = std::make_unique<ServerGraphicsManager>(this);
    graphics = views.get();

    std::unique_lock lock(queue_mutex);
    for (;;) {
        std::deque<std::unique_ptr<Task>> local;

        // All waiting graphics tasks first; `busy` covers the whole run of them, so an interrupt
        // during a graphics pass reaches the kernel even if it is idle.
        local.swap(graphics_tasks);
        const size_t n = local.size();
        if (n != 0) {
            busy = true;
            if (n > 1)
                set_render_batching(true);
            for (std::unique_ptr<Task>& owned : local) {
                Task* task = owned.get();
                running_client = task->action ? nullptr : task->client;
                release_queue(lock);
                server_worker->begin_task(task, true);
                if (task->action)
                    task->action();
                GraphicsRPCRequestHandler handler(graphics, task->client);
                const RPCResponse response = handler.exec(task->request);
                if (!response.is_empty())
                    task->set_response(response);
                server_worker->end_task(task);
                lock.lock();
                complete_task(std::move(owned));
            }
            if (n > 1)
                set_render_batching(false);
            busy = false;
            running_client = nullptr;
            release_queue(lock);
            lock.lock();
        }

        // Then the kernel tasks waiting at this moment; later ones wait for the next pass, behind
        // any graphics task that arrives meanwhile. `busy` is clear between two of them only
        // while no kernel call is made, so an interrupt can't reach the next task early.
        local.clear();
        local.swap(kernel_tasks);
        for (std::unique_ptr<Task>& owned : local) {
            Task* task = owned.get();
            busy = true;
            running_client = task->action ? nullptr : task->client;
            lock.unlock();
            server_worker->begin_task(task, false);
            if (task->action)
                task->action();
            // A monitor or action task has no request and keeps the response it came with. A
            // request whose method name is empty is still a request, and draws "method not found".
            if (!task->request.is_empty()) {
                const RPCResponse response = server_worker->execute(task);
                if (!response.is_empty())
                    task->set_response(response);
            }
            server_worker->end_task(task);
            lock.lock();
            busy = false;
            running_client = nullptr;
            complete_task(std::move(owned));
            // Each answer goes out as soon as its task is done, not at the end of the pass.
            release_queue(lock);
            lock.lock();
        }

        // Nothing is deferred here: each pass above sent its reports.
        if (stopping)
            break;
        if (kernel_tasks.empty() && graphics_tasks.empty())
            task_available.wait(lock);
        // Let the main thread in between two passes.
        lock.unlock();
        lock.lock();
    }
    lock.unlock();

    // The views go while the kernel and its model set are still there.
    graphics = nullptr;
    views.reset();
    server_worker->shutdown();
    // The handlers stay attached while the kernel closes; what it prints then is not served.
    TarvoMessage::instance()->set_message_handler(nullptr);
}
