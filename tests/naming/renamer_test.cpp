#include "metadata/kvimageinfo.h"
#include "naming/renamer.h"
#include "testsupport.h"

#include <QFileInfo>
#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

Renamer sequence(const QString& prefix, const QString& suffix, int digits, int start) {
    Renamer r;
    r.setType(Renamer::Sequence);
    r.setPrefix(prefix);
    r.setSuffix(suffix);
    r.setDigits(digits);
    r.setStartFrom(start);
    return r;
}

KVImageInfo infoWith(const QDateTime& creation, const QDateTime& file) {
    KVImageInfo::Data data;
    data.creationDate = creation;
    data.fileDate = file;
    return KVImageInfo(data);
}

QString name(const Renamer& r, const QString& input, const KVImageInfo* info, int index) {
    return r.nameFromInputName(input, info, index).value_or(QStringLiteral("<none>"));
}

TEST(RenamerSequence, NumbersArePaddedToTheDigitsAndNeverCut) {
    const Renamer img = sequence(QStringLiteral("img"), QString(), 3, 1);
    EXPECT_EQ(name(img, QStringLiteral("a"), nullptr, 0), QStringLiteral("img001"));
    EXPECT_EQ(name(img, QStringLiteral("a"), nullptr, 1), QStringLiteral("img002"));
    EXPECT_EQ(name(img, QStringLiteral("a"), nullptr, 1000), QStringLiteral("img1001"));

    const Renamer bare = sequence(QString(), QString(), 0, 0);
    EXPECT_EQ(name(bare, QStringLiteral("a"), nullptr, 0), QStringLiteral("0"));
    EXPECT_EQ(name(bare, QStringLiteral("a"), nullptr, 10), QStringLiteral("10"));
    EXPECT_EQ(name(sequence(QString(), QString(), -4, 0), QStringLiteral("a"), nullptr, 3),
              QStringLiteral("3"));

    EXPECT_EQ(name(sequence(QStringLiteral("a"), QStringLiteral("b"), 4, 7), QString(), nullptr, 0),
              QStringLiteral("a0007b"));
    EXPECT_EQ(name(sequence(QStringLiteral("n"), QString(), 3, -5), QString(), nullptr, 2),
              QStringLiteral("n-003"));
}

TEST(RenamerSequence, PrefixAndSuffixAreAFormatButAHostileOneIsHarmless) {
    EXPECT_EQ(name(sequence(QStringLiteral("x%%"), QString(), 2, 1), QString(), nullptr, 0),
              QStringLiteral("x%01"));
    EXPECT_EQ(name(sequence(QStringLiteral("100%%-"), QString(), 1, 0), QString(), nullptr, 5),
              QStringLiteral("100%-5"));
    EXPECT_EQ(name(sequence(QStringLiteral("%s%s%n"), QStringLiteral("%"), 2, 0), QString(), nullptr, 3),
              QStringLiteral("%s%s%n03%"));
    EXPECT_EQ(name(sequence(QStringLiteral("%99999999d"), QString(), 1, 0), QString(), nullptr, 4),
              QStringLiteral("%99999999d4"));
    // A typed directive takes the same number.
    EXPECT_EQ(name(sequence(QStringLiteral("%x-"), QString(), 2, 0), QString(), nullptr, 255),
              QStringLiteral("ff-255"));
    // A digit count no file name could hold is left as text rather than allocated.
    EXPECT_EQ(name(sequence(QStringLiteral("p"), QString(), 100000000, 0), QString(), nullptr, 1),
              QStringLiteral("p%0.100000000d"));
    // The counter wraps like an int instead of overflowing.
    EXPECT_EQ(name(sequence(QString(), QString(), 1, INT_MAX), QString(), nullptr, 1),
              QStringLiteral("-2147483648"));
}

TEST(RenamerTypes, KeepPrefixSuffixAndUnknown) {
    Renamer r;
    EXPECT_EQ(name(r, QStringLiteral("photo"), nullptr, 9), QStringLiteral("photo"));
    r.setType(Renamer::PrefixSuffix);
    r.setSuffix(QStringLiteral("-s"));
    EXPECT_EQ(name(r, QStringLiteral("photo"), nullptr, 0), QStringLiteral("photo-s"));
    // No format here: a percent sign is plain text.
    r.setPrefix(QStringLiteral("%d%%"));
    EXPECT_EQ(name(r, QStringLiteral("photo"), nullptr, 0), QStringLiteral("%d%%photo-s"));
    for (int unknown : {-1, 4, 99}) {
        r.setType(unknown);
        EXPECT_FALSE(r.nameFromInputName(QStringLiteral("photo"), nullptr, 0).has_value()) << unknown;
        EXPECT_FALSE(r.examples().has_value()) << unknown;
    }
}

TEST(RenamerDate, UsesTheCaptureDateThenTheFileDateByTheFallbackTag) {
    Renamer r;
    r.setType(Renamer::Date);
    r.setPrefix(QStringLiteral("p-"));
    r.setSuffix(QStringLiteral("-s"));
    const int compact = int(r.dateFormats().indexOf(QStringLiteral("%Y%m%d_%H%M%S")));
    ASSERT_GE(compact, 0);
    r.setDateFormatTag(compact);
    const QDateTime capture(QDate(2005, 2, 14), QTime(15, 32, 47), Qt::LocalTime);
    const QDateTime file(QDate(2020, 1, 2), QTime(3, 4, 5), Qt::LocalTime);

    const KVImageInfo both = infoWith(capture, file);
    const KVImageInfo fileOnly = infoWith(QDateTime(), file);
    const KVImageInfo neither = infoWith(QDateTime(), QDateTime());
    EXPECT_EQ(name(r, QStringLiteral("in"), &both, 0), QStringLiteral("p-20050214_153247-s"));
    EXPECT_EQ(name(r, QStringLiteral("in"), &fileOnly, 0), QStringLiteral("p-20200102_030405-s"));
    EXPECT_EQ(name(r, QStringLiteral("in"), &neither, 0), QStringLiteral("in"));
    EXPECT_EQ(name(r, QStringLiteral("in"), nullptr, 0), QStringLiteral("in"));
    r.setDateFallbackTag(1);
    EXPECT_EQ(name(r, QStringLiteral("in"), &fileOnly, 0), QStringLiteral("in"));
    EXPECT_EQ(name(r, QStringLiteral("in"), &both, 0), QStringLiteral("p-20050214_153247-s"));
    // A tag outside the list keeps the input name instead of failing.
    for (int tag : {-1, int(r.dateFormats().size())}) {
        r.setDateFormatTag(tag);
        EXPECT_EQ(name(r, QStringLiteral("in"), &both, 0), QStringLiteral("in")) << tag;
    }
}

TEST(RenamerDate, NamesRealPicturesByCaptureDateOrFileDate) {
    QString canon;
    QUILLET_SAMPLE_OR_SKIP(canon, "Canon_40D.jpg");
    QString noExif;
    QUILLET_SAMPLE_OR_SKIP(noExif, "xmp-no_exif.jpg");
    Renamer r;
    r.setType(Renamer::Date);
    r.setDateFormatTag(int(r.dateFormats().indexOf(QStringLiteral("%Y%m%d_%H%M%S"))));
    const std::optional<KVImageInfo> withExif = KVImageInfo::fromFile(canon);
    const std::optional<KVImageInfo> withoutExif = KVImageInfo::fromFile(noExif);
    ASSERT_TRUE(withExif && withoutExif);
    // The capture date (DateTimeOriginal), not the later edit date of IFD0.
    EXPECT_EQ(name(r, QStringLiteral("Canon_40D"), &*withExif, 0), QStringLiteral("20080530_155601"));
    const QDateTime modified = QFileInfo(noExif).lastModified();
    EXPECT_EQ(name(r, QStringLiteral("x"), &*withoutExif, 0),
              modified.toString(QStringLiteral("yyyyMMdd_HHmmss")));
    r.setDateFallbackTag(1);
    EXPECT_EQ(name(r, QStringLiteral("x"), &*withoutExif, 0), QStringLiteral("x"));
}

TEST(RenamerDate, FormatListHoldsTheCaptureAndFileSafeForms) {
    const Renamer r;
    const QStringList formats = r.dateFormats();
    ASSERT_FALSE(formats.isEmpty());
    EXPECT_EQ(formats.first(), QStringLiteral("%Y:%m:%d %H:%M:%S"));
    EXPECT_TRUE(formats.contains(QStringLiteral("%Y-%m-%d %H.%M.%S")));
    const QStringList titles = r.dateFormatTitles();
    ASSERT_EQ(titles.size(), formats.size());
    EXPECT_EQ(titles.first(), QStringLiteral("2005:02:14 15:32:47"));
    // Every title but the capture form's is usable as a file name.
    for (qsizetype i = 1; i < titles.size(); ++i) {
        EXPECT_FALSE(titles[i].contains(QLatin1Char('/')) || titles[i].contains(QLatin1Char(':')))
            << titles[i].toStdString();
        EXPECT_FALSE(titles[i].contains(QLatin1Char('%'))) << titles[i].toStdString();
    }
}

TEST(RenamerConflict, SeparatorByTagAndOutOfRangeTagResetsToZero) {
    Renamer r;
    r.setConflictFormatTag(1);
    EXPECT_EQ(r.conflictResolverForIndex(2), QStringLiteral("_2"));
    r.setConflictFormatTag(2);
    EXPECT_EQ(r.conflictResolverForIndex(3), QStringLiteral(" 3"));
    r.setConflictFormatTag(0);
    EXPECT_EQ(r.conflictResolverForIndex(1), QStringLiteral("-1"));
    r.setConflictFormatTag(5);
    EXPECT_EQ(r.conflictResolverForIndex(2), QStringLiteral("-2"));
    EXPECT_EQ(r.conflictFormatTag(), 0);
    r.setConflictFormatTag(-3);
    EXPECT_EQ(r.conflictResolverForIndex(7), QStringLiteral("-7"));
    EXPECT_EQ(r.conflictFormatTag(), 0);
}

TEST(RenamerConflict, ConcurrentCallersAllSeeTheResetSeparator) {
    Renamer r;
    r.setType(Renamer::Date);
    r.setConflictFormatTag(9);
    std::vector<std::thread> threads;
    std::vector<int> wrong(4, 0);
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&r, &wrong, t] {
            for (int n = 1; n <= 2000; ++n)
                if (r.conflictResolverForIndex(n) != QStringLiteral("-") + QString::number(n) ||
                    !r.nameFromInputName(QStringLiteral("x"), nullptr, n))
                    ++wrong[t];
        });
    for (auto& th : threads)
        th.join();
    EXPECT_EQ(wrong, std::vector<int>(4, 0));
    EXPECT_EQ(r.conflictFormatTag(), 0);
}

TEST(RenamerExamples, FollowTheTypeAndUseTheSampleDate) {
    Renamer r;
    EXPECT_FALSE(r.examples().has_value());
    EXPECT_TRUE(r.examplesLine().isEmpty());
    r.setType(Renamer::PrefixSuffix);
    r.setPrefix(QStringLiteral("p"));
    EXPECT_EQ(r.examples(), QStringLiteral("pinfile1, pinfile2"));
    EXPECT_EQ(r.examplesLine(), QStringLiteral("e.g. pinfile1, pinfile2 ..."));
    r = sequence(QStringLiteral("img"), QString(), 3, 1);
    EXPECT_EQ(r.examples(), QStringLiteral("img001, img002"));
    r.setType(Renamer::Date);
    r.setPrefix(QString());
    r.setDateFormatTag(0);
    // The fallback never matters: the sample record has a capture date.
    r.setDateFallbackTag(1);
    EXPECT_EQ(r.examples(), QStringLiteral("2005:02:14 15:32:47, 2005:02:14 15:32:47"));
}

class RenamerStore : public testing::Test {
  protected:
    QTemporaryDir dir;
    QSettings settings{dir.filePath(QStringLiteral("renamer.ini")), QSettings::IniFormat};
};

TEST_F(RenamerStore, SavesAllEightKeysAndReadsThemBack) {
    Renamer r = sequence(QStringLiteral("pre"), QStringLiteral("suf"), 4, 9);
    r.setDateFormatTag(2);
    r.setConflictFormatTag(1);
    r.setDateFallbackTag(1);
    r.acceptChanges(true, settings);
    settings.sync();
    for (const char* key :
         {"SelectedRename", "RenamePrefix", "RenameSuffix", "RenameDigits", "RenameStartFrom",
          "RenameDateFormatTag", "RenameConflictFormatTag", "DateFallbackTag"})
        EXPECT_TRUE(settings.contains(QLatin1String(key))) << key;

    QSettings reopened(settings.fileName(), QSettings::IniFormat);
    const Renamer back(reopened);
    EXPECT_EQ(back.renameType(), Renamer::Sequence);
    EXPECT_EQ(back.prefix(), QStringLiteral("pre"));
    EXPECT_EQ(back.suffix(), QStringLiteral("suf"));
    EXPECT_EQ(back.digits(), 4);
    EXPECT_EQ(back.startFrom(), 9);
    EXPECT_EQ(back.dateFormatTag(), 2);
    EXPECT_EQ(back.conflictFormatTag(), 1);
    EXPECT_EQ(back.dateFallbackTag(), 1);
}

TEST_F(RenamerStore, CancelReloadsButOnlyTheSavedTypesFields) {
    settings.setValue(QStringLiteral("SelectedRename"), 2);
    settings.setValue(QStringLiteral("RenamePrefix"), QStringLiteral("saved"));
    settings.setValue(QStringLiteral("RenameDigits"), 6);
    Renamer r = sequence(QStringLiteral("edited"), QStringLiteral("e"), 3, 5);
    r.acceptChanges(false, settings);
    EXPECT_EQ(r.renameType(), Renamer::PrefixSuffix);
    EXPECT_EQ(r.prefix(), QStringLiteral("saved"));
    EXPECT_EQ(r.suffix(), QString());
    // Digits and start belong to the sequence tab and are left as edited.
    EXPECT_EQ(r.digits(), 3);
    EXPECT_EQ(r.startFrom(), 5);

    // Type 0 reads neither texts nor numbers; absent keys read as 0.
    QSettings empty(dir.filePath(QStringLiteral("empty.ini")), QSettings::IniFormat);
    r.readFromDefaults(empty);
    EXPECT_EQ(r.renameType(), Renamer::KeepName);
    EXPECT_EQ(r.prefix(), QStringLiteral("saved"));
    EXPECT_EQ(r.conflictFormatTag(), 0);
}

} // namespace
