#include "naming/calendarformat.h"

#include <gtest/gtest.h>

namespace {

// Monday 14 February 2005, 15:32:47.089, with a fixed offset so that the test
// does not depend on the machine's zone.
QDateTime sample() {
    return QDateTime(QDate(2005, 2, 14), QTime(15, 32, 47, 89), Qt::OffsetFromUTC, 3600);
}

struct Case {
    const char* pattern;
    const char* expected;
};

void PrintTo(const Case& c, std::ostream* os) {
    *os << '"' << c.pattern << '"';
}

class CalendarDirectives : public testing::TestWithParam<Case> {};

TEST_P(CalendarDirectives, RenderTheSampleDate) {
    EXPECT_EQ(CalendarFormat::format(QString::fromLatin1(GetParam().pattern), sample()),
              QString::fromLatin1(GetParam().expected));
}

INSTANTIATE_TEST_SUITE_P(
    EveryDirective, CalendarDirectives,
    testing::Values(Case{"%Y", "2005"}, Case{"%y", "05"}, Case{"%m", "02"}, Case{"%B", "February"},
                    Case{"%b", "Feb"}, Case{"%d", "14"}, Case{"%e", "14"}, Case{"%j", "045"},
                    Case{"%H", "15"}, Case{"%I", "03"}, Case{"%M", "32"}, Case{"%S", "47"}, Case{"%p", "PM"},
                    Case{"%A", "Monday"}, Case{"%a", "Mon"}, Case{"%F", "089"}, Case{"%w", "1"},
                    Case{"%z", "+0100"}, Case{"%%", "%"}, Case{"%c", "Mon Feb 14 15:32:47 2005"},
                    Case{"%x", "02/14/05"}, Case{"%X", "15:32:47"},
                    // The forms of the format list.
                    Case{"%Y:%m:%d %H:%M:%S", "2005:02:14 15:32:47"},
                    Case{"%Y-%m-%d %H.%M.%S", "2005-02-14 15.32.47"},
                    Case{"%Y%m%d_%H%M%S", "20050214_153247"},
                    // Unknown directives and a trailing '%' stay as text.
                    Case{"%q %Q %1 100%", "%q %Q %1 100%"}, Case{"%%Y", "%Y"}, Case{"", ""}));

TEST(CalendarFormat, SingleDigitFieldsAndTheClockEdges) {
    const QDateTime morning(QDate(2009, 3, 5), QTime(0, 5, 9), Qt::UTC);
    EXPECT_EQ(CalendarFormat::format(QStringLiteral("%e|%d|%j|%I %p|%H|%w|%a"), morning),
              QStringLiteral("5|05|064|12 AM|00|4|Thu"));
    const QDateTime noon(QDate(2000, 12, 31), QTime(12, 0), Qt::UTC);
    EXPECT_EQ(CalendarFormat::format(QStringLiteral("%I %p %j %y %w %A"), noon),
              QStringLiteral("12 PM 366 00 0 Sunday"));
    EXPECT_EQ(CalendarFormat::format(QStringLiteral("%Z %z"), noon), QStringLiteral("UTC +0000"));
}

TEST(CalendarFormat, RendersTheDatesOwnTimeWithoutConverting) {
    const QDateTime india(QDate(2005, 2, 14), QTime(23, 30), Qt::OffsetFromUTC, 5 * 3600 + 1800);
    EXPECT_EQ(CalendarFormat::format(QStringLiteral("%d %H:%M %z"), india), QStringLiteral("14 23:30 +0530"));
    const QDateTime west(QDate(2005, 2, 14), QTime(1, 0), Qt::OffsetFromUTC, -(3 * 3600 + 1800));
    EXPECT_EQ(CalendarFormat::format(QStringLiteral("%d %H %z"), west), QStringLiteral("14 01 -0330"));
    const QDateTime local(QDate(2005, 2, 14), QTime(15, 32, 47), Qt::LocalTime);
    EXPECT_EQ(CalendarFormat::format(QStringLiteral("%H:%M:%S"), local), QStringLiteral("15:32:47"));
}

TEST(CalendarFormat, InvalidDateGivesEmptyText) {
    EXPECT_TRUE(CalendarFormat::format(QStringLiteral("%Y"), QDateTime()).isEmpty());
}

} // namespace
