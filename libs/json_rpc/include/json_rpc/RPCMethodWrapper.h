#pragma once
// One client call becomes one short-lived wrapper: process_params() takes the typed arguments
// out of params and keeps them, invoke() calls the wrapped function and turns what comes back
// into JSON. invoke() is called only after process_params() answered true.

#include <QJsonValue>

class RPCMethodWrapper {
public:
    virtual ~RPCMethodWrapper() = default;

    // Default for methods that read no parameters: accepts absent/null params and any object,
    // refuses everything else (arrays, strings, numbers, bools).
    virtual bool process_params(const QJsonValue& params);
    virtual QJsonValue invoke() = 0;
};
