#include "cli/commands.h"

#include "inplace/consolereport.h"

#include <cstdio>

namespace {

const char usage[] = "Usage: quillet rotate cw|ccw|180|auto [--backup] FILE...\n"
                     "\n"
                     "Rotates JPEG files losslessly in place through jpegtran: cw turns them\n"
                     "90 degrees clockwise, ccw 90 counter-clockwise, 180 half a turn, and auto\n"
                     "turns each one upright from its EXIF orientation (then set to 1).\n"
                     "\n"
                     "  --backup   keep each original in a \"Quillet Originals\" folder beside it\n"
                     "\n"
                     "jpegtran is taken from PATH, or from the environment variable\n"
                     "QUILLET_JPEGTRAN. Exit status 1 when a file could not be rotated.\n"
                     "A rotation that was interrupted is undone by the next rotation of the file.\n";

} // namespace

int runRotate(const QStringList& args) {
    static const QStringList modes = {QStringLiteral("cw"), QStringLiteral("ccw"), QStringLiteral("180"),
                                      QStringLiteral("auto")};
    static const InplaceAction actions[] = {InplaceAction::RotateClockwise,
                                            InplaceAction::RotateCounterClockwise, InplaceAction::Rotate180,
                                            InplaceAction::RotateAuto};
    int mode = -1;
    bool backup = false;
    QStringList files;
    for (const QString& arg : args) {
        if (arg == QLatin1String("-h") || arg == QLatin1String("--help")) {
            std::fputs(usage, stdout);
            return 0;
        }
        if (arg == QLatin1String("--backup"))
            backup = true;
        else if (mode < 0 && files.isEmpty() && modes.contains(arg))
            mode = int(modes.indexOf(arg));
        else if (arg.startsWith(QLatin1String("--"))) {
            std::fprintf(stderr, "quillet rotate: unknown option '%s'\n\n%s", qPrintable(arg), usage);
            return 2;
        } else
            files.append(arg);
    }
    if (mode < 0 || files.isEmpty()) {
        std::fputs(usage, stderr);
        return 2;
    }
    return ConsoleReport::run(actions[mode], files, backup, false);
}
