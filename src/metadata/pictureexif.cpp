#include "metadata/pictureexif.h"

#include "metadata/exifparser.h"
#include "metadata/pngexifchunk.h"
#include "metadata/tiffexifblock.h"

#include <cstring>
#include <vector>

namespace quillet {

namespace {

const QByteArray Signature("Exif\0\0", 6);

// libvips hands EXIF over with or without the APP1 signature, by format.
QByteArray tiffOf(QByteArray exif) {
    if (exif.startsWith(Signature))
        exif.remove(0, Signature.size());
    if (!exif.startsWith("II*") && !exif.startsWith(QByteArray("MM\0*", 4)))
        return {};
    return exif;
}

} // namespace

QByteArray PictureExif::fromHeader(const vips::VImage& header, const char* loader, const QString& path) {
    QByteArray exif = tiffOf(headerBlob(header, VIPS_META_EXIF_NAME));
    if (exif.isEmpty() && loader && std::strcmp(loader, "VipsForeignLoadTiffFile") == 0)
        exif = TiffExifBlock::fromFile(path);
    if (exif.isEmpty() && loader && std::strcmp(loader, "VipsForeignLoadPngFile") == 0)
        exif = tiffOf(PngExifChunk::fromFile(path));
    return exif;
}

void PictureExif::parse(JpegContext& ctx, const QByteArray& tiff) {
    // The parser works on a whole segment: two length bytes, the signature,
    // then the structure, followed by the zeros every section buffer carries.
    const qsizetype length = 2 + Signature.size() + tiff.size();
    std::vector<uint8_t> segment(size_t(length) + SectionPadding, 0);
    segment[0] = uint8_t(length >> 8);
    segment[1] = uint8_t(length);
    std::memcpy(segment.data() + 2, Signature.constData(), size_t(Signature.size()));
    std::memcpy(segment.data() + 2 + Signature.size(), tiff.constData(), size_t(tiff.size()));
    process_EXIF(ctx, segment.data(), uint32_t(length), segment.data() + segment.size());
    // Pointers into the segment would outlive it.
    ctx.Info.ThumbnailPointer = nullptr;
    ctx.Info.ThumbnailSize = 0;
    ctx.Info.DatePointer = nullptr;
    ctx.OrientationPtr = nullptr;
    ctx.DirWithThumbnailPtrs = nullptr;
    ctx.DirWithThumbnailLimit = nullptr;
    ctx.BlockStart = ctx.BlockLimit = nullptr;
}

QByteArray PictureExif::headerBlob(const vips::VImage& header, const char* name) {
    if (!vips_image_get_typeof(header.get_image(), name))
        return {};
    const void* data = nullptr;
    size_t size = 0;
    if (vips_image_get_blob(header.get_image(), name, &data, &size) != 0) {
        vips_error_clear();
        return {};
    }
    return QByteArray(static_cast<const char*>(data), qsizetype(size));
}

} // namespace quillet
