#pragma once
// The listening WebSocket endpoint and the list of connected clients. Clients are accepted by a
// ClientListener (TLS, and closing clients that send unmasked frames: see ClientListener.h) and
// handed to a QWebSocketServer for the handshake. The server admits or refuses each new
// connection by its connection id, pairs every admitted socket with a ClientConnection, tells
// the router about clients coming and going, writes every outgoing frame to the right socket, and
// ends the process a set time after the last client has gone.
//
// Thread: a QObject of the main thread; the sockets are only ever touched there. The slots
// send_text_message and send_binary_message are also reached from connections that emit on the
// worker thread; Qt then delivers them as queued calls, so no lock is needed.
//
// Admission: a connection id, when one is set, must be presented in the URL; and a browser's
// Origin header must be one of the allowed origins, so that a web page open in a local browser
// can't drive the server. A client that sends no Origin (a script, a native program) is not
// asked for one.
//
// Output bound: a client that doesn't read its socket makes the server buffer its frames. Past
// max_backlog bytes of unsent output the connection is logged and dropped, rather than letting
// one client take the machine's memory.
//
// Ownership: each socket is a Qt child of the server, deleted with it or, once its client has
// gone, by deleteLater; each ClientConnection is owned by its entry in `connections`.
//
// Frames are written to the clients' sockets just before the main thread's event loop goes to
// sleep (RelayedSocket does the writing), all that one round of events produced together, instead
// of one loop round later when Qt's own write notifier fires: a round trip saves a poll and a pass
// of the loop, and a burst of answers still leaves in one write.

#include <QByteArray>
#include <QHostAddress>
#include <QList>
#include <QObject>
#include <QSslError>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <memory>
#include <vector>

class ClientConnection;
class ClientListener;
class MessageRouter;
class QWebSocket;
class QWebSocketCorsAuthenticator;
class QWebSocketServer;

class TarvoServer : public QObject {
    Q_OBJECT

public:
    // Opens the listener and prints "Listening on port N" on standard output. If the address
    // can't be bound, logs the reason and ends the process with exit status -1.
    TarvoServer(MessageRouter* router, const QHostAddress& address, quint16 port, bool use_tls,
                const QString& connection_id, bool debug_json, QObject* parent = nullptr);
    // Deletes every connection and its socket without telling the router (the process is
    // ending), then closes the listener.
    ~TarvoServer() override;

    // Unsent output past which a client's connection is dropped.
    static constexpr qint64 kDefaultMaxBacklog = qint64{256} * 1024 * 1024;
    TarvoServer(const TarvoServer&) = delete;
    TarvoServer& operator=(const TarvoServer&) = delete;

    // Seconds after the last client has gone until the process quits; below 1 means never.
    void set_timeout_after_disconnect(int seconds) { timeout_after_disconnect = seconds; }
    // Origins that a browser may connect from, compared without regard to case ("http://host:port"
    // as the browser sends it). Empty: no browser origin is admitted.
    void set_allowed_origins(const QStringList& origins) { allowed_origins = origins; }
    // Bytes; below 1 means the default.
    void set_max_backlog(qint64 bytes) { max_backlog = bytes >= 1 ? bytes : kDefaultMaxBacklog; }

    // The port actually bound (the system's choice when 0 was asked for).
    quint16 port() const;
    int client_count() const { return static_cast<int>(connections.size()); }
    bool exit_timer_active() const { return exit_timer.isActive(); }

signals:
    void closed();

private slots:
    void connection();
    void disconnection();
    void send_text_message(QString message);
    void send_binary_message(QByteArray message);
    void onSslErrors(QList<QSslError> errors);

private:
    struct Connection {
        std::unique_ptr<ClientConnection> client;
        QWebSocket* socket; // a Qt child of the server
        // Past the output bound: nothing more is written, and the socket is aborted from the
        // event loop (aborting inside a send would delete the client under its own emission).
        bool dropping = false;
    };

    // Writes one frame of `client` with `write(QWebSocket&)`, unless the client has gone (a frame
    // queued from the worker thread can arrive after its client was removed) or its connection
    // is being dropped. The connection is dropped once its unsent output passes max_backlog.
    // Used only in the .cpp.
    template <class Write> void write_frame(QObject* client, Write&& write);
    void check_backlog(Connection& connection);
    void check_origin(QWebSocketCorsAuthenticator* authenticator) const;

    // Declared after the listener so that it goes first: the WebSockets it still holds own
    // sockets that are Qt children of the listener.
    std::unique_ptr<ClientListener> listener;
    std::unique_ptr<QWebSocketServer> server;
    MessageRouter* router; // not owned
    // In order of acceptance.
    std::vector<Connection> connections;
    QString connection_id; // empty: every client is admitted
    QStringList allowed_origins;
    qint64 max_backlog = kDefaultMaxBacklog;
    bool debug_json;
    int timeout_after_disconnect = 0;
    QTimer exit_timer; // single-shot; runs only while no client is connected
};
