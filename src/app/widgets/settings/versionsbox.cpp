#include "app/widgets/settings/versionsbox.h"

#include "app/models/requestsummary.h"
#include "app/models/settingsmodel.h"
#include "app/models/versionlistmodel.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QMenu>
#include <QToolButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace quillet {

namespace {

enum Column { VersionColumn, MakesColumn, SuffixColumn, PlacementColumn };

} // namespace

VersionsBox::VersionsBox(VersionListModel& model, SettingsModel& settings, QWidget* parent)
    : QGroupBox(tr("Versions"), parent), m_model(model), m_settings(settings), m_list(new QTreeWidget),
      m_addMenu(new QMenu(this)), m_remove(new QToolButton) {
    setObjectName(QStringLiteral("versionsBox"));
    m_list->setObjectName(QStringLiteral("versionsList"));
    m_list->setHeaderLabels({tr("Version"), tr("Makes"), tr("Suffix"), tr("Files")});
    m_list->setRootIsDecorated(false);
    m_list->setUniformRowHeights(true);
    // Only the suffix is edited in place, whichever column is double-clicked.
    m_list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_list->header()->setStretchLastSection(true);
    m_list->setToolTip(tr("Every picture is written once per version. Double-click a version (or press "
                          "Return) to give it a suffix: its files are then written beside the others with "
                          "the suffix added to their names; without one they go into a folder of its name."));
    m_list->setMinimumHeight(m_list->fontMetrics().height() * 6);
    m_list->setMaximumHeight(m_list->fontMetrics().height() * 9);

    auto* add = new QToolButton;
    add->setObjectName(QStringLiteral("addVersionButton"));
    add->setText(QStringLiteral("+"));
    add->setToolTip(tr("Add a version made with a preset"));
    add->setMenu(m_addMenu);
    add->setPopupMode(QToolButton::InstantPopup);
    m_remove->setObjectName(QStringLiteral("removeVersionButton"));
    m_remove->setText(QStringLiteral("\u2212"));
    m_remove->setToolTip(tr("Remove the selected version"));

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(add);
    buttons->addWidget(m_remove);
    buttons->addStretch(1);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_list);
    layout->addLayout(buttons);

    connect(m_addMenu, &QMenu::aboutToShow, this, &VersionsBox::fillAddMenu);
    connect(m_remove, &QToolButton::clicked, this, [this] { m_model.remove(m_list->currentIndex().row()); });
    connect(m_list, &QTreeWidget::itemChanged, this, [this](QTreeWidgetItem* item, int column) {
        if (!m_filling && column == SuffixColumn)
            m_model.setSuffix(m_list->indexOfTopLevelItem(item), item->text(SuffixColumn));
    });
    connect(m_list, &QTreeWidget::itemActivated, this,
            [this](QTreeWidgetItem* item) { m_list->editItem(item, SuffixColumn); });
    connect(m_list, &QTreeWidget::currentItemChanged, this,
            [this] { m_remove->setEnabled(m_model.count() > 1 && m_list->currentItem()); });
    connect(&m_model, &VersionListModel::changed, this, &VersionsBox::refresh);
    connect(&m_settings, &SettingsModel::changed, this, &VersionsBox::showCurrentMakes);
    refresh();
}

void VersionsBox::refresh() {
    m_filling = true;
    // The rows are updated in place: a suffix just typed is committed from
    // inside its editor, which must still have its row when it closes.
    const QList<VersionListModel::Row> rows = m_model.rows(m_settings.request());
    const int count = int(rows.size());
    while (m_list->topLevelItemCount() > count)
        delete m_list->takeTopLevelItem(m_list->topLevelItemCount() - 1);
    while (m_list->topLevelItemCount() < count) {
        auto* item = new QTreeWidgetItem;
        item->setFlags(item->flags() | Qt::ItemIsEditable);
        m_list->addTopLevelItem(item);
    }
    for (int i = 0; i < count; ++i) {
        const VersionListModel::Row& row = rows.at(i);
        QTreeWidgetItem* item = m_list->topLevelItem(i);
        item->setText(VersionColumn, row.title);
        item->setText(MakesColumn, row.makes);
        item->setText(SuffixColumn, row.suffix);
        item->setText(PlacementColumn, row.placement);
        const QBrush text = row.missing ? QBrush(Qt::red) : QBrush();
        for (int column : {VersionColumn, PlacementColumn})
            item->setForeground(column, text);
    }
    // The last column, where the files go, takes what the others leave.
    for (int column : {VersionColumn, MakesColumn, SuffixColumn})
        m_list->resizeColumnToContents(column);
    m_remove->setEnabled(count > 1 && m_list->currentItem());
    m_filling = false;
}

void VersionsBox::showCurrentMakes() {
    m_filling = true;
    for (int row = 0; row < m_model.count() && row < m_list->topLevelItemCount(); ++row)
        if (m_model.entry(row).isCurrent())
            m_list->topLevelItem(row)->setText(MakesColumn, RequestSummary::of(m_settings.request()));
    m_filling = false;
}

void VersionsBox::fillAddMenu() {
    m_addMenu->clear();
    if (m_model.canAddCurrent())
        m_addMenu->addAction(tr("Current settings"), this,
                             [this] { m_model.add(QLatin1String(VersionList::CurrentSettings)); });
    const QStringList names = m_model.presetNames();
    for (const QString& name : names)
        m_addMenu->addAction(name, this, [this, name] { m_model.add(name); });
    if (names.isEmpty())
        m_addMenu->addAction(tr("No presets yet"))->setEnabled(false);
}

} // namespace quillet
