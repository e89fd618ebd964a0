#include "inplace/inplacesession.h"

#include "inplace/jpegtranrunner.h"
#include "settings/userdefaults.h"

namespace quillet {

InplaceSession::InplaceSession(ActivityLog& log, InplaceView& view, UserDefaults& defaults,
                               std::unique_ptr<JpegtranRunner> jpegtran, FileSystem& fileSystem)
    : m_log(log), m_view(view), m_defaults(defaults), m_processor(*this, std::move(jpegtran), fileSystem) {
    m_keepBackup = m_defaults.boolValue(QLatin1String(KeepBackupKey));
}

void InplaceSession::toggleKeepBackup(bool keep) {
    m_keepBackup = keep;
    m_defaults.setBool(QLatin1String(KeepBackupKey), keep);
}

int InplaceSession::degreesForAction(InplaceAction action) {
    switch (action) {
    case InplaceAction::RotateClockwise:
        return 90;
    case InplaceAction::RotateCounterClockwise:
        return 270;
    case InplaceAction::Rotate180:
        return 180;
    case InplaceAction::RotateAuto:
        return 0;
    default:
        return -1;
    }
}

bool InplaceSession::start(InplaceAction action, const QStringList& files) {
    // The processor sends nothing for an empty rotation or date run, which
    // would leave the sheet up for good.
    if (files.isEmpty() || m_processor.isRunning())
        return false;
    const int degrees = degreesForAction(action);
    m_done = 0;
    {
        QMutexLocker lock(&m_mutex);
        m_badFiles.clear();
        m_undo = RotationUndo();
    }
    if (degrees >= 0) // before the sheet goes up, so a missing tool leaves none behind
        m_processor.requireJpegtran();
    m_view.beginProgress(int(files.size()));
    switch (action) {
    case InplaceAction::ResetDates:
        return m_processor.resetDatesForFiles(files, m_resetModificationDate);
    case InplaceAction::AddIcons:
        return m_processor.addCustomIconsForFiles(files);
    case InplaceAction::RemoveIcons:
        return m_processor.removeCustomIconsForFiles(files);
    default:
        return m_processor.rotateFiles(files, degrees, m_keepBackup);
    }
}

bool InplaceSession::undoLastRotation() {
    QStringList files;
    {
        QMutexLocker lock(&m_mutex);
        if (!m_undo.canRestore())
            return false;
        files = m_undo.files();
    }
    if (m_processor.isRunning())
        return false;
    m_done = 0;
    m_view.beginProgress(int(files.size()));
    return m_processor.undoLastRotation();
}

bool InplaceSession::canUndo() const {
    QMutexLocker lock(&m_mutex);
    return m_undo.canRestore();
}

void InplaceSession::cancel() {
    m_view.showProgress(QLatin1String(CancellingText), m_done);
    m_processor.cancel();
}

QStringList InplaceSession::badFiles() const {
    QMutexLocker lock(&m_mutex);
    return m_badFiles;
}

void InplaceSession::showMessage(const QString& text) {
    m_view.showProgress(text, ++m_done);
}

void InplaceSession::didCompleteWithBadFiles(const QStringList& badFiles) {
    {
        QMutexLocker lock(&m_mutex);
        m_badFiles = badFiles;
        m_undo = m_processor.lastRotation();
    }
    m_view.endProgress();
    if (!badFiles.isEmpty())
        m_view.showAlert(InplaceAlert::NonJpegFiles, badFiles);
}

void InplaceSession::didComplete() {
    {
        // After an undo, what is left of the record (a cancel's remainder).
        QMutexLocker lock(&m_mutex);
        m_undo = m_processor.lastRotation();
    }
    m_view.endProgress();
}

} // namespace quillet
