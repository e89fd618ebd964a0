#include "engine/batch/inputlisting.h"

#include <QDir>

namespace quillet {

namespace {

// How many entries are sorted out between two looks at the stop request: a
// look costs a lock, an entry about a microsecond.
constexpr int kEntriesPerCheck = 256;

} // namespace

InputListing::InputListing(ActivityLog& log, std::function<bool()> stop)
    : m_log(log), m_stop(std::move(stop)) {}

bool InputListing::shouldStop() {
    if (!m_stopped && m_stop && m_stop())
        m_stopped = true;
    return m_stopped;
}

QFileInfoList InputListing::directoryContentsAtPath(const QString& path) {
    // Sorted by name (code-point order, as `LC_ALL=C ls` shows it) so that
    // sequence numbers do not depend on the file system's own order. The
    // entries keep what the listing learnt of their type, which spares most
    // of them a stat of their own.
    return QDir(path).entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                                    QDir::Name);
}

InputListing::Split InputListing::split(const QFileInfoList& entries) {
    Split level;
    for (int i = 0; i < entries.size(); ++i) {
        if (i % kEntriesPerCheck == kEntriesPerCheck - 1 && shouldStop())
            break;
        const QFileInfo& entry = entries[i]; // follows links: a dangling one does not exist
        if (entry.isDir())
            level.directories.append(entry.filePath());
        else if (entry.exists())
            level.files.append(entry.filePath());
    }
    return level;
}

std::vector<ImageProcessorHelper> InputListing::list(const QStringList& paths, const QString& outputDir) {
    m_visited.clear();
    m_stopped = false;
    QFileInfoList given;
    given.reserve(paths.size());
    for (int i = 0; i < paths.size(); ++i) {
        if (i % kEntriesPerCheck == kEntriesPerCheck - 1 && shouldStop())
            return {};
        const QString& path = paths[i];
        QFileInfo info(QDir::cleanPath(QFileInfo(path).absoluteFilePath()));
        if (info.exists())
            given.append(std::move(info));
        else
            m_log.writeWarningActivity(QStringLiteral("Unable to find '%1'\n").arg(path));
    }
    std::vector<ImageProcessorHelper> helpers;
    collect(split(given), QDir::cleanPath(QFileInfo(outputDir).absoluteFilePath()), helpers);
    return helpers;
}

void InputListing::collect(const Split& level, const QString& outputDir,
                           std::vector<ImageProcessorHelper>& helpers) {
    helpers.emplace_back(level.files, outputDir);
    for (const QString& directory : level.directories) {
        if (shouldStop())
            return;
        const QString real = QFileInfo(directory).canonicalFilePath();
        if (!m_visited.insert(real).second) {
            m_log.writeWarningActivity(
                QStringLiteral("Skipping folder '%1': already visited (link loop)\n").arg(directory));
            continue;
        }
        const Split contents = split(directoryContentsAtPath(directory));
        collect(contents, QDir(outputDir).filePath(QFileInfo(directory).fileName()), helpers);
    }
}

} // namespace quillet
