#include "settings/processingparams.h"

#include "settings/settingsschema.h"

#include <QVariantList>

namespace quillet {

QString FileFormat::extension(int format) {
    switch (format) {
    case Jpeg:
        return QStringLiteral("jpg");
    case Png:
        return QStringLiteral("png");
    case Tiff:
        return QStringLiteral("tiff");
    case WebP:
        return QStringLiteral("webp");
    case Avif:
        return QStringLiteral("avif");
    case JpegXl:
        return QStringLiteral("jxl");
    default:
        return {};
    }
}

QString FileFormat::displayName(int format) {
    switch (format) {
    case Png:
        return QStringLiteral("PNG");
    case Tiff:
        return QStringLiteral("TIFF");
    case WebP:
        return QStringLiteral("WebP");
    case Avif:
        return QStringLiteral("AVIF");
    case JpegXl:
        return QStringLiteral("JPEG XL");
    default:
        return QStringLiteral("JPEG");
    }
}

bool FileFormat::isModern(int format) {
    return format == WebP || format == Avif || format == JpegXl;
}

bool FileFormat::isLossy(int format) {
    return format == Jpeg || isModern(format);
}

bool FileFormat::hasLossless(int format) {
    return format == WebP || format == JpegXl;
}

ProcessingParams ProcessingParams::defaults() {
    ProcessingParams p;
    for (const SettingKey* key : SettingsSchema::group(SettingGroup::Processing))
        if (key->hasDefault())
            p.m_values.insert(key->key, key->defaultValue());
    return p;
}

int ProcessingParams::intValue(const QString& key) const {
    bool ok = false;
    const int v = m_values.value(key).toInt(&ok);
    return ok ? v : 0;
}

bool ProcessingParams::boolValue(const QString& key) const {
    const QVariant v = m_values.value(key);
    // Settings files hand booleans back as the text "true"/"false".
    if (v.typeId() == QMetaType::QString)
        return v.toString() == QLatin1String("true") || v.toString().toInt() != 0;
    return v.toBool();
}

QString ProcessingParams::stringValue(const QString& key) const {
    const QVariant v = m_values.value(key);
    return v.canConvert<QString>() ? v.toString() : QString();
}

QList<int> ProcessingParams::intList(const QString& key) const {
    QList<int> out;
    const QVariant v = m_values.value(key);
    // A one-element list can come back from an INI file as a plain value.
    const QVariantList list = v.typeId() == QMetaType::QString ? QVariantList{v} : v.toList();
    for (const QVariant& item : list) {
        bool ok = false;
        const int n = item.toInt(&ok);
        if (ok)
            out.append(n);
    }
    return out;
}

void ProcessingParams::setIntList(const QString& key, const QList<int>& value) {
    QVariantList list;
    for (int n : value)
        list.append(n);
    m_values.insert(key, list);
}

std::optional<RgbaColor> ProcessingParams::colorValue(const QString& key) const {
    if (!m_values.contains(key))
        return std::nullopt;
    return RgbaColor::fromVariant(m_values.value(key));
}

} // namespace quillet
