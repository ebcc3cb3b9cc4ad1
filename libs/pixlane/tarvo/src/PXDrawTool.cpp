#include <pixlane/GTarvoModelSet.h>
#include <pixlane/PXDrawTool.h>

#include "tarvo/TarvoInterface.h"

#include <memory>

namespace {

std::unique_ptr<GTarvoModelSet>& the_model_set() {
    static std::unique_ptr<GTarvoModelSet> set;
    return set;
}

} // namespace

GTarvoModelSet* PXDrawTool::tarvo_model_set() {
    auto& set = the_model_set();
    if (!set && TarvoInterface::is_initialized())
        set = std::make_unique<GTarvoModelSet>();
    return set.get();
}

void PXDrawTool::release_model_set() {
    the_model_set().reset();
}

PXUtil::RenderMode PXDrawTool::get_render_mode() {
    return static_cast<PXUtil::RenderMode>(TarvoInterface::get_rendering_mode());
}
