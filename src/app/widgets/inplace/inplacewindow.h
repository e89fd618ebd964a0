#pragma once

#include "inplace/inplacesession.h"

#include <QWidget>

class QCheckBox;
class QPropertyAnimation;
class QPushButton;
class QRadioButton;
class QTabWidget;
class QTextBrowser;

namespace quillet {

class InplaceDropTarget;
class InplaceModel;
class InplaceProgressSheet;
class Sheets;
class UserDefaults;

// The in-place panel: lossless rotation, file dates from EXIF and custom
// icons, one tab each, with the drop targets that start them. The model runs
// the operations; this window shows its progress sheet and its alerts, and
// offers to undo the last rotation while its backups can be put back. Its
// frame and whether it is open are kept in the settings store.
class InplaceWindow : public QWidget {
    Q_OBJECT
  public:
    enum Tab { RotationTab, DatesTab, IconsTab };

    InplaceWindow(InplaceModel& model, Sheets& sheets, UserDefaults& defaults, QWidget* parent = nullptr);

    // Opens the window on the given tab (the main window's menu commands).
    void showTab(int tab);
    // The Help button: shows the help below the tabs and grows the window to
    // make room for it; pressed again, puts it away.
    void toggleHelp();
    bool isHelpShown() const;

    InplaceDropTarget* target(InplaceAction action) const;
    InplaceProgressSheet* progressSheet() const { return m_progress; }

    // The height the window grows to, at least, when the help comes up.
    static constexpr int HelpHeight = 400;

  protected:
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    QWidget* buildRotationTab();
    QWidget* buildDatesTab();
    QWidget* buildIconsTab();
    InplaceDropTarget* addTarget(InplaceAction action, int glyph, const QString& title, const QString& name);
    void chooseFor(InplaceAction action);
    void runningChanged(bool running);
    void saveFrame();

    InplaceModel& m_model;
    Sheets& m_sheets;
    UserDefaults& m_defaults;
    QTabWidget* m_tabs;
    QList<QPair<InplaceAction, InplaceDropTarget*>> m_targets;
    QCheckBox* m_keepBackup = nullptr;
    QPushButton* m_undo = nullptr;
    QRadioButton* m_creationOnly = nullptr;
    QRadioButton* m_bothDates = nullptr;
    QPushButton* m_helpButton = nullptr;
    QTextBrowser* m_help = nullptr;
    QPropertyAnimation* m_grow = nullptr;
    InplaceProgressSheet* m_progress;
    bool m_restoring = false;
};

} // namespace quillet
