#pragma once

#include "engine/batch/batcherror.h"
#include "support/activitylog.h"

#include <QString>

#include <chrono>
#include <optional>
#include <vips/vips8>

namespace quillet {

// Everything the batch engine asks of the program around it: the progress
// sheet, the status line and its thumbnail, the activity log, the two
// questions and the completion call. The desktop application and the
// command-line tool each implement it.
//
// Calls come from the engine's batch thread (never from two threads at once
// for one batch), so an implementation only has to marshal them onto its own
// thread if it has one. Log lines arrive in the order the user must read them.
class BatchShell : public ActivityLog {
  public:
    // Answers of confirmReplace: the button (0 skip, 1 replace) plus 2 when the
    // answer is to hold for the rest of the folder.
    enum ReplaceAnswer : int { Skip = 0, Replace = 1, SkipAll = 2, ReplaceAll = 3 };
    // The total of a progress sheet begun before the input has been counted.
    static constexpr int UnknownTotal = -1;

    // Shows the progress sheet; `total` files will each advance it by one. A
    // batch begins it with UnknownTotal, as soon as it starts, and says the
    // total with setProgressTotal once its input has been listed.
    virtual void beginProgressSheet(int total) = 0;
    // The number of files of a sheet begun with UnknownTotal; it comes before
    // the first setStatus.
    virtual void setProgressTotal(int total) = 0;
    virtual void endProgressSheet() = 0;
    // Shows the file in hand and advances the progress by one. A missing
    // thumbnail leaves the previous one on show.
    virtual void setStatus(const QString& text, const std::optional<vips::VImage>& thumbnail) = 0;
    // Blocks until the user answers whether to replace the existing file.
    virtual int confirmReplace(const QString& path) = 0;
    // Tells the user, once per folder, that a source file would have been overwritten.
    virtual void beginOverwriteWarningSheet() = 0;
    // Tells the user what ended a worker early; called once, after the
    // progress sheet has ended and before didProcess.
    virtual void reportError(const BatchError& error) = 0;
    // The batch is over: `processed` of `total` files were handled. A batch
    // cancelled while it was still listing its input reports 0 of
    // UnknownTotal.
    virtual void didProcess(int processed, int total) = 0;
    // Whether setStatus wants the 64 x 64 thumbnail; a shell without a picture
    // to show saves the engine the work of making it.
    virtual bool wantsThumbnails() const { return true; }
    // The shortest time between two files that bring a thumbnail; 0: every
    // file brings one.
    virtual std::chrono::milliseconds thumbnailInterval() const { return {}; }
    // Called once when the status line is reset after the batch.
    virtual void clearStatus() {}
};

} // namespace quillet
