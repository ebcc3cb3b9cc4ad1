#include "geometry/GeometryMemo.h"

#include <BRepAdaptor_Curve.hxx>
#include <BRepBndLib.hxx>
#include <BRepGProp.hxx>
#include <BRep_Tool.hxx>
#include <GCPnts_AbscissaPoint.hxx>
#include <GProp_GProps.hxx>
#include <TopExp.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Iterator.hxx>
#include <gp.hxx>

#include <algorithm>
#include <cmath>

namespace tarvo::kernel {

namespace {

// True when every leaf of the shape is a solid: then each of its faces, edges and vertices lies in
// a solid, which is known without exploring them.
bool only_solids(const TopoDS_Shape& shape) {
    if (shape.IsNull())
        return false;
    switch (shape.ShapeType()) {
    case TopAbs_SOLID:
    case TopAbs_COMPSOLID:
        return true;
    case TopAbs_COMPOUND: {
        bool any = false;
        for (TopoDS_Iterator it(shape); it.More(); it.Next()) {
            if (!only_solids(it.Value()))
                return false;
            any = true;
        }
        return any;
    }
    default:
        return false;
    }
}

void sort_unique(std::vector<int>& ids) {
    std::sort(ids.begin(), ids.end());
    ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
}

} // namespace

// ---- BodyMemo ---------------------------------------------------------------------------------

BodyMemo::BodyMemo() = default;
BodyMemo::~BodyMemo() = default;
BodyMemo::BodyMemo(const BodyMemo&) {}
BodyMemo& BodyMemo::operator=(const BodyMemo& other) {
    if (this != &other)
        data_.reset();
    return *this;
}

BodyMemo::Data& BodyMemo::of(const Body& body) const {
    if (!data_)
        data_ = std::make_unique<Data>(body);
    return *data_;
}

// ---- BodyMemo::Data ---------------------------------------------------------------------------

std::optional<std::size_t> BodyMemo::Data::position(GeomKind kind, int id) {
    const int k = static_cast<int>(kind);
    if (kind == GeomKind::Body)
        return std::nullopt;
    if (!positions_built_[static_cast<std::size_t>(k)]) {
        const auto& items = body.of(kind);
        auto& map = positions_[static_cast<std::size_t>(k)];
        map.reserve(items.size());
        for (std::size_t i = 0; i < items.size(); ++i)
            map.emplace(items[i].id, i);
        positions_built_[static_cast<std::size_t>(k)] = true;
    }
    const auto& map = positions_[static_cast<std::size_t>(k)];
    auto it = map.find(id);
    if (it == map.end())
        return std::nullopt;
    return it->second;
}

const TopTools_DataMapOfShapeInteger& BodyMemo::Data::by_shape(GeomKind kind) {
    auto& slot = by_shape_[static_cast<std::size_t>(kind)];
    if (!slot) {
        slot.emplace();
        const auto& items = body.of(kind);
        for (std::size_t i = 0; i < items.size(); ++i)
            slot->Bind(items[i].shape, static_cast<int>(i));
    }
    return *slot;
}

const std::vector<int>& BodyMemo::Data::related(GeomKind source, std::size_t position,
                                                GeomKind target) {
    auto& slot = relations_[static_cast<std::size_t>(source)][static_cast<std::size_t>(target)];
    if (!slot) {
        const auto& sources = body.of(source);
        const auto& targets = body.of(target);
        std::vector<std::vector<int>> table(sources.size());
        TopTools_IndexedMapOfShape inside;
        if (kind_dimension(target) < kind_dimension(source)) {
            // Downward: the pieces of each source, as this body names them.
            const auto& target_at = by_shape(target);
            for (std::size_t i = 0; i < sources.size(); ++i) {
                inside.Clear();
                TopExp::MapShapes(sources[i].shape, shape_enum(target), inside);
                for (int n = 1; n <= inside.Extent(); ++n)
                    if (const int* at = target_at.Seek(inside(n)))
                        table[i].push_back(targets[static_cast<std::size_t>(*at)].id);
            }
        } else {
            // Upward: every target lists itself under the sources inside it.
            const auto& source_at = by_shape(source);
            for (const IdShape& t : targets) {
                inside.Clear();
                TopExp::MapShapes(t.shape, shape_enum(source), inside);
                for (int n = 1; n <= inside.Extent(); ++n)
                    if (const int* at = source_at.Seek(inside(n)))
                        table[static_cast<std::size_t>(*at)].push_back(t.id);
            }
        }
        for (auto& ids : table)
            sort_unique(ids);
        slot = std::move(table);
    }
    return (*slot)[position];
}

const std::vector<int>& BodyMemo::Data::sorted_ids(GeomKind kind) {
    auto& slot = sorted_ids_[static_cast<std::size_t>(kind)];
    if (!slot) {
        std::vector<int> ids;
        if (kind == GeomKind::Body) {
            ids.push_back(body.id);
        } else {
            for (const IdShape& e : body.of(kind))
                ids.push_back(e.id);
        }
        sort_unique(ids);
        slot = std::move(ids);
    }
    return *slot;
}

const std::vector<int>& BodyMemo::Data::outside_volumes(GeomKind kind) {
    auto& slot = outside_volumes_[static_cast<std::size_t>(kind)];
    if (!slot) {
        std::vector<int> ids;
        const bool sub_kind =
            kind == GeomKind::Surface || kind == GeomKind::Curve || kind == GeomKind::Vertex;
        if (sub_kind && !only_solids(body.shape)) {
            const auto& items = body.of(kind);
            for (std::size_t i = 0; i < items.size(); ++i)
                if (body.volumes.empty() || related(kind, i, GeomKind::Volume).empty())
                    ids.push_back(items[i].id);
        }
        sort_unique(ids);
        slot = std::move(ids);
    }
    return *slot;
}

EntityMeasures& BodyMemo::Data::measures(GeomKind kind, std::size_t position) {
    auto& list = measures_[static_cast<std::size_t>(kind)];
    if (list.empty())
        list.resize(kind == GeomKind::Body ? 1 : body.of(kind).size());
    return list[position];
}

// ---- Measures ---------------------------------------------------------------------------------

Bnd_Box compute_bounding_box(const TopoDS_Shape& s) {
    Bnd_Box box;
    if (s.IsNull())
        return box;
    if (s.ShapeType() == TopAbs_VERTEX) {
        box.Add(BRep_Tool::Pnt(TopoDS::Vertex(s)));
        return box;
    }
    BRepBndLib::AddOptimal(s, box, false, false);
    return box;
}

double compute_volume(const TopoDS_Shape& s) {
    GProp_GProps p;
    BRepGProp::VolumeProperties(s, p);
    return std::abs(p.Mass());
}

std::array<double, 4> compute_area(const TopoDS_Shape& s) {
    GProp_GProps p;
    BRepGProp::SurfaceProperties(s, p);
    const gp_Pnt c = p.CentreOfMass();
    return {p.Mass(), c.X(), c.Y(), c.Z()};
}

double compute_length(const TopoDS_Shape& edge) {
    BRepAdaptor_Curve c(TopoDS::Edge(edge));
    return GCPnts_AbscissaPoint::Length(c);
}

double compute_turning(const TopoDS_Shape& edge) {
    const TopoDS_Edge& e = TopoDS::Edge(edge);
    if (BRep_Tool::Degenerated(e))
        return 0.0;
    BRepAdaptor_Curve c(e);
    const double first = c.FirstParameter(), last = c.LastParameter();
    switch (c.GetType()) {
    case GeomAbs_Line:
        return 0.0;
    case GeomAbs_Circle: // parametrised by its angle
        return std::abs(last - first);
    default:
        break;
    }
    // Other curves: the angles between tangents at evenly spaced parameters, which is exact
    // enough to choose a number of intervals from.
    constexpr int kSamples = 64;
    double turning = 0.0;
    gp_Vec before;
    for (int i = 0; i <= kSamples; ++i) {
        gp_Pnt p;
        gp_Vec tangent;
        c.D1(first + (last - first) * i / kSamples, p, tangent);
        if (tangent.Magnitude() < gp::Resolution())
            continue;
        if (before.Magnitude() > 0)
            turning += before.Angle(tangent);
        before = tangent;
    }
    return turning;
}

} // namespace tarvo::kernel
