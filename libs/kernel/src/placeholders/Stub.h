#pragma once
// Placeholders for kernel functions that are not written yet; used only by the files beside this
// one. Each macro defines the function (parameters unnamed, since a placeholder reads none) and
// adds its name to the not-built list at static initialisation:
//
//   STUB(name, (parameter types), return type)   answers the value-initialised return type:
//                                                false, 0, 0.0, "", empty list, zeros, null
//   STUB_ID(name, (parameter types))             an int id: answers -1
//   STUB_VOID(name, (parameter types))
//   STUB_DOF(name, (parameter types), const T*)  points at six zeros, never null
//
// Output arguments are left as the caller gave them.

#include "tarvo/KernelCoverage.h"
#include "tarvo/TarvoInterface.h"

#include <type_traits>

namespace tarvo::kernel {
// Adds `name` to the list of not_built_functions(); returns true so that it can initialise a
// static.
bool register_not_built(const char* name);
// Prints "ERROR: <name> is not available in this kernel yet." and counts it.
void report_not_built(const char* name);
} // namespace tarvo::kernel

#define TARVO_STUB_REGISTER(name)                                                                  \
    [[maybe_unused]] static const bool name##_not_built =                                          \
        ::tarvo::kernel::register_not_built(#name);

#define STUB(name, params, ...)                                                                    \
    __VA_ARGS__ name params {                                                                      \
        ::tarvo::kernel::report_not_built(#name);                                                  \
        return {};                                                                                 \
    }                                                                                              \
    TARVO_STUB_REGISTER(name)

#define STUB_ID(name, params)                                                                      \
    int name params {                                                                              \
        ::tarvo::kernel::report_not_built(#name);                                                  \
        return -1;                                                                                 \
    }                                                                                              \
    TARVO_STUB_REGISTER(name)

#define STUB_VOID(name, params)                                                                    \
    void name params {                                                                             \
        ::tarvo::kernel::report_not_built(#name);                                                  \
    }                                                                                              \
    TARVO_STUB_REGISTER(name)

#define STUB_DOF(name, params, ...)                                                                \
    __VA_ARGS__ name params {                                                                      \
        ::tarvo::kernel::report_not_built(#name);                                                  \
        static const std::remove_cv_t<std::remove_pointer_t<__VA_ARGS__>> zeros[6] = {};           \
        return zeros;                                                                              \
    }                                                                                              \
    TARVO_STUB_REGISTER(name)
