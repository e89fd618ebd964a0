#include "engine/pipeline/outputencoder.h"

#include "engine/batch/batchlog.h"
#include "engine/pipeline/sizebudget.h"
#include "metadata/jpegsegmentlist.h"
#include "settings/processingparams.h"

#include <QString>

#include <algorithm>
#include <memory>

namespace quillet {

using vips::VImage;

namespace OutputEncoder {

// libvips keeps resolution in pixels per millimetre.
VImage withResolution(const VImage& image, int resolution) {
    const double perMillimetre = (resolution >= 1 ? resolution : 72) / 25.4;
    return image.copy(VImage::option()->set("xres", perMillimetre)->set("yres", perMillimetre));
}

// A picture not known to be opaque is rendered once into memory so the check
// and the encoding share one evaluation.
VImage withAlphaIfNeeded(const Picture& picture) {
    VImage image = picture.image;
    if (image.bands() < 4)
        return image;
    if (!picture.opaque) {
        image = image.copy_memory();
        if (image.extract_band(3).min() < 255)
            return image;
    }
    return image.extract_band(0, VImage::option()->set("n", 3));
}

namespace {

bool encodable(const Picture& picture) {
    return picture.image.get_image() && picture.image.width() > 0 && picture.image.height() > 0;
}

QByteArray takeBuffer(void* data, size_t size) {
    QByteArray bytes(static_cast<const char*>(data), qsizetype(size));
    g_free(data);
    return bytes;
}

// libvips writes no JFIF segment once metadata is stripped, and the only
// resolution it would write lives in an EXIF block of its own making. A JFIF
// APP0 right after SOI records the dpi without any EXIF.
QByteArray withJfifDensity(QByteArray jpeg, int resolution) {
    if (jpeg.size() < 4 || quint8(jpeg[0]) != 0xFF || quint8(jpeg[1]) != 0xD8)
        return jpeg;
    const int dpi = std::clamp(resolution >= 1 ? resolution : 72, 1, 65535);
    const char hi = char(dpi >> 8), lo = char(dpi & 0xFF);
    const char app0[] = {'\xFF', '\xE0', 0, 16, 'J', 'F', 'I', 'F', 0, 1, 1, 1, hi, lo, hi, lo, 0, 0};
    jpeg.insert(2, app0, sizeof app0);
    return jpeg;
}

// Only the profile is left for the saver to write: the pixels may still carry
// the input's EXIF, XMP and text chunks, which are not ours to pass on here.
VImage withOnlyProfile(const VImage& image, const QByteArray& iccProfile) {
    VImage out = image.copy();
    VipsImage* handle = out.get_image();
    gchar** fields = vips_image_get_fields(handle);
    for (gchar** field = fields; *field; ++field) {
        const char* name = *field;
        if (vips_image_get_typeof(handle, name) == VIPS_TYPE_BLOB || g_str_has_prefix(name, "exif-") ||
            g_str_has_prefix(name, "png-comment-"))
            vips_image_remove(handle, name);
    }
    g_strfreev(fields);
    if (!iccProfile.isEmpty())
        vips_image_set_blob_copy(handle, VIPS_META_ICC_NAME, iccProfile.constData(),
                                 size_t(iccProfile.size()));
    return out;
}

QByteArray withIccSegments(const QByteArray& jpeg, const QByteArray& iccProfile) {
    if (jpeg.isEmpty() || iccProfile.isEmpty())
        return jpeg;
    std::optional<JpegSegmentList> list = JpegSegmentList::parse(jpeg);
    if (!list)
        return jpeg;
    list->setIccProfile(iccProfile);
    return list->toBytes();
}

} // namespace

namespace {

// Saver options until a call takes them: libvips deletes the options it is
// handed on every path, success or failure, so they are released only into
// the call itself and stay owned here on every earlier return or throw.
using SaveOptions = std::unique_ptr<vips::VOption>;

SaveOptions saveOptions() {
    return SaveOptions(VImage::option());
}

// Encodes through libvips's saver for `suffix`; no bytes when the picture is
// empty or anything in the chain fails. With a profile the saver writes it
// and nothing else; without, it writes no metadata at all.
template <typename Prepare>
QByteArray encode(const Picture& picture, const char* suffix, Prepare prepare, SaveOptions options,
                  const QByteArray& iccProfile = {}) {
    if (!encodable(picture))
        return {};
    try {
        VImage prepared = prepare(picture);
        if (!iccProfile.isEmpty())
            prepared = withOnlyProfile(prepared, iccProfile);
        options->set("strip", iccProfile.isEmpty());
        void* data = nullptr;
        size_t size = 0;
        prepared.write_to_buffer(suffix, &data, &size, options.release());
        return takeBuffer(data, size);
    } catch (const std::exception&) {
        return {};
    }
}

} // namespace

QByteArray jpegDataForImage(const Picture& picture, int resolution, int quality, const QByteArray& iccProfile,
                            HuffmanTables tables) {
    SaveOptions options = saveOptions();
    options->set("Q", std::clamp(quality, 1, 100))
        ->set("optimize_coding", tables == HuffmanTables::Optimised);
    const QByteArray jpeg = encode(
        picture, ".jpg",
        [resolution](const Picture& p) {
            VImage image = p.image;
            if (image.bands() == 4 || image.bands() == 2)
                image = image.extract_band(0, VImage::option()->set("n", image.bands() - 1));
            return withResolution(image, resolution);
        },
        std::move(options));
    // The profile goes in as our own segments: libvips writes an EXIF block of
    // its making whenever it keeps any metadata.
    return withIccSegments(withJfifDensity(jpeg, resolution), iccProfile);
}

QByteArray pngDataForImage(const Picture& picture, int resolution, const QByteArray& iccProfile) {
    return encode(
        picture, ".png",
        [resolution](const Picture& p) { return withResolution(withAlphaIfNeeded(p), resolution); },
        saveOptions(), iccProfile);
}

QByteArray tiffDataForImage(const Picture& picture, int resolution, const QByteArray& iccProfile) {
    SaveOptions options = saveOptions();
    options->set("compression", VIPS_FOREIGN_TIFF_COMPRESSION_NONE)
        ->set("resunit", VIPS_FOREIGN_TIFF_RESUNIT_INCH);
    return encode(
        picture, ".tif",
        [resolution](const Picture& p) { return withResolution(withAlphaIfNeeded(p), resolution); },
        std::move(options), iccProfile);
}

int nextFactorWithSize(qint64 size, qint64 limit, int factor) {
    if (limit == 0)
        return factor;
    const float ratio = float(size) / float(limit);
    if (ratio > 3.0f) {
        if (factor >= 80)
            return 40;
        if (factor >= 60)
            return factor - 40;
        return factor - 30;
    }
    if (ratio > 1.75f)
        return factor - 20;
    if (double(ratio) > 1.05)
        return factor - 10;
    return factor - 5;
}

QByteArray searchJpegQuality(const std::function<QByteArray(int)>& encode, int quality, qint64 byteLimit,
                             ActivityLog& log, const QString& formatName, int* lastQuality) {
    int q = quality;
    for (;;) {
        const QByteArray bytes = encode(q);
        if (lastQuality)
            *lastQuality = q;
        const int next = nextFactorWithSize(bytes.size(), byteLimit, q);
        // A failed encoding is tried again lower down, as long as that goes
        // somewhere: the same quality again would never end.
        if (bytes.isEmpty()) {
            if (next >= q || next <= 0)
                return {};
            q = next;
            continue;
        }
        if (byteLimit > 0 && quint64(bytes.size()) > quint64(byteLimit) && next > 0) {
            q = next;
            continue;
        }
        // The line shows the quality the search would try next, not the one
        // kept; without a limit the two agree.
        log.writeActivity(QStringLiteral("\t%1 quality: %2\n").arg(formatName).arg(next));
        if (next <= 0)
            log.writeWarningActivity(
                QString::asprintf("\tUnable to make file size under %d KB\n", int(byteLimit / 1024)));
        return bytes;
    }
}

QByteArray dataForImage(const Picture& picture, int format, int resolution, int quality, qint64 byteLimit,
                        ActivityLog& log, const QByteArray& iccProfile, int* keptQuality) {
    if (keptQuality)
        *keptQuality = -1;
    switch (format) {
    case FileFormat::Jpeg:
        return searchJpegQuality([&](int q) { return jpegDataForImage(picture, resolution, q, iccProfile); },
                                 quality, byteLimit, log, QStringLiteral("JPEG"), keptQuality);
    case FileFormat::Png:
        return pngDataForImage(picture, resolution, iccProfile);
    case FileFormat::Tiff:
        return tiffDataForImage(picture, resolution, iccProfile);
    default:
        return {};
    }
}

QByteArray dataForImage(const Picture& picture, const Encoding& encoding, ActivityLog& log,
                        int* keptQuality) {
    const int format = encoding.format;
    if (keptQuality)
        *keptQuality = -1;
    if (!FileFormat::isLossy(format))
        return dataForImage(picture, format, encoding.resolution, encoding.quality, encoding.byteLimit, log,
                            encoding.metadata.iccProfile, keptQuality);
    const auto encodeAt = [&](const Picture& p, int q) {
        if (format == FileFormat::Jpeg)
            return jpegDataForImage(p, encoding.resolution, q, encoding.metadata.iccProfile);
        return ModernEncoder::encode(p, format, encoding.resolution, q, encoding.lossless, encoding.metadata,
                                     encoding.effort);
    };
    if (encoding.lossless && FileFormat::hasLossless(format))
        return encodeAt(picture, 100);
    const QString name = FileFormat::displayName(format);
    const auto search = [&](ActivityLog& to, int* last) {
        return searchJpegQuality([&](int q) { return encodeAt(picture, q); }, encoding.quality,
                                 encoding.byteLimit, to, name, last);
    };
    if (!encoding.shrinkToFit || encoding.byteLimit <= 0)
        return search(log, keptQuality);

    BatchLog held;
    int floor = encoding.quality;
    const QByteArray bytes = search(held, &floor);
    if (keptQuality)
        *keptQuality = floor;
    const qint64 budget = encoding.byteLimit - std::max<qint64>(encoding.addedLater, 0);
    const bool over = !bytes.isEmpty() && bytes.size() > budget;
    const std::optional<SizeBudget::Fitted> fitted =
        over && budget > 0
            ? SizeBudget::shrinkToFit(
                  picture, [&](const Picture& p) { return encodeAt(p, floor); }, bytes.size(), budget)
            : std::nullopt;
    bool warned = false;
    for (const BatchLog::Line& line : held.lines()) {
        if (!line.warning) {
            log.writeActivity(line.text);
        } else if (!fitted) {
            log.writeWarningActivity(line.text);
            warned = true;
        }
    }
    if (!fitted) {
        // Fitting only with the metadata left out: still too large once written.
        if (over && !warned)
            log.writeWarningActivity(QString::asprintf("\tUnable to make file size under %d KB\n",
                                                       int(encoding.byteLimit / 1024)));
        return bytes;
    }
    log.writeActivity(QStringLiteral("\tMade smaller to fit %1 KB: %2 x %3\n")
                          .arg(encoding.byteLimit / 1024)
                          .arg(fitted->width)
                          .arg(fitted->height));
    return fitted->bytes;
}

} // namespace OutputEncoder

} // namespace quillet
