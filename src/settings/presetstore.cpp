#include "settings/presetstore.h"

#include "settings/presetnames.h"
#include "settings/settingsschema.h"
#include "support/settingsstore.h"

#include <QSettings>

#include <climits>

namespace quillet {

namespace {

QString nameOf(const ProcessingParams& preset) {
    return preset.stringValue(QString::fromLatin1(ParamKey::Name));
}

int idOf(const ProcessingParams& preset) {
    return preset.intValue(QString::fromLatin1(ParamKey::Id));
}

QList<ProcessingParams> readRecords(QSettings& settings) {
    QList<ProcessingParams> records;
    if (settings.contains(QLatin1String(PresetStore::PresetsKey))) {
        // Anything in the list that is not a record (a hand-edited file) is dropped.
        const QVariantList list = settings.value(QLatin1String(PresetStore::PresetsKey)).toList();
        for (const QVariant& item : list)
            if (item.typeId() == QMetaType::QVariantMap)
                records.append(ProcessingParams(item.toMap()));
        return records;
    }
    const QVariantMap old = settings.value(QLatin1String(PresetStore::OldPresetsKey)).toMap();
    for (auto it = old.cbegin(); it != old.cend(); ++it) {
        ProcessingParams record(it.value().toMap());
        record.setString(ParamKey::Name, it.key());
        records.append(record);
    }
    return records;
}

// Checks the record keys of a stored preset against the settings schema. A
// refused value goes back to the reset record's value for its key (or goes,
// for a key without one), with a message: the preset stays usable, and the
// batch never sees a value the rest of the program would refuse. The corrected
// record is what the load writes back. "Name" and "Id" are left to the
// store's own rules, and keys the record does not know are carried as they are.
void checkRecord(ProcessingParams& preset, int position, QStringList& problems) {
    QVariantMap& values = preset.values();
    for (auto it = values.begin(); it != values.end();) {
        const SettingKey* entry = SettingsSchema::find(it.key());
        if (!entry || entry->group != SettingGroup::Processing || it.key() == QLatin1String(ParamKey::Name)) {
            ++it;
            continue;
        }
        if (const auto good = entry->checked(it.value())) {
            it.value() = *good;
            ++it;
            continue;
        }
        const QString name = nameOf(preset);
        const QString which = name.isEmpty() ? QStringLiteral("preset %1").arg(position)
                                             : QStringLiteral("preset \"%1\"").arg(name);
        problems.append(QStringLiteral("%1: %2").arg(which, entry->refusal(it.value())));
        if (entry->hasDefault()) {
            it.value() = entry->defaultValue();
            ++it;
        } else {
            it = values.erase(it);
        }
    }
}

} // namespace

PresetStore PresetStore::load(QSettings& settings) {
    PresetStore store;
    store.m_presets = readRecords(settings);
    for (int i = 0; i < store.count(); ++i)
        checkRecord(store.m_presets[i], i + 1, store.m_problems);

    QStringList seen;
    for (ProcessingParams& preset : store.m_presets) {
        QString name = nameOf(preset);
        // Nameless presets stay so; the menu titles them "Untitled n".
        if (name.isEmpty())
            continue;
        if (seen.contains(name)) {
            while (seen.contains(name))
                name += QLatin1String(" copy");
            preset.setString(ParamKey::Name, name);
        }
        seen.append(name);
    }

    int largest = 0;
    for (const ProcessingParams& preset : std::as_const(store.m_presets))
        largest = std::max(largest, idOf(preset));
    store.m_nextId = largest == INT_MAX ? INT_MAX : largest + 1;
    for (ProcessingParams& preset : store.m_presets)
        if (idOf(preset) < 1)
            preset.setInt(ParamKey::Id, store.takeNextId());

    store.save(settings);
    return store;
}

std::optional<ProcessingParams> PresetStore::lookup(QSettings& settings, const QString& name) {
    const PresetStore store = load(settings);
    const int index = store.indexOfName(name);
    if (index < 0)
        return std::nullopt;
    return store.m_presets.at(index);
}

bool PresetStore::save(QSettings& settings) const {
    QVariantList list;
    for (const ProcessingParams& preset : m_presets)
        list.append(preset.values());
    SettingsStore::setValue(settings, QLatin1String(PresetsKey), list);
    settings.sync();
    return settings.status() == QSettings::NoError;
}

int PresetStore::takeNextId() {
    // Past INT_MAX ids would repeat; a store never gets near it by use.
    return m_nextId == INT_MAX ? INT_MAX : m_nextId++;
}

QStringList PresetStore::names() const {
    QStringList out;
    for (const ProcessingParams& preset : m_presets)
        out.append(nameOf(preset));
    return out;
}

QStringList PresetStore::menuTitles() const {
    return PresetNames::menuTitles(names());
}

int PresetStore::indexOfName(const QString& name) const {
    if (name.isEmpty())
        return -1;
    return int(names().indexOf(name));
}

int PresetStore::indexOfId(int id) const {
    for (int i = 0; i < count(); ++i)
        if (idOf(m_presets.at(i)) == id)
            return i;
    return -1;
}

bool PresetStore::nameIsAcceptable(const QString& name) const {
    return PresetNames::isAcceptable(name, names());
}

QString PresetStore::duplicateNameForPreset(int index) const {
    return PresetNames::duplicateName(validIndex(index) ? nameOf(m_presets.at(index)) : QString(), names());
}

int PresetStore::addPreset(const QString& name, const ProcessingParams& current) {
    const QString trimmed = name.trimmed();
    if (!nameIsAcceptable(trimmed))
        return -1;
    ProcessingParams preset = current;
    preset.setInt(ParamKey::Id, takeNextId());
    preset.setString(ParamKey::Name, trimmed);
    m_presets.append(preset);
    return count() - 1;
}

bool PresetStore::setPreset(int index, const ProcessingParams& current, const QString& title) {
    if (!validIndex(index))
        return false;
    ProcessingParams preset = current;
    preset.remove(ParamKey::Id);
    preset.setString(ParamKey::Name, title);
    m_presets[index] = preset;
    return true;
}

bool PresetStore::renamePreset(int index, const QString& name) {
    const QString trimmed = name.trimmed();
    if (!validIndex(index) || !nameIsAcceptable(trimmed))
        return false;
    m_presets[index].setString(ParamKey::Name, trimmed);
    return true;
}

int PresetStore::duplicatePreset(int index) {
    if (!validIndex(index))
        return -1;
    ProcessingParams copy = m_presets.at(index);
    copy.setString(ParamKey::Name, duplicateNameForPreset(index));
    copy.setInt(ParamKey::Id, takeNextId());
    m_presets.insert(index + 1, copy);
    return index + 1;
}

bool PresetStore::removePreset(int index) {
    if (!validIndex(index))
        return false;
    m_presets.removeAt(index);
    return true;
}

std::optional<int> PresetStore::moveTarget(int from, int to) {
    if (from == to || !validIndex(from) || to < 0 || to > count())
        return std::nullopt;
    const ProcessingParams moved = m_presets.at(from);
    if (from < to) {
        m_presets.insert(to, moved);
        m_presets.removeAt(from);
        return to - 1;
    }
    m_presets.removeAt(from);
    m_presets.insert(to, moved);
    return to;
}

int PresetStore::importPreset(ProcessingParams preset) {
    QString name = nameOf(preset).trimmed();
    if (!nameIsAcceptable(name))
        name = PresetNames::duplicateName(name, names());
    preset.setString(ParamKey::Name, name);
    preset.setInt(ParamKey::Id, takeNextId());
    m_presets.append(preset);
    return count() - 1;
}

} // namespace quillet
