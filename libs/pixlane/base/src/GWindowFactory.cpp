#include <pixlane/GWindowFactory.h>

namespace {

std::unique_ptr<GWindowFactory>& installed() {
    static std::unique_ptr<GWindowFactory> factory;
    return factory;
}

} // namespace

GWindowFactory* GWindowFactory::get_window_factory() {
    return installed().get();
}

void GWindowFactory::set_window_factory(std::unique_ptr<GWindowFactory> factory) {
    installed() = std::move(factory);
}
