#pragma once

#include "app/models/inspectorloader.h"
#include "app/models/inspectorthumbnails.h"
#include "app/models/queuedcalls.h"
#include "metadata/kvimageinfo.h"

#include <QAbstractTableModel>

#include <deque>
#include <memory>
#include <mutex>

namespace quillet {

class RenamingModel;

// The inspector's list: one record per picture in the user's order, one
// column per InspectorColumns entry. Files dropped or added are read on the
// loader's thread and come in on the main thread in groups; files dropped at
// a row all go in at that row, one after the other, so they end up there in
// the reverse of their dropped order (the order the inspector has always
// had). Rows are reordered by dragging them, sorted by a column and removed.
class InspectorModel : public QAbstractTableModel {
    Q_OBJECT
  public:
    // The inspector's own drag: the dragged row numbers.
    static constexpr char RowsMimeType[] = "application/x-quillet-inspector-rows";

    explicit InspectorModel(RenamingModel& renaming, QObject* parent = nullptr);
    ~InspectorModel() override;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    // The text of a column; the thumbnailed name is an ImageAndText whose
    // picture comes once the thumbnail is made.
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    const KVImageInfo& record(int row) const { return m_entries[row]; }
    // Every row's path, in list order: the batch the inspector starts.
    QStringList paths() const;

    // Reads the files among `paths` (not the folders) and inserts their
    // records at `row`, or appends them for a row of -1.
    void addFiles(const QStringList& paths, int row = -1);
    // True from addFiles() until its last record is in.
    bool isAdding() const { return !m_jobs.empty(); }
    // Moves the given rows, in their order, to just after the nearest row
    // above `row` that is not moved (to the top when there is none). Returns
    // the first row they now take.
    int moveRows(const QList<int>& rows, int row);
    // Sorts by a column with the record's comparison; a column without one
    // leaves the order as it is. Ascending only.
    void sortByColumn(int column);
    void removeRecords(QList<int> rows);
    void clear();

    // "%1 item" under two, "%1 items" from two.
    static QString summaryFor(int count);

    // Drag and drop: rows drag out as their numbers; a drop of those moves
    // them, a drop of file addresses adds the files. A drop on a row lands
    // above it.
    QStringList mimeTypes() const override;
    QMimeData* mimeData(const QModelIndexList& indexes) const override;
    Qt::DropActions supportedDropActions() const override;
    Qt::DropActions supportedDragActions() const override;
    bool canDropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                         const QModelIndex& parent) const override;
    bool dropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                      const QModelIndex& parent) override;

    InspectorThumbnails& thumbnails() { return m_thumbnails; }

  Q_SIGNALS:
    void addingChanged(bool adding);
    void countChanged(int count);
    // Rows moved by a drag now at first .. first + count - 1: the view
    // selects them.
    void rowsMovedTo(int first, int count);

  private:
    struct Job {
        quint64 id;
        int row; // -1 appends
    };
    void takeDeliveries();
    void receive(InspectorLoader::Delivery delivery);
    void outputNamesChanged();
    void thumbnailsArrived();

    RenamingModel& m_renaming;
    QList<KVImageInfo> m_entries;
    std::deque<Job> m_jobs; // added, not finished, in order
    quint64 m_lastJob = 0;
    mutable InspectorThumbnails m_thumbnails; // asked from data()
    QueuedCalls m_calls{this};
    // Deliveries waiting for the main thread, taken all at once there.
    std::mutex m_inboxMutex;
    QList<InspectorLoader::Delivery> m_inbox;
    std::unique_ptr<InspectorLoader> m_loader;
};

} // namespace quillet
