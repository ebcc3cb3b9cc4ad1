#include "ClientListener.h"

#include "ClientFrameChecker.h"
#include "RelayedSocket.h"
#include "log_message.h"

#include <QPointer>
#include <QSslSocket>
#include <QTimer>

#include <optional>

#include <sys/socket.h>
#include <unistd.h>

namespace {

// Carries one client's bytes to the WebSocket's end of the pair, checked; owns the client's
// socket and the relay's end of the pair.
class ClientRelay : public QObject {
public:
    ClientRelay(QTcpSocket* client, QTcpSocket* pair_end, RelayedSocket* websocket_end,
                QObject* parent)
        : QObject(parent), client(client), pair_end(pair_end), websocket_end(websocket_end) {
        client->setParent(this);
        pair_end->setParent(this);
        connect(client, &QTcpSocket::readyRead, this, &ClientRelay::relay);
        connect(client, &QTcpSocket::disconnected, this, [this] {
            this->pair_end->disconnectFromHost();
            finish_when_both_closed();
        });
        connect(pair_end, &QTcpSocket::disconnected, this, [this] {
            close_client();
            finish_when_both_closed();
        });
        connect(websocket_end, &RelayedSocket::handshake_answered, this, &ClientRelay::answered,
                Qt::QueuedConnection);
    }

private:
    void relay() {
        const QByteArray bytes = client->readAll();
        if (checker.violated())
            return;
        const std::size_t sound = checker.feed(bytes.constData(), bytes.size());
        if (sound > 0) {
            pair_end->write(bytes.constData(), static_cast<qint64>(sound));
            pair_end->flush();
        }
        if (checker.violated() && handshake_upgraded)
            fail(*handshake_upgraded);
    }

    void answered(bool upgraded) {
        handshake_upgraded = upgraded;
        if (checker.violated())
            fail(upgraded);
    }

    void fail(bool upgraded) {
        if (failed)
            return;
        failed = true;
        if (websocket_end)
            websocket_end->stop_writing();
        if (upgraded) {
            log_message(
                tr("Closing the connection of %1 on port %2: the client sent an unmasked frame")
                    .arg(client->peerAddress().toString())
                    .arg(client->peerPort(), 0, 10));
            // FIN + close, length 2, status 1002.
            static constexpr char kClose1002[] = {'\x88', '\x02', '\x03', '\xea'};
            client->write(kClose1002, sizeof kClose1002);
        }
        close_client();
        pair_end->disconnectFromHost();
    }

    void close_client() {
        client->disconnectFromHost();
        if (client->state() != QAbstractSocket::UnconnectedState) {
            QTimer::singleShot(ClientListener::kCloseGraceMs, client,
                               [socket = client] { socket->abort(); });
        }
    }

    void finish_when_both_closed() {
        if (client->state() == QAbstractSocket::UnconnectedState &&
            pair_end->state() == QAbstractSocket::UnconnectedState)
            deleteLater();
    }

    QTcpSocket* client;
    QTcpSocket* pair_end;
    QPointer<RelayedSocket> websocket_end; // Qt's WebSocket deletes it
    ClientFrameChecker checker;
    // Whether the WebSocket upgraded the connection, once it has answered the handshake.
    std::optional<bool> handshake_upgraded;
    bool failed = false;
};

} // namespace

ClientListener::ClientListener(std::optional<QSslConfiguration> tls, QObject* parent)
    : QTcpServer(parent), tls(std::move(tls)) {}

void ClientListener::incomingConnection(qintptr descriptor) {
    QTcpSocket* client = tls ? new QSslSocket : new QTcpSocket;
    int pair[2] = {-1, -1};
    if (!client->setSocketDescriptor(descriptor)) {
        log_message(tr("Could not take a connection: %1").arg(client->errorString()));
        ::close(static_cast<int>(descriptor));
        delete client;
        return;
    }
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, pair) != 0) {
        log_message(tr("Could not take a connection: no socket pair"));
        delete client;
        return;
    }
    auto* websocket_end = new RelayedSocket(client, this);
    auto* pair_end = new QTcpSocket;
    const bool adopted = websocket_end->adopt(pair[0]);
    if (!adopted || !pair_end->setSocketDescriptor(pair[1])) {
        log_message(tr("Could not take a connection: %1").arg(websocket_end->errorString()));
        if (!adopted)
            ::close(pair[0]);
        ::close(pair[1]);
        delete websocket_end;
        delete pair_end;
        delete client;
        return;
    }
    // Traffic is small request/response frames, often two in a row (a response and a
    // notification, an image header and its payload). With Nagle's algorithm on, a small frame
    // that follows another before the peer has acknowledged it waits for the peer's delayed
    // ACK, which adds up to 40 ms to a round trip on Linux loopback.
    client->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    new ClientRelay(client, pair_end, websocket_end, this);
    if (auto* secure = qobject_cast<QSslSocket*>(client)) {
        connect(secure, &QSslSocket::sslErrors, this, &ClientListener::sslErrors);
        secure->setSslConfiguration(*tls);
        secure->startServerEncryption();
    }
    emit accepted(websocket_end);
}
