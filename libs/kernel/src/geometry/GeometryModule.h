#pragma once
// The geometry module: the live GeometryModel, the operations that change it, and its hooks into
// the session (entity catalog, undo participant, commands).
//
// Contract of every operation: it prints what it did, or prints one error and returns false with
// the model exactly as before (a Transaction rolls back). On success it emits the created /
// deleted / updated events of the change (GeometryModel::diff) followed by the operation's own
// completion events. No exception leaves an operation: OpenCASCADE's Standard_Failure, Gmsh's
// std::string and std::exception are caught and reported.
//
// Threading: kernel thread only. interrupted() is the only thing read from other threads.

#include "core/EntityCatalog.h"
#include "core/Undo.h"
#include "geometry/GeometryModel.h"

#include <gp_Dir.hxx>
#include <gp_Pnt.hxx>
#include <gp_Vec.hxx>

#include <functional>
#include <optional>

namespace tarvo::kernel {

enum class Axis { X, Y, Z };

class GeometryModule : public EntityCatalog, public UndoParticipant {
public:
    GeometryModule();
    ~GeometryModule() override;

    GeometryModel& model() { return model_; }
    const GeometryModel& model() const { return model_; }

    // ---- Primitives: centred at `at`, axis of revolution along `axis`. --------------------------
    bool create_box(double dx, double dy, double dz, const gp_Pnt& at);
    bool create_cylinder(double radius, double height, const gp_Pnt& at, Axis axis);
    bool create_sphere(double radius, double inner_radius, const gp_Pnt& at);
    bool create_cone(double radius, double top_radius, double height, const gp_Pnt& at, Axis axis);
    bool create_torus(double major_radius, double minor_radius, const gp_Pnt& at, Axis axis);
    bool create_vertex(const gp_Pnt& at);
    bool create_curve(int vertex_a, int vertex_b);
    bool create_rectangle(double width, double height, const gp_Pnt& at, Axis axis);
    bool create_circle(double radius, const gp_Pnt& at, Axis axis);

    // ---- Transforms on the bodies that own the listed entities. ---------------------------------
    bool move_by(const std::vector<EntityKey>& list, const gp_Vec& by);
    bool move_to(const std::vector<EntityKey>& list, const gp_Pnt& to);
    bool rotate(const std::vector<EntityKey>& list, double degrees, const gp_Dir& axis,
                const gp_Pnt& origin);
    bool scale(const std::vector<EntityKey>& list, double factor);
    bool reflect(const std::vector<EntityKey>& list, const gp_Dir& normal);
    bool copy(const std::vector<EntityKey>& list, const std::optional<gp_Vec>& move);

    // ---- Booleans and cutting ------------------------------------------------------------------
    bool subtract(const std::vector<EntityKey>& tools, const std::vector<EntityKey>& objects,
                  bool keep);
    bool unite(const std::vector<EntityKey>& list);
    bool intersect(const std::vector<EntityKey>& list, bool keep);
    bool webcut(const std::vector<EntityKey>& list, const gp_Pnt& point, const gp_Dir& normal);
    bool imprint(const std::vector<EntityKey>& list);
    bool merge(const std::vector<EntityKey>& list);
    bool unmerge(const std::vector<EntityKey>& list);
    bool remove(const std::vector<EntityKey>& list);
    bool heal(const std::vector<EntityKey>& list);

    // ---- Files ---------------------------------------------------------------------------------
    // format: "step", "iges" or "brep".
    bool import_file(const std::string& format, const std::string& path, bool heal, bool names);
    bool export_file(const std::string& format, const std::string& path, bool overwrite,
                     const std::vector<EntityKey>& list);

    // ---- Attributes ----------------------------------------------------------------------------
    bool set_name(const std::vector<EntityKey>& list, const std::string& name);
    bool set_color(const std::vector<EntityKey>& list, const std::array<double, 4>& rgba);
    bool set_visible(const std::vector<EntityKey>& list, bool visible);
    bool compress_ids();

    // Entities that make sense as whole-body operands: bodies of the listed bodies, volumes and
    // free surfaces/curves/vertices. False (with an error printed) if an entity does not exist
    // or is part of a larger entity.
    bool owning_bodies(const std::vector<EntityKey>& list, std::vector<int>& bodies,
                       const char* verb);

    // ---- EntityCatalog -------------------------------------------------------------------------
    bool handles(std::string_view type) const override;
    std::vector<int> all_ids(std::string_view type) const override;
    bool exists(std::string_view type, int id) const override;
    std::vector<int> relatives(std::string_view source_type, int id,
                               std::string_view target_type) const override;
    std::string name_of(std::string_view type, int id) const override;

    // ---- UndoParticipant -----------------------------------------------------------------------
    std::string participant_name() const override { return "geometry"; }
    std::unique_ptr<UndoSnapshot> save_state() override;
    void restore_state(const UndoSnapshot& snapshot) override;
    void clear_state() override;

    // Sends one event to the registered observers.
    static void emit(const GeomEvent& event);

private:
    GeometryModel model_;
};

// The live module between init_geometry_module() and shutdown_geometry_module(); null otherwise.
GeometryModule* geometry_module();
void init_geometry_module();
void shutdown_geometry_module();
void register_geometry_commands();
void register_geometry_file_section(); // GeometryFile.cpp

// What one `copy` made: each copied entity (volume, surface, curve or vertex; its original id)
// and the id of its copy.
struct CopiedEntity {
    GeomKind kind;
    int from;
    int to;
};
// The modules above geometry give copies what their originals had (fe: blocks and sets). The
// listener runs at the end of every successful `copy`, inside its command (so one undo takes
// back both); the fe module installs it at its start and clears it at its end.
using CopyListener = std::function<void(const std::vector<CopiedEntity>&)>;
void set_copy_listener(CopyListener listener);

// Runs `body`, turning any exception into one error line naming `what`; false on failure.
bool guarded(const char* what, const std::function<bool()>& body);

} // namespace tarvo::kernel
