// TarvoServer with real WebSocket clients on the loopback address, in this process: admission by
// connection id, the exit timer, the delivery of frames to the right socket, and the refusal of
// unmasked client frames on raw sockets.

#include "transport/TarvoServer.h"
#include "FakeRouter.h"
#include "WireHelpers.h"

#include <QAbstractSocket>
#include <QSignalSpy>
#include <QSslSocket>
#include <QTest>
#include <QWebSocket>

#include <gtest/gtest.h>

#include <memory>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <thread>

namespace {

// Upper bound for waiting on a network event that is expected to happen; never reached when the
// code is right.
constexpr int kWaitMs = 10000;

std::unique_ptr<TarvoServer> start_server(FakeRouter& router, const QString& connection_id) {
    return std::make_unique<TarvoServer>(&router, QHostAddress(QHostAddress::LocalHost), 0, false,
                                         connection_id, false);
}

QString url_for(const TarvoServer& server, const QString& rest) {
    return QStringLiteral("ws://127.0.0.1:%1%2").arg(server.port()).arg(rest);
}

// A client socket that collects the text frames it receives.
struct Client {
    Client() {
        QObject::connect(&socket, &QWebSocket::textMessageReceived,
                         [this](const QString& frame) { frames.push_back(frame); });
    }
    QWebSocket socket;
    std::vector<QString> frames;
};

// Opens `client` and waits until the server has either admitted it (the router was told and the
// client has seen the handshake answer) or closed it. Answers whether it was admitted.
bool open_and_settle(Client& client, const FakeRouter& router, const QString& url) {
    const size_t added_before = router.added.size();
    QSignalSpy closed(&client.socket, &QWebSocket::disconnected);
    client.socket.open(QUrl(url));
    const bool settled = QTest::qWaitFor(
        [&] {
            return (router.added.size() > added_before &&
                    client.socket.state() == QAbstractSocket::ConnectedState) ||
                   (closed.count() > 0 &&
                    client.socket.state() == QAbstractSocket::UnconnectedState);
        },
        kWaitMs);
    EXPECT_TRUE(settled) << url.toStdString();
    return router.added.size() > added_before;
}

// Closes `client` and waits until the server has removed it.
void close_and_settle(Client& client, const FakeRouter& router) {
    const size_t removed_before = router.removed.size();
    client.socket.close();
    EXPECT_TRUE(QTest::qWaitFor([&] { return router.removed.size() > removed_before; }, kWaitMs));
}

TEST(TarvoServerAdmission, IdComesFromTheQueryOrFromThePathWhenThereIsNoQuery) {
    struct Case {
        const char* rest;
        bool admitted;
    };
    const struct {
        QString id;
        std::vector<Case> cases;
    } servers[] = {
        {"abc",
         {
             {"/?connection_id=abc", true},
             {"/abc", true},
             {"/?other=1&connection_id=abc", true},
             {"/ABC", false},                 // case-sensitive
             {"/?connection_id=ab", false},   // same prefix, shorter
             {"/?connection_id=abcd", false}, // longer
             {"/", false},                    // nothing in the path
             {"", false},
             {"/abc?x=1", false}, // a query without the item: the path isn't consulted
         }},
        // Compared after percent decoding, once.
        {QString::fromUtf8("a b/\xC3\xA9"),
         {
             {"/?connection_id=a%20b%2F%C3%A9", true},
             {"/a%20b/%C3%A9", true},
             {"/?connection_id=a%2520b", false},
         }},
        // Without an id everyone is admitted.
        {"", {{"", true}, {"/anything", true}, {"/?connection_id=zzz", true}}},
    };
    for (const auto& server_case : servers) {
        FakeRouter router;
        auto server = start_server(router, server_case.id);
        for (const Case& c : server_case.cases) {
            Client client;
            EXPECT_EQ(open_and_settle(client, router, url_for(*server, c.rest)), c.admitted)
                << server_case.id.toStdString() << ": " << c.rest;
        }
    }
}

TEST(TarvoServerExitTimer, StartsWhenTheLastClientLeavesAndStopsForAnAdmittedOne) {
    FakeRouter router;
    auto server = start_server(router, "id");
    server->set_timeout_after_disconnect(5);
    EXPECT_FALSE(server->exit_timer_active()); // never reached: runs for ever

    Client first;
    Client second;
    ASSERT_TRUE(open_and_settle(first, router, url_for(*server, "/id")));
    ASSERT_TRUE(open_and_settle(second, router, url_for(*server, "/id")));
    EXPECT_EQ(server->client_count(), 2);

    close_and_settle(first, router);
    EXPECT_EQ(server->client_count(), 1);
    EXPECT_FALSE(server->exit_timer_active());
    close_and_settle(second, router);
    EXPECT_EQ(server->client_count(), 0);
    EXPECT_TRUE(server->exit_timer_active());

    Client refused;
    EXPECT_FALSE(open_and_settle(refused, router, url_for(*server, "/wrong")));
    EXPECT_TRUE(server->exit_timer_active());

    Client back;
    EXPECT_TRUE(open_and_settle(back, router, url_for(*server, "/id")));
    EXPECT_FALSE(server->exit_timer_active());
}

// That the timer, once it fires, ends the process with status 0 is
// tests/e2e/test_transport.py::test_exit_timer_runs_only_after_the_last_client.
TEST(TarvoServerExitTimer, NotStartedWithoutTimeout) {
    FakeRouter router;
    auto server = start_server(router, "");
    for (const int timeout : {0, 1}) {
        server->set_timeout_after_disconnect(timeout);
        Client client;
        ASSERT_TRUE(open_and_settle(client, router, url_for(*server, "")));
        close_and_settle(client, router);
        ASSERT_EQ(server->exit_timer_active(), timeout > 0);
    }
}

TEST(TarvoServerFrames, QueuedFrameForARemovedClientIsDropped) {
    FakeRouter router;
    auto server = start_server(router, "");
    Client leaving;
    Client staying;
    ASSERT_TRUE(open_and_settle(leaving, router, url_for(*server, "")));
    ASSERT_TRUE(open_and_settle(staying, router, url_for(*server, "")));

    // As the worker thread would: the frame is emitted on another thread while the client is
    // being removed, so it reaches the server only after the connection is gone.
    router.on_remove = [](ClientConnection* client) {
        std::thread worker([client] { client->send_notification(RPCRequest("late")); });
        worker.join();
    };
    close_and_settle(leaving, router);
    router.on_remove = nullptr;

    router.added[1]->send_notification(RPCRequest("marker"));
    ASSERT_TRUE(QTest::qWaitFor([&] { return !staying.frames.empty(); }, kWaitMs));
    EXPECT_EQ(parse_frame(staying.frames[0])["method"], QJsonValue("marker"));
    EXPECT_EQ(staying.frames.size(), 1u);
}

// A hand-made client frame; masked with a fixed key when `masked`.
QByteArray client_frame(unsigned char first_byte, const QByteArray& payload, bool masked) {
    QByteArray out(1, static_cast<char>(first_byte));
    const char mask_bit = masked ? '\x80' : '\x00';
    out += static_cast<char>(mask_bit | static_cast<char>(payload.size()));
    QByteArray body = payload;
    if (masked) {
        const QByteArray key("\x11\x22\x33\x44", 4);
        out += key;
        for (qsizetype i = 0; i < body.size(); ++i)
            body[i] = static_cast<char>(body[i] ^ key[i % 4]);
    }
    return out + body;
}

// A WebSocket client on a raw TCP (or TLS) socket: the test writes the frames by hand.
struct RawClient {
    RawClient(const TarvoServer& server, bool use_tls) {
        QObject::connect(&socket, &QSslSocket::readyRead, [this] { received += socket.readAll(); });
        if (use_tls) {
            socket.setPeerVerifyMode(QSslSocket::VerifyNone);
            socket.connectToHostEncrypted(QStringLiteral("127.0.0.1"), server.port());
        } else {
            socket.connectToHost(QHostAddress(QHostAddress::LocalHost), server.port());
        }
    }
    // Sends the handshake with `then` behind it in the same write; answers whether the server
    // agreed to the upgrade.
    bool handshake(const QByteArray& then = {}) {
        socket.write("GET / HTTP/1.1\r\nHost: 127.0.0.1\r\nUpgrade: websocket\r\n"
                     "Connection: Upgrade\r\nSec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n"
                     "Sec-WebSocket-Version: 13\r\n\r\n" +
                     then);
        if (!QTest::qWaitFor([this] { return received.contains("\r\n\r\n"); }, kWaitMs))
            return false;
        const bool upgraded = received.startsWith("HTTP/1.1 101");
        received.remove(0, received.indexOf("\r\n\r\n") + 4);
        return upgraded;
    }
    QSslSocket socket;
    QByteArray received; // after the handshake: frames
};

TEST(TarvoServerFrames, AnUnmaskedFrameOfAnyKindClosesTheConnectionAsAProtocolError) {
    const QByteArray close_1002("\x88\x02\x03\xea", 4);
    const QByteArray request(R"({"jsonrpc":"2.0","method":"x","id":1})");
    const struct {
        const char* name;
        QByteArray frame;
        bool pipelined; // sent in the same write as the handshake
    } cases[] = {
        {"text", client_frame(0x81, request, false), false},
        {"text behind the handshake", client_frame(0x81, request, false), true},
        {"binary", client_frame(0x82, "abc", false), false},
        // The start of a fragmented text is masked, its continuation isn't.
        {"continuation", client_frame(0x01, "{", true) + client_frame(0x80, "}", false), false},
        {"ping", client_frame(0x89, "", false), false},
        {"close", client_frame(0x88, QByteArray("\x03\xe8", 2), false), false},
    };
    for (const bool use_tls : {false, true}) {
        FakeRouter router;
        TarvoServer server(&router, QHostAddress(QHostAddress::LocalHost), 0, use_tls, "", false);
        for (const auto& c : cases) {
            SCOPED_TRACE(std::string(c.name) + (use_tls ? ", TLS" : ", plain"));
            RawClient rude(server, use_tls);
            ASSERT_TRUE(rude.handshake(c.pipelined ? c.frame : QByteArray()));
            if (!c.pipelined)
                rude.socket.write(c.frame);
            EXPECT_TRUE(QTest::qWaitFor(
                [&] { return rude.socket.state() == QAbstractSocket::UnconnectedState; }, kWaitMs));
            EXPECT_EQ(rude.received.toHex(), close_1002.toHex());
            EXPECT_TRUE(router.requests.empty());
        }

        // A masked frame on another connection is still read and answered.
        RawClient polite(server, use_tls);
        ASSERT_TRUE(polite.handshake());
        polite.socket.write(client_frame(0x81, request, true));
        ASSERT_TRUE(QTest::qWaitFor([&] { return router.requests.size() == 1; }, kWaitMs));
        router.requests[0].client->send_response(make_response(1, "answered"));
        EXPECT_TRUE(QTest::qWaitFor([&] { return polite.received.contains("answered"); }, kWaitMs));
        EXPECT_EQ(polite.socket.state(), QAbstractSocket::ConnectedState);
    }
}

int tcp_nodelay(qintptr descriptor) {
    int value = -1;
    socklen_t size = sizeof(value);
    if (getsockopt(static_cast<int>(descriptor), IPPROTO_TCP, TCP_NODELAY, &value, &size) != 0)
        return -1;
    return value;
}

// The descriptor of the TCP connection with these ports, found among this process's open
// descriptors, so that the check doesn't go through the code under test.
qintptr descriptor_of(quint16 local_port, quint16 peer_port) {
    for (int fd = 0; fd < 1024; ++fd) {
        sockaddr_in local{};
        sockaddr_in peer{};
        socklen_t local_size = sizeof(local);
        socklen_t peer_size = sizeof(peer);
        if (getsockname(fd, reinterpret_cast<sockaddr*>(&local), &local_size) != 0 ||
            getpeername(fd, reinterpret_cast<sockaddr*>(&peer), &peer_size) != 0 ||
            local.sin_family != AF_INET)
            continue;
        if (ntohs(local.sin_port) == local_port && ntohs(peer.sin_port) == peer_port)
            return fd;
    }
    return -1;
}

// The TCP socket sits under a TLS layer in secure mode: both kinds of connection must get it.
TEST(SocketOptions, TheServerTurnsOffNagleForAdmittedClients) {
    for (const bool use_tls : {false, true}) {
        FakeRouter router;
        TarvoServer server(&router, QHostAddress(QHostAddress::LocalHost), 0, use_tls, "", false);
        Client client;
        QObject::connect(&client.socket, &QWebSocket::sslErrors,
                         [&client](const QList<QSslError>&) { client.socket.ignoreSslErrors(); });
        const QString url =
            QStringLiteral("%1://127.0.0.1:%2/").arg(use_tls ? "wss" : "ws").arg(server.port());
        ASSERT_TRUE(open_and_settle(client, router, url)) << use_tls;
        // The server's end of this connection: its local port is the client's peer port.
        const qintptr descriptor =
            descriptor_of(client.socket.peerPort(), client.socket.localPort());
        ASSERT_GE(descriptor, 0);
        EXPECT_EQ(tcp_nodelay(descriptor), 1) << use_tls;
    }
}

} // namespace
