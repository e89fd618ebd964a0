#include "inplace/jpegtranrunner.h"

#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>

#include <csignal>
#include <sys/prctl.h>
#include <unistd.h>

namespace quillet {

JpegtranRunner::JpegtranRunner()
    : m_requested(qEnvironmentVariable(EnvironmentVariable)), m_program(locate()) {}

JpegtranRunner::JpegtranRunner(QString program) : m_program(std::move(program)) {}

QString JpegtranRunner::locate() {
    const QString chosen = qEnvironmentVariable(EnvironmentVariable);
    if (!chosen.isEmpty()) {
        const QFileInfo info(chosen);
        if (info.isFile() && info.isExecutable())
            return info.absoluteFilePath();
        // A bare name in the variable is looked up on PATH like the default.
        return chosen.contains(QLatin1Char('/')) ? QString() : QStandardPaths::findExecutable(chosen);
    }
    return QStandardPaths::findExecutable(QStringLiteral("jpegtran"));
}

void JpegtranRunner::requireProgram() const {
    if (!m_program.isEmpty())
        return;
    if (!m_requested.isEmpty())
        throw JpegtranMissing("jpegtran not found: " + std::string(EnvironmentVariable) + " names '" +
                              m_requested.toStdString() + "', which is not an executable program");
    throw JpegtranMissing(
        "jpegtran not found on PATH: install it (Debian package libjpeg-turbo-progs) or set " +
        std::string(EnvironmentVariable) + " to its path");
}

int JpegtranRunner::run(const QStringList& arguments) {
    if (m_program.isEmpty())
        return -1;
    QProcess process;
    process.setProgram(m_program);
    process.setArguments(arguments);
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    // A tool left running after we are killed would go on writing over the
    // file that the next run restores; have the kernel kill it with us.
    const pid_t parent = ::getpid();
    process.setChildProcessModifier([parent] {
        // Out of the terminal's process group, so that Ctrl-C reaches only us
        // and we can let the file in hand finish.
        ::setpgid(0, 0);
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (::getppid() != parent)
            ::_exit(127);
    });
    process.start();
    if (!process.waitForStarted(-1))
        return -1;
    process.waitForFinished(-1);
    if (process.exitStatus() != QProcess::NormalExit)
        return -1;
    return process.exitCode();
}

} // namespace quillet
