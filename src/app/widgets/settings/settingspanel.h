#pragma once

#include <QPointer>
#include <QScrollArea>

class QLabel;

namespace quillet {

class AppController;
class AppModels;
class Sheets;
class FileOptionsBox;
class RenamePanel;
class SettingsControls;
class VersionsBox;
class WatermarkWindow;

// The right-hand side of the main window: the settings controls, the
// watermark and renaming buttons with the rename summary line, the creator
// menu, the file options and the versions, scrolled when the window is too low for them.
// The content is never squeezed below a height the controls fit in.
class SettingsPanel : public QScrollArea {
    Q_OBJECT
  public:
    static constexpr int MinimumContentHeight = 364;

    SettingsPanel(AppController& controller, AppModels& models, Sheets& sheets, QWidget* parent = nullptr);

    SettingsControls* controls() const { return m_controls; }
    VersionsBox* versions() const { return m_versions; }
    WatermarkWindow* watermarkWindow() const { return m_watermarks; }
    // Removes or restores the tool tips of every control here and in the
    // watermark window ("HideToolTips").
    void setToolTipsHidden(bool hidden);
    void showWatermarks();
    // Runs the renaming panel as a sheet: OK stores the scheme, anything
    // else reads the stored one back.
    void showRename();
    // Reads the stored file options and renaming scheme again.
    void refresh();
    // As wide as the controls at their least with the scroll bar beside them:
    // the column scrolls up and down, never sideways.
    QSize minimumSizeHint() const override;

  private:
    QWidget* buildButtons();

    AppController& m_controller;
    AppModels& m_models;
    Sheets& m_sheets;
    SettingsControls* m_controls;
    WatermarkWindow* m_watermarks;
    QLabel* m_renameSummary = nullptr;
    // Made the first time it is shown, as a child of the window.
    QPointer<RenamePanel> m_renamePanel;
    FileOptionsBox* m_fileOptions = nullptr;
    VersionsBox* m_versions = nullptr;
};

} // namespace quillet
