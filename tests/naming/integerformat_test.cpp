#include "naming/integerformat.h"

#include <gtest/gtest.h>

#include <climits>
#include <random>

namespace {

struct Case {
    const char* pattern;
    int value;
    const char* expected;
};

void PrintTo(const Case& c, std::ostream* os) {
    *os << '"' << c.pattern << "\" with " << c.value;
}

class IntegerFormatTable : public testing::TestWithParam<Case> {};

TEST_P(IntegerFormatTable, MatchesPrintfForIntegerDirectives) {
    const Case& c = GetParam();
    EXPECT_EQ(IntegerFormat::format(QString::fromUtf8(c.pattern), c.value), QString::fromUtf8(c.expected));
}

// Expected texts are what glibc's printf gives for the same int argument.
INSTANTIATE_TEST_SUITE_P(
    PrintfSubset, IntegerFormatTable,
    testing::Values(Case{"img%0.3d", 1, "img001"}, Case{"img%0.3d", 1234, "img1234"},
                    Case{"%0.3d", -42, "-042"}, Case{"%5d", -42, "  -42"}, Case{"%-5d|", 42, "42   |"},
                    Case{"%05d", -42, "-0042"}, Case{"%08.3d", 42, "     042"}, Case{"%+d", 0, "+0"},
                    Case{"% d", 42, " 42"}, Case{"%-+6d|", 42, "+42   |"}, Case{"%.0d", 0, ""},
                    Case{"%i", 7, "7"}, Case{"%x", -42, "ffffffd6"}, Case{"%#X", 255, "0XFF"},
                    Case{"%#x", 0, "0"}, Case{"%#06x", 42, "0x002a"}, Case{"%o", 255, "377"},
                    Case{"%#o", 255, "0377"}, Case{"%#.0o", 0, "0"}, Case{"%u", -1, "4294967295"},
                    Case{"%d", INT_MIN, "-2147483648"}, Case{"%+d", INT_MAX, "+2147483647"},
                    // Length modifiers are read and ignored.
                    Case{"%lld|%hhd|%zu|%jx", 300, "300|300|300|12c"},
                    // "%%" is a percent sign; the prefix and suffix of a name are part of the format.
                    Case{"100%%", 5, "100%"}, Case{"x%%%0.2d", 1, "x%01"}, Case{"%d%d", 3, "33"},
                    Case{"Ünïcode-%0.2d-é", 4, "Ünïcode-04-é"}));

TEST(IntegerFormat, ForeignDirectivesStayLiteralText) {
    const struct {
        const char* pattern;
        const char* expected;
    } cases[] = {
        {"%s%s%n", "%s%s%n"}, {"%p %c %f %e %g %a", "%p %c %f %e %g %a"},
        {"%", "%"},           {"img%", "img%"},
        {"%*d", "%*d"},       {"%1$d", "%1$d"},
        {"%ls", "%ls"},       {"%-%d", "%-7"},
        {"%5", "%5"},         {"%.", "%."},
        {"%hh", "%hh"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(IntegerFormat::format(QString::fromLatin1(c.pattern), 7), QString::fromLatin1(c.expected))
            << c.pattern;
}

TEST(IntegerFormat, HugeWidthsAndPrecisionsAreLiteralNotAllocated) {
    EXPECT_EQ(IntegerFormat::format(QStringLiteral("%99999999d"), 1), QStringLiteral("%99999999d"));
    EXPECT_EQ(IntegerFormat::format(QStringLiteral("%.99999999999999999999d"), 1),
              QStringLiteral("%.99999999999999999999d"));
    EXPECT_EQ(IntegerFormat::format(QStringLiteral("a%256db"), 1), QStringLiteral("a%256db"));
    // The largest accepted field is still honoured exactly.
    const QString widest = IntegerFormat::format(QStringLiteral("%255d"), 1);
    EXPECT_EQ(widest.size(), 255);
    EXPECT_TRUE(widest.endsWith(QLatin1String(" 1")));
    EXPECT_EQ(IntegerFormat::format(QStringLiteral("%.255d"), -1).size(), 256);
}

TEST(IntegerFormat, LongHostileTextIsCopiedThrough) {
    const QString hostile = QString(100000, QLatin1Char('%')) + QStringLiteral("s");
    const QString out = IntegerFormat::format(hostile, 1);
    EXPECT_EQ(out, QString(50000, QLatin1Char('%')) + QStringLiteral("s"));
}

TEST(IntegerFormat, RandomDirectiveSoupStaysBounded) {
    // Every directive renders to at most MaxField + 2 characters (sign or
    // "0x" beside a full field), so the output can never run away.
    // Percent signs weighted four times: plain characters, not escapes.
    const QString alphabet = QStringLiteral("%%%%0-+ #.1259dixXouslhn*$");
    std::mt19937 random(20050214);
    for (int round = 0; round < 20000; ++round) {
        QString pattern;
        const int length = int(random() % 24);
        for (int i = 0; i < length; ++i)
            pattern += alphabet[int(random() % alphabet.size())];
        const QString out = IntegerFormat::format(pattern, int(random()));
        ASSERT_LE(out.size(), qsizetype(pattern.size()) * (IntegerFormat::MaxField + 2))
            << pattern.toStdString();
    }
}

} // namespace
