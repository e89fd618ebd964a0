#include "engine/batch/imageprocessor.h"

#include "engine/batch/batchlog.h"
#include "engine/batch/batchrenderqueue.h"
#include "engine/batch/inputlisting.h"
#include "engine/pipeline/pipelinesteps.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace quillet {

struct ImageProcessor::Batch {
    QStringList paths;
    QString outputDir;
    std::vector<ImageProcessorHelper> helpers;
    // False when a cancel cut the listing short.
    bool listed = false;
    // The scheme as it was when the batch started; the user may edit the
    // shell's own while the batch runs.
    Renamer renamer;
    std::vector<OutputVersion> versions;
    std::uint32_t creator = 0;
    BatchOptions options;
    std::shared_ptr<BatchGate> gate;
};

namespace {

QString absolutePath(const QString& path) {
    return QDir::cleanPath(QFileInfo(path).absoluteFilePath());
}

int renderThreadCount(const BatchOptions& options) {
    if (!options.parallel)
        return 0;
    if (options.renderThreads > 0)
        return options.renderThreads;
    return std::max(1, int(std::thread::hardware_concurrency()));
}

// Where a version writes the files of the level whose own folder is
// `levelDir`: the same place inside the version's folder.
QString versionFolder(const QString& levelDir, const QString& batchDir, const OutputVersion& version) {
    if (version.folder.isEmpty())
        return levelDir;
    const QDir batch(absolutePath(batchDir));
    return QDir::cleanPath(
        batch.filePath(version.folder + QLatin1Char('/') + batch.relativeFilePath(levelDir)));
}

RenderSettings renderSettings(const ProcessingRequest& request, const BatchOptions& options,
                              const Renamer& renamer, const BatchShell& shell, bool loadWatermarkAnyway) {
    RenderSettings settings;
    settings.request = request;
    const ImageWatermarkSettings& image = request.watermarks.image;
    if ((request.watermarks.drawsImage() || loadWatermarkAnyway) && !image.path.isEmpty())
        settings.watermark = PipelineSteps::loadWatermark(image.path);
    settings.needsInfo = renamer.renameType() == Renamer::Date || request.watermarks.drawsText() ||
                         options.setCreationDate || options.setModificationDate;
    if (shell.wantsThumbnails())
        settings.thumbnails = std::make_shared<ThumbnailPacer>(shell.thumbnailInterval());
    return settings;
}

} // namespace

ImageProcessor::ImageProcessor(BatchShell& shell, Renamer& renamer, FileSystem& fileSystem)
    : m_shell(shell), m_renamer(renamer), m_fileSystem(fileSystem) {}

ImageProcessor::~ImageProcessor() {
    waitForFinished();
    removeTmpFolder();
}

bool ImageProcessor::start(const std::shared_ptr<BatchGate>& gate, std::function<void()> work) {
    std::lock_guard lock(m_mutex);
    if (m_running)
        return false;
    // The last batch has said its last word; its thread is ending.
    if (m_thread.joinable())
        m_thread.join();
    m_gate = gate;
    m_running = true;
    m_thread = std::thread(std::move(work));
    return true;
}

void ImageProcessor::finish() {
    std::lock_guard lock(m_mutex);
    m_running = false;
}

void ImageProcessor::processFiles(const QStringList& paths, const ProcessingRequest& request,
                                  const QString& outputDir, std::uint32_t creator,
                                  const BatchOptions& options) {
    processFiles(paths, std::vector<OutputVersion>{OutputVersion{request, {}, {}}}, outputDir, creator,
                 options);
}

void ImageProcessor::processFiles(const QStringList& paths, std::vector<OutputVersion> versions,
                                  const QString& outputDir, std::uint32_t creator,
                                  const BatchOptions& options) {
    if (versions.empty())
        return;
    // Nothing here touches the disk: the caller is the window's thread.
    auto batch = std::make_shared<Batch>();
    batch->paths = paths;
    batch->outputDir = outputDir;
    batch->renamer = m_renamer;
    batch->versions = std::move(versions);
    batch->creator = creator;
    batch->options = options;
    batch->gate = std::make_shared<BatchGate>();
    start(batch->gate, [this, batch] { runBatch(*batch); });
}

void ImageProcessor::runBatch(Batch& batch) {
    // The sheet comes up before the listing, which may take a while.
    m_shell.beginProgressSheet(BatchShell::UnknownTotal);
    {
        // Every part of a sharded batch lists the whole tree; only the first
        // reports what the listing met, so the parts' logs add up to one run's.
        BatchLog otherPartsListing;
        ActivityLog& listingLog =
            batch.options.shard.index == 1 ? static_cast<ActivityLog&>(m_shell) : otherPartsListing;
        const std::shared_ptr<BatchGate>& gate = batch.gate;
        InputListing listing(listingLog, [&gate] { return gate->isCancelled(); });
        batch.helpers = listing.list(batch.paths, batch.outputDir);
        batch.listed = !listing.stopped();
    }
    if (batch.listed) {
        batch.helpers = batch.options.shard.select(std::move(batch.helpers));
        int total = 0;
        for (const ImageProcessorHelper& helper : batch.helpers)
            total += helper.numFiles();
        m_shell.setProgressTotal(total);
        // A batch cancelled before its first file makes no folders.
        if (!batch.gate->isCancelled())
            runWorkers(batch);
    }
    reportEnd(batch);
}

void ImageProcessor::runWorkers(Batch& batch) {
    std::vector<std::unique_ptr<BatchContext>> contexts;
    std::vector<RenderSettings> settings;
    for (const OutputVersion& version : batch.versions) {
        // The status thumbnail comes from the first version only.
        RenderSettings render = renderSettings(version.request, batch.options, batch.renamer, m_shell, false);
        if (!contexts.empty())
            render.thumbnails.reset();
        settings.push_back(render);
        contexts.push_back(std::unique_ptr<BatchContext>(new BatchContext{
            m_shell, batch.renamer, m_fileSystem, batch.options, batch.creator, std::move(render), {}}));
        contexts.back()->nameSuffix = version.nameSuffix;
        // Said once for the batch rather than left for the user to notice.
        const WatermarkSettings& watermarks = version.request.watermarks;
        if (watermarks.drawsImage() && !contexts.back()->render.watermark)
            m_shell.writeWarningActivity(
                QStringLiteral("Unable to read the watermark '%1'; pictures are written without it\n")
                    .arg(watermarks.image.path));
    }
    QStringList tasks;
    for (const ImageProcessorHelper& helper : batch.helpers)
        tasks.append(helper.paths());
    BatchRenderQueue queue(
        tasks, [&settings](const QString& path) { return renderVersions(path, settings); },
        renderThreadCount(batch.options));
    std::vector<BatchContext*> contextList;
    for (const auto& context : contexts) {
        context->fileWritten = [&queue](const QString& path) { queue.fileWritten(path); };
        contextList.push_back(context.get());
    }
    int firstTask = 0;
    for (ImageProcessorHelper& helper : batch.helpers) {
        std::vector<ImageProcessorHelper> outputs;
        for (const OutputVersion& version : batch.versions)
            outputs.emplace_back(helper.paths(), versionFolder(helper.outputDir(), batch.outputDir, version));
        helper.run(outputs, contextList, *batch.gate, queue, firstTask);
        firstTask += helper.numFiles();
    }
}

void ImageProcessor::reportEnd(Batch& batch) {
    // Every worker has ended.
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
    // Cancelled before the files were all found: there is no total to
    // report the batch against.
    if (!batch.listed)
        total = BatchShell::UnknownTotal;
    if (error)
        m_shell.reportError(*error);
    batch.helpers.clear();
    finish();
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

bool ImageProcessor::processSingleFile(const QString& path, const ProcessingRequest& request,
                                       bool /*toClipboard*/, const BatchOptions& options,
                                       SingleFileDone done) {
    auto renamer = std::make_shared<Renamer>(m_renamer);
    return start(std::make_shared<BatchGate>(), [this, path, request, options, renamer, done] {
        runSingleFile(path, request, options, *renamer, done);
    });
}

void ImageProcessor::runSingleFile(const QString& path, const ProcessingRequest& request,
                                   const BatchOptions& options, Renamer& renamer,
                                   const SingleFileDone& done) {
    const auto output = [&]() -> std::optional<QString> {
        const auto folder = createTmpFolder();
        if (!folder)
            return std::nullopt;
        BatchContext context{m_shell, renamer, m_fileSystem,
                             options, 0,       renderSettings(request, options, renamer, m_shell, true),
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
        const QString written = helper.lastOutputPath();
        return written.isEmpty() ? std::nullopt : std::optional<QString>(written);
    }();
    finish();
    if (done)
        done(output);
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
