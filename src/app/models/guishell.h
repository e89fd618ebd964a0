#pragma once

#include "app/models/queuedcalls.h"
#include "engine/batch/batchshell.h"

#include <QElapsedTimer>
#include <QImage>
#include <QObject>
#include <QTimer>

#include <mutex>

namespace quillet {

class ActivityLogModel;
class Questions;

// The batch engine's shell in the desktop application. Calls arrive on the
// batch thread and reach the window as queued signals, in the order made.
// Only the questions block, and only their caller: they wait for an answer
// given through the main thread's event loop. Log lines go straight into the
// thread-safe log model.
//
// The batch thread's status updates reach the window at most once per
// StatusFrameMilliseconds: the ones in between are merged (the latest text
// and thumbnail, the files done added up), so a batch of small files does not
// spend a core on repainting the status line and the progress sheet. Every
// other call first delivers a status still held back, so nothing overtakes it.
class GuiShell : public QObject, public BatchShell {
    Q_OBJECT
  public:
    static constexpr int StatusFrameMilliseconds = 40;

    GuiShell(ActivityLogModel& log, Questions& questions, QObject* parent = nullptr);

    void writeActivity(const QString& line) override;
    void writeWarningActivity(const QString& line) override;
    void beginProgressSheet(int total) override;
    void setProgressTotal(int total) override;
    void endProgressSheet() override;
    void setStatus(const QString& text, const std::optional<vips::VImage>& thumbnail) override;
    int confirmReplace(const QString& path) override;
    void beginOverwriteWarningSheet() override;
    void reportError(const BatchError& error) override;
    void didProcess(int processed, int total) override;
    void clearStatus() override;
    // Runs `call` on the main thread after every status posted before it,
    // from any thread: for what the controller does when a run ends.
    void postAfterStatus(std::function<void()> call);
    // The window shows one thumbnail per status frame or so; a fast batch
    // need not draw one for each file.
    std::chrono::milliseconds thumbnailInterval() const override { return std::chrono::milliseconds(120); }

  Q_SIGNALS:
    // `total` is BatchShell::UnknownTotal until progressTotalKnown.
    void progressBegan(int total);
    void progressTotalKnown(int total);
    void progressEnded();
    // `advance` files were done since the last signal; `thumbnail` is null
    // when none of them brought one.
    void statusChanged(const QString& text, const QImage& thumbnail, int advance);
    void batchFinished(int processed, int total);
    void statusCleared();

  private:
    void post(std::function<void()> call);
    // Main thread: shows the merged status now, or when the frame is over.
    void scheduleStatus(bool paced);
    void flushStatus();
    // Main thread: shows a status held back for the frame, if any.
    void deliverHeldStatus();

    ActivityLogModel& m_log;
    Questions& m_questions;
    QueuedCalls m_calls{this};
    std::mutex m_statusMutex;
    QString m_statusText;
    QImage m_statusThumbnail;
    int m_statusAdvance = 0;
    bool m_statusPosted = false;
    // Main thread only.
    QTimer m_statusFrame;
    QElapsedTimer m_sinceStatus;
};

} // namespace quillet
