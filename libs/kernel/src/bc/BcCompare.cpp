// compare_geometry_and_mesh: which of the given volumes a given solid mesh fills, answered as
// counts and as groups the user can look at. The rules are in the kernel README ("Analysis
// set-up"). Threading: kernel thread only.

#include "bc/BcModule.h"
#include "core/Guard.h"
#include "fe/FeModule.h"
#include "geometry/GeometryModule.h"
#include "mesh/MeshModule.h"
#include "tarvo/TarvoInterface.h"

#include <BRepClass3d_SolidClassifier.hxx>
#include <BRepGProp.hxx>
#include <GProp_GProps.hxx>
#include <gp_Pnt.hxx>

#include <map>
#include <set>

namespace tk = tarvo::kernel;
namespace bc = tarvo::kernel::bc;

namespace {

using tk::mesh::ElemKind;
using tk::mesh::Point3;

struct Element {
    ElemKind kind;
    int id;
    std::vector<Point3> corners;
};

struct VolumeMatch {
    int volume = 0;
    std::vector<const Element*> elements;
    bool all_inside = true; // every corner of its elements lies in it (within the tolerance)
};

bool inside(BRepClass3d_SolidClassifier& classifier, const Point3& p, double tolerance) {
    classifier.Perform(gp_Pnt(p[0], p[1], p[2]), tolerance);
    return classifier.State() == TopAbs_IN || classifier.State() == TopAbs_ON;
}

int group_of(const std::vector<std::pair<std::string, std::vector<int>>>& members) {
    const int group = TarvoInterface::create_new_group();
    if (group > 0)
        for (const auto& [type, ids] : members)
            if (!ids.empty())
                TarvoInterface::add_entities_to_group(group, ids, type);
    return group;
}

} // namespace

namespace TarvoInterface {

void compare_geometry_and_mesh(const std::vector<int>& volume_ids,
                               const std::vector<int>& block_ids, const std::vector<int>& hex_ids,
                               const std::vector<int>& tet_ids, double tolerance,
                               int& returned_unmatched_volumes_count,
                               int& returned_unmatched_elements_count,
                               std::vector<int>& returned_full_matches_group_ids_list,
                               std::vector<int>& returned_partial_matches_group_ids_list,
                               int& returned_volume_curves_group_id) {
    tk::guarded("compare_geometry_and_mesh", false, [&] {
        const tk::GeometryModel& model = tk::geometry_module()->model();
        const tk::mesh::MeshState& mesh = tk::mesh::mesh_module()->state();
        const tk::fe::FeModule* fe = tk::fe::fe_module();
        if (!(tolerance >= 0))
            return tk::error("compare_geometry_and_mesh: the tolerance is not negative");

        // The solid elements asked for, each once.
        std::set<std::pair<ElemKind, int>> wanted;
        for (int b : block_ids) {
            const auto it = fe->state().blocks.find(b);
            if (it == fe->state().blocks.end())
                continue;
            for (const auto& [kind, ids] : tk::fe::FeModule::elements(*it->second))
                if (tk::mesh::info(kind).dim == 3)
                    for (int e : ids)
                        wanted.insert({kind, e});
        }
        for (int h : hex_ids)
            wanted.insert({ElemKind::Hex, h});
        for (int t : tet_ids)
            wanted.insert({ElemKind::Tet, t});
        std::vector<Element> elements;
        for (const auto& [kind, id] : wanted) {
            const auto ref = mesh.find_element(kind, id);
            if (!ref)
                continue;
            Element e{kind, id, {}};
            for (int i = 0; i < tk::mesh::info(kind).nodes; ++i)
                e.corners.push_back(mesh.node_position(ref->nodes()[i]).value_or(Point3{}));
            elements.push_back(std::move(e));
        }

        // Each element goes to the first volume that holds its centroid.
        std::vector<VolumeMatch> matches;
        std::map<int, BRepClass3d_SolidClassifier> classifiers;
        for (int v : volume_ids)
            if (model.exists(tk::GeomKind::Volume, v) && !classifiers.count(v)) {
                classifiers[v].Load(model.shape(tk::GeomKind::Volume, v));
                matches.push_back({v, {}, true});
            }
        int unmatched_elements = 0;
        for (const Element& e : elements) {
            Point3 c{};
            for (const Point3& p : e.corners)
                for (int i = 0; i < 3; ++i)
                    c[i] += p[i] / static_cast<double>(e.corners.size());
            VolumeMatch* home = nullptr;
            for (VolumeMatch& m : matches)
                if (inside(classifiers.at(m.volume), c, tolerance)) {
                    home = &m;
                    break;
                }
            if (!home) {
                ++unmatched_elements;
                continue;
            }
            home->elements.push_back(&e);
            for (const Point3& p : e.corners)
                if (home->all_inside && !inside(classifiers.at(home->volume), p, tolerance))
                    home->all_inside = false;
        }

        // Full: the elements stay inside and fill the volume up to a skin of the tolerance.
        int unmatched_volumes = 0;
        std::vector<int> full, partial, loose_curves;
        for (const VolumeMatch& m : matches) {
            const TopoDS_Shape shape = model.shape(tk::GeomKind::Volume, m.volume);
            GProp_GProps volume_props, area_props;
            BRepGProp::VolumeProperties(shape, volume_props);
            BRepGProp::SurfaceProperties(shape, area_props);
            double meshed = 0;
            std::map<std::string, std::vector<int>> by_kind;
            for (const Element* e : m.elements) {
                meshed += bc::element_volume(e->kind, e->corners);
                by_kind[std::string(tk::mesh::info(e->kind).word)].push_back(e->id);
            }
            const bool filled = std::abs(meshed - volume_props.Mass()) <=
                                std::max(tolerance * area_props.Mass(), 1e-9 * volume_props.Mass());
            if (m.elements.empty())
                ++unmatched_volumes;
            std::vector<std::pair<std::string, std::vector<int>>> members{{"volume", {m.volume}}};
            members.insert(members.end(), by_kind.begin(), by_kind.end());
            if (!m.elements.empty() && m.all_inside && filled) {
                full.push_back(group_of(members));
            } else {
                if (!m.elements.empty())
                    partial.push_back(group_of(members));
                for (int curve :
                     model.relatives(tk::GeomKind::Volume, m.volume, tk::GeomKind::Curve))
                    loose_curves.push_back(curve);
            }
        }
        returned_unmatched_volumes_count = unmatched_volumes;
        returned_unmatched_elements_count = unmatched_elements;
        returned_full_matches_group_ids_list = full;
        returned_partial_matches_group_ids_list = partial;
        returned_volume_curves_group_id =
            loose_curves.empty() ? 0 : group_of({{"curve", loose_curves}});
        return true;
    });
}

} // namespace TarvoInterface
