// Time of one frame of a headless view: render, then read the pixels back, per size and scene.
// The camera turns by a degree before every frame so that nothing can be reused. The scenes are
// plain VTK sources, then the kernel's model drawn by GTarvoModelSet (cylinders, unmeshed and
// meshed) with the rebuild after a command that moves one of them.
#include <pixlane/GTarvoModelSet.h>
#include <pixlane/GView.h>
#include <pixlane/ServerWindowFactory.h>

#include "tarvo/TarvoInterface.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <vtkActor.h>
#include <vtkCamera.h>
#include <vtkCubeSource.h>
#include <vtkNew.h>
#include <vtkOpenGLRenderWindow.h>
#include <vtkPolyData.h>
#include <vtkPolyDataAlgorithm.h>
#include <vtkPolyDataMapper.h>
#include <vtkRenderer.h>
#include <vtkSphereSource.h>

namespace {

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

using clock_type = std::chrono::steady_clock;

double ms_since(clock_type::time_point t0) {
    return std::chrono::duration<double, std::milli>(clock_type::now() - t0).count();
}

struct FrameTimes {
    double render = 0, read = 0;
};

// Median render and read-back of `frames` frames, the camera a degree further each time.
FrameTimes time_frames(GView& view, int width, int height, int frames) {
    std::vector<unsigned char> pixels(static_cast<std::size_t>(width) * height * 4);
    std::vector<double> render_ms, read_ms;
    for (int i = 0; i < frames; ++i) {
        view.renderer()->GetActiveCamera()->Azimuth(1.0);
        const auto t0 = clock_type::now();
        view.render();
        render_ms.push_back(ms_since(t0));
        const auto t1 = clock_type::now();
        view.get_rgba_pixels(width, height, pixels.data());
        read_ms.push_back(ms_since(t1));
    }
    return {median(render_ms), median(read_ms)};
}

void run(ServerWindowFactory& factory, const char* scene, vtkPolyDataAlgorithm* source, int width,
         int height, int frames) {
    source->Update();
    const long triangles = static_cast<long>(source->GetOutput()->GetNumberOfPolys());
    auto view = std::make_shared<GView>();
    if (!factory.core_initialize_window(view))
        std::exit(1);
    factory.resize(view.get(), width, height);
    vtkNew<vtkPolyDataMapper> mapper;
    mapper->SetInputConnection(source->GetOutputPort());
    vtkNew<vtkActor> actor;
    actor->SetMapper(mapper);
    view->renderer()->AddActor(actor);
    view->reset_camera(); // also the first, uncounted frame that uploads the geometry

    const auto [render, read] = time_frames(*view, width, height, frames);
    std::printf("%-6s %8ld polygons %4dx%-4d  render %7.2f ms  read-back %6.2f ms  frame %7.2f ms "
                " (read-back %4.1f%%)\n",
                scene, triangles, width, height, render, read, render + read,
                100 * read / (render + read));
    factory.core_de_initialize_window(view);
}

// Frames with and without the copy of each frame to the window's own (pbuffer) framebuffer,
// alternating, which ServerWindowFactory leaves out: prints both medians and their ratio.
void compare_blit(GView& view, int width, int height, int frames) {
    auto* window = vtkOpenGLRenderWindow::SafeDownCast(view.render_window());
    std::vector<unsigned char> pixels(static_cast<std::size_t>(width) * height * 4);
    std::array<std::vector<double>, 2> ms;
    for (int i = 0; i < 2 * frames; ++i) {
        const int blit = i % 2;
        window->SetFrameBlitMode(blit ? vtkOpenGLRenderWindow::BlitToHardware
                                      : vtkOpenGLRenderWindow::NoBlit);
        view.renderer()->GetActiveCamera()->Azimuth(1.0);
        const auto t0 = clock_type::now();
        view.render();
        view.get_rgba_pixels(width, height, pixels.data());
        ms[static_cast<std::size_t>(blit)].push_back(ms_since(t0));
    }
    window->SetFrameBlitModeToNoBlit();
    const double without = median(ms[0]), with = median(ms[1]);
    std::printf("%21s %4dx%-4d  frame with blit to pbuffer %7.2f ms, without %7.2f ms: %.2f\n", "",
                width, height, with, without, with / without);
}

// Polygons the view draws: those of every visible actor (faces; lines are not counted).
long polygons_drawn(GView& view) {
    long total = 0;
    vtkActorCollection* actors = view.renderer()->GetActors();
    actors->InitTraversal();
    while (vtkActor* actor = actors->GetNextActor()) {
        auto* mapper = vtkPolyDataMapper::SafeDownCast(actor->GetMapper());
        if (actor->GetVisibility() && mapper && mapper->GetInput())
            total += static_cast<long>(mapper->GetInput()->GetNumberOfPolys());
    }
    return total;
}

// `count` cylinders in a grid drawn by the model set; meshed when `mesh_size` > 0. Prints the
// frame at both sizes, then the rebuild and frame after moving one cylinder, and returns the
// three times (ms).
std::array<double, 3> run_model(ServerWindowFactory& factory, int count, double mesh_size,
                                int frames, const char* note) {
    std::array<double, 3> out{};
    TarvoInterface::silent_cmd("reset");
    const int side = static_cast<int>(std::ceil(std::sqrt(count)));
    for (int i = 0; i < count; ++i) {
        const std::string line = "create cylinder radius 0.8 height 3 at " +
                                 std::to_string((i % side) * 2.5) + " " +
                                 std::to_string((i / side) * 2.5) + " 0";
        TarvoInterface::silent_cmd(line.c_str());
    }
    // Only the surfaces are meshed: a view draws the outer faces of a volume mesh, which are
    // the surface mesh, and a million of them in tetrahedra would take minutes to mesh here.
    if (mesh_size > 0) {
        TarvoInterface::silent_cmd(("surface all size " + std::to_string(mesh_size)).c_str());
        TarvoInterface::silent_cmd("mesh surface all");
    }
    GTarvoModelSet set;
    auto view = std::make_shared<GView>();
    if (!factory.core_initialize_window(view))
        std::exit(1);
    view->set_model_set(&set);
    char label[32];
    std::snprintf(label, sizeof label, "%d cyl%s %s", count, mesh_size > 0 ? " mesh" : "", note);
    int size_index = 0;
    for (const auto& [w, h] : {std::pair{800, 600}, std::pair{1920, 1080}}) {
        factory.resize(view.get(), w, h);
        view->reset_camera();
        view->renderer()->GetActiveCamera()->Elevation(30.0);
        view->render();
        const auto [render, read] = time_frames(*view, w, h, frames);
        std::printf("%-20s %4dx%-4d  render %7.2f ms  read-back %6.2f ms  frame %7.2f ms  %ld "
                    "polygons\n",
                    label, w, h, render, read, render + read, polygons_drawn(*view));
        out[static_cast<std::size_t>(size_index++)] = render + read;
        compare_blit(*view, w, h, frames);
    }
    // A command that changes one volume: the command, then the frame that rebuilds its piece.
    std::vector<double> command_ms, rebuild_ms;
    for (int i = 0; i < 5; ++i) {
        const auto t0 = clock_type::now();
        TarvoInterface::silent_cmd(i % 2 ? "move volume 1 x -0.1" : "move volume 1 x 0.1");
        command_ms.push_back(ms_since(t0));
        const auto t1 = clock_type::now();
        view->render();
        rebuild_ms.push_back(ms_since(t1));
    }
    out[2] = median(rebuild_ms);
    std::printf("%-20s 1920x1080 move one volume: command %6.2f ms, render with rebuild %7.2f "
                "ms\n",
                label, median(command_ms), median(rebuild_ms));
    view->set_model_set(nullptr);
    factory.core_de_initialize_window(view);
    return out;
}

} // namespace

int main(int argc, char** argv) {
    const int frames = argc > 1 ? std::atoi(argv[1]) : 50;
    ServerWindowFactory factory;
    if (!factory.ok())
        return 1;
    std::printf("%s, median of %d frames\n", factory.description().c_str(), frames);

    // "model" as the third argument leaves out the VTK sources.
    if (argc <= 3 || std::string(argv[3]) != "model") {
        vtkNew<vtkCubeSource> cube;
        vtkNew<vtkSphereSource> sphere; // about a million triangles
        sphere->SetThetaResolution(1002);
        sphere->SetPhiResolution(500);
        for (const auto& [w, h] : {std::pair{800, 600}, std::pair{1920, 1080}}) {
            run(factory, "cube", cube, w, h, frames);
            run(factory, "sphere", sphere, w, h, frames);
        }
    }

    if (!TarvoInterface::init({"bench_render"}))
        return 1;
    TarvoInterface::silent_cmd("echo off");
    // The model scenes with glibc's own heap policy, then with the frame memory kept (as the
    // server runs); the order can't be turned round, since glibc's adaptive limits can't be had
    // back once set.
    const double mesh_size = argc > 2 ? std::atof(argv[2]) : 0;
    std::vector<std::pair<int, double>> scenes{{20, 0}, {100, 0}};
    if (mesh_size > 0)
        scenes.push_back({100, mesh_size});
    std::vector<std::array<double, 3>> before;
    for (const auto& [count, size] : scenes)
        before.push_back(run_model(factory, count, size, frames, "(heap as is)"));
    ServerWindowFactory::keep_frame_memory();
    for (std::size_t i = 0; i < scenes.size(); ++i) {
        const auto after = run_model(factory, scenes[i].first, scenes[i].second, frames, "(kept)");
        std::printf("%d cyl%s: before / after  800x600 %.2f  1920x1080 %.2f  rebuild %.2f\n",
                    scenes[i].first, scenes[i].second > 0 ? " mesh" : "", before[i][0] / after[0],
                    before[i][1] / after[1], before[i][2] / after[2]);
    }
    TarvoInterface::destroy();
    return 0;
}
