#pragma once

#include "engine/batch/batchcontext.h"
#include "engine/batch/batcherror.h"
#include "engine/pipeline/renderfile.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <stdexcept>
#include <vector>

namespace quillet {

class BatchGate;
class BatchRenderQueue;

// Raised by the commit stage when an output file cannot be written; it ends
// the worker, which keeps a WriteFailed error for the folder it could not
// write in.
class WriteException : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// One worker of a batch: the files of one folder level and the output folder
// they go to. It keeps the answers to the replace question for the rest of
// its own files, the output index (files it has written), and its error.
class ImageProcessorHelper {
  public:
    enum Result : int { Written = 0, NotAPicture = 1, Corrupted = 2, NotWritten = 3 };

    ImageProcessorHelper(QStringList paths, QString outputDir);
    // A bare worker for the single-file run: no files, no folder.
    ImageProcessorHelper() = default;

    // Creates the output folders and handles every file of this level in
    // order, taking the rendered files from `queue` starting at task
    // `firstTask`. `outputs` holds a worker of these files for each version
    // of the batch, with its own output folder and context in `contexts`;
    // output v commits version v of each file. A write failure ends that
    // version's worker at once, and the others go on. Stops between files
    // when the gate is cancelled. This worker then counts the files the
    // furthest version handled, and keeps the last version's error.
    void run(std::vector<ImageProcessorHelper>& outputs, const std::vector<BatchContext*>& contexts,
             BatchGate& gate, BatchRenderQueue& queue, int firstTask);

    // Renders and commits one file: returns a Result; raises WriteException.
    int processFile(const QString& path, int index, BatchContext& context, const QString& outputDir,
                    std::optional<vips::VImage>* thumbnailOut);
    // The commit stage of one rendered file: naming, the replace question,
    // writing, EXIF, attributes and the file's log lines. Raises WriteException.
    int commitFile(RenderedFile& rendered, int index, BatchContext& context, const QString& outputDir,
                   std::optional<vips::VImage>* thumbnailOut);

    const QStringList& paths() const { return m_paths; }
    const QString& outputDir() const { return m_outputDir; }
    int numFiles() const { return int(m_paths.size()); }
    int numFilesProcessed() const { return m_numFilesProcessed; }
    // What ended this worker early, if anything did.
    const std::optional<BatchError>& error() const { return m_error; }
    // The last path written; empty before any.
    QString lastOutputPath() const { return m_lastOutputPath; }

    // The warning logged when an unexpected error ends a worker (or the
    // single-file run) at `path`.
    static QString stoppedLine(const QString& outputDir, const QString& path, const std::exception& e);

  private:
    // Commits version v of a file; false when its worker has ended.
    bool commitVersion(RenderedFile& rendered, int& index, BatchContext& context,
                       std::optional<vips::VImage>& thumbnail, int& result);
    QString writeImage(RenderedFile& rendered, int index, BatchContext& context, const QString& outputDir);
    bool checkPathExists(const QString& path, BatchShell& shell);
    void setAttributes(const RenderedFile& rendered, const QString& outputPath, BatchContext& context) const;

    QStringList m_paths;
    QString m_outputDir;
    bool m_replaceAll = false;
    bool m_skipAll = false;
    bool m_skipOverwrite = false;
    QString m_lastOutputPath;
    int m_numFilesProcessed = 0;
    std::optional<BatchError> m_error;
    QString m_failedFolder; // set by writeImage before it raises WriteException
};

} // namespace quillet
