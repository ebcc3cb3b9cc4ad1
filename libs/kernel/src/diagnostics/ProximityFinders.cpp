// Finders of what lies close together (coincident, facing, overlapping, mergeable, floating)
// and of bad topology (non-manifold, invalid shapes), on OpenCASCADE.
//
// Proximity searches first compare bounding boxes grown by the tolerance, so that the exact
// distance (BRepExtrema_DistShapeShape) runs only for pairs that can be close.

#include "diagnostics/FinderSupport.h"

namespace tarvo::kernel::diagnostics {

using namespace detail;

// ---- Proximities ----------------------------------------------------------------------------

std::vector<Pair> vertex_vertex_pairs(const std::vector<int>& volumes, double low, double high,
                                      bool other_volume) {
    std::vector<std::pair<gp_Pnt, int>> points;
    for (int v : entities_of(volumes, GeomKind::Vertex))
        points.push_back({point_of(v), v});
    std::sort(points.begin(), points.end(),
              [](const auto& a, const auto& b) { return a.first.X() < b.first.X(); });
    std::vector<Pair> out;
    Scan scan("Coincident vertices", static_cast<long>(points.size()));
    for (std::size_t i = 0; i < points.size(); ++i) {
        scan.step();
        for (std::size_t j = i + 1;
             j < points.size() && points[j].first.X() - points[i].first.X() <= high; ++j) {
            const double d = points[i].first.Distance(points[j].first);
            if (d < low || d > high)
                continue;
            const int a = std::min(points[i].second, points[j].second);
            const int b = std::max(points[i].second, points[j].second);
            if (other_volume && share_volume(GeomKind::Vertex, a, GeomKind::Vertex, b))
                continue;
            out.push_back({a, b, d});
        }
    }
    std::sort(out.begin(), out.end(),
              [](const Pair& x, const Pair& y) { return std::tie(x.a, x.b) < std::tie(y.a, y.b); });
    return out;
}

namespace {

std::vector<Pair> vertex_entity_pairs(const std::vector<int>& volumes, GeomKind kind, double low,
                                      double high, bool other_volume, const char* title) {
    const std::vector<int> vertices = entities_of(volumes, GeomKind::Vertex);
    const std::vector<int> targets = entities_of(volumes, kind);
    std::vector<Bnd_Box> boxes;
    for (int t : targets)
        boxes.push_back(grown(model().bounding_box(kind, t), high));
    std::vector<Pair> out;
    Scan scan(title, static_cast<long>(vertices.size()));
    for (int v : vertices) {
        scan.step();
        const gp_Pnt p = point_of(v);
        const std::vector<int> own = model().relatives(GeomKind::Vertex, v, kind);
        for (std::size_t i = 0; i < targets.size(); ++i) {
            if (boxes[i].IsOut(p) || std::count(own.begin(), own.end(), targets[i]))
                continue;
            if (other_volume && share_volume(GeomKind::Vertex, v, kind, targets[i]))
                continue;
            const double d =
                distance(model().shape(GeomKind::Vertex, v), model().shape(kind, targets[i]));
            if (d >= 0 && d >= low && d <= high)
                out.push_back({v, targets[i], d});
        }
    }
    return out;
}

} // namespace

std::vector<Pair> vertex_curve_pairs(const std::vector<int>& volumes, double low, double high,
                                     bool other_volume) {
    return vertex_entity_pairs(volumes, GeomKind::Curve, low, high, other_volume,
                               "Vertices near curves");
}

std::vector<Pair> vertex_surface_pairs(const std::vector<int>& volumes, double low, double high,
                                       bool other_volume) {
    return vertex_entity_pairs(volumes, GeomKind::Surface, low, high, other_volume,
                               "Vertices near surfaces");
}

std::vector<Pair> closest_vertex_curve_pairs(const std::vector<int>& volumes, int count) {
    // Candidates in the order of their boxes' distance, a lower bound of the real one: once
    // that bound passes the count-th best real distance, no later pair can enter.
    struct Candidate {
        double bound;
        int vertex, curve;
    };
    std::vector<Candidate> candidates;
    const std::vector<int> curves = entities_of(volumes, GeomKind::Curve);
    for (int v : entities_of(volumes, GeomKind::Vertex)) {
        const gp_Pnt p = point_of(v);
        const std::vector<int> own = model().relatives(GeomKind::Vertex, v, GeomKind::Curve);
        for (int c : curves) {
            if (std::count(own.begin(), own.end(), c))
                continue;
            const Bnd_Box box = model().bounding_box(GeomKind::Curve, c);
            double xmin, ymin, zmin, xmax, ymax, zmax;
            box.Get(xmin, ymin, zmin, xmax, ymax, zmax);
            const double dx = std::max({xmin - p.X(), 0.0, p.X() - xmax});
            const double dy = std::max({ymin - p.Y(), 0.0, p.Y() - ymax});
            const double dz = std::max({zmin - p.Z(), 0.0, p.Z() - zmax});
            candidates.push_back({std::sqrt(dx * dx + dy * dy + dz * dz), v, c});
        }
    }
    std::sort(candidates.begin(), candidates.end(),
              [](const Candidate& a, const Candidate& b) { return a.bound < b.bound; });
    std::vector<Pair> best;
    Scan scan("Closest vertex-curve pairs", static_cast<long>(candidates.size()));
    for (const Candidate& c : candidates) {
        scan.step();
        if (static_cast<int>(best.size()) >= count && c.bound > best.back().distance)
            break;
        const double d = distance(model().shape(GeomKind::Vertex, c.vertex),
                                  model().shape(GeomKind::Curve, c.curve));
        if (d < 0)
            continue;
        best.push_back({c.vertex, c.curve, d});
        std::stable_sort(best.begin(), best.end(),
                         [](const Pair& a, const Pair& b) { return a.distance < b.distance; });
        if (static_cast<int>(best.size()) > count)
            best.pop_back();
    }
    return best;
}

namespace {

// Outward normal of a face at the point of it nearest to `p`.
gp_Vec normal_near(const TopoDS_Face& face, const gp_Pnt& p) {
    BRepExtrema_DistShapeShape d(BRepBuilderAPI_MakeVertex(p).Vertex(), face);
    double u = 0, v = 0;
    if (d.IsDone() && d.NbSolution() > 0 && d.SupportTypeShape2(1) == BRepExtrema_IsInFace)
        d.ParOnFaceS2(1, u, v);
    else {
        BRepAdaptor_Surface s(face);
        u = 0.5 * (s.FirstUParameter() + s.LastUParameter());
        v = 0.5 * (s.FirstVParameter() + s.LastVParameter());
    }
    BRepAdaptor_Surface s(face);
    gp_Pnt q;
    gp_Vec du, dv;
    s.D1(u, v, q, du, dv);
    gp_Vec n = du.Crossed(dv);
    if (face.Orientation() == TopAbs_REVERSED)
        n.Reverse();
    return n;
}

// Cheap test before the exact distance: planes and cylinders can face each other over an area
// only when they are parallel (coaxial) and close; a plane and a cylinder touch along a line at
// most.
bool may_face(const TopoDS_Face& a, const TopoDS_Face& b, double max_gap, double max_angle) {
    BRepAdaptor_Surface sa(a), sb(b);
    const GeomAbs_SurfaceType ta = sa.GetType(), tb = sb.GetType();
    const double angle = max_angle * kPi / 180.0;
    if (ta == GeomAbs_Plane && tb == GeomAbs_Plane) {
        gp_Dir na = sa.Plane().Axis().Direction(), nb = sb.Plane().Axis().Direction();
        if (a.Orientation() == TopAbs_REVERSED)
            na.Reverse();
        if (b.Orientation() == TopAbs_REVERSED)
            nb.Reverse();
        return na.Angle(nb.Reversed()) <= angle &&
               sa.Plane().Distance(sb.Plane().Location()) <= max_gap + 1e-7;
    }
    if (ta == GeomAbs_Cylinder && tb == GeomAbs_Cylinder) {
        const gp_Cylinder ca = sa.Cylinder(), cb = sb.Cylinder();
        return ca.Axis().IsParallel(cb.Axis(), angle) &&
               std::abs(ca.Radius() - cb.Radius()) <= max_gap + 1e-7 &&
               gp_Lin(ca.Axis()).Distance(cb.Location()) <= max_gap + 1e-7;
    }
    // Two analytic surfaces of different kinds (a plane and a cylinder, a cone and a sphere)
    // meet along curves at most; free-form surfaces may be anything.
    auto analytic = [](GeomAbs_SurfaceType t) {
        return t == GeomAbs_Plane || t == GeomAbs_Cylinder || t == GeomAbs_Cone ||
               t == GeomAbs_Sphere || t == GeomAbs_Torus;
    };
    return !(analytic(ta) && analytic(tb) && ta != tb);
}

double common_area(const TopoDS_Shape& a, const TopoDS_Shape& b, double fuzzy) {
    BRepAlgoAPI_Common common;
    TopTools_ListOfShape args, tools;
    args.Append(a);
    tools.Append(b);
    common.SetArguments(args);
    common.SetTools(tools);
    common.SetFuzzyValue(fuzzy);
    common.Build();
    if (!common.IsDone())
        return 0;
    GProp_GProps props;
    BRepGProp::SurfaceProperties(common.Shape(), props);
    return props.Mass();
}

} // namespace

std::vector<FacingPair> facing_surfaces(const std::vector<int>& surfaces, double max_gap,
                                        double max_angle, bool only_gaps, bool filter_slivers,
                                        bool filter_volume_overlaps, int max_results) {
    const double touching = 1e-6;
    std::vector<Bnd_Box> boxes;
    std::vector<std::vector<int>> holders;
    std::vector<TopoDS_Face> faces;
    std::vector<std::vector<int>> curves;
    for (int s : surfaces) {
        boxes.push_back(grown(model().bounding_box(GeomKind::Surface, s), max_gap));
        holders.push_back(volumes_holding(GeomKind::Surface, s));
        faces.push_back(TopoDS::Face(model().shape(GeomKind::Surface, s)));
        curves.push_back(sub_ids(GeomKind::Surface, s, GeomKind::Curve));
    }
    // Faces that share a curve are the two sides of it after an imprint and merge: they meet
    // along the curve, not over an area.
    auto share_curve = [&](std::size_t i, std::size_t j) {
        for (int c : curves[i])
            if (std::binary_search(curves[j].begin(), curves[j].end(), c))
                return true;
        return false;
    };
    auto same_volume = [&](std::size_t i, std::size_t j) {
        for (int v : holders[i])
            if (std::count(holders[j].begin(), holders[j].end(), v))
                return true;
        return false;
    };
    std::vector<FacingPair> out;
    Scan scan(only_gaps ? "Volume gaps" : "Overlapping surfaces",
              static_cast<long>(surfaces.size()));
    for (std::size_t i = 0; i < surfaces.size(); ++i) {
        scan.step();
        for (std::size_t j = i + 1; j < surfaces.size(); ++j) {
            if (max_results > 0 && static_cast<int>(out.size()) >= max_results)
                return out;
            const int a = surfaces[i], b = surfaces[j];
            if (boxes[i].IsOut(boxes[j]) || same_volume(i, j))
                continue;
            const TopoDS_Face& fa = faces[i];
            const TopoDS_Face& fb = faces[j];
            if (!may_face(fa, fb, max_gap, max_angle) || share_curve(i, j))
                continue;
            double gap = 0;
            gp_Vec shift;
            BRepAdaptor_Surface sa(fa, false), sb(fb, false);
            if (sa.GetType() == GeomAbs_Plane && sb.GetType() == GeomAbs_Plane) {
                // Parallel planes (may_face checked): the gap is the distance between them.
                const gp_Dir na = sa.Plane().Axis().Direction();
                const double signed_gap =
                    gp_Vec(sa.Plane().Location(), sb.Plane().Location()).Dot(gp_Vec(na));
                gap = std::abs(signed_gap);
                shift = gp_Vec(na) * -signed_gap;
            } else {
                BRepExtrema_DistShapeShape d(fa, fb);
                if (!d.IsDone() || d.NbSolution() == 0)
                    continue;
                gap = d.Value();
                const gp_Pnt pa = d.PointOnShape1(1), pb = d.PointOnShape2(1);
                if (180.0 - degrees_between(normal_near(fa, pa), normal_near(fb, pb)) > max_angle)
                    continue;
                shift = gp_Vec(pb, pa);
            }
            if (gap > max_gap || (only_gaps ? gap <= touching : gap > touching))
                continue;
            TopoDS_Shape moved = fb;
            if (gap > touching) {
                gp_Trsf move;
                move.SetTranslation(shift);
                moved = BRepBuilderAPI_Transform(fb, move, true).Shape();
            }
            const double area = common_area(fa, moved, std::max(touching, 1e-3 * max_gap));
            if (area <= touching * touching)
                continue;
            if (filter_slivers) {
                const double smaller = std::min(model().area_measure(GeomKind::Surface, a)[0],
                                                model().area_measure(GeomKind::Surface, b)[0]);
                if (area < 0.01 * smaller)
                    continue;
            }
            if (filter_volume_overlaps) {
                bool overlap = false;
                for (int va : volumes_holding(GeomKind::Surface, a))
                    for (int vb : volumes_holding(GeomKind::Surface, b))
                        overlap = overlap || !overlapping_volumes({va, vb}).empty();
                if (overlap)
                    continue;
            }
            out.push_back({std::min(a, b), std::max(a, b), gap, area});
        }
    }
    return out;
}

std::vector<Pair> overlapping_volumes(const std::vector<int>& volumes) {
    // Only volumes whose boxes meet another's can overlap; one general fuse of those splits
    // them where they meet, and a piece that is an image of two volumes is their common part.
    // Volumes that share a surface were merged, and merge refuses volumes that overlap.
    std::vector<int> near;
    for (std::size_t i = 0; i < volumes.size(); ++i) {
        const Bnd_Box bi = model().bounding_box(GeomKind::Volume, volumes[i]);
        for (std::size_t j = 0; j < volumes.size(); ++j)
            if (i != j && !bi.IsOut(model().bounding_box(GeomKind::Volume, volumes[j])) &&
                !share_surface(volumes[i], volumes[j])) {
                near.push_back(volumes[i]);
                break;
            }
    }
    std::vector<Pair> out;
    if (near.size() < 2)
        return out;
    Progress progress("Overlapping volumes", "", true);
    BRepAlgoAPI_BuilderAlgo gf;
    TopTools_ListOfShape args;
    for (int v : near)
        args.Append(model().shape(GeomKind::Volume, v));
    gf.SetArguments(args);
    gf.SetNonDestructive(true);
    gf.SetRunParallel(true);
    gf.SetUseOBB(true);
    Handle(geometry_detail::OccProgress) pi = new geometry_detail::OccProgress(&progress);
    gf.Build(pi->Start());
    if (interrupted())
        throw Interrupted();
    if (!gf.IsDone() || gf.HasErrors())
        throw std::runtime_error("the geometry engine could not intersect the volumes");
    std::map<std::pair<int, int>, double> common;
    TopTools_DataMapOfShapeInteger owner;
    for (int v : near) {
        const TopoDS_Shape solid = model().shape(GeomKind::Volume, v);
        std::vector<TopoDS_Shape> images;
        if (gf.IsDeleted(solid))
            continue;
        const TopTools_ListOfShape& modified = gf.Modified(solid);
        if (modified.IsEmpty())
            images.push_back(solid);
        for (const TopoDS_Shape& m : modified)
            images.push_back(m);
        for (const TopoDS_Shape& image : images) {
            if (const int* other = owner.Seek(image)) {
                GProp_GProps props;
                BRepGProp::VolumeProperties(image, props);
                common[{std::min(*other, v), std::max(*other, v)}] += std::abs(props.Mass());
            } else {
                owner.Bind(image, v);
            }
        }
    }
    for (const auto& [pair, amount] : common)
        out.push_back({pair.first, pair.second, amount});
    return out;
}

std::vector<std::vector<int>> mergeable(const std::vector<int>& volumes, GeomKind kind,
                                        double tolerance) {
    const std::vector<int> ids = entities_of(volumes, kind);
    std::vector<Bnd_Box> boxes;
    for (int id : ids)
        boxes.push_back(grown(model().bounding_box(kind, id), tolerance));
    std::vector<std::vector<int>> out;
    Scan scan("Mergeable entities", static_cast<long>(ids.size()));
    for (std::size_t i = 0; i < ids.size(); ++i) {
        scan.step();
        for (std::size_t j = i + 1; j < ids.size(); ++j) {
            const int a = ids[i], b = ids[j];
            if (boxes[i].IsOut(boxes[j]) || share_body(kind, a, kind, b))
                continue;
            const TopoDS_Shape sa = model().shape(kind, a), sb = model().shape(kind, b);
            bool same = false;
            if (kind == GeomKind::Vertex) {
                same = point_of(a).Distance(point_of(b)) <= tolerance;
            } else {
                // Same size, and every vertex of each lies on the other.
                const double ma = kind == GeomKind::Curve ? model().curve_length(a)
                                                          : model().area_measure(kind, a)[0];
                const double mb = kind == GeomKind::Curve ? model().curve_length(b)
                                                          : model().area_measure(kind, b)[0];
                const double scale = kind == GeomKind::Curve ? 1.0 : std::sqrt(std::max(ma, mb));
                same = std::abs(ma - mb) <= 4 * tolerance * std::max(1.0, scale);
                for (const auto& [from, to] : {std::pair{sa, sb}, std::pair{sb, sa}})
                    for (TopExp_Explorer ex(from, TopAbs_VERTEX); ex.More() && same; ex.Next()) {
                        const double d = distance(ex.Current(), to);
                        same = d >= 0 && d <= tolerance;
                    }
                if (same) {
                    // The middles coincide too (two arcs through the same ends do not).
                    const auto ca = kind == GeomKind::Curve ? std::array<double, 4>{}
                                                            : model().area_measure(kind, a);
                    const auto cb = kind == GeomKind::Curve ? std::array<double, 4>{}
                                                            : model().area_measure(kind, b);
                    if (kind == GeomKind::Curve) {
                        BRepAdaptor_Curve c(TopoDS::Edge(sa));
                        const gp_Pnt mid = c.Value(0.5 * (c.FirstParameter() + c.LastParameter()));
                        const double d = distance(BRepBuilderAPI_MakeVertex(mid).Vertex(), sb);
                        same = d >= 0 && d <= tolerance;
                    } else {
                        same = gp_Pnt(ca[1], ca[2], ca[3]).Distance(gp_Pnt(cb[1], cb[2], cb[3])) <=
                               tolerance * 4;
                    }
                }
            }
            if (same)
                out.push_back({a, b});
        }
    }
    return out;
}

std::vector<int> floating_volumes(const std::vector<int>& volumes) {
    const std::vector<int> all = model().ids(GeomKind::Volume);
    std::vector<int> out;
    if (all.size() < 2)
        return out;
    const double tol = settings().merge_tolerance;
    Scan scan("Floating volumes", static_cast<long>(volumes.size()));
    for (int v : volumes) {
        scan.step();
        const Bnd_Box box = grown(model().bounding_box(GeomKind::Volume, v), tol);
        // A volume merged with another shares a vertex with it; only the others need a distance.
        bool touches = false;
        for (int vertex : sub_ids(GeomKind::Volume, v, GeomKind::Vertex))
            if (volumes_holding(GeomKind::Vertex, vertex).size() > 1) {
                touches = true;
                break;
            }
        for (int other : all) {
            if (touches)
                break;
            if (other == v || box.IsOut(model().bounding_box(GeomKind::Volume, other)))
                continue;
            const double d = distance(model().shape(GeomKind::Volume, v),
                                      model().shape(GeomKind::Volume, other));
            if (d >= 0 && d <= tol) {
                touches = true;
                break;
            }
        }
        if (!touches)
            out.push_back(v);
    }
    return out;
}

std::vector<int> nonmanifold_curves(const std::vector<int>& volumes) {
    std::set<int> out;
    for (int v : volumes)
        for (int c : sub_ids(GeomKind::Volume, v, GeomKind::Curve))
            if (faces_at(v, model().shape(GeomKind::Curve, c)).size() > 2)
                out.insert(c);
    return {out.begin(), out.end()};
}

std::vector<int> nonmanifold_vertices(const std::vector<int>& volumes) {
    // At a manifold vertex the surfaces around it form one fan: each joined to the next by a
    // curve through the vertex. Two fans (two volumes touching at a point, or one volume
    // touching itself) make it non-manifold.
    std::vector<int> out;
    const std::set<int> scope(volumes.begin(), volumes.end());
    for (int vid : entities_of(volumes, GeomKind::Vertex)) {
        std::vector<int> faces;
        for (int s : model().relatives(GeomKind::Vertex, vid, GeomKind::Surface)) {
            bool in_scope = false;
            for (int v : volumes_holding(GeomKind::Surface, s))
                in_scope = in_scope || scope.count(v);
            if (in_scope)
                faces.push_back(s);
        }
        if (faces.size() < 2)
            continue;
        std::vector<int> parent(faces.size());
        std::iota(parent.begin(), parent.end(), 0);
        std::function<int(int)> root = [&](int i) {
            return parent[i] == i ? i : parent[i] = root(parent[i]);
        };
        const std::vector<int> curves = model().relatives(GeomKind::Vertex, vid, GeomKind::Curve);
        for (std::size_t i = 0; i < faces.size(); ++i)
            for (std::size_t j = i + 1; j < faces.size(); ++j) {
                const std::vector<int> ci = sub_ids(GeomKind::Surface, faces[i], GeomKind::Curve);
                const std::vector<int> cj = sub_ids(GeomKind::Surface, faces[j], GeomKind::Curve);
                for (int c : curves)
                    if (std::count(ci.begin(), ci.end(), c) && std::count(cj.begin(), cj.end(), c))
                        parent[root(static_cast<int>(i))] = root(static_cast<int>(j));
            }
        std::set<int> roots;
        for (std::size_t i = 0; i < faces.size(); ++i)
            roots.insert(root(static_cast<int>(i)));
        if (roots.size() > 1)
            out.push_back(vid);
    }
    return out;
}

BadGeometry bad_geometry(const std::vector<int>& volumes) {
    BadGeometry out;
    std::set<int> bodies, surfaces, curves;
    for (int v : volumes) {
        const TopoDS_Shape solid = model().shape(GeomKind::Volume, v);
        BRepCheck_Analyzer check(solid);
        if (check.IsValid())
            continue;
        out.volumes.push_back(v);
        for (int b : model().bodies_of(GeomKind::Volume, v))
            bodies.insert(b);
        auto bad = [&](const TopoDS_Shape& s) {
            const Handle(BRepCheck_Result) r = check.Result(s);
            if (r.IsNull())
                return false;
            for (BRepCheck_ListIteratorOfListOfStatus it(r->Status()); it.More(); it.Next())
                if (it.Value() != BRepCheck_NoError)
                    return true;
            return false;
        };
        for (int s : sub_ids(GeomKind::Volume, v, GeomKind::Surface))
            if (bad(model().shape(GeomKind::Surface, s)))
                surfaces.insert(s);
        for (int c : sub_ids(GeomKind::Volume, v, GeomKind::Curve))
            if (bad(model().shape(GeomKind::Curve, c)))
                curves.insert(c);
    }
    out.bodies.assign(bodies.begin(), bodies.end());
    out.surfaces.assign(surfaces.begin(), surfaces.end());
    out.curves.assign(curves.begin(), curves.end());
    return out;
}

bool same_domain(const TopoDS_Face& a, const TopoDS_Face& b) {
    BRepAdaptor_Surface sa(a), sb(b);
    if (sa.GetType() != sb.GetType())
        return false;
    if (sa.GetType() == GeomAbs_Plane)
        return sa.Plane().Position().Direction().IsParallel(sb.Plane().Position().Direction(),
                                                            1e-9) &&
               sa.Plane().Distance(sb.Plane().Location()) < 1e-7;
    if (sa.GetType() == GeomAbs_Cylinder)
        return std::abs(sa.Cylinder().Radius() - sb.Cylinder().Radius()) < 1e-7 &&
               sa.Cylinder().Axis().IsCoaxial(sb.Cylinder().Axis(), 1e-9, 1e-7);
    return BRep_Tool::Surface(a) == BRep_Tool::Surface(b);
}

} // namespace tarvo::kernel::diagnostics
