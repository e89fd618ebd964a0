// Feeds one input through every path of the metadata byte layer: a metadata
// read, the transfer's keep-EXIF-and-strip-thumbnail steps, an image read of
// the same bytes appended after them, a write, and the orientation tag's read
// and rewrite over the bytes as a file in memory.

#include "metadata/exifparser.h"
#include "metadata/jpegsections.h"
#include "metadata/orientationtag.h"
#include "support/filesystem.h"

#include <cstdio>
#include <vector>

using namespace quillet;

namespace {

void quiet(JpegContext& ctx) {
    ctx.OutStream = nullptr;
    ctx.ErrStream = nullptr;
    ctx.SupressNonFatalErrors = 1;
}

// Every file opened is the one buffer in memory.
class InMemoryFiles final : public FileSystem {
  public:
    explicit InMemoryFiles(std::vector<uint8_t>& bytes) : m_bytes(bytes) {}
    File open(const QByteArray& path, const char*) override {
        return File(fmemopen(m_bytes.data(), m_bytes.size(), "r+"), path);
    }

  private:
    std::vector<uint8_t>& m_bytes;
};

// Every file written goes nowhere.
class DiscardingFiles final : public FileSystem {
  public:
    File open(const QByteArray& path, const char*) override {
        return File(std::fopen("/dev/null", "wb"), path);
    }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    {
        JpegContext ctx;
        quiet(ctx);
        ctx.Info.FlashUsed = -1;
        if (ReadJpegBuffer(ctx, data, size, ReadMetadata)) {
            DiscardAllButExif(ctx);
            if (ctx.Info.ThumbnailPointer)
                RemoveThumbnail(ctx, ctx.Info.ThumbnailPointer, ctx.Info.ThumbnailSize);
            if (ReadJpegBuffer(ctx, data, size, ReadImage)) {
                DiscardingFiles sink;
                ctx.Files = &sink;
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
        InMemoryFiles memory(file);
        const int old = _getOrientation("memory", memory);
        if (old != 0)
            _setOrientation("memory", 1, memory);
    }
    return 0;
}
