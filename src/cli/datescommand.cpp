#include "cli/commands.h"

#include "inplace/consolereport.h"

#include <cstdio>

namespace {

const char usage[] = "Usage: quillet dates [--modification] FILE...\n"
                     "\n"
                     "Sets each file's creation date to the capture date in its EXIF data.\n"
                     "Files without one are left alone.\n"
                     "\n"
                     "  --modification   set the modification date to it too\n";

} // namespace

int runDates(const QStringList& args) {
    bool modification = false;
    QStringList files;
    for (const QString& arg : args) {
        if (arg == QLatin1String("-h") || arg == QLatin1String("--help")) {
            std::fputs(usage, stdout);
            return 0;
        }
        if (arg == QLatin1String("--modification"))
            modification = true;
        else if (arg.startsWith(QLatin1String("--"))) {
            std::fprintf(stderr, "quillet dates: unknown option '%s'\n\n%s", qPrintable(arg), usage);
            return 2;
        } else
            files.append(arg);
    }
    if (files.isEmpty()) {
        std::fputs(usage, stderr);
        return 2;
    }
    return ConsoleReport::run(InplaceAction::ResetDates, files, false, modification);
}
