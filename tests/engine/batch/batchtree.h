#pragma once

#include "testsupport.h"

#include "engine/batch/batchshell.h"

#include <QCryptographicHash>
#include <QDirIterator>
#include <QFileInfo>
#include <QMap>

#include <functional>
#include <mutex>

namespace quillet {

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
    for (QDirIterator it(root, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
         it.hasNext();) {
        const QString path = it.next();
        sums.insert(QDir(root).relativeFilePath(path),
                    QCryptographicHash::hash(testsupport::readFile(path), QCryptographicHash::Sha256));
    }
    return sums;
}

// Relative paths of every file and folder under root, sorted, joined by spaces.
inline QString entries(const QString& root) {
    QStringList found;
    for (QDirIterator it(root, QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                         QDirIterator::Subdirectories);
         it.hasNext();)
        found.append(QDir(root).relativeFilePath(it.next()));
    found.sort();
    return found.join(QLatin1Char(' '));
}

} // namespace batchtree

// A BatchShell that records every call as one line of text, in order: "begin N", "total N", "end", "status
// TEXT", "log TEXT", "warn TEXT", "confirm PATH", "overwrite", "folder error FOLDER" or "write error FOLDER",
// "done P of T".
class RecordingShell : public BatchShell {
  public:
    std::function<int(const QString&)> answer = [](const QString&) { return int(Skip); };
    std::function<void(const QString&)> onStatus;

    void beginProgressSheet(int total) override { add(QStringLiteral("begin %1").arg(total)); }
    void setProgressTotal(int total) override { add(QStringLiteral("total %1").arg(total)); }
    void endProgressSheet() override { add(QStringLiteral("end")); }
    void setStatus(const QString& text, const std::optional<vips::VImage>&) override {
        add(QStringLiteral("status ") + text);
        if (onStatus)
            onStatus(text);
    }
    void writeActivity(const QString& line) override { add(QStringLiteral("log ") + line); }
    void writeWarningActivity(const QString& line) override { add(QStringLiteral("warn ") + line); }
    int confirmReplace(const QString& path) override {
        add(QStringLiteral("confirm ") + path);
        return answer(path);
    }
    void beginOverwriteWarningSheet() override { add(QStringLiteral("overwrite")); }
    void reportError(const BatchError& error) override {
        const bool folder = error.code == BatchError::Code::FolderNotCreated;
        add(QStringLiteral("%1 error %2").arg(folder ? "folder" : "write", error.folder));
    }
    void didProcess(int processed, int total) override {
        add(QStringLiteral("done %1 of %2").arg(processed).arg(total));
    }
    bool wantsThumbnails() const override { return false; }

    // The calls so far, or those that start with `prefix`.
    QStringList calls(const QString& prefix = {}) const {
        std::lock_guard lock(m_mutex);
        QStringList found = m_calls;
        found.removeIf([&](const QString& call) { return !call.startsWith(prefix); });
        return found;
    }

  private:
    void add(const QString& call) {
        std::lock_guard lock(m_mutex);
        m_calls.append(call);
    }
    mutable std::mutex m_mutex;
    QStringList m_calls;
};

} // namespace quillet
