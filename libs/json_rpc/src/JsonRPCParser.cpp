#include "json_rpc/JsonRPCParser.h"

#include "StrictJson.h"
#include "WireFormat.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonParseError>

#include <cmath>

using namespace json_rpc::wire;
using json_rpc::ErrorCode;
namespace strict = json_rpc::strict;

namespace {

// Largest integer that every client's number type (an IEEE double) holds exactly. Beyond it an
// id could come back from a client library altered, so it is refused rather than echoed.
constexpr double kLargestExactInteger = 9007199254740991.0; // 2^53 - 1

enum class Kind { Request, Response, Invalid };

struct Classified {
    Kind kind = Kind::Invalid;
    // For an invalid element: the id to answer under (Null when it cannot be trusted).
    QJsonValue error_id = QJsonValue(QJsonValue::Null);
};

bool is_usable_id(const QJsonValue& id) {
    if (id.isString() || id.isNull())
        return true;
    if (id.isDouble())
        return std::fabs(id.toDouble()) <= kLargestExactInteger;
    return false;
}

bool looks_like_response(const QJsonObject& object) {
    return !object.contains(kMethodKey) &&
           (object.contains(kResultKey) || object.contains(kErrorKey));
}

Classified classify(const QJsonValue& element) {
    Classified result;
    if (!element.isObject())
        return result;
    const QJsonObject object = element.toObject();
    if (looks_like_response(object)) {
        result.kind = Kind::Response;
        return result;
    }

    // An id member that is present and usable is echoed in the error, whatever else is wrong.
    const auto id = object.constFind(kIdKey);
    const bool has_id = id != object.constEnd();
    if (has_id && !is_usable_id(*id))
        return result;
    if (has_id)
        result.error_id = *id;

    const QJsonValue version = object.value(kVersionKey);
    if (!version.isString() || version.toString() != kVersion)
        return result;
    if (!object.value(kMethodKey).isString())
        return result;
    const auto params = object.constFind(kParamsKey);
    if (params != object.constEnd() && !params->isObject() && !params->isArray())
        return result;

    result.kind = Kind::Request;
    return result;
}

} // namespace

void JsonRPCParser::parse(const QString& text) {
    // A parser is normally used once; only a second text has an answer to forget.
    if (used)
        *this = JsonRPCParser();
    used = true;

    if (text.trimmed().isEmpty()) {
        empty = true;
        return;
    }

    const QByteArray utf8 = text.toUtf8();
    const strict::Checked checked = strict::check(utf8, kMaxBatchElements);
    switch (checked.status) {
    case strict::Checked::SyntaxError:
        single_error = RPCResponse::error(QJsonValue::Null, ErrorCode::ParseError, checked.detail);
        return;
    case strict::Checked::NumberOutOfRange:
        single_error =
            RPCResponse::error(QJsonValue::Null, ErrorCode::InvalidRequest, checked.detail);
        return;
    case strict::Checked::TooManyElements:
        single_error =
            RPCResponse::error(QJsonValue::Null, ErrorCode::LimitExceeded, checked.detail);
        return;
    case strict::Checked::Valid:
        break;
    }
    // A lone scalar is JSON, but no message: an invalid request rather than a parse error.
    if (!checked.container) {
        single_error = RPCResponse::error(QJsonValue::Null, ErrorCode::InvalidRequest);
        return;
    }

    QJsonParseError parse_error{};
    const QJsonDocument document = QJsonDocument::fromJson(
        checked.rewritten.isEmpty() ? utf8 : checked.rewritten, &parse_error);
    if (parse_error.error != QJsonParseError::NoError) {
        // Grammatical, yet refused by Qt (a limit of its own): still no message to act on.
        single_error =
            RPCResponse::error(QJsonValue::Null, ErrorCode::ParseError, parse_error.errorString());
        return;
    }

    if (document.isObject()) {
        const QJsonObject object = document.object();
        const Classified classified = classify(object);
        switch (classified.kind) {
        case Kind::Request:
            request_kind = true;
            single_request = RPCRequest::from_json(object);
            break;
        case Kind::Response:
            single_response = RPCResponse::from_json(object);
            break;
        case Kind::Invalid:
            single_error = RPCResponse::error(classified.error_id, ErrorCode::InvalidRequest);
            break;
        }
        return;
    }

    const QJsonArray array = document.array();
    if (array.isEmpty()) {
        single_error = RPCResponse::error(QJsonValue::Null, ErrorCode::InvalidRequest);
        return;
    }

    batch = true;
    std::vector<Classified> kinds;
    kinds.reserve(static_cast<size_t>(array.size()));
    bool all_responses = true;
    for (const QJsonValue& element : array) {
        kinds.push_back(classify(element));
        all_responses = all_responses && kinds.back().kind == Kind::Response;
    }

    if (all_responses) {
        for (const QJsonValue& element : array)
            responses.add_response(RPCResponse::from_json(element.toObject()));
        return;
    }

    // A batch of requests. A response among requests is out of place: it counts as a bad element
    // and is answered under a null id, so that its id can never match a request of the batch.
    request_kind = true;
    for (qsizetype i = 0; i < array.size(); ++i) {
        const Classified& classified = kinds[static_cast<size_t>(i)];
        if (classified.kind == Kind::Request)
            requests.push_back(RPCRequest::from_json(array.at(i).toObject()));
        else
            errors.add_response(RPCResponse::error(classified.error_id, ErrorCode::InvalidRequest));
    }
}
