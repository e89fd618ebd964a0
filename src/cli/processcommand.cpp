#include "cli/commands.h"
#include "cli/processoptions.h"
#include "cli/processsignals.h"
#include "cli/terminalinput.h"
#include "cli/terminalshell.h"
#include "desktop/desktopnotification.h"
#include "engine/batch/batchenvironment.h"
#include "engine/batch/imageprocessor.h"
#include "engine/pipeline/modernencoder.h"
#include "settings/presetstore.h"
#include "settings/versionlist.h"
#include "support/settingsstore.h"

#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <unistd.h>

namespace quillet {

namespace {

// Set by --notify: a run started from a file manager has no terminal to
// read its messages on.
bool notifyDesktop = false;

int usageError(const QString& message) {
    std::fprintf(stderr, "quillet process: %s\nRun 'quillet process --help' for the options.\n",
                 message.toLocal8Bit().constData());
    if (notifyDesktop)
        DesktopNotification().send(QStringLiteral("Quillet could not start"), message);
    return 2;
}

void notifyEnd(const TerminalShell& shell, const QString& dest) {
    const bool whole = shell.processed() == shell.total() && !shell.hadError();
    const QString body = whole ? QStringLiteral("%1 files processed into %2").arg(shell.processed()).arg(dest)
                               : QStringLiteral("%1 of %2 files processed into %3; some could not be written "
                                                "or the run was cancelled")
                                     .arg(shell.processed())
                                     .arg(shell.total())
                                     .arg(dest);
    DesktopNotification().send(
        whole ? QStringLiteral("Processing Completed") : QStringLiteral("Processing Incomplete"), body);
}

TerminalShell::Conflict conflictPolicy(const ProcessRequest& request, bool canAsk) {
    if (!request.conflictGiven)
        return canAsk ? TerminalShell::Conflict::Ask : TerminalShell::Conflict::Skip;
    switch (request.conflict) {
    case ProcessRequest::Conflict::Replace:
        return TerminalShell::Conflict::Replace;
    case ProcessRequest::Conflict::Skip:
        return TerminalShell::Conflict::Skip;
    default:
        return TerminalShell::Conflict::Ask;
    }
}

} // namespace

int runProcess(const QStringList& args) {
    notifyDesktop = args.contains(QStringLiteral("--notify"));
    const auto settings = SettingsStore::open();
    ProcessParse parsed = parseProcessArguments(args, *settings);
    if (!parsed.request)
        return usageError(parsed.error);
    ProcessRequest& request = *parsed.request;
    if (request.help) {
        std::fputs(processUsage().toLocal8Bit().constData(), stdout);
        return 0;
    }
    const bool canAsk = isatty(STDIN_FILENO) != 0;
    if (request.conflictGiven && request.conflict == ProcessRequest::Conflict::Ask && !canAsk)
        return usageError(
            QStringLiteral("--on-conflict ask needs a terminal to ask on; use --on-conflict skip "
                           "or --on-conflict replace"));
    // Stored values that were refused (a hand-edited store, an old preset):
    // the batch runs with the defaults, and the user hears why.
    for (const QString& note : request.notes)
        std::fprintf(stderr, "quillet process: %s\n", note.toLocal8Bit().constData());
    // Every version is checked before a file is written.
    VersionList::Resolved versions = VersionList::resolve(request.versions, PresetStore::load(*settings),
                                                          ProcessingRequest::fromRecord(request.params));
    if (!versions.error.isEmpty())
        return usageError(versions.error);
    for (const OutputVersion& version : versions.versions) {
        const int format = version.request.output.format;
        const QString reason =
            FileFormat::isModern(format) ? ModernEncoder::unavailableReason(format) : QString();
        if (!reason.isEmpty())
            return usageError(
                QStringLiteral("cannot write %1 pictures: %2").arg(FileFormat::displayName(format), reason));
    }
    if (!request.shard.isWhole() && BatchShard::overlaps(request.paths, request.dest))
        return usageError(
            QStringLiteral("--shard needs a destination outside the inputs, and no input inside it: "
                           "each part must find the input tree as the others found it"));
    request.options.shard = request.shard;
    // The batch's log names each missing input; with none left there is
    // nothing to do, which the exit status says.
    const bool anyInput = std::any_of(request.paths.cbegin(), request.paths.cend(),
                                      [](const QString& path) { return QFileInfo::exists(path); });

    TerminalShell::Streams streams;
    streams.outIsTerminal = isatty(STDOUT_FILENO) != 0;
    streams.statusIsTerminal = isatty(STDERR_FILENO) != 0;
    TerminalShell shell(streams, conflictPolicy(request, canAsk));
    if (!request.logFile.isEmpty() && !shell.openLogFile(request.logFile))
        return usageError(QStringLiteral("cannot write the log file '%1'").arg(request.logFile));

    BatchEnvironment::prepare(request.options);
    ImageProcessor job(shell, request.renamer);
    TerminalInput input([&] {
        const bool paused = job.pause();
        shell.notice(paused ? QStringLiteral("Paused after the current file; press p to resume")
                            : QStringLiteral("Resumed"));
    });
    if (input.active())
        shell.setKeyReader([&input] { return input.readKey(); });

    ProcessSignals signalWatch({
        [&] {
            job.cancel();
            shell.notice(QStringLiteral("Cancelling after the current file (Ctrl-C again to stop at once)"));
        },
        [&] {
            // Ctrl-Z: stop between files, then hand the terminal back.
            if (!job.pause())
                job.pause();
            shell.notice(QStringLiteral("Paused; 'fg' resumes"));
            input.suspend();
        },
        [&] {
            input.resume();
            if (job.pause())
                job.pause();
            shell.notice(QStringLiteral("Resumed"));
        },
        [&] { input.suspend(); },
    });

    job.processFiles(request.paths, std::move(versions.versions), request.dest, request.creator,
                     request.options);
    job.waitForFinished();
    if (request.notify)
        notifyEnd(shell, request.dest);
    return anyInput && shell.processed() == shell.total() && !shell.hadError() ? 0 : 1;
}

} // namespace quillet
