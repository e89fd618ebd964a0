#include "naming/integerformat.h"

#include <gtest/gtest.h>

#include <climits>
#include <random>
#include <tuple>

using namespace quillet;

namespace {

QString fmt(const char* pattern, int value) {
    return IntegerFormat::format(QString::fromUtf8(pattern), value);
}

TEST(IntegerFormat, MatchesPrintfForIntegerDirectives) {
    // Expected texts are what glibc's printf gives for the same int argument. Length
    // modifiers are read and ignored; the text around a directive is kept.
    // clang-format off
    const std::tuple<const char*, int, const char*> cases[] = {
        {"img%0.3d", 1, "img001"}, {"img%0.3d", 1234, "img1234"}, {"%0.3d", -42, "-042"}, {"%5d", -42, "  -42"},
        {"%-5d|", 42, "42   |"}, {"%05d", -42, "-0042"}, {"%08.3d", 42, "     042"}, {"%+d", 0, "+0"},
        {"% d", 42, " 42"}, {"%-+6d|", 42, "+42   |"}, {"%.0d", 0, ""}, {"%i", 7, "7"}, {"%x", -42, "ffffffd6"},
        {"%#X", 255, "0XFF"}, {"%#x", 0, "0"}, {"%#06x", 42, "0x002a"}, {"%#o", 255, "0377"}, {"%#.0o", 0, "0"},
        {"%u", -1, "4294967295"}, {"%d", INT_MIN, "-2147483648"}, {"%+d", INT_MAX, "+2147483647"},
        {"%lld|%hhd|%zu|%jx", 300, "300|300|300|12c"}, {"x%%%0.2d", 1, "x%01"}, {"%d%d", 3, "33"},
        {"Ünïcode-%0.2d-é", 4, "Ünïcode-04-é"}};
    // clang-format on
    for (const auto& [pattern, value, expected] : cases)
        EXPECT_EQ(fmt(pattern, value), QString::fromUtf8(expected)) << pattern << " " << value;
}

TEST(IntegerFormat, HostileDirectivesStayLiteralText) {
    // Widths and precisions no name could hold are left as text, not allocated.
    // clang-format off
    const std::pair<const char*, const char*> cases[] = {
        {"%s%s%n", "%s%s%n"}, {"%p %c %f %e %g %a", "%p %c %f %e %g %a"}, {"%", "%"}, {"img%", "img%"},
        {"%*d", "%*d"}, {"%1$d", "%1$d"}, {"%ls", "%ls"}, {"%-%d", "%-7"}, {"%5", "%5"}, {"%.", "%."},
        {"%99999999d", "%99999999d"}, {"%.99999999999999999999d", "%.99999999999999999999d"},
        {"a%256db", "a%256db"}};
    // clang-format on
    for (const auto& [pattern, expected] : cases)
        EXPECT_EQ(fmt(pattern, 7), QString::fromLatin1(expected)) << pattern;
    // The largest accepted field is still honoured exactly.
    EXPECT_EQ(fmt("%255d", 1), QString(254, QLatin1Char(' ')) + QLatin1Char('1'));
    EXPECT_EQ(fmt("%.255d", -1).size(), 256);
    const QString percents = QString(100000, QLatin1Char('%')) + QLatin1Char('s');
    EXPECT_EQ(IntegerFormat::format(percents, 1), QString(50000, QLatin1Char('%')) + QLatin1Char('s'));
}

TEST(IntegerFormat, RandomDirectiveSoupStaysBounded) {
    // A directive renders to at most MaxField + 2 characters (sign or "0x"
    // beside a full field). Percent signs are weighted to form many directives.
    const QString alphabet = QStringLiteral("%%%%0-+ #.1259dixXouslhn*$");
    std::mt19937 random(20050214);
    for (int round = 0; round < 20000; ++round) {
        QString pattern;
        for (int i = int(random() % 24); i > 0; --i)
            pattern += alphabet[int(random() % alphabet.size())];
        ASSERT_LE(IntegerFormat::format(pattern, int(random())).size(),
                  qsizetype(pattern.size()) * (IntegerFormat::MaxField + 2))
            << pattern.toStdString();
    }
}

} // namespace
