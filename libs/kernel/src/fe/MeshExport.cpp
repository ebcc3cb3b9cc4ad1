// `export mesh`: checks the target, gathers the blocks, node sets and side sets once into the
// arrays every format writes (MeshExport.h), and has the chosen writer fill a temporary file
// beside the target, renamed over it when complete, so a failure never leaves half a file nor
// spoils a file that was there.

#include "fe/MeshExport.h"

#include "core/Guard.h"
#include "core/Session.h"
#include "mesh/MeshModule.h"
#include "tarvo/TIObserve.h"
#include "tarvo/TarvoInterface.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <unordered_map>

namespace tarvo::kernel::fe {

namespace {

std::string lower(std::string s) {
    std::transform(s.begin(), s.end(), s.begin(), [](unsigned char c) { return std::tolower(c); });
    return s;
}

// Fills `out` from the model; false with a warning-free error when there is nothing to write.
void gather(const FeModule& fe, const Layout& layout, ExportData& out) {
    const FeState& state = fe.state();
    const mesh::MeshState& mesh = mesh::mesh_module()->state();
    out.layout = layout;
    // File node numbers by kernel id: first a mark of the nodes used, then their numbers.
    std::vector<int> local(mesh.next_node_id() + 1, 0);
    out.conn.resize(layout.blocks.size());
    std::optional<mesh::MidIndex> mids;
    for (size_t i = 0; i < layout.blocks.size(); ++i) {
        const auto& b = layout.blocks[i];
        const int n = mesh::info(b.kind).nodes;
        const ElementType* type = find_element_type(b.type);
        const bool higher = type && !type->mids.empty();
        if (higher && !mids)
            mids.emplace(mesh);
        auto& conn = out.conn[i];
        conn.reserve(b.elements.size() * b.nodes);
        for (int e : b.elements) {
            const int* corners = mesh.find_element(b.kind, e)->nodes();
            if (higher) {
                const std::vector<int> all = FeModule::expanded_nodes(*type, corners, *mids);
                if (all.empty())
                    throw std::runtime_error(std::string(mesh::info(b.kind).word) + " " +
                                             std::to_string(e) + " of block " +
                                             std::to_string(b.block->id) + " lacks mid-nodes");
                conn.insert(conn.end(), all.begin(), all.end());
                for (int node : all)
                    local[node] = 1;
                continue;
            }
            for (int k = 0; k < n; ++k) {
                conn.push_back(corners[k]);
                local[corners[k]] = 1;
            }
        }
    }
    for (const auto& [id, set] : state.nodesets) {
        out.nodesets.push_back({set.get(), FeModule::nodes(*set, true)});
        for (int node : out.nodesets.back().nodes)
            local[node] = 1;
    }
    mesh::NodeLookup lookup(mesh);
    for (int id = 1; id < static_cast<int>(local.size()); ++id) {
        if (!local[id])
            continue;
        const mesh::Point3* p = lookup(id);
        if (!p)
            throw std::runtime_error("node " + std::to_string(id) + " is missing");
        out.node_ids.push_back(id);
        local[id] = static_cast<int>(out.node_ids.size());
        out.x.push_back((*p)[0]);
        out.y.push_back((*p)[1]);
        out.z.push_back((*p)[2]);
    }
    for (auto& conn : out.conn)
        for (int& node : conn)
            node = local[node];
    for (auto& set : out.nodesets)
        for (int& node : set.nodes)
            node = local[node];

    // Side sets as (global element, 1-based side).
    std::unordered_map<long long, int> global;
    if (!state.sidesets.empty()) {
        int next = 0;
        for (const auto& b : layout.blocks)
            for (int e : b.elements)
                global[static_cast<long long>(b.kind) << 32 | e] = ++next;
    }
    for (const auto& [id, set] : state.sidesets) {
        auto& list = out.sidesets.emplace_back(ExportData::Sides{set.get(), {}, {}});
        int outside = 0;
        for (const Side& s : FeModule::sides(*set)) {
            const auto it = global.find(static_cast<long long>(s.kind) << 32 | s.element);
            if (it == global.end()) {
                ++outside;
                continue;
            }
            list.elements.push_back(it->second);
            list.sides.push_back(s.side + 1);
        }
        if (outside > 0)
            warning("sideset " + std::to_string(id) + ": " + std::to_string(outside) +
                    " element sides are on elements in no block and are left out");
    }
}

} // namespace

std::optional<MeshFormat> mesh_format(const std::string& word, const std::string& path) {
    if (!word.empty()) {
        const std::string w = lower(word);
        if (w == "exodus" || w == "exodusii" || w == "genesis")
            return MeshFormat::Exodus;
        if (w == "gmsh" || w == "msh")
            return MeshFormat::Gmsh;
        if (w == "vtu" || w == "vtk")
            return MeshFormat::Vtu;
        if (w == "abaqus" || w == "inp")
            return MeshFormat::Abaqus;
        return std::nullopt;
    }
    const std::string ext = lower(std::filesystem::path(path).extension().string());
    if (ext == ".msh")
        return MeshFormat::Gmsh;
    if (ext == ".vtu")
        return MeshFormat::Vtu;
    if (ext == ".inp")
        return MeshFormat::Abaqus;
    return MeshFormat::Exodus;
}

const char* format_name(MeshFormat format) {
    switch (format) {
    case MeshFormat::Gmsh:
        return "Gmsh 4.1";
    case MeshFormat::Vtu:
        return "VTK XML";
    case MeshFormat::Abaqus:
        return "Abaqus";
    case MeshFormat::Exodus:
        break;
    }
    return "Exodus II";
}

bool FeModule::export_mesh(const std::string& path, bool overwrite, MeshFormat format) {
    namespace fs = std::filesystem;
    const fs::path target(path);
    // The extension stays last: Gmsh chooses what it writes by it.
    const fs::path temporary = target.parent_path() / ("." + target.stem().string() + ".partial" +
                                                       target.extension().string());
    const bool ok = guarded("export mesh", false, [&]() -> bool {
        std::error_code ec;
        if (target.filename().empty())
            return error("'" + path + "' is not a file name");
        if (fs::exists(target, ec) && !overwrite)
            return error("file '" + path + "' exists; add 'overwrite' to replace it");
        const fs::path dir = target.parent_path().empty() ? fs::path(".") : target.parent_path();
        if (!fs::is_directory(dir, ec))
            return error("directory '" + dir.string() + "' does not exist");
        if (state_.blocks.empty())
            return error("there are no blocks to export: put volumes or elements in a block");
        Layout layout;
        std::string why;
        if (!this->layout(layout, why))
            return error(why);
        for (const auto& b : layout.blocks) {
            if (b.elements.empty())
                warning("block " + std::to_string(b.block->id) + " has no elements");
            const bool linear = b.nodes == mesh::info(b.kind).nodes;
            const bool writes = format == MeshFormat::Exodus ||
                                (format == MeshFormat::Gmsh && msh_writes(b.type)) ||
                                (format == MeshFormat::Vtu && vtu_writes(b.type)) ||
                                (format == MeshFormat::Abaqus && inp_writes(b.type)) || linear;
            if (!writes)
                return error("block " + std::to_string(b.block->id) + " is " + b.type + ": " +
                             format_name(format) +
                             " files are not written with it here; export Exodus");
        }

        sync_mid_nodes();
        ExportData data;
        gather(*this, layout, data);
        Progress progress("Export mesh", path, false);
        progress.percent(20);
        switch (format) {
        case MeshFormat::Exodus:
            write_exodus(data, temporary.string());
            break;
        case MeshFormat::Gmsh:
            write_msh(data, temporary.string());
            break;
        case MeshFormat::Vtu:
            write_vtu(data, temporary.string());
            break;
        case MeshFormat::Abaqus:
            write_inp(data, temporary.string());
            break;
        }
        fs::rename(temporary, target);
        print("Exported " + std::to_string(layout.blocks.size()) + " blocks (" +
              std::to_string(layout.element_count) + " elements, " +
              std::to_string(data.node_ids.size()) + " nodes), " +
              std::to_string(data.nodesets.size()) + " nodesets and " +
              std::to_string(data.sidesets.size()) + " sidesets to '" + path + "' (" +
              format_name(format) + ")");
        return true;
    });
    if (!ok) {
        std::error_code ec;
        fs::remove(temporary, ec);
    }
    events().emit(&TarvoInterface::TIObserve::notify_export_complete, path, ok);
    return ok;
}

} // namespace tarvo::kernel::fe
