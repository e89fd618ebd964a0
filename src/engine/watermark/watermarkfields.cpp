#include "engine/watermark/watermarkfields.h"

#include "metadata/kvimageinfo.h"
#include "settings/processingparams.h"

#include <charconv>

namespace quillet {

namespace {

// printf's "%.*f" without its locale: a German desktop must still get "1.5MB".
QString fixed(double value, int decimals) {
    char buffer[64];
    const auto result =
        std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed, decimals);
    if (result.ec != std::errc())
        return QString();
    return QString::fromLatin1(buffer, int(result.ptr - buffer));
}

std::optional<QString> unlessEmpty(const QString& text) {
    if (text.isEmpty())
        return std::nullopt;
    return text;
}

QString fileSize(qint64 bytes) {
    if (bytes <= 1023)
        return QString::number(bytes);
    if (bytes <= 0xFFFFF)
        return QString::number(bytes / 1024) + QStringLiteral("KB");
    // Single precision on purpose: this is how sizes have always been shown.
    const float megabytes = float(bytes) * (1.0f / 1024.0f) * (1.0f / 1024.0f);
    return fixed(megabytes, 1) + QStringLiteral("MB");
}

QString lastWord(const QString& text) {
    const QStringList words = text.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    return words.isEmpty() ? QString() : words.last();
}

} // namespace

std::optional<QString> imageInfoField(const KVImageInfo& info, int field) {
    switch (field) {
    case TextField::FileName:
        return unlessEmpty(info.name());
    case TextField::Dimensions:
        return QStringLiteral("%1x%2").arg(info.width()).arg(info.height());
    case TextField::FileSize:
        return fileSize(info.size());
    case TextField::CameraModel:
        return unlessEmpty(lastWord(info.cameraModel()));
    case TextField::CreationDate:
        return unlessEmpty(info.creationDateString());
    case TextField::Iso:
        return info.isoInt() > 0 ? QStringLiteral("iso%1").arg(info.isoInt()) : QStringLiteral("iso-");
    case TextField::Flash:
        return info.flashUsedBool() ? QStringLiteral("Flash") : QStringLiteral("No Flash");
    case TextField::FocalLength:
        return fixed(info.focalLengthFloat(), 0) + QStringLiteral("mm");
    case TextField::FocalLength35:
        return fixed(info.focalLength35Float(), 0) + QStringLiteral("mm");
    case TextField::ExposureTime:
        return unlessEmpty(info.exposureTime());
    case TextField::Aperture:
        return unlessEmpty(info.aperture());
    case TextField::Distance:
        return unlessEmpty(info.distance());
    case TextField::ExposureBias:
        return fixed(info.exposureBias(), 0);
    case TextField::Caption:
        return unlessEmpty(info.caption());
    case TextField::Comment:
        return unlessEmpty(info.comment());
    default:
        return std::nullopt;
    }
}

QStringList watermarkTexts(const KVImageInfo& info, const QList<int>& fields) {
    QStringList texts;
    for (const int field : fields) {
        if (const std::optional<QString> text = imageInfoField(info, field))
            texts.append(*text);
    }
    return texts;
}

} // namespace quillet
