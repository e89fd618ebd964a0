#include "exifblocks.h"

#include "metadata/orientationtag.h"
#include "support/failingfilesystem.h"
#include "testsupport.h"

#include <QFile>

#include <gtest/gtest.h>

using namespace quillet;

using namespace exifblocks;

namespace {

int differingBytes(const QByteArray& a, const QByteArray& b) {
    int n = int(std::abs(a.size() - b.size()));
    for (qsizetype i = 0; i < std::min(a.size(), b.size()); i++)
        n += a[i] != b[i];
    return n;
}

// SOI, then the EXIF block first, as cameras write it: an entry, the orientation, the model.
Bytes cameraFile(bool motorola, Entry orientation) {
    TiffBuilder t(motorola);
    t.addIfd();
    t.addShort(0, 0x0100, 7);
    t.add(0, std::move(orientation));
    t.addAscii(0, 0x0110, "Cam");
    return jpeg({app1(t.build()), sof(4, 4)});
}

struct TagFile {
    QTemporaryDir dir;
    std::string path = QFile::encodeName(dir.filePath(QStringLiteral("f.jpg"))).toStdString();
    explicit TagFile(const Bytes& b) { testsupport::writeFile(QString::fromStdString(path), toQ(b)); }
    QByteArray bytes() const { return testsupport::readFile(QString::fromStdString(path)); }
};

} // namespace

TEST(OrientationTag, RewritesAtMostTenBytesInBothByteOrders) {
    for (const bool mm : {false, true}) {
        TagFile f(cameraFile(mm, Entry{0x0112, 3, 1, TiffBuilder(mm).u16(6)}));
        const QByteArray before = f.bytes();
        EXPECT_EQ(_getOrientation(f.path.c_str()), 6);
        EXPECT_EQ(_setOrientation(f.path.c_str(), 1), 6);
        EXPECT_EQ(_getOrientation(f.path.c_str()), 1);
        EXPECT_LE(differingBytes(before, f.bytes()), 10);
    }
    // A LONG value is rewritten as tag, SHORT, count 1, value 3, zero padding.
    TagFile f(cameraFile(false, Entry{0x0112, 4, 1, TiffBuilder(false).u32(8)}));
    EXPECT_EQ(_setOrientation(f.path.c_str(), 3), 8);
    EXPECT_EQ(f.bytes().mid(12 + 8 + 2 + 12, 12), QByteArray::fromHex("120103000100000003000000"));
}

TEST(OrientationTag, FilesThatDoNotQualifyGiveZeroAndStayUntouched) {
    const Entry six{0x0112, 3, 1, TiffBuilder(false).u16(6)};
    Bytes jfifFirst = cameraFile(false, six), highOffset = jfifFirst, badSignature = jfifFirst,
          zeroEntries = jfifFirst;
    jfifFirst.insert(jfifFirst.begin() + 2, {0xFF, 0xE0, 0, 4, 'J', 'F'}); // an APP0 before the EXIF block
    highOffset[12 + 6] = 1; // IFD0 offset with a non-zero high half
    badSignature[9] = 'X';
    zeroEntries[12 + 8] = 0;
    const Bytes noTag = cameraFile(false, Entry{0x0102, 3, 1, {6, 0}});
    for (const Bytes& bytes :
         {jfifFirst, highOffset, noTag, badSignature, zeroEntries, Bytes{0xFF, 0xD8, 0xFF, 0xE1, 0}}) {
        TagFile f(bytes);
        EXPECT_EQ(_getOrientation(f.path.c_str()), 0);
        EXPECT_EQ(_setOrientation(f.path.c_str(), 1), 0);
        EXPECT_EQ(f.bytes(), toQ(bytes));
    }

    // A file that cannot be opened for update (a read-only file; the tests may run as root).
    TagFile f(cameraFile(false, six));
    FailingFileSystem readOnly;
    readOnly.fail(FailingFileSystem::Call::Open, EACCES, QString::fromStdString(f.path));
    EXPECT_EQ(_getOrientation(f.path.c_str(), readOnly), 0);
    EXPECT_EQ(_setOrientation(f.path.c_str(), 1, readOnly), 0);
    EXPECT_EQ(_getOrientation(f.path.c_str()), 6);
}
