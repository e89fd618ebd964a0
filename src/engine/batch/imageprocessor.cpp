#include "engine/batch/imageprocessor.h"

#include "engine/batch/batchlog.h"
#include "engine/batch/batchrenderqueue.h"
#include "engine/pipeline/pipelinesteps.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include <set>

namespace quillet {

struct ImageProcessor::Batch {
    std::vector<ImageProcessorHelper> helpers;
    ProcessingParams params;
    std::uint32_t creator = 0;
    BatchOptions options;
    std::shared_ptr<BatchGate> gate;
};

namespace {

QString absolutePath(const QString& path) {
    return QDir::cleanPath(QFileInfo(path).absoluteFilePath());
}

void collectHelpers(const QStringList& files, const QStringList& directories, const QString& outputDir,
                    std::set<QString>& visited, std::vector<ImageProcessorHelper>& helpers,
                    ActivityLog& log) {
    helpers.emplace_back(files, outputDir);
    for (const QString& directory : directories) {
        const QString real = QFileInfo(directory).canonicalFilePath();
        if (!visited.insert(real).second) {
            log.writeWarningActivity(
                QStringLiteral("Skipping folder '%1': already visited (link loop)\n").arg(directory));
            continue;
        }
        const QStringList contents = ImageProcessor::directoryContentsAtPath(directory);
        collectHelpers(ImageProcessor::filesFromPaths(contents),
                       ImageProcessor::directoriesFromPaths(contents),
                       QDir(outputDir).filePath(QFileInfo(directory).fileName()), visited, helpers, log);
    }
}

int renderThreadCount(const BatchOptions& options) {
    if (!options.parallel)
        return 0;
    if (options.renderThreads > 0)
        return options.renderThreads;
    return std::max(1, int(std::thread::hardware_concurrency()));
}

RenderSettings renderSettings(const ProcessingParams& params, const BatchOptions& options,
                              const Renamer& renamer, const BatchShell& shell, bool loadWatermarkAnyway) {
    RenderSettings settings;
    settings.request = ProcessingRequest::decode(params);
    const ProcessingRequest& request = settings.request;
    if ((request.imageWatermark.enabled || loadWatermarkAnyway) && !request.imageWatermark.path.isEmpty())
        settings.watermark = PipelineSteps::loadWatermark(request.imageWatermark.path);
    settings.needsInfo = renamer.renameType() == Renamer::Date || request.textWatermark.enabled ||
                         options.setCreationDate || options.setModificationDate;
    settings.wantsThumbnail = shell.wantsThumbnails();
    return settings;
}

} // namespace

ImageProcessor::ImageProcessor(BatchShell& shell, Renamer& renamer, FileSystem& fileSystem)
    : m_shell(shell), m_renamer(renamer), m_fileSystem(fileSystem) {}

ImageProcessor::~ImageProcessor() {
    waitForFinished();
    removeTmpFolder();
}

QStringList ImageProcessor::filesFromPaths(const QStringList& paths) {
    QStringList files;
    for (const QString& path : paths) {
        const QFileInfo info(path); // follows links, so a dangling one does not exist
        if (info.exists() && !info.isDir())
            files.append(path);
    }
    return files;
}

QStringList ImageProcessor::directoriesFromPaths(const QStringList& paths) {
    QStringList directories;
    for (const QString& path : paths)
        if (QFileInfo(path).isDir())
            directories.append(path);
    return directories;
}

QStringList ImageProcessor::directoryContentsAtPath(const QString& path) {
    // Sorted by name (code-point order, as `LC_ALL=C ls` shows it) so that
    // sequence numbers do not depend on the file system's own order.
    const QDir dir(path);
    const QStringList names =
        dir.entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
    QStringList contents;
    contents.reserve(names.size());
    for (const QString& name : names)
        contents.append(dir.filePath(name));
    return contents;
}

std::vector<ImageProcessorHelper> ImageProcessor::makeHelpers(const QStringList& files,
                                                              const QStringList& directories,
                                                              const QString& outputDir, ActivityLog& log) {
    std::vector<ImageProcessorHelper> helpers;
    std::set<QString> visited;
    collectHelpers(files, directories, outputDir, visited, helpers, log);
    return helpers;
}

void ImageProcessor::processFiles(const QStringList& paths, const ProcessingParams& params,
                                  const QString& outputDir, std::uint32_t creator,
                                  const BatchOptions& options) {
    std::lock_guard lock(m_mutex);
    if (m_running)
        return;
    if (m_thread.joinable())
        m_thread.join();

    QStringList absolute;
    for (const QString& path : paths)
        absolute.append(absolutePath(path));
    auto batch = std::make_shared<Batch>();
    batch->params = params;
    batch->creator = creator;
    batch->options = options;
    batch->gate = std::make_shared<BatchGate>();
    // Every part of a sharded batch lists the whole tree; only the first
    // reports what the listing met, so the parts' logs add up to one run's.
    BatchLog otherPartsListing;
    ActivityLog& listingLog =
        options.shard.index == 1 ? static_cast<ActivityLog&>(m_shell) : otherPartsListing;
    batch->helpers = options.shard.select(makeHelpers(
        filesFromPaths(absolute), directoriesFromPaths(absolute), absolutePath(outputDir), listingLog));
    int total = 0;
    for (const ImageProcessorHelper& helper : batch->helpers)
        total += helper.numFiles();
    m_shell.beginProgressSheet(total);
    m_gate = batch->gate;
    m_running = true;
    m_thread = std::thread([this, batch] { runBatch(*batch); });
}

void ImageProcessor::runBatch(Batch& batch) {
    BatchContext context{m_shell,
                         m_renamer,
                         m_fileSystem,
                         batch.options,
                         batch.creator,
                         renderSettings(batch.params, batch.options, m_renamer, m_shell, false),
                         {}};
    // Said once for the batch rather than left for the user to notice.
    const ProcessingRequest::ImageWatermark& watermark = context.render.request.imageWatermark;
    if (watermark.enabled && !context.render.watermark)
        m_shell.writeWarningActivity(
            QStringLiteral("Unable to read the watermark '%1'; pictures are written without it\n")
                .arg(watermark.path));
    {
        QStringList tasks;
        for (const ImageProcessorHelper& helper : batch.helpers)
            tasks.append(helper.paths());
        const RenderSettings& settings = context.render;
        BatchRenderQueue queue(
            tasks, [&settings](const QString& path) { return renderFile(path, settings); },
            renderThreadCount(batch.options));
        context.fileWritten = [&queue](const QString& path) { queue.fileWritten(path); };
        int firstTask = 0;
        for (ImageProcessorHelper& helper : batch.helpers) {
            helper.run(context, *batch.gate, queue, firstTask);
            firstTask += helper.numFiles();
        }
    }

    // Cleanup: every worker has ended.
    m_shell.endProgressSheet();
    int total = 0;
    int processed = 0;
    std::optional<BatchError> error;
    for (const ImageProcessorHelper& helper : batch.helpers) {
        total += helper.numFiles();
        processed += helper.numFilesProcessed();
        if (helper.error())
            error = helper.error(); // the last failing worker in tree order wins
    }
    if (error)
        m_shell.reportError(*error);
    batch.helpers.clear();
    {
        std::lock_guard lock(m_mutex);
        m_running = false;
    }
    m_shell.didProcess(processed, total);
    m_shell.clearStatus();
}

void ImageProcessor::waitForFinished() {
    std::thread thread;
    {
        std::lock_guard lock(m_mutex);
        thread = std::move(m_thread);
    }
    if (thread.joinable())
        thread.join();
}

bool ImageProcessor::isRunning() const {
    std::lock_guard lock(m_mutex);
    return m_running;
}

void ImageProcessor::cancel() {
    std::lock_guard lock(m_mutex);
    if (m_running && m_gate)
        m_gate->cancel();
}

bool ImageProcessor::pause() {
    std::lock_guard lock(m_mutex);
    return m_running && m_gate ? m_gate->togglePause() : false;
}

void ImageProcessor::resume() {
    std::lock_guard lock(m_mutex);
    if (m_running && m_gate && m_gate->isPaused())
        m_gate->togglePause();
}

bool ImageProcessor::isPaused() const {
    std::lock_guard lock(m_mutex);
    return m_running && m_gate && m_gate->isPaused();
}

std::optional<QString> ImageProcessor::processSingleFile(const QString& path, const ProcessingParams& params,
                                                         bool /*toClipboard*/, const BatchOptions& options) {
    const auto folder = createTmpFolder();
    if (!folder)
        return std::nullopt;
    BatchContext context{m_shell, m_renamer, m_fileSystem,
                         options, 0,         renderSettings(params, options, m_renamer, m_shell, true),
                         {}};
    ImageProcessorHelper helper;
    std::optional<vips::VImage> thumbnail;
    try {
        helper.processFile(absolutePath(path), 0, context, *folder, &thumbnail);
    } catch (const WriteException&) {
        // The pipeline has logged the failed write already.
        return std::nullopt;
    } catch (const std::exception& e) {
        m_shell.writeWarningActivity(ImageProcessorHelper::stoppedLine(*folder, path, e));
        return std::nullopt;
    }
    m_shell.setStatus(QStringLiteral("Processing %1").arg(QFileInfo(path).fileName()), thumbnail);
    const QString output = helper.lastOutputPath();
    return output.isEmpty() ? std::nullopt : std::optional<QString>(output);
}

std::optional<QString> ImageProcessor::createTmpFolder() {
    const QString path = QStringLiteral("/tmp/%1%2")
                             .arg(QFileInfo(QCoreApplication::applicationFilePath()).fileName())
                             .arg(QCoreApplication::applicationPid());
    const QFileInfo info(path);
    if (info.exists() && !info.isDir()) {
        qDebug("'%s' exists but is not a directory!", qPrintable(path));
        return std::nullopt;
    }
    if (!QDir().mkpath(path))
        return std::nullopt;
    return path;
}

void ImageProcessor::removeTmpFolder() {
    const QString path = QStringLiteral("/tmp/%1%2")
                             .arg(QFileInfo(QCoreApplication::applicationFilePath()).fileName())
                             .arg(QCoreApplication::applicationPid());
    if (QFileInfo(path).isDir())
        QDir(path).removeRecursively();
}

} // namespace quillet
