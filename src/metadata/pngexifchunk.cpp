#include "metadata/pngexifchunk.h"

#include <QFile>
#include <QtEndian>

namespace quillet {

namespace PngExifChunk {

namespace {

const QByteArray Signature("\x89PNG\r\n\x1a\n", 8);

// Larger blocks could not go into a JPEG's APP1 segment anyway.
constexpr quint32 LargestExif = 1 << 20;

} // namespace

QByteArray fromDevice(QIODevice& device) {
    if (device.read(Signature.size()) != Signature)
        return {};
    for (;;) {
        // Each chunk: length (big-endian, at most 2^31 - 1), type, data, CRC.
        char head[8];
        if (device.read(head, 8) != 8)
            return {};
        const quint32 length = qFromBigEndian<quint32>(head);
        const QByteArray type(head + 4, 4);
        if (length > 0x7FFFFFFFu || type == "IEND")
            return {};
        if (type == "eXIf") {
            if (length > LargestExif)
                return {};
            const QByteArray data = device.read(length);
            return data.size() == qsizetype(length) ? data : QByteArray();
        }
        if (!device.seek(device.pos() + qint64(length) + 4) || device.atEnd())
            return {};
    }
}

QByteArray fromFile(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return fromDevice(file);
}

} // namespace PngExifChunk

} // namespace quillet
