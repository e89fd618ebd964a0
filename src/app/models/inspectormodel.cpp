#include "app/models/inspectormodel.h"

#include "app/models/imageandtext.h"
#include "app/models/inspectorcolumns.h"
#include "app/models/renamingmodel.h"

#include <QDataStream>
#include <QIODevice>
#include <QMimeData>
#include <QSet>
#include <QUrl>

#include <algorithm>

namespace quillet {

namespace {

int thumbnailColumn() {
    static const int column = InspectorColumns::indexOf(QLatin1String(InspectorColumns::ThumbnailedName));
    return column;
}

int outputColumn() {
    static const int column = InspectorColumns::indexOf(QLatin1String(InspectorColumns::OutputFilename));
    return column;
}

} // namespace

InspectorModel::InspectorModel(RenamingModel& renaming, QObject* parent)
    : QAbstractTableModel(parent), m_renaming(renaming) {
    // When the window falls behind, what has come in meanwhile goes in as
    // one: the same rows in the same places, for one update of the view.
    m_loader = std::make_unique<InspectorLoader>([this](InspectorLoader::Delivery delivery) {
        const std::lock_guard lock(m_inboxMutex);
        m_inbox.append(std::move(delivery));
        if (m_inbox.size() == 1)
            m_calls.post([this] { takeDeliveries(); });
    });
    connect(&renaming, &RenamingModel::summaryChanged, this, &InspectorModel::outputNamesChanged);
    connect(&m_thumbnails, &InspectorThumbnails::thumbnailsArrived, this, &InspectorModel::thumbnailsArrived);
}

// The loader goes first: its deliveries reach this object until it has stopped.
InspectorModel::~InspectorModel() {
    m_loader.reset();
}

int InspectorModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : int(m_entries.size());
}

int InspectorModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : InspectorColumns::count();
}

QVariant InspectorModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= m_entries.size() || index.column() >= InspectorColumns::count())
        return {};
    const KVImageInfo& info = m_entries[index.row()];
    const InspectorColumns::Column& column = InspectorColumns::all()[size_t(index.column())];
    switch (role) {
    case Qt::DisplayRole:
        if (index.column() == thumbnailColumn())
            return QVariant::fromValue(
                ImageAndText(m_thumbnails.thumbnail(info.path(), info.fileDate()), info.name()));
        if (index.column() == outputColumn())
            return m_renaming.renamer()
                .nameFromInputName(info.name(), &info, index.row())
                .value_or(QString());
        return InspectorColumns::text(info, column.identifier);
    case Qt::TextAlignmentRole:
        return QVariant::fromValue(column.alignment);
    case Qt::ToolTipRole:
        return index.column() == thumbnailColumn() ? info.path() : QVariant();
    default:
        return {};
    }
}

QVariant InspectorModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || section < 0 || section >= InspectorColumns::count())
        return QAbstractTableModel::headerData(section, orientation, role);
    const InspectorColumns::Column& column = InspectorColumns::all()[size_t(section)];
    if (role == Qt::DisplayRole)
        return column.title;
    if (role == Qt::TextAlignmentRole)
        return QVariant::fromValue(column.alignment);
    return {};
}

Qt::ItemFlags InspectorModel::flags(const QModelIndex& index) const {
    if (!index.isValid())
        return Qt::ItemIsDropEnabled;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled | Qt::ItemIsDropEnabled;
}

QStringList InspectorModel::paths() const {
    QStringList paths;
    paths.reserve(m_entries.size());
    for (const KVImageInfo& info : m_entries)
        paths.append(info.path());
    return paths;
}

void InspectorModel::addFiles(const QStringList& paths, int row) {
    const bool wasAdding = isAdding();
    m_jobs.push_back({++m_lastJob, row});
    m_loader->add(m_lastJob, paths);
    if (!wasAdding)
        Q_EMIT addingChanged(true);
}

void InspectorModel::takeDeliveries() {
    QList<InspectorLoader::Delivery> inbox;
    {
        const std::lock_guard lock(m_inboxMutex);
        inbox.swap(m_inbox);
    }
    // A job's groups all go in at its row: joined, they land as they would one by one.
    for (qsizetype i = 0; i < inbox.size();) {
        InspectorLoader::Delivery joined = std::move(inbox[i]);
        for (++i; i < inbox.size() && inbox[i].job == joined.job && !joined.last; ++i) {
            joined.records.append(std::move(inbox[i].records));
            joined.last = inbox[i].last;
        }
        receive(std::move(joined));
    }
}

void InspectorModel::receive(InspectorLoader::Delivery delivery) {
    const auto job = std::find_if(m_jobs.begin(), m_jobs.end(),
                                  [&delivery](const Job& j) { return j.id == delivery.job; });
    if (job == m_jobs.end())
        return; // cleared meanwhile
    const qsizetype count = delivery.records.size();
    if (count > 0) {
        const int at = job->row < 0 ? int(m_entries.size()) : std::min(job->row, int(m_entries.size()));
        beginInsertRows({}, at, at + int(count) - 1);
        // Each record goes in at the same row, in front of the one before.
        QList<KVImageInfo> tail = m_entries.mid(at);
        m_entries.resize(at);
        m_entries.reserve(at + count + tail.size());
        if (job->row < 0)
            std::move(delivery.records.begin(), delivery.records.end(), std::back_inserter(m_entries));
        else
            std::move(delivery.records.rbegin(), delivery.records.rend(), std::back_inserter(m_entries));
        std::move(tail.begin(), tail.end(), std::back_inserter(m_entries));
        endInsertRows();
        Q_EMIT countChanged(rowCount());
    }
    if (delivery.last) {
        m_jobs.erase(job);
        if (m_jobs.empty())
            Q_EMIT addingChanged(false);
    }
}

int InspectorModel::moveRows(const QList<int>& rows, int row) {
    QList<int> moved;
    QSet<int> movedSet;
    for (const int r : rows)
        if (r >= 0 && r < m_entries.size() && !movedSet.contains(r)) {
            moved.append(r);
            movedSet.insert(r);
        }
    if (moved.isEmpty())
        return -1;
    // The anchor: the nearest row above the drop that stays where it is.
    int anchor = -1;
    for (int r = std::min(row, int(m_entries.size())) - 1; r >= 0; --r)
        if (!movedSet.contains(r)) {
            anchor = r;
            break;
        }
    Q_EMIT layoutAboutToBeChanged();
    QList<KVImageInfo> taken;
    for (const int r : std::as_const(moved))
        taken.append(m_entries[r]);
    QList<KVImageInfo> kept;
    int first = 0;
    for (int r = 0; r < m_entries.size(); ++r) {
        if (movedSet.contains(r))
            continue;
        kept.append(std::move(m_entries[r]));
        if (r == anchor)
            first = int(kept.size());
    }
    m_entries = kept.mid(0, first) + taken + kept.mid(first);
    Q_EMIT layoutChanged();
    Q_EMIT rowsMovedTo(first, int(taken.size()));
    return first;
}

void InspectorModel::sortByColumn(int column) {
    if (column < 0 || column >= InspectorColumns::count())
        return;
    const InspectorColumns::Comparison compare =
        InspectorColumns::comparison(InspectorColumns::all()[size_t(column)].identifier);
    if (!compare)
        return;
    Q_EMIT layoutAboutToBeChanged();
    // The record's comparisons are not a strict order (a file date is set
    // against the other's capture date, a missing camera model sorts first
    // even against another missing one). The merge sort stays within the
    // list whatever they answer; the quick sort of std::sort would not.
    std::stable_sort(m_entries.begin(), m_entries.end(),
                     [compare](const KVImageInfo& a, const KVImageInfo& b) { return (a.*compare)(b) < 0; });
    Q_EMIT layoutChanged();
}

void InspectorModel::removeRecords(QList<int> rows) {
    std::sort(rows.begin(), rows.end(), std::greater<>());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    // From the bottom up, one contiguous run at a time.
    for (qsizetype i = 0; i < rows.size();) {
        const int last = rows[i];
        qsizetype j = i;
        while (j + 1 < rows.size() && rows[j + 1] == rows[j] - 1)
            ++j;
        const int first = rows[j];
        i = j + 1;
        if (first < 0 || last >= m_entries.size())
            continue;
        beginRemoveRows({}, first, last);
        m_entries.remove(first, last - first + 1);
        endRemoveRows();
    }
    Q_EMIT countChanged(rowCount());
}

void InspectorModel::clear() {
    const bool wasAdding = isAdding();
    m_loader->cancelUpTo(m_lastJob);
    m_jobs.clear();
    beginResetModel();
    m_entries.clear();
    endResetModel();
    Q_EMIT countChanged(0);
    if (wasAdding)
        Q_EMIT addingChanged(false);
}

QString InspectorModel::summaryFor(int count) {
    return count < 2 ? tr("%1 item").arg(count) : tr("%1 items").arg(count);
}

QStringList InspectorModel::mimeTypes() const {
    return {QLatin1String(RowsMimeType), QStringLiteral("text/uri-list")};
}

QMimeData* InspectorModel::mimeData(const QModelIndexList& indexes) const {
    QList<int> rows;
    for (const QModelIndex& index : indexes)
        if (index.isValid() && !rows.contains(index.row()))
            rows.append(index.row());
    std::sort(rows.begin(), rows.end());
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out << rows;
    auto* data = new QMimeData;
    data->setData(QLatin1String(RowsMimeType), bytes);
    return data;
}

Qt::DropActions InspectorModel::supportedDropActions() const {
    return Qt::CopyAction;
}

// A copy, never a move: the view would remove the dragged rows after a move.
Qt::DropActions InspectorModel::supportedDragActions() const {
    return Qt::CopyAction;
}

bool InspectorModel::canDropMimeData(const QMimeData* data, Qt::DropAction, int, int,
                                     const QModelIndex&) const {
    return data && (data->hasFormat(QLatin1String(RowsMimeType)) || data->hasUrls());
}

bool InspectorModel::dropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                                  const QModelIndex& parent) {
    if (!canDropMimeData(data, action, row, column, parent))
        return false;
    // Between rows always: a drop on a row lands above it.
    int at = row;
    if (at < 0)
        at = parent.isValid() ? parent.row() : rowCount();
    if (data->hasFormat(QLatin1String(RowsMimeType))) {
        QList<int> rows;
        QDataStream in(data->data(QLatin1String(RowsMimeType)));
        in >> rows;
        moveRows(rows, at);
        return true;
    }
    // Files from the file manager and pictures from a photo library both
    // come as addresses; only local files can be read.
    QStringList paths;
    const QList<QUrl> urls = data->urls();
    for (const QUrl& url : urls)
        if (url.isLocalFile())
            paths.append(url.toLocalFile());
    if (!paths.isEmpty())
        addFiles(paths, at);
    return true;
}

void InspectorModel::outputNamesChanged() {
    if (!m_entries.isEmpty())
        Q_EMIT dataChanged(index(0, outputColumn()), index(rowCount() - 1, outputColumn()),
                           {Qt::DisplayRole});
}

void InspectorModel::thumbnailsArrived() {
    if (!m_entries.isEmpty())
        Q_EMIT dataChanged(index(0, thumbnailColumn()), index(rowCount() - 1, thumbnailColumn()),
                           {Qt::DisplayRole});
}

} // namespace quillet
