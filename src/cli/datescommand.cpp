#include "cli/commands.h"

#include <cstdio>

int runDates(const QStringList&) {
    std::fputs("quillet: 'dates' is not available yet\n", stderr);
    return 2;
}
