#include "app/widgets/presets/presetbar.h"

#include "app/models/appcontroller.h"
#include "app/models/presetmanagermodel.h"
#include "app/models/presetmenumodel.h"
#include "app/widgets/presets/presetmanagerpanel.h"
#include "app/widgets/presets/presetnamesheet.h"
#include "app/widgets/sheets/sheets.h"
#include "app/widgets/views/wheelguard.h"

#include <QAction>
#include <QComboBox>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QSignalBlocker>
#include <QToolButton>

namespace quillet {

namespace {

QToolButton* commandButton(QAction* action, QWidget* parent) {
    auto* button = new QToolButton(parent);
    button->setDefaultAction(action);
    button->setToolButtonStyle(Qt::ToolButtonTextOnly);
    return button;
}

} // namespace

PresetBar::PresetBar(PresetMenuModel& menu, AppController& controller, Sheets& sheets, QWidget* parent)
    : QWidget(parent), m_model(menu), m_sheets(sheets), m_menu(new QComboBox(this)),
      m_add(new QAction(tr("Add Preset..."), this)), m_store(new QAction(tr("Save to Preset"), this)),
      m_manage(new QAction(tr("Manage Presets..."), this)),
      m_managerModel(new PresetManagerModel(menu, this)) {
    setObjectName(QStringLiteral("presetBar"));
    m_menu->setObjectName(QStringLiteral("presetMenu"));
    m_menu->setAccessibleName(tr("Preset"));
    m_menu->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    m_menu->setMinimumContentsLength(14);
    // Passing over the menu with the wheel must not apply a preset.
    (new WheelGuard(nullptr, this))->guard(m_menu);

    m_add->setObjectName(QStringLiteral("actionAddPreset"));
    m_add->setIconText(tr("Add..."));
    m_add->setToolTip(tr("Keep the current settings as a new preset"));
    m_store->setObjectName(QStringLiteral("actionStorePreset"));
    m_store->setIconText(tr("Save"));
    m_store->setToolTip(tr("Replace the selected preset with the current settings"));
    m_manage->setObjectName(QStringLiteral("actionManagePresets"));
    m_manage->setIconText(tr("Manage..."));
    m_manage->setToolTip(tr("Rename, reorder, duplicate, remove, import and export presets"));
    m_addButton = commandButton(m_add, this);
    m_storeButton = commandButton(m_store, this);
    m_manageButton = commandButton(m_manage, this);

    auto* label = new QLabel(tr("Preset:"), this);
    label->setBuddy(m_menu);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 4, 0);
    layout->addWidget(label);
    layout->addWidget(m_menu, 1);
    layout->addWidget(m_storeButton);
    layout->addWidget(m_addButton);
    layout->addWidget(m_manageButton);

    connect(m_menu, &QComboBox::activated, &m_model, &PresetMenuModel::select);
    connect(m_add, &QAction::triggered, this, &PresetBar::addPreset);
    connect(m_store, &QAction::triggered, this, &PresetBar::storePreset);
    connect(m_manage, &QAction::triggered, this, &PresetBar::showManager);
    connect(&m_model, &PresetMenuModel::changed, this, &PresetBar::rebuild);
    // Said once the action that wrote is over, not from inside it.
    connect(
        &m_model, &PresetMenuModel::saveFailed, this,
        [this] {
            m_sheets.runMessageSheet(tr("Cannot Save Presets"),
                                     tr("The settings store could not be written. The presets stay as shown "
                                        "until Quillet quits."));
        },
        Qt::QueuedConnection);
    connect(&controller, &AppController::processingChanged, this, [this](bool processing) {
        m_processing = processing;
        rebuild();
    });
    rebuild();
}

PresetBar::~PresetBar() = default;

void PresetBar::rebuild() {
    const QSignalBlocker quiet(m_menu);
    m_menu->clear();
    m_menu->addItems(m_model.titles());
    m_menu->setCurrentIndex(m_model.selectedIndex());
    setEnabled(!m_processing);
    m_add->setEnabled(!m_processing);
    m_manage->setEnabled(!m_processing);
    m_store->setEnabled(!m_processing && m_model.canStore());
    m_store->setText(m_model.canStore() ? tr("Save to \"%1\"").arg(m_menu->currentText())
                                        : tr("Save to Preset"));
}

void PresetBar::addPreset() {
    const auto name = PresetNameSheet::ask(
        m_sheets, [this](const QString& typed) { return m_model.nameIsAcceptable(typed); });
    if (name)
        m_model.addPreset(*name);
}

void PresetBar::storePreset() {
    m_model.storeIntoSelected();
}

void PresetBar::showManager() {
    if (!m_manager)
        m_manager = new PresetManagerPanel(*m_managerModel, m_sheets, window());
    m_manager->start();
    m_manager->open();
}

void PresetBar::showMenu() {
    m_menu->showPopup();
}

void PresetBar::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    // Back in the window, the menu shows presets another program added or
    // removed meanwhile.
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        m_model.reload();
}

} // namespace quillet
