#include "app/models/guishell.h"

#include "app/models/activitylogmodel.h"
#include "app/models/batcherrortext.h"
#include "app/models/questions.h"
#include "app/models/thumbnailimage.h"

#include <QThread>

namespace quillet {

GuiShell::GuiShell(ActivityLogModel& log, Questions& questions, QObject* parent)
    : QObject(parent), m_log(log), m_questions(questions) {
    m_statusFrame.setSingleShot(true);
    connect(&m_statusFrame, &QTimer::timeout, this, &GuiShell::flushStatus);
}

void GuiShell::post(std::function<void()> call) {
    // Always queued, so that the window takes the calls in the order the
    // engine made them.
    m_calls.post(std::move(call));
}

void GuiShell::writeActivity(const QString& line) {
    m_log.writeActivity(line);
}

void GuiShell::writeWarningActivity(const QString& line) {
    m_log.writeWarningActivity(line);
}

void GuiShell::beginProgressSheet(int total) {
    post([this, total] {
        deliverHeldStatus();
        Q_EMIT progressBegan(total);
    });
}

void GuiShell::setProgressTotal(int total) {
    post([this, total] { Q_EMIT progressTotalKnown(total); });
}

void GuiShell::endProgressSheet() {
    post([this] {
        deliverHeldStatus();
        Q_EMIT progressEnded();
    });
}

void GuiShell::setStatus(const QString& text, const std::optional<vips::VImage>& thumbnail) {
    // Converted here, off the main thread; the picture is 64 x 64 at most.
    const QImage image = thumbnail ? thumbnailImage(*thumbnail) : QImage();
    std::lock_guard lock(m_statusMutex);
    m_statusText = text;
    if (!image.isNull())
        m_statusThumbnail = image;
    ++m_statusAdvance;
    // Updates that come faster than the window takes them are merged.
    if (!m_statusPosted) {
        m_statusPosted = true;
        // The single-file run's status comes on the main thread, and the
        // controller's own status follows it at once: that one is not held.
        const bool paced = QThread::currentThread() != thread();
        post([this, paced] { scheduleStatus(paced); });
    }
}

void GuiShell::scheduleStatus(bool paced) {
    const qint64 since = m_sinceStatus.isValid() ? m_sinceStatus.elapsed() : StatusFrameMilliseconds;
    if (!paced || since >= StatusFrameMilliseconds)
        flushStatus();
    else
        m_statusFrame.start(int(StatusFrameMilliseconds - since));
}

void GuiShell::deliverHeldStatus() {
    if (m_statusFrame.isActive()) {
        m_statusFrame.stop();
        flushStatus();
    }
}

void GuiShell::flushStatus() {
    QString text;
    QImage thumbnail;
    int advance = 0;
    {
        std::lock_guard lock(m_statusMutex);
        text = m_statusText;
        thumbnail = m_statusThumbnail;
        advance = m_statusAdvance;
        m_statusThumbnail = QImage();
        m_statusAdvance = 0;
        m_statusPosted = false;
    }
    m_sinceStatus.start();
    Q_EMIT statusChanged(text, thumbnail, advance);
}

int GuiShell::confirmReplace(const QString& path) {
    return m_questions.confirmReplace(path);
}

void GuiShell::beginOverwriteWarningSheet() {
    m_questions.runPromptSheet(
        tr("Attempt to Overwrite Original"),
        tr("To prevent accidental damages, Quillet does not allow overwriting of originals. "
           "Please choose a different output folder."),
        tr("Skip All"), {}, {});
}

void GuiShell::reportError(const BatchError& error) {
    m_questions.runMessageSheet(BatchErrorText::title(error), BatchErrorText::message(error));
}

void GuiShell::postAfterStatus(std::function<void()> call) {
    post([this, call = std::move(call)] {
        deliverHeldStatus();
        call();
    });
}

void GuiShell::didProcess(int processed, int total) {
    post([this, processed, total] {
        deliverHeldStatus();
        Q_EMIT batchFinished(processed, total);
    });
}

void GuiShell::clearStatus() {
    post([this] {
        deliverHeldStatus();
        Q_EMIT statusCleared();
    });
}

} // namespace quillet
