#include "cli/commands.h"
#include "support/settingsstore.h"

#include <QCoreApplication>

#include <vips/vips8>

#include <cstdio>
#include <functional>
#include <map>

using namespace quillet;

namespace {

const char usage[] = "Usage: quillet [--settings FILE] COMMAND [ARGS...]\n"
                     "\n"
                     "Commands:\n"
                     "  process [options] PATH... --dest DIR   convert pictures and folders into DIR\n"
                     "  info [--json] FILE...                   show each picture's metadata record\n"
                     "  presets list|show|export|import|delete  manage the stored presets\n"
                     "  rotate cw|ccw|180|auto [--backup] FILE...  rotate JPEGs losslessly in place\n"
                     "  dates [--modification] FILE...          set file dates from the EXIF capture date\n"
                     "  icons add|remove FILE...                add or remove custom icons\n"
                     "\n"
                     "Options:\n"
                     "  --settings FILE   use FILE (INI) as the settings store; the environment\n"
                     "                    variable QUILLET_SETTINGS does the same\n"
                     "  -h, --help        show this help\n"
                     "  --version         show the version\n"
                     "\n"
                     "Run 'quillet COMMAND --help' for a command's options.\n";

} // namespace

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("Korvane"));
    QCoreApplication::setApplicationName(QStringLiteral("Quillet"));
    QCoreApplication::setApplicationVersion(QStringLiteral(QUILLET_VERSION));
    if (VIPS_INIT(argv[0]) != 0) {
        std::fprintf(stderr, "quillet: cannot start the image library: %s\n", vips_error_buffer());
        return 1;
    }

    QStringList args = app.arguments().mid(1);
    while (!args.isEmpty() && args.first().startsWith(QLatin1Char('-'))) {
        const QString option = args.takeFirst();
        if (option == QLatin1String("-h") || option == QLatin1String("--help")) {
            std::fputs(usage, stdout);
            return 0;
        }
        if (option == QLatin1String("--version")) {
            std::printf("quillet %s\n", QUILLET_VERSION);
            return 0;
        }
        if (option == QLatin1String("--settings") && !args.isEmpty()) {
            SettingsStore::overridePath(args.takeFirst());
            continue;
        }
        std::fprintf(stderr, "quillet: unknown option '%s'\n\n%s", qPrintable(option), usage);
        return 2;
    }
    if (args.isEmpty()) {
        std::fputs(usage, stderr);
        return 2;
    }

    const std::map<QString, std::function<int(const QStringList&)>> commands = {
        {QStringLiteral("process"), runProcess}, {QStringLiteral("info"), runInfo},
        {QStringLiteral("presets"), runPresets}, {QStringLiteral("rotate"), runRotate},
        {QStringLiteral("dates"), runDates},     {QStringLiteral("icons"), runIcons},
    };
    const QString name = args.takeFirst();
    const auto command = commands.find(name);
    if (command == commands.end()) {
        std::fprintf(stderr, "quillet: unknown command '%s'\n\n%s", qPrintable(name), usage);
        return 2;
    }
    const int status = command->second(args);
    vips_shutdown();
    return status;
}
