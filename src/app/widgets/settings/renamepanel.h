#pragma once

#include <QDialog>

class QButtonGroup;
class QComboBox;
class QLabel;
class QLineEdit;
class QStackedWidget;

namespace quillet {

class KVStepper;
class Renamer;

// The renaming panel: one page per scheme, edited live into the renamer
// (the scheme in memory follows every keystroke, so the example names do),
// with OK storing it and Cancel reloading it from the store; the caller does
// either through Renamer::acceptChanges. The panel takes the height of the
// chosen scheme's page, keeping its top edge where it was.
class RenamePanel : public QDialog {
    Q_OBJECT

  public:
    explicit RenamePanel(Renamer& renamer, QWidget* parent = nullptr);

    // Puts the renamer's scheme into the fields, as loading from the store
    // does: only the saved scheme's page is filled, the others keep theirs
    // (each page starts from the scheme the panel was made with). The panel
    // is made once and shown again for every edit.
    void showScheme();
    // Chooses a scheme as the type menu does.
    void selectType(int type);
    QString examplesText() const;

    // The panel heights of the four schemes, top edge fixed.
    static int heightForType(int type);

  private:
    void readPage(int type);
    void edited(int type);
    void updateExamples();
    void fitHeight();

    Renamer& m_renamer;
    QComboBox* m_type = nullptr;
    QStackedWidget* m_pages = nullptr;
    QLineEdit* m_numPrefix = nullptr;
    QLineEdit* m_numSuffix = nullptr;
    KVStepper* m_digits = nullptr;
    KVStepper* m_start = nullptr;
    QLineEdit* m_origPrefix = nullptr;
    QLineEdit* m_origSuffix = nullptr;
    QLineEdit* m_datePrefix = nullptr;
    QLineEdit* m_dateSuffix = nullptr;
    QComboBox* m_dateFormat = nullptr;
    QComboBox* m_conflictFormat = nullptr;
    QButtonGroup* m_fallback = nullptr;
    QLabel* m_examples = nullptr;
    bool m_loading = false;
};

} // namespace quillet
