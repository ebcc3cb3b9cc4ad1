// Monitor keys: the registry of selections, the datamonitor methods that change it, and the
// answer of a request as the worker hands it back (with or without a follow-up task).

#include "RoutingTestSupport.h"

#include "json_rpc/RPCMethodWrapper.h"
#include "monitors/DataMonitorRPCHandler.h"
#include "monitors/MonitorRegistry.h"

#include <gtest/gtest.h>

namespace {

auto* const client = reinterpret_cast<ClientConnection*>(0x100); // a key, never dereferenced

TEST(MonitorRegistryTest, SelectionsByKindAndPair) {
    MonitorRegistry registry;
    const MonitorKey volume{"entity", {1, 4}};
    EXPECT_FALSE(registry.add_monitor(client, volume)) << "unknown client";
    EXPECT_TRUE(registry.copy_selection(client).empty());

    registry.add_client(client);
    EXPECT_TRUE(registry.add_monitor(client, volume));
    EXPECT_TRUE(registry.add_monitor(client, volume));
    EXPECT_TRUE(registry.add_monitor(client, {"entity", {1, 2}}));
    EXPECT_TRUE(registry.add_monitor(client, {"model", {0, 0}}));
    EXPECT_EQ(registry.copy_selection(client),
              (MonitorSelection{{"entity", {{1, 2}, {1, 4}}}, {"model", {{0, 0}}}}));

    EXPECT_TRUE(registry.remove_monitor(client, {"TIObserve", {7, 0}})) << "never added";
    EXPECT_TRUE(registry.remove_monitor(client, {"model", {0, 0}}));
    EXPECT_EQ(registry.selection_of(client)->count("model"), 0u) << "empty kinds are erased";

    registry.remove_client(client);
    EXPECT_EQ(registry.selection_of(client), nullptr);
}

TEST(MonitorRegistryTest, KeysPerClientAreBounded) {
    MonitorRegistry registry;
    registry.add_client(client);
    const int limit = static_cast<int>(MonitorRegistry::kMaxKeysPerClient);
    for (int id = 0; id < limit; ++id)
        ASSERT_TRUE(registry.add_monitor(client, {"entity", {1, id}}));
    EXPECT_TRUE(registry.add_monitor(client, {"entity", {1, 0}})) << "a known key is no new one";
    EXPECT_THROW(registry.add_monitor(client, {"model", {0, 0}}), json_rpc::RefusedCall);
    EXPECT_EQ(registry.selection_of(client)->count("model"), 0u) << "no empty kind is left";
    ASSERT_TRUE(registry.remove_monitor(client, {"entity", {1, 0}}));
    EXPECT_TRUE(registry.add_monitor(client, {"model", {0, 0}})) << "room again after a removal";

    // Through the handler the refusal is an error with its reason.
    DataMonitorRPCHandler handler(&registry, client);
    const RPCResponse refused =
        handler.exec(request_with_id("datamonitor.add_entity_monitor", 1,
                                     QJsonObject{{"entity_type", "volume"}, {"entity_id", -5}}));
    EXPECT_EQ(refused.error_code(), static_cast<int>(json_rpc::ErrorCode::LimitExceeded));
    EXPECT_FALSE(handler.has_pending_key());
}

class DataMonitorHandlerTest : public testing::Test {
protected:
    DataMonitorHandlerTest() { registry.add_client(client); }

    // Runs one request; the key it left pending, if any, lands in `pending`.
    RPCResponse run(const QString& method, const QJsonValue& params = QJsonValue()) {
        DataMonitorRPCHandler handler(&registry, client);
        const RPCResponse response = handler.exec(request_with_id(method, 1, params));
        pending = handler.take_pending_key();
        EXPECT_FALSE(handler.has_pending_key()) << "taking resets the key";
        return response;
    }

    static constexpr int invalid = static_cast<int>(json_rpc::ErrorCode::InvalidParams);

    MonitorRegistry registry;
    MonitorKey pending;
};

TEST_F(DataMonitorHandlerTest, EntityKeysUseTheCanonicalTypeCode) {
    RPCResponse response = run("datamonitor.add_entity_monitor",
                               QJsonObject{{"entity_type", "Wall"}, {"entity_id", 5}});
    EXPECT_EQ(response.result(), QJsonValue(true));
    EXPECT_EQ(pending.kind, "entity");
    EXPECT_EQ(pending.pair, std::make_pair(18, 5)) << "every CFD type is cfd_bc";

    // Unknown and unmonitored types are stored all the same.
    run("datamonitor.add_entity_monitor", QJsonObject{{"entity_type", "body"}, {"entity_id", 2}});
    EXPECT_EQ(pending.pair, std::make_pair(0, 2));
    run("datamonitor.add_entity_monitor",
        QJsonObject{{"entity_type", "gizmo"}, {"entity_id", 3.0}});
    EXPECT_EQ(pending.pair, std::make_pair(-1, 3));

    response = run("datamonitor.remove_entity_monitor",
                   QJsonObject{{"entity_type", "axis"}, {"entity_id", 5}});
    EXPECT_EQ(response.result(), QJsonValue(true));
    EXPECT_TRUE(pending.is_empty()) << "a removal queues nothing";
    EXPECT_EQ(registry.copy_selection(client).at("entity"),
              (std::set<std::pair<int, int>>{{-1, 3}, {0, 2}}));
}

TEST_F(DataMonitorHandlerTest, EntityParametersThatAreRefused) {
    const std::vector<QJsonValue> refused = {
        QJsonObject{{"entity_type", "volume"}, {"entity_id", -1}},
        QJsonObject{{"entity_type", "volume"}, {"entity_id", 2.5}},
        QJsonObject{{"entity_type", "volume"}, {"entity_id", "2"}},
        QJsonObject{{"entity_id", 2}},
        QJsonObject{{"entity_type", "volume"}},
        QJsonArray{"volume", 2},
        QJsonValue(),
    };
    for (const QJsonValue& params : refused) {
        EXPECT_EQ(run("datamonitor.add_entity_monitor", params).error_code(), invalid)
            << QJsonDocument(QJsonObject{{"p", params}}).toJson().toStdString();
        EXPECT_TRUE(pending.is_empty());
    }
    EXPECT_TRUE(registry.copy_selection(client).empty());
}

TEST_F(DataMonitorHandlerTest, EventKeysNeedAKnownEventName) {
    EXPECT_EQ(run("datamonitor.add_TIObserve_monitor", QJsonObject{{"event_name", "body_created"}})
                  .result(),
              QJsonValue(true));
    EXPECT_EQ(pending.kind, "TIObserve");
    EXPECT_EQ(pending.pair, std::make_pair(7, 0));

    EXPECT_EQ(run("datamonitor.add_TIObserve_monitor", QJsonObject{}).error_code(), invalid);
    EXPECT_EQ(run("datamonitor.add_TIObserve_monitor", QJsonObject{{"event_name", "Body_Created"}})
                  .error_code(),
              invalid);
    EXPECT_EQ(
        run("datamonitor.remove_TIObserve_monitor", QJsonObject{{"event_name", "body_created"}})
            .result(),
        QJsonValue(true));
    EXPECT_TRUE(registry.copy_selection(client).empty());
}

TEST_F(DataMonitorHandlerTest, ModelKeyEveryAddQueuesFirstData) {
    EXPECT_EQ(run("datamonitor.add_model_monitor").result(), QJsonValue(true));
    EXPECT_EQ(pending.kind, "model");
    EXPECT_EQ(run("datamonitor.add_model_monitor", QJsonObject{{"ignored", 1}}).result(),
              QJsonValue(true));
    EXPECT_EQ(pending.kind, "model") << "a second add brings the full model again";
    EXPECT_EQ(run("datamonitor.add_model_monitor", QJsonArray{}).error_code(), invalid);
    EXPECT_EQ(run("datamonitor.remove_model_monitor").result(), QJsonValue(true));
    EXPECT_TRUE(pending.is_empty());
}

TEST_F(DataMonitorHandlerTest, GraphicsKeysByTypeWord) {
    for (const char* word : {"selection", "picked", "mode_changed", "pick_type_changed"})
        EXPECT_EQ(run("datamonitor.add_graphics_monitor", QJsonObject{{"type", word}}).result(),
                  QJsonValue(true));
    EXPECT_EQ(pending.kind, "graphics");
    EXPECT_EQ(pending.pair, std::make_pair(3, 0));
    for (const QJsonValue& type : {QJsonValue("Picked"), QJsonValue(1), QJsonValue()})
        EXPECT_EQ(run("datamonitor.add_graphics_monitor", QJsonObject{{"type", type}}).error_code(),
                  invalid);
    EXPECT_EQ(run("datamonitor.remove_graphics_monitor", QJsonObject{{"type", "picked"}}).result(),
              QJsonValue(true));
    EXPECT_EQ(registry.copy_selection(client).at("graphics"),
              (std::set<std::pair<int, int>>{{0, 0}, {2, 0}, {3, 0}}));
}

TEST_F(DataMonitorHandlerTest, UnknownClientGetsFalseAndUnknownNamesAreNotFound) {
    registry.remove_client(client);
    EXPECT_EQ(run("datamonitor.add_model_monitor").result(), QJsonValue(false));
    EXPECT_TRUE(pending.is_empty());
    EXPECT_EQ(run("datamonitor.add_monitor").error_code(),
              static_cast<int>(json_rpc::ErrorCode::MethodNotFound));
    EXPECT_EQ(run("datamonitor.").error_code(),
              static_cast<int>(json_rpc::ErrorCode::MethodNotFound));
}

// What the worker hands back to the router for one datamonitor request.
TEST(MonitorRequestTest, AnAddMovesItsAnswerIntoAFollowUpTask) {
    MonitorRegistry registry;
    registry.add_client(client);
    FakeWorker worker;

    MonitorResult result = worker.process_monitor_request(
        &registry,
        std::make_unique<Task>(client, request_with_id("datamonitor.add_model_monitor", 9)));
    EXPECT_TRUE(result.is_empty());
    ASSERT_NE(result.follow_up, nullptr);
    const std::unique_ptr<Task> follow_up = std::move(result.follow_up);
    EXPECT_EQ(follow_up->client, client);
    EXPECT_TRUE(follow_up->request.is_empty());
    EXPECT_EQ(follow_up->selection, (MonitorSelection{{"model", {{0, 0}}}}));
    EXPECT_EQ(follow_up->response.id().toInt(), 9);
    EXPECT_EQ(follow_up->response.result(), QJsonValue(true));

    result = worker.process_monitor_request(
        &registry,
        std::make_unique<Task>(client, request_with_id("datamonitor.remove_model_monitor", 10)));
    EXPECT_EQ(result.follow_up, nullptr);
    EXPECT_EQ(result.id().toInt(), 10);
    EXPECT_EQ(result.result(), QJsonValue(true));

    // Without an id the add still queues first data, with nothing to answer.
    result = worker.process_monitor_request(
        &registry, std::make_unique<Task>(client, RPCRequest("datamonitor.add_model_monitor")));
    ASSERT_NE(result.follow_up, nullptr);
    EXPECT_TRUE(result.follow_up->response.is_empty());
}

} // namespace
