// What the analysis set-up adds to an exported Exodus file (installed as fe's provider).
//
// Exodus has no place for a load as such, so the set-up goes where solvers' input decks look:
// - a pressure on a side set: the side set's distribution factors hold its magnitude on every
//   node of every side; a force on a node set: the node set's factors hold its magnitude;
// - one info record per block material (name and E, nu, rho) and per condition (kind, id,
//   what it lies on, its values), so that nothing set up is silently dropped.
// When two conditions would fill the same set's factors, the set gets none and the info records
// say why. Every other condition kind appears in the info records only; media, boundary layers
// and coordinate systems are not written (nothing in the format reads them).

#include "bc/BcModule.h"
#include "fe/ExodusExtras.h"
#include "tarvo/TarvoTypes.h"

#include <cstdio>
#include <set>
#include <string>

namespace tarvo::kernel::bc {

namespace {

std::string number(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.9g", value);
    return text;
}

std::string property(const Material& m, const char* name) {
    const auto p = m.properties.find(name);
    return p == m.properties.end() || p->second.kind != 0 ? "-" : number(p->second.scalar);
}

std::string targets(const Condition& c) {
    std::string text;
    for (const Target& t : c.on)
        text += (text.empty() ? "" : ", ") + t.type + " " + std::to_string(t.id);
    return text;
}

// Fills `factors` for the one condition on a set; a second one on the same set takes the set
// out for good (listed in `clashes`).
void put_factor(std::map<int, double>& factors, std::set<int>& clashes, int set, double value) {
    if (clashes.contains(set))
        return;
    if (factors.contains(set)) {
        factors.erase(set);
        clashes.insert(set);
        return;
    }
    factors[set] = value;
}

} // namespace

fe::ExodusExtras exodus_extras_of(const BcState& state) {
    fe::ExodusExtras extras;
    std::set<int> node_clashes, side_clashes;
    for (const auto& [block, material_id] : state.block_materials) {
        const auto m = state.materials.find(material_id);
        if (m == state.materials.end())
            continue;
        const Material& material = *m->second;
        extras.info.push_back("block " + std::to_string(block) + " material '" + material.name +
                              "' E " + property(material, "ELASTIC_MODULUS") + " nu " +
                              property(material, "POISSON_RATIO") + " rho " +
                              property(material, "DENSITY"));
    }
    for (const auto& [key, piece] : state.conditions) {
        const Condition& c = *piece;
        const KindInfo* kind = kind_by_code(c.kind);
        std::string line = std::string(kind ? kind->word : "condition") + " " +
                           std::to_string(c.id) + " on " + targets(c);
        if (c.kind == TarvoInterface::TI_BC_PRESSURE) {
            line += ": pressure " + number(c.pressure);
            for (const Target& t : c.on)
                if (t.type == "sideset")
                    put_factor(extras.sideset_factors, side_clashes, t.id, c.pressure);
        } else if (c.kind == TarvoInterface::TI_BC_FORCE) {
            line += ": force " + number(c.magnitude) + " along " + number(c.direction[0]) + " " +
                    number(c.direction[1]) + " " + number(c.direction[2]);
            for (const Target& t : c.on)
                if (t.type == "nodeset")
                    put_factor(extras.nodeset_factors, node_clashes, t.id, c.magnitude);
        }
        extras.info.push_back(line);
    }
    for (int set : side_clashes)
        extras.info.push_back("sideset " + std::to_string(set) +
                              ": several pressures, no distribution factors written");
    for (int set : node_clashes)
        extras.info.push_back("nodeset " + std::to_string(set) +
                              ": several forces, no distribution factors written");
    return extras;
}

} // namespace tarvo::kernel::bc
