#pragma once

#include "engine/batch/batchgate.h"
#include "engine/batch/batchoptions.h"
#include "engine/batch/batchshell.h"
#include "engine/batch/imageprocessorhelper.h"
#include "naming/renamer.h"
#include "settings/processingrequest.h"
#include "support/filesystem.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace quillet {

// The batch job: mirrors the dropped files and folder trees into an output
// folder, one worker per folder level, and reports to its shell.
//
// The workers hand the run token to one another, so only one commits files at
// a time and the order in which they get it is open. This job runs them on one
// batch thread, one after the other in pre-order (the top level first, then
// each folder followed by its subfolders), which makes every run's log read
// the same. With BatchOptions::parallel the pixel work of the next files runs
// ahead on other threads; names, questions, log lines and counts are those of
// the plain run.
class ImageProcessor {
  public:
    ImageProcessor(BatchShell& shell, Renamer& renamer, FileSystem& fileSystem = FileSystem::standard());
    // Waits for a running batch and removes the single-file run's folder.
    ~ImageProcessor();
    ImageProcessor(const ImageProcessor&) = delete;
    ImageProcessor& operator=(const ImageProcessor&) = delete;

    // Starts a batch and returns at once; the shell hears of its end through
    // didProcess. Paths that do not exist are dropped. Does nothing while a
    // batch runs.
    void processFiles(const QStringList& paths, const ProcessingRequest& request, const QString& outputDir,
                      std::uint32_t creator, const BatchOptions& options);
    // Blocks until the running batch (if any) has finished.
    void waitForFinished();
    bool isRunning() const;

    // Processes one file on the calling thread into the private temporary
    // folder, replacing an older result there. Returns the output path, or
    // none when nothing was written. The clipboard flag belongs to the desktop
    // shell, which puts the result on the clipboard itself; it is accepted and
    // otherwise ignored here.
    std::optional<QString> processSingleFile(const QString& path, const ProcessingRequest& request,
                                             bool toClipboard, const BatchOptions& options = {});

    // All act between files: the file in hand is always finished. pause()
    // toggles and returns true when the batch is now paused; resume() undoes a
    // pause. None of them blocks, and each does nothing when no batch runs.
    void cancel();
    bool pause();
    void resume();
    bool isPaused() const;

    Renamer& renamer() { return m_renamer; }

    // "/tmp/<process name><pid>", created when absent; none when the path is
    // taken by something that is not a folder.
    static std::optional<QString> createTmpFolder();
    static void removeTmpFolder();

    // The workers for the given files and folders: one for the files, then a
    // pre-order walk of the folders. Symbolic links are followed, but a folder
    // met again (a link to an ancestor, or the same folder twice) is not
    // entered a second time: `log` gets a warning instead.
    static std::vector<ImageProcessorHelper> makeHelpers(const QStringList& files,
                                                         const QStringList& directories,
                                                         const QString& outputDir, ActivityLog& log);
    // Existing non-folders and existing folders of the list, in order.
    static QStringList filesFromPaths(const QStringList& paths);
    static QStringList directoriesFromPaths(const QStringList& paths);
    // Every entry of the folder, hidden ones included, as full paths.
    static QStringList directoryContentsAtPath(const QString& path);

  private:
    struct Batch;
    void runBatch(Batch& batch);

    BatchShell& m_shell;
    Renamer& m_renamer;
    FileSystem& m_fileSystem;
    mutable std::mutex m_mutex;
    std::shared_ptr<BatchGate> m_gate;
    std::thread m_thread;
    bool m_running = false;
};

} // namespace quillet
