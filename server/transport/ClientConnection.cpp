#include "ClientConnection.h"

#include "MessageRouter.h"
#include "json_rpc/JsonRPCParser.h"
#include "log_message.h"

ClientConnection::ClientConnection(bool debug_json) : QObject(nullptr), debug_json(debug_json) {}

ClientConnection::~ClientConnection() = default;

void ClientConnection::receive_text_message(QString message) {
    if (router == nullptr)
        return;
    if (debug_json)
        log_message(QLatin1String("-> ") + message);

    JsonRPCParser parser;
    parser.parse(message);
    if (parser.is_empty())
        return;

    if (!parser.is_batch()) {
        if (parser.has_errors())
            send_response(parser.error());
        else if (parser.is_request())
            router->process_request(this, parser.request());
        else
            router->process_response(this, parser.response());
        return;
    }

    if (!parser.is_request()) {
        const RPCBatchResponse responses = parser.batch_responses();
        for (const RPCResponse& response : responses.responses())
            router->process_response(this, response);
        return;
    }

    const RPCBatchResponse errors = parser.batch_errors();
    const RPCBatchRequest requests = parser.batch_requests();
    const std::size_t error_count = errors.response_count();
    const std::size_t request_count = requests.request_count();
    const std::size_t notification_count = requests.notification_count();
    // A batch that expects no response gets no record, so the errors of a batch made only of
    // notifications and bad elements are never sent. Clients rely on such a batch staying silent.
    if (request_count != notification_count) {
        if (pending_batches.size() >= kMaxPendingBatches) {
            // Refused whole and unrouted; the error goes out at once, past the pending batches
            // that would otherwise swallow an answer under a null id.
            const RPCResponse refusal = RPCResponse::error(
                QJsonValue::Null, json_rpc::ErrorCode::LimitExceeded,
                QStringLiteral("at most %1 batches may wait for answers on one connection")
                    .arg(kMaxPendingBatches));
            emit send_text_message(QString::fromUtf8(refusal.to_json_string()));
            return;
        }
        auto batch = std::make_unique<PendingBatch>(errors);
        batch->expected_count = request_count + error_count - notification_count;
        batch->ids.reserve(static_cast<qsizetype>(request_count - notification_count));
        for (const RPCRequest& request : requests.requests()) {
            if (!request.is_notification())
                batch->ids.insert(request.id());
        }
        pending_batches.push_back(std::move(batch));
    }
    router->process_batch(this, requests);
}

void ClientConnection::receive_binary_message(QByteArray message) {
    Q_UNUSED(message);
}

void ClientConnection::send_response(const RPCResponse& response) {
    if (pending_batches.empty()) {
        emit send_text_message(QString::fromUtf8(response.to_json_string()));
        return;
    }
    // Ids are never taken out of a record, so an id repeated in two batches lands in the older
    // one until that one has gone. A response that no batch waits for is dropped: clients must
    // not mix single requests into a running batch.
    const QJsonValue id = response.id();
    for (const auto& batch : pending_batches) {
        if (batch->ids.contains(id)) {
            batch->add_response(response);
            break;
        }
    }
    flush_complete_batches();
}

void ClientConnection::flush_complete_batches() {
    while (!pending_batches.empty() &&
           pending_batches.front()->response_count() == pending_batches.front()->expected_count) {
        const std::unique_ptr<PendingBatch> batch = std::move(pending_batches.front());
        pending_batches.pop_front();
        emit send_text_message(QString::fromUtf8(batch->to_json_string()));
    }
}

void ClientConnection::send_notification(const RPCRequest& notification) {
    emit send_text_message(QString::fromUtf8(notification.to_json_string()));
}

void ClientConnection::send_notifications(const RPCBatchRequest& notifications) {
    emit send_text_message(QString::fromUtf8(notifications.to_json_string()));
}

void ClientConnection::send_binary(const BinaryMessage& message) {
    RPCRequest header(QStringLiteral("binary_header.%1").arg(message.name));
    if (!message.params.isEmpty())
        header.set_params(message.params);
    emit send_text_message(QString::fromUtf8(header.to_json_string()));
    emit send_binary_message(message.payload);
}
