#include "cli/commands.h"

#include <cstdio>

int runIcons(const QStringList&) {
    std::fputs("quillet: 'icons' is not available yet\n", stderr);
    return 2;
}
