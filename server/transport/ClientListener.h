#pragma once
// The TCP listener in front of Qt's WebSocket server. It accepts each client itself, turns off
// Nagle's algorithm on the connection, terminates TLS when the server is secure, and fails the
// connection with status 1002 (protocol error) when the client sends an unmasked frame, which
// Qt 6.4's WebSocket server would accept.
//
// Why a relay. The check must see the client's bytes in order and know where each frame starts.
// Reading ahead of Qt on its own socket with peek() can't: Qt's reader consumes a varying part
// of what is available, so the stream offset is unknown. A QTcpSocket subclass can't see them
// either: a socket made from an accepted descriptor stays buffered whatever its open mode
// (setSocketDescriptor ignores Unbuffered), so bytes go from the descriptor into QIODevice's buffer
// without passing a virtual function, and a QSslSocket decrypts into that buffer the same way. So
// the listener owns the client's socket (a QTcpSocket, or a QSslSocket that it starts encryption
// on) and relays what the client sends, checked by a ClientFrameChecker, over a local socket pair
// to a RelayedSocket that it hands to QWebSocketServer::handleConnection; the WebSocket server then
// always runs in non-secure mode. Only that direction is relayed: what the WebSocket writes, the
// RelayedSocket passes straight to the client's socket, so image delivery costs no extra copy;
// a request costs one more pass of the event loop.
//
// Failing a connection: the relay passes on the bytes before the unmasked frame's second header
// byte and nothing after. Once the WebSocket has answered the handshake (at once if it already
// has), the relay writes a close frame with 1002 behind what the WebSocket wrote (whole frames:
// the WebSocket writes a frame in one go, and the relay runs between events), drops every later
// write, closes the client's socket once that is sent and closes the pair, which the WebSocket
// sees as its client leaving. A handshake that Qt refused is just closed.
//
// Closing: when the client goes, the pair is closed behind the bytes already relayed; when the
// WebSocket closes its end, the client's socket is closed once its output is sent, or cut off
// after kCloseGraceMs (a client that doesn't read, whose connection the server dropped).
//
// Thread: a QObject of the main thread. Each RelayedSocket is its Qt child until Qt's WebSocket
// server takes it over; each relay (owning the client's socket and its end of the pair) goes
// when both sides have closed, or with the listener.

#include <QList>
#include <QSslConfiguration>
#include <QSslError>
#include <QTcpServer>

#include <optional>

class QTcpSocket;

class ClientListener : public QTcpServer {
    Q_OBJECT

public:
    static constexpr int kCloseGraceMs = 5000;

    // `tls`: the server's TLS identity; none for plain connections.
    explicit ClientListener(std::optional<QSslConfiguration> tls, QObject* parent = nullptr);

signals:
    // A new client, ready for the WebSocket handshake (for QWebSocketServer::handleConnection).
    void accepted(QTcpSocket* socket);
    void sslErrors(QList<QSslError> errors);

protected:
    void incomingConnection(qintptr descriptor) override;

private:
    std::optional<QSslConfiguration> tls;
};
