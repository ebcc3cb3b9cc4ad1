#pragma once
// The JSON grammar of RFC 8259, checked ahead of Qt's parser. Qt is lenient where the grammar is
// strict (it takes "1.", ".5", a leading byte-order mark, raw control characters in strings and
// unknown escapes) and strict where the grammar is lenient (it refuses numbers beyond the range
// of a double). This pass settles both: it refuses what the grammar refuses, and hands Qt a text
// in which every number that underflows a double has been written as zero. A number that
// overflows a double is grammatical but has no value the server could work with; it is reported
// as such, never rounded to the largest double in silence.
//
// Plain functions of their input; any thread.

#include <QByteArray>
#include <QString>

#include <cstddef>

namespace json_rpc::strict {

struct Checked {
    enum Status { Valid, SyntaxError, NumberOutOfRange, TooManyElements };
    Status status = Valid;
    // Only for Valid: whether the top-level value is an object or an array, and for an array
    // how many elements it holds.
    bool container = false;
    std::size_t top_level_elements = 0;
    // For Valid, when a number had to be rewritten: the text to hand to Qt instead. Empty
    // otherwise.
    QByteArray rewritten;
    // For the refusals: what was wrong, for the client to read.
    QString detail;
};

// `utf8`: one whole message. A top-level array with more than `max_elements` elements is
// refused as TooManyElements as soon as the count is passed, without reading the rest.
Checked check(const QByteArray& utf8, std::size_t max_elements);

} // namespace json_rpc::strict
