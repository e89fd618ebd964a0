#include "engine/pipeline/sourcemetadata.h"

#include "metadata/pictureexif.h"

#include <QFile>

#include <vips/vips8>

#include <cstring>

namespace quillet {

SourceMetadata SourceMetadata::read(const QString& path) {
    SourceMetadata out;
    const QByteArray native = QFile::encodeName(path);
    const char* loader = vips_foreign_find_load(native.constData());
    if (!loader) {
        vips_error_clear();
        return out;
    }
    out.isJpeg = std::strcmp(loader, "VipsForeignLoadJpegFile") == 0;
    out.decodedUpright = std::strcmp(loader, "VipsForeignLoadHeifFile") == 0;
    try {
        // Only the header is read here; the pixels are decoded elsewhere.
        // Through a source of its own, as libvips caches loads by file name
        // and a file rewritten under the same name would read as it was.
        const vips::VImage image =
            vips::VImage::new_from_source(vips::VSource::new_from_file(native.constData()), "");
        out.hasHeader = true;
        if (!out.isJpeg && !out.decodedUpright &&
            vips_image_get_typeof(image.get_image(), VIPS_META_ORIENTATION))
            out.orientation = image.get_int(VIPS_META_ORIENTATION);
        out.iccProfile = PictureExif::headerBlob(image, VIPS_META_ICC_NAME);
        if (!isRgbProfile(out.iccProfile))
            out.iccProfile.clear();
        out.exif = PictureExif::fromHeader(image, loader, path);
        out.xmp = PictureExif::headerBlob(image, VIPS_META_XMP_NAME);
    } catch (const vips::VError&) {
        vips_error_clear();
    }
    return out;
}

bool SourceMetadata::isRgbProfile(const QByteArray& profile) {
    // The header's data colour space field, at byte 16.
    return profile.size() >= 128 && profile.mid(16, 4) == "RGB " && profile.mid(36, 4) == "acsp";
}

bool SourceMetadata::isSrgbProfile(const QByteArray& profile) {
    // Descriptions are stored as ASCII (v2) or UTF-16 (v4); the common sRGB
    // profiles name themselves "sRGB" either way.
    return profile.contains("sRGB") || profile.contains(QByteArray("s\0R\0G\0B", 7));
}

} // namespace quillet
