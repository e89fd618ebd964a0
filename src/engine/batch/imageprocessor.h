#pragma once

#include "engine/batch/batchgate.h"
#include "engine/batch/batchoptions.h"
#include "engine/batch/batchshell.h"
#include "engine/batch/imageprocessorhelper.h"
#include "naming/renamer.h"
#include "settings/outputversion.h"
#include "settings/processingrequest.h"
#include "support/filesystem.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <functional>
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
// the same. The batch thread also lists the input, so starting a batch costs
// its caller nothing however large the tree. With BatchOptions::parallel the pixel work of the next files
// runs ahead on other threads; names, questions, log lines and counts are those of the plain run.
class ImageProcessor {
  public:
    ImageProcessor(BatchShell& shell, Renamer& renamer, FileSystem& fileSystem = FileSystem::standard());
    // Waits for a running batch and removes the single-file run's folder.
    ~ImageProcessor();
    ImageProcessor(const ImageProcessor&) = delete;
    ImageProcessor& operator=(const ImageProcessor&) = delete;

    // Starts a batch and returns at once; the input is listed on the batch
    // thread, and the shell hears of its end through didProcess. Paths that do
    // not exist are reported and left out. Does nothing while a batch runs.
    // The batch works with a copy of the renamer taken here, so the scheme
    // may be edited while it runs.
    void processFiles(const QStringList& paths, const ProcessingRequest& request, const QString& outputDir,
                      std::uint32_t creator, const BatchOptions& options);
    // The same batch writing each picture once per version, each into its
    // own folder inside `outputDir` or beside the others with its name
    // suffix. Each version's tree is the one its batch alone would write
    // there; every picture is read once, and decoded once for the versions
    // that shrink it alike. Progress counts files, not versions.
    void processFiles(const QStringList& paths, std::vector<OutputVersion> versions, const QString& outputDir,
                      std::uint32_t creator, const BatchOptions& options);
    // Blocks until the running batch (if any) has finished.
    void waitForFinished();
    bool isRunning() const;

    // Told the output path of a single-file run, or none when nothing was
    // written; called on the batch thread as the run's last act.
    using SingleFileDone = std::function<void(const std::optional<QString>&)>;
    // Processes one file into the private temporary folder, replacing an older
    // result there, on the batch thread as a batch would, and returns at once.
    // The run counts as a batch for isRunning() until `done` is called. The
    // clipboard flag belongs to the desktop shell, which puts the result on
    // the clipboard itself; it is accepted and otherwise ignored here. Returns
    // false, and does nothing, while a batch runs.
    bool processSingleFile(const QString& path, const ProcessingRequest& request, bool toClipboard,
                           const BatchOptions& options, SingleFileDone done);

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

  private:
    struct Batch;
    // Starts `work` on a new batch thread unless one runs; returns whether it did.
    bool start(const std::shared_ptr<BatchGate>& gate, std::function<void()> work);
    void finish();
    void runBatch(Batch& batch);
    void runWorkers(Batch& batch);
    void reportEnd(Batch& batch);
    void runSingleFile(const QString& path, const ProcessingRequest& request, const BatchOptions& options,
                       Renamer& renamer, const SingleFileDone& done);

    BatchShell& m_shell;
    Renamer& m_renamer;
    FileSystem& m_fileSystem;
    mutable std::mutex m_mutex;
    std::shared_ptr<BatchGate> m_gate;
    std::thread m_thread;
    bool m_running = false;
};

} // namespace quillet
