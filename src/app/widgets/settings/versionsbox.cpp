#include "app/widgets/settings/versionsbox.h"

#include "app/models/versionlistmodel.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QMenu>
#include <QToolButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace quillet {

namespace {

enum Column { VersionColumn, SuffixColumn, PlacementColumn };

} // namespace

VersionsBox::VersionsBox(VersionListModel& model, QWidget* parent)
    : QGroupBox(tr("Versions"), parent), m_model(model), m_list(new QTreeWidget), m_addMenu(new QMenu(this)),
      m_remove(new QToolButton) {
    setObjectName(QStringLiteral("versionsBox"));
    m_list->setObjectName(QStringLiteral("versionsList"));
    m_list->setHeaderLabels({tr("Version"), tr("Suffix"), tr("Files")});
    m_list->setRootIsDecorated(false);
    m_list->setUniformRowHeights(true);
    m_list->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed |
                            QAbstractItemView::SelectedClicked);
    m_list->header()->setStretchLastSection(true);
    m_list->setToolTip(tr("Every picture is written once per version. Double-click a suffix to write that "
                          "version beside the others with the suffix added to its names; without one it "
                          "goes into a folder of its name."));
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
    connect(m_list, &QTreeWidget::currentItemChanged, this,
            [this] { m_remove->setEnabled(m_model.count() > 1 && m_list->currentItem()); });
    connect(&m_model, &VersionListModel::changed, this, &VersionsBox::refresh);
    refresh();
}

void VersionsBox::refresh() {
    m_filling = true;
    const int current = m_list->currentIndex().row();
    m_list->clear();
    for (int row = 0; row < m_model.count(); ++row) {
        auto* item =
            new QTreeWidgetItem({m_model.title(row), m_model.entry(row).suffix, m_model.placement(row)});
        item->setFlags(item->flags() | Qt::ItemIsEditable);
        if (m_model.isMissing(row))
            for (int column : {VersionColumn, PlacementColumn})
                item->setForeground(column, QColor(Qt::red));
        m_list->addTopLevelItem(item);
    }
    m_list->resizeColumnToContents(VersionColumn);
    if (current >= 0 && current < m_model.count())
        m_list->setCurrentItem(m_list->topLevelItem(current));
    m_remove->setEnabled(m_model.count() > 1 && m_list->currentItem());
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
