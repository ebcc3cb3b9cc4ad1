#pragma once
// The pieces that every graphics method is made of. A method reads its parameters into a call:
// `parse` answers the call to make, or nothing when the parameters are invalid (which the
// handler reports as -32602). Integer parameters follow one rule: a JSON number whose
// fractional part is 0, cut to int32; booleans count only as JSON booleans.
//
// Threads: worker thread, for one task.

#include "json_rpc/RPCMethodWrapper.h"

#include <QJsonObject>
#include <QJsonValue>

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <optional>
#include <string>

class ClientConnection;
class ServerGraphicsManager;
class ServerGraphicsView;

namespace graphics_params {

// True, with the value in `out`, when `value` is a number with no fractional part.
bool to_int(const QJsonValue& value, int32_t& out);
// The member `key` as an integer, if present and integral.
std::optional<int32_t> int_member(const QJsonObject& params, const char* key);
// Only a JSON boolean changes `out`.
void read_bool(const QJsonObject& params, const char* key, bool& out);
// Only a JSON string changes `out`.
void read_string(const QJsonObject& params, const char* key, std::string& out);
bool has_all(const QJsonObject& params, std::initializer_list<const char*> keys);
// The integral `view_id` member, when every one of `keys` (view_id among them) is present;
// nothing otherwise: the request is then refused as having invalid parameters.
std::optional<int32_t> view_id_of(const QJsonObject& params,
                                  std::initializer_list<const char*> keys);
// The view of that id, or null (also without a manager).
ServerGraphicsView* find_view(ServerGraphicsManager* manager, int32_t view_id);

} // namespace graphics_params

using GraphicsCall = std::function<QJsonValue()>;
using GraphicsParser = std::function<std::optional<GraphicsCall>(
    const QJsonObject& params, ServerGraphicsManager*, ClientConnection* client)>;

// The wrapper of every graphics method: the manager and the calling client, and the call that
// process_params made of the parameters.
class GraphicsRPCMethodWrapper : public RPCMethodWrapper {
public:
    GraphicsRPCMethodWrapper(ServerGraphicsManager* manager, ClientConnection* client,
                             GraphicsParser parser)
        : manager(manager), client(client), parser(std::move(parser)) {}

    bool process_params(const QJsonValue& params) override;
    QJsonValue invoke() override;

private:
    ServerGraphicsManager* manager;
    ClientConnection* client;
    GraphicsParser parser;
    GraphicsCall call;
};

// The input methods (keys, mouse, mapping, filters): the parser of a name, or an empty
// function for a name that isn't one of them.
GraphicsParser input_method(const QString& name);
