// Start and end of the exchange module, and its commands for the native file: `save as` writes
// the whole model (every module's section, core/ModelFile.h) and `open` replaces the model with
// one. A file is written under a temporary name beside the target and renamed when complete, so
// a failure never leaves half a file and an old file stays as it was.
//
// Threading: kernel thread only.

#include "core/Command.h"
#include "core/Guard.h"
#include "core/ModelFile.h"
#include "core/Session.h"

#include <cctype>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <unistd.h>

namespace tarvo::kernel {

namespace {

namespace fs = std::filesystem;

std::string lower(std::string s) {
    for (char& c : s)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return s;
}

std::string size_text(size_t bytes) {
    std::ostringstream out;
    out.precision(3);
    if (bytes < 1024)
        out << bytes << " bytes";
    else if (bytes < (size_t{1} << 20))
        out << bytes / 1024.0 << " KiB";
    else
        out << bytes / 1048576.0 << " MiB";
    return out.str();
}

// Writes `bytes` to `path` and flushes them to the disk; false with `why` on any failure.
bool write_whole(const fs::path& path, const std::string& bytes, std::string& why) {
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (fd < 0) {
        why = std::strerror(errno);
        return false;
    }
    size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::write(fd, bytes.data() + done, bytes.size() - done);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0) {
            why = std::strerror(errno);
            ::close(fd);
            return false;
        }
        done += static_cast<size_t>(n);
    }
    // The rename must not publish a name whose data is still only in memory.
    if (::fsync(fd) != 0 || ::close(fd) != 0) {
        why = std::strerror(errno);
        return false;
    }
    return true;
}

bool save_as(const std::string& path, bool overwrite) {
    const fs::path target(path);
    const fs::path temporary =
        target.parent_path() / ("." + target.filename().string() + ".partial");
    bool wrote_temporary = false;
    const bool ok = guarded("save as", false, [&]() -> bool {
        std::error_code ec;
        if (target.filename().empty() || lower(target.extension().string()) != ".tvo")
            return error("'" + path + "' is not a native file name: it must end in .tvo");
        const fs::path dir = target.parent_path().empty() ? fs::path(".") : target.parent_path();
        if (!fs::is_directory(dir, ec))
            return error("directory '" + dir.string() + "' does not exist");
        if (fs::exists(target, ec)) {
            if (!overwrite)
                return error("file '" + path + "' exists; add 'overwrite' to replace it");
            if (!fs::is_regular_file(target, ec))
                return error("'" + path + "' is not a file");
        }
        Progress progress("Save", path, false);
        const std::string bytes = write_model_file();
        progress.percent(60);
        std::string why;
        wrote_temporary = true;
        if (!write_whole(temporary, bytes, why))
            return error("cannot write '" + path + "': " + why);
        fs::rename(temporary, target, ec);
        if (ec)
            return error("cannot write '" + path + "': " + ec.message());
        wrote_temporary = false;
        print("Saved the model to '" + path + "' (" + size_text(bytes.size()) + ")");
        return true;
    });
    if (wrote_temporary) {
        std::error_code ec;
        fs::remove(temporary, ec);
    }
    if (ok) {
        set_model_modified(false);
        events().emit(&TarvoInterface::TIObserve::notify_tvo_file_saved, path, false);
    }
    return ok;
}

bool open_file(const std::string& path) {
    const bool ok = guarded("open", false, [&]() -> bool {
        std::error_code ec;
        if (!fs::exists(path, ec))
            return error("file '" + path + "' does not exist");
        if (!fs::is_regular_file(path, ec))
            return error("'" + path + "' is not a file");
        std::ifstream in(path, std::ios::binary);
        std::string bytes;
        if (in) {
            std::ostringstream buffer;
            buffer << in.rdbuf();
            bytes = std::move(buffer).str();
        }
        if (!in)
            return error("cannot read '" + path + "'");
        Progress progress("Open", path, false);
        std::string why;
        if (!read_model_file(bytes, why))
            return error("cannot open '" + path + "': " + why);
        print("Opened '" + path + "'");
        return true;
    });
    if (ok)
        events().emit(&TarvoInterface::TIObserve::notify_tvo_file_read, path);
    return ok;
}

bool save_as_command(Cursor& c) {
    std::string path;
    if (!c.string(path, false))
        return c.fail("expected the file name in quotes");
    const bool overwrite = c.keyword("overwrite");
    return c.expect_end() && save_as(path, overwrite);
}

bool open_command(Cursor& c) {
    std::string path;
    if (!c.string(path, false))
        return c.fail("expected the file name in quotes");
    return c.expect_end() && open_file(path);
}

} // namespace

void init_exchange_module() {
    // Neither is undoable: saving changes no model state, and opening replaces the model and
    // forgets the undo history itself (core/ModelFile.h).
    register_command({"save as", save_as_command, false, "save as '<file>.tvo' [overwrite]"});
    register_command({"open", open_command, false, "open '<file>.tvo'"});
}

void shutdown_exchange_module() {}

} // namespace tarvo::kernel
