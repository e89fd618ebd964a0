#pragma once

#include "app/activitylogmodel.h"
#include "app/creatormenu.h"
#include "app/destinationlist.h"
#include "app/guishell.h"
#include "app/settingsmodel.h"
#include "engine/batch/imageprocessor.h"
#include "naming/renamer.h"
#include "settings/userdefaults.h"

#include <QImage>
#include <QObject>
#include <QSettings>

#include <memory>

namespace quillet {

class DesktopServices;
class Sheets;

// The state the main window shows and the batch control behind it: takes the
// paths dropped or opened, picks the output folder, asks what must be asked,
// runs the batch job and reports its progress and end. Widgets only show
// this object's state and forward the user's actions to it.
class AppController : public QObject {
    Q_OBJECT
  public:
    // Opens the settings store (SettingsStore::open) and makes the batch job.
    explicit AppController(Sheets& sheets, DesktopServices& desktop, QObject* parent = nullptr);
    ~AppController() override;

    UserDefaults& defaults() { return m_defaults; }
    ActivityLogModel& log() { return m_log; }
    DestinationList& destinations() { return m_destinations; }
    CreatorMenu& creators() { return m_creators; }
    // The window's processing settings; every change is written to the store.
    SettingsModel& settings() { return m_settings; }
    Renamer& renamer() { return m_renamer; }
    ImageProcessor& job() { return *m_job; }
    Sheets& sheets() { return m_sheets; }

    // Queues a path for the next batch; every path opened before control
    // returns to the event loop joins the same batch.
    void openFile(const QString& path);
    // Runs the queued paths as one batch.
    void startProcessing();
    // Starts a batch of the given paths (or the single-file run), after the
    // folder-name, clutter and thumbnail-icon questions. Returns at once
    // once the batch runs; does nothing while one runs.
    void processFiles(const QStringList& paths);
    // Toggles pause; between files, like cancel.
    void pause();
    void cancel();

    bool isProcessing() const { return m_processing; }
    QString status() const { return m_status; }
    QString currentFile() const { return m_currentFile; }
    QImage thumbnail() const { return m_thumbnail; }
    int progress() const { return m_progress; }
    int progressMaximum() const { return m_progressMaximum; }
    QString pauseButtonTitle() const { return m_pauseTitle; }
    QString outputFolder() const { return m_outputFolder; }

    // True when the application may quit now. Otherwise the running batch is
    // cancelled, a question on show is answered Skip, and readyToQuit follows
    // once the file in hand is finished.
    bool requestQuit();

    // The processing record of the next batch, from the settings controls.
    ProcessingParams currentSetting();

    // "Choose an Application ...": a chooser (or an application dropped on
    // it) adds a creator; one without a creator code is refused with a sheet,
    // and a refusal or a cancel selects the previous creator again.
    void chooseCreator();
    // Runs the renaming panel as a sheet; OK stores the scheme, anything else
    // reloads it. Emits renameSummaryChanged.
    void setupRename();
    // "e.g. <examples> ...", or "Same as input filename" for no renaming.
    QString renameSummary() const;
    // Shows the "Auto-Rotate Hint" sheet unless it was turned off.
    void showAutoRotateHint();
    // The user's desktop folder, the "Desktop" of the settings.
    static QString desktopFolder();

  Q_SIGNALS:
    void statusChanged(const QString& status);
    void currentFileChanged(const QString& text);
    void thumbnailChanged(const QImage& thumbnail);
    void progressChanged(int value, int maximum);
    void progressSheetShown(bool shown);
    void pauseTitleChanged(const QString& title);
    void processingChanged(bool processing);
    void outputFolderChanged(const QString& folder);
    void renameSummaryChanged(const QString& summary);
    void creatorsChanged();
    void readyToQuit();
    // A batch ended (not on quitting), after the status line says so.
    void batchEnded(int processed, int total, const QString& outputFolder);

  private:
    void processSingleFile(const QString& path, int option);
    void didProcess(int processed, int total);
    void setStatus(const QString& status);
    void setThumbnail(const QImage& thumbnail);
    void setProgress(int value);
    void setPauseTitle(const QString& title);
    void setProcessing(bool processing);
    void setOutputFolder(const QString& folder);
    void storeSettings();

    std::unique_ptr<QSettings> m_store;
    UserDefaults m_defaults;
    Renamer m_renamer;
    Sheets& m_sheets;
    DesktopServices& m_desktop;
    DestinationList m_destinations;
    CreatorMenu m_creators;
    SettingsModel m_settings;
    ActivityLogModel m_log;
    GuiShell m_shell;
    std::unique_ptr<ImageProcessor> m_job;

    QStringList m_queue;
    bool m_starting = false;
    bool m_processing = false;
    bool m_quitting = false;
    QString m_status;
    QString m_currentFile;
    QImage m_thumbnail;
    int m_progress = 0;
    int m_progressMaximum = 0;
    QString m_pauseTitle;
    QString m_outputFolder;
};

} // namespace quillet
