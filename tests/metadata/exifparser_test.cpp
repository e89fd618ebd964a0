#include "exifblocks.h"

#include "metadata/exifparser.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace exifblocks;

namespace {

// A parsed block and what the parser printed about it.
struct Parsed {
    JpegContext ctx;
    Capture err;
    Bytes section;

    explicit Parsed(const Bytes& tiff) : section(exifSection(tiff)) {
        ctx.ErrStream = err.stream();
        ctx.OutStream = nullptr;
        ctx.Info.FlashUsed = -1;
        section.resize(section.size() + SectionPadding, 0);
        process_EXIF(ctx, section.data(), uint32_t(section.size() - SectionPadding),
                     section.data() + section.size());
    }
    const ImageInfo& info() const { return ctx.Info; }
};

// IFD0 -> Exif sub-directory and IFD1 with a thumbnail, like a camera file.
TiffBuilder cameraBlock(bool motorola) {
    TiffBuilder t(motorola);
    const int ifd0 = t.addIfd();
    const int exif = t.addIfd();
    const int ifd1 = t.addIfd();
    t.link(ifd0, ifd1);
    t.addAscii(ifd0, 0x010F, "Maker");
    t.addAscii(ifd0, 0x0110, "Model 7");
    t.addShort(ifd0, 0x0112, 6);
    t.addSubIfd(ifd0, 0x8769, exif);
    t.addRational(exif, 0x829A, 1, 250);
    t.addRational(exif, 0x829D, 28, 10);
    t.addAscii(exif, 0x9003, "2008:05:30 15:56:01");
    t.addRational(exif, 0x9204, -2, 3, 10);
    t.addRational(exif, 0x9206, 37, 10);
    t.addShort(exif, 0x9207, 5);
    t.addShort(exif, 0x9208, 4);
    t.addShort(exif, 0x8822, 2);
    t.addShort(exif, 0x9209, 0x19);
    t.addRational(exif, 0x920A, 10, 1);
    t.addShort(exif, 0x8827, 400);
    t.addLong(exif, 0xA002, 3000);
    t.addLong(exif, 0xA003, 2000);
    t.addRational(exif, 0xA20E, 3000, 18); // 3000 px over 18 mm
    t.addShort(exif, 0xA210, 4);
    t.addLong(ifd1, 0x0201, 0); // set below once the trailer's place is known
    t.addLong(ifd1, 0x0202, 6);
    t.setTrailer(Bytes{0xFF, 0xD8, 0xFF, 0xD9, 0xAA, 0xBB});
    return t;
}

Bytes withThumbnailOffset(TiffBuilder& t) {
    Bytes tiff = t.build();
    const uint32_t thumb = t.trailerOffset;
    // IFD1's first entry holds the offset value in its last four bytes.
    TiffBuilder::put(tiff, t.ifdOffsets[2] + 2 + 8, t.u32(thumb));
    return tiff;
}

} // namespace

class ExifByteOrder : public testing::TestWithParam<bool> {};

TEST_P(ExifByteOrder, CameraBlockFillsEveryField) {
    TiffBuilder t = cameraBlock(GetParam());
    const Bytes tiff = withThumbnailOffset(t);
    Parsed p(tiff);
    const ImageInfo& i = p.info();
    EXPECT_EQ(p.err.text(), "");
    EXPECT_EQ(p.ctx.MotorolaOrder, GetParam() ? 1 : 0);
    EXPECT_STREQ(i.CameraMake, "Maker");
    EXPECT_STREQ(i.CameraModel, "Model 7");
    EXPECT_STREQ(i.DateTime, "2008:05:30 15:56:01");
    EXPECT_EQ(i.Orientation, 6);
    EXPECT_FLOAT_EQ(i.ExposureTime, 0.004f);
    EXPECT_FLOAT_EQ(i.ApertureFNumber, 2.8f);
    EXPECT_FLOAT_EQ(i.ExposureBias, -2.0f / 3);
    EXPECT_FLOAT_EQ(i.Distance, 3.7f);
    EXPECT_FLOAT_EQ(i.FocalLength, 10);
    EXPECT_EQ(i.MeteringMode, 5);
    EXPECT_EQ(i.LightSource, 4);
    EXPECT_EQ(i.ExposureProgram, 2);
    EXPECT_EQ(i.FlashUsed, 1);
    EXPECT_EQ(i.ISOequivalent, 400);
    // 3000 px x 1 mm per unit / (3000/18 px per unit) = 18 mm.
    EXPECT_FLOAT_EQ(i.CCDWidth, 18);
    ASSERT_NE(i.ThumbnailPointer, nullptr);
    EXPECT_EQ(i.ThumbnailSize, 6u);
    EXPECT_EQ(i.ThumbnailPointer, p.section.data() + 8 + t.trailerOffset);
    EXPECT_EQ(i.ThumbnailPointer[0], 0xFF);
    EXPECT_EQ(p.ctx.DirWithThumbnailPtrs, p.section.data() + 8 + t.ifdOffsets[2]);
}

INSTANTIATE_TEST_SUITE_P(Both, ExifByteOrder, testing::Values(false, true),
                         [](const testing::TestParamInfo<bool>& info) {
                             return info.param ? "Motorola" : "Intel";
                         });

// One tag in IFD0 and what it leaves in the record.
struct TagCase {
    const char* name;
    std::function<void(TiffBuilder&)> add;
    std::function<void(const ImageInfo&)> check;
    const char* message; // the non-fatal line, or ""
};

class ExifTag : public testing::TestWithParam<TagCase> {};

TEST_P(ExifTag, Converts) {
    TiffBuilder t(true);
    t.addIfd();
    GetParam().add(t);
    Parsed p(t.build());
    GetParam().check(p.info());
    const std::string message = GetParam().message;
    EXPECT_EQ(p.err.text(), message.empty() ? "" : "Nonfatal Error : " + message + "\n");
}

INSTANTIATE_TEST_SUITE_P(
    Table, ExifTag,
    testing::Values(
        TagCase{"SmallIsoIsScaled", [](TiffBuilder& t) { t.addShort(0, 0x8827, 2); },
                [](const ImageInfo& i) { EXPECT_EQ(i.ISOequivalent, 400); }, ""},
        TagCase{"IsoOfFiftyStays", [](TiffBuilder& t) { t.addShort(0, 0x8827, 50); },
                [](const ImageInfo& i) { EXPECT_EQ(i.ISOequivalent, 50); }, ""},
        TagCase{"FlashFiredBitsOnly", [](TiffBuilder& t) { t.addShort(0, 0x9209, 0x10); },
                [](const ImageInfo& i) { EXPECT_EQ(i.FlashUsed, 0); }, ""},
        TagCase{"NoFlashTagKeepsUnknown", [](TiffBuilder& t) { t.addShort(0, 0x8827, 100); },
                [](const ImageInfo& i) { EXPECT_EQ(i.FlashUsed, -1); }, ""},
        TagCase{"FNumberWinsOverApertureValue",
                [](TiffBuilder& t) {
                    t.addRational(0, 0x829D, 28, 10);
                    t.addRational(0, 0x9202, 3, 1);
                },
                [](const ImageInfo& i) { EXPECT_FLOAT_EQ(i.ApertureFNumber, 2.8f); }, ""},
        TagCase{
            "ApertureValueAlone", [](TiffBuilder& t) { t.addRational(0, 0x9202, 3, 1); },
            [](const ImageInfo& i) { EXPECT_NEAR(i.ApertureFNumber, std::exp(3 * std::log(2) * 0.5), 1e-5); },
            ""},
        TagCase{"ShutterSpeedAlone", [](TiffBuilder& t) { t.addRational(0, 0x9201, 7, 1, 10); },
                [](const ImageInfo& i) { EXPECT_FLOAT_EQ(i.ExposureTime, 1.0f / 128); }, ""},
        TagCase{"UndefinedRotation", [](TiffBuilder& t) { t.addShort(0, 0x0112, 9); },
                [](const ImageInfo& i) { EXPECT_EQ(i.Orientation, 0); }, "Undefined rotation value 9"},
        TagCase{"AsciiUserComment",
                [](TiffBuilder& t) {
                    t.addUndefined(
                        0, 0x9286,
                        Bytes{'A', 'S', 'C', 'I', 'I', 0, 0, 0, 'H', 'e', 'l', 'l', 'o', ' ', ' ', ' ', ' '});
                },
                [](const ImageInfo& i) { EXPECT_STREQ(i.Comments, "Hello"); }, ""},
        TagCase{"AsciiUserCommentWithoutText",
                [](TiffBuilder& t) {
                    t.addUndefined(0, 0x9286, Bytes{'A', 'S', 'C', 'I', 'I', 0, 0, 0, 0, 0, 'x'});
                },
                [](const ImageInfo& i) { EXPECT_STREQ(i.Comments, ""); }, ""},
        TagCase{"PlainUserCommentIsCut", [](TiffBuilder& t) { t.addUndefined(0, 0x9286, Bytes(300, 'z')); },
                [](const ImageInfo& i) { EXPECT_EQ(std::strlen(i.Comments), 199u); }, ""},
        TagCase{"LongMakeIsCut", [](TiffBuilder& t) { t.addAscii(0, 0x010F, std::string(50, 'm')); },
                [](const ImageInfo& i) { EXPECT_EQ(std::strlen(i.CameraMake), 31u); }, ""},
        // Only the bytes the entry counts are text, even without a NUL.
        TagCase{"ShortModelWithoutNul",
                [](TiffBuilder& t) {
                    t.add(0, {0x0110, 2, 3, Bytes{'A', 'B', 'C', 'D'}});
                },
                [](const ImageInfo& i) { EXPECT_STREQ(i.CameraModel, "ABC"); }, ""},
        TagCase{"BadFormat",
                [](TiffBuilder& t) {
                    t.add(0, {0x0110, 13, 1, Bytes{0, 0, 0, 0}});
                },
                [](const ImageInfo& i) { EXPECT_STREQ(i.CameraModel, ""); },
                "Illegal number format 13 for tag 0110"},
        TagCase{"ValuePointerOutside",
                [](TiffBuilder& t) {
                    t.add(0, {0x010F, 2, 100, Bytes{0, 0, 0xFF, 0xF0}});
                },
                [](const ImageInfo& i) { EXPECT_STREQ(i.CameraMake, ""); },
                "Illegal value pointer for tag 010f"},
        // A count whose byte size overflows 32 bits must not wrap into range.
        TagCase{"HugeCount",
                [](TiffBuilder& t) {
                    t.add(0, {0x829A, 5, 0x20000001, Bytes{0, 0, 0, 8}});
                },
                [](const ImageInfo& i) { EXPECT_EQ(i.ExposureTime, 0); },
                "Illegal value pointer for tag 829a"},
        TagCase{"UnsignedRationalAboveIntMaxReadsNegative",
                [](TiffBuilder& t) { t.addRational(0, 0x920A, int32_t(0x80000000u), 1); },
                [](const ImageInfo& i) { EXPECT_LT(i.FocalLength, 0); }, ""},
        TagCase{"DoubleInMachineOrder",
                [](TiffBuilder& t) {
                    const double d = 3.5;
                    Bytes b(8);
                    std::memcpy(b.data(), &d, 8);
                    t.add(0, {0x920A, 12, 1, b});
                },
                [](const ImageInfo& i) { EXPECT_FLOAT_EQ(i.FocalLength, 3.5f); }, ""},
        TagCase{"ZeroDenominator", [](TiffBuilder& t) { t.addRational(0, 0x9206, 5, 0); },
                [](const ImageInfo& i) { EXPECT_EQ(i.Distance, 0); }, ""},
        TagCase{"NoFocalPlaneResolution", [](TiffBuilder& t) { t.addLong(0, 0xA002, 3000); },
                [](const ImageInfo& i) { EXPECT_EQ(i.CCDWidth, 0); }, ""}),
    [](const testing::TestParamInfo<TagCase>& info) { return std::string(info.param.name); });

TEST(ExifParser, HeaderChecks) {
    struct Case {
        Bytes tiff;
        const char* message;
    };
    TiffBuilder ok(false);
    ok.addIfd();
    const Bytes good = ok.build();
    Bytes badOrder = good;
    badOrder[0] = 'X';
    Bytes badMagic = good;
    badMagic[2] = 43;
    for (const Case& c :
         {Case{badOrder, "Invalid Exif alignment marker."}, Case{badMagic, "Invalid Exif start (1)"}}) {
        Parsed p(c.tiff);
        EXPECT_EQ(p.err.text(), std::string("Nonfatal Error : ") + c.message + "\n");
    }

    JpegContext ctx;
    Capture err;
    ctx.ErrStream = err.stream();
    ctx.CurrentFile = "f.jpg";
    Bytes notExif{0, 20, 'J', 'F', 'I', 'F', 0, 0};
    process_EXIF(ctx, notExif.data(), uint32_t(notExif.size()));
    EXPECT_EQ(err.text(), "Nonfatal Error : 'f.jpg' Incorrect Exif header\n");
}

TEST(ExifParser, SuspiciousFirstOffsetStillParses) {
    TiffBuilder t(false);
    t.firstIfdOffset = 20;
    t.addIfd();
    t.addAscii(0, 0x0110, "Far");
    Parsed p(t.build());
    EXPECT_EQ(p.err.text(), "Nonfatal Error : Suspicious offset of first IFD value\n");
    EXPECT_STREQ(p.info().CameraModel, "Far");
}

TEST(ExifParser, NestingIsLimitedToFiveLevels) {
    const auto chain = [](int depth) {
        TiffBuilder t(true);
        for (int k = 0; k < depth; k++)
            t.addIfd();
        for (int k = 0; k + 1 < depth; k++)
            t.addSubIfd(k, 0x8769, k + 1);
        t.addAscii(depth - 1, 0x0110, "Deep");
        return t.build();
    };
    Parsed five(chain(5));
    EXPECT_STREQ(five.info().CameraModel, "Deep");
    EXPECT_EQ(five.err.text(), "");
    Parsed six(chain(6));
    EXPECT_STREQ(six.info().CameraModel, "");
    EXPECT_EQ(six.err.text(), "Nonfatal Error : Maximum directory nesting exceeded (corrupt exif header)\n");
}

TEST(ExifParser, LoopsOfLinksEnd) {
    // IFD0's next link points at itself; an Exif offset points back at IFD0
    // many times over: the walk must stop quickly either way.
    TiffBuilder t(false);
    t.addIfd();
    t.link(0, 0);
    for (int k = 0; k < 40; k++)
        t.addSubIfd(0, 0x8769, 0);
    t.addShort(0, 0x8827, 100);
    Parsed p(t.build());
    EXPECT_EQ(p.info().ISOequivalent, 100);
    const std::string err = p.err.text();
    EXPECT_NE(err.find("Maximum directory nesting exceeded"), std::string::npos);
    EXPECT_LT(std::count(err.begin(), err.end(), '\n'), 300);
}

TEST(ExifParser, BadDirectoryLinksAndSizes) {
    {
        TiffBuilder t(false);
        t.addIfd();
        t.add(0, {0x8769, 4, 1, t.u32(0x7FFFFFF0)});
        Parsed p(t.build());
        EXPECT_EQ(p.err.text(), "Nonfatal Error : Illegal exif or interop ofset directory link\n");
    }
    {
        // A directory claiming more entries than the block holds.
        TiffBuilder t(true);
        t.addIfd();
        t.addShort(0, 0x8827, 100);
        Bytes tiff = t.build();
        TiffBuilder::put(tiff, 8, t.u16(500));
        Parsed p(tiff);
        EXPECT_EQ(p.err.text(), "Nonfatal Error : Illegally sized directory\n");
        EXPECT_EQ(p.info().ISOequivalent, 0);
    }
    {
        // A next link a little past the end is passed over quietly, further
        // past it is reported.
        TiffBuilder t(false);
        t.addIfd();
        t.addShort(0, 0x8827, 100);
        Bytes tiff = t.build();
        const uint32_t linkAt = 8 + 2 + 12;
        TiffBuilder::put(tiff, linkAt, t.u32(uint32_t(tiff.size() + 2 + 10)));
        EXPECT_EQ(Parsed(tiff).err.text(), "");
        TiffBuilder::put(tiff, linkAt, t.u32(uint32_t(tiff.size() + 2 + 30)));
        EXPECT_EQ(Parsed(tiff).err.text(), "Nonfatal Error : Illegal subdirectory link\n");
    }
    {
        // A first directory far outside the block.
        TiffBuilder t(true);
        t.addIfd();
        Bytes tiff = t.build();
        TiffBuilder::put(tiff, 4, t.u32(0x7FFFFFFF));
        Parsed p(tiff);
        EXPECT_NE(p.err.text().find("Illegally sized directory"), std::string::npos);
    }
}

TEST(ExifParser, ThumbnailOutsideTheBlockIsNotRecorded) {
    TiffBuilder t(false);
    t.addIfd();
    t.addLong(0, 0x0201, 40);
    t.addLong(0, 0x0202, 100000);
    Parsed p(t.build());
    EXPECT_EQ(p.info().ThumbnailPointer, nullptr);
}

TEST(ExifParser, TruncatedBlocksNeverReadPastTheirBuffer) {
    TiffBuilder t = cameraBlock(true);
    const Bytes full = exifSection(withThumbnailOffset(t));
    for (size_t keep = 0; keep <= full.size(); keep++) {
        // Exactly the kept bytes on the heap: the sanitizer build catches any
        // read beyond them.
        std::vector<uint8_t> block(full.begin(), full.begin() + long(keep));
        JpegContext ctx;
        ctx.ErrStream = nullptr;
        process_EXIF(ctx, block.data(), uint32_t(block.size()));
    }
}

TEST(ExifParser, RemoveThumbnailDeletesOnlyThePointerTags) {
    for (const bool motorola : {false, true}) {
        TiffBuilder t = cameraBlock(motorola);
        Parsed p(withThumbnailOffset(t));
        const Bytes before = p.section;
        uint8_t* ifd1 = p.ctx.DirWithThumbnailPtrs;
        ASSERT_NE(ifd1, nullptr);
        EXPECT_EQ(Get16u(p.ctx, ifd1), 2);

        // As the transfer does: handed the thumbnail's bytes, not the block.
        Capture err;
        p.ctx.ErrStream = err.stream();
        RemoveThumbnail(p.ctx, p.info().ThumbnailPointer, p.info().ThumbnailSize);
        EXPECT_EQ(err.text(), "Nonfatal Error : Incorrect Exif header\n");
        p.ctx.BlockStart = p.section.data();
        p.ctx.BlockLimit = p.section.data() + p.section.size();
        EXPECT_EQ(Get16u(p.ctx, ifd1), 0);
        EXPECT_EQ(p.section.size(), before.size());
        // The thumbnail bytes stay; parsing again finds no thumbnail.
        const size_t thumbAt = 8 + t.trailerOffset;
        EXPECT_TRUE(std::equal(before.begin() + long(thumbAt), before.begin() + long(thumbAt) + 6,
                               p.section.begin() + long(thumbAt)));
        JpegContext again;
        again.ErrStream = nullptr;
        process_EXIF(again, p.section.data(), uint32_t(p.section.size() - SectionPadding),
                     p.section.data() + p.section.size());
        EXPECT_EQ(again.Info.ThumbnailPointer, nullptr);
        EXPECT_STREQ(again.Info.CameraModel, "Model 7");
    }
}
