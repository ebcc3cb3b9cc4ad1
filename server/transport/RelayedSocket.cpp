#include "RelayedSocket.h"

#include <QAbstractEventDispatcher>
#include <QSslSocket>

#include <cstring>

RelayedSocket::RelayedSocket(QTcpSocket* client, QObject* parent)
    : QTcpSocket(parent), client(client) {
    connect(client, &QTcpSocket::bytesWritten, this, &RelayedSocket::bytesWritten);
    if (auto* tls = qobject_cast<QSslSocket*>(client))
        connect(tls, &QSslSocket::encryptedBytesWritten, this, &RelayedSocket::bytesWritten);
    if (QAbstractEventDispatcher* dispatcher = QAbstractEventDispatcher::instance())
        connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, this,
                &RelayedSocket::flush_client);
}

bool RelayedSocket::adopt(qintptr descriptor) {
    if (!setSocketDescriptor(descriptor))
        return false;
    setPeerAddress(client->peerAddress());
    setPeerPort(client->peerPort());
    setLocalAddress(client->localAddress());
    setLocalPort(client->localPort());
    return true;
}

qint64 RelayedSocket::bytesToWrite() const {
    if (!client)
        return 0;
    qint64 unsent = client->bytesToWrite();
    if (const auto* tls = qobject_cast<const QSslSocket*>(client.data()))
        unsent += tls->encryptedBytesToWrite();
    return unsent;
}

qint64 RelayedSocket::writeData(const char* data, qint64 size) {
    if (!has_answered) {
        has_answered = true;
        static constexpr char kUpgraded[] = "HTTP/1.1 101";
        const auto prefix = static_cast<qint64>(sizeof kUpgraded - 1);
        emit handshake_answered(size >= prefix && std::memcmp(data, kUpgraded, prefix) == 0);
    }
    // Taken and dropped, so that the writer carries on as it would on a closing socket.
    if (writes_stopped || !client || client->state() != QAbstractSocket::ConnectedState)
        return size;
    const qint64 written = client->write(data, size);
    unflushed = true;
    return written;
}

void RelayedSocket::flush_client() {
    if (!unflushed)
        return;
    unflushed = false;
    // What the socket can't take now stays in its buffer for Qt's write notifier.
    if (client)
        client->flush();
}
