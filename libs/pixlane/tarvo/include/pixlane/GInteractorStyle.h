#pragma once

#include <pixlane/GInteractorStyleBase.h>

class GTarvoModelSet;

// The interactor style of a view of the kernel's model: GInteractorStyleBase's gestures, with the
// selection ones carried out by the model set's picking (the kernel's pick type and filter,
// occluded picking) and written into the kernel's view state, so that the kernel emits
// highlighted / unhighlighted exactly as it does for the select commands. Hovering pre-selects:
// what a click would pick is drawn in the pre-selection colour, in this view only, without
// touching the kernel. Echoing prints the selection through the kernel's message channel.
//
// Threads: the rendering thread, which is the kernel's thread.
class GInteractorStyle : public GInteractorStyleBase {
public:
    static GInteractorStyle* New();
    vtkTypeMacro(GInteractorStyle, GInteractorStyleBase);

    // The scene to pick in (not owned); null picks nothing.
    void SetModelSet(GTarvoModelSet* model_set) { model_set_ = model_set; }
    GTarvoModelSet* GetModelSet() const { return model_set_; }

protected:
    GInteractorStyle() = default;
    ~GInteractorStyle() override = default;

    bool pick_point(int x, int y, bool add) override;
    bool pick_area(const std::vector<std::array<double, 2>>& outline, bool add) override;
    void preselect(int x, int y) override;
    bool surface_point(int x, int y, double point[3]) override;
    void echo_selection() override;

private:
    GTarvoModelSet* model_set_ = nullptr;
};
