#pragma once
// The one exception guard of the kernel. Every public function and every command handler runs
// its body through it, so that no exception of OpenCASCADE (Standard_Failure), Gmsh (which throws
// std::string), the standard library or our own code ever leaves the kernel: it becomes one error
// line, "<what> failed: <reason>", and the function's failure value.
//
// Threading: kernel thread only (it prints through error()).

#include "core/Session.h"

#include <string>
#include <utility>

namespace tarvo::kernel {

// The reason of the exception being handled, e.g. "OpenCASCADE Standard_DomainError: bad
// face", "Gmsh: unknown model" or the text of std::exception::what(). Call only inside a catch
// block.
std::string current_exception_text();

// Runs `body`; answers its result, or `fallback` after error("<what> failed: <reason>") when it
// throws.
template <class T, class Body> T guarded(const char* what, T fallback, Body&& body) {
    try {
        return std::forward<Body>(body)();
    } catch (...) {
        error(std::string(what) + " failed: " + current_exception_text());
    }
    return fallback;
}

} // namespace tarvo::kernel
