// Quality of the stored mesh: the public functions get_quality_value, get_quality_stats and
// get_meshed_volume_or_area, and the `quality` command. The numbers come from Quality.h; this
// file chooses the elements and says what they mean.
//
// Threading: kernel thread only.

#include "core/Command.h"
#include "core/EntityCatalog.h"
#include "core/EntityList.h"
#include "core/Guard.h"
#include "core/Session.h"
#include "geometry/GeometryModule.h"
#include "mesh/MeshModule.h"
#include "mesh/Quality.h"
#include "tarvo/TarvoInterface.h"

#include <cmath>
#include <sstream>

namespace tarvo::kernel::mesh {

namespace {

// Elements of one kind; their corners are gathered chunk by chunk when they are scored, so that
// a million elements never need a copy of all their corners at once.
struct Sample {
    ElemKind kind = ElemKind::Tet;
    std::vector<int> ids;
    std::vector<std::pair<const ElemBlock*, int>> elements;
};

void add(Sample& sample, const ElemBlock& b, int index) {
    sample.ids.push_back(b.first_id + index);
    sample.elements.push_back({&b, index});
}

// The elements that `type` and `ids` name, grouped by kind: mesh elements themselves, or the
// elements of the top dimension of the listed geometry entities (a volume's solids, a surface's
// faces, a curve's edges).
std::map<ElemKind, Sample> gather(const std::string& type, const std::vector<int>& ids) {
    std::map<ElemKind, Sample> out;
    const MeshState& s = mesh_module()->state();
    const std::string word = canonical_entity_type(type);
    if (auto kind = elem_kind_from_word(word)) {
        for (int id : ids)
            if (auto ref = s.find_element(*kind, id)) {
                Sample& sample = out[*kind];
                sample.kind = *kind;
                add(sample, *ref->block, ref->index);
            }
        return out;
    }
    const auto geom = parse_kind(word);
    if (!geom)
        return out;
    std::vector<Owner> owners;
    for (int id : ids) {
        if (*geom == GeomKind::Body) {
            for (int v : geometry_module()->model().relatives(GeomKind::Body, id, GeomKind::Volume))
                owners.push_back({3, v});
        } else if (dim_of_kind(*geom) >= 1) {
            owners.push_back({dim_of_kind(*geom), id});
        }
    }
    for (const Owner& o : owners)
        if (const MeshPiece* p = s.piece(o))
            for (const ElemBlock& b : p->blocks) {
                Sample& sample = out[b.kind];
                sample.kind = b.kind;
                sample.ids.reserve(sample.ids.size() + b.count());
                sample.elements.reserve(sample.elements.size() + b.count());
                for (int i = 0; i < b.count(); ++i)
                    add(sample, b, i);
            }
    return out;
}

std::vector<double> values_of(const Sample& sample, std::string_view metric) {
    constexpr size_t kChunk = 4096;
    const int n = info(sample.kind).nodes;
    std::vector<double> values(sample.elements.size());
    std::vector<Point3> corners;
    corners.reserve(kChunk * n);
    NodeLookup position(mesh_module()->state());
    for (size_t start = 0; start < sample.elements.size(); start += kChunk) {
        const size_t count = std::min(kChunk, sample.elements.size() - start);
        corners.clear();
        for (size_t e = start; e < start + count; ++e) {
            const auto& [block, index] = sample.elements[e];
            for (int k = 0; k < n; ++k)
                corners.push_back(*position(block->conn[index * n + k]));
        }
        quality_values(sample.kind, metric, corners.data(), count, values.data() + start);
    }
    return values;
}

std::string number(double v) {
    std::ostringstream out;
    out.precision(6);
    out << v;
    return out.str();
}

bool quality_command(Cursor& c) {
    auto& drawn = mesh_module()->drawn_quality();
    if (c.keyword("draw")) {
        if (!c.keyword("clear"))
            return c.fail("expected 'clear' after 'quality draw'");
        if (!c.expect_end())
            return false;
        const std::uint64_t stamp = drawn.stamp + 1;
        drawn = MeshModule::DrawnQuality{};
        drawn.stamp = stamp;
        return true;
    }
    EntityList list;
    if (!c.entity_list(list))
        return c.fail("expected an entity list");
    std::string metric_text;
    if (c.keyword("metric") && !c.string(metric_text, true))
        return false;
    const bool draw = c.keyword("draw");
    if (!c.expect_end())
        return false;
    std::optional<std::string_view> metric;
    if (!metric_text.empty() && !(metric = find_metric(metric_text)))
        return c.fail("unknown quality metric '" + metric_text + "'");
    bool any = false;
    MeshModule::DrawnQuality drawing;
    drawing.stamp = drawn.stamp + 1;
    for (const auto& group : list.groups) {
        for (auto& [kind, sample] : gather(group.type, group.ids)) {
            const std::string_view name = metric ? *metric : default_metric(kind);
            if (name.empty() || !metric_applies(name, kind)) {
                warning(std::string(name) + " does not apply to " + std::string(info(kind).word) +
                        "s");
                continue;
            }
            const auto values = values_of(sample, name);
            if (draw) {
                // One colour scale for the whole drawing: kinds whose default metric differs
                // from the first one's are printed but not drawn.
                if (drawing.metric.empty()) {
                    drawing.metric = std::string(name);
                    drawing.low_is_bad = low_is_bad(name);
                }
                if (drawing.metric == name)
                    for (size_t i = 0; i < values.size(); ++i) {
                        drawing.elements.push_back({kind, sample.ids[i]});
                        drawing.values.push_back(values[i]);
                    }
                else
                    warning(std::string(info(kind).word) + "s are not drawn: their " +
                            std::string(name) + " has another scale than " + drawing.metric);
            }
            const QualityStats st = quality_stats(values.data(), values.size());
            const size_t worst = low_is_bad(name) ? st.argmin : st.argmax;
            print(std::string(info(kind).word) + " " + std::string(name) + " of " +
                  std::to_string(values.size()) + " elements: min " + number(st.min) + ", max " +
                  number(st.max) + ", mean " + number(st.mean) + ", std dev " + number(st.stddev) +
                  "; worst " + std::string(info(kind).word) + " " +
                  std::to_string(sample.ids[worst]) + " (" + number(values[worst]) + ")");
            any = true;
        }
    }
    if (!any)
        return c.fail("no meshed elements in " + list.describe());
    if (draw)
        drawn = std::move(drawing);
    return true;
}

} // namespace

void register_quality_commands() {
    register_command({"quality", quality_command, false,
                      "quality <list> [metric '<name>'] [draw] | quality draw clear"});
}

} // namespace tarvo::kernel::mesh

namespace km = tarvo::kernel::mesh;

namespace TarvoInterface {

double get_quality_value(const std::string& mesh_type, int mesh_id,
                         const std::string& metric_name) {
    return tarvo::kernel::guarded("get_quality_value", 0.0, [&] {
        if (!km::mesh_module())
            return 0.0;
        const auto metric = km::find_metric(metric_name);
        if (!metric)
            return 0.0;
        const auto samples = km::gather(mesh_type, {mesh_id});
        if (samples.empty())
            return 0.0;
        const km::Sample& s = samples.begin()->second;
        if (!km::metric_applies(*metric, s.kind))
            return 0.0;
        return km::values_of(s, *metric).front();
    });
}

void get_quality_stats(const std::string& entity_type, const std::vector<int>& id_list,
                       const std::string& metric_name, double single_threshold,
                       bool use_low_threshold, double low_threshold, double high_threshold,
                       double& min_value, double& max_value, double& mean_value, double& std_value,
                       int& min_element_id, int& max_element_id, std::vector<int>& mesh_list,
                       std::string& element_type, int& bad_group_id, bool make_group) {
    min_value = max_value = mean_value = std_value = 0;
    min_element_id = max_element_id = bad_group_id = 0;
    mesh_list.clear();
    element_type.clear();
    tarvo::kernel::guarded("get_quality_stats", false, [&] {
        if (!km::mesh_module())
            return false;
        const auto metric = km::find_metric(metric_name);
        if (!metric)
            return tarvo::kernel::error("unknown quality metric '" + metric_name + "'");
        // One kind answers: the one with the most elements that the metric applies to.
        const km::Sample* best = nullptr;
        const auto samples = km::gather(entity_type, id_list);
        for (const auto& [kind, sample] : samples)
            if (km::metric_applies(*metric, kind) &&
                (!best || sample.ids.size() > best->ids.size()))
                best = &sample;
        if (!best)
            return false;
        const auto values = km::values_of(*best, *metric);
        const km::QualityStats st = km::quality_stats(values.data(), values.size());
        min_value = st.min;
        max_value = st.max;
        mean_value = st.mean;
        std_value = st.stddev;
        min_element_id = best->ids[st.argmin];
        max_element_id = best->ids[st.argmax];
        element_type = std::string(km::info(best->kind).word);
        const bool low_bad = km::low_is_bad(*metric);
        for (size_t i = 0; i < values.size(); ++i) {
            const double v = values[i];
            const bool bad = use_low_threshold
                                 ? (v < low_threshold || v > high_threshold)
                                 : (low_bad ? v < single_threshold : v > single_threshold);
            if (bad)
                mesh_list.push_back(best->ids[i]);
        }
        // Groups live in a module above this one: core's hook makes it.
        if (make_group && !mesh_list.empty())
            bad_group_id = tarvo::kernel::make_group(element_type, mesh_list);
        return true;
    });
}

double get_meshed_volume_or_area(const std::string& geometry_type,
                                 const std::vector<int>& entity_ids) {
    return tarvo::kernel::guarded("get_meshed_volume_or_area", 0.0, [&] {
        if (!km::mesh_module())
            return 0.0;
        double total = 0;
        for (const auto& [kind, sample] : km::gather(geometry_type, entity_ids)) {
            const int dim = km::info(kind).dim;
            if (dim < 2)
                continue;
            const auto values = km::values_of(sample, dim == 3 ? "Element Volume" : "Element Area");
            for (double v : values)
                total += v;
        }
        return total;
    });
}

} // namespace TarvoInterface
