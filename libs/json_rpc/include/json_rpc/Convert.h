#pragma once
// The parameter and result conversion rules shared by every wrapper. Each from_json answers
// false when the value breaks its rule, so that a failing element stops the caller; the target
// may then be partly filled. Each to_json turns one result type into its JSON form.
//
// Parameter rules (the "type words" of the method tables):
//   string       JSON string; UTF-8 bytes up to the first NUL character
//   int          JSON number whose fractional part is exactly 0; truncated to 32 bits, no range
//                check (1e12 passes and gives the processor's conversion result: a value
//                outside the int range becomes INT_MIN, as x86's truncating conversion makes it)
//   double       JSON number
//   bool         JSON bool only (0 and 1 are not booleans)
//   int list     array, each element by the int rule; an empty array is accepted
//   string list  array, each element by the string rule
//   list of double lists  array of arrays of numbers
//   double[N]    array of exactly N numbers

#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>

#include <array>
#include <string>
#include <utility>
#include <vector>

namespace json_rpc {

bool from_json(const QJsonValue& value, int& out);
bool from_json(const QJsonValue& value, double& out);
bool from_json(const QJsonValue& value, bool& out);
bool from_json(const QJsonValue& value, std::string& out);
bool from_json(const QJsonValue& value, QJsonValue& out); // any value, taken as it is

// Declared ahead so that nested containers (a vector of arrays, an array of vectors) find each
// other whatever order their definitions stand in.
template <typename T> bool from_json(const QJsonValue& value, std::vector<T>& out);
template <typename T, size_t N> bool from_json(const QJsonValue& value, std::array<T, N>& out);
template <typename A, typename B> QJsonValue to_json(const std::pair<A, B>& value);
template <typename T> QJsonValue to_json(const std::vector<T>& values);
template <typename T, size_t N> QJsonValue to_json(const std::array<T, N>& values);

template <typename T> bool from_json(const QJsonValue& value, std::vector<T>& out) {
    if (!value.isArray())
        return false;
    const QJsonArray array = value.toArray();
    out.clear();
    out.reserve(array.size());
    for (const QJsonValue& element : array) {
        T item{};
        if (!from_json(element, item))
            return false;
        out.push_back(std::move(item));
    }
    return true;
}

template <typename T, size_t N> bool from_json(const QJsonValue& value, std::array<T, N>& out) {
    if (!value.isArray())
        return false;
    const QJsonArray array = value.toArray();
    if (array.size() != static_cast<qsizetype>(N))
        return false;
    for (size_t i = 0; i < N; ++i)
        if (!from_json(array.at(static_cast<qsizetype>(i)), out[i]))
            return false;
    return true;
}

inline QJsonValue to_json(bool value) {
    return QJsonValue(value);
}
inline QJsonValue to_json(int value) {
    return QJsonValue(static_cast<double>(value));
}
inline QJsonValue to_json(double value) {
    return QJsonValue(value);
}
QJsonValue to_json(const std::string& value); // bytes up to the first NUL, read as UTF-8
QJsonValue to_json(const char* value);        // null pointer gives the empty string
inline QJsonValue to_json(const QJsonValue& value) {
    return value;
}

template <typename A, typename B> QJsonValue to_json(const std::pair<A, B>& value) {
    return QJsonArray{to_json(value.first), to_json(value.second)};
}

template <typename T> QJsonValue to_json(const std::vector<T>& values) {
    QJsonArray array;
    for (const T& value : values)
        array.append(to_json(value));
    return array;
}

template <typename T, size_t N> QJsonValue to_json(const std::array<T, N>& values) {
    QJsonArray array;
    for (const T& value : values)
        array.append(to_json(value));
    return array;
}

// Exactly `count` elements read through a pointer (the degree-of-freedom results).
template <typename T> QJsonValue to_json_fixed(const T* values, int count) {
    QJsonArray array;
    for (int i = 0; i < count; ++i)
        array.append(to_json(values[i]));
    return array;
}

} // namespace json_rpc
