#include "graphics/ImageFormat.h"

#include <QBuffer>

#include <lz4frame.h>

#include <array>
#include <cstring>

namespace image_format {

namespace {

struct Row {
    const char* accepted;
    int code;
};

constexpr std::array<Row, 12> kNames{{
    {"rgb", Rgb},
    {"rgba", Rgba},
    {"bmp", Bmp},
    {"jpg", Jpg},
    {"jpeg", Jpg},
    {"png", Png},
    {"pnga", Pnga},
    {"ppm", Ppm},
    {"xbm", Xbm},
    {"xpm", Xpm},
    {"lz4", Lz4},
    {"lz4a", Lz4a},
}};

// Indexed by code.
constexpr std::array<const char*, 11> kHeader{
    {"rgb", "rgba", "bmp", "jpg", "png", "png", "ppm", "xbm", "xpm", "lz4", "lz4a"}};

QByteArray lz4_frame(const QImage& image) {
    const auto size = static_cast<size_t>(image.sizeInBytes());
    QByteArray payload;
    const size_t capacity = LZ4F_compressFrameBound(size, nullptr);
    payload.resize(static_cast<qsizetype>(capacity));
    const size_t written =
        LZ4F_compressFrame(payload.data(), capacity, image.constBits(), size, nullptr);
    // An error code would read as a size beyond the capacity: nothing is sent then.
    payload.resize(LZ4F_isError(written) ? 0 : static_cast<qsizetype>(written));
    return payload;
}

// The capture (blue, green, red, alpha; bottom row first) as true RGB or RGBA with the top row
// first, written to `out` in rows of `stride` bytes, in one pass: the same as rgbSwapped,
// mirrored and, for three bytes a pixel, a conversion to RGB888, without intermediate images.
// The padding at the end of each row is zeroed, so that what goes to a client is defined to the
// last byte.
void pack(const QImage& frame, bool three_bytes, uchar* out, qsizetype stride) {
    const int w = frame.width();
    const int h = frame.height();
    const int step = three_bytes ? 3 : 4;
    const qsizetype pad = stride - static_cast<qsizetype>(w) * step;
    for (int y = 0; y < h; ++y) {
        const uchar* in = frame.constScanLine(h - 1 - y);
        uchar* row = out + static_cast<qsizetype>(y) * stride;
        for (int x = 0; x < w; ++x, in += 4, row += step) {
            row[0] = in[2];
            row[1] = in[1];
            row[2] = in[0];
            if (!three_bytes)
                row[3] = in[3];
        }
        if (pad > 0)
            std::memset(row, 0, static_cast<size_t>(pad));
    }
}

QImage true_colour(const QImage& frame, bool three_bytes) {
    QImage out(frame.width(), frame.height(),
               three_bytes ? QImage::Format_RGB888 : QImage::Format_RGBA8888);
    pack(frame, three_bytes, out.bits(), out.bytesPerLine());
    return out;
}

// Raw payloads are packed straight into the message: a second frame-sized buffer and copy per
// frame cost as much as the packing itself.
QByteArray raw_bytes(const QImage& frame, bool three_bytes) {
    // QImage's own row length, so that the payload reads as its buffer would.
    const qsizetype stride = three_bytes ? (static_cast<qsizetype>(frame.width()) * 3 + 3) / 4 * 4
                                         : static_cast<qsizetype>(frame.width()) * 4;
    QByteArray payload(stride * frame.height(), Qt::Uninitialized);
    pack(frame, three_bytes, reinterpret_cast<uchar*>(payload.data()), stride);
    return payload;
}

} // namespace

int code_of(const QString& name) {
    const QByteArray lower = name.toLower().toUtf8();
    for (const Row& row : kNames) {
        if (lower == row.accepted)
            return row.code;
    }
    return Invalid;
}

QString header_name(int code) {
    if (code < 0 || code >= static_cast<int>(kHeader.size()))
        return QStringLiteral("Invalid");
    return QString::fromLatin1(kHeader[static_cast<size_t>(code)]);
}

QByteArray encode(const QImage& frame, int code) {
    if (code < 0 || code >= static_cast<int>(kHeader.size()) || frame.isNull())
        return {};
    if (code == Rgb || code == Rgba)
        return raw_bytes(frame, code == Rgb);
    const QImage image = true_colour(frame, code == Png || code == Lz4);
    switch (code) {
    case Lz4:
    case Lz4a:
        return lz4_frame(image);
    default:
        break;
    }
    QByteArray payload;
    QBuffer buffer(&payload);
    buffer.open(QIODevice::WriteOnly);
    // The writers' own defaults for quality and compression. A failed save leaves what it wrote,
    // usually nothing; the client then gets an empty payload rather than no frame.
    image.save(&buffer, header_name(code).toUpper().toLatin1().constData(), -1);
    return payload;
}

} // namespace image_format
