#pragma once

#include "app/queuedcalls.h"
#include "engine/batch/batchshell.h"

#include <QImage>
#include <QObject>

#include <mutex>

namespace quillet {

class ActivityLogModel;
class Sheets;

// The batch engine's shell in the desktop application. Calls arrive on the
// batch thread (or, for the start of a batch and the single-file run, on the
// main thread) and reach the window as queued signals, in the order made.
// Only the questions block, and only their caller: they wait for an answer
// given through the main thread's event loop. Log lines go straight into the
// thread-safe log model.
class GuiShell : public QObject, public BatchShell {
    Q_OBJECT
  public:
    GuiShell(ActivityLogModel& log, Sheets& sheets, QObject* parent = nullptr);

    void writeActivity(const QString& line) override;
    void writeWarningActivity(const QString& line) override;
    // Never blocks: processFiles calls it while holding the job's lock.
    void beginProgressSheet(int total) override;
    void endProgressSheet() override;
    void setStatus(const QString& text, const std::optional<vips::VImage>& thumbnail) override;
    int confirmReplace(const QString& path) override;
    void beginOverwriteWarningSheet() override;
    void reportError(const BatchError& error) override;
    void didProcess(int processed, int total) override;
    void clearStatus() override;

  Q_SIGNALS:
    void progressBegan(int total);
    void progressEnded();
    // `advance` files were done since the last signal; `thumbnail` is null
    // when none of them brought one.
    void statusChanged(const QString& text, const QImage& thumbnail, int advance);
    void batchFinished(int processed, int total);
    void statusCleared();

  private:
    void post(std::function<void()> call);
    void flushStatus();

    ActivityLogModel& m_log;
    Sheets& m_sheets;
    QueuedCalls m_calls{this};
    std::mutex m_statusMutex;
    QString m_statusText;
    QImage m_statusThumbnail;
    int m_statusAdvance = 0;
    bool m_statusPosted = false;
};

} // namespace quillet
