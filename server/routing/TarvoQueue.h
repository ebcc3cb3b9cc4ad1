#pragma once
// The meeting point of the main thread and the worker thread. The main thread queues tasks; the
// worker thread, which the constructor starts and stop() joins, runs them in passes (all waiting
// graphics tasks, then all waiting kernel tasks) and puts them on the completed list. The worker's
// printing, progress and dirty render views collect here too, until the main thread fetches
// them. Each burst of worker reports costs one call of the notify callback per kind: a kind's bit
// in `pending` is set when the callback fires and cleared when the main thread takes that work.
//
// Locks: queue_mutex guards what the worker thread fetches (the two task deques, busy, stopping);
// notification_mutex guards what the main thread fetches (completed tasks, output, pending,
// dirty views, removed clients, batching_renders). Where both are held, queue_mutex is taken
// first. The notify callback is called on the worker thread with neither mutex held, right after
// the change that it reports was made under notification_mutex: a main thread woken by it never
// finds the lock still taken (on a busy machine the woken thread often runs at once, and would
// otherwise sleep on the lock and cost two more switches). It must only post. A report raised
// while queue_mutex is held, and the promise of a completed task, wait until the worker thread
// releases queue_mutex; the bit is set at once, so a burst still costs one post.

#include "graphics/RenderQueue.h"
#include "json_rpc/RPCObject.h"

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <future>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

class ClientConnection;
class MonitorRegistry;
class MonitorResult;
class ServerGraphicsManager;
class ServerGraphicsView;
class ServerWorker;
class Task;
class TarvoString;
class WorkerOutput;

class TarvoQueue : public RenderQueue {
public:
    // The kinds of report from the worker thread; each has one bit in `pending`.
    enum NotificationType { Output = 0, TaskCompleted = 1, Graphics = 2 };

    // Starts the worker thread as its last step; the thread initialises the kernel through
    // `worker`. `notify` is called on the worker thread, with neither mutex held.
    TarvoQueue(ServerWorker* worker, std::function<void(NotificationType)> notify);
    // Stops the thread if stop() was not called. Tasks still waiting are freed, neither run nor
    // answered: the process is ending.
    ~TarvoQueue() override;
    TarvoQueue(const TarvoQueue&) = delete;
    TarvoQueue& operator=(const TarvoQueue&) = delete;

    // ---- Main thread ------------------------------------------------------------------------

    std::future<int> enqueue_kernel_task(std::unique_ptr<Task> task);
    std::future<int> enqueue_graphics_task(std::unique_ptr<Task> task);
    // No queue work: the worker object's operation, on the calling thread.
    MonitorResult process_monitor_request(MonitorRegistry* registry, std::unique_ptr<Task> task);
    // Reaches the kernel only while a task runs; nothing is remembered for a later task.
    void request_interrupt();
    // A client has gone: its waiting tasks are dropped unrun, its running task (only if the
    // running one is its own) is interrupted, and its views stop collecting renders and are torn
    // down on the worker thread by an action task.
    void remove_client(ClientConnection* client);
    // The next three expect notification_mutex() to be held by the caller.
    std::vector<RPCRequest> take_output();
    std::deque<std::unique_ptr<Task>> take_completed();
    void deliver_views(bool dump_time);
    std::mutex& notification_mutex() { return notification_lock; }
    // The router's set of connected clients. Image delivery checks a view's client against it
    // before touching the connection, since a view can be dirty after its client was deleted.
    void set_connected_clients(const std::set<ClientConnection*>* clients) {
        connected_clients = clients;
    }
    // Lets the pass in progress finish, then joins the thread. Not from the worker thread, and
    // once only (the standard errors of std::thread::join otherwise).
    void stop();

    // ---- Worker thread ----------------------------------------------------------------------

    ServerWorker* worker() const { return server_worker; }
    // A view with a new image. Ignored while its client's views are being torn down.
    void mark_view_dirty(ServerGraphicsView* view, ClientConnection* client) override;
    void forget_view(ServerGraphicsView* view) override;
    bool is_batching_renders() override;
    GTarvoModelSet* model_set() override;
    // With queue_mutex held. The post and the task's promise follow when the worker thread
    // releases queue_mutex (release_queue).
    void complete_task(std::unique_ptr<Task> task);
    // With queue_mutex held. Renders the views collected while batching, then switches; a post
    // it raises follows like that of complete_task.
    void set_render_batching(bool on);
    // Output of the kernel's message and progress handlers.
    void add_print(const TarvoString& text, int kind);
    void progress_start(const char* title, const char* info, bool has_cancel);
    void progress_end();
    void progress_percent(double value);

private:
    void run();
    std::future<int> enqueue(std::deque<std::unique_ptr<Task>>& tasks, std::unique_ptr<Task> task);
    // notification_mutex held: sets the bit of `type` and tells whether it was clear, that is
    // whether a post is due once the lock is released.
    bool raise(NotificationType type);
    // Applies a change to the output state under notification_mutex; a change that gives true
    // wants serving, and is posted after the lock is released unless a post is still unserved.
    void change_output(const std::function<bool(WorkerOutput&)>& change);
    // The worker thread's way of letting go of queue_mutex: releases it, then sends what was
    // deferred meanwhile (posts first, then the promises, so a waiter on a future finds the post
    // made).
    void release_queue(std::unique_lock<std::mutex>& lock);
    bool client_connected(ClientConnection* client) const;

    std::thread thread;
    std::mutex notification_lock;
    std::mutex queue_mutex;
    std::condition_variable task_available; // with queue_mutex
    std::uint32_t pending = 0;              // notification_mutex
    bool busy = false;                      // queue_mutex
    bool stopping = false;                  // queue_mutex
    // The client whose request runs now; null between tasks and for action tasks. queue_mutex.
    ClientConnection* running_client = nullptr;
    ServerWorker* server_worker; // not owned
    // Exists only while the thread runs, owned by it: made after the kernel is up, destroyed
    // before it goes down.
    ServerGraphicsManager* graphics = nullptr;
    std::deque<std::unique_ptr<Task>> kernel_tasks;    // queue_mutex
    std::deque<std::unique_ptr<Task>> graphics_tasks;  // queue_mutex
    std::deque<std::unique_ptr<Task>> completed_tasks; // notification_mutex
    std::function<void(NotificationType)> notify;
    std::unique_ptr<WorkerOutput> output; // notification_mutex
    // View to its client; notification_mutex. A view leaves it when it is delivered or destroyed
    // (the view table forgets every view it destroys), so it never holds a dead view.
    std::map<ServerGraphicsView*, ClientConnection*> dirty_views;
    // Views marked while batching: each renders once when the pass ends. notification_mutex.
    std::set<ServerGraphicsView*> batched_views;
    std::set<ClientConnection*> removed_clients; // notification_mutex
    bool batching_renders = false;               // notification_mutex
    // Raised under queue_mutex, sent by release_queue; worker thread only, so no lock.
    std::uint32_t deferred_posts = 0;
    std::vector<std::promise<int>> deferred_done;
    // Main thread only; null until the router sets it.
    const std::set<ClientConnection*>* connected_clients = nullptr;
};
