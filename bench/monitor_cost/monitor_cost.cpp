// Cost of live data per task on a large model: one client watches the model tree and 100
// volumes; tasks are a rename of one volume (an event that touches the geometry section and one
// watched volume) and a query that changes nothing. Each task runs with the monitors of that
// selection and without any, alternately, in one process and one kernel session; the program
// prints medians, the ratios, and where the monitored time goes.
//
//   bench_monitor_cost [--grid NX NY NZ] [--watched N] [--rounds N] [--no-merge]

#include "monitors/EntityMonitor.h"
#include "monitors/ModelMonitor.h"
#include "monitors/WorkerTIObserve.h"

#include "tarvo/TarvoInterface.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

double ms_since(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values.empty() ? 0.0 : values[values.size() / 2];
}

struct Phases {
    double build = 0;    // monitors made and attached
    double request = 0;  // the request itself, with events reaching the observer
    double model = 0;    // ModelMonitor::update
    double entities = 0; // every entity monitor's update
    double deliver = 0;  // get_notifications for the client and the text of the frame
    size_t bytes = 0;    // size of that frame
    double total() const { return build + request + model + entities + deliver; }
};

// One task with the client's monitors, as the worker and then the main thread run it.
Phases monitored_task(WorkerTIObserve& observer, const MonitorSelection& selection,
                      const std::function<void()>& request) {
    Phases phases;
    auto start = Clock::now();
    auto model = std::make_unique<ModelMonitor>();
    std::vector<std::unique_ptr<DataMonitor>> entities;
    for (const auto& [code, id] : selection.at("entity"))
        entities.emplace_back(create_monitor(code, id));
    observer.set_model_monitor(model.get());
    for (const auto& monitor : entities)
        observer.add_entity_monitor(static_cast<EntityMonitor*>(monitor.get()));
    phases.build = ms_since(start);

    start = Clock::now();
    request();
    phases.request = ms_since(start);

    start = Clock::now();
    for (const auto& monitor : entities)
        monitor->update();
    phases.entities = ms_since(start);
    start = Clock::now();
    model->update();
    phases.model = ms_since(start);
    observer.set_model_monitor(nullptr);
    observer.clear_entity_monitors();

    start = Clock::now();
    std::vector<RPCRequest> notifications;
    for (const auto& monitor : entities)
        for (RPCRequest& n : monitor->get_notifications(selection))
            notifications.push_back(std::move(n));
    for (RPCRequest& n : model->get_notifications(selection))
        notifications.push_back(std::move(n));
    const QByteArray frame = notifications.size() == 1
                                 ? notifications.front().to_json_string()
                                 : RPCBatchRequest(notifications).to_json_string();
    phases.deliver = ms_since(start);
    phases.bytes = notifications.empty() ? 0 : static_cast<size_t>(frame.size());
    return phases;
}

double plain_task(const std::function<void()>& request) {
    const auto start = Clock::now();
    request();
    return ms_since(start);
}

bool run(const std::string& line) {
    if (TarvoInterface::silent_cmd(line.c_str()))
        return true;
    std::fprintf(stderr, "command failed: %s\n", line.c_str());
    return false;
}

void report(const char* name, const std::vector<double>& plain, const std::vector<Phases>& timed) {
    std::vector<double> total, build, request, model, entities, deliver;
    for (const Phases& p : timed) {
        total.push_back(p.total());
        build.push_back(p.build);
        request.push_back(p.request);
        model.push_back(p.model);
        entities.push_back(p.entities);
        deliver.push_back(p.deliver);
    }
    const double base = median(plain);
    const double with = median(total);
    std::printf("%s\n", name);
    std::printf("  without monitors  %10.3f ms\n", base);
    std::printf("  with monitors     %10.3f ms   ratio %.2f   added %.3f ms\n", with,
                base > 0 ? with / base : 0.0, with - base);
    std::printf("    build+attach    %10.3f ms\n", median(build));
    std::printf("    request         %10.3f ms\n", median(request));
    std::printf("    entity updates  %10.3f ms\n", median(entities));
    std::printf("    model update    %10.3f ms\n", median(model));
    std::printf("    notify+encode   %10.3f ms   frame %zu bytes\n", median(deliver),
                timed.empty() ? size_t{0} : timed.back().bytes);
}

// Mean cost of one call of each kernel query that the monitors make, over `ids`: the part of the
// updates that belongs to the kernel rather than to the monitors.
void report_queries(const std::vector<int>& ids) {
    using namespace TarvoInterface;
    const std::vector<std::pair<const char*, std::function<void(int)>>> queries = {
        {"parse_tarvo_list (existence)",
         [](int id) { parse_tarvo_list("volume", std::to_string(id)); }},
        {"get_entity_name", [](int id) { get_entity_name("volume", id, false); }},
        {"is_visible", [](int id) { is_visible("volume", id); }},
        {"is_virtual", [](int id) { is_virtual("volume", id); }},
        {"get_entity_color", [](int id) { get_entity_color("volume", id); }},
        {"get_center_point", [](int id) { get_center_point("volume", id); }},
        {"get_entity_modeler_engine", [](int id) { get_entity_modeler_engine("volume", id); }},
        {"is_meshed", [](int id) { is_meshed("volume", id); }},
        {"get_volume_area", [](int id) { get_volume_area(id); }},
        {"get_meshed_volume_or_area", [](int id) { get_meshed_volume_or_area("volume", {id}); }},
        {"get_volume_element_count", [](int id) { get_volume_element_count(id); }},
        {"get_geometry_node_count", [](int id) { get_geometry_node_count("volume", id); }},
        {"get_requested_mesh_size", [](int id) { get_requested_mesh_size("volume", id); }},
        {"get_relatives body->volume", [](int id) { get_relatives("body", id, "volume"); }},
        {"is_sheet_body", [](int id) { is_sheet_body(id); }},
    };
    std::printf("kernel queries, mean per call over %zu volumes\n", ids.size());
    for (const auto& [name, query] : queries) {
        const auto start = Clock::now();
        for (int id : ids)
            query(id);
        std::printf("  %-30s %9.1f us\n", name, 1000.0 * ms_since(start) / double(ids.size()));
    }
    const std::vector<std::pair<const char*, std::function<void()>>> whole_model = {
        {"parse_tarvo_list volume all", [] { parse_tarvo_list("volume", "all"); }},
        {"parse_tarvo_list body all", [] { parse_tarvo_list("body", "all"); }},
        {"free surfaces", [] { get_list_of_free_ref_entities("surface"); }},
        {"free curves", [] { get_list_of_free_ref_entities("curve"); }},
        {"free vertices", [] { get_list_of_free_ref_entities("vertex"); }},
    };
    std::printf("kernel queries over the whole model, one call each\n");
    for (const auto& [name, query] : whole_model) {
        const auto start = Clock::now();
        query();
        std::printf("  %-30s %9.1f us\n", name, 1000.0 * ms_since(start));
    }
}

} // namespace

int main(int argc, char** argv) {
    int nx = 10, ny = 10, nz = 5, watched = 100, rounds = 15;
    bool merge = true;
    for (int i = 1; i < argc; ++i) {
        if (!std::strcmp(argv[i], "--grid") && i + 3 < argc) {
            nx = std::atoi(argv[++i]);
            ny = std::atoi(argv[++i]);
            nz = std::atoi(argv[++i]);
        } else if (!std::strcmp(argv[i], "--watched") && i + 1 < argc) {
            watched = std::atoi(argv[++i]);
        } else if (!std::strcmp(argv[i], "--rounds") && i + 1 < argc) {
            rounds = std::atoi(argv[++i]);
        } else if (!std::strcmp(argv[i], "--no-merge")) {
            merge = false;
        } else {
            std::fprintf(stderr,
                         "usage: %s [--grid NX NY NZ] [--watched N] [--rounds N] [--no-merge]\n",
                         argv[0]);
            return 2;
        }
    }

    if (!TarvoInterface::init({"bench_monitor_cost", "-driver", "offscreen"})) {
        std::fprintf(stderr, "the kernel session did not start\n");
        return 1;
    }
    WorkerTIObserve observer;
    observer.register_observer();

    // A grid of unit boxes that touch their neighbours, imprinted and merged like a real
    // assembly of parts.
    auto start = Clock::now();
    for (int x = 0; x < nx; ++x)
        for (int y = 0; y < ny; ++y)
            for (int z = 0; z < nz; ++z)
                if (!run("create box 1 at " + std::to_string(x) + " " + std::to_string(y) + " " +
                         std::to_string(z)))
                    return 1;
    const double create_ms = ms_since(start);
    double imprint_ms = 0;
    if (merge) {
        start = Clock::now();
        if (!run("imprint all") || !run("merge all"))
            return 1;
        imprint_ms = ms_since(start);
    }
    const size_t volumes = TarvoInterface::parse_tarvo_list("volume", "all").size();
    const size_t surfaces = TarvoInterface::parse_tarvo_list("surface", "all").size();
    std::printf("model: %zu volumes, %zu surfaces (built in %.0f ms, imprint+merge %.0f ms)\n",
                volumes, surfaces, create_ms, imprint_ms);

    MonitorSelection selection;
    selection["model"].insert({0, 0});
    for (int id = 1; id <= watched; ++id)
        selection["entity"].insert({entity_type_code("volume"), id});
    std::printf("client watches the model and %d volumes; %d rounds, medians\n\n", watched, rounds);

    // Renames alternate so that every task really changes the name.
    int rename_count = 0;
    const auto rename = [&] {
        run("volume 1 name 'part_" + std::to_string(rename_count++ % 2) + "'");
    };
    const auto query = [] { (void)TarvoInterface::get_volume_area(1); };

    for (const auto& [name, request] : std::vector<std::pair<const char*, std::function<void()>>>{
             {"task that changes one volume (rename volume 1)", rename},
             {"task that changes nothing (get_volume_area)", query}}) {
        // One unmeasured round of each warms caches and the kernel's lazy state.
        plain_task(request);
        monitored_task(observer, selection, request);
        std::vector<double> plain;
        std::vector<Phases> timed;
        for (int round = 0; round < rounds; ++round) {
            plain.push_back(plain_task(request));
            timed.push_back(monitored_task(observer, selection, request));
        }
        report(name, plain, timed);
        std::printf("\n");
    }

    report_queries(TarvoInterface::parse_tarvo_list("volume", "all"));

    observer.unregister_observer();
    TarvoInterface::destroy();
    return 0;
}
