#pragma once
// Watches the bytes a client sends, in order, for the one rule of WebSocket framing that Qt 6.4's
// server doesn't enforce: every frame from a client must be masked. The stream is an HTTP
// handshake up to its blank line, then frames back to back; the checker follows frame headers
// (the mask bit, 7-, 16- or 64-bit lengths, the masking key) and skips payloads, and it never
// buffers, so bytes may arrive split anywhere. What the handshake says, and whether the frames
// are otherwise well formed, is Qt's business.
//
// Pure and single-threaded: the owner feeds it from one thread.

#include <cstddef>
#include <cstdint>

class ClientFrameChecker {
public:
    // Feeds the next `size` bytes of the stream. Answers how many of them belong in front of the
    // first unmasked frame: all of them while the stream is sound; on the call that meets the
    // second header byte of an unmasked frame, the bytes before it; after that, none.
    std::size_t feed(const char* data, std::size_t size);
    // An unmasked frame has been seen; the connection must be closed as a protocol error.
    bool violated() const { return state == State::Violated; }

private:
    enum class State { Handshake, Opcode, Length, ExtendedLength, MaskingKey, Payload, Violated };

    State state = State::Handshake;
    // Handshake: how much of "\r\n\r\n" the last bytes matched.
    int matched = 0;
    // ExtendedLength and MaskingKey: bytes still to come of the field.
    int field_left = 0;
    std::uint64_t length = 0;
    std::uint64_t payload_left = 0;
};
