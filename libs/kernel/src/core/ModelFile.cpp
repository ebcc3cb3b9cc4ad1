// The native file's container and the registry of its sections (see ModelFile.h).

#include "core/ModelFile.h"

#include "core/Session.h"
#include "core/SessionState.h"
#include "tarvo/TIObserve.h"

#include <algorithm>
#include <array>
#include <memory>

namespace tarvo::kernel {

namespace {

constexpr std::string_view kMagic{"\x89TVO\r\n\x1a\n", 8};
constexpr uint32_t kOptionalFlag = 1;
// magic, format version, reserved, total length, section count
constexpr size_t kHeaderSize = 8 + 4 + 4 + 8 + 4;

std::vector<ModelFileSection>& sections() {
    static std::vector<ModelFileSection> list;
    return list;
}

uint32_t crc32(std::string_view bytes) {
    static const std::array<uint32_t, 256> table = [] {
        std::array<uint32_t, 256> t{};
        for (uint32_t i = 0; i < 256; ++i) {
            uint32_t c = i;
            for (int k = 0; k < 8; ++k)
                c = (c & 1) ? 0xEDB88320u ^ (c >> 1) : c >> 1;
            t[i] = c;
        }
        return t;
    }();
    uint32_t c = 0xFFFFFFFFu;
    for (unsigned char b : bytes)
        c = table[(c ^ b) & 0xFF] ^ (c >> 8);
    return c ^ 0xFFFFFFFFu;
}

struct ParsedSection {
    std::string name;
    uint32_t version = 0;
    uint32_t flags = 0;
    std::string_view payload;
};

// The container checks, in the order that gives the most useful message: what the file is,
// which version wrote it, whether it is whole, whether it is intact.
std::vector<ParsedSection> parse_container(std::string_view bytes) {
    if (bytes.size() < kMagic.size() || bytes.substr(0, kMagic.size()) != kMagic) {
        if (bytes.size() < kMagic.size() && kMagic.substr(0, bytes.size()) == bytes)
            throw ModelFileError("the file is truncated (" + std::to_string(bytes.size()) +
                                 " bytes)");
        throw ModelFileError("not a native model file");
    }
    if (bytes.size() < kHeaderSize)
        throw ModelFileError("the file is truncated (" + std::to_string(bytes.size()) + " bytes)");
    FileReader header(bytes.substr(kMagic.size(), kHeaderSize - kMagic.size()), "header");
    const uint32_t version = header.u32();
    if (version > kModelFileFormatVersion)
        throw ModelFileError("the file was written by a newer version (format " +
                             std::to_string(version) + "; this kernel reads up to format " +
                             std::to_string(kModelFileFormatVersion) + ")");
    if (version == 0)
        throw ModelFileError("not a native model file (format 0)");
    header.u32(); // reserved
    const uint64_t total = header.u64();
    if (bytes.size() < total)
        throw ModelFileError("the file is truncated (" + std::to_string(bytes.size()) + " of " +
                             std::to_string(total) + " bytes)");
    if (bytes.size() > total || total < kHeaderSize + 4)
        throw ModelFileError("the file is damaged (its length is not the one it records)");
    uint32_t stored_crc = 0;
    std::memcpy(&stored_crc, bytes.data() + total - 4, 4);
    if (crc32(bytes.substr(0, total - 4)) != stored_crc)
        throw ModelFileError("the file is damaged (checksum mismatch)");

    const uint32_t count = header.u32();
    FileReader table(bytes.substr(kHeaderSize, total - 4 - kHeaderSize), "table");
    std::vector<ParsedSection> out;
    for (uint32_t i = 0; i < count; ++i) {
        ParsedSection s;
        s.name = table.str();
        s.version = table.u32();
        s.flags = table.u32();
        s.payload = table.raw(table.count(1));
        out.push_back(std::move(s));
    }
    if (!table.at_end())
        throw ModelFileError("the file is damaged (bytes after its last section)");
    return out;
}

} // namespace

void register_model_file_section(ModelFileSection section) {
    auto& list = sections();
    auto it = std::find_if(list.begin(), list.end(),
                           [&](const ModelFileSection& s) { return s.name == section.name; });
    if (it != list.end())
        *it = std::move(section);
    else
        list.push_back(std::move(section));
}

void unregister_model_file_section(const std::string& name) {
    std::erase_if(sections(), [&](const ModelFileSection& s) { return s.name == name; });
}

std::string write_model_file() {
    FileWriter out;
    out.raw(kMagic.data(), kMagic.size());
    out.u32(kModelFileFormatVersion);
    out.u32(0);
    out.u64(0); // total length, patched below
    out.u32(static_cast<uint32_t>(sections().size()));
    for (const ModelFileSection& s : sections()) {
        FileWriter payload;
        s.write(payload);
        out.str(s.name);
        out.u32(s.version);
        out.u32(s.optional ? kOptionalFlag : 0);
        out.str(payload.bytes());
    }
    std::string bytes = out.take();
    const uint64_t total = bytes.size() + 4;
    std::memcpy(bytes.data() + 16, &total, 8);
    const uint32_t crc = crc32(bytes);
    bytes.append(reinterpret_cast<const char*>(&crc), 4);
    return bytes;
}

bool read_model_file(std::string_view bytes, std::string& why) {
    // Parse everything first: nothing below may touch the model until every section has.
    std::vector<std::pair<const ModelFileSection*, SectionCommit>> commits;
    try {
        std::vector<ParsedSection> parsed = parse_container(bytes);
        for (const ParsedSection& p : parsed) {
            auto it = std::find_if(sections().begin(), sections().end(),
                                   [&](const ModelFileSection& s) { return s.name == p.name; });
            if (it == sections().end()) {
                if (p.flags & kOptionalFlag)
                    continue;
                throw ModelFileError("the file holds a section this kernel does not know ('" +
                                     p.name + "')");
            }
            if (p.version > it->version)
                throw ModelFileError("section '" + p.name + "' was written by a newer version");
            if (std::any_of(commits.begin(), commits.end(),
                            [&](const auto& c) { return c.first == &*it; }))
                throw ModelFileError("section '" + p.name + "' appears twice");
            FileReader reader(p.payload, p.name);
            commits.emplace_back(&*it, it->read(reader, p.version));
        }
    } catch (const ModelFileError& e) {
        why = e.what();
        return false;
    }
    // Install in registration order, whatever order the file has: a module's section may refer
    // to the state of modules registered before it.
    std::stable_sort(commits.begin(), commits.end(), [](const auto& a, const auto& b) {
        return a.first < b.first; // sections() is one vector: address order is registration order
    });

    SessionState& s = state();
    // The model as it is, in case an install throws after the clear below.
    std::vector<std::pair<UndoParticipant*, std::unique_ptr<UndoSnapshot>>> before;
    for (UndoParticipant* p : s.participants)
        before.emplace_back(p, p->save_state());
    try {
        for (auto it = s.participants.rbegin(); it != s.participants.rend(); ++it)
            (*it)->clear_state();
        events().emit(&TarvoInterface::TIObserve::notify_model_reset);
        for (auto& [section, commit] : commits)
            if (commit)
                commit();
    } catch (...) {
        const bool was = s.performing_undo;
        s.performing_undo = true;
        for (auto& [p, snapshot] : before)
            if (snapshot)
                p->restore_state(*snapshot);
        s.performing_undo = was;
        throw;
    }
    const bool had_undo = !s.undo_stack.empty();
    s.undo_stack.clear();
    s.modified = false;
    s.undo_save_needed = false;
    if (had_undo)
        events().emit(&TarvoInterface::TIObserve::notify_undo_state_changed);
    return true;
}

} // namespace tarvo::kernel
