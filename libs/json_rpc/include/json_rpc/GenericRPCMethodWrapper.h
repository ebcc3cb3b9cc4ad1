#pragma once
// A wrapper made from a callable and the names of its parameters: one template serves every
// method whose shape is "named inputs, then outputs filled by reference".
//
//   GenericRPCMethodWrapper<R(Args...)>(callable, {parameter descriptions, one per argument})
//
// The argument kinds are told apart by type:
//   - a value or const reference argument is an input, read from params under its parameter's name;
//     its description may carry a default, which makes it optional (the default is converted by the
//     same rule, so a default can never bypass the type check);
//   - a non-const lvalue reference argument is an output; its parameter's name is the result key.
// Result: without outputs, the return value converted by to_json (Null for void). With outputs,
// an object holding "return" (unless void) and every output under its key.
//
// process_params: params must be an object (for a callable with no inputs, Null is accepted as
// well); every required name is looked up before any value is converted; then each value is
// converted in argument order and the first failure refuses the call.

#include "json_rpc/Convert.h"
#include "json_rpc/RPCMethodWrapper.h"

#include <QJsonObject>
#include <QString>

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace json_rpc {

struct ParamSpec {
    QString name;
    std::optional<QJsonValue> default_value; // set: optional input with this default
};

inline ParamSpec param(const char* name) {
    return ParamSpec{QString::fromLatin1(name), {}};
}
inline ParamSpec optional_param(const char* name, QJsonValue default_value) {
    return ParamSpec{QString::fromLatin1(name), std::move(default_value)};
}
// Output key; spelled apart from param() only for the reader of a table.
inline ParamSpec out(const char* key) {
    return ParamSpec{QString::fromLatin1(key), {}};
}

template <typename T>
inline constexpr bool is_output_v =
    std::is_lvalue_reference_v<T> && !std::is_const_v<std::remove_reference_t<T>>;

template <typename T> using storage_t = std::remove_cvref_t<T>;

} // namespace json_rpc

template <typename Signature> class GenericRPCMethodWrapper;

template <typename R, typename... Args>
class GenericRPCMethodWrapper<R(Args...)> : public RPCMethodWrapper {
public:
    using Function = std::function<R(Args...)>;

    // One parameter description per argument, in argument order. A list whose length differs from
    // its function is a programming error: the constructor throws std::invalid_argument, which
    // RPCRequestHandler::exec reports as Internal error instead of reading past the list.
    GenericRPCMethodWrapper(Function function, std::vector<json_rpc::ParamSpec> parameters)
        : function(std::move(function)), parameters(std::move(parameters)) {
        if (this->parameters.size() != sizeof...(Args))
            throw std::invalid_argument(
                "GenericRPCMethodWrapper: " + std::to_string(this->parameters.size()) +
                " parameter descriptions for " + std::to_string(sizeof...(Args)) + " arguments");
        if (!this->function)
            throw std::invalid_argument("GenericRPCMethodWrapper: no function");
    }

    bool process_params(const QJsonValue& params) override {
        constexpr size_t inputs = (0 + ... + (json_rpc::is_output_v<Args> ? 0 : 1));
        if (inputs == 0 && (params.isNull() || params.isUndefined()))
            return true;
        if (!params.isObject())
            return false;
        const QJsonObject object = params.toObject();
        // All required names first, whatever their order, before any conversion.
        std::vector<QJsonValue> values(sizeof...(Args));
        for (size_t i = 0; i < sizeof...(Args); ++i) {
            if (is_output[i])
                continue;
            const auto it = object.constFind(parameters[i].name);
            if (it != object.constEnd())
                values[i] = *it;
            else if (parameters[i].default_value)
                values[i] = *parameters[i].default_value;
            else
                return false;
        }
        return convert_all(values, std::index_sequence_for<Args...>{});
    }

    QJsonValue invoke() override { return call(std::index_sequence_for<Args...>{}); }

private:
    static constexpr bool is_output[sizeof...(Args) + 1] = {json_rpc::is_output_v<Args>..., false};
    static constexpr bool has_outputs = (false || ... || json_rpc::is_output_v<Args>);

    template <size_t... I>
    bool convert_all(const std::vector<QJsonValue>& values, std::index_sequence<I...>) {
        return (convert_one<I>(values[I]) && ...);
    }

    template <size_t I> bool convert_one(const QJsonValue& value) {
        if constexpr (json_rpc::is_output_v<std::tuple_element_t<I, std::tuple<Args...>>>) {
            (void)value;
            return true;
        } else {
            using json_rpc::from_json;
            return from_json(value, std::get<I>(arguments));
        }
    }

    template <size_t... I> QJsonValue call(std::index_sequence<I...>) {
        using json_rpc::to_json;
        if constexpr (!has_outputs) {
            if constexpr (std::is_void_v<R>) {
                function(std::get<I>(arguments)...);
                return QJsonValue(QJsonValue::Null);
            } else {
                return to_json(function(std::get<I>(arguments)...));
            }
        } else {
            QJsonObject result;
            if constexpr (std::is_void_v<R>) {
                function(std::get<I>(arguments)...);
            } else {
                result.insert(QStringLiteral("return"),
                              to_json(function(std::get<I>(arguments)...)));
            }
            (store_output<I>(result), ...);
            return result;
        }
    }

    template <size_t I> void store_output(QJsonObject& result) {
        if constexpr (json_rpc::is_output_v<std::tuple_element_t<I, std::tuple<Args...>>>) {
            using json_rpc::to_json;
            result.insert(parameters[I].name, to_json(std::get<I>(arguments)));
        }
    }

    Function function;
    std::vector<json_rpc::ParamSpec> parameters;
    std::tuple<json_rpc::storage_t<Args>...> arguments{};
};
