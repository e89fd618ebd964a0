#include "desktop/desktopnotification.h"
#include "desktop/notificationbus.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>

#include <gtest/gtest.h>

namespace quillet {
namespace {

using testsupport::NotificationRecorder;
using testsupport::PrivateBus;

class DesktopNotificationTest : public ::testing::Test {
  protected:
    void SetUp() override {
        if (!bus.running())
            GTEST_SKIP() << "dbus-daemon is missing (package dbus-daemon): no private session bus";
    }
    PrivateBus bus;
};

TEST_F(DesktopNotificationTest, SendReachesTheServiceWithTheApplicationsIdentity) {
    NotificationRecorder* recorder = bus.serveNotifications();
    ASSERT_TRUE(recorder);
    const DesktopNotification notification(bus.connect(QStringLiteral("client")));
    EXPECT_TRUE(notification.send(QStringLiteral("Processing Completed"),
                                  QStringLiteral("3 files processed into /out")));

    const auto received = recorder->received();
    ASSERT_EQ(received.size(), 1u);
    EXPECT_EQ(received[0].appName, QStringLiteral("Quillet"));
    EXPECT_EQ(received[0].summary, QStringLiteral("Processing Completed"));
    EXPECT_EQ(received[0].body, QStringLiteral("3 files processed into /out"));
    // The launcher's name and the icon's are the same id, which the
    // installed files use.
    EXPECT_EQ(received[0].icon, QStringLiteral("com.korvane.Quillet"));
    EXPECT_EQ(received[0].desktopEntry, QStringLiteral("com.korvane.Quillet"));
    EXPECT_EQ(received[0].timeout, -1);
}

TEST_F(DesktopNotificationTest, PostArrivesWithoutBlocking) {
    NotificationRecorder* recorder = bus.serveNotifications();
    ASSERT_TRUE(recorder);
    const DesktopNotification notification(bus.connect(QStringLiteral("client")));
    notification.post(QStringLiteral("Processing Cancelled"),
                      QStringLiteral("2 of 5 files processed into /out"));
    QElapsedTimer timer;
    timer.start();
    while (recorder->received().empty() && timer.elapsed() < 5000) {
        QCoreApplication::processEvents();
        QThread::msleep(5);
    }
    ASSERT_EQ(recorder->received().size(), 1u);
    EXPECT_EQ(recorder->received()[0].summary, QStringLiteral("Processing Cancelled"));
}

// A session without a notification daemon, or without a bus: nothing is
// shown, nothing fails, and nothing waits for the full timeout.
TEST_F(DesktopNotificationTest, NoServiceOrNoBusIsQuietlyNothing) {
    QElapsedTimer timer;
    timer.start();
    EXPECT_FALSE(DesktopNotification(bus.connect(QStringLiteral("client")))
                     .send(QStringLiteral("Processing Completed"), QString(), 20000));
    EXPECT_LT(timer.elapsed(), 5000);

    const QDBusConnection nowhere = QDBusConnection::connectToBus(
        QStringLiteral("unix:path=/nonexistent/bus"), QStringLiteral("nowhere"));
    const DesktopNotification offline(nowhere);
    EXPECT_FALSE(offline.send(QStringLiteral("Processing Completed"), QString()));
    offline.post(QStringLiteral("Processing Completed"), QString());
    QDBusConnection::disconnectFromBus(QStringLiteral("nowhere"));
}

} // namespace
} // namespace quillet
