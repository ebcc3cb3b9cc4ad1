// The drawing sets for the graphics library (tarvo/KernelGraphics.h), which views read before
// every render: the `draw` command emits no event of its own.
//
// Threading: kernel thread only.
#include "tarvo/KernelGraphics.h"
#include "view/ViewState.h"

namespace tarvo::graphics {

std::vector<std::pair<std::string, int>> drawing_set(const std::string& name) {
    kernel::ViewState* view = kernel::view_state();
    if (!view)
        return {};
    const auto it = view->drawing_sets.find(name);
    return it == view->drawing_sets.end() ? std::vector<std::pair<std::string, int>>{} : it->second;
}

} // namespace tarvo::graphics
