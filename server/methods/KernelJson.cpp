#include "methods/KernelJson.h"

#include "json_rpc/Convert.h"

#include <QJsonArray>
#include <QJsonObject>

namespace TarvoInterface {
namespace {
template <typename Enum> bool enum_from_json(const QJsonValue& value, Enum& out) {
    int number = 0;
    if (!json_rpc::from_json(value, number))
        return false;
    out = static_cast<Enum>(number);
    return true;
}
} // namespace

bool from_json(const QJsonValue& value, TI_BCTypes& out) {
    return enum_from_json(value, out);
}
bool from_json(const QJsonValue& value, TI_BCEntityTypes& out) {
    return enum_from_json(value, out);
}
bool from_json(const QJsonValue& value, TI_MaterialProperty& out) {
    return enum_from_json(value, out);
}

QJsonValue to_json(const AssemblyItem& item) {
    QJsonObject object;
    object.insert("name", json_rpc::to_json(item.name));
    object.insert("type", json_rpc::to_json(item.type));
    object.insert("level", item.level);
    object.insert("instance", item.instance);
    object.insert("path", json_rpc::to_json(item.path));
    object.insert("id", item.id);
    object.insert("volume_ids", json_rpc::to_json(item.volume_ids));
    return object;
}

QJsonValue to_json(const CFD_BC_Entity& bc) {
    QJsonObject object;
    object.insert("type", json_rpc::to_json(bc.type));
    object.insert("id", bc.id);
    object.insert("name", json_rpc::to_json(bc.name));
    return object;
}

QJsonValue to_json(const MeshErrorFeedback* error) {
    QJsonObject object;
    if (!error) // not expected from the kernel; an empty record is better than a crash
        return object;
    object.insert("entity_id", error->entity_id);
    object.insert("entity_type", json_rpc::to_json(error->entity_type));
    object.insert("error_code", error->error_code);
    object.insert("error_text", json_rpc::to_json(error->error_text));
    return object;
}

} // namespace TarvoInterface
