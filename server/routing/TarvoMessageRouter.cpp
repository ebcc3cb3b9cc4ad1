#include "routing/TarvoMessageRouter.h"

#include "monitors/DataMonitor.h"
#include "monitors/MonitorRegistry.h"
#include "monitors/NotificationRegistry.h"
#include "monitors/NotifyRPCRequestHandler.h"
#include "routing/ServerWorker.h"
#include "routing/Task.h"
#include "transport/ClientConnection.h"

#include <QJsonObject>

#include <QMetaObject>
#include <algorithm>

#include <map>
#include <mutex>

TarvoMessageRouter::TarvoMessageRouter(ServerWorker* worker, bool synchronous)
    : synchronous(synchronous), subscriptions(std::make_unique<NotificationRegistry>()),
      monitors(std::make_unique<MonitorRegistry>()) {
    queue = std::make_unique<TarvoQueue>(
        worker, [this, synchronous](TarvoQueue::NotificationType type) {
            // Worker thread, notification_mutex held: post, never block.
            if (synchronous)
                return;
            const int t = static_cast<int>(type);
            QMetaObject::invokeMethod(
                this, [this, t] { process_notifications(t); }, Qt::QueuedConnection);
        });
    queue->set_connected_clients(&clients);

    subscriptions->register_notification(QStringLiteral("print_message"), QStringLiteral("[msg]"));
    subscriptions->register_notification(QStringLiteral("print_error"), QStringLiteral("[msg]"));
    subscriptions->register_notification(QStringLiteral("progress_started"), QString());
    subscriptions->register_notification(QStringLiteral("progress_ended"), QString());
    subscriptions->register_notification(QStringLiteral("progress_percent"),
                                         QStringLiteral("[percent]"));
}

TarvoMessageRouter::~TarvoMessageRouter() {
    queue->stop();
    // What finished last still goes out to the connections that exist. By now the server has
    // usually deleted them all without remove_client; their destroyed signals have taken them
    // out of `clients`, so this reaches no deleted connection. The worker thread is joined, so
    // no lock is needed.
    handle_completed_tarvo_task();
    // The queue goes first, the registries after it (the order of the members).
    queue.reset();
}

void TarvoMessageRouter::add_client(ClientConnection* client) {
    client->set_router(this);
    clients.insert(client);
    subscriptions->add_client(client);
    monitors->add_client(client);
    // A connection deleted without remove_client (the server's teardown) must still leave every
    // set of the router, before anything could be sent to it. The slot runs inside the
    // connection's destruction and uses the pointer as a key only.
    connect(
        client, &QObject::destroyed, this, [this, client] { forget_client(client); },
        Qt::DirectConnection);
    // Views held back while the client's socket was full go out once it has drained.
    connect(
        client, &ClientConnection::output_drained, this,
        [this] {
            std::lock_guard lock(queue->notification_mutex());
            queue->deliver_views(false);
        },
        Qt::QueuedConnection);
}

void TarvoMessageRouter::remove_client(ClientConnection* client) {
    client->set_router(nullptr);
    QObject::disconnect(client, &QObject::destroyed, this, nullptr);
    forget_client(client);
    // Its tasks are not cancelled: they run, their monitor data goes to the others, and their
    // responses are dropped when they come back.
    queue->remove_client(client);
}

void TarvoMessageRouter::forget_client(ClientConnection* client) {
    clients.erase(client);
    in_flight.erase(client);
    subscriptions->remove_client(client);
    monitors->remove_client(client);
}

void TarvoMessageRouter::process_response(ClientConnection* /*client*/,
                                          const RPCResponse& /*response*/) {}

void TarvoMessageRouter::process_request(ClientConnection* client, const RPCRequest& request) {
    std::future<int> done = route(client, request);
    if (!synchronous)
        return;
    if (done.valid())
        done.wait();
    serve_all();
}

void TarvoMessageRouter::process_batch(ClientConnection* client, const RPCBatchRequest& batch) {
    // Not atomic: each element is routed on its own; the connection collects the responses.
    for (const RPCRequest& request : batch.requests()) {
        std::future<int> done = route(client, request);
        if (synchronous && done.valid())
            done.wait();
    }
    if (synchronous)
        serve_all();
}

std::future<int> TarvoMessageRouter::route(ClientConnection* client, const RPCRequest& request) {
    const QString method = request.method_name();

    if (method == QLatin1String("tarvo.request_interrupt")) {
        queue->request_interrupt();
        if (!request.is_notification()) {
            client->send_response(RPCResponse(request, QJsonValue(QJsonValue::Null)));
        }
        return {};
    }

    if (method.startsWith(QLatin1String("pubsub."))) {
        NotifyRPCRequestHandler handler(subscriptions.get(), this, client);
        const RPCResponse response = handler.exec(request);
        if (!response.is_empty())
            client->send_response(response);
        return {};
    }

    if (method.startsWith(QLatin1String("datamonitor."))) {
        if (refuse_when_full(client, request))
            return {};
        MonitorResult result =
            queue->process_monitor_request(monitors.get(), std::make_unique<Task>(client, request));
        std::future<int> done;
        if (result.follow_up != nullptr) {
            // Its selection is the new key alone, so its monitors are built even if the client's
            // selection changes again before it runs.
            done = enqueue(std::move(result.follow_up), false);
        }
        if (!result.is_empty())
            client->send_response(result);
        return done;
    }

    if (method == QLatin1String("graphics.test_render")) {
        test_render(client, request);
        return {};
    }

    if (refuse_when_full(client, request))
        return {};
    auto task = std::make_unique<Task>(client, request);
    attach_monitors(*task);
    // No dot is needed: any name that begins with these letters is a graphics request.
    return enqueue(std::move(task), method.startsWith(QLatin1String("graphics")));
}

bool TarvoMessageRouter::refuse_when_full(ClientConnection* client, const RPCRequest& request) {
    const auto it = in_flight.find(client);
    if (it == in_flight.end() || it->second < max_in_flight)
        return false;
    if (!request.is_notification())
        client->send_response(RPCResponse::error(
            request.id(), json_rpc::ErrorCode::LimitExceeded,
            QStringLiteral("at most %1 requests of one client may wait or run at once")
                .arg(static_cast<qulonglong>(max_in_flight))));
    return true;
}

std::future<int> TarvoMessageRouter::enqueue(std::unique_ptr<Task> task, bool graphics) {
    ++in_flight[task->client];
    return graphics ? queue->enqueue_graphics_task(std::move(task))
                    : queue->enqueue_kernel_task(std::move(task));
}

void TarvoMessageRouter::attach_monitors(Task& task) {
    MonitorSelection selection;
    for (ClientConnection* client : clients) {
        if (const MonitorSelection* own = monitors->selection_of(client))
            merge_selection(selection, *own);
    }
    task.selection = std::move(selection);
}

void TarvoMessageRouter::test_render(ClientConnection* client, const RPCRequest& request) {
    const QJsonObject params = request.params().toObject();
    const int count = std::min(params.value(QStringLiteral("count")).toInt(0), kMaxTestRenders);
    const int view_id = params.value(QStringLiteral("view_id")).toInt(0);
    if (count <= 0)
        return;
    if (!synchronous) {
        // One render in flight at a time, each queued when the one before has come back, so
        // the main thread never waits and other clients are served in between.
        queue_test_render(client, view_id, 0, count);
        return;
    }
    for (int i = 0; i < count; ++i) {
        queue_test_render(client, view_id, i, count).wait();
        serve_all();
    }
    // The request itself is never answered.
}

std::future<int> TarvoMessageRouter::queue_test_render(ClientConnection* client, int view_id, int i,
                                                       int count) {
    QJsonObject render_params{{QStringLiteral("view_id"), view_id}};
    if (i == 0)
        render_params.insert(QStringLiteral("timing"), true);
    // The statistics are printed with the last image, whenever it is delivered.
    if (i + 1 == count)
        render_params.insert(QStringLiteral("print_statistics"), true);
    auto task = std::make_unique<Task>(
        client, RPCRequest(QStringLiteral("graphics.render"), render_params));
    attach_monitors(*task);
    if (!synchronous && i + 1 < count) {
        task->then = [this, client, view_id, i, count] {
            QMetaObject::invokeMethod(
                this,
                [this, client, view_id, i, count] {
                    if (clients.count(client) != 0)
                        queue_test_render(client, view_id, i + 1, count);
                },
                Qt::QueuedConnection);
        };
    }
    return enqueue(std::move(task), true);
}

void TarvoMessageRouter::serve_all() {
    {
        std::lock_guard lock(queue->notification_mutex());
        handle_tarvo_notifications();
    }
    {
        std::lock_guard lock(queue->notification_mutex());
        queue->deliver_views(false);
    }
    {
        std::lock_guard lock(queue->notification_mutex());
        handle_completed_tarvo_task();
    }
}

void TarvoMessageRouter::process_notifications(int t) {
    // The whole serving, sending included, runs under the lock: a worker that reports meanwhile
    // waits for its end.
    std::lock_guard lock(queue->notification_mutex());
    switch (t) {
    case TarvoQueue::Graphics:
        queue->deliver_views(false);
        break;
    case TarvoQueue::TaskCompleted:
        handle_completed_tarvo_task();
        break;
    case TarvoQueue::Output:
        handle_tarvo_notifications();
        break;
    default:
        break;
    }
}

void TarvoMessageRouter::handle_tarvo_notifications() {
    send_notifications(queue->take_output());
}

void TarvoMessageRouter::handle_graphics(bool dump_time) {
    queue->deliver_views(dump_time);
}

void TarvoMessageRouter::send_notifications(const std::vector<RPCRequest>& notifications) {
    if (notifications.empty())
        return;
    std::map<ClientConnection*, std::vector<RPCRequest>> shares;
    for (const RPCRequest& notification : notifications)
        for (ClientConnection* client : subscriptions->subscribers(notification.method_name()))
            shares[client].push_back(notification);
    for (const auto& [client, share] : shares) {
        if (clients.count(client) == 0)
            continue;
        if (share.size() >= 2)
            client->send_notifications(RPCBatchRequest(share));
        else
            client->send_notification(share.front());
    }
}

void TarvoMessageRouter::handle_completed_tarvo_task() {
    for (const std::unique_ptr<Task>& task : queue->take_completed()) {
        // The count of a client that has gone was dropped with it.
        if (const auto it = in_flight.find(task->client);
            !task->action && it != in_flight.end() && it->second > 0)
            --it->second;
        // Monitor data first, to every client that selected it now, whoever asked.
        for (ClientConnection* client : clients) {
            const MonitorSelection* selection = monitors->selection_of(client);
            if (selection == nullptr)
                continue;
            std::vector<RPCRequest> data;
            for (const auto& monitor : task->monitors) {
                std::vector<RPCRequest> part = monitor->get_notifications(*selection);
                data.insert(data.end(), part.begin(), part.end());
            }
            if (data.size() >= 2)
                client->send_notifications(RPCBatchRequest(data));
            else if (data.size() == 1)
                client->send_notification(data.front());
        }
        // Then the answer, if the asking client is still there.
        if (!task->response.is_empty() && clients.count(task->client) != 0)
            task->client->send_response(task->response);
        if (task->then && clients.count(task->client) != 0)
            task->then();
    }
}
