// Feeds one input, as a whole TIFF file, to the EXIF block builder, checks
// that what it builds fits one APP1 segment and is itself a TIFF the builder
// reads back, and hands it to the EXIF parser as a JPEG's block would be.

#include "metadata/exifparser.h"
#include "metadata/tiffexifblock.h"

#include <cstdlib>
#include <cstring>
#include <vector>

using namespace quillet;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    MemoryTiffSource source(QByteArray(reinterpret_cast<const char*>(data), qsizetype(size)));
    const QByteArray block = TiffExifBlock::fromSource(source);
    if (block.isEmpty())
        return 0;
    if (block.size() > TiffExifBlock::MaxSize)
        std::abort();
    MemoryTiffSource again(block);
    if (TiffExifBlock::fromSource(again).isEmpty())
        std::abort();

    std::vector<uint8_t> segment(size_t(8 + block.size()) + SectionPadding, 0);
    std::memcpy(segment.data() + 2, "Exif\0\0", 6);
    std::memcpy(segment.data() + 8, block.constData(), size_t(block.size()));
    JpegContext ctx;
    ctx.OutStream = nullptr;
    ctx.ErrStream = nullptr;
    ctx.SupressNonFatalErrors = 1;
    process_EXIF(ctx, segment.data(), uint32_t(8 + block.size()), segment.data() + segment.size());
    return 0;
}
