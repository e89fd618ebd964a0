#pragma once

#include <QMainWindow>

#include <optional>

class QAction;
class QGridLayout;
class QLabel;

namespace quillet {

class ActivityLogWindow;
class AppController;
class AppModels;
class Sheets;
class CommandComboBox;
class DropArea;
class InplaceWindow;
class PreviewPane;
class ProgressSheet;
class SettingsPanel;

// The main window: the drop area, the destination menu, the settings
// controls with the file options, the status line with the last picture's thumbnail, the progress
// sheet and the activity log window. Closing it quits, after the running
// batch has been cancelled and its file in hand finished.
class MainWindow : public QMainWindow {
    Q_OBJECT
  public:
    MainWindow(AppController& controller, AppModels& models, Sheets& sheets, QWidget* parent = nullptr);
    ~MainWindow() override;

    ActivityLogWindow* activityLog() const { return m_log; }
    ProgressSheet* progressSheet() const { return m_progress; }
    SettingsPanel* settingsPanel() const { return m_settings; }
    PreviewPane* previewPane() const { return m_preview; }
    InplaceWindow* inplaceWindow() const { return m_inplace; }

    void setTitle(const std::optional<QString>& title);
    void setTitleSuffix(const std::optional<QString>& suffix);
    // Applies "HideToolTips" and "HideOnDeactivate".
    void applyPreferences();

  protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;

  private:
    void buildMenus();
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
    SettingsPanel* m_settings;
    QLabel* m_thumbnail = nullptr;
    QLabel* m_status = nullptr;
    QLabel* m_outputFolder = nullptr;
    PreviewPane* m_preview;
    QGridLayout* m_grid = nullptr;
    ProgressSheet* m_progress;
    ActivityLogWindow* m_log;
    InplaceWindow* m_inplace;
    QAction* m_openAction = nullptr;
    QAction* m_openFolderAction = nullptr;
    QAction* m_logAction = nullptr;
    QAction* m_previewAction = nullptr;
    QList<QAction*> m_idleActions;
    std::optional<QString> m_title;
    std::optional<QString> m_titleSuffix;
};

} // namespace quillet
