#pragma once

#include "app/models/preferences.h"

#include <QDialog>

class QButtonGroup;
class QCheckBox;

namespace quillet {

class Sheets;
class UserDefaults;

// The preferences sheet: what a drop of one file does, and five switches.
// It shows a Preferences value and hands back the edited one; nothing is
// stored until OK.
class PreferencesSheet : public QDialog {
    Q_OBJECT
  public:
    explicit PreferencesSheet(QWidget* parent = nullptr);

    void setValue(const Preferences& value);
    Preferences value() const;

    // Opens the sheet on the stored preferences. OK writes every control to
    // the store and returns true; Cancel, Escape or closing it writes nothing.
    static bool edit(Sheets& sheets, UserDefaults& defaults);

  private:
    QButtonGroup* m_singleFile;
    QCheckBox* m_revealFolder;
    QCheckBox* m_hideOnDeactivate;
    QCheckBox* m_hideToolTips;
    QCheckBox* m_brushMetal;
    QCheckBox* m_onTheFlyFolder;
};

} // namespace quillet
