// Every row of the table, called through the request handler with parameters of the wrong JSON
// type, out-of-range numbers, odd nesting and missing names: each call must come back as a
// well-formed response (a result, or -32602), and the kernel must still work afterwards.
//
// The parameter names are read from the table's own source (the row lines of
// server/methods/*_methods.cpp and the members of the hand-written wrappers), so a new row is swept
// without touching this file; the parse is checked against the compiled table's names.
#include "MethodTestSupport.h"

#include "tarvo/TarvoInterface.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QHash>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <optional>
#include <string>
#include <vector>

namespace {

// Input parameter names per method, as the table's source declares them.
QHash<QString, QStringList> parameters_from_source() {
    QHash<QString, QStringList> table;
    const QDir methods(QStringLiteral(TARVO_SOURCE_DIR "/server/methods"));
    const QRegularExpression row_line(QString::fromLatin1(R"re(^\s*row\("(\w+)")re"));
    const QRegularExpression input(
        QString::fromLatin1(R"re(\b(?:optional_param|param)\("(\w+)")re"));
    const QRegularExpression hand_line(QString::fromLatin1(R"re(^\s*hand<(\w+)>\("(\w+)"\))re"));
    QHash<QString, QString> hand_rows; // wrapper struct -> method
    for (const QString& file : methods.entryList({QStringLiteral("*_methods.cpp")})) {
        QFile source(methods.filePath(file));
        if (!source.open(QIODevice::ReadOnly))
            continue;
        for (const QString& line : QString::fromUtf8(source.readAll()).split('\n')) {
            if (const auto row = row_line.match(line); row.hasMatch()) {
                QStringList names;
                for (auto it = input.globalMatch(line); it.hasNext();)
                    names << it.next().captured(1);
                table.insert(row.captured(1), names);
            } else if (const auto hand = hand_line.match(line); hand.hasMatch()) {
                hand_rows.insert(hand.captured(1), hand.captured(2));
            }
        }
    }
    // A hand-written wrapper keeps each input in a member of the parameter's name; the presence
    // flags (has_*) are not parameters.
    QFile header(methods.filePath(QStringLiteral("HandWrittenWrappers.h")));
    if (header.open(QIODevice::ReadOnly)) {
        const QRegularExpression opening(QString::fromLatin1(R"re(^struct (\w+) )re"));
        const QRegularExpression member(
            QString::fromLatin1(R"re(^\s+[\w:<>]+ (\w+)(?: = [^;]*)?;$)re"));
        QString method;
        for (const QString& line : QString::fromUtf8(header.readAll()).split('\n')) {
            if (const auto open = opening.match(line); open.hasMatch()) {
                method = hand_rows.value(open.captured(1));
                if (!method.isEmpty())
                    table.insert(method, {});
            } else if (const auto field = member.match(line);
                       field.hasMatch() && !method.isEmpty() &&
                       !field.captured(1).startsWith(QStringLiteral("has_"))) {
                table[method] << field.captured(1);
            }
        }
    }
    return table;
}

QJsonValue nested(int depth) {
    QJsonValue value = QJsonArray{};
    for (int i = 0; i < depth; ++i)
        value = QJsonArray{value};
    return value;
}

// Values of every JSON type and the awkward corners of each. Any of them is the right type for
// some parameter, so the kernel is reached with it too (negative and huge ids, empty lists,
// strings that are no command).
std::vector<QJsonValue> odd_values() {
    return {
        QJsonValue(QJsonValue::Null),
        QJsonValue(true),
        QJsonValue(-1),
        QJsonValue(1.5),
        QJsonValue(2147483648.0),
        QJsonValue(-1e308),
        QJsonValue(9007199254740993.0),
        QJsonValue(QStringLiteral("1")),
        QJsonValue(QString(70000, QChar('x'))),
        QJsonValue(QStringLiteral("a\u0000b")),
        QJsonObject{{QStringLiteral("a"), QJsonArray{1}}},
        QJsonArray{1, QStringLiteral("a"), QJsonValue(QJsonValue::Null)},
        QJsonArray{1.5, -1e308},
        nested(40),
    };
}

// What the other parameters hold while one is odd: plausible values of each type, so that the
// conversion reaches the odd one (arguments are converted in order and the first refusal stops).
std::vector<QJsonValue> base_values() {
    return {QJsonValue(1), QJsonValue(QString()), QJsonValue(false),
            QJsonArray{},  QJsonArray{1, 1, 1},   QJsonObject{}};
}

// Parameters that the method's wrapper accepts, found by trying every combination of a few
// values per name without calling the kernel: the one background against which each single
// odd value is sure to be read. Empty when no combination is accepted (lists of strings, say).
std::optional<QJsonObject> accepted_params(const QString& method, const QStringList& inputs) {
    const std::vector<QJsonValue> candidates = {
        QJsonValue(1), QJsonValue(QString()), QJsonValue(false), QJsonArray{1, 1, 1}, QJsonArray{}};
    TarvoRPCRequestHandler handler;
    const auto wrapper = handler.create_method(method);
    std::vector<size_t> pick(static_cast<size_t>(inputs.size()), 0);
    for (;;) {
        QJsonObject params;
        for (size_t i = 0; i < pick.size(); ++i)
            params.insert(inputs[static_cast<qsizetype>(i)], candidates[pick[i]]);
        if (wrapper->process_params(params))
            return params;
        size_t i = 0;
        while (i < pick.size() && ++pick[i] == candidates.size())
            pick[i++] = 0;
        if (i == pick.size())
            return std::nullopt;
    }
}

struct Silence : TarvoMessageHandler {
    void print_message(const char*) override {}
    void print_error(const char*) override {}
};

// Empty when the response is one a client may get for a call with bad parameters.
std::string fault_of(const RPCResponse& response, int id) {
    const QJsonObject& object = response.json();
    if (object.value(QStringLiteral("jsonrpc")) != QJsonValue(QStringLiteral("2.0")))
        return "no jsonrpc member";
    if (response.id() != QJsonValue(id))
        return "id not echoed";
    const bool has_result = object.contains(QStringLiteral("result"));
    if (has_result == object.contains(QStringLiteral("error")))
        return "result and error both present or both absent";
    // What goes on the wire must read back as JSON (strings the kernel built from odd input).
    if (!wire(response.to_json_string()).isObject())
        return "text not JSON: " + response.to_json_string().left(300).toStdString();
    if (!has_result && response.error_code() != -32602)
        return "error " + std::to_string(response.error_code()) + " " +
               QJsonDocument(object).toJson(QJsonDocument::Compact).left(300).toStdString();
    return {};
}

} // namespace

TEST(WrongTypeSweep, EveryMethodAnswersOddParametersAndTheKernelStaysUp) {
    if (!kernel_started())
        GTEST_SKIP() << "needs a kernel session";
    const QHash<QString, QStringList> table = parameters_from_source();
    const auto& names = TarvoRPCRequestHandler::method_names();
    ASSERT_EQ(static_cast<size_t>(table.size()), names.size()) << "rows read from the source";
    for (const QString& name : names)
        ASSERT_TRUE(table.contains(name)) << name.toStdString() << " not found in the source";

    // Methods that write files write them here, not into the build tree.
    QTemporaryDir scratch;
    ASSERT_TRUE(scratch.isValid());
    const QString previous_dir = QDir::currentPath();
    QDir::setCurrent(scratch.path());
    auto silence = std::make_shared<Silence>();
    auto previous_handler = TarvoMessage::instance()->message_handler();
    TarvoMessage::instance()->set_message_handler(silence);

    const auto odd = odd_values();
    QHash<QString, std::vector<QJsonObject>> backgrounds;
    int without_accepted = 0;
    for (const QString& method : names) {
        const QStringList& inputs = table[method];
        for (const QJsonValue& base : base_values()) {
            QJsonObject params;
            for (const QString& input : inputs)
                params.insert(input, base);
            backgrounds[method].push_back(params);
        }
        if (const auto accepted = accepted_params(method, inputs))
            backgrounds[method].push_back(*accepted);
        else
            ++without_accepted;
    }
    int calls = 0;
    int results = 0;
    std::vector<std::string> faults;
    qint64 slowest_ms = 0;
    QString slowest;
    QElapsedTimer clock;
    clock.start();
    auto send = [&](const QString& method, const QJsonValue& params, bool with_params) {
        RPCRequest request = with_params ? RPCRequest(method, params) : RPCRequest(method);
        request.set_id(++calls);
        QElapsedTimer one;
        one.start();
        TarvoRPCRequestHandler handler;
        const RPCResponse response = handler.exec(request);
        if (one.elapsed() > slowest_ms) {
            slowest_ms = one.elapsed();
            slowest = method;
        }
        const std::string fault = fault_of(response, calls);
        if (!fault.empty() && faults.size() < 50)
            faults.push_back(method.toStdString() + " " +
                             QJsonDocument(QJsonArray{params})
                                 .toJson(QJsonDocument::Compact)
                                 .left(200)
                                 .toStdString() +
                             ": " + fault);
        results += response.json().contains(QStringLiteral("result"));
    };

    // Once on an empty model, once with volume 1 in place, so that the ids of the base values
    // name real entities and the kernel goes past its existence checks.
    for (const char* model : {"reset", "create box 1"}) {
        TarvoInterface::set_tarvo_interrupt(false);
        TarvoInterface::cmd("reset");
        TarvoInterface::cmd(model);
        for (const QString& method : names) {
            const QStringList& inputs = table[method];
            send(method, {}, false);                                    // no params member
            send(method, QJsonArray{1, QStringLiteral("a")}, true);     // by position
            send(method, QStringLiteral("1"), true);                    // neither
            send(method, QJsonObject{{QStringLiteral("zz"), 1}}, true); // only an unknown name
            for (qsizetype odd_at = 0; odd_at < inputs.size(); ++odd_at) {
                for (QJsonObject params : backgrounds[method]) {
                    params.remove(inputs[odd_at]);
                    send(method, params, true); // one name missing
                    for (const QJsonValue& value : odd) {
                        params.insert(inputs[odd_at], value);
                        send(method, params, true);
                    }
                }
            }
        }
    }

    TarvoMessage::instance()->set_message_handler(previous_handler);
    QDir::setCurrent(previous_dir);
    const qint64 elapsed_ms = clock.elapsed();
    for (const std::string& fault : faults)
        ADD_FAILURE() << fault;
    std::printf("sweep: %d calls, %d results, %lld ms; slowest %s, %lld ms; %d methods without "
                "an accepted background\n",
                calls, results, static_cast<long long>(elapsed_ms), qPrintable(slowest),
                static_cast<long long>(slowest_ms), without_accepted);
    // A name read wrongly from the source makes every combination of its method refused.
    EXPECT_EQ(without_accepted, 0);
    EXPECT_GT(results, 0) << "no call reached the kernel";

    // Up and usable: a fresh model answers as a fresh model does.
    TarvoInterface::set_tarvo_interrupt(false);
    ASSERT_TRUE(TarvoInterface::cmd("reset"));
    TarvoRPCRequestHandler handler;
    RPCRequest create(QStringLiteral("cmd"), QJsonObject{{QStringLiteral("input_string"),
                                                          QStringLiteral("create box 1")}});
    create.set_id(1);
    EXPECT_EQ(handler.exec(create).result(), QJsonValue(true));
    RPCRequest count(QStringLiteral("get_volume_count"));
    count.set_id(2);
    EXPECT_EQ(handler.exec(count).result(), QJsonValue(1));
    TarvoInterface::cmd("reset");
}
