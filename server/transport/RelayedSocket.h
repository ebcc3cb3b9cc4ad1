#pragma once
// The socket Qt's WebSocket server is given for one client: the WebSocket reads the client's
// bytes from it after ClientListener's relay has checked them, and what the WebSocket writes
// goes straight on to the client's own socket (TCP, or TLS over it), untouched and uncopied.
//
// Reads come from one end of a local socket pair whose other end the relay feeds; writes never
// touch the pair: writeData hands them to the client's socket, bytesToWrite reports that socket's
// unsent output (encrypted or not), and bytesWritten is re-emitted from it, so the server's
// backlog bound and image pacing see the real connection. The WebSocket's flush() can't reach
// the client's socket (QAbstractSocket::flush isn't virtual), so output written during one round
// of events is flushed when the event loop is about to sleep, as the server does for its own
// sockets. Addresses and ports are the client connection's, for the log.
//
// Thread: a QObject of the main thread. It doesn't own the client's socket (the relay does) and
// may outlive it; writes after that are dropped, as on any closed connection.

#include <QPointer>
#include <QTcpSocket>

class RelayedSocket : public QTcpSocket {
    Q_OBJECT

public:
    explicit RelayedSocket(QTcpSocket* client, QObject* parent = nullptr);

    // Takes over `descriptor`, the WebSocket's end of the local pair. Answers false, leaving the
    // descriptor open, if Qt can't use it.
    bool adopt(qintptr descriptor);
    // Drops every later write: nothing may follow a close frame that the relay wrote itself.
    void stop_writing() { writes_stopped = true; }

    qint64 bytesToWrite() const override;

signals:
    // The WebSocket has written its first bytes (the handshake's answer); `upgraded` tells
    // whether they were a 101 answer. Queued to the relay.
    void handshake_answered(bool upgraded);

protected:
    qint64 writeData(const char* data, qint64 size) override;

private:
    void flush_client();

    QPointer<QTcpSocket> client;
    bool writes_stopped = false;
    bool has_answered = false;
    bool unflushed = false;
};
