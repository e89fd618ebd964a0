#include "app/guitest.h"
#include "app/models/updatecontroller.h"
#include "app/models/updateschedule.h"
#include "app/models/versionchecker.h"
#include "app/versionserver.h"

#include <QTimer>

using namespace quillet;
using namespace quillet::guitest;

namespace {

// Waits for a checker's answer through the event loop.
unsigned latestFrom(VersionChecker& checker) {
    std::optional<unsigned> latest;
    checker.latestVersion([&latest](unsigned v) { latest = v; });
    EXPECT_TRUE(waitFor([&latest] { return latest.has_value(); }, 10000));
    return latest.value_or(~0u);
}

TEST(VersionChecker, AFoundReleaseIsKeptAndAnErrorPageIsNoAnswer) {
    VersionServer server;
    server.serve(200, "0202\n");
    VersionChecker checker(server.address(), QStringLiteral("quillet"), 0x201);
    EXPECT_EQ(latestFrom(checker), 0x202u);
    EXPECT_TRUE(checker.isNewer(0x202));
    EXPECT_EQ(server.paths(), QList<QByteArray>{"/quillet/version"});
    // Kept: the server is not asked again until the cache is cleared.
    server.serve(200, "0203");
    EXPECT_EQ(latestFrom(checker), 0x202u);
    EXPECT_EQ(server.requests(), 1);
    checker.clearCache();
    EXPECT_EQ(latestFrom(checker), 0x203u);

    // An error page is no answer, though it starts with hexadecimal digits,
    // and no answer is asked for again the next time.
    VersionChecker other(server.address(), QStringLiteral("quillet"), 0x201);
    server.serve(404, "404 Not Found");
    EXPECT_EQ(latestFrom(other), 0u);
    server.serve(200, "2.0.2");
    EXPECT_EQ(latestFrom(other), 2u);
    EXPECT_FALSE(other.isNewer(2));
    EXPECT_EQ(server.requests(), 4);

    // No server: answered at once with nothing, without a request.
    VersionChecker none(QString(), QStringLiteral("quillet"), 0x201);
    EXPECT_EQ(none.address(), QString());
    EXPECT_EQ(latestFrom(none), 0u);
}

class UpdateControllerTest : public GuiTest {
  protected:
    void makeUpdates(const QString& address) {
        models->defaults().setValue(QStringLiteral("UpdateServer"), address);
        updates = std::make_unique<UpdateController>(models->defaults(), sheets, desktop);
        updates->checker().setTimeout(400);
    }
    bool waitForEnd() {
        bool ended = false;
        QObject::connect(updates.get(), &UpdateController::checkEnded, [&ended] { ended = true; });
        return waitFor([&ended] { return ended; }, 10000);
    }
    VersionServer server;
    std::unique_ptr<UpdateController> updates;
};

TEST_F(UpdateControllerTest, AServerThatNeverAnswersLeavesTheEventLoopRunningAndEndsInLatestVersion) {
    server.beSilent();
    makeUpdates(server.address());
    int ticks = 0;
    QTimer ticker;
    QObject::connect(&ticker, &QTimer::timeout, [&ticks] { ++ticks; });
    ticker.start(10);
    sheets.setNextAnswer(0); // "Visit Website"
    QElapsedTimer clock;
    clock.start();
    updates->checkNow();
    EXPECT_LT(clock.elapsed(), 200);
    EXPECT_TRUE(updates->isChecking());
    ASSERT_TRUE(waitForEnd());
    EXPECT_GE(clock.elapsed(), 350);
    // The window's own timers kept running while the server kept silent.
    EXPECT_GE(ticks, 10);
    EXPECT_EQ(asked, QStringList{"Latest Version"});
    EXPECT_EQ(desktop.urls, QList<QUrl>{QUrl("https://korvane.example/quillet/")});
    EXPECT_FALSE(updates->isChecking());
}

TEST_F(UpdateControllerTest, TheStartCheckWaitsFortyFiveDaysAndThenOffersANewerRelease) {
    server.serve(200, "FFF");
    makeUpdates(server.address());
    updates->checkAtStart();
    waitFor([] { return false; }, 300);
    // The first start only schedules the first check.
    EXPECT_EQ(server.requests(), 0);
    EXPECT_TRUE(asked.isEmpty());
    const int today = UpdateSchedule::dayOfCommonEra(QDate::currentDate());
    EXPECT_EQ(models->defaults().intValue("NextCheckVersion"), today + 45);

    models->defaults().setInt("NextCheckVersion", today);
    sheets.setNextAnswer(0); // "Later"
    updates->checkAtStart();
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(asked, QStringList{"New Version Available!"});
    EXPECT_TRUE(desktop.urls.isEmpty());
    EXPECT_EQ(models->defaults().intValue("NextCheckVersion"), today + 45);
}

TEST_F(UpdateControllerTest, AManualCheckDuringTheStartCheckSharesItsRequestAndSaysTheAnswerOnce) {
    server.beSilent();
    makeUpdates(server.address());
    models->defaults().setInt("NextCheckVersion", 1);
    updates->checkAtStart();
    updates->checkNow();
    updates->checkNow();
    sheets.setNextAnswer(1); // "Okay"
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(asked, QStringList{"Latest Version"});
    EXPECT_EQ(server.requests(), 1);
}

TEST_F(UpdateControllerTest, WithoutAServerTheManualCheckSaysSoAndNothingIsAsked) {
    makeUpdates(QString());
    sheets.setNextAnswer(1);
    updates->checkAtStart();
    updates->checkNow();
    EXPECT_EQ(asked, QStringList{"No Update Server"});
    // The start check without a server leaves the schedule alone.
    EXPECT_FALSE(models->defaults().store().contains("NextCheckVersion"));
}

} // namespace
