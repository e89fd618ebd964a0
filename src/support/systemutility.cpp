#include "support/systemutility.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>

#include <unistd.h>

namespace quillet {

long SystemUtility::residentSetSize() {
    QFile statm(QStringLiteral("/proc/self/statm"));
    if (!statm.open(QIODevice::ReadOnly))
        return 0;
    return residentKilobytes(statm.readLine(), sysconf(_SC_PAGESIZE));
}

long SystemUtility::residentKilobytes(const QByteArray& statm, long pageSize) {
    // "size resident shared text lib data dt", all in pages.
    const QList<QByteArray> fields = statm.simplified().split(' ');
    if (fields.size() < 2 || pageSize <= 0)
        return 0;
    bool ok = false;
    const long long pages = fields[1].toLongLong(&ok);
    if (!ok || pages < 0)
        return 0;
    return long(pages * pageSize / 1024);
}

QByteArray SystemUtility::runCommand(const QString& program, const QStringList& arguments,
                                     const QString& workingFolder, int* status) {
    QProcess process;
    process.setProgram(program);
    process.setArguments(arguments);
    if (!workingFolder.isEmpty())
        process.setWorkingDirectory(workingFolder);
    process.setStandardInputFile(QProcess::nullDevice());
    process.setProcessChannelMode(QProcess::SeparateChannels);
    process.start();
    const bool ran = process.waitForStarted(-1) && process.waitForFinished(-1);
    if (status)
        *status = ran && process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    return process.readAllStandardOutput();
}

bool SystemUtility::restartApplication() {
    if (!QProcess::startDetached(QCoreApplication::applicationFilePath(), {}))
        return false;
    QCoreApplication::quit();
    return true;
}

} // namespace quillet
