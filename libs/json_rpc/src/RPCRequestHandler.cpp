#include "json_rpc/RPCRequestHandler.h"

#include <QJsonObject>

#include <exception>
#include <memory>

using json_rpc::ErrorCode;

namespace {

// A request without params means "no arguments given", which is what an empty object says: a
// method whose parameters are all optional, or that has none, then runs with its defaults, and
// one with a required parameter is refused for the missing name, not for the missing member.
QJsonValue params_of(const RPCRequest& request) {
    const QJsonValue params = request.params();
    return params.isNull() ? QJsonValue(QJsonObject()) : params;
}

} // namespace

RPCResponse RPCRequestHandler::exec(const RPCRequest& request) {
    RPCResponse response;
    try {
        const std::unique_ptr<RPCMethodWrapper> wrapper = create_method(request.method_name());
        if (!wrapper) {
            response = RPCResponse::error(request.id(), ErrorCode::MethodNotFound);
        } else if (!wrapper->process_params(params_of(request))) {
            response = RPCResponse::error(request.id(), ErrorCode::InvalidParams);
        } else {
            response = RPCResponse(request, wrapper->invoke());
        }
    } catch (const json_rpc::RefusedCall& refused) {
        response =
            RPCResponse::error(request.id(), refused.code(), QString::fromUtf8(refused.what()));
    } catch (const std::exception& exception) {
        response = RPCResponse::error(request.id(), ErrorCode::InternalError,
                                      QString::fromUtf8(exception.what()));
    } catch (...) {
        response = RPCResponse::error(request.id(), ErrorCode::InternalError);
    }

    if (request.is_notification())
        return RPCResponse();
    return response;
}

QString RPCRequestHandler::last_section(const QString& method_name) {
    return method_name.mid(method_name.lastIndexOf(QLatin1Char('.')) + 1);
}
