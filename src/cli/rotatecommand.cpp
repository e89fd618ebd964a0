#include "cli/commands.h"

#include <cstdio>

int runRotate(const QStringList&) {
    std::fputs("quillet: 'rotate' is not available yet\n", stderr);
    return 2;
}
