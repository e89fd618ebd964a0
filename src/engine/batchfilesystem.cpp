#include "engine/batchfilesystem.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

bool BatchFileSystem::makePath(const QString& dir) {
    return QDir().mkpath(dir) && QFileInfo(dir).isDir();
}

bool BatchFileSystem::writeAtomically(const QString& path, const QByteArray& bytes) {
    if (bytes.isEmpty())
        return false;
    QSaveFile file(path);
    // QSaveFile would otherwise write straight into a read-only folder's
    // existing file in place; we want all-or-nothing.
    file.setDirectWriteFallback(false);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    if (file.write(bytes) != bytes.size()) {
        file.cancelWriting();
        return false;
    }
    return file.commit();
}

bool BatchFileSystem::copyFile(const QString& source, const QString& destination) {
    if (!QFileInfo(source).isFile() || QFileInfo::exists(destination))
        return false;
    return QFile::copy(source, destination);
}

BatchFileSystem& BatchFileSystem::standard() {
    static BatchFileSystem fileSystem;
    return fileSystem;
}
