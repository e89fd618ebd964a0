#include "app/guishell.h"

#include "app/activitylogmodel.h"
#include "app/batcherrortext.h"
#include "app/confirmreplacesheet.h"
#include "app/sheets.h"
#include "app/thumbnailimage.h"

namespace quillet {

GuiShell::GuiShell(ActivityLogModel& log, Sheets& sheets, QObject* parent)
    : QObject(parent), m_log(log), m_sheets(sheets) {}

void GuiShell::post(std::function<void()> call) {
    // Queued even on the main thread: the caller may hold the job's lock,
    // and calls must keep their order with those from the batch thread.
    m_calls.post(std::move(call));
}

void GuiShell::writeActivity(const QString& line) {
    m_log.writeActivity(line);
}

void GuiShell::writeWarningActivity(const QString& line) {
    m_log.writeWarningActivity(line);
}

void GuiShell::beginProgressSheet(int total) {
    post([this, total] { Q_EMIT progressBegan(total); });
}

void GuiShell::endProgressSheet() {
    post([this] { Q_EMIT progressEnded(); });
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
        post([this] { flushStatus(); });
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
    Q_EMIT statusChanged(text, thumbnail, advance);
}

int GuiShell::confirmReplace(const QString& path) {
    return ConfirmReplaceSheet::ask(m_sheets, path);
}

void GuiShell::beginOverwriteWarningSheet() {
    m_sheets.runPromptSheet(
        tr("Attempt to Overwrite Original"),
        tr("To prevent accidental damages, Quillet does not allow overwriting of originals. "
           "Please choose a different output folder."),
        tr("Skip All"), {}, {});
}

void GuiShell::reportError(const BatchError& error) {
    m_sheets.runMessageSheet(BatchErrorText::title(error), BatchErrorText::message(error));
}

void GuiShell::didProcess(int processed, int total) {
    post([this, processed, total] { Q_EMIT batchFinished(processed, total); });
}

void GuiShell::clearStatus() {
    post([this] { Q_EMIT statusCleared(); });
}

} // namespace quillet
