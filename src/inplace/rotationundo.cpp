#include "inplace/rotationundo.h"

#include "inplace/filerotation.h"
#include "support/activitylog.h"
#include "support/filesystem.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>

#include <sys/stat.h>

namespace quillet {

RotationUndo::Stamp RotationUndo::stampOf(const QString& path) {
    struct stat info {};
    if (::lstat(QFile::encodeName(path).constData(), &info) != 0 || !S_ISREG(info.st_mode))
        return {};
    return {info.st_dev, info.st_ino, info.st_size,
            static_cast<long long>(info.st_mtim.tv_sec) * 1000000000LL + info.st_mtim.tv_nsec};
}

void RotationUndo::add(const QString& path) {
    const Entry entry{path, stampOf(path), stampOf(FileRotation::backupPath(path))};
    for (Entry& noted : m_entries)
        if (noted.path == path) {
            noted = entry;
            return;
        }
    m_entries.append(entry);
}

QStringList RotationUndo::files() const {
    QStringList paths;
    for (const Entry& entry : m_entries)
        paths.append(entry.path);
    return paths;
}

bool RotationUndo::unchanged(const Entry& entry) {
    return entry.turned.size >= 0 && entry.backup.size >= 0 && stampOf(entry.path) == entry.turned &&
           stampOf(FileRotation::backupPath(entry.path)) == entry.backup;
}

bool RotationUndo::canRestore() const {
    for (const Entry& entry : m_entries)
        if (unchanged(entry))
            return true;
    return false;
}

bool RotationUndo::restore(const QString& path, FileSystem& fileSystem, ActivityLog& log) {
    const auto found = std::find_if(m_entries.cbegin(), m_entries.cend(),
                                    [&path](const Entry& entry) { return entry.path == path; });
    if (found == m_entries.cend())
        return false;
    const Entry entry = *found;
    m_entries.erase(found);

    const QString name = QFileInfo(path).fileName();
    const QString backup = FileRotation::backupPath(path);
    if (!FileSystem::exists(backup)) {
        log.writeWarningActivity(QStringLiteral("The original of '%1' is no longer in %2\n")
                                     .arg(name, QLatin1String(FileRotation::BackupFolderName)));
        return false;
    }
    if (stampOf(path) != entry.turned) {
        log.writeWarningActivity(
            QStringLiteral("'%1' has changed since it was rotated; left as it is\n").arg(name));
        return false;
    }
    if (stampOf(backup) != entry.backup) {
        log.writeWarningActivity(
            QStringLiteral("The original of '%1' has changed since the rotation; left as it is\n").arg(name));
        return false;
    }
    // One step: the path holds either the turned file or the original.
    if (!fileSystem.rename(QFile::encodeName(backup), QFile::encodeName(path))) {
        log.writeWarningActivity(QStringLiteral("Unable to put back the original of '%1'\n").arg(name));
        return false;
    }
    // The folder goes once the last original has left it; one still holding
    // others (or files of the user's) stays.
    fileSystem.removeFolder(QFile::encodeName(QFileInfo(backup).absolutePath()));
    log.writeActivity(QStringLiteral("Restored the original of '%1'\n").arg(name));
    return true;
}

} // namespace quillet
