#include "settings/settingsschema.h"

#include "settings/settingstable.h"

#include <QHash>

namespace quillet {

namespace {

struct Index {
    QList<SettingKey> keys = settingsTable();
    QHash<QString, qsizetype> positions;

    Index() {
        for (qsizetype i = 0; i < keys.size(); ++i)
            positions.insert(keys.at(i).key, i);
    }
};

const Index& index() {
    static const Index built;
    return built;
}

} // namespace

const QList<SettingKey>& SettingsSchema::keys() {
    return index().keys;
}

const SettingKey* SettingsSchema::find(const QString& key) {
    const Index& i = index();
    const auto found = i.positions.constFind(key);
    return found == i.positions.cend() ? nullptr : &i.keys.at(*found);
}

const SettingKey& SettingsSchema::entry(const char* key) {
    if (const SettingKey* found = find(QLatin1String(key)))
        return *found;
    Q_ASSERT_X(false, "SettingsSchema::entry", key);
    static thread_local SettingKey unknown;
    unknown = SettingKey{};
    unknown.key = QLatin1String(key);
    unknown.type = SettingType::String;
    return unknown;
}

QList<const SettingKey*> SettingsSchema::group(SettingGroup group) {
    QList<const SettingKey*> out;
    for (const SettingKey& k : keys())
        if (k.group == group)
            out.append(&k);
    return out;
}

} // namespace quillet
