#include "cli/inplaceargs.h"

#include <cstdio>

namespace quillet {

InplaceArgs parseInplaceArgs(const QStringList& args, const char* command, const char* usage,
                             const QString& flag) {
    InplaceArgs parsed;
    for (const QString& arg : args) {
        if (arg == QLatin1String("-h") || arg == QLatin1String("--help")) {
            std::fputs(usage, stdout);
            parsed.exitStatus = 0;
            return parsed;
        }
        if (arg == flag) {
            parsed.flag = true;
        } else if (arg.startsWith(QLatin1String("--"))) {
            std::fprintf(stderr, "quillet %s: unknown option '%s'\n\n%s", command, qPrintable(arg), usage);
            parsed.exitStatus = 2;
            return parsed;
        } else {
            parsed.words.append(arg);
        }
    }
    return parsed;
}

} // namespace quillet
