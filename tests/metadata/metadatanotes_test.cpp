#include "metadata/metadatanotes.h"

#include "exifblocks.h"
#include "metadata/jpegcontext.h"
#include "metadata/kvimageinfo.h"
#include "testsupport.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace quillet;
using namespace exifblocks;

namespace {

class Lines final : public ActivityLog {
  public:
    void writeActivity(const QString& line) override { plain.append(line); }
    void writeWarningActivity(const QString& line) override { warnings.append(line); }
    QStringList plain, warnings;
};

// Kept notes replace printing; only damage reaches the log, once per text.
TEST(MetadataNotes, OnlyDamageReachesTheLogNamingTheFile) {
    QTemporaryDir dir;
    const QString png = dir.filePath(QStringLiteral("a.png"));
    testsupport::solidImage(4, 4, 1, 2, 3).write_to_file(png.toLocal8Bit().constData());
    // An EXIF block whose value pointers lead outside it, twice.
    TiffBuilder t(false);
    t.addIfd();
    t.add(0, {0x0110, 2, 4000, Bytes(4, 0)});
    t.add(0, {0x010F, 2, 4000, Bytes(4, 0)});
    const QString broken = dir.filePath(QStringLiteral("b.jpg"));
    testsupport::writeFile(broken, toQ(jpeg({app1(t.build()), sof(8, 8)})));

    Capture err;
    setMetadataMessageStreams(err.stream(), err.stream());
    MetadataNotes notPicture, damaged;
    EXPECT_FALSE(KVImageInfo::fromFile(png, false, false, &notPicture));
    EXPECT_TRUE(KVImageInfo::fromFile(broken, false, false, &damaged));
    setMetadataMessageStreams(stdout, stderr);
    EXPECT_EQ(err.text(), "");

    Lines log;
    EXPECT_FALSE(notPicture.notes().isEmpty());
    notPicture.writeDamage(log, QStringLiteral("a.png"));
    EXPECT_TRUE(log.warnings.isEmpty());
    damaged.writeDamage(log, QStringLiteral("b.jpg"));
    ASSERT_EQ(log.warnings.size(), 1);
    EXPECT_TRUE(
        log.warnings[0].startsWith(QStringLiteral("\tDamaged metadata in 'b.jpg': Illegal value pointer")))
        << log.warnings[0].toStdString();
    EXPECT_EQ(log.warnings[0].count(QStringLiteral("Illegal value pointer")), 2) << "one per tag";
}

} // namespace
