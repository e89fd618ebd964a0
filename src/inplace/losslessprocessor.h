#pragma once

#include "inplace/jpegtranrunner.h"
#include "inplace/rotationundo.h"
#include "support/filesystem.h"

#include <QStringList>

#include <atomic>
#include <memory>
#include <thread>

namespace quillet {

class InplaceDelegate;

// Changes the user's own files where they lie: lossless JPEG rotation through
// jpegtran, file dates from the EXIF capture date, and custom icons. Each run
// goes over its list of paths on a thread of its own (or on the caller's, see
// setSynchronous) and reports to the delegate from that thread.
class LosslessProcessor {
  public:
    // The delegate is not owned and must outlive the processor. Without a
    // runner, jpegtran is looked up on PATH or through QUILLET_JPEGTRAN.
    explicit LosslessProcessor(InplaceDelegate& controller, std::unique_ptr<JpegtranRunner> jpegtran = {},
                               FileSystem& fileSystem = FileSystem::standard());
    // Waits for a run still going.
    ~LosslessProcessor();
    LosslessProcessor(const LosslessProcessor&) = delete;
    LosslessProcessor& operator=(const LosslessProcessor&) = delete;

    // Runs on the calling thread instead, returning when the run is over; for
    // the command-line tool and tests.
    void setSynchronous(bool synchronous) { m_synchronous = synchronous; }

    // Each start call returns false, and does nothing, while a run is going
    // (its completion callback included).
    // degrees: 90 clockwise, 270 counter-clockwise, 180, or 0 for upright from
    // the orientation tag. Throws JpegtranMissing when there is no jpegtran.
    bool rotateFiles(const QStringList& paths, int degrees, bool keepBackup);
    bool resetDatesForFiles(const QStringList& paths, bool modificationDate);
    bool addCustomIconsForFiles(const QStringList& paths);
    bool removeCustomIconsForFiles(const QStringList& paths);
    // Puts back the originals that the last rotation run kept as backups,
    // those of files changed since excepted; ends with didComplete. A run of
    // any other kind in between leaves nothing to put back.
    bool undoLastRotation();

    // The files the last rotation run turned with their originals kept, less
    // those an undo has dealt with since. Read it in a completion callback or
    // once the run is over.
    const RotationUndo& lastRotation() const { return m_lastRotation; }

    // The run stops before its next file. A cancel that comes after the last
    // file stays set and stops the next run before its first.
    void cancel() { m_cancel = true; }
    // Throws JpegtranMissing when there is no jpegtran to run.
    void requireJpegtran() const;
    bool isRunning() const { return m_running; }
    // Blocks until the current run, if any, is over.
    void wait();

  private:
    enum class Operation { Rotate, ResetDates, AddIcons, RemoveIcons, Undo };

    bool start(Operation operation, const QStringList& paths);
    void run(Operation operation);
    void complete(Operation operation, const QStringList& badFiles);
    void resetDatesForFile(const QString& path);

    InplaceDelegate& m_controller;
    std::unique_ptr<JpegtranRunner> m_jpegtran;
    FileSystem& m_fileSystem;
    bool m_synchronous = false;

    // The current run's settings; written only while no run is going.
    QStringList m_paths;
    int m_degrees = 0;
    bool m_keepBackup = false;
    bool m_resetModificationDate = false;
    RotationUndo m_lastRotation;

    std::atomic<bool> m_cancel = false;
    std::atomic<bool> m_running = false;
    std::thread m_thread;
};

} // namespace quillet
