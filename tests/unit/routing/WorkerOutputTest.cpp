// Kernel printing and progress, as the main thread finds them at each serving. The handlers are
// called here from the test thread in place of the kernel; they only lock and record, so the
// worker thread (idle in the fake session) plays no part.

#include "RoutingTestSupport.h"

#include "routing/WorkerMessageHandler.h"
#include "routing/WorkerProgressHandler.h"

#include <gtest/gtest.h>

namespace {

class WorkerOutputTest : public testing::Test {
protected:
    WorkerOutputTest()
        : queue(&worker,
                [this](TarvoQueue::NotificationType type) {
                    std::lock_guard lock(notified_mutex);
                    notified.push_back(type);
                }),
          messages(&queue), progress(&queue) {}

    // One serving, as the router does it.
    std::vector<RPCRequest> serve() {
        std::lock_guard lock(queue.notification_mutex());
        return queue.take_output();
    }

    size_t output_notifications() {
        std::lock_guard lock(notified_mutex);
        size_t count = 0;
        for (TarvoQueue::NotificationType type : notified)
            count += type == TarvoQueue::Output ? 1 : 0;
        return count;
    }

    static std::vector<QString> methods(const std::vector<RPCRequest>& list) {
        std::vector<QString> names;
        for (const RPCRequest& request : list)
            names.push_back(request.method_name());
        return names;
    }

    FakeWorker worker;
    std::mutex notified_mutex;
    std::vector<TarvoQueue::NotificationType> notified;
    TarvoQueue queue;
    WorkerMessageHandler messages;
    WorkerProgressHandler progress;
};

TEST_F(WorkerOutputTest, PartialLineIsHeldBackUntilALineCompletesItOrAServingComes) {
    messages.print_message("Volume 1 ");
    EXPECT_EQ(output_notifications(), 0u);
    messages.print_message("created\n");
    EXPECT_EQ(output_notifications(), 1u);

    const auto served = serve();
    ASSERT_EQ(served.size(), 1u);
    EXPECT_EQ(served[0].method_name(), "print_message");
    EXPECT_EQ(served[0].params(), QJsonArray{QStringLiteral("Volume 1 created\n")});
    EXPECT_TRUE(serve().empty());

    // When something else triggers a serving, the partial line goes out as it is.
    messages.print_message("no line feed");
    EXPECT_EQ(output_notifications(), 1u);
    progress.percent(40);
    EXPECT_EQ(output_notifications(), 2u);
    EXPECT_EQ(serve().at(0).params(), QJsonArray{QStringLiteral("no line feed")});
}

TEST_F(WorkerOutputTest, MessagesAndErrorsKeepTheirOrderAndOneBurstPostsOnce) {
    messages.print_message("one\n");
    messages.print_error("two\n");
    messages.print_message("three\n");
    EXPECT_EQ(output_notifications(), 1u) << "the pending bit coalesces a burst";

    const auto served = serve();
    EXPECT_EQ(methods(served),
              (std::vector<QString>{"print_message", "print_error", "print_message"}));
    EXPECT_EQ(served[1].params(), QJsonArray{QStringLiteral("two\n")});

    // Serving cleared the bit: the next line posts again.
    messages.print_error("four\n");
    EXPECT_EQ(output_notifications(), 2u);
}

TEST_F(WorkerOutputTest, ProgressSeenRunningIsToldItsEnd) {
    progress.start("Meshing", "volume 1", true);
    auto served = serve();
    ASSERT_EQ(methods(served), (std::vector<QString>{"progress_started", "progress_percent"}));
    EXPECT_EQ(served[0].params(),
              (QJsonObject{{"title", "Meshing"}, {"info", "volume 1"}, {"has_cancel", true}}));
    EXPECT_EQ(served[1].params(), QJsonArray{0.0});

    progress.percent(25.5);
    served = serve();
    ASSERT_EQ(methods(served), (std::vector<QString>{"progress_percent"}));
    EXPECT_EQ(served[0].params(), QJsonArray{25.5});

    progress.end();
    served = serve();
    ASSERT_EQ(methods(served), (std::vector<QString>{"progress_ended"}));
    EXPECT_TRUE(served[0].params().isNull());
    EXPECT_TRUE(serve().empty());
}

TEST_F(WorkerOutputTest, ServingTriggeredByPrintingRepeatsThePercentage) {
    progress.start("Import", "", false);
    progress.percent(10);
    serve();
    messages.print_message("reading\n");
    const auto served = serve();
    ASSERT_EQ(methods(served), (std::vector<QString>{"print_message", "progress_percent"}));
    EXPECT_EQ(served[1].params(), QJsonArray{10.0});
}

TEST_F(WorkerOutputTest, SecondStartSendsANewStartedInsteadOfAnEnd) {
    progress.start("First", "", false);
    serve();
    progress.end();
    progress.start("Second", "", true);
    progress.percent(5);
    const auto served = serve();
    ASSERT_EQ(methods(served), (std::vector<QString>{"progress_started", "progress_percent"}));
    EXPECT_EQ(served[0].params().toObject().value("title").toString(), "Second");
    EXPECT_EQ(served[1].params(), QJsonArray{5.0});
}

TEST_F(WorkerOutputTest, ProgressNobodySawRunningSendsNothing) {
    progress.start("Meshing", "volume 1", true);
    progress.percent(50);
    progress.end();
    EXPECT_TRUE(serve().empty());

    // An end and a whole second progress between servings count as ended.
    progress.start("First", "", false);
    serve();
    progress.end();
    progress.start("Second", "", false);
    progress.end();
    EXPECT_TRUE(serve().empty());

    // A percentage outside a progress wakes the main thread, for nothing.
    const size_t before = output_notifications();
    progress.percent(70);
    EXPECT_EQ(output_notifications(), before + 1);
    EXPECT_TRUE(serve().empty());
}

} // namespace
