// The quality drawing of GTarvoModelSet: the elements of the kernel's last `quality ... draw`,
// coloured by their metric's value from red (worst) to blue (best), over the model, with a
// colour bar that names the metric, in every view.
#include "GTarvoModelSetImpl.h"

#include <vtkCellArray.h>
#include <vtkCellData.h>
#include <vtkFloatArray.h>
#include <vtkLookupTable.h>
#include <vtkPoints.h>
#include <vtkPolyDataMapper.h>
#include <vtkProperty.h>
#include <vtkScalarBarActor.h>
#include <vtkTextProperty.h>

#include <algorithm>
#include <cmath>

using namespace model_set_internal;

void GTarvoModelSet::Impl::build_quality(bool mesh_moved) {
    if (!mesh_moved && quality_built == drawn.quality)
        return;
    quality_built = drawn.quality;
    tg::QualityDrawing d;
    if (!tg::quality_drawing(d)) {
        if (quality)
            ++quality_version;
        quality = nullptr;
        return;
    }
    vtkNew<vtkPoints> points;
    for (std::size_t i = 0; i + 2 < d.mesh.xyz.size(); i += 3)
        points->InsertNextPoint(d.mesh.xyz[i], d.mesh.xyz[i + 1], d.mesh.xyz[i + 2]);
    vtkNew<vtkCellArray> polys, lines;
    for (std::size_t i = 0; i < d.mesh.faces.size();
         i += static_cast<std::size_t>(d.mesh.faces[i]) + 1) {
        polys->InsertNextCell(d.mesh.faces[i]);
        for (int k = 1; k <= d.mesh.faces[i]; ++k)
            polys->InsertCellPoint(d.mesh.faces[i + static_cast<std::size_t>(k)]);
    }
    for (std::size_t i = 0; i + 1 < d.mesh.edges.size(); i += 2) {
        const vtkIdType ids[2] = {d.mesh.edges[i], d.mesh.edges[i + 1]};
        lines->InsertNextCell(2, ids);
    }
    // A polydata's cells are its lines before its polygons.
    vtkNew<vtkFloatArray> values;
    values->SetName("quality");
    for (float v : d.edge_values)
        values->InsertNextValue(v);
    for (float v : d.face_values)
        values->InsertNextValue(v);
    quality = vtkSmartPointer<vtkPolyData>::New();
    quality->SetPoints(points);
    quality->SetPolys(polys);
    quality->SetLines(lines);
    quality->GetCellData()->SetScalars(values);
    quality_metric = d.metric;
    quality_low_is_bad = d.low_is_bad;
    // One value alone still needs a range to colour by.
    const double pad = d.max > d.min ? 0.0 : std::max(std::abs(d.max) * 1e-3, 1e-9);
    quality_range = {d.min - pad, d.max + pad};
    ++quality_version;
}

void GTarvoModelSet::Impl::sync_quality(ViewEntry& entry) {
    if (entry.quality_version == quality_version)
        return;
    entry.quality_version = quality_version;
    for (vtkProp* prop : {static_cast<vtkProp*>(entry.quality_actor.Get()),
                          static_cast<vtkProp*>(entry.quality_bar.Get())})
        if (prop)
            entry.renderer->RemoveViewProp(prop);
    entry.quality_actor = nullptr;
    entry.quality_bar = nullptr;
    if (!quality)
        return;
    vtkNew<vtkLookupTable> colours;
    colours->SetTableRange(quality_range[0], quality_range[1]);
    // Red is the bad end, whichever end of the scale that is.
    colours->SetHueRange(quality_low_is_bad ? 0.0 : 0.667, quality_low_is_bad ? 0.667 : 0.0);
    colours->Build();
    vtkNew<vtkPolyDataMapper> mapper;
    mapper->SetInputData(quality);
    mapper->SetScalarModeToUseCellData();
    mapper->SetLookupTable(colours);
    mapper->SetScalarRange(quality_range[0], quality_range[1]);
    mapper->SetRelativeCoincidentTopologyPolygonOffsetParameters(-1, -1);
    entry.quality_actor = vtkSmartPointer<vtkActor>::New();
    entry.quality_actor->SetMapper(mapper);
    entry.quality_actor->GetProperty()->SetLineWidth(3.0f);
    entry.quality_actor->GetProperty()->SetAmbient(0.3);
    entry.quality_actor->GetProperty()->SetDiffuse(0.7);
    entry.renderer->AddActor(entry.quality_actor);

    entry.quality_bar = vtkSmartPointer<vtkScalarBarActor>::New();
    entry.quality_bar->SetLookupTable(colours);
    entry.quality_bar->SetTitle(quality_metric.c_str());
    entry.quality_bar->SetNumberOfLabels(5);
    entry.quality_bar->SetPosition(0.88, 0.1);
    entry.quality_bar->SetWidth(0.1);
    entry.quality_bar->SetHeight(0.8);
    for (vtkTextProperty* text :
         {entry.quality_bar->GetTitleTextProperty(), entry.quality_bar->GetLabelTextProperty()}) {
        text->SetColor(kLabel[0], kLabel[1], kLabel[2]);
        text->SetFontSize(12);
        text->SetBold(false);
        text->SetItalic(false);
    }
    entry.renderer->AddViewProp(entry.quality_bar);
}
