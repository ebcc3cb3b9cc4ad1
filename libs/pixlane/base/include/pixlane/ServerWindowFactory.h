#pragma once

#include <map>
#include <memory>
#include <string>

#include <pixlane/GWindowFactory.h>

// Hidden windows on EGL, with no display and no X server: an EGL device of a GPU when there is
// one that works, otherwise Mesa's surfaceless platform (llvmpipe). Each view gets its own GL
// 3.2 core context and a small pbuffer, made current only on the thread that calls into the
// factory or renders the view; VTK draws into its own framebuffers of the view's size, so a
// resize never touches EGL. Executables that use it must link pixlane_glew_shim.
//
// Threads: as GWindowFactory; construct, use and destroy it on the rendering thread. The
// destructor takes the windows away from views that still have one.
class ServerWindowFactory : public GWindowFactory {
public:
    ServerWindowFactory();
    ~ServerWindowFactory() override;
    ServerWindowFactory(const ServerWindowFactory&) = delete;
    ServerWindowFactory& operator=(const ServerWindowFactory&) = delete;

    // False when no EGL display with a suitable config could be had; every view is refused then.
    bool ok() const;
    // What was used ("EGL device <name>", "Mesa surfaceless") or why nothing could be.
    const std::string& description() const;

    bool core_initialize_window(const std::shared_ptr<GView>& view) override;
    void core_de_initialize_window(const std::shared_ptr<GView>& view) override;
    void resize(GView* view, int width, int height) override;

    // GL contexts that exist now, over all factories of the process.
    static int live_contexts();

    // Tells glibc (process-wide, any thread, once) to keep blocks of up to 32 MB in the heap and
    // not to give freed memory back below 64 MB. llvmpipe allocates vertex buffers of a draw
    // call's size for every draw, and each frame's capture and payload are a few MB; given back
    // to the system after each use, every frame faults all their pages in again, which on a
    // virtual machine costs more than the drawing. Without glibc it does nothing.
    static void keep_frame_memory();

private:
    struct Display;
    struct Window;
    void destroy(GView* view, Window& window);

    std::unique_ptr<Display> display_;
    std::map<GView*, std::unique_ptr<Window>> windows_;
};
