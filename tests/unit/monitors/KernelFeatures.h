#pragma once
// Some monitor behaviour can only be observed once the kernel family behind it exists. Such tests
// skip, naming what is missing, while any of the kernel functions they read is still a
// placeholder; they start running by themselves when the family lands.

#include "tarvo/KernelCoverage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <string>

inline std::string missing_kernel_functions(std::initializer_list<const char*> names) {
    const auto not_built = TarvoInterface::not_built_functions();
    std::string missing;
    for (const char* name : names)
        if (std::binary_search(not_built.begin(), not_built.end(), std::string(name)))
            missing += (missing.empty() ? "" : ", ") + std::string(name);
    return missing;
}

#define SKIP_UNTIL_KERNEL_HAS(...)                                                                 \
    do {                                                                                           \
        const std::string missing = missing_kernel_functions({__VA_ARGS__});                       \
        if (!missing.empty())                                                                      \
            GTEST_SKIP() << "kernel functions not built yet: " << missing;                         \
    } while (false)
