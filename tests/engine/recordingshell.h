#pragma once

#include "engine/batchshell.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <mutex>

// A BatchShell that records every call as one line of text, in order:
//   "begin N", "end", "status TEXT", "log TEXT", "warn TEXT", "confirm PATH",
//   "overwrite", "message TITLE: TEXT", "done P of T".
// Log lines keep their own tabs and line feeds.
class RecordingShell : public BatchShell {
public:
    std::function<int(const QString&)> answer = [](const QString&) { return int(Skip); };
    std::function<void(const QString&)> onStatus;

    void beginProgressSheet(int total) override { add(QStringLiteral("begin %1").arg(total)); }
    void endProgressSheet() override { add(QStringLiteral("end")); }
    void setStatus(const QString& text, const std::optional<vips::VImage>& thumbnail) override {
        add(QStringLiteral("status ") + text);
        if (thumbnail) {
            std::lock_guard lock(m_mutex);
            ++thumbnails;
            thumbnailWidth = thumbnail->width();
            thumbnailHeight = thumbnail->height();
        }
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
    void runMessageSheet(const QString& title, const QString& message) override {
        add(QStringLiteral("message %1: %2").arg(title, message));
    }
    void didProcess(int processed, int total) override { add(QStringLiteral("done %1 of %2").arg(processed).arg(total)); }
    bool wantsThumbnails() const override { return thumbnailsWanted; }

    QStringList calls() const {
        std::lock_guard lock(m_mutex);
        return m_calls;
    }
    // The calls that start with `prefix`.
    QStringList callsStartingWith(const QString& prefix) const {
        QStringList found;
        for (const QString& call : calls())
            if (call.startsWith(prefix))
                found.append(call);
        return found;
    }

    bool thumbnailsWanted = false;
    int thumbnails = 0;
    int thumbnailWidth = 0;
    int thumbnailHeight = 0;

private:
    void add(const QString& call) {
        std::lock_guard lock(m_mutex);
        m_calls.append(call);
    }
    mutable std::mutex m_mutex;
    QStringList m_calls;
};
