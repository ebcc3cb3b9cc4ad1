#include "graphics/ServerGraphicsView.h"

#include "graphics/ImageFormat.h"
#include "graphics/RenderQueue.h"
#include "transport/BinaryMessage.h"
#include "transport/ClientConnection.h"

#include <pixlane/CLWindowFactory.h>
#include <pixlane/GInteractorStyle.h>
#include <pixlane/GTarvoModelSet.h>
#include <pixlane/GView.h>
#include <pixlane/GWindowFactory.h>

#include <QJsonObject>

#include <vtkSmartPointer.h>

#include <chrono>
#include <iomanip>
#include <iostream>
#include <utility>

namespace {

// vtkCommand's numbering, as the library reports it.
constexpr unsigned long kRenderWanted = 5; // RenderEvent: the view asks to be rendered
constexpr unsigned long kRenderDone = 4;   // EndEvent: a frame is finished

double now_seconds() {
    const auto us = std::chrono::duration_cast<std::chrono::microseconds>(
        std::chrono::steady_clock::now().time_since_epoch());
    return static_cast<double>(us.count()) / 1e6;
}

} // namespace

ServerGraphicsView::ServerGraphicsView(ClientConnection* client, RenderQueue* queue)
    : owner(client), queue(queue) {
    std::lock_guard lock(mutex);
    GTarvoModelSet* models = queue->model_set();
    id = GView::get_available_id(1);
    view = std::make_shared<GView>(models != nullptr ? models->app_util().get() : nullptr);
    view->set_view_id(id);
    GView::add_global_view(view);
    // Quiet from the start: nothing below may render of its own accord.
    view->enable_render(false, false);
    if (GWindowFactory* factory = GWindowFactory::get_window_factory())
        factory->core_initialize_window(view);
    if (models != nullptr) {
        view->set_model_set(models);
        // The model set adds its pieces when a frame starts; one frame nobody sees puts them in
        // the renderer, so that the camera is fitted to the model and not to an empty scene.
        view->render();
    }
    vtkSmartPointer<GInteractorStyle> style = vtkSmartPointer<GInteractorStyle>::New();
    view->set_style(style);
    style->SetModelSet(models);
    if (dynamic_cast<CLWindowFactory*>(GWindowFactory::get_window_factory()) != nullptr)
        style->set_client_window(true);
    view->reset_camera();
    // Both go to the owner only, whoever's input caused them, and overtake the response of the
    // event that did: responses leave when the task ends.
    style->set_popup_function([this](int x, int y) {
        owner->send_notification(RPCRequest(QStringLiteral("graphics.popup"),
                                            QJsonObject{{QStringLiteral("id"), id},
                                                        {QStringLiteral("mouse_x"), x},
                                                        {QStringLiteral("mouse_y"), y}}));
    });
    style->set_donepick_function([this] {
        owner->send_notification(RPCRequest(QStringLiteral("graphics.donepick"),
                                            QJsonObject{{QStringLiteral("id"), id}}));
    });
    view->set_start_render_callback([this](unsigned long) { on_render_start(); });
    view->set_end_render_callback([this](unsigned long event_id) { on_render_end(event_id); });
}

ServerGraphicsView::~ServerGraphicsView() {
    // Nothing that reaches back into this object may fire any more.
    view->set_start_render_callback(nullptr);
    view->set_end_render_callback(nullptr);
    view->set_style(nullptr);
    GView::remove_global_view(view);
    view->set_model_set(nullptr);
    if (GWindowFactory* factory = GWindowFactory::get_window_factory())
        factory->core_de_initialize_window(view);
}

void ServerGraphicsView::render() {
    view->render();
}

void ServerGraphicsView::start_timing() {
    std::lock_guard lock(mutex);
    render_count = 0;
    image_count = 0;
}

void ServerGraphicsView::request_statistics() {
    std::lock_guard lock(mutex);
    statistics_at_capture = true;
}

void ServerGraphicsView::on_render_start() {
    std::lock_guard lock(mutex);
    render_start = now_seconds();
}

void ServerGraphicsView::on_render_end(unsigned long event_id) {
    if (event_id == kRenderWanted) {
        if (queue->is_batching_renders())
            queue->mark_view_dirty(this, owner);
        else
            view->render();
    } else if (event_id == kRenderDone) {
        capture();
        queue->mark_view_dirty(this, owner);
    }
    std::lock_guard lock(mutex);
    render_time += now_seconds() - render_start;
}

void ServerGraphicsView::capture() {
    std::lock_guard lock(mutex);
    view->get_size(width, height);
    // A new buffer each time: the old frame goes, delivered or not, and an encoder that still
    // holds a shallow copy of it keeps its own.
    image = QImage(width, height, QImage::Format_RGBA8888);
    if (!image.isNull() && !view->get_rgba_pixels(width, height, image.bits()))
        image.fill(Qt::black);
    if (render_count != -1)
        ++render_count;
    // Tied to this frame: a delivery of the frame before it, which the main thread may be
    // making right now, must not print them early.
    if (std::exchange(statistics_at_capture, false))
        statistics_requested = true;
}

void ServerGraphicsView::deliver(ClientConnection* client, bool dump_time) {
    if (format == image_format::Invalid)
        return;
    std::lock_guard lock(mutex);
    dump_time = dump_time || statistics_requested;
    statistics_requested = false;
    const double t0 = now_seconds();
    BinaryMessage message;
    message.payload = image_format::encode(image, format);
    const double t1 = now_seconds();
    message.name = QStringLiteral("graphics.image_data");
    message.params = QJsonObject{{QStringLiteral("id"), id},
                                 {QStringLiteral("width"), width},
                                 {QStringLiteral("height"), height},
                                 {QStringLiteral("format"), image_format::header_name(format)}};
    if (image_count != -1 && dump_time) {
        std::cout << std::setprecision(13) << "Time of image to socket (since epoc) "
                  << now_seconds() << std::endl;
    }
    client->send_binary(message);
    if (image_count == -1)
        return;
    image_time += t1 - t0;
    ++image_count;
    if (!dump_time)
        return;
    std::cout << "Image Stats: " << std::endl;
    std::cout << render_count << " renders" << std::endl;
    std::cout << render_time << " render time" << std::endl;
    std::cout << image_count << " images" << std::endl;
    std::cout << image_time << " image time" << std::endl;
    render_count = image_count = -1;
    render_time = image_time = 0;
}
