// The view module's section of the native file: how the model is shown (render mode, the view
// switches, labels, camera), which a user expects to find again on opening a model. What is
// picked, selected, highlighted or drawn on its own is the moment's work and is not written.

#include "core/ModelFile.h"
#include "view/ViewState.h"

#include <algorithm>

namespace tarvo::kernel {

namespace {

void write_view(FileWriter& out) {
    const ViewState& v = *view_state();
    out.i32(v.render_mode());
    for (bool b : {v.perspective, v.occlusion, v.scale_visibility, v.mesh_visibility,
                   v.geometry_visibility, v.select_partial})
        out.boolean(b);
    out.i32(v.rubberband_shape);
    out.u64(v.labels.size());
    for (const auto& [type, flag] : v.labels) {
        out.str(type);
        out.i32(flag);
    }
    for (const auto* p : {&v.camera.at, &v.camera.from, &v.camera.up})
        for (double c : *p)
            out.f64(c);
}

SectionCommit read_view(FileReader& in, uint32_t) {
    auto v = std::make_shared<ViewState>();
    const int mode = in.i32();
    if (render_mode_name(mode).empty())
        in.fail("an unknown render mode");
    for (bool* b : {&v->perspective, &v->occlusion, &v->scale_visibility, &v->mesh_visibility,
                    &v->geometry_visibility, &v->select_partial})
        *b = in.boolean();
    v->rubberband_shape = in.i32();
    if (v->rubberband_shape < kRubberbandBox || v->rubberband_shape > kRubberbandCircle)
        in.fail("an unknown rubber-band shape");
    const uint64_t labels = in.count(12);
    const auto& types = labelable_types();
    for (uint64_t i = 0; i < labels; ++i) {
        std::string type = in.str();
        const int flag = in.i32();
        if (std::find(types.begin(), types.end(), type) == types.end() || flag < kLabelOff ||
            flag > kLabelBoth)
            in.fail("an unknown label setting");
        v->labels[type] = flag;
    }
    for (auto* p : {&v->camera.at, &v->camera.from, &v->camera.up})
        for (double& c : *p)
            c = in.f64();
    return [v, mode] {
        ViewState& live = *view_state();
        live.set_render_mode(mode);
        live.perspective = v->perspective;
        live.occlusion = v->occlusion;
        live.scale_visibility = v->scale_visibility;
        live.mesh_visibility = v->mesh_visibility;
        live.geometry_visibility = v->geometry_visibility;
        live.select_partial = v->select_partial;
        live.rubberband_shape = v->rubberband_shape;
        live.labels = v->labels;
        live.camera = v->camera;
    };
}

} // namespace

void register_view_file_section() {
    register_model_file_section({"view", 1, true, write_view, read_view});
}

} // namespace tarvo::kernel
