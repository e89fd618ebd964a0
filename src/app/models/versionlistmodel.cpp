#include "app/models/versionlistmodel.h"

#include "app/models/requestsummary.h"
#include "settings/presetstore.h"
#include "settings/settingsschema.h"
#include "settings/userdefaults.h"

namespace quillet {

VersionListModel::VersionListModel(QSettings& store, UserDefaults& defaults, QObject* parent)
    : QObject(parent), m_store(store), m_defaults(defaults) {}

QStringList VersionListModel::entries() const {
    return VersionList::effective(m_defaults.stringList(QLatin1String(StoreKey::OutputVersions)));
}

QList<VersionListModel::Row> VersionListModel::rows(const ProcessingRequest& current) const {
    const PresetStore presets = PresetStore::load(m_store);
    QList<Row> rows;
    for (const QString& item : entries()) {
        const VersionList::Entry e = VersionList::parse(item);
        Row row;
        row.suffix = e.suffix;
        const int index = e.isCurrent() ? -1 : presets.indexOfName(e.preset);
        row.missing = !e.isCurrent() && index < 0;
        row.title = e.isCurrent() ? tr("Current settings") : e.preset;
        if (e.isCurrent())
            row.makes = RequestSummary::of(current);
        else if (!row.missing)
            row.makes = RequestSummary::of(ProcessingRequest::fromRecord(presets.presets().at(index)));
        if (row.missing)
            row.placement = tr("No preset of this name");
        else if (!e.suffix.isEmpty())
            row.placement = tr("Names ending in '%1'").arg(e.suffix);
        else if (e.isCurrent())
            row.placement = tr("Into the destination");
        else
            row.placement =
                tr("Into the folder '%1'").arg(QString(e.preset).replace(QLatin1Char('/'), QLatin1Char(':')));
        rows.append(row);
    }
    return rows;
}

QStringList VersionListModel::presetNames() const {
    return PresetStore::load(m_store).names();
}

bool VersionListModel::canAddCurrent() const {
    for (const QString& item : entries())
        if (VersionList::parse(item).isCurrent())
            return false;
    return true;
}

void VersionListModel::add(const QString& preset) {
    store(entries() << preset);
}

void VersionListModel::remove(int row) {
    QStringList list = entries();
    if (list.size() <= 1 || row < 0 || row >= list.size())
        return;
    list.removeAt(row);
    store(list);
}

void VersionListModel::setSuffix(int row, const QString& suffix) {
    QStringList list = entries();
    if (row < 0 || row >= list.size())
        return;
    VersionList::Entry e = VersionList::parse(list[row]);
    // The entry's text form ends the suffix at nothing; a colon or comma in
    // it would read back as another entry.
    e.suffix = QString(suffix).remove(QLatin1Char(',')).remove(QLatin1Char(':')).trimmed();
    list[row] = VersionList::text(e);
    store(list);
}

VersionList::Resolved VersionListModel::resolve(const ProcessingRequest& current) const {
    return VersionList::resolve(entries(), PresetStore::load(m_store), current);
}

void VersionListModel::store(const QStringList& entries) {
    // The current settings alone are stored as nothing, as a new store has it.
    const bool plain = entries.size() == 1 && entries.first() == QLatin1String(VersionList::CurrentSettings);
    m_defaults.setValue(QLatin1String(StoreKey::OutputVersions), plain ? QStringList() : entries);
    Q_EMIT changed();
}

} // namespace quillet
