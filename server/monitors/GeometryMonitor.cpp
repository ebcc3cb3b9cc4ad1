#include "monitors/GeometryMonitor.h"

#include "tarvo/TarvoInterface.h"
#include "tarvo_util/TarvoString.h"

#include <QJsonArray>
#include <QStringList>

#include <sstream>

namespace {

QString text(const std::string& value) {
    return QString::fromStdString(value);
}

std::string number_to_string(int value) {
    std::ostringstream stream;
    stream << value;
    return stream.str();
}

} // namespace

QString point_text(double x, double y, double z) {
    return QStringList{QString::number(x, 'f', 6), QString::number(y, 'f', 6),
                       QString::number(z, 'f', 6)}
        .join(QStringLiteral(", "));
}

void GeometryMonitor::update() {
    if (!check_exists())
        return;
    const std::string kernel_type = type.toStdString();

    record.insert(QStringLiteral("name"),
                  text(TarvoInterface::get_entity_name(kernel_type, id, false)));

    QJsonArray color;
    for (double component : TarvoInterface::get_entity_color(kernel_type, id))
        color.append(component);
    record.insert(QStringLiteral("color"), color);

    const auto center = TarvoInterface::get_center_point(kernel_type, id);
    record.insert(QStringLiteral("center_point"), point_text(center[0], center[1], center[2]));

    const std::vector<std::string> engines =
        TarvoInterface::get_entity_modeler_engine(kernel_type, id);
    record.insert(QStringLiteral("modeler_engine"), engines.empty() ? QString() : text(engines[0]));

    record.insert(QStringLiteral("is_meshed"), TarvoInterface::is_meshed(kernel_type, id));
}

QString GeometryMonitor::requested_intervals_text() const {
    const std::string kernel_type = type.toStdString();
    const std::string firmness =
        TarvoInterface::get_requested_mesh_interval_firmness(kernel_type, id);
    const int count = TarvoInterface::get_requested_mesh_intervals(kernel_type, id);

    QString result = text(number_to_string(count));
    if (firmness == "LIMP")
        result = QStringLiteral("Not Set");
    // Every count that isn't hard carries the soft mark, an undecided one included: clients
    // parse the suffix, so the form "Not Set (S)" is kept.
    result += firmness == "HARD" ? QStringLiteral(" (H)") : QStringLiteral(" (S)");
    return result;
}

QString GeometryMonitor::requested_size_text() const {
    const std::string kernel_type = type.toStdString();
    const std::string size_type = TarvoInterface::get_requested_mesh_size_type(kernel_type, id);

    if (size_type == "NOT_SET")
        return QStringLiteral("(N)");
    QString result;
    // While an automatic size is still to be computed, a calculated size has no number yet.
    if (!TarvoInterface::auto_size_needs_to_be_calculated() || size_type == "USER_SET")
        result =
            text(TarvoString::number(TarvoInterface::get_requested_mesh_size(kernel_type, id), 0, 0)
                     .str());
    result += size_type == "USER_SET" ? QStringLiteral(" (U)") : QStringLiteral(" (C)");
    return result;
}

void GeometryMonitor::insert_requested_sizes() {
    record.insert(QStringLiteral("requested_intervals"), requested_intervals_text());
    record.insert(QStringLiteral("requested_size"), requested_size_text());
}

void GeometryMonitor::insert_schemes() {
    const std::string kernel_type = type.toStdString();
    record.insert(QStringLiteral("smooth_scheme"),
                  text(TarvoInterface::get_smooth_scheme(kernel_type, id)));
    record.insert(QStringLiteral("mesh_scheme"),
                  text(TarvoInterface::get_mesh_scheme(kernel_type, id)));
    record.insert(QStringLiteral("sizing_function"),
                  text(TarvoInterface::get_sizing_function_name(kernel_type, id)));
}

void VolumeMonitor::update() {
    GeometryMonitor::update();
    if (!exists)
        return;
    insert_requested_sizes();
    record.insert(QStringLiteral("geometric_volume"), TarvoInterface::get_volume_area(id));
    record.insert(QStringLiteral("meshed_volume"),
                  TarvoInterface::get_meshed_volume_or_area("volume", {id}));
    record.insert(QStringLiteral("element_count"), TarvoInterface::get_volume_element_count(id));
    record.insert(QStringLiteral("node_count"),
                  TarvoInterface::get_geometry_node_count("volume", id));
    insert_schemes();
}

void SurfaceMonitor::update() {
    GeometryMonitor::update();
    if (!exists)
        return;
    insert_requested_sizes();
    record.insert(QStringLiteral("is_merged"), TarvoInterface::is_merged("surface", id));
    record.insert(QStringLiteral("is_virtual"), TarvoInterface::is_virtual("surface", id));
    record.insert(QStringLiteral("surface_area"), TarvoInterface::get_surface_area(id));
    record.insert(QStringLiteral("analytic_type"), text(TarvoInterface::get_surface_type(id)));
    record.insert(QStringLiteral("element_count"), TarvoInterface::get_surface_element_count(id));
    record.insert(QStringLiteral("node_count"),
                  TarvoInterface::get_geometry_node_count("surface", id));
    record.insert(QStringLiteral("meshed_area"),
                  TarvoInterface::get_meshed_volume_or_area("surface", {id}));
    insert_schemes();
}

void CurveMonitor::update() {
    GeometryMonitor::update();
    if (!exists)
        return;
    insert_requested_sizes();
    record.insert(QStringLiteral("curve_length"), TarvoInterface::get_curve_length(id));
    record.insert(QStringLiteral("is_merged"), TarvoInterface::is_merged("curve", id));
    record.insert(QStringLiteral("is_virtual"), TarvoInterface::is_virtual("curve", id));
    record.insert(QStringLiteral("analytic_type"), text(TarvoInterface::get_curve_type(id)));
    record.insert(QStringLiteral("mesh_scheme"),
                  text(TarvoInterface::get_mesh_scheme("curve", id)));
}

void VertexMonitor::update() {
    GeometryMonitor::update();
    if (!exists)
        return;
    record.insert(QStringLiteral("is_merged"), TarvoInterface::is_merged("vertex", id));
    record.insert(QStringLiteral("is_virtual"), TarvoInterface::is_virtual("vertex", id));
}
