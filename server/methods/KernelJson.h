#pragma once
// JSON forms of the kernel's enumerations and records. They live in the kernel's namespace so that
// the generic wrapper finds them by argument-dependent lookup, like the library's own rules.
//
//   enumerations  sent as int (the int rule) and cast; the value is not checked
//   AssemblyItem  {name, type, level, instance, path, id, volume_ids}
//   CFD_BC_Entity {type, id, name}
//   MeshErrorFeedback*  {entity_id, entity_type, error_code, error_text}; the record is only read

#include "tarvo/TarvoInterface.h"

#include <QJsonValue>

namespace TarvoInterface {

bool from_json(const QJsonValue& value, TI_BCTypes& out);
bool from_json(const QJsonValue& value, TI_BCEntityTypes& out);
bool from_json(const QJsonValue& value, TI_MaterialProperty& out);

QJsonValue to_json(const AssemblyItem& item);
QJsonValue to_json(const CFD_BC_Entity& bc);
QJsonValue to_json(const MeshErrorFeedback* error);

} // namespace TarvoInterface
