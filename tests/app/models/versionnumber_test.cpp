#include "app/models/updateschedule.h"
#include "app/models/versionnumber.h"
#include "settings/userdefaults.h"

#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace quillet;

namespace {

struct ServerText {
    const char* body;
    unsigned packed;
};

class ServerAnswer : public ::testing::TestWithParam<ServerText> {};

TEST_P(ServerAnswer, ReadsOneHexadecimalNumberAtTheStart) {
    EXPECT_EQ(VersionNumber::fromServerText(GetParam().body), GetParam().packed) << GetParam().body;
}

INSTANTIATE_TEST_SUITE_P(Bodies, ServerAnswer,
                         ::testing::Values(ServerText{"0202", 0x202}, ServerText{"2.0.2", 0x2},
                                           ServerText{" \r\n\t201\n", 0x201}, ServerText{"20A", 0x20A},
                                           ServerText{"20a; see the notes", 0x20A}, ServerText{"", 0},
                                           ServerText{"version 3", 0}, ServerText{"<html>", 0},
                                           ServerText{"FFFFFFFF", 0xFFFFFFFF},
                                           // More than 32 bits is no number at all rather than a wrapped one.
                                           ServerText{"100000000", 0}));

TEST(VersionNumber, PackedNumbersPrintAndCompareAsReleases) {
    EXPECT_EQ(VersionNumber::toString(0x1A3), "1.10.3");
    EXPECT_EQ(VersionNumber::toString(0x201), "2.0.1");
    EXPECT_EQ(VersionNumber::toString(0x1200), "18.0.0");
    EXPECT_GT(VersionNumber::fromServerText("0202"), 0x201u);
    EXPECT_LT(VersionNumber::fromServerText("2.0.2"), 0x201u);
    // 1.10.3 is newer than 1.9.15, as the packing orders them.
    EXPECT_GT(0x1A3u, VersionNumber::fromString("1.9.15"));

    EXPECT_EQ(VersionNumber::fromString(QStringLiteral(QUILLET_VERSION)) >> 8,
              QStringLiteral(QUILLET_VERSION).section(QLatin1Char('.'), 0, 0).toUInt());
    EXPECT_EQ(VersionNumber::fromString("2.0.1"), 0x201u);
    EXPECT_EQ(VersionNumber::fromString("1.20.3"), 0x1F3u);
    EXPECT_EQ(VersionNumber::fromString("2.0"), 0u);
    EXPECT_EQ(VersionNumber::fromString("2.x.1"), 0u);
}

TEST(UpdateSchedule, FirstStartOnlySchedulesThenEveryFortyFiveDays) {
    QTemporaryDir dir;
    QSettings store(dir.filePath(QStringLiteral("s.ini")), QSettings::IniFormat);
    UserDefaults defaults(store);
    UpdateSchedule schedule(defaults);
    const int today = UpdateSchedule::dayOfCommonEra(QDate(2026, 3, 1));

    EXPECT_FALSE(schedule.needsCheck(today));
    EXPECT_EQ(defaults.intValue("NextCheckVersion"), today + 45);
    // Not due before the day, and nothing moves.
    EXPECT_FALSE(schedule.needsCheck(today + 44));
    EXPECT_EQ(defaults.intValue("NextCheckVersion"), today + 45);
    // Due on the day itself, and the next one is 45 days on.
    EXPECT_TRUE(schedule.needsCheck(today + 45));
    EXPECT_EQ(defaults.intValue("NextCheckVersion"), today + 90);
    // A start long after the due day checks once and counts from that day.
    EXPECT_TRUE(schedule.needsCheck(today + 400));
    EXPECT_EQ(defaults.intValue("NextCheckVersion"), today + 445);

    EXPECT_EQ(UpdateSchedule::dayOfCommonEra(QDate(1, 1, 1)), 1);
    EXPECT_EQ(UpdateSchedule::dayOfCommonEra(QDate(2001, 1, 1)), 730486);
}

} // namespace
