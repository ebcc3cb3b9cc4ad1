#pragma once
// The member names and version tag of the wire format: the one place in the system that spells
// them. Literal views, so that they are usable from any static initialiser.

#include <QLatin1String>

namespace json_rpc::wire {

constexpr QLatin1String kVersionKey("jsonrpc");
constexpr QLatin1String kVersion("2.0");
constexpr QLatin1String kMethodKey("method");
constexpr QLatin1String kParamsKey("params");
constexpr QLatin1String kIdKey("id");
constexpr QLatin1String kResultKey("result");
constexpr QLatin1String kErrorKey("error");
constexpr QLatin1String kCodeKey("code");
constexpr QLatin1String kMessageKey("message");
constexpr QLatin1String kDataKey("data");

} // namespace json_rpc::wire
