// The geometry's section of the native file: every body's B-rep with the kernel's ids of its
// pieces, the attributes (names, colours, visibility), the id counters and the assembly tree.
//
// All bodies go into one OpenCASCADE binary shape set (one compound), not one set per body: a
// merged surface is one TShape shared by two bodies, and only a shared set keeps it shared, so
// the merge state survives the file. Each id is written as the index of its sub-shape in the
// compound's indexed map (TopExp::MapShapes), which visits the same structure in the same order
// after reading, plus its orientation.

#include "core/ModelFile.h"
#include "geometry/GeometryModule.h"

#include <BRep_Builder.hxx>
#include <BinTools.hxx>
#include <Standard_Failure.hxx>
#include <TopExp.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS_Compound.hxx>

#include <sstream>

namespace tarvo::kernel {

namespace {

constexpr GeomKind kSubKinds[] = {GeomKind::Volume, GeomKind::Surface, GeomKind::Curve,
                                  GeomKind::Vertex};

std::vector<IdShape>& list_of(Body& body, GeomKind kind) {
    switch (kind) {
    case GeomKind::Volume:
        return body.volumes;
    case GeomKind::Surface:
        return body.surfaces;
    case GeomKind::Curve:
        return body.curves;
    default:
        return body.vertices;
    }
}

void write_shape_ref(FileWriter& out, const TopTools_IndexedMapOfShape& map,
                     const TopoDS_Shape& shape) {
    const int index = map.FindIndex(shape);
    if (index == 0)
        throw std::runtime_error("a piece of the model is not in its own shape");
    out.i32(index);
    out.u8(static_cast<uint8_t>(shape.Orientation()));
}

TopoDS_Shape read_shape_ref(FileReader& in, const TopTools_IndexedMapOfShape& map) {
    const int index = in.i32();
    const uint8_t orientation = in.u8();
    if (index < 1 || index > map.Extent() || orientation > TopAbs_EXTERNAL)
        in.fail("a shape reference is out of range");
    TopoDS_Shape shape = map(index);
    shape.Orientation(static_cast<TopAbs_Orientation>(orientation));
    return shape;
}

void write_geometry(FileWriter& out) {
    const GeometryState& state = geometry_module()->model().state();
    for (int id : state.max_id)
        out.i32(id);

    TopoDS_Compound all;
    BRep_Builder builder;
    builder.MakeCompound(all);
    for (const auto& [id, body] : state.bodies)
        builder.Add(all, body->shape);
    std::ostringstream brep;
    // No triangulations: views and meshers make their own, and they would triple the size.
    BinTools::Write(all, brep, Standard_False, Standard_False, BinTools_FormatVersion_CURRENT);
    out.str(brep.str());

    TopTools_IndexedMapOfShape map;
    TopExp::MapShapes(all, map);
    out.u64(state.bodies.size());
    for (const auto& [id, body] : state.bodies) {
        out.i32(id);
        write_shape_ref(out, map, body->shape);
        for (GeomKind kind : kSubKinds) {
            const auto& list = body->of(kind);
            out.u64(list.size());
            for (const IdShape& piece : list) {
                out.i32(piece.id);
                write_shape_ref(out, map, piece.shape);
            }
        }
    }

    out.u64(state.attributes.size());
    for (const auto& [key, a] : state.attributes) {
        out.i32(static_cast<int>(key.kind));
        out.i32(key.id);
        out.str(a.name);
        out.boolean(a.has_color);
        for (double c : a.color)
            out.f64(c);
        out.boolean(a.visible);
    }

    out.u64(state.assembly.size());
    for (const AssemblyNode& n : state.assembly) {
        out.i32(n.id);
        out.i32(n.parent_id);
        out.str(n.name);
        out.str(n.type);
        out.i32(n.level);
        out.i32(n.instance);
        out.str(n.path);
        out.str(n.description);
        out.str(n.file_format);
        out.str(n.units);
        out.array(n.volume_ids);
    }
}

SectionCommit read_geometry(FileReader& in, uint32_t) {
    auto loaded = std::make_shared<GeometryState>();
    for (int& id : loaded->max_id) {
        id = in.i32();
        if (id < 0)
            in.fail("a negative id counter");
    }

    TopoDS_Shape all;
    {
        const std::string brep = in.str();
        std::istringstream stream(brep);
        try {
            BinTools::Read(all, stream);
        } catch (const Standard_Failure& e) {
            in.fail(std::string("the shapes do not read: ") + e.GetMessageString());
        }
        if (all.IsNull() || all.ShapeType() != TopAbs_COMPOUND)
            in.fail("the shapes do not read");
    }
    TopTools_IndexedMapOfShape map;
    TopExp::MapShapes(all, map);

    const uint64_t bodies = in.count(4);
    for (uint64_t b = 0; b < bodies; ++b) {
        auto body = std::make_shared<Body>();
        body->id = in.i32();
        body->shape = read_shape_ref(in, map);
        for (GeomKind kind : kSubKinds) {
            const uint64_t n = in.count(9);
            auto& list = list_of(*body, kind);
            list.reserve(n);
            for (uint64_t i = 0; i < n; ++i) {
                IdShape piece;
                piece.id = in.i32();
                piece.shape = read_shape_ref(in, map);
                if (piece.id < 1 || piece.id > loaded->max_id[static_cast<int>(kind)])
                    in.fail("an id beyond its counter");
                list.push_back(std::move(piece));
            }
        }
        if (body->id < 1 || body->id > loaded->max_id[0] || loaded->bodies.count(body->id))
            in.fail("a body id is out of range or repeated");
        loaded->bodies.emplace(body->id, std::move(body));
    }

    const uint64_t attributes = in.count(4);
    for (uint64_t i = 0; i < attributes; ++i) {
        const int kind = in.i32();
        const int id = in.i32();
        if (kind < 0 || kind >= kGeomKindCount)
            in.fail("an attribute of an unknown kind");
        EntityAttributes a;
        a.name = in.str();
        a.has_color = in.boolean();
        for (double& c : a.color)
            c = in.f64();
        a.visible = in.boolean();
        loaded->attributes[{static_cast<GeomKind>(kind), id}] = std::move(a);
    }

    const uint64_t nodes = in.count(4);
    for (uint64_t i = 0; i < nodes; ++i) {
        AssemblyNode n;
        n.id = in.i32();
        n.parent_id = in.i32();
        n.name = in.str();
        n.type = in.str();
        n.level = in.i32();
        n.instance = in.i32();
        n.path = in.str();
        n.description = in.str();
        n.file_format = in.str();
        n.units = in.str();
        n.volume_ids = in.array<int>();
        loaded->assembly.push_back(std::move(n));
    }

    return [loaded] {
        GeometryModel& model = geometry_module()->model();
        const GeometryState before = model.snapshot();
        model.restore(*loaded);
        for (const GeomEvent& e : model.diff(before))
            GeometryModule::emit(e);
    };
}

} // namespace

void register_geometry_file_section() {
    register_model_file_section({"geometry", 1, false, write_geometry, read_geometry});
}

} // namespace tarvo::kernel
