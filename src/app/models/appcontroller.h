#pragma once

#include "app/models/guishell.h"
#include "engine/batch/imageprocessor.h"

#include <QImage>
#include <QObject>

#include <memory>
#include <optional>
#include <vector>

namespace quillet {

class AppModels;
class DesktopServices;
class Questions;

// The batch control behind the main window: takes the paths dropped or
// opened, picks the output folder, asks what must be asked, runs the batch
// job on the models' settings and reports its progress and end. Widgets only
// show this object's state and forward the user's actions to it.
class AppController : public QObject {
    Q_OBJECT
  public:
    AppController(AppModels& models, Questions& questions, DesktopServices& desktop,
                  QObject* parent = nullptr);
    ~AppController() override;

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
    bool isBatchRunning() const { return m_job->isRunning(); }
    QString status() const { return m_status; }
    QString currentFile() const { return m_currentFile; }
    QImage thumbnail() const { return m_thumbnail; }
    int progress() const { return m_progress; }
    // BatchShell::UnknownTotal while the batch lists its input.
    int progressMaximum() const { return m_progressMaximum; }
    QString pauseButtonTitle() const { return m_pauseTitle; }
    QString outputFolder() const { return m_outputFolder; }

    // True when the application may quit now. Otherwise the running batch is
    // cancelled, a question on show is answered Skip, and readyToQuit follows
    // once the file in hand is finished.
    bool requestQuit();

    // "Choose an Application ...": a chooser (or an application dropped on
    // it) adds a creator; one without a creator code is refused with a sheet,
    // and a refusal or a cancel selects the previous creator again.
    void chooseCreator();
    // Shows the "Auto-Rotate Hint" sheet unless it was turned off.
    void showAutoRotateHint();
    // What the window asks of the desktop (web pages, the file manager).
    DesktopServices& desktop() const { return m_desktop; }
    // The user's desktop folder, the "Desktop" of the settings.
    static QString desktopFolder();

  Q_SIGNALS:
    // The paths of a drop or open, before their batch starts.
    void queueOpened(const QStringList& paths);
    void statusChanged(const QString& status);
    void currentFileChanged(const QString& text);
    void thumbnailChanged(const QImage& thumbnail);
    void progressChanged(int value, int maximum);
    void progressSheetShown(bool shown);
    void pauseTitleChanged(const QString& title);
    void processingChanged(bool processing);
    void outputFolderChanged(const QString& folder);
    void creatorsChanged();
    void readyToQuit();
    // A batch ended (not on quitting), after the status line says so.
    void batchEnded(int processed, int total, const QString& outputFolder);

  private:
    void processSingleFile(const QString& path, int option);
    // The batch's versions, or none after telling the user which one cannot run.
    std::optional<std::vector<OutputVersion>> resolvedVersions();
    void didProcess(int processed, int total);
    void didProcessSingleFile(const std::optional<QString>& output, bool toClipboard);
    void setStatus(const QString& status);
    void setThumbnail(const QImage& thumbnail);
    void setProgress(int value);
    void setPauseTitle(const QString& title);
    void setProcessing(bool processing);
    void setOutputFolder(const QString& folder);

    AppModels& m_models;
    Questions& m_questions;
    DesktopServices& m_desktop;
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
