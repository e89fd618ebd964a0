#include "app/guitest.h"
#include "app/models/batchnotifier.h"
#include "desktop/desktopnotification.h"
#include "desktop/notificationbus.h"

namespace quillet::guitest {
namespace {

using testsupport::NotificationRecorder;
using testsupport::PrivateBus;

// The whole path from a batch's end to the notification service: the
// controller's signal, the notifier's rule and the D-Bus call.
class BatchNotifierTest : public GuiTest {
  protected:
    void SetUp() override {
        GuiTest::SetUp();
        if (!bus.running())
            GTEST_SKIP() << "dbus-daemon is missing (package dbus-daemon): no private session bus";
        recorder = bus.serveNotifications();
        ASSERT_TRUE(recorder);
        QObject::connect(controller.get(), &AppController::batchEnded, &notifier, &BatchNotifier::batchEnded);
    }
    PrivateBus bus;
    NotificationRecorder* recorder = nullptr;
    DesktopNotification notification{bus.connect(QStringLiteral("application"))};
    bool windowActive = false;
    BatchNotifier notifier{notification, [this] { return windowActive; }};
};

TEST_F(BatchNotifierTest, ABatchEndingBehindAnotherWindowIsNotified) {
    ASSERT_TRUE(runBatch(makePictures(in(), 2)));
    ASSERT_TRUE(waitFor([this] { return !recorder->received().empty(); }, 5000));
    const auto received = recorder->received();
    ASSERT_EQ(received.size(), 1u);
    EXPECT_EQ(received[0].summary, QStringLiteral("Processing Completed"));
    EXPECT_EQ(received[0].body, QStringLiteral("2 files processed into %1").arg(out));
}

TEST_F(BatchNotifierTest, NothingWhileTheWindowIsActiveOrWhenQuitting) {
    windowActive = true;
    ASSERT_TRUE(runBatch(makePictures(in(), 1)));
    // A batch cut short by quitting is not news: the window is going away.
    windowActive = false;
    controller->processFiles(makePictures(in(QStringLiteral("more")), 4));
    controller->requestQuit();
    ASSERT_TRUE(waitForIdle());
    waitFor([] { return false; }, 300);
    EXPECT_TRUE(recorder->received().empty());
}

} // namespace
} // namespace quillet::guitest
