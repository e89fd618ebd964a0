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
    default:
        return {};
    }
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

qint64 ProcessingParams::sizeLimitBytes() const {
    if (!boolValue(QString::fromLatin1(ParamKey::HasFizeLimit)))
        return 0;
    return qint64(sizeLimitField()) * 1024;
}

int ProcessingParams::sizeLimitField() const {
    const int kb = intValue(QString::fromLatin1(ParamKey::SizeLimit));
    return kb == 0 ? 100 : kb;
}

int ProcessingParams::resolution() const {
    const int dpi = intValue(QString::fromLatin1(ParamKey::Resolution));
    return dpi < 1 ? 72 : dpi;
}

RgbaColor ProcessingParams::textBackgroundColor() const {
    if (auto c = colorValue(QString::fromLatin1(ParamKey::DynWatermarkBackgroundColor)))
        return *c;
    return RgbaColor::white(intValue(QString::fromLatin1(ParamKey::DynWatermarkBackgroundOpacity)) / 100.0);
}

RgbaColor ProcessingParams::backgroundColor() const {
    return colorValue(QString::fromLatin1(ParamKey::BackgroundColor)).value_or(RgbaColor::white());
}

std::optional<RgbaColor> ProcessingParams::canvasBackground() const {
    if (intValue(QString::fromLatin1(ParamKey::FileFormat)) != FileFormat::Jpeg &&
        boolValue(QString::fromLatin1(ParamKey::PreserveTransparency)))
        return std::nullopt;
    return backgroundColor();
}

} // namespace quillet
