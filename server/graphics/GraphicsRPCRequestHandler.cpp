#include "graphics/GraphicsRPCRequestHandler.h"

std::unique_ptr<RPCMethodWrapper>
GraphicsRPCRequestHandler::create_method(const QString& method_name) {
    // The view methods (create_view, render, the input events, ...) are matched here on the
    // name's last section once the render views exist.
    (void)method_name;
    return nullptr;
}
