#pragma once
// Monitors of geometry entities: the properties shared by volumes, surfaces, curves and vertices,
// then those of each type. Threads as for EntityMonitor.

#include "monitors/EntityMonitor.h"

#include <QString>

class GeometryMonitor : public EntityMonitor {
public:
    using EntityMonitor::EntityMonitor;
    void update() override;

protected:
    // Interval count with its firmness: " (S)" soft, " (H)" hard; "Not Set" replaces the count
    // when nothing decided it.
    QString requested_intervals_text() const;
    // Mesh size with its kind: " (U)" user set, " (C)" calculated, "(N)" none.
    QString requested_size_text() const;
    // "requested_intervals" and "requested_size", reported alike by volumes, surfaces and curves.
    void insert_requested_sizes();
    // "smooth_scheme", "mesh_scheme" and "sizing_function", reported by volumes and surfaces.
    void insert_schemes();
};

class VolumeMonitor : public GeometryMonitor {
public:
    explicit VolumeMonitor(int id) : GeometryMonitor(QStringLiteral("volume"), id) {}
    void update() override;
};

class SurfaceMonitor : public GeometryMonitor {
public:
    explicit SurfaceMonitor(int id) : GeometryMonitor(QStringLiteral("surface"), id) {}
    void update() override;
};

class CurveMonitor : public GeometryMonitor {
public:
    explicit CurveMonitor(int id) : GeometryMonitor(QStringLiteral("curve"), id) {}
    void update() override;
};

class VertexMonitor : public GeometryMonitor {
public:
    explicit VertexMonitor(int id) : GeometryMonitor(QStringLiteral("vertex"), id) {}
    void update() override;
};

// The "x, y, z" text of a point: each coordinate with six decimals.
QString point_text(double x, double y, double z);
