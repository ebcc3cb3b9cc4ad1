#pragma once
// The image formats a view can be delivered in, and the encoding of one frame. A format is named
// by the client when it creates the view ("rgb", "png", "lz4", ...), kept as a code, and written
// back as the "format" field of each image header. Raw and LZ4 payloads carry QImage's buffer as
// it is: 3-byte rows are padded to a multiple of 4 bytes.
//
// Threads: pure functions, any thread.

#include <QByteArray>
#include <QImage>
#include <QString>

namespace image_format {

enum Code {
    Invalid = -1,
    Rgb = 0,
    Rgba = 1,
    Bmp = 2,
    Jpg = 3,
    Png = 4,
    Pnga = 5,
    Ppm = 6,
    Xbm = 7,
    Xpm = 8,
    Lz4 = 9,
    Lz4a = 10,
};

// The code of a name given to create_view, compared after lower-casing; Invalid for any other.
int code_of(const QString& name);
// The "format" field of the header: "jpeg" comes back as "jpg", "pnga" as "png"; "Invalid" for
// a code outside the table.
QString header_name(int code);
// The payload of one frame. `frame` is the stored capture: RGBA8888 memory holding the library's
// blue, green, red, alpha order, bottom row first. The payload is true RGB(A) with the top row
// first, in the format of `code`; empty for Invalid or when a writer fails.
QByteArray encode(const QImage& frame, int code);

} // namespace image_format
