// Labels of GTarvoModelSet: where the kernel's `label` setting switched them on, the id, the name
// or both of every visible entity of that type, at its centre, in every view.
#include "GTarvoModelSetImpl.h"

#include <vtkActor2D.h>
#include <vtkLabeledDataMapper.h>
#include <vtkPointData.h>
#include <vtkPoints.h>
#include <vtkStringArray.h>
#include <vtkTextProperty.h>

using namespace model_set_internal;

namespace {

// The kernel's label types that have a place in the views; groups, blocks and sets have none.
const std::vector<std::string>& placed_types() {
    static const std::vector<std::string> types = {"body", "volume", "surface", "curve", "vertex",
                                                   "node", "edge",   "tri",     "quad",  "tet",
                                                   "hex",  "wedge",  "pyramid"};
    return types;
}

// Flags: 1 the id, 2 the name (nothing without one), 3 both (the id alone without a name).
std::string text_of(const std::string& type, int id, int flag) {
    const std::string name = (flag & 2) != 0 ? TI::get_entity_name(type, id, true) : "";
    if (flag == 2)
        return name;
    return flag == 3 && !name.empty() ? name + " (" + std::to_string(id) + ")" : std::to_string(id);
}

} // namespace

std::map<std::string, int> GTarvoModelSet::Impl::label_settings() {
    std::map<std::string, int> out;
    for (const std::string& type : placed_types())
        if (const int flag = TI::get_label_type(type))
            out[type] = flag;
    return out;
}

void GTarvoModelSet::Impl::build_labels() {
    const std::map<std::string, int>& settings = drawn.labels;
    if (settings.empty()) {
        if (labels) {
            labels = nullptr;
            ++labels_version;
        }
        return;
    }
    vtkNew<vtkPoints> points;
    vtkNew<vtkStringArray> texts;
    texts->SetName("label");
    std::set<Entity> placed;
    const auto place = [&](const Entity& e, const std::array<double, 3>& at) {
        const auto setting = settings.find(e.first);
        if (setting == settings.end() || points->GetNumberOfPoints() >= kMaxLabels ||
            !placed.insert(e).second)
            return;
        const std::string text = text_of(e.first, e.second, setting->second);
        if (text.empty())
            return;
        points->InsertNextPoint(at.data());
        texts->InsertNextValue(text);
    };
    for (const auto& [key, piece] : pieces) {
        if (!drawn.pieces.at(key).first)
            continue;
        std::vector<Entity> entities = piece.members;
        const Entity& self = piece.members.front();
        if (const int body = TI::get_owning_body(self.first, self.second))
            entities.push_back({"body", body});
        for (const Entity& e : entities)
            if (settings.count(e.first))
                place(e, TI::get_center_point(e.first, e.second));
        if (!drawn.mesh_on || !piece.data[kMeshFaces])
            continue;
        for (const auto& [type, flag] : settings) {
            if (type == "body" || type == "volume" || type == "surface" || type == "curve" ||
                type == "vertex")
                continue;
            for (const Entity& owner : piece.members) {
                tg::MeshEntityCorners found;
                if ((owner.first != "volume" && owner.first != "surface") ||
                    !tg::mesh_entity_corners(owner.first, owner.second, type, found))
                    continue;
                const int total = static_cast<int>(found.xyz.size() / 3);
                for (std::size_t i = 0; i < found.ids.size(); ++i) {
                    const int first = found.corners[i];
                    const int end = i + 1 < found.ids.size() ? found.corners[i + 1] : total;
                    std::array<double, 3> centre{0, 0, 0};
                    for (int k = first; k < end; ++k)
                        for (int c = 0; c < 3; ++c)
                            centre[c] += found.xyz[static_cast<std::size_t>(3 * k + c)] /
                                         static_cast<double>(end - first);
                    place({type, found.ids[i]}, centre);
                }
                // A volume's mesh includes its surfaces'.
                if (owner.first == "volume")
                    break;
            }
        }
    }
    labels = vtkSmartPointer<vtkPolyData>::New();
    labels->SetPoints(points);
    labels->GetPointData()->AddArray(texts);
    ++labels_version;
}

void GTarvoModelSet::Impl::sync_labels(ViewEntry& entry) {
    if (entry.labels_version == labels_version)
        return;
    entry.labels_version = labels_version;
    if (!labels) {
        if (entry.label_actor)
            entry.label_actor->SetVisibility(false);
        return;
    }
    if (!entry.label_actor) {
        vtkNew<vtkLabeledDataMapper> mapper;
        mapper->SetLabelModeToLabelFieldData();
        mapper->SetFieldDataName("label");
        vtkTextProperty* text = mapper->GetLabelTextProperty();
        text->SetFontSize(12);
        text->SetColor(kLabel[0], kLabel[1], kLabel[2]);
        text->SetBold(false);
        text->SetItalic(false);
        text->SetShadow(true);
        text->SetJustificationToCentered();
        text->SetVerticalJustificationToCentered();
        entry.label_actor = vtkSmartPointer<vtkActor2D>::New();
        entry.label_actor->SetMapper(mapper);
        entry.renderer->AddViewProp(entry.label_actor);
    }
    entry.label_actor->GetMapper()->SetInputDataObject(labels);
    entry.label_actor->SetVisibility(true);
}
