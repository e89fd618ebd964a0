#include "app/widgets/inspector/inspectorwindow.h"

#include "app/models/inspectormodel.h"
#include "app/widgets/inspector/inspectorcolumnchooser.h"
#include "app/widgets/views/imageandtext.h"
#include "settings/userdefaults.h"

#include <QAction>
#include <QCloseEvent>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTableView>
#include <QVBoxLayout>

namespace quillet {

namespace {

constexpr char FrameKey[] = "InspectorWindowAutosave";
constexpr char VisibleKey[] = "InspectorVisible";
// A 32-pixel thumbnail and a little air.
constexpr int RowHeight = 36;

} // namespace

InspectorWindow::InspectorWindow(InspectorModel& model, UserDefaults& defaults, QWidget* parent)
    : QWidget(parent, Qt::Window), m_model(model), m_defaults(defaults), m_layout(defaults),
      m_table(new QTableView(this)), m_chooser(new InspectorColumnChooser(m_layout, this)) {
    setObjectName(QStringLiteral("inspectorWindow"));
    setWindowTitle(tr("Inspector"));
    m_table->setObjectName(QStringLiteral("inspectorTable"));
    m_table->setModel(&model);
    m_table->setItemDelegate(new ImageAndTextDelegate(m_table));
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->setShowGrid(false);
    m_table->setAlternatingRowColors(true);
    m_table->setWordWrap(false);
    m_table->setDragEnabled(true);
    m_table->setAcceptDrops(true);
    m_table->setDropIndicatorShown(true);
    m_table->setDragDropMode(QAbstractItemView::DragDrop);
    m_table->setDragDropOverwriteMode(false);
    m_table->setDefaultDropAction(Qt::CopyAction);
    // Fixed row heights: the view never asks every row for its size.
    m_table->verticalHeader()->hide();
    m_table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    m_table->verticalHeader()->setDefaultSectionSize(RowHeight);
    QHeaderView* header = m_table->horizontalHeader();
    header->setSectionsMovable(true);
    header->setSectionsClickable(true);
    header->setHighlightSections(false);
    header->setStretchLastSection(false);
    header->setSortIndicatorShown(false);
    header->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    applyLayout();

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(8, 8, 8, 8);
    layout->addWidget(m_table, 1);
    layout->addWidget(buildButtons());

    auto* remove = new QAction(tr("Remove"), m_table);
    remove->setShortcuts({QKeySequence::Delete, QKeySequence(Qt::Key_Backspace)});
    remove->setShortcutContext(Qt::WidgetShortcut);
    m_table->addAction(remove);
    connect(remove, &QAction::triggered, this, &InspectorWindow::clearSelected);

    connect(header, &QHeaderView::sectionClicked, &model, &InspectorModel::sortByColumn);
    connect(header, &QHeaderView::sectionMoved, this, &InspectorWindow::headerMoved);
    connect(header, &QHeaderView::sectionResized, this, [this](int column, int, int width) {
        if (!m_applying)
            m_layout.setWidth(column, width);
    });
    connect(m_chooser, &InspectorColumnChooser::columnToggled, this, &InspectorWindow::toggleColumn);
    connect(m_table->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &InspectorWindow::selectionChanged);
    connect(&model, &InspectorModel::countChanged, this, &InspectorWindow::countChanged);
    connect(&model, &InspectorModel::addingChanged, this, [this](bool adding) { setUIEnabled(!adding); });
    connect(&model, &InspectorModel::rowsMovedTo, this, [this](int first, int count) {
        QItemSelectionModel* selection = m_table->selectionModel();
        selection->clearSelection();
        selection->select(QItemSelection(m_model.index(first, 0), m_model.index(first + count - 1, 0)),
                          QItemSelectionModel::Select | QItemSelectionModel::Rows);
    });

    m_restoring = true;
    resize(1100, 520);
    const QByteArray frame = m_defaults.value(QLatin1String(FrameKey)).toByteArray();
    if (!frame.isEmpty())
        restoreGeometry(frame);
    m_restoring = false;
    countChanged(model.rowCount());
    setUIEnabled(!model.isAdding());
}

QWidget* InspectorWindow::buildButtons() {
    auto* row = new QWidget(this);
    m_selectAll = new QPushButton(tr("Select All"), row);
    m_selectAll->setObjectName(QStringLiteral("inspectorSelectAll"));
    m_customize = new QPushButton(tr("Columns..."), row);
    m_customize->setObjectName(QStringLiteral("inspectorColumns"));
    m_clear = new QPushButton(tr("Clear"), row);
    m_clear->setObjectName(QStringLiteral("inspectorClear"));
    m_clear->setToolTip(tr("Removes the selected pictures from the list."));
    m_process = new QPushButton(tr("Process"), row);
    m_process->setObjectName(QStringLiteral("inspectorProcess"));
    m_process->setToolTip(tr("Processes the listed pictures in list order."));
    m_process->setDefault(true);
    m_summary = new QLabel(row);
    m_summary->setObjectName(QStringLiteral("inspectorSummary"));
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_selectAll);
    layout->addWidget(m_customize);
    layout->addWidget(m_summary, 1, Qt::AlignCenter);
    layout->addWidget(m_clear);
    layout->addWidget(m_process);

    connect(m_selectAll, &QPushButton::clicked, m_table, &QTableView::selectAll);
    connect(m_customize, &QPushButton::clicked, this, [this] {
        m_chooser->updateBoxes();
        m_chooser->show();
        m_chooser->raise();
    });
    connect(m_clear, &QPushButton::clicked, this, &InspectorWindow::clearSelected);
    connect(m_process, &QPushButton::clicked, this, [this] { Q_EMIT processRequested(m_model.paths()); });
    return row;
}

void InspectorWindow::setOpen(bool open) {
    setVisible(open);
    m_defaults.setBool(QLatin1String(VisibleKey), open);
    Q_EMIT openChanged(open);
}

void InspectorWindow::setUIEnabled(bool enabled) {
    m_uiEnabled = enabled;
    for (QWidget* control : {static_cast<QWidget*>(m_table), static_cast<QWidget*>(m_selectAll),
                             static_cast<QWidget*>(m_customize), static_cast<QWidget*>(m_chooser)})
        control->setEnabled(enabled);
    const bool selected = m_table->selectionModel()->hasSelection();
    m_clear->setEnabled(enabled && selected);
    m_process->setEnabled(enabled && m_model.rowCount() > 0);
}

// The header shows the layout's columns in its order and widths, the others hidden.
void InspectorWindow::applyLayout() {
    m_applying = true;
    QHeaderView* header = m_table->horizontalHeader();
    for (int column = 0; column < m_model.columnCount(); ++column)
        header->setSectionHidden(column, !m_layout.isShown(column));
    int visual = 0;
    for (const InspectorColumnLayout::Shown& shown : m_layout.shown()) {
        const int from = header->visualIndex(shown.column);
        if (from != visual)
            header->moveSection(from, visual);
        header->resizeSection(shown.column, shown.width);
        ++visual;
    }
    m_applying = false;
}

void InspectorWindow::headerMoved() {
    if (m_applying)
        return;
    QHeaderView* header = m_table->horizontalHeader();
    QList<int> order;
    for (int visual = 0; visual < header->count(); ++visual) {
        const int column = header->logicalIndex(visual);
        if (!header->isSectionHidden(column))
            order.append(column);
    }
    m_layout.setOrder(order);
}

void InspectorWindow::toggleColumn(int column, bool shown) {
    m_layout.setShown(column, shown);
    applyLayout();
}

void InspectorWindow::selectionChanged() {
    QItemSelectionModel* selection = m_table->selectionModel();
    if (m_uiEnabled)
        m_clear->setEnabled(selection->hasSelection());
    const QModelIndexList rows = selection->selectedRows();
    if (rows.isEmpty())
        return;
    int row = selection->currentIndex().row();
    if (!selection->isRowSelected(row, {})) {
        row = rows.first().row();
        for (const QModelIndex& index : rows)
            row = std::min(row, index.row());
    }
    Q_EMIT pictureSelected(m_model.record(row).path());
}

void InspectorWindow::countChanged(int count) {
    m_summary->setText(InspectorModel::summaryFor(count));
    if (m_uiEnabled)
        m_process->setEnabled(count > 0);
}

void InspectorWindow::clearSelected() {
    if (!m_uiEnabled)
        return;
    QList<int> rows;
    const QModelIndexList selected = m_table->selectionModel()->selectedRows();
    for (const QModelIndex& index : selected)
        rows.append(index.row());
    m_model.removeRecords(rows);
    m_table->clearSelection();
}

void InspectorWindow::closeEvent(QCloseEvent* event) {
    saveFrame();
    m_defaults.setBool(QLatin1String(VisibleKey), false);
    Q_EMIT openChanged(false);
    event->accept();
}

void InspectorWindow::moveEvent(QMoveEvent* event) {
    QWidget::moveEvent(event);
    saveFrame();
}

void InspectorWindow::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    saveFrame();
}

void InspectorWindow::saveFrame() {
    if (!m_restoring && isVisible())
        m_defaults.setValue(QLatin1String(FrameKey), saveGeometry());
}

} // namespace quillet
