#pragma once
// The kernel's version, in core so that every module can write it into what it exports without
// reaching up to the public functions.

namespace tarvo::kernel {

inline constexpr const char* kKernelVersion = "0.1.0";

} // namespace tarvo::kernel
