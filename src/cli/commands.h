#pragma once

#include <QStringList>

namespace quillet {

// One function per subcommand; each gets the arguments after its name and
// returns the process exit status (0 success, 1 failure, 2 bad usage).
int runProcess(const QStringList& args);
int runInfo(const QStringList& args);
int runPresets(const QStringList& args);
int runRotate(const QStringList& args);
int runDates(const QStringList& args);
int runIcons(const QStringList& args);

} // namespace quillet
