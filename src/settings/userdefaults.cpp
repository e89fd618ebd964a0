#include "settings/userdefaults.h"

#include <QSettings>
#include <QStandardPaths>

namespace quillet {

namespace {

// Interim table of registered defaults; replaced by the settings schema.
QVariant registeredDefault(const QString& key) {
    static const QVariantMap defaults = [] {
        QVariantMap map = ProcessingParams::defaults().values();
        map.remove(QStringLiteral("Name"));
        const QString home = QStandardPaths::writableLocation(QStandardPaths::HomeLocation);
        const QString desktop = QStandardPaths::writableLocation(QStandardPaths::DesktopLocation);
        const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
        map.insert(QStringLiteral("SingleFile"), 0);
        map.insert(QStringLiteral("RevealFolder"), true);
        map.insert(QStringLiteral("HideOnDeactivate"), false);
        map.insert(QStringLiteral("HideToolTips"), false);
        map.insert(QStringLiteral("BrushMetal"), false);
        map.insert(QStringLiteral("OnTheFlyFolder"), true);
        map.insert(QStringLiteral("Destinations"), QStringList{desktop, documents});
        map.insert(QStringLiteral("SelectedDestination"), 0);
        map.insert(QStringLiteral("ResolutionSet"), QStringList{"72", "144", "300", "600", "720"});
        map.insert(QStringLiteral("SelectedRename"), 0);
        map.insert(QStringLiteral("CopyNonImageFiles"), true);
        map.insert(QStringLiteral("SetCreationDate"), false);
        map.insert(QStringLiteral("SetModificationDate"), false);
        map.insert(QStringLiteral("HideExtension"), true);
        map.insert(QStringLiteral("CustomIcon"), false);
        map.insert(QStringLiteral("SelectedPreset"), 0);
        map.insert(QStringLiteral("ActivityLogVisible"), false);
        map.insert(QStringLiteral("ShowAutoRotateHint"), true);
        map.insert(QStringLiteral("ShowCustomIconHint"), true);
        Q_UNUSED(home);
        return map;
    }();
    return defaults.value(key);
}

} // namespace

QVariant UserDefaults::value(const QString& key) const {
    if (m_store.contains(key))
        return m_store.value(key);
    return registeredDefault(key);
}

bool UserDefaults::boolValue(const QString& key) const {
    return ProcessingParams(QVariantMap{{key, value(key)}}).boolValue(key);
}

int UserDefaults::intValue(const QString& key) const {
    return ProcessingParams(QVariantMap{{key, value(key)}}).intValue(key);
}

QString UserDefaults::stringValue(const QString& key) const {
    return value(key).toString();
}

QStringList UserDefaults::stringList(const QString& key) const {
    const QVariant v = value(key);
    // An INI file hands a one-element list back as a plain string.
    return v.typeId() == QMetaType::QString ? QStringList{v.toString()} : v.toStringList();
}

void UserDefaults::setValue(const QString& key, const QVariant& value) {
    m_store.setValue(key, value);
}

ProcessingParams UserDefaults::processingParams() const {
    ProcessingParams params = ProcessingParams::defaults();
    for (auto it = params.values().begin(); it != params.values().end(); ++it)
        if (m_store.contains(it.key()))
            it.value() = m_store.value(it.key());
    if (m_store.contains(QLatin1String(ParamKey::WatermarkPath)))
        params.setString(ParamKey::WatermarkPath,
                         m_store.value(QLatin1String(ParamKey::WatermarkPath)).toString());
    return params;
}

void UserDefaults::setProcessingParams(const ProcessingParams& params) {
    for (auto it = params.values().begin(); it != params.values().end(); ++it)
        if (it.key() != QLatin1String(ParamKey::Name) && it.key() != QLatin1String(ParamKey::Id))
            m_store.setValue(it.key(), it.value());
}

} // namespace quillet
