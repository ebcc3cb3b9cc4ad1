// The fe module's section of the native file: blocks, node sets, side sets and groups, each as it
// is held (geometry members stay geometry, so a block of volume 1 still follows volume 1's mesh
// after an open), and the highest group id ever given.

#include "core/ModelFile.h"
#include "core/Session.h"
#include "fe/FeModule.h"

namespace tarvo::kernel::fe {

namespace {

void write_members(FileWriter& out, const std::vector<Member>& members) {
    out.u64(members.size());
    for (const Member& m : members) {
        out.u8(static_cast<uint8_t>(m.type));
        out.i32(m.dim);
        out.u8(static_cast<uint8_t>(m.kind));
        out.i32(m.id);
    }
}

std::vector<Member> read_members(FileReader& in) {
    std::vector<Member> out(in.count(10));
    for (Member& m : out) {
        const uint8_t type = in.u8();
        m.dim = in.i32();
        const uint8_t kind = in.u8();
        m.id = in.i32();
        if (type > static_cast<uint8_t>(Member::Type::Group) || kind >= mesh::kElemKindCount ||
            m.dim < 0 || m.dim > 3)
            in.fail("a container member of an unknown kind");
        m.type = static_cast<Member::Type>(type);
        m.kind = static_cast<ElemKind>(kind);
    }
    return out;
}

void write_strings(FileWriter& out, const std::vector<std::string>& list) {
    out.u64(list.size());
    for (const std::string& s : list)
        out.str(s);
}

std::vector<std::string> read_strings(FileReader& in) {
    std::vector<std::string> out(in.count(8));
    for (std::string& s : out)
        s = in.str();
    return out;
}

// Reads `count` containers with `read_one`, refusing repeated or non-positive ids.
template <class T, class Read>
std::map<int, std::shared_ptr<const T>> read_map(FileReader& in, Read read_one) {
    std::map<int, std::shared_ptr<const T>> out;
    const uint64_t n = in.count(4);
    for (uint64_t i = 0; i < n; ++i) {
        auto item = std::make_shared<T>();
        item->id = in.i32();
        read_one(*item);
        if (item->id < 1 || out.count(item->id))
            in.fail("a container id is out of range or repeated");
        out.emplace(item->id, std::move(item));
    }
    return out;
}

void write_fe(FileWriter& out) {
    const FeState& s = fe_module()->state();
    out.u64(s.blocks.size());
    for (const auto& [id, b] : s.blocks) {
        out.i32(id);
        out.str(b->name);
        out.str(b->description);
        out.str(b->element_type);
        write_members(out, b->members);
        out.array(b->attributes);
        write_strings(out, b->attribute_names);
    }
    out.u64(s.nodesets.size());
    for (const auto& [id, n] : s.nodesets) {
        out.i32(id);
        out.str(n->name);
        out.str(n->description);
        write_members(out, n->members);
    }
    out.u64(s.sidesets.size());
    for (const auto& [id, ss] : s.sidesets) {
        out.i32(id);
        out.str(ss->name);
        out.str(ss->description);
        out.u64(ss->surfaces.size());
        for (const auto& [surface, volume] : ss->surfaces) {
            out.i32(surface);
            out.i32(volume);
        }
    }
    out.u64(s.groups.size());
    for (const auto& [id, g] : s.groups) {
        out.i32(id);
        out.str(g->name);
        write_members(out, g->members);
    }
    out.i32(s.group_max_id);
}

SectionCommit read_fe(FileReader& in, uint32_t) {
    auto s = std::make_shared<FeState>();
    s->blocks = read_map<Block>(in, [&](Block& b) {
        b.name = in.str();
        b.description = in.str();
        b.element_type = in.str();
        b.members = read_members(in);
        b.attributes = in.array<double>();
        b.attribute_names = read_strings(in);
    });
    s->nodesets = read_map<NodeSet>(in, [&](NodeSet& n) {
        n.name = in.str();
        n.description = in.str();
        n.members = read_members(in);
    });
    s->sidesets = read_map<SideSet>(in, [&](SideSet& ss) {
        ss.name = in.str();
        ss.description = in.str();
        ss.surfaces.resize(in.count(8));
        for (auto& [surface, volume] : ss.surfaces) {
            surface = in.i32();
            volume = in.i32();
        }
    });
    s->groups = read_map<Group>(in, [&](Group& g) {
        g.name = in.str();
        g.members = read_members(in);
    });
    s->group_max_id = in.i32();
    if (!s->groups.empty() && s->group_max_id < s->groups.rbegin()->first)
        in.fail("a group id beyond the group counter");
    return [s] { fe_module()->replace_state(*s); };
}

} // namespace

void FeModule::replace_state(const FeState& loaded) {
    clear_state();
    state_ = loaded;
    const auto created = [](const std::string& type, const auto& map) {
        for (const auto& [id, piece] : map)
            events().emit(&TarvoInterface::TIObserve::notify_genesis_entity_modified, type, id,
                          std::string("created"));
    };
    created("block", state_.blocks);
    created("nodeset", state_.nodesets);
    created("sideset", state_.sidesets);
    for (const auto& [id, g] : state_.groups)
        events().emit(&TarvoInterface::TIObserve::notify_group_created, id);
}

void register_fe_file_section() {
    register_model_file_section({"fe", 1, false, write_fe, read_fe});
}

} // namespace tarvo::kernel::fe
