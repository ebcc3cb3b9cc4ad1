#pragma once
// Monitors of the sets of the finite-element export model: a block, a sideset or a nodeset. The
// record holds what the kernel says of the set's Exodus form (name, description, properties,
// colour, variables, element count); a block adds its element type and attributes. Sending
// follows EntityMonitor; the observer marks them on genesis_entity_modified,
// exodus_entity_visibility_changed and mesh_created. Threads as for EntityMonitor.

#include "monitors/EntityMonitor.h"

class ExodusMonitor : public EntityMonitor {
public:
    using EntityMonitor::EntityMonitor;
    void update() override;
};

class BlockMonitor : public ExodusMonitor {
public:
    explicit BlockMonitor(int id) : ExodusMonitor(QStringLiteral("block"), id) {}
    void update() override;
};

class SidesetMonitor : public ExodusMonitor {
public:
    explicit SidesetMonitor(int id) : ExodusMonitor(QStringLiteral("sideset"), id) {}
};

class NodesetMonitor : public ExodusMonitor {
public:
    explicit NodesetMonitor(int id) : ExodusMonitor(QStringLiteral("nodeset"), id) {}
};
