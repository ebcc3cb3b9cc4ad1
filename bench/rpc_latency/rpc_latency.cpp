// What one JSON-RPC call costs on its way through tarvo_server (socket, parser, router, queue,
// worker, wrapper and back), set against the floor that a bare WebSocket echo gives on the same
// machine in the same run.
//
//   bench_rpc_latency [server-binary] [--calls N] [--warmup N] [--pipelined N] [--rounds N]
//                     [--against other-server-binary] [--echo-only]
//
// The server binary comes from the argument, else from TARVO_SERVER, else from the build's own
// tarvo_server target when it exists. Without one only the echo server is measured.
//
// Two measurements per target:
//   sequential  one request in flight at a time; latency of each round trip after a warm-up
//   pipelined   all requests written at once; replies per second until the last one is back
// Both targets pay the same client-side costs (building the text, parsing every reply), and
// both run with TCP_NODELAY on each side; the output says so, and gives the load average, which
// moves the numbers more than anything else on a shared machine.
//
// --against runs a second server binary (an older build, say) in the same alternating rounds,
// so that a change is judged under the same load as its baseline. For every target the program
// also counts the context switches of the serving threads per sequential call: a round trip that
// costs more sleeps and wake-ups than the echo's one shows it there first.

#include <QAbstractSocket>
#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QHostAddress>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QThread>
#include <QTimer>
#include <QUrl>
#include <QWebSocket>
#include <QWebSocketServer>

#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace {

QString request_text(qint64 id) {
    return QStringLiteral(R"({"jsonrpc":"2.0","method":"tarvo.get_version","id":%1})").arg(id);
}

struct Reply {
    qint64 id = -1;
    bool error = false;
};

// The id of a reply, or nothing for a message without one (a server notification).
std::optional<Reply> read_reply(const QString& message) {
    const QJsonObject object = QJsonDocument::fromJson(message.toUtf8()).object();
    const auto id = object.constFind(QLatin1String("id"));
    if (id == object.constEnd() || !id->isDouble())
        return std::nullopt;
    return Reply{id->toInteger(-1), object.contains(QLatin1String("error"))};
}

// The TCP socket under a QWebSocket, which Qt doesn't expose: a child of the QWebSocket on the
// client side, a child of the listener on the accepting side (Qt 6.4). Recognised by its ports.
QAbstractSocket* tcp_socket_of(const QWebSocket* socket, const QObject* listener) {
    for (const QObject* owner : {static_cast<const QObject*>(socket), listener}) {
        if (owner == nullptr)
            continue;
        for (QAbstractSocket* tcp : owner->findChildren<QAbstractSocket*>()) {
            if (tcp->localPort() == socket->localPort() && tcp->peerPort() == socket->peerPort())
                return tcp;
        }
    }
    return nullptr;
}

// "on", "off", or "unknown" when the TCP socket can't be found.
const char* low_delay_text(QAbstractSocket* tcp) {
    if (tcp == nullptr)
        return "unknown";
    return tcp->socketOption(QAbstractSocket::LowDelayOption).toInt() == 1 ? "on" : "off";
}

// The 1-minute load average, to be read next to every result: the numbers move with it.
QString load_average() {
    QFile file(QStringLiteral("/proc/loadavg"));
    if (!file.open(QIODevice::ReadOnly))
        return QStringLiteral("?");
    return QString::fromLatin1(file.readLine()).section(QLatin1Char(' '), 0, 2);
}

// What one thread has cost so far: context switches, voluntary (it slept) and involuntary
// (preempted), and time on a CPU.
struct Switches {
    long voluntary = 0;
    long involuntary = 0;
    qint64 cpu_ns = 0;
};

Switches read_switches(qint64 pid, qint64 tid) {
    Switches switches;
    const QString task = QStringLiteral("/proc/%1/task/%2/").arg(pid).arg(tid);
    QFile status(task + QStringLiteral("status"));
    if (status.open(QIODevice::ReadOnly)) {
        for (const QByteArray& line : status.readAll().split('\n')) {
            if (line.startsWith("voluntary_ctxt_switches:"))
                switches.voluntary = line.mid(24).trimmed().toLong();
            else if (line.startsWith("nonvoluntary_ctxt_switches:"))
                switches.involuntary = line.mid(27).trimmed().toLong();
        }
    }
    // First field: nanoseconds spent running.
    QFile schedstat(task + QStringLiteral("schedstat"));
    if (schedstat.open(QIODevice::ReadOnly))
        switches.cpu_ns = schedstat.readAll().split(' ').value(0).toLongLong();
    return switches;
}

// Every thread of a process, by thread id.
std::map<qint64, Switches> read_all_switches(qint64 pid) {
    std::map<qint64, Switches> threads;
    QDir tasks(QStringLiteral("/proc/%1/task").arg(pid));
    for (const QString& name : tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot))
        threads[name.toLongLong()] = read_switches(pid, name.toLongLong());
    return threads;
}

// A plain WebSocket echo on a thread of its own, so that client and server each run their own
// event loop, as they do against the real process.
class EchoServer {
public:
    EchoServer() {
        thread.setObjectName(QStringLiteral("echo"));
        anchor = new QObject;
        anchor->moveToThread(&thread);
        thread.start();
        QMetaObject::invokeMethod(
            anchor,
            [this] {
                thread_id = static_cast<qint64>(syscall(SYS_gettid));
                auto* server = new QWebSocketServer(QStringLiteral("echo"),
                                                    QWebSocketServer::NonSecureMode, anchor);
                if (!server->listen(QHostAddress::LocalHost, 0))
                    return quint16(0);
                QObject::connect(server, &QWebSocketServer::newConnection, server, [this, server] {
                    while (QWebSocket* socket = server->nextPendingConnection()) {
                        // As tarvo_server does on every accepted socket: without it the floor
                        // would pay Nagle's algorithm where the server doesn't.
                        QAbstractSocket* tcp = tcp_socket_of(socket, server);
                        if (tcp != nullptr)
                            tcp->setSocketOption(QAbstractSocket::LowDelayOption, 1);
                        accepted_low_delay = low_delay_text(tcp);
                        QObject::connect(
                            socket, &QWebSocket::textMessageReceived, socket,
                            [socket](const QString& message) { socket->sendTextMessage(message); });
                        QObject::connect(socket, &QWebSocket::disconnected, socket,
                                         &QObject::deleteLater);
                    }
                });
                return server->serverPort();
            },
            Qt::BlockingQueuedConnection, &listening_port);
    }

    ~EchoServer() {
        QMetaObject::invokeMethod(
            anchor, [this] { delete anchor; }, Qt::BlockingQueuedConnection);
        thread.quit();
        thread.wait();
    }

    quint16 port() const { return listening_port; }
    // TCP_NODELAY of the last accepted socket, as the echo thread read it back.
    const char* low_delay() const { return accepted_low_delay.load(); }
    // The echo's serving thread, for its context switches.
    std::map<qint64, Switches> switches() const {
        return {{thread_id, read_switches(QCoreApplication::applicationPid(), thread_id)}};
    }

private:
    std::atomic<const char*> accepted_low_delay{"unknown"};
    qint64 thread_id = 0; // written on the echo thread before the constructor returns
    QThread thread;
    QObject* anchor = nullptr; // lives on `thread`; parent of the listener and its sockets
    quint16 listening_port = 0;
};

// The real server as a child process; the port is read from its first line of interest.
class ServerProcess {
public:
    bool start(const QString& program, int timeout_ms, QString* error) {
        process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process.start(program, {QStringLiteral("--port"), QStringLiteral("0")});
        if (!process.waitForStarted(10000)) {
            *error = QStringLiteral("cannot start %1: %2").arg(program, process.errorString());
            return false;
        }
        static const QRegularExpression port_line(QStringLiteral(R"(Listening on port (\d+))"));
        QByteArray output;
        QElapsedTimer waited;
        waited.start();
        while (waited.elapsed() < timeout_ms) {
            if (!process.waitForReadyRead(100)) {
                if (process.state() == QProcess::NotRunning) {
                    *error = QStringLiteral("server exited (code %1) before listening")
                                 .arg(process.exitCode());
                    return false;
                }
                continue;
            }
            output += process.readAllStandardOutput();
            const QRegularExpressionMatch match = port_line.match(QString::fromUtf8(output));
            if (match.hasMatch()) {
                listening_port = static_cast<quint16>(match.captured(1).toUInt());
                // From here on its log is read and dropped, so that the pipe never fills.
                QObject::connect(&process, &QProcess::readyReadStandardOutput, &process,
                                 [this] { process.readAllStandardOutput(); });
                return true;
            }
        }
        *error = QStringLiteral("no \"Listening on port\" line within %1 s").arg(timeout_ms / 1000);
        return false;
    }

    ~ServerProcess() {
        if (process.state() == QProcess::NotRunning)
            return;
        process.terminate();
        if (!process.waitForFinished(5000)) {
            process.kill();
            process.waitForFinished(5000);
        }
    }

    quint16 port() const { return listening_port; }
    std::map<qint64, Switches> switches() const { return read_all_switches(process.processId()); }

    // Empty while the server runs; otherwise how it ended, for the report of a failed phase.
    QString exit_text() {
        process.waitForFinished(200);
        if (process.state() != QProcess::NotRunning)
            return QString();
        return process.exitStatus() == QProcess::CrashExit
                   ? QStringLiteral("server crashed")
                   : QStringLiteral("server exited with code %1").arg(process.exitCode());
    }

private:
    QProcess process;
    quint16 listening_port = 0;
};

bool open_socket(QWebSocket& socket, quint16 port, int timeout_ms) {
    QEventLoop loop;
    QTimer::singleShot(timeout_ms, &loop, &QEventLoop::quit);
    QObject::connect(&socket, &QWebSocket::stateChanged, &loop,
                     [&loop](QAbstractSocket::SocketState state) {
                         if (state == QAbstractSocket::ConnectedState ||
                             state == QAbstractSocket::UnconnectedState)
                             loop.quit();
                     });
    socket.open(QUrl(QStringLiteral("ws://127.0.0.1:%1/").arg(port)));
    loop.exec();
    return socket.state() == QAbstractSocket::ConnectedState;
}

struct Result {
    std::vector<double> latency_us; // sequential, after warm-up
    int sequential_replies = 0;     // warm-up included
    int sequential_errors = 0;      // replies that carried an error instead of a result
    bool sequential_complete = false;
    int pipelined_sent = 0;
    int pipelined_received = 0;
    double pipelined_seconds = 0;
    const char* client_low_delay = "unknown"; // TCP_NODELAY on the bench's own socket
    // Per serving thread, switches during the sequential calls (warm-up included).
    std::map<qint64, Switches> switches;
    int switch_calls = 0;
    QString failure;
};

using SwitchSampler = std::function<std::map<qint64, Switches>()>;

void run_sequential(QWebSocket& socket, int warmup, int calls, int timeout_ms, Result& result) {
    const int total = warmup + calls;
    result.latency_us.reserve(static_cast<size_t>(calls));
    int in_flight = 0;
    QString next_text = request_text(0);
    QElapsedTimer clock;
    QEventLoop loop;
    QTimer::singleShot(timeout_ms, &loop, &QEventLoop::quit);

    const auto send = [&] {
        clock.start();
        socket.sendTextMessage(next_text);
    };
    const QMetaObject::Connection connection = QObject::connect(
        &socket, &QWebSocket::textMessageReceived, &loop, [&](const QString& message) {
            const qint64 elapsed_ns = clock.nsecsElapsed();
            const std::optional<Reply> reply = read_reply(message);
            if (!reply || reply->id != in_flight)
                return;
            result.sequential_errors += reply->error ? 1 : 0;
            if (in_flight >= warmup)
                result.latency_us.push_back(static_cast<double>(elapsed_ns) / 1000.0);
            result.sequential_replies = ++in_flight;
            if (in_flight == total) {
                result.sequential_complete = true;
                loop.quit();
                return;
            }
            next_text = request_text(in_flight);
            send();
        });
    QObject::connect(&socket, &QWebSocket::disconnected, &loop, &QEventLoop::quit);
    send();
    loop.exec();
    QObject::disconnect(connection);
}

void run_pipelined(QWebSocket& socket, int count, int timeout_ms, Result& result) {
    // Ids far from the sequential ones, so that a straggler from before is never counted.
    constexpr qint64 first_id = 1'000'000;
    std::vector<QString> texts;
    texts.reserve(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i)
        texts.push_back(request_text(first_id + i));

    QEventLoop loop;
    QTimer::singleShot(timeout_ms, &loop, &QEventLoop::quit);
    QElapsedTimer clock;
    qint64 last_reply_ns = 0;
    const QMetaObject::Connection connection = QObject::connect(
        &socket, &QWebSocket::textMessageReceived, &loop, [&](const QString& message) {
            const std::optional<Reply> reply = read_reply(message);
            if (!reply || reply->id < first_id || reply->id >= first_id + count)
                return;
            last_reply_ns = clock.nsecsElapsed();
            if (++result.pipelined_received == count)
                loop.quit();
        });
    QObject::connect(&socket, &QWebSocket::disconnected, &loop, &QEventLoop::quit);
    clock.start();
    for (const QString& text : texts)
        socket.sendTextMessage(text);
    result.pipelined_sent = count;
    loop.exec();
    QObject::disconnect(connection);
    result.pipelined_seconds = static_cast<double>(last_reply_ns) / 1e9;
}

Result measure(quint16 port, int warmup, int calls, int pipelined, int timeout_ms,
               const SwitchSampler& sample_switches) {
    Result result;
    QWebSocket socket;
    if (!open_socket(socket, port, 10000)) {
        result.failure =
            QStringLiteral("cannot connect to port %1: %2").arg(port).arg(socket.errorString());
        return result;
    }
    result.client_low_delay = low_delay_text(tcp_socket_of(&socket, nullptr));
    const std::map<qint64, Switches> before = sample_switches();
    run_sequential(socket, warmup, calls, timeout_ms, result);
    for (const auto& [tid, after] : sample_switches()) {
        const auto old = before.find(tid);
        const Switches start = old == before.end() ? Switches{} : old->second;
        result.switches[tid] = {after.voluntary - start.voluntary,
                                after.involuntary - start.involuntary, after.cpu_ns - start.cpu_ns};
    }
    result.switch_calls = result.sequential_replies;
    if (!result.sequential_complete)
        result.failure = QStringLiteral("sequential phase stopped after %1 of %2 replies")
                             .arg(result.sequential_replies)
                             .arg(warmup + calls);
    else if (pipelined > 0)
        run_pipelined(socket, pipelined, timeout_ms, result);
    socket.close();
    return result;
}

// Nearest-rank percentile of sorted values.
double percentile(const std::vector<double>& sorted, double q) {
    if (sorted.empty())
        return NAN;
    const size_t rank = static_cast<size_t>(std::ceil(q * static_cast<double>(sorted.size())));
    return sorted[std::min(sorted.size() - 1, rank == 0 ? 0 : rank - 1)];
}

struct Summary {
    double p50 = NAN, p90 = NAN, p99 = NAN, max = NAN, rate = NAN;
};

Summary print_row(const char* name, Result& result) {
    Summary s;
    std::sort(result.latency_us.begin(), result.latency_us.end());
    if (!result.latency_us.empty()) {
        s.p50 = percentile(result.latency_us, 0.50);
        s.p90 = percentile(result.latency_us, 0.90);
        s.p99 = percentile(result.latency_us, 0.99);
        s.max = result.latency_us.back();
    }
    if (result.pipelined_received > 0 && result.pipelined_seconds > 0)
        s.rate = result.pipelined_received / result.pipelined_seconds;
    std::printf("%-13s %7zu %9.1f %9.1f %9.1f %10.1f %13.0f %9d/%d\n", name,
                result.latency_us.size(), s.p50, s.p90, s.p99, s.max, s.rate,
                result.pipelined_received, result.pipelined_sent);
    if (result.sequential_errors > 0)
        std::printf("  note: %d sequential replies were errors, not results\n",
                    result.sequential_errors);
    if (!result.failure.isEmpty())
        std::printf("  failed: %s\n", qPrintable(result.failure));
    if (result.switch_calls > 0) {
        // Threads that hardly ran (start-up helpers) are left out.
        std::printf("  per call, by thread: ");
        const char* separator = "";
        for (const auto& [tid, count] : result.switches) {
            const double calls = result.switch_calls;
            if (count.voluntary + count.involuntary < result.switch_calls / 100)
                continue;
            std::printf("%s%.1f us on CPU, %.2f + %.2f switches (slept + preempted)", separator,
                        count.cpu_ns / 1000.0 / calls, count.voluntary / calls,
                        count.involuntary / calls);
            separator = "; ";
        }
        std::printf("\n");
    }
    return s;
}

QString default_server_path() {
    const QString from_env = qEnvironmentVariable("TARVO_SERVER");
    if (!from_env.isEmpty())
        return from_env;
#ifdef TARVO_SERVER_BUILD_PATH
    const QString built = QStringLiteral(TARVO_SERVER_BUILD_PATH);
    if (QFileInfo(built).isExecutable())
        return built;
#endif
    return QString();
}

} // namespace

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    QCommandLineParser options;
    options.setApplicationDescription(
        QStringLiteral("Round trip and throughput of tarvo.get_version: echo vs tarvo_server"));
    options.addHelpOption();
    options.addPositionalArgument(QStringLiteral("server"),
                                  QStringLiteral("tarvo_server binary (default: $TARVO_SERVER)"));
    const QCommandLineOption calls_option(QStringLiteral("calls"),
                                          QStringLiteral("Measured sequential calls."),
                                          QStringLiteral("n"), QStringLiteral("5000"));
    const QCommandLineOption warmup_option(QStringLiteral("warmup"),
                                           QStringLiteral("Sequential calls before measuring."),
                                           QStringLiteral("n"), QStringLiteral("500"));
    const QCommandLineOption pipelined_option(QStringLiteral("pipelined"),
                                              QStringLiteral("Requests sent without waiting."),
                                              QStringLiteral("n"), QStringLiteral("20000"));
    const QCommandLineOption timeout_option(QStringLiteral("timeout"),
                                            QStringLiteral("Seconds allowed for each phase."),
                                            QStringLiteral("s"), QStringLiteral("120"));
    const QCommandLineOption rounds_option(
        QStringLiteral("rounds"), QStringLiteral("Alternating rounds of sequential calls."),
        QStringLiteral("n"), QStringLiteral("7"));
    const QCommandLineOption echo_only_option(QStringLiteral("echo-only"),
                                              QStringLiteral("Measure the echo server alone."));
    const QCommandLineOption against_option(
        QStringLiteral("against"),
        QStringLiteral("A second tarvo_server binary, measured in the same rounds."),
        QStringLiteral("binary"));
    options.addOptions({calls_option, warmup_option, pipelined_option, timeout_option,
                        rounds_option, echo_only_option, against_option});
    options.process(app);

    const int calls = std::max(1, options.value(calls_option).toInt());
    const int warmup = std::max(0, options.value(warmup_option).toInt());
    const int pipelined = std::max(0, options.value(pipelined_option).toInt());
    const int timeout_ms = std::max(1, options.value(timeout_option).toInt()) * 1000;
    const int rounds = std::max(1, options.value(rounds_option).toInt());
    const QString server_path = options.positionalArguments().value(0, default_server_path());

    std::printf("tarvo.get_version: %d rounds of %d sequential calls after %d warm-up each, "
                "%d pipelined\n",
                rounds, calls, warmup, pipelined);
    std::printf("load average at start: %s\n", qPrintable(load_average()));
    std::printf("%-13s %7s %9s %9s %9s %10s %13s %13s\n", "target", "calls", "p50_us", "p90_us",
                "p99_us", "max_us", "pipelined/s", "replies");

    // Both targets stay up for the whole run and are measured in alternating rounds, so that a
    // change of machine load between two measurements hits both alike; the headline ratio is the
    // median of the per-round p50 ratios. Pipelined throughput is measured once, after the rounds.
    EchoServer echo_server;
    if (echo_server.port() == 0) {
        std::printf("echo server could not listen\n");
        return 1;
    }
    const bool echo_only = options.isSet(echo_only_option) || server_path.isEmpty();
    ServerProcess server;
    if (!echo_only) {
        QString error;
        if (!server.start(server_path, timeout_ms, &error)) {
            std::printf("tarvo_server: not measured (%s)\n", qPrintable(error));
            return 1;
        }
    }
    std::unique_ptr<ServerProcess> against;
    if (!echo_only && options.isSet(against_option)) {
        against = std::make_unique<ServerProcess>();
        QString error;
        if (!against->start(options.value(against_option), timeout_ms, &error)) {
            std::printf("against: not measured (%s)\n", qPrintable(error));
            return 1;
        }
    }

    // The targets in the order that every round measures them.
    struct Target {
        const char* name;
        quint16 port;
        SwitchSampler switches;
        Result total;
        std::vector<double> round_p50;
    };
    std::vector<Target> targets;
    targets.push_back(
        {"echo", echo_server.port(), [&echo_server] { return echo_server.switches(); }, {}, {}});
    if (!echo_only)
        targets.push_back(
            {"tarvo_server", server.port(), [&server] { return server.switches(); }, {}, {}});
    if (against != nullptr)
        targets.push_back(
            {"against", against->port(), [&] { return against->switches(); }, {}, {}});

    const auto append = [](Result& into, Result& from) {
        into.latency_us.insert(into.latency_us.end(), from.latency_us.begin(),
                               from.latency_us.end());
        into.sequential_errors += from.sequential_errors;
        into.pipelined_sent += from.pipelined_sent;
        into.pipelined_received += from.pipelined_received;
        into.pipelined_seconds += from.pipelined_seconds;
        into.client_low_delay = from.client_low_delay;
        for (const auto& [tid, count] : from.switches) {
            into.switches[tid].voluntary += count.voluntary;
            into.switches[tid].involuntary += count.involuntary;
            into.switches[tid].cpu_ns += count.cpu_ns;
        }
        into.switch_calls += from.switch_calls;
        if (into.failure.isEmpty())
            into.failure = from.failure;
    };
    const auto median = [](std::vector<double> values) {
        std::sort(values.begin(), values.end());
        return values.empty() ? NAN : values[values.size() / 2];
    };
    bool failed = false;
    for (int round = 0; round < rounds && !failed; ++round) {
        const int round_pipelined = round + 1 == rounds ? pipelined : 0;
        for (Target& target : targets) {
            Result result =
                measure(target.port, warmup, calls, round_pipelined, timeout_ms, target.switches);
            if (!result.failure.isEmpty()) {
                failed = true;
                ServerProcess* process = target.port == server.port() ? &server : against.get();
                if (target.port != echo_server.port() && !process->exit_text().isEmpty())
                    result.failure += QStringLiteral(" (%1)").arg(process->exit_text());
            }
            target.round_p50.push_back(median(result.latency_us));
            append(target.total, result);
        }
    }

    std::vector<Summary> summaries;
    for (Target& target : targets) {
        summaries.push_back(print_row(target.name, target.total));
        std::printf("  TCP_NODELAY: client %s, %s\n", target.total.client_low_delay,
                    target.port == echo_server.port()
                        ? (QByteArray("echo server ") + echo_server.low_delay()).constData()
                        : "the server sets it on every accepted socket");
    }
    bool ok = !failed;
    if (echo_only) {
        std::printf("tarvo_server: not measured (%s)\n",
                    options.isSet(echo_only_option) ? "--echo-only"
                                                    : "no binary given, TARVO_SERVER unset");
        return ok ? 0 : 1;
    }
    std::printf("load average at end: %s\n", qPrintable(load_average()));

    // Each round's p50 over the echo's p50 in the same round; the headline is their median.
    for (size_t t = 1; t < targets.size(); ++t) {
        std::vector<double> ratios;
        for (size_t r = 0; r < targets[t].round_p50.size(); ++r)
            ratios.push_back(targets[t].round_p50[r] / targets[0].round_p50[r]);
        std::printf("%s: p50 ratio per round:", targets[t].name);
        for (double ratio : ratios)
            std::printf(" %.2f", ratio);
        std::printf("\nratio p50(%s)/p50(echo), median of %zu rounds: %.2f\n", targets[t].name,
                    ratios.size(), median(ratios));
        std::printf("ratio p50(%s)/p50(echo), all calls pooled: %.2f\n", targets[t].name,
                    summaries[t].p50 / summaries[0].p50);
        std::printf("ratio pipelined(echo)/pipelined(%s): %.2f\n", targets[t].name,
                    summaries[0].rate / summaries[t].rate);
    }
    if (against != nullptr) {
        std::vector<double> ratios;
        for (size_t r = 0; r < targets[1].round_p50.size(); ++r)
            ratios.push_back(targets[1].round_p50[r] / targets[2].round_p50[r]);
        std::printf("ratio p50(tarvo_server)/p50(against), median of %zu rounds: %.2f\n",
                    ratios.size(), median(ratios));
    }
    return ok ? 0 : 1;
}
