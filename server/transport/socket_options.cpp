#include "socket_options.h"

#include <QAbstractSocket>
#include <QWebSocket>

namespace {

QAbstractSocket* find_tcp_socket(const QObject* owner, const QWebSocket* socket) {
    const auto candidates = owner->findChildren<QAbstractSocket*>();
    for (QAbstractSocket* tcp : candidates) {
        if (tcp->peerPort() == socket->peerPort() && tcp->localPort() == socket->localPort() &&
            tcp->peerAddress() == socket->peerAddress())
            return tcp;
    }
    return nullptr;
}

} // namespace

bool set_low_delay(QWebSocket* socket, const QObject* listener) {
    // Traffic is small request/response frames, often two in a row (a response and a
    // notification, an image header and its payload). With Nagle's algorithm on, a small frame
    // that follows another before the peer has acknowledged it waits for the peer's delayed
    // ACK, which adds up to 40 ms to a round trip on Linux loopback.
    //
    // QWebSocket exposes neither its TCP socket nor a descriptor. The server-side TCP (or TLS)
    // socket that it was upgraded from stays a child of the listener's QTcpServer (Qt 6.4),
    // while the QWebSocket owns it and deletes it; a client-side one is the QWebSocket's child.
    // Both places are searched, and the socket is recognised by its two endpoints.
    QAbstractSocket* tcp = find_tcp_socket(socket, socket);
    if (tcp == nullptr && listener != nullptr)
        tcp = find_tcp_socket(listener, socket);
    if (tcp == nullptr)
        return false;
    tcp->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    return tcp->socketOption(QAbstractSocket::LowDelayOption).toInt() == 1;
}
