// Publish/subscribe: the registry on its own, and the five methods as clients call them through
// the router (they run on the spot, so no serving is needed).

#include "RoutingTestSupport.h"

#include "monitors/NotificationRegistry.h"
#include "routing/TarvoMessageRouter.h"

#include <gtest/gtest.h>

namespace {

TEST(NotificationRegistryTest, ClientsAndSubscribers) {
    NotificationRegistry registry;
    auto* first = reinterpret_cast<ClientConnection*>(0x100); // keys only
    auto* second = reinterpret_cast<ClientConnection*>(0x200);

    EXPECT_FALSE(registry.subscribe(first, "news")) << "unknown client";
    registry.add_client(nullptr);
    registry.add_client(second);
    registry.add_client(first);
    EXPECT_TRUE(registry.subscribe(second, "news"));
    EXPECT_TRUE(registry.subscribe(first, "news"));
    EXPECT_TRUE(registry.subscribe(first, "news")) << "again: still true";
    EXPECT_EQ(registry.subscribers("news"), (std::vector<ClientConnection*>{first, second}));

    registry.add_client(first); // known: keeps its subscriptions
    EXPECT_TRUE(registry.unsubscribe(first, "never"));
    EXPECT_TRUE(registry.unsubscribe(first, "news"));
    EXPECT_EQ(registry.subscribers("news"), std::vector<ClientConnection*>{second});

    registry.remove_client(second);
    registry.remove_client(nullptr);
    registry.add_client(second);
    EXPECT_TRUE(registry.subscribers("news").empty()) << "a returning client starts afresh";
}

class PubSubTest : public testing::Test {
protected:
    PubSubTest() {
        router.add_client(a.connection);
        router.add_client(b.connection);
    }

    // Calls a pubsub method for `client` and returns its one response.
    QJsonObject call(RecordingClient& client, const QString& method, const QJsonValue& params) {
        client.take();
        router.process_request(client.connection, request_with_id(method, ++id, params));
        // The publisher may also be a subscriber: its own message comes before the answer.
        auto frames = client.take();
        EXPECT_FALSE(frames.empty());
        if (frames.empty())
            return {};
        const QJsonObject response = frames.back().object();
        frames.pop_back();
        delivered_to_caller = frames;
        EXPECT_EQ(response.value("id").toInt(), id);
        return response;
    }

    static int error_code(const QJsonObject& response) {
        return response.value("error").toObject().value("code").toInt();
    }

    FakeWorker worker;
    RecordingClient a;
    RecordingClient b;
    TarvoMessageRouter router{&worker, false};
    int id = 0;
    std::vector<QJsonDocument> delivered_to_caller;
};

// Non-string names and descriptions are read as empty, not refused.
TEST_F(PubSubTest, NonStringTextIsReadAsEmpty) {
    call(b, "pubsub.register_notification",
         QJsonObject{{"notification", "quiet"}, {"data_description", 12}});
    EXPECT_EQ(call(b, "pubsub.list", QJsonValue()).value("result").toObject().value("quiet"),
              QJsonValue(""));

    EXPECT_EQ(call(b, "pubsub.subscribe", QJsonObject{{"notification", 7}}).value("result"),
              QJsonValue(true));
    call(a, "pubsub.publish", QJsonObject{{"notification", ""}, {"data", 1}});
    const auto frames = b.take();
    ASSERT_EQ(frames.size(), 1u);
    EXPECT_EQ(frames[0].object().value("method").toString(), "");
}

// The publisher hearing itself and a bystander hearing nothing are tests/e2e/test_pubsub.py's.
TEST_F(PubSubTest, AClientThatUnsubscribedHearsNothing) {
    call(a, "pubsub.subscribe", QJsonObject{{"notification", "unregistered"}});
    call(a, "pubsub.unsubscribe", QJsonObject{{"notification", "unregistered"}});
    const QJsonObject response =
        call(a, "pubsub.publish", QJsonObject{{"notification", "unregistered"}});
    EXPECT_TRUE(response.value("result").isNull());
    EXPECT_TRUE(delivered_to_caller.empty());
}

TEST_F(PubSubTest, RefusedParametersAndUnknownMethods) {
    const int invalid = static_cast<int>(json_rpc::ErrorCode::InvalidParams);
    const int not_found = static_cast<int>(json_rpc::ErrorCode::MethodNotFound);
    EXPECT_EQ(error_code(call(a, "pubsub.subscribe", QJsonObject{})), invalid);
    EXPECT_EQ(error_code(call(a, "pubsub.subscribe", QJsonArray{"print_message"})), invalid);
    EXPECT_EQ(error_code(call(a, "pubsub.publish", QJsonObject{{"data", 1}})), invalid);
    EXPECT_EQ(
        error_code(call(a, "pubsub.register_notification", QJsonObject{{"notification", "x"}})),
        invalid);
    EXPECT_EQ(error_code(call(a, "pubsub.Subscribe", QJsonObject{{"notification", "x"}})),
              not_found);
    EXPECT_EQ(error_code(call(a, "pubsub.", QJsonObject{})), not_found);
}

// Every store that a client can grow is bounded; past the bound the call is refused with
// -32000 and a reason, and nothing is stored.
TEST_F(PubSubTest, StoresAreBoundedWithAClearError) {
    const int limit = static_cast<int>(json_rpc::ErrorCode::LimitExceeded);
    const QString long_name(NotificationRegistry::kMaxNameLength + 1, QLatin1Char('n'));
    const QString long_text(NotificationRegistry::kMaxDescriptionLength + 1, QLatin1Char('d'));
    struct Case {
        const char* what;
        QString method;
        QJsonObject params;
    } cases[] = {
        {"name too long", "pubsub.subscribe", {{"notification", long_name}}},
        {"name too long",
         "pubsub.register_notification",
         {{"notification", long_name}, {"data_description", ""}}},
        {"description too long",
         "pubsub.register_notification",
         {{"notification", "fine"}, {"data_description", long_text}}},
    };
    for (const Case& c : cases) {
        const QJsonObject response = call(a, c.method, c.params);
        EXPECT_EQ(error_code(response), limit) << c.what;
        EXPECT_TRUE(response.value("error").toObject().value("data").isString()) << c.what;
    }
    const QJsonObject list = call(a, "pubsub.list", QJsonValue()).value("result").toObject();
    EXPECT_FALSE(list.contains("fine"));

    for (size_t i = 0; i < NotificationRegistry::kMaxSubscriptionsPerClient; ++i)
        ASSERT_EQ(call(a, "pubsub.subscribe", QJsonObject{{"notification", QString::number(i)}})
                      .value("result"),
                  QJsonValue(true));
    EXPECT_EQ(error_code(call(a, "pubsub.subscribe", QJsonObject{{"notification", "one more"}})),
              limit);
    EXPECT_EQ(call(a, "pubsub.subscribe", QJsonObject{{"notification", "0"}}).value("result"),
              QJsonValue(true))
        << "an existing subscription is no new entry";
    EXPECT_EQ(call(b, "pubsub.subscribe", QJsonObject{{"notification", "x"}}).value("result"),
              QJsonValue(true))
        << "the bound is per client";

    // Five names are registered by the router itself.
    for (size_t i = 5; i < NotificationRegistry::kMaxRegisteredNames; ++i)
        ASSERT_EQ(call(a, "pubsub.register_notification",
                       QJsonObject{{"notification", QString::number(i)}, {"data_description", ""}})
                      .value("result"),
                  QJsonValue(true));
    EXPECT_EQ(error_code(call(b, "pubsub.register_notification",
                              QJsonObject{{"notification", "late"}, {"data_description", ""}})),
              limit);
}

TEST_F(PubSubTest, NotificationWithoutIdIsRunButNotAnswered) {
    router.process_request(a.connection,
                           RPCRequest("pubsub.subscribe", QJsonObject{{"notification", "chat"}}));
    EXPECT_TRUE(a.take().empty());
    call(b, "pubsub.publish", QJsonObject{{"notification", "chat"}, {"data", 2}});
    EXPECT_EQ(a.take().size(), 1u);
}

} // namespace
