#include "exifblocks.h"

#include "metadata/exifparser.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace quillet;

using namespace exifblocks;

namespace {

// A parsed block and what the parser printed about it.
struct Parsed {
    JpegContext ctx;
    Capture err;
    Bytes section;
    explicit Parsed(const Bytes& tiff) : section(app1(tiff)) {
        section.erase(section.begin(), section.begin() + 2); // as the section list holds it
        ctx.ErrStream = err.stream(), ctx.OutStream = nullptr, ctx.Info.FlashUsed = -1;
        section.resize(section.size() + SectionPadding, 0);
        process_EXIF(ctx, section.data(), uint32_t(section.size() - SectionPadding),
                     section.data() + section.size());
    }
    const ImageInfo& info() const { return ctx.Info; }
};

std::string nonfatal(const std::string& m) {
    return m.empty() ? "" : "Nonfatal Error : " + m + "\n";
}

// IFD0 -> Exif sub-directory, and IFD1 pointing at a 6-byte thumbnail.
Bytes cameraBlock(TiffBuilder& t) {
    const int ifd0 = t.addIfd(), exif = t.addIfd(), ifd1 = t.addIfd();
    t.link(ifd0, ifd1);
    t.addAscii(ifd0, 0x0110, "Model 7");
    t.addShort(ifd0, 0x0112, 6);
    t.addSubIfd(ifd0, 0x8769, exif);
    t.addRational(exif, 0x829A, 1, 250);
    t.addRational(exif, 0x9204, -2, 3, 10);
    t.addShort(exif, 0x9209, 0x19);
    t.addShort(exif, 0x8827, 400);
    t.addLong(ifd1, 0x0201, 0); // patched below once the trailer's place is known
    t.addLong(ifd1, 0x0202, 6);
    t.trailer = Bytes{0xFF, 0xD8, 0xFF, 0xD9, 0xAA, 0xBB};
    Bytes tiff = t.build();
    TiffBuilder::put(tiff, t.ifdOffsets[2] + 2 + 8, t.u32(t.trailerOffset));
    return tiff;
}

} // namespace

// ASCII, SHORT, LONG and both rationals, a sub-directory and a thumbnail, in both byte orders.
TEST(ExifParser, CameraBlockInBothByteOrders) {
    for (const bool mm : {false, true}) {
        SCOPED_TRACE(mm ? "Motorola" : "Intel");
        TiffBuilder t(mm);
        Parsed p(cameraBlock(t));
        const ImageInfo& i = p.info();
        EXPECT_EQ(p.err.text(), "");
        EXPECT_STREQ(i.CameraModel, "Model 7");
        EXPECT_EQ(i.Orientation, 6);
        EXPECT_FLOAT_EQ(i.ExposureTime, 0.004f);
        EXPECT_FLOAT_EQ(i.ExposureBias, -2.0f / 3); // signed rational
        EXPECT_EQ(i.FlashUsed, 1);
        EXPECT_EQ(i.ISOequivalent, 400);
        EXPECT_EQ(i.ThumbnailSize, 6u);
        EXPECT_EQ(i.ThumbnailPointer, p.section.data() + 8 + t.trailerOffset);
        EXPECT_EQ(p.ctx.DirWithThumbnailPtrs, p.section.data() + 8 + t.ifdOffsets[2]);
        // Removed as the transfer does it, handed the thumbnail's bytes: the block keeps the rest.
        RemoveThumbnail(p.ctx, i.ThumbnailPointer, i.ThumbnailSize);
        Parsed again(Bytes(p.section.begin() + 8, p.section.end() - SectionPadding));
        EXPECT_EQ(again.info().ThumbnailPointer, nullptr);
        EXPECT_STREQ(again.info().CameraModel, "Model 7");
    }
}

// One big-endian entry in IFD0: the field it sets, and the line it prints.
enum Field { Iso, Orientation, Exposure, Focal, Distance, MakeLen, ModelLen, CommentLen };

double fieldOf(const ImageInfo& i, Field f) {
    const char* text = f == MakeLen ? i.CameraMake : f == ModelLen ? i.CameraModel : i.Comments;
    const float numbers[] = {float(i.ISOequivalent), float(i.Orientation), i.ExposureTime, i.FocalLength,
                             i.Distance};
    return f < MakeLen ? double(numbers[f]) : double(std::strlen(text));
}

TEST(ExifParser, SingleEntries) {
    const struct {
        Entry entry;
        Field field;
        double expected;
        const char* message = "";
    } cases[] = {
        {{0x8827, 3, 1, {0, 2}}, Iso, 400}, // small ISO values are scaled
        {{0x0112, 3, 1, {0, 9}}, Orientation, 0, "Undefined rotation value 9"},
        {{0x9286, 7, 300, Bytes(300, 'z')}, CommentLen, 199},
        {{0x010F, 2, 50, Bytes(50, 'm')}, MakeLen, 31},
        {{0x0110, 2, 3, {'A', 'B', 'C', 'D'}}, ModelLen, 3}, // only counted bytes are text, NUL or not
        {{0x0110, 13, 1, {0, 0, 0, 0}}, ModelLen, 0, "Illegal number format 13 for tag 0110"},
        {{0x010F, 2, 100, {0, 0, 0xFF, 0xF0}}, MakeLen, 0, "Illegal value pointer for tag 010f"},
        // A count whose byte size overflows 32 bits must not wrap into range.
        {{0x829A, 5, 0x20000001, {0, 0, 0, 8}}, Exposure, 0, "Illegal value pointer for tag 829a"},
        {{0x920A, 5, 1, {0x80, 0, 0, 0, 0, 0, 0, 1}}, Focal, -2147483648.0}, // unsigned read as signed
        // Doubles are read in the machine's order (little-endian here), whatever the block's.
        {{0x920A, 12, 1, {0, 0, 0, 0, 0, 0, 0x0C, 0x40}}, Focal, 3.5},
        {{0x9206, 5, 1, {0, 0, 0, 5, 0, 0, 0, 0}}, Distance, 0}, // zero denominator
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(&c - cases);
        TiffBuilder t(true);
        t.addIfd();
        t.add(0, c.entry);
        Parsed p(t.build());
        EXPECT_NEAR(fieldOf(p.info(), c.field), c.expected, 1e-6 * std::max(1.0, std::fabs(c.expected)));
        EXPECT_EQ(p.err.text(), nonfatal(c.message));
    }
}

TEST(ExifParser, DamagedHeadersAndDirectories) {
    TiffBuilder t(false);
    t.addIfd();
    t.addShort(0, 0x8827, 100);
    const Bytes good = t.build();
    const auto changed = [&](size_t at, const Bytes& b) {
        Bytes c = good;
        TiffBuilder::put(c, at, b);
        return c;
    };
    const uint32_t nextLink = 8 + 2 + 12;
    const struct {
        Bytes tiff;
        std::string message;
    } cases[] = {
        {changed(0, {'X'}), "Invalid Exif alignment marker."},
        {changed(2, {43}), "Invalid Exif start (1)"},
        {changed(8, t.u16(500)), "Illegally sized directory"}, // more entries than the block holds
        // A next link a little past the end is passed over quietly, further past it is reported.
        {changed(nextLink, t.u32(uint32_t(good.size() + 12))), ""},
        {changed(nextLink, t.u32(uint32_t(good.size() + 32))), "Illegal subdirectory link"},
        // The entry turned into an Exif directory link far outside.
        {changed(10, {0x69, 0x87, 4, 0, 1, 0, 0, 0, 0xF0, 0xFF, 0xFF, 0x7F}),
         "Illegal exif or interop ofset directory link"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Parsed(c.tiff).err.text(), nonfatal(c.message));
    // A first directory far outside the block.
    EXPECT_NE(Parsed(changed(4, t.u32(0x7FFFFFFF))).err.text().find("Illegally sized directory"),
              std::string::npos);
}

TEST(ExifParser, LoopsOfLinksEnd) {
    // IFD0 links to itself and holds 40 Exif offsets back to itself.
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

TEST(ExifParser, TruncatedBlocksNeverReadPastTheirBuffer) {
    TiffBuilder t(true);
    const Bytes full = app1(cameraBlock(t));
    for (size_t keep = 2; keep <= full.size(); keep++) {
        // Exactly the kept bytes on the heap: the sanitizer build catches any read beyond them.
        std::vector<uint8_t> block(full.begin() + 2, full.begin() + long(keep));
        JpegContext ctx;
        ctx.ErrStream = nullptr;
        process_EXIF(ctx, block.data(), uint32_t(block.size()));
    }
}
