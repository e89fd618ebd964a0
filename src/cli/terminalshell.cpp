#include "cli/terminalshell.h"

#include "cli/consolemessages.h"

#include <QFileInfo>

namespace quillet {

namespace {

constexpr char red[] = "\033[31m";
constexpr char plain[] = "\033[0m";
constexpr char clearLine[] = "\r\033[K";

} // namespace

TerminalShell::TerminalShell(Streams streams, Conflict conflict) : m_streams(streams), m_conflict(conflict) {}

bool TerminalShell::openLogFile(const QString& path) {
    m_logFile.setFileName(path);
    return m_logFile.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text);
}

void TerminalShell::clearBar() {
    if (m_barShown) {
        std::fputs(clearLine, m_streams.status);
        std::fflush(m_streams.status);
        m_barShown = false;
    }
}

void TerminalShell::drawBar() {
    if (!m_streams.statusIsTerminal || m_total <= 0)
        return;
    constexpr int width = 30;
    const int filled = m_total > 0 ? int(qint64(m_progress) * width / m_total) : 0;
    const QString bar = QString(filled, QLatin1Char('#')) + QString(width - filled, QLatin1Char('-'));
    // Keep the line short enough not to wrap on a narrow terminal.
    const QString line =
        QStringLiteral("[%1] %2/%3 %4").arg(bar).arg(m_progress).arg(m_total).arg(m_status).left(100);
    std::fprintf(m_streams.status, "%s%s", clearLine, line.toLocal8Bit().constData());
    std::fflush(m_streams.status);
    m_barShown = true;
}

void TerminalShell::write(const QString& line, bool warning) {
    std::lock_guard lock(m_mutex);
    clearBar();
    const QByteArray bytes = line.toLocal8Bit();
    if (warning && m_streams.outIsTerminal)
        std::fprintf(m_streams.out, "%s%s%s", red, bytes.constData(), plain);
    else
        std::fputs(bytes.constData(), m_streams.out);
    std::fflush(m_streams.out);
    if (m_logFile.isOpen()) {
        m_logFile.write(line.toUtf8());
        m_logFile.flush();
    }
    drawBar();
}

void TerminalShell::notice(const QString& text, bool warning) {
    std::lock_guard lock(m_mutex);
    clearBar();
    const QByteArray bytes = text.toLocal8Bit();
    if (warning && m_streams.statusIsTerminal)
        std::fprintf(m_streams.status, "%s%s%s\n", red, bytes.constData(), plain);
    else
        std::fprintf(m_streams.status, "%s\n", bytes.constData());
    std::fflush(m_streams.status);
    drawBar();
}

void TerminalShell::beginProgressSheet(int total) {
    std::lock_guard lock(m_mutex);
    m_total = total;
    m_progress = 0;
    drawBar();
}

void TerminalShell::setProgressTotal(int total) {
    std::lock_guard lock(m_mutex);
    m_total = total;
    drawBar();
}

void TerminalShell::endProgressSheet() {
    std::lock_guard lock(m_mutex);
    clearBar();
}

void TerminalShell::setStatus(const QString& text, const std::optional<vips::VImage>&) {
    std::lock_guard lock(m_mutex);
    ++m_progress;
    m_status = text;
    if (m_streams.statusIsTerminal) {
        drawBar();
    } else {
        std::fprintf(m_streams.status, "[%d/%d] %s\n", m_progress, m_total, text.toLocal8Bit().constData());
        std::fflush(m_streams.status);
    }
}

void TerminalShell::writeActivity(const QString& line) {
    write(line, false);
}

void TerminalShell::writeWarningActivity(const QString& line) {
    write(line, true);
}

int TerminalShell::confirmReplace(const QString& path) {
    // Skip and replace hold for the whole run, so they answer for the folder.
    if (m_conflict == Conflict::Replace)
        return ReplaceAll;
    if (m_conflict == Conflict::Skip || !m_readKey)
        return SkipAll;
    {
        std::lock_guard lock(m_mutex);
        clearBar();
        std::fprintf(
            m_streams.status,
            "'%s' already exists. Replace it? [y]es, [n]o, replace [a]ll in this folder, [s]kip all in "
            "this folder: ",
            QFileInfo(path).fileName().toLocal8Bit().constData());
        std::fflush(m_streams.status);
    }
    // The lock is not held while waiting, so Ctrl-C notices still get through.
    for (;;) {
        const int key = m_readKey();
        int answer = -1;
        switch (key) {
        case 'y':
        case 'Y':
            answer = Replace;
            break;
        case 'n':
        case 'N':
            answer = Skip;
            break;
        case 'a':
        case 'A':
            answer = ReplaceAll;
            break;
        case 's':
        case 'S':
            answer = SkipAll;
            break;
        case -1:
            answer = SkipAll;
            break; // the terminal went away
        default:
            break;
        }
        if (answer >= 0) {
            std::lock_guard lock(m_mutex);
            std::fprintf(m_streams.status, "%c\n", key > 0 ? char(key) : 's');
            std::fflush(m_streams.status);
            drawBar();
            return answer;
        }
    }
}

void TerminalShell::beginOverwriteWarningSheet() {
    notice(
        QStringLiteral("Attempt to Overwrite Original: to prevent accidental damages, Quillet does not allow "
                       "overwriting of originals. Please choose a different output folder."),
        true);
}

void TerminalShell::reportError(const BatchError& error) {
    // Shown after the completion line, as the report's last word.
    std::lock_guard lock(m_mutex);
    m_hadError = true;
    m_error = ConsoleMessages::batchError(error);
}

void TerminalShell::didProcess(int processed, int total) {
    std::lock_guard lock(m_mutex);
    clearBar();
    if (total == UnknownTotal)
        std::fputs("Cancelled while listing the files\n", m_streams.out);
    else if (processed == total)
        std::fprintf(m_streams.out, "Processing Completed (%d files processed)\n", processed);
    else
        std::fprintf(m_streams.out, "Cancelled (processed %d of %d)\n", processed, total);
    std::fflush(m_streams.out);
    if (!m_error.isEmpty()) {
        const QByteArray text = m_error.toLocal8Bit();
        if (m_streams.statusIsTerminal)
            std::fprintf(m_streams.status, "%s%s%s\n", red, text.constData(), plain);
        else
            std::fprintf(m_streams.status, "%s\n", text.constData());
        std::fflush(m_streams.status);
    }
    m_processed = processed;
    m_total = total;
    m_done = true;
    m_completed.notify_all();
}

void TerminalShell::waitForCompletion() {
    std::unique_lock lock(m_mutex);
    m_completed.wait(lock, [this] { return m_done; });
}

} // namespace quillet
