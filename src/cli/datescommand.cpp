#include "cli/commands.h"
#include "cli/inplaceargs.h"

#include "cli/consolereport.h"

#include <cstdio>

namespace quillet {

namespace {

const char usage[] = "Usage: quillet dates [--modification] FILE...\n"
                     "\n"
                     "Sets each file's creation date to the capture date in its EXIF data.\n"
                     "Files without one are left alone.\n"
                     "\n"
                     "  --modification   set the modification date to it too\n";

} // namespace

int runDates(const QStringList& args) {
    const InplaceArgs parsed = parseInplaceArgs(args, "dates", usage, QStringLiteral("--modification"));
    if (parsed.exitStatus)
        return *parsed.exitStatus;
    if (parsed.words.isEmpty()) {
        std::fputs(usage, stderr);
        return 2;
    }
    return ConsoleReport::run(InplaceAction::ResetDates, parsed.words, false, parsed.flag);
}

} // namespace quillet
