#include "json_rpc/RPCRequestHandler.h"

#include <exception>
#include <memory>

using json_rpc::ErrorCode;

RPCResponse RPCRequestHandler::exec(const RPCRequest& request) {
    RPCResponse response;
    try {
        const std::unique_ptr<RPCMethodWrapper> wrapper(create_method(request.method_name()));
        if (!wrapper) {
            response = RPCResponse::error(request.id(), ErrorCode::MethodNotFound);
        } else if (!wrapper->process_params(request.params())) {
            response = RPCResponse::error(request.id(), ErrorCode::InvalidParams);
        } else {
            response = RPCResponse(request, wrapper->invoke());
        }
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
