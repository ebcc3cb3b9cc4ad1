#include "TarvoServer.h"

#include "ClientConnection.h"
#include "ClientListener.h"
#include "MessageRouter.h"
#include "log_message.h"
#include "tls_material.h"

#include <QCoreApplication>
#include <QNetworkProxyFactory>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslKey>
#include <QUrl>
#include <QUrlQuery>
#include <QWebSocket>
#include <QWebSocketCorsAuthenticator>
#include <QWebSocketServer>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <optional>

TarvoServer::TarvoServer(MessageRouter* router, const QHostAddress& address, quint16 port,
                         bool use_tls, const QString& connection_id, bool debug_json,
                         QObject* parent)
    : QObject(parent), router(router), connection_id(connection_id), debug_json(debug_json) {
    // The WebSocket server never listens itself: the listener accepts each client and hands it
    // over, having terminated TLS when it is on (see ClientListener.h for why).
    server = std::make_unique<QWebSocketServer>(QStringLiteral("TarvoServer"),
                                                QWebSocketServer::NonSecureMode, nullptr);
    std::optional<QSslConfiguration> tls;
    if (use_tls) {
        // Clients are local and connect to "localhost"; nothing is gained by asking them for
        // certificates, and the built-in certificate is meant to go unverified.
        QSslConfiguration ssl;
        const QSslCertificate certificate(tls_certificate_pem, QSsl::Pem);
        const QSslKey key(tls_private_key_pem, QSsl::Rsa, QSsl::Pem, QSsl::PrivateKey,
                          QByteArray());
        ssl.setPeerVerifyMode(QSslSocket::VerifyNone);
        ssl.setLocalCertificate(certificate);
        ssl.setPrivateKey(key);
        ssl.setProtocol(QSsl::SecureProtocols);
        tls = ssl;
    }
    listener = std::make_unique<ClientListener>(std::move(tls));
    connect(listener.get(), &ClientListener::accepted, server.get(),
            &QWebSocketServer::handleConnection);
    connect(listener.get(), &ClientListener::sslErrors, this, &TarvoServer::onSslErrors);
    // The listener is on the loopback address; a system proxy must never stand in between.
    QNetworkProxyFactory::setUseSystemConfiguration(false);

    connect(server.get(), &QWebSocketServer::newConnection, this, &TarvoServer::connection);
    connect(server.get(), &QWebSocketServer::closed, this, &TarvoServer::closed);
    // Asked during each handshake, before the connection exists; a refusal answers the
    // handshake with 403 and closes the socket.
    connect(server.get(), &QWebSocketServer::originAuthenticationRequired, this,
            &TarvoServer::check_origin, Qt::DirectConnection);

    // Not started here: a server that no client ever reaches runs until it is killed.
    connect(&exit_timer, &QTimer::timeout, QCoreApplication::instance(), &QCoreApplication::quit);
    exit_timer.setSingleShot(true);

    if (!listener->listen(address, port)) {
        log_message(
            tr("Error: %1\nFailed to setup WebSocket server.").arg(listener->errorString()));
        // The worker thread is already initialising the kernel. exit() would run the static
        // destructors of the kernel's libraries under its feet, and the process would crash
        // instead of ending with status -1; quick_exit skips them. Output is flushed by hand,
        // since quick_exit doesn't.
        std::fflush(nullptr);
        std::quick_exit(-1);
    }
    // A launching process reads this line to learn the port, so it keeps its plain form.
    std::printf("Listening on port %d\n", static_cast<int>(listener->serverPort()));
    std::fflush(stdout);
}

TarvoServer::~TarvoServer() {
    // Deleting a socket can emit disconnected(); cut the sockets off first, so that no slot of
    // this half-destroyed server runs. The sockets go here, before the listener, whose Qt
    // children their TCP sockets may still be; the clients go with `connections`.
    for (const Connection& connection : connections) {
        connection.socket->disconnect(this);
        delete connection.socket;
    }
    connections.clear();
    listener->close();
    server->close();
}

quint16 TarvoServer::port() const {
    return listener->serverPort();
}

void TarvoServer::connection() {
    std::unique_ptr<QWebSocket> pending(server->nextPendingConnection());
    if (!pending)
        return;
    QWebSocket* socket = pending.get();

    const QUrl url = socket->requestUrl();
    QUrlQuery query(url.query());
    // ws://host:port/abc presents the id "abc" as well as ws://host:port/?connection_id=abc;
    // the path counts only when the URL has no query at all.
    if (query.isEmpty()) {
        QString path = url.path(QUrl::FullyDecoded);
        path.remove(0, 1);
        if (!path.isEmpty())
            query.addQueryItem(QStringLiteral("connection_id"), path);
    }
    if (!connection_id.isEmpty()) {
        const QString presented =
            query.queryItemValue(QStringLiteral("connection_id"), QUrl::FullyDecoded);
        if (presented.size() != connection_id.size() || presented != connection_id) {
            // Refused without a word: no message, no log, and the exit timer keeps running.
            return;
        }
    }

    pending.release()->setParent(this);
    // One frame per message: Qt would cut a frame into 512 KiB fragments, and a client then
    // joins them again, a copy of every image (4 ms of an 800 x 600 rgb frame's 11 in Python).
    socket->setOutgoingFrameSize(QWebSocket::maxOutgoingFrameSize());
    connections.push_back(Connection{std::make_unique<ClientConnection>(debug_json), socket});
    ClientConnection* client = connections.back().client.get();

    connect(socket, &QWebSocket::textMessageReceived, client,
            &ClientConnection::receive_text_message);
    connect(socket, &QWebSocket::binaryMessageReceived, client,
            &ClientConnection::receive_binary_message);
    connect(socket, &QWebSocket::disconnected, this, &TarvoServer::disconnection);
    connect(client, &ClientConnection::send_text_message, this, &TarvoServer::send_text_message);
    connect(client, &ClientConnection::send_binary_message, this,
            &TarvoServer::send_binary_message);
    // Image delivery waits for a client that hasn't taken its last frames yet.
    client->set_unsent_probe([socket] { return socket->bytesToWrite(); });
    connect(socket, &QWebSocket::bytesWritten, client, [socket, client] {
        if (socket->bytesToWrite() == 0 && client->take_drained_wish())
            emit client->output_drained();
    });

    router->add_client(client);
    log_message(tr("Connected to %1 on port %2")
                    .arg(socket->peerAddress().toString())
                    .arg(socket->peerPort(), 0, 10));
    exit_timer.stop();
}

void TarvoServer::disconnection() {
    auto* socket = qobject_cast<QWebSocket*>(sender());
    auto it = std::find_if(connections.begin(), connections.end(),
                           [socket](const Connection& c) { return c.socket == socket; });
    if (it == connections.end())
        return;
    const std::unique_ptr<ClientConnection> client = std::move(it->client);
    connections.erase(it);

    log_message(tr("Disconnected from %1 on port %2")
                    .arg(socket->peerAddress().toString())
                    .arg(socket->peerPort(), 0, 10));
    router->remove_client(client.get());
    // The client is deleted on leaving; the socket is inside its own signal and goes later.
    socket->deleteLater();

    if (timeout_after_disconnect >= 1 && connections.empty()) {
        // 32-bit arithmetic, wrapping rather than overflowing for absurd values.
        const auto msec =
            static_cast<qint32>(static_cast<quint32>(timeout_after_disconnect) * 1000u);
        exit_timer.start(msec);
    }
}

template <class Write> void TarvoServer::write_frame(QObject* client, Write&& write) {
    const auto it =
        std::find_if(connections.begin(), connections.end(),
                     [client](const Connection& c) { return c.client.get() == client; });
    if (it == connections.end() || it->dropping)
        return;
    write(*it->socket);
    check_backlog(*it);
}

void TarvoServer::send_text_message(QString message) {
    if (debug_json)
        log_message(QLatin1String("<- ") + message);
    write_frame(sender(), [&](QWebSocket& socket) { socket.sendTextMessage(message); });
}

void TarvoServer::send_binary_message(QByteArray message) {
    write_frame(sender(), [&](QWebSocket& socket) { socket.sendBinaryMessage(message); });
}

void TarvoServer::check_backlog(Connection& connection) {
    const qint64 unsent = connection.socket->bytesToWrite();
    if (unsent <= max_backlog)
        return;
    connection.dropping = true;
    log_message(tr("Dropping the connection of %1 on port %2: %3 bytes of output unsent, past the "
                   "limit of %4 (the client doesn't read its socket)")
                    .arg(connection.socket->peerAddress().toString())
                    .arg(connection.socket->peerPort(), 0, 10)
                    .arg(unsent)
                    .arg(max_backlog));
    // Its disconnected() then removes the client through disconnection(), outside any send.
    QMetaObject::invokeMethod(connection.socket, &QWebSocket::abort, Qt::QueuedConnection);
}

void TarvoServer::check_origin(QWebSocketCorsAuthenticator* authenticator) const {
    const QString origin = authenticator->origin();
    const bool allowed = origin.isEmpty() || allowed_origins.contains(origin, Qt::CaseInsensitive);
    if (!allowed)
        log_message(tr("Refused a connection from the origin %1").arg(origin));
    authenticator->setAllowed(allowed);
}

void TarvoServer::onSslErrors(QList<QSslError> errors) {
    Q_UNUSED(errors);
    log_message(QStringLiteral("got ssl errors."));
}
