#include "cli/commands.h"

#include <cstdio>

int runProcess(const QStringList&) {
    std::fputs("quillet: 'process' is not available yet\n", stderr);
    return 2;
}
