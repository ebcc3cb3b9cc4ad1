#pragma once
// What the modules above fe add to an exported Exodus file. fe writes the mesh and its sets; the
// analysis set-up lives in a module that depends on fe, so it hands its part over through this
// provider instead of fe reaching up.
//
// - info: one info record per line (Exodus cuts records at 80 characters).
// - nodeset_factors / sideset_factors: set id -> the distribution factor of every node of the
//   set (of every node of every side of a side set). Sets without an entry get none.
//
// Threading: kernel thread only.

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace tarvo::kernel::fe {

struct ExodusExtras {
    std::vector<std::string> info;
    std::map<int, double> nodeset_factors;
    std::map<int, double> sideset_factors;
};

using ExodusExtrasProvider = std::function<ExodusExtras()>;

// Installed by the bc module at its start, removed (empty function) at its end.
void set_exodus_extras_provider(ExodusExtrasProvider provider);
// What the provider gives, or nothing without one.
ExodusExtras exodus_extras();

} // namespace tarvo::kernel::fe
