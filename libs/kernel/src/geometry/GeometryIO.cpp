// Import and export of the geometry module: STEP and IGES through OpenCASCADE's document
// framework (names, colours, the assembly tree), BREP through BRepTools.
#include "core/Session.h"
#include "geometry/GeometryInternal.h"
#include "geometry/GeometryModule.h"

#include <BRepTools.hxx>
#include <BRep_Builder.hxx>
#include <IFSelect_ReturnStatus.hxx>
#include <IGESCAFControl_Reader.hxx>
#include <IGESCAFControl_Writer.hxx>
#include <IGESControl_Controller.hxx>
#include <Interface_Static.hxx>
#include <Quantity_Color.hxx>
#include <STEPCAFControl_Reader.hxx>
#include <STEPCAFControl_Writer.hxx>
#include <TCollection_AsciiString.hxx>
#include <TDF_Label.hxx>
#include <TDF_LabelSequence.hxx>
#include <TDataStd_Name.hxx>
#include <TDocStd_Document.hxx>
#include <TopExp.hxx>
#include <TopExp_Explorer.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS_Iterator.hxx>
#include <XCAFApp_Application.hxx>
#include <XCAFDoc_ColorTool.hxx>
#include <XCAFDoc_DocumentTool.hxx>
#include <XCAFDoc_ShapeTool.hxx>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <optional>
#include <set>

namespace tarvo::kernel {

using namespace geometry_detail;

namespace {

std::string label_name(const TDF_Label& label) {
    Handle(TDataStd_Name) name;
    if (!label.FindAttribute(TDataStd_Name::GetID(), name))
        return {};
    TCollection_AsciiString ascii(name->Get(), '?');
    return ascii.ToCString();
}

// Files hold colours in sRGB, as users give them; OpenCASCADE 7.6 keeps them in linear RGB.
std::array<double, 4> to_srgb(const Quantity_Color& c) {
    double r = 0, g = 0, b = 0;
    c.Values(r, g, b, Quantity_TOC_sRGB);
    return {r, g, b, 1.0};
}

Quantity_Color from_srgb(const std::array<double, 4>& rgba) {
    return Quantity_Color(rgba[0], rgba[1], rgba[2], Quantity_TOC_sRGB);
}

struct ImportedPart {
    TopoDS_Shape shape;
    std::string name;
    bool has_color = false;
    std::array<double, 4> color{};
    int node = -1; // index in the assembly list
    // Faces with a colour of their own; matched to the part's faces by TShape (IsPartner), as
    // the part's shape is moved into place.
    std::vector<std::pair<TopoDS_Shape, std::array<double, 4>>> face_colors;
};

class TreeWalker {
public:
    TreeWalker(Handle(XCAFDoc_ShapeTool) shapes, Handle(XCAFDoc_ColorTool) colors,
               std::string format)
        : shapes_(shapes), colors_(colors), format_(std::move(format)) {}

    void walk(const TDF_Label& label, const TopLoc_Location& loc, int parent, int level,
              const std::string& parent_path, int instance, const TDF_Label& instance_label) {
        AssemblyNode node;
        node.id = static_cast<int>(nodes.size()) + 1;
        node.parent_id = parent;
        node.name = label_name(label);
        if (node.name.empty())
            node.name = label_name(instance_label);
        const bool named = !node.name.empty();
        if (node.name.empty())
            node.name = shapes_->IsAssembly(label) ? "assembly" : "part";
        node.level = level;
        node.instance = instance;
        node.path = parent_path.empty() ? node.name : parent_path + "/" + node.name;
        node.file_format = format_;
        node.units = "mm";
        const bool assembly = shapes_->IsAssembly(label);
        node.type = assembly ? "assembly" : "part";
        nodes.push_back(node);
        const int index = static_cast<int>(nodes.size()) - 1;
        if (assembly) {
            TDF_LabelSequence components;
            XCAFDoc_ShapeTool::GetComponents(label, components);
            std::map<int, int> seen; // referred label tag -> instances so far
            for (int i = 1; i <= components.Length(); ++i) {
                TDF_Label component = components.Value(i);
                TDF_Label referred;
                if (!XCAFDoc_ShapeTool::GetReferredShape(component, referred))
                    continue;
                const int inst = ++seen[referred.Tag()];
                walk(referred, loc * XCAFDoc_ShapeTool::GetLocation(component), node.id, level + 1,
                     node.path, inst, component);
            }
            return;
        }
        ImportedPart part;
        part.shape = XCAFDoc_ShapeTool::GetShape(label);
        if (part.shape.IsNull())
            return;
        part.shape = part.shape.Moved(loc);
        // A part without a name in the file makes volumes without a name.
        part.name = named ? nodes[index].name : std::string();
        part.node = index;
        Quantity_Color c;
        for (const TDF_Label& l : {instance_label, label}) {
            if (l.IsNull())
                continue;
            if (colors_->GetColor(l, XCAFDoc_ColorSurf, c) ||
                colors_->GetColor(l, XCAFDoc_ColorGen, c)) {
                part.has_color = true;
                part.color = to_srgb(c);
                break;
            }
        }
        if (!part.has_color) {
            for (TopExp_Explorer ex(part.shape, TopAbs_SOLID); ex.More(); ex.Next())
                if (colors_->GetColor(ex.Current(), XCAFDoc_ColorSurf, c) ||
                    colors_->GetColor(ex.Current(), XCAFDoc_ColorGen, c)) {
                    part.has_color = true;
                    part.color = to_srgb(c);
                    break;
                }
        }
        // Styles on single faces are kept as sub-shape labels of the part.
        TDF_LabelSequence subs;
        XCAFDoc_ShapeTool::GetSubShapes(label, subs);
        for (int i = 1; i <= subs.Length(); ++i) {
            if (!colors_->GetColor(subs.Value(i), XCAFDoc_ColorSurf, c) &&
                !colors_->GetColor(subs.Value(i), XCAFDoc_ColorGen, c))
                continue;
            const TopoDS_Shape sub = XCAFDoc_ShapeTool::GetShape(subs.Value(i));
            for (TopExp_Explorer ex(sub, TopAbs_FACE); ex.More(); ex.Next())
                part.face_colors.emplace_back(ex.Current(), to_srgb(c));
        }
        parts.push_back(part);
    }

    std::vector<AssemblyNode> nodes;
    std::vector<ImportedPart> parts;

private:
    Handle(XCAFDoc_ShapeTool) shapes_;
    Handle(XCAFDoc_ColorTool) colors_;
    std::string format_;
};

// An XDE document to read into or write from; closed when this goes.
struct CadDocument {
    Handle(XCAFApp_Application) app = XCAFApp_Application::GetApplication();
    Handle(TDocStd_Document) doc;
    CadDocument() { app->NewDocument("MDTV-XCAF", doc); }
    ~CadDocument() {
        if (!doc.IsNull() && doc->IsOpened())
            app->Close(doc);
    }
    CadDocument(const CadDocument&) = delete;
    CadDocument& operator=(const CadDocument&) = delete;
};

// Reads STEP or IGES into parts and an assembly tree. False with an error printed on failure.
bool read_cad_document(const std::string& format, const std::string& path, Progress& progress,
                       std::vector<ImportedPart>& parts, std::vector<AssemblyNode>& nodes) {
    CadDocument document;
    Handle(TDocStd_Document) doc = document.doc;
    Handle(OccProgress) pi = new OccProgress(&progress, 30, 80);
    if (format == "step") {
        STEPCAFControl_Reader reader;
        reader.SetNameMode(true);
        reader.SetColorMode(true);
        if (reader.ReadFile(path.c_str()) != IFSelect_RetDone)
            return error("could not read STEP file '" + path + "'");
        progress.percent(30);
        if (interrupted())
            return error("Interrupted");
        if (!reader.Transfer(doc, pi->Start()))
            return interrupted() ? error("Interrupted")
                                 : error("no shape could be read from STEP file '" + path + "'");
    } else {
        IGESControl_Controller::Init();
        IGESCAFControl_Reader reader;
        reader.SetNameMode(true);
        reader.SetColorMode(true);
        if (reader.ReadFile(path.c_str()) != IFSelect_RetDone)
            return error("could not read IGES file '" + path + "'");
        progress.percent(30);
        if (interrupted())
            return error("Interrupted");
        if (!reader.Transfer(doc, pi->Start()))
            return interrupted() ? error("Interrupted")
                                 : error("no shape could be read from IGES file '" + path + "'");
    }
    if (interrupted())
        return error("Interrupted");
    progress.percent(80);
    Handle(XCAFDoc_ShapeTool) shapes = XCAFDoc_DocumentTool::ShapeTool(doc->Main());
    Handle(XCAFDoc_ColorTool) colors = XCAFDoc_DocumentTool::ColorTool(doc->Main());
    TDF_LabelSequence roots;
    shapes->GetFreeShapes(roots);
    TreeWalker walker(shapes, colors, format == "step" ? "STEP" : "IGES");
    for (int i = 1; i <= roots.Length(); ++i)
        walker.walk(roots.Value(i), TopLoc_Location(), 0, 0, "", 1, TDF_Label());
    parts = std::move(walker.parts);
    nodes = std::move(walker.nodes);
    return true;
}

// Splits a shape into what becomes bodies: each solid, then the loose faces together, then the
// loose edges together, then loose vertices.
std::vector<TopoDS_Shape> split_into_bodies(const TopoDS_Shape& shape) {
    std::vector<TopoDS_Shape> out;
    TopTools_IndexedMapOfShape used_faces, used_edges, used_vertices;
    for (TopExp_Explorer ex(shape, TopAbs_SOLID); ex.More(); ex.Next()) {
        out.push_back(ex.Current());
        TopExp::MapShapes(ex.Current(), TopAbs_FACE, used_faces);
        TopExp::MapShapes(ex.Current(), TopAbs_EDGE, used_edges);
        TopExp::MapShapes(ex.Current(), TopAbs_VERTEX, used_vertices);
    }
    std::vector<TopoDS_Shape> faces, edges, vertices;
    TopTools_IndexedMapOfShape all;
    TopExp::MapShapes(shape, TopAbs_FACE, all);
    for (int i = 1; i <= all.Extent(); ++i)
        if (!used_faces.Contains(all(i))) {
            faces.push_back(all(i));
            TopExp::MapShapes(all(i), TopAbs_EDGE, used_edges);
            TopExp::MapShapes(all(i), TopAbs_VERTEX, used_vertices);
        }
    all.Clear();
    TopExp::MapShapes(shape, TopAbs_EDGE, all);
    for (int i = 1; i <= all.Extent(); ++i)
        if (!used_edges.Contains(all(i))) {
            edges.push_back(all(i));
            TopExp::MapShapes(all(i), TopAbs_VERTEX, used_vertices);
        }
    all.Clear();
    TopExp::MapShapes(shape, TopAbs_VERTEX, all);
    for (int i = 1; i <= all.Extent(); ++i)
        if (!used_vertices.Contains(all(i)))
            vertices.push_back(all(i));
    if (!faces.empty())
        out.push_back(faces.size() == 1 ? faces.front() : make_compound(faces));
    if (!edges.empty())
        out.push_back(edges.size() == 1 ? edges.front() : make_compound(edges));
    for (const TopoDS_Shape& v : vertices)
        out.push_back(v);
    return out;
}

int model_face_id(const Body& body, const TopoDS_Shape& face) {
    for (const IdShape& s : body.surfaces)
        if (s.shape.IsSame(face))
            return s.id;
    return 0;
}

// Gives the body's surfaces the colours their faces carry in the file. A volume without a colour
// of its own whose surfaces all carry one colour takes that colour too.
void apply_face_colors(GeometryModel& model, const Body& body, const ImportedPart& part) {
    if (part.face_colors.empty())
        return;
    for (const IdShape& s : body.surfaces)
        for (const auto& [face, color] : part.face_colors)
            if (s.shape.IsPartner(face)) {
                auto& a = model.attributes_for_update(GeomKind::Surface, s.id);
                a.has_color = true;
                a.color = color;
                break;
            }
    for (const IdShape& v : body.volumes) {
        if (const EntityAttributes* a = model.attributes(GeomKind::Volume, v.id); a && a->has_color)
            continue;
        std::optional<std::array<double, 4>> common;
        bool uniform = true;
        for (const TopoDS_Shape& f : GeometryModel::explore(v.shape, GeomKind::Surface)) {
            const EntityAttributes* a = model.attributes(GeomKind::Surface, model_face_id(body, f));
            if (!a || !a->has_color || (common && *common != a->color)) {
                uniform = false;
                break;
            }
            common = a->color;
        }
        if (uniform && common) {
            auto& a = model.attributes_for_update(GeomKind::Volume, v.id);
            a.has_color = true;
            a.color = *common;
        }
    }
}

std::string unique_name(const GeometryModel& model, GeomKind kind, const std::string& base) {
    auto taken = [&](const std::string& n) {
        for (int id : model.ids(kind))
            if (model.name_of(kind, id) == n)
                return true;
        return false;
    };
    if (!taken(base))
        return base;
    for (int i = 2;; ++i) {
        std::string n = base + "_" + std::to_string(i);
        if (!taken(n))
            return n;
    }
}

bool same_placement(const gp_Trsf& a, const gp_Trsf& b) {
    for (int row = 1; row <= 3; ++row)
        for (int col = 1; col <= 4; ++col)
            if (std::abs(a.Value(row, col) - b.Value(row, col)) >
                (col == 4 ? 1e-7 * (1 + std::abs(a.Value(row, col))) : 1e-9))
                return false;
    return true;
}

// Fills an XDE document with the exported bodies: the assembly tree as imported, for the parts
// whose volumes are exported, then one part per other volume, then one per body without volumes.
// Parts carry the names and colours of their volumes, faces the colours of their surfaces.
void fill_document(const GeometryModel& model, const std::vector<int>& bodies,
                   const Handle(TDocStd_Document) & doc) {
    Handle(XCAFDoc_ShapeTool) shapes = XCAFDoc_DocumentTool::ShapeTool(doc->Main());
    Handle(XCAFDoc_ColorTool) colors = XCAFDoc_DocumentTool::ColorTool(doc->Main());
    std::map<int, TopoDS_Shape> volumes;
    std::vector<TopoDS_Shape> others;
    for (int b : bodies) {
        BodyPtr body = model.body(b);
        for (const IdShape& v : body->volumes)
            volumes[v.id] = v.shape;
        if (body->volumes.empty())
            others.push_back(body->shape);
    }
    // Without a name the writers name a part after its shape type ("SOLID"); an empty name
    // gives a translator banner in STEP and an IGES file that did not import again.
    auto set_name = [](const TDF_Label& label, const std::string& name) {
        if (!name.empty())
            TDataStd_Name::Set(label, TCollection_ExtendedString(name.c_str(), true));
    };
    // A part holds its shape without the placement, which goes to the component that uses it
    // (`placement`); without one the part holds the shape as placed. Each part is its own
    // product, so that instances keep their own names and colours.
    // Instances of one product (same shape, name and colours, placed elsewhere) share one part.
    struct Written {
        TopoDS_Shape shape;
        std::string look;
        TDF_Label label;
    };
    std::vector<Written> written;
    auto add_part = [&](const TopoDS_Shape& shape, const std::string& name,
                        const std::vector<int>& vols, TopLoc_Location* placement) {
        const TopoDS_Shape unplaced = shape.Located(TopLoc_Location());
        std::string look = name;
        for (int v : vols)
            if (const EntityAttributes* a = model.attributes(GeomKind::Volume, v);
                a && a->has_color)
                look += " v:" + std::to_string(a->color[0]) + "," + std::to_string(a->color[1]) +
                        "," + std::to_string(a->color[2]);
        std::vector<std::pair<TopoDS_Shape, Quantity_Color>> face_colors;
        for (const TopoDS_Shape& face : GeometryModel::explore(shape, GeomKind::Surface)) {
            const int id = model.id_of(GeomKind::Surface, face);
            const EntityAttributes* a = id ? model.attributes(GeomKind::Surface, id) : nullptr;
            if (!a || !a->has_color)
                continue;
            face_colors.emplace_back(face.Moved(shape.Location().Inverted()), from_srgb(a->color));
            look += " f:" + std::to_string(a->color[0]) + "," + std::to_string(a->color[1]) + "," +
                    std::to_string(a->color[2]);
        }
        if (placement) {
            *placement = shape.Location();
            for (const Written& w : written)
                if (w.shape.IsSame(unplaced) && w.look == look)
                    return w.label;
        }
        TDF_Label label = shapes->AddShape(placement ? unplaced : shape, false, false);
        if (placement)
            written.push_back({unplaced, look, label});
        set_name(label, name);
        for (int v : vols) {
            const EntityAttributes* a = model.attributes(GeomKind::Volume, v);
            if (!a || !a->has_color)
                continue;
            TDF_Label target =
                vols.size() == 1
                    ? label
                    : shapes->AddSubShape(label, volumes[v].Moved(shape.Location().Inverted()));
            if (!target.IsNull())
                colors->SetColor(target, from_srgb(a->color), XCAFDoc_ColorGen);
        }
        for (const auto& [face, color] : face_colors) {
            TDF_Label sub =
                shapes->AddSubShape(label, placement ? face : face.Moved(shape.Location()));
            if (!sub.IsNull())
                colors->SetColor(sub, color, XCAFDoc_ColorSurf);
        }
        return label;
    };
    const std::vector<AssemblyNode>& tree = model.state().assembly;
    struct WrittenAssembly {
        std::string name;
        std::vector<std::pair<TDF_Label, TopLoc_Location>> children;
        TDF_Label label;
    };
    std::vector<WrittenAssembly> assemblies;
    std::set<int> placed;
    std::function<TDF_Label(const AssemblyNode&, TopLoc_Location&)> build =
        [&](const AssemblyNode& node, TopLoc_Location& placement) {
            if (node.type == "part") {
                std::vector<int> vols;
                std::vector<TopoDS_Shape> solids;
                for (int v : node.volume_ids)
                    if (volumes.count(v) && placed.insert(v).second) {
                        vols.push_back(v);
                        solids.push_back(volumes[v]);
                    }
                if (vols.empty())
                    return TDF_Label();
                return add_part(solids.size() == 1 ? solids.front() : make_compound(solids),
                                node.name, vols, &placement);
            }
            std::vector<std::pair<TDF_Label, TopLoc_Location>> children;
            for (const AssemblyNode& child : tree) {
                TopLoc_Location where;
                if (child.parent_id == node.id)
                    if (TDF_Label c = build(child, where); !c.IsNull())
                        children.emplace_back(c, where);
            }
            if (children.empty())
                return TDF_Label();
            // The model keeps parts where they are, not where their assembly puts them: an
            // assembly with the same name and parts as one written before, all moved by one
            // placement, is another instance of it.
            for (const WrittenAssembly& w : assemblies) {
                if (w.name != node.name || w.children.size() != children.size())
                    continue;
                const gp_Trsf moved = children.front().second.Transformation() *
                                      w.children.front().second.Transformation().Inverted();
                bool same = true;
                for (std::size_t i = 0; i < children.size() && same; ++i)
                    same = children[i].first == w.children[i].first &&
                           same_placement(children[i].second.Transformation(),
                                          moved * w.children[i].second.Transformation());
                if (same) {
                    placement = TopLoc_Location(moved);
                    return w.label;
                }
            }
            TDF_Label label = shapes->NewShape();
            set_name(label, node.name);
            for (const auto& [c, where] : children)
                shapes->AddComponent(label, c, where);
            assemblies.push_back({node.name, children, label});
            placement = TopLoc_Location();
            return label;
        };
    for (const AssemblyNode& node : tree) {
        TopLoc_Location where;
        if (node.parent_id == 0)
            build(node, where);
    }
    for (const auto& [v, shape] : volumes)
        if (!placed.count(v))
            add_part(shape, model.name_of(GeomKind::Volume, v), {v}, nullptr);
    for (const TopoDS_Shape& shape : others)
        add_part(shape, "", {}, nullptr);
    shapes->UpdateAssemblies();
}

} // namespace

bool GeometryModule::import_file(const std::string& format, const std::string& path, bool heal,
                                 bool names) {
    bool ok = guarded("import", [&] {
        if (format != "step" && format != "iges" && format != "brep")
            return error("unknown import format '" + format + "' (step, iges or brep)");
        std::error_code ec;
        if (!std::filesystem::is_regular_file(path, ec))
            return error("file '" + path + "' does not exist");
        Transaction tx(model_);
        Progress progress("Import " + format, path, true);
        std::vector<ImportedPart> parts;
        std::vector<AssemblyNode> nodes;
        if (format == "brep") {
            TopoDS_Shape shape;
            BRep_Builder builder;
            Handle(OccProgress) pi = new OccProgress(&progress, 0, 80);
            if (!BRepTools::Read(shape, path.c_str(), builder, pi->Start()) || shape.IsNull())
                return interrupted() ? error("Interrupted")
                                     : error("could not read BREP file '" + path + "'");
            parts.push_back({shape, {}, false, {}, -1, {}});
        } else if (!read_cad_document(format, path, progress, parts, nodes)) {
            return false;
        }
        if (interrupted())
            return error("Interrupted");
        // Numbering of the new tree nodes continues after the existing ones.
        auto& tree = model_.assembly();
        const int offset = static_cast<int>(tree.size());
        std::vector<int> made_volumes, made_bodies;
        // One build for all bodies of the file: a face that two solids share in the file (a
        // merged model written as BREP) stays one shared surface.
        GeometryModel::IdHints shared;
        for (const ImportedPart& part : parts) {
            if (interrupted())
                return error("Interrupted");
            for (const TopoDS_Shape& piece : split_into_bodies(part.shape)) {
                if (!shape_is_valid(piece))
                    warning("a piece of " + (part.name.empty() ? path : "'" + part.name + "'") +
                            " is not a valid shape; kept as read");
                auto body = model_.make_body(model_.next_id(GeomKind::Body), piece, &shared);
                model_.put_body(body);
                made_bodies.push_back(body->id);
                for (const IdShape& v : body->volumes) {
                    made_volumes.push_back(v.id);
                    if (names && !part.name.empty())
                        model_.attributes_for_update(GeomKind::Volume, v.id).name =
                            unique_name(model_, GeomKind::Volume, part.name);
                    if (part.has_color) {
                        auto& a = model_.attributes_for_update(GeomKind::Volume, v.id);
                        a.has_color = true;
                        a.color = part.color;
                    }
                    if (part.node >= 0)
                        nodes[static_cast<std::size_t>(part.node)].volume_ids.push_back(v.id);
                }
                apply_face_colors(model_, *body, part);
            }
        }
        if (made_bodies.empty())
            return error("file '" + path + "' holds no geometry");
        if (heal) {
            std::vector<int> sheets;
            for (int b : made_bodies)
                if (model_.body(b)->volumes.empty())
                    sheets.push_back(b);
            int solids = 0;
            if (!sheets.empty() && !heal_bodies(model_, sheets, &progress, solids))
                return false;
            if (solids)
                print("Healed: made " + std::to_string(solids) + " solid" +
                      (solids == 1 ? "" : "s") + " from loose faces");
            // Healing may have joined bodies and made new ones.
            std::vector<int> now;
            for (int b : model_.ids(GeomKind::Body))
                if (b >= made_bodies.front())
                    now.push_back(b);
            made_bodies = now;
            made_volumes.clear();
            for (int b : made_bodies)
                for (int v : volume_ids(*model_.body(b)))
                    made_volumes.push_back(v);
        }
        for (AssemblyNode& n : nodes) {
            n.id += offset;
            if (n.parent_id)
                n.parent_id += offset;
            tree.push_back(n);
        }
        std::vector<GeomEvent> extra{{GeomEvent::Code::ImportComplete, 0, 0, "", path, true}};
        if (!nodes.empty())
            extra.push_back({GeomEvent::Code::AssemblyTreeModified});
        tx.commit(extra);
        std::size_t free_surfaces = 0;
        for (int b : made_bodies)
            if (model_.body(b)->volumes.empty())
                free_surfaces += model_.body(b)->surfaces.size();
        print(
            "Imported '" + path + "': " + std::to_string(made_volumes.size()) + " volume" +
            (made_volumes.size() == 1 ? "" : "s") +
            (free_surfaces ? ", " + std::to_string(free_surfaces) + " free surface" +
                                 (free_surfaces == 1 ? "" : "s")
                           : std::string()) +
            (made_volumes.empty() ? std::string() : " (" + describe("volume", made_volumes) + ")"));
        return true;
    });
    if (!ok)
        emit({GeomEvent::Code::ImportComplete, 0, 0, "", path, false});
    return ok;
}

bool GeometryModule::export_file(const std::string& format, const std::string& path, bool overwrite,
                                 const std::vector<EntityKey>& list) {
    bool ok = guarded("export", [&] {
        if (format != "step" && format != "iges" && format != "brep")
            return error("unknown export format '" + format + "' (step, iges or brep)");
        std::error_code ec;
        if (std::filesystem::exists(path, ec) && !overwrite)
            return error("file '" + path + "' exists; add 'overwrite' to replace it");
        std::vector<int> bodies;
        if (list.empty()) {
            bodies = model_.ids(GeomKind::Body);
        } else if (!owning_bodies(list, bodies, "export")) {
            return false;
        }
        if (bodies.empty())
            return error("there is no geometry to export");
        Progress progress("Export " + format, path, true);
        if (format == "brep") {
            // One compound of the bodies: faces that merged bodies share are written once.
            std::vector<TopoDS_Shape> shapes;
            for (int b : bodies)
                shapes.push_back(model_.body(b)->shape);
            if (!BRepTools::Write(make_compound(shapes), path.c_str()))
                return error("could not write '" + path + "'");
        } else if (format == "step") {
            CadDocument document;
            fill_document(model_, bodies, document.doc);
            STEPCAFControl_Writer writer;
            writer.SetNameMode(true);
            writer.SetColorMode(true);
            if (!writer.Transfer(document.doc, STEPControl_AsIs))
                return error("could not convert the model to STEP");
            if (writer.Write(path.c_str()) != IFSelect_RetDone)
                return error("could not write '" + path + "'");
        } else {
            IGESControl_Controller::Init();
            // Solids as solids (MSBO), so that volumes come back without healing.
            Interface_Static::SetIVal("write.iges.brep.mode", 1);
            CadDocument document;
            fill_document(model_, bodies, document.doc);
            IGESCAFControl_Writer writer;
            writer.SetNameMode(true);
            writer.SetColorMode(true);
            if (!writer.Transfer(document.doc))
                return error("could not convert the model to IGES");
            if (!writer.Write(path.c_str()))
                return error("could not write '" + path + "'");
        }
        print("Exported " + describe("body", bodies) + " to '" + path + "'");
        return true;
    });
    emit({GeomEvent::Code::ExportComplete, 0, 0, "", path, ok});
    return ok;
}

} // namespace tarvo::kernel
