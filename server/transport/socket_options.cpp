#include "socket_options.h"

#include <QAbstractSocket>
#include <QWebSocket>

bool set_low_delay(QWebSocket* socket) {
    // Traffic is request/response and small frames (a response, then often an image header
    // right behind it). With Nagle's algorithm on, a small frame that follows another one
    // before its acknowledgement waits for the peer's delayed ACK, adding up to 40 ms to a
    // round trip on Linux loopback. QWebSocket keeps the TCP (or TLS) socket that it was
    // upgraded from as its child, so the option is set there.
    auto* tcp = socket->findChild<QAbstractSocket*>();
    if (tcp == nullptr)
        return false;
    tcp->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    return tcp->socketOption(QAbstractSocket::LowDelayOption).toInt() == 1;
}
