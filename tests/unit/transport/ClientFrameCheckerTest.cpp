// The client frame checker over whole streams fed in every way of splitting them in two and byte
// by byte: the answer must not depend on where reads end.

#include "transport/ClientFrameChecker.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace {

const std::string kHandshake = "GET / HTTP/1.1\r\nHost: x\r\nUpgrade: websocket\r\n\r\n";

// A frame header with the given opcode and payload length, masked or not, and its payload.
std::string frame(unsigned char opcode, std::uint64_t length, bool masked) {
    std::string out(1, static_cast<char>(0x80 | opcode));
    const char mask_bit = masked ? '\x80' : '\x00';
    if (length < 126) {
        out += static_cast<char>(mask_bit | static_cast<char>(length));
    } else if (length <= 0xffff) {
        out += static_cast<char>(mask_bit | 126);
        for (int shift = 8; shift >= 0; shift -= 8)
            out += static_cast<char>((length >> shift) & 0xff);
    } else {
        out += static_cast<char>(mask_bit | 127);
        for (int shift = 56; shift >= 0; shift -= 8)
            out += static_cast<char>((length >> shift) & 0xff);
    }
    if (masked)
        out += "\x01\x02\x03\x04";
    // Payload bytes that would read as unmasked headers if the checker lost its place.
    out += std::string(static_cast<std::size_t>(length), '\x01');
    return out;
}

// Feeds `stream` in the pieces that `cuts` (ascending offsets) make and answers how many bytes
// the checker let through, or npos if it let all through.
std::size_t passed(const std::string& stream, const std::vector<std::size_t>& cuts) {
    ClientFrameChecker checker;
    std::size_t from = 0;
    std::size_t total = 0;
    std::vector<std::size_t> ends = cuts;
    ends.push_back(stream.size());
    for (const std::size_t to : ends) {
        const std::size_t got = checker.feed(stream.data() + from, to - from);
        total += got;
        if (got != to - from) {
            EXPECT_TRUE(checker.violated());
            // Nothing passes once a violation is seen.
            EXPECT_EQ(checker.feed(stream.data() + to, stream.size() - to), 0u);
            return total;
        }
        from = to;
    }
    EXPECT_FALSE(checker.violated());
    return std::string::npos;
}

TEST(ClientFrameChecker, UnmaskedFramesAreCutAtTheirSecondByteWhereverReadsEnd) {
    const std::string masked_all = frame(0x1, 5, true) + frame(0x2, 300, true) +
                                   frame(0x0, 70000, true) + frame(0x9, 0, true) +
                                   frame(0x8, 2, true);
    const struct {
        const char* name;
        std::string stream;
        std::size_t expected; // npos: everything passes
    } cases[] = {
        {"masked frames of every length form", kHandshake + masked_all, std::string::npos},
        // A blank line inside the handshake is only "\r\n\r\n": "\r\r\n\n" and "\n\n" are not.
        {"handshake lookalikes", "GET /\r\r\n\nA\n\nB\r\n\r\r\n\r\n" + frame(0x1, 3, true),
         std::string::npos},
        {"handshake alone, unmasked-looking bytes inside it", "GET /\x81\x05 HTTP/1.1\r\n",
         std::string::npos},
        {"pipelined unmasked text", kHandshake + frame(0x1, 5, false), kHandshake.size() + 1},
        {"unmasked binary after masked", kHandshake + masked_all + frame(0x2, 3, false),
         kHandshake.size() + masked_all.size() + 1},
        {"unmasked continuation, 16-bit length", kHandshake + frame(0x0, 200, false),
         kHandshake.size() + 1},
        {"unmasked ping", kHandshake + frame(0x9, 0, false), kHandshake.size() + 1},
        {"unmasked close, 64-bit length", kHandshake + frame(0x8, 70000, false),
         kHandshake.size() + 1},
    };
    for (const auto& c : cases) {
        const std::string& s = c.stream;
        EXPECT_EQ(passed(s, {}), c.expected) << c.name;
        std::vector<std::size_t> every_byte;
        for (std::size_t i = 1; i < s.size(); ++i)
            every_byte.push_back(i);
        EXPECT_EQ(passed(s, every_byte), c.expected) << c.name << ", byte by byte";
        // Two pieces, cut anywhere in the first 200 bytes (the headers) and at the end.
        for (std::size_t cut = 1; cut < s.size() && cut < 200; ++cut)
            ASSERT_EQ(passed(s, {cut}), c.expected) << c.name << ", cut at " << cut;
        for (std::size_t cut = s.size() > 200 ? s.size() - 200 : 1; cut < s.size(); ++cut)
            ASSERT_EQ(passed(s, {cut}), c.expected) << c.name << ", cut at " << cut;
    }
}

} // namespace
