// Classification of received text: single messages, batches, responses from clients, and the
// error answers for what is malformed.

#include "../support/TestJson.h"
#include "json_rpc/JsonRPCParser.h"

#include <gtest/gtest.h>

namespace {

JsonRPCParser parsed(const char* text) {
    JsonRPCParser parser;
    parser.parse(QString::fromUtf8(text));
    return parser;
}

} // namespace

TEST(JsonRPCParser, NothingToActOn) {
    for (const char* text : {"", " ", "\n\t  \r\n"}) {
        const JsonRPCParser parser = parsed(text);
        EXPECT_TRUE(parser.is_empty()) << '"' << text << '"';
        EXPECT_FALSE(parser.has_errors());
        EXPECT_FALSE(parser.is_request());
    }
}

// What a single bad message draws: its error code and the id it is answered under.
TEST(JsonRPCParser, BadSingleMessages) {
    const QJsonValue null_id(QJsonValue::Null);
    struct Case {
        std::string text;
        int code;
        QJsonValue id;
    };
    const std::string request_with_id_3 = R"({"jsonrpc":"2.0","method":"tarvo.cmd","id":3,)";
    const std::string get_version_id = R"({"jsonrpc":"2.0","method":"tarvo.get_version","id":)";
    const Case cases[] = {
        // Text that is no JSON.
        {"hello", -32700, null_id},
        {R"({"jsonrpc":"2.0","method":"tarvo.cmd","params":"bar","baz])", -32700, null_id},
        // A batch cut off in the middle is one parse error, not a batch.
        {R"([{"jsonrpc":"2.0","method":"a","id":"1"}, {"jsonrpc":"2.0","method")", -32700, null_id},
        {"[1] [2]", -32700, null_id},
        {"1, 2", -32700, null_id},
        // JSON that cannot be a request; an empty array is one invalid request, not a batch.
        {"42", -32600, null_id},
        {"\"tarvo.cmd\"", -32600, null_id},
        {"null", -32600, null_id},
        {" [ ] ", -32600, null_id},
        // Without an id, or with one that cannot be trusted, the error goes under a null id.
        {R"({"jsonrpc":"2.0","method":1,"params":"bar"})", -32600, null_id},
        {R"({})", -32600, null_id},
        {R"({"jsonrpc":"2.0","method":"tarvo.cmd","id":{"a":1}})", -32600, null_id},
        {R"({"jsonrpc":"2.0","method":"tarvo.cmd","id":[1]})", -32600, null_id},
        {R"({"jsonrpc":"2.0","method":"tarvo.cmd","id":true})", -32600, null_id},
        // Beyond 2^53 - 1 an id could be altered on its way back.
        {get_version_id + "9007199254740992}", -32600, null_id},
        {get_version_id + "-9007199254740992}", -32600, null_id},
        {get_version_id + "18446744073709551616}", -32600, null_id},
        {get_version_id + "1e20}", -32600, null_id},
        // A readable id is echoed, whatever else is wrong.
        {R"({"jsonrpc":"1.0","method":"tarvo.cmd","id":12})", -32600, 12},
        {R"({"method":"tarvo.cmd","id":"q"})", -32600, "q"},
        {R"({"jsonrpc":2.0,"method":"tarvo.cmd","id":3})", -32600, 3},
        {R"({"jsonrpc":"2.0","id":3})", -32600, 3},
        {R"({"jsonrpc":"2.0","method":["tarvo.cmd"],"id":3})", -32600, 3},
        {request_with_id_3 + R"("params":null})", -32600, 3},
        {request_with_id_3 + R"("params":"bar"})", -32600, 3},
        {request_with_id_3 + R"("params":false})", -32600, 3},
        // The grammar of RFC 8259, where Qt alone would be lenient.
        {"\xEF\xBB\xBF" + request_with_id_3 + "}", -32700, null_id},
        {request_with_id_3 + R"("params":{"x":1.}})", -32700, null_id},
        {request_with_id_3 + R"("params":{"x":.5}})", -32700, null_id},
        {request_with_id_3 + R"("params":{"x":-.5}})", -32700, null_id},
        {request_with_id_3 + R"("params":{"x":01}})", -32700, null_id},
        {request_with_id_3 + R"("params":{"x":"a)" + "\t" + R"(b"}})", -32700, null_id},
        {request_with_id_3 + R"("params":{"x":"\x"}})", -32700, null_id},
        {request_with_id_3 + R"("params":{"x":"\u12G4"}})", -32700, null_id},
        {request_with_id_3 + R"("params":{"x":1}} )" + "\f", -32700, null_id},
        // Grammatical, but beyond any double: refused, never rounded.
        {request_with_id_3 + R"("params":{"x":1e999}})", -32600, null_id},
        {request_with_id_3 + R"("params":{"x":-2.5E+400}})", -32600, null_id},
        {request_with_id_3 + R"("params":{"x":)" + std::string(400, '9') + "}}", -32600, null_id},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        const JsonRPCParser parser = parsed(c.text.c_str());
        EXPECT_FALSE(parser.is_empty());
        EXPECT_FALSE(parser.is_batch());
        ASSERT_TRUE(parser.has_errors());
        EXPECT_EQ(parser.error().error_code(), c.code);
        EXPECT_EQ(wire(parser.error().to_json_string())[QLatin1String("id")], c.id);
    }
}

TEST(JsonRPCParser, ValidSingleRequests) {
    const JsonRPCParser named =
        parsed(R"({"jsonrpc":"2.0","method":"tarvo.get_volume_count","params":{"a":1},"id":"v1"})");
    ASSERT_TRUE(named.is_request());
    EXPECT_FALSE(named.is_batch());
    EXPECT_EQ(named.request().method_name(), QStringLiteral("tarvo.get_volume_count"));
    EXPECT_EQ(named.request().params(), json(R"({"a":1})"));
    EXPECT_EQ(named.request().id(), QJsonValue("v1"));

    // Positional params are valid JSON-RPC; refusing them is left to the wrappers. Members the
    // format does not know are tolerated.
    const JsonRPCParser positional =
        parsed(R"({"jsonrpc":"2.0","method":"tarvo.scale_size","params":[2,3],"id":1,"x":2})");
    ASSERT_TRUE(positional.is_request());
    EXPECT_TRUE(positional.request().params().isArray());

    const JsonRPCParser notification =
        parsed(R"({"jsonrpc":"2.0","method":"tarvo.cmd","params":{"command":"reset"}})");
    ASSERT_TRUE(notification.is_request());
    EXPECT_TRUE(notification.request().is_notification());

    // A null id asks for an answer.
    const JsonRPCParser null_id_request =
        parsed(R"({"jsonrpc":"2.0","method":"tarvo.get_version","id":null})");
    ASSERT_TRUE(null_id_request.is_request());
    EXPECT_FALSE(null_id_request.request().is_notification());
}

TEST(JsonRPCParser, NumericIdPolicy) {
    // Integers a double holds exactly are echoed digit for digit; so is a fractional id.
    for (const char* id : {"7", "-7", "0", "9007199254740991", "-9007199254740991", "1.5"}) {
        SCOPED_TRACE(id);
        const QByteArray text =
            QByteArray(R"({"jsonrpc":"2.0","method":"tarvo.get_version","id":)") + id + "}";
        const JsonRPCParser parser = parsed(text.constData());
        ASSERT_TRUE(parser.is_request());
        RPCResponse response(parser.request());
        response.set_result(1);
        EXPECT_TRUE(response.to_json_string().contains(QByteArray("\"id\":") + id))
            << response.to_json_string().constData();
    }
    // Inside a batch the same element is refused and the rest stands.
    const JsonRPCParser batch = parsed(R"([{"jsonrpc":"2.0","method":"a","id":9007199254740993},
                   {"jsonrpc":"2.0","method":"b","id":9007199254740991}])");
    ASSERT_EQ(batch.batch_errors().response_count(), 1u);
    EXPECT_TRUE(batch.batch_errors().responses()[0].id().isNull());
    ASSERT_EQ(batch.batch_requests().request_count(), 1u);
    EXPECT_EQ(batch.batch_requests().requests()[0].method_name(), QStringLiteral("b"));
}

// Numbers too small for a double are read as zero, as the conversion to a double would round
// them; in-range numbers and text that merely looks like a number stay as they are.
TEST(JsonRPCParser, NumbersFollowTheGrammar) {
    const JsonRPCParser parser = parsed(R"({"jsonrpc":"2.0","method":"a","id":1,"params":
        {"tiny":1e-400,"minus_tiny":-0.0001e-400,"small":1e-310,"big":1.5e308,"text":"1e-400",
         "plain":-12.5e-1,"zero":0e999}})");
    ASSERT_TRUE(parser.is_request()) << parser.error().to_json_string().constData();
    const QJsonObject params = parser.request().params().toObject();
    EXPECT_EQ(params["tiny"].toDouble(-1), 0.0);
    EXPECT_EQ(params["minus_tiny"].toDouble(-1), 0.0);
    EXPECT_EQ(params["small"].toDouble(), 1e-310);
    EXPECT_EQ(params["big"].toDouble(), 1.5e308);
    EXPECT_EQ(params["text"].toString(), QStringLiteral("1e-400"));
    EXPECT_EQ(params["plain"].toDouble(), -1.25);
    EXPECT_EQ(params["zero"].toDouble(-1), 0.0);
}

TEST(JsonRPCParser, ResponsesFromClients) {
    const JsonRPCParser result = parsed(R"({"jsonrpc":"2.0","result":19,"id":3})");
    EXPECT_FALSE(result.has_errors());
    EXPECT_FALSE(result.is_request());
    EXPECT_EQ(result.response().id(), QJsonValue(3));
    EXPECT_EQ(result.response().result(), QJsonValue(19));

    const JsonRPCParser error =
        parsed(R"({"jsonrpc":"2.0","error":{"code":-32601,"message":"Method not found"},
                   "id":"9"})");
    EXPECT_FALSE(error.is_request());
    EXPECT_EQ(error.response().error_code(), -32601);

    const JsonRPCParser batch = parsed(R"([{"jsonrpc":"2.0","result":1,"id":1},
                                           {"jsonrpc":"2.0","result":null,"id":2}])");
    EXPECT_TRUE(batch.is_batch());
    EXPECT_FALSE(batch.is_request());
    ASSERT_EQ(batch.batch_responses().response_count(), 2u);
    EXPECT_EQ(batch.batch_errors().response_count(), 0u);

    // An object with a method is a request even if it also carries a result.
    EXPECT_TRUE(parsed(R"({"jsonrpc":"2.0","method":"m","result":1,"id":1})").is_request());
}

// A batch of nothing but bad elements is still a batch: one error each, all under a null id.
TEST(JsonRPCParser, BatchesOfOnlyBadElements) {
    const JsonRPCParser three = parsed("[1,2,3]");
    EXPECT_TRUE(three.is_batch());
    EXPECT_FALSE(three.has_errors());
    EXPECT_EQ(three.batch_requests().request_count(), 0u);
    const RPCBatchResponse errors = three.batch_errors();
    ASSERT_EQ(errors.response_count(), 3u);
    for (const RPCResponse& error : errors.responses()) {
        EXPECT_EQ(error.error_code(), -32600);
        EXPECT_TRUE(error.id().isNull());
    }
}

TEST(JsonRPCParser, MixedBatchKeepsTextOrder) {
    const JsonRPCParser parser = parsed(R"([
        {"jsonrpc":"2.0","method":"tarvo.get_version","id":"1"},
        {"jsonrpc":"2.0","method":"tarvo.cmd","params":{"command":"reset"}},
        {"foo":"boo"},
        {"jsonrpc":"2.0","method":"tarvo.scale_size","params":{"size":2,"factor":3},"id":"2"},
        42,
        {"jsonrpc":"2.0","method":"tarvo.no_such_method","id":"5"},
        {"jsonrpc":"2.0","result":1,"id":"r"},
        {"jsonrpc":"2.0","method":"tarvo.get_volume_count","id":"9"}
    ])");
    EXPECT_TRUE(parser.is_batch());
    EXPECT_TRUE(parser.is_request());

    const RPCBatchRequest requests = parser.batch_requests();
    ASSERT_EQ(requests.request_count(), 5u);
    EXPECT_EQ(requests.notification_count(), 1u);
    const char* methods[] = {"tarvo.get_version", "tarvo.cmd", "tarvo.scale_size",
                             "tarvo.no_such_method", "tarvo.get_volume_count"};
    for (size_t i = 0; i < 5; ++i)
        EXPECT_EQ(requests.requests()[i].method_name(), QString::fromLatin1(methods[i]));

    // The object, the scalar, and the stray response: one error each, none under a live id.
    const RPCBatchResponse errors = parser.batch_errors();
    ASSERT_EQ(errors.response_count(), 3u);
    for (const RPCResponse& error : errors.responses()) {
        EXPECT_EQ(error.error_code(), -32600);
        EXPECT_TRUE(error.id().isNull());
    }
}

TEST(JsonRPCParser, ParsingAgainStartsAfresh) {
    JsonRPCParser parser;
    parser.parse(QStringLiteral("[1,2]"));
    parser.parse(QStringLiteral(R"({"jsonrpc":"2.0","method":"m","id":1})"));
    EXPECT_FALSE(parser.is_batch());
    EXPECT_TRUE(parser.is_request());
    EXPECT_EQ(parser.batch_errors().response_count(), 0u);
    parser.parse(QStringLiteral("  "));
    EXPECT_TRUE(parser.is_empty());
    EXPECT_FALSE(parser.is_request());
}

TEST(JsonRPCParser, NonAsciiTextSurvives) {
    const JsonRPCParser parser = parsed(
        R"({"jsonrpc":"2.0","method":"tarvo.cmd","params":{"command":"title 'Würfel'"},"id":1})");
    ASSERT_TRUE(parser.is_request());
    EXPECT_EQ(parser.request().params()[QLatin1String("command")].toString(),
              QStringLiteral("title 'Würfel'"));
}
