#pragma once
// A fake kernel session for the queue and the router, and helpers to watch what connections send.
//
// FakeWorker records, in order, every task that the worker thread begins; runs a hook inside
// execute() (on the worker thread) so that a test can print or wait there; and answers each
// request with its own method name. A Gate stops the worker thread inside execute() of a named
// method until the test opens it, which is how the tests hold a task "running".

#include "monitors/DataMonitor.h"
#include "routing/ServerWorker.h"
#include "routing/TarvoQueue.h"
#include "routing/Task.h"
#include "tarvo_util/TarvoMessage.h"
#include "tarvo_util/TarvoProgressHandler.h"
#include "transport/ClientConnection.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <functional>
#include <future>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

// Worker side: pass() signals arrival and blocks until the test calls open().
class Gate {
public:
    void pass() {
        entered_promise.set_value();
        released.wait();
    }
    void wait_entered() { entered.wait(); }
    void open() { release_promise.set_value(); }

private:
    std::promise<void> entered_promise;
    std::future<void> entered = entered_promise.get_future();
    std::promise<void> release_promise;
    std::shared_future<void> released = release_promise.get_future().share();
};

// Reports one "fake.<kind>" notification to every client whose selection holds the kind, with
// the method of the task that built it and whether it reports in full.
class FakeMonitor : public DataMonitor {
public:
    FakeMonitor(QString kind, QString task_method)
        : kind(std::move(kind)), task_method(std::move(task_method)) {}
    void update() override { updated = true; }
    std::vector<RPCRequest> get_notifications(const MonitorSelection& selection) override {
        if (selection.count(kind) == 0)
            return {};
        return {RPCRequest(QStringLiteral("fake.") + kind,
                           QJsonObject{{QStringLiteral("task"), task_method},
                                       {QStringLiteral("full"), !is_incremental()},
                                       {QStringLiteral("updated"), updated}})};
    }

private:
    QString kind;
    QString task_method;
    bool updated = false;
};

struct BeginRecord {
    QString method; // empty for monitor and action tasks
    bool graphics_only;
    bool batching; // the queue's render batching at that moment
    QJsonValue params;
};

class FakeWorker : public ServerWorker {
public:
    // Set before any task is queued; used on the worker thread.
    TarvoQueue* queue = nullptr;

    void initialize(std::shared_ptr<TarvoMessageHandler> messages_in,
                    std::shared_ptr<TarvoProgressHandler> progress_in) override {
        messages = std::move(messages_in);
        progress = std::move(progress_in);
        // As the real session does: kernel printing now reaches the queue.
        TarvoMessage::instance()->set_message_handler(messages);
        initialized_promise.set_value();
    }
    void shutdown() override { shut_down = true; }

    void begin_task(Task* task, bool graphics_only) override {
        const QString method = task->request.method_name();
        {
            std::lock_guard lock(mutex);
            begun.push_back({method, graphics_only,
                             queue != nullptr && graphics_only && queue->is_batching_renders(),
                             task->request.params()});
            running = method;
        }
        // The real worker's rule: a graphics task gets no model or entity monitors.
        for (const auto& [kind, pairs] : task->selection) {
            if (graphics_only &&
                (kind == QLatin1String("model") || kind == QLatin1String("entity")))
                continue;
            task->monitors.push_back(std::make_unique<FakeMonitor>(kind, method));
        }
        const bool first_data = !task->action && task->request.is_empty();
        for (const auto& monitor : task->monitors)
            if (first_data)
                monitor->set_full_refresh();
    }

    void end_task(Task* task) override {
        for (const auto& monitor : task->monitors)
            monitor->update();
        std::lock_guard lock(mutex);
        running.clear();
    }

    void interrupt() override {
        std::lock_guard lock(mutex);
        interrupted.push_back(running);
    }

    GTarvoModelSet* model_set() override { return nullptr; }

    RPCResponse execute(Task* task) override {
        const QString method = task->request.method_name();
        Gate* gate = nullptr;
        std::function<void(const QString&)> hook;
        {
            std::lock_guard lock(mutex);
            executed.push_back(method);
            if (auto it = gates.find(method); it != gates.end())
                gate = it->second;
            hook = on_execute;
        }
        if (hook)
            hook(method);
        if (gate != nullptr)
            gate->pass();
        RPCResponse response(task->request);
        response.set_result(method);
        return response;
    }

    MonitorResult process_monitor_request(MonitorRegistry* registry,
                                          std::unique_ptr<Task> task) override {
        return handle_monitor_request(registry, std::move(task));
    }

    // Main thread.
    void wait_initialized() { initialized.wait(); }
    void set_gate(const QString& method, Gate* gate) {
        std::lock_guard lock(mutex);
        gates[method] = gate;
    }
    void set_on_execute(std::function<void(const QString&)> hook) {
        std::lock_guard lock(mutex);
        on_execute = std::move(hook);
    }
    std::vector<BeginRecord> begun_tasks() {
        std::lock_guard lock(mutex);
        return begun;
    }
    std::vector<QString> begun_methods() {
        std::vector<QString> methods;
        for (const BeginRecord& record : begun_tasks())
            methods.push_back(record.method);
        return methods;
    }
    std::vector<QString> executed_methods() {
        std::lock_guard lock(mutex);
        return executed;
    }
    std::vector<QString> interrupted_methods() {
        std::lock_guard lock(mutex);
        return interrupted;
    }

    std::shared_ptr<TarvoMessageHandler> messages;
    std::shared_ptr<TarvoProgressHandler> progress;
    bool shut_down = false;

private:
    std::promise<void> initialized_promise;
    std::future<void> initialized = initialized_promise.get_future();
    std::mutex mutex;
    std::vector<BeginRecord> begun;
    std::vector<QString> executed;
    std::vector<QString> interrupted;
    QString running;
    std::map<QString, Gate*> gates;
    std::function<void(const QString&)> on_execute;
};

// A connection whose outgoing frames are kept, parsed.
class RecordingClient {
public:
    RecordingClient() : connection(new ClientConnection(false)) {
        QObject::connect(connection, &ClientConnection::send_text_message,
                         [this](const QString& frame) {
                             frames.push_back(QJsonDocument::fromJson(frame.toUtf8()));
                         });
    }
    ~RecordingClient() { delete connection; }
    RecordingClient(const RecordingClient&) = delete;
    RecordingClient& operator=(const RecordingClient&) = delete;

    // Takes the frames received so far.
    std::vector<QJsonDocument> take() {
        std::vector<QJsonDocument> taken;
        taken.swap(frames);
        return taken;
    }

    ClientConnection* connection;
    std::vector<QJsonDocument> frames;
};

inline RPCRequest request_with_id(const QString& method, int id,
                                  const QJsonValue& params = QJsonValue(QJsonValue::Null)) {
    RPCRequest request(method, params);
    request.set_id(id);
    return request;
}

// The method names of one frame: one for an object, one per element for an array.
inline std::vector<QString> frame_methods(const QJsonDocument& frame) {
    std::vector<QString> methods;
    if (frame.isObject())
        methods.push_back(frame.object().value(QStringLiteral("method")).toString());
    else
        for (const QJsonValue& element : frame.array())
            methods.push_back(element.toObject().value(QStringLiteral("method")).toString());
    return methods;
}

inline void process_posted_events() {
    QCoreApplication::processEvents();
}
