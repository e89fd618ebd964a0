#include "engine/pipeline/modernencoder.h"
#include "engine/pipeline/sourcemetadata.h"
#include "metadata/exifeditor.h"
#include "metadata/pictureexif.h"
#include "settings/processingparams.h"

#include "testsupport.h"

#include <gtest/gtest.h>

#include <QtEndian>

using namespace quillet;

using vips::VImage;

namespace {

constexpr int modernFormats[] = {FileFormat::WebP, FileFormat::Avif, FileFormat::JpegXl};

VImage decode(const QByteArray& bytes) {
    return VImage::new_from_buffer(bytes.constData(), size_t(bytes.size()), "").copy_memory();
}

// The EXIF a file carries: libvips's field for WebP and AVIF, the "Exif" box
// of a JPEG XL container (its loader here does not read boxes).
QByteArray exifOf(const QByteArray& bytes, int format) {
    if (format != FileFormat::JpegXl) {
        const VImage image = decode(bytes);
        if (!vips_image_get_typeof(image.get_image(), VIPS_META_EXIF_NAME))
            return {};
        const QByteArray blob = PictureExif::headerBlob(image, VIPS_META_EXIF_NAME);
        return blob.startsWith(QByteArray("Exif\0\0", 6)) ? blob.mid(6) : blob;
    }
    for (qsizetype at = 0; at + 8 <= bytes.size();) {
        const quint32 size = qFromBigEndian<quint32>(bytes.constData() + at);
        if (size < 8)
            break;
        if (bytes.mid(at + 4, 4) == "Exif")
            return bytes.mid(at + 12, size - 12);
        at += size;
    }
    return {};
}

// A camera picture with orientation 6 turned upright by the batch: every
// format reopens at its size, with the profile, and the EXIF saying 1 and the
// chosen resolution.
TEST(ModernEncoder, CarriesProfileAndUprightExif) {
    QString path;
    QUILLET_SAMPLE_OR_SKIP(path, "orientation-landscape_6.jpg");
    const SourceMetadata source = SourceMetadata::read(path);
    ASSERT_EQ(ExifEditor(source.exif).shortValue(ExifEditor::TagOrientation), 6u);
    const Picture picture = testsupport::solidPicture(90, 60, 30, 160, 90);
    const QByteArray profile = SourceMetadata::read(testsupport::samplePath("Canon_40D.jpg")).iccProfile;
    const EmbeddedMetadata metadata =
        ModernEncoder::outputMetadata(profile, source.exif, source.xmp, 240, /*upright=*/true);
    for (const int format : modernFormats) {
        if (!ModernEncoder::unavailableReason(format).isEmpty())
            continue;
        const QByteArray bytes = ModernEncoder::encode(picture, format, 240, 80, false, metadata);
        ASSERT_FALSE(bytes.isEmpty()) << format;
        const VImage decoded = decode(bytes);
        EXPECT_EQ(std::pair(decoded.width(), decoded.height()), std::pair(90, 60)) << format;
        EXPECT_NEAR(testsupport::pixelAt(decoded, 45, 30)[1], 160, 6) << format;
        EXPECT_TRUE(profile.isEmpty() || vips_image_get_typeof(decoded.get_image(), VIPS_META_ICC_NAME))
            << format;
        const ExifEditor exif(exifOf(bytes, format));
        ASSERT_TRUE(exif.isValid()) << format;
        EXPECT_EQ(exif.shortValue(ExifEditor::TagOrientation), 1u) << format;
    }
}

// The XMP packet travels whole in every format, and libvips reads it back
// where its loader looks (WebP and AVIF).
TEST(ModernEncoder, CarriesTheXmpPacket) {
    const QByteArray xmp = "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF "
                           "xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'><rdf:Description "
                           "xmlns:dc='http://purl.org/dc/elements/1.1/' dc:source='quillet-xmp-marker'/>"
                           "</rdf:RDF></x:xmpmeta>";
    const Picture picture = testsupport::solidPicture(48, 32, 20, 90, 200);
    for (const int format : modernFormats) {
        if (!ModernEncoder::unavailableReason(format).isEmpty())
            continue;
        const QByteArray bytes = ModernEncoder::encode(picture, format, 72, 70, false, {{}, {}, xmp});
        ASSERT_FALSE(bytes.isEmpty()) << format;
        EXPECT_TRUE(bytes.contains(xmp)) << format;
        if (format == FileFormat::JpegXl)
            continue;
        const VImage decoded = decode(bytes);
        ASSERT_TRUE(vips_image_get_typeof(decoded.get_image(), VIPS_META_XMP_NAME)) << format;
        EXPECT_TRUE(PictureExif::headerBlob(decoded, VIPS_META_XMP_NAME).contains("quillet-xmp-marker"))
            << format;
    }
}

// Not turned, the orientation stays what the camera wrote.
TEST(ModernEncoder, KeepsOrientationOfUnturnedPixels) {
    QString path;
    QUILLET_SAMPLE_OR_SKIP(path, "orientation-landscape_6.jpg");
    const SourceMetadata source = SourceMetadata::read(path);
    const Picture picture = testsupport::solidPicture(40, 30, 200, 10, 10);
    for (const int format : modernFormats) {
        if (!ModernEncoder::unavailableReason(format).isEmpty())
            continue;
        const QByteArray kept = ModernEncoder::encode(
            picture, format, 72, 80, false, ModernEncoder::outputMetadata({}, source.exif, {}, 72, false));
        EXPECT_EQ(ExifEditor(exifOf(kept, format)).shortValue(ExifEditor::TagOrientation), 6u) << format;
    }
}

TEST(ModernEncoder, KeepsTransparencyOnlyWhereThereIsSome) {
    const Picture clear = testsupport::solidPicture(32, 32, 255, 0, 0, 100);
    const Picture opaque = testsupport::solidPicture(32, 32, 255, 0, 0, 255);
    for (const int format : modernFormats) {
        if (!ModernEncoder::unavailableReason(format).isEmpty())
            continue;
        const VImage decoded = decode(ModernEncoder::encode(clear, format, 72, 90, false, {}));
        ASSERT_EQ(decoded.bands(), 4) << format;
        EXPECT_NEAR(testsupport::pixelAt(decoded, 10, 10)[3], 100, 3) << format;
        EXPECT_EQ(decode(ModernEncoder::encode(opaque, format, 72, 90, false, {})).bands(), 3) << format;
    }
}

// Lossless gives back every pixel of a noisy picture; lossy does not.
TEST(ModernEncoder, LosslessKeepsEveryPixel) {
    const auto band = [](double mean) {
        return VImage::gaussnoise(64, 48, VImage::option()->set("sigma", 40)->set("mean", mean));
    };
    const VImage noise =
        band(128).bandjoin(band(60)).bandjoin(band(200)).cast(VIPS_FORMAT_UCHAR).copy_memory();
    const Picture picture{noise, 64, 48};
    for (const int format : {int(FileFormat::WebP), int(FileFormat::JpegXl)}) {
        if (!ModernEncoder::unavailableReason(format).isEmpty())
            continue;
        const VImage lossless = decode(ModernEncoder::encode(picture, format, 72, 50, true, {}));
        ASSERT_GE(lossless.bands(), 3) << format;
        EXPECT_EQ((lossless.extract_band(0, VImage::option()->set("n", 3)) - noise).abs().max(), 0.0)
            << format;
        const VImage lossy = decode(ModernEncoder::encode(picture, format, 72, 50, false, {}));
        EXPECT_GT((lossy - noise).abs().max(), 0.0) << format;
        const VImage fast =
            decode(ModernEncoder::encode(picture, format, 72, 50, true, {}, ModernEncoder::Effort::Fast));
        EXPECT_EQ((fast.extract_band(0, VImage::option()->set("n", 3)) - noise).abs().max(), 0.0) << format;
    }
}

// The fast effort reaches each encoder (its file is another) and draws the
// same picture, with the metadata still on it.
TEST(ModernEncoder, FastEffortWritesAnotherFileOfTheSamePicture) {
    const VImage xy = VImage::xyz(320, 240);
    const VImage gradient =
        VImage::bandjoin({xy[0] * 0.7, xy[1], (xy[0] + xy[1]) * 0.4}).cast(VIPS_FORMAT_UCHAR);
    const VImage grain = VImage::gaussnoise(320, 240, VImage::option()->set("sigma", 12.0)->set("mean", 0.0));
    const VImage photo = (gradient + grain).cast(VIPS_FORMAT_UCHAR).copy_memory();
    const Picture picture{photo, 320, 240};
    const QByteArray xmp("<x:xmpmeta xmlns:x=\"adobe:ns:meta/\"><rdf:RDF "
                         "xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\"/></x:xmpmeta>");
    const EmbeddedMetadata metadata{{}, {}, xmp};
    for (const int format : modernFormats) {
        if (!ModernEncoder::unavailableReason(format).isEmpty())
            continue;
        const QByteArray thorough = ModernEncoder::encode(picture, format, 72, 75, false, metadata);
        const QByteArray fast =
            ModernEncoder::encode(picture, format, 72, 75, false, metadata, ModernEncoder::Effort::Fast);
        ASSERT_FALSE(fast.isEmpty()) << format;
        EXPECT_NE(fast, thorough) << format;
        EXPECT_TRUE(fast.contains("adobe:ns:meta")) << format;
        const VImage drawn = decode(fast).extract_band(0, VImage::option()->set("n", 3));
        EXPECT_LT((drawn.cast(VIPS_FORMAT_FLOAT) - photo).abs().avg(), 8.0) << format;
    }
}

} // namespace
