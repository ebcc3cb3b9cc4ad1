#include "methods/TarvoRPCRequestHandler.h"

#include "methods/MethodTable.h"

#include <QHash>

namespace {

using tarvo::methods::MethodRows;

const MethodRows& table() {
    // Built once, on first use; read-only afterwards.
    static const MethodRows rows = [] {
        MethodRows all;
        all.reserve(485);
        // The session family opens with the six names that are asked for first.
        tarvo::methods::add_session_methods(all);
        tarvo::methods::add_view_methods(all);
        tarvo::methods::add_mesh_sizing_methods(all);
        tarvo::methods::add_geometry_query_methods(all);
        tarvo::methods::add_diagnostics_methods(all);
        tarvo::methods::add_exodus_methods(all);
        tarvo::methods::add_group_methods(all);
        tarvo::methods::add_assembly_methods(all);
        tarvo::methods::add_mesh_entity_methods(all);
        tarvo::methods::add_bc_material_methods(all);
        tarvo::methods::add_label_bl_methods(all);
        return all;
    }();
    return rows;
}

// Name to row, equivalent on the wire to comparing the names one after the other: the names are
// distinct, so the first match is the only match.
const QHash<QString, const tarvo::methods::MethodRow*>& index() {
    static const QHash<QString, const tarvo::methods::MethodRow*> by_name = [] {
        QHash<QString, const tarvo::methods::MethodRow*> map;
        for (const auto& row : table())
            map.insert(QString::fromLatin1(row.name), &row);
        return map;
    }();
    return by_name;
}

} // namespace

const std::vector<QString>& TarvoRPCRequestHandler::method_names() {
    static const std::vector<QString> names = [] {
        std::vector<QString> list;
        for (const auto& row : table())
            list.push_back(QString::fromLatin1(row.name));
        return list;
    }();
    return names;
}

std::unique_ptr<RPCMethodWrapper>
TarvoRPCRequestHandler::create_method(const QString& method_name) {
    const auto found = index().constFind(last_section(method_name));
    if (found == index().constEnd())
        return nullptr;
    return found.value()->make();
}
