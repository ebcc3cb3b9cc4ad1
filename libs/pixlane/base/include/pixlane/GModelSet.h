#pragma once

#include <memory>

class AppUtil;
class GView;

// A scene that views draw: GView::set_model_set binds one, and the view tells it when it comes,
// goes, and when its camera was moved by input, so that a model set that keeps a camera of its
// own (the kernel's view state) can follow.
//
// Threads: the rendering thread only, like the views.
class GModelSet {
public:
    virtual ~GModelSet() = default;

    // The application object that views of this scene are constructed with; never null.
    virtual std::shared_ptr<AppUtil> app_util() const = 0;
    // Called by GView::set_model_set: draw into the view from its next render on / stop.
    virtual void attach_view(GView* view) = 0;
    virtual void detach_view(GView* view) = 0;
    // The view's camera was changed by input or reset_camera.
    virtual void camera_moved(GView* view) { (void)view; }
};
