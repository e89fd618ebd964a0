#include "app/appcontroller.h"
#include "app/desktopservices.h"
#include "app/mainwindow.h"
#include "app/sheets.h"
#include "engine/batch/batchenvironment.h"
#include "support/settingsstore.h"

#include <QApplication>
#include <QFileInfo>

#include <vips/vips8>

#include <cstdio>

using namespace quillet;

namespace {

const char usage[] = "Usage: quillet-gui [--settings FILE] [PATH...]\n"
                     "\n"
                     "Opens the Quillet window; pictures and folders given are processed as one batch.\n"
                     "\n"
                     "Options:\n"
                     "  --settings FILE   use FILE (INI) as the settings store; the environment\n"
                     "                    variable QUILLET_SETTINGS does the same\n"
                     "  -h, --help        show this help\n"
                     "  --version         show the version\n";

} // namespace

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("Korvane"));
    QCoreApplication::setApplicationName(QStringLiteral("Quillet"));
    QCoreApplication::setApplicationVersion(QStringLiteral(QUILLET_VERSION));
    QGuiApplication::setApplicationDisplayName(QStringLiteral("Quillet"));

    QStringList paths;
    QStringList args = app.arguments().mid(1);
    while (!args.isEmpty()) {
        const QString arg = args.takeFirst();
        if (arg == QLatin1String("-h") || arg == QLatin1String("--help")) {
            std::fputs(usage, stdout);
            return 0;
        }
        if (arg == QLatin1String("--version")) {
            std::printf("quillet-gui %s\n", QUILLET_VERSION);
            return 0;
        }
        if (arg == QLatin1String("--settings")) {
            if (args.isEmpty()) {
                std::fprintf(stderr, "quillet-gui: --settings needs a file\n\n%s", usage);
                return 2;
            }
            SettingsStore::overridePath(args.takeFirst());
            continue;
        }
        paths.append(QFileInfo(arg).absoluteFilePath());
    }
    if (VIPS_INIT(argv[0]) != 0) {
        std::fprintf(stderr, "quillet-gui: cannot start the image library: %s\n", vips_error_buffer());
        return 1;
    }

    int status = 0;
    {
        Sheets sheets;
        AppController controller(sheets, DesktopServices::standard());
        BatchEnvironment::prepare(BatchOptions::fromDefaults(controller.defaults()));
        MainWindow window(controller);
        window.show();
        // Everything named on the command line forms one batch.
        for (const QString& path : paths)
            controller.openFile(path);
        status = app.exec();
    }
    vips_shutdown();
    return status;
}
