#include "app/widgets/settings/settingspanel.h"

#include "app/models/appcontroller.h"
#include "app/models/appmodels.h"
#include "app/widgets/main/creatorcombobox.h"
#include "app/widgets/main/fileoptionsbox.h"
#include "app/widgets/settings/renamepanel.h"
#include "app/widgets/settings/settingscontrols.h"
#include "app/widgets/settings/versionsbox.h"
#include "app/widgets/settings/watermarkwindow.h"
#include "app/widgets/sheets/sheets.h"
#include "app/widgets/views/disclosurecontroller.h"
#include "app/widgets/views/wheelguard.h"
#include "settings/settingsschema.h"

#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QVBoxLayout>

namespace quillet {

SettingsPanel::SettingsPanel(AppController& controller, AppModels& models, Sheets& sheets, QWidget* parent)
    : QScrollArea(parent), m_controller(controller), m_models(models), m_sheets(sheets),
      m_controls(new SettingsControls(models.settings(), sheets,
                                      models.defaults().stringList(QStringLiteral("ResolutionSet")))),
      m_watermarks(new WatermarkWindow(models.settings().watermarks(), sheets, parent)) {
    setObjectName(QStringLiteral("settingsPanel"));
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    // The content fills the visible height while that is enough and keeps
    // its minimum (with a scroll bar) below it.
    setWidgetResizable(true);

    auto* content = new QWidget;
    content->setObjectName(QStringLiteral("settingsContent"));
    content->setMinimumHeight(MinimumContentHeight);
    auto* layout = new QVBoxLayout(content);
    layout->setContentsMargins(0, 0, 4, 0);
    layout->addWidget(m_controls);
    layout->addWidget(buildButtons());
    // Made after the buttons so that the tab order follows the reading order.
    m_fileOptions = new FileOptionsBox(models.defaults(), content);
    layout->addWidget(m_fileOptions);
    m_versions = new VersionsBox(models.versions(), models.settings(), content);
    layout->addWidget(m_versions);
    layout->addStretch(1);
    setWidget(content);
    // Turning the wheel over the column scrolls it; a control changes only
    // once clicked or tabbed into.
    (new WheelGuard(this, this))->guardControlsIn(content);

    const QString expandedKey = QLatin1String(StoreKey::ScaleOptionsExpanded);
    m_controls->scalingDisclosure()->setExpanded(models.defaults().boolValue(expandedKey));
    connect(m_controls->scalingDisclosure(), &DisclosureController::toggled, this,
            [this, expandedKey](bool expanded) { m_models.defaults().setBool(expandedKey, expanded); });
    connect(m_controls, &SettingsControls::automaticRotationChosen, &controller,
            &AppController::showAutoRotateHint);
    connect(&models.renaming(), &RenamingModel::summaryChanged, m_renameSummary, &QLabel::setText);
}

QWidget* SettingsPanel::buildButtons() {
    auto* box = new QGroupBox(tr("Files"));
    auto* watermarks = new QPushButton(tr("Watermarks..."));
    watermarks->setObjectName(QStringLiteral("watermarksButton"));
    connect(watermarks, &QPushButton::clicked, this, &SettingsPanel::showWatermarks);
    auto* rename = new QPushButton(tr("Rename..."));
    rename->setObjectName(QStringLiteral("renameButton"));
    connect(rename, &QPushButton::clicked, this, &SettingsPanel::showRename);
    m_renameSummary = new QLabel(m_models.renaming().summary());
    m_renameSummary->setObjectName(QStringLiteral("renameSummary"));
    m_renameSummary->setWordWrap(true);
    m_renameSummary->setForegroundRole(QPalette::PlaceholderText);
    auto* creators = new CreatorComboBox(m_models.creators(), m_controller);

    auto* form = new QFormLayout(box);
    form->addRow(tr("Watermarks:"), watermarks);
    form->addRow(tr("Names:"), rename);
    form->addRow(QString(), m_renameSummary);
    auto* creatorLabel = new QLabel(tr("Creator:"));
    creatorLabel->setBuddy(creators);
    form->addRow(creatorLabel, creators);
    return box;
}

void SettingsPanel::showWatermarks() {
    m_watermarks->show();
    m_watermarks->raise();
    m_watermarks->activateWindow();
}

void SettingsPanel::showRename() {
    RenamingModel& renaming = m_models.renaming();
    SheetRequest request;
    request.title = tr("Rename");
    // One panel for the application's life: the pages keep what they show.
    request.keepDialog = true;
    request.makeDialog = [this, &renaming](QWidget* window) {
        renaming.beginEdit();
        if (!m_renamePanel)
            m_renamePanel = new RenamePanel(renaming.renamer(), window);
        m_renamePanel->showScheme();
        return m_renamePanel.data();
    };
    request.readAnswer = [](QDialog*, int result) {
        return SheetAnswer{result == QDialog::Accepted ? 1 : 0, {}};
    };
    renaming.endEdit(m_sheets.run(std::move(request)).code > 0);
}

void SettingsPanel::setToolTipsHidden(bool hidden) {
    m_controls->setToolTipsHidden(hidden);
    m_watermarks->setToolTipsHidden(hidden);
}

QSize SettingsPanel::minimumSizeHint() const {
    const int width =
        widget()->minimumSizeHint().width() + verticalScrollBar()->sizeHint().width() + 2 * frameWidth();
    return QSize(width, QScrollArea::minimumSizeHint().height());
}

void SettingsPanel::refresh() {
    m_fileOptions->refresh();
    m_versions->refresh();
    m_renameSummary->setText(m_models.renaming().summary());
}

} // namespace quillet
