#pragma once

#include <QMainWindow>
#include <QPointer>

#include <optional>

class QAction;
class QGridLayout;
class QLabel;
class QMenu;

namespace quillet {

class AboutBox;
class ActivityLogWindow;
class AppController;
class AppModels;
class Sheets;
class CommandComboBox;
class DropArea;
class PresetBar;
class InspectorWindow;
class InplaceWindow;
class PreviewPane;
class ProgressSheet;
class SettingsPanel;
class UpdateController;

// The main window: the drop area, the destination menu, the settings
// controls with the file options, the status line with the last picture's thumbnail, the progress
// sheet, the activity log window and the inspector. Closing it quits, after the running
// batch has been cancelled and its file in hand finished.
class MainWindow : public QMainWindow {
    Q_OBJECT
  public:
    MainWindow(AppController& controller, AppModels& models, Sheets& sheets, QWidget* parent = nullptr);
    ~MainWindow() override;

    ActivityLogWindow* activityLog() const { return m_log; }
    InspectorWindow* inspector() const { return m_inspector; }
    ProgressSheet* progressSheet() const { return m_progress; }
    SettingsPanel* settingsPanel() const { return m_settings; }
    PreviewPane* previewPane() const { return m_preview; }
    PresetBar* presetBar() const { return m_presets; }
    InplaceWindow* inplaceWindow() const { return m_inplace; }

    void setTitle(const std::optional<QString>& title);
    void setTitleSuffix(const std::optional<QString>& suffix);
    // Applies "HideToolTips" and "HideOnDeactivate".
    void applyPreferences();
    // Settings > Preferences...: OK applies the new preferences at once.
    void showPreferences();
    // Help > About Quillet: one box, brought to the front when open.
    void showAbout();
    // Opens a help page in the browser, or says the pages are missing.
    void showHelp(const QString& page);
    UpdateController* updates() const { return m_updates; }

  protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;

  private:
    void buildMenus();
    void buildHelpMenu(QMenu* settings);
    void buildInplaceMenu();
    void showPreview(bool shown);
    QWidget* buildStatusRow();
    void rebuildDestinationMenu();
    void destinationChosen(int index);
    void openPictures();
    void openFolder();
    void saveFrame();

    AppController& m_controller;
    AppModels& m_models;
    Sheets& m_sheets;
    DropArea* m_dropArea;
    // Made in reading order, which is the keyboard's tab order.
    CommandComboBox* m_destinations;
    PresetBar* m_presets;
    SettingsPanel* m_settings;
    QLabel* m_thumbnail = nullptr;
    QLabel* m_status = nullptr;
    QLabel* m_outputFolder = nullptr;
    PreviewPane* m_preview;
    QGridLayout* m_grid = nullptr;
    ProgressSheet* m_progress;
    ActivityLogWindow* m_log;
    UpdateController* m_updates;
    QPointer<AboutBox> m_about;
    InspectorWindow* m_inspector;
    InplaceWindow* m_inplace;
    QAction* m_openAction = nullptr;
    QAction* m_openFolderAction = nullptr;
    QAction* m_logAction = nullptr;
    QAction* m_inspectorAction = nullptr;
    QAction* m_previewAction = nullptr;
    QList<QAction*> m_idleActions;
    std::optional<QString> m_title;
    std::optional<QString> m_titleSuffix;
};

} // namespace quillet
