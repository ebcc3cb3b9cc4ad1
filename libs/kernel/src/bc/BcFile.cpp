// The "bc" section of the native file: every condition, material, block material, boundary
// layer, intersection type and coordinate system, with the id counters and the material serial,
// so that an opened model numbers new records as the saved one would have.
//
// Layout (version 1): the counters, then one counted list per map, each record field by field in
// the order of its struct. Threading: kernel thread only.

#include "bc/BcModule.h"
#include "core/ModelFile.h"

namespace tarvo::kernel::bc {

namespace {

void write_target(FileWriter& w, const Target& t) {
    w.str(t.type);
    w.i32(t.id);
}

Target read_target(FileReader& r) {
    Target t;
    t.type = r.str();
    t.id = r.i32();
    return t;
}

template <size_t N> void write_doubles(FileWriter& w, const std::array<double, N>& a) {
    for (double v : a)
        w.f64(v);
}
template <size_t N> void read_doubles(FileReader& r, std::array<double, N>& a) {
    for (double& v : a)
        v = r.f64();
}

void write_state(FileWriter& w, const BcState& s) {
    w.u64(s.max_ids.size());
    for (const auto& [space, id] : s.max_ids) {
        w.i32(space);
        w.i32(id);
    }
    w.i64(s.material_serial);

    w.u64(s.conditions.size());
    for (const auto& [key, c] : s.conditions) {
        w.i32(c->kind);
        w.i32(c->id);
        w.str(c->name);
        w.u64(c->on.size());
        for (const Target& t : c->on)
            write_target(w, t);
        w.f64(c->magnitude);
        write_doubles(w, c->direction);
        w.f64(c->moment);
        write_doubles(w, c->moment_direction);
        w.f64(c->pressure);
        w.str(c->function);
        write_doubles(w, c->dof_values);
        for (int sign : c->dof_signs)
            w.i32(sign);
        w.str(c->combine);
        w.boolean(c->shell);
        w.u64(c->areas.size());
        for (const auto& [area, value] : c->areas) {
            w.i32(area);
            w.f64(value);
        }
        w.f64(c->friction);
        w.f64(c->tolerance);
        w.f64(c->tol_lower);
        w.boolean(c->tied);
        w.boolean(c->general);
        w.boolean(c->exterior);
        w.str(c->constraint_type);
        write_target(w, c->reference);
    }

    w.u64(s.materials.size());
    for (const auto& [id, m] : s.materials) {
        w.i32(m->id);
        w.i64(m->serial);
        w.str(m->name);
        w.str(m->group);
        w.boolean(m->cfd);
        w.u64(m->properties.size());
        for (const auto& [name, v] : m->properties) {
            w.str(name);
            w.i32(v.kind);
            w.f64(v.scalar);
            w.array(v.vector);
            w.u64(v.table.size());
            for (const auto& row : v.table)
                w.array(row);
        }
    }
    w.u64(s.block_materials.size());
    for (const auto& [block, material] : s.block_materials) {
        w.i32(block);
        w.i32(material);
    }

    w.u64(s.layers.size());
    for (const auto& [id, l] : s.layers) {
        w.i32(l->id);
        w.str(l->algorithm);
        w.f64(l->first_height);
        w.f64(l->first_aspect);
        w.f64(l->last_aspect);
        w.f64(l->growth);
        w.i32(l->rows);
        w.boolean(l->continuity);
        for (const auto* pairs : {&l->curve_surface, &l->surface_volume}) {
            w.u64(pairs->size());
            for (const auto& [a, b] : *pairs) {
                w.i32(a);
                w.i32(b);
            }
        }
    }
    for (const auto* map : {&s.vertex_intersections, &s.curve_intersections}) {
        w.u64(map->size());
        for (const auto& [key, type] : *map) {
            w.i32(key.first);
            w.i32(key.second);
            w.str(type);
        }
    }

    w.u64(s.coordinate_systems.size());
    for (const auto& [id, c] : s.coordinate_systems) {
        w.i32(c->id);
        w.str(c->name);
        w.str(c->type);
        write_doubles(w, c->origin);
        write_doubles(w, c->z_axis);
        write_doubles(w, c->x_axis);
    }
}

BcState read_state(FileReader& r) {
    BcState s;
    const auto positive = [&](int id, const char* what) {
        if (id <= 0)
            r.fail(std::string(what) + " id " + std::to_string(id) + " is not positive");
        return id;
    };
    for (uint64_t n = r.count(8); n > 0; --n) {
        const int space = r.i32();
        s.max_ids[space] = r.i32();
    }
    s.material_serial = r.i64();

    for (uint64_t n = r.count(8); n > 0; --n) {
        Condition c;
        c.kind = r.i32();
        if (!kind_by_code(c.kind))
            r.fail("unknown condition kind " + std::to_string(c.kind));
        c.id = positive(r.i32(), "condition");
        c.name = r.str();
        for (uint64_t t = r.count(12); t > 0; --t)
            c.on.push_back(read_target(r));
        c.magnitude = r.f64();
        read_doubles(r, c.direction);
        c.moment = r.f64();
        read_doubles(r, c.moment_direction);
        c.pressure = r.f64();
        c.function = r.str();
        read_doubles(r, c.dof_values);
        for (int& sign : c.dof_signs)
            sign = r.i32();
        c.combine = r.str();
        c.shell = r.boolean();
        for (uint64_t a = r.count(12); a > 0; --a) {
            const int area = r.i32();
            c.areas[area] = r.f64();
        }
        c.friction = r.f64();
        c.tolerance = r.f64();
        c.tol_lower = r.f64();
        c.tied = r.boolean();
        c.general = r.boolean();
        c.exterior = r.boolean();
        c.constraint_type = r.str();
        c.reference = read_target(r);
        const BcKey key{id_space(c.kind), c.id};
        if (s.conditions.count(key))
            r.fail("condition " + std::to_string(c.id) + " twice");
        s.conditions[key] = std::make_shared<const Condition>(std::move(c));
    }

    for (uint64_t n = r.count(8); n > 0; --n) {
        Material m;
        m.id = positive(r.i32(), "material");
        m.serial = r.i64();
        m.name = r.str();
        m.group = r.str();
        m.cfd = r.boolean();
        for (uint64_t p = r.count(8); p > 0; --p) {
            const std::string name = r.str();
            PropertyValue v;
            v.kind = r.i32();
            if (v.kind < 0 || v.kind > 3)
                r.fail("property '" + name + "' of unknown kind " + std::to_string(v.kind));
            v.scalar = r.f64();
            v.vector = r.array<double>();
            for (uint64_t row = r.count(8); row > 0; --row)
                v.table.push_back(r.array<double>());
            m.properties[name] = std::move(v);
        }
        const int id = m.id;
        s.materials[id] = std::make_shared<const Material>(std::move(m));
    }
    for (uint64_t n = r.count(8); n > 0; --n) {
        const int block = r.i32();
        const int material = r.i32();
        if (!s.materials.count(material))
            r.fail("block " + std::to_string(block) + " has material " + std::to_string(material) +
                   ", which is not in the file");
        s.block_materials[block] = material;
    }

    for (uint64_t n = r.count(8); n > 0; --n) {
        BoundaryLayer l;
        l.id = positive(r.i32(), "boundary layer");
        l.algorithm = r.str();
        l.first_height = r.f64();
        l.first_aspect = r.f64();
        l.last_aspect = r.f64();
        l.growth = r.f64();
        l.rows = r.i32();
        l.continuity = r.boolean();
        for (auto* pairs : {&l.curve_surface, &l.surface_volume})
            for (uint64_t p = r.count(8); p > 0; --p) {
                const int a = r.i32();
                pairs->push_back({a, r.i32()});
            }
        const int id = l.id;
        s.layers[id] = std::make_shared<const BoundaryLayer>(std::move(l));
    }
    for (auto* map : {&s.vertex_intersections, &s.curve_intersections})
        for (uint64_t p = r.count(16); p > 0; --p) {
            const int a = r.i32();
            const int b = r.i32();
            (*map)[{a, b}] = r.str();
        }

    for (uint64_t n = r.count(8); n > 0; --n) {
        CoordinateSystem c;
        c.id = positive(r.i32(), "coordinate system");
        c.name = r.str();
        c.type = r.str();
        read_doubles(r, c.origin);
        read_doubles(r, c.z_axis);
        read_doubles(r, c.x_axis);
        const int id = c.id;
        s.coordinate_systems[id] = std::make_shared<const CoordinateSystem>(std::move(c));
    }
    if (!r.at_end())
        r.fail("has bytes after its last record");
    return s;
}

} // namespace

void register_bc_file_section() {
    ModelFileSection section;
    section.name = "bc";
    section.version = 1;
    section.write = [](FileWriter& w) {
        if (const BcModule* m = bc_module())
            write_state(w, m->state());
    };
    section.read = [](FileReader& r, uint32_t) -> SectionCommit {
        auto state = std::make_shared<BcState>(read_state(r));
        return [state] {
            BcModule* m = bc_module();
            if (!m)
                return;
            // The properties the materials use become known to this session with their kinds.
            std::string why;
            for (const auto& [id, mat] : state->materials)
                for (const auto& [name, value] : mat->properties)
                    if (const PropertyRecord* p = m->properties().define(name, value.kind, why))
                        m->properties().add_to_group(mat->group, p);
            m->replace_state(std::move(*state));
        };
    };
    register_model_file_section(std::move(section));
}

void unregister_bc_file_section() {
    unregister_model_file_section("bc");
}

} // namespace tarvo::kernel::bc
