#include "app/models/inspectorthumbnails.h"

#include "app/models/thumbnailimage.h"
#include "metadata/kvimageinfo.h"
#include "metadata/metadatanotes.h"

#include <QThread>

namespace quillet {

namespace {

QString keyOf(const QString& path, const QDateTime& modified) {
    return path + QLatin1Char('\n') + QString::number(modified.toMSecsSinceEpoch());
}

// One thread less than the cores, so the window and the record builder keep one.
int threadCount() {
    return std::max(1, QThread::idealThreadCount() - 1);
}

} // namespace

InspectorThumbnails::InspectorThumbnails(int capacity, QObject* parent) : QObject(parent) {
    m_cache.setMaxCost(capacity);
    m_frame.setSingleShot(true);
    m_frame.setInterval(16);
    connect(&m_frame, &QTimer::timeout, this, &InspectorThumbnails::thumbnailsArrived);
}

InspectorThumbnails::~InspectorThumbnails() {
    {
        const std::lock_guard lock(m_mutex);
        m_stopping = true;
    }
    m_wake.notify_all();
    for (std::thread& thread : m_threads)
        thread.join();
}

bool InspectorThumbnails::contains(const QString& path, const QDateTime& modified) const {
    return m_cache.contains(keyOf(path, modified));
}

QImage InspectorThumbnails::thumbnail(const QString& path, const QDateTime& modified) {
    const QString key = keyOf(path, modified);
    if (const QImage* image = m_cache.object(key))
        return *image;
    {
        const std::lock_guard lock(m_mutex);
        if (m_requested.contains(key))
            return {};
        m_requested.insert(key);
        m_waiting.push_back({key, path});
        if (m_waiting.size() > size_t(MaxWaiting)) {
            m_requested.remove(m_waiting.front().key);
            m_waiting.pop_front();
        }
        if (m_threads.empty())
            for (int i = threadCount(); i > 0; --i)
                m_threads.emplace_back([this] { work(); });
    }
    m_wake.notify_one();
    return {};
}

void InspectorThumbnails::work() {
    for (;;) {
        Request request;
        {
            std::unique_lock lock(m_mutex);
            m_wake.wait(lock, [this] { return m_stopping || !m_waiting.empty(); });
            if (m_stopping)
                return;
            request = std::move(m_waiting.back());
            m_waiting.pop_back();
        }
        // The record's own rule: the EXIF thumbnail, else the picture shrunk.
        MetadataNotes notes;
        const std::optional<KVImageInfo> info = KVImageInfo::fromFile(request.path, true, true, &notes);
        QImage image;
        if (info && info->thumbnail())
            image = thumbnailImage(*info->thumbnail());
        m_calls.post([this, key = request.key, image] { receive(key, image); });
    }
}

void InspectorThumbnails::receive(const QString& key, const QImage& image) {
    {
        const std::lock_guard lock(m_mutex);
        m_requested.remove(key);
    }
    m_cache.insert(key, new QImage(image));
    ++m_made;
    if (!m_frame.isActive())
        m_frame.start();
}

} // namespace quillet
