#pragma once
// One connected client as the rest of the server sees it: incoming text frames become calls on the
// router, outgoing JSON-RPC objects become frames. The connection knows nothing of sockets; its
// frames leave through the signals send_text_message and send_binary_message, which TarvoServer
// writes to the client's socket.
//
// Thread: lives on the main thread. receive_text_message, send_response and the pending batches
// are main-thread only. send_notification(s) and send_binary touch no state and may be called on
// the worker thread: the signals are then delivered to the server as queued calls, which keeps
// the order of the frames that one thread emits.

#include "BinaryMessage.h"
#include "json_rpc/RPCObject.h"

#include <QByteArray>
#include <QJsonValue>
#include <QObject>
#include <QSet>
#include <QString>

#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <utility>

class MessageRouter;

// A batch response being collected. It starts out holding the batch's parse errors and is sent
// as one frame once it holds expected_count responses.
class PendingBatch : public RPCBatchResponse {
public:
    explicit PendingBatch(const RPCBatchResponse& errors) : RPCBatchResponse(errors) {}

    std::size_t expected_count = 0;
    // Ids of the batch's requests that expect a response. Hashed: every response of a batch
    // looks its id up here, and a scan would make a batch cost the square of its size.
    QSet<QJsonValue> ids;
};

class ClientConnection : public QObject {
    Q_OBJECT

public:
    // Batches that may wait for answers at once; a batch of requests beyond them is refused with
    // one LimitExceeded error (null id) and never routed.
    static constexpr std::size_t kMaxPendingBatches = 64;

    explicit ClientConnection(bool debug_json);
    // Unfinished batches are abandoned without a word: the client is gone or the process ends.
    ~ClientConnection() override;
    ClientConnection(const ClientConnection&) = delete;
    ClientConnection& operator=(const ClientConnection&) = delete;

    // Set by the router when the client is added, cleared when it is removed. Frames received
    // while no router is set are dropped.
    void set_router(MessageRouter* router) { this->router = router; }

    // Main thread. While a batch is pending, a response goes into the oldest pending batch that
    // waits for its id; one that no pending batch waits for is dropped. Complete batches leave
    // in the order in which they arrived.
    void send_response(const RPCResponse& response);
    // Any thread. One notification as a JSON object frame.
    void send_notification(const RPCRequest& notification);
    // Any thread. Several notifications as one JSON array frame.
    void send_notifications(const RPCBatchRequest& notifications);
    // Any thread. A text header (notification "binary_header.<name>" carrying the params), then
    // the payload as a binary frame; the client pairs them by position.
    void send_binary(const BinaryMessage& message);

    // Main thread. Output the socket has not taken yet, as the server's probe tells it (0
    // without one). Image delivery waits while there is any, and asks with want_drained_signal
    // to hear output_drained once it is all gone.
    qint64 unsent_bytes() const { return unsent_probe ? unsent_probe() : 0; }
    void set_unsent_probe(std::function<qint64()> probe) { unsent_probe = std::move(probe); }
    void want_drained_signal() { drained_wanted = true; }
    bool take_drained_wish() { return std::exchange(drained_wanted, false); }

signals:
    void send_text_message(QString message);
    void send_binary_message(QByteArray message);
    // Everything sent has left for the socket, and someone asked to be told.
    void output_drained();

public slots:
    void receive_text_message(QString message);
    // Binary frames from clients carry nothing the server understands; they are ignored.
    void receive_binary_message(QByteArray message);

private:
    void flush_complete_batches();

    MessageRouter* router = nullptr;
    bool debug_json;
    // Oldest first.
    std::deque<std::unique_ptr<PendingBatch>> pending_batches;
    std::function<qint64()> unsent_probe;
    bool drained_wanted = false;
};
