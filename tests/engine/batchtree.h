#pragma once

#include "testsupport.h"

#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QMap>
#include <QString>

// Builders and checks for the folder trees the batch tests run over.
namespace batchtree {

// Writes a solid-colour picture; the format follows the suffix (.jpg, .png, ...).
inline void picture(const QString& path, int width, int height, int grey = 128) {
    QDir().mkpath(QFileInfo(path).path());
    testsupport::solidImage(width, height, grey, 255 - grey, grey / 2)
        .write_to_file(QFile::encodeName(path).constData());
}

inline void text(const QString& path, const QByteArray& content = "not a picture\n") {
    QDir().mkpath(QFileInfo(path).path());
    testsupport::writeFile(path, content);
}

// Relative path -> SHA-256 of every file under root (links followed).
inline QMap<QString, QByteArray> checksums(const QString& root) {
    QMap<QString, QByteArray> sums;
    QDirIterator it(root, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        sums.insert(QDir(root).relativeFilePath(path),
                    QCryptographicHash::hash(testsupport::readFile(path), QCryptographicHash::Sha256));
    }
    return sums;
}

// Relative paths of every file and folder under root, sorted.
inline QStringList entries(const QString& root) {
    QStringList found;
    QDirIterator it(root, QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (it.hasNext())
        found.append(QDir(root).relativeFilePath(it.next()));
    found.sort();
    return found;
}

} // namespace batchtree
