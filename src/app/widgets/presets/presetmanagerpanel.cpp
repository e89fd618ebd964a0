#include "app/widgets/presets/presetmanagerpanel.h"

#include "app/models/presetmanagermodel.h"
#include "app/widgets/presets/singleedittable.h"
#include "app/widgets/sheets/filechooser.h"
#include "app/widgets/sheets/sheets.h"
#include "settings/presetjson.h"

#include <QAction>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QMenu>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

namespace quillet {

PresetManagerPanel::PresetManagerPanel(PresetManagerModel& model, Sheets& sheets, QWidget* parent)
    : QDialog(parent), m_model(model), m_sheets(sheets), m_table(new SingleEditTable(this)) {
    setObjectName(QStringLiteral("presetManager"));
    setWindowTitle(tr("Presets"));
    setWindowModality(Qt::WindowModal);
    setMinimumSize(428, 280);
    setMaximumSize(428, 580);
    resize(428, 340);

    m_table->setObjectName(QStringLiteral("presetTable"));
    m_table->setModel(&model);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_table->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed);
    m_table->setDragDropMode(QAbstractItemView::InternalMove);
    m_table->setDragDropOverwriteMode(false);
    m_table->setDefaultDropAction(Qt::MoveAction);
    m_table->setDropIndicatorShown(true);
    m_table->setShowGrid(false);
    m_table->setAlternatingRowColors(true);
    m_table->verticalHeader()->hide();
    m_table->horizontalHeader()->setStretchLastSection(true);
    m_table->horizontalHeader()->setSectionsClickable(false);

    auto* actions = new QToolButton(this);
    actions->setObjectName(QStringLiteral("presetActionButton"));
    actions->setIcon(QIcon::fromTheme(QStringLiteral("preferences-system"),
                                      style()->standardIcon(QStyle::SP_FileDialogDetailedView)));
    actions->setText(tr("Actions"));
    actions->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    actions->setToolTip(tr("Actions on the selected preset"));
    actions->setPopupMode(QToolButton::InstantPopup);
    auto* menu = new QMenu(actions);
    const auto addRowAction = [&](const QString& title, const char* name,
                                  void (PresetManagerPanel::*slot)()) {
        QAction* action = menu->addAction(title, this, slot);
        action->setObjectName(QLatin1String(name));
        m_rowActions.append(action);
        return action;
    };
    addRowAction(tr("Rename"), "actionRenamePreset", &PresetManagerPanel::renameSelected);
    addRowAction(tr("Duplicate"), "actionDuplicatePreset", &PresetManagerPanel::duplicateSelected);
    addRowAction(tr("Remove"), "actionRemovePreset", &PresetManagerPanel::removeSelected);
    menu->addSeparator();
    addRowAction(tr("Export..."), "actionExportPreset", &PresetManagerPanel::exportSelected);
    actions->setMenu(menu);

    auto* importButton = new QPushButton(tr("Import..."), this);
    importButton->setObjectName(QStringLiteral("presetImportButton"));
    importButton->setAutoDefault(false);
    connect(importButton, &QPushButton::clicked, this, &PresetManagerPanel::importPreset);
    auto* revertButton = new QPushButton(tr("Revert"), this);
    revertButton->setObjectName(QStringLiteral("presetRevertButton"));
    revertButton->setToolTip(tr("Throw away the changes made here"));
    revertButton->setAutoDefault(false);
    connect(revertButton, &QPushButton::clicked, this, &PresetManagerPanel::revert);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Ok)->setObjectName(QStringLiteral("presetManagerOk"));
    buttons->button(QDialogButtonBox::Cancel)->setObjectName(QStringLiteral("presetManagerCancel"));
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* tools = new QHBoxLayout;
    tools->addWidget(actions);
    tools->addWidget(importButton);
    tools->addWidget(revertButton);
    tools->addStretch(1);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_table, 1);
    layout->addLayout(tools);
    layout->addWidget(buttons);

    connect(m_table->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &PresetManagerPanel::selectionChanged);
    connect(&model, &PresetManagerModel::rowDropped, this, &PresetManagerPanel::selectRow);
    connect(&model, &QAbstractItemModel::modelReset, this, &PresetManagerPanel::selectionChanged);
    selectionChanged();
}

void PresetManagerPanel::start() {
    selectRow(m_model.begin());
    m_table->setFocus();
}

int PresetManagerPanel::selectedRow() const {
    const QModelIndexList rows = m_table->selectionModel()->selectedRows();
    return rows.isEmpty() ? -1 : rows.first().row();
}

void PresetManagerPanel::selectRow(int row) {
    if (row < 0 || row >= m_model.rowCount()) {
        m_table->clearSelection();
        return;
    }
    m_table->selectRow(row);
    m_table->setCurrentIndex(m_model.index(row));
}

void PresetManagerPanel::selectionChanged() {
    const bool selected = selectedRow() >= 0;
    for (QAction* action : std::as_const(m_rowActions))
        action->setEnabled(selected);
}

void PresetManagerPanel::renameSelected() {
    const int row = selectedRow();
    if (row >= 0)
        m_table->edit(m_model.index(row));
}

void PresetManagerPanel::duplicateSelected() {
    const int copy = m_model.duplicate(selectedRow());
    if (copy < 0)
        return;
    selectRow(copy);
    m_table->edit(m_model.index(copy));
}

void PresetManagerPanel::removeSelected() {
    m_model.remove(selectedRow());
}

void PresetManagerPanel::revert() {
    m_model.revert();
}

void PresetManagerPanel::importPreset() {
    const auto path = FileChooser::choosePresetFile(m_sheets, this);
    if (!path)
        return;
    try {
        selectRow(m_model.importFile(*path));
    } catch (const PresetFileError& e) {
        m_sheets.runMessageSheet(this, tr("Cannot Import Preset"),
                                 tr("%1. Nothing was imported.").arg(QString::fromStdString(e.what())));
    }
}

void PresetManagerPanel::exportSelected() {
    const int row = selectedRow();
    if (row < 0)
        return;
    const auto path = FileChooser::choosePresetFile(m_sheets, this, m_model.exportFileName(row));
    if (!path)
        return;
    try {
        m_model.exportFile(row, *path);
    } catch (const PresetFileError& e) {
        m_sheets.runMessageSheet(this, tr("Cannot Export Preset"), QString::fromStdString(e.what()));
    }
}

void PresetManagerPanel::done(int result) {
    // A name still being typed counts as typed.
    m_table->commitEditing();
    QDialog::done(result);
    m_model.finish(result == QDialog::Accepted);
}

} // namespace quillet
