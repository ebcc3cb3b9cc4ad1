// The Exodus II writer of `export mesh`, through the Exodus C API: coordinates with the kernel's
// node ids as the node map, blocks with their attributes, node sets, side sets, names, a QA and
// info records (ours, then those of the analysis set-up), with the set distribution factors the
// set-up gives (ExodusExtras.h).

#include "core/Version.h"
#include "fe/ExodusExtras.h"
#include "fe/MeshExport.h"
#include "mesh/MeshTypes.h"
#include "tarvo/TarvoInterface.h"

#include <exodusII.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <ctime>
#include <iterator>
#include <map>
#include <stdexcept>

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

void write_qa_and_info(int exo, const std::vector<std::string>& extra_info) {
    const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    std::tm local{};
    localtime_r(&now, &local);
    char date[16], time[16];
    std::strftime(date, sizeof date, "%m/%d/%y", &local);
    std::strftime(time, sizeof time, "%H:%M:%S", &local);
    std::string fields[4] = {"tarvo_server", std::string(kKernelVersion), date, time};
    char* qa[1][4];
    for (int i = 0; i < 4; ++i)
        qa[0][i] = fields[i].data();
    check(ex_put_qa(exo, 1, qa), "the QA record");
    std::vector<std::string> lines{"Mesh exported by tarvo_server, kernel tarvoi19 " +
                                   std::string(kKernelVersion)};
    for (const std::string& line : extra_info)
        lines.push_back(line.substr(0, MAX_LINE_LENGTH));
    CStrings info(lines);
    check(ex_put_info(exo, static_cast<int>(lines.size()), info.data()), "the info records");
}

// Node count of each side of a side set (corners and the mid-nodes on the side), found from the
// laid-out block of each element (global ids run through the blocks in order).
std::vector<int> side_node_counts(const Layout& layout, const std::vector<int>& elements,
                                  const std::vector<int>& sides) {
    std::vector<std::pair<int, const LaidOutBlock*>> firsts; // first global id of each block
    int next = 1;
    for (const auto& b : layout.blocks) {
        firsts.emplace_back(next, &b);
        next += static_cast<int>(b.elements.size());
    }
    std::vector<int> counts;
    counts.reserve(elements.size());
    for (size_t i = 0; i < elements.size(); ++i) {
        const auto block = std::upper_bound(firsts.begin(), firsts.end(), elements[i],
                                            [](int id, const auto& f) { return id < f.first; });
        const LaidOutBlock& b = *std::prev(block)->second;
        const auto& faces = mesh::topology(b.kind).faces;
        const size_t side = static_cast<size_t>(sides[i] - 1);
        if (side >= faces.size()) {
            counts.push_back(2);
            continue;
        }
        const auto& face = faces[side];
        int count = static_cast<int>(face.size());
        if (const ElementType* type = find_element_type(b.type))
            for (const auto& mid : type->mids)
                count += std::all_of(mid.begin(), mid.end(), [&](int c) {
                    return std::find(face.begin(), face.end(), c) != face.end();
                });
        counts.push_back(count);
    }
    return counts;
}

} // namespace

// Everything is defined before the bulk data is written: each later definition (a block, a set,
// the QA record, the node map) reopens netCDF's define mode, which moves every byte written
// after the header (3 s of a 1M-hex export went to ten sets written after the coordinates).
void write_exodus(const ExportData& data, const std::string& path) {
    const Layout& layout = data.layout;
    const ExodusExtras extras = exodus_extras();
    ExodusFile file(path);
    const int exo = file.id;
    check(ex_put_init(exo, "tarvo_server mesh", 3, static_cast<int64_t>(data.node_ids.size()),
                      layout.element_count, static_cast<int64_t>(layout.blocks.size()),
                      static_cast<int64_t>(data.nodesets.size()),
                      static_cast<int64_t>(data.sidesets.size())),
          "the header");
    for (const auto& b : layout.blocks) {
        const Block& block = *b.block;
        const std::string what = "block " + std::to_string(block.id);
        const int nattr = static_cast<int>(block.attributes.size());
        check(ex_put_block(exo, EX_ELEM_BLOCK, block.id, b.type.c_str(),
                           static_cast<int64_t>(b.elements.size()), b.nodes, 0, 0, nattr),
              what);
        if (nattr > 0) {
            CStrings names(block.attribute_names);
            check(ex_put_attr_names(exo, EX_ELEM_BLOCK, block.id, names.data()),
                  what + " attribute names");
        }
        if (!block.name.empty())
            check(ex_put_name(exo, EX_ELEM_BLOCK, block.id, block.name.c_str()), what + " name");
    }
    for (const auto& [set, nodes] : data.nodesets) {
        const std::string what = "nodeset " + std::to_string(set->id);
        const bool factors = extras.nodeset_factors.contains(set->id) && !nodes.empty();
        check(ex_put_set_param(exo, EX_NODE_SET, set->id, static_cast<int64_t>(nodes.size()),
                               factors ? static_cast<int64_t>(nodes.size()) : 0),
              what);
        if (!nodes.empty())
            check(ex_put_set(exo, EX_NODE_SET, set->id, nodes.data(), nullptr), what);
        if (!set->name.empty())
            check(ex_put_name(exo, EX_NODE_SET, set->id, set->name.c_str()), what + " name");
    }
    std::map<int, std::vector<double>> side_factors; // by side set id, written with the bulk data
    for (const auto& [set, elems, sides] : data.sidesets) {
        const std::string what = "sideset " + std::to_string(set->id);
        if (const auto f = extras.sideset_factors.find(set->id);
            f != extras.sideset_factors.end() && !elems.empty()) {
            int count = 0;
            for (int n : side_node_counts(layout, elems, sides))
                count += n;
            side_factors[set->id].assign(static_cast<size_t>(count), f->second);
        }
        const auto factors = side_factors.find(set->id);
        check(ex_put_set_param(
                  exo, EX_SIDE_SET, set->id, static_cast<int64_t>(elems.size()),
                  factors == side_factors.end() ? 0 : static_cast<int64_t>(factors->second.size())),
              what);
        if (!elems.empty())
            check(ex_put_set(exo, EX_SIDE_SET, set->id, elems.data(), sides.data()), what);
        if (!set->name.empty())
            check(ex_put_name(exo, EX_SIDE_SET, set->id, set->name.c_str()), what + " name");
    }
    write_qa_and_info(exo, extras.info);
    CStrings axes({"x", "y", "z"});
    check(ex_put_coord_names(exo, axes.data()), "the coordinate names");
    // The node map is defined on its first write: before the coordinates, so that nothing
    // large is moved.
    check(ex_put_id_map(exo, EX_NODE_MAP, data.node_ids.data()), "the node ids");

    // Bulk data: nothing is defined from here on.
    check(ex_put_coord(exo, data.x.data(), data.y.data(), data.z.data()), "the coordinates");
    for (const auto& [set, nodes] : data.nodesets) {
        if (const auto f = extras.nodeset_factors.find(set->id);
            f != extras.nodeset_factors.end() && !nodes.empty()) {
            const std::vector<double> values(nodes.size(), f->second);
            check(ex_put_set_dist_fact(exo, EX_NODE_SET, set->id, values.data()),
                  "nodeset " + std::to_string(set->id) + " distribution factors");
        }
    }
    for (const auto& [id, values] : side_factors)
        check(ex_put_set_dist_fact(exo, EX_SIDE_SET, id, values.data()),
              "sideset " + std::to_string(id) + " distribution factors");
    for (size_t i = 0; i < layout.blocks.size(); ++i) {
        const auto& b = layout.blocks[i];
        const Block& block = *b.block;
        const std::string what = "block " + std::to_string(block.id);
        const int count = static_cast<int>(b.elements.size());
        const int nattr = static_cast<int>(block.attributes.size());
        if (count == 0)
            continue;
        check(ex_put_conn(exo, EX_ELEM_BLOCK, block.id, data.conn[i].data(), nullptr, nullptr),
              what + " connectivity");
        if (nattr > 0) {
            std::vector<double> values;
            values.reserve(static_cast<size_t>(count) * nattr);
            for (int e = 0; e < count; ++e)
                values.insert(values.end(), block.attributes.begin(), block.attributes.end());
            check(ex_put_attr(exo, EX_ELEM_BLOCK, block.id, values.data()), what + " attributes");
        }
    }
    file.close();
}

} // namespace tarvo::kernel::fe
