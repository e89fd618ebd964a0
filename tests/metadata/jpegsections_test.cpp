#include "exifblocks.h"

#include "metadata/jpegsections.h"

#include <gtest/gtest.h>

using namespace quillet;

using namespace exifblocks;

namespace {

struct Reader {
    JpegContext ctx;
    Capture out, err;
    Reader() { ctx.OutStream = out.stream(), ctx.ErrStream = err.stream(), ctx.CurrentFile = "in.jpg"; }
    int read(const Bytes& bytes, int mode) { return ReadJpegBuffer(ctx, bytes.data(), bytes.size(), mode); }
};

const Bytes dqt = segment(0xDB, Bytes(65, 1));

} // namespace

TEST(JpegSections, DamagedFilesAreRefusedWithTheirMessage) {
    const char notJpeg[] = "Not JPEG (or bad one): in.jpg\n";
    const std::string tooMany = "Error : Too many sections in jpg file\nin file 'in.jpg'\n";
    const std::string badMarker = "Error : invalid marker\nin file 'in.jpg'\n";
    const auto padded = [](int fill) {
        Bytes b = jpeg({dqt});
        return b.insert(b.begin() + 2, size_t(fill), 0xFF), b;
    };
    const Bytes app5 = segment(0xE5, Bytes{1, 2}), plain = padded(0);
    Reader fivePadding; // five fill bytes plus the marker's own pass; one more does not
    EXPECT_EQ(fivePadding.read(padded(5), ReadMetadata), 1);
    const struct {
        Bytes bytes;
        std::string out, err;
    } cases[] = {
        {Bytes{0x89, 'P', 'N', 'G', 0, 0, 0, 0}, notJpeg, ""},
        {Bytes{}, notJpeg, ""},
        {Bytes{0xFF, 0xD8, 0xFF, 0xD9, 0x00, 0x02}, std::string("No image in jpeg!\n") + notJpeg, ""},
        {Bytes{0xFF, 0xD8, 0xFF, 0xDB, 0x00, 0x01}, notJpeg, badMarker}, // length below two
        {Bytes{0xFF, 0xD8, 0xFF, 0xDB, 0x00}, notJpeg, badMarker},
        {Bytes(plain.begin(), plain.begin() + 30), notJpeg,
         "Error : Premature end of file?\nin file 'in.jpg'\n"},
        {padded(6), std::string("too many padding bytes\n") + notJpeg, ""},
        {jpeg(std::vector<Bytes>(20, app5)), notJpeg, tooMany},
        // SOS as the 20th section leaves no room for the image data.
        {jpeg(std::vector<Bytes>(19, app5)), notJpeg, tooMany},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(&c - cases);
        Reader r;
        EXPECT_EQ(r.read(c.bytes, ReadImage), 0);
        EXPECT_EQ(r.out.text(), c.out);
        EXPECT_EQ(r.err.text(), c.err);
        EXPECT_EQ(r.ctx.SectionsRead, 0);
        EXPECT_EQ(r.ctx.Info.Width, 0);
    }
}
