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

QString VersionListModel::title(int row) const {
    const VersionList::Entry e = entry(row);
    return e.isCurrent() ? tr("Current settings") : e.preset;
}

QString VersionListModel::placement(int row) const {
    const VersionList::Entry e = entry(row);
    if (isMissing(row))
        return tr("No preset of this name");
    if (!e.suffix.isEmpty())
        return tr("Names ending in '%1'").arg(e.suffix);
    if (e.isCurrent())
        return tr("Into the destination");
    return tr("Into the folder '%1'").arg(QString(e.preset).replace(QLatin1Char('/'), QLatin1Char(':')));
}

QString VersionListModel::makes(int row, const ProcessingRequest& current) const {
    const VersionList::Entry e = entry(row);
    if (e.isCurrent())
        return RequestSummary::of(current);
    const std::optional<ProcessingParams> preset = PresetStore::lookup(m_store, e.preset);
    return preset ? RequestSummary::of(ProcessingRequest::fromRecord(*preset)) : QString();
}

bool VersionListModel::isMissing(int row) const {
    const VersionList::Entry e = entry(row);
    return !e.isCurrent() && !presetNames().contains(e.preset);
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
