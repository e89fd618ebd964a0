#pragma once

#include "inplace/inplacesession.h"

#include <cstdio>

namespace quillet {

// The in-place panel's progress and log for the command-line tool: progress
// texts and activity lines on one stream, warnings and the alert on another.
// run() also owns the console's side of a run: Ctrl-C and a plain kill stop
// it before the next file, and the exit status says how it ended.
class ConsoleReport final : public ActivityLog, public InplaceView {
  public:
    ConsoleReport(std::FILE* out, std::FILE* err) : m_out(out), m_err(err) {}

    // Runs one in-place action over the files on the calling thread and
    // returns the exit status: 0, or 1 when files could not be rotated or
    // jpegtran is missing.
    static int run(InplaceAction action, const QStringList& files, bool keepBackup, bool modificationDate);

    void writeActivity(const QString& line) override;
    void writeWarningActivity(const QString& line) override;
    void beginProgress(int maximum) override { m_maximum = maximum; }
    void showProgress(const QString& status, int value) override;
    void endProgress() override {}
    // The alert's line, then the files it is about, one a line.
    void showAlert(InplaceAlert alert, const QStringList& files) override;

  private:
    std::FILE* m_out;
    std::FILE* m_err;
    int m_maximum = 0;
};

} // namespace quillet
