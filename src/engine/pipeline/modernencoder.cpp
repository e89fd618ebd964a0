#include "engine/pipeline/modernencoder.h"

#include "engine/pipeline/avifencoder.h"
#include "engine/pipeline/outputencoder.h"
#include "metadata/exifeditor.h"
#include "metadata/xmporientation.h"
#include "settings/processingparams.h"

#include <QtEndian>

#include <algorithm>
#include <map>
#include <mutex>
#include <string_view>

namespace quillet {

using vips::VImage;

namespace ModernEncoder {

namespace {

const QByteArray exifSignature("Exif\0\0", 6);

// The pixels with nothing but `metadata` attached. libvips rewrites the EXIF
// it is given from the image's own fields (resolution, orientation), so the
// orientation field is set to what the EXIF says.
VImage withMetadata(const VImage& pixels, const EmbeddedMetadata& metadata, bool exifInImage) {
    VImage out = pixels.copy();
    VipsImage* handle = out.get_image();
    gchar** fields = vips_image_get_fields(handle);
    for (gchar** field = fields; *field; ++field) {
        const char* name = *field;
        if (vips_image_get_typeof(handle, name) == VIPS_TYPE_BLOB || g_str_has_prefix(name, "exif-") ||
            g_str_has_prefix(name, "png-comment-") || std::string_view(name) == VIPS_META_ORIENTATION)
            vips_image_remove(handle, name);
    }
    g_strfreev(fields);
    const auto setBlob = [handle](const char* name, const QByteArray& bytes) {
        if (!bytes.isEmpty())
            vips_image_set_blob_copy(handle, name, bytes.constData(), size_t(bytes.size()));
    };
    setBlob(VIPS_META_ICC_NAME, metadata.iccProfile);
    if (exifInImage && !metadata.exif.isEmpty()) {
        setBlob(VIPS_META_EXIF_NAME, exifSignature + metadata.exif);
        const ExifEditor exif(metadata.exif);
        if (exif.isValid() && exif.shortValue(ExifEditor::TagOrientation) >= 1)
            vips_image_set_int(handle, VIPS_META_ORIENTATION,
                               int(exif.shortValue(ExifEditor::TagOrientation)));
    }
    if (exifInImage)
        setBlob(VIPS_META_XMP_NAME, metadata.xmp);
    return out;
}

QByteArray box(const char type[5], const QByteArray& payload) {
    QByteArray header(8, '\0');
    qToBigEndian(quint32(8 + payload.size()), header.data());
    header.replace(4, 4, type, 4);
    return header + payload;
}

// libvips writes a bare JPEG XL codestream; EXIF and XMP need the container
// around it, with an "Exif" box (a 4-byte offset to the TIFF header, then
// the TIFF structure) and an "xml " box ahead of the codestream.
QByteArray withJxlBoxes(const QByteArray& codestream, const EmbeddedMetadata& metadata) {
    if (codestream.isEmpty() || (metadata.exif.isEmpty() && metadata.xmp.isEmpty()))
        return codestream;
    if (!codestream.startsWith("\xFF\x0A"))
        return codestream; // already a container: left as libvips made it
    QByteArray out = box("JXL ", QByteArray("\r\n\x87\n", 4));
    out += box("ftyp", QByteArray("jxl \0\0\0\0jxl ", 12));
    if (!metadata.exif.isEmpty())
        out += box("Exif", QByteArray(4, '\0') + metadata.exif);
    if (!metadata.xmp.isEmpty())
        out += box("xml ", metadata.xmp);
    out += box("jxlc", codestream);
    return out;
}

// A WebP without its "EXIF" chunk and the extended header's flag for it.
QByteArray withoutWebpExif(QByteArray webp) {
    if (webp.size() < 12 || !webp.startsWith("RIFF") || webp.mid(8, 4) != "WEBP")
        return webp;
    for (qsizetype at = 12; at + 8 <= webp.size();) {
        const qsizetype size = qFromLittleEndian<quint32>(webp.constData() + at + 4);
        const qsizetype whole = 8 + size + (size & 1);
        if (whole > webp.size() - at)
            break;
        if (webp.mid(at, 4) == "VP8X" && size >= 1)
            webp[at + 8] = char(webp[at + 8] & ~0x08);
        if (webp.mid(at, 4) == "EXIF") {
            webp.remove(at, whole);
            qToLittleEndian(quint32(webp.size() - 8), webp.data() + 4);
            continue;
        }
        at += whole;
    }
    return webp;
}

QByteArray encodeOrThrow(const Picture& picture, int format, int resolution, int quality, bool lossless,
                         const EmbeddedMetadata& metadata, Effort effort) {
    if (format == FileFormat::Avif)
        return AvifEncoder::encode(OutputEncoder::withAlphaIfNeeded(picture), std::clamp(quality, 1, 100),
                                   metadata, effort);
    const bool jxl = format == FileFormat::JpegXl;
    const VImage pixels = withMetadata(
        OutputEncoder::withResolution(OutputEncoder::withAlphaIfNeeded(picture), resolution), metadata, !jxl);
    // libvips deletes the options it is handed, on every path.
    vips::VOption* options = VImage::option()->set("Q", std::clamp(quality, 1, 100));
    const char* suffix = jxl ? ".jxl" : ".webp";
    options->set("lossless", lossless);
    if (effort == Effort::Fast)
        options->set("effort", jxl ? 3 : 0);
    // Without any metadata libvips would still make up an EXIF block.
    options->set("strip", metadata.iccProfile.isEmpty() && metadata.exif.isEmpty() && metadata.xmp.isEmpty());
    void* data = nullptr;
    size_t size = 0;
    pixels.write_to_buffer(suffix, &data, &size, options);
    QByteArray bytes(static_cast<const char*>(data), qsizetype(size));
    g_free(data);
    if (metadata.bare && format == FileFormat::WebP)
        return withoutWebpExif(bytes);
    return jxl ? withJxlBoxes(bytes, metadata) : bytes;
}

} // namespace

QByteArray encode(const Picture& picture, int format, int resolution, int quality, bool lossless,
                  const EmbeddedMetadata& metadata, Effort effort) {
    if (!FileFormat::isModern(format) || !picture.image.get_image() || picture.image.width() <= 0 ||
        picture.image.height() <= 0)
        return {};
    try {
        return encodeOrThrow(picture, format, resolution, quality, lossless, metadata, effort);
    } catch (const std::exception&) {
        vips_error_clear();
        return {};
    }
}

QString unavailableReason(int format) {
    static std::mutex lock;
    static std::map<int, QString> found;
    const std::lock_guard guard(lock);
    if (const auto it = found.find(format); it != found.end())
        return it->second;
    QString reason;
    const QString name = format == FileFormat::Avif     ? QStringLiteral("AVIF")
                         : format == FileFormat::JpegXl ? QStringLiteral("JPEG XL")
                                                        : QStringLiteral("WebP");
    try {
        const VImage probe = VImage::black(16, 16, VImage::option()->set("bands", 3));
        if (encodeOrThrow(Picture{probe, 16, 16}, format, 72, 50, false, {}, Effort::Thorough).isEmpty())
            reason = QStringLiteral("The %1 encoder wrote nothing on this system").arg(name);
    } catch (const std::exception& e) {
        vips_error_clear();
        reason = QStringLiteral("No working %1 encoder on this system (%2)")
                     .arg(name, QString::fromLocal8Bit(e.what()).simplified());
    }
    found.emplace(format, reason);
    return reason;
}

EmbeddedMetadata outputMetadata(const QByteArray& iccProfile, const QByteArray& exif, const QByteArray& xmp,
                                int resolution, bool upright) {
    EmbeddedMetadata out{iccProfile, {}, xmp};
    if (!exif.isEmpty()) {
        ExifEditor editor(exif);
        if (editor.isValid()) {
            const quint32 dpi = quint32(std::clamp(resolution >= 1 ? resolution : 72, 1, 65535));
            if (upright && editor.shortValue(ExifEditor::TagOrientation) > 1)
                editor.setShort(ExifEditor::TagOrientation, 1);
            editor.setRational(ExifEditor::TagXResolution, dpi, 1);
            editor.setRational(ExifEditor::TagYResolution, dpi, 1);
            editor.setShort(ExifEditor::TagResolutionUnit, 2); // inches
            out.exif = editor.tiff();
        }
    }
    if (upright && !out.xmp.isEmpty())
        XmpOrientation::resetToUpright(out.xmp);
    return out;
}

} // namespace ModernEncoder

} // namespace quillet
