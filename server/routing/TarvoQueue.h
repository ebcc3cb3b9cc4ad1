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
// first. The notify callback is called with notification_mutex held: it must only post.

#include "json_rpc/RPCObject.h"

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <future>
#include <map>
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

class TarvoQueue {
public:
    // The kinds of report from the worker thread; each has one bit in `pending`.
    enum NotificationType { Output = 0, TaskCompleted = 1, Graphics = 2 };

    // Starts the worker thread as its last step; the thread initialises the kernel through
    // `worker`. `notify` is called on the worker thread, with notification_mutex held.
    TarvoQueue(ServerWorker* worker, std::function<void(NotificationType)> notify);
    // Stops the thread if stop() was not called. Tasks still waiting are neither run, answered
    // nor freed: the process is ending.
    ~TarvoQueue();
    TarvoQueue(const TarvoQueue&) = delete;
    TarvoQueue& operator=(const TarvoQueue&) = delete;

    // ---- Main thread ------------------------------------------------------------------------

    std::future<int> enqueue_kernel_task(Task* task);
    std::future<int> enqueue_graphics_task(Task* task);
    // No queue work: the worker object's operation, on the calling thread.
    MonitorResult process_monitor_request(MonitorRegistry* registry, Task* task);
    // Reaches the kernel only while a task runs; nothing is remembered for a later task.
    void request_interrupt();
    // A client has gone: its views stop collecting renders and are torn down on the worker
    // thread by an action task.
    void remove_client(ClientConnection* client);
    // The next three expect notification_mutex() to be held by the caller.
    std::vector<RPCRequest> take_output();
    std::deque<Task*> take_completed();
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
    void mark_view_dirty(ServerGraphicsView* view, ClientConnection* client);
    void forget_view(ServerGraphicsView* view);
    bool is_batching_renders();
    // With queue_mutex held.
    void complete_task(Task* task);
    // With queue_mutex held. Renders the views collected while batching, then switches.
    void set_render_batching(bool on);
    // Output of the kernel's message and progress handlers.
    void add_print(const TarvoString& text, int kind);
    void progress_start(const char* title, const char* info, bool has_cancel);
    void progress_end();
    void progress_percent(double value);

private:
    void run();
    std::future<int> enqueue(std::deque<Task*>& tasks, Task* task);
    // notification_mutex held: post `type` unless a report of that kind is still unserved.
    void signal(NotificationType type);
    bool client_connected(ClientConnection* client) const;

    std::thread thread;
    std::mutex notification_lock;
    std::mutex queue_mutex;
    std::condition_variable task_available; // with queue_mutex
    std::uint32_t pending = 0;              // notification_mutex
    bool busy = false;                      // queue_mutex
    bool stopping = false;                  // queue_mutex
    ServerWorker* server_worker;            // not owned
    // Exists only while the thread runs, owned by it. The render views come with the graphics
    // work; until then it stays null and graphics requests find no method.
    ServerGraphicsManager* graphics = nullptr;
    std::deque<Task*> kernel_tasks;    // queue_mutex
    std::deque<Task*> graphics_tasks;  // queue_mutex
    std::deque<Task*> completed_tasks; // notification_mutex
    std::function<void(NotificationType)> notify;
    WorkerOutput* output; // owned; notification_mutex
    // View to its client; notification_mutex. Keyed by view, so "first" means lowest address.
    std::map<ServerGraphicsView*, ClientConnection*> dirty_views;
    std::set<ClientConnection*> removed_clients; // notification_mutex
    bool batching_renders = false;               // notification_mutex
    // Main thread only; null until the router sets it.
    const std::set<ClientConnection*>* connected_clients = nullptr;
};
