#pragma once
// The native model file as core sees it: a registry of named sections, one or more per module,
// and the container that holds them. Core knows no module; each module registers the section
// that writes and reads its own state from its init function, as it registers its undo
// participant, and removes it at shutdown.
//
// Container (all numbers little-endian):
//   magic "\x89TVO\r\n\x1a\n" (8 bytes; the high byte and the line ends catch text-mode copies),
//   u32 format version, u32 reserved (0), u64 total length of the file,
//   u32 section count, then per section: string name, u32 section version, u32 flags,
//   u64 payload length, payload;
//   u32 CRC-32 of every byte before it.
// A string is u64 length + bytes. A file is checked whole (magic, version, length, CRC, section
// table) before any section is parsed, and every section is parsed before the model is touched,
// so a foreign, newer, truncated or damaged file leaves the model as it was.
//
// Sections: written in registration order; on reading, a section the kernel does not know is
// skipped when its flags say it is optional and refuses the file otherwise; a registered section
// missing from the file leaves its module empty (a file from before the module existed).
//
// Threading: kernel thread only.

#include <bit>
#include <cstdint>
#include <cstring>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace tarvo::kernel {

static_assert(std::endian::native == std::endian::little,
              "the native file is written as memory holds it; a big-endian port must swap");

// The version of the container this kernel writes and the newest it reads.
inline constexpr uint32_t kModelFileFormatVersion = 1;

// Any fault in a file's content: reading past the end of a section, a count that cannot be,
// an id that refers to nothing. The message is shown to the user after the file's name.
class ModelFileError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Appends values to one section's payload.
class FileWriter {
public:
    void u8(uint8_t v) { raw(&v, 1); }
    void u32(uint32_t v) { raw(&v, 4); }
    void i32(int32_t v) { raw(&v, 4); }
    void u64(uint64_t v) { raw(&v, 8); }
    void i64(int64_t v) { raw(&v, 8); }
    void f64(double v) { raw(&v, 8); }
    void boolean(bool v) { u8(v ? 1 : 0); }
    void str(std::string_view v) {
        u64(v.size());
        raw(v.data(), v.size());
    }
    // A vector of plain numbers: u64 count, then the values as memory holds them.
    template <class T> void array(const std::vector<T>& v) {
        static_assert(std::is_arithmetic_v<T>);
        u64(v.size());
        raw(v.data(), v.size() * sizeof(T));
    }
    void raw(const void* data, size_t size) {
        if (size)
            bytes_.append(static_cast<const char*>(data), size);
    }
    const std::string& bytes() const { return bytes_; }
    std::string take() { return std::move(bytes_); }

private:
    std::string bytes_;
};

// Reads one section's payload; every read past its end throws ModelFileError, so a section
// reader needs no length checks of its own.
class FileReader {
public:
    FileReader(std::string_view data, std::string section)
        : data_(data), name_(std::move(section)) {}

    uint8_t u8() { return get<uint8_t>(); }
    uint32_t u32() { return get<uint32_t>(); }
    int32_t i32() { return get<int32_t>(); }
    uint64_t u64() { return get<uint64_t>(); }
    int64_t i64() { return get<int64_t>(); }
    double f64() { return get<double>(); }
    bool boolean() { return u8() != 0; }
    std::string str() {
        const uint64_t n = count(1);
        std::string v(data_.substr(pos_, n));
        pos_ += n;
        return v;
    }
    template <class T> std::vector<T> array() {
        static_assert(std::is_arithmetic_v<T>);
        const uint64_t n = count(sizeof(T));
        std::vector<T> v(n);
        if (n)
            std::memcpy(v.data(), data_.data() + pos_, n * sizeof(T));
        pos_ += n * sizeof(T);
        return v;
    }
    // A count of items of at least `item_size` bytes each that must still fit in the section:
    // a damaged count is refused before anything is allocated for it.
    uint64_t count(size_t item_size) {
        const uint64_t n = u64();
        if (item_size && n > remaining() / item_size)
            fail("a count of " + std::to_string(n) + " runs past its end");
        return n;
    }
    std::string_view raw(size_t size) {
        need(size);
        std::string_view v = data_.substr(pos_, size);
        pos_ += size;
        return v;
    }
    size_t remaining() const { return data_.size() - pos_; }
    bool at_end() const { return pos_ == data_.size(); }
    [[noreturn]] void fail(const std::string& what) const {
        throw ModelFileError("section '" + name_ + "': " + what);
    }

private:
    void need(size_t size) {
        if (size > remaining())
            fail("ends early");
    }
    template <class T> T get() {
        need(sizeof(T));
        T v;
        std::memcpy(&v, data_.data() + pos_, sizeof(T));
        pos_ += sizeof(T);
        return v;
    }

    std::string_view data_;
    std::string name_;
    size_t pos_ = 0;
};

// What installs a parsed section into the live model. It runs after every section of the file
// has parsed and after every module was cleared as by `reset`; it emits the created events of
// what it adds. It should not fail: a throw puts the whole model back as it was before the open.
using SectionCommit = std::function<void()>;

struct ModelFileSection {
    std::string name;      // unique key in the file ("geometry", "mesh")
    uint32_t version = 1;  // layout of this section; a file with a newer one is refused
    bool optional = false; // a kernel without this section may skip it rather than refuse the file
    // Writes the module's state.
    std::function<void(FileWriter&)> write;
    // Parses a payload written with layout `version` (at most the registered one) without
    // touching the model, and answers what installs it. Throws ModelFileError on bad content.
    std::function<SectionCommit(FileReader&, uint32_t version)> read;
};

// Registers (or replaces, by name) a section; sections are written in registration order.
void register_model_file_section(ModelFileSection section);
void unregister_model_file_section(const std::string& name);

// The whole model as the bytes of a native file.
std::string write_model_file();

// Checks `bytes` as a native file and, when every section parses, replaces the model with it:
// clears every undo participant as `reset` does (their delete events, then model_reset), forgets
// the undo history, installs the sections (their created events) and clears the modified state.
// False with `why` set, and the model untouched, when the file is refused.
bool read_model_file(std::string_view bytes, std::string& why);

} // namespace tarvo::kernel
