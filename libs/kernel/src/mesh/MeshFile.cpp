// The mesh module's sections of the native file: "mesh" (every piece with its node and element
// ids, and the id counters, so that ids given after an open continue where the model left off)
// and "sizing" (sizes, intervals, biases, schemes and the mesher settings).
//
// A piece's shape is not written: on install each piece takes the shape its owner has in the
// geometry just read, which is what it was meshed on when the file was saved.

#include "core/ModelFile.h"
#include "core/Session.h"
#include "geometry/GeometryModule.h"
#include "mesh/MeshModule.h"
#include "mesh/SizingSettings.h"

namespace tarvo::kernel::mesh {

namespace {

void write_mesh(FileWriter& out) {
    const MeshState& state = mesh_module()->state();
    out.i32(state.next_node_id());
    for (const ElemKindInfo& k : kElemKinds)
        out.i32(state.next_element_id(k.kind));
    out.u64(state.pieces().size());
    for (const auto& [owner, piece] : state.pieces()) {
        out.i32(owner.dim);
        out.i32(owner.id);
        out.str(piece->scheme);
        out.i32(piece->first_node);
        out.u64(piece->nodes.size());
        out.raw(piece->nodes.data(), piece->nodes.size() * sizeof(Point3));
        out.array(piece->params);
        out.u64(piece->blocks.size());
        for (const ElemBlock& b : piece->blocks) {
            out.u8(static_cast<uint8_t>(b.kind));
            out.i32(b.first_id);
            out.array(b.conn);
        }
    }
    // Since version 2: the mid pieces, each with the keys of its nodes.
    out.u64(state.mid_pieces().size());
    for (const auto& [owner, piece] : state.mid_pieces()) {
        out.i32(owner.dim);
        out.i32(owner.id);
        out.i32(piece->first_node);
        out.u64(piece->nodes.size());
        out.raw(piece->nodes.data(), piece->nodes.size() * sizeof(Point3));
        out.raw(piece->mid_keys.data(), piece->mid_keys.size() * sizeof(MidKey));
    }
}

SectionCommit read_mesh(FileReader& in, uint32_t version) {
    auto loaded = std::make_shared<MeshState>();
    const int next_node = in.i32();
    if (next_node < 1)
        in.fail("a bad node counter");
    loaded->reserve_nodes(next_node - 1);
    std::array<int, kElemKindCount> next_elem{};
    for (const ElemKindInfo& k : kElemKinds) {
        next_elem[static_cast<int>(k.kind)] = in.i32();
        if (next_elem[static_cast<int>(k.kind)] < 1)
            in.fail("a bad element counter");
        loaded->reserve_elements(k.kind, next_elem[static_cast<int>(k.kind)] - 1);
    }

    const uint64_t pieces = in.count(8);
    for (uint64_t p = 0; p < pieces; ++p) {
        auto piece = std::make_shared<MeshPiece>();
        piece->owner.dim = in.i32();
        piece->owner.id = in.i32();
        if (piece->owner.dim < 0 || piece->owner.dim > 3 || piece->owner.id < 1 ||
            loaded->meshed(piece->owner))
            in.fail("a mesh owner is out of range or repeated");
        piece->scheme = in.str();
        piece->first_node = in.i32();
        const uint64_t nodes = in.count(sizeof(Point3));
        piece->nodes.resize(nodes);
        std::string_view raw = in.raw(nodes * sizeof(Point3));
        if (nodes)
            std::memcpy(piece->nodes.data(), raw.data(), raw.size());
        // A piece without nodes of its own (a curve of one interval) has no first node id.
        if (nodes > 0 &&
            (piece->first_node < 1 ||
             static_cast<int64_t>(piece->first_node) + static_cast<int64_t>(nodes) > next_node))
            in.fail("node ids beyond the node counter");
        piece->params = in.array<double>();
        const uint64_t blocks = in.count(5);
        for (uint64_t b = 0; b < blocks; ++b) {
            ElemBlock block;
            const uint8_t kind = in.u8();
            if (kind >= kElemKindCount)
                in.fail("an unknown element kind");
            block.kind = static_cast<ElemKind>(kind);
            block.first_id = in.i32();
            block.conn = in.array<int>();
            const int per = info(block.kind).nodes;
            if (block.conn.size() % per != 0 || block.first_id < 1 ||
                static_cast<int64_t>(block.first_id) + static_cast<int64_t>(block.count()) >
                    next_elem[kind])
                in.fail("element ids beyond their counter");
            for (int n : block.conn)
                if (n < 1 || n >= next_node)
                    in.fail("an element refers to a node that cannot exist");
            piece->blocks.push_back(std::move(block));
        }
        loaded->put(std::move(piece));
    }
    if (version >= 2) {
        const uint64_t mids = in.count(20);
        for (uint64_t p = 0; p < mids; ++p) {
            auto piece = std::make_shared<MeshPiece>();
            piece->owner.dim = in.i32();
            piece->owner.id = in.i32();
            piece->scheme = "mid-nodes";
            piece->first_node = in.i32();
            if (!loaded->meshed(piece->owner) || loaded->mid_piece(piece->owner))
                in.fail("mid-nodes of an entity without mesh, or repeated");
            const uint64_t nodes = in.count(sizeof(Point3) + sizeof(MidKey));
            if (nodes == 0 || piece->first_node < 1 ||
                static_cast<int64_t>(piece->first_node) + static_cast<int64_t>(nodes) > next_node)
                in.fail("mid-node ids beyond the node counter");
            piece->nodes.resize(nodes);
            piece->mid_keys.resize(nodes);
            std::string_view raw = in.raw(nodes * sizeof(Point3));
            std::memcpy(piece->nodes.data(), raw.data(), raw.size());
            raw = in.raw(nodes * sizeof(MidKey));
            std::memcpy(piece->mid_keys.data(), raw.data(), raw.size());
            for (const MidKey& key : piece->mid_keys)
                for (int n : key)
                    if (n < 0 || n >= next_node)
                        in.fail("a mid-node of a node that cannot exist");
            loaded->put_mids(std::move(piece));
        }
    }

    return [loaded] {
        MeshModule& m = *mesh_module();
        m.state() = *loaded;
        m.shapes().clear();
        const GeometryModel& model = geometry_module()->model();
        for (const auto& [owner, piece] : loaded->pieces()) {
            m.shapes()[owner] = model.shape(kind_of_dim(owner.dim), owner.id);
            events().emit(&TarvoInterface::TIObserve::notify_mesh_created,
                          std::string(owner_word(owner.dim)), owner.id);
        }
    };
}

void write_sizing(FileWriter& out) {
    const SizingContents c = sizing_contents();
    out.f64(c.tetmesh_growth);
    out.f64(c.trimesh_gradation);
    out.u64(c.records.size());
    for (const auto& [key, r] : c.records) {
        out.i32(static_cast<int>(key.kind));
        out.i32(key.id);
        out.f64(r.size);
        out.i32(static_cast<int>(r.size_type));
        out.f64(r.auto_factor);
        out.i32(r.intervals);
        out.i32(static_cast<int>(r.scheme));
        out.i32(r.sweep_source);
        out.i32(r.sweep_target);
        out.i32(static_cast<int>(r.bias));
        out.f64(r.bias_factor);
        out.i32(r.bias_start_vertex);
    }
}

// An enumeration value, refused when it is beyond the last one.
template <class E> E enum_value(FileReader& in, E last) {
    const int v = in.i32();
    if (v < 0 || v > static_cast<int>(last))
        in.fail("an unknown setting");
    return static_cast<E>(v);
}

SectionCommit read_sizing(FileReader& in, uint32_t) {
    auto c = std::make_shared<SizingContents>();
    c->tetmesh_growth = in.f64();
    c->trimesh_gradation = in.f64();
    const uint64_t n = in.count(8);
    for (uint64_t i = 0; i < n; ++i) {
        const int kind = in.i32();
        if (kind < 0 || kind >= kGeomKindCount)
            in.fail("a setting of an unknown kind");
        const EntityKey key{static_cast<GeomKind>(kind), in.i32()};
        SizingRecord r;
        r.size = in.f64();
        r.size_type = enum_value(in, SizeType::UserSet);
        r.auto_factor = in.f64();
        r.intervals = in.i32();
        r.scheme = enum_value(in, Scheme::Sphere);
        r.sweep_source = in.i32();
        r.sweep_target = in.i32();
        r.bias = enum_value(in, BiasType::DualBias);
        r.bias_factor = in.f64();
        r.bias_start_vertex = in.i32();
        c->records.emplace_back(key, r);
    }
    return [c] { replace_sizing(*c); };
}

} // namespace

void register_mesh_file_sections() {
    register_model_file_section({"sizing", 1, false, write_sizing, read_sizing});
    register_model_file_section({"mesh", 2, false, write_mesh, read_mesh});
}

} // namespace tarvo::kernel::mesh
