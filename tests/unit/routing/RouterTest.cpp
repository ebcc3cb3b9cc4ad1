// The router: which path a name takes, how results come back to the clients, and what survives
// a client's disconnection and the server's teardown.

#include "RoutingTestSupport.h"

#include "routing/TarvoMessageRouter.h"

#include <QEvent>

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <thread>

namespace {

// Counts the queued calls that reach an object (each posted process_notifications is one).
class QueuedCallCounter : public QObject {
public:
    bool eventFilter(QObject* /*watched*/, QEvent* event) override {
        if (event->type() == QEvent::MetaCall)
            ++count;
        return false;
    }
    int count = 0;
};

class RouterTest : public testing::Test {
protected:
    RouterTest() : router(std::make_unique<TarvoMessageRouter>(&worker, false)) {
        router->add_client(a.connection);
        router->add_client(b.connection);
    }

    void call(RecordingClient& client, const QString& method, int id,
              const QJsonValue& params = QJsonValue(QJsonValue::Null)) {
        router->process_request(client.connection, request_with_id(method, id, params));
    }

    FakeWorker worker;
    RecordingClient a;
    RecordingClient b;
    std::unique_ptr<TarvoMessageRouter> router;
};

TEST_F(RouterTest, TwoTasksFinishedBeforeTheMainThreadWakesCostOneServing) {
    QueuedCallCounter counter;
    router->installEventFilter(&counter);

    auto first = router->route(a.connection, request_with_id("get_version", 1));
    auto second = router->route(a.connection, request_with_id("tarvo.get_version", 2));
    first.wait();
    second.wait();
    EXPECT_TRUE(a.frames.empty()) << "nothing is sent before the main thread is served";
    process_posted_events();

    EXPECT_EQ(counter.count, 1);
    const auto frames = a.take();
    ASSERT_EQ(frames.size(), 2u);
    EXPECT_EQ(frames[0].object().value("id").toInt(), 1);
    EXPECT_EQ(frames[1].object().value("id").toInt(), 2);
    EXPECT_EQ(frames[1].object().value("result").toString(), "tarvo.get_version");
    router->removeEventFilter(&counter);
}

TEST_F(RouterTest, InterruptIsAnsweredAtOnceAndReachesOnlyARunningTask) {
    call(a, "tarvo.request_interrupt", 1);
    auto frames = a.take();
    ASSERT_EQ(frames.size(), 1u);
    EXPECT_TRUE(frames[0].object().contains("result"));
    EXPECT_TRUE(frames[0].object().value("result").isNull());
    worker.wait_initialized();
    EXPECT_TRUE(worker.interrupted_methods().empty());

    Gate gate;
    worker.set_gate("mesh", &gate);
    auto mesh = router->route(a.connection, request_with_id("mesh", 2));
    gate.wait_entered();
    // Without an id: no answer, but the interrupt is delivered all the same.
    router->process_request(b.connection, RPCRequest("tarvo.request_interrupt"));
    EXPECT_TRUE(b.frames.empty());
    EXPECT_EQ(worker.interrupted_methods(), std::vector<QString>{"mesh"});
    gate.open();
    mesh.wait();
    process_posted_events();
    EXPECT_EQ(a.take().size(), 1u);
}

TEST_F(RouterTest, NamesAreSortedBySpelledPrefixOnly) {
    // Rows answered on the spot never reach the worker; the others are queued by kind.
    auto graphics = router->route(a.connection, request_with_id("graphicsfoo", 1));
    auto kernel = router->route(a.connection, request_with_id("PubSub.subscribe", 2));
    graphics.wait();
    kernel.wait();
    call(a, "pubsub.no_such_method", 3);
    process_posted_events();

    const auto begun = worker.begun_tasks();
    ASSERT_EQ(begun.size(), 2u);
    for (const BeginRecord& record : begun)
        EXPECT_EQ(record.graphics_only, record.method == "graphicsfoo")
            << record.method.toStdString();
    EXPECT_EQ(worker.executed_methods(), std::vector<QString>{"PubSub.subscribe"});

    std::map<int, QJsonObject> by_id;
    for (const QJsonDocument& frame : a.take())
        by_id[frame.object().value("id").toInt()] = frame.object();
    ASSERT_EQ(by_id.size(), 3u);
    const int not_found = static_cast<int>(json_rpc::ErrorCode::MethodNotFound);
    EXPECT_EQ(by_id[1].value("error").toObject().value("code").toInt(), not_found);
    EXPECT_EQ(by_id[2].value("result").toString(), "PubSub.subscribe");
    EXPECT_EQ(by_id[3].value("error").toObject().value("code").toInt(), not_found);
}

TEST_F(RouterTest, NewMonitorDataArrivesBeforeTheAnswerAndReachesEveryoneWhoSelectedIt) {
    auto b_added = router->route(b.connection, request_with_id("datamonitor.add_model_monitor", 1));
    ASSERT_TRUE(b_added.valid()) << "a successful add queues a follow-up task";
    b_added.wait();
    EXPECT_TRUE(b.frames.empty());
    process_posted_events();
    auto frames = b.take();
    ASSERT_EQ(frames.size(), 2u);
    EXPECT_EQ(frame_methods(frames[0]), std::vector<QString>{"fake.model"});
    EXPECT_TRUE(frames[0].object().value("params").toObject().value("full").toBool());
    EXPECT_EQ(frames[1].object().value("id").toInt(), 1);
    EXPECT_EQ(frames[1].object().value("result"), QJsonValue(true));

    // A second client selecting the same key: both get the full data of its follow-up task.
    router->route(a.connection, request_with_id("datamonitor.add_model_monitor", 2)).wait();
    process_posted_events();
    frames = a.take();
    ASSERT_EQ(frames.size(), 2u);
    EXPECT_EQ(frame_methods(frames[0]), std::vector<QString>{"fake.model"});
    EXPECT_EQ(frames[1].object().value("id").toInt(), 2);
    frames = b.take();
    ASSERT_EQ(frames.size(), 1u);
    EXPECT_TRUE(frames[0].object().value("params").toObject().value("full").toBool());

    // A removal waits for nothing and queues nothing.
    auto removed =
        router->route(a.connection, request_with_id("datamonitor.remove_model_monitor", 3));
    EXPECT_FALSE(removed.valid());
    frames = a.take();
    ASSERT_EQ(frames.size(), 1u);
    EXPECT_EQ(frames[0].object().value("result"), QJsonValue(true));

    // An ordinary task now carries b's selection alone: a gets no data from it.
    router->route(a.connection, request_with_id("get_version", 4)).wait();
    process_posted_events();
    EXPECT_EQ(a.take().size(), 1u);
    frames = b.take();
    ASSERT_EQ(frames.size(), 1u);
    const QJsonObject data = frames[0].object().value("params").toObject();
    EXPECT_EQ(data.value("task").toString(), "get_version");
    EXPECT_FALSE(data.value("full").toBool());
    EXPECT_TRUE(data.value("updated").toBool());
}

// A departed client's running task is interrupted (it completes, and the others still get its
// monitor data); its waiting tasks never start; other clients' tasks are untouched.
TEST_F(RouterTest, DepartedClientsWorkIsInterruptedAndItsQueueDropped) {
    router->route(b.connection, request_with_id("datamonitor.add_model_monitor", 1)).wait();
    process_posted_events();
    b.take();

    Gate gate;
    worker.set_gate("slow", &gate);
    auto slow = router->route(a.connection, request_with_id("slow", 2));
    gate.wait_entered();
    router->route(a.connection, request_with_id("queued_a", 3));
    auto others = router->route(b.connection, request_with_id("queued_b", 4));
    router->remove_client(a.connection);
    EXPECT_EQ(worker.interrupted_methods(), std::vector<QString>{"slow"});
    gate.open();
    slow.wait();
    others.wait();
    process_posted_events();

    EXPECT_EQ(worker.executed_methods(), (std::vector<QString>{"slow", "queued_b"}));
    EXPECT_TRUE(a.frames.empty());
    const auto frames = b.take();
    ASSERT_EQ(frames.size(), 3u) << "monitor data of both tasks, then b's answer";
    EXPECT_EQ(frames[0].object().value("params").toObject().value("task").toString(), "slow");
    EXPECT_EQ(frames[2].object().value("result").toString(), "queued_b");
}

TEST_F(RouterTest, DepartureNeverInterruptsAnotherClientsTask) {
    Gate gate;
    worker.set_gate("slow", &gate);
    auto slow = router->route(b.connection, request_with_id("slow", 1));
    gate.wait_entered();
    router->route(a.connection, request_with_id("queued_a", 2));
    router->remove_client(a.connection);
    gate.open();
    slow.wait();
    process_posted_events();

    EXPECT_TRUE(worker.interrupted_methods().empty());
    EXPECT_EQ(worker.executed_methods(), std::vector<QString>{"slow"});
    EXPECT_EQ(b.take().size(), 1u);
}

TEST_F(RouterTest, ClientsWaitingTasksAreBounded) {
    router->set_max_in_flight(2);
    Gate gate;
    worker.set_gate("slow", &gate);
    auto slow = router->route(a.connection, request_with_id("slow", 1));
    gate.wait_entered();
    router->route(a.connection, request_with_id("second", 2));
    call(a, "third", 3);
    call(a, "datamonitor.add_model_monitor", 4);
    const auto refusals = a.take();
    ASSERT_EQ(refusals.size(), 2u) << "answered at once, never queued";
    for (const QJsonDocument& refusal : refusals)
        EXPECT_EQ(refusal.object().value("error").toObject().value("code").toInt(), -32000);
    auto others = router->route(b.connection, request_with_id("other", 5));

    gate.open();
    slow.wait();
    others.wait();
    process_posted_events();
    EXPECT_EQ(worker.executed_methods(), (std::vector<QString>{"slow", "second", "other"}));
    a.take();
    router->route(a.connection, request_with_id("again", 6)).wait();
    process_posted_events();
    ASSERT_EQ(a.frames.size(), 1u) << "room again once the tasks are done";
    EXPECT_EQ(a.frames[0].object().value("result").toString(), "again");
}

TEST_F(RouterTest, NotificationsGoOutAsOneFramePerSubscriber) {
    call(a, "pubsub.subscribe", 1, QJsonObject{{"notification", "print_message"}});
    call(a, "pubsub.subscribe", 2, QJsonObject{{"notification", "print_error"}});
    call(b, "pubsub.subscribe", 3, QJsonObject{{"notification", "print_error"}});
    a.take();
    b.take();

    router->send_notifications({RPCRequest("print_message", QJsonArray{"one\n"}),
                                RPCRequest("print_error", QJsonArray{"two\n"}),
                                RPCRequest("nobody_listens"),
                                RPCRequest("print_message", QJsonArray{"three\n"})});
    auto frames = a.take();
    ASSERT_EQ(frames.size(), 1u);
    ASSERT_TRUE(frames[0].isArray());
    EXPECT_EQ(frame_methods(frames[0]),
              (std::vector<QString>{"print_message", "print_error", "print_message"}));
    EXPECT_EQ(frames[0].array()[2].toObject().value("params"), QJsonArray{"three\n"});
    frames = b.take();
    ASSERT_EQ(frames.size(), 1u);
    ASSERT_TRUE(frames[0].isObject()) << "a single notification is a plain object";
    EXPECT_EQ(frame_methods(frames[0]), std::vector<QString>{"print_error"});
    EXPECT_FALSE(frames[0].object().contains("id"));

    router->send_notifications({});
    EXPECT_TRUE(a.frames.empty());
}

TEST_F(RouterTest, KernelPrintingReachesSubscribersBeforeTheAnswer) {
    call(a, "pubsub.subscribe", 1, QJsonObject{{"notification", "print_message"}});
    call(a, "pubsub.subscribe", 2, QJsonObject{{"notification", "print_error"}});
    a.take();
    worker.set_on_execute([this](const QString&) {
        worker.messages->print_message("Created volume ");
        worker.messages->print_message("1\n");
        worker.messages->print_error("ERROR: none\n");
    });

    router->route(b.connection, request_with_id("cmd", 3)).wait();
    process_posted_events();

    auto frames = a.take();
    ASSERT_EQ(frames.size(), 1u);
    EXPECT_EQ(frame_methods(frames[0]), (std::vector<QString>{"print_message", "print_error"}));
    EXPECT_EQ(frames[0].array()[0].toObject().value("params"), QJsonArray{"Created volume 1\n"});
    frames = b.take();
    ASSERT_EQ(frames.size(), 1u) << "b did not subscribe: only its answer";
    EXPECT_EQ(frames[0].object().value("id").toInt(), 3);
}

TEST_F(RouterTest, TestRenderQueuesOneRenderAtATimeWithoutWaitingAndNeverAnswers) {
    call(a, "graphics.test_render", 1, QJsonObject{{"count", 0}, {"view_id", 7}});
    call(a, "graphics.test_render", 2);
    EXPECT_TRUE(worker.begun_tasks().empty());

    call(a, "graphics.test_render", 3, QJsonObject{{"count", 3}, {"view_id", 7}});
    // The call came back at once; the second render waits until the main thread has seen the
    // first one come back.
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(worker.begun_tasks().size(), 1u);
    // Each next render is queued once the one before has come back to the main thread.
    for (int i = 0; i < 2000 && worker.begun_tasks().size() < 3; ++i) {
        process_posted_events();
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    const auto begun = worker.begun_tasks();
    ASSERT_EQ(begun.size(), 3u);
    EXPECT_EQ(begun[0].method, "graphics.render");
    EXPECT_TRUE(begun[0].graphics_only);
    EXPECT_EQ(begun[0].params, (QJsonObject{{"view_id", 7}, {"timing", true}}));
    EXPECT_EQ(begun[1].params, (QJsonObject{{"view_id", 7}}));
    EXPECT_EQ(begun[2].params, (QJsonObject{{"view_id", 7}, {"print_statistics", true}}));
    process_posted_events();
    EXPECT_TRUE(a.frames.empty());
}

TEST(RouterSynchronousTest, DeliversEverythingBeforeReturningWithoutPostedCalls) {
    FakeWorker worker;
    RecordingClient a;
    TarvoMessageRouter router(&worker, true);
    QueuedCallCounter counter;
    router.installEventFilter(&counter);
    router.add_client(a.connection);
    worker.set_on_execute([&worker](const QString&) { worker.messages->print_message("done\n"); });

    router.process_request(
        a.connection,
        request_with_id("pubsub.subscribe", 1, QJsonObject{{"notification", "print_message"}}));
    router.process_request(a.connection, request_with_id("datamonitor.add_model_monitor", 2));
    router.process_batch(
        a.connection, RPCBatchRequest({request_with_id("first", 3), request_with_id("second", 4)}));
    process_posted_events();
    EXPECT_EQ(counter.count, 0);

    const auto frames = a.take();
    std::vector<std::vector<QString>> methods;
    std::vector<int> ids;
    for (const QJsonDocument& frame : frames) {
        methods.push_back(frame_methods(frame));
        ids.push_back(frame.isObject() ? frame.object().value("id").toInt(-1) : -1);
    }
    // subscribe answer; monitor data, add answer; then for the batch, after its last element:
    // the two prints joined in one serving, and data and answer of each element.
    ASSERT_EQ(frames.size(), 8u);
    EXPECT_EQ(ids[0], 1);
    EXPECT_EQ(methods[1], std::vector<QString>{"fake.model"});
    EXPECT_EQ(ids[2], 2);
    EXPECT_EQ(methods[3], std::vector<QString>{"print_message"});
    EXPECT_EQ(frames[3].object().value("params"), QJsonArray{"done\ndone\n"});
    EXPECT_EQ(frames[4].object().value("params").toObject().value("task").toString(), "first");
    EXPECT_EQ(ids[5], 3);
    EXPECT_EQ(frames[6].object().value("params").toObject().value("task").toString(), "second");
    EXPECT_EQ(ids[7], 4);
    router.removeEventFilter(&counter);
}

TEST(RouterTeardownTest, FinalDrainSkipsConnectionsDeletedWithoutRemoval) {
    FakeWorker worker;
    RecordingClient live;
    auto router = std::make_unique<TarvoMessageRouter>(&worker, false);
    auto* doomed = new ClientConnection(false);
    router->add_client(live.connection);
    router->add_client(doomed);
    router->route(live.connection, request_with_id("datamonitor.add_model_monitor", 1)).wait();
    router->route(doomed,
                  request_with_id("pubsub.subscribe", 2, QJsonObject{{"notification", "chat"}}));
    process_posted_events();
    live.take();

    Gate gate;
    worker.set_gate("last", &gate);
    auto last = router->route(doomed, request_with_id("last", 3));
    gate.wait_entered();
    // As the server's destructor does: the connection goes without remove_client.
    void* const doomed_address = doomed;
    delete doomed;
    gate.open();
    last.wait();

    // A fresh connection in the freed memory would receive whatever still went to the old
    // pointer; with glibc's allocator it lands there.
    RecordingClient reborn;
    if (static_cast<void*>(reborn.connection) != doomed_address)
        GTEST_SKIP() << "the allocator did not reuse the address; nothing to observe";

    router.reset(); // stop, final drain, delete
    EXPECT_TRUE(reborn.frames.empty());
    const auto frames = live.take();
    ASSERT_EQ(frames.size(), 1u) << "the live client still gets the monitor data";
    EXPECT_EQ(frames[0].object().value("params").toObject().value("task").toString(), "last");
}

TEST(RouterTeardownTest, ConnectionAtAReusedAddressStartsWithNoSubscriptions) {
    FakeWorker worker;
    TarvoMessageRouter router(&worker, false);
    RecordingClient publisher;
    router.add_client(publisher.connection);
    auto* doomed = new ClientConnection(false);
    router.add_client(doomed);
    router.process_request(
        doomed, request_with_id("pubsub.subscribe", 1, QJsonObject{{"notification", "chat"}}));
    void* const doomed_address = doomed;
    delete doomed;

    RecordingClient reborn;
    if (static_cast<void*>(reborn.connection) != doomed_address)
        GTEST_SKIP() << "the allocator did not reuse the address; nothing to observe";
    router.add_client(reborn.connection);
    router.process_request(
        publisher.connection,
        request_with_id("pubsub.publish", 2, QJsonObject{{"notification", "chat"}, {"data", 1}}));
    EXPECT_TRUE(reborn.frames.empty());
    EXPECT_EQ(publisher.take().size(), 1u);
}

} // namespace
