#include <QCoreApplication>
#include <QDir>
#include <QFile>

#include <gtest/gtest.h>
#include <vips/vips8>

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    QCoreApplication app(argc, argv);
    if (VIPS_INIT(argv[0]) != 0)
        return 1;
    // Tests never touch the user's own settings.
    const QByteArray scratch = QDir::tempPath().toLocal8Bit() + "/quillet-test-settings-" +
                               QByteArray::number(QCoreApplication::applicationPid()) + ".ini";
    qputenv("QUILLET_SETTINGS", scratch);
    const int status = RUN_ALL_TESTS();
    QFile::remove(QString::fromLocal8Bit(scratch));
    vips_shutdown();
    return status;
}
