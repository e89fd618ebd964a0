#include "app/models/previewworker.h"

#include "app/models/thumbnailimage.h"

namespace quillet {

namespace {

// Enough pictures for stepping through a queue without keeping a large
// batch's worth of them.
constexpr std::size_t kCachedSources = 16;

QImage displayImage(const QByteArray& bytes, int side) {
    VipsBlob* blob = vips_blob_new(nullptr, bytes.constData(), size_t(bytes.size()));
    try {
        vips::VImage shown = vips::VImage::thumbnail_buffer(
            blob, side, vips::VImage::option()->set("height", side)->set("size", "down"));
        vips_area_unref(VIPS_AREA(blob));
        return thumbnailImage(shown.copy_memory());
    } catch (const vips::VError&) {
        vips_area_unref(VIPS_AREA(blob));
        vips_error_clear();
        return {};
    }
}

} // namespace

PreviewWorker::PreviewWorker(Stage stage, std::function<void(PreviewUpdate)> deliver)
    : m_stage(stage), m_deliver(std::move(deliver)), m_thread([this] { loop(); }) {}

PreviewWorker::~PreviewWorker() {
    {
        std::lock_guard lock(m_mutex);
        m_stopping = true;
        m_latest.fetch_add(1); // whatever runs stops at its next step
    }
    m_wake.notify_one();
    m_thread.join();
}

void PreviewWorker::submit(PreviewJob job) {
    {
        std::lock_guard lock(m_mutex);
        m_latest.store(job.generation);
        m_pending = std::move(job);
    }
    m_wake.notify_one();
}

void PreviewWorker::loop() {
    for (;;) {
        PreviewJob job;
        {
            std::unique_lock lock(m_mutex);
            m_wake.wait(lock, [this] { return m_stopping || m_pending; });
            if (m_stopping)
                return;
            job = std::move(*m_pending);
            m_pending.reset();
        }
        run(job);
    }
}

const PreviewWorker::Source& PreviewWorker::source(const QString& path, int side) {
    const auto found = m_sources.find(path);
    if (found != m_sources.end())
        return found->second;
    if (m_sources.size() >= kCachedSources)
        m_sources.erase(m_sources.begin());
    Source& made = m_sources[path];
    made.picture = PreviewRender::loadSource(path, side);
    try {
        if (made.picture.loaded())
            made.original = thumbnailImage(PreviewRender::original(made.picture));
    } catch (const std::exception&) {
        vips_error_clear();
    }
    return made;
}

void PreviewWorker::run(const PreviewJob& job) {
    if (m_stage == Quick)
        runQuick(job);
    else
        runFull(job);
}

void PreviewWorker::runQuick(const PreviewJob& job) {
    const Source& picture = source(job.path, job.displaySide);
    m_deliver({PreviewUpdate::Original, job.generation, picture.original, {}, -1});
    if (stale(job) || !picture.picture.loaded())
        return;
    QImage draft;
    try {
        draft = thumbnailImage(
            PreviewRender::draft(picture.picture, PreviewRender::settingsFor(job.request, job.renamer)));
    } catch (const std::exception&) {
        // The full render says what went wrong.
        vips_error_clear();
    }
    m_deliver({PreviewUpdate::Draft, job.generation, draft, {}, -1});
}

void PreviewWorker::runFull(const PreviewJob& job) {
    const RenderSettings settings = PreviewRender::settingsFor(job.request, job.renamer);
    PreviewUpdate output{PreviewUpdate::Output, job.generation, {}, {}, -1};
    output.result = PreviewRender::render(job.path, settings, job.renamer, job.index);
    if (stale(job))
        return;
    if (output.result.rendered)
        output.image = displayImage(output.result.bytes, job.displaySide);
    const qint64 currentSize = output.result.rendered ? output.result.bytes.size() : -1;
    m_deliver(std::move(output));

    qint64 total = 0;
    int sampled = 0;
    for (const QString& path : job.sample) {
        if (stale(job))
            return;
        qint64 size = -1;
        if (path == job.path) {
            size = currentSize;
        } else {
            const PreviewResult other = PreviewRender::render(path, settings, job.renamer, job.index);
            if (other.rendered)
                size = other.bytes.size();
        }
        // Files that give nothing are not written either; they are left out
        // of the sample rather than counted as empty.
        if (size >= 0) {
            total += size;
            ++sampled;
        }
    }
    if (stale(job))
        return;
    m_deliver({PreviewUpdate::Estimate,
               job.generation,
               {},
               {},
               PreviewRender::estimate(total, sampled, job.count)});
}

} // namespace quillet
