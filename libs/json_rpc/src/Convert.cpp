#include "json_rpc/Convert.h"

#include <QByteArray>
#include <QString>

#include <cmath>
#include <cstring>
#include <limits>

namespace json_rpc {

namespace {

// A double with no fractional part, as a 32-bit int. Values outside the int range give what
// the x86 truncating conversion gives for them (the "integer indefinite" INT_MIN), computed here
// without the undefined behaviour of an out-of-range static_cast.
int to_int32(double integral) {
    constexpr double lowest = static_cast<double>(std::numeric_limits<int>::min());
    constexpr double highest = static_cast<double>(std::numeric_limits<int>::max());
    if (!(integral >= lowest && integral <= highest))
        return std::numeric_limits<int>::min();
    return static_cast<int>(integral);
}

std::string utf8_up_to_nul(const QString& text) {
    const QByteArray bytes = text.toUtf8();
    const qsizetype nul = bytes.indexOf('\0');
    return std::string(bytes.constData(), static_cast<size_t>(nul < 0 ? bytes.size() : nul));
}

} // namespace

bool from_json(const QJsonValue& value, int& out) {
    if (!value.isDouble())
        return false;
    const double number = value.toDouble();
    double integral = 0.0;
    if (std::modf(number, &integral) != 0.0)
        return false;
    out = to_int32(integral);
    return true;
}

bool from_json(const QJsonValue& value, double& out) {
    if (!value.isDouble())
        return false;
    out = value.toDouble();
    return true;
}

bool from_json(const QJsonValue& value, bool& out) {
    if (!value.isBool())
        return false;
    out = value.toBool();
    return true;
}

bool from_json(const QJsonValue& value, std::string& out) {
    if (!value.isString())
        return false;
    out = utf8_up_to_nul(value.toString());
    return true;
}

bool from_json(const QJsonValue& value, QJsonValue& out) {
    out = value;
    return true;
}

QJsonValue to_json(const std::string& value) {
    const size_t length = std::strlen(value.c_str());
    return QJsonValue(QString::fromUtf8(value.data(), static_cast<qsizetype>(length)));
}

QJsonValue to_json(const char* value) {
    if (value == nullptr)
        return QJsonValue(QString());
    return QJsonValue(QString::fromUtf8(value));
}

} // namespace json_rpc
