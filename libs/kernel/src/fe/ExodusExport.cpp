// `export mesh`: the blocks, node sets and side sets written as Exodus II through the Exodus C
// API. The file is written under a temporary name beside the target and renamed when complete,
// so a failure never leaves half a file, nor spoils a file that was there.

#include "core/Guard.h"
#include "core/Session.h"
#include "fe/FeModule.h"
#include "mesh/MeshModule.h"
#include "tarvo/TIObserve.h"
#include "tarvo/TarvoInterface.h"

#include <exodusII.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <stdexcept>
#include <unordered_map>

namespace tarvo::kernel::fe {

namespace {

// Exodus names are fixed-width in the file; 80 is the longest the library allows.
constexpr int kNameLength = 80;

void check(int rc, const std::string& what) {
    if (rc < 0)
        throw std::runtime_error("the Exodus library could not write " + what);
}

// The Exodus API takes names as arrays of writable C strings.
class CStrings {
public:
    explicit CStrings(const std::vector<std::string>& texts) : store_(texts) {
        for (auto& s : store_)
            pointers_.push_back(s.data());
    }
    char** data() { return pointers_.data(); }

private:
    std::vector<std::string> store_;
    std::vector<char*> pointers_;
};

// The Exodus library formats the file name into a fixed buffer when it cannot create or open a
// file, and a long name overruns it (the process aborts). So we create the file ourselves, with
// our own message on failure, and hand the library the short name of our descriptor.
class ExodusFile {
public:
    explicit ExodusFile(const std::string& path) {
        fd = ::open(path.c_str(), O_CREAT | O_TRUNC | O_RDWR | O_CLOEXEC, 0666);
        if (fd < 0)
            throw std::runtime_error("cannot create '" + path + "': " + std::strerror(errno));
        int cpu_word = 8, io_word = 8;
        id = ex_create(descriptor_path(fd).c_str(), EX_CLOBBER, &cpu_word, &io_word);
        if (id < 0)
            throw std::runtime_error("the Exodus library cannot create '" + path + "'");
        check(ex_set_max_name_length(id, kNameLength), "the name length");
    }
    ~ExodusFile() {
        if (id >= 0)
            ex_close(id);
        if (fd >= 0)
            ::close(fd);
    }
    void close() {
        const int rc = ex_close(id);
        id = -1;
        check(rc, "the end of the file");
    }
    int id = -1;

private:
    int fd = -1;
};

void write_qa_and_info(int exo) {
    const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    std::tm local{};
    localtime_r(&now, &local);
    char date[16], time[16];
    std::strftime(date, sizeof date, "%m/%d/%y", &local);
    std::strftime(time, sizeof time, "%H:%M:%S", &local);
    std::string fields[4] = {"tarvo_server", TarvoInterface::get_version(), date, time};
    char* qa[1][4];
    for (int i = 0; i < 4; ++i)
        qa[0][i] = fields[i].data();
    check(ex_put_qa(exo, 1, qa), "the QA record");
    CStrings info(
        {"Mesh exported by tarvo_server, kernel tarvoi19 " + TarvoInterface::get_version()});
    check(ex_put_info(exo, 1, info.data()), "the info record");
}

} // namespace

bool FeModule::export_exodus(const std::string& path, bool overwrite) {
    namespace fs = std::filesystem;
    const fs::path target(path);
    const fs::path temporary =
        target.parent_path() / ("." + target.filename().string() + ".partial");
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
        for (const auto& b : layout.blocks)
            if (b.elements.empty())
                warning("block " + std::to_string(b.block->id) + " has no elements");

        const mesh::MeshState& mesh = mesh::mesh_module()->state();
        // Nodes: those of the blocks' elements and of the node sets, ascending kernel id.
        std::vector<int> local(mesh.next_node_id() + 1, 0);
        std::vector<std::vector<int>> conn(layout.blocks.size());
        for (size_t i = 0; i < layout.blocks.size(); ++i) {
            const auto& b = layout.blocks[i];
            const int n = mesh::info(b.kind).nodes;
            conn[i].reserve(b.elements.size() * n);
            for (int e : b.elements) {
                const auto ref = mesh.find_element(b.kind, e);
                for (int k = 0; k < n; ++k) {
                    conn[i].push_back(ref->nodes()[k]);
                    local[ref->nodes()[k]] = 1;
                }
            }
        }
        std::vector<std::vector<int>> set_nodes;
        for (const auto& [id, set] : state_.nodesets) {
            set_nodes.push_back(nodes(*set, true));
            for (int node : set_nodes.back())
                local[node] = 1;
        }
        std::vector<int> node_ids;
        std::vector<double> x, y, z;
        mesh::NodeLookup lookup(mesh);
        for (int id = 1; id < static_cast<int>(local.size()); ++id) {
            if (!local[id])
                continue;
            const mesh::Point3* p = lookup(id);
            if (!p)
                throw std::runtime_error("node " + std::to_string(id) + " is missing");
            node_ids.push_back(id);
            local[id] = static_cast<int>(node_ids.size());
            x.push_back((*p)[0]);
            y.push_back((*p)[1]);
            z.push_back((*p)[2]);
        }
        for (auto& c : conn)
            for (int& node : c)
                node = local[node];

        // Side sets as (global element, 1-based side).
        std::unordered_map<long long, int> global;
        if (!state_.sidesets.empty()) {
            int next = 0;
            for (const auto& b : layout.blocks)
                for (int e : b.elements)
                    global[static_cast<long long>(b.kind) << 32 | e] = ++next;
        }
        std::vector<std::pair<std::vector<int>, std::vector<int>>> side_lists;
        for (const auto& [id, set] : state_.sidesets) {
            auto& [elems, sides] = side_lists.emplace_back();
            int outside = 0;
            for (const Side& s : this->sides(*set)) {
                const auto it = global.find(static_cast<long long>(s.kind) << 32 | s.element);
                if (it == global.end()) {
                    ++outside;
                    continue;
                }
                elems.push_back(it->second);
                sides.push_back(s.side + 1);
            }
            if (outside > 0)
                warning("sideset " + std::to_string(id) + ": " + std::to_string(outside) +
                        " element sides are on elements in no block and are left out");
        }

        Progress progress("Export mesh", path, false);
        {
            ExodusFile file(temporary.string());
            const int exo = file.id;
            check(ex_put_init(exo, "tarvo_server mesh", 3, static_cast<int64_t>(node_ids.size()),
                              layout.element_count, static_cast<int64_t>(layout.blocks.size()),
                              static_cast<int64_t>(state_.nodesets.size()),
                              static_cast<int64_t>(state_.sidesets.size())),
                  "the header");
            check(ex_put_coord(exo, x.data(), y.data(), z.data()), "the coordinates");
            CStrings axes({"x", "y", "z"});
            check(ex_put_coord_names(exo, axes.data()), "the coordinate names");
            check(ex_put_id_map(exo, EX_NODE_MAP, node_ids.data()), "the node ids");
            progress.percent(20);
            for (size_t i = 0; i < layout.blocks.size(); ++i) {
                const auto& b = layout.blocks[i];
                const Block& block = *b.block;
                const std::string what = "block " + std::to_string(block.id);
                const int count = static_cast<int>(b.elements.size());
                const int nattr = static_cast<int>(block.attributes.size());
                check(ex_put_block(exo, EX_ELEM_BLOCK, block.id, b.type.c_str(), count,
                                   mesh::info(b.kind).nodes, 0, 0, nattr),
                      what);
                if (count > 0)
                    check(
                        ex_put_conn(exo, EX_ELEM_BLOCK, block.id, conn[i].data(), nullptr, nullptr),
                        what + " connectivity");
                if (nattr > 0) {
                    if (count > 0) {
                        std::vector<double> values;
                        values.reserve(static_cast<size_t>(count) * nattr);
                        for (int e = 0; e < count; ++e)
                            values.insert(values.end(), block.attributes.begin(),
                                          block.attributes.end());
                        check(ex_put_attr(exo, EX_ELEM_BLOCK, block.id, values.data()),
                              what + " attributes");
                    }
                    CStrings names(block.attribute_names);
                    check(ex_put_attr_names(exo, EX_ELEM_BLOCK, block.id, names.data()),
                          what + " attribute names");
                }
                if (!block.name.empty())
                    check(ex_put_name(exo, EX_ELEM_BLOCK, block.id, block.name.c_str()),
                          what + " name");
                progress.step(static_cast<long>(i + 1), static_cast<long>(layout.blocks.size()));
            }
            size_t n = 0;
            for (const auto& [id, set] : state_.nodesets) {
                std::vector<int>& list = set_nodes[n++];
                for (int& node : list)
                    node = local[node];
                const std::string what = "nodeset " + std::to_string(id);
                check(ex_put_set_param(exo, EX_NODE_SET, id, static_cast<int64_t>(list.size()), 0),
                      what);
                if (!list.empty())
                    check(ex_put_set(exo, EX_NODE_SET, id, list.data(), nullptr), what);
                if (!set->name.empty())
                    check(ex_put_name(exo, EX_NODE_SET, id, set->name.c_str()), what + " name");
            }
            n = 0;
            for (const auto& [id, set] : state_.sidesets) {
                const auto& [elems, sides] = side_lists[n++];
                const std::string what = "sideset " + std::to_string(id);
                check(ex_put_set_param(exo, EX_SIDE_SET, id, static_cast<int64_t>(elems.size()), 0),
                      what);
                if (!elems.empty())
                    check(ex_put_set(exo, EX_SIDE_SET, id, elems.data(), sides.data()), what);
                if (!set->name.empty())
                    check(ex_put_name(exo, EX_SIDE_SET, id, set->name.c_str()), what + " name");
            }
            write_qa_and_info(exo);
            file.close();
        }
        fs::rename(temporary, target);
        print("Exported " + std::to_string(layout.blocks.size()) + " blocks (" +
              std::to_string(layout.element_count) + " elements, " +
              std::to_string(node_ids.size()) + " nodes), " +
              std::to_string(state_.nodesets.size()) + " nodesets and " +
              std::to_string(state_.sidesets.size()) + " sidesets to '" + path + "'");
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
