#include "cli/commands.h"

#include <cstdio>

int runPresets(const QStringList&) {
    std::fputs("quillet: 'presets' is not available yet\n", stderr);
    return 2;
}
