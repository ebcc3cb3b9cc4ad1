// Start and end of the diagnostics module, its settings, the checks of the finders' arguments
// and the progress of their scans.

#include "core/Session.h"
#include "diagnostics/Diagnostics.h"
#include "geometry/GeometryModule.h"

#include <cmath>
#include <set>
#include <stdexcept>

namespace tarvo::kernel {

namespace diagnostics {

Settings& settings() {
    static Settings s;
    return s;
}

const GeometryModel& model() {
    const GeometryModule* m = geometry_module();
    if (!m)
        throw std::runtime_error("the geometry module is not running");
    return m->model();
}

namespace {

std::optional<std::vector<int>> scope(const std::vector<int>& ids, GeomKind kind,
                                      const char* what) {
    const std::string type = kind_name(kind);
    if (ids.empty()) {
        error(std::string(what) + ": the " + type + " list is empty");
        return std::nullopt;
    }
    std::set<int> out;
    for (int id : ids) {
        if (!model().exists(kind, id)) {
            error(std::string(what) + ": " + type + " " + std::to_string(id) + " does not exist");
            return std::nullopt;
        }
        out.insert(id);
    }
    return std::vector<int>(out.begin(), out.end());
}

} // namespace

std::optional<std::vector<int>> volume_scope(const std::vector<int>& ids, const char* what) {
    return scope(ids, GeomKind::Volume, what);
}

std::optional<std::vector<int>> surface_scope(const std::vector<int>& ids, const char* what) {
    return scope(ids, GeomKind::Surface, what);
}

bool positive_value(double value, const char* what, const char* name) {
    if (std::isfinite(value) && value > 0)
        return true;
    return error(std::string(what) + ": " + name + " must be greater than 0");
}

std::vector<int> entities_of(const std::vector<int>& volumes, GeomKind kind) {
    std::set<int> out;
    for (int v : volumes)
        for (int id : model().relatives(GeomKind::Volume, v, kind))
            out.insert(id);
    return {out.begin(), out.end()};
}

std::vector<int> volumes_holding(GeomKind kind, int id) {
    return model().relatives(kind, id, GeomKind::Volume);
}

struct Scan::Impl {
    std::optional<Progress> progress;
    long total = 0, done = 0;
};

Scan::Scan(const char* title, long total) : impl_(new Impl) {
    impl_->total = total;
    if (total >= 200)
        impl_->progress.emplace(title, "", true);
}

Scan::~Scan() {
    delete impl_;
}

void Scan::step() {
    if (interrupted())
        throw Interrupted();
    ++impl_->done;
    if (impl_->progress && impl_->done % 50 == 0)
        impl_->progress->step(impl_->done, impl_->total);
}

} // namespace diagnostics

void init_diagnostics_module() {
    diagnostics::settings() = diagnostics::Settings{};
    diagnostics::register_commands();
}

void shutdown_diagnostics_module() {}

} // namespace tarvo::kernel
