#pragma once
// Decides for every client request on which thread and through which handler it runs, and
// carries back to the right clients what comes of it: responses, kernel output, monitor data.
// tarvo.request_interrupt, pubsub.* and datamonitor.* are answered at once on the main thread;
// names beginning with "graphics" go to the graphics deque, everything else to the kernel deque
// of the queue, whose worker thread the router owns through it. Each queued task carries the
// union of all clients' monitor selections, so that the worker knows which monitors to build.
//
// Bounded: one client may have at most max_in_flight tasks queued or running; a request past
// that is answered with -32000 at once and never queued, so a client that floods the queue
// can't take the server's memory or hold up the others without end.
//
// A client pointer held in a task or a registry is a key only: it is dereferenced only once it
// is found in `clients`. A connection leaves `clients` when remove_client() is called, and also
// when the connection object is destroyed without that call, as the server's teardown does: the
// router watches each connection's QObject::destroyed. So the final drain of the destructor, and
// any delivery after it, can't reach a deleted connection.
//
// Threads: lives on the main thread, where all its operations run. The notify callback given
// to the queue runs on the worker thread and only posts process_notifications. The registries and
// `clients` are main-thread only and need no lock.

#include "routing/TarvoQueue.h"
#include "transport/MessageRouter.h"

#include <QObject>

#include <cstddef>
#include <future>
#include <map>
#include <memory>
#include <set>
#include <vector>

class MonitorRegistry;
class NotificationRegistry;
class ServerWorker;
class Task;

class TarvoMessageRouter : public QObject, public MessageRouter {
    Q_OBJECT

public:
    // Starts the worker thread (through the queue). In synchronous mode nothing is posted: each
    // request is waited for and its results delivered before process_request returns (tests).
    TarvoMessageRouter(ServerWorker* worker, bool synchronous);
    // Stops and joins the worker thread, delivers what completed last to the connections that
    // still exist, then deletes the queue and the registries.
    ~TarvoMessageRouter() override;
    TarvoMessageRouter(const TarvoMessageRouter&) = delete;
    TarvoMessageRouter& operator=(const TarvoMessageRouter&) = delete;

    void add_client(ClientConnection* client) override;
    void remove_client(ClientConnection* client) override;
    void process_batch(ClientConnection* client, const RPCBatchRequest& batch) override;
    void process_request(ClientConnection* client, const RPCRequest& request) override;
    // Responses from clients are not used.
    void process_response(ClientConnection* client, const RPCResponse& response) override;
    // Each subscriber of each notification's name gets its share as one frame: a single object,
    // or an array when it is owed two or more, in the order of the list.
    void send_notifications(const std::vector<RPCRequest>& notifications) override;

    static constexpr std::size_t kDefaultMaxInFlight = 100000;
    static constexpr int kMaxTestRenders = 10000;
    void set_max_in_flight(std::size_t tasks) { max_in_flight = tasks; }

    // Routes one request without any synchronous waiting. The future belongs to the task that was
    // queued for it (the follow-up task of a datamonitor request); it is empty when nothing was
    // queued.
    std::future<int> route(ClientConnection* client, const RPCRequest& request);

private slots:
    void process_notifications(int t);
    void handle_tarvo_notifications();
    void handle_completed_tarvo_task();
    void handle_graphics(bool dump_time);

private:
    // Answers a request of a client that is at its bound with -32000; true when it did.
    bool refuse_when_full(ClientConnection* client, const RPCRequest& request);
    // Counts the task against its client, then queues it.
    std::future<int> enqueue(std::unique_ptr<Task> task, bool graphics);
    // Stores the union of all clients' selections in the task.
    void attach_monitors(Task& task);
    // graphics.test_render: renders a view `count` times (at most kMaxTestRenders), one render
    // in flight at a time, and prints the statistics with the last image. Asynchronous: each
    // render is queued when the one before has come back.
    void test_render(ClientConnection* client, const RPCRequest& request);
    std::future<int> queue_test_render(ClientConnection* client, int view_id, int i, int count);
    // Synchronous mode: serve output, views and completed tasks, each under its own lock.
    void serve_all();
    // Drops a client from every main-thread structure, without queueing anything.
    void forget_client(ClientConnection* client);

    bool synchronous;
    // Declared before the queue, so that they outlive the worker thread that the queue joins.
    std::unique_ptr<NotificationRegistry> subscriptions;
    std::unique_ptr<MonitorRegistry> monitors;
    std::set<ClientConnection*> clients; // connected, ordered by pointer
    // Tasks queued or running per client; action tasks of the queue are not counted.
    std::map<ClientConnection*, std::size_t> in_flight;
    std::size_t max_in_flight = kDefaultMaxInFlight;
    std::unique_ptr<TarvoQueue> queue;
};
