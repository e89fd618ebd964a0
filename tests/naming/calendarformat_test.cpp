#include "naming/calendarformat.h"

#include <gtest/gtest.h>

using namespace quillet;

namespace {

QString fmt(const char* pattern, const QDateTime& when) {
    return CalendarFormat::format(QString::fromLatin1(pattern), when);
}

TEST(CalendarFormat, EveryDirectiveOnAFixedOffsetDate) {
    // Monday 14 February 2005, 15:32:47.089 at +01:00, independent of the machine's zone.
    const QDateTime when(QDate(2005, 2, 14), QTime(15, 32, 47, 89), Qt::OffsetFromUTC, 3600);
    // Unknown directives and a trailing '%' stay as text.
    const std::pair<const char*, const char*> cases[] = {
        {"%Y %y %m %B %b %d %e %j", "2005 05 02 February Feb 14 14 045"},
        {"%H %I %M %S %p %A %a %F %w %z %%", "15 03 32 47 PM Monday Mon 089 1 +0100 %"},
        {"%c|%x|%X", "Mon Feb 14 15:32:47 2005|02/14/05|15:32:47"},
        {"%Y:%m:%d %H:%M:%S|%Y-%m-%d %H.%M.%S|%Y%m%d_%H%M%S",
         "2005:02:14 15:32:47|2005-02-14 15.32.47|20050214_153247"},
        {"%q %Q %1 %%Y 100%", "%q %Q %1 %Y 100%"},
        {"", ""}};
    for (const auto& [pattern, expected] : cases)
        EXPECT_EQ(fmt(pattern, when), QString::fromLatin1(expected)) << pattern;
}

TEST(CalendarFormat, PaddingClockEdgesAndOffsetsWithoutConversion) {
    const QDateTime morning(QDate(2009, 3, 5), QTime(0, 5, 9), Qt::UTC);
    EXPECT_EQ(fmt("%e|%d|%j|%I %p|%H|%w|%a", morning), QStringLiteral("5|05|064|12 AM|00|4|Thu"));
    const QDateTime noon(QDate(2000, 12, 31), QTime(12, 0), Qt::UTC);
    EXPECT_EQ(fmt("%I %p %j %y %w %A %Z %z", noon), QStringLiteral("12 PM 366 00 0 Sunday UTC +0000"));
    const QDateTime india(QDate(2005, 2, 14), QTime(23, 30), Qt::OffsetFromUTC, 5 * 3600 + 1800);
    EXPECT_EQ(fmt("%d %H:%M %z", india), QStringLiteral("14 23:30 +0530"));
    const QDateTime west(QDate(2005, 2, 14), QTime(1, 0), Qt::OffsetFromUTC, -(3 * 3600 + 1800));
    EXPECT_EQ(fmt("%d %H %z", west), QStringLiteral("14 01 -0330"));
    EXPECT_TRUE(fmt("%Y", QDateTime()).isEmpty());
}

} // namespace
