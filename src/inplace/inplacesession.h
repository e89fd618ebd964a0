#pragma once

#include "inplace/inplacedelegate.h"
#include "inplace/losslessprocessor.h"

#include <QMutex>

#include <atomic>
#include <memory>

namespace quillet {

class UserDefaults;

// What a run tells the user about once it has ended.
enum class InplaceAlert {
    // Some files could not be turned (not JPEGs, or the tool failed on them).
    NonJpegFiles
};

// What the in-place panel shows while a run goes. Called on the run's thread.
class InplaceView {
  public:
    virtual ~InplaceView() = default;
    // The progress sheet goes up: bar at 0 of `maximum`, no status text.
    virtual void beginProgress(int maximum) = 0;
    virtual void showProgress(const QString& status, int value) = 0;
    virtual void endProgress() = 0;
    // Worded by the front end; `files` are the ones the alert is about.
    virtual void showAlert(InplaceAlert alert, const QStringList& files) = 0;
};

// The seven drop targets of the in-place panel.
enum class InplaceAction {
    RotateClockwise,
    RotateCounterClockwise,
    Rotate180,
    RotateAuto,
    ResetDates,
    AddIcons,
    RemoveIcons
};

// The logic of the in-place panel without its widgets: starts the processor
// for a drop, keeps the progress count, forwards activity lines to the main
// log, and raises one alert for the files a rotation could not turn.
class InplaceSession final : public InplaceDelegate {
  public:
    static constexpr char KeepBackupKey[] = "KeepBackup";
    static constexpr char CancellingText[] = "Cancelling ...";

    // keepBackup starts from the "KeepBackup" setting of the given store.
    InplaceSession(ActivityLog& log, InplaceView& view, UserDefaults& defaults,
                   std::unique_ptr<JpegtranRunner> jpegtran = {},
                   FileSystem& fileSystem = FileSystem::standard());

    // The drop: puts the progress sheet up and starts the run. False when
    // nothing was started (no files, or a run is still going). Throws
    // JpegtranMissing for a rotation when there is no jpegtran, before the
    // sheet goes up.
    bool start(InplaceAction action, const QStringList& files);
    // Puts back the originals kept by the last run, when it was a rotation
    // with backups; the progress sheet shows it like a drop. False when there
    // is nothing to put back or a run is still going.
    bool undoLastRotation();
    // True when the last run was a rotation whose backups can still bring
    // back at least one original unchanged.
    bool canUndo() const;
    void cancel();
    // Only raises the processor's cancel flag; safe in a signal handler.
    void requestCancel() noexcept { m_processor.cancel(); }
    void wait() { m_processor.wait(); }
    void setSynchronous(bool synchronous) { m_processor.setSynchronous(synchronous); }

    bool keepBackup() const { return m_keepBackup; }
    // For this session only (the command line's --backup).
    void setKeepBackup(bool keep) { m_keepBackup = keep; }
    // The panel's check box: takes effect on the next drop and is stored at once.
    void toggleKeepBackup(bool keep);
    // The date choice: also set the modification date.
    void setResetModificationDate(bool on) { m_resetModificationDate = on; }

    // The files the last rotation run could not turn.
    QStringList badFiles() const;
    // 90, 270, 180 or 0 (automatic) for the rotation actions; -1 otherwise.
    static int degreesForAction(InplaceAction action);

    // InplaceDelegate
    void showMessage(const QString& text) override;
    void writeActivity(const QString& line) override { m_log.writeActivity(line); }
    void writeWarningActivity(const QString& line) override { m_log.writeWarningActivity(line); }
    void didCompleteWithBadFiles(const QStringList& badFiles) override;
    void didComplete() override;

  private:
    ActivityLog& m_log;
    InplaceView& m_view;
    UserDefaults& m_defaults;
    LosslessProcessor m_processor;
    bool m_keepBackup = false;
    bool m_resetModificationDate = false;
    std::atomic<int> m_done = 0;
    mutable QMutex m_mutex; // guards m_badFiles and m_undo, written on the run's thread
    QStringList m_badFiles;
    RotationUndo m_undo; // the processor's, as the last run left it
};

} // namespace quillet
