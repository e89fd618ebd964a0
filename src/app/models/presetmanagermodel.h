#pragma once

#include <QAbstractListModel>

#include <optional>

namespace quillet {

class PresetMenuModel;
class PresetStore;

// The preset manager's table: one row per preset of the menu's working list,
// renamed in place, duplicated, removed, reordered by dragging, imported from
// and exported to preset files. Nothing reaches the store until finish()
// keeps the edits; cancelling reads the stored list back.
class PresetManagerModel : public QAbstractListModel {
    Q_OBJECT
  public:
    // The drag type of a row being reordered; its data is the row number.
    static constexpr char RowMimeType[] = "application/x-quillet-preset-row";

    explicit PresetManagerModel(PresetMenuModel& menu, QObject* parent = nullptr);

    // Opens an editing session on the menu's list; returns the row of the
    // menu's selected preset, or -1 for "None".
    int begin();
    // Ends the session: keep writes the list to the store (the menu says
    // when that fails), otherwise every edit since begin() is thrown away.
    void finish(bool keep);

    // Inserts a copy below row, named as a copy, and returns its row (-1
    // for a bad row).
    int duplicate(int row);
    bool remove(int row);
    // Moves row to a row boundary as counted before the move; returns the
    // row it is then at, or nothing when nothing moved.
    std::optional<int> move(int from, int to);
    // Reads the stored list back, throwing away every edit.
    void revert();
    // Appends the preset of a preset file (a taken name becomes a copy name)
    // and returns its row. Throws PresetFileError, with nothing added.
    int importFile(const QString& path);
    // Writes the preset of row as a preset file. Throws PresetFileError.
    void exportFile(int row, const QString& path) const;
    // A file name for exporting row: its title with ".json".
    QString exportFileName(int row) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    // Display: the menu title; edit: the name itself.
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    // Renames; a trimmed name that is empty, "None" or taken is refused and
    // the old name stays.
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;

    QStringList mimeTypes() const override;
    // One row at a time; nothing for more.
    QMimeData* mimeData(const QModelIndexList& indexes) const override;
    Qt::DropActions supportedDropActions() const override { return Qt::MoveAction; }
    Qt::DropActions supportedDragActions() const override { return Qt::MoveAction; }
    bool canDropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                         const QModelIndex& parent) const override;
    // A drop onto a row lands above it, a drop past the rows at the end.
    // The row moves here; no rows are removed afterwards, since this model
    // has no removeRows() for the view to call.
    bool dropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                      const QModelIndex& parent) override;

  Q_SIGNALS:
    // A drop moved a row; the view selects it there.
    void rowDropped(int row);

  private:
    PresetStore& presets() const;
    bool validRow(int row) const { return row >= 0 && row < rowCount(); }

    PresetMenuModel& m_menu;
};

} // namespace quillet
