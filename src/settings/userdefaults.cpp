#include "settings/userdefaults.h"

#include "settings/settingsschema.h"
#include "support/settingsstore.h"

#include <QSettings>

namespace quillet {

namespace {

bool isList(SettingType type) {
    return type == SettingType::IntList || type == SettingType::StringList ||
           type == SettingType::CreatorList || type == SettingType::RecordList;
}

} // namespace

QVariant UserDefaults::registeredDefault(const QString& key) {
    const SettingKey* entry = SettingsSchema::find(key);
    return entry && entry->registered ? entry->defaultValue() : QVariant();
}

QVariant UserDefaults::value(const QString& key) const {
    const SettingKey* entry = SettingsSchema::find(key);
    if (!m_store.contains(key))
        return entry && entry->registered ? entry->defaultValue() : QVariant();
    QVariant stored = m_store.value(key);
    if (!entry)
        return stored;
    // Older stores hold an empty list as @Invalid(), which reads as no value;
    // lists are now written as empty text, which reads as an empty list.
    if (!stored.isValid() && isList(entry->type))
        stored = QString();
    if (const auto good = entry->checked(stored))
        return *good;
    const QString problem = entry->refusal(stored);
    if (!m_problems.contains(problem))
        m_problems.append(problem);
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
    SettingsStore::setValue(m_store, key, value);
}

ProcessingParams UserDefaults::processingParams() const {
    ProcessingParams params;
    for (const SettingKey* key : SettingsSchema::group(SettingGroup::Processing)) {
        // The store keeps no "Name": the record gets the reset record's.
        const QVariant v =
            key->registered || m_store.contains(key->key) ? value(key->key) : key->defaultValue();
        if (v.isValid())
            params.values().insert(key->key, v);
    }
    return params;
}

void UserDefaults::setProcessingParams(const ProcessingParams& params) {
    for (auto it = params.values().begin(); it != params.values().end(); ++it)
        if (it.key() != QLatin1String(ParamKey::Name) && it.key() != QLatin1String(ParamKey::Id))
            SettingsStore::setValue(m_store, it.key(), it.value());
}

} // namespace quillet
