#pragma once

#include "engine/pipeline/previewrender.h"
#include "naming/renamer.h"
#include "settings/processingrequest.h"

#include <QImage>
#include <QString>
#include <QStringList>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <thread>

namespace quillet {

// One request for the preview: a picture of the queue under the settings of
// one moment, numbered so that a newer request makes it stale.
struct PreviewJob {
    quint64 generation = 0;
    QString path;
    int index = 0; // of the picture among those the batch writes
    ProcessingRequest request;
    Renamer renamer;
    QStringList sample; // pictures whose sizes stand for the whole batch
    int count = 0;      // pictures in the batch
    int displaySide = 1024;
};

// What a job delivers, step by step: the original at once, a quick draft of
// the output, the output as written with its figures, the batch estimate.
struct PreviewUpdate {
    enum Kind { Original, Draft, Output, Estimate };
    Kind kind = Original;
    quint64 generation = 0;
    QImage image;
    PreviewResult result; // Output only
    qint64 estimate = -1; // Estimate only
};

// One of the preview's render threads. It keeps only the newest job: one
// submitted while another runs makes that one stop at its next step. The
// quick stage makes the original and the draft, from decodes kept per
// picture (stepping back and forth and every settings change show them
// again); the full stage renders the file and the estimate. They run on
// threads of their own so that a draft never waits for a full render.
// Updates are handed to `deliver` on the render thread.
class PreviewWorker {
  public:
    enum Stage { Quick, Full };
    PreviewWorker(Stage stage, std::function<void(PreviewUpdate)> deliver);
    ~PreviewWorker();
    PreviewWorker(const PreviewWorker&) = delete;
    PreviewWorker& operator=(const PreviewWorker&) = delete;

    void submit(PreviewJob job);
    // The generation of the newest job; older ones are stale.
    quint64 latest() const { return m_latest.load(); }

  private:
    void loop();
    void run(const PreviewJob& job);
    void runQuick(const PreviewJob& job);
    void runFull(const PreviewJob& job);
    bool stale(const PreviewJob& job) const { return job.generation != m_latest.load(); }
    struct Source {
        PreviewSource picture;
        QImage original;
    };
    const Source& source(const QString& path, int side);

    const Stage m_stage;
    std::function<void(PreviewUpdate)> m_deliver;
    std::atomic<quint64> m_latest{0};
    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::optional<PreviewJob> m_pending;
    bool m_stopping = false;
    std::map<QString, Source> m_sources; // render thread only
    std::thread m_thread;
};

} // namespace quillet
