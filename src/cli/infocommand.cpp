#include "cli/commands.h"

#include <cstdio>

int runInfo(const QStringList&) {
    std::fputs("quillet: 'info' is not available yet\n", stderr);
    return 2;
}
