#include "app/models/appcontroller.h"
#include "app/models/appmodels.h"
#include "app/models/batchnotifier.h"
#include "app/models/desktopservices.h"
#include "app/models/singleinstance.h"
#include "app/widgets/inplace/inplacewindow.h"
#include "app/widgets/inspector/inspectorwindow.h"
#include "app/widgets/main/mainwindow.h"
#include "app/widgets/presets/presetbar.h"
#include "app/widgets/settings/settingscontrols.h"
#include "app/widgets/settings/settingspanel.h"
#include "app/widgets/settings/versionsbox.h"
#include "app/widgets/sheets/sheets.h"
#include "desktop/desktopnotification.h"
#include "engine/batch/batchenvironment.h"
#include "support/settingsstore.h"

#include <QApplication>
#include <QFileInfo>
#include <QIcon>
#include <QPalette>
#include <QStyleFactory>
#include <QTimer>

#include <vips/vips8>

#include <cstdio>

using namespace quillet;

namespace {

const char usage[] = "Usage: quillet-gui [--settings FILE] [--dark] [--show PANEL] [PATH...]\n"
                     "\n"
                     "Opens the Quillet window; pictures and folders given are processed as one batch.\n"
                     "\n"
                     "Options:\n"
                     "  --settings FILE   use FILE (INI) as the settings store; the environment\n"
                     "                    variable QUILLET_SETTINGS does the same\n"
                     "  --dark            use a dark palette whatever the desktop's theme\n"
                     "  --show PANEL      open the 'watermarks' window, the 'rename' panel, the\n"
                     "                    'formats' menu, the 'presets' menu, the 'preset-manager',\n"
                     "                    the 'preferences', the 'about' box, the 'inspector', or the\n"
                     "                    in-place panel on its 'rotation', 'dates' or 'icons' tab at\n"
                     "                    start; with 'inspector' the PATHs are listed there, not\n"
                     "                    processed; 'versions' scrolls to the versions list;\n"
                     "                    'metadata' opens the metadata menu\n"
                     "  -h, --help        show this help\n"
                     "  --version         show the version\n";

// For trying the window in a dark theme on a desktop that has none.
void useDarkPalette(QApplication& app) {
    app.setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QPalette palette;
    const QColor window(45, 45, 48), base(30, 30, 32), text(230, 230, 230), dim(130, 130, 135);
    palette.setColor(QPalette::Window, window);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Base, base);
    palette.setColor(QPalette::AlternateBase, window);
    palette.setColor(QPalette::ToolTipBase, base);
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::PlaceholderText, dim);
    palette.setColor(QPalette::Button, window);
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::Highlight, QColor(42, 110, 200));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, QColor(90, 160, 240));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, dim);
    QApplication::setPalette(palette);
}

// The drawn icon at every size it comes in, for a desktop without the
// installed theme icon (a run from the build folder).
QIcon applicationIcon() {
    QIcon bundled;
    for (const int size : {16, 22, 24, 32, 48, 64, 128, 256, 512})
        bundled.addFile(QStringLiteral(":/icons/hicolor/%1x%1/apps/%2.png")
                            .arg(size)
                            .arg(QLatin1String(DesktopNotification::ApplicationId)));
    return QIcon::fromTheme(QLatin1String(DesktopNotification::ApplicationId), bundled);
}

// Answers --help, --version and bad usage before there is a QApplication,
// which aborts without a display. Qt's own options, which QApplication takes
// out later, only pass through here as paths. Returns the exit status, or -1
// to go on.
int earlyExit(int argc, char* argv[]) {
    for (int i = 1; i < argc; ++i) {
        const QString arg = QString::fromLocal8Bit(argv[i]);
        if (arg == QLatin1String("-h") || arg == QLatin1String("--help")) {
            std::fputs(usage, stdout);
            return 0;
        }
        if (arg == QLatin1String("--version")) {
            std::printf("quillet-gui %s\n", QUILLET_VERSION);
            return 0;
        }
        if (arg == QLatin1String("--settings") || arg == QLatin1String("--show")) {
            const QString value = i + 1 < argc ? QString::fromLocal8Bit(argv[++i]) : QString();
            if (arg == QLatin1String("--settings") && value.isEmpty()) {
                std::fprintf(stderr, "quillet-gui: --settings needs a file\n\n%s", usage);
                return 2;
            }
            const QStringList panels{
                QStringLiteral("watermarks"), QStringLiteral("rename"),         QStringLiteral("formats"),
                QStringLiteral("presets"),    QStringLiteral("preset-manager"), QStringLiteral("preferences"),
                QStringLiteral("about"),      QStringLiteral("inspector"),      QStringLiteral("rotation"),
                QStringLiteral("dates"),      QStringLiteral("icons"),          QStringLiteral("versions"),
                QStringLiteral("metadata")};
            if (arg == QLatin1String("--show") && !panels.contains(value)) {
                std::fprintf(stderr,
                             "quillet-gui: --show takes 'watermarks', 'rename', 'formats', 'presets', "
                             "'preset-manager', 'preferences', 'about', 'inspector', 'rotation', 'dates', "
                             "'icons', 'versions' or 'metadata'\n\n%s",
                             usage);
                return 2;
            }
        }
    }
    return -1;
}

} // namespace

int main(int argc, char* argv[]) {
    if (const int status = earlyExit(argc, argv); status >= 0)
        return status;
    QApplication app(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("Korvane"));
    QCoreApplication::setApplicationName(QStringLiteral("Quillet"));
    QCoreApplication::setApplicationVersion(QStringLiteral(QUILLET_VERSION));
    QGuiApplication::setApplicationDisplayName(QStringLiteral("Quillet"));
    QGuiApplication::setDesktopFileName(QLatin1String(DesktopNotification::ApplicationId));
    QApplication::setWindowIcon(applicationIcon());

    QStringList paths;
    bool dark = false;
    QString panel;
    QStringList args = app.arguments().mid(1);
    // earlyExit() has answered --help and --version and refused bad values.
    while (!args.isEmpty()) {
        const QString arg = args.takeFirst();
        if (arg == QLatin1String("--settings")) {
            SettingsStore::overridePath(args.isEmpty() ? QString() : args.takeFirst());
            continue;
        }
        if (arg == QLatin1String("--dark")) {
            dark = true;
            continue;
        }
        if (arg == QLatin1String("--show")) {
            panel = args.isEmpty() ? QString() : args.takeFirst();
            continue;
        }
        paths.append(QFileInfo(arg).absoluteFilePath());
    }

    // A window already open on the same settings store takes the paths.
    SingleInstance instance(SingleInstance::socketPathFor(SettingsStore::open()->fileName()));
    switch (instance.start(paths)) {
    case SingleInstance::Start::HandedOver:
        return 0;
    case SingleInstance::Start::Unanswered:
        std::fputs("quillet-gui: the open Quillet window does not answer; try again once it does\n", stderr);
        return 1;
    case SingleInstance::Start::Alone:
        std::fputs("quillet-gui: cannot listen for later starts; each will open its own window\n", stderr);
        break;
    case SingleInstance::Start::First:
        break;
    }
    if (VIPS_INIT(argv[0]) != 0) {
        std::fprintf(stderr, "quillet-gui: cannot start the image library: %s\n", vips_error_buffer());
        return 1;
    }

    int status = 0;
    {
        Sheets sheets;
        AppModels models;
        AppController controller(models, sheets, DesktopServices::standard());
        BatchEnvironment::prepare(BatchOptions::fromDefaults(models.defaults()));
        if (dark)
            useDarkPalette(app);
        MainWindow window(controller, models, sheets);
        window.show();
        const DesktopNotification notification;
        BatchNotifier notifier(notification, [&window] { return window.isActiveWindow(); });
        QObject::connect(&controller, &AppController::batchEnded, &notifier, &BatchNotifier::batchEnded);
        QObject::connect(&instance, &SingleInstance::pathsReceived, &window, [&](const QStringList& later) {
            for (const QString& path : later)
                controller.openFile(path);
            window.raise();
            window.activateWindow();
        });
        if (panel == QLatin1String("watermarks"))
            QTimer::singleShot(0, &window, [&window] { window.settingsPanel()->showWatermarks(); });
        else if (panel == QLatin1String("rename"))
            QTimer::singleShot(0, &window, [&window] { window.settingsPanel()->showRename(); });
        else if (panel == QLatin1String("formats"))
            QTimer::singleShot(0, &window,
                               [&window] { window.settingsPanel()->controls()->showFormatMenu(); });
        else if (panel == QLatin1String("presets"))
            QTimer::singleShot(0, &window, [&window] { window.presetBar()->showMenu(); });
        else if (panel == QLatin1String("preset-manager"))
            QTimer::singleShot(0, &window, [&window] { window.presetBar()->showManager(); });
        else if (panel == QLatin1String("preferences"))
            QTimer::singleShot(0, &window, [&window] { window.showPreferences(); });
        else if (panel == QLatin1String("about"))
            QTimer::singleShot(0, &window, [&window] { window.showAbout(); });
        else if (const int tab =
                     QStringList{QStringLiteral("rotation"), QStringLiteral("dates"), QStringLiteral("icons")}
                         .indexOf(panel);
                 tab >= 0)
            QTimer::singleShot(0, &window, [&window, tab] { window.inplaceWindow()->showTab(tab); });
        else if (panel == QLatin1String("versions"))
            QTimer::singleShot(0, &window, [&window] {
                SettingsPanel* settings = window.settingsPanel();
                settings->ensureWidgetVisible(settings->versions());
            });
        else if (panel == QLatin1String("metadata"))
            QTimer::singleShot(0, &window,
                               [&window] { window.settingsPanel()->controls()->showMetadataMenu(); });
        if (panel == QLatin1String("inspector")) {
            QTimer::singleShot(0, &window, [&window] { window.inspector()->setOpen(true); });
            models.inspector().addFiles(paths);
            paths.clear();
        }
        // Everything named on the command line forms one batch.
        for (const QString& path : paths)
            controller.openFile(path);
        status = app.exec();
    }
    vips_shutdown();
    return status;
}
