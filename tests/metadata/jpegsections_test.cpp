#include "exifblocks.h"

#include "metadata/jpegsections.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

using namespace exifblocks;

namespace {

struct Reader {
    JpegContext ctx;
    Capture out, err;
    Reader() {
        ctx.OutStream = out.stream();
        ctx.ErrStream = err.stream();
        ctx.CurrentFile = "in.jpg";
    }
    int read(const Bytes& bytes, int mode) { return ReadJpegBuffer(ctx, bytes.data(), bytes.size(), mode); }
    std::vector<int> types() const {
        std::vector<int> t;
        for (int a = 0; a < ctx.SectionsRead; a++)
            t.push_back(ctx.Sections[size_t(a)].Type);
        return t;
    }
};

Bytes dqt() {
    return segment(0xDB, Bytes(65, 1));
}
Bytes app0() {
    return segment(0xE0, Bytes{'J', 'F', 'I', 'F', 0, 1, 1, 0, 0, 1, 0, 1, 0, 0});
}
Bytes comment(const Bytes& text) {
    return segment(0xFE, text);
}
Bytes exifApp1(const std::string& model) {
    TiffBuilder t(false);
    t.addIfd();
    t.addAscii(0, 0x0110, model);
    return segment(0xE1, exifPayload(t.build()));
}

} // namespace

TEST(JpegSections, MetadataReadKeepsWhatMattersAndStopsAtScan) {
    Reader r;
    const Bytes file = jpeg({app0(), exifApp1("First"), segment(0xE1, Bytes{'h', 't', 't', 'p', ':'}), dqt(),
                             comment({'o', 'n', 'e'}), comment({'t', 'w', 'o'}), sof(640, 480, 3)});
    ASSERT_EQ(r.read(file, ReadMetadata), 1);
    // APP0, the XMP-like APP1 and the second comment are dropped; SOS is last.
    EXPECT_EQ(r.types(), (std::vector<int>{0xE1, 0xDB, 0xFE, 0xC0, 0xDA}));
    EXPECT_EQ(r.ctx.HaveAll, 0);
    EXPECT_STREQ(r.ctx.Info.CameraModel, "First");
    EXPECT_STREQ(r.ctx.Info.Comments, "one");
    EXPECT_EQ(r.ctx.Info.Width, 640);
    EXPECT_EQ(r.ctx.Info.Height, 480);
    EXPECT_EQ(r.ctx.Info.IsColor, 1);
    EXPECT_EQ(r.ctx.Info.Process, 0xC0);
    // FindSection never looks at the last entry.
    EXPECT_NE(FindSection(r.ctx, 0xC0), nullptr);
    EXPECT_EQ(FindSection(r.ctx, 0xDA), nullptr);
}

TEST(JpegSections, ImageReadDropsMetadataAndTakesTheRest) {
    Reader r;
    const Bytes file = jpeg({app0(), exifApp1("X"), comment({'c'}), dqt(), sof(8, 8, 1)});
    ASSERT_EQ(r.read(file, ReadImage), 1);
    EXPECT_EQ(r.types(), (std::vector<int>{0xDB, 0xC0, 0xDA, PseudoImageData}));
    EXPECT_EQ(r.ctx.HaveAll, 1);
    EXPECT_EQ(r.ctx.Info.CameraModel[0], '\0');
    EXPECT_EQ(r.ctx.Info.IsColor, 0);
    const Section& image = r.ctx.Sections[3];
    EXPECT_EQ(image.Size, 8u); // the entropy bytes and EOI
    EXPECT_EQ(image.Data[image.Size - 1], 0xD9);
}

TEST(JpegSections, CommentBytesAreCleanedUp) {
    Reader r;
    ASSERT_EQ(r.read(jpeg({comment({0x61, 0x0D, 0x0A, 0x62, 0x01, 0x09, 0xE9, 0x0D})}), ReadMetadata), 1);
    // CR before LF dropped, control byte shown as '?', TAB and high bytes kept,
    // a lone CR becomes '?'.
    EXPECT_EQ(std::string(r.ctx.Info.Comments), std::string("a\nb?\t\xE9?"));

    Reader longer;
    ASSERT_EQ(longer.read(jpeg({comment(Bytes(5000, 'x'))}), ReadMetadata), 1);
    EXPECT_EQ(std::strlen(longer.ctx.Info.Comments), 1998u); // 2000 bytes with the length
}

TEST(JpegSections, PaddingBeforeMarkers) {
    Bytes six = jpeg({dqt()});
    six.insert(six.begin() + 2, 5, 0xFF); // five fill bytes plus the marker's own
    Reader ok;
    EXPECT_EQ(ok.read(six, ReadMetadata), 1);

    Bytes seven = jpeg({dqt()});
    seven.insert(seven.begin() + 2, 6, 0xFF);
    Reader bad;
    EXPECT_EQ(bad.read(seven, ReadMetadata), 0);
    EXPECT_EQ(bad.out.text(), "too many padding bytes\nNot JPEG (or bad one): in.jpg\n");
    EXPECT_EQ(bad.ctx.SectionsRead, 0);
}

struct BadFile {
    const char* name;
    Bytes bytes;
    const char* out;
    const char* err;
};

class JpegSectionsRefuse : public testing::TestWithParam<BadFile> {};

TEST_P(JpegSectionsRefuse, WithItsMessage) {
    Reader r;
    EXPECT_EQ(r.read(GetParam().bytes, ReadImage), 0);
    EXPECT_EQ(r.out.text(), GetParam().out);
    EXPECT_EQ(r.err.text(), GetParam().err);
    EXPECT_EQ(r.ctx.SectionsRead, 0);
    EXPECT_EQ(r.ctx.Info.Width, 0);
}

namespace {

Bytes manySections(int count) {
    std::vector<Bytes> segs(size_t(count), segment(0xE5, Bytes{1, 2}));
    return jpeg(segs);
}

Bytes truncatedAfter(const Bytes& b, size_t keep) {
    return Bytes(b.begin(), b.begin() + long(keep));
}

const char notJpeg[] = "Not JPEG (or bad one): in.jpg\n";

} // namespace

INSTANTIATE_TEST_SUITE_P(
    Damaged, JpegSectionsRefuse,
    testing::Values(BadFile{"NoSoi", Bytes{0x89, 'P', 'N', 'G', 0, 0, 0, 0}, notJpeg, ""},
                    BadFile{"Empty", Bytes{}, notJpeg, ""},
                    BadFile{"EoiBeforeScan", Bytes{0xFF, 0xD8, 0xFF, 0xD9, 0x00, 0x02},
                            "No image in jpeg!\nNot JPEG (or bad one): in.jpg\n", ""},
                    BadFile{"LengthBelowTwo", Bytes{0xFF, 0xD8, 0xFF, 0xDB, 0x00, 0x01}, notJpeg,
                            "Error : invalid marker\nin file 'in.jpg'\n"},
                    BadFile{"EndInsideLength", Bytes{0xFF, 0xD8, 0xFF, 0xDB, 0x00}, notJpeg,
                            "Error : invalid marker\nin file 'in.jpg'\n"},
                    BadFile{"TruncatedSegment", truncatedAfter(jpeg({dqt()}), 30), notJpeg,
                            "Error : Premature end of file?\nin file 'in.jpg'\n"},
                    BadFile{"TwentyOneSections", manySections(20), notJpeg,
                            "Error : Too many sections in jpg file\nin file 'in.jpg'\n"},
                    // SOS as the 20th section leaves no room for the image data.
                    BadFile{"ScanAsTwentieth", manySections(19), notJpeg,
                            "Error : Too many sections in jpg file\nin file 'in.jpg'\n"}),
    [](const testing::TestParamInfo<BadFile>& info) { return std::string(info.param.name); });

TEST(JpegSections, DiscardAllButExifKeepsFirstExifThenFirstComment) {
    Reader r;
    const Bytes file = jpeg({comment({'c', '1'}), dqt(), exifApp1("One"), exifApp1("Two"), sof(4, 4)});
    ASSERT_EQ(r.read(file, ReadMetadata), 1);
    // Both blocks were parsed; the second overwrote the model.
    EXPECT_STREQ(r.ctx.Info.CameraModel, "Two");
    DiscardAllButExif(r.ctx);
    ASSERT_EQ(r.types(), (std::vector<int>{0xE1, 0xFE}));
    const Section& kept = r.ctx.Sections[0];
    EXPECT_NE(std::search(kept.Data.begin(), kept.Data.end(), std::begin("One"), std::end("One") - 1),
              kept.Data.end());
}

TEST(JpegSections, WriteAddsJfifOnlyWhenTheListStartsWithoutApp0OrApp1) {
    QTemporaryDir dir;
    const std::string path = (dir.path() + "/out.jpg").toStdString();
    const auto written = [&] {
        FILE* f = std::fopen(path.c_str(), "rb");
        Bytes b;
        for (int c; (c = std::fgetc(f)) != EOF;)
            b.push_back(uint8_t(c));
        std::fclose(f);
        return b;
    };

    Reader plain;
    const Bytes source = jpeg({app0(), dqt(), sof(2, 2)});
    ASSERT_EQ(plain.read(source, ReadImage), 1);
    ASSERT_EQ(WriteJpegFile(plain.ctx, path.c_str()), 1);
    const Bytes out = written();
    const Bytes jfif{0xFF, 0xE0, 0x00, 0x10, 'J', 'F', 'I', 'F', 0, 1, 1, 1, 1, 0x2C, 1, 0x2C, 0, 0};
    EXPECT_TRUE(std::equal(jfif.begin(), jfif.end(), out.begin() + 2));
    // Everything after the dropped APP0 is written back unchanged.
    const Bytes rest(source.begin() + 2 + long(app0().size()), source.end());
    EXPECT_EQ(Bytes(out.begin() + 20, out.end()), rest);

    Reader withExif;
    ASSERT_EQ(withExif.read(jpeg({exifApp1("M"), dqt()}), ReadMetadata | ReadImage), 1);
    ASSERT_EQ(WriteJpegFile(withExif.ctx, path.c_str()), 1);
    EXPECT_EQ(written()[3], 0xE1);
}

TEST(JpegSections, WritingAnIncompleteListComplainsAndStillWrites) {
    QTemporaryDir dir;
    const std::string path = (dir.path() + "/out.jpg").toStdString();
    Reader r;
    ASSERT_EQ(r.read(jpeg({dqt()}), ReadMetadata), 1);
    EXPECT_EQ(WriteJpegFile(r.ctx, path.c_str()), 1);
    EXPECT_EQ(r.err.text(), "Error : Can't write back - didn't read all\nin file 'in.jpg'\n");
    EXPECT_TRUE(QFileInfo::exists(QString::fromStdString(path)));
}

TEST(JpegSections, FailedWritesAreReported) {
    Reader r;
    ASSERT_EQ(r.read(jpeg({dqt()}), ReadImage), 1);
    EXPECT_EQ(WriteJpegFile(r.ctx, "/nonexistent-dir/out.jpg"), 0);
    EXPECT_EQ(r.err.text(), "Error : Could not open file for write\nin file 'in.jpg'\n");

    MetadataFileOps full;
    full.open = [](const char*, const char*) { return std::fopen("/dev/full", "wb"); };
    r.ctx.FileOps = &full;
    EXPECT_EQ(WriteJpegFile(r.ctx, "ignored"), 0);
}

