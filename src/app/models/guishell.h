#pragma once

#include "engine/batch/batchshell.h"

#include <QImage>
#include <QObject>

#include <mutex>

namespace quillet {

class ActivityLogModel;
class Questions;

// The batch engine's shell in the desktop application. Calls arrive on the
// batch thread and reach the window as queued signals, in the order made.
// Only the questions block, and only their caller: they wait for an answer
// given through the main thread's event loop. Log lines go straight into the
// thread-safe log model.
class GuiShell : public QObject, public BatchShell {
    Q_OBJECT
  public:
    GuiShell(ActivityLogModel& log, Questions& questions, QObject* parent = nullptr);

    void writeActivity(const QString& line) override;
    void writeWarningActivity(const QString& line) override;
    void beginProgressSheet(int total) override;
    void setProgressTotal(int total) override;
    void endProgressSheet() override;
    void setStatus(const QString& text, const std::optional<vips::VImage>& thumbnail) override;
    int confirmReplace(const QString& path) override;
    void beginOverwriteWarningSheet() override;
    void runMessageSheet(const QString& title, const QString& message) override;
    void didProcess(int processed, int total) override;
    void clearStatus() override;

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
    void flushStatus();

    ActivityLogModel& m_log;
    Questions& m_questions;
    std::mutex m_statusMutex;
    QString m_statusText;
    QImage m_statusThumbnail;
    int m_statusAdvance = 0;
    bool m_statusPosted = false;
};

} // namespace quillet
