#include "cli/commands.h"
#include "cli/inplaceargs.h"

#include "cli/consolereport.h"

#include <cstdio>

namespace quillet {

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
    const InplaceArgs parsed = parseInplaceArgs(args, "rotate", usage, QStringLiteral("--backup"));
    if (parsed.exitStatus)
        return *parsed.exitStatus;
    // The first word names the turn; the files follow it.
    const int mode = parsed.words.isEmpty() ? -1 : int(modes.indexOf(parsed.words.first()));
    if (mode < 0 || parsed.words.size() < 2) {
        std::fputs(usage, stderr);
        return 2;
    }
    return ConsoleReport::run(actions[mode], parsed.words.mid(1), parsed.flag, false);
}

} // namespace quillet
