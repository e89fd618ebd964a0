#include "metadata/kvimageinfo.h"
#include "naming/renamer.h"
#include "testsupport.h"

#include <QFileInfo>

#include <gtest/gtest.h>

#include <climits>
#include <thread>
#include <tuple>
#include <vector>

using namespace quillet;

namespace {

Renamer sequence(const char* prefix, const char* suffix, int digits, int start) {
    Renamer r;
    r.setType(Renamer::Sequence);
    r.setPrefix(QString::fromLatin1(prefix));
    r.setSuffix(QString::fromLatin1(suffix));
    r.setDigits(digits);
    r.setStartFrom(start);
    return r;
}

QString name(const Renamer& r, const QString& input, const KVImageInfo* info = nullptr, int index = 0) {
    return r.nameFromInputName(input, info, index).value_or(QStringLiteral("<none>"));
}

TEST(RenamerSequence, PaddedNeverCutAndPrefixesAreAHarmlessFormat) {
    // A typed directive takes the same number; a digit count no file name could hold
    // is left as text rather than allocated; the counter wraps like an int.
    // clang-format off
    const std::tuple<const char*, const char*, int, int, int, const char*> cases[] = {
        {"img", "", 3, 1, 0, "img001"}, {"img", "", 3, 1, 1000, "img1001"}, {"", "", 0, 0, 10, "10"},
        {"", "", -4, 0, 3, "3"}, {"a", "b", 4, 7, 0, "a0007b"}, {"n", "", 3, -5, 2, "n-003"},
        {"x%%", "", 2, 1, 0, "x%01"}, {"%s%s%n", "%", 2, 0, 3, "%s%s%n03%"}, {"%x-", "", 2, 0, 255, "ff-255"},
        {"%99999999d", "", 1, 0, 4, "%99999999d4"}, {"p", "", 100000000, 0, 1, "p%0.100000000d"},
        {"", "", 1, INT_MAX, 1, "-2147483648"}};
    // clang-format on
    for (const auto& [prefix, suffix, digits, start, index, expected] : cases)
        EXPECT_EQ(name(sequence(prefix, suffix, digits, start), QString(), nullptr, index),
                  QString::fromLatin1(expected))
            << prefix << " " << index;
}

Renamer compactDate() {
    Renamer r;
    r.setType(Renamer::Date);
    r.setDateFormatTag(int(r.dateFormats().indexOf(QStringLiteral("%Y%m%d_%H%M%S"))));
    return r;
}

TEST(RenamerDate, UsesTheCaptureDateThenTheFileDateByTheFallbackTag) {
    Renamer r = compactDate();
    r.setPrefix(QStringLiteral("p-"));
    r.setSuffix(QStringLiteral("-s"));
    KVImageInfo::Data data;
    const KVImageInfo neither(data);
    data.fileDate = QDateTime(QDate(2020, 1, 2), QTime(3, 4, 5), Qt::LocalTime);
    const KVImageInfo fileOnly(data);
    data.creationDate = QDateTime(QDate(2005, 2, 14), QTime(15, 32, 47), Qt::LocalTime);
    const KVImageInfo both(data);
    const QString in = QStringLiteral("in");
    EXPECT_EQ(name(r, in, &both), QStringLiteral("p-20050214_153247-s"));
    EXPECT_EQ(name(r, in, &fileOnly), QStringLiteral("p-20200102_030405-s"));
    EXPECT_EQ(name(r, in, &neither), in);
    EXPECT_EQ(name(r, in), in);
    r.setDateFallbackTag(1);
    EXPECT_EQ(name(r, in, &fileOnly), in);
    EXPECT_EQ(name(r, in, &both), QStringLiteral("p-20050214_153247-s"));
    // A tag outside the list keeps the input name instead of failing.
    for (int tag : {-1, int(r.dateFormats().size())}) {
        r.setDateFormatTag(tag);
        EXPECT_EQ(name(r, in, &both), in) << tag;
    }
}

TEST(RenamerDate, NamesRealPicturesByCaptureDateOrFileDate) {
    QString canon, noExif;
    QUILLET_SAMPLE_OR_SKIP(canon, "Canon_40D.jpg");
    QUILLET_SAMPLE_OR_SKIP(noExif, "xmp-no_exif.jpg");
    Renamer r = compactDate();
    const std::optional<KVImageInfo> withExif = KVImageInfo::fromFile(canon);
    const std::optional<KVImageInfo> withoutExif = KVImageInfo::fromFile(noExif);
    ASSERT_TRUE(withExif && withoutExif);
    // The capture date (DateTimeOriginal), not the later edit date of IFD0.
    EXPECT_EQ(name(r, QStringLiteral("Canon_40D"), &*withExif), QStringLiteral("20080530_155601"));
    EXPECT_EQ(name(r, QStringLiteral("x"), &*withoutExif),
              QFileInfo(noExif).lastModified().toString(QStringLiteral("yyyyMMdd_HHmmss")));
    r.setDateFallbackTag(1);
    EXPECT_EQ(name(r, QStringLiteral("x"), &*withoutExif), QStringLiteral("x"));
}

TEST(RenamerConflict, SeparatorByTagAndAnOutOfRangeTagResetsToZero) {
    Renamer r;
    const struct {
        int tag, index;
        const char* expected;
    } cases[] = {{1, 2, "_2"}, {2, 3, " 3"}, {0, 1, "-1"}, {5, 2, "-2"}, {1, 1, "_1"}, {-3, 7, "-7"}};
    for (const auto& c : cases) {
        r.setConflictFormatTag(c.tag);
        EXPECT_EQ(r.conflictResolverForIndex(c.index), QString::fromLatin1(c.expected)) << c.tag;
        EXPECT_EQ(r.conflictFormatTag(), c.tag < 0 || c.tag > 2 ? 0 : c.tag);
    }
    // Callers on several threads all see the reset separator.
    r.setType(Renamer::Date);
    r.setConflictFormatTag(9);
    std::vector<int> wrong(4, 0);
    std::vector<std::thread> threads;
    for (int& w : wrong)
        threads.emplace_back([&r, &w] {
            for (int n = 1; n <= 2000; ++n)
                w += r.conflictResolverForIndex(n) != QStringLiteral("-") + QString::number(n) ||
                     !r.nameFromInputName(QStringLiteral("x"), nullptr, n);
        });
    for (auto& th : threads)
        th.join();
    EXPECT_EQ(wrong, std::vector<int>(4, 0));
    EXPECT_EQ(r.conflictFormatTag(), 0);
}

TEST(RenamerExamples, FollowTheTypeAndUseTheSampleDate) {
    Renamer r;
    EXPECT_EQ(name(r, QStringLiteral("photo"), nullptr, 9), QStringLiteral("photo"));
    EXPECT_FALSE(r.examples().has_value());
    EXPECT_TRUE(r.examplesLine().isEmpty());
    r.setType(4); // unknown: no name at all
    EXPECT_FALSE(r.nameFromInputName(QStringLiteral("photo"), nullptr, 0).has_value());
    EXPECT_FALSE(r.examples().has_value());
    r.setType(Renamer::PrefixSuffix);
    r.setPrefix(QStringLiteral("%d")); // not a format for this type
    EXPECT_EQ(r.examplesLine(), QStringLiteral("e.g. %dinfile1, %dinfile2 ..."));
    EXPECT_EQ(sequence("img", "", 3, 1).examples(), QStringLiteral("img001, img002"));
    r.setType(Renamer::Date);
    r.setPrefix(QString());
    r.setDateFormatTag(0);
    r.setDateFallbackTag(1); // never matters: the sample record has a capture date
    // Both samples share the date, so the second shows the name a clash gets.
    r.setSuffix(QStringLiteral("s"));
    EXPECT_EQ(r.examples(), QStringLiteral("2005:02:14 15:32:47s, 2005:02:14 15:32:47s-1"));
    r.setConflictFormatTag(2);
    EXPECT_EQ(r.examples(), QStringLiteral("2005:02:14 15:32:47s, 2005:02:14 15:32:47s 1"));
}

} // namespace
