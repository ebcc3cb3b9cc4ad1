#include "ClientFrameChecker.h"

#include <algorithm>

std::size_t ClientFrameChecker::feed(const char* data, std::size_t size) {
    std::size_t at = 0;
    while (at < size) {
        const auto byte = static_cast<unsigned char>(data[at]);
        switch (state) {
        case State::Handshake:
            // On a mismatch the only prefix of "\r\n\r\n" that can still be under way is a '\r'.
            if (byte == static_cast<unsigned char>("\r\n\r\n"[matched]))
                ++matched;
            else
                matched = byte == '\r' ? 1 : 0;
            if (matched == 4)
                state = State::Opcode;
            ++at;
            break;
        case State::Opcode:
            state = State::Length;
            ++at;
            break;
        case State::Length:
            if ((byte & 0x80) == 0) {
                state = State::Violated;
                return at;
            }
            length = byte & 0x7f;
            if (length >= 126) {
                field_left = length == 126 ? 2 : 8;
                length = 0;
                state = State::ExtendedLength;
            } else {
                field_left = 4;
                state = State::MaskingKey;
            }
            ++at;
            break;
        case State::ExtendedLength:
            length = (length << 8) | byte;
            if (--field_left == 0) {
                state = State::MaskingKey;
                field_left = 4;
            }
            ++at;
            break;
        case State::MaskingKey:
            if (--field_left == 0) {
                payload_left = length;
                state = payload_left > 0 ? State::Payload : State::Opcode;
            }
            ++at;
            break;
        case State::Payload: {
            const std::uint64_t skip = std::min<std::uint64_t>(payload_left, size - at);
            payload_left -= skip;
            at += static_cast<std::size_t>(skip);
            if (payload_left == 0)
                state = State::Opcode;
            break;
        }
        case State::Violated:
            return 0;
        }
    }
    return size;
}
