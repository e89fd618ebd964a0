#include "exifblocks.h"

#include "metadata/orientationtag.h"
#include "testsupport.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace exifblocks;

namespace {

QByteArray toQ(const Bytes& b) {
    return QByteArray(reinterpret_cast<const char*>(b.data()), qsizetype(b.size()));
}

int differingBytes(const QByteArray& a, const QByteArray& b) {
    int n = std::abs(int(a.size() - b.size()));
    for (qsizetype i = 0; i < std::min(a.size(), b.size()); i++)
        n += a[i] != b[i];
    return n;
}

// SOI, then the EXIF block first, as cameras write it.
Bytes cameraFile(bool motorola, const Entry& orientation, int entriesBefore = 2) {
    TiffBuilder t(motorola);
    t.addIfd();
    for (int k = 0; k < entriesBefore; k++)
        t.addShort(0, uint16_t(0x0100 + k), 7);
    t.add(0, orientation);
    t.addAscii(0, 0x0110, "Cam");
    return jpeg({segment(0xE1, exifPayload(t.build())), sof(4, 4)});
}

class OrientationFiles : public testing::Test {
  protected:
    QTemporaryDir dir;
    QString write(const Bytes& bytes) {
        const QString path = dir.filePath(QStringLiteral("f%1.jpg").arg(m_count++));
        EXPECT_TRUE(testsupport::writeFile(path, toQ(bytes)));
        return path;
    }
    static std::string native(const QString& p) { return QFile::encodeName(p).toStdString(); }

  private:
    int m_count = 0;
};

} // namespace

TEST_F(OrientationFiles, ReadAndRewriteInBothByteOrders) {
    for (const bool mm : {false, true}) {
        TiffBuilder order(mm);
        const QString path = write(cameraFile(mm, Entry{0x0112, 3, 1, order.u16(6)}));
        const QByteArray before = testsupport::readFile(path);
        EXPECT_EQ(_getOrientation(native(path).c_str()), 6);
        EXPECT_EQ(_setOrientation(native(path).c_str(), 1), 6);
        EXPECT_EQ(_getOrientation(native(path).c_str()), 1);
        EXPECT_LE(differingBytes(before, testsupport::readFile(path)), 10);
    }
}

TEST_F(OrientationFiles, LongValueIsRewrittenAsShort) {
    TiffBuilder order(false);
    const QString path = write(cameraFile(false, Entry{0x0112, 4, 1, order.u32(8)}));
    EXPECT_EQ(_setOrientation(native(path).c_str(), 3), 8);
    const QByteArray after = testsupport::readFile(path);
    // The entry: tag 0x0112 kept, then SHORT, count 1, value 3, zero padding.
    const qsizetype entry = 12 + 8 + 2 + 2 * 12;
    EXPECT_EQ(after.mid(entry, 12), QByteArray::fromHex("1201030001000000030000 00").replace(' ', ""));
}

TEST_F(OrientationFiles, FilesThatDoNotQualifyGiveZeroAndStayUntouched) {
    TiffBuilder intel(false);
    const Entry six{0x0112, 3, 1, intel.u16(6)};

    Bytes jfifFirst = cameraFile(false, six);
    const Bytes app0 = segment(0xE0, Bytes{'J', 'F', 'I', 'F', 0, 1, 1, 0, 0, 1, 0, 1, 0, 0});
    jfifFirst.insert(jfifFirst.begin() + 2, app0.begin(), app0.end());

    Bytes highOffset = cameraFile(false, six);
    highOffset[12 + 6] = 1; // IFD0 offset with a non-zero high half

    Bytes noTag = jpeg({segment(0xE1, exifPayload([] {
                                    TiffBuilder t(false);
                                    t.addIfd();
                                    t.addShort(0, 0x0100, 1);
                                    return t.build();
                                }()))});

    Bytes badSignature = cameraFile(false, six);
    badSignature[9] = 'X';

    Bytes zeroEntries = cameraFile(false, six);
    zeroEntries[12 + 8] = 0;
    zeroEntries[12 + 9] = 0;

    for (const Bytes& bytes :
         {jfifFirst, highOffset, noTag, badSignature, zeroEntries, Bytes{0xFF, 0xD8, 0xFF, 0xE1, 0x00}}) {
        const QString path = write(bytes);
        const QByteArray before = testsupport::readFile(path);
        EXPECT_EQ(_getOrientation(native(path).c_str()), 0);
        EXPECT_EQ(_setOrientation(native(path).c_str(), 1), 0);
        EXPECT_EQ(testsupport::readFile(path), before);
    }
    EXPECT_EQ(_getOrientation("/nonexistent/file.jpg"), 0);
}

TEST_F(OrientationFiles, AFileThatCannotBeOpenedForUpdateGivesZero) {
    TiffBuilder intel(false);
    const QString path = write(cameraFile(false, Entry{0x0112, 3, 1, intel.u16(6)}));
    // Stands in for a read-only file (the tests may run as root).
    MetadataFileOps readOnly;
    readOnly.open = [](const char* p, const char* mode) {
        return std::string(mode).find('+') != std::string::npos ? nullptr : std::fopen(p, mode);
    };
    EXPECT_EQ(_getOrientation(native(path).c_str(), &readOnly), 0);
    EXPECT_EQ(_setOrientation(native(path).c_str(), 1, &readOnly), 0);
    EXPECT_EQ(_getOrientation(native(path).c_str()), 6);
}

TEST_F(OrientationFiles, CameraSamples) {
    QString jolla, jfifFirst;
    QUILLET_SAMPLE_OR_SKIP(jolla, "mobile-jolla.jpg");
    QUILLET_SAMPLE_OR_SKIP(jfifFirst, "orientation-portrait_6.jpg");
    const QString path = dir.filePath(QStringLiteral("copy.jpg"));
    ASSERT_TRUE(QFile::copy(jolla, path));
    QFile(path).setPermissions(QFile::ReadOwner | QFile::WriteOwner);
    const QByteArray before = testsupport::readFile(path);
    EXPECT_EQ(_getOrientation(native(path).c_str()), 1);
    EXPECT_EQ(_setOrientation(native(path).c_str(), 6), 1);
    EXPECT_EQ(_getOrientation(native(path).c_str()), 6);
    EXPECT_LE(differingBytes(before, testsupport::readFile(path)), 10);
    EXPECT_EQ(_setOrientation(native(path).c_str(), 1), 6);
    EXPECT_EQ(testsupport::readFile(path), before);

    // Its EXIF says 6, but a JFIF segment comes first: the narrow rule says 0.
    EXPECT_EQ(_getOrientation(native(jfifFirst).c_str()), 0);
}
