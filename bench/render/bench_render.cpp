// Time of one frame of a headless view: render, then read the pixels back, per size and scene.
// The camera turns by a degree before every frame so that nothing can be reused.
#include <pixlane/GView.h>
#include <pixlane/ServerWindowFactory.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include <vtkActor.h>
#include <vtkCamera.h>
#include <vtkCubeSource.h>
#include <vtkNew.h>
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

    std::vector<unsigned char> pixels(static_cast<std::size_t>(width) * height * 4);
    std::vector<double> render_ms, read_ms;
    using clock = std::chrono::steady_clock;
    for (int i = 0; i < frames; ++i) {
        view->renderer()->GetActiveCamera()->Azimuth(1.0);
        const auto t0 = clock::now();
        view->render();
        const auto t1 = clock::now();
        view->get_rgba_pixels(width, height, pixels.data());
        const auto t2 = clock::now();
        render_ms.push_back(std::chrono::duration<double, std::milli>(t1 - t0).count());
        read_ms.push_back(std::chrono::duration<double, std::milli>(t2 - t1).count());
    }
    const double render = median(render_ms), read = median(read_ms);
    std::printf("%-6s %8ld polygons %4dx%-4d  render %7.2f ms  read-back %6.2f ms  frame %7.2f ms "
                " (read-back %4.1f%%)\n",
                scene, triangles, width, height, render, read, render + read,
                100 * read / (render + read));
    factory.core_de_initialize_window(view);
}

} // namespace

int main(int argc, char** argv) {
    const int frames = argc > 1 ? std::atoi(argv[1]) : 50;
    ServerWindowFactory factory;
    if (!factory.ok())
        return 1;
    std::printf("%s, median of %d frames\n", factory.description().c_str(), frames);

    vtkNew<vtkCubeSource> cube;
    vtkNew<vtkSphereSource> sphere; // about a million triangles
    sphere->SetThetaResolution(1002);
    sphere->SetPhiResolution(500);
    for (const auto& [w, h] : {std::pair{800, 600}, std::pair{1920, 1080}}) {
        run(factory, "cube", cube, w, h, frames);
        run(factory, "sphere", sphere, w, h, frames);
    }
    return 0;
}
