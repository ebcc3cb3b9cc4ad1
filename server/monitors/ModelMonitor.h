#pragma once
// The tree of everything in the model, in seven sections: geometry, groups, exodus sets, FEA
// boundary conditions, CFD boundary conditions, materials and boundary layers. The observer flags
// the sections that a task touched; update() rebuilds those alone (all of them for a new
// monitor), and a notification carries only the sections that were rebuilt, each one whole.
//
// Threads: built, flagged and updated on the worker thread while its task runs (update() calls
// the kernel); read with get_notifications() on the main thread after the task came back.

#include "monitors/DataMonitor.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QString>

#include <vector>

class ModelMonitor : public DataMonitor {
public:
    ModelMonitor() = default;

    void set_geometry_changed() { geometry_changed = true; }
    void set_exodus_changed() { exodus_changed = true; }
    void set_fea_bcs_changed() { fea_bcs_changed = true; }
    void set_cfd_bcs_changed() { cfd_bcs_changed = true; }
    void set_materials_changed() { materials_changed = true; }
    void set_boundary_layers_changed() { boundary_layers_changed = true; }
    void set_groups_changed() { groups_changed = true; }

    bool is_geometry_changed() const { return geometry_changed; }
    bool is_exodus_changed() const { return exodus_changed; }
    bool is_fea_bcs_changed() const { return fea_bcs_changed; }
    bool is_cfd_bcs_changed() const { return cfd_bcs_changed; }
    bool is_materials_changed() const { return materials_changed; }
    bool is_boundary_layers_changed() const { return boundary_layers_changed; }
    bool is_groups_changed() const { return groups_changed; }
    bool any_changed() const;

    void update() override;
    // One "datamonitor.model_monitor" notification with the rebuilt sections, if the client
    // selected the model and anything was rebuilt.
    std::vector<RPCRequest> get_notifications(const MonitorSelection& selection) override;

    const QJsonObject& model_sections() const { return model; }

    // The boundary-condition type number of a CFD type name (case-insensitive), -1 if unknown.
    static int cfd_bc_code(const QString& type);

private:
    void build_geometry();
    void build_groups();
    void build_exodus_sets();
    void build_fea_bcs();
    void build_cfd_bcs();
    void build_materials();
    void build_boundary_layers();

    static QJsonObject geometry_node(const QString& type, int id);
    static QJsonObject exodus_node(const QString& type, int id);
    static QJsonArray free_entity_nodes(const QString& type, const std::vector<int>& ids);

    QJsonObject model;
    bool geometry_changed = false;
    bool exodus_changed = false;
    bool fea_bcs_changed = false;
    bool cfd_bcs_changed = false;
    bool materials_changed = false;
    bool boundary_layers_changed = false;
    bool groups_changed = false;
};
