#pragma once

#include "engine/batch/batchshell.h"

#include <QFile>
#include <QString>

#include <condition_variable>
#include <cstdio>
#include <functional>
#include <mutex>
#include <optional>

namespace quillet {

// The batch's shell on a terminal: a redrawn progress bar with the current
// file on a terminal (plain "[n/total] ..." lines otherwise), the activity log
// as it comes (warnings in red on a terminal, and into --log FILE), the
// replace question as a one-key prompt, and the report at the end.
class TerminalShell final : public BatchShell {
  public:
    enum class Conflict { Ask, Skip, Replace };

    struct Streams {
        std::FILE* out = stdout;    // activity log and report
        std::FILE* status = stderr; // progress
        bool outIsTerminal = false;
        bool statusIsTerminal = false;
    };

    TerminalShell(Streams streams, Conflict conflict);

    // Also writes every log line to this file; false when it cannot be opened.
    bool openLogFile(const QString& path);
    // Where Ask gets its one-key answers (y, n, a, s); none when there is no
    // terminal to ask on.
    void setKeyReader(std::function<int()> readKey) { m_readKey = std::move(readKey); }
    // A line for the user outside the log ("Paused", "Cancelling ...").
    void notice(const QString& text, bool warning = false);

    void beginProgressSheet(int total) override;
    void setProgressTotal(int total) override;
    void endProgressSheet() override;
    void setStatus(const QString& text, const std::optional<vips::VImage>& thumbnail) override;
    void writeActivity(const QString& line) override;
    void writeWarningActivity(const QString& line) override;
    int confirmReplace(const QString& path) override;
    void beginOverwriteWarningSheet() override;
    void reportError(const BatchError& error) override;
    void didProcess(int processed, int total) override;
    bool wantsThumbnails() const override { return false; }

    // Blocks until didProcess has been called.
    void waitForCompletion();
    int processed() const { return m_processed; }
    int total() const { return m_total; }
    bool hadError() const { return m_hadError; }

  private:
    void write(const QString& line, bool warning);
    void clearBar();
    void drawBar();

    Streams m_streams;
    Conflict m_conflict;
    std::function<int()> m_readKey;
    QFile m_logFile;
    std::mutex m_mutex;
    std::condition_variable m_completed;
    bool m_done = false;
    bool m_barShown = false;
    int m_total = 0;
    int m_progress = 0;
    int m_processed = 0;
    bool m_hadError = false;
    QString m_status;
    QString m_error;
};

} // namespace quillet
