#include "monitors/ExodusMonitor.h"

#include "tarvo/TarvoInterface.h"

#include <QJsonArray>

#include <set>
#include <string>

namespace {

QString text(const std::string& value) {
    return QString::fromStdString(value);
}

} // namespace

void ExodusMonitor::update() {
    if (!check_exists())
        return;
    const std::string kernel_type = type.toStdString();
    record.insert(QStringLiteral("name"),
                  text(TarvoInterface::get_exodus_entity_name(kernel_type, id)));
    record.insert(QStringLiteral("description"),
                  text(TarvoInterface::get_exodus_entity_description(kernel_type, id)));
    // "properties" carries the kernel's type text of the set, under the name clients know.
    record.insert(QStringLiteral("properties"),
                  text(TarvoInterface::get_exodus_entity_type(kernel_type, id)));
    QJsonArray color;
    for (double component : TarvoInterface::get_entity_color(kernel_type, id))
        color.append(component);
    record.insert(QStringLiteral("color"), color);
    QJsonArray variables;
    for (const std::string& name : TarvoInterface::get_exodus_variable_names(kernel_type, id))
        variables.append(text(name));
    record.insert(QStringLiteral("exodus_variables_count"), static_cast<double>(variables.size()));
    record.insert(QStringLiteral("exodus_variable_names"), variables);
    // A nodeset's count is of nodes.
    record.insert(QStringLiteral("element_count"),
                  type == QLatin1String("nodeset")
                      ? TarvoInterface::get_nodeset_node_count(id)
                      : TarvoInterface::get_exodus_element_count(id, kernel_type));
}

void BlockMonitor::update() {
    ExodusMonitor::update();
    if (!exists)
        return;
    record.insert(QStringLiteral("element_type"), text(TarvoInterface::get_block_element_type(id)));
    const int attributes = TarvoInterface::get_block_attribute_count(id);
    const int element_attributes = TarvoInterface::get_block_element_attribute_count(id);
    record.insert(QStringLiteral("attribute_count"), attributes);
    record.insert(QStringLiteral("element_attribute_count"), element_attributes);
    if (attributes > 0) {
        QJsonArray list;
        for (int i = 0; i < attributes; ++i) {
            QString name = text(TarvoInterface::get_block_attribute_name(id, i));
            if (name.isEmpty())
                name = QStringLiteral("Attribute ") + QString::number(i + 1);
            list.append(QJsonObject{{QStringLiteral("block_attribute_name"), name},
                                    {QStringLiteral("block_attribute_value"),
                                     TarvoInterface::get_block_attribute_value(id, i)}});
        }
        record.insert(QStringLiteral("block_attributes"), list);
    }
    if (element_attributes > 0) {
        // Distinct names in order of first appearance; asking once gives them all.
        std::set<std::string> seen;
        QJsonArray names;
        for (const std::string& name : TarvoInterface::get_block_element_attribute_names(id))
            if (seen.insert(name).second)
                names.append(text(name));
        record.insert(QStringLiteral("element_attributes"), names);
    }
}
