// RPCRequestHandler::exec: the fixed order unknown method -> params -> invoke, the error answers,
// and notifications.

#include "../support/TestJson.h"
#include "json_rpc/GenericRPCMethodWrapper.h"
#include "json_rpc/RPCRequestHandler.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

// Records what happened to the wrappers it hands out.
struct Journal {
    int created = 0;
    int destroyed = 0;
    int invoked = 0;
    QJsonValue last_params = QJsonValue(QJsonValue::Undefined);
};

class ProbeWrapper : public RPCMethodWrapper {
public:
    enum class Mode { Accept, Refuse, Throw, ThrowUnknown, OverLimit };
    ProbeWrapper(Journal& journal, Mode mode) : journal(journal), mode(mode) { ++journal.created; }
    ~ProbeWrapper() override { ++journal.destroyed; }

    bool process_params(const QJsonValue& params) override {
        journal.last_params = params;
        return mode != Mode::Refuse;
    }
    QJsonValue invoke() override {
        ++journal.invoked;
        if (mode == Mode::Throw)
            throw std::runtime_error("kernel gave up");
        if (mode == Mode::ThrowUnknown)
            throw 42;
        if (mode == Mode::OverLimit)
            throw json_rpc::RefusedCall(json_rpc::ErrorCode::LimitExceeded, "too many");
        return QStringLiteral("done");
    }

private:
    Journal& journal;
    Mode mode;
};

class SessionHandler : public RPCRequestHandler {
public:
    explicit SessionHandler(Journal& journal) : journal(journal) {}

protected:
    std::unique_ptr<RPCMethodWrapper> create_method(const QString& method_name) override {
        const QString name = last_section(method_name);
        if (name == QLatin1String("probe"))
            return std::make_unique<ProbeWrapper>(journal, ProbeWrapper::Mode::Accept);
        if (name == QLatin1String("probe_refuse"))
            return std::make_unique<ProbeWrapper>(journal, ProbeWrapper::Mode::Refuse);
        if (name == QLatin1String("probe_throw"))
            return std::make_unique<ProbeWrapper>(journal, ProbeWrapper::Mode::Throw);
        if (name == QLatin1String("probe_over_limit"))
            return std::make_unique<ProbeWrapper>(journal, ProbeWrapper::Mode::OverLimit);
        if (name == QLatin1String("optional_a"))
            return std::make_unique<GenericRPCMethodWrapper<int(int)>>(
                [](int a) { return a; },
                std::vector<json_rpc::ParamSpec>{json_rpc::optional_param("a", 5)});
        if (name == QLatin1String("probe_throw_unknown"))
            return std::make_unique<ProbeWrapper>(journal, ProbeWrapper::Mode::ThrowUnknown);
        if (name == QLatin1String("scale_size"))
            return std::make_unique<GenericRPCMethodWrapper<double(double, double)>>(
                [](double size, double factor) { return size * factor; },
                std::vector<json_rpc::ParamSpec>{json_rpc::param("size"),
                                                 json_rpc::param("factor")});
        if (name == QLatin1String("miswired"))
            return std::make_unique<GenericRPCMethodWrapper<int(int, int)>>(
                [](int a, int) { return a; },
                std::vector<json_rpc::ParamSpec>{json_rpc::param("a")});
        return nullptr;
    }

private:
    Journal& journal;
};

RPCRequest request(const char* method, const QJsonValue& params, const QJsonValue& id) {
    RPCRequest r(QString::fromLatin1(method), params);
    r.set_id(id);
    return r;
}

} // namespace

TEST(RPCRequestHandler, FixedOrderAndErrorCodes) {
    Journal journal;
    SessionHandler handler(journal);

    const RPCResponse ok = handler.exec(request("tarvo.probe", json(R"({"x":1})"), 5));
    EXPECT_EQ(ok.id(), QJsonValue(5));
    EXPECT_EQ(ok.result(), QJsonValue("done"));
    EXPECT_EQ(journal.last_params, json(R"({"x":1})"));

    const RPCResponse unknown = handler.exec(request("tarvo.nope", QJsonValue::Null, "u"));
    EXPECT_EQ(unknown.error_code(), -32601);
    EXPECT_EQ(unknown.id(), QJsonValue("u"));

    const int invoked_before = journal.invoked;
    const RPCResponse refused = handler.exec(request("tarvo.probe_refuse", json("{}"), 6));
    EXPECT_EQ(refused.error_code(), -32602);
    EXPECT_EQ(refused.id(), QJsonValue(6));
    EXPECT_EQ(journal.invoked, invoked_before) << "invoke must not follow a refusal";

    // A request without params means no arguments: the wrapper sees an empty object, so that
    // optional parameters take their defaults and required ones are missed by name.
    handler.exec(request("tarvo.probe", QJsonValue::Undefined, 7));
    EXPECT_EQ(journal.last_params, json("{}"));
    EXPECT_EQ(handler.exec(request("optional_a", QJsonValue::Undefined, 8)).result(),
              QJsonValue(5));
    EXPECT_EQ(handler.exec(request("scale_size", QJsonValue::Undefined, 9)).error_code(), -32602);

    EXPECT_EQ(journal.created, journal.destroyed) << "every wrapper is destroyed by exec";
}

TEST(RPCRequestHandler, ExceptionsStopAtExec) {
    Journal journal;
    SessionHandler handler(journal);

    const RPCResponse thrown = handler.exec(request("tarvo.probe_throw", QJsonValue::Null, 1));
    EXPECT_EQ(thrown.error_code(), -32603);
    EXPECT_EQ(thrown.id(), QJsonValue(1));
    EXPECT_EQ(wire(thrown.to_json_string())[QLatin1String("error")][QLatin1String("data")],
              QJsonValue("kernel gave up"));

    const RPCResponse odd = handler.exec(request("probe_throw_unknown", QJsonValue::Null, 2));
    EXPECT_EQ(odd.error_code(), -32603);

    // A refusal with a reason keeps its own code and tells the reason.
    const RPCResponse over = handler.exec(request("probe_over_limit", QJsonValue::Null, 4));
    EXPECT_EQ(over.error_code(), -32000);
    EXPECT_EQ(wire(over.to_json_string())[QLatin1String("error")][QLatin1String("data")],
              QJsonValue("too many"));

    // A table whose names do not match its function is caught, not read past.
    const RPCResponse miswired = handler.exec(request("tarvo.miswired", json(R"({"a":1})"), 3));
    EXPECT_EQ(miswired.error_code(), -32603);

    EXPECT_EQ(journal.created, 3);
    EXPECT_EQ(journal.destroyed, 3);
}

TEST(RPCRequestHandler, NotificationsRunButAreNeverAnswered) {
    Journal journal;
    SessionHandler handler(journal);

    EXPECT_TRUE(handler.exec(RPCRequest(QStringLiteral("tarvo.probe"))).is_empty());
    EXPECT_EQ(journal.invoked, 1);
    EXPECT_TRUE(handler.exec(RPCRequest(QStringLiteral("tarvo.nope"))).is_empty());
    EXPECT_TRUE(handler.exec(RPCRequest(QStringLiteral("tarvo.probe_refuse"))).is_empty());
    EXPECT_TRUE(handler.exec(RPCRequest(QStringLiteral("tarvo.probe_throw"))).is_empty());
    EXPECT_EQ(journal.invoked, 2);

    // A null id is not a notification: it is answered.
    EXPECT_FALSE(
        handler.exec(request("tarvo.probe", QJsonValue::Null, QJsonValue::Null)).is_empty());
}

TEST(RPCMethodWrapperDefault, AcceptsOnlyAbsentOrObjectParams) {
    struct Parameterless : RPCMethodWrapper {
        QJsonValue invoke() override { return QJsonValue::Null; }
    } wrapper;
    EXPECT_TRUE(wrapper.process_params(QJsonValue::Null));
    EXPECT_TRUE(wrapper.process_params(QJsonValue::Undefined));
    EXPECT_TRUE(wrapper.process_params(json(R"({"ignored":1})")));
    for (const char* refused : {"[]", "[1]", "\"x\"", "1", "true"})
        EXPECT_FALSE(wrapper.process_params(json(refused))) << refused;
}
