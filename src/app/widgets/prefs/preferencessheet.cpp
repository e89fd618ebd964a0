#include "app/widgets/prefs/preferencessheet.h"

#include "app/widgets/sheets/promptdialogs.h"
#include "app/widgets/sheets/sheets.h"
#include "settings/settingsschema.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace quillet {

namespace {

QCheckBox* checkBox(const QString& text, const char* name, QWidget* parent) {
    auto* box = new QCheckBox(text, parent);
    box->setObjectName(QLatin1String(name));
    return box;
}

} // namespace

PreferencesSheet::PreferencesSheet(QWidget* parent)
    : QDialog(parent), m_singleFile(new QButtonGroup(this)),
      m_revealFolder(checkBox(tr("Show the output folder when a batch ends"), "revealFolder", this)),
      m_hideOnDeactivate(
          checkBox(tr("Hide the activity log while Quillet is in the background"), "hideOnDeactivate", this)),
      m_hideToolTips(checkBox(tr("Hide tool tips"), "hideToolTips", this)),
      m_brushMetal(checkBox(tr("Brushed metal window (from the next start)"), "brushMetal", this)),
      m_onTheFlyFolder(
          checkBox(tr("Ask for a new output folder before each batch"), "onTheFlyFolder", this)) {
    setObjectName(QStringLiteral("preferencesSheet"));
    setWindowTitle(tr("Preferences"));

    auto* single = new QGroupBox(tr("When a single file is dropped"), this);
    auto* singleLayout = new QVBoxLayout(single);
    const SettingKey& key = SettingsSchema::entry(StoreKey::SingleFile);
    for (const SettingChoice& choice : key.choices) {
        auto* radio = new QRadioButton(choice.displayName, single);
        radio->setObjectName(QStringLiteral("singleFile%1").arg(choice.code));
        m_singleFile->addButton(radio, choice.code);
        singleLayout->addWidget(radio);
    }

    auto* general = new QGroupBox(tr("Batches and windows"), this);
    auto* generalLayout = new QVBoxLayout(general);
    for (QCheckBox* box :
         {m_onTheFlyFolder, m_revealFolder, m_hideOnDeactivate, m_hideToolTips, m_brushMetal})
        generalLayout->addWidget(box);

    auto* buttons = new QDialogButtonBox(this);
    QPushButton* cancel = buttons->addButton(tr("Cancel"), QDialogButtonBox::RejectRole);
    QPushButton* ok = buttons->addButton(tr("OK"), QDialogButtonBox::AcceptRole);
    cancel->setObjectName(QStringLiteral("cancelButton"));
    ok->setObjectName(QStringLiteral("okButton"));
    cancel->setProperty(PromptDialogs::TagProperty, 0);
    ok->setProperty(PromptDialogs::TagProperty, 1);
    ok->setDefault(true);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(single);
    layout->addWidget(general);
    layout->addWidget(buttons);
    PromptDialogs::wirePanelButtons(this);
}

void PreferencesSheet::setValue(const Preferences& value) {
    if (QAbstractButton* radio = m_singleFile->button(value.singleFile))
        radio->setChecked(true);
    m_revealFolder->setChecked(value.revealFolder);
    m_hideOnDeactivate->setChecked(value.hideOnDeactivate);
    m_hideToolTips->setChecked(value.hideToolTips);
    m_brushMetal->setChecked(value.brushMetal);
    m_onTheFlyFolder->setChecked(value.onTheFlyFolder);
}

Preferences PreferencesSheet::value() const {
    Preferences p;
    p.singleFile = qMax(m_singleFile->checkedId(), 0);
    p.revealFolder = m_revealFolder->isChecked();
    p.hideOnDeactivate = m_hideOnDeactivate->isChecked();
    p.hideToolTips = m_hideToolTips->isChecked();
    p.brushMetal = m_brushMetal->isChecked();
    p.onTheFlyFolder = m_onTheFlyFolder->isChecked();
    return p;
}

bool PreferencesSheet::edit(Sheets& sheets, UserDefaults& defaults) {
    // Made afresh from the store each time, so a cancelled edit never shows
    // again.
    const Preferences stored = Preferences::read(defaults);
    Preferences edited = stored;
    SheetRequest request;
    request.title = tr("Preferences");
    request.makeDialog = [stored](QWidget* window) {
        auto* sheet = new PreferencesSheet(window);
        sheet->setValue(stored);
        return sheet;
    };
    request.readAnswer = [&edited](QDialog* dialog, int result) {
        if (result == 1)
            edited = static_cast<PreferencesSheet*>(dialog)->value();
        return SheetAnswer{result == 1 ? 1 : 0, {}};
    };
    if (sheets.run(std::move(request)).code != 1)
        return false;
    edited.write(defaults);
    return true;
}

} // namespace quillet
