// The task queue and its worker thread: coalesced completion reports, interrupts, the pass
// structure (graphics before kernel), render batching and the teardown of a client's views.

#include "RoutingTestSupport.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

class QueueTest : public testing::Test {
protected:
    QueueTest()
        : queue(&worker, [this](TarvoQueue::NotificationType type) {
              // A main thread woken by this post must find the lock free: probed from another
              // thread, as the main thread would take it.
              bool lock_free = false;
              std::thread([&] {
                  if (queue.notification_mutex().try_lock()) {
                      lock_free = true;
                      queue.notification_mutex().unlock();
                  }
              }).join();
              std::lock_guard lock(notified_mutex);
              notified.push_back(type);
              posted_with_lock_free.push_back(lock_free);
          }) {
        worker.queue = &queue;
    }

    size_t notifications_of(TarvoQueue::NotificationType wanted) {
        std::lock_guard lock(notified_mutex);
        size_t count = 0;
        for (TarvoQueue::NotificationType type : notified)
            count += type == wanted ? 1 : 0;
        return count;
    }

    std::deque<std::unique_ptr<Task>> take_completed() {
        std::lock_guard lock(queue.notification_mutex());
        return queue.take_completed();
    }

    FakeWorker worker;
    std::mutex notified_mutex;
    std::vector<TarvoQueue::NotificationType> notified;
    std::vector<bool> posted_with_lock_free;
    TarvoQueue queue;
};

TEST_F(QueueTest, TasksThatFinishBeforeTheMainThreadLooksPostOnce) {
    auto first =
        queue.enqueue_kernel_task(std::make_unique<Task>(nullptr, request_with_id("one", 1)));
    auto second =
        queue.enqueue_kernel_task(std::make_unique<Task>(nullptr, request_with_id("two", 2)));
    EXPECT_EQ(first.get(), 1);
    EXPECT_EQ(second.get(), 1);
    EXPECT_EQ(notifications_of(TarvoQueue::TaskCompleted), 1u);

    auto completed = take_completed();
    ASSERT_EQ(completed.size(), 2u);
    EXPECT_EQ(completed[0]->response.result().toString(), "one");
    EXPECT_EQ(completed[1]->response.result().toString(), "two");

    // Taking the work cleared the bit: the next completion posts again, and a waiter on the
    // future finds that post already made.
    queue.enqueue_kernel_task(std::make_unique<Task>(nullptr, request_with_id("three", 3))).wait();
    EXPECT_EQ(notifications_of(TarvoQueue::TaskCompleted), 2u);
    completed = take_completed();

    std::lock_guard lock(notified_mutex);
    EXPECT_EQ(posted_with_lock_free, (std::vector<bool>{true, true}));
}

TEST_F(QueueTest, InterruptReachesOnlyATaskThatIsRunning) {
    worker.wait_initialized();
    queue.request_interrupt(); // nothing runs: dropped, not remembered
    EXPECT_TRUE(worker.interrupted_methods().empty());

    Gate gate;
    worker.set_gate("long", &gate);
    auto long_done =
        queue.enqueue_kernel_task(std::make_unique<Task>(nullptr, request_with_id("long", 1)));
    gate.wait_entered();
    auto next_done =
        queue.enqueue_kernel_task(std::make_unique<Task>(nullptr, request_with_id("next", 2)));
    queue.request_interrupt();
    gate.open();
    long_done.wait();
    next_done.wait();

    EXPECT_EQ(worker.interrupted_methods(), std::vector<QString>{"long"});
    EXPECT_EQ(worker.executed_methods(), (std::vector<QString>{"long", "next"}));
    auto completed = take_completed();
}

TEST_F(QueueTest, GraphicsTasksOvertakeKernelTasksOfALaterPass) {
    Gate gate;
    worker.set_gate("k1", &gate);
    auto k1 = queue.enqueue_kernel_task(std::make_unique<Task>(nullptr, request_with_id("k1", 1)));
    gate.wait_entered();
    // Both arrive while k1's pass runs; the next pass starts with the graphics tasks.
    auto k2 = queue.enqueue_kernel_task(std::make_unique<Task>(nullptr, request_with_id("k2", 2)));
    auto g1 = queue.enqueue_graphics_task(
        std::make_unique<Task>(nullptr, request_with_id("graphics.a", 3)));
    auto g2 = queue.enqueue_graphics_task(
        std::make_unique<Task>(nullptr, request_with_id("graphics.b", 4)));
    gate.open();
    k1.wait();
    k2.wait();
    g1.wait();
    g2.wait();

    const auto begun = worker.begun_tasks();
    ASSERT_EQ(begun.size(), 4u);
    EXPECT_EQ(worker.begun_methods(),
              (std::vector<QString>{"k1", "graphics.a", "graphics.b", "k2"}));
    EXPECT_FALSE(begun[0].graphics_only);
    EXPECT_TRUE(begun[1].graphics_only);
    // Two graphics tasks in one pass share their renders.
    EXPECT_TRUE(begun[1].batching);
    EXPECT_TRUE(begun[2].batching);

    auto completed = take_completed();
    ASSERT_EQ(completed.size(), 4u);
    // Not graphics method names: the graphics table answers "method not found".
    EXPECT_EQ(completed[1]->response.error_code(),
              static_cast<int>(json_rpc::ErrorCode::MethodNotFound));
    EXPECT_EQ(completed[3]->response.result().toString(), "k2");
    EXPECT_FALSE(queue.is_batching_renders());

    // A graphics task alone in its pass has nothing to share.
    queue.enqueue_graphics_task(std::make_unique<Task>(nullptr, request_with_id("graphics.c", 5)))
        .wait();
    EXPECT_FALSE(worker.begun_tasks().back().batching);
    completed = take_completed();
}

TEST_F(QueueTest, ViewsOfARemovedClientMarkNothingUntilTheirTeardownRan) {
    auto* client = reinterpret_cast<ClientConnection*>(0x1000); // a key, never dereferenced
    auto* view = reinterpret_cast<ServerGraphicsView*>(0x2000);

    Gate gate;
    worker.set_gate("k1", &gate);
    auto k1 = queue.enqueue_kernel_task(std::make_unique<Task>(nullptr, request_with_id("k1", 1)));
    gate.wait_entered();
    queue.remove_client(client); // its teardown task waits behind k1
    queue.mark_view_dirty(view, client);
    EXPECT_EQ(notifications_of(TarvoQueue::Graphics), 0u);

    gate.open();
    k1.wait();
    // The teardown is a graphics task of the next pass; a kernel task queued now runs after it.
    queue.enqueue_kernel_task(std::make_unique<Task>(nullptr, request_with_id("k2", 2))).wait();
    const auto begun = worker.begun_tasks();
    ASSERT_EQ(begun.size(), 3u);
    EXPECT_TRUE(begun[1].method.isEmpty());
    EXPECT_TRUE(begun[1].graphics_only);

    queue.mark_view_dirty(view, client);
    EXPECT_EQ(notifications_of(TarvoQueue::Graphics), 1u);
    {
        std::lock_guard lock(queue.notification_mutex());
        queue.deliver_views(false);
    }
    auto completed = take_completed();
    ASSERT_EQ(completed.size(), 3u);
    EXPECT_TRUE(completed[1]->response.is_empty()) << "a teardown task answers nothing";
}

TEST_F(QueueTest, StopEndsTheSessionOnTheWorkerThread) {
    queue.enqueue_kernel_task(std::make_unique<Task>(nullptr, request_with_id("k1", 1))).wait();
    EXPECT_NE(TarvoMessage::instance()->message_handler(), nullptr);
    queue.stop();
    EXPECT_TRUE(worker.shut_down);
    // The worker thread detached the message handler as its last step.
    EXPECT_EQ(TarvoMessage::instance()->message_handler(), nullptr);
    auto completed = take_completed();
}

} // namespace
