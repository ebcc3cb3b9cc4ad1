// Public functions that read an Exodus file from disk: the block ids of a mesh, and the times and
// variable names of a solver's result file. Answers come from the file alone, never the model.
//
// Conventions: a file that is missing, unreadable or not Exodus answers the empty list without
// an error line, as the other queries do for an unknown entity.
// Threading: kernel thread only.

#include "core/Guard.h"
#include "fe/FeModule.h"
#include "tarvo/TarvoInterface.h"

#include <exodusII.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <optional>

namespace tk = tarvo::kernel;

namespace {

// An Exodus file open for reading. The file is opened by us and given to the library by its
// descriptor's short name: the library formats the name into a fixed buffer when it cannot open
// a file, which a long name overruns. Only netCDF files (classic or HDF5) are handed over at all.
class ExodusReader {
public:
    explicit ExodusReader(const std::string& path) {
        fd_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
        if (fd_ < 0)
            return;
        char magic[4] = {};
        const bool netcdf =
            ::pread(fd_, magic, 4, 0) == 4 &&
            (std::memcmp(magic, "CDF", 3) == 0 || std::memcmp(magic, "\x89HDF", 4) == 0);
        int cpu_word = 8, io_word = 0;
        float version = 0;
        if (netcdf)
            id_ = ex_open(tk::fe::descriptor_path(fd_).c_str(), EX_READ, &cpu_word, &io_word,
                          &version);
    }
    ~ExodusReader() {
        if (id_ >= 0)
            ex_close(id_);
        if (fd_ >= 0)
            ::close(fd_);
    }
    ExodusReader(const ExodusReader&) = delete;
    ExodusReader& operator=(const ExodusReader&) = delete;

    bool ok() const { return id_ >= 0; }
    int id() const { return id_; }
    size_t count(ex_inquiry what) const {
        return static_cast<size_t>(std::max<int64_t>(0, ex_inquire_int(id_, what)));
    }

private:
    int fd_ = -1;
    int id_ = -1;
};

// The Exodus object type of a variable type word: "node" (or "nodal"), "element", "global",
// "nodeset", "sideset", in any case, singular or plural.
std::optional<ex_entity_type> variable_kind(const std::string& word) {
    std::string w = word;
    std::transform(w.begin(), w.end(), w.begin(), [](unsigned char c) { return std::tolower(c); });
    if (w.size() > 1 && w.back() == 's')
        w.pop_back();
    if (w == "node" || w == "nodal")
        return EX_NODAL;
    if (w == "element" || w == "elem" || w == "block")
        return EX_ELEM_BLOCK;
    if (w == "global")
        return EX_GLOBAL;
    if (w == "nodeset")
        return EX_NODE_SET;
    if (w == "sideset")
        return EX_SIDE_SET;
    return std::nullopt;
}

} // namespace

namespace TarvoInterface {

std::vector<int> get_block_ids(const std::string& mesh_geometry_file_name) {
    return tk::guarded("get_block_ids", std::vector<int>{}, [&] {
        std::vector<int> ids;
        ExodusReader file(mesh_geometry_file_name);
        if (!file.ok())
            return ids;
        ids.resize(file.count(EX_INQ_ELEM_BLK));
        if (!ids.empty() && ex_get_ids(file.id(), EX_ELEM_BLOCK, ids.data()) < 0)
            ids.clear();
        return ids;
    });
}

std::vector<double> get_all_exodus_times(const std::string& filename) {
    return tk::guarded("get_all_exodus_times", std::vector<double>{}, [&] {
        std::vector<double> times;
        ExodusReader file(filename);
        if (!file.ok())
            return times;
        times.resize(file.count(EX_INQ_TIME));
        if (!times.empty() && ex_get_all_times(file.id(), times.data()) < 0)
            times.clear();
        return times;
    });
}

std::vector<std::string> get_all_exodus_variable_names(const std::string& filename,
                                                       const std::string& variable_type) {
    return tk::guarded("get_all_exodus_variable_names", std::vector<std::string>{}, [&] {
        std::vector<std::string> names;
        const auto kind = variable_kind(variable_type);
        ExodusReader file(filename);
        if (!kind || !file.ok())
            return names;
        int count = 0;
        if (ex_get_variable_param(file.id(), *kind, &count) < 0 || count <= 0)
            return names;
        // Names as long as the file holds them (the library cuts at 32 unless told).
        const int length =
            std::max(32, static_cast<int>(file.count(EX_INQ_DB_MAX_USED_NAME_LENGTH)));
        ex_set_max_name_length(file.id(), length);
        std::vector<std::vector<char>> store(count, std::vector<char>(length + 1, '\0'));
        std::vector<char*> pointers;
        for (auto& s : store)
            pointers.push_back(s.data());
        if (ex_get_variable_names(file.id(), *kind, count, pointers.data()) < 0)
            return names;
        for (const auto& s : store)
            names.emplace_back(s.data());
        return names;
    });
}

} // namespace TarvoInterface
