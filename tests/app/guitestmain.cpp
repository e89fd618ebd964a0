#include <QApplication>
#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <vips/vips8>

// The desktop application's suites: a QApplication on the platform CTest
// names (offscreen), and a scratch home so the desktop folder, the settings
// and the file dialogs never reach the user's own.
int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    // Under the build folder, not /tmp: outputs under /tmp replace files
    // without asking, which the replace-question tests rely on.
    QTemporaryDir home(QDir::currentPath() + QStringLiteral("/quillet-gui-home-XXXXXX"));
    if (!home.isValid())
        return 1;
    qputenv("HOME", home.path().toLocal8Bit());
    qputenv("XDG_CONFIG_HOME", (home.path() + QStringLiteral("/.config")).toLocal8Bit());
    qputenv("QUILLET_SETTINGS", (home.path() + QStringLiteral("/settings.ini")).toLocal8Bit());
    qunsetenv("DBUS_SESSION_BUS_ADDRESS");
    QApplication app(argc, argv);
    if (VIPS_INIT(argv[0]) != 0)
        return 1;
    const int status = RUN_ALL_TESTS();
    vips_shutdown();
    return status;
}
