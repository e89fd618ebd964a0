// Feeds one input through every path of the metadata byte layer: a metadata
// read, the transfer's keep-EXIF-and-strip-thumbnail steps, an image read of
// the same bytes appended after them, a write, and the orientation tag's read
// and rewrite over the bytes as a file in memory.

#include "metadata/exifparser.h"
#include "metadata/jpegsections.h"
#include "metadata/orientationtag.h"

#include <cstdio>
#include <vector>

using namespace quillet;

namespace {

void quiet(JpegContext& ctx) {
    ctx.OutStream = nullptr;
    ctx.ErrStream = nullptr;
    ctx.SupressNonFatalErrors = 1;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    {
        JpegContext ctx;
        quiet(ctx);
        ctx.Info.FlashUsed = -1;
        if (ReadJpegBuffer(ctx, data, size, ReadMetadata)) {
            CheckFileSkip(ctx);
            DiscardAllButExif(ctx);
            if (ctx.Info.ThumbnailPointer)
                RemoveThumbnail(ctx, ctx.Info.ThumbnailPointer, ctx.Info.ThumbnailSize);
            if (ReadJpegBuffer(ctx, data, size, ReadImage)) {
                MetadataFileOps sink;
                sink.open = [](const char*, const char*) { return std::fopen("/dev/null", "wb"); };
                ctx.FileOps = &sink;
                WriteJpegFile(ctx, "sink");
            }
        }
        DiscardData(ctx);
    }
    {
        // The APP1 block handed to the parser directly, as the section reader
        // would after checking "Exif": covers blocks whose frame is damaged.
        std::vector<uint8_t> block(data, data + size);
        block.resize(size + SectionPadding, 0);
        JpegContext ctx;
        quiet(ctx);
        process_EXIF(ctx, block.data(), uint32_t(size), block.data() + block.size());
    }
    if (size > 0) {
        std::vector<uint8_t> file(data, data + size);
        MetadataFileOps memory;
        memory.open = [&file](const char*, const char*) { return fmemopen(file.data(), file.size(), "r+"); };
        const int old = _getOrientation("memory", &memory);
        if (old != 0)
            _setOrientation("memory", 1, &memory);
    }
    return 0;
}
