#include "inplace/losslessprocessor.h"

#include "inplace/filerotation.h"
#include "inplace/inplacedelegate.h"
#include "inplace/jpegtranrunner.h"
#include "metadata/kvimageinfo.h"
#include "support/customicon.h"
#include "support/fileattributes.h"

#include <QFileInfo>

namespace quillet {

LosslessProcessor::LosslessProcessor(InplaceDelegate& controller, std::unique_ptr<JpegtranRunner> jpegtran,
                                     FileSystem& fileSystem)
    : m_controller(controller),
      m_jpegtran(jpegtran ? std::move(jpegtran) : std::make_unique<JpegtranRunner>()),
      m_fileSystem(fileSystem) {}

LosslessProcessor::~LosslessProcessor() {
    wait();
}

void LosslessProcessor::wait() {
    if (m_thread.joinable() && m_thread.get_id() != std::this_thread::get_id())
        m_thread.join();
}

void LosslessProcessor::requireJpegtran() const {
    m_jpegtran->requireProgram();
}

bool LosslessProcessor::rotateFiles(const QStringList& paths, int degrees, bool keepBackup) {
    if (m_running)
        return false;
    m_jpegtran->requireProgram();
    m_degrees = degrees;
    m_keepBackup = keepBackup;
    return start(Operation::Rotate, paths);
}

bool LosslessProcessor::resetDatesForFiles(const QStringList& paths, bool modificationDate) {
    if (m_running)
        return false;
    m_resetModificationDate = modificationDate;
    return start(Operation::ResetDates, paths);
}

bool LosslessProcessor::addCustomIconsForFiles(const QStringList& paths) {
    return !m_running && start(Operation::AddIcons, paths);
}

bool LosslessProcessor::removeCustomIconsForFiles(const QStringList& paths) {
    return !m_running && start(Operation::RemoveIcons, paths);
}

bool LosslessProcessor::undoLastRotation() {
    return !m_running && !m_lastRotation.isEmpty() && start(Operation::Undo, m_lastRotation.files());
}

bool LosslessProcessor::start(Operation operation, const QStringList& paths) {
    wait(); // the previous run has ended; reap its thread
    // Only the run that made the backups may put them back.
    if (operation != Operation::Undo)
        m_lastRotation = RotationUndo();
    m_paths = paths;
    m_running = true;
    if (m_synchronous)
        run(operation);
    else
        m_thread = std::thread([this, operation] { run(operation); });
    return true;
}

void LosslessProcessor::run(Operation operation) {
    if (m_paths.isEmpty()) {
        // Rotation and date runs end without a word; icon runs still complete.
        if (operation == Operation::AddIcons || operation == Operation::RemoveIcons)
            m_controller.didComplete();
        m_running = false;
        return;
    }
    FileRotation rotation(*m_jpegtran, m_fileSystem, m_controller);
    QStringList badFiles;
    if (operation == Operation::Rotate)
        rotation.restoreLeftovers(m_paths);
    for (const QString& path : std::as_const(m_paths)) {
        if (m_cancel.exchange(false)) {
            complete(operation, badFiles);
            return;
        }
        const QString name = QFileInfo(path).fileName();
        switch (operation) {
        case Operation::Rotate:
            m_controller.showMessage(QStringLiteral("Rotating %1").arg(name));
            switch (rotation.rotate(path, m_degrees, m_keepBackup)) {
            case FileRotation::Outcome::Bad:
                badFiles.append(path);
                break;
            case FileRotation::Outcome::Rotated:
                if (m_keepBackup)
                    m_lastRotation.add(path);
                break;
            case FileRotation::Outcome::Skipped:
                break;
            }
            break;
        case Operation::ResetDates:
            m_controller.showMessage(QStringLiteral("Setting date for %1").arg(name));
            resetDatesForFile(path);
            break;
        case Operation::AddIcons:
            m_controller.showMessage(QStringLiteral("Setting icon for %1").arg(name));
            CustomIcon::setForFile(path); // failures are not reported
            break;
        case Operation::RemoveIcons:
            m_controller.showMessage(QStringLiteral("Clearing icon for %1").arg(name));
            CustomIcon::removeFromFile(path);
            break;
        case Operation::Undo:
            m_controller.showMessage(QStringLiteral("Restoring %1").arg(name));
            m_lastRotation.restore(path, m_fileSystem, m_controller);
            break;
        }
    }
    complete(operation, badFiles);
}

void LosslessProcessor::complete(Operation operation, const QStringList& badFiles) {
    if (operation == Operation::Rotate)
        m_controller.didCompleteWithBadFiles(badFiles);
    else
        m_controller.didComplete();
    m_running = false;
}

void LosslessProcessor::resetDatesForFile(const QString& path) {
    // Only the EXIF capture date counts, so other pictures need not be opened
    // and no picture needs decoding for a thumbnail.
    const std::optional<KVImageInfo> info = KVImageInfo::fromFile(path, false, false);
    if (!info || !info->creationDate().isValid())
        return; // no date: the file is left alone, without a message
    const QDateTime date = info->creationDate();
    FileAttributes::setAttributes(path, 0, 0, false, date, m_resetModificationDate ? date : QDateTime(),
                                  m_fileSystem);
}

} // namespace quillet
