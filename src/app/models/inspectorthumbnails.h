#pragma once

#include "app/models/queuedcalls.h"

#include <QCache>
#include <QDateTime>
#include <QImage>
#include <QObject>
#include <QSet>
#include <QTimer>

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

namespace quillet {

// The inspector's thumbnails, made on worker threads when a row is on show
// and kept by path and modification time, so a picture changed on disk gets
// a new one. Only the most recently used are kept, and only the newest
// requests wait: rows scrolled past are not worth decoding. Pictures are
// decoded shrunk on load where the format allows; a JPEG's own EXIF
// thumbnail is used when it has one.
class InspectorThumbnails : public QObject {
    Q_OBJECT
  public:
    // Thumbnails kept, and requests that may wait at once.
    static constexpr int DefaultCapacity = 2000;
    static constexpr int MaxWaiting = 256;

    explicit InspectorThumbnails(int capacity = DefaultCapacity, QObject* parent = nullptr);
    ~InspectorThumbnails() override;

    // The thumbnail when it is made (a null image for a picture that gives
    // none); otherwise a null image now and thumbnailsArrived() later.
    // Main thread only.
    QImage thumbnail(const QString& path, const QDateTime& modified);
    bool contains(const QString& path, const QDateTime& modified) const;
    int cachedCount() const { return m_cache.count(); }
    // Thumbnails made so far, for the benchmark.
    qint64 madeCount() const { return m_made; }

  Q_SIGNALS:
    // New thumbnails are in; sent at most once per frame.
    void thumbnailsArrived();

  private:
    struct Request {
        QString key;
        QString path;
    };
    void work();
    void receive(const QString& key, const QImage& image);

    QCache<QString, QImage> m_cache;
    qint64 m_made = 0;
    QTimer m_frame;
    QueuedCalls m_calls{this};

    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::deque<Request> m_waiting; // newest at the back
    QSet<QString> m_requested;     // waiting or being made
    bool m_stopping = false;
    std::vector<std::thread> m_threads;
};

} // namespace quillet
