#include "json_rpc/RPCMethodWrapper.h"

bool RPCMethodWrapper::process_params(const QJsonValue& params) {
    return params.isNull() || params.isUndefined() || params.isObject();
}
