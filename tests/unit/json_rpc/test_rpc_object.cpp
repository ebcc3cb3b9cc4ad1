// Message objects: what they hold, and the text they put on the wire.

#include "../support/TestJson.h"
#include "json_rpc/RPCObject.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

using json_rpc::ErrorCode;

namespace {

RPCRequest request_with_id(const char* method, const QJsonValue& id) {
    RPCRequest request{QString::fromLatin1(method)};
    request.set_id(id);
    return request;
}

} // namespace

TEST(RPCObject, EveryWrittenMessageCarriesTheVersionTag) {
    const RPCRequest notification(QStringLiteral("print_message"));
    RPCResponse result(request_with_id("tarvo.get_version", 1));
    result.set_result(QStringLiteral("19.0"));
    const RPCResponse error = RPCResponse::error(QJsonValue::Null, ErrorCode::ParseError);
    const QByteArray batch = RPCBatchRequest({notification, notification}).to_json_string();
    for (const QByteArray& text :
         {notification.to_json_string(), result.to_json_string(), error.to_json_string(), batch}) {
        const QJsonValue message = wire(text);
        for (const QJsonValue one : message.isArray() ? message.toArray() : QJsonArray{message})
            EXPECT_EQ(one[QLatin1String("jsonrpc")], QJsonValue(QStringLiteral("2.0")))
                << text.constData();
    }
}

TEST(RPCObject, DefaultObjectsAreEmptyAndNothingElseIs) {
    EXPECT_TRUE(RPCResponse().is_empty());
    EXPECT_TRUE(RPCRequest().is_empty());
    // A null result is still an answer that goes to the client.
    RPCResponse response(request_with_id("tarvo.cmd", 4));
    response.set_result(QJsonValue::Null);
    EXPECT_FALSE(response.is_empty());
    EXPECT_TRUE(wire(response.to_json_string()).toObject().contains(QLatin1String("result")));
}

TEST(RPCRequest, NotificationsAndParams) {
    RPCRequest request(QStringLiteral("pubsub.list"));
    EXPECT_TRUE(request.is_notification());
    // Absent params read as Null, never Undefined: parameterless wrappers rely on it.
    EXPECT_TRUE(request.params().isNull());
    EXPECT_FALSE(request.json().contains(QLatin1String("params")));

    // A null id still makes a request that expects an answer.
    request.set_id(QJsonValue::Null);
    EXPECT_FALSE(request.is_notification());
    request.set_id(QJsonValue::Undefined);
    EXPECT_TRUE(request.is_notification());
}

TEST(RPCResponse, ErrorsCarryCodeTextAndOptionalData) {
    const struct {
        ErrorCode code;
        int number;
        const char* text;
    } table[] = {{ErrorCode::ParseError, -32700, "Parse error"},
                 {ErrorCode::InvalidRequest, -32600, "Invalid Request"},
                 {ErrorCode::MethodNotFound, -32601, "Method not found"},
                 {ErrorCode::InvalidParams, -32602, "Invalid params"},
                 {ErrorCode::InternalError, -32603, "Internal error"}};
    for (const auto& row : table) {
        const RPCResponse response = RPCResponse::error(QStringLiteral("x"), row.code);
        EXPECT_TRUE(response.is_error());
        EXPECT_EQ(response.error_code(), row.number);
        const QJsonValue text = wire(response.to_json_string());
        EXPECT_EQ(text[QLatin1String("id")], QJsonValue(QStringLiteral("x")));
        EXPECT_EQ(text[QLatin1String("error")][QLatin1String("code")], QJsonValue(row.number));
        EXPECT_EQ(text[QLatin1String("error")][QLatin1String("message")].toString(),
                  QString::fromLatin1(row.text));
        EXPECT_FALSE(text[QLatin1String("error")].toObject().contains(QLatin1String("data")));
        EXPECT_FALSE(text.toObject().contains(QLatin1String("result")));
    }

    // An unreadable id is answered as null, and data travels when given.
    const RPCResponse with_data = RPCResponse::error(
        QJsonValue::Undefined, ErrorCode::InternalError, QStringLiteral("out of memory"));
    const QJsonValue text = wire(with_data.to_json_string());
    EXPECT_TRUE(text.toObject().contains(QLatin1String("id")));
    EXPECT_TRUE(text[QLatin1String("id")].isNull());
    EXPECT_EQ(text[QLatin1String("error")][QLatin1String("data")],
              QJsonValue(QStringLiteral("out of memory")));

    // A result replaces an error: a response never holds both.
    RPCResponse replaced = RPCResponse::error(2, ErrorCode::InvalidParams);
    replaced.set_result(5);
    EXPECT_FALSE(replaced.is_error());
    EXPECT_EQ(replaced.error_code(), 0);
    EXPECT_EQ(replaced.result(), QJsonValue(5));
}

TEST(RPCBatch, CountsAndArrayText) {
    RPCRequest with_id(QStringLiteral("tarvo.get_version"));
    with_id.set_id(1);
    const RPCBatchRequest batch({with_id, RPCRequest(QStringLiteral("tarvo.cmd"))});
    EXPECT_EQ(batch.request_count(), 2u);
    EXPECT_EQ(batch.notification_count(), 1u);

    RPCBatchResponse responses;
    EXPECT_EQ(responses.to_json_string(), QByteArray("[]"));
    RPCResponse first(with_id);
    first.set_result(1);
    responses.add_response(first);
    responses.add_response(RPCResponse::error(QJsonValue::Null, ErrorCode::InvalidRequest));
    const RPCBatchResponse copy(responses);
    responses.add_response(first);
    EXPECT_EQ(copy.response_count(), 2u) << "a copy does not share its responses";
    const QJsonValue text = wire(copy.to_json_string());
    ASSERT_EQ(text.toArray().size(), 2);
    EXPECT_EQ(text[1][QLatin1String("error")][QLatin1String("code")], QJsonValue(-32600));
}

// The message text is written by the library's own writer. Qt's compact writer is the reference:
// the two must agree byte for byte on every kind of value, so that clients see one format.
TEST(RPCObject, TextIsWhatQtsCompactWriterWouldWrite) {
    const QJsonObject nested{
        {QStringLiteral("b"), QJsonArray{1, 2.5, -0.125, QJsonValue::Null, true, false}},
        {QStringLiteral("a"), QJsonObject{{QStringLiteral("deep"), QJsonArray{QJsonObject{}}}}},
        {QStringLiteral("empty"), QJsonArray{}},
    };
    const std::vector<QJsonValue> results{
        QJsonValue::Null,
        true,
        0,
        -7,
        qint64(9007199254740993), // beyond 2^53: must keep every digit
        qint64(-9223372036854775807LL - 1),
        3.0,
        0.1,
        -2.5e-8,
        1e20,
        1.7976931348623157e308,
        5e-324,
        QStringLiteral(""),
        QStringLiteral("plain ascii"),
        QStringLiteral("quote \" backslash \\ slash / tab\t newline\n cr\r bs\b ff\f"),
        QString(QChar(0x01)) + QChar(0x1f) + QChar(0x7f),
        QStringLiteral("Gr\u00fc\u00dfe \u2013 \u4e2d\u6587 \U0001F600"),
        QString(QChar(0xd800)) + QStringLiteral("lone surrogate"),
        nested,
        QJsonArray{nested, QStringLiteral("x\ny"), QJsonArray{QJsonArray{}}},
    };
    for (const QJsonValue& result : results) {
        RPCResponse response(request_with_id("tarvo.cmd", QStringLiteral("id \"7\"")));
        response.set_result(result);
        const QByteArray expected = QJsonDocument(response.json()).toJson(QJsonDocument::Compact);
        EXPECT_EQ(response.to_json_string().toStdString(), expected.toStdString());
    }

    // Non-finite numbers have no JSON form; both writers send null.
    RPCResponse infinite(request_with_id("tarvo.cmd", 1));
    infinite.set_result(std::numeric_limits<double>::infinity());
    EXPECT_EQ(infinite.to_json_string().toStdString(),
              QJsonDocument(infinite.json()).toJson(QJsonDocument::Compact).toStdString());

    std::vector<RPCRequest> notifications;
    for (const QJsonValue& result : results)
        notifications.emplace_back(QStringLiteral("print_message"), QJsonArray{result});
    QJsonArray array;
    for (const RPCRequest& notification : notifications)
        array.append(notification.json());
    EXPECT_EQ(RPCBatchRequest(notifications).to_json_string().toStdString(),
              QJsonDocument(array).toJson(QJsonDocument::Compact).toStdString());
}
