#pragma once
// The building blocks of the kernel method table. Each family file lists its methods as rows, in
// the order in which the table holds them:
//
//   row("get_mesh_intervals", &TI::get_mesh_intervals, {param("geometry_type"),
//   param("entity_id")})
//
// A row pairs a method name with a factory of its wrapper. row() derives the wrapper from the
// callable's type (GenericRPCMethodWrapper): value and const-reference arguments are the
// parameters, read under the names given in argument order; non-const references are outputs,
// returned under the keys given by out(). A callable may be a kernel function, a small adapter
// that reorders arguments, or a captureless lambda. hand<W>() lists a hand-written wrapper.
//
// Rows are built once, on first use, and are immutable afterwards.

#include "json_rpc/GenericRPCMethodWrapper.h"
#include "methods/KernelJson.h"

#include <QString>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <type_traits>
#include <vector>

namespace tarvo::methods {

using json_rpc::optional_param;
using json_rpc::out;
using json_rpc::param;

struct MethodRow {
    const char* name;
    std::function<std::unique_ptr<RPCMethodWrapper>()> make;
};
using MethodRows = std::vector<MethodRow>;

namespace detail {
template <typename F> struct signature_of;
template <typename R, typename... Args> struct signature_of<std::function<R(Args...)>> {
    using type = R(Args...);
    using result = R;
    static constexpr size_t arity = sizeof...(Args);
};
} // namespace detail

template <typename F>
MethodRow row(const char* name, F callable, std::vector<json_rpc::ParamSpec> params) {
    using Traits = detail::signature_of<decltype(std::function{callable})>;
    // A pointer result would silently become a JSON bool; such results go through an adapter.
    static_assert(!std::is_pointer_v<typename Traits::result>,
                  "convert pointer results in an adapter (see six())");
    if (params.size() != Traits::arity) {
        // A table that does not match its functions is a build mistake: stop at once.
        std::fprintf(stderr, "method table: %s names %zu of %zu arguments\n", name, params.size(),
                     Traits::arity);
        std::abort();
    }
    return {name, [callable, params = std::move(params)]() -> std::unique_ptr<RPCMethodWrapper> {
                return std::make_unique<GenericRPCMethodWrapper<typename Traits::type>>(callable,
                                                                                        params);
            }};
}

template <typename Wrapper> MethodRow hand(const char* name) {
    return {name,
            []() -> std::unique_ptr<RPCMethodWrapper> { return std::make_unique<Wrapper>(); }};
}

// The six values behind a degree-of-freedom pointer (the kernel never answers null).
template <typename T> std::array<T, 6> six(const T* values) {
    std::array<T, 6> copy{};
    for (size_t i = 0; i < copy.size(); ++i)
        copy[i] = values[i];
    return copy;
}

// The families, in table order.
void add_session_methods(MethodRows& rows);
void add_view_methods(MethodRows& rows);
void add_mesh_sizing_methods(MethodRows& rows);
void add_geometry_query_methods(MethodRows& rows);
void add_diagnostics_methods(MethodRows& rows);
void add_exodus_methods(MethodRows& rows);
void add_group_methods(MethodRows& rows);
void add_assembly_methods(MethodRows& rows);
void add_mesh_entity_methods(MethodRows& rows);
void add_bc_material_methods(MethodRows& rows);
void add_label_bl_methods(MethodRows& rows);

} // namespace tarvo::methods
