// ClientConnection: how received frames reach the router, and how responses are gathered into
// batch answers that leave in order.

#include "transport/ClientConnection.h"
#include "FakeRouter.h"
#include "WireHelpers.h"

#include <gtest/gtest.h>

namespace {

class ClientConnectionTest : public ::testing::Test {
protected:
    void SetUp() override {
        QObject::connect(&client, &ClientConnection::send_text_message,
                         [this](const QString& frame) { frames.push_back(frame); });
        QObject::connect(&client, &ClientConnection::send_binary_message,
                         [this](const QByteArray& bytes) { binary.push_back(bytes); });
        router.add_client(&client);
    }

    // Ids of the responses in an array frame, in frame order.
    static std::vector<QJsonValue> ids_of(const QString& frame) {
        std::vector<QJsonValue> ids;
        for (const QJsonValue& element : parse_frame(frame).toArray())
            ids.push_back(element.toObject().value("id"));
        return ids;
    }

    FakeRouter router;
    ClientConnection client{false};
    std::vector<QString> frames;
    std::vector<QByteArray> binary;
};

const QString kBatchOf2And1 = R"([{"jsonrpc":"2.0","method":"a","id":1},
                                  {"jsonrpc":"2.0","method":"note"},
                                  {"jsonrpc":"2.0","method":"b","id":"two"}])";

TEST_F(ClientConnectionTest, SingleMessagesGoToTheirRouterEntries) {
    client.receive_text_message(R"({"jsonrpc":"2.0","method":"get_version","id":5})");
    client.receive_text_message(R"({"jsonrpc":"2.0","result":3,"id":9})");
    client.receive_text_message(R"([{"jsonrpc":"2.0","result":1,"id":1},
                                    {"jsonrpc":"2.0","result":2,"id":2}])");
    client.receive_text_message("   ");

    ASSERT_EQ(router.requests.size(), 1u);
    EXPECT_EQ(router.requests[0].client, &client);
    EXPECT_EQ(router.requests[0].request.method_name(), "get_version");
    EXPECT_EQ(router.requests[0].request.id(), QJsonValue(5));
    ASSERT_EQ(router.responses.size(), 3u);
    EXPECT_EQ(router.responses[0].id(), QJsonValue(9));
    EXPECT_EQ(router.responses[1].id(), QJsonValue(1));
    EXPECT_EQ(router.responses[2].id(), QJsonValue(2));
    EXPECT_TRUE(router.batches.empty());
    EXPECT_TRUE(frames.empty());
}

TEST_F(ClientConnectionTest, FramesAreDroppedWithoutRouter) {
    router.remove_client(&client);
    client.receive_text_message(R"({"jsonrpc":"2.0","method":"a","id":1})");
    client.receive_text_message("{not json");
    EXPECT_TRUE(router.requests.empty());
    EXPECT_TRUE(frames.empty());
}

TEST_F(ClientConnectionTest, BatchIsAnsweredInOneFrameOnceEveryRequestIsDone) {
    client.receive_text_message(kBatchOf2And1);
    ASSERT_EQ(router.batches.size(), 1u);
    EXPECT_EQ(router.batches[0].batch.request_count(), 3u);
    EXPECT_EQ(router.batches[0].batch.notification_count(), 1u);

    client.send_response(make_response("two", 2));
    EXPECT_TRUE(frames.empty());
    client.send_response(make_response(1, 1));

    ASSERT_EQ(frames.size(), 1u);
    // Responses stand in the order in which they were done, not in request order.
    EXPECT_EQ(ids_of(frames[0]), (std::vector<QJsonValue>{"two", 1}));

    // The batch is gone: the next response is a frame of its own again.
    client.send_response(make_response(3, 3));
    ASSERT_EQ(frames.size(), 2u);
    EXPECT_EQ(parse_frame(frames[1])["id"], QJsonValue(3));
}

TEST_F(ClientConnectionTest, LaterBatchWaitsForAnEarlierOne) {
    client.receive_text_message(R"([{"jsonrpc":"2.0","method":"a","id":1},
                                    {"jsonrpc":"2.0","method":"b","id":2}])");
    client.receive_text_message(R"([{"jsonrpc":"2.0","method":"c","id":3}])");

    client.send_response(make_response(3, 3));
    client.send_response(make_response(1, 1));
    EXPECT_TRUE(frames.empty());
    client.send_response(make_response(2, 2));

    ASSERT_EQ(frames.size(), 2u);
    EXPECT_EQ(ids_of(frames[0]), (std::vector<QJsonValue>{1, 2}));
    EXPECT_EQ(ids_of(frames[1]), (std::vector<QJsonValue>{3}));
}

TEST_F(ClientConnectionTest, RepeatedIdFillsTheOlderBatchFirst) {
    client.receive_text_message(R"([{"jsonrpc":"2.0","method":"a","id":7}])");
    client.receive_text_message(R"([{"jsonrpc":"2.0","method":"b","id":7}])");

    client.send_response(make_response(7, "first"));
    ASSERT_EQ(frames.size(), 1u);
    EXPECT_EQ(parse_frame(frames[0])[0]["result"], QJsonValue("first"));
    client.send_response(make_response(7, "second"));
    ASSERT_EQ(frames.size(), 2u);
    EXPECT_EQ(parse_frame(frames[1])[0]["result"], QJsonValue("second"));
}

TEST_F(ClientConnectionTest, MalformedElementsLeadTheBatchAnswer) {
    client.receive_text_message(R"([17, {"jsonrpc":"2.0","method":"a","id":4},
                                    {"jsonrpc":"2.0","method":"b","id":5}])");
    ASSERT_EQ(router.batches.size(), 1u);
    EXPECT_EQ(router.batches[0].batch.request_count(), 2u);

    client.send_response(make_response(5, 5));
    client.send_response(make_response(4, 4));
    ASSERT_EQ(frames.size(), 1u);
    const QJsonArray answer = parse_frame(frames[0]).toArray();
    ASSERT_EQ(answer.size(), 3);
    EXPECT_EQ(answer[0]["error"]["code"].toInt(), -32600);
    EXPECT_EQ(answer[1]["id"], QJsonValue(5));
    EXPECT_EQ(answer[2]["id"], QJsonValue(4));
}

// Batches that never complete can't pile up: past the bound a batch is refused whole, at once,
// and the ones already waiting still complete.
TEST_F(ClientConnectionTest, PendingBatchesAreBounded) {
    for (std::size_t i = 0; i < ClientConnection::kMaxPendingBatches; ++i)
        client.receive_text_message(
            QStringLiteral(R"([{"jsonrpc":"2.0","method":"a","id":%1}])").arg(i));
    client.receive_text_message(R"([{"jsonrpc":"2.0","method":"a","id":"late"}])");
    EXPECT_EQ(router.batches.size(), ClientConnection::kMaxPendingBatches);
    ASSERT_EQ(frames.size(), 1u);
    EXPECT_EQ(parse_frame(frames[0])["error"]["code"].toInt(), -32000);
    EXPECT_TRUE(parse_frame(frames[0])["id"].isNull());

    for (std::size_t i = 0; i < ClientConnection::kMaxPendingBatches; ++i)
        client.send_response(RPCResponse(router.batches[i].batch.requests()[0], 1));
    EXPECT_EQ(frames.size(), 1u + ClientConnection::kMaxPendingBatches);
}

TEST_F(ClientConnectionTest, SingleResponseIsLostWhileABatchIsPending) {
    client.receive_text_message(R"([{"jsonrpc":"2.0","method":"a","id":1}])");
    client.send_response(make_response(99, "interrupt answer"));
    EXPECT_TRUE(frames.empty());

    client.send_response(make_response(1, 1));
    ASSERT_EQ(frames.size(), 1u);
    EXPECT_EQ(ids_of(frames[0]), (std::vector<QJsonValue>{1}));
}

TEST_F(ClientConnectionTest, NotificationsAndBinaryMessagesLeaveAtOnce) {
    client.receive_text_message(R"([{"jsonrpc":"2.0","method":"a","id":1}])");

    client.send_notification(RPCRequest("print_message", QJsonArray{"hello"}));
    client.send_notifications(
        RPCBatchRequest({RPCRequest("progress_started"), RPCRequest("progress_ended")}));
    client.send_binary({"graphics.image_data",
                        QJsonObject{{"id", 3}, {"width", 2}, {"height", 1}, {"format", "rgb"}},
                        QByteArray("\x01\x02\x03\x04\x05\x06\x00\x00", 8)});
    client.send_binary({"empty", QJsonObject(), QByteArray()});

    ASSERT_EQ(frames.size(), 4u);
    EXPECT_EQ(parse_frame(frames[0])["params"], QJsonValue(QJsonArray{"hello"}));
    EXPECT_EQ(parse_frame(frames[1]).toArray().size(), 2);

    // Each binary message is announced by a header notification with its description.
    const QJsonObject header = parse_frame(frames[2]).toObject();
    EXPECT_EQ(header["method"], QJsonValue("binary_header.graphics.image_data"));
    EXPECT_FALSE(header.contains("id"));
    EXPECT_EQ(header["params"]["width"], QJsonValue(2));
    EXPECT_FALSE(parse_frame(frames[3]).toObject().contains("params"));

    ASSERT_EQ(binary.size(), 2u);
    EXPECT_EQ(binary[0].size(), 8);
    EXPECT_TRUE(binary[1].isEmpty());
}

} // namespace
