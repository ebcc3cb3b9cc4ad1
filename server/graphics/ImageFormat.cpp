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

QByteArray raw_bytes(const QImage& image) {
    return QByteArray(reinterpret_cast<const char*>(image.constBits()),
                      static_cast<qsizetype>(image.sizeInBytes()));
}

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
    QImage image = frame.rgbSwapped();
    image.mirror(false, true);
    if (code == Rgb || code == Png || code == Lz4) {
        image = image.convertToFormat(QImage::Format_RGB888);
        // The conversion leaves the padding at the end of each row as it found the memory;
        // what goes to a client is defined to the last byte.
        const qsizetype used = static_cast<qsizetype>(image.width()) * 3;
        const qsizetype pad = image.bytesPerLine() - used;
        for (int y = 0; pad > 0 && y < image.height(); ++y)
            std::memset(image.scanLine(y) + used, 0, static_cast<size_t>(pad));
    }
    switch (code) {
    case Rgb:
    case Rgba:
        return raw_bytes(image);
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
