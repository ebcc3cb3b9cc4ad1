#pragma once
// Monitors of the analysis set-up: one boundary condition of each kind, one material or CFD
// medium, one boundary layer. Each sends the common record (entity_type, entity_id, and for
// conditions name and idless_signature) and then the fields of its kind, read from the kernel's
// queries after every task. Threads as for EntityMonitor.

#include "monitors/EntityMonitor.h"

#include <QString>

class BoundaryConditionMonitor : public EntityMonitor {
public:
    using EntityMonitor::EntityMonitor;
    // The existence test, then "name" and "idless_signature". Subclasses call it first and stop
    // when `exists` is false.
    void update() override;
};

class BC_ForceMonitor : public BoundaryConditionMonitor {
public:
    explicit BC_ForceMonitor(int id) : BoundaryConditionMonitor(QStringLiteral("force"), id) {}
    void update() override;
};

class BC_PressureMonitor : public BoundaryConditionMonitor {
public:
    explicit BC_PressureMonitor(int id)
        : BoundaryConditionMonitor(QStringLiteral("pressure"), id) {}
    void update() override;
};

class BC_HeatfluxMonitor : public BoundaryConditionMonitor {
public:
    explicit BC_HeatfluxMonitor(int id)
        : BoundaryConditionMonitor(QStringLiteral("heatflux"), id) {}
    void update() override;
};

class BC_TemperatureMonitor : public BoundaryConditionMonitor {
public:
    explicit BC_TemperatureMonitor(int id)
        : BoundaryConditionMonitor(QStringLiteral("temperature"), id) {}
    void update() override;
};

class BC_ConvectionMonitor : public BoundaryConditionMonitor {
public:
    explicit BC_ConvectionMonitor(int id)
        : BoundaryConditionMonitor(QStringLiteral("convection"), id) {}
    void update() override;
};

// Displacement, acceleration and velocity: one form, with the word in every key.
class BC_DofMonitor : public BoundaryConditionMonitor {
public:
    using BoundaryConditionMonitor::BoundaryConditionMonitor;
    void update() override;
};

class BC_DisplacementMonitor : public BC_DofMonitor {
public:
    explicit BC_DisplacementMonitor(int id) : BC_DofMonitor(QStringLiteral("displacement"), id) {}
};

class BC_AccelerationMonitor : public BC_DofMonitor {
public:
    explicit BC_AccelerationMonitor(int id) : BC_DofMonitor(QStringLiteral("acceleration"), id) {}
};

class BC_VelocityMonitor : public BC_DofMonitor {
public:
    explicit BC_VelocityMonitor(int id) : BC_DofMonitor(QStringLiteral("velocity"), id) {}
};

class BC_ConstraintMonitor : public BoundaryConditionMonitor {
public:
    explicit BC_ConstraintMonitor(int id)
        : BoundaryConditionMonitor(QStringLiteral("constraint"), id) {}
    void update() override;
};

// The common record alone.
class BC_ContactRegionMonitor : public BoundaryConditionMonitor {
public:
    explicit BC_ContactRegionMonitor(int id)
        : BoundaryConditionMonitor(QStringLiteral("contact region"), id) {}
};

// Every CFD kind: "cfd_type" is the kind's number.
class BC_CFDMonitor : public BoundaryConditionMonitor {
public:
    explicit BC_CFDMonitor(int id) : BoundaryConditionMonitor(QStringLiteral("cfd_bc"), id) {}
    void update() override;
};

// A structural material (its properties by kind) or a CFD medium (its kind of medium), read
// through the kernel's MaterialInterface.
class MaterialMonitor : public EntityMonitor {
public:
    explicit MaterialMonitor(int id) : EntityMonitor(QStringLiteral("material"), id) {}
    void update() override;
};

class BoundaryLayerMonitor : public EntityMonitor {
public:
    explicit BoundaryLayerMonitor(int id) : EntityMonitor(QStringLiteral("boundary_layer"), id) {}
    void update() override;
};
