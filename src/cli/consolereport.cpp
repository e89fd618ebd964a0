#include "cli/consolereport.h"

#include "cli/consolemessages.h"
#include "inplace/jpegtranrunner.h"
#include "settings/userdefaults.h"
#include "support/settingsstore.h"

#include <QDir>
#include <QFileInfo>

#include <atomic>
#include <csignal>

namespace quillet {

namespace {

std::atomic<InplaceSession*> interruptedSession = nullptr;
volatile std::sig_atomic_t interrupted = 0;

// Ctrl-C or a plain kill stops the run before its next file, so that the file
// in hand is finished rather than left to the next run to put back.
extern "C" void cancelOnSignal(int) {
    interrupted = 1;
    if (InplaceSession* session = interruptedSession.load())
        session->requestCancel();
}

} // namespace

void ConsoleReport::writeActivity(const QString& line) {
    std::fputs(line.toLocal8Bit().constData(), m_out);
    std::fflush(m_out);
}

void ConsoleReport::writeWarningActivity(const QString& line) {
    std::fputs(line.toLocal8Bit().constData(), m_err);
    std::fflush(m_err);
}

void ConsoleReport::showProgress(const QString& status, int value) {
    std::fprintf(m_out, "[%d/%d] %s\n", value, m_maximum, status.toLocal8Bit().constData());
    std::fflush(m_out);
}

void ConsoleReport::showAlert(InplaceAlert alert, const QStringList& files) {
    std::fprintf(m_err, "%s\n", ConsoleMessages::inplaceAlert(alert).toLocal8Bit().constData());
    for (const QString& path : files)
        std::fprintf(m_err, "  %s\n", QDir::toNativeSeparators(path).toLocal8Bit().constData());
    std::fflush(m_err);
}

int ConsoleReport::run(InplaceAction action, const QStringList& files, bool keepBackup,
                       bool modificationDate) {
    ConsoleReport report(stdout, stderr);
    const auto settings = SettingsStore::open();
    UserDefaults defaults(*settings);
    InplaceSession session(report, report, defaults);
    session.setSynchronous(true);
    session.setKeepBackup(keepBackup);
    session.setResetModificationDate(modificationDate);
    QStringList paths;
    for (const QString& file : files)
        paths.append(QDir::cleanPath(QFileInfo(file).absoluteFilePath()));
    interruptedSession = &session;
    struct sigaction handler {};
    handler.sa_handler = cancelOnSignal;
    struct sigaction oldInt {};
    struct sigaction oldTerm {};
    sigaction(SIGINT, &handler, &oldInt);
    sigaction(SIGTERM, &handler, &oldTerm);
    int status = 0;
    try {
        session.start(action, paths);
    } catch (const JpegtranMissing& error) {
        std::fprintf(stderr, "quillet: %s\n", error.what());
        status = 1;
    }
    sigaction(SIGINT, &oldInt, nullptr);
    sigaction(SIGTERM, &oldTerm, nullptr);
    interruptedSession = nullptr;
    if (status != 0)
        return status;
    if (interrupted) {
        std::fputs("quillet: cancelled\n", stderr);
        return 130;
    }
    return session.badFiles().isEmpty() ? 0 : 1;
}

} // namespace quillet
