#pragma once
// What the public functions of diagnostics share: the guard, the shaping of measured answers and
// the checks of their arguments (an unknown id or an empty list is one error line). Internal to
// the module's *Api.cpp files.
//
// Threading: kernel thread only.

#include "core/Guard.h"
#include "core/Session.h"
#include "diagnostics/Diagnostics.h"
#include "diagnostics/Solutions.h"
#include "tarvo/TarvoInterface.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <set>

namespace tk = tarvo::kernel;
namespace dg = tarvo::kernel::diagnostics;
using dg::Solutions;
using tk::GeomKind;

namespace tarvo::kernel::diagnostics::api {

template <class T, class F> T run(const char* name, T fail, F&& body) {
    return tk::guarded(name, std::move(fail), std::forward<F>(body));
}

inline std::vector<int> ids_of(const std::vector<dg::Measured>& found) {
    std::vector<int> out;
    for (const auto& m : found)
        out.push_back(m.id);
    return out;
}

inline void split(const std::vector<dg::Measured>& found, std::vector<int>& ids,
                  std::vector<double>& values) {
    ids.clear();
    values.clear();
    for (const auto& m : found) {
        ids.push_back(m.id);
        values.push_back(m.value);
    }
}

inline bool exists(GeomKind kind, int id, const char* what) {
    if (dg::model().exists(kind, id))
        return true;
    return tk::error(std::string(what) + ": " + tk::kind_name(kind) + " " + std::to_string(id) +
                     " does not exist");
}

// Surfaces of volumes: the finders of surfaces take either.
inline std::vector<int> surfaces_in(const std::vector<int>& volumes) {
    return dg::entities_of(volumes, GeomKind::Surface);
}

// Surface ids, or the surfaces of volume ids when the list names volumes only: target_ids of
// the surface finders may be either. Volume ids are taken when every id is a volume and not
// every id is a surface.
inline std::optional<std::vector<int>> surface_targets(const std::vector<int>& ids,
                                                       const char* what) {
    if (ids.empty()) {
        tk::error(std::string(what) + ": the surface list is empty");
        return std::nullopt;
    }
    return dg::surface_scope(ids, what);
}

inline std::vector<int>
measured_surfaces(const std::vector<int>& target_ids, double size, const char* what,
                  std::vector<dg::Measured> (*finder)(const std::vector<int>&, double)) {
    return run(what, std::vector<int>{}, [&] {
        const auto scope = surface_targets(target_ids, what);
        if (!scope || !dg::positive_value(size, what, "the size"))
            return std::vector<int>{};
        return ids_of(finder(*scope, size));
    });
}

} // namespace tarvo::kernel::diagnostics::api
