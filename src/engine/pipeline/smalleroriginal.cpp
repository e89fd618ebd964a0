#include "engine/pipeline/smalleroriginal.h"

#include "settings/processingparams.h"

#include <QFile>

namespace quillet {

namespace SmallerOriginal {

int formatOfBytes(const QByteArray& head) {
    if (head.startsWith("\xFF\xD8\xFF"))
        return FileFormat::Jpeg;
    if (head.startsWith("\x89PNG\r\n\x1A\n"))
        return FileFormat::Png;
    if (head.startsWith(QByteArray("II*\0", 4)) || head.startsWith(QByteArray("MM\0*", 4)))
        return FileFormat::Tiff;
    if (head.startsWith("RIFF") && head.mid(8, 4) == "WEBP")
        return FileFormat::WebP;
    // An ISO media file whose major brand is AVIF's.
    if (head.mid(4, 4) == "ftyp" && (head.mid(8, 4) == "avif" || head.mid(8, 4) == "avis"))
        return FileFormat::Avif;
    // A bare JPEG XL codestream, or the container's signature box.
    if (head.startsWith("\xFF\x0A") || head.startsWith(QByteArray("\0\0\0\x0CJXL \r\n\x87\n", 12)))
        return FileFormat::JpegXl;
    return 0;
}

std::optional<QByteArray> ifSmaller(const QString& input, int format, qint64 outputSize) {
    QFile file(input);
    if (file.size() >= outputSize || !file.open(QIODevice::ReadOnly))
        return std::nullopt;
    if (formatOfBytes(file.peek(16)) != format)
        return std::nullopt;
    QByteArray bytes = file.readAll();
    if (bytes.isEmpty() || bytes.size() >= outputSize || file.error() != QFileDevice::NoError)
        return std::nullopt;
    return bytes;
}

} // namespace SmallerOriginal

} // namespace quillet
