#include <pixlane/GInteractorStyle.h>
#include <pixlane/GTarvoModelSet.h>

#include "tarvo/KernelGraphics.h"
#include "tarvo/TarvoInterface.h"

#include <vtkObjectFactory.h>

vtkStandardNewMacro(GInteractorStyle);

bool GInteractorStyle::pick_point(int x, int y, bool add) {
    if (!model_set_ || !view())
        return false;
    const auto picked = model_set_->pick(view(), x, y);
    if (!picked) {
        // A click on nothing clears the selection; adding nothing changes nothing.
        if (add || TarvoInterface::current_selection_count() == 0)
            return false;
        return tarvo::graphics::select_entities({}, 0);
    }
    return tarvo::graphics::select_entities({*picked}, add ? 1 : 0);
}

bool GInteractorStyle::pick_area(const std::vector<std::array<double, 2>>& outline, bool add) {
    if (!model_set_ || !view())
        return false;
    const auto picked = model_set_->pick_area(view(), outline);
    if (picked.empty() && add)
        return false;
    return tarvo::graphics::select_entities(picked, add ? 1 : 0);
}

void GInteractorStyle::preselect(int x, int y) {
    if (!model_set_ || !view())
        return;
    model_set_->set_preselection(view(), x < 0 ? std::nullopt : model_set_->pick(view(), x, y));
}

bool GInteractorStyle::surface_point(int x, int y, double point[3]) {
    return model_set_ && view() && model_set_->surface_point(view(), x, y, point);
}

void GInteractorStyle::echo_selection() {
    TarvoInterface::print_current_selections();
}
