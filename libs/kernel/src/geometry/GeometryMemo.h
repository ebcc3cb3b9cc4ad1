#pragma once
// What a BodyMemo holds (see GeometryModel.h): per body, the position of each id, the relations
// between its entities, its entities in no volume, and the measures of its entities. Everything
// is computed from the Body alone, on first use.
//
// Threading: kernel thread only.

#include "geometry/GeometryModel.h"

#include <TopTools_DataMapOfShapeInteger.hxx>

#include <array>
#include <optional>
#include <unordered_map>
#include <vector>

namespace tarvo::kernel {

// Measures of one entity, each filled on first use (`turning`: see GeometryModel::curve_turning).
struct EntityMeasures {
    std::optional<Bnd_Box> box;
    std::optional<double> volume;
    std::optional<std::array<double, 4>> area; // area, centroid x, y, z
    std::optional<double> length;
    std::optional<double> turning;
};

struct BodyMemo::Data {
    explicit Data(const Body& owner) : body(owner) {}

    // Position of `id` in body.of(kind) (not for bodies); nullopt when the body does not hold it.
    std::optional<std::size_t> position(GeomKind kind, int id);
    // Ids of kind `target` related to the entity at `position` of kind `source`, ascending: the
    // ones inside it (target of lower dimension) or the ones that contain it (higher). Neither
    // kind is Body and they differ.
    const std::vector<int>& related(GeomKind source, std::size_t position, GeomKind target);
    // Ids of the body's entities of `kind`, ascending.
    const std::vector<int>& sorted_ids(GeomKind kind);
    // Ids of the body's surfaces, curves or vertices that lie in none of its volumes, ascending.
    const std::vector<int>& outside_volumes(GeomKind kind);
    // Measures of the entity at `position` of `kind` (for kind Body: the body's own shape).
    EntityMeasures& measures(GeomKind kind, std::size_t position);

private:
    const Body& body;
    std::array<std::unordered_map<int, std::size_t>, kGeomKindCount> positions_;
    std::array<bool, kGeomKindCount> positions_built_{};
    // Shape (IsSame) -> position, for mapping the sub-shapes of one entity to ids.
    std::array<std::optional<TopTools_DataMapOfShapeInteger>, kGeomKindCount> by_shape_;
    // relations_[source][target][position] -> ascending ids.
    std::array<std::array<std::optional<std::vector<std::vector<int>>>, kGeomKindCount>,
               kGeomKindCount>
        relations_;
    std::array<std::optional<std::vector<int>>, kGeomKindCount> sorted_ids_;
    std::array<std::optional<std::vector<int>>, kGeomKindCount> outside_volumes_;
    std::array<std::vector<EntityMeasures>, kGeomKindCount> measures_;

    const TopTools_DataMapOfShapeInteger& by_shape(GeomKind kind);
};

// The measures themselves, from a shape (the functions the memo fills itself with).
Bnd_Box compute_bounding_box(const TopoDS_Shape& shape);
double compute_volume(const TopoDS_Shape& shape);
std::array<double, 4> compute_area(const TopoDS_Shape& shape);
double compute_length(const TopoDS_Shape& edge);
double compute_turning(const TopoDS_Shape& edge);

} // namespace tarvo::kernel
