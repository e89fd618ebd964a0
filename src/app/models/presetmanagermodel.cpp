#include "app/models/presetmanagermodel.h"

#include "app/models/presetmenumodel.h"
#include "settings/presetjson.h"

#include <QMimeData>

namespace quillet {

PresetManagerModel::PresetManagerModel(PresetMenuModel& menu, QObject* parent)
    : QAbstractListModel(parent), m_menu(menu) {}

PresetStore& PresetManagerModel::presets() const {
    return m_menu.presets();
}

int PresetManagerModel::begin() {
    beginResetModel();
    m_menu.beginEditing();
    endResetModel();
    return m_menu.selectedIndex() - 1;
}

void PresetManagerModel::finish(bool keep) {
    beginResetModel();
    m_menu.endEditing(keep);
    endResetModel();
}

int PresetManagerModel::duplicate(int row) {
    if (!validRow(row))
        return -1;
    beginInsertRows({}, row + 1, row + 1);
    const int copy = presets().duplicatePreset(row);
    endInsertRows();
    return copy;
}

bool PresetManagerModel::remove(int row) {
    if (!validRow(row))
        return false;
    beginRemoveRows({}, row, row);
    presets().removePreset(row);
    endRemoveRows();
    return true;
}

std::optional<int> PresetManagerModel::move(int from, int to) {
    if (!validRow(from) || to < 0 || to > rowCount() || to == from)
        return std::nullopt;
    // Onto the boundary just below itself the row stays where it is.
    if (to == from + 1)
        return presets().moveTarget(from, to);
    beginMoveRows({}, from, from, {}, to);
    const std::optional<int> at = presets().moveTarget(from, to);
    endMoveRows();
    return at;
}

void PresetManagerModel::revert() {
    beginResetModel();
    m_menu.revert();
    endResetModel();
}

int PresetManagerModel::importFile(const QString& path) {
    const ProcessingParams preset = PresetJson::readFile(path);
    const int row = rowCount();
    beginInsertRows({}, row, row);
    presets().importPreset(preset);
    endInsertRows();
    return row;
}

void PresetManagerModel::exportFile(int row, const QString& path) const {
    if (!validRow(row))
        throw PresetFileError("no preset is selected");
    PresetJson::writeFile(path, presets().presets().at(row));
}

QString PresetManagerModel::exportFileName(int row) const {
    QString name = data(index(row), Qt::DisplayRole).toString();
    // A name may hold characters a file name may not.
    name.replace(QLatin1Char('/'), QLatin1Char('-'));
    return name + QLatin1String(".json");
}

int PresetManagerModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : presets().count();
}

QVariant PresetManagerModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || !validRow(index.row()))
        return {};
    if (role == Qt::DisplayRole)
        return presets().menuTitles().at(index.row() + 1);
    if (role == Qt::EditRole)
        return presets().names().at(index.row());
    return {};
}

QVariant PresetManagerModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (section == 0 && orientation == Qt::Horizontal && role == Qt::DisplayRole)
        return tr("Name");
    return QAbstractListModel::headerData(section, orientation, role);
}

Qt::ItemFlags PresetManagerModel::flags(const QModelIndex& index) const {
    // Drops go between rows (the root takes them), never onto a row.
    if (!index.isValid())
        return Qt::ItemIsDropEnabled;
    return Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemIsEditable | Qt::ItemIsDragEnabled;
}

bool PresetManagerModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (role != Qt::EditRole || !index.isValid() || !presets().renamePreset(index.row(), value.toString()))
        return false;
    Q_EMIT dataChanged(index, index);
    return true;
}

QStringList PresetManagerModel::mimeTypes() const {
    return {QLatin1String(RowMimeType)};
}

QMimeData* PresetManagerModel::mimeData(const QModelIndexList& indexes) const {
    if (indexes.size() != 1 || !indexes.first().isValid())
        return nullptr;
    auto* data = new QMimeData;
    data->setData(QLatin1String(RowMimeType), QByteArray::number(indexes.first().row()));
    return data;
}

bool PresetManagerModel::canDropMimeData(const QMimeData* data, Qt::DropAction action, int, int,
                                         const QModelIndex&) const {
    return data && data->hasFormat(QLatin1String(RowMimeType)) && action == Qt::MoveAction;
}

bool PresetManagerModel::dropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                                      const QModelIndex& parent) {
    if (!canDropMimeData(data, action, row, column, parent))
        return false;
    bool ok = false;
    const int from = data->data(QLatin1String(RowMimeType)).toInt(&ok);
    if (!ok || !validRow(from))
        return false;
    int to = row;
    if (to < 0)
        to = parent.isValid() ? parent.row() : rowCount();
    const std::optional<int> at = move(from, to);
    if (at)
        Q_EMIT rowDropped(*at);
    return true;
}

} // namespace quillet
